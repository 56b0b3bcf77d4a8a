"""Sessions to look at: replays in a directory of their own, and what their pages hold."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"


def simulator():
    return os.path.abspath(os.environ["KRX_AGENT_SIM"])


def beside_it(program):
    return os.path.join(os.path.dirname(simulator()), program)


class Workspace:
    """A directory with the folders that the example configuration names."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="page-"))
        for folder in ("log", "state"):
            (self.path / folder).mkdir()
        shutil.copy(EXAMPLES / "zephan-config.xml", self.path)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.path)

    def run(self, *arguments):
        """Runs the simulator to its end: exit status and what it said on standard error."""
        return self.run_program(simulator(), *arguments)

    def draw(self, *arguments):
        """The same for the program that makes the page of a kept session."""
        return self.run_program(beside_it("zephan-session"), *arguments)

    def run_program(self, *arguments):
        done = subprocess.run([*map(str, arguments)], cwd=self.path, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, timeout=600, env={**os.environ, "TZ": "UTC"})
        return done.returncode, done.stderr

    def replay(self, scenario):
        """Replays a scenario (a path or its text): the page's path and the trace's events."""
        if not isinstance(scenario, pathlib.Path):
            (self.path / "session.scenario").write_text(scenario)
            scenario = self.path / "session.scenario"
        status, said = self.run("replay", scenario, "--trace", "trace.jsonl", "--report", "page.html")
        assert status == 0, said
        return self.path / "page.html", self.events()

    def events(self):
        with open(self.path / "trace.jsonl", encoding="utf-8") as trace:
            return [json.loads(line) for line in trace]


def data_of(page):
    """The data that lies in a page."""
    text = page.read_text(encoding="utf-8")
    data = json.loads(re.search(r'<script type="application/json" id="session">(.*?)</script>', text, re.S).group(1))
    bodies = []
    for body in data["bodies"]:
        if not isinstance(body, str):
            ago, first, middle, last = body
            body = bodies[-ago][:first] + middle + bodies[-ago][len(bodies[-ago]) - last:]
        bodies.append(body)
    return {**data, "bodies": [json.loads(body) for body in bodies]}


def without_meaning(event):
    return {key: value for key, value in event.items() if key not in ("tunnel", "file")}


def events_of(data, shown=without_meaning):
    """The events of a page's data, as those of a trace: without what audit messages mean."""
    time = 0
    events = []
    for count, *steps in data["runs"]:
        for _ in range(count):
            for delay, body in zip(steps[::2], steps[1::2]):
                time += delay
                events.append({"t": time / 1000, **shown(data["bodies"][body])})
    return events
