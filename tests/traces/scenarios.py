"""Scenarios of what an agent might do in an hour or two, at random: the same number gives the same scenario."""

import random

PATHS = ["state/schedule.xml", "state/resume.xml", "log/r.xml", "log/r2026_3_1_10_0_0.xml", "log/absent.xml"]
AUDITS = ["tunnel opened", "tunnel closed", "desktop opened, and more\\n", "all aborted", "transfer begins\\n", "transfer ends",
          "nothing of interest\\n", ""]
LEVELS = ["trace", "info", "warn", "error", "force", "audit", "77"]
LOG_TEXTS = ["short", "a line\\n", "", "." * 200, "100% %s %d\\n", "two\\nlines\\n"]

CONFIGURATION = (
    "<R><FileLogging><LogFilePath>{path}</LogFilePath><FileSize>{size}</FileSize><LogRevisionDays>{days}</LogRevisionDays>"
    "<LogLevel>{level}</LogLevel><FileLogger>on</FileLogger></FileLogging><TunnelMessags><OpenMessage>"
    "<Message>tunnel opened</Message><Message>desktop opened</Message></OpenMessage><CloseMessage>"
    "<Message>tunnel closed</Message></CloseMessage><AbortMessage>all aborted</AbortMessage></TunnelMessags><FileMessages>"
    "<OpenMessage><Message>transfer begins</Message></OpenMessage><CloseMessage><Message>transfer ends</Message></CloseMessage>"
    "</FileMessages><ListnerSet><RDListner>{rd}</RDListner><TunnelListner>{tunnel}</TunnelListner>"
    "<FileListner>{file}</FileListner></ListnerSet><Script>{script}</Script>"
    "<RSMResumeStatusFile>{resume}</RSMResumeStatusFile></R>")


class Scenario:
    def __init__(self, number):
        self.random = random.Random(number)
        self.lines = ["clock 2026-03-01T10:00:00Z"]
        self.time = 0

    def add(self, words):
        self.lines.append(f"{self.time} {words}")

    def configuration(self):
        one = self.random.choice
        return CONFIGURATION.format(
            path=one(["log/r.xml", "log\\\\r.xml", "log/r", "no/where.xml"]),
            size=one(["0", "-5", "none", "1000000", "1000000"]), days=one(["0", "10", "30", "many"]),
            level=one(["trace", "info", "warn", "error", "force", "audit", ""]), rd=one(["1", "1", ""]),
            tunnel=one(["1", ""]), file=one(["1", "1", ""]),
            script=one(["exit 0", "exit 3", "echo spoken", ""]), resume=one(["state/resume.xml", "no/where/resume.xml"]))

    def schedule(self):
        one = self.random.choice
        moment = self.time + self.random.randint(-600, 3000)
        hours, rest = divmod(36000 + max(moment, 0), 3600)
        values = [f"RSMStartDate={one(['2026:03:01', '2026:03:01', '2026:02:30', '26:3:1', ''])}",
                  f"RSMStartTime={hours % 24:02}:{rest // 60:02}:{rest % 60:02}",
                  f"PollingRate={one(['10', '30', '45', '90', '0', 'x'])}",
                  f"GracePeriod={one(['1', '5', '10', '0', '-1'])}"]
        self.random.shuffle(values)
        return "command ScheduleRSM " + " ".join(values[:self.random.randint(0, 4)])

    def step(self):
        one = self.random.choice
        kind = self.random.randint(0, 99)
        if kind < 12:
            self.add(f"connect {one(['1', '2', '5', '10', '0', '-3', 'x', 'null'])} {one(['5', '15', '30', '45', '90', '0', 'null'])}")
        elif kind < 20:
            self.add(one(["disconnect", "disconnect somebody", "command ExitRSM", "command ExitRSM", "command Unknown a=b"]))
        elif kind < 27:
            self.add(self.schedule())
        elif kind < 42:
            self.add(f'audit "{one(AUDITS)}"')
        elif kind < 54:
            self.add(f'log {one(LEVELS)} "{one(LOG_TEXTS)}"')
        elif kind < 62:
            self.add(one(["stop rsm", "stop logger", "stop data-source", "stop web-service", "stop rsm null"]))
        elif kind < 72:
            self.add(one(["start rsm config.xml", "start logger config.xml", "start data-source state/schedule.xml",
                          "start web-service", "start logger absent.xml", "start rsm null"]))
        elif kind < 78:
            self.add(one(["enterprise accept", "enterprise refuse", "enterprise delay 3", "enterprise delay 0",
                          "enterprise thread on", "enterprise thread off"]))
        elif kind < 83:
            self.add(one(["route on", "route off", "log-lock on", "log-lock off", "asset absent", "asset present",
                          f"poll-interval {self.random.randint(0, 600)}"]))
        elif kind < 86:
            self.add(one(["fail thread-construct", "fail thread-start"]))
        elif kind < 89:
            self.add("thread-destroy " + one(["sleep", "anywhere", "leave"]))
        elif kind < 91:
            self.add(f"clock-step {self.random.randint(-4000, 4000)}")
        elif kind < 93:
            self.add(f'call {one(["connect", "disconnect", "reboot"])} {one(["a=b", "pollDuration=3", ""])}')
        elif kind < 96:
            self.add(f'write config.xml "{self.configuration()}"')
        elif kind < 97:
            self.add("unload")
        else:
            self.add(f"show {one(PATHS)}")

    def text(self):
        self.add(f'write config.xml "{self.configuration()}"')
        self.add('write log/r2026_1_1_0_0_0.xml "old"')
        self.add(f"age log/r2026_1_1_0_0_0.xml {self.random.choice(['5', '20', '59.5'])}")
        starts = ["start data-source state/schedule.xml", "start rsm config.xml", "start logger config.xml", "start web-service"]
        self.random.shuffle(starts)
        for start in starts[:self.random.randint(2, 4)]:
            self.add(start)
        for _ in range(self.random.randint(10, 40)):
            self.time += self.random.choice([0, 0, 1, 3, 7, 20, 60, 180, 400])
            self.step()
        for path in PATHS:
            self.add(f"show {path}")
        self.add("show log/r2026_1_1_0_0_0.xml")
        self.lines.append(f"{self.time + 4000} end")
        return "\n".join(self.lines) + "\n"


def scenario(number):
    return Scenario(number).text()
