// The table below the chart: each series with its line, its value at the cursor, its axis.

import { byId, clockText, make, numberText, setText } from './format.js';
import { styleOf } from './series_style.js';
import { valueText } from './tags.js';

function swatch(place) {
    const { colour, dash } = styleOf(place);
    const ratio = window.devicePixelRatio || 1;
    const canvas = make('canvas', { 'aria-hidden': 'true', class: 'swatch', width: 28 * ratio, height: 10 * ratio });
    const context = canvas.getContext('2d');
    context.scale(ratio, ratio);
    context.setLineDash(dash || []);
    context.strokeStyle = colour;
    context.lineWidth = 2;
    context.beginPath();
    context.moveTo(0, 5);
    context.lineTo(28, 5);
    context.stroke();
    return canvas;
}

function rangeText([low, last, high]) {
    if (!Number.isFinite(last)) {
        return 'no value';
    }
    return low < high ? `${numberText(last)} (${numberText(low)} … ${numberText(high)})` : numberText(last);
}

export class Legend {
    constructor(trend) {
        this.trend = trend;
        this.values = [];
        this.autos = [];
    }

    /** The line of a series. */
    row(series, place) {
        const { address } = series.tag;
        const value = make('td', { role: 'cell', class: 'number' });
        const axis = make('select', { 'aria-label': `Axis of ${address}` },
                          ...['auto', 'left', 'right'].map((name) => make('option', { value: name }, name)));
        axis.value = series.axis;
        axis.addEventListener('change', () => {
            series.axis = axis.value;
            this.trend.axesChange();
        });
        const remove = make('button', { type: 'button', 'aria-label': `Remove ${address} from the trend` }, '×');
        remove.addEventListener('click', () => {
            this.trend.remove(series.tag);
            this.trend.frame.focus();
        });
        this.values.push(value);
        this.autos.push(axis.options[0]);
        return make('tr', { role: 'row' }, make('th', { role: 'rowheader', scope: 'row' }, swatch(place), address),
                    value, make('td', { role: 'cell' }, axis), make('td', { role: 'cell' }, remove));
    }

    /** Other series, or other colours. */
    rebuild() {
        this.values = [];
        this.autos = [];
        byId('legend-rows').replaceChildren(...this.trend.series.map((series, i) => this.row(series, i)));
        byId('legend').hidden = this.trend.series.length === 0;
    }

    /** Brings the values up to date: those at the cursor, else those of now. */
    show() {
        const { trend } = this;
        const row = trend.cursorRow();
        const at = row >= 0 ? trend.rows[row] : null;
        setText(byId('legend-time'), at ? clockText(at[0], trend.span < 120000 ? 1 : 0) : 'Now');
        trend.series.forEach(({ tag, isRight }, i) => {
            const now = trend.tags.shownState(tag) === 'good' ? valueText(tag) : 'not current';
            setText(this.values[i], at ? rangeText(at[i + 1]) : now);
            setText(this.autos[i], isRight ? 'auto (right)' : 'auto (left)');
        });
    }

    /** All of it as one sentence. */
    text() {
        const parts = this.trend.series.map(({ tag }, i) => `${tag.address} ${this.values[i].textContent}`);
        return `${byId('legend-time').textContent}: ${parts.join(', ')}`;
    }
}
