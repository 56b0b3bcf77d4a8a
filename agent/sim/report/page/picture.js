// ---- The picture: the story drawn over a time axis.

const kLanes = {
    axis: {y: 0, height: 26},
    orders: {y: 32, height: 60, label: 'Orders'},
    mode: {y: 100, height: 34, label: 'Mode'},
    tunnel: {y: 144, height: 13, label: 'Tunnel'},
    file: {y: 161, height: 13, label: 'File transfer'},
    script: {y: 180, height: 14, label: 'Script'},
    polls: {y: 204, height: 26, label: 'Polls'},
    reports: {y: 240, height: 20, label: 'Reports'},
    whole: {y: 274, height: 22},
};
const kPictureHeight = 302;
const kGutter = 104;
const kEdge = 16;
const kShortestView = 200;  // milliseconds
const kTickSteps = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800, 604800,
    1209600, 2592000, 7776000, 31536000].map(seconds => seconds * 1000);
const kModeNames = {none: 'no agent', off: 'off', waiting: 'waiting', grace: 'grace', activity: 'activity'};

class Picture {
    /// `hooks.point(number or null)` is called when the mouse points at an event, `hooks.choose(number)` at a click;
    /// `hooks.nearest(t)` answers the event nearest to a time, or null.
    constructor(host, hooks) {
        this.host = host;
        this.hooks = hooks;
        host.innerHTML = '<svg></svg>';  // the parser knows the element's namespace
        this.svg = host.firstChild;
        this.space = this.svg.namespaceURI;
        this.local = false;
        this.view = null;    // [from, to], or null for everything
        this.pointed = null; // time under the mouse
        this.marked = null;  // event pointed at in the table
        this.listen();
        new ResizeObserver(() => this.draw()).observe(host);
    }

    show(model, story) {
        this.model = model;
        this.story = story;
        this.draw();
    }

    get limits() {
        const whole = Math.max(this.model.end, this.now ?? 0, 1000);
        const margin = whole * 0.015;
        return [-margin, whole + margin];
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
        return kGutter + (t - from) / (to - from) * this.width;
    }

    timeAt(x) {
        const [from, to] = this.shown;
        return from + (x - kGutter) / this.width * (to - from);
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

    /// A mark that stands for the event `number`; `title` is what it says to whoever asks.
    drawMark(parent, name, attributes, number, title) {
        const element = this.add(parent, name, {...attributes, 'data-number': number});
        this.add(element, 'title', {}, title);
        return element;
    }

    draw() {
        this.waits = null;
        const total = this.host.clientWidth;
        if (!this.story || total === 0) {
            return;
        }
        this.width = Math.max(total - kGutter - kEdge, 100);
        const svg = this.svg;
        svg.replaceChildren();
        svg.setAttribute('width', total);
        svg.setAttribute('height', kPictureHeight);
        svg.setAttribute('viewBox', `0 0 ${total} ${kPictureHeight}`);
        svg.setAttribute('class', 'picture');
        svg.setAttribute('role', 'img');
        svg.setAttribute('aria-label', 'The session over time');
        this.drawPatterns();
        this.add(svg, 'rect', {class: 'paper', width: total, height: kPictureHeight, rx: 6});
        this.drawAxis();
        this.drawLabels();
        const clip = this.add(svg, 'g', {'clip-path': 'url(#stage)'});
        this.drawBands(clip);
        this.drawSchedules(clip);
        this.drawSpans(clip, this.story.tunnels.list, kLanes.tunnel, 'tunnel');
        this.drawSpans(clip, this.story.files.list, kLanes.file, 'file transfer');
        this.drawScripts(clip);
        this.drawPolls(clip);
        this.drawReports(clip);
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
        this.add(stage, 'rect', {x: kGutter, y: 0, width: this.width, height: kPictureHeight});
    }

    drawLabels() {
        for (const lane of Object.values(kLanes)) {
            if (lane.label) {
                this.add(this.svg, 'text', {class: 'lane', x: kGutter - 12, y: lane.y + lane.height / 2 + 4, 'text-anchor': 'end'}, lane.label);
            }
        }
        for (const name of ['mode', 'tunnel', 'file', 'polls', 'reports']) {
            const lane = kLanes[name];
            const y = name === 'reports' ? lane.y + lane.height / 2 : lane.y + lane.height;
            this.add(this.svg, 'line', {class: 'base', x1: kGutter, x2: kGutter + this.width, y1: y + 0.5, y2: y + 0.5});
        }
    }

    drawAxis() {
        const [from, to] = this.shown;
        const hasClock = this.model.clock.length > 0;
        const step = kTickSteps.find(one => one / (to - from) * this.width >= 84) ?? kTickSteps[kTickSteps.length - 1];
        // Ticks lie on full hours of the zone that is shown.
        const offset = !hasClock ? 0 : this.model.wall(from) - from - (this.local ? new Date(this.model.wall(from)).getTimezoneOffset() * 60000 : 0);
        let lastDate = '';
        for (let at = Math.ceil((from + offset) / step) * step; at - offset <= to; at += step) {
            const t = at - offset;
            const x = Math.round(this.x(t)) + 0.5;
            this.add(this.svg, 'line', {class: 'grid', x1: x, x2: x, y1: kLanes.axis.height - 4, y2: kLanes.reports.y + kLanes.reports.height});
            if (x < kGutter + 12 || x > kGutter + this.width - 12) {
                continue;
            }
            let label = lengthText(t);
            if (hasClock) {
                const wall = this.model.wall(t);
                const date = dateText(wall, this.local);
                label = step >= 86400000 ? date : step >= 60000 ? hourText(wall, this.local).slice(0, 5) : hourText(wall, this.local);
                if (date !== lastDate && step < 86400000) {
                    this.add(this.svg, 'text', {class: 'date', x, y: 10, 'text-anchor': 'middle'}, date);
                }
                lastDate = date;
            }
            this.add(this.svg, 'text', {class: 'tick', x, y: 21, 'text-anchor': 'middle'}, label);
        }
        this.add(this.svg, 'text', {class: 'lane faint', x: kGutter - 28, y: 20, 'text-anchor': 'end'}, hasClock ? this.local ? 'local time' : 'GMT' : 'since start');
    }

    box(lane, from, to) {
        const left = Math.max(this.x(from), kGutter - 20);
        const right = Math.min(this.x(to ?? this.until), kGutter + this.width + 20);
        return {x: left, y: lane.y, width: Math.max(right - left, 2), height: lane.height};
    }

    /// Until when open things last: the session's end, or the present of a live one.
    get until() {
        return Math.max(this.model.end, this.now ?? 0);
    }

    isSeen(from, to) {
        const [begin, end] = this.shown;
        return from <= end && (to ?? this.until) >= begin;
    }

    bandTitle(band) {
        const rate = band.rate > 0 ? `, one poll every ${band.rate} s` : '';
        const minutes = band.minutes > 0 ? `, ${band.minutes} min` : '';
        return `${kModeNames[band.mode]}${band.mode === 'grace' ? minutes : ''}${rate}: ${this.timeText(band.from)} to ${band.to === null ? 'the end' : this.timeText(band.to)}, ${lengthText((band.to ?? this.until) - band.from)}`;
    }

    timeText(t) {
        const wall = this.model.wall(t);
        return wall === null ? lengthText(t) : hourText(wall, this.local);
    }

    drawBands(parent) {
        const minimum = 3;  // pixels; narrower ones of the same mode become one
        let last = null;
        for (const band of this.story.bands) {
            if (!this.isSeen(band.from, band.to)) {
                continue;
            }
            const box = this.box(kLanes.mode, band.from, band.to);
            if (last && last.mode === band.mode && box.width < minimum && box.x < last.end + minimum) {
                continue;
            }
            last = {mode: band.mode, end: box.x + box.width};
            this.drawMark(parent, 'rect', {class: `band ${band.mode}`, ...box, rx: 3}, band.number, this.bandTitle(band));
            if (band.mode === 'activity' || band.mode === 'waiting') {
                this.add(parent, 'rect', {class: 'texture', ...box, rx: 3, fill: `url(#${band.mode === 'activity' ? 'stripes' : 'dots'})`});
            }
            const visible = [Math.max(box.x, kGutter), Math.min(box.x + box.width, kGutter + this.width)];
            const texts = [`${kModeNames[band.mode]}${band.mode === 'grace' && band.minutes > 0 ? ` ${band.minutes} min` : ''}`];
            if (band.rate > 0 && band.mode !== 'off') {
                texts.unshift(`${texts[0]} \u00b7 poll every ${band.rate} s`);
            }
            const label = texts.find(text => text.length * 6.7 + 12 < visible[1] - visible[0]);
            if (label) {
                this.add(parent, 'text', {class: `on ${band.mode}`, x: visible[0] + 8, y: box.y + box.height / 2 + 4}, label);
            }
        }
    }

    drawSchedules(parent) {
        for (const order of this.story.schedules) {
            if (order.start !== null && this.isSeen(order.start, order.start)) {
                const x = this.x(order.start);
                this.drawMark(parent, 'path', {class: 'due', d: `M${x} ${kLanes.mode.y - 6}v${kLanes.mode.height + 12}`}, order.number,
                    `scheduled start ${this.timeText(order.start)}: ${order.minutes} min at one poll every ${order.rate} s`);
            }
        }
    }

    drawSpans(parent, spans, lane, name) {
        for (const span of spans) {
            if (this.isSeen(span.from, span.to)) {
                this.drawMark(parent, 'rect', {class: 'remote', ...this.box(lane, span.from, span.to), rx: 2}, span.number,
                    `${name} open: ${this.timeText(span.from)} to ${span.to === null ? 'the end' : this.timeText(span.to)}, ${lengthText((span.to ?? this.until) - span.from)}`);
            }
        }
    }

    drawScripts(parent) {
        const {y, height} = kLanes.script;
        let last = -Infinity;
        for (const run of this.story.scripts) {
            const x = this.x(run.from);
            if (!this.isSeen(run.from, run.to) || x - last < 1) {
                continue;
            }
            last = x;
            this.drawMark(parent, 'path', {class: run.failed ? 'script failed' : 'script', d: `M${x - 1} ${y + 1}l9 ${height / 2 - 1}l-9 ${height / 2 - 1}z`}, run.number,
                `modality script at ${this.timeText(run.from)}: ${run.failed ? 'failed' : run.ended ? 'ran' : 'is running'}`);
        }
    }

    /// Polls a column of pixels, so that a year of them is drawn as fast as a minute.
    pollColumns(from, to, width) {
        const columns = new Uint32Array(width + 1);
        const span = to - from;
        for (const series of this.story.polls) {
            const end = series.t + series.step * (series.n - 1);
            if (end < from || series.t > to) {
                continue;
            }
            if (series.n === 1 || series.step === 0) {
                columns[Math.floor((series.t - from) / span * width)] += series.n;
                continue;
            }
            const first = Math.max(Math.ceil((from - series.t) / series.step), 0);
            const last = Math.min(Math.floor((to - series.t) / series.step), series.n - 1);
            if (last - first <= width) {
                for (let i = first; i <= last; ++i) {
                    columns[Math.floor((series.t + i * series.step - from) / span * width)] += 1;
                }
                continue;
            }
            let before = first;
            for (let column = 0; column < width && before <= last; ++column) {
                const edge = from + (column + 1) / width * span;
                const next = Math.min(Math.max(Math.ceil((edge - series.t) / series.step), before), last + 1);
                columns[column] += next - before;
                before = next;
            }
        }
        return columns;
    }

    drawPolls(parent) {
        const {y, height} = kLanes.polls;
        const [from, to] = this.shown;
        const columns = this.pollColumns(from, to, Math.floor(this.width));
        // Single ticks as lines; where columns touch, one block.
        let ticks = '';
        let blocks = '';
        let begin = -1;
        for (let i = 0; i <= columns.length; ++i) {
            if (i < columns.length && columns[i] > 0) {
                begin = begin < 0 ? i : begin;
                continue;
            }
            if (begin >= 0 && i - begin === 1) {
                ticks += `M${kGutter + begin + 0.5} ${y + 4}V${y + height}`;
            } else if (begin >= 0) {
                blocks += `M${kGutter + begin} ${y + 4}H${kGutter + i}V${y + height}H${kGutter + begin}Z`;
            }
            begin = -1;
        }
        this.add(parent, 'path', {class: 'poll', d: ticks});
        this.add(parent, 'path', {class: 'pollblock', d: blocks});
    }

    drawReports(parent) {
        const y = kLanes.reports.y + kLanes.reports.height / 2;
        let last = -Infinity;
        for (const report of this.story.reports) {
            const x = this.x(report.t);
            if (!this.isSeen(report.t, report.t) || (x - last < 1 && report.accepted)) {
                continue;
            }
            last = x;
            const title = `report at ${this.timeText(report.t)}: ${kModeNames[report.mode]}, ${report.accepted ? 'accepted' : 'refused'}`;
            if (report.accepted) {
                this.drawMark(parent, 'circle', {class: 'accepted', cx: x, cy: y, r: 5}, report.number, title);
            } else {
                this.drawMark(parent, 'path', {class: 'refused', d: `M${x - 6} ${y}l6 -6l6 6l-6 6zM${x - 2.5} ${y - 2.5}l5 5m0 -5l-5 5`}, report.number, title);
            }
        }
    }

    drawFlags(parent) {
        const lane = kLanes.orders;
        const height = 18;
        const seen = this.story.flags.filter(flag => this.isSeen(flag.t, flag.t));
        const poles = this.add(parent, 'g', {});
        let last = -Infinity;
        for (const flag of seen) {
            const x = Math.round(this.x(flag.t)) + 0.5;
            if (flag.type === 'kill' || x - last >= 2) {
                last = x;
                const end = kLanes.mode.y + (flag.type === 'kill' ? kLanes.mode.height : 7);
                this.drawMark(poles, 'line', {class: `pole ${flag.type}`, x1: x, x2: x, y1: lane.y + 4, y2: end}, flag.number, this.flagTitle(flag));
            }
        }
        // Where there is no room for all names, those of starts and stops are the first to be left out.
        const rank = {kill: 0, order: 1, restart: 2, stop: 3, start: 3};
        const rows = [[], [], []];
        for (const flag of [...seen].sort((one, other) => rank[one.type] - rank[other.type] || one.t - other.t).slice(0, 2000)) {
            const x = Math.round(this.x(flag.t)) + 0.5;
            const label = flag.label + (flag.failed ? ' \u2717' : '');
            const width = label.length * 6.8 + 14;
            // A flag at the right edge points back.
            const [left, right] = x + width > kGutter + this.width ? [x - width, x] : [x, x + width];
            const row = rows.findIndex(taken => taken.every(([from, to]) => right + 4 < from || left > to + 4));
            if (row < 0) {
                continue;
            }
            rows[row].push([left, right]);
            const y = lane.y + row * (height + 3);
            const group = this.drawMark(parent, 'g', {class: `flag ${flag.type}${flag.failed ? ' failed' : ''}`}, flag.number, this.flagTitle(flag));
            this.add(group, 'rect', {x: left, y, width, height, rx: 2});
            this.add(group, 'text', {x: left + 7, y: y + 13}, label);
        }
    }

    flagTitle(flag) {
        return `${this.timeText(flag.t)} ${oneLine(flag.title ?? flag.label)}`;
    }

    /// The whole session in small, with the part that is shown.
    drawWhole() {
        const lane = kLanes.whole;
        const svg = this.add(this.svg, 'g', {class: 'whole'});
        this.add(svg, 'text', {class: 'lane faint', x: kGutter - 12, y: lane.y + lane.height / 2 + 4, 'text-anchor': 'end'}, 'Whole session');
        const [least, most] = this.limits;
        const at = t => kGutter + (t - least) / (most - least) * this.width;
        this.add(svg, 'rect', {class: 'band off', x: kGutter, y: lane.y, width: this.width, height: lane.height, rx: 3});
        let last = -Infinity;
        for (const band of this.story.bands) {
            if (band.mode === 'none' || band.mode === 'off') {
                continue;
            }
            const left = at(band.from);
            const right = Math.max(at(band.to ?? this.until), left + 1);
            if (right > last + 0.5) {
                this.add(svg, 'rect', {class: `band ${band.mode}`, x: left, y: lane.y + 4, width: right - left, height: lane.height - 8});
                last = right;
            }
        }
        for (const flag of this.story.flags.filter(one => one.type === 'kill').slice(0, 2000)) {
            this.add(svg, 'line', {class: 'pole kill', x1: at(flag.t), x2: at(flag.t), y1: lane.y, y2: lane.y + lane.height});
        }
        const [from, to] = this.shown;
        this.add(svg, 'rect', {class: 'window', x: at(from), y: lane.y + 0.5, width: Math.max(at(to) - at(from), 4), height: lane.height - 1, rx: 3});
    }

    drawPointer() {
        if (!this.pointer) {
            return;
        }
        this.pointer.replaceChildren();
        const t = this.marked !== null && this.marked < this.model.size ? this.model.timeOf(this.marked) : this.pointed;
        if (t === null || !this.isSeen(t, t)) {
            return;
        }
        const x = this.x(t);
        this.add(this.pointer, 'line', {x1: x, x2: x, y1: kLanes.axis.height - 2, y2: kLanes.reports.y + kLanes.reports.height + 4});
        const text = this.timeText(t);
        const width = text.length * 6.8 + 10;
        const left = Math.min(Math.max(x - width / 2, kGutter), kGutter + this.width - width);
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
            if (event.button === 0 && x >= kGutter) {
                drag = {x, target: event.target, view: this.shown, moved: false, whole: y >= kLanes.whole.y - 4};
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
                } else {
                    const shift = (drag.x - x) / this.width * (drag.view[1] - drag.view[0]);
                    this.look(drag.view[0] + shift, drag.view[1] + shift);
                }
                return;
            }
            const inside = x >= kGutter && x <= kGutter + this.width;
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
                '=': () => this.zoom(0.6), '-': () => this.zoom(1 / 0.6), 0: () => this.look(...this.limits),
            }[event.key];
            if (action && !event.ctrlKey && !event.metaKey && !event.altKey) {
                event.preventDefault();
                action();
            }
        });
    }

    centreWhole(x) {
        const [least, most] = this.limits;
        const t = least + (x - kGutter) / this.width * (most - least);
        const span = this.shown[1] - this.shown[0];
        this.look(t - span / 2, t + span / 2);
    }

    /// What is shown, as a file of its own.
    asFile(style) {
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
