#!/usr/bin/env python3
"""Makes each call of the module fail once, one replay of a scenario a fault, and looks at what becomes of the agent.

    campaign.py BUILD [--faults N] [--jobs N] [--only TEXT]

BUILD is a build tree with the simulator, the module and libkrx-faults.so. --faults spreads that number of faults evenly
over all (a short form); --only keeps the faults whose name holds the text. Prints what was made and what it ended in;
exit status 1 when anything went wrong that a fault must not lead to.
"""

import argparse
import collections
import concurrent.futures
import errno
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent.parent / "examples"

# Errors that each kind of call is made to end with. "short": only half of it is done; "full": half of it is done and
# then the disk is full; "*N": N calls in a row fail.
ERRORS = {
    "memory": ["ENOMEM", "ENOMEM*5"],
    "parser-memory": ["ENOMEM"],
    "agent-memory": ["ENOMEM"],
    "open": ["EMFILE"],
    "openat": ["EACCES", "EMFILE", "ENOSPC", "EIO", "EINTR", "EMFILE*5"],
    "fcntl": ["EMFILE"],
    "close": ["EIO"],
    "lseek": ["EIO"],
    "fstat": ["EIO"],
    "pread": ["EIO", "EINTR", "short"],
    "pwrite": ["ENOSPC", "EIO", "EINTR", "short", "full"],
    "write": ["ENOSPC", "EIO", "EINTR", "short", "full", "ENOSPC*5"],
    "ftruncate": ["EIO"],
    "fsync": ["EIO"],
    "renameat2": ["EACCES", "ENOSPC", "EIO", "EINVAL"],
    "unlinkat": ["EACCES", "EIO"],
    "unlink": ["EACCES", "EIO"],
    "fstatat": ["EIO"],
    "statx": ["EIO", "EPERM", "EIO*5"],
    "faccessat": ["EACCES"],
    "fdopendir": ["EMFILE"],
    "readdir": ["EIO"],
    "closedir": ["EIO"],
    "mutexattr-init": ["ENOMEM"],
    "mutex-init": ["EAGAIN", "ENOMEM"],
    "mutex-lock": ["EOWNERDEAD", "ENOTRECOVERABLE"],
    "mutex-trylock": ["EBUSY", "EOWNERDEAD"],
    "mutex-unlock": ["EPERM"],
    "system": ["EAGAIN"],
    "fwrite": ["EIO"],
}

# What has to be seen at least once over the whole campaign: a kind of call, and a line that its failure leads to.
EXPECTED = [(kind, json.loads(line)) for kind, line in
            (row.split(None, 1) for row in (HERE / "expected-lines").read_text().splitlines() if not row.startswith("#"))]

STATE_FILES = {"state/resume.xml": "<ResumeRSM>", "state/schedule.xml": "<RSMExecuteCommand>"}
ECHO_MAY_BE_LOST = {"fwrite", "memory", "agent-memory", "parser-memory"}
MANY_LOCKS = 100  # of a kind in a scenario
CALMED_DOWN = 60  # seconds from the end of a scenario to the check that the module still works

PROOF_MARK = "The proof begins"
# The module as good as new after a fault: everything is started afresh, polls and logs.
PROOF = """{t} log force "{mark}"
{t} show state/resume.xml
{t} show state/schedule.xml
{t} stop rsm
{t} stop logger
{t} write state/resume.xml ""
{t} write state/schedule.xml ""
+0 start data-source state/schedule.xml
+0 start logger {configuration}
+0 start rsm {configuration}
+0 start web-service
+0 connect 1 30
+0 command ScheduleRSM RSMStartDate=2027:01:01 RSMStartTime=10:00:00
+0 log force "Still at work\\n"
+70 show state/schedule.xml
+0 stop rsm
+0 stop logger
"""


class Scenario:
    """A scenario with the proof behind it, and its replay without a fault."""

    def __init__(self, path, campaign):
        self.name = path.stem
        self.text = path.read_text()
        found = re.search(r"\S+-config\.xml", self.text)
        self.configuration = found.group(0)
        # The memory of a killed module goes with its process.
        self.leaks_count = 0 if " unload" in self.text else 1
        self.written = [text.replace('\\"', '"') for text in re.findall(r'write state/\S+ "((?:[^"\\]|\\.)+)"', self.text)]
        # Where the scenario ends, and what the module calls up to there.
        alone = campaign.replay(self, self.text, [])
        end = alone.events[-1]["t"]
        self.proof_at = int(end) + CALMED_DOWN
        alone = campaign.replay(self, self.text + f"{self.proof_at} end\n", [])
        self.totals = alone.counts
        # A shortage of several calls may reach into the proof, which is therefore made twice then.
        once, again = (PROOF.format(t=t, mark=PROOF_MARK, configuration=self.configuration) for t in (self.proof_at, "+1"))
        self.full = {False: self.text + once + "+0 end\n", True: self.text + once + again + "+0 end\n"}
        self.clean = {lasting: campaign.replay(self, text, []) for lasting, text in self.full.items()}

    def step(self, kind):
        """Of how many calls one fails: of like ones by the thousand, not each."""
        if kind == "parser-memory":  # the same load again and again: once it is enough to look at each of its allocations
            return 1 if self.name == "load" else 97
        # A thread that waits for a schedule looks every five seconds.
        return 1 + self.totals[kind] // MANY_LOCKS if kind.startswith("mutex-") else 1

    def faults(self):
        for kind, errors in ERRORS.items():
            for error in errors:
                name, _, count = error.partition("*")
                for call in range(1, self.totals[kind] + 1, self.step(kind)):
                    yield Fault(self, kind, call, int(count or 1), name)
        # A file system that knows no rename without replacing: two steps, each of which can fail. Then one that knows no
        # second names either.
        without = f"renameat2:1:1000000:{errno.EINVAL},"
        for kind, error, before in (("linkat", "EIO", ""), ("unlinkat", "EIO", ""), ("linkat", "EPERM", ""),
                                    ("renameat", "EIO", f"linkat:1:1000000:{errno.EPERM},")):
            for call in range(1, self.totals["renameat2"] + 1):
                yield Fault(self, kind, call, 1, error, without + before)


class Fault:
    def __init__(self, scenario, kind, call, count, error, before=""):
        self.scenario, self.kind, self.call, self.count, self.error, self.before = scenario, kind, call, count, error, before
        self.text, self.clean = scenario.full[count > 1], scenario.clean[count > 1]

    def plan(self):
        if self.error in ("short", "full"):
            plan = f"{self.kind}:{self.call}:1:short"
            return plan + (f",{self.kind}:{self.call + 1}:1:{errno.ENOSPC}" if self.error == "full" else "")
        return f"{self.before}{self.kind}:{self.call}:{self.count}:{getattr(errno, self.error)}"

    def __str__(self):
        return f"{self.scenario.name} {self.plan()} ({self.error})"


class Result:
    """What a replay left behind."""

    def __init__(self, status, printed, directory, clean=None):
        self.status, self.printed = status, printed
        self.events, self._texts = [], None
        trace = directory / "trace"
        self.bytes = trace.read_bytes() if trace.exists() else b""
        try:
            same = clean is not None and self.bytes == clean.bytes
            self.events = clean.events if same else [json.loads(line) for line in self.bytes.splitlines()]
        except ValueError:
            self.status = f"torn trace, {status}"
        report = directory / "report"
        lines = report.read_text().splitlines() if report.exists() else []
        self.counts = {word: int(number) for word, number in (line.split() for line in lines)}
        journal = directory / "journal"
        self.journal = list(entries_of(journal.read_bytes())) if journal.exists() else []
        self.logged = [file.read_bytes() for file in (directory / "log").iterdir()]

    def of(self, event):
        return [one for one in self.events if one["event"] == event]

    def texts(self):
        if self._texts is None:
            self._texts = {line for one in self.events if one["event"] in ("log", "stdout")
                           for line in ([one["text"]] if one["event"] == "log" else one["text"].splitlines(True))}
        return self._texts

    def echoed(self):
        return "".join(one["text"] for one in self.of("stdout"))


def entries_of(journal):
    """The changes of files: a letter and a text."""
    position = 0
    while position < len(journal):
        end = journal.index(b"\n", position)
        what, size = journal[position:end].split()
        yield what.decode(), journal[end + 1:end + 1 + int(size)]
        position = end + 1 + int(size)


def log_entries(*contents):
    return collections.Counter(part for content in contents for part in re.split(rb"(?=Date:\d)", content)
                               if part.startswith(b"Date:"))


class Campaign:
    def __init__(self, build):
        self.build = build
        self.simulator = build / "bin" / "krx-agent-sim"
        self.library = build / "lib" / "libkrx-faults.so"
        for needed in (self.simulator, self.library):
            if not needed.exists():
                sys.exit(f"There is no {needed}: build it with its tests (cmake -DBUILD_TESTING=ON).")

    def replay(self, scenario, text, plans, clean=None):
        with tempfile.TemporaryDirectory(prefix="krx-faults-") as name:
            directory = pathlib.Path(name)
            for folder in ("log", "state"):
                (directory / folder).mkdir()
            source = HERE if (HERE / scenario.configuration).exists() else EXAMPLES
            shutil.copy(source / scenario.configuration, directory)
            (directory / "scenario").write_text(text)
            # By a link: the loader takes a blank in LD_PRELOAD for the end of a name.
            (directory / "libkrx-faults.so").symlink_to(self.library)
            environment = dict(os.environ, TZ="UTC", LD_PRELOAD=str(directory / "libkrx-faults.so"), KRX_FAULTS=",".join(plans),
                               KRX_FAULTS_REPORT="report", KRX_FAULTS_JOURNAL="journal",
                               ASAN_OPTIONS=f"verify_asan_link_order=0:exitcode=23:detect_leaks={scenario.leaks_count}",
                               UBSAN_OPTIONS="print_stacktrace=1",
                               LSAN_OPTIONS="print_suppressions=0")
            try:
                done = subprocess.run([self.simulator, "replay", "scenario", "--trace", "trace"], cwd=directory,
                                      env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
                return Result(done.returncode, done.stdout.decode(errors="replace"), directory, clean)
            except subprocess.TimeoutExpired:
                return Result("hangs", "", directory)

    def violations(self, fault, result):
        """What must not happen, whatever fails."""
        scenario, clean = fault.scenario, fault.clean
        if result.status != 0:
            yield f"exit status {result.status}\n{result.printed[-3000:]}"
            return
        if result.counts.get("made", 0) < 1:
            yield "the fault was not made"
        calls, clean_calls = result.of("call"), clean.of("call")
        if [one["verb"] for one in calls] != [one["verb"] for one in clean_calls]:
            yield "calls are missing: not all were answered"
        if len(result.events) > 2 * len(clean.events) + 100:
            yield f"{len(result.events)} events instead of {len(clean.events)}"
        yield from self.log_violations(result)
        yield from self.state_violations(scenario, result)
        if any(b"stand-in secret" in text for text in (result.bytes, *result.logged)):
            yield "the password was written"
        if fault.kind not in ECHO_MAY_BE_LOST:
            echoed = result.echoed()
            for one in clean_calls:
                words = re.match(r"(?:log \S+|audit) (.*)", one["verb"], re.S)
                if words and words.group(1) not in echoed:
                    yield f"not echoed: {words.group(1)!r}"
        if not fault.before:
            yield from self.proof_violations(result, clean)

    def log_violations(self, result):
        stream = b""
        for what, text in result.journal:
            if what == "W":
                stream += text
            elif what == "T":
                stream = stream[:stream.rfind(b"Date:")]
        accepted, found = log_entries(stream), log_entries(*result.logged)
        if accepted != found:
            missing, extra = accepted - found, found - accepted
            yield f"log entries missing {list(missing)}, torn or doubled {list(extra)}"

    def state_violations(self, scenario, result):
        for path, tag in STATE_FILES.items():
            texts = [text for text in scenario.written if text.startswith(tag)]
            there = bool(texts)
            for what, text in result.journal:
                text = text.decode(errors="replace")
                if what == "E" and text == PROOF_MARK:
                    break
                if what in "Pp" and text.startswith(tag):
                    texts.append(text)
                    there = there or what == "P"
                elif what == "U" and text.endswith("/" + path):
                    there = False
            # The first one shown is that before the proof, except in scenarios that show it themselves.
            shown = [one["text"] for one in result.of("file") if one["path"] == path and one["t"] >= scenario.proof_at]
            content = shown[0] or ""
            if there and not content.startswith(tag) and content != "no record":
                yield f"{path} lost its record: {content!r}"
            if content.startswith(tag) and not any(content.startswith(text) for text in texts):
                yield f"{path} holds a torn record: {content!r}"

    def proof_violations(self, result, clean):
        def of(replay):
            begin = max(i for i, one in enumerate(replay.events) if one.get("verb") == f"log force {PROOF_MARK}")
            events = replay.events[begin:]
            calls = [(one["verb"], one["result"]) for one in events if one["event"] == "call"][3:]
            connected = max((i for i, one in enumerate(events) if one.get("verb") == "connect 1 30"), default=0)
            polls = [round(one["t"] - events[connected]["t"]) for one in events[connected:] if one["event"] == "force-poll"]
            shown = [one["text"] for one in events if one["event"] == "file"][-1]
            return calls, polls, shown, any(b"Still at work" in text for text in replay.logged)

        found, wanted = of(result), of(clean)
        if found != wanted:
            yield f"does not work as before afterwards: {[one for one in zip(found, wanted) if one[0] != one[1]]}"

    def outcome(self, fault, result):
        calls, clean_calls = result.of("call"), fault.clean.of("call")
        if any(one["result"] != other["result"] for one, other in zip(calls, clean_calls)):
            return "a call answered its failure"
        if result.texts() - fault.clean.texts():
            return "a line told of it"
        if result.status != 0:
            return "a violation"
        return "no trace of it" if result.bytes == fault.clean.bytes else "something was left out"

    def run(self, fault):
        result = self.replay(fault.scenario, fault.text, [fault.plan()], fault.clean)
        problems = list(self.violations(fault, result))
        seen = {number for number, (kind, line) in enumerate(EXPECTED)
                if kind == fault.kind and any(line in text for text in result.texts() - fault.clean.texts())}
        return fault, self.outcome(fault, result), problems, seen


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--faults", type=int)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="")
    options = parser.parse_args()
    campaign = Campaign(options.build.resolve())
    paths = sorted(HERE.glob("*.scenario")) + sorted(EXAMPLES.glob("*.scenario"))
    pool = concurrent.futures.ThreadPoolExecutor(options.jobs)
    scenarios = list(pool.map(lambda path: Scenario(path, campaign), paths))
    faults = [fault for scenario in scenarios for fault in scenario.faults() if options.only in str(fault)]
    whole = options.faults is None or options.faults >= len(faults)
    if not whole:
        faults = [faults[i * len(faults) // options.faults] for i in range(options.faults)]
    outcomes = collections.defaultdict(collections.Counter)
    seen, bad = set(), 0
    for fault, outcome, problems, lines in pool.map(campaign.run, faults):
        outcomes[fault.kind][outcome] += 1
        seen |= lines
        if problems:
            bad += 1
            print(f"VIOLATION {fault}", *problems, sep="\n    ", flush=True)
    for kind in ERRORS.keys() | outcomes.keys():
        outcomes[kind]
    print(f"{'call':15}{'faults':>8}   what they ended in")
    for kind, counts in sorted(outcomes.items(), key=lambda item: list(ERRORS).index(item[0]) if item[0] in ERRORS else 99):
        ends = ", ".join(f"{text}: {number}" for text, number in counts.most_common())
        print(f"{kind:15}{sum(counts.values()):8}   {ends}")
    print(f"{len(faults)} faults in {len(scenarios)} scenarios, {bad} of them with violations")
    missing = [EXPECTED[i] for i in range(len(EXPECTED)) if i not in seen] if whole and not options.only else []
    for kind, line in missing:
        print(f"MISSING a failing {kind} never led to {line!r}")
    return 1 if bad or missing else 0


if __name__ == "__main__":
    sys.exit(main())
