"""Replays every example, every scenario with a kept trace, and 200 scenarios made at random, on this system and on Windows,
and compares the traces byte for byte:

    test_traces.py SOURCE_DIRECTORY POSIX_SIMULATOR WINDOWS_SIMULATOR... [--only NAME]

They may differ for these reasons alone, which the test takes out of the comparison:
- A text file of Windows ends its lines with CR LF: in what `show` finds of the log file, and in what a command prints.
- A script is in the language of the system's own command interpreter: scenarios whose script is more than a plain command
  get one that does the same.
- Windows opens no path of 260 characters or more: names that are that long are shortened, on both systems.
"""

import concurrent.futures
import pathlib
import re
import subprocess
import sys
import tempfile

import scenarios

NUMBERS = range(1, 201)
SCRIPTS = {'echo "the script"; test ! -e fail': "echo the script&amp; if exist fail exit 1",
           'echo "[modality script: remote access begins]"': "echo [modality script: remote access begins]"}
LONG_NAME = re.compile("n{100,}")
TIMEOUT = 120  # seconds


def replay(simulator, texts, scenario, on_windows):
    """The trace, and what else was left: the exit status, what was printed, and the names of the files."""
    with tempfile.TemporaryDirectory(prefix="zephan-test-") as folder:
        place = pathlib.Path(folder)
        (place / "log").mkdir()
        (place / "state").mkdir()
        for name, text in texts.items():
            for script, windows_script in SCRIPTS.items() if on_windows else ():
                text = text.replace(script, windows_script)
            (place / name).write_text(text)
        (place / "test.scenario").write_text(scenario)
        try:
            run = subprocess.run([*simulator, "replay", "test.scenario", "--trace", "test.jsonl"], cwd=place,
                                 env={"TZ": "UTC", "PATH": "/usr/bin:/bin", "HOME": folder}, timeout=TIMEOUT,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace", check=False)
            printed = f"exit status {run.returncode} {run.stdout}"
        except subprocess.TimeoutExpired:
            printed = "no end"
        files = sorted(str(file.relative_to(place)) for folder in ("log", "state") for file in (place / folder).rglob("*"))
        trace = place / "test.jsonl"
        return trace.read_bytes() if trace.exists() else b"", f"{printed.strip()} {files}"


def without_carriage_returns(trace):
    lines = trace.split(b"\n")
    return b"\n".join(line.replace(rb"\r\n", rb"\n") if b'"event":"file"' in line or b'"event":"stdout"' in line else line
                      for line in lines)


def difference(posix, windows):
    """Where the traces part, in a few lines; empty when they do not."""
    for number, (kept, now) in enumerate(zip(posix.split(b"\n"), windows.split(b"\n")), 1):
        if kept != now:
            column = next((i for i, (a, b) in enumerate(zip(kept, now)) if a != b), min(len(kept), len(now)))
            start = max(column - 80, 0)
            return (f"  line {number}, column {column + 1}\n  here    {kept[start:column + 80].decode(errors='replace')}\n"
                    f"  Windows {now[start:column + 80].decode(errors='replace')}\n")
    return "" if len(posix) == len(windows) else "  one trace is longer\n"


def main(arguments):
    only = arguments[arguments.index("--only") + 1] if "--only" in arguments else None
    source, posix, *windows = arguments[:arguments.index("--only")] if only else arguments
    source = pathlib.Path(source)
    posix, *windows = (str(pathlib.Path(part).absolute()) for part in (posix, *windows))
    folders = [source / "examples", source / "tests" / "golden"]
    texts = {file.name: file.read_text() for folder in folders for file in folder.glob("*.xml")}
    work = {file.stem: file.read_text() for folder in folders for file in sorted(folder.glob("*.scenario"))}
    work.update({f"random-{number}": scenarios.scenario(number) for number in NUMBERS})
    work = {name: LONG_NAME.sub("n" * 100, scenario) for name, scenario in work.items()}
    if only:
        work = {only: work[only]}

    def compare(name):
        here, left_here = replay([posix], texts, work[name], False)
        there, left_there = replay(windows, texts, work[name], True)
        found = difference(here, without_carriage_returns(there))
        if left_here != left_there:
            found += f"  here    {left_here}\n  Windows {left_there}\n"
        if not here:
            found += "  there is no trace\n"
        return name, found

    failed = []
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for name, found in pool.map(compare, work):
            if found:
                failed.append(name)
                print(f"{name}\n{found}", flush=True)
    print(f"{len(work)} scenarios, {len(failed)} with another trace")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
