// The trend of the chosen tags. The window of time is this file's; the library draws what it is given.

import { chartRows, chooseAxes } from './chart_data.js';
import { byId, clockText, momentText, numberText } from './format.js';
import { Series } from './history.js';
import { Legend } from './legend.js';
import { Pointer, watchKeys } from './pointer.js';
import { kMostSeries, styleOf } from './series_style.js';

const kShortestMs = 1000;
const kPointsAsked = 1600;
const kMostSteps = 500;
const kLoadAfterMs = 150;
const kQuickMs = 250;
const kSlowMs = 1000;
const kQuickSpanMs = 120000;

/* global Dygraph */

/** A time on the axis: seconds only where they are not whole minutes. */
function timeLabel(ms) {
    const text = clockText(Number(ms));
    return text.endsWith(':00') ? text.slice(0, -3) : text;
}

export class Trend {
    /** `say(text)` tells a screen reader; `onDropped(tag)`: the tag is no longer drawn. */
    constructor(tags, say, onDropped) {
        this.tags = tags;
        this.say = say;
        this.onDropped = onDropped;
        this.series = [];
        this.rows = [];
        this.chart = null;
        this.span = 300000;
        this.to = 0;
        this.isFollowing = true;
        this.hours = 1;
        this.cursorAt = null;
        this.loadTimer = 0;
        this.frame = byId('chart-frame');
        this.legend = new Legend(this);
        // The library's own legend writes HTML.
        Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);
        this.wire();
        this.tick();
    }

    wire() {
        document.querySelectorAll('#trend [data-span]').forEach((button) => {
            button.addEventListener('click', () => this.showSpan(button.dataset.span));
        });
        byId('earlier').addEventListener('click', () => this.move(-0.5));
        byId('later').addEventListener('click', () => this.move(0.5));
        byId('zoom-in').addEventListener('click', () => this.zoom(0.5, 0.5));
        byId('zoom-out').addEventListener('click', () => this.zoom(2, 0.5));
        byId('follow').addEventListener('click', () => (this.isFollowing ? this.hold() : this.live()));
        this.pointer = new Pointer(this.frame, byId('range'), () => this.plot(), this);
        watchKeys(this.frame, this);
        this.frame.addEventListener('pointerleave', () => this.clearCursor());
        this.frame.addEventListener('blur', () => this.clearCursor());
        new ResizeObserver(() => this.chart && this.chart.resize()).observe(this.frame);
    }

    // Which tags.

    add(tag) {
        if (this.series.length >= kMostSeries) {
            this.say(`The trend shows ${kMostSeries} tags at most`);
            this.onDropped(tag);
            return;
        }
        const series = new Series(tag);
        this.series.push(series);
        this.rebuild();
        this.load([series]);
    }

    remove(tag) {
        this.series = this.series.filter((series) => series.tag !== tag);
        this.onDropped(tag);
        this.rebuild();
    }

    /** The list of tags is another one. */
    clear() {
        this.series = [];
        this.rebuild();
    }

    sample(tag, t, number) {
        const series = this.series.find((one) => one.tag === tag);
        if (series) {
            series.add(t, number);
        }
    }

    // Which time.

    get from() {
        return this.to - this.span;
    }

    /** Moves by shares of the window; up to now it goes along with the time again. */
    move(share) {
        this.show(this.to + share * this.span, this.span);
    }

    /** Zooms around a share of the window. */
    zoom(factor, at) {
        const span = Math.max(kShortestMs, Math.min(this.span * factor, this.hours * 3600000));
        this.show(this.isFollowing ? this.to : this.from + at * this.span + (1 - at) * span, span);
    }

    select(first, last) {
        this.show(this.from + last * this.span, Math.max(kShortestMs, (last - first) * this.span));
    }

    show(to, span) {
        const now = this.tags.now();
        this.isFollowing = to >= now - 0.01 * span;
        this.to = Math.min(to, now);
        this.span = span;
        this.changed();
    }

    hold() {
        this.isFollowing = false;
        this.changed();
    }

    live() {
        this.isFollowing = true;
        this.to = this.tags.now();
        this.changed();
    }

    async showSpan(text) {
        this.span = text === 'all' ? this.hours * 3600000 : Number(text);
        this.live();
        if (text !== 'all' || !this.series.length) {
            return;
        }
        await this.load(this.series);
        const first = Math.min(...this.series.map(({ points }) => (points.length ? points[0].t : Infinity)));
        if (Number.isFinite(first)) {
            this.span = Math.max(60000, this.to - first);
            this.changed();
        }
    }

    changed() {
        this.draw();
        clearTimeout(this.loadTimer);
        this.loadTimer = setTimeout(() => this.loadMissing(), kLoadAfterMs);
    }

    // What is drawn.

    loadMissing() {
        const step = this.span / kPointsAsked;
        this.load(this.series.filter((series) => !series.covers(this.from, this.to, step)));
    }

    /** Loads what these series need for the window and half of it around. */
    async load(wanted) {
        const now = this.tags.now();
        const to = this.to + this.span / 2;
        const until = this.isFollowing || to >= now ? Infinity : to;
        const from = this.from - this.span / 2;
        try {
            await Promise.all(wanted.map((series) => series.load(from, until, now, 2 * kPointsAsked)));
        } catch (error) {
            this.say(`The history could not be loaded: ${error.message}`);
        }
        this.axesChange();
    }

    /** After a break: what happened meanwhile is asked for. */
    reload() {
        if (this.series.length) {
            this.load(this.series);
        }
    }

    plot() {
        const frame = this.frame.getBoundingClientRect();
        const area = this.chart ? this.chart.getArea() : { x: 0, w: frame.width };
        const inset = byId('chart').offsetLeft + area.x;
        return { left: frame.left + this.frame.clientLeft + inset, width: area.w, inset };
    }

    tick() {
        const isQuick = this.span <= kQuickSpanMs;
        setTimeout(() => this.tick(), isQuick ? kQuickMs : kSlowMs);
        if (!document.hidden && this.isFollowing && this.series.length) {
            this.to = this.tags.now();
            requestAnimationFrame(() => this.draw());
        }
    }

    makeRows() {
        const steps = Math.min(kMostSteps, Math.max(50, Math.floor(this.plot().width)));
        return chartRows(this.series, this.from, this.to, steps);
    }

    draw() {
        if (this.chart) {
            this.rows = this.makeRows();
            this.chart.updateOptions({ file: this.rows, dateWindow: [this.from, this.to] });
            this.showCursor();
        }
        byId('follow').setAttribute('aria-pressed', String(this.isFollowing));
        for (const button of document.querySelectorAll('#trend [data-span]')) {
            button.setAttribute('aria-pressed', String(Number(button.dataset.span) === this.span));
        }
        this.legend.show();
        this.describe();
    }

    /** Makes the chart anew: other series, other axes, other colours. */
    rebuild() {
        if (this.chart) {
            this.chart.destroy();
            this.chart = null;
        }
        byId('chart-empty').hidden = this.series.length > 0;
        this.to = this.isFollowing ? this.tags.now() : this.to;
        this.legend.rebuild();
        if (this.series.length) {
            this.rows = this.makeRows();
            chooseAxes(this.series, this.rows);
            this.chart = new Dygraph(byId('chart'), this.rows, this.options());
        }
        this.draw();
    }

    /** The axes by the values that there are now. */
    axesChange() {
        const before = this.series.map(({ isRight }) => isRight).join();
        this.rows = this.makeRows();
        chooseAxes(this.series, this.rows);
        if (this.series.map(({ isRight }) => isRight).join() !== before) {
            this.rebuild();
        } else {
            this.draw();
        }
    }

    options() {
        const css = getComputedStyle(document.body);
        const line = css.getPropertyValue('--line').trim();
        const series = {};
        this.series.forEach((one, i) => {
            const { dash } = styleOf(i);
            series[`s${i}`] = { axis: one.isRight ? 'y2' : 'y', ...(dash ? { strokePattern: dash } : {}) };
        });
        const numbers = { axisLabelWidth: 62, axisLabelFormatter: (value) => numberText(value, 6) };
        return {
            labels: ['time', ...this.series.map((one, i) => `s${i}`)],
            colors: this.series.map((one, i) => styleOf(i).colour),
            series,
            axes: {
                x: { gridLineColor: line, axisLabelWidth: 64, ticker: Dygraph.dateTicker, axisLabelFormatter: timeLabel },
                y: { ...numbers, gridLineColor: line },
                y2: { ...numbers, drawGrid: false, independentTicks: true },
            },
            axisLineColor: css.getPropertyValue('--edge').trim(),
            axisLabelFontSize: 12,
            customBars: true,
            dateWindow: [this.from, this.to],
            drawGapEdgePoints: true,
            fillAlpha: 0.25,
            highlightCircleSize: 3,
            highlightCallback: (event, x) => this.setCursor(x),
            interactionModel: {},
            legend: 'never',
            stepPlot: true,
            strokeWidth: 1.5,
            xRangePad: 0,
            yRangePad: 8,
        };
    }

    // The cursor.

    setCursor(t) {
        this.cursorAt = t;
        this.showCursor();
        this.legend.show();
    }

    clearCursor() {
        this.cursorAt = null;
        this.showCursor();
        this.legend.show();
    }

    /** Moves the cursor by rows, for the keyboard. */
    cursor(steps) {
        if (!this.rows.length) {
            return;
        }
        const last = this.rows.length - 1;
        const at = this.cursorAt === null ? last : this.cursorRow() + 2 * steps;
        this.setCursor(this.rows[Math.max(0, Math.min(last, at))][0]);
        this.say(this.legend.text());
    }

    /** The number of the row at the cursor; -1 without one. */
    cursorRow() {
        if (this.cursorAt === null || !this.rows.length) {
            return -1;
        }
        const step = this.rows.length > 1 ? this.rows[1][0] - this.rows[0][0] : 1;
        const row = Math.round((this.cursorAt - this.rows[0][0]) / step);
        return Math.max(0, Math.min(this.rows.length - 1, row));
    }

    showCursor() {
        const line = byId('cursor');
        const row = this.chart ? this.cursorRow() : -1;
        const isShown = row >= 0 && this.cursorAt >= this.from && this.cursorAt <= this.to;
        line.hidden = !isShown;
        if (isShown) {
            const { inset, width } = this.plot();
            line.style.left = `${inset + ((this.rows[row][0] - this.from) / this.span) * width}px`;
        }
    }

    /** What a screen reader says of the chart. */
    describe() {
        const names = this.series.map(({ tag }) => tag.address).join(', ');
        const time = this.isFollowing ? `the last ${numberText(this.span / 1000, 4)} seconds`
                                      : `${momentText(this.from)} to ${momentText(this.to)}`;
        const label = names ? `Trend chart of ${names}, ${time}` : 'Trend chart, no tag chosen';
        if (this.frame.getAttribute('aria-label') !== label) {
            this.frame.setAttribute('aria-label', label);
        }
    }
}
