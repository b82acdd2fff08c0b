// The values of one tag over time: asked for from the server, which keeps them, and gone on with from the stream.
// A point is a time with the lowest, the last and the highest value there; NaN is a gap from that time on.

const kMostPoints = 40000;

/** What the server has of a tag from `from` to `to`, in at most about `points` entries (0: all of them). */
export async function fetchHistory(address, from, to, points = 0) {
    const query = new URLSearchParams({ tag: address, from: String(Math.floor(from)), to: String(Math.ceil(to)) });
    if (points) {
        query.set('points', String(points));
    }
    const answer = await fetch(`/api/history?${query}`, { cache: 'no-store' });
    if (!answer.ok) {
        throw new Error(`the server answered ${answer.status}`);
    }
    return answer.json();
}

/** Everything from the answer in one list by time: {t, low, last, high}. */
function pointsOf({ samples = [], thinned = [] }) {
    const points = [];
    for (const [t, low, high] of thinned) {
        points.push(low === null ? { t, low: NaN, last: NaN, high: NaN } : { t, low, last: high, high });
    }
    for (const [t, value] of samples) {
        const last = value === null ? NaN : value;
        points.push({ t, low: last, last, high: last });
    }
    return points.sort((a, b) => a.t - b.t);
}

/** The points of a tag over a range of time. A range without an end goes on with the stream. */
export class Series {
    constructor(tag) {
        this.tag = tag;
        this.points = [];
        this.from = Infinity;
        this.until = Infinity;
        this.step = 0;  // milliseconds an entry that was asked for
        this.loads = 0;
        this.axis = 'auto';  // or 'left', 'right', as the user chose
        this.isRight = false;
    }

    /** Whether the points do for this range with entries of `step` milliseconds. */
    covers(from, to, step) {
        return this.from <= from && to <= this.until && this.step <= 2 * step;
    }

    /**
     * Loads a range in at most about `points` entries; `until` Infinity: up to now, and on with the stream.
     * What the stream brings meanwhile stays behind what is loaded.
     */
    async load(from, until, now, points) {
        const number = ++this.loads;
        const to = Math.min(until, now);
        const newest = this.points.length ? this.points[this.points.length - 1].t : -Infinity;
        const loaded = pointsOf(await fetchHistory(this.tag.address, from, to, points));
        if (number !== this.loads) {
            return;
        }
        const end = Math.max(newest, loaded.length ? loaded[loaded.length - 1].t : -Infinity);
        const newer = until === Infinity && this.until === Infinity ? this.points.filter(({ t }) => t > end) : [];
        this.points = loaded.concat(newer);
        this.from = from;
        this.until = until;
        this.step = (to - from) / points;
    }

    /** Takes a sample of the stream; NaN: no good value from now on. */
    add(t, value) {
        const { points } = this;
        const before = points[points.length - 1];
        const isNoNews = before && (t < before.t || (Number.isNaN(value) && Number.isNaN(before.last)));
        if (this.until !== Infinity || isNoNews) {
            return;
        }
        points.push({ t, low: value, last: value, high: value });
        if (points.length > kMostPoints) {
            points.splice(0, kMostPoints / 4);
            this.from = points[0].t;
        }
    }

    /** Until when the last point holds: the last time that the tag was read. */
    end() {
        if (this.until !== Infinity) {
            return this.until;
        }
        return this.tag.state === 'good' ? this.tag.time : 0;
    }
}
