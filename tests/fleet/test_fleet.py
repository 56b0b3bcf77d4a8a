"""What is used beside many devices, with real programs of Debian: those of the system, or those that scripts/test --servers
unpacks. The environment names the build's programs (BIN)."""
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNPACKED = ROOT / "build/servers/root"
BIN = pathlib.Path(os.environ["BIN"]).resolve()
os.environ["PATH"] = f"{BIN}:{UNPACKED}/usr/bin:{UNPACKED}/usr/sbin:{os.environ['PATH']}:/usr/sbin"
os.environ["LD_LIBRARY_PATH"] = str(UNPACKED / f"usr/lib/{os.uname().machine}-linux-gnu")
os.environ["TZ"] = "UTC"


def run(*command, cwd=None, status=0):
    done = subprocess.run([str(word) for word in command], cwd=cwd, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          timeout=200)
    assert done.returncode == status, (command, done.returncode, done.stdout)
    return done.stdout


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


def wait_for(asked, seconds=60):
    """What is asked, once it answers something that counts as true."""
    end = time.monotonic() + seconds
    while True:
        try:
            if answer := asked():
                return answer
        except OSError:
            pass
        assert time.monotonic() < end, "it did not happen"
        time.sleep(0.1)


class Place(unittest.TestCase):
    """A directory of its own with the folders that the example configuration names; what was started in it is ended."""
    needed = ()

    def setUp(self):
        self.path = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="fleet-")))
        for folder in ("log", "state"):
            (self.path / folder).mkdir()
        shutil.copy(ROOT / "examples/zephan-config.xml", self.path)

    def start(self, *command, end=signal.SIGTERM, **options):
        process = subprocess.Popen([str(word) for word in command], cwd=self.path, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
        self.addCleanup(process.wait)
        self.addCleanup(process.send_signal, end)
        return process


class Metrics(Place):
    needed = ("promtool", "prometheus", "prometheus-node-exporter")

    def test_alarms(self):
        for name in ("examples/fleet/alerts.yml", "tests/fleet/alerts-test.yml"):
            shutil.copy(ROOT / name, self.path)
        self.assertIn("SUCCESS", run("promtool", "test", "rules", "alerts-test.yml", cwd=self.path))

    @unittest.skipUnless(shutil.which("systemd-analyze"), "no systemd-analyze")
    def test_units(self):
        for unit in (ROOT / "examples/fleet").glob("zephan-*@.*"):
            text = unit.read_text().replace("/usr/bin/zephan", f"{BIN}/zephan")
            (self.path / unit.name).write_text(text)
            self.assertEqual(run("systemd-analyze", "verify", self.path / unit.name), "")
            if unit.suffix == ".service":
                run("systemd-analyze", "security", "--offline=true", "--threshold=20", self.path / unit.name)

    def test_a_real_prometheus_tells_what_the_program_says(self):
        shutil.copy(ROOT / "examples/kill-and-resume.scenario", self.path)
        run("krx-agent-sim", "replay", "kill-and-resume.scenario", cwd=self.path)
        asked = ("zephan-status", "--config", "zephan-config.xml", "--schedule", "state/schedule.xml", "--clock", "2026-03-01T10:05:00Z")
        told = json.loads(run(*asked, "--json", cwd=self.path, status=4))
        (self.path / "zephan.prom").write_text(run(*asked, "--metrics", cwd=self.path))
        self.assertEqual(run("sh", "-c", "promtool check metrics <zephan.prom", cwd=self.path), "")
        exporter, port = free_port(), free_port()
        (self.path / "prometheus.yml").write_text(
            "scrape_configs: [{job_name: device, scrape_interval: 1s, scrape_timeout: 1s, "
            f"static_configs: [{{targets: ['127.0.0.1:{exporter}']}}]}}]")
        self.start("prometheus-node-exporter", "--collector.disable-defaults", "--collector.textfile",
                   f"--collector.textfile.directory={self.path}", f"--web.listen-address=127.0.0.1:{exporter}")
        self.start("prometheus", "--config.file=prometheus.yml", "--storage.tsdb.path=data", f"--web.listen-address=127.0.0.1:{port}")

        def values(query):
            query = urllib.parse.urlencode({"query": query})
            with urllib.request.urlopen(f"http://127.0.0.1:{port}/api/v1/query?{query}", timeout=5) as answer:
                return [(one["metric"], int(one["value"][1])) for one in json.load(answer)["data"]["result"]]
        mode = wait_for(lambda: values("zephan_rsm_mode == 1"))
        self.assertEqual([metric["mode"] for metric, _ in mode], ["FORCE_POLL_GRACE"])
        left = values("(zephan_rsm_ends_timestamp_seconds - zephan_rsm_began_timestamp_seconds) / 60")
        self.assertEqual([value for _, value in left], [told["resume"]["record"]["minutes"]])
        states = {metric["file"]: metric["state"] for metric, _ in values("zephan_file_state == 1")}
        self.assertEqual(states, {name: told[name]["state"] for name in ("configuration", "resume", "schedule")})
        self.assertEqual(values("node_textfile_scrape_error")[0][1], 0)


class Load(Place):
    needed = ("parallel", "gnuplot-nox")
    scenario = ROOT / "examples/fleet/nine-o-clock.scenario"

    def part(self, first, last):
        """By one process: polls and reports of each second."""
        lines = run(ROOT / "scripts/fleet-load", "--part", self.scenario, first, last, 0).splitlines()
        return {int(second): (int(polls), int(reports)) for _, second, polls, reports in map(str.split, lines)}

    def test_the_sum_is_that_of_one_process(self):
        run(ROOT / "scripts/fleet-load", "--devices", 200, "--spread", 0, "--spread", 60, self.scenario)
        with open(ROOT / "build/fleet/nine-o-clock/load.csv", encoding="utf-8") as file:
            rows = [tuple(map(int, line.split(","))) for line in file]
        self.assertEqual({second: counted for spread, second, *counted in rows if spread == 0},
                         {second: list(counted) for second, counted in self.part(1, 200).items()})
        peak = [max(polls for spread, _, polls, _ in rows if spread == each) for each in (0, 60)]
        self.assertGreater(peak[0], 2 * peak[1])
        self.assertIn("</svg>", (ROOT / "build/fleet/nine-o-clock/load.svg").read_text())

    def test_each_kind_of_device(self):
        # Of 30 minutes: killed after 40 polls, with nine whole minutes left; a visit to 09:40:15, and 30 minutes more.
        for kind, device, polls in (("off", 100, 0), ("plain", 1, 60), ("restart", 46, 40 + 18), ("visit", 15, 80 + 60)):
            with self.subTest(kind):
                self.assertEqual(sum(polls for polls, _ in self.part(device, device).values()), polls)

class Ship(Place):
    needed = ("rsyslogd", "zephan-log", "psql")
    postgres = next((path for root in (UNPACKED, pathlib.Path("/")) for path in root.glob("usr/lib/postgresql/*/bin")), None)
    as_other = {"user": "nobody", "group": "nogroup", "extra_groups": []} if os.getuid() == 0 else {}  # the database refuses root

    def kill(self, process, how=signal.SIGKILL):
        process.send_signal(how)
        process.wait()

    def rsyslog(self, name, *changes):
        """Starts one with a supplied configuration, its paths and ports changed."""
        spool = self.path / f"spool-{name}"
        spool.mkdir(exist_ok=True)
        for file in spool.glob("imfile-state:*"):
            file.unlink()
        text = (ROOT / f"examples/fleet/rsyslog-{name.rstrip('12')}.conf").read_text()
        for old, new in (("/var/spool/rsyslog", str(spool)), ("2514", str(self.relp)), ('Interval="5"', 'Interval="1"'), *changes):
            self.assertIn(old, text)
            text = text.replace(old, new)
        (self.path / f"{name}.conf").write_text(text)
        return self.start("rsyslogd", "-n", "-i", self.path / f"{name}.pid", "-f", f"{name}.conf", "-M",
                          f"{UNPACKED}/usr/lib/{os.uname().machine}-linux-gnu/rsyslog:/usr/lib/{os.uname().machine}-linux-gnu/rsyslog")

    def collector(self):
        return self.rsyslog("collector", ("0.0.0.0", "127.0.0.1"), ("5432", str(self.sql)), ('user="collector"', 'user="nobody"'))

    def device(self, number):
        return self.rsyslog(f"device{number}", ("collector.example", "127.0.0.1"), ("/var/lib/zephan-log-ship", str(self.path / str(number))),
                            ("global(", f'global(localHostname="device-{number}" '))

    def ship(self, number):
        place = self.path / str(number)
        return self.start("sh", "-c", "cd $0 && exec zephan-log --follow --json --cursor-file ship/cursor --config zephan-config.xml >>ship/entries.jsonl", place)

    def database(self):
        process = self.start(self.postgres / "postgres", "-D", self.path / "data/db", "-k", self.path / "data", "-p", self.sql,
                             end=signal.SIGINT, **self.as_other)
        wait_for(lambda: self.ask("select 1") or None)
        return process

    def ask(self, query, database="postgres"):
        done = subprocess.run(["psql", "-h", "127.0.0.1", "-p", str(self.sql), "-U", "nobody", "-qtAc", query, database], capture_output=True, text=True, timeout=60)
        return done.stdout.split() if done.returncode == 0 else []

    def replay(self, number, day):
        """An agent whose log is full now and then."""
        place = self.path / str(number)
        place.joinpath("s").write_text(f"clock 2026-03-0{day}T10:00:00Z\n0 start logger zephan-config.xml\n" +
                                       "".join(f"{t} log info \"It's entry {t} of {number}\"\n" for t in range(1, 200)))
        run("krx-agent-sim", "replay", "s", cwd=place)

    def stored(self, number):
        return self.ask(f"select id from entries where device = 'device-{number}' order by arrival", "zephan")

    def written(self, number):
        return [json.loads(line)["id"] for line in run("zephan-log", "--json", "log/kelp-logs.xml", cwd=self.path / str(number)).splitlines()]

    def test_every_entry_once(self):
        self.path.chmod(0o755)
        self.relp, self.sql = free_port(), free_port()
        (self.path / "data").mkdir()
        if self.as_other:
            shutil.chown(self.path / "data", "nobody")
        self.assertEqual(self.start(self.postgres / "initdb", "--no-sync", "-U", "nobody", "-A", "trust", "-D", "data/db", **self.as_other).wait(), 0)
        database = self.database()
        self.ask("create database zephan")
        self.ask((ROOT / "examples/fleet/collector.sql").read_text(), "zephan")
        for number in (1, 2):
            shutil.copytree(self.path, self.path / str(number), ignore=lambda *_: ["data", "1", "2"])
            (self.path / str(number) / "ship").mkdir()
            config = self.path / str(number) / "zephan-config.xml"
            config.write_text(config.read_text().replace("5000000", "5000"))
            self.replay(number, 1)
        devices = {number: [self.ship(number), self.device(number)] for number in (1, 2)}
        collector = self.collector()
        wait_for(lambda: len(self.stored(1)) > 20 and len(self.stored(2)) > 20)
        self.kill(devices[1][0])
        self.kill(devices[2][1])
        self.kill(collector)
        for number in (1, 2):
            self.replay(number, 2)
        devices[1][0], devices[2][1], collector = self.ship(1), self.device(2), self.collector()
        wait_for(lambda: len(self.stored(1)) > 250)
        self.kill(database, signal.SIGQUIT)  # as a crash, of which its processes take note
        self.assertEqual(self.stored(1), [])
        for number in (1, 2):
            self.replay(number, 3)
        self.database()
        for number in (1, 2):
            written = self.written(number)
            self.assertGreater(len(list((self.path / str(number) / "log").iterdir())), 3)
            wait_for(lambda: len(self.stored(number)) >= len(written))
            self.assertEqual(self.stored(number), written)


if __name__ == "__main__":
    missing = [program for program in globals()[sys.argv[1]].needed if shutil.which(program) is None]
    if missing:
        print(f"Skipped: no {', '.join(missing)} (scripts/test --servers unpacks what is missing)", file=sys.stderr)
        sys.exit(77)
    unittest.main()
