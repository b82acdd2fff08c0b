// One row of the table: made once, afterwards only texts change, and only those that differ.

import { ageText, make } from './format.js';
import { drawSparkline, makeSparkline } from './sparkline.js';
import { helpLink, kStateWords, valueText } from './tags.js';

/** Sets a text node's text, only when it differs. */
function put(node, text) {
    if (node.data !== text) {
        node.data = text;
    }
}

function cell(name, ...children) {
    return make('td', { role: 'cell', class: name }, ...children);
}

/** The row of a tag. `isVisible` is for its owner: only a row that can be seen is brought up to date. */
export class TagRow {
    constructor(tag) {
        this.tag = tag;
        this.isVisible = false;
        this.isQueued = false;  // waits for the next frame
        this.isStale = true;    // what it shows is older than the tag
        this.problem = '';
        this.value = document.createTextNode('');
        this.word = document.createTextNode('');
        this.age = document.createTextNode('');
        this.box = make('input', { type: 'checkbox', 'aria-label': `Trend of ${tag.address}` });
        this.box.disabled = tag.type === 'STRING';
        this.setButton = make('button', { type: 'button', 'aria-label': `Set ${tag.address}` }, 'Set');
        this.mark = make('span', { class: 'mark', 'aria-hidden': 'true' });
        this.why = make('a', { class: 'why', href: '/troubleshooting' });
        this.canvas = makeSparkline();
        this.element = this.makeElement();
    }

    makeElement() {
        const { tag } = this;
        const name = make('th', { role: 'rowheader', scope: 'row', class: 'c-address' }, tag.address, this.why);
        return make('tr', { role: 'row' }, cell('c-trend', this.box), name, cell('c-type', tag.type),
                    cell('c-value', this.value), cell('c-set', this.setButton),
                    cell('c-state', this.mark, this.word), cell('c-age', this.age),
                    cell('c-recent', this.canvas));
    }

    /** Brings value and state up to date. */
    show(tags) {
        const { tag } = this;
        const state = tags.shownState(tag);
        this.isStale = false;
        put(this.value, valueText(tag));
        put(this.word, kStateWords[state] || state);
        if (this.element.dataset.state !== state) {
            this.element.dataset.state = state;
        }
        const problem = state === 'good' ? '' : tag.problem || '';
        if (this.problem !== problem) {
            this.problem = problem;
            this.why.textContent = problem;
            this.why.href = helpLink(tag);
        }
    }

    /** Brings what goes on with the time up to date: age and sparkline. */
    showTime(now, colour) {
        const { tag } = this;
        put(this.age, tag.time ? ageText(Math.max(0, now - tag.time)) : '–');
        drawSparkline(this.canvas, tag.recent, colour);
    }
}
