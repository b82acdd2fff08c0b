// What mouse, fingers and keys do to the chart's window of time. The `view` has move(share), zoom(factor, at),
// select(from, to), live() and cursor(steps); shares are parts of the plot's width.

const kWheelStep = 1.2;
const kLeastRange = 0.01;

/** Mouse and fingers on the chart's frame. */
export class Pointer {
    /** `range` is the element that shows the range to zoom to; `plot()` gives left, width and inset of the plot. */
    constructor(frame, range, plot, view) {
        this.frame = frame;
        this.range = range;
        this.plot = plot;
        this.view = view;
        this.fingers = new Map();  // where each of them was last
        this.rangeFrom = null;     // where the range begins, while one is drawn
        frame.addEventListener('pointerdown', (event) => this.down(event));
        frame.addEventListener('pointermove', (event) => this.move(event));
        frame.addEventListener('pointerup', (event) => this.up(event));
        frame.addEventListener('pointercancel', (event) => this.release(event));
        frame.addEventListener('dblclick', () => view.live());
        frame.addEventListener('wheel', (event) => this.wheel(event), { passive: false });
    }

    shareOf(event) {
        const { left, width } = this.plot();
        return (event.clientX - left) / width;
    }

    down(event) {
        if (event.button !== 0) {
            return;
        }
        const share = this.shareOf(event);
        this.fingers.set(event.pointerId, share);
        this.frame.setPointerCapture(event.pointerId);
        this.rangeFrom = event.shiftKey ? share : null;
    }

    move(event) {
        const before = this.fingers.get(event.pointerId);
        if (before === undefined) {
            return;
        }
        const share = this.shareOf(event);
        if (this.rangeFrom !== null) {
            this.showRange(share);
        } else if (this.fingers.size === 2) {
            this.pinch(event.pointerId, share);
        } else {
            this.fingers.set(event.pointerId, share);
            this.view.move(before - share);
        }
    }

    pinch(finger, share) {
        const spread = () => {
            const [a, b] = [...this.fingers.values()];
            return Math.max(kLeastRange, Math.abs(a - b));
        };
        const before = spread();
        this.fingers.set(finger, share);
        const [a, b] = [...this.fingers.values()];
        this.view.zoom(before / spread(), (a + b) / 2);
    }

    showRange(share) {
        const { width, inset } = this.plot();
        this.range.hidden = false;
        this.range.style.left = `${inset + Math.min(this.rangeFrom, share) * width}px`;
        this.range.style.width = `${Math.abs(share - this.rangeFrom) * width}px`;
    }

    up(event) {
        const from = this.rangeFrom;
        const share = this.shareOf(event);
        this.release(event);
        if (from !== null && Math.abs(share - from) > kLeastRange) {
            this.view.select(Math.min(from, share), Math.max(from, share));
        }
    }

    release(event) {
        this.fingers.delete(event.pointerId);
        this.rangeFrom = null;
        this.range.hidden = true;
    }

    wheel(event) {
        if (event.ctrlKey) {
            event.preventDefault();
            this.view.zoom(event.deltaY > 0 ? kWheelStep : 1 / kWheelStep, this.shareOf(event));
        }
    }
}

/** Wires the keys; the chart's caption names them. */
export function watchKeys(frame, view) {
    const keys = {
        'ArrowLeft': () => view.move(-0.1),
        'ArrowRight': () => view.move(0.1),
        'Shift+ArrowLeft': () => view.cursor(-1),
        'Shift+ArrowRight': () => view.cursor(1),
        '+': () => view.zoom(0.5, 0.5),
        '-': () => view.zoom(2, 0.5),
        'End': () => view.live(),
    };
    frame.addEventListener('keydown', (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        const isArrow = event.key.startsWith('Arrow');
        const work = keys[event.shiftKey && isArrow ? `Shift+${event.key}` : event.key];
        if (work) {
            event.preventDefault();
            work();
        }
    });
}
