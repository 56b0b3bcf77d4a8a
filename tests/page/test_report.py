"""The report page without a browser: what it holds, and how it is made."""
import csv
import json
import os
import re
import unittest

from session import EXAMPLES, Workspace, data_of, events_of

# Everything that may end a script element, begin another one, or break a line of a script.
HOSTILE = '</script><script>document.title="taken"</script><!-- & \\" \u2028 ]]> \u202e</SCRIPT >'


class ReportTest(unittest.TestCase):
    def test_page_holds_every_event_of_the_trace(self):
        for scenario in sorted(EXAMPLES.glob("*.scenario")):
            if scenario.name == "service-visit-short.scenario":
                continue  # for the real clock
            with self.subTest(scenario.name), Workspace() as workspace:
                page, events = workspace.replay(scenario)
                data = data_of(page)
                self.assertEqual(events_of(data), events)
                self.assertEqual(data["events"], len(events))

    def test_page_of_a_kept_trace_is_that_of_the_session(self):
        with Workspace() as workspace:
            page, events = workspace.replay(EXAMPLES / "service-visit.scenario")
            made = data_of(page)
            status, said = workspace.draw("trace.jsonl", "-o", "kept.html", "--clock", "2026-03-01T10:00:00Z")
            self.assertEqual((status, said), (0, ""))
            kept = data_of(workspace.path / "kept.html")
            self.assertEqual(kept["start"], made["clock"][0][1])
            for part in ("bodies", "runs", "texts", "events"):
                self.assertEqual(kept[part], made[part])
            # Another writer of JSON puts blanks between.
            respaced = "".join(json.dumps(event) + "\n" for event in events)
            (workspace.path / "trace.jsonl").write_text(respaced)
            self.assertEqual(workspace.draw("trace.jsonl", "-o", "again.html")[0], 0)
            self.assertEqual(events_of(data_of(workspace.path / "again.html")), events)

    def test_page_of_a_log_is_that_of_its_trace(self):
        def told(data):
            """Modes, reports, polls and activity, by the second."""
            found = []
            for event in events_of(data, dict):
                second = (event["t"] * 1000 + data["clock"][0][1]) // 1000
                if event["event"] == "update-asset":
                    found.append((second, event["result"] == 0, event["properties"] if event["result"] == 0 else None))
                elif event["event"] == "force-poll" or "tunnel" in event or "file" in event:
                    found.append((second, event["event"], event.get("tunnel"), event.get("file")))
            return sorted(found, key=str)
        for scenario in sorted(EXAMPLES.glob("*.scenario")):
            if scenario.name == "service-visit-short.scenario":
                continue  # for the real clock
            with self.subTest(scenario.name), Workspace() as workspace:
                text = scenario.read_text()
                if "start logger" not in text:
                    text = re.sub(r"(?m)^(\d+) +start rsm", r"\1 start logger zephan-config.xml\n\g<0>", text)
                page, _ = workspace.replay(text)
                self.assertEqual(workspace.draw("log/kelp-logs.xml", "--config", "zephan-config.xml", "-o", "log.html"), (0, ""))
                self.assertEqual(told(data_of(workspace.path / "log.html")), told(data_of(page)))

    def test_a_log_is_not_guessed_at(self):
        entry = "Date:2026-3-1 Time:{} :: {}\n".format
        with Workspace() as workspace:
            (workspace.path / "k.xml").write_bytes("".join([
                "cut off\n", entry("10:0:5", "Remote tunnel opened"), entry("10:0:7", "\n Zephan Agent is Force Polling  ..."),
                entry("9:0:0", " RSM_MODE = NOT_ACTIVE \n"), entry("9:0:3", "Custom HVK Extension: RSM Extension startup complete."),
                entry("9:0:3", " RSM_GRACE_PERIOD = 4"), entry("9:0:4", "\n Failed to Update Properties...... \n"), entry("9:0:4", "")]).encode() + b"\xff\x00</script>")
            self.assertEqual(workspace.draw("k.xml", "-o", "log.html"), (0, ""))
            data = data_of(workspace.path / "log.html")
            start = 1772359205000  # 2026-03-01 10:00:05
            self.assertEqual((data["log"], data["texts"], data["clock"]), (True, None, [[0, start], [2000, start - 3605000 - 2000]]))
            self.assertEqual([(event["t"], event.get("verb"), event.get("properties")) for event in events_of(data, dict) if event["event"] != "log"],
                             [(2, None, None), (5, "start rsm", None), (6, None, None), (6, None, [["RSM_MODE", "NOT_ACTIVE"], ["RSM_GRACE_PERIOD", "4"]])])

    def test_other_formats(self):
        with Workspace() as workspace:
            _, events = workspace.replay('0 start logger zephan-config.xml\n0 start rsm zephan-config.xml\n0 start web-service\n'
                                         '1 connect 1 30\n5 audit "Remote tunnel opened by ann.x"\n6 log info "=1+1, \\"x\\""\n9 call DisconnectRSM MemberId=bob-7\n'
                                         '20 disconnect carl_9\n30 audit "Remote tunnel closed by ann.x"\n')
            out = workspace.path / "out"
            self.assertEqual(workspace.draw("trace.jsonl", "--csv", "--clock", "2026-03-01T10:00:00Z", "-o", "out"), (0, ""))
            rows = list(csv.DictReader(out.read_text().splitlines()))
            self.assertEqual([(float(row["t"]), row["event"]) for row in rows], [(event["t"], event["event"]) for event in events])
            self.assertEqual([row["mode"] for row in rows if row["event"] == "update-asset"],
                             [dict(event["properties"])["RSM_MODE"] for event in events if event["event"] == "update-asset"])
            self.assertEqual([(row["time"], row["text"], row["tunnel"]) for row in rows if row["text"].startswith("audit")],
                             [("2026-03-01T10:00:05.000Z", "audit Remote tunnel opened by ann.x", "open"), ("2026-03-01T10:00:30.000Z", "audit Remote tunnel closed by ann.x", "close")])
            self.assertEqual(workspace.draw("trace.jsonl", "log/kelp-logs.xml", "--perfetto", "-o", "out"), (0, ""))
            trace = json.loads(out.read_text())["traceEvents"]
            spans = [(event["ph"], event.get("name"), event["ts"]) for event in trace if event["ph"] in "BE" and event["tid"] == 2 and event["pid"] == 1]
            self.assertEqual(spans, [("B", "tunnel", 5000000), ("E", None, 30000000)])
            modes = [event["ph"] for event in trace if event["ph"] in "BE" and event["tid"] == 1]
            self.assertEqual(modes.count("B"), modes.count("E"))
            self.assertEqual(sum(event.get("name") == "poll" and event["pid"] == 2 for event in trace), sum(event["event"] == "force-poll" for event in events))
            for file in ("trace.jsonl", "log/kelp-logs.xml"):
                self.assertEqual(workspace.draw(file, "--config", "zephan-config.xml", "--redact", "-o", "out"), (0, ""))
                text = out.read_text()
                self.assertEqual([name for name in ("ann.x", "bob-7", "carl_9", "1+1") if name in text], [])
                self.assertEqual([event["tunnel"] for event in events_of(data_of(out), dict) if "tunnel" in event], ["open", "close"])

    def test_kept_traces_that_are_none(self):
        good = '{"t":1.000,"thread":"host","event":"force-poll"}\n'
        rows = [
            ("cut off at its end", good + good[:20], 0, "the last line is cut off and left out"),
            ("cut off in the middle", good + good[:20] + "\n" + good, 1, "bad.jsonl:2: is not an event of a trace"),
            ("another JSON", good + "[1]\n", 1, "bad.jsonl:2: is not an event of a trace"),
            ("no thread", good + '{"t":1.000,"event":"x"}\n', 1, "bad.jsonl:2: is not an event of a trace"),
            ("a time before the start", good.replace("1.000", "-1.000"), 1, "bad.jsonl:1: its time is out of range"),
            ("a known event long after", good + good.replace("1.000", "1e300"), 1, "bad.jsonl:2: its time is out of range"),
            ("nested without end", good + good.replace("}", ',"x":' + "[" * 300000 + "]" * 300000 + "}") + good, 1, "bad.jsonl:2: is not an event of a trace"),
            ("bytes", "\x00\x01\n", 1, "bad.jsonl: is neither a log nor a trace"),
        ]
        for name, text, status, message in rows:
            with self.subTest(name), Workspace() as workspace:
                (workspace.path / "bad.jsonl").write_text(text)
                ended, said = workspace.draw("bad.jsonl", "-o", "page.html")
                self.assertEqual(ended, status)
                self.assertIn(message, said)
                if status == 0:
                    self.assertEqual(data_of(workspace.path / "page.html")["events"], 1)

    def test_command_line(self):
        rows = [
            (("trace.jsonl",), 2, "no file for the page"),
            ((), 2, "no FILE to draw"),
            (("s", "x", "y", "-o", "p"), 2, "more files than are shown at once: y"),
            (("missing.jsonl", "-o", "page.html"), 1, "missing.jsonl: No such file"),
            ((".", "-o", "page.html"), 1, ".: cannot be read"),
            (("s", "-o", "missing/page.html"), 1, "missing/page.html: No such file"),
            (("s", "-o", "p", "--clock", "ten"), 2, "not a time: ten"),
        ]
        for arguments, status, message in rows:
            with self.subTest(arguments), Workspace() as workspace:
                (workspace.path / "s").write_text("")
                ended, said = workspace.draw(*arguments)
                self.assertEqual(ended, status)
                self.assertIn(message, said)
        with Workspace() as workspace:
            status, said = workspace.run("report", "trace.jsonl", "-o", "page.html", "--clock", "ten")
            self.assertEqual((status, "zephan-session" in said), (2, True))
            (workspace.path / "s").write_text("0 end\n")
            self.assertEqual(workspace.run("replay", "s", "--report", "missing/page.html")[0], 1)

    def test_page_of_a_session_that_went_wrong(self):
        with Workspace() as workspace:
            (workspace.path / "s").write_text("0 start rsm zephan-config.xml\n1 age missing 1\n")
            status, _ = workspace.run("replay", "s", "--report", "page.html")
            self.assertEqual(status, 1)
            self.assertTrue(any(event.get("verb") == "start rsm zephan-config.xml"
                                for event in events_of(data_of(workspace.path / "page.html"))))

    def test_page_stands_alone_and_texts_stay_texts(self):
        with Workspace() as workspace:
            text = HOSTILE.replace("\\", "\\\\").replace('"', '\\"')
            page, events = workspace.replay(
                f'# note {HOSTILE}\n0 start logger zephan-config.xml\n0 log error "{text}"\n1 audit "{text}"\n1 write state/x "{text}"\n1 show state/x\n')
            self.assertEqual(events_of(data_of(page)), events)
            source = page.read_text(encoding="utf-8")
            self.assertEqual(len(re.findall(r"</script", source, re.I)), 2)
            self.assertNotIn("<!--", source)
            self.assertNotRegex(source, r"https?://|src=|@import|url\((?!['\"]?#)")

    def test_audit_texts_come_from_the_configuration(self):
        rows = [
            ("the example", None, ["Remote tunnel opened", "Desktop session opened"], "Desktop session opened", "open"),
            ("none", "<a/>", [], "Remote tunnel opened", None),
            ("blanks around", "<a><TunnelMessags><OpenMessage><Message>\t Remote </Message><Message> </Message></OpenMessage><AbortMessage>Away</AbortMessage></TunnelMessags></a>", ["Remote"],
             "Away: Remote tunnel opened", "abort"),
            ("unreadable", "<a", None, "", None),
            ("a FIFO", os.mkfifo, None, "", None),
            ("no configuration", "", None, "A Tunnel is opening", "open"),
            ("no configuration, both", "", None, "Tunnel opens, tunnel closes", None),
        ]
        for name, configuration, texts, message, meaning in rows:
            with self.subTest(name), Workspace() as workspace:
                start = "0 start rsm zephan-config.xml\n"
                if callable(configuration):
                    configuration(workspace.path / "other.xml")
                elif configuration:
                    (workspace.path / "other.xml").write_text(configuration)
                workspace.replay((start if configuration != "" else "") + f'1 audit "{message}"\n')
                arguments = ["--config", "other.xml"] if configuration else []
                status, said = workspace.draw("trace.jsonl", "-o", "page.html", *arguments)
                if status != 0:
                    self.assertIn("other.xml: cannot be read", said)
                    self.assertIsNone(texts)
                    continue
                data = data_of(workspace.path / "page.html")
                self.assertEqual(data["texts"]["tunnelOpen"] if texts else data["texts"] and [], texts)
                self.assertEqual([body.get("tunnel") for body in data["bodies"] if body.get("verb", "").startswith("audit")], [meaning])


if __name__ == "__main__":
    unittest.main()
