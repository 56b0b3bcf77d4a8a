// ---- The page: joins picture, table and filters.

const $ = id => document.getElementById(id);

const page = {
    model: new Model(JSON.parse($('session').textContent)),
    story: null,
    local: false,
    isOn: Object.fromEntries(kKinds.map(([kind]) => [kind, !['log', 'output', 'sleeps'].includes(kind)])),
    level: '',
    text: '',
    gather: true,
};

function timeTexts(t) {
    const wall = page.model.wall(t);
    const since = `+${(t / 1000).toFixed(3).replace(/\.?0+$/, '')} s`;
    return wall === null ? [since, ''] : [`${dateText(wall, page.local).slice(5)} ${hourText(wall, page.local)}`, since];
}

const picture = new Picture($('picture'), {
    nearest: t => nearestEvent(page.model, page.rows, t),
    point(number) {
        table.point(number);
        showPointed(number);
    },
    choose(number) {
        table.choose(number);
        $('table').scrollIntoView({block: 'nearest'});
    },
});

const table = new Table($('table'), {
    time: timeTexts,
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
    },
});

function showPointed(number) {
    if (number === null) {
        $('pointed').textContent = '';
        return;
    }
    const event = page.model.event(number);
    $('pointed').textContent = `${timeTexts(event.t)[0]}  ${event.facts.what.slice(0, 110)}`;
}

function showDetail(number) {
    const host = $('detail');
    host.replaceChildren();
    if (number === null) {
        return;
    }
    const {t, body} = page.model.event(number);
    const list = document.createElement('dl');
    const row = (name, value) => {
        const term = document.createElement('dt');
        const text = document.createElement('dd');
        term.textContent = name;
        text.textContent = value;
        list.append(term, text);
    };
    const wall = page.model.wall(t);
    row('time', `${timeTexts(t)[1] || timeTexts(t)[0]}${wall === null ? '' : `, ${dateText(wall, false)} ${hourText(wall, false)} GMT, ${dateText(wall, true)} ${hourText(wall, true)} local`}`);
    for (const [key, value] of Object.entries(body)) {
        if (Array.isArray(value)) {
            value.forEach(pair => row(String(pair?.[0]), String(pair?.[1])));
        } else {
            row(key, value === null ? 'null' : typeof value === 'object' ? JSON.stringify(value) : String(value));
        }
    }
    host.append(list);
}

// ---- Filters

function applyFilter() {
    const {model} = page;
    const wanted = page.text.toLowerCase();
    const passes = model.bodies.map((body, id) => {
        const facts = model.facts[id];
        return page.isOn[facts.kind] && (page.level === '' || facts.level === null || String(facts.level) === page.level) &&
            (wanted === '' || facts.what.toLowerCase().includes(wanted) || facts.searched.includes(wanted));
    });
    const rows = new Rows(model, passes, page.gather);
    page.rows = rows;
    table.show(model, rows);
    $('count').textContent = rows.events === model.size ? plural(model.size, 'event')
        : `${rows.events.toLocaleString('en')} of ${plural(model.size, 'event')}`;
}

function countKinds() {
    const counts = Object.fromEntries(kKinds.map(([kind]) => [kind, 0]));
    for (const run of page.model.runs) {
        for (const id of run.ids) {
            counts[page.model.facts[id].kind] += run.count;
        }
    }
    return counts;
}

function showKinds() {
    const counts = countKinds();
    const host = $('kinds');
    for (const [kind, name, , help] of kKinds) {
        let label = host.querySelector(`[data-kind=${kind}]`);
        if (!label) {
            label = document.createElement('label');
            label.dataset.kind = kind;
            label.title = help;
            const box = document.createElement('input');
            box.type = 'checkbox';
            box.checked = page.isOn[kind];
            box.addEventListener('change', () => {
                page.isOn[kind] = box.checked;
                applyFilter();
            });
            const number = document.createElement('b');
            label.append(box, `${name} `, number);
            host.append(label);
        }
        label.lastChild.textContent = counts[kind].toLocaleString('en');
    }
    const levels = new Set(page.model.facts.map(facts => facts.level).filter(level => level !== null));
    const select = $('level');
    for (const level of [...levels].sort((a, b) => a - b)) {
        if (![...select.options].some(option => option.value === String(level))) {
            select.add(new Option(`${level} ${kLevels[level] ?? ''}`, String(level)));
        }
    }
}

$('level').addEventListener('change', event => {
    page.level = event.target.value;
    const box = document.querySelector('[data-kind=log] input');
    if (page.level !== '' && !box.checked) {
        box.click();  // A level asks for log lines.
    } else {
        applyFilter();
    }
});
$('text').addEventListener('input', event => {
    page.text = event.target.value;
    applyFilter();
});
$('gather').addEventListener('change', event => {
    page.gather = event.target.checked;
    applyFilter();
});
$('zone').addEventListener('change', event => {
    page.local = event.target.value === 'local';
    picture.local = page.local;
    showStory();
    table.draw();
    if (table.chosen !== null) {
        showDetail(table.chosen);
    }
});
$('zoom-in').addEventListener('click', () => picture.zoom(0.5));
$('zoom-out').addEventListener('click', () => picture.zoom(2));
$('zoom-all').addEventListener('click', () => picture.look(...picture.limits));
$('save').addEventListener('click', () => {
    const link = document.createElement('a');
    link.href = URL.createObjectURL(new Blob([pictureFile()], {type: 'image/svg+xml'}));
    link.download = `${page.model.title || 'session'}.svg`;
    link.click();
    URL.revokeObjectURL(link.href);
});

/// The picture as a file, with the part of the page's style that it needs.
function pictureFile() {
    const style = document.querySelector('style').textContent;
    return picture.asFile(style.slice(0, style.indexOf('/* end of the picture */')).trim());
}

// ---- What is told

function summaryText() {
    const {story, model} = page;
    if (model.size === 0) {
        return 'Nothing has happened yet.';
    }
    const refused = story.reports.filter(report => !report.accepted).length;
    const kills = story.flags.filter(flag => flag.type === 'kill' && flag.label === 'killed').length;
    const parts = [
        story.sessions.length === 0 ? 'RSM did not run' : `RSM ran ${times(story.sessions.length)}`,
        plural(story.pollCount, 'poll'),
        story.reports.length === 0 ? 'no report' : `${plural(story.reports.length, 'report')}${refused === 0 ? ', all accepted' : `, ${refused.toLocaleString('en')} refused`}`,
    ];
    if (story.scripts.length > 0) {
        parts.push(plural(story.scripts.length, 'script run'));
    }
    if (kills > 0) {
        parts.push(`the agent was killed ${times(kills)}`);
    }
    if (!page.isLive) {
        parts.push(`${lengthText(model.end)} in all`);
    }
    return `${parts.join(' \u00b7 ')}.`;
}

function showStory() {
    const {model, story} = page;
    picture.show(model, story);
    document.title = `${model.title} \u2013 RSM session`;
    $('title').textContent = model.title;
    $('note').textContent = model.note;
    $('summary').textContent = summaryText();
    const list = $('sessions');
    list.replaceChildren(...story.sessions.slice(-500).map(session => {
        const item = document.createElement('li');
        const when = document.createElement('button');
        when.type = 'button';
        const end = session.to === null ? 'now' : timeTexts(session.to)[0].split(' ').pop();
        when.textContent = `${timeTexts(session.from)[0]} \u2013 ${end}`;
        when.title = 'Show this in the picture';
        when.addEventListener('click', () => {
            const to = session.to ?? picture.until;
            const margin = Math.max((to - session.from) * 0.06, 1000);
            picture.look(session.from - margin, to + margin);
        });
        const length = document.createElement('span');
        length.textContent = session.to === null ? 'goes on' : lengthText(session.to - session.from);
        const what = document.createElement('span');
        const facts = [session.causes.map(cause => oneLine(cause.text)).join(', then '), plural(session.polls, 'poll')];
        if (session.activity > 0) {
            facts.push(`remote activity for ${lengthText(session.activity)}`);
        }
        facts.push(plural(session.accepted, 'report accepted', 'reports accepted'));
        if (session.refused > 0) {
            facts.push(`${session.refused} refused`);
        }
        if (session.to !== null) {
            facts.push(`over: ${session.end}`);
        }
        what.textContent = facts.join(' \u00b7 ');
        item.append(when, length, what);
        return item;
    }));
    $('sessions-card').hidden = story.sessions.length === 0;
    const source = model.texts ? `Tunnel and file transfer as the audit texts of ${model.texts.source} tell them.`
        : 'No configuration was found: tunnel and file transfer are told by the words of the audit messages.';
    $('foot').textContent = `${source}${model.clockIsGuessed ? ' The wall clock is that of the reports.' : ''}`;
}

/// Everything anew; for a live session after more events.
function refresh() {
    page.story = new Story(page.model);
    showKinds();
    showStory();
    applyFilter();
}

const kLegend = [
    ['<rect class="band grace" y="1" width="18" height="12" rx="3"/>', 'grace period'],
    ['<rect class="band activity" y="1" width="18" height="12" rx="3"/><rect class="texture" y="1" width="18" height="12" rx="3" fill="url(#stripes)"/>', 'remote activity'],
    ['<rect class="band waiting" y="1" width="18" height="12" rx="3"/><rect class="texture" y="1" width="18" height="12" rx="3" fill="url(#dots)"/>', 'waiting for a schedule'],
    ['<rect class="band off" y="1" width="18" height="12" rx="3"/>', 'off'],
    ['<rect class="band none" x="0.5" y="1.5" width="17" height="11" rx="3"/>', 'no agent runs'],
    ['<path class="poll" d="M4.5 1V13M9.5 1V13M14.5 1V13"/>', 'poll'],
    ['<circle class="accepted" cx="9" cy="7" r="5"/>', 'report accepted'],
    ['<path class="refused" d="M3 7l6 -6l6 6l-6 6zM6.500 4.500l5 5m0 -5l-5 5"/>', 'report refused'],
    ['<path class="script" d="M5 2l9 5l-9 5z"/>', 'modality script'],
];
$('legend').innerHTML = kLegend.map(([shape, text]) => `<li><svg class="picture" aria-hidden="true">${shape}</svg>${text}</li>`).join('');

page.isLive = typeof LiveConsole !== 'undefined';
table.follow = page.isLive;
refresh();
if (page.isLive) {
    page.console = new LiveConsole(page.model, picture, {refresh});
}
