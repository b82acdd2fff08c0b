// The page's parts put together.

import { addEntry, loadEntries, startEntries } from './entries.js';
import { startExport } from './export.js';
import { say, showLive, showLost, showStatus } from './status.js';
import { Stream } from './stream.js';
import { TagTable } from './table.js';
import { Tags } from './tags.js';
import { Trend } from './trend.js';
import { WriteDialog } from './write.js';

const tags = new Tags();
const dialog = new WriteDialog(tags);
const table = new TagTable(tags, {
    onTrend: (tag, isOn) => (isOn ? trend.add(tag) : trend.remove(tag)),
    onSet: (tag) => dialog.open(tag),
});
const trend = new Trend(tags, say, (tag) => table.setTicked(tag, false));
tags.onSample = (tag, t, number) => trend.sample(tag, t, number);

const rebuildTable = tags.onReplaced;
tags.onReplaced = () => {
    trend.clear();
    rebuildTable();
};

startEntries();
startExport(trend, say);
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
    table.refresh();
    trend.rebuild();
});

function takeStatus(status) {
    tags.setClock(status.time);
    trend.hours = status.history ? status.history.hours : 1;
    showStatus(status);
}

function takeEntry(entry) {
    addEntry(entry);
    say(`${entry.kind} ${entry.address || ''} ${entry.text || ''}`.trim());
}

new Stream({
    onStatus: takeStatus,
    onEntry: takeEntry,
    onList: (list) => {
        tags.isLive = true;
        tags.setClock(list.time);
        tags.replace(list.tags);
    },
    onLive: async () => {
        showLive();
        table.refresh();
        trend.reload();
        await Promise.allSettled([loadEntries(), fetch('/api/status').then((answer) => answer.json()).then(takeStatus)]);
    },
    onValues: (change) => {
        tags.setClock(change.time);
        change.tags.forEach((tag) => tags.update(tag));
        (change.seen || []).forEach(([first, last]) => tags.seen(first, last, change.time));
    },
    onLost: (reason) => {
        tags.isLive = false;
        tags.list.forEach((tag) => tag.recent.put(tags.now(), NaN));
        showLost(reason);
        table.refresh();
        trend.draw();
    },
});
