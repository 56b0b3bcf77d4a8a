'use strict';

// ---- The session's events, as they lie in the page: texts that occurred, and runs of steps through them.

/// Name in the page's data, of many, of one, what it is.
const kKinds = [
    ['orders', 'Orders', 'Order', 'connect, disconnect and commands'],
    ['agent', 'Start and stop', 'Start, stop', 'start-up, shut-down, threads'],
    ['messages', 'Messages', 'Message', 'audit and log messages that the agent hands over'],
    ['polls', 'Polls', 'Poll', 'the agent asks its enterprise'],
    ['reports', 'Reports', 'Report', 'the profile sent to the enterprise'],
    ['errors', 'Errors', 'Error', 'error lines of the module, and scripts that failed'],
    ['log', 'Log lines', 'Log', 'what the module writes'],
    ['files', 'Files', 'File', 'contents of files that were looked at'],
    ['output', 'Output', 'Output', 'standard output'],
    ['sleeps', 'Sleeps', 'Sleep', 'sleeps of the polling thread'],
];
const kLevels = {20: 'trace', 30: 'info', 40: 'notice (warn)', 50: 'error', 250: 'life cycle (force)', 254: 'audit'};

const kOrders = /^(connect|disconnect|command|call)\b/;
const kMessages = /^(audit|log)\b/;
const kDull = ['log', 'sleep', 'stdout', 'force-poll', 'file', 'credentials', 'thread-end'];
const kCallKinds = {'force-poll': 'polls', 'update-asset': 'reports', stdout: 'output', sleep: 'sleeps', file: 'files'};

const kSteps = {  // of the story, told by lines of the module
    begin: 'Going To Execute Modality Script', done: 'Script executed Successfully', failed: 'Error while running script',
    disconnect: 'Going to exit force polling after next poll', agent: 'Setting Service Agent pointer in',
};

// ---- Foreign texts. They are isolated, so that they turn nothing else round, and what nobody would see is a sign.

const kIsolate = '\u2068';
const kIsolated = '\u2069';

/// Invisible characters, and those that change the direction of writing, by their numbers.
const signs = text => String(text ?? 'nothing')
    .replace(/[\p{Cc}\p{Cf}\p{Zl}\p{Zp}\p{Cs}]/gu, sign => `\u2039${sign.codePointAt(0).toString(16).toUpperCase().padStart(4, '0')}\u203a`);

/// A text on one line, as it stands between the page's own words.
function foreign(text) {
    return kIsolate + signs(String(text ?? 'nothing').trim().replace(/\s*\n\s*/g, ' \u23ce ')) + kIsolated;
}

/// Puts a text into an element, with foreign parts in elements of their own.
function setText(element, text) {
    const parts = text.split(/[\u2068\u2069]/);
    element.replaceChildren(...parts.map((part, i) => {
        if (i % 2 === 0) {
            return part;
        }
        const foreignPart = document.createElement('bdi');
        foreignPart.textContent = part;
        return foreignPart;
    }));
}

/// The outcome in words that an order was answered with, or null; it says of a refused order why.
function outcomeOf(body) {
    const list = Array.isArray(body.answer) ? Object.fromEntries(body.answer.filter(Array.isArray)) : {};
    return /<DisconnectResult>([^<>]*)</.exec(body.response ?? '')?.[1] ?? list.CommandResult ?? null;
}

/// Whether a call came back with success and yet did not do what it was for.
function isRefused(body) {
    const outcome = body.event === 'call' ? outcomeOf(body) : null;
    return outcome !== null && outcome !== 'Pass' && outcome !== 'Thread exited successfully.';
}

const isBad = body => (['call', 'update-asset', 'thread-start'].includes(body.event) && body.result !== 0) || isRefused(body);

function propertyTexts(list) {
    return (Array.isArray(list) ? list : []).filter(pair => Array.isArray(pair) && pair[1] !== '0')
        .map(pair => `${foreign(pair[0]).replace('RSM_', '')} ${foreign(pair[1])}`);
}

const minutesText = minutes => lengthText(Number(minutes) * 60000);
const periodText = (minutes, seconds) => `${minutesText(minutes)} at one poll every ${lengthText(Number(seconds) * 1000)}`;

/// A profile in a few words.
function reportText(profile) {
    const {RSM_GRACE_PERIOD: minutes, RSM_FORCED_POLLING_RATE: rate, RSM_DELAY_PROFILE_START_TIME: start} = profile;
    const parts = [foreign(profile.RSM_MODE)];
    if (Number(rate) !== 0 || Number(minutes) !== 0) {
        parts.push(periodText(minutes, rate));
    }
    if (profileTime(start) !== null) {
        parts.push(`scheduled for ${dateText(profileTime(start))} ${hourText(profileTime(start))} GMT: ` +
            periodText(profile.RSM_DELAY_PROFILE_GRACE_PERIOD, profile.RSM_DELAY_PROFILE_FORCED_POLLING_RATE));
    }
    return parts.join(', ');
}

/// The text content of an answer's XML, each with its element's name.
function answerText(xml) {
    const values = [...String(xml).matchAll(/<([\w]+)[^<>]*>([^<>]+)</g)].map(found => `${found[1]} ${foreign(found[2])}`);
    return values.length > 0 ? values.join(', ') : foreign(xml);
}

function whatOf(body) {
    switch (body.event) {
        case 'call': {
            const parts = [foreign(body.verb), body.result !== 0 ? `answers ${foreign(body.result)}` : isRefused(body) ? 'refused' : 'done'];
            if (body.stage && body.stage !== 'cleanup') {
                parts.push(`no further than ${foreign(body.stage)}`);
            }
            if (body.response) {
                parts.push(answerText(body.response));
            }
            if (body.answer) {
                parts.push(propertyTexts(body.answer).join(', '));
            }
            return parts.join(' \u2192 ');
        }
        case 'force-poll':
            return 'poll';
        case 'update-asset':
            return `${body.result === 0 ? 'accepted' : 'refused'}${body.properties === null ? '' : `: ${reportText(profileOf(body))}`}`;
        case 'log':
        case 'stdout':
            return foreign(body.text);
        case 'sleep':
            return `sleeps ${lengthText(Number(body.ms))}`;
        case 'file':
            return `${foreign(body.path)} holds ${body.text === null ? 'nothing: there is no such file' : foreign(body.text)}`;
        case 'credentials':
            return `credentials of ${foreign(body.member)}`;
        case 'thread-start':
            return `thread ${foreign(body.name)} ${body.result === 0 ? 'is started' : 'cannot be started'}`;
        case 'thread-end':
            return `thread ends with ${foreign(body.result)}`;
        case 'thread-destroyed':
            return 'thread is destroyed while it runs';
        default:
            return foreign(body.event);
    }
}

/// Bodies as they lie in the page: a text each, or `[ago, first, middle, last]`, which takes its `first` and `last` characters from the
/// one `ago` before.
function readBodies(written) {
    const texts = [];
    for (const one of written) {
        const [ago, first, middle, last] = one;
        const other = texts[texts.length - ago];
        texts.push(typeof one === 'string' ? one : other.slice(0, first) + middle + other.slice(other.length - last));
    }
    return JSON.parse(`[${texts}]`);
}

/// First index of a sorted range for which `reached` answers true.
function firstWhere(size, reached) {
    let low = 0;
    for (let high = size; low < high;) {
        const middle = (low + high) >>> 1;
        if (reached(middle)) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

/// Everything known of a body; texts are made when they are asked for.
class Facts {
    constructor(body) {
        this.body = body;
        this.level = Number.isInteger(body.level) ? body.level : null;
        this.step = body.event === 'log' ? Object.keys(kSteps).find(step => String(body.text).includes(kSteps[step])) : undefined;
        this.kind = this.findKind();
        this.bad = this.kind === 'errors' || isBad(body);
        /// Changes nothing in the story; runs of these are passed over at once.
        this.dull = this.step === undefined && kDull.includes(body.event) && !this.bad;
    }

    findKind() {
        const {event, verb, level} = this.body;
        if (event === 'call') {
            return kOrders.test(verb) ? 'orders' : kMessages.test(verb) ? 'messages' : 'agent';
        }
        if (event === 'log') {
            return this.step === 'failed' || (this.step === undefined && level === 50) ? 'errors' : 'log';
        }
        return kCallKinds[event] ?? 'agent';
    }

    get what() {
        return this.text ??= whatOf(this.body);
    }

    get searched() {
        return this.all ??= `${this.what}\n${JSON.stringify(Object.values(this.body))}`.toLowerCase();
    }
}

/// Times are milliseconds since the session's start; events have numbers from 0 on.
class Model {
    /// `shift`: when it began, on the axis of several sessions.
    constructor(data, shift = 0) {
        this.shift = shift;
        this.title = data.title;
        this.note = data.note;
        this.texts = data.texts;
        this.isLog = data.log;  // which does not tell all
        this.facts = [];
        this.runs = [];
        this.size = 0;
        [this.dropped] = data.dropped;  // so many events were there before number 0
        this.begin = data.dropped[1] + shift;
        this.end = this.begin;
        this.known = new Map();  // of live events
        this.pollCount = 0;
        readBodies(data.bodies).forEach(body => this.addBody(body));
        data.runs.forEach(run => this.addRun(run));
        this.setMarks(data);
        this.clockIsGuessed = false;
        if (this.clock.length === 0 && data.start !== null) {
            this.clock = [{t: -Infinity, ahead: data.start - shift}];
        } else if (this.clock.length === 0) {
            this.guessClock();
        }
    }

    /// What no event tells: where the wall clock was set, and where the agent was killed.
    setMarks({clock, kills}) {
        this.clock = clock.map(([t, ahead], i) => ({t: i === 0 ? -Infinity : t + this.shift, ahead: ahead - this.shift}));
        this.kills = (kills ?? []).map(([t, next]) => [t + this.shift, next - this.dropped]);  // with the number of the next event
        this.end = Math.max(this.end, ...[...clock, ...this.kills].map(([t]) => t));
    }

    addBody(body) {
        return this.facts.push(new Facts(body)) - 1;
    }

    /// As the page has it: `[count, delay, id, delay, id...]`.
    addRun(run) {
        const size = (run.length - 1) / 2;
        const [ids, ends, polls] = [[], [], [0]];
        let period = 0;
        for (let i = 0; i < size; ++i) {
            period += run[1 + 2 * i];
            ends.push(period);
            ids.push(run[2 + 2 * i]);
            polls.push(polls[i] + (this.facts[ids[i]].kind === 'polls' ? 1 : 0));
        }
        this.runs.push({first: this.size, start: this.end, count: run[0], ids, ends, period, polls, pollsBefore: this.pollCount});
        this.pollCount += run[0] * polls[size];
        this.size += run[0] * size;
        this.end += run[0] * period;
    }

    /// How many polls there are before the event `number`.
    pollsBefore(number) {
        if (number >= this.size) {
            return this.pollCount;
        }
        const run = this.runOf(number);
        const offset = number - run.first;
        return run.pollsBefore + Math.floor(offset / run.ids.length) * run.polls[run.ids.length] + run.polls[offset % run.ids.length];
    }

    /// From `from` to `to`, both included.
    pollsBetween(from, to) {
        return this.pollsBefore(this.firstAt(to + 0.5)) - this.pollsBefore(this.firstAt(from));
    }

    /// The runs of the events from the number `first` to before `behind`: as they are, or parts of them.
    runsBetween(first, behind) {
        const parts = [];
        const add = (run, from, to) => to > from && parts.push({...run, first: run.first + from, count: 1, ids: this.idsOf(run, from, to)});
        for (const run of this.runs) {
            const size = run.ids.length;
            const from = Math.max(first - run.first, 0);
            const to = Math.min(behind - run.first, run.count * size);
            const [low, high] = [Math.ceil(from / size), Math.floor(to / size)];
            if (from >= to) {
                continue;
            }
            if (low > high) {
                add(run, from, to);
                continue;
            }
            add(run, from, low * size);
            if (high > low) {
                parts.push({...run, first: run.first + low * size, count: high - low});
            }
            add(run, high * size, to);
        }
        return parts;
    }

    idsOf(run, from, to) {
        return Array.from({length: to - from}, (_, i) => run.ids[(from + i) % run.ids.length]);
    }

    /// Takes in an event that has just happened.
    addLive(event) {
        const {t, ...body} = event;
        const key = JSON.stringify(body);
        if (!this.known.has(key)) {
            this.known.set(key, this.addBody(body));
        }
        this.addRun([1, Math.max(Math.round(t * 1000) - this.end, 0), this.known.get(key)]);
    }

    runOf(number) {
        return this.runs[firstWhere(this.runs.length, i => this.runs[i].first > number) - 1];
    }

    timeIn(run, number) {
        const offset = number - run.first;
        const round = Math.floor(offset / run.ids.length);
        return run.start + round * run.period + run.ends[offset % run.ids.length];
    }

    timeOf(number) {
        return this.timeIn(this.runOf(number), number);
    }

    event(number) {
        const run = this.runOf(number);
        const id = run.ids[(number - run.first) % run.ids.length];
        return {number, t: this.timeIn(run, number), id, body: this.facts[id].body, facts: this.facts[id]};
    }

    /// The number of the first event at or after `t`; `size` when there is none.
    firstAt(t) {
        const at = firstWhere(this.runs.length, i => this.runs[i].start + this.runs[i].count * this.runs[i].period >= t);
        if (at === this.runs.length) {
            return this.size;
        }
        const run = this.runs[at];
        const round = run.period > 0 ? Math.min(Math.max(Math.ceil((t - run.start) / run.period) - 1, 0), run.count - 1) : 0;
        const begin = run.start + round * run.period;
        const offset = firstWhere(run.ids.length, i => begin + run.ends[i] >= t);
        return run.first + round * run.ids.length + offset;
    }

    /// Milliseconds since 1970, or null when nobody knows.
    wall(t) {
        if (this.clock.length === 0) {
            return null;
        }
        return t + this.clock[firstWhere(this.clock.length, i => this.clock[i].t > t) - 1].ahead;
    }

    /// The instant at which the wall clock shows `wall`, as it goes at the session's end.
    instant(wall) {
        return this.clock.length === 0 ? null : wall - this.clock[this.clock.length - 1].ahead;
    }

    /// A kept trace has no clock but those of its reports. A mode never began after its report, and the report
    /// of a new mode is sent at once: the latest start that the reports allow is the right one.
    guessClock() {
        let start = null;
        for (const run of this.runs) {
            run.ids.forEach((id, i) => {
                const {body} = this.facts[id];
                const began = body.event === 'update-asset' ? profileTime(profileOf(body).RSM_MODE_START_TIME) : null;
                if (began !== null) {
                    const t = run.start + run.ends[i];
                    start = Math.max(start ?? -Infinity, began - Math.floor(t / 1000) * 1000);
                }
            });
        }
        if (start !== null) {
            this.clock = [{t: -Infinity, ahead: start}];
            this.clockIsGuessed = true;
        }
    }
}

function profileOf(body) {
    return Object.fromEntries((Array.isArray(body.properties) ? body.properties : []).filter(Array.isArray));
}

/// A profile's date ("2026-01-03 GMT 10:00:05", the day before the month), or null.
function profileTime(text) {
    const found = /^(\d+)-(\d+)-(\d+) GMT (\d+):(\d+):(\d+)$/.exec(text ?? '');
    return found ? Date.UTC(+found[1], +found[3] - 1, +found[2], +found[4], +found[5], +found[6]) : null;
}

// ---- Times as texts

const two = number => String(number).padStart(2, '0');

function fieldsOf(wall, local) {
    const date = new Date(wall - (local ? new Date(wall).getTimezoneOffset() * 60000 : 0));
    return date.toISOString();
}

const dateText = (wall, local) => fieldsOf(wall, local).slice(0, -14);
const hourText = (wall, local, exactly) => fieldsOf(wall, local).slice(-13, exactly ? -1 : -5);
const zoneName = () => Intl.DateTimeFormat().resolvedOptions().timeZone || 'local time';

/// "6 min 15 s".
function lengthText(milliseconds) {
    if (milliseconds > 0 && milliseconds < 1000) {
        return `${Math.round(milliseconds)} ms`;
    }
    const seconds = Math.round(milliseconds / 1000);
    const parts = [[Math.floor(seconds / 86400), 'd'], [Math.floor(seconds / 3600) % 24, 'h'], [Math.floor(seconds / 60) % 60, 'min'], [seconds % 60, 's']]
        .filter(([number]) => number > 0).slice(0, 2);
    return parts.length > 0 ? parts.map(([number, unit]) => `${number} ${unit}`).join(' ') : '0 s';
}

/// "+1 d 02:10:05": how long after the session's start.
function sinceText(milliseconds, exactly) {
    const seconds = Math.floor(milliseconds / 1000);
    const days = Math.floor(seconds / 86400);
    return `+${days > 0 ? `${days} d ` : ''}${two(Math.floor(seconds / 3600) % 24)}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}` +
        (exactly ? `.${String(Math.floor(milliseconds % 1000)).padStart(3, '0')}` : '');
}

/// A time's texts, in the zone and as exactly as the reader wants them.
class Times {
    constructor(model) {
        this.model = model;
        this.local = false;
        this.exactly = false;
    }

    since(t) {
        return sinceText(t, this.exactly);
    }

    day(t) {
        const wall = this.model.wall(t);
        return wall === null ? '' : dateText(wall, this.local);
    }

    hour(t) {
        const wall = this.model.wall(t);
        return wall === null ? this.since(t) : hourText(wall, this.local, this.exactly);
    }

    /// With its date.
    at(t) {
        return `${this.day(t)} ${this.hour(t)}`.trim();
    }

    /// With its date unless all of the session is on one day.
    short(t) {
        return this.day(0) === this.day(this.model.end) ? this.hour(t) : this.at(t);
    }

    /// `to` is null when the end has yet to come.
    range(from, to) {
        return `${this.at(from)} \u2013 ${to === null ? '' : this.day(from) === this.day(to) ? this.hour(to) : this.at(to)}`;
    }
}

function countText(number) {
    return number === 1 ? 'once' : number === 2 ? 'twice' : `${number.toLocaleString('en')} times`;
}

function plural(number, one, many) {
    return `${number.toLocaleString('en')} ${number === 1 ? one : many ?? one + 's'}`;
}
