// What the page knows of the tags. Memory is bounded: a record and a minute of samples for each tag.

/** The samples behind a sparkline: one slot for each half second of the last minute. */
export class Recent {
    static kSlotMs = 500;
    static kSlots = 120;

    constructor() {
        this.values = new Float32Array(Recent.kSlots).fill(NaN);
        this.slot = 0;  // number of the newest slot since 1970; 0 before the first
        this.held = NaN;
    }

    /** Goes on to this time; the slots in between keep the value that was held. */
    advance(ms) {
        const slot = Math.floor(ms / Recent.kSlotMs);
        const first = Math.max(this.slot + 1, slot - Recent.kSlots + 1);
        for (let i = first; i <= slot; ++i) {
            this.values[i % Recent.kSlots] = this.held;
        }
        this.slot = Math.max(this.slot, slot);
    }

    /** Takes a value, NaN for none. */
    put(ms, value) {
        this.advance(ms);
        this.held = value;
        this.values[this.slot % Recent.kSlots] = value;
    }

    /** The slot that is `back` slots older than the newest. */
    at(back) {
        return this.values[(this.slot - back + Recent.kSlots) % Recent.kSlots];
    }
}

/** All tags by index, and the server's clock. */
export class Tags {
    constructor() {
        this.list = [];
        this.isLive = false;  // false: no value is known to be current
        this.clockOffset = Date.now() - performance.now();
        this.onReplaced = () => {};
        this.onChanged = () => {};
        this.onSample = () => {};
    }

    /** The server's time, by this machine's steady clock. */
    now() {
        return performance.now() + this.clockOffset;
    }

    setClock(serverMs) {
        this.clockOffset = serverMs - performance.now();
    }

    find(address) {
        return this.list.find((tag) => tag.address === address);
    }

    /** Takes a whole list. Tags that stay the same keep their samples. */
    replace(records) {
        const before = this.list;
        const isSame = before.length === records.length &&
            records.every((record, i) => before[i].address === record.address && before[i].type === record.type);
        if (!isSame) {
            this.list = records.map((record) => ({ recent: new Recent(), ...record }));
            this.onReplaced();
        }
        for (const record of records) {
            this.update(record);
        }
    }

    /** Takes what is new of one tag. */
    update(change) {
        const tag = this.list[change.index];
        if (!tag) {
            return;
        }
        Object.assign(tag, change);
        const isGood = tag.state === 'good';
        const at = isGood ? tag.time : this.now();
        const number = isGood && tag.number !== null ? tag.number : NaN;
        tag.recent.put(at, number);
        this.onSample(tag, at, number);
        this.onChanged(tag);
    }

    /** Tags first to last were read again at this time and have the value they had. */
    seen(first, last, ms) {
        for (let i = first; i <= last; ++i) {
            const tag = this.list[i];
            if (tag && tag.state === 'good') {
                tag.time = Math.max(tag.time || 0, ms);
            }
        }
    }

    /** What the page says of a tag: a value is current only while the stream is. */
    shownState(tag) {
        return this.isLive ? tag.state : 'lost';
    }
}

/** The words of the states. Each has a mark of its own shape as well (app.css). */
export const kStateWords = {
    good: 'good',
    stale: 'stale',
    failed: 'failed',
    waiting: 'waiting',
    lost: 'not current',
};

/** Most urgent first. */
export const kStateOrder = ['failed', 'stale', 'lost', 'waiting', 'good'];

/** The text of a tag's value: that of a state without one is a dash. */
export function valueText(tag) {
    const hasValue = tag.state === 'good' || tag.state === 'stale';
    return hasValue && tag.value !== null && tag.value !== undefined ? tag.value : '–';
}

/** "ab-error-0005h": the anchor of a text in the page of troubleshooting. The access in front of it has none. */
function anchorOf(problem) {
    const reason = problem.replace(/^(read|write) .*?> /, '').replace(/ \(\d+ tags\)$/, '');
    return reason.toLowerCase().replace(/[^a-z0-9]+/g, '-').replace(/^-|-$/g, '');
}

/** Where the page of troubleshooting speaks of a failure. The server knows it best. */
export function helpLink({ help, problem, text }) {
    return help && help.startsWith('/troubleshooting') ? help : `/troubleshooting#${anchorOf(problem || text || '')}`;
}
