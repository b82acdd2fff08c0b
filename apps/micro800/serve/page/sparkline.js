// The last minute of a tag as a small line. A gap stays a gap.

import { Recent } from './tags.js';

const kWidth = 80;
const kHeight = 18;

/** A canvas of the sparkline's size in the device's pixels. */
export function makeSparkline() {
    const canvas = document.createElement('canvas');
    const ratio = window.devicePixelRatio || 1;
    canvas.width = kWidth * ratio;
    canvas.height = kHeight * ratio;
    canvas.setAttribute('aria-hidden', 'true');
    return canvas;
}

function bounds(recent) {
    let low = Infinity;
    let high = -Infinity;
    for (const value of recent.values) {
        if (value < low) {
            low = value;
        }
        if (value > high) {
            high = value;
        }
    }
    return [low, high];
}

/** Draws it in this colour. */
export function drawSparkline(canvas, recent, colour) {
    const context = canvas.getContext('2d');
    const { width, height } = canvas;
    context.clearRect(0, 0, width, height);
    const [low, high] = bounds(recent);
    if (low > high) {
        return;
    }
    const pad = 2 * (height / kHeight);
    const scale = high > low ? (height - 2 * pad) / (high - low) : 0;
    const step = width / (Recent.kSlots - 1);
    context.beginPath();
    let isDown = false;
    for (let i = 0; i < Recent.kSlots; ++i) {
        const value = recent.at(Recent.kSlots - 1 - i);
        if (Number.isNaN(value)) {
            isDown = false;
            continue;
        }
        const y = scale ? height - pad - (value - low) * scale : height / 2;
        if (isDown) {
            context.lineTo(i * step, y);
        } else {
            context.moveTo(i * step, y);
        }
        isDown = true;
    }
    context.lineWidth = height / kHeight;
    context.strokeStyle = colour;
    context.stroke();
}
