#!/usr/bin/env python3
"""A busy agent on the virtual clock for many days: does the process grow?

    long_run.py BUILD [--days N] [--seed N]

Generates a scenario of connects, disconnects, audits, log lines, schedules and logger restarts, replays it and prints the
resident memory and the open descriptors of the simulator's process at the end of each day, as the modality script, which
the module runs, finds them. Exit status 1 when the last day's differ from the first one's by more than the allowance.
"""

import argparse
import pathlib
import random
import subprocess
import sys
import tempfile
import time

DAY = 86400
CLOCK_START = 1767225600  # 2026-01-01T00:00:00Z, where the virtual clock begins
ALLOWANCE = 128  # KiB of resident memory: how high the heap once stood depends on what came together

CONFIGURATION = """<Configuration>
<FileLogging><LogFilePath>log/agent.xml</LogFilePath><FileSize>20000</FileSize><LogRevisionDays>0</LogRevisionDays>
<LogLevel>trace</LogLevel></FileLogging>
<TunnelMessags><OpenMessage><Message>tunnel opened</Message></OpenMessage>
<CloseMessage><Message>tunnel closed</Message></CloseMessage><AbortMessage>all aborted</AbortMessage></TunnelMessags>
<FileMessages><OpenMessage><Message>transfer begun</Message></OpenMessage>
<CloseMessage><Message>transfer done</Message></CloseMessage></FileMessages>
<ListnerSet><RDListner>on</RDListner><TunnelListner>on</TunnelListner><FileListner>on</FileListner></ListnerSet>
<Script>if [ -s mark ]; then
  echo "$(cat mark) $(grep VmRSS: /proc/$PPID/status | tr -dc 0-9) $(ls /proc/$PPID/fd | wc -l)" >> samples; fi</Script>
<RSMResumeStatusFile>state/resume.xml</RSMResumeStatusFile></Configuration>
"""

START = ["start data-source state/schedule.xml", "start logger config.xml", "start rsm config.xml", "start web-service"]
STOP = ["stop rsm", "stop web-service", "stop logger"]


def schedule(number, moment):
    start = time.gmtime(CLOCK_START + moment + number(300, 7200))
    return (f"command ScheduleRSM RSMStartDate={start.tm_year}:{start.tm_mon:02}:{start.tm_mday:02} "
            f"RSMStartTime={start.tm_hour:02}:{start.tm_min:02}:{start.tm_sec:02} "
            f"PollingRate={number(10, 60)} GracePeriod={number(1, 20)}")


def day(chance, first):
    """The actions of a day that begins at `first`, with the agent quiet at its end."""
    number = chance.randint
    kinds = [
        (25, lambda t: [f"connect {number(1, 20)} {number(5, 120)}"]),
        (12, lambda t: ["disconnect operator-7"]),
        (6, lambda t: [schedule(number, t)]),
        (4, lambda t: ["command ExitRSM"]),
        (40, lambda t: [f'audit "tunnel {chance.choice(["opened", "closed", "closed"])} by operator-{number(1, 9)}\\n"']),
        (20, lambda t: [f'audit "transfer {chance.choice(["begun", "done", "done"])}\\n"']),
        (3, lambda t: ['audit "all aborted\\n"']),
        (150, lambda t: [f'log {chance.choice(["trace", "info", "warn", "error", "force"])} "{"m" * number(1, 900)}\\n"']),
        (2, lambda t: [f'log info "{"m" * 12000}\\n"']),
        (5, lambda t: [f"enterprise {chance.choice(['refuse', 'accept', 'accept'])}"]),
        (4, lambda t: STOP + START),
    ]
    actions = []
    for count, make in kinds:
        for _ in range(count):
            moment = first + number(1, DAY - 7200)
            actions.append((moment, make(moment)))
    quiet = first + DAY - 3600
    actions += [(quiet, ["enterprise accept"] + STOP + START + ['audit "all aborted\\n"', "disconnect"])]
    mark = f"write mark {first // DAY + 1}"
    actions += [(first + DAY - 60, STOP + START + [mark, 'audit "tunnel opened\\n"', 'audit "all aborted\\n"', 'write mark ""'])]
    return sorted(actions, key=lambda action: action[0])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--days", type=int, default=30)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    chance = random.Random(options.seed)
    lines = [f"0 {action}" for action in START]
    for index in range(options.days):
        lines += [f"{moment} {action}" for moment, actions in day(chance, index * DAY) for action in actions]
    with tempfile.TemporaryDirectory(prefix="krx-long-run-") as name:
        directory = pathlib.Path(name)
        for folder in ("log", "state"):
            (directory / folder).mkdir()
        (directory / "config.xml").write_text(CONFIGURATION)
        (directory / "scenario").write_text("\n".join(lines) + "\n")
        simulator = options.build.resolve() / "bin" / "krx-agent-sim"
        began = time.monotonic()
        with subprocess.Popen([simulator, "replay", "scenario", "--trace", "-"], cwd=directory,
                              stdout=subprocess.PIPE) as replay:
            events = polls = 0
            for line in replay.stdout:
                events += 1
                polls += b'"event":"force-poll"' in line
        took = time.monotonic() - began
        samples = [tuple(map(int, line.split())) for line in (directory / "samples").read_text().splitlines()]
        archives = len(list((directory / "log").iterdir()))
    print(f"seed {options.seed}: {options.days} days, {len(lines)} actions, {events} events, {polls} force polls, "
          f"{archives} log files left, {took:.1f} s")
    print("end of day   resident KiB   descriptors")
    for number, memory, descriptors in samples:
        if number in (1, 2, 3, options.days) or number % 10 == 0:
            print(f"{number:10}{memory:15}{descriptors:14}")
    first, last = samples[0], samples[-1]
    grown = last[1] - first[1]
    print(f"grown by {grown} KiB and {last[2] - first[2]} descriptors since the end of the first day")
    return 0 if replay.returncode == 0 and len(samples) == options.days and grown <= ALLOWANCE and last[2] == first[2] else 1


if __name__ == "__main__":
    sys.exit(main())
