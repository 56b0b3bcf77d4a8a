// ---- What the events tell: modes, polls, remote activity, reports, and one line for each time that RSM ran.

/// Events that change nothing in the story; runs of them are passed over at once.
function isDull(body) {
    return body.event === 'sleep' || body.event === 'stdout' || body.event === 'force-poll' || body.event === 'file' ||
        body.event === 'credentials' || (body.event === 'log' && scriptStep(body.text) === null);
}

function scriptStep(text) {
    const line = String(text);
    return line.includes('Going To Execute Modality Script') ? 'begin'
        : line.includes('Script executed Successfully') ? 'done'
        : line.includes('Error while running script') ? 'failed' : null;
}

/// A count of open things, and the spans during which it was not 0.
class Spans {
    constructor() {
        this.list = [];
        this.count = 0;
    }
    change(t, number, count) {
        if (this.count === 0 && count > 0) {
            this.list.push({from: t, to: null, number});
        } else if (this.count > 0 && count === 0) {
            this.list[this.list.length - 1].to = t;
        }
        this.count = count;
    }
}

class Story {
    constructor(model) {
        this.model = model;
        this.polls = [];     // {t, step, n, number, stride}: n polls from t on, one every `step`
        this.flags = [];     // {t, number, label, type, failed}
        this.reports = [];   // {t, number, accepted, mode}
        this.bands = [{mode: 'none', from: 0, to: null, number: null}];
        this.tunnels = new Spans();
        this.files = new Spans();
        this.scripts = [];   // {from, to, number, failed}
        this.sessions = [];
        this.schedules = []; // {t, at, rate, minutes}: starts that were ordered
        this.up = new Set(); // families that were started
        this.killed = false;
        this.lastCall = null;
        this.ending = null;  // what asked for the session's end
        for (const run of model.runs) {
            this.readRun(run);
        }
        this.bands = this.bands.filter(band => band.to === null || band.to > band.from);
        for (const session of this.sessions) {
            session.polls = this.pollsBetween(session.from, session.to ?? model.end);
        }
        this.pollCount = this.polls.reduce((sum, series) => sum + series.n, 0);
    }

    readRun(run) {
        const bodies = run.ids.map(id => this.model.bodies[id]);
        bodies.forEach((body, i) => {
            if (body.event === 'force-poll') {
                this.polls.push({t: run.start + run.ends[i], step: run.period, n: run.count, number: run.first + i, stride: run.ids.length});
            }
        });
        const telling = bodies.map((body, i) => i).filter(i => !isDull(bodies[i]));
        for (let round = 0; round < run.count && telling.length > 0; ++round) {
            for (const i of telling) {
                this.read(bodies[i], run.start + round * run.period + run.ends[i], run.first + round * run.ids.length + i);
            }
        }
    }

    /// Polls from `from` to `to`, both included.
    pollsBetween(from, to) {
        let count = 0;
        for (const series of this.polls) {
            if (series.step === 0 || series.n === 1) {
                count += series.t >= from && series.t <= to ? series.n : 0;
            } else {
                const first = Math.max(Math.ceil((from - series.t) / series.step), 0);
                const last = Math.min(Math.floor((to - series.t) / series.step), series.n - 1);
                count += Math.max(last - first + 1, 0);
            }
        }
        return count;
    }

    get band() {
        return this.bands[this.bands.length - 1];
    }

    get session() {
        const last = this.sessions[this.sessions.length - 1];
        return last && last.to === null ? last : null;
    }

    enter(mode, t, number, more) {
        const now = this.band;
        const runs = mode === 'grace' || mode === 'activity';
        const session = this.session;
        if (session && !runs) {
            Object.assign(session, {to: t, end: this.ending ?? 'its time was used up'});
        }
        if (!session && runs) {
            this.sessions.push({from: t, to: null, causes: [this.causeAt(t)], end: null, accepted: 0, refused: 0, activity: 0, number, scripts: 0});
            this.ending = null;
        }
        if (now.mode === 'activity' && this.sessions.length > 0) {
            this.sessions[this.sessions.length - 1].activity += t - now.from;
        }
        now.to = t;
        this.bands.push({mode, from: t, to: null, number, ...more});
    }

    /// What made RSM run as it does from `t` on.
    causeAt(t) {
        const call = this.lastCall;
        if (call && t - call.t < 100 && /^(connect|command|call|start)/.test(call.verb)) {
            return {t, text: call.verb.startsWith('start') ? 'resumed at the start of the agent' : call.verb, sure: true};
        }
        return {t, text: 'schedule', sure: false};
    }

    read(body, t, number) {
        switch (body.event) {
            case 'call':
                this.readCall(body, t, number);
                break;
            case 'update-asset':
                this.readReport(body, t, number);
                break;
            case 'log':
                this.readScript(scriptStep(body.text), t, number);
                break;
            case 'thread-destroyed':
                this.destroyed = {t, number};
                this.ending = 'the agent was killed';
                this.killed = true;
                this.flags.push({t, number, label: 'killed', type: 'kill'});
                this.leave(t, number);
                break;
            case 'thread-start':
                if (body.result !== 0) {
                    this.flags.push({t, number, label: 'no thread', type: 'kill'});
                }
                break;
        }
    }

    /// Nothing of the module runs any more.
    leave(t, number) {
        this.enter('none', t, number);
        this.tunnels.change(t, number, 0);
        this.files.change(t, number, 0);
    }

    readCall(body, t, number) {
        const verb = String(body.verb);
        const done = body.result === 0;
        const [first, second] = verb.split(' ');
        if (this.destroyed) {
            this.judgeEnd(first, second, t);
        }
        if (first === 'start') {
            // A kill while nothing ran shows only by a second start.
            const isBack = this.killed || this.up.has(second);
            const type = isBack ? 'restart' : 'start';
            const label = this.killed ? 'agent is back' : isBack ? 'starts again' : 'agent starts';
            const last = this.flags[this.flags.length - 1];
            if (!done) {
                this.flags.push({t, number, label: `${verb} fails`, type: 'kill'});
            } else if (last && last.t === t && (last.type === 'start' || last.type === 'restart')) {
                last.title += `, ${verb}`;
            } else {
                this.flags.push({t, number, label, title: verb, type});
                this.killed = false;
            }
            if (done) {
                this.up.add(second);
                if (this.band.mode === 'none') {
                    this.enter('off', t, number);
                }
            }
        } else if (first === 'stop') {
            this.up.delete(second);
            const last = this.flags[this.flags.length - 1];
            if (last && last.t === t && last.type === 'stop') {
                last.title += `, ${verb}`;
            } else {
                this.flags.push({t, number, label: 'agent stops', title: verb, type: 'stop'});
            }
            if (second === 'logger' || (this.up.size === 0 && !this.session)) {
                this.ending = 'the agent stopped';
                this.leave(t, number);
            }
        } else if (first === 'audit' && done) {
            this.readAudit(body, t, number);
        } else if (kOrders.test(verb)) {
            this.flags.push({t, number, label: shortOrder(verb), title: whatOf(body), type: 'order', failed: !done});
            if (/^disconnect|^command ExitRSM/.test(verb) && done) {
                this.ending = 'disconnected';
            }
            // A call is told when it has come back, after the report that it caused.
            const cause = this.session?.causes[this.session.causes.length - 1];
            if (done && cause && !cause.sure && t - cause.t < 100) {
                Object.assign(cause, {text: verb, sure: true});
            }
        }
        this.lastCall = {t, verb};
    }

    /// A thread was destroyed before this call came back: by the call when it is a stop, by a kill otherwise.
    judgeEnd(first, second, t) {
        const flag = this.flags.find(one => one.number === this.destroyed.number);
        if (first === 'stop' && t - this.destroyed.t < 100) {
            this.killed = false;
            this.flags.splice(this.flags.indexOf(flag), 1);
            const session = this.sessions[this.sessions.length - 1];
            if (session && session.to === this.destroyed.t) {
                session.end = 'the agent stopped';
            }
        } else {
            this.up.clear();
        }
        this.destroyed = null;
    }

    readAudit(body, t, number) {
        const counted = (spans, activity) => ({open: spans.count + 1, close: Math.max(spans.count - 1, 0), abort: 0})[activity] ?? spans.count;
        this.tunnels.change(t, number, counted(this.tunnels, body.tunnel));
        this.files.change(t, number, counted(this.files, body.file));
    }

    readReport(body, t, number) {
        const profile = profileOf(body);
        const accepted = body.result === 0;
        const at = profileTime(profile.RSM_DELAY_PROFILE_START_TIME);
        const start = at === null ? null : this.model.instant(at);
        const modes = {FORCE_POLL_GRACE: 'grace', FORCE_POLL_ACTIVITY: 'activity'};
        const mode = modes[profile.RSM_MODE] ?? (at !== null ? 'waiting' : 'off');
        const more = {rate: Number(profile.RSM_FORCED_POLLING_RATE), minutes: Number(profile.RSM_GRACE_PERIOD), start};
        if (at !== null && !this.schedules.some(one => one.at === at)) {
            this.schedules.push({t, at, start, rate: Number(profile.RSM_DELAY_PROFILE_FORCED_POLLING_RATE), minutes: Number(profile.RSM_DELAY_PROFILE_GRACE_PERIOD), number});
        }
        const before = this.band;
        this.enter(mode, t, number, more);
        if (mode === 'grace' && before.mode === 'grace' && (before.rate !== more.rate || before.minutes !== more.minutes)) {
            this.session.causes.push(this.causeAt(t));
        }
        this.reports.push({t, number, accepted, mode});
        const session = this.sessions[this.sessions.length - 1];
        if (session && (session.to === null || session.to === t)) {
            session[accepted ? 'accepted' : 'refused'] += 1;
            session.rate = more.rate || session.rate;
        }
    }

    readScript(step, t, number) {
        if (step === 'begin') {
            this.scripts.push({from: t, to: t, number, failed: false, ended: false});
            if (this.session) {
                this.session.scripts += 1;
            }
        } else if (this.scripts.length > 0) {
            Object.assign(this.scripts[this.scripts.length - 1], {to: t, ended: true, failed: step === 'failed'});
        }
    }
}

/// "command ScheduleRSM RSMStartTime=10:03:00 ..." is told by its name and what a reader looks for.
function shortOrder(verb) {
    const [first, ...rest] = verb.split(' ');
    if (first !== 'command') {
        return oneLine(verb).slice(0, 40);
    }
    const value = name => (rest.find(word => word.startsWith(`${name}=`)) ?? '').slice(name.length + 1);
    return [oneLine(rest[0] ?? first), value('RSMStartTime'), value('GracePeriod') && `${value('GracePeriod')} min`].filter(Boolean).join(' ').slice(0, 40);
}
