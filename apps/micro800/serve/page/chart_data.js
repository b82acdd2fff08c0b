// From points to what a chart of some hundred pixels can show: equal steps of time, in each the lowest, the last and
// the highest value. A value holds until the next one. A gap, however short, breaks the line: every step has two
// rows, and the second is empty when the step contains a gap.

/** The number of the first point at or after this time. */
function firstAt(points, t) {
    let low = 0;
    let high = points.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (points[middle].t < t) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

const kNothing = [NaN, NaN, NaN];

/** Fills column `column` of the rows with a series. */
function fill(rows, column, series, start, step) {
    const { points } = series;
    const end = series.end();
    let i = firstAt(points, start);
    let held = i > 0 ? points[i - 1].last : NaN;
    for (let k = 0; k < rows.length; k += 2) {
        const limit = start + (k / 2 + 1) * step;
        let low = held;
        let high = held;
        let hasGap = Number.isNaN(held);
        for (; i < points.length && points[i].t < limit; ++i) {
            const point = points[i];
            held = point.last;
            if (Number.isNaN(held)) {
                hasGap = true;
            } else {
                low = low < point.low ? low : point.low;
                high = high > point.high ? high : point.high;
            }
        }
        if (limit - step > end && i >= points.length) {
            held = NaN;
            low = NaN;
        }
        const last = Number.isNaN(held) ? high : held;
        const value = Number.isNaN(low) ? kNothing : [low, last, high];
        const isWhole = !hasGap && !Number.isNaN(held);
        // Back from a gap, the step begins empty; into one, it ends so.
        const isBack = hasGap && !Number.isNaN(held);
        rows[k][column] = isBack ? kNothing : value;
        rows[k + 1][column] = isWhole || isBack ? value : kNothing;
    }
}

/**
 * The rows of a chart: [time, [low, last, high], ...], a column for each series, from `from` to `to` in `steps`
 * steps. The steps begin at multiples of their length, so that a chart that moves on does not flicker.
 */
export function chartRows(allSeries, from, to, steps) {
    const step = Math.max(2, Math.ceil((to - from) / steps));
    const start = Math.floor(from / step) * step;
    const rows = [];
    for (let t = start; t < to; t += step) {
        rows.push([t], [t + step / 2]);
    }
    allSeries.forEach((series, i) => fill(rows, i + 1, series, start, step));
    return rows;
}

/** The largest magnitude of a column; 0 when it is empty. */
function magnitude(rows, column) {
    let most = 0;
    for (const row of rows) {
        const [low, , high] = row[column];
        most = Math.max(most, Math.abs(low) || 0, Math.abs(high) || 0);
    }
    return most;
}

const kOtherRange = 8;

/**
 * Which series go to the right axis: those whose magnitude is separated from the first one's by the widest step
 * between neighbours, when that is at least eightfold. A series with an axis of its own choice has that one.
 */
export function chooseAxes(allSeries, rows) {
    const known = allSeries.map((series, i) => ({ series, size: magnitude(rows, i + 1) }))
        .filter(({ size }) => size > 0);
    const order = [...known].sort((a, b) => a.size - b.size);
    let cut = 0;
    let widest = kOtherRange;
    for (let i = 1; i < order.length; ++i) {
        const ratio = order[i].size / order[i - 1].size;
        if (ratio >= widest) {
            widest = ratio;
            cut = i;
        }
    }
    const isFirstLarge = cut > 0 && order.indexOf(known[0]) >= cut;
    for (const series of allSeries) {
        const place = order.findIndex((one) => one.series === series);
        const isLarge = place >= cut;
        const isRight = cut > 0 && place >= 0 && isLarge !== isFirstLarge;
        series.isRight = series.axis === 'auto' ? isRight : series.axis === 'right';
    }
}
