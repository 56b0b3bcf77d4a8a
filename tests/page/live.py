"""A live session for tests of the console."""
import json
import os
import http.client
import re
import signal
import socket
import subprocess
import threading
import time
import urllib.parse

from session import ROOT, Workspace, simulator, without_meaning

NAMESPACE = "urn:corvane-krx:urn:corvane-krx:ZephanServices_v1_0"
START = ROOT / "examples" / "console" / "live-agent.scenario"


class Live:
    """The simulator with its console, in a workspace of its own, from `with` to its end."""

    def __init__(self, *arguments, scenario=START):
        self.arguments = arguments
        self.scenario = scenario

    def __enter__(self):
        self.workspace = Workspace()
        self.process = subprocess.Popen(
            [simulator(), "run", str(self.scenario), "--http", "0", "--trace", "trace.jsonl", *self.arguments],
            cwd=self.workspace.path, env={**os.environ, "TZ": "UTC"}, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        told = self.process.stderr.readline()
        self.url = re.search(r"http://\S+", told).group(0)
        place = urllib.parse.urlsplit(self.url)
        self.host, self.port = place.hostname, place.port
        self.authority = place.netloc
        wait_until(lambda: any(event.get("verb") == "start web-service" for event in self.events()) or self.scenario != START)
        return self

    def __exit__(self, *_):
        status = self.end()
        self.workspace.__exit__()
        assert status == 0, status

    def end(self):
        """Interrupts the session; its exit status."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        if not self.process.stderr.closed:
            said = self.process.stderr.read()  # to its end
            self.process.stderr.close()
            self.process.stdin.close()
            assert "Sanitizer" not in said, said
        return self.process.wait(timeout=20)

    def ask(self, method, path, body=None, headers=None):
        """Status, body and headers of a response."""
        connection = http.client.HTTPConnection(self.host, self.port, timeout=20)
        try:
            connection.request(method, path, body, headers or {})
            response = connection.getresponse()
            return response.status, response.read().decode(), response.headers
        finally:
            connection.close()

    def get(self, path, **headers):
        return self.ask("GET", path, headers=headers)[:2]

    def post(self, path, body=""):
        form = path.startswith("/do/")
        return self.ask("POST", path, body.encode(), {"Content-Type": "application/json" if form else "text/xml; charset=utf-8"})[:2]

    def do(self, form, **values):
        return self.post(f"/do/{form}", json.dumps(values))

    def call(self, xml):
        return self.post("/krx/ZephanServices", xml)

    def say(self, sent):
        """What is answered to bytes, until the other side closes or falls silent."""
        said = b""
        with socket.create_connection((self.host, self.port), timeout=0.5) as client:
            try:
                client.sendall(sent)
                while part := client.recv(65536):
                    said += part
            except OSError:
                pass  # let go before all was sent, or waited for
        return said

    def status(self):
        return json.loads(self.get("/status")[1])

    def events(self):
        try:
            text = (self.workspace.path / "trace.jsonl").read_text(encoding="utf-8")
        except FileNotFoundError:
            return []
        return [json.loads(line) for line in text.splitlines(keepends=True) if line.endswith("\n")]

    def verbs(self):
        return [event["verb"] for event in self.events() if event["event"] == "call"]


class Follower(threading.Thread):
    """Reads the stream of events until it ends, or until `enough` of them have come."""

    def __init__(self, live, path="/events", enough=None, headers=None):
        super().__init__(daemon=True)
        self.connection = http.client.HTTPConnection(live.host, live.port, timeout=20)
        self.connection.request("GET", path, headers=headers or {})
        self.response = self.connection.getresponse()
        self.enough = enough
        self.events = []
        self.numbers = []
        self.kinds = []
        self.start()

    def run(self):
        try:
            kind = "message"
            while self.enough is None or len(self.events) < self.enough:
                line = self.response.readline().decode()
                if line == "":
                    break
                name, _, value = line.rstrip("\n").partition(": ")
                if name == "event":
                    kind = value
                    self.kinds.append(value)
                elif name == "id":
                    self.numbers.append(int(value))
                elif name == "data" and kind == "message":
                    self.events.append(without_meaning(json.loads(value)))
                elif name == "":
                    kind = "message"
        except OSError:
            pass  # let go by the other side

    def close(self):
        self.connection.close()


def request(operation, **sub_elements):
    children = "".join(f"<{name}>{value}</{name}>" for name, value in sub_elements.items())
    return f'<{operation} xmlns="{NAMESPACE}">{children}</{operation}>'


def wait_until(holds, seconds=10):
    end = time.monotonic() + seconds
    while not holds():
        if time.monotonic() > end:
            raise AssertionError("it did not happen")
        time.sleep(0.01)
