// The strip at the top: who the controller is and how it is being read; and whether this page is connected.

import { byId, bytesText, clockText, momentText, numberText, setText } from './format.js';

function controllerText(controller) {
    const identity = controller.identity;
    const at = `${controller.host}:${controller.port}`;
    if (!identity) {
        return at;
    }
    return `${identity.product} rev. ${identity.revision}, serial ${identity.serial}, at ${at}`;
}

function stateText(status) {
    if (!status.connected) {
        return 'no connection';
    }
    const state = status.controller.identity ? status.controller.identity.state : '';
    return state ? `connected, ${state}` : 'connected';
}

/** Shows a status record. */
export function showStatus(status) {
    setText(byId('fact-controller'), controllerText(status.controller));
    setText(byId('fact-state'), stateText(status));
    byId('fact-state').dataset.state = status.connected ? 'good' : 'failed';
    setText(byId('fact-since'), status.connectedSince ? momentText(status.connectedSince) : '–');
    setText(byId('fact-polls'), numberText(status.pollsPerSecond, 3));
    setText(byId('fact-pass'), `${numberText(status.passMilliseconds, 3)} ms`);
    setText(byId('fact-failures'), numberText(status.failuresPerMinute, 3));
    setText(byId('fact-drivers'), numberText(status.drivers));
    setText(byId('fact-writing'), status.allowWrite ? 'allowed' : 'off');
    setText(byId('version'), `micro800 ${status.version}`);
    if (status.history) {
        const { hours, bytes, limitBytes } = status.history;
        setText(byId('history'), `History: ${numberText(hours, 3)} h, ${bytesText(bytes)} of at most ${bytesText(limitBytes)}`);
    }
    document.body.classList.toggle('may-write', status.allowWrite === true);
    const product = status.controller.identity ? status.controller.identity.product : status.controller.host;
    document.title = `${product} – Micro800 live`;
}

/** The page gets every change. */
export function showLive() {
    byId('link').dataset.state = 'good';
    setText(byId('link-word'), 'live');
    byId('lost').hidden = true;
    document.body.classList.remove('lost');
}

/** The page gets none, and nothing on it is known to be current. */
export function showLost(reason) {
    byId('link').dataset.state = 'failed';
    setText(byId('link-word'), 'not connected');
    setText(byId('lost'), `No connection to micro800 serve since ${clockText(Date.now())}: ${reason}. ` +
        'No value on this page is current. Trying again.');
    byId('lost').hidden = false;
    document.body.classList.add('lost');
}

let waiting = [];
let timer = 0;

function speak() {
    timer = 0;
    const texts = waiting;
    waiting = [];
    setText(byId('said'), texts.length > 3 ? `${texts.length} events, the last: ${texts[texts.length - 1]}`
                                           : texts.join('. '));
}

/** Tells a screen reader; what comes close together is told at once. */
export function say(text) {
    waiting.push(text);
    if (waiting.length > 100) {
        waiting = waiting.slice(-50);
    }
    if (!timer) {
        timer = setTimeout(speak, 1000);
    }
}
