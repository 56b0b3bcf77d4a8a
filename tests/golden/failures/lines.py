#!/usr/bin/env python3
"""The lines that tell of a failure, with their levels, and each answer with the line before it: each call that the module
makes in failures.scenario is failed in its turn, and whatever is logged and answered then and not otherwise is compared with
lines.txt.

    lines.py BUILD

With ZEPHAN_RENEW_GOLDEN in the environment the file is written anew."""

import concurrent.futures
import errno
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
KEPT = HERE / "lines.txt"
# What each kind of call ends with, and how many in a row: where the calls are many and alike, a whole row at once.
ERRORS = [
    ("memory", errno.ENOMEM, 1), ("memory", errno.ENOMEM, 5), ("mutex-init", errno.EAGAIN, 1), ("openat", errno.EMFILE, 5),
    ("lseek", errno.EIO, 5), ("pread", errno.EIO, 1), ("pwrite", errno.EIO, 1), ("fsync", errno.EIO, 1),
    ("renameat2", errno.EACCES, 1), ("unlinkat", errno.EACCES, 1), ("fdopendir", errno.EMFILE, 1),
    ("system", errno.EAGAIN, 1), ("mutex-unlock", errno.EPERM, 9), ("fstat", errno.EIO, 1),
]
MESSAGES = {"opened", "closed", "An entry that fills the file\n", "One that moves it away\n"}


def replay(build, plan):
    """The lines and answers, and how often each kind of call was made."""
    with tempfile.TemporaryDirectory(prefix="krx-lines-") as name:
        folder = pathlib.Path(name)
        for file in ("failures.scenario", "failures.xml"):
            (folder / file).symlink_to(HERE / file)
        # By a link: the loader takes a blank in LD_PRELOAD for the end of a name.
        library = folder / "libkrx-faults.so"
        library.symlink_to(build / "lib" / library.name)
        environment = dict(os.environ, TZ="UTC", LD_PRELOAD=str(library), KRX_FAULTS=plan, KRX_FAULTS_REPORT="report")
        for directory in ("log", "state"):
            (folder / directory).mkdir()
        subprocess.run([build / "bin" / "krx-agent-sim", "replay", "failures.scenario", "--trace", "trace"], cwd=folder,
                       env=environment, stdout=subprocess.DEVNULL, timeout=60, check=True)
        events = [json.loads(line) for line in (folder / "trace").read_bytes().splitlines()]
        counts = dict(line.split() for line in (folder / "report").read_text().splitlines())
        # Longest first, since a longer one may hold a shorter one. The messages of `log` and `audit` are not the module's.
        lines = sorted({one["text"] for one in events if one["event"] == "log" and one["text"]} | MESSAGES, key=len, reverse=True)
        told, last = set(), None
        for one in events:
            if one["event"] == "log" and not one["text"].startswith(" RSM_"):  # the profile goes with the time
                last = f"{one['level']} {json.dumps(one['text'])}"
                told.add(last)
            elif one["event"] == "stdout":
                text = one["text"]
                for line in lines:
                    text = text.replace(line, "\0")
                for rest in filter(None, text.split("\0")):
                    told.add("stdout " + json.dumps(re.sub(r"^(.+?)\1+$", r"\1", rest, flags=re.DOTALL)))
            elif one["event"] == "call":
                told.add(f"{one['verb']} {one['result']}" + (f" after {last}" if last else ""))
                last = None
        return told, counts


def main(build):
    usual, counts = replay(build, "")
    plans = [f"{kind}:{call}:{row}:{error}" for kind, error, row in ERRORS
             for call in range(1, int(counts[kind]) + 1, row if kind != "memory" else 1)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        told = set().union(*(lines for lines, _ in pool.map(lambda plan: replay(build, plan), plans))) - usual
    found = "".join(sorted(f"{line}\n" for line in told))
    if os.environ.get("ZEPHAN_RENEW_GOLDEN"):
        KEPT.write_text(found)
    kept = KEPT.read_text()
    for line in sorted(set(found.splitlines()) ^ set(kept.splitlines())):
        print("not any more:" if line in kept.splitlines() else "new:", line)
    print(f"{len(plans)} failures, {len(told)} lines")
    return found != kept


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
