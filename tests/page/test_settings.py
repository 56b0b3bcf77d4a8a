"""A configuration means the same to the checker, the module, `status` and the page of a session."""
import json
import os
import random
import subprocess
import unittest

from session import Workspace, beside_it, data_of, simulator

LEVELS = {"trace": 20, "info": 30, "warn": 40, "error": 50, "force": 250, "audit": 254}
LISTS = {"tunnelOpen": "TunnelMessags/OpenMessage", "tunnelClose": "TunnelMessags/CloseMessage",
         "fileOpen": "FileMessages/OpenMessage", "fileClose": "FileMessages/CloseMessage"}
GOOD = """<z><FileLogging><LogFilePath>log/a.xml</LogFilePath><LogLevel>warn</LogLevel></FileLogging>
<TunnelMessags><OpenMessage><Message>tunnel opened</Message></OpenMessage></TunnelMessags>
<ListnerSet><RDListner>on</RDListner><FileListner>on</FileListner></ListnerSet>
<RSMResumeStatusFile>state/a.xml</RSMResumeStatusFile></z>"""
ODD = {
    "an encoding of one byte": ("<?xml version='1.0' encoding='windows-1252'?>" +
                                GOOD.replace("tunnel opened", "Fernzugriff geöffnet €")).encode("cp1252"),
    "a setting twice": GOOD.replace("<LogLevel>", "<LogLevel>error</LogLevel><LogLevel>")
                           .replace("</z>", "<RSMResumeStatusFile>state/b.xml</RSMResumeStatusFile></z>").encode(),
    "a comment before a text": GOOD.replace("state/a.xml", "<!--state/c.xml-->state/a.xml").encode(),
}


def any_configuration(source):
    """A configuration with some of what people do to them."""
    def text(*choices):
        one = source.choice(choices)
        return source.choice([one, one, f" {one}\t", f"<![CDATA[{one}]]>", f"<!--{one}-->x", f"{one}<!-- x -->y", f"{one}&v;y", f"&v;{one}", ""])

    def element(name, *choices):
        return f"<{name}>{text(*choices)}</{name}>" * source.choice([0, 1, 1, 1, 2])

    def messages(name, *choices):
        inside = "".join(element("Message", *choices) for _ in range(2))
        return source.choice([f"<{name}>{inside}</{name}>"] * 4 + [f"<{name}/>", f"<{name}><w>{inside}</w></{name}>", ""])

    sections = []
    for _ in range(source.choice([1, 1, 2])):
        sections += [
            f"<FileLogging>{element('LogFilePath', 'log/a.xml', 'log/b.xml')}<w>{element('LogLevel', *LEVELS, 'Warn')}</w></FileLogging>",
            f"<TunnelMessags>{messages('OpenMessage', 'tunnel opened', 'geöffnet')}{messages('CloseMessage', 'tunnel closed', 'zu')}"
            f"{element('AbortMessage', 'all gone')}</TunnelMessags>",
            f"<FileMessages>{messages('OpenMessage', 'file begins')}{messages('CloseMessage', 'file ends')}</FileMessages>",
            f"<ListnerSet>{element('RDListner', 'on')}{element('FileListner', 'on', 'off')}</ListnerSet>",
            element("RSMResumeStatusFile", "state/a.xml", "state/b.xml")]
    source.shuffle(sections)
    encoding = source.choice(["utf-8", "windows-1252", "iso-8859-1", "utf-16"])
    return f"<?xml version='1.0' encoding='{encoding}'?><!DOCTYPE z [<!ENTITY v ''>]><z>{''.join(sections)}</z>".encode(encoding)


class SettingsTest(unittest.TestCase):
    def check(self, configuration):
        with Workspace() as workspace:
            (workspace.path / "zephan-config.xml").write_bytes(configuration)
            checker = subprocess.run([os.environ["ZEPHAN_CONFIG_CHECK"], "--json", "zephan-config.xml"], cwd=workspace.path,
                                     capture_output=True, text=True, timeout=60)
            settings = {}
            for one in json.loads(checker.stdout)["files"][0]["settings"]:
                settings[one["name"]] = [value["value"] for value in one["values"]] if "values" in one else one["value"]
            log, resume = settings["FileLogging/LogFilePath"], settings["RSMResumeStatusFile"]
            opens = settings["TunnelMessags/OpenMessage"] + settings["FileMessages/OpenMessage"]
            scenario = ["0 start data-source state/schedule.xml"]
            scenario += [f'+0 write {resume} "no record"'] if resume.startswith("state/") else []
            scenario += ["+0 start rsm zephan-config.xml", "+0 start logger zephan-config.xml", "+0 start web-service"]
            scenario += [f"+0 log {level} at-{level}." for level in LEVELS if level != "audit"]
            scenario += ["+1 connect 60 30"]
            for text in ["tunnel opened", "geöffnet", "file begins", "nothing"]:
                scenario += [f'+5 audit "{text}"', "+1 audit \"tunnel closed\"", "+0 audit zu", "+0 audit \"all gone\"", "+0 audit \"file ends\""]
            scenario += ["+5 disconnect", "+0 stop rsm", "+0 stop logger"]
            page, events = workspace.replay("\n".join(scenario) + "\n")

            # The page
            texts = data_of(page)["texts"]
            self.assertEqual({name: texts[name] for name in LISTS}, {name: settings[LISTS[name]] for name in LISTS})
            self.assertEqual(texts["abort"], settings["TunnelMessags/AbortMessage"])
            # The status
            status = subprocess.run([beside_it("zephan-status"), "--config", "zephan-config.xml"], cwd=workspace.path,
                                    capture_output=True, text=True, timeout=60)
            self.assertIn("RSM of 60 minutes" if resume.startswith("state/") else resume or "no file is known", status.stdout)
            # What the module does: its log file, its record of a running session, and activity.
            file = workspace.path / log
            entries = file.read_text(encoding="utf-8", errors="replace") if "/" in log and file.exists() else ""
            level = settings["FileLogging/LogLevel"]
            threshold = LEVELS.get(level, 80)
            for name, number in LEVELS.items():
                if name != "audit":
                    written = settings["ListnerSet/FileListner"] == "on" and "/" in log and number >= threshold
                    self.assertEqual(f"at-{name}." in entries, written, name)
            if resume.startswith("state/"):
                self.assertNotEqual((workspace.path / resume).read_text(), "no record")
            noticed = sum(1 for event in events if event["event"] == "update-asset" and
                          dict(event["properties"]).get("RSM_MODE") == "FORCE_POLL_ACTIVITY")
            heard = sum(1 for event in events if event["event"] == "call" and event["verb"].startswith("audit ") and
                        any(text in event["verb"][6:] for text in opens))
            if settings["ListnerSet/RDListner"] != "on" or not opens:
                self.assertEqual(noticed, 0)
            elif heard:
                self.assertGreater(noticed, 0)

    def test_odd_ones(self):
        for name, configuration in ODD.items():
            with self.subTest(name):
                self.check(configuration)
                with Workspace() as workspace:
                    (workspace.path / "zephan-config.xml").write_bytes(configuration)
                    (workspace.path / "live.scenario").write_text(
                        "".join(f'0 write state/{one}.xml "no record"\n' for one in "abc") +
                        "0 start data-source x\n0 start rsm zephan-config.xml\n0 start web-service\n1 connect 60 30\n90 unload\n+0 status\n")
                    live = subprocess.run([simulator(), "replay", "live.scenario"], cwd=workspace.path, capture_output=True, text=True, timeout=60)
                    self.assertIn("A start now would resume RSM for 58 minutes", live.stdout)

    def test_any(self):
        for seed in range(20):
            configuration = any_configuration(random.Random(seed))
            with self.subTest(seed, configuration=configuration):
                self.check(configuration)


if __name__ == "__main__":
    unittest.main()
