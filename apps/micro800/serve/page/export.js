// The window of the trend as a CSV file and as a picture.

import { byId } from './format.js';
import { fetchHistory } from './history.js';
import { styleOf } from './series_style.js';

const kLineEnd = '\r\n';

/** A CSV field. A text that a spreadsheet would take for a formula gets an apostrophe in front. */
function field(text) {
    const safe = /^[=+\-@\t\r]/.test(text) ? `'${text}` : text;
    return `"${safe.replace(/"/g, '""')}"`;
}

function linesOf(address, { samples = [], thinned = [] }) {
    const name = field(address);
    const lines = [];
    for (const [t, low, high] of thinned) {
        const rest = low === null ? 'gap,,,' : `range,,${low},${high}`;
        lines.push([t, `${new Date(t).toISOString()},${name},${rest}`]);
    }
    for (const [t, value] of samples) {
        const rest = value === null ? 'gap,,,' : `value,${value},,`;
        lines.push([t, `${new Date(t).toISOString()},${name},${rest}`]);
    }
    return lines;
}

/** One line for each sample (value), each thinned range (minimum, maximum) and each beginning of a gap. */
export async function csvOf(addresses, from, to) {
    const answers = await Promise.all(addresses.map((address) => fetchHistory(address, from, to)));
    const lines = answers.flatMap((answer, i) => linesOf(addresses[i], answer)).sort(([a], [b]) => a - b);
    return ['time,address,kind,value,minimum,maximum', ...lines.map(([, text]) => text), ''].join(kLineEnd);
}

function drawTexts(context, origin) {
    const css = getComputedStyle(document.body);
    context.fillStyle = css.color;
    context.font = `12px ${css.fontFamily}`;
    context.textBaseline = 'middle';
    for (const label of document.querySelectorAll('#chart .dygraph-axis-label')) {
        const box = label.getBoundingClientRect();
        const isLeft = label.classList.contains('dygraph-axis-label-y1') || label.classList.contains('dygraph-axis-label-y');
        const isRightAxis = label.classList.contains('dygraph-axis-label-y2');
        context.textAlign = isRightAxis ? 'left' : isLeft ? 'right' : 'center';
        const x = isRightAxis ? box.left : isLeft ? box.right : box.left + box.width / 2;
        context.fillText(label.textContent, x - origin.left, box.top + box.height / 2 - origin.top);
    }
}

function drawNames(context, series, top) {
    context.textAlign = 'left';
    series.forEach(({ tag, isRight }, i) => {
        const { colour, dash } = styleOf(i);
        const y = top + 9 + 18 * i;
        context.strokeStyle = colour;
        context.lineWidth = 2;
        context.setLineDash(dash || []);
        context.beginPath();
        context.moveTo(8, y);
        context.lineTo(36, y);
        context.stroke();
        context.fillText(`${tag.address}${isRight ? ' (right axis)' : ''}`, 44, y);
    });
}

/** The chart as it is, with its axes and the names of the tags, on a canvas. */
export function pictureOf(trend) {
    const box = byId('chart').getBoundingClientRect();
    const ratio = window.devicePixelRatio || 1;
    const height = box.height + 18 * trend.series.length + 8;
    const canvas = document.createElement('canvas');
    canvas.width = box.width * ratio;
    canvas.height = height * ratio;
    const context = canvas.getContext('2d');
    context.scale(ratio, ratio);
    context.fillStyle = getComputedStyle(document.body).backgroundColor;
    context.fillRect(0, 0, box.width, height);
    for (const layer of document.querySelectorAll('#chart canvas')) {
        const place = layer.getBoundingClientRect();
        context.drawImage(layer, place.left - box.left, place.top - box.top, place.width, place.height);
    }
    drawTexts(context, box);
    drawNames(context, trend.series, box.height + 4);
    return canvas;
}

/** Hands a file to the user. */
function save(blob, name) {
    const url = URL.createObjectURL(blob);
    const link = document.createElement('a');
    link.href = url;
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
}

function fileName(trend, ending) {
    return `trend-${new Date(trend.to).toISOString().slice(0, 19).replace(/[-:]/g, '')}.${ending}`;
}

export function startExport(trend, say) {
    byId('export-csv').addEventListener('click', async () => {
        const addresses = trend.series.map(({ tag }) => tag.address);
        if (!addresses.length) {
            say('No tag is drawn');
            return;
        }
        try {
            const text = await csvOf(addresses, trend.from, trend.to);
            save(new Blob([text], { type: 'text/csv' }), fileName(trend, 'csv'));
        } catch (error) {
            say(`The history could not be loaded: ${error.message}`);
        }
    });
    byId('export-png').addEventListener('click', () => {
        if (!trend.series.length) {
            say('No tag is drawn');
            return;
        }
        pictureOf(trend).toBlob((blob) => save(blob, fileName(trend, 'png')), 'image/png');
    });
}
