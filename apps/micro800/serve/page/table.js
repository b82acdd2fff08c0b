// The table of the tags: search, order, groups, and one frame of work for whatever changed meanwhile.

import { byId, make, setText } from './format.js';
import { kStateOrder } from './tags.js';
import { TagRow } from './tag_row.js';

const kColumns = 8;
const kTimeMs = 1000;
const kOrderMs = 2000;
const kMoving = ['value', 'state', 'age'];

const names = new Intl.Collator('en', { numeric: true });

function compareValues(a, b) {
    const isNumber = a.number !== null && b.number !== null;
    return isNumber ? a.number - b.number : names.compare(a.value ?? '', b.value ?? '');
}

export class TagTable {
    /** `actions`: onTrend(tag, isOn), onSet(tag, button). */
    constructor(tags, actions) {
        this.tags = tags;
        this.actions = actions;
        this.rows = [];
        this.bodies = new Map();
        this.closed = new Set();
        this.key = '';
        this.direction = 1;
        this.changed = [];
        this.frame = 0;
        this.element = byId('tag-table');
        this.observer = new IntersectionObserver((all) => this.see(all), { rootMargin: '100px' });
        byId('search').addEventListener('input', () => this.arrange());
        byId('grouped').addEventListener('change', () => this.arrange());
        for (const head of this.element.querySelectorAll('th[data-sort]')) {
            head.firstElementChild.addEventListener('click', () => this.sortBy(head.dataset.sort));
        }
        this.element.addEventListener('click', (event) => this.click(event));
        this.element.addEventListener('change', (event) => this.tick(event));
        document.addEventListener('visibilitychange', () => this.schedule());
        setInterval(() => this.showTimes(), kTimeMs);
        setInterval(() => this.keepOrder(), kOrderMs);
        tags.onReplaced = () => this.rebuild();
        tags.onChanged = (tag) => this.change(tag);
    }

    rebuild() {
        this.observer.disconnect();
        this.rows = this.tags.list.map((tag) => new TagRow(tag));
        this.rows.forEach((row) => {
            row.element.dataset.index = row.tag.index;
            this.observer.observe(row.element);
        });
        this.changed = [];
        this.arrange();
    }

    // What changed.

    change(tag) {
        const row = this.rows[tag.index];
        row.isStale = true;
        // A page in the background draws nothing for hours: each row waits once.
        if (row.isVisible && !row.isQueued) {
            row.isQueued = true;
            this.changed.push(row);
            this.schedule();
        }
    }

    schedule() {
        if (!this.frame && !document.hidden) {
            this.frame = requestAnimationFrame(() => this.draw());
        }
    }

    draw() {
        this.frame = 0;
        const rows = this.changed;
        this.changed = [];
        for (const row of rows) {
            row.isQueued = false;
            if (row.isStale && row.isVisible) {
                row.show(this.tags);
            }
        }
        this.showCount();
    }

    see(all) {
        const now = this.tags.now();
        for (const { target, isIntersecting } of all) {
            const row = this.rows[Number(target.dataset.index)];
            if (!row || row.element !== target) {
                continue;
            }
            row.isVisible = isIntersecting;
            if (isIntersecting) {
                row.show(this.tags);
                this.showTime(row, now);
            }
        }
    }

    showTime(row, now) {
        // Behind a break nothing is known: the line goes on only while the stream does.
        if (this.tags.isLive) {
            row.tag.recent.advance(now);
        }
        row.showTime(now, this.colour);
    }

    showTimes() {
        if (document.hidden) {
            return;
        }
        const now = this.tags.now();
        this.rows.filter((row) => row.isVisible).forEach((row) => this.showTime(row, now));
    }

    /** Shows everything anew, also what did not change: the stream broke or came back, or the colours changed. */
    refresh() {
        this.colour = getComputedStyle(document.body).getPropertyValue('--spark').trim();
        for (const row of this.rows) {
            row.show(this.tags);
        }
        this.showTimes();
        this.showCount();
    }

    showCount() {
        const counts = new Map();
        for (const tag of this.tags.list) {
            const state = this.tags.shownState(tag);
            counts.set(state, (counts.get(state) || 0) + 1);
        }
        const parts = kStateOrder.filter((state) => counts.get(state))
            .map((state) => `${counts.get(state)} ${state === 'lost' ? 'not current' : state}`);
        setText(byId('count'), `${this.tags.list.length} tags: ${parts.join(', ')}`);
        this.bodies.forEach((body) => this.showGroup(body));
    }

    // Order, search and groups.

    sortBy(key) {
        this.direction = this.key === key ? -this.direction : 1;
        this.key = key;
        for (const head of this.element.querySelectorAll('th[data-sort]')) {
            const order = this.direction > 0 ? 'ascending' : 'descending';
            head.setAttribute('aria-sort', head.dataset.sort === key ? order : 'none');
        }
        this.arrange();
    }

    compare(a, b) {
        const left = a.tag;
        const right = b.tag;
        const by = {
            address: () => names.compare(left.address, right.address),
            type: () => names.compare(left.type, right.type),
            value: () => compareValues(left, right),
            state: () => kStateOrder.indexOf(left.state) - kStateOrder.indexOf(right.state),
            age: () => (right.time || 0) - (left.time || 0),
        }[this.key];
        return (by ? this.direction * by() : 0) || left.index - right.index;
    }

    matches(tag, words) {
        const text = `${tag.address} ${tag.type} ${this.tags.shownState(tag)}`.toLowerCase();
        return words.every((word) => text.includes(word));
    }

    /** The rows to show, in their order, as [group, rows]. */
    groups() {
        const words = byId('search').value.toLowerCase().split(/\s+/).filter(Boolean);
        const shown = this.rows.filter((row) => this.matches(row.tag, words)).sort((a, b) => this.compare(a, b));
        if (!byId('grouped').checked) {
            return [['', shown]];
        }
        const sizes = new Map();
        this.rows.forEach(({ tag }) => sizes.set(tag.group, (sizes.get(tag.group) || 0) + 1));
        const groups = new Map([['', []]]);
        for (const row of shown) {
            const name = sizes.get(row.tag.group) > 1 ? row.tag.group : '';
            if (!groups.has(name)) {
                groups.set(name, []);
            }
            groups.get(name).push(row);
        }
        return [...groups].sort(([a], [b]) => names.compare(a, b));
    }

    arrange() {
        const active = document.activeElement;
        const groups = this.groups();
        this.bodies.forEach((body) => body.element.remove());
        this.bodies.clear();
        for (const [name, rows] of groups) {
            if (rows.length > 0) {
                this.addBody(name, rows);
            }
        }
        byId('none').hidden = this.rows.length === 0 || this.bodies.size > 0;
        if (active && active !== document.activeElement && active.isConnected) {
            active.focus({ preventScroll: true });
        }
        this.showCount();
    }

    addBody(name, rows) {
        const element = make('tbody', { role: 'rowgroup' });
        const body = { name, rows, element, count: null };
        if (name) {
            const isOpen = !this.closed.has(name);
            body.count = make('span', { class: 'group-count' });
            const button = make('button', { type: 'button', 'aria-expanded': String(isOpen) },
                                make('span', { class: 'group-name' }, name), body.count);
            button.dataset.group = name;
            element.append(make('tr', { role: 'row', class: 'group' },
                                make('th', { role: 'rowheader', scope: 'rowgroup', colspan: kColumns }, button)));
            element.classList.toggle('closed', !isOpen);
        }
        element.append(...rows.map((row) => row.element));
        this.element.append(element);
        this.bodies.set(name, body);
    }

    showGroup({ name, rows, count }) {
        if (!name) {
            return;
        }
        const bad = rows.filter(({ tag }) => this.tags.shownState(tag) !== 'good').length;
        setText(count, bad ? `${rows.length}, ${bad} not good` : String(rows.length));
    }

    /** Columns whose values move are put into order again, but not under someone's hand. */
    keepOrder() {
        if (!kMoving.includes(this.key) || document.hidden || this.element.matches(':hover, :focus-within')) {
            return;
        }
        const groups = this.groups();
        const isSame = groups.filter(([, rows]) => rows.length > 0).every(([name, rows]) => {
            const body = this.bodies.get(name);
            return body && body.rows.length === rows.length && rows.every((row, i) => row === body.rows[i]);
        });
        if (!isSame) {
            this.arrange();
        }
    }

    // What is done to it.

    click(event) {
        const button = event.target.closest('button');
        if (!button) {
            return;
        }
        if (button.dataset.group !== undefined) {
            const isOpen = button.getAttribute('aria-expanded') === 'true';
            button.setAttribute('aria-expanded', String(!isOpen));
            this.closed[isOpen ? 'add' : 'delete'](button.dataset.group);
            button.closest('tbody').classList.toggle('closed', isOpen);
        } else if (button.closest('.c-set')) {
            this.actions.onSet(this.rowOf(button).tag);
        }
    }

    tick(event) {
        if (event.target.closest('.c-trend')) {
            this.actions.onTrend(this.rowOf(event.target).tag, event.target.checked);
        }
    }

    rowOf(element) {
        return this.rows[Number(element.closest('tr').dataset.index)];
    }

    /** Ticks or clears a tag's box, as when the trend let go of it. */
    setTicked(tag, isOn) {
        this.rows[tag.index].box.checked = isOn;
    }
}
