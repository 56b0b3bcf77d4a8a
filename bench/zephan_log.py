#!/usr/bin/env python3
"""What reading a log costs: time and memory of zephan-log beside `cat` and `wc -l` on the same files.

    bench/zephan_log.py [PROGRAM] [--directory DIR] [--megabytes N ...] [--archives N]

PROGRAM is build/release/bin/zephan-log unless named. Writes two logs of 100 and 400 MB with archives of 50 MB into a
fresh directory below DIR (build) and removes it at the end. Each command runs three times, the fastest counts. With
--archives a log of N small archives is written instead, one every seven seconds up to now.
"""
import argparse
import datetime
import itertools
import os
import platform
import shutil
import subprocess
import tempfile
import time

MEGABYTE = 1_000_000
MESSAGES = ("\nZephan Agent is Force Polling  ...", "Remote tunnel opened by operator-7\n",
            " RSM_MODE = FORCE_POLL_ACTIVITY \n", "\n Properties Updated Succesfully.....\n",
            "File transfer started: firmware.bin\n", " RSM_START_TIME = 2026-01-03 GMT 10:00:05 \n")


def write_log(directory, megabytes, archive_megabytes=50):
    """Entries as the module writes them, three a second; the number of entries."""
    count, size, file = 0, 0, None
    path = os.path.join(directory, "kelp-logs.xml")
    start = datetime.datetime(2026, 3, 1)
    for _ in range(megabytes // archive_megabytes):
        if file:
            file.close()
            now = start + datetime.timedelta(seconds=count // 3)
            os.rename(path, path[:-4] + "%d_%d_%d_%d_%d_%d.xml" % now.timetuple()[:6])
        file, size = open(path, "w"), 0
        while size < archive_megabytes * MEGABYTE:
            now = start + datetime.timedelta(seconds=count // 3)
            entries = "".join("Date:%d-%d-%d Time:%d:%d:%d :: " % now.timetuple()[:6] + message for message in MESSAGES)
            file.write(entries)
            size += len(entries)
            count += len(MESSAGES)
    file.close()
    return count


def write_archives(directory, number):
    """A log of so many archives of seven entries each."""
    path = os.path.join(directory, "kelp-logs.xml")
    start = datetime.datetime.now().replace(microsecond=0) - datetime.timedelta(seconds=7 * number)
    for count in range(number + 1):
        entries = "".join("Date:%d-%d-%d Time:%d:%d:%d :: " % (start + datetime.timedelta(seconds=second)).timetuple()[:6] +
                          MESSAGES[second % len(MESSAGES)] for second in range(7 if count < number else 1))
        start += datetime.timedelta(seconds=7)
        name = path if count == number else path[:-4] + "%d_%d_%d_%d_%d_%d.xml" % start.timetuple()[:6]
        with open(name, "w") as file:
            file.write(entries)
        os.utime(name, (start.timestamp(), start.timestamp()))


def follow(program, path):
    """How many of 200 entries come that are written while the program follows the log, over 19 rotations; its peak memory."""
    child = subprocess.Popen([program, "--follow", "--last", "1", path], stdout=subprocess.PIPE, text=True)
    child.stdout.readline()  # it has listed the archives
    for number in range(200):
        now = datetime.datetime.now().timetuple()[:6]
        if number % 10 == 0 and number:
            names = (path[:-4] + "%d_%d_%d_%d_%d_%d" % now + f"{counter or ''}.xml" for counter in itertools.count())
            os.rename(path, next(name for name in names if not os.path.exists(name)))
        with open(path, "a") as file:
            file.write("Date:%d-%d-%d Time:%d:%d:%d :: " % now + f"entry {number}")
        time.sleep(0.02)
    time.sleep(5)
    memory = peak_memory(child.pid)
    child.terminate()
    came = [line.rsplit(" ", 1)[1] for line in child.stdout]
    return sum(entry == f"{number}\n" for number, entry in enumerate(came)), memory


def peak_memory(pid):
    """KiB so far. (The one in the kernel's final account counts what the child had before it became the command.)"""
    try:
        with open(f"/proc/{pid}/status") as status:
            return next((int(line.split()[1]) for line in status if line.startswith("VmHWM")), 0)
    except FileNotFoundError:
        return 0


def measure(command):
    """Seconds, seconds of processor time and peak memory in KiB of the fastest of three runs."""
    runs = []
    for _ in range(3):
        begin = time.monotonic()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
        pid, memory = 0, 0
        while pid == 0:
            memory = max(memory, peak_memory(child.pid))
            time.sleep(0.002)
            pid, status, used = os.wait4(child.pid, os.WNOHANG)
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode > 1:
            raise SystemExit(f"{command[0]} ended with {child.returncode}")
        runs.append((time.monotonic() - begin, used.ru_utime + used.ru_stime, memory))
    return min(runs)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", nargs="?", default="build/release/bin/zephan-log")
    parser.add_argument("--directory", default="build")
    parser.add_argument("--megabytes", type=int, nargs="+", default=(100, 400))
    parser.add_argument("--archives", type=int)
    options = parser.parse_args()
    print(f"{platform.platform()}, {os.cpu_count()} processors, load {os.getloadavg()[0]:.1f}; files are in the page cache")
    if options.archives:
        directory = tempfile.mkdtemp(prefix="zephan-log-", dir=options.directory)
        try:
            write_archives(directory, options.archives)
            print(f"\n{options.archives} archives\n{'':32}{'elapsed':>9}{'processor':>11}{'memory':>10}")
            for words in (["--last", "1"], ["--since", "-1m"], ["--last", "100"], []):
                elapsed, processor, memory = measure([options.program, os.path.join(directory, "kelp-logs.xml"), *words])
                print(f"{'zephan-log ' + ' '.join(words):32}{elapsed:7.2f} s{processor:9.2f} s{memory:6} KiB")
            came, memory = follow(options.program, os.path.join(directory, "kelp-logs.xml"))
            print(f"{'zephan-log --follow':32}{came:5} of 200 entries{memory:10} KiB")
        finally:
            shutil.rmtree(directory)
        return
    for megabytes in options.megabytes:
        directory = tempfile.mkdtemp(prefix="zephan-log-", dir=options.directory)
        try:
            count = write_log(directory, megabytes)
            files = sorted(os.path.join(directory, name) for name in os.listdir(directory))
            print(f"\n{megabytes} MB, {count} entries, {len(files)} files")
            print(f"{'':32}{'elapsed':>9}{'MB/s':>7}{'processor':>11}{'MB/s':>7}{'memory':>10}")
            log = [options.program, os.path.join(directory, "kelp-logs.xml")]
            for name, command in (("cat", ["cat", *files]), ("wc -l", ["wc", "-l", *files]),
                                  ("cat | wc -c", ["sh", "-c", 'cat "$@" | wc -c', "sh", *files]), ("zephan-log", log),
                                  ("zephan-log --json", [*log, "--json"]),
                                  ("zephan-log --grep tunnel", [*log, "--grep", "tunnel"]),
                                  ("zephan-log --grep 'bin$|^RSM'", [*log, "--grep", "bin$|^RSM"]),
                                  ("zephan-log --since 2027-01-01", [*log, "--since", "2027-01-01"]),
                                  ("zephan-log --last 10", [*log, "--last", "10"])):
                elapsed, processor, memory = measure(command)
                print(f"{name:32}{elapsed:7.2f} s{megabytes / elapsed:7.0f}{processor:9.2f} s"
                      f"{megabytes / max(processor, 0.001):7.0f}{memory:6} KiB")
        finally:
            shutil.rmtree(directory)


if __name__ == "__main__":
    main()
