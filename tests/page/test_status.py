"""`status`, of an agent that runs and for the files of one that does not."""
import collections
import datetime
import json
import os
import random
import re
import subprocess
import unittest

from session import Workspace, beside_it


def resume(date="2026:03:01", time="10:00:00", rate="30", grace="10"):
    return (f"<ResumeRSM><RSMStartDate>{date}</RSMStartDate><RSMStartTime>{time}</RSMStartTime><PollingRate>{rate}</PollingRate>"
            f"<GracePeriod>{grace}</GracePeriod></ResumeRSM>")


def schedule(date="2026:03:02", time="09:00:00", end_date="2026:03:02", end="09:05:00", rate="30", grace="5"):
    return (f"<RSMExecuteCommand><RSMStartDate>{date}</RSMStartDate><RSMStartTime>{time}</RSMStartTime><RSMEndDate>{end_date}</RSMEndDate>"
            f"<RSMEndTime>{end}</RSMEndTime><PollingRate>{rate}</PollingRate><GracePeriod>{grace}</GracePeriod></RSMExecuteCommand>")


class StatusTest(unittest.TestCase):
    def run_status(self, workspace, *options, zone="UTC"):
        return subprocess.run([beside_it("zephan-status"), *options], cwd=workspace.path, capture_output=True, text=True, timeout=60,
                              env={**os.environ, "TZ": zone})

    def ask(self, workspace, clock, *options, zone="UTC"):
        done = self.run_status(workspace, "--config", "zephan-config.xml", "--schedule", "state/schedule.xml", "--clock", clock, *options, zone=zone)
        self.assertEqual(done.stderr, "")
        return done.stdout, done.returncode

    def test_what_a_start_would_do(self):
        nothing = "A start now would not bring RSM back."
        rows = [
            # now, resume file, schedule file, sentence
            ("2026-03-01T10:04:00Z", None, None, nothing),
            ("2026-03-01T10:04:00Z", "", "", nothing),
            ("2026-03-01T10:04:00Z", resume(), None, "A start now would resume RSM for 6 minutes at one poll every 30 s."),
            ("2026-03-01T10:04:10Z", resume(), None, "A start now would resume RSM for 5 minutes at one poll every 30 s."),
            ("2026-03-01T09:00:00Z", resume(), None, "A start now would resume RSM for 10 minutes at one poll every 30 s."),
            ("2026-03-01T10:09:59Z", resume(), None, "A start now would resume RSM for less than a minute, too short for a poll."),
            ("2026-03-01T10:10:00Z", resume(), None, nothing),
            ("2026-03-01T10:04:00Z", resume(grace="05") + "behind it", None, "A start now would resume RSM for 1 minute at one poll every 30 s."),
            ("2026-03-01T10:04:00Z", " " + resume(), None, nothing, "resume"),
            ("2026-03-01T10:04:00Z", resume(rate="0"), None, nothing, "resume"),
            ("2026-03-01T10:04:00Z", "<ResumeRSM></ResumeRSM>", None, nothing, "resume"),
            ("2026-03-01T10:04:00Z", None, schedule(), "A start now would wait for the schedule of 2026-03-02 09:00:00 GMT: 5 minutes at one poll every 30 s."),
            ("2026-03-01T10:04:00Z", resume(), schedule(),
             "A start now would resume RSM for 6 minutes at one poll every 30 s, and wait for the schedule of 2026-03-02 09:00:00 GMT."),
            ("2026-03-02T09:00:00Z", None, schedule(), "A start now would go on with the schedule of 2026-03-02 09:00:00 GMT for 5 minutes at one poll every 30 s."),
            ("2026-03-02T09:02:30Z", resume("2026:03:02", "09:00:00"), schedule(),
             "A start now would go on with the schedule of 2026-03-02 09:00:00 GMT for 2 minutes at one poll every 30 s."),
            ("2026-03-02T09:05:00Z", None, schedule(), nothing),
            ("2026-03-01T10:04:00Z", None, schedule(rate="x"), nothing, "schedule"),
            ("2026-03-01T10:04:00Z", None, "\n" + schedule(), nothing, "schedule"),
        ]
        for clock, resumed, scheduled, sentence, *damaged in rows:
            with self.subTest(clock, resume=resumed, schedule=scheduled), Workspace() as workspace:
                for name, text in (("resume.xml", resumed), ("schedule.xml", scheduled)):
                    if text is not None:
                        (workspace.path / "state" / name).write_text(text)
                before = sorted((file.name, file.read_bytes()) for file in (workspace.path / "state").iterdir())
                said, status = self.ask(workspace, clock)
                self.assertEqual(said.splitlines()[0], sentence)
                self.assertEqual(status, 1 if damaged else 0 if sentence == nothing else 3 if "would wait" in sentence else 4)
                told = json.loads(self.ask(workspace, clock, "--json")[0])
                self.assertEqual(told["sentence"], sentence)
                self.assertEqual([name for name in ("resume", "schedule") if told[name]["problem"]], damaged)
                metrics, status = self.ask(workspace, clock, "--metrics")
                self.assertEqual((f'zephan_rsm_resume_pending {int("would resume" in sentence)}\n' in metrics, status), (True, 0))
                for name in ("configuration", "resume", "schedule"):
                    self.assertIn(f'zephan_file_state{{file="{name}",state="{told[name]["state"]}"}} 1\n', metrics)
                self.assertEqual(sorted((file.name, file.read_bytes()) for file in (workspace.path / "state").iterdir()), before)

    def test_what_it_says_is_what_the_start_does(self):
        """The same files, told and then started."""
        start = "0 start data-source state/schedule.xml\n0 start rsm zephan-config.xml\n0 start web-service\n"
        rows = [("2026-03-01T10:03:20Z", "resumes"), ("2026-03-01T10:11:00Z", "waits for the schedule"),
                ("2026-03-02T09:01:00Z", "goes on with the schedule"), ("2026-03-02T10:00:00Z", "nothing")]
        for clock, does in rows:
            with self.subTest(clock), Workspace() as workspace:
                workspace.replay("clock 2026-03-01T10:00:00Z\n" + start + "0 connect 10 30\n"
                                 "1 command ScheduleRSM RSMStartDate=2026:03:02 RSMStartTime=09:00:00 PollingRate=20 GracePeriod=4\n100 unload\n")
                told = json.loads(self.ask(workspace, clock, "--json")[0])
                self.assertEqual(told["start_now"]["does"], does)
                _, events = workspace.replay(f"clock {clock}\n" + start + "2 end\n")
                reports = [dict(event["properties"]) for event in events if event["event"] == "update-asset"]
                if does == "nothing":
                    self.assertEqual(reports, [])
                elif does == "resumes":
                    self.assertEqual((reports[-1]["RSM_MODE"], reports[-1]["RSM_GRACE_PERIOD"], reports[-1]["RSM_DELAY_PROFILE_GRACE_PERIOD"]),
                                     ("FORCE_POLL_GRACE", str(told["resume"]["record"]["minutes_left"]), "4"))
                elif does == "waits for the schedule":
                    self.assertEqual((reports[-1]["RSM_MODE"], reports[-1]["RSM_DELAY_PROFILE_START_TIME"]), ("NOT_ACTIVE", "2026-02-03 GMT 09:00:00"))
                else:
                    self.assertEqual((reports[-1]["RSM_MODE"], reports[-1]["RSM_GRACE_PERIOD"], reports[-1]["RSM_FORCED_POLLING_RATE"]),
                                     ("FORCE_POLL_GRACE", "3", "20"))

    def test_times_in_gmt_and_local(self):
        with Workspace() as workspace:
            (workspace.path / "state" / "resume.xml").write_text(resume())
            (workspace.path / "state" / "schedule.xml").write_text(schedule())
            self.assertEqual(self.ask(workspace, "2026-03-01T10:04:00Z", zone="CET-1")[0],
                             "A start now would resume RSM for 6 minutes at one poll every 30 s, and wait for the schedule of 2026-03-02 09:00:00 GMT.\n"
                             "  now            2026-03-01 10:04:00 GMT (2026-03-01 11:04:00 CET)\n"
                             "  last known     RSM of 10 minutes at one poll every 30 s, begun 2026-03-01 10:00:00 GMT (2026-03-01 11:00:00 CET), 6 minutes left\n"
                             "  next schedule  2026-03-02 09:00:00 GMT (2026-03-02 10:00:00 CET), 5 minutes at one poll every 30 s\n")

    def test_files_that_tell_nothing_are_named(self):
        rows = [
            # file, what is made there, state, what is said of it, exit status
            ("zephan-config.xml", os.unlink, "missing", "is missing", 1),
            ("zephan-config.xml", lambda path: path.write_text("<a"), "damaged", "is damaged: ", 1),
            ("state/resume.xml", os.mkdir, "unreadable", "cannot be read: is a directory", 1),
            ("state/schedule.xml", os.mkfifo, "unreadable", "cannot be read: is not a regular file", 1),
            ("state/schedule.xml", lambda path: path.write_text("<b>"), "no record", "is damaged: it holds no record", 1),
            ("state/schedule.xml", lambda path: path.write_text(schedule(rate="x")), "damaged", "is damaged: its PollingRate is of no use", 1),
            ("state/resume.xml", lambda path: path.write_text(""), "empty", "is empty", 0),
            ("state/resume.xml", lambda path: None, "missing", "is missing\n  next schedule  none: state/schedule.xml is missing\n  looked for in  /", 0),
        ]
        for file, make, state, said, status in rows:
            with self.subTest(file, said=said), Workspace() as workspace:
                make(workspace.path / file)
                self.assertIn(f"{file} {said}", self.ask(workspace, "2026-03-01T10:04:00Z")[0])
                told, ended = self.ask(workspace, "2026-03-01T10:04:00Z", "--json")
                told = json.loads(told)
                self.assertEqual(ended, status)
                self.assertEqual(told[{"zephan-config.xml": "configuration"}.get(file, os.path.basename(file).removesuffix(".xml"))]["state"], state)
                self.assertEqual("cannot be told" in told["sentence"], file == "zephan-config.xml" or state == "unreadable")
                metrics, ended = self.ask(workspace, "2026-03-01T10:04:00Z", "--metrics")
                self.assertEqual((ended, f'state="{state}"}} 1\n' in metrics), (0, True))
                with subprocess.Popen([beside_it("zephan-status"), "--watch", "--config", "zephan-config.xml", "--schedule", "state/schedule.xml"],
                                      cwd=workspace.path, stdout=subprocess.PIPE, text=True) as watching:
                    shown = [watching.stdout.readline() for _ in range(5)]
                    watching.terminate()
                self.assertIn(f"{file} {said}", "".join(shown))

    def test_from_a_directory_that_is_gone(self):
        with Workspace() as workspace:
            done = subprocess.run(["sh", "-c", 'mkdir gone && cd gone && rmdir ../gone && exec "$0" --schedule s.xml', beside_it("zephan-status")],
                                  cwd=workspace.path, capture_output=True, text=True, timeout=60)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertTrue(done.stdout.endswith("none: s.xml is missing\n"), done.stdout)

    def test_metrics_of_the_log(self):
        with Workspace() as workspace:
            for name, size, written in (("kelp-logs.xml", 10, 1700000100), ("kelp-logs2023_11_14_22_13_20.xml", 20, 1700000000), ("kelp-logs.txt", 40, 1800000000)):
                (workspace.path / "log" / name).write_text("x" * size)
                os.utime(workspace.path / "log" / name, (written, written))
            said = self.ask(workspace, "2026-03-01T10:04:00Z", "--metrics")[0]
            for line in ("last_entry_timestamp_seconds 1700000100", "size_bytes 10", "archives 1", "archives_size_bytes 20"):
                self.assertIn(f"\nzephan_log_{line}\n", said)

    def test_watch_tells_what_changes(self):
        with Workspace() as workspace:
            with subprocess.Popen([beside_it("zephan-status"), "--schedule", "state/schedule.xml", "--watch"], cwd=workspace.path,
                                  stdout=subprocess.PIPE, text=True) as watching:
                self.assertEqual([watching.stdout.readline() for _ in range(5)][0], "A start now would not bring RSM back.\n")
                (workspace.path / "state/new.xml").write_text(schedule(date="9000:01:01", end_date="9000:01:01"))
                os.rename(workspace.path / "state/new.xml", workspace.path / "state/schedule.xml")
                self.assertIn("would wait for the schedule of 9000-01-01", watching.stdout.readline())
                watching.terminate()

    def test_command_line(self):
        rows = [((), "no file to tell"), (("zephan-config.xml",), "unexpected argument zephan-config.xml"), (("--config",), "no value"),
                (("--config", "x", "--clock", "ten"), "not a time: ten"), (("--config", "x", "--watch", "--clock", "now"), "about the present"),
                (("--config", "x", "--metrics", "--json"), "a form of its own")]
        with Workspace() as workspace:
            for options, said in rows:
                done = self.run_status(workspace, *options)
                self.assertEqual((done.returncode, said in done.stderr), (2, True), done.stderr)
            said = self.run_status(workspace, "--schedule", "\x1b[2J\u202e").stdout
            self.assertIn("\\x1b[2J\\u202e is missing", said)
            self.assertEqual(workspace.run("status", "--json", "--config", "zephan-config.xml")[0], 2)
            self.assertIn("zephan-status", workspace.run("status")[1])


CLOCK = datetime.datetime(2026, 3, 1, 10, tzinfo=datetime.timezone.utc)
START = ["start data-source state/schedule.xml", "start logger zephan-config.xml", "start rsm zephan-config.xml", "start web-service"]


class SentencesTest(unittest.TestCase):
    """What `status` says in sessions of random orders comes true in what their traces go on to show."""

    def scenario(self, chance):
        """Orders, some questions behind the last one, and at last the end of any remote activity."""
        at, stepped, lines, asked = 0, 0, [f"0 {line}" for line in START], []
        for _ in range(chance.randint(1, 7)):
            at += chance.choice([10, 10, 35, 90, 400])
            clock = CLOCK + datetime.timedelta(seconds=at + stepped)
            start = clock + datetime.timedelta(seconds=chance.choice([30, 120, 400, 1500]))
            order = chance.choice([
                f"connect {chance.choice([0, 1, 5, 10, 30])} {chance.choice([7, 20, 30, 45, 60, 90])}",
                *[f"connect {chance.choice([5, 10, 30])} {chance.choice([20, 30])}"] * 5, "disconnect op", "command ExitRSM",
                f"command ScheduleRSM RSMStartDate={start:%Y:%m:%d} RSMStartTime={start:%H:%M:%S} PollingRate={chance.choice([20, 30, 50])} "
                f"GracePeriod={chance.choice([1, 4, 12])}",
                'audit "Remote tunnel opened"', 'audit "Remote tunnel opened"', 'audit "File transfer started"', 'audit "Remote tunnel closed"',
                'audit "File transfer finished"', 'audit "All tunnels aborted"', "enterprise delay 2.13", "enterprise refuse", "clock-step", "unload", "stop",
                "fail thread-start", "thread-destroy leave"])
            if order == "clock-step":
                stepped += (step := chance.choice([-3600, -40, 25, 900]))
                order += f" {step}"
            if order in ("unload", "stop"):
                lines += [f"{at} unload"] if order == "unload" else [f"{at} stop rsm", f"{at} stop logger"]
                if chance.random() < 0.8:
                    at += 10
                    lines += [f"{at} {line}" for line in START]
            else:
                lines.append(f"{at} {order}")
        for _ in range(4):
            at += chance.choice([2, 8, 35, 130, 400])
            asked.append(at + 0.5)
            lines.append(f"{at}.5 status")
        at += 400
        lines += [f'{at}.5 audit "{text}"' for text in ("All tunnels aborted", "File transfer finished", "File transfer finished")]
        return f"clock {CLOCK:%Y-%m-%dT%H:%M:%SZ}\n" + "\n".join(lines) + "\n", asked, at + 0.5, stepped

    def test_they_come_true(self):
        judged = collections.Counter()
        for seed in range(int(os.environ.get("SCENARIOS", "40"))):
            text, asked, closed, stepped = self.scenario(random.Random(seed))
            with self.subTest(seed), Workspace() as workspace:
                (workspace.path / "session.scenario").write_text(text)
                status, said = workspace.run("replay", "session.scenario", "--trace", "trace.jsonl")
                self.assertEqual(status, 0, said)
                answers = re.findall(r"^(\S.*)\n  now ", said, re.M)
                self.assertEqual(len(answers), len(asked), said)
                events = workspace.events()
                for at, sentence in zip(asked, answers):
                    with self.subTest(at=at, sentence=sentence):
                        judged[self.judge(sentence, at, events, closed, stepped)] += 1
        self.assertGreaterEqual(len(judged), 6, judged)  # kinds of sentences

    def test_sentences_that_are_easily_wrong(self):
        rows = [
            # what happens behind the starts, beginning of the sentence
            ("1 schedule 10:10:00 20 4\n6 connect 0 30\n8 status\n", "RSM is off and waits for its schedule of 2026-03-01 10:10:00 GMT: 4 minutes"),
            ("1 connect 10 30\n2 asset absent\n3 stop rsm\n4 schedule 10:01:00 20 4\n5 status\n",
             "RSM runs until about 2026-03-01 10:01:01 GMT, when its schedule of 2026-03-01 10:01:00 GMT: 4 minutes"),
            ("1 thread-destroy leave\n1 connect 10 30\n5 stop rsm\n5 stop logger\n" + "".join(f"9 {line}\n" for line in START) + "10 connect 10 20\n33 status\n",
             "RSM runs until about 2026-03-01 10:10:39 GMT, one poll every 20 s: 0 polls made, 31 to come."),
            ("1 audit opened\n2 connect 10 20\n12 connect 5 0\n16 status\n", "RSM runs until about 2026-03-01 10:00:22 GMT, one poll every 0 s: 0 polls made, 1"),
        ]
        for lines, sentence in rows:
            with self.subTest(lines), Workspace() as workspace:
                text = "".join(f"0 {line}\n" for line in START) + lines
                text = re.sub(r"schedule (\d\S+) (\d+) (\d+)", r"command ScheduleRSM RSMStartDate=2026:03:01 RSMStartTime=\1 PollingRate=\2 GracePeriod=\3", text)
                (workspace.path / "session.scenario").write_text("clock 2026-03-01T10:00:00Z\n" + text.replace("audit opened", 'audit "Remote tunnel opened"'))
                self.assertRegex(workspace.run("replay", "session.scenario", "--trace", "trace.jsonl")[1], "(?m)^" + re.escape(sentence))

    def judge(self, sentence, at, events, closed, stepped):
        def moment(text):
            return (datetime.datetime.fromisoformat(text + "+00:00") - CLOCK).total_seconds() - stepped

        def number(pattern):
            found = re.search(pattern, sentence)
            return int(found.group(1)) if found else None

        def paced(polls, rate):
            for earlier, later in zip(polls, polls[1:]):
                self.assertTrue(rate - 0.1 < later - earlier < rate + 5, (earlier, later))  # a report between them takes its time

        every = [event["t"] for event in events if event["event"] == "force-poll"]
        polls = [t for t in every if t > at]
        schedule = re.search(r"schedule of (\S+ \S+) GMT: (\d+) minutes? at one poll every (\d+) s", sentence)
        due, minutes, slow = (moment(schedule.group(1)), int(schedule.group(2)), int(schedule.group(3))) if schedule else (1e9, 0, 0)
        rate = number(r"(?<!at )one poll every (\d+) s")
        before = [t for t in polls if t <= due + 1]
        if sentence == "RSM is off." or "no thread" in sentence or re.match("The agent (was killed|stopped) at", sentence):
            self.assertEqual(polls, [])
        elif sentence.startswith("RSM is off and waits"):
            self.assertTrue(due <= polls[0] - slow < due + 10, (due, polls[0]))
            paced(polls, slow)
            if "keeps it polling" not in sentence:
                self.assertEqual(len(polls), 60 // slow * minutes)
        elif "as long as the remote activity" in sentence:
            began = moment(re.search(r"began at (\S+ \S+) GMT", sentence).group(1))
            self.assertTrue(any(0 <= event["t"] - began < 5 for event in events if event.get("verb", "").startswith("audit")) or stepped, began)
            during = [t for t in before if t <= closed]
            self.assertTrue(due < at or during[0] <= at + rate + 5, during)
            paced(during, rate)
            if not schedule:
                after = [t for t in polls if t > closed]
                self.assertEqual(len(after), number(r"more: (\d+) poll"))
                self.assertEqual(len(after), number(r"then for (\d+) minute") * 60 / rate if "minute" in sentence else len(after))
                paced(during[-1:] + after, rate)
        else:
            end = moment(re.search(r"about (\S+ \S+) GMT", sentence).group(1))
            to_come = number(r"(\d+) to come") if "to come" in sentence else 0 if "without a poll" in sentence else 1
            if to_come:
                self.assertTrue(abs(polls[to_come - 1] - end) <= 1, (polls[to_come - 1], end))
                paced(polls[:to_come], rate) if rate else None
            if "takes over" in sentence:
                self.assertTrue(due < end, (due, end))
                paced(polls[to_come - 1:to_come + 1], slow)
            elif schedule:
                self.assertTrue(len(polls) > to_come and polls[to_come] >= due, polls[to_come:])
            else:
                self.assertEqual(len(polls), to_come)
            made = number(r"(\d+) polls? made") or 0
            self.assertTrue(made <= len(every) - len(polls), made)
        return " ".join(sentence.split()[:3])


if __name__ == "__main__":
    unittest.main()
