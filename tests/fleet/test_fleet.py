"""What is used beside many devices, with real programs of Debian: those of the system, or those that scripts/test --servers
unpacks. The environment names the build's programs (BIN)."""
import collections
import datetime
import functools
import json
import os
import pathlib
import re
import shlex
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse
import urllib.request
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNPACKED = ROOT / "build/servers/root"
BIN = pathlib.Path(os.environ["BIN"]).resolve()
os.environ["PATH"] = f"{BIN}:{UNPACKED}/usr/bin:{UNPACKED}/usr/sbin:{os.environ['PATH']}:/usr/sbin"
os.environ["LD_LIBRARY_PATH"] = str(UNPACKED / f"usr/lib/{os.uname().machine}-linux-gnu")
os.environ["TZ"] = "UTC"


def run(*command, cwd=None, status=0):
    done = subprocess.run([str(word) for word in command], cwd=cwd, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          timeout=400)
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
        os.environ["FLEET_PLACE"] = str(self.path)  # by which whatever is started from here is known
        self.addCleanup(lambda: wait_for(lambda: not self.running(), 10))

    def running(self):
        """The processes of this place."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                here = str(self.path).encode() in process.joinpath("environ").read_bytes() + bytes(process.joinpath("cwd").readlink())
            except OSError:
                continue
            if here and process.name != str(os.getpid()):
                found.append(process.joinpath("comm").read_text())
        return found

    def start(self, *command, end=signal.SIGTERM, privileges=(), **options):
        """Starts one that ends with the test, or with this process should that be killed."""
        process = subprocess.Popen(["setpriv", *privileges, "--pdeathsig", "KILL", *map(str, command)], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **{"cwd": self.path, **options})
        self.addCleanup(self.end, process, end)
        return process

    def end(self, process, how=signal.SIGKILL):
        process.send_signal(how)
        process.wait(30)


class Metrics(Place):
    needed = ("promtool", "prometheus", "prometheus-node-exporter")

    def test_alarms(self):
        for name in ("examples/fleet/alerts.yml", "tests/fleet/alerts-test.yml"):
            shutil.copy(ROOT / name, self.path)
        self.assertIn("SUCCESS", run("promtool", "test", "rules", "alerts-test.yml", cwd=self.path))

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
    needed = ("parallel", "gnuplot-nox", "sshd", "ssh")
    scenario = ROOT / "examples/fleet/nine-o-clock.scenario"

    @staticmethod
    @functools.cache
    def part(first, last):
        """By one process: polls and reports of each second."""
        lines = run(ROOT / "scripts/fleet-load", "--part", Load.scenario, first, last, 0).splitlines()
        return {int(second): (int(polls), int(reports)) for _, second, polls, reports in map(str.split, lines)}

    def load(self, *options):
        """The printed table and the numbers of each second, by spread."""
        shutil.copy(self.scenario, self.path / "fleet-test.scenario")  # for a result of its own
        said = run(ROOT / "scripts/fleet-load", *options, self.path / "fleet-test.scenario")
        counted = collections.defaultdict(dict)
        with open(ROOT / "build/fleet/fleet-test/load.csv", encoding="utf-8") as file:
            for line in file:
                spread, second, polls, reports = map(int, line.split(","))
                counted[spread][second] = (polls, reports)
        return said, counted

    def test_the_sum_is_that_of_one_process(self):
        said, counted = self.load("--devices", 200, "--spread", 0, "--spread", 60)
        self.assertEqual(counted[0], self.part(1, 200))
        for spread, seconds in counted.items():
            words = [f"{spread} s"]
            for which in (0, 1):
                most = max(seconds, key=lambda second: (seconds[second][which], -second))
                at = datetime.datetime(2026, 3, 2, 8, 55) + datetime.timedelta(seconds=most)
                total = sum(number[which] for number in seconds.values())
                words.append(f"{total} {seconds[most][which]} at {at:%H:%M:%S} {total / (max(seconds) - min(seconds) + 1):.1f}")
            self.assertIn(" ".join(words), re.sub(" +", " ", said))
        peak = [max(polls for polls, _ in counted[spread].values()) for spread in (0, 60)]
        self.assertGreater(peak[0], 2 * peak[1])
        picture = xml.etree.ElementTree.parse(ROOT / "build/fleet/fleet-test/load.svg")
        # One point for each second of the first hour with a poll, and one in the key for each spread.
        points = sum("#gpPt6" in value for element in picture.iter() for value in element.attrib.values())
        drawn = sum(polls > 0 and second <= 3600 for seconds in counted.values() for second, (polls, _) in seconds.items())
        self.assertEqual(points, drawn + len(counted))

    def test_two_machines(self):
        """They are this one under two names, each with a port of its own at a real sshd."""
        for key in ("host", "user"):
            run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.path / key)
        ports = {"one": free_port(), "two": free_port()}
        (self.path / "known").write_text("* " + (self.path / "host.pub").read_text())
        (self.path / "ssh_config").write_text("".join(f"Host {name}\n Port {port}\n" for name, port in ports.items()) + f"""Host *
            HostName 127.0.0.1
            IdentityFile {self.path}/user
            UserKnownHostsFile {self.path}/known
            BatchMode yes\n""")
        (self.path / "machines").write_text("".join(f"2/ssh -F {self.path}/ssh_config {name}\n" for name in ports))
        session = UNPACKED / "usr/lib/openssh/sshd-session"
        (self.path / "sshd_config").write_text("".join(f"Port {port}\n" for port in ports.values()) + f"""
            ListenAddress 127.0.0.1
            HostKey {self.path}/host
            AuthorizedKeysFile {self.path}/user.pub
            StrictModes no
            UsePAM no
            AuthenticationMethods publickey
            PidFile none
            LogLevel VERBOSE
            SetEnv "PATH={os.environ['PATH']}" KRX_AGENT_SIM={BIN}/krx-agent-sim FLEET_PLACE={self.path}\n""" +
            f"SshdSessionPath {session}\nSshdAuthPath {session.with_name('sshd-auth')}\n" * session.exists())
        sshd = [shutil.which("sshd"), "-D", "-f", self.path / "sshd_config", "-E", self.path / "sshd.log"]
        if os.getuid() == 0:
            # As root it asks for a user and a directory that only its installation makes. It gets them to itself.
            if subprocess.run(["unshare", "--mount", "true"], capture_output=True, timeout=60).returncode != 0:
                self.skipTest("sshd of root needs a mount, which is not allowed here")
            users = pathlib.Path("/etc/passwd").read_text()
            (self.path / "passwd").write_text(users + "sshd:x:65533:65534::/run/sshd:/usr/sbin/nologin\n" * ("\nsshd:" not in users))
            sshd = ["unshare", "--mount", "sh", "-ec", 'mount -t tmpfs tmpfs /run; mkdir -m 755 /run/sshd; '
                    'mount --bind passwd /etc/passwd; exec "$@"', "sh", *sshd]
        self.start(*sshd)
        for port in ports.values():
            wait_for(lambda: socket.create_connection(("127.0.0.1", port)).close() or True)
        self.assertEqual(self.load("--devices", 200, "--machines", self.path / "machines")[1][0], self.part(1, 200))
        log = (self.path / "sshd.log").read_text()
        for port in ports.values():
            self.assertRegex(log, rf"Connection from .* on 127.0.0.1 port {port}\b")

    def test_each_kind_of_device(self):
        # Of 30 minutes: killed after 40 polls, with nine whole minutes left; a visit to 09:40:15, and 30 minutes more.
        for kind, device, polls in (("off", 100, 0), ("plain", 1, 60), ("restart", 46, 40 + 18), ("visit", 15, 80 + 60)):
            with self.subTest(kind):
                self.assertEqual(sum(polls for polls, _ in self.part(device, device).values()), polls)


class Ship(Place):
    needed = ("rsyslogd", "zephan-log", "psql", "openssl")
    postgres = next((path for root in (UNPACKED, pathlib.Path("/")) for path in root.glob("usr/lib/postgresql/*/bin")), None)
    as_other = ["--reuid=nobody", "--regid=nogroup", "--clear-groups"] if os.getuid() == 0 else []  # the database refuses root

    def rsyslog(self, name, peer, *changes):
        """Starts one with a supplied configuration, its paths and ports changed, and the certificate of the peer."""
        spool = self.path / f"spool-{name}"
        spool.mkdir(exist_ok=True)
        before = (ROOT / "examples/fleet/rsyslog-device-restart.conf").read_text().split("ExecStartPre=-")[1]
        run(*shlex.split(before.replace("/var/spool/rsyslog", str(spool))))
        text = (ROOT / f"examples/fleet/rsyslog-{name.rstrip('12')}.conf").read_text()
        for old, new in (("/var/spool/rsyslog", str(spool)), ("2514", str(self.relp)), ('Interval="5"', 'Interval="1"'),
                         ("/etc/ssl/zephan/", f"{self.path}/tls/{peer}/"), *changes):
            self.assertIn(old, text)
            text = text.replace(old, new)
        (self.path / f"{name}.conf").write_text(text)
        return self.start("rsyslogd", "-n", "-i", self.path / f"{name}.pid", "-f", f"{name}.conf", "-M",
                          f"{UNPACKED}/usr/lib/{os.uname().machine}-linux-gnu/rsyslog:/usr/lib/{os.uname().machine}-linux-gnu/rsyslog")

    def collector(self):
        return self.rsyslog("collector", "collector.example", ("0.0.0.0", "127.0.0.1"), ("5432", str(self.sql)),
                            ('user="collector"', 'user="nobody"'))

    def device(self, number):
        return self.rsyslog(f"device{number}", f"device-{number}", ('target="collector.example"', 'target="127.0.0.1"'),
                            ("/var/lib/zephan-log-ship", str(self.path / str(number))),
                            ("global(", f'global(localHostname="device-{number}" '))

    def ship(self, number):
        """What the unit starts."""
        place = self.path / str(number)
        command = re.search("(?m)^ExecStart=(.*)", (ROOT / "examples/fleet/zephan-log-ship@.service").read_text())[1]
        return self.start(*shlex.split(command), cwd=place, env={**os.environ, "STATE_DIRECTORY": str(place / "ship")})

    def database(self):
        process = self.start(self.postgres / "postgres", "-D", self.path / "data/db", "-k", self.path / "data", "-p", self.sql,
                             end=signal.SIGINT, privileges=self.as_other)
        wait_for(lambda: self.ask("select 1") or None)
        return process

    def ask(self, query, database="postgres"):
        done = subprocess.run(["psql", "-h", "127.0.0.1", "-p", str(self.sql), "-U", "nobody", "-qtAc", query, database],
                              capture_output=True, text=True, timeout=60)
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
        said = run("zephan-log", "--json", "log/kelp-logs.xml", cwd=self.path / str(number))
        return [json.loads(line)["id"] for line in said.splitlines()]

    def greet(self, certificate):
        """What the collector says to whoever has this certificate."""
        context = ssl.create_default_context(cafile=self.path / "tls/ca.pem")
        context.load_cert_chain(certificate / "own.pem", certificate / "own.key")
        with socket.create_connection(("127.0.0.1", self.relp), 20) as plain, \
                context.wrap_socket(plain, server_hostname="collector.example") as connection:
            try:
                connection.sendall(b"1 open 30 relp_version=0\ncommands=syslog\n")
                return connection.recv(1000)
            except (ssl.SSLError, ConnectionError):
                return b""

    def test_every_entry_once(self):
        if self.as_other and subprocess.run(["setpriv", *self.as_other, "test", "-x", self.postgres / "initdb"], check=False).returncode != 0:
            self.skipTest("the database refuses root, and nobody else may look into this tree")
        self.path.chmod(0o755)
        self.relp, self.sql = free_port(), free_port()
        (self.path / "tls").mkdir()
        certificates = re.search("(?ms)^    openssl .*?^    done$", (ROOT / "docs/fleet.md").read_text())[0]
        run("sh", "-ec", certificates, cwd=self.path / "tls")
        (self.path / "tls/stranger").mkdir()
        run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", "/CN=device-1",
            "-keyout", "own.key", "-out", "own.pem", cwd=self.path / "tls/stranger")
        (self.path / "data").mkdir()
        if self.as_other:
            shutil.chown(self.path / "data", "nobody")
        self.assertEqual(self.start(self.postgres / "initdb", "--no-sync", "-U", "nobody", "-A", "trust", "-D", "data/db",
                                    privileges=self.as_other).wait(), 0)
        database = self.database()
        self.ask("create database zephan")
        self.ask((ROOT / "examples/fleet/collector.sql").read_text(), "zephan")
        for number in (1, 2):
            shutil.copytree(self.path, self.path / str(number), ignore=lambda *_: ["data", "tls", "1", "2"])
            (self.path / str(number) / "ship").mkdir()
            config = self.path / str(number) / "zephan-config.xml"
            config.write_text(config.read_text().replace("5000000", "5000"))
            self.replay(number, 1)
        devices = {number: [self.ship(number), self.device(number)] for number in (1, 2)}
        collector = self.collector()
        wait_for(lambda: len(self.stored(1)) > 20 and len(self.stored(2)) > 20)
        self.assertIn(b"200 OK", self.greet(self.path / "tls/device-1"))
        for stranger in ("stranger", "collector.example"):
            self.assertEqual(self.greet(self.path / "tls" / stranger), b"", stranger)
        self.end(devices[1][0])
        self.end(devices[2][1])
        self.end(collector)
        for number in (1, 2):
            self.replay(number, 2)
        devices[1][0], devices[2][1], collector = self.ship(1), self.device(2), self.collector()
        wait_for(lambda: len(self.stored(1)) > 250)
        self.end(database, signal.SIGQUIT)  # as a crash, of which its processes take note
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
