// The list of events: failures, recoveries, writes, connections. The newest comes first; the oldest go.

import { byId, dateText, make, momentText } from './format.js';
import { helpLink } from './tags.js';

const kMost = 500;

const kWords = { failure: 'failure', recovery: 'recovery', write: 'write', connection: 'connection' };

function item(entry) {
    const kind = kWords[entry.kind] ? entry.kind : 'connection';
    const time = make('time', { datetime: new Date(entry.time).toISOString(), title: dateText(entry.time) },
                      momentText(entry.time));
    const mark = make('span', { class: 'mark', 'aria-hidden': 'true' });
    const word = make('span', { class: 'kind' }, mark, kWords[kind]);
    // The address is there already.
    const reason = (entry.text || '').replace(`read ${entry.address}> `, '');
    const text = kind === 'failure' && reason ? make('a', { href: helpLink(entry) }, reason)
                                              : make('span', {}, reason);
    const line = make('li', { 'data-kind': kind }, time, word);
    if (entry.address) {
        line.append(make('span', { class: 'address' }, entry.address));
    }
    line.append(text);
    return line;
}

function showKind() {
    byId('entries').dataset.only = byId('kind').value;
}

/** Adds one at the top. */
export function addEntry(entry) {
    const list = byId('entries');
    list.prepend(item(entry));
    while (list.childElementCount > kMost) {
        list.lastElementChild.remove();
    }
    byId('no-entries').hidden = true;
}

/** Takes all that the server has. */
export async function loadEntries() {
    const answer = await fetch('/api/entries', { cache: 'no-store' });
    if (!answer.ok) {
        return;
    }
    const { entries } = await answer.json();
    byId('entries').replaceChildren(...entries.slice(-kMost).reverse().map(item));
    byId('no-entries').hidden = entries.length > 0;
}

export function startEntries() {
    byId('kind').addEventListener('change', showKind);
    showKind();
}
