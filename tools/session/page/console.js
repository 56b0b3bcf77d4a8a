// ---- The live page: follows the session, and does what its forms say.

class LiveConsole {
    /// `hooks.refresh()` is called when there is something new to show.
    constructor(model, picture, hooks) {
        this.model = model;
        this.picture = picture;
        this.hooks = hooks;
        this.shift = null;   // session time minus this page's clock
        this.changed = false;
        this.listen();
        this.follow();
        this.offerTexts();
        setInterval(() => this.tick(), 1000);
    }

    follow() {
        const source = new EventSource(`/events?after=${this.model.dropped + this.model.size}`);
        source.onopen = () => this.tell('live', 'live');
        source.onerror = () => this.tell('not connected', 'lost');
        source.onmessage = message => {
            // After a lost connection the browser asks from the last number on; before the first one it asks anew.
            const ahead = Number(message.lastEventId) - this.model.dropped - this.model.size;
            if (ahead !== 0) {
                if (ahead > 0) {
                    location.reload();  // what is between is no longer kept
                }
                return;
            }
            const event = JSON.parse(message.data);
            this.setTime(event.t * 1000);
            this.model.addLive(event);
            this.refreshSoon();
        };
        source.addEventListener('marks', message => {
            this.model.setMarks(JSON.parse(message.data));
            this.refreshSoon();
        });
        source.addEventListener('now', message => {
            const now = Number(message.data) * 1000;
            if (now < this.model.end - 1000) {
                location.reload();  // another session is served at this place now
            }
            this.setTime(now);
        });
        source.addEventListener('over', () => {
            source.close();
            this.isOver = true;
            this.tell('the session is over', 'lost');
            document.querySelectorAll('.console button').forEach(button => {
                button.disabled = true;
            });
            this.hooks.refresh();
        });
    }

    tell(text, state) {
        $('link').textContent = text;
        $('link').dataset.state = state;
    }

    setTime(t) {
        this.shift = Math.max(t - performance.now(), this.shift ?? -Infinity);
    }

    refreshSoon() {
        if (!this.changed) {
            this.changed = true;
            setTimeout(() => {
                this.changed = false;
                this.tick();
                this.hooks.refresh();
                this.askStatus();
            }, 100);
        }
    }

    tick() {
        if (this.shift === null || this.isOver) {
            return;
        }
        const now = performance.now() + this.shift;
        this.picture.now = now;
        $('now').textContent = times.at(now);
        if (this.picture.view === null) {
            this.picture.drawSoon();
        }
        if (!this.asked || performance.now() - this.asked > 5000) {
            this.askStatus();
        }
    }

    async askStatus() {
        if (this.isOver) {
            return;
        }
        this.asked = performance.now();
        const response = await fetch('/status').catch(() => null);
        if (response?.ok) {
            const status = await response.json();
            setText($('state'), foreign(status.sentence ?? ''));
        }
    }

    /// The audit texts that the configuration knows, to choose from.
    offerTexts() {
        const texts = this.model.texts;
        for (const text of texts ? [...texts.tunnelOpen, ...texts.tunnelClose, texts.abort, ...texts.fileOpen, ...texts.fileClose] : []) {
            const option = document.createElement('option');
            option.value = text;
            $('texts').append(option);
        }
    }

    listen() {
        for (const form of document.querySelectorAll('form[data-form]')) {
            form.addEventListener('submit', event => {
                event.preventDefault();
                const values = Object.fromEntries(new FormData(form));
                let name = form.dataset.form;
                if (name === 'message') {
                    name = values.level === 'audit-message' ? 'audit' : 'log';
                    values.text += '\n';
                }
                this.order(name, values, event.submitter);
            });
        }
        for (const button of document.querySelectorAll('button[data-do]')) {
            const {do: name, ...values} = button.dataset;
            button.addEventListener('click', () => this.order(name, values, button));
        }
    }

    async order(name, values, button) {
        if (button.ariaDisabled === 'true') {
            return;  // its answer has yet to come; a button that is disabled would lose the focus
        }
        button.ariaDisabled = 'true';
        const request = {method: 'POST', headers: {'Content-Type': 'application/json'}, body: JSON.stringify(values)};
        const response = await fetch(`/do/${name}`, request).catch(() => null);
        const text = response === null ? 'there is no answer' : await response.text();
        button.ariaDisabled = null;
        const calls = response?.ok ? JSON.parse(text).calls : null;
        const done = `${name} ${foreign(Object.values(values).join(' '))}: done`;
        setText($('answer'), calls === null ? foreign(text) : calls.length > 0 ? calls.map(whatOf).join('; ') : done);
        $('answer').classList.toggle('bad', calls === null || calls.some(isBad));
    }
}
