// Writing: a field that fits the type, a question with the old and the new value, the outcome as the driver gave it.

import { byId, make, setText } from './format.js';
import { helpLink, valueText } from './tags.js';

const kWholeNumber = /^[+-]?\d+$/;

/** The text of a STRING, which is shown in quotes; none when it has characters that a field does not show. */
function plainText(value) {
    return /^"[^\\]*"$/.test(value) ? value.slice(1, -1) : '';
}

/** A switch for a BOOL; for the rest a field. Text, since a number field would round what it does not know. */
function makeField(tag) {
    const label = `New value of ${tag.address}`;
    if (tag.type === 'BOOL') {
        const input = make('input', { id: 'write-value', type: 'checkbox', role: 'switch', 'aria-label': label });
        input.checked = tag.value === 'true';
        return [input, () => (input.checked ? 'true' : 'false')];
    }
    const isText = tag.type === 'STRING';
    const input = make('input', {
        id: 'write-value', type: 'text', autocomplete: 'off', spellcheck: 'false', 'aria-label': label,
        'aria-describedby': 'write-bounds write-outcome', inputmode: isText ? 'text' : 'decimal',
    });
    if (isText) {
        input.maxLength = tag.maximumLength || 255;
    }
    input.value = isText ? plainText(tag.value ?? '') : tag.value ?? '';
    return [input, () => (isText ? input.value : input.value.trim())];
}

function boundsText(tag) {
    if (tag.type === 'BOOL') {
        return 'off is false, on is true';
    }
    if (tag.type === 'STRING') {
        return `${tag.maximumLength || 255} characters at most`;
    }
    return `${tag.type}: ${tag.minimum} to ${tag.maximum}`;
}

function wholeNumberProblem(tag, text) {
    if (!kWholeNumber.test(text)) {
        return `${tag.type} takes a whole number.`;
    }
    const value = BigInt(text.replace('+', ''));
    const isInside = value >= BigInt(tag.minimum) && value <= BigInt(tag.maximum);
    return isInside ? '' : `${text} is not between ${tag.minimum} and ${tag.maximum}.`;
}

/** Why a text is no value of the tag; empty when it is one. The driver has the last word. */
export function valueProblem(tag, text) {
    if (tag.type === 'BOOL') {
        return '';
    }
    if (text === '') {
        return tag.type === 'STRING' ? 'A string cannot be made empty through the driver.' : 'Enter a value.';
    }
    if (tag.type === 'STRING') {
        return '';
    }
    if (tag.type !== 'REAL' && tag.type !== 'LREAL') {
        return wholeNumberProblem(tag, text);
    }
    const value = Number(text);
    if (!Number.isFinite(value)) {
        return `${tag.type} takes a number, with a point before its fraction.`;
    }
    const isInside = value >= Number(tag.minimum) && value <= Number(tag.maximum);
    return isInside ? '' : `${text} is not between ${tag.minimum} and ${tag.maximum}.`;
}

async function post(address, value) {
    const answer = await fetch('/api/write', {
        method: 'POST',
        headers: { 'Content-Type': 'application/json' },
        body: JSON.stringify({ address, value }),
    });
    const result = await answer.json();
    return answer.ok && result.ok ? { ok: true, old: result.old, new: result.new }
                                  : { ok: false, problem: result.problem || `the server answered ${answer.status}`, help: result.help };
}

export class WriteDialog {
    constructor(tags) {
        this.tags = tags;
        this.tag = null;
        this.step = 'entry';  // then 'confirm', 'busy', 'done'
        this.dialog = byId('write');
        byId('write-form').addEventListener('submit', (event) => {
            event.preventDefault();
            this.goOn();
        });
        byId('write-cancel').addEventListener('click', () => this.dialog.close());
        byId('write-back').addEventListener('click', () => this.enter());
        // While the controller is being asked, the outcome is not to be missed.
        this.dialog.addEventListener('cancel', (event) => {
            if (this.step === 'busy') {
                event.preventDefault();
            }
        });
    }

    open(tag) {
        this.tag = tag;
        const [input, read] = makeField(tag);
        this.read = read;
        const word = tag.type === 'BOOL' ? make('span', { class: 'switch-word', 'aria-hidden': 'true' }) : '';
        byId('write-field').replaceChildren(input, word);
        setText(byId('write-address'), tag.address);
        setText(byId('write-bounds'), boundsText(tag));
        input.addEventListener('input', () => this.say(''));
        this.enter();
        this.dialog.showModal();
        input.focus();
        if (tag.type !== 'BOOL') {
            input.select();
        }
    }

    /** Shows the step's parts and no others. */
    show(step, go) {
        this.step = step;
        byId('write-entry').hidden = step !== 'entry';
        byId('write-change').hidden = step === 'entry';
        byId('write-back').hidden = step !== 'confirm';
        byId('write-go').hidden = step === 'done';
        byId('write-go').disabled = step === 'busy';
        byId('write-cancel').disabled = step === 'busy';
        setText(byId('write-cancel'), step === 'done' ? 'Close' : 'Cancel');
        setText(byId('write-go'), go);
    }

    say(text, kind = '', link = '') {
        const outcome = byId('write-outcome');
        outcome.dataset.kind = kind;
        outcome.replaceChildren(link ? make('a', { href: link }, text) : text);
    }

    enter() {
        this.say('');
        this.show('entry', 'Next');
        byId('write-value').focus();
    }

    goOn() {
        if (this.step === 'entry') {
            this.confirm();
        } else if (this.step === 'confirm') {
            this.write();
        }
    }

    confirm() {
        const text = this.read();
        const problem = valueProblem(this.tag, text);
        if (problem) {
            this.say(problem, 'failed');
            byId('write-value').focus();
            return;
        }
        this.text = text;
        const isCurrent = this.tags.shownState(this.tag) === 'good';
        setText(byId('write-old'), isCurrent ? valueText(this.tag) : `${valueText(this.tag)} (not current)`);
        setText(byId('write-new'), this.tag.type === 'STRING' ? `"${text}"` : text);
        this.say(`Write this to ${this.tag.address}?`);
        this.show('confirm', 'Write');
        byId('write-go').focus();
    }

    async write() {
        this.show('busy', 'Writing…');
        let result;
        try {
            result = await post(this.tag.address, this.text);
        } catch (error) {
            result = { ok: false, problem: `No answer from micro800 serve: ${error.message}. The write may have been carried out.` };
        }
        this.show('done', '');
        if (result.ok) {
            setText(byId('write-old'), result.old ?? '–');
            setText(byId('write-new'), result.new ?? this.text);
            this.say('Written: the controller confirmed it.', 'good');
        } else {
            this.say(`Not confirmed: ${result.problem}`, 'failed', helpLink(result));
        }
        byId('write-cancel').focus();
    }
}
