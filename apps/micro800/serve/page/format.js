// Texts of times and numbers, and small tools for the document. Whatever comes from a controller goes into the
// document as text, never as HTML.

/** The element of this id; it must exist. */
export function byId(id) {
    return document.getElementById(id);
}

/** Makes an element with attributes and children; a text child becomes a text node. */
export function make(name, attributes = {}, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        element.setAttribute(key, value);
    }
    element.append(...children);
    return element;
}

/** Sets an element's text, only when it differs: an equal text would still cost a layout. */
export function setText(element, text) {
    if (element.textContent !== text) {
        element.textContent = text;
    }
}

const two = (n) => String(n).padStart(2, '0');

/** "14:03:27", in the browser's zone; with `digits` of the second's fraction behind it. */
export function clockText(ms, digits = 0) {
    const at = new Date(ms);
    const text = `${two(at.getHours())}:${two(at.getMinutes())}:${two(at.getSeconds())}`;
    return digits ? `${text}.${String(at.getMilliseconds()).padStart(3, '0').slice(0, digits)}` : text;
}

/** "2026-11-22 14:03:27". */
export function dateText(ms) {
    const at = new Date(ms);
    return `${at.getFullYear()}-${two(at.getMonth() + 1)}-${two(at.getDate())} ${clockText(ms)}`;
}

/** The time of day, with the date when it is not today. */
export function momentText(ms) {
    return new Date(ms).toDateString() === new Date().toDateString() ? clockText(ms) : dateText(ms);
}

/** How long ago, in steps of a second so that a tag that is polled often keeps one text. */
export function ageText(ms) {
    if (ms < 1000) {
        return '< 1 s';
    }
    const seconds = Math.floor(ms / 1000);
    if (seconds < 60) {
        return `${seconds} s`;
    }
    if (seconds < 3600) {
        return `${Math.floor(seconds / 60)} min ${two(seconds % 60)} s`;
    }
    return `${Math.floor(seconds / 3600)} h ${two(Math.floor(seconds / 60) % 60)} min`;
}

/** A number with up to this many significant digits, without an exponent where one can do without. */
export function numberText(value, digits = 7) {
    if (value === null || value === undefined || !Number.isFinite(value)) {
        return '–';
    }
    if (Number.isInteger(value) && Math.abs(value) < 1e15) {
        return String(value);
    }
    return String(Number(value.toPrecision(digits)));
}

export function bytesText(bytes) {
    return bytes < 1e6 ? `${Math.round(bytes / 1e3)} kB` : `${numberText(bytes / 1e6, 3)} MB`;
}
