#!/usr/bin/env python3
"""Puts small faults into the module, one at a time, and tells which of them no test notices.

    tests/mutation/mutate.py --count 100 --seed 1

Works on copies of the repository below the work folder; the repository itself is only read. A run that was interrupted
goes on where it was when it is started again, as long as nothing in the repository has changed. What does not compile,
or compiles to the same library, does not count; a test that hangs has noticed the fault."""

import argparse
import collections
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

sys.dont_write_bytecode = True  # the repository is only read
import mutants

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD_SECONDS = 300
NOT_OF_THE_MODULE = "^(Package|Browser|Documents|Console|Status|ReportPage|LongRun|Header|Examples|Fleet)"
LIMITS = "ulimit -v 8000000; ulimit -f 2000000; exec \"$@\""  # KiB of memory, blocks of a file


def run(command, seconds, folder, environment=None):
    """Exit status and output; -1 when it took too long, then all that it started has been ended."""
    process = subprocess.Popen(["sh", "-c", LIMITS, "sh", *command], cwd=folder, env=environment, text=True,
                               errors="replace", stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, start_new_session=True)
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        return -1, f"no end within {seconds:.0f} s"
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Program:
    """A program of the tests, with all its cases, or a command."""

    def __init__(self, name, command, properties, build):
        self.name, self.command = name, command
        self.folder = properties.get("WORKING_DIRECTORY", build)
        self.skipped = int(properties.get("SKIP_RETURN_CODE", 0))
        self.variables = dict(setting.split("=", 1) for setting in properties.get("ENVIRONMENT", []))
        self.seconds = 0.0


class Tree:
    """A copy of the repository and its build."""

    def __init__(self, folder, jobs):
        self.source, self.build, self.temporary = folder / "source", folder / "build", folder / "tmp"
        self.jobs = jobs
        self.environment = dict(os.environ, TMPDIR=str(self.temporary), CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1")
        self.programs = []

    def copy(self, files):
        for name in files:
            target = self.source / name
            contents = (ROOT / name).read_bytes()
            if not target.exists() or target.read_bytes() != contents:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(contents)
                shutil.copymode(ROOT / name, target)
        for path in [p for p in self.source.rglob("*") if p.is_file()]:
            if str(path.relative_to(self.source)) not in files:
                path.unlink()

    def configure(self):
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        command = ["cmake", "-G", "Ninja", "-S", str(self.source), "-B", str(self.build), "-DBUILD_TESTING=ON",
                   "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O1", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                   "-DZEPHAN_WARNINGS_AS_ERRORS=OFF", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", *launcher]
        status, output = run(command, BUILD_SECONDS, self.source, self.environment)
        if status == 0:
            status, output = run(["ninja", f"-j{self.jobs}"], 12 * BUILD_SECONDS, self.build, self.environment)
        if status != 0:
            sys.exit(f"The repository does not build:\n{output[-3000:]}")

    def find_programs(self, without):
        _, output = run(["ctest", "--show-only=json-v1"], BUILD_SECONDS, self.build, self.environment)
        found = {}
        for test in json.loads(output[output.index("{"):])["tests"]:
            command, name = test["command"], test["name"]
            properties = {p["name"]: p["value"] for p in test.get("properties", [])}
            if "PASS_REGULAR_EXPRESSION" in properties:
                continue  # its exit status does not tell
            if any("--gtest_filter" in word for word in command):
                name = pathlib.Path(command[0]).name
                command = [command[0], "--gtest_fail_fast", "--gtest_brief=1"]
            found.setdefault(name, Program(name, command, properties, self.build))
        for program in found.values():
            path = pathlib.Path(program.command[0])
            built = path.is_relative_to(self.build)
            inputs = run(["ninja", "-t", "inputs", str(path.relative_to(self.build))], 60, self.build)[1] if built else ""
            if (not built or "zephan-objects" in inputs) and not re.search(without, program.name):
                self.programs.append(program)

    def compiled_sources(self):
        """The module's files that this build reads."""
        _, output = run(["ninja", "-t", "deps"], 60, self.build)
        names = set()
        for line in output.splitlines():
            path = pathlib.Path(os.path.normpath(self.build / line.strip()))
            if line.startswith(" ") and path.is_relative_to(self.source / "src"):
                names.add(str(path.relative_to(self.source)))
        return sorted(name for name in names if not name.startswith("src/platform/agent/"))

    def make(self):
        targets = ["ZephanRSMLogger", *(str(pathlib.Path(p.command[0]).relative_to(self.build)) for p in self.programs
                                        if p.command[0].startswith(str(self.build)))]
        return run(["ninja", f"-j{self.jobs}", *targets], BUILD_SECONDS, self.build, self.environment)

    def library(self):
        return hashlib.sha256((self.build / "lib/libZephanRSMLogger.so").read_bytes()).digest()

    def failing(self, seconds_of):
        """The program that fails first, and why; None when none does."""
        for program in self.programs:
            shutil.rmtree(self.temporary, ignore_errors=True)
            self.temporary.mkdir(parents=True)
            begin = time.monotonic()
            status, output = run(program.command, seconds_of(program), program.folder, self.environment | program.variables)
            program.seconds = time.monotonic() - begin
            if status not in (0, program.skipped):
                case = re.search(r"\[  FAILED  \] (\S+)", output)
                return program.name, case.group(1) if case else output[-300:].strip() if status == -1 else f"status {status}"
        return None

    def try_out(self, mutant, seconds_of, libraries):
        path = self.source / mutant.path
        source = path.read_text()
        try:
            path.write_text(source[:mutant.begin] + mutant.new + source[mutant.end:])
            if self.make()[0] != 0:
                return {"verdict": "does not compile"}
            if self.library() in libraries:
                return {"verdict": "same library"}
            noticed = self.failing(seconds_of)
            return {"verdict": "noticed", "by": noticed} if noticed else {"verdict": "survived"}
        finally:
            path.write_text(source)


def told(mutant):
    def short(text):
        text = " ".join(text.split())
        return text if len(text) < 90 else text[:87] + "..."
    return f"{mutant.path}:{mutant.line}: {mutant.kind}: {short(mutant.old)}  ->  {short(mutant.new) or 'nothing'}"


def judge(order, count, trees, kept, seconds_of, libraries):
    """Verdicts of the first `count` mutants that count, by mutant."""
    known = {}
    for line in kept.read_text().splitlines() if kept.exists() else ():
        entry = json.loads(line)
        known[tuple(entry["mutant"])] = entry
    verdicts, lock, running = {}, threading.Lock(), [0]
    with kept.open("a") as results:
        def work(tree):
            while True:
                with lock:
                    counted = sum(v["verdict"] in ("noticed", "survived") for v in verdicts.values())
                    if counted + running[0] >= count:
                        if running[0] == 0:
                            return
                        mutant = None
                    else:
                        mutant = next(order, None)
                        if mutant is None:
                            return
                        if tuple(mutant) in known:
                            verdicts[mutant] = known[tuple(mutant)]
                            continue
                        running[0] += 1
                if mutant is None:
                    time.sleep(0.2)
                    continue
                begin = time.monotonic()
                entry = tree.try_out(mutant, seconds_of, libraries)
                with lock:
                    running[0] -= 1
                    verdicts[mutant] = entry
                    results.write(json.dumps({"mutant": mutant, **entry}) + "\n")
                    results.flush()
                    by = " by " + " ".join(entry["by"]) if "by" in entry else ""
                    print(f"{time.monotonic() - begin:6.1f} s  {entry['verdict']}{by}: {told(mutant)}", flush=True)

        workers = [threading.Thread(target=work, args=(tree,), daemon=True) for tree in trees]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
    return verdicts


def report(verdicts):
    figures = collections.Counter(v["verdict"] for v in verdicts.values())
    by_kind = collections.defaultdict(collections.Counter)
    for mutant, entry in verdicts.items():
        by_kind[mutant.kind][entry["verdict"]] += 1
    print("\nSurvived:")
    for mutant in sorted(m for m, v in verdicts.items() if v["verdict"] == "survived"):
        print("  " + told(mutant))
    print("\n  kind          noticed  survived")
    for kind, counts in sorted(by_kind.items()):
        print(f"  {kind:12} {counts['noticed']:8} {counts['survived']:9}")
    counted = figures["noticed"] + figures["survived"]
    print(f"\n{counted} mutants, {figures['noticed']} noticed: {100 * figures['noticed'] / max(counted, 1):.0f} %. Not counted: "
          f"{figures['does not compile']} that do not compile, {figures['same library']} that change nothing.")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=100, help="mutants that count (100)")
    parser.add_argument("--seed", type=int, default=1, help="of the choice among all mutants (1)")
    parser.add_argument("--only", default="src", metavar="PATH", help="a file or folder of the module")
    parser.add_argument("--without", default="^$", metavar="REGEX",
                        help="programs of the tests to leave out, beside those that try packages, pages, documents and fleets")
    parser.add_argument("--trees", type=int, default=os.cpu_count(), help="mutants at a time (one for each core)")
    parser.add_argument("--work", type=pathlib.Path, default=ROOT / "build/mutation", help="work folder (build/mutation)")
    parser.add_argument("--list", action="store_true", help="say which mutants would be tried first, and try none")
    options = parser.parse_args()

    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, check=True, text=True,
                            stdout=subprocess.PIPE).stdout.splitlines()
    files = sorted({name for name in listed if (ROOT / name).is_file()})
    state = hashlib.sha256()
    for name in files:
        state.update(name.encode() + b"\0" + (ROOT / name).read_bytes() + b"\0")

    trees = [Tree((options.work / str(i)).resolve(), 1 if options.trees > 1 else 2) for i in range(options.trees)]
    for tree in trees:  # one after the other: the later ones may find their objects in the compiler's cache
        tree.jobs, jobs = os.cpu_count(), tree.jobs
        tree.copy(files)
        tree.configure()
        tree.jobs = jobs
    first = trees[0]
    only = os.path.normpath(options.only)
    names = [n for n in first.compiled_sources() if n == only or n.startswith(only + "/")]
    order = mutants.in_order([m for n in names for m in mutants.mutants_of(n, (first.source / n).read_text())], options.seed)
    if options.list:
        for _, mutant in zip(range(options.count), order):
            print(told(mutant))
        return

    for tree in trees:
        tree.find_programs(f"{NOT_OF_THE_MODULE}|{options.without}")
    failed = first.failing(lambda program: 1200)
    if failed:
        sys.exit("Without a fault fails " + " ".join(failed))
    seconds = {program.name: program.seconds for program in first.programs}
    for tree in trees:
        tree.programs.sort(key=lambda program: seconds[program.name])
    print("Programs, fast ones first: " + ", ".join(f"{p.name} {seconds[p.name]:.1f} s" for p in first.programs), flush=True)
    kept = options.work / f"results-{state.hexdigest()[:16]}.jsonl"
    libraries = {tree.library() for tree in trees}
    report(judge(order, options.count, trees, kept, lambda program: 20 + 10 * seconds[program.name], libraries))


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        sys.exit("\nInterrupted; start it again to go on.")
