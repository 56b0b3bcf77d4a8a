"""The report page in a browser: what it draws and counts, and how picture and table answer.

    KRX_AGENT_SIM=build/release/bin/krx-agent-sim VISITS=3000 /usr/bin/python3 -B tests/page/test_report_browser.py -k many_visits -k year

prints what a page with that many visits, and one with a year of polls, take of the processor's time.
"""
import os
import re
import unittest

import browser
from session import EXAMPLES, Workspace
from test_report import HOSTILE

KEYS = {"down": "\ue015", "home": "\ue011", "end": "\ue010"}


def expected(events):
    """What a trace holds, counted apart from the page."""
    reports = [event for event in events if event["event"] == "update-asset"]
    calls = [event for event in events if event["event"] == "call"]
    return {
        "polls": sum(event["event"] == "force-poll" for event in events),
        "accepted": sum(event["result"] == 0 for event in reports),
        "refused": sum(event["result"] != 0 for event in reports),
        "orders": sum(event["verb"].split()[0] in ("connect", "disconnect", "command", "call") for event in calls),
        "events": len(events),
    }


class ReportPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = cls.enterClassContext(browser.start())

    def setUp(self):
        self.workspace = self.enterContext(Workspace())

    def show(self, scenario):
        """Replays a scenario and opens its page: the trace's events."""
        path, events = self.workspace.replay(scenario)
        self.open(path)
        return events

    def open(self, path):
        self.page.get(f"file://{path}")
        self.assertEqual(self.page.get_log("browser"), [])

    def cost(self, act):
        """Milliseconds of processor time that the page takes for something."""
        def spent():
            return next(one["value"] for one in self.page.execute_cdp_cmd("Performance.getMetrics", {})["metrics"] if one["name"] == "TaskDuration")
        self.page.execute_cdp_cmd("Performance.enable", {"timeDomain": "threadTicks"})
        before = spent()
        act()
        self.page.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(arguments[0])))")
        return round((spent() - before) * 1000)

    def ask(self, script, *arguments):
        return self.page.execute_script("return " + script, *arguments)

    def find(self, selector):
        return self.page.find_elements("css selector", selector)

    def counted(self):
        return self.ask("""{polls: page.model.pollCount, events: page.model.size,
            accepted: page.story.reports.filter(one => one.accepted).length,
            refused: page.story.reports.filter(one => !one.accepted).length,
            orders: page.story.flags.filter(one => one.type === 'order').length}""")

    def bands(self):
        return self.ask("page.story.bands.map(band => [band.mode, band.from / 1000, band.to === null ? null : band.to / 1000])")

    def test_counts_of_the_page_are_those_of_the_trace(self):
        for name in ("service-visit", "kill-and-resume", "schedule-during-connect", "enterprise-refuses",
                     "disconnect-in-the-middle", "connect-90-seconds", "schedule-survives-restart"):
            with self.subTest(name):
                self.setUp()
                events = self.show(EXAMPLES / f"{name}.scenario")
                want = expected(events)
                self.assertEqual(self.counted(), want)
                # What is drawn, too: all of these are short enough for each mark to have its place.
                places = {event["t"] for event in events if event["event"] == "update-asset" and event["result"] == 0}
                self.assertEqual(len(self.find("#picture .accepted")), len(places))
                self.assertEqual(len(self.find("#picture .refused")), want["refused"])
                self.assertEqual(len(self.find("#picture .flag.order")), want["orders"])

    def test_bands_of_the_service_visit(self):
        self.show(EXAMPLES / "service-visit.scenario")
        self.assertEqual(self.bands(), [["off", 0, 5], ["grace", 5, 30], ["activity", 30, 260], ["grace", 260, 365],
                                        ["off", 365, 450], ["none", 450, None]])
        self.assertEqual(self.ask("[page.story.tunnels.list, page.story.files.list].map(list => list.map(one => [one.from, one.to]))"),
                         [[[30000, 230000]], [[200000, 260000]]])
        self.assertEqual(self.find("#picture .poll")[0].get_attribute("d").count("M"), 24)
        told = self.find("#sessions li")
        self.assertEqual(len(told), 1)
        self.assertIn("connect 2 15 \u00b7 24 polls \u00b7 remote activity for 3 min 50 s", told[0].text)

    def test_a_kill_and_what_came_back(self):
        self.show(EXAMPLES / "kill-and-resume.scenario")
        self.assertEqual([band[0] for band in self.bands()], ["grace", "none", "grace", "off"])
        told = [item.text for item in self.find("#sessions li")]
        self.assertIn("over: the agent was killed", told[0])
        self.assertIn("resumed at the start of the agent", told[1])
        self.assertEqual([flag.text for flag in self.find("#picture .flag.kill, #picture .flag.restart")], ["killed", "agent is back"])

    def test_a_log_tells_what_came_back_in_either_order(self):
        entry = "Date:2026-3-1 Time:10:0:{} :: {}\n".format
        again = entry(20, "\n *** Setting Service Agent pointer in ZephanRSMSingleTon *** ")
        started = "".join(entry(20, f"Custom HVK Extension: {family} startup complete.") for family in ("RSM Extension", "RSM WebService Extension"))
        report = "".join(entry(20, text) for text in (" RSM_MODE = FORCE_POLL_GRACE ", " RSM_GRACE_PERIOD = 1 ", " RSM_DELAY_PROFILE_GRACE_PERIOD = 0 "))
        named = entry(20, "rsm Remote tunnel opened")  # a message is no start of a family
        poll = entry(15, "\nZephan Agent is Force Polling  ...")
        for name, parts in (("the start first", (again, started, report)), ("the report first", (again, report, started)),
                            ("a message between them", (again, named, report, started)), ("without the agent's line", (started, report))):
            with self.subTest(name):
                first, second = ("".join(part.replace(":20 ::", f":{at} ::") for part in parts) for at in (10, 20))
                (self.workspace.path / "k.xml").write_text(first + poll + second + poll.replace(":15 ", ":25 "))
                self.assertEqual(self.workspace.draw("k.xml", "--config", "zephan-config.xml", "-o", "log.html"), (0, ""))
                self.open(self.workspace.path / "log.html")
                self.assertEqual(self.bands(), [["grace", 0, 5], ["none", 5, 10], ["grace", 10, None]])
                self.assertEqual([told.split(" \u00b7 ")[-1] for told in self.told()], ["over: the log does not tell how", "did not end before the session did"])

    def told(self):
        return [item.text.split("\n")[-1] for item in self.find("#sessions li")]

    def test_what_sessions_are_said_to_be(self):
        start = "0 start data-source state/schedule.xml\n0 start logger zephan-config.xml\n0 start rsm zephan-config.xml\n0 start web-service\n"
        rows = [
            ("a refused disconnect", "1 connect 1 10\n15 audit \"Remote tunnel opened\"\n20 disconnect\n30 audit \"Remote tunnel closed\"\n600 end\n",
             [("connect 1 10", "over: its time was used up")]),
            ("a disconnect that a connect replaced", "1 connect 1 30\n5 disconnect\n10 connect 2 30\n600 end\n",
             [("connect 1 30, then connect 2 30", "over: its time was used up")]),
            ("a disconnect by its operation", "1 connect 5 30\n5 call disconnect\n600 end\n", [("connect 5 30", "over: disconnected")]),
            ("a start that resumes", "1 connect 5 30\n70 start rsm zephan-config.xml\n800 end\n", [("connect 5 30, then resumed at the start of the agent", "")]),
            ("a schedule", "1 command ScheduleRSM RSMStartDate=2026:01:01 RSMStartTime=00:01:00 PollingRate=10 GracePeriod=1\n300 end\n",
             [("schedule", "over: its time was used up")]),
            ("one that goes on", "1 connect 1440 60\n300 end\n", [("connect 1440 60", "did not end before the session did")]),
        ]
        for name, scenario, sessions in rows:
            with self.subTest(name):
                self.setUp()
                self.show(start + scenario)
                self.assertEqual(len(self.told()), len(sessions), self.told())
                for told, (cause, end) in zip(self.told(), sessions):
                    self.assertTrue(told.startswith(cause + " \u00b7") and told.endswith(end), told)
                self.assertNotRegex(self.find("#sessions")[0].text, "now|goes on")
                if name.startswith("a refused"):
                    self.assertIn("disconnect \u2192 refused \u2192 DisconnectResult Agent is in activity mode.", "".join(self.rows()))
                    self.assertEqual(len(self.find("#picture .flag.order.failed")), 1)

    def test_a_kill_while_nothing_runs_and_a_clock_that_is_set(self):
        self.show("0 start rsm zephan-config.xml\n0 start web-service\n50 connect 1 20\n"
                  "100 clock-step 7200\n200 unload\n300 start rsm zephan-config.xml\n400 end\n")
        self.assertEqual(self.bands(), [["off", 0, 50], ["grace", 50, 110], ["off", 110, 200], ["none", 200, 300], ["off", 300, None]])
        self.assertIn("00:00:50 \u2013 02:01:50 1 min connect 1 20 \u00b7 3 polls", " ".join(self.find("#sessions li")[0].text.split()))
        self.assertIn("killed once", self.find("#summary")[0].text)
        self.assertEqual([mark.text for mark in self.find("#picture .step text")], ["clock +2 h"])
        self.assertIn("2026-01-01 02:05:00 +00:05:00", self.rows()[-1])
        self.assertIn("02:03:00", [tick.text for tick in self.find("#picture .tick")])

    def test_times_and_lengths_as_people_say_them(self):
        self.show("clock 2026-12-31T23:59:00Z\n0 start rsm zephan-config.xml\n0 start web-service\n30 connect 43200 60\n82830 disconnect\n83000 end\n")
        self.assertTrue(self.find("#sessions li")[0].text.startswith("2026-12-31 23:59:30 \u2013 2027-01-01 22:59:"))
        text = "\n".join(self.rows())
        self.assertIn("2027-01-01 22:59:30 +23:00:30", text)
        self.assertIn("FORCE_POLL_GRACE, 30 d at one poll every 1 min", text)
        self.assertIn("grace 30 d", self.find("#picture .on.grace")[0].text)
        self.find("#exactly")[0].click()
        self.assertIn("+23:00:30.000", "\n".join(self.rows()))

    def test_errors_are_counted_and_shown_alone(self):
        config = (EXAMPLES / "zephan-config.xml").read_text()
        (self.workspace.path / "zephan-config.xml").write_text(re.sub(r"(<[^<>]*Script[^<>]*>)[^<]*(</)", r"\1false\2", config))
        self.show("0 start logger zephan-config.xml\n0 start rsm zephan-config.xml\n0 start web-service\n1 connect 5 30\n2 audit \"Remote tunnel opened\"\n60 end\n")
        self.assertEqual(len(self.find("#picture .script.failed")), 1)
        self.assertEqual(len(self.find("#picture .error")), 1)
        self.assertIn("Error while running script.", "".join(self.rows()))
        self.find("#errors")[0].click()
        self.assertEqual(len(self.rows()), 1)
        self.find("#all-kinds")[0].click()
        self.find("body")[0].send_keys("e")
        self.assertIn("Error while running script.", self.find("#table .chosen")[0].text)

    def test_many_visits(self):
        count = int(os.environ.get("VISITS", "300"))
        visits = "".join(f"{10 + i * 864} connect 2 15\n{40 + i * 864} audit \"Remote tunnel opened\"\n{221 + i * 864} audit \"Remote tunnel closed\"\n" for i in range(count))
        config = (EXAMPLES / "zephan-config.xml").read_text()  # without the script: 300 shells take longer than all the rest
        (self.workspace.path / "zephan-config.xml").write_text(re.sub(r"<Script>.*</Script>", "", config))
        path, _ = self.workspace.replay("0 start logger zephan-config.xml\n0 start rsm zephan-config.xml\n0 start web-service\n" + visits + f"{count * 864 + 100} end\n")
        self.assertLess(path.stat().st_size, 90000 + 1500 * count)
        self.page.get("about:blank")
        load = self.cost(lambda: self.open(path))
        # However many there are: what is drawn has its bounds, and is drawn once a frame.
        zooms = [self.cost(lambda: self.page.execute_script("picture.zoom(arguments[0])", factor)) for factor in (0.5, 0.5, 0.1, 40)]
        print(f"{count:,} visits: {path.stat().st_size:,} bytes, load {load} ms, zoom steps {zooms} ms of processor time", flush=True)
        self.assertLess(self.ask("document.querySelectorAll('*').length"), 2000)
        self.page.execute_script("""window.drawn = 0; const draw = picture.draw; picture.draw = () => { ++drawn; draw.call(picture); };
            picture.zoom(0.5); picture.move(0.1); picture.look(...picture.limits);""")
        self.page.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
        self.assertEqual(self.ask("drawn"), 1)
        drawn, true = self.ask("""[[...document.querySelectorAll('#picture .remote')].flatMap(one => [...one.outerHTML.matchAll(/ width="(\\d+)|h(\\d+)v/g)])
                .reduce((sum, [, rect, part]) => sum + Number(rect ?? part), 0),
            page.story.tunnels.list.reduce((sum, one) => sum + one.to - one.from, 0) / (picture.shown[1] - picture.shown[0]) * picture.width]""")
        self.assertLessEqual(abs(drawn - true), 1)
        self.assertGreater(true, 200)
        places = self.ask("[...document.querySelectorAll('#picture .flag.order rect')].map(one => (one.getAttribute('x') - picture.gutter) / picture.width)")
        for third in range(3):
            self.assertTrue(any(third / 3 <= place < (third + 1) / 3 for place in places), places)
        self.assertEqual(len(self.find("#sessions li")), 100)
        self.assertEqual(self.find("#sessions-left")[0].text, f"The {count - 100:,} before these are left out: show them")
        self.find("#sessions-left")[0].click()
        self.assertEqual(len(self.find("#sessions li")), count)
        self.ask("dispatchEvent(new Event('beforeprint'))")
        self.assertRegex(self.find("#table .left")[0].text, r"The first 1,000 of [\d,]+ lines are printed")

    def test_a_link_leads_to_the_moment(self):
        path, _ = self.workspace.replay(EXAMPLES / "service-visit.scenario")
        self.open(path)
        for kind in ("agent", "polls"):
            self.press(kind)
        self.find("#text")[0].send_keys("force")
        self.find("#zoom-in")[0].click()
        next(row for row in self.find("#table .body .row") if "FORCE_POLL_ACTIVITY" in row.text).click()
        self.find("#copy")[0].click()
        address = self.page.current_url
        state = "[table.chosen, picture.shown, page.rows.size, page.isOn]"
        before = self.ask(state)
        self.page.get("about:blank")
        self.page.get(address)
        self.assertEqual(self.ask(state), before)
        self.page.get("about:blank")
        self.page.get(f"file://{path}#t=230")
        self.assertIn("tunnel closed", self.find("#table .chosen")[0].text)
        self.assertEqual(self.find("#table .chosen")[0].get_attribute("aria-selected"), "true")

    def test_a_span_is_measured_and_the_table_follows_the_zoom(self):
        self.show(EXAMPLES / "service-visit.scenario")
        actions = browser.webdriver.ActionChains(self.page, duration=20)
        x = self.ask("[picture.x(4000), picture.x(366000)].map(one => one - picture.host.clientWidth / 2)")
        actions.key_down("\ue008").move_to_element_with_offset(self.find("#picture svg")[0], int(x[0]), 0).click_and_hold()
        actions.move_to_element_with_offset(self.find("#picture svg")[0], int(x[1]) + 1, 0).release().key_up("\ue008").perform()
        self.assertRegex(self.find("#measured")[0].text, r"^6 min 2 s: 24 polls, 4 reports \(2026-03-01 10:00:0")
        self.find("#zoomed")[0].click()
        self.ask("picture.look(20000, 40000)")
        self.page.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
        self.assertEqual(self.ask("[page.model.event(page.rows.at(0).number).t >= 20000, page.rows.at(page.rows.size - 1).number < page.model.firstAt(40000)]"), [True, True])

    def test_a_phone_and_a_page_at_200_percent(self):
        path, _ = self.workspace.replay(EXAMPLES / "service-visit.scenario")
        for width in (375, 640):
            self.page.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": 812, "deviceScaleFactor": 1, "mobile": width == 375})
            self.addCleanup(self.page.execute_cdp_cmd, "Emulation.clearDeviceMetricsOverride", {})
            self.open(path)
            cut, low, wide, over = self.ask("""[[...document.querySelectorAll('#table .time, #table .head span')].filter(one => one.scrollWidth > one.clientWidth + 1).length,
                [...document.querySelectorAll('button, select, input:not([type=checkbox]):not([type=radio]), label')].filter(one =>
                    one.offsetParent && !one.closest('label label') && one.offsetHeight < 43.5 && !one.querySelector('select, input[type=search]')).map(one => one.outerHTML.slice(0, 60)),
                document.documentElement.scrollWidth,
                [...document.querySelectorAll('#picture text')].map(one => [one.textContent, one.getBoundingClientRect()]).flatMap(([text, box], i, all) => all.slice(i + 1)
                    .filter(([, {left, right, top, bottom}]) => left < box.right && right > box.left && top < box.bottom - 4 && bottom > box.top + 4).map(one => [text, one[0]]))]""")
            self.assertEqual((cut, low, wide, over), (0, [], width, []))

    def test_a_stop_that_destroys_the_thread_is_no_kill(self):
        self.show("0 start logger zephan-config.xml\n0 start rsm zephan-config.xml\n0 start web-service\n1 connect 10 30\n"
                  "100 stop rsm\n100 stop logger\n")
        self.assertEqual(self.find("#picture .flag.kill"), [])
        self.assertIn("over: the agent stopped", self.find("#sessions li")[0].text)

    def test_a_refused_report_is_told_apart_by_its_shape(self):
        self.show(EXAMPLES / "enterprise-refuses.scenario")
        self.assertIn("refused", self.find("#summary")[0].text)
        self.assertEqual(len({mark.get_attribute("d").count("l") for mark in self.find("#picture .refused, #picture .accepted")}), 2)

    def rows(self):
        # In one step: the page may draw its rows anew between two.
        return self.ask("[...document.querySelectorAll('#table .body .row')].map(row => row.innerText)")

    def press(self, kind):
        self.find(f"[data-kind={kind}]")[0].click()

    def test_filters(self):
        events = self.show(EXAMPLES / "service-visit.scenario")
        for kind in ("agent", "messages", "polls", "files", "orders", "errors"):
            self.press(kind)
        self.assertEqual(len(self.rows()), 4)  # reports are left
        self.assertTrue(all("accepted" in row for row in self.rows()))
        self.find("#text")[0].send_keys("activity")
        self.assertEqual(len(self.rows()), 1)
        self.assertIn("1 of 184 events", self.find("#count")[0].text)
        self.find("#text")[0].clear()
        self.find("#text")[0].send_keys("x\b")
        self.find("#level option[value='50']")[0].click()
        log = [event for event in events if event["event"] == "log" and event["level"] == 50]
        self.assertEqual(self.ask("page.rows.events"), 4 + len(log))
        self.press("reports")
        self.assertEqual(len(self.rows()), len(log))
        self.press("log")
        self.assertIn("No event passes the filter", self.find("#table .body")[0].text)

    def test_gathered_and_single_polls(self):
        self.show(EXAMPLES / "connect-runs-out.scenario")
        self.assertEqual([row for row in self.rows() if "polls" in row][0].split("\n")[-1].strip()[-55:],
                         "20 polls, one every 30 s, until 2026-03-01 10:10:05"[-55:])
        self.find("#gather")[0].click()
        for kind in ("agent", "reports", "orders"):
            self.press(kind)
        self.assertEqual(self.ask("page.rows.size"), 20)

    def test_picture_and_table_point_at_each_other(self):
        self.show(EXAMPLES / "service-visit.scenario")
        actions = browser.webdriver.ActionChains(self.page, duration=20)
        row = next(row for row in self.find("#table .body .row") if "FORCE_POLL_ACTIVITY" in row.text)
        actions.move_to_element(row).perform()
        self.assertEqual(self.find("#picture .pointer text")[0].text, "10:00:30")
        self.assertEqual(len(self.find("#picture .accepted.marked")), 1)
        mark = self.find("#picture .accepted")[2]
        actions.move_to_element(mark).perform()
        number = mark.get_attribute("data-number")
        self.assertIn("10:04:20", self.find("#pointed")[0].text)
        actions.click(mark).perform()
        self.assertEqual([row.get_attribute("data-number") for row in self.find("#table .row.chosen")], [number])
        self.assertIn("FORCE_POLL_GRACE", self.find("#detail")[0].text)

    def test_keyboard(self):
        self.show(EXAMPLES / "service-visit.scenario")
        table = self.find("#table .scroll")[0]
        table.send_keys(KEYS["home"])
        table.send_keys(KEYS["down"])
        self.assertIn("start logger", self.find("#table .row.chosen")[0].text)
        table.send_keys(KEYS["end"])
        self.assertIn("log/kelp-logs.xml holds", self.find("#table .row.chosen")[0].text)
        picture = self.find("#picture")[0]
        picture.send_keys("++")
        self.assertLess(self.ask("picture.shown[1] - picture.shown[0]"), 450000 * 0.4)
        picture.send_keys("0")
        self.assertGreater(self.ask("picture.shown[1] - picture.shown[0]"), 450000)

    def test_times_in_local_time(self):
        path, _ = self.workspace.replay(EXAMPLES / "connect-runs-out.scenario")
        self.page.execute_cdp_cmd("Emulation.setTimezoneOverride", {"timezoneId": "Asia/Kolkata"})
        try:
            self.open(path)
            self.find("#zone label")[1].click()
            self.assertIn("2026-03-01 15:30:00", self.rows()[0])
            self.assertIn("Kolkata", self.find("#zone")[0].text.replace("Calcutta", "Kolkata"))
            # Ticks lie on full minutes of that zone.
            self.assertIn("15:35", [tick.text for tick in self.find("#picture .tick")])
        finally:
            self.page.execute_cdp_cmd("Emulation.setTimezoneOverride", {"timezoneId": ""})

    def test_clock_of_a_kept_trace_is_that_of_its_reports(self):
        self.workspace.replay(EXAMPLES / "service-visit.scenario")
        self.workspace.draw("trace.jsonl", "-o", "kept.html")
        self.open(self.workspace.path / "kept.html")
        self.assertIn("2026-03-01 10:00:00", self.rows()[0])
        self.assertIn("clock is that of the reports", self.find("#foot")[0].text)

    def test_hostile_texts_are_shown_and_do_nothing(self):
        text = HOSTILE.replace("\\", "\\\\").replace('"', '\\"')
        self.show(f'# {HOSTILE}\n0 start logger zephan-config.xml\n0 audit "{text}"\n1 command "<b>{text}</b>"\n')
        self.assertNotEqual(self.page.title, "taken")
        shown = next(row for row in self.find("#table .body .row") if "Message" in row.text)
        self.assertIn('</script><script>document.title="taken"', shown.text)
        self.assertRegex(shown.text, "\u2039202E\u203a</SCRIPT >.* done")  # a sign, not one that turns round what follows
        shown.click()
        self.assertIn('</script><script>document.title="taken"', self.find("#detail")[0].text)
        self.assertEqual(self.find("main script, main b:not(.chips b), #detail script"), [])

    def test_a_year_of_polls(self):
        path, _ = self.workspace.replay("0 start rsm zephan-config.xml\n0 start web-service\n0 connect 1440 10\n90000 end\n")
        # A replay of the year takes seconds; its page differs from that of a day by one number.
        text = path.read_text(encoding="utf-8")
        self.assertEqual(len(re.findall(r"^\[86(40|39|38),", text, re.M)), 1)
        rounds = int(re.search(r"^\[(86\d\d),", text, re.M).group(1))
        year = 3153600
        path.write_text(re.sub(r"^\[86\d\d,", f"[{rounds + year - 8640},", text, flags=re.M), encoding="utf-8")
        self.page.get("about:blank")
        load = self.cost(lambda: self.open(path))
        print(f"a year of polls: {path.stat().st_size:,} bytes, load {load} ms of processor time", flush=True)
        self.assertEqual(self.ask("page.model.pollCount"), year)
        self.assertLess(path.stat().st_size, 150000)
        self.assertLess(len(self.find("#picture *")), 400)
        self.assertIn("3,153,600 polls, one every 10 s", "".join(self.rows()))
        self.press("sleeps")
        self.assertGreater(self.ask("page.rows.size"), year * 2)
        self.assertLess(len(self.rows()), 60)
        self.find("#table .scroll")[0].send_keys(KEYS["end"])
        self.assertIn("ends with 0", self.rows()[-1])

    def test_saved_picture_stands_alone(self):
        self.show(EXAMPLES / "service-visit.scenario")
        picture = self.ask("pictureFile()")
        (self.workspace.path / "picture.svg").write_text(picture, encoding="utf-8")
        self.page.get(f"file://{self.workspace.path}/picture.svg")
        self.assertEqual(self.page.get_log("browser"), [])
        fill = self.ask("getComputedStyle(document.querySelector('.band.activity')).fill")
        self.assertEqual(fill, "rgb(247, 204, 107)")


if __name__ == "__main__":
    unittest.main()
