'use strict';

// ---- The session's events, as they lie in the page: texts that occurred, and runs of steps through them.

/// Name in the page's data, of many, of one, what it is.
const kKinds = [
    ['orders', 'Orders', 'Order', 'connect, disconnect and commands'],
    ['agent', 'Start and stop', 'Start, stop', 'start-up, shut-down, threads'],
    ['messages', 'Messages', 'Message', 'audit and log messages that the agent hands over'],
    ['polls', 'Polls', 'Poll', 'the agent asks its enterprise'],
    ['reports', 'Reports', 'Report', 'the profile sent to the enterprise'],
    ['log', 'Log lines', 'Log', 'what the module writes'],
    ['files', 'Files', 'File', 'contents of files that were looked at'],
    ['output', 'Output', 'Output', 'standard output'],
    ['sleeps', 'Sleeps', 'Sleep', 'sleeps of the polling thread'],
];
const kLevels = {20: 'trace', 30: 'info', 40: 'notice (warn)', 50: 'error', 250: 'life cycle (force)', 254: 'audit'};

const kOrders = /^(connect|disconnect|command|call)\b/;
const kMessages = /^(audit|log)\b/;

function kindOf(body) {
    switch (body.event) {
        case 'call':
            return kOrders.test(body.verb) ? 'orders' : kMessages.test(body.verb) ? 'messages' : 'agent';
        case 'force-poll':
            return 'polls';
        case 'update-asset':
            return 'reports';
        case 'log':
            return 'log';
        case 'stdout':
            return 'output';
        case 'sleep':
            return 'sleeps';
        case 'file':
            return 'files';
        default:
            return 'agent';
    }
}

/// A text on one line: line ends and other controls as signs.
function oneLine(text) {
    return String(text ?? 'nothing').trim().replace(/\s*\n\s*/g, ' \u23ce ').replace(/[\u0000-\u001f]/g, '\u00b7');
}

function propertyTexts(list) {
    return (Array.isArray(list) ? list : []).filter(pair => Array.isArray(pair) && pair[1] !== '0')
        .map(pair => `${oneLine(pair[0]).replace(/^RSM_/, '')} ${oneLine(pair[1])}`);
}

/// A profile in a few words.
function reportText(profile) {
    const minutes = Number(profile.RSM_GRACE_PERIOD);
    const rate = Number(profile.RSM_FORCED_POLLING_RATE);
    const parts = [oneLine(profile.RSM_MODE)];
    if (rate !== 0 || minutes !== 0) {
        parts.push(`${minutes} min at one poll every ${rate} s`);
    }
    if (profileTime(profile.RSM_DELAY_PROFILE_START_TIME) !== null) {
        parts.push(`scheduled for ${profile.RSM_DELAY_PROFILE_START_TIME.slice(-8)}: ${oneLine(profile.RSM_DELAY_PROFILE_GRACE_PERIOD)} min at one poll every ${oneLine(profile.RSM_DELAY_PROFILE_FORCED_POLLING_RATE)} s`);
    }
    return parts.join(', ');
}

/// The text content of an answer's XML, each with its element's name.
function answerText(xml) {
    const values = [...String(xml).matchAll(/<([\w]+)[^<>]*>([^<>]+)</g)].map(found => `${found[1]} ${found[2]}`);
    return values.length > 0 ? values.join(', ') : String(xml);
}

function whatOf(body) {
    switch (body.event) {
        case 'call': {
            const parts = [oneLine(body.verb)];
            parts.push(body.result === 0 ? 'done' : `answers ${oneLine(body.result)}`);
            if (body.stage && body.stage !== 'cleanup') {
                parts.push(`no further than ${oneLine(body.stage)}`);
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
            return `${body.result === 0 ? 'accepted' : 'refused'}: ${reportText(profileOf(body))}`;
        case 'log':
        case 'stdout':
            return oneLine(body.text);
        case 'sleep':
            return `sleeps ${Number(body.ms) / 1000} s`;
        case 'file':
            return `${oneLine(body.path)} holds ${body.text === null ? 'nothing: there is no such file' : oneLine(body.text)}`;
        case 'credentials':
            return `credentials of ${oneLine(body.member)}`;
        case 'thread-start':
            return `thread ${oneLine(body.name)} ${body.result === 0 ? 'is started' : 'cannot be started'}`;
        case 'thread-end':
            return `thread ends with ${oneLine(body.result)}`;
        case 'thread-destroyed':
            return 'thread is destroyed while it runs';
        default:
            return oneLine(body.event);
    }
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

/// Times are milliseconds since the session's start; events have numbers from 0 on.
class Model {
    constructor(data) {
        this.title = data.title;
        this.note = data.note;
        this.texts = data.texts;
        this.bodies = [];
        this.facts = [];
        this.runs = [];
        this.size = 0;
        this.end = 0;
        this.known = new Map();  // of live events
        data.bodies.forEach(body => this.addBody(body));
        for (const run of data.runs) {
            const delays = [];
            const ids = [];
            for (let i = 1; i < run.length; i += 2) {
                delays.push(run[i]);
                ids.push(run[i + 1]);
            }
            this.addRun(run[0], delays, ids);
        }
        this.clock = data.clock.map(([number, ahead]) => ({t: number < this.size ? this.timeOf(number) : this.end, ahead}));
        if (this.clock.length > 0) {
            this.clock[0].t = -Infinity;
        }
        this.clockIsGuessed = false;
        if (this.clock.length === 0 && data.start !== null) {
            this.clock = [{t: -Infinity, ahead: data.start}];
        } else if (this.clock.length === 0) {
            this.guessClock();
        }
    }

    addBody(body) {
        this.bodies.push(body);
        this.facts.push({
            kind: kindOf(body),
            level: body.event === 'log' ? Number(body.level) : null,
            who: String(body.thread),
            what: whatOf(body),
            searched: JSON.stringify(Object.values(body)).toLowerCase(),
        });
        return this.bodies.length - 1;
    }

    addRun(count, delays, ids) {
        const ends = [];
        let period = 0;
        for (const delay of delays) {
            period += delay;
            ends.push(period);
        }
        this.runs.push({first: this.size, start: this.end, count, ids, ends, period});
        this.size += count * ids.length;
        this.end += count * period;
    }

    /// Takes in an event that has just happened.
    addLive(event) {
        const {t, ...body} = event;
        const key = JSON.stringify(body);
        if (!this.known.has(key)) {
            this.known.set(key, this.addBody(body));
        }
        const delay = Math.max(Math.round(t * 1000) - this.end, 0);
        const last = this.runs[this.runs.length - 1];
        if (last && last.count === 1 && last.ids.length < 1000) {
            last.period += delay;
            last.ids.push(this.known.get(key));
            last.ends.push(last.period);
            this.size += 1;
            this.end += delay;
        } else {
            this.addRun(1, [delay], [this.known.get(key)]);
        }
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
        return {number, t: this.timeIn(run, number), id, body: this.bodies[id], facts: this.facts[id]};
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
                const body = this.bodies[id];
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
    const date = new Date(wall);
    return local
        ? {year: date.getFullYear(), month: date.getMonth() + 1, day: date.getDate(), hour: date.getHours(), minute: date.getMinutes(), second: date.getSeconds()}
        : {year: date.getUTCFullYear(), month: date.getUTCMonth() + 1, day: date.getUTCDate(), hour: date.getUTCHours(), minute: date.getUTCMinutes(), second: date.getUTCSeconds()};
}

function dateText(wall, local) {
    const f = fieldsOf(wall, local);
    return `${f.year}-${two(f.month)}-${two(f.day)}`;
}

function hourText(wall, local) {
    const f = fieldsOf(wall, local);
    return `${two(f.hour)}:${two(f.minute)}:${two(f.second)}`;
}

/// "6 min 15 s".
function lengthText(milliseconds) {
    const seconds = Math.round(milliseconds / 1000);
    const parts = [[Math.floor(seconds / 86400), 'd'], [Math.floor(seconds / 3600) % 24, 'h'], [Math.floor(seconds / 60) % 60, 'min'], [seconds % 60, 's']]
        .filter(([number]) => number > 0).slice(0, 2);
    return parts.length > 0 ? parts.map(([number, unit]) => `${number} ${unit}`).join(' ') : '0 s';
}

function times(number) {
    return number === 1 ? 'once' : number === 2 ? 'twice' : `${number.toLocaleString('en')} times`;
}

function plural(number, one, many) {
    return `${number.toLocaleString('en')} ${number === 1 ? one : many ?? one + 's'}`;
}
