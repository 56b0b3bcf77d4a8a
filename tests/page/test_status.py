"""`status` for the files of an agent that does not run."""
import json
import os
import subprocess
import unittest

from session import Workspace, simulator


def resume(date="2026:03:01", time="10:00:00", rate="30", grace="10"):
    return (f"<ResumeRSM><RSMStartDate>{date}</RSMStartDate><RSMStartTime>{time}</RSMStartTime><PollingRate>{rate}</PollingRate>"
            f"<GracePeriod>{grace}</GracePeriod></ResumeRSM>")


def schedule(date="2026:03:02", time="09:00:00", end_date="2026:03:02", end="09:05:00", rate="30", grace="5"):
    return (f"<RSMExecuteCommand><RSMStartDate>{date}</RSMStartDate><RSMStartTime>{time}</RSMStartTime><RSMEndDate>{end_date}</RSMEndDate>"
            f"<RSMEndTime>{end}</RSMEndTime><PollingRate>{rate}</PollingRate><GracePeriod>{grace}</GracePeriod></RSMExecuteCommand>")


class StatusTest(unittest.TestCase):
    def ask(self, workspace, clock, *options, zone="UTC"):
        done = subprocess.run([simulator(), "status", "--config", "zephan-config.xml", "--schedule", "state/schedule.xml", "--clock", clock, *options],
                              cwd=workspace.path, capture_output=True, text=True, timeout=60, env={**os.environ, "TZ": zone})
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_what_a_start_would_do(self):
        nothing = "A start now would not bring RSM back."
        rows = [
            # now, resume file, schedule file, sentence
            ("2026-03-01T10:04:00Z", None, None, nothing),
            ("2026-03-01T10:04:00Z", "", "", nothing),
            ("2026-03-01T10:04:00Z", resume(), None, "A start now would resume RSM for 6 minutes at one poll every 30 s."),
            ("2026-03-01T10:04:10Z", resume(), None, "A start now would resume RSM for 5 minutes at one poll every 30 s."),
            ("2026-03-01T10:09:59Z", resume(), None, "A start now would resume RSM for 0 minutes at one poll every 30 s."),
            ("2026-03-01T10:10:00Z", resume(), None, nothing),
            ("2026-03-01T10:04:00Z", resume(grace="05") + "behind it", None, "A start now would resume RSM for 1 minute at one poll every 30 s."),
            ("2026-03-01T10:04:00Z", " " + resume(), None, nothing),
            ("2026-03-01T10:04:00Z", resume(rate="0"), None, nothing),
            ("2026-03-01T10:04:00Z", "<ResumeRSM></ResumeRSM>", None, nothing),
            ("2026-03-01T10:04:00Z", None, schedule(), "A start now would wait for the schedule of 2026-03-02 09:00:00 GMT: 5 minutes at one poll every 30 s."),
            ("2026-03-01T10:04:00Z", resume(), schedule(),
             "A start now would resume RSM for 6 minutes at one poll every 30 s, and wait for the schedule of 2026-03-02 09:00:00 GMT."),
            ("2026-03-02T09:00:00Z", None, schedule(), "A start now would go on with the schedule of 2026-03-02 09:00:00 GMT for 5 minutes at one poll every 30 s."),
            ("2026-03-02T09:02:30Z", resume("2026:03:02", "09:00:00"), schedule(),
             "A start now would go on with the schedule of 2026-03-02 09:00:00 GMT for 2 minutes at one poll every 30 s."),
            ("2026-03-02T09:05:00Z", None, schedule(), nothing),
            ("2026-03-01T10:04:00Z", None, schedule(rate="x"), nothing),
            ("2026-03-01T10:04:00Z", None, "\n" + schedule(), nothing),
        ]
        for clock, resumed, scheduled, sentence in rows:
            with self.subTest(clock, resume=resumed, schedule=scheduled), Workspace() as workspace:
                for name, text in (("resume.xml", resumed), ("schedule.xml", scheduled)):
                    if text is not None:
                        (workspace.path / "state" / name).write_text(text)
                before = sorted((file.name, file.read_bytes()) for file in (workspace.path / "state").iterdir())
                self.assertEqual(self.ask(workspace, clock).splitlines()[0], sentence)
                told = json.loads(self.ask(workspace, clock, "--json"))
                self.assertEqual(told["sentence"], sentence)
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
                told = json.loads(self.ask(workspace, clock, "--json"))
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
            self.assertEqual(self.ask(workspace, "2026-03-01T10:04:00Z", zone="CET-1"),
                             "A start now would resume RSM for 6 minutes at one poll every 30 s, and wait for the schedule of 2026-03-02 09:00:00 GMT.\n"
                             "  now            2026-03-01 10:04:00 GMT (2026-03-01 11:04:00 CET)\n"
                             "  last known     RSM of 10 minutes at one poll every 30 s, begun 2026-03-01 10:00:00 GMT (2026-03-01 11:00:00 CET), 6 minutes left\n"
                             "  next schedule  2026-03-02 09:00:00 GMT (2026-03-02 10:00:00 CET), 5 minutes at one poll every 30 s\n")

    def test_command_line(self):
        with Workspace() as workspace:
            self.assertEqual(workspace.run("status")[0], 2)
            self.assertEqual(workspace.run("status", "zephan-config.xml")[0], 2)
            self.assertEqual(workspace.run("status", "--schedule", "missing")[0], 0)
            status, said = workspace.run("status", "--config", "missing.xml")
            self.assertEqual(status, 1)
            self.assertIn("missing.xml", said)


if __name__ == "__main__":
    unittest.main()
