"""The live page in a browser: its buttons, and what arrives."""
import unittest

import browser
from live import Live, wait_until


class LivePageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = cls.enterClassContext(browser.start(height=1400))

    def setUp(self):
        self.live = self.enterContext(Live())
        self.page.get(self.live.url)
        wait_until(lambda: self.text("#link") == "live")

    def tearDown(self):
        errors = self.page.get_log("browser")
        self.page.get("about:blank")
        self.assertEqual(errors, [])

    def find(self, selector):
        return self.page.find_elements("css selector", selector)

    def text(self, selector):
        return self.page.execute_script("return document.querySelector(arguments[0]).textContent", selector)

    def ask(self, script):
        return self.page.execute_script("return " + script)

    def fill(self, form, **values):
        for name, value in values.items():
            field = self.find(f"form[data-form={form}] [name={name}]")[0]
            self.page.execute_script("document.querySelector('.console details').open = true")
            if field.tag_name == "select":
                field.send_keys(value)
            else:
                field.clear()
                field.send_keys(str(value))
        self.press(f"form[data-form={form}] button:not([data-do])")

    def press(self, selector):
        self.page.execute_script("document.querySelector('.console details').open = true")
        self.find(selector)[0].click()

    def rows(self):
        return self.ask("[...document.querySelectorAll('#table .body .row')].map(row => row.textContent)")

    def modes(self):
        return self.ask("page.story.bands.map(band => band.mode)")

    def test_connect_work_and_disconnect(self):
        self.assertEqual(self.modes(), ["off"])
        self.fill("connect", minutes=1, seconds=1)
        wait_until(lambda: "grace" in self.modes())
        wait_until(lambda: self.ask("page.model.pollCount") >= 2)
        self.assertIn("connect 1 1", self.text("#answer"))
        wait_until(lambda: "RSM runs until about" in self.text("#state"))
        self.assertEqual(len(self.find("#picture .accepted")), 1)
        self.assertTrue(any("FORCE_POLL_GRACE" in row for row in self.rows()))

        self.assertLess(self.ask("$('picture').getBoundingClientRect().bottom"), 800)
        self.press("form[data-form=message] button")  # as it stands there at first
        wait_until(lambda: self.modes()[-1] == "activity")
        self.press("form[data-form=disconnect] button")
        wait_until(lambda: "refused" in self.text("#answer") and "bad" in self.find("#answer")[0].get_attribute("class"))
        self.fill("message", text="Remote tunnel closed by operator-7")
        wait_until(lambda: self.modes()[-1] == "grace")

        self.find("#text")[0].send_keys("tunnel opened")
        self.assertEqual(len([row for row in self.rows() if "audit Remote tunnel opened" in row]), 1)
        self.find("#text")[0].clear()
        self.find("#text")[0].send_keys("x\b")

        self.press("form[data-form=disconnect] button")
        wait_until(lambda: self.modes()[-1] == "off")
        self.assertIn("over: disconnected", self.text("#sessions"))
        self.assertEqual(self.ask("page.model.size"), len(self.live.events()))

    def test_schedule_and_refusal(self):
        self.press("[data-do=enterprise][data-answer=refuse]")
        wait_until(lambda: "enterprise refuse: done" in self.text("#answer"))
        self.fill("schedule", date="2031:03:02", time="09:00:00", minutes=5, seconds=30)
        wait_until(lambda: self.modes()[-1] == "waiting")
        self.assertEqual(len(self.find("#picture .refused")), 1)
        wait_until(lambda: "2031-03-02 09:00:00 GMT" in self.text("#state"))
        self.fill("schedule", date="2020:03:02", time="09:00:00")
        wait_until(lambda: "elapsed date" in self.text("#answer"))
        self.assertIn("bad", self.find("#answer")[0].get_attribute("class"))

    def test_kill_and_restart(self):
        self.fill("connect", minutes=10, seconds=30)
        wait_until(lambda: self.modes()[-1] == "grace")
        self.press("[data-do=kill]")
        wait_until(lambda: self.modes()[-1] == "none")
        wait_until(lambda: "The agent was killed" in self.text("#state"))
        self.press("[data-do=restart]")
        wait_until(lambda: self.modes()[-1] == "grace")
        self.assertIn("resumed at the start of the agent", self.text("#sessions"))
        self.assertEqual(len(self.find("#picture .flag.restart")), 1)

    def test_a_kill_while_nothing_runs_and_a_clock_that_is_set(self):
        self.live.process.stdin.write("clock-step 7200\nunload\n")
        self.live.process.stdin.flush()
        wait_until(lambda: self.modes()[-1] == "none")
        self.assertEqual(self.ask("[...document.querySelectorAll('#picture .step text')].map(mark => mark.textContent)"), ["clock +2 h"])
        wait_until(lambda: self.ask("Math.abs(page.model.wall(picture.now) - Date.now() - 7200000) < 2000"))

    def test_an_event_leaves_the_focus_where_it_is(self):
        self.fill("connect", minutes=10, seconds=1)
        wait_until(lambda: len(self.find("#sessions button")) == 1)
        self.page.execute_script("document.querySelector('#sessions button').focus()")
        polls = self.ask("page.model.pollCount")
        wait_until(lambda: self.ask("page.model.pollCount") > polls)
        self.assertEqual(self.ask("document.activeElement.closest('#sessions') !== null"), True)

    def test_the_end_of_the_session_is_told(self):
        self.assertEqual(self.live.end(), 0)
        wait_until(lambda: self.text("#link") == "the session is over")
        self.assertFalse(self.find("form[data-form=connect] button")[0].is_enabled())
        self.page.get_log("browser")  # it may have asked something just when the session ended


if __name__ == "__main__":
    unittest.main()
