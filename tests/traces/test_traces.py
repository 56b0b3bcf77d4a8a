"""Replays every example, every scenario with a kept trace and those beside this file (on Windows 40 made at random, too, or as many as
SCENARIOS says in the environment) by two builds of the simulator, and compares the traces byte for byte, with what was printed and, on
POSIX, with the files and their times:

    test_traces.py SOURCE_DIRECTORY BUILD_TREE OTHER_BUILD_TREE EMULATOR... [--only NAME]

The traces of Windows may differ for these reasons alone, which the test takes out of the comparison:
- A text file of Windows ends its lines with CR LF: in what `show` finds of the log file, and in what a command prints.
- A script is in the language of the system's own command interpreter: scenarios whose script is more than a plain command
  get one that does the same.
- Windows opens no path of 260 characters or more: names that are that long are shortened, on both systems.
- Lines that are longer fill a log sooner: the logs of the scenarios beside this file may grow larger, on both systems.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import scenarios

NUMBERS = range(1, 1 + int(os.environ.get("SCENARIOS") or 40))
SCRIPTS = {b'echo "the script"; test ! -e fail': b"echo the script&amp; if exist fail exit 1",
           b'echo "[modality script: remote access begins]"': b"echo [modality script: remote access begins]"}
LONG_NAME = re.compile(b"n{100,}")
FILE_SIZE = re.compile(b"<FileSize>2000<")
ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"  # Windows' C library has other rules for summer time
TIMEOUT = 120  # seconds


class Build:
    def __init__(self, tree, emulator=()):
        tree = pathlib.Path(tree).absolute()
        self.is_windows = (tree / "bin" / "krx-agent-sim.exe").exists()
        self.command = [*emulator, tree / "bin" / ("krx-agent-sim.exe" if self.is_windows else "krx-agent-sim"), "replay"]
        self.library = None if self.is_windows else tree / "lib"

    def replay(self, texts, zone, scenario, module):
        """The trace; what was printed, with the exit status; and the names of the files, on POSIX with their contents and times."""
        with tempfile.TemporaryDirectory(prefix="zephan-test-") as folder:
            place = pathlib.Path(folder)
            (place / "log").mkdir()
            (place / "state").mkdir()
            for name, text in texts.items():
                for script, windows_script in SCRIPTS.items() if self.is_windows else ():
                    text = text.replace(script, windows_script)
                (place / name).write_bytes(text)
            (place / "test.scenario").write_bytes(scenario)
            with_module = ["--module", self.library / module] if self.library else []
            with open(place / "printed", "w+b") as output:  # no pipe: services that Wine starts would keep it open
                try:
                    run = subprocess.run([*self.command, "test.scenario", "--trace", "test.jsonl", *with_module], cwd=place,
                                         env={"TZ": zone, "PATH": os.environ["PATH"], "HOME": folder}, timeout=TIMEOUT,
                                         stdout=output, stderr=subprocess.STDOUT, check=False)
                    printed = f"exit status {run.returncode} {(place / 'printed').read_text(errors='replace')}"
                except subprocess.TimeoutExpired:
                    printed = "no end"
            trace = place / "test.jsonl"
            files = {str(file.relative_to(place)): file for part in ("log", "state") for file in sorted((place / part).rglob("*"))}
            return (trace.read_bytes() if trace.exists() else b"", printed.strip(),
                    {name: file.is_file() and (int(file.stat().st_mtime), file.read_bytes()) for name, file in files.items()})


def without_carriage_returns(trace):
    lines = trace.split(b"\n")
    return b"\n".join(line.replace(rb"\r\n", rb"\n") if b'"event":"file"' in line or b'"event":"stdout"' in line else line
                      for line in lines)


def difference(here, there):
    """Where the traces part, in a few lines; empty when they do not."""
    for number, (kept, now) in enumerate(zip(here.split(b"\n"), there.split(b"\n")), 1):
        if kept != now:
            column = next((i for i, (a, b) in enumerate(zip(kept, now)) if a != b), min(len(kept), len(now)))
            start = max(column - 80, 0)
            return (f"  line {number}, column {column + 1}\n  here    {kept[start:column + 80].decode(errors='replace')}\n"
                    f"  there   {now[start:column + 80].decode(errors='replace')}\n")
    return "" if len(here) == len(there) else "  one trace is longer\n"


def main(arguments):
    only = arguments[arguments.index("--only") + 1] if "--only" in arguments else None
    source, tree, other_tree, *emulator = arguments[:arguments.index("--only")] if only else arguments
    here, there = Build(tree), Build(other_tree, emulator)
    folders = [pathlib.Path(source) / folder for folder in ("examples", "tests/golden", "tests/traces", "tests/golden/simulator")]
    if there.is_windows:
        folders.pop()  # they need another module
    texts = {file.name: file.read_bytes() for folder in folders for file in folder.glob("*.xml")}
    work = {file.stem: (file.read_bytes(), "libfake-module.so" if folder.name == "simulator" else "libZephanRSMLogger.so")
            for folder in folders for file in sorted(folder.glob("*.scenario"))}
    others = {}  # texts of the scenarios that are not replayed with `texts`
    if there.is_windows:
        larger = {name: FILE_SIZE.sub(b"<FileSize>1000000<", text) for name, text in texts.items()}
        others = dict.fromkeys((file.stem for file in folders[2].glob("*.scenario")), larger)
        work.update({f"random-{number}": (scenarios.scenario(number).encode(), "libZephanRSMLogger.so") for number in NUMBERS})
        work = {name: (LONG_NAME.sub(b"n" * 100, scenario), module) for name, (scenario, module) in work.items()}
    if only:
        work = {only: work[only]}

    def compare(name):
        zone = "UTC" if there.is_windows else ZONE
        own = others.get(name, texts)
        trace, printed, files = here.replay(own, zone, *work[name])
        other_trace, other_printed, other_files = there.replay(own, zone, *work[name])
        if there.is_windows:
            other_trace = without_carriage_returns(other_trace)
            files, other_files = sorted(files), sorted(other_files)
        found = difference(trace, other_trace)
        if (printed, files) != (other_printed, other_files):
            found += f"  here    {printed} {files}\n  there   {other_printed} {other_files}\n"
        return name, found if trace else "  there is no trace\n", len(files)

    failed = count = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for name, found, file_count in pool.map(compare, work):
            count += file_count
            if found:
                failed += 1
                print(f"{name}\n{found}", flush=True)
    print(f"{len(work)} scenarios and {count} files, {failed} scenarios with another trace")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
