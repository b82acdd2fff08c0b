// The stream of changes. It opens first and then loads the whole list, so that nothing between the two is missed;
// after every break it does both again. Silence counts as a break: a server that hangs is one too.

const kSilenceMs = 6000;
const kMostWaiting = 1000;
const kRetryMs = 1000;

/** Calls back with what arrives: onList, onValues, onStatus, onEntry, onLost, onLive. */
export class Stream {
    constructor(callbacks) {
        this.callbacks = callbacks;
        this.source = null;
        this.isLive = false;
        this.isLost = false;
        this.lastHeard = performance.now();
        this.waiting = null;  // events that came while the list was being loaded
        this.loads = 0;
        setInterval(() => this.watch(), 500);
        // A page that was asleep looks at the clock before anyone looks at it.
        document.addEventListener('visibilitychange', () => this.watch());
        this.open();
    }

    open() {
        this.lastHeard = performance.now();
        const source = new EventSource('/api/events');
        this.source = source;
        const take = (name, work) => source.addEventListener(name, (event) => {
            this.lastHeard = performance.now();
            work(event);
        });
        source.onopen = () => this.load();
        source.onerror = () => {
            this.lose('the connection broke');
            this.explain();
        };
        take('values', (event) => this.takeValues(event));
        take('status', (event) => this.callbacks.onStatus(JSON.parse(event.data)));
        take('entry', (event) => this.callbacks.onEntry(JSON.parse(event.data)));
        take('reset', () => this.load());
    }

    async load() {
        const number = ++this.loads;
        this.waiting = [];
        try {
            const answer = await fetch('/api/tags',
                                       { cache: 'no-store', signal: AbortSignal.timeout(kSilenceMs) });
            if (!answer.ok) {
                throw new Error(`the server answered ${answer.status}`);
            }
            const list = await answer.json();
            if (number === this.loads) {
                this.begin(list);
            }
        } catch (error) {
            if (number === this.loads) {
                this.lose(error.message);
            }
        }
    }

    begin(list) {
        const missed = this.waiting;
        this.waiting = null;
        this.lastHeard = performance.now();
        this.isLive = true;
        this.isLost = false;
        this.callbacks.onList(list);
        this.callbacks.onLive();
        for (const event of missed) {
            if (Number(event.lastEventId) > Number(list.lastEventId)) {
                this.callbacks.onValues(JSON.parse(event.data));
            }
        }
    }

    takeValues(event) {
        if (this.waiting && this.waiting.length >= kMostWaiting) {
            this.load();
        } else if (this.waiting) {
            this.waiting.push(event);
        } else if (this.isLive) {
            this.callbacks.onValues(JSON.parse(event.data));
        }
    }

    /** Says so at once, closes, and opens anew after a while. */
    lose(reason) {
        ++this.loads;
        this.waiting = null;
        this.isLive = false;
        if (this.source) {
            this.source.close();
            this.source = null;
            setTimeout(() => this.open(), kRetryMs);
        }
        if (!this.isLost) {
            this.isLost = true;
            this.callbacks.onLost(reason);
        }
    }

    /** The stream does not say why it was refused; another request does, such as for a missing token. */
    async explain() {
        try {
            const answer = await fetch('/api/status', { cache: 'no-store', signal: AbortSignal.timeout(kSilenceMs) });
            if (!answer.ok) {
                const { problem } = await answer.json();
                this.callbacks.onLost(problem);
            }
        } catch (error) {
            // Nobody answers: what was said stays.
        }
    }

    watch() {
        if (this.source && performance.now() - this.lastHeard > kSilenceMs) {
            this.lose('the server is silent');
        }
    }
}
