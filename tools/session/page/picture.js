// ---- The picture: the story drawn over a time axis.

const kLanes = {
    axis: {y: 0, height: 26},
    orders: {y: 32, height: 60, label: 'Orders'},
    mode: {y: 100, height: 34, label: 'Mode', base: true},
    tunnel: {y: 144, height: 13, label: 'Tunnel', base: true},
    file: {y: 161, height: 13, label: 'File transfer', base: true},
    script: {y: 180, height: 14, label: 'Script'},
    errors: {y: 198, height: 14, label: 'Errors'},
    polls: {y: 220, height: 26, label: 'Polls', base: true},
    reports: {y: 256, height: 20, label: 'Reports'},
    whole: {y: 290, height: 22},
};
const kPictureHeight = 318;
const kEdge = 16;
const kShortestView = 200;  // milliseconds
const kLeastBlock = 3;      // pixels that somebody can point at
const kLeastApart = 4;      // pixels between marks of a lane
const kTickSteps = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800, 604800,
    1209600, 2592000, 7776000, 31536000].map(seconds => seconds * 1000);
const kModeNames = {none: 'no agent', off: 'off', waiting: 'waiting', grace: 'grace', activity: 'activity'};

/// How spans that follow each other, each `{from, to, mode}`, look in `width` columns of pixels: as blocks
/// `{left, right, span, spans}`. Spans may be narrower than a column. What each mode takes of the width is what it
/// takes of the time, but for one column; those of `bases` give way. What has no end lasts until `until`.
function blocksOf(spans, from, to, width, bases, until) {
    const scale = width / (to - from);
    const endOf = span => Math.min(span.to ?? until, to);
    const columns = Array.from({length: width}, () => []);  // [mode, share, span] each
    for (let i = firstWhere(spans.length, at => endOf(spans[at]) > from); i < spans.length && spans[i].from < to; ++i) {
        const [left, right] = [Math.max((spans[i].from - from) * scale, 0), (endOf(spans[i]) - from) * scale];
        for (let column = Math.floor(left); column < right; ++column) {
            const share = Math.min(column + 1, right) - Math.max(column, left);
            const known = columns[column].find(one => one[0] === spans[i].mode);
            if (known) {
                known[1] += share;
            } else {
                columns[column].push([spans[i].mode, share, spans[i]]);
            }
        }
    }
    const owed = {};  // columns that are yet to be shown of each mode
    const blocks = [];
    columns.forEach((column, left) => {
        for (const [mode, share] of column) {
            owed[mode] = (owed[mode] ?? 0) + share;
        }
        const most = list => list.reduce((best, one) => (best === null || owed[one[0]] > owed[best[0]] ? one : best), null);
        const chosen = most(column.filter(([mode]) => !bases.includes(mode) && owed[mode] > 1e-9)) ??
            most(column.filter(([mode]) => bases.includes(mode))) ?? (column.reduce((sum, one) => sum + one[1], 0) > 0.999 ? most(column) : null);
        if (chosen === null) {
            return;
        }
        const [mode, , span] = chosen;
        owed[mode] -= 1;
        const last = blocks.at(-1);
        const isNarrow = one => ((one.to ?? until) - one.from) * scale < kLeastBlock;
        if (last && last.right === left && last.span.mode === mode && (last.span === span || (isNarrow(span) && isNarrow(last.span)))) {
            last.right += 1;
            last.spans += last.last === span ? 0 : 1;
            last.last = span;
        } else {
            blocks.push({left, right: left + 1, span, last: span, spans: 1});
        }
    });
    return blocks;
}

class Picture {
    /// `hooks.point(number or null)` is called when the mouse points at an event, `hooks.choose(number)` at a click,
    /// `hooks.looked()` when another time is shown, `hooks.measured()` with another span; `hooks.nearest(t)` answers
    /// the event nearest to a time, or null.
    constructor(host, times, hooks) {
        this.host = host;
        this.times = times;
        this.hooks = hooks;
        host.innerHTML = '<svg></svg>';  // the parser knows the element's namespace
        this.svg = host.firstChild;
        this.space = this.svg.namespaceURI;
        this.reach = 0;       // until when another picture on the same axis goes
        this.view = null;     // [from, to], or null for everything
        this.pointed = null;  // time under the mouse
        this.marked = null;   // event pointed at in the table
        this.measured = null; // [from, to]
        this.listen();
        new ResizeObserver(() => host.clientWidth !== Number(this.svg.getAttribute('width')) && this.draw()).observe(host);
    }

    show(model, story) {
        this.model = model;
        this.story = story;
        this.draw();
    }

    get limits() {
        const until = Math.max(this.until, this.reach, 1000);
        const margin = until * 0.015;
        return [-margin, until + margin];
    }

    get shown() {
        return this.view ?? this.limits;
    }

    look(from, to) {
        const [least, most] = this.limits;
        const span = Math.min(Math.max(to - from, kShortestView), most - least);
        const begin = Math.min(Math.max(from, least), most - span);
        this.view = span >= (most - least) * 0.999 ? null : [begin, begin + span];
        this.drawSoon();
        this.hooks.looked();
    }

    zoom(factor, around) {
        const [from, to] = this.shown;
        const centre = around ?? (from + to) / 2;
        this.look(centre - (centre - from) * factor, centre + (to - centre) * factor);
    }

    move(part) {
        const [from, to] = this.shown;
        this.look(from + (to - from) * part, to + (to - from) * part);
    }

    /// Moves so that `t` is seen.
    reveal(t) {
        const [from, to] = this.shown;
        if (t < from || t > to) {
            this.look(t - (to - from) / 2, t + (to - from) / 2);
        }
    }

    mark(number) {
        this.marked = number;
        this.drawPointer();
    }

    drawSoon() {
        if (!this.waits) {
            this.waits = requestAnimationFrame(() => this.draw());
        }
    }

    x(t) {
        const [from, to] = this.shown;
        return this.gutter + (t - from) / (to - from) * this.width;
    }

    timeAt(x) {
        const [from, to] = this.shown;
        return from + (x - this.gutter) / this.width * (to - from);
    }

    add(parent, name, attributes, text) {
        const element = document.createElementNS(this.space, name);
        for (const [key, value] of Object.entries(attributes ?? {})) {
            if (value !== null && value !== undefined) {
                element.setAttribute(key, value);
            }
        }
        if (text !== undefined) {
            element.textContent = text;
        }
        return parent.appendChild(element);
    }

    /// A mark that stands for the event `number`; `title()` is its tooltip, made when it is needed.
    drawMark(parent, name, attributes, number, title) {
        const element = this.add(parent, name, {...attributes, 'data-number': number});
        element.makeTitle = title;
        return element;
    }

    giveTitle(mark) {
        if (mark?.makeTitle) {
            this.add(mark, 'title', {}, mark.makeTitle());
            mark.makeTitle = null;
        }
    }

    draw() {
        cancelAnimationFrame(this.waits);
        this.waits = null;
        const total = this.host.clientWidth;
        if (!this.story || total === 0) {
            return;
        }
        this.gutter = total < 560 ? 84 : 104;
        this.width = Math.max(Math.floor(total - this.gutter - kEdge), 100);
        const svg = this.svg;
        svg.replaceChildren();
        const attributes = {width: total, height: kPictureHeight, viewBox: `0 0 ${total} ${kPictureHeight}`, class: 'picture', role: 'img', 'aria-label': 'The session over time'};
        Object.entries(attributes).forEach(([key, value]) => svg.setAttribute(key, value));
        this.drawPatterns();
        this.add(svg, 'rect', {class: 'paper', width: total, height: kPictureHeight, rx: 6});
        this.drawAxis();
        this.drawLabels();
        const clip = this.add(svg, 'g', {'clip-path': 'url(#stage)'});
        const {story} = this;
        this.drawBands(clip);
        this.drawSchedules(clip);
        this.drawBlocks(clip, story.tunnels.list, kLanes.tunnel, [], () => 'remote', () => 'tunnel open');
        this.drawBlocks(clip, story.files.list, kLanes.file, [], () => 'remote', () => 'file transfer open');
        this.drawMarks(clip, story.scripts, 'script', (x, y) => `M${x - 1} ${y - 6}l9 6l-9 6z`,
            run => [run.failed ? 'script failed' : 'script', `modality script: ${run.failed ? 'failed' : run.ended ? 'ran' : 'is running'}`]);
        this.drawMarks(clip, story.errors, 'errors', (x, y) => `M${x - 4} ${y - 4}l8 8m0 -8l-8 8`, () => ['error', 'error line']);
        this.drawPolls(clip);
        const dot = (x, y) => `M${x - 5} ${y}a5 5 0 1 0 10 0a5 5 0 1 0 -10 0z`;
        const square = (x, y) => `M${x - 6} ${y}l6 -6l6 6l-6 6zM${x - 2.5} ${y - 2.5}l5 5m0 -5l-5 5`;
        for (const accepted of [true, false]) {
            this.drawMarks(clip, story.reports.filter(report => report.accepted === accepted), 'reports', accepted ? dot : square,
                report => accepted ? ['accepted', `report: ${this.modeName(report.mode)}, accepted`] : ['refused', `report: ${this.modeName(report.mode)}, refused`]);
        }
        this.drawFlags(clip);
        this.drawWhole();
        this.pointer = this.add(svg, 'g', {class: 'pointer'});
        this.drawPointer();
    }

    drawPatterns() {
        const defs = this.add(this.svg, 'defs');
        const stripes = this.add(defs, 'pattern', {id: 'stripes', width: 8, height: 8, patternUnits: 'userSpaceOnUse', patternTransform: 'rotate(45)'});
        this.add(stripes, 'rect', {class: 'stripe', width: 3, height: 8});
        const dots = this.add(defs, 'pattern', {id: 'dots', width: 8, height: 8, patternUnits: 'userSpaceOnUse'});
        this.add(dots, 'circle', {class: 'dot', cx: 4, cy: 4, r: 1.3});
        const stage = this.add(defs, 'clipPath', {id: 'stage'});
        this.add(stage, 'rect', {x: this.gutter, y: 0, width: this.width, height: kPictureHeight});
    }

    drawLabels() {
        for (const lane of Object.values(kLanes)) {
            if (lane.label) {
                this.add(this.svg, 'text', {class: 'lane', x: this.gutter - 12, y: lane.y + lane.height / 2 + 4, 'text-anchor': 'end'}, lane.label);
            }
        }
        for (const lane of Object.values(kLanes).filter(one => one.base || one === kLanes.reports)) {
            const y = lane.base ? lane.y + lane.height : lane.y + lane.height / 2;
            this.add(this.svg, 'line', {class: 'base', x1: this.gutter, x2: this.gutter + this.width, y1: y + 0.5, y2: y + 0.5});
        }
    }

    drawAxis() {
        const [from, to] = this.shown;
        const {clock} = this.model;
        const step = kTickSteps.find(one => one / (to - from) * this.width >= 84) ?? kTickSteps[kTickSteps.length - 1];
        this.lastTick = {x: -Infinity, date: ''};
        // Ticks lie on full hours of the zone that is shown, from each setting of the clock to the next.
        (clock.length > 0 ? clock : [{t: -Infinity, ahead: 0}]).forEach(({t, ahead}, i) => {
            const begin = Math.max(from, t);
            const end = Math.min(to, clock[i + 1]?.t ?? Infinity);
            if (i > 0 && this.isSeen(t, t)) {
                this.drawClockStep(t, ahead - clock[i - 1].ahead, clock[i - 1].ahead + t);
            }
            const zone = this.times.local && clock.length > 0 ? new Date(begin + ahead).getTimezoneOffset() * 60000 : 0;
            for (let at = Math.ceil((begin + ahead - zone) / step) * step; at - ahead + zone <= end && begin < end; at += step) {
                this.drawTick(at - ahead + zone, step);
            }
        });
        this.add(this.svg, 'text', {class: 'lane faint', x: this.gutter - 28, y: 20, 'text-anchor': 'end'},
            clock.length === 0 ? 'since start' : this.times.local ? zoneName().split('/').pop().replace('_', ' ') : 'GMT');
    }

    drawTick(t, step) {
        const x = Math.round(this.x(t)) + 0.5;
        this.add(this.svg, 'line', {class: 'grid', x1: x, x2: x, y1: kLanes.axis.height - 4, y2: kLanes.reports.y + kLanes.reports.height});
        if (x < this.gutter + 12 || x > this.gutter + this.width - 12 || x < this.lastTick.x + 60) {
            return;
        }
        const date = this.times.day(t);
        const hour = this.times.hour(t).slice(0, 8);
        const label = date === '' ? lengthText(t) : step >= 86400000 ? date : step >= 60000 ? hour.slice(0, 5) : hour;
        if (date !== this.lastTick.date && step < 86400000) {
            this.add(this.svg, 'text', {class: 'date', x, y: 10, 'text-anchor': 'middle'}, date);
        }
        this.lastTick = {x, date};
        this.add(this.svg, 'text', {class: 'tick', x, y: 21, 'text-anchor': 'middle'}, label);
    }

    /// The wall clock was set: times behind the mark do not go on from those before it.
    drawClockStep(t, by, before) {
        const x = Math.round(this.x(t)) + 0.5;
        const was = `${dateText(before, this.times.local)} ${hourText(before, this.times.local)}`;
        const mark = this.add(this.svg, 'g', {class: 'step'});
        this.add(mark, 'title', {}, `the clock is set from ${was} to ${this.times.at(t)}`);
        this.add(mark, 'line', {x1: x, x2: x, y1: 2, y2: kLanes.reports.y + kLanes.reports.height});
        this.add(mark, 'text', {x: x + 4, y: 10}, `clock ${by < 0 ? '\u2212' : '+'}${lengthText(Math.abs(by))}`);
        this.lastTick = {x: x + 20, date: ''};
    }

    /// Their blocks in the lane, those too narrow to point at as one path a look. Answers the others with their places.
    drawBlocks(parent, spans, lane, bases, lookOf, titleOf, [from, to] = this.shown) {
        const narrow = {};
        const wide = blocksOf(spans, from, to, this.width, bases, this.until).filter(({left, right, span}) => {
            const isWide = titleOf !== null && right - left >= kLeastBlock;
            if (!isWide) {
                narrow[lookOf(span)] = `${narrow[lookOf(span)] ?? ''}M${this.gutter + left} ${lane.y}h${right - left}v${lane.height}h${left - right}z`;
            }
            return isWide;
        });
        Object.entries(narrow).forEach(([look, d]) => this.add(parent, 'path', {class: look, d}));
        return wide.map(({left, right, span, last, spans: many}) => {
            const box = {x: this.gutter + left, y: lane.y, width: right - left, height: lane.height};
            this.drawMark(parent, 'rect', {class: lookOf(span), ...box, rx: 3}, span.number, () => {
                const over = last.to === null ? 'the end' : this.times.at(last.to);
                return `${titleOf(span)}: ${many > 1 ? `${many.toLocaleString('en')} times, ` : ''}` +
                    `${this.times.at(span.from)} to ${over}, ${lengthText((last.to ?? this.until) - span.from)}`;
            });
            return {box, span};
        });
    }

    /// Until when open things last: the session's end, or the present of a live one.
    get until() {
        return Math.max(this.model.end, this.now ?? 0);
    }

    isSeen(from, to) {
        const [begin, end] = this.shown;
        return from <= end && (to ?? this.until) >= begin;
    }

    modeName(mode) {
        return mode === 'none' && this.model.isLog ? 'not told' : kModeNames[mode];
    }

    bandTitle(band) {
        const rate = band.rate > 0 ? `, one poll every ${lengthText(band.rate * 1000)}` : '';
        return `${this.modeName(band.mode)}${band.mode === 'grace' && band.minutes > 0 ? `, ${minutesText(band.minutes)}` : ''}${rate}`;
    }

    drawBands(parent) {
        const blocks = this.drawBlocks(parent, this.story.bands, kLanes.mode, ['off', 'none'],
            band => `band ${band.mode}`, band => this.bandTitle(band));
        for (const {box, span: band} of blocks) {
            if (band.mode === 'activity' || band.mode === 'waiting') {
                this.add(parent, 'rect', {class: 'texture', ...box, rx: 3, fill: `url(#${band.mode === 'activity' ? 'stripes' : 'dots'})`});
            }
            const name = `${this.modeName(band.mode)}${band.mode === 'grace' && band.minutes > 0 ? ` ${minutesText(band.minutes)}` : ''}`;
            const texts = band.rate > 0 && band.mode !== 'off' ? [`${name} \u00b7 poll every ${lengthText(band.rate * 1000)}`, name] : [name];
            const label = texts.find(text => text.length * 6.7 + 12 < box.width);
            if (label) {
                this.add(parent, 'text', {class: `on ${band.mode}`, x: box.x + 8, y: box.y + box.height / 2 + 4}, label);
            }
        }
    }

    drawSchedules(parent) {
        for (const order of this.story.schedules) {
            if (order.start !== null && this.isSeen(order.start, order.start)) {
                const x = this.x(order.start);
                this.drawMark(parent, 'path', {class: 'due', d: `M${x} ${kLanes.mode.y - 6}v${kLanes.mode.height + 12}`}, order.number,
                    () => `scheduled start ${this.times.at(order.start)}: ${periodText(order.minutes, order.rate)}`);
            }
        }
    }

    /// Marks of the lane, as many as have room. `shape(x, y)` is a path; `lookOf(one)` answers class and title.
    drawMarks(parent, list, lane, shape, lookOf) {
        const [from, to] = this.shown;
        const y = kLanes[lane].y + kLanes[lane].height / 2;
        let last = -Infinity;
        for (let i = firstWhere(list.length, at => list[at].t >= from); i < list.length && list[i].t <= to; ++i) {
            const x = this.x(list[i].t);
            if (x - last >= kLeastApart) {
                last = x;
                const [name, title] = lookOf(list[i]);
                this.drawMark(parent, 'path', {class: name, d: shape(x, y)}, list[i].number, () => `${this.times.at(list[i].t)} ${title}`);
            }
        }
    }

    /// Polls a column of pixels, so that a year of them is drawn as fast as a minute.
    pollColumns(from, to, width) {
        const before = Array.from({length: width + 1}, (_, i) => this.model.pollsBefore(this.model.firstAt(from + i / width * (to - from))));
        return before.slice(1).map((count, i) => count - before[i]);
    }

    drawPolls(parent) {
        const {y, height} = kLanes.polls;
        const [from, to] = this.shown;
        const columns = this.pollColumns(from, to, this.width);
        let d = '';  // ticks, and blocks where they touch
        let begin = -1;
        for (let i = 0; i <= columns.length; ++i) {
            if (i < columns.length && columns[i] > 0) {
                begin = begin < 0 ? i : begin;
                continue;
            }
            if (begin >= 0) {
                d += `M${this.gutter + begin + 0.5} ${y + 4}h${i - begin - 1}V${y + height}h${begin + 1 - i}z`;
            }
            begin = -1;
        }
        this.add(parent, 'path', {class: 'poll', d});
    }

    drawFlags(parent) {
        const lane = kLanes.orders;
        const height = 18;
        const rank = {kill: 0, fail: 0, order: 1, restart: 2, stop: 3, start: 3};
        const seen = this.story.flags.filter(flag => this.isSeen(flag.t, flag.t));
        const poles = {};  // the columns of each type
        for (const {t, type} of seen) {
            (poles[type] ??= new Set()).add(Math.round(this.x(t)) + 0.5);
        }
        for (const [type, columns] of Object.entries(poles)) {
            const end = kLanes.mode.y + (rank[type] === 0 ? kLanes.mode.height : 7);
            this.add(parent, 'path', {class: `pole ${type}`, d: [...columns].map(x => `M${x} ${lane.y + 4}V${end}`).join('')});
        }
        // Where there is no room for all names, those of starts and stops are the first to be left out.
        const rows = Array.from({length: 3}, () => new Uint8Array(this.width + 1));  // columns that are taken
        const least = rows[0].length - 1;
        for (const flag of [0, 1, 2, 3].flatMap(wanted => seen.filter(one => rank[one.type] === wanted))) {
            const x = Math.round(this.x(flag.t)) + 0.5;
            const place = Math.floor(x - this.gutter);
            if (place < least - 300 && rows.every(taken => taken[Math.max(place - 4, 0)] === 1)) {
                continue;
            }
            const label = flag.label + (flag.failed ? ' \u2717' : '');
            const width = Math.min(label.replace(/[\u2068\u2069]/g, '').length * 6.8 + 14, least);
            // A flag at the right edge points back.
            const left = x + width > this.gutter + this.width ? x - width : x;
            const [begin, end] = [Math.max(Math.floor(left - this.gutter - 4), 0), Math.ceil(left + width - this.gutter + 4)];
            const row = rows.findIndex(taken => taken[begin] === 0 && taken.subarray(begin, end).every(one => one === 0));
            if (row < 0) {
                continue;
            }
            rows[row].fill(1, begin, end);
            const y = lane.y + row * (height + 3);
            const group = this.drawMark(parent, 'g', {class: `flag ${flag.type}${flag.failed ? ' failed' : ''}`}, flag.number,
                () => `${this.times.at(flag.t)} ${flag.facts?.what ?? flag.title ?? flag.label}`);
            this.add(group, 'rect', {x: left, y, width, height, rx: 2});
            this.add(group, 'text', {x: left + 7, y: y + 13}, label);
        }
    }

    /// The whole session in small, with the part that is shown.
    drawWhole() {
        const lane = kLanes.whole;
        const svg = this.add(this.svg, 'g', {class: 'whole'});
        this.add(svg, 'text', {class: 'lane faint', x: this.gutter - 12, y: lane.y + lane.height / 2 + 4, 'text-anchor': 'end'}, this.gutter < 100 ? 'Whole' : 'Whole session');
        const [least, most] = this.limits;
        const at = t => this.gutter + (t - least) / (most - least) * this.width;
        this.add(svg, 'rect', {class: 'band off', x: this.gutter, y: lane.y, width: this.width, height: lane.height, rx: 3});
        this.drawBlocks(svg, this.story.bands, {y: lane.y + 4, height: lane.height - 8}, ['off', 'none'],
            band => `band ${band.mode === 'none' ? 'off' : band.mode}`, null, this.limits);
        const kills = this.story.flags.filter(one => one.type === 'kill').map(one => Math.round(at(one.t)));
        this.add(svg, 'path', {class: 'pole kill', d: [...new Set(kills)].map(x => `M${x} ${lane.y}v${lane.height}`).join('')});
        const [from, to] = this.shown;
        this.add(svg, 'rect', {class: 'window', x: at(from), y: lane.y + 0.5, width: Math.max(at(to) - at(from), 4), height: lane.height - 1, rx: 3});
    }

    drawPointer() {
        if (!this.pointer) {
            return;
        }
        this.pointer.replaceChildren();
        if (this.measured !== null) {
            const [left, right] = this.measured.map(one => this.x(one));
            this.add(this.pointer, 'rect', {class: 'measured', x: left, y: kLanes.axis.height, width: right - left, height: kLanes.whole.y - 8 - kLanes.axis.height, 'clip-path': 'url(#stage)'});
        }
        const t = this.marked !== null && this.marked < this.model.size ? this.model.timeOf(this.marked) : this.pointed;
        if (t === null || !this.isSeen(t, t)) {
            return;
        }
        const x = this.x(t);
        this.add(this.pointer, 'line', {x1: x, x2: x, y1: kLanes.axis.height - 2, y2: kLanes.reports.y + kLanes.reports.height + 4});
        const text = this.times.short(t);
        const width = text.length * 6.8 + 10;
        const left = Math.min(Math.max(x - width / 2, this.gutter), this.gutter + this.width - width);
        this.add(this.pointer, 'rect', {x: left, y: 8, width, height: 17, rx: 3});
        this.add(this.pointer, 'text', {x: left + width / 2, y: 20.5, 'text-anchor': 'middle'}, text);
        for (const element of this.svg.querySelectorAll('.marked')) {
            element.classList.remove('marked');
        }
        if (this.marked !== null) {
            this.svg.querySelectorAll(`[data-number="${this.marked}"]`).forEach(element => element.classList.add('marked'));
        }
    }

    place(event) {
        const box = this.svg.getBoundingClientRect();
        return {x: event.clientX - box.left, y: event.clientY - box.top};
    }

    /// The event that is meant by a place: that of the mark there, or the nearest one.
    numberAt(target, x) {
        const mark = target.closest?.('[data-number]');
        if (mark && !mark.classList.contains('band')) {
            return Number(mark.dataset.number);
        }
        return this.hooks.nearest(this.timeAt(x));
    }

    listen() {
        const svg = this.svg;
        let drag = null;
        svg.addEventListener('pointerdown', event => {
            const {x, y} = this.place(event);
            if (event.button === 0 && x >= this.gutter) {
                drag = {x, target: event.target, view: this.shown, moved: false, whole: y >= kLanes.whole.y - 4, measures: event.shiftKey};
                this.measure(null);
                if (drag.whole) {
                    this.centreWhole(x);
                }
                svg.setPointerCapture(event.pointerId);
            }
        });
        svg.addEventListener('pointermove', event => {
            const {x} = this.place(event);
            if (drag && (drag.moved || Math.abs(x - drag.x) > 3)) {
                drag.moved = true;
                if (drag.whole) {
                    this.centreWhole(x);
                } else if (drag.measures) {
                    this.measure([drag.x, x].map(one => Math.max(this.timeAt(one), 0)).sort((one, other) => one - other));
                } else {
                    const shift = (drag.x - x) / this.width * (drag.view[1] - drag.view[0]);
                    this.look(drag.view[0] + shift, drag.view[1] + shift);
                }
                return;
            }
            const inside = x >= this.gutter && x <= this.gutter + this.width;
            this.pointed = inside ? this.timeAt(x) : null;
            this.marked = null;
            this.drawPointer();
            this.hooks.point(inside ? this.numberAt(event.target, x) : null);
        });
        svg.addEventListener('pointerup', event => {
            const {x} = this.place(event);
            const number = drag && !drag.moved && !drag.whole ? this.numberAt(drag.target, x) : null;
            if (number !== null) {
                this.hooks.choose(number);
            }
            drag = null;
        });
        svg.addEventListener('pointerover', event => this.giveTitle(event.target.closest('[data-number]') ?? event.target));
        svg.addEventListener('pointercancel', () => {
            drag = null;
        });
        svg.addEventListener('pointerleave', () => {
            this.pointed = null;
            this.drawPointer();
            this.hooks.point(null);
        });
        svg.addEventListener('dblclick', event => this.zoom(0.4, this.timeAt(this.place(event).x)));
        svg.addEventListener('wheel', event => {
            if (event.ctrlKey || event.metaKey) {
                event.preventDefault();
                this.zoom(Math.exp(event.deltaY * 0.003), this.timeAt(this.place(event).x));
            } else if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
                event.preventDefault();
                this.move(event.deltaX / this.width);
            }
        }, {passive: false});
        this.host.addEventListener('keydown', event => {
            const action = {
                ArrowLeft: () => this.move(-0.15), ArrowRight: () => this.move(0.15), '+': () => this.zoom(0.6),
                '=': () => this.zoom(0.6), '-': () => this.zoom(1 / 0.6), 0: () => this.look(...this.limits), Escape: () => this.measure(null),
            }[event.key];
            if (action && !event.ctrlKey && !event.metaKey && !event.altKey) {
                event.preventDefault();
                action();
            }
        });
    }

    /// Two times in their order, or null for none.
    measure(span) {
        this.measured = span;
        this.drawPointer();
        this.hooks.measured();
    }

    centreWhole(x) {
        const [least, most] = this.limits;
        const t = least + (x - this.gutter) / this.width * (most - least);
        const span = this.shown[1] - this.shown[0];
        this.look(t - span / 2, t + span / 2);
    }

    /// The view, as a file of its own.
    asFile(style) {
        this.svg.querySelectorAll('*').forEach(mark => this.giveTitle(mark));
        const copy = this.svg.cloneNode(true);
        copy.querySelector('.pointer').remove();
        copy.querySelector('.whole').remove();
        const height = kLanes.whole.y - 6;
        copy.setAttribute('height', height);
        copy.setAttribute('viewBox', `0 0 ${copy.getAttribute('width')} ${height}`);
        const element = document.createElementNS(this.space, 'style');
        element.textContent = style;
        copy.insertBefore(element, copy.firstChild);
        return new XMLSerializer().serializeToString(copy) + '\n';
    }
}
