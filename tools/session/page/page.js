// ---- The page: joins picture, table and filters.

const $ = id => document.getElementById(id);
const kShownSessions = 100;

/// Several sessions are on one axis: as their clocks tell, or each from its start.
function readSessions(data) {
    const all = [data].flat();
    const models = all.map(one => new Model(one));
    const starts = models.map(model => model.wall(0));
    const isShifted = all.length > 1 && !starts.includes(null);
    return (isShifted ? all.map((one, i) => new Model(one, starts[i] - Math.min(...starts))) : models).map(model => ({model}));
}

const page = {
    sessions: readSessions(JSON.parse($('session').textContent)),
    active: 0,  // the session whose events are told
    get model() {
        return this.sessions[this.active].model;
    },
    get story() {
        return this.sessions[this.active].story;
    },
    isLive: typeof LiveConsole !== 'undefined',
    isOn: Object.fromEntries(kKinds.map(([kind]) => [kind, !['log', 'output', 'sleeps'].includes(kind)])),
    sessionsShown: kShownSessions,
};
const times = new Times(page.model);

function newElement(name, attributes, text) {
    const element = Object.assign(document.createElement(name), attributes);
    setText(element, text ?? '');
    return element;
}

const pictures = page.sessions.map(({model}, i) => {
    const host = i === 0 ? $('picture') : $('picture').cloneNode();
    if (page.sessions.length > 1) {
        host.id = ['picture', 'below'][i];
        const name = newElement('button', {type: 'button', title: 'Show its events', onclick: () => activate(i)}, foreign(model.title));
        $('measured').before(name, host);
        host.addEventListener('pointerdown', () => activate(i));
    }
    const isActive = () => page.active === i;
    const drawn = new Picture(host, times, {
        nearest: t => (isActive() ? nearestEvent(page.model, page.rows, t) : null),
        point(number) {
            if (isActive()) {
                table.point(number);
                showPointed(number);
            }
        },
        choose(number) {
            table.choose(number);
            $('table').scrollIntoView({block: 'nearest'});
        },
        looked() {
            for (const other of pictures.filter(one => one !== drawn)) {
                other.view = drawn.view;
                other.drawSoon();
            }
            if ($('zoomed').checked) {
                applyFilterSoon();
            }
            keepPlace();
        },
        measured() {
            const span = drawn.measured;
            const reports = span && page.sessions[i].story.reports.filter(report => report.t >= span[0] && report.t <= span[1]).length;
            $('measured').textContent = span === null ? ''
                : `${lengthText(span[1] - span[0])}: ${plural(model.pollsBetween(...span), 'poll')}, ${plural(reports, 'report')} (${times.range(...span)})`;
        },
    });
    return drawn;
});
/// The picture of the session whose events are told.
let picture = pictures[0];

/// Tells the events of another session.
function activate(i) {
    if (i !== page.active && i in page.sessions) {
        picture.mark(null);
        table.choose(null);
        page.active = i;
        picture = pictures[i];
        times.model = page.model;
        showKinds();
        showStory();
        applyFilter();
    }
}

const table = new Table($('table'), times, {
    point(number) {
        picture.mark(number);
        showPointed(number);
    },
    choose(number) {
        showDetail(number);
        picture.mark(number);
        if (number !== null) {
            picture.reveal(page.model.timeOf(number));
        }
        keepPlace();
    },
});

function showPointed(number) {
    const event = number === null ? null : page.model.event(number);
    setText($('pointed'), event === null ? '' : `${times.at(event.t)}  ${event.facts.what.slice(0, 110)}`);
}

function showDetail(number) {
    const host = $('detail');
    host.replaceChildren();
    if (number === null) {
        return;
    }
    const {t, body} = page.model.event(number);
    const list = document.createElement('dl');
    // Line ends stay, since these texts stand alone.
    const shown = text => String(text).split('\n').map(line => line.split('\t').map(signs).join('\t')).join('\n');
    const row = (name, text) => list.append(newElement('dt', {}, kIsolate + shown(name) + kIsolated), newElement('dd', {}, kIsolate + shown(text) + kIsolated));
    const wall = page.model.wall(t);
    const inZone = local => `${dateText(wall, local)} ${hourText(wall, local, true)}`;
    row('time', `${sinceText(t, true)}${wall === null ? '' : `, ${inZone(false)} GMT, ${inZone(true)} ${zoneName()}`}`);
    for (const [key, value] of Object.entries(body)) {
        if (Array.isArray(value)) {
            value.forEach(pair => row(pair?.[0], pair?.[1]));
        } else {
            row(key, value !== null && typeof value === 'object' ? JSON.stringify(value) : value);
        }
    }
    host.append(list);
}

// ---- Filters

function applyFilter() {
    const {model} = page;
    const wanted = $('text').value.toLowerCase();
    const level = $('level').value;
    const passes = model.facts.map(facts => page.isOn[facts.kind] && (wanted === '' || facts.searched.includes(wanted)) &&
        (level === '' || facts.level === null || String(facts.level) === level));
    const [from, to] = picture.shown;
    const runs = $('zoomed').checked ? model.runsBetween(model.firstAt(Math.max(from, 0)), model.firstAt(to)) : model.runs;
    page.rows = new Rows(model, runs, passes, $('gather').checked);
    table.show(model, page.rows);
    const {events} = page.rows;
    $('count').textContent = events === model.size ? plural(model.size, 'event') : `${events.toLocaleString('en')} of ${plural(model.size, 'event')}`;
}

function applyFilterSoon() {
    page.waits ??= requestAnimationFrame(() => {
        page.waits = null;
        applyFilter();
    });
}

function changed() {
    applyFilter();
    keepPlace();
}

/// Shows these kinds and no others.
function showKindsOf(wanted) {
    for (const [kind] of kKinds) {
        page.isOn[kind] = wanted.includes(kind);
        $('kinds').querySelector(`[data-kind=${kind}] input`).checked = page.isOn[kind];
    }
}

function showKinds() {
    const counts = Object.fromEntries(kKinds.map(([kind]) => [kind, 0]));
    for (const run of page.model.runs) {
        for (const id of run.ids) {
            counts[page.model.facts[id].kind] += run.count;
        }
    }
    const host = $('kinds');
    for (const [kind, name, , help] of kKinds) {
        let label = host.querySelector(`[data-kind=${kind}]`);
        if (!label) {
            label = newElement('label', {title: help});
            label.dataset.kind = kind;
            const box = newElement('input', {type: 'checkbox', checked: page.isOn[kind], onchange() {
                page.isOn[kind] = box.checked;
                changed();
            }});
            label.append(box, `${name} `, newElement('b'));
            host.append(label);
        }
        label.lastChild.textContent = counts[kind].toLocaleString('en');
    }
    const select = $('level');
    const known = [...select.options].map(option => option.value);
    for (const level of [...new Set(page.model.facts.map(facts => facts.level))].filter(one => one !== null && !known.includes(String(one))).sort((a, b) => a - b)) {
        select.add(new Option(`${level} ${kLevels[level] ?? ''}`, String(level)));
    }
    const errors = $('errors');
    errors.hidden = counts.errors === 0;
    errors.textContent = plural(counts.errors, 'error');
}

$('level').addEventListener('change', () => {
    const box = document.querySelector('[data-kind=log] input');
    if ($('level').value !== '' && !box.checked) {
        box.click();  // A level asks for log lines.
    } else {
        changed();
    }
});
$('text').addEventListener('input', changed);
$('gather').addEventListener('change', changed);
$('zoomed').addEventListener('change', changed);
$('errors').addEventListener('click', () => {
    showKindsOf(['errors']);
    changed();
    $('table').scrollIntoView({block: 'nearest'});
});
$('all-kinds').addEventListener('click', () => {
    showKindsOf(kKinds.map(([kind]) => kind));
    changed();
});
$('zone').addEventListener('change', showTimesAnew);
$('exactly').addEventListener('change', showTimesAnew);

function showTimesAnew() {
    times.local = $('zone').querySelector(':checked').value === 'local';
    times.exactly = $('exactly').checked;
    document.body.classList.toggle('exact', times.exactly);
    showStory();
    table.draw();
    showDetail(table.chosen);
    keepPlace();
}

$('zoom-in').addEventListener('click', () => picture.zoom(0.5));
$('zoom-out').addEventListener('click', () => picture.zoom(2));
$('zoom-all').addEventListener('click', () => picture.look(...picture.limits));
$('save').addEventListener('click', () => {
    const link = newElement('a', {href: URL.createObjectURL(new Blob([pictureFile()], {type: 'image/svg+xml'})), download: `${page.model.title || 'session'}.svg`});
    link.click();
    URL.revokeObjectURL(link.href);
});

/// The picture as a file, with the part of the page's style that it needs.
function pictureFile() {
    const style = document.querySelector('style').textContent;
    return picture.asFile(style.slice(0, style.indexOf('/* end of the picture */')).trim());
}

// ---- Keys, and a link to the view

/// The next event that went wrong, or the one before.
function goToError(step) {
    const {model} = page;
    const bad = new Rows(model, model.runs, model.facts.map(facts => facts.bad), false);
    const rows = Array.from({length: bad.size}, (_, row) => bad.at(row).number);
    const from = table.chosen ?? (step > 0 ? -1 : Infinity);
    const number = step > 0 ? rows.find(one => one > from) : rows.findLast(one => one < from);
    if (number !== undefined) {
        table.choose(number);
    }
}

addEventListener('keydown', event => {
    if (event.target.closest('input, select, textarea, dialog') || event.ctrlKey || event.altKey || event.metaKey) {
        return;
    }
    const action = {e: () => goToError(1), E: () => goToError(-1), '?': () => $('keys').showModal(), '/': () => $('text').focus()}[event.key];
    if (action) {
        event.preventDefault();
        action();
    }
});
$('show-keys').addEventListener('click', () => $('keys').showModal());

/// The view as the part of an address behind its "#".
function placeText() {
    const on = kKinds.map(([kind]) => kind).filter(kind => page.isOn[kind]);
    const values = {
        t: table.chosen === null ? null : page.model.timeOf(table.chosen) / 1000,
        event: table.chosen,
        view: picture.view?.map(t => Math.round(t)).join(),
        kinds: on.join(),
        file: page.active || null,
        level: $('level').value,
        text: $('text').value,
        zone: times.local ? 'local' : null,
        ms: times.exactly ? 1 : null,
        single: $('gather').checked ? null : 1,
        zoomed: $('zoomed').checked ? 1 : null,
    };
    return `#${new URLSearchParams(Object.entries(values).filter(([, value]) => value !== null && value !== undefined && value !== ''))}`;
}

/// Keeps the address true once it is one that leads to a moment.
function keepPlace() {
    if (page.hasPlace) {
        history.replaceState(null, '', placeText());
    }
}

/// Shows what the address says. All of it may be left out, and `t` alone is enough.
function goToPlace() {
    const place = new URLSearchParams(location.hash.slice(1));
    if (!place.has('t') && !place.has('kinds')) {
        return;
    }
    page.hasPlace = false;
    activate(Number(place.get('file') ?? 0));
    const {model} = page;
    if (place.has('kinds')) {
        showKindsOf(place.get('kinds').split(','));
    }
    for (const id of ['level', 'text']) {
        $(id).value = place.get(id) ?? '';
    }
    $('gather').checked = !place.has('single');
    $('zoomed').checked = place.has('zoomed');
    $('exactly').checked = place.has('ms');
    $('zone').querySelector(`[value=${place.get('zone') === 'local' ? 'local' : 'gmt'}]`).checked = true;
    showTimesAnew();
    const view = (place.get('view') ?? '').split(',').map(Number);
    if (view.length === 2 && view[0] < view[1]) {
        picture.look(...view);
    }
    applyFilter();
    const t = Number(place.get('t')) * 1000;
    if (place.has('t') && model.size > 0 && Number.isFinite(t)) {
        const number = Number(place.get('event') ?? NaN);
        const isThere = Number.isInteger(number) && number >= 0 && number < model.size && model.timeOf(number) === t;
        table.choose(isThere ? number : nearestEvent(model, page.rows, t) ?? Math.min(model.firstAt(t), model.size - 1));
    }
    page.hasPlace = true;
}

addEventListener('hashchange', goToPlace);
$('copy').addEventListener('click', async () => {
    page.hasPlace = true;
    keepPlace();
    const copied = await navigator.clipboard?.writeText(location.href).then(() => true, () => false);
    $('copied').textContent = copied ? 'The link is copied.' : 'The link stands in the address bar.';
});

// ---- Announcements

function summaryText() {
    const {story, model} = page;
    if (model.size === 0) {
        return 'Nothing has happened yet.';
    }
    const refused = story.reports.filter(report => !report.accepted).length;
    const kills = story.flags.filter(flag => flag.type === 'kill').length;
    const failures = story.flags.filter(flag => flag.type === 'fail').length;
    const parts = [
        story.sessions.length === 0 ? 'RSM did not run' : `RSM ran ${countText(story.sessions.length)}`,
        plural(model.pollCount, 'poll'),
        story.reports.length === 0 ? 'no report' : `${plural(story.reports.length, 'report')}${refused === 0 ? ', all accepted' : `, ${refused.toLocaleString('en')} refused`}`,
        story.scripts.length > 0 && plural(story.scripts.length, 'script run'),
        kills > 0 && `the agent was killed ${countText(kills)}`,
        failures > 0 && `${plural(failures, 'start')} failed`,
        !page.isLive && `${lengthText(model.end)} in all`,
    ];
    return `${parts.filter(Boolean).join(' \u00b7 ')}.`;
}

function sessionText(session) {
    return [
        session.causes.map(cause => cause.text).filter(Boolean).join(', then '),
        plural(session.polls, 'poll'),
        session.activity > 0 && `remote activity for ${lengthText(session.activity)}`,
        plural(session.accepted, 'report accepted', 'reports accepted'),
        session.refused > 0 && `${session.refused} refused`,
        session.to !== null ? `over: ${session.end}` : page.isOver ? 'did not end before the session did' : null,
    ].filter(Boolean).join(' \u00b7 ');
}

/// The latest times that RSM ran; those that are shown already stay as they are, with the focus that they may have.
function showSessions() {
    const {story, model} = page;
    const list = $('sessions');
    const left = Math.max(story.sessions.length - page.sessionsShown, 0);
    const shown = story.sessions.slice(left);
    shown.forEach((session, i) => {
        const length = session.to === null && !page.isOver ? 'goes on' : lengthText((session.to ?? model.end) - session.from);
        const texts = [times.range(session.from, session.to ?? (page.isOver ? model.end : null)) + (session.to === null && !page.isOver ? 'now' : ''), length, sessionText(session)];
        const item = list.children[i] ?? list.appendChild(newElement('li'));
        const key = JSON.stringify(texts) + session.from;
        if (item.dataset.key === key) {
            return;
        }
        item.dataset.key = key;
        if (item.children.length === 0) {
            item.append(newElement('button', {type: 'button', title: 'Show this in the picture'}), newElement('span'), newElement('span'));
        }
        texts.forEach((text, at) => setText(item.children[at], text));
        item.firstChild.onclick = () => {
            const to = session.to ?? picture.until;
            const margin = Math.max((to - session.from) * 0.06, 1000);
            picture.look(session.from - margin, to + margin);
        };
    });
    while (list.children.length > shown.length) {
        list.lastChild.remove();
    }
    $('sessions-left').hidden = left === 0;
    $('sessions-left').textContent = `The ${left.toLocaleString('en')} before these are left out: show them`;
    $('sessions-card').hidden = story.sessions.length === 0;
}

$('sessions-left').addEventListener('click', () => {
    page.sessionsShown = Infinity;
    showSessions();
    $('sessions').querySelector('button').focus();
});

function showStory() {
    const {model, story} = page;
    const reach = Math.max(...page.sessions.map(one => one.model.end));
    page.sessions.forEach((one, i) => {
        pictures[i].reach = page.isLive ? 0 : reach;
        pictures[i].show(one.model, one.story);
    });
    document.title = `${signs(model.title)} \u2013 RSM session`;
    setText($('title'), foreign(model.title));
    const dropped = model.dropped === 0 ? '' : ` The first ${plural(model.dropped, 'event')}, until ${times.at(model.begin)}, are no longer kept.`;
    setText($('note'), foreign(model.note) + dropped);
    $('local').textContent = zoneName();
    $('summary').textContent = summaryText();
    showSessions();
    const source = model.texts ? `Tunnel and file transfer as the audit texts of ${foreign(model.texts.source)} tell them.`
        : model.isLog ? 'Without the configuration that the device has (--config), a log does not tell tunnel and file transfer.'
        : 'No configuration was found: tunnel and file transfer are told by the words of the audit messages.';
    setText($('foot'), `${source}${model.clockIsGuessed ? ' The wall clock is that of the reports.' : ''}`);
}

/// Everything anew; for a live session after more events.
function refresh() {
    page.isOver = !page.isLive || Boolean(page.console?.isOver);
    page.sessions.forEach(one => {
        one.story = new Story(one.model);
    });
    showKinds();
    showStory();
    applyFilter();
}

const kLegend = [
    ['<rect class="band grace" y="1" width="18" height="12" rx="3"/>', 'grace period'],
    ['<rect class="band activity" y="1" width="18" height="12" rx="3"/><rect class="texture" y="1" width="18" height="12" rx="3" fill="url(#stripes)"/>', 'remote activity'],
    ['<rect class="band waiting" y="1" width="18" height="12" rx="3"/><rect class="texture" y="1" width="18" height="12" rx="3" fill="url(#dots)"/>', 'waiting for a schedule'],
    ['<rect class="band off" y="1" width="18" height="12" rx="3"/>', 'off'],
    ['<rect class="band none" x="0.5" y="1.5" width="17" height="11" rx="3"/>', page.sessions.some(one => one.model.isLog) ? 'not told' : 'no agent runs'],
    ['<path class="poll" d="M4.5 1V13M9.5 1V13M14.5 1V13"/>', 'poll'],
    ['<circle class="accepted" cx="9" cy="7" r="5"/>', 'report accepted'],
    ['<path class="refused" d="M3 7l6 -6l6 6l-6 6zM6.500 4.500l5 5m0 -5l-5 5"/>', 'report refused'],
    ['<path class="script" d="M5 2l9 5l-9 5z"/>', 'modality script'],
    ['<path class="error" d="M5 3l8 8m0 -8l-8 8"/>', 'error line'],
];
$('legend').innerHTML = kLegend.map(([shape, text]) => `<li><svg class="picture" aria-hidden="true">${shape}</svg>${text}</li>`).join('');

table.follow = page.isLive;
refresh();
goToPlace();
if (page.isLive) {
    page.console = new LiveConsole(page.model, picture, {refresh});
}
