// ---- The events as a table. Only the rows in sight exist; which event a row shows is computed.

const kHeadHeight = 27;
const kTallest = 8000000;   // pixels a browser surely scrolls through
const kPrintedRows = 1000;

/// The events of some runs that a filter lets through, as rows.
class Rows {
    /// `passes[id]` tells of a body; `gather`: polls in a row are one row.
    constructor(model, runs, passes, gather) {
        this.model = model;
        this.parts = [];  // {row, rows, run, at} or {row, rows: 1, polls: {first, last, n}}
        this.size = 0;
        this.events = 0;
        for (const run of runs) {
            const at = [];
            run.ids.forEach((id, i) => {
                if (passes[id]) {
                    at.push(i);
                }
            });
            if (at.length === 0) {
                continue;
            }
            this.events += at.length * run.count;
            if (gather && run.count > 1 && at.every(i => this.isPoll(run, i))) {
                this.addPolls(run.first + at[0], run.first + (run.count - 1) * run.ids.length + at[at.length - 1], at.length * run.count);
            } else if (gather && run.count === 1) {
                this.addSingle(run, at);
            } else {
                this.addPart({run, at, rows: at.length * run.count});
            }
        }
    }

    isPoll(run, i) {
        return this.model.facts[run.ids[i]].kind === 'polls';
    }

    addSingle(run, at) {
        let others = [];
        const flush = () => {
            if (others.length > 0) {
                this.addPart({run, at: others, rows: others.length});
                others = [];
            }
        };
        for (const i of at) {
            if (this.isPoll(run, i)) {
                flush();
                this.addPolls(run.first + i, run.first + i, 1);
            } else {
                others.push(i);
            }
        }
        flush();
    }

    addPolls(first, last, n) {
        const before = this.parts[this.parts.length - 1];
        if (before && before.polls) {
            before.polls.last = last;
            before.polls.n += n;
        } else {
            this.addPart({polls: {first, last, n}, rows: 1});
        }
    }

    addPart(part) {
        this.parts.push({row: this.size, ...part});
        this.size += part.rows;
    }

    /// {number} or {number, polls} of a row.
    at(row) {
        const part = this.parts[firstWhere(this.parts.length, i => this.parts[i].row > row) - 1];
        if (part.polls) {
            return {number: part.polls.first, polls: part.polls.n > 1 ? part.polls : null};
        }
        const offset = row - part.row;
        const round = Math.floor(offset / part.at.length);
        return {number: part.run.first + round * part.run.ids.length + part.at[offset % part.at.length], polls: null};
    }

    /// The row that shows the event, or the first one behind it.
    rowOf(number) {
        return Math.min(firstWhere(this.size, row => {
            const shown = this.at(row);
            return (shown.polls ? shown.polls.last : shown.number) >= number;
        }), Math.max(this.size - 1, 0));
    }
}

/// The event of `rows` that is nearest to `t`; null when there is none.
function nearestEvent(model, rows, t) {
    const number = model.firstAt(Math.max(t, 0));
    let best = null;
    let least = Infinity;
    for (const row of [rows.rowOf(number) - 1, rows.rowOf(number)].filter(one => one >= 0 && one < rows.size)) {
        const shown = rows.at(row);
        const from = model.timeOf(shown.number);
        const to = shown.polls ? model.timeOf(shown.polls.last) : from;
        const distance = Math.max(from - t, t - to, 0);
        if (distance < least) {
            least = distance;
            best = shown.polls && number >= shown.polls.first && number <= shown.polls.last ? number : t > to && shown.polls ? shown.polls.last : shown.number;
        }
    }
    return best;
}

class Table {
    /// `hooks.point(number or null)`, `hooks.choose(number)`; `times` tells times.
    constructor(host, times, hooks) {
        this.hooks = hooks;
        this.times = times;
        this.rows = null;
        this.chosen = null;   // event number
        this.pointedRow = -1;
        this.top = 0;         // first row in sight, with a fraction
        const heads = ['Time', 'Who', 'Kind', 'What'].map(name => `<span class="${name.toLowerCase()}" role="columnheader">${name}</span>`).join('');
        host.innerHTML = '<div class="scroll" tabindex="0" role="grid" aria-label="Events; arrow keys choose one"><div class="head row" role="row">' +
            `${heads}</div><div class="body" role="rowgroup"></div><div class="spacer" role="presentation"></div></div><p class="left soft"></p>`;
        this.scroller = host.querySelector('.scroll');
        this.spacer = host.querySelector('.spacer');
        this.body = host.querySelector('.body');
        this.left = host.querySelector('.left');
        this.listen();
    }

    show(model, rows) {
        const atEnd = this.rows === null || this.scroller.scrollTop + this.scroller.clientHeight >= this.scroller.scrollHeight - 2;
        this.model = model;
        this.rows = rows;
        this.scroller.setAttribute('aria-rowcount', rows.size + 1);
        this.fit();
        this.goTo(this.follow && atEnd ? rows.size : this.top);
    }

    fit() {
        // A row is two lines where the window is narrow.
        const rowHeight = this.rowHeight = parseFloat(getComputedStyle(this.scroller).getPropertyValue('--row'));
        this.scroller.style.height = `${kHeadHeight + Math.min(Math.max(this.rows.size, 3), 16) * rowHeight}px`;
        this.width = this.scroller.clientWidth;
        this.spacer.style.height = `${Math.min(this.rows.size * rowHeight, kTallest)}px`;
    }

    get inSight() {
        return (this.scroller.clientHeight - kHeadHeight) / this.rowHeight;
    }

    get lastTop() {
        return Math.max(this.rows.size - this.inSight, 0);
    }

    /// How many pixels of scrolling a row is: less than its height when there are very many.
    get scale() {
        const path = this.spacer.offsetHeight + kHeadHeight - this.scroller.clientHeight;
        return this.lastTop > 0 ? path / this.lastTop : 1;
    }

    goTo(top) {
        this.top = Math.min(Math.max(top, 0), this.lastTop);
        this.expected = Math.round(this.top * this.scale);
        this.scroller.scrollTop = this.expected;
        this.draw();
    }

    reveal(row) {
        if (row < Math.ceil(this.top) || row > this.top + this.inSight - 1) {
            this.goTo(row - this.inSight / 2);
        }
    }

    choose(number) {
        this.chosen = number;
        if (number !== null && this.rows.size > 0) {
            this.reveal(this.rows.rowOf(number));
        }
        this.draw();
        this.hooks.choose(number);
    }

    /// Shows which row is meant, without going there.
    point(number) {
        this.pointedRow = number === null || this.rows.size === 0 ? -1 : this.rows.rowOf(number);
        for (const row of this.body.children) {
            row.classList.toggle('pointed', Number(row.dataset.row) === this.pointedRow);
        }
    }

    draw() {
        const first = Math.floor(this.top);
        const last = Math.min(first + Math.ceil(this.inSight) + 1, this.rows.size);
        const shown = [];
        for (let row = first; row < last; ++row) {
            shown.push(this.rowElement(row));
        }
        if (this.rows.size === 0) {
            const none = this.element('div', 'none', 'row');
            none.append(this.element('span', '', 'gridcell', 'No event passes the filter.'));
            shown.push(none);
        }
        this.body.replaceChildren(...shown);
        this.body.style.transform = `translateY(${this.scroller.scrollTop - (this.top - first) * this.rowHeight}px)`;
        const chosen = this.body.querySelector('.chosen');
        chosen ? this.scroller.setAttribute('aria-activedescendant', chosen.id) : this.scroller.removeAttribute('aria-activedescendant');
    }

    element(name, className, role, text) {
        const element = document.createElement(name);
        element.className = className;
        element.setAttribute('role', role);
        setText(element, text ?? '');
        return element;
    }

    rowElement(row) {
        const {number, polls} = this.rows.at(row);
        const event = this.model.event(number);
        const {facts, body} = event;
        const refused = body.event === 'update-asset' && body.result !== 0;
        const element = this.element('div', `row ${facts.kind}${refused ? ' refused' : ''}${facts.bad ? ' bad' : ''}`, 'row');
        const isChosen = this.chosen !== null && (number === this.chosen || (polls !== null && this.chosen >= polls.first && this.chosen <= polls.last));
        element.setAttribute('aria-rowindex', row + 2);
        element.setAttribute('aria-selected', isChosen);
        element.id = `row-${row}`;
        element.dataset.row = row;
        element.dataset.number = number;
        element.classList.toggle('chosen', isChosen);
        element.classList.toggle('pointed', row === this.pointedRow);
        const [time, small] = this.model.clock.length === 0 ? [this.times.since(event.t), ''] : [this.times.at(event.t), this.times.since(event.t)];
        const cells = [['time', time], ['who', foreign(body.thread)], ['kind', facts.level === null ? kKinds.find(kind => kind[0] === facts.kind)[2] : `Log ${facts.level}`],
            ['what', polls ? this.pollsText(polls, event.t) : facts.what]].map(([name, text]) => this.element('span', name, 'gridcell', text));
        if (small !== '') {
            cells[0].append(' ', newElement('i', {}, small));
        }
        cells[3].title = cells[3].textContent;
        element.append(...cells);
        return element;
    }

    pollsText(polls, from) {
        const to = this.model.timeOf(polls.last);
        const step = (to - from) / (polls.n - 1);
        return `${polls.n.toLocaleString('en')} polls, one every ${step < 100000 ? `${Number((step / 1000).toFixed(1))} s` : lengthText(step)}, until ${this.times.at(to)}`;
    }

    numberUnder(event) {
        const row = event.target.closest?.('.body .row');
        return row ? Number(row.dataset.number) : null;
    }

    listen() {
        const scroller = this.scroller;
        scroller.addEventListener('scroll', () => {
            if (this.rows && scroller.scrollTop !== this.expected) {
                this.expected = scroller.scrollTop;
                this.top = Math.min(scroller.scrollTop / this.scale, this.lastTop);
                this.draw();
            }
        });
        // Where a pixel is many rows, the wheel still moves by rows.
        scroller.addEventListener('wheel', event => {
            if (this.scale < this.rowHeight * 0.9 && !event.ctrlKey) {
                event.preventDefault();
                this.goTo(this.top + event.deltaY / this.rowHeight);
            }
        }, {passive: false});
        this.body.addEventListener('pointermove', event => this.hooks.point(this.numberUnder(event)));
        scroller.addEventListener('pointerleave', () => this.hooks.point(null));
        this.body.addEventListener('click', event => {
            const number = this.numberUnder(event);
            if (number !== null) {
                this.choose(number);
            }
        });
        scroller.addEventListener('keydown', event => {
            const page = Math.max(Math.floor(this.inSight) - 1, 1);
            const step = {ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity}[event.key];
            if (event.key === 'Escape') {
                this.choose(null);
            }
            if (step === undefined || this.rows.size === 0 || event.ctrlKey || event.altKey || event.metaKey) {
                return;
            }
            event.preventDefault();
            const now = this.chosen === null ? (step > 0 ? Math.ceil(this.top) - 1 : Math.ceil(this.top) + 1) : this.rows.rowOf(this.chosen);
            this.choose(this.rows.at(Math.min(Math.max(now + step, 0), this.rows.size - 1)).number);
        });
        new ResizeObserver(() => this.rows && scroller.clientWidth !== this.width && (this.fit(), this.draw())).observe(scroller.parentNode);
        // Paper has no scroll bar.
        addEventListener('beforeprint', () => {
            const printed = Math.min(this.rows.size, kPrintedRows);
            this.body.replaceChildren(...Array.from({length: printed}, (_, row) => this.rowElement(row)));
            this.body.style.transform = '';
            this.left.textContent = printed === this.rows.size ? '' :
                `The first ${printed.toLocaleString('en')} of ${plural(this.rows.size, 'line')} are printed. Filters choose others.`;
        });
        addEventListener('afterprint', () => {
            this.left.textContent = '';
            this.draw();
        });
    }
}
