// ---- What the events tell: modes, polls, remote activity, reports, and one line for each time that RSM ran.

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
        this.flags = [];     // {t, number, label, type, failed, facts or title}
        this.reports = [];   // {t, number, accepted, mode}
        this.errors = [];    // {t, number}
        this.bands = [{mode: 'none', from: model.shift, to: null, number: null}];
        this.tunnels = new Spans();
        this.files = new Spans();
        this.scripts = [];   // {t, number, failed, ended}
        this.sessions = [];
        this.schedules = []; // {t, at, rate, minutes}: starts that were ordered
        this.up = new Set(); // families that were started
        this.back = new Set(); // of these, those that an agent which begins anew has yet to start
        this.killed = false;
        this.ending = null;  // what asked for the session's end
        this.unnamed = [];   // causes that the next call to come back was
        this.starter = null; // the cause of what the polling thread reports first
        this.kills = [...model.kills];
        for (const run of model.runs) {
            this.readRun(run);
        }
        this.readKills(Infinity);
        this.bands = this.bands.filter(band => band.to === null || band.to > band.from);
        for (const session of this.sessions) {
            session.polls = model.pollsBetween(session.from, session.to ?? model.end);
        }
    }

    readRun(run) {
        const telling = run.ids.map((_, i) => i).filter(i => !this.model.facts[run.ids[i]].dull);
        for (let round = 0; round < run.count && telling.length > 0; ++round) {
            for (const i of telling) {
                const number = run.first + round * run.ids.length + i;
                this.readKills(number);
                this.read(this.model.facts[run.ids[i]], run.start + round * run.period + run.ends[i], number);
            }
        }
    }

    /// The kills before the event `number`; those that ended a thread were events already.
    readKills(number) {
        while (this.kills.length > 0 && this.kills[0][1] <= number) {
            const [t, next] = this.kills.shift();
            if (!this.killed && this.up.size > 0) {
                this.kill(t, Math.min(next, this.model.size - 1));
            }
            this.destroyed = null;
            this.up.clear();
        }
    }

    kill(t, number) {
        this.ending = 'the agent was killed';
        this.killed = true;
        this.flags.push({t, number, label: 'killed', type: 'kill'});
        this.leave(t, number);
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
            const isEarly = now.mode === 'grace' && t - now.from + (now.rate || 0) * 1000 < (now.minutes || 0) * 60000;
            Object.assign(session, {to: t, end: this.ending ?? (isEarly ? 'before its time was used up' : 'its time was used up')});
        }
        if (!session && runs) {
            this.sessions.push({from: t, to: null, causes: [more.cause()], end: null, accepted: 0, refused: 0, activity: 0, number});
        }
        if (runs) {
            this.ending = null;
        }
        if (now.mode === 'activity' && this.sessions.length > 0) {
            this.sessions[this.sessions.length - 1].activity += t - now.from;
        }
        now.to = t;
        this.bands.push({mode, from: t, to: null, number, ...more});
    }

    /// What made RSM run as it does from `t` on: a call that has yet to come back, the one that started the polling
    /// thread, or a schedule whose time has come.
    causeAt(t, isHost, starter) {
        const wall = this.model.wall(t);
        const due = this.schedules.findLast(one => !one.used && (wall === null || wall >= one.at - 1500));
        const cause = starter ?? {text: isHost || !due ? null : 'schedule'};
        if (isHost) {
            this.unnamed.push(cause);
        } else if (!starter && due) {
            due.used = true;
        }
        return cause;
    }

    read(facts, t, number) {
        const {body} = facts;
        switch (body.event) {
            case 'call':
                this.readCall(facts, t, number);
                break;
            case 'update-asset':
                this.readReport(body, t, number);
                break;
            case 'log':
                if (facts.kind === 'errors') {
                    this.errors.push({t, number});
                }
                if (facts.step === 'disconnect') {
                    this.ending = 'disconnected';
                } else if (facts.step === 'agent') {
                    this.beginAnew(number);
                } else if (facts.step !== undefined) {
                    this.readScript(facts.step, t, number);
                }
                break;
            case 'thread-destroyed':
                this.destroyed = {t, number};
                this.kill(t, number);
                break;
            case 'thread-start':
                if (body.result !== 0) {
                    this.flags.push({t, number, label: 'no thread', type: 'fail'});
                } else {
                    this.starter = {text: null};
                    this.unnamed.push(this.starter);
                }
                break;
        }
    }

    /// Of a log: the agent's first line. Nobody stopped the one before, so it ended somewhere between. What a start reports may come
    /// before the line that tells of it.
    beginAnew(number) {
        if (this.model.isLog && (this.up.size > 0 || this.session)) {
            this.ending = this.up.size > 0 ? 'the log does not tell how' : 'the agent stopped';
            this.leave(this.model.timeOf(number - 1), number);
            this.back = new Set(this.up);
        }
    }

    /// Nothing of the module runs any more.
    leave(t, number) {
        this.enter('none', t, number);
        this.tunnels.change(t, number, 0);
        this.files.change(t, number, 0);
    }

    readCall(facts, t, number) {
        const {body} = facts;
        const verb = String(body.verb);
        const done = body.result === 0;
        const [first, second] = verb.split(' ');
        for (const cause of this.unnamed.splice(0)) {
            cause.text = first === 'start' ? 'resumed at the start of the agent' : foreign(verb);
        }
        if (this.destroyed) {
            this.judgeEnd(first, second, t);
        }
        if (first === 'start') {
            if (this.up.has(second) && !this.back.has(second)) {
                this.beginAnew(number - 1);  // the level of the log has left out its first line, and this one's own is the event before
            }
            this.back.delete(second);
            // A kill while nothing ran shows only by a second start.
            const isBack = this.killed || this.up.has(second);
            const type = isBack ? 'restart' : 'start';
            const label = this.killed ? 'agent is back' : isBack ? 'starts again' : 'agent starts';
            const last = this.flags[this.flags.length - 1];
            if (!done) {
                this.flags.push({t, number, label: `${foreign(verb)} fails`, type: 'fail'});
            } else if (last && last.t === t && (last.type === 'start' || last.type === 'restart')) {
                last.title += `, ${foreign(verb)}`;
            } else {
                this.flags.push({t, number, label, title: foreign(verb), type});
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
                last.title += `, ${foreign(verb)}`;
            } else {
                this.flags.push({t, number, label: 'agent stops', title: foreign(verb), type: 'stop'});
            }
            if (second === 'logger' || (this.up.size === 0 && !this.session)) {
                this.ending = 'the agent stopped';
                this.leave(t, number);
            }
        } else if (first === 'audit' && done) {
            this.readAudit(body, t, number);
        } else if (kOrders.test(verb)) {
            this.flags.push({t, number, label: shortOrder(verb), facts, type: 'order', failed: facts.bad});
        }
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
        if (body.properties === null) {  // of a log, which tells the mode when the enterprise accepts it
            if (this.session) {
                this.session.refused += 1;
            }
            this.ending = 'what follows is not told';
            this.enter('none', t, number);
            this.reports.push({t, number, accepted, mode: 'none'});
            return;
        }
        const isHost = body.thread === 'host';
        const starter = isHost ? null : this.starter;
        this.starter = isHost ? this.starter : null;
        const cause = () => this.causeAt(t, isHost, starter);
        const at = profileTime(profile.RSM_DELAY_PROFILE_START_TIME);
        const start = at === null ? null : this.model.instant(at);
        const modes = {FORCE_POLL_GRACE: 'grace', FORCE_POLL_ACTIVITY: 'activity'};
        const mode = modes[profile.RSM_MODE] ?? (at !== null ? 'waiting' : 'off');
        const more = {rate: Number(profile.RSM_FORCED_POLLING_RATE), minutes: Number(profile.RSM_GRACE_PERIOD), start, cause};
        if (at !== null && !this.schedules.some(one => one.at === at)) {
            this.schedules.push({t, at, start, rate: Number(profile.RSM_DELAY_PROFILE_FORCED_POLLING_RATE), minutes: Number(profile.RSM_DELAY_PROFILE_GRACE_PERIOD), number});
        }
        const before = this.band;
        this.enter(mode, t, number, more);
        if (mode === 'grace' && before.mode === 'grace' && (before.rate !== more.rate || before.minutes !== more.minutes)) {
            this.session.causes.push(cause());
        }
        this.reports.push({t, number, accepted, mode});
        const session = this.sessions[this.sessions.length - 1];
        if (session && (session.to === null || session.to === t)) {
            session[accepted ? 'accepted' : 'refused'] += 1;
        }
    }

    readScript(step, t, number) {
        if (step === 'begin') {
            this.scripts.push({t, number, failed: false, ended: false});
        } else if (this.scripts.length > 0) {
            Object.assign(this.scripts[this.scripts.length - 1], {ended: true, failed: step === 'failed'});
        }
    }
}

/// "command ScheduleRSM RSMStartTime=10:03:00 ..." is told by its name and what a reader looks for.
function shortOrder(verb) {
    const [first, name, ...rest] = verb.split(' ');
    const value = wanted => (rest.find(word => word.startsWith(`${wanted}=`)) ?? '').slice(wanted.length + 1);
    const minutes = value('GracePeriod');
    const text = first !== 'command' ? verb : [name ?? first, value('RSMStartTime'), minutes && minutesText(minutes)].filter(Boolean).join(' ');
    return foreign(text.slice(0, 40));
}
