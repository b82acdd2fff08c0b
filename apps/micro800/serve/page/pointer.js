// What mouse, fingers and keys do to the chart's window of time.

const kWheelStep = 1.2;

/** The share of the plot's width at which an event happened. */
function shareOf(event, plot) {
    const { left, width } = plot();
    return (event.clientX - left) / width;
}

/**
 * Wires a frame. `plot()` gives left and width of the plot in the page; `view` has move(shares), zoom(factor, at),
 * select(from, to), live(), cursor(steps); shares are parts of the width.
 */
export function watchPointer(frame, range, plot, view) {
    const fingers = new Map();
    let start = null;

    const showRange = (from, to) => {
        const { width, inset } = plot();
        range.hidden = false;
        range.style.left = `${inset + Math.min(from, to) * width}px`;
        range.style.width = `${Math.abs(to - from) * width}px`;
    };
    const spread = () => {
        const [a, b] = [...fingers.values()];
        return Math.max(0.01, Math.abs(a - b));
    };

    frame.addEventListener('pointerdown', (event) => {
        if (event.button !== 0) {
            return;
        }
        fingers.set(event.pointerId, shareOf(event, plot));
        frame.setPointerCapture(event.pointerId);
        start = { share: shareOf(event, plot), isRange: event.shiftKey };
    });
    frame.addEventListener('pointermove', (event) => {
        if (!start || !fingers.has(event.pointerId)) {
            return;
        }
        const share = shareOf(event, plot);
        if (fingers.size === 2) {
            const before = spread();
            fingers.set(event.pointerId, share);
            const [a, b] = [...fingers.values()];
            view.zoom(before / spread(), (a + b) / 2);
        } else if (start.isRange) {
            showRange(start.share, share);
        } else {
            view.move(fingers.get(event.pointerId) - share);
            fingers.set(event.pointerId, share);
        }
    });
    const end = (event) => {
        if (start && start.isRange && event.type === 'pointerup') {
            const share = shareOf(event, plot);
            if (Math.abs(share - start.share) > 0.01) {
                view.select(Math.min(start.share, share), Math.max(start.share, share));
            }
        }
        range.hidden = true;
        fingers.delete(event.pointerId);
        start = fingers.size ? start : null;
    };
    frame.addEventListener('pointerup', end);
    frame.addEventListener('pointercancel', end);
    frame.addEventListener('dblclick', () => view.live());
    frame.addEventListener('wheel', (event) => {
        if (event.ctrlKey) {
            event.preventDefault();
            view.zoom(event.deltaY > 0 ? kWheelStep : 1 / kWheelStep, shareOf(event, plot));
        }
    }, { passive: false });
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
