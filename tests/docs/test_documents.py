#!/usr/bin/env python3
"""Does what the documents say still hold? Runs their commands, and compares what they print.

A command is an indented line of a document that begins with a program of the project or of the build. Where a line begins
with "$ ", what is below it is what the command prints ("..." stands for any lines). Lines in a fenced block are the
simulator's, as the replays of the examples print them. KRX_AGENT_SIM is the simulator, beside the other programs.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = pathlib.Path(os.environ["KRX_AGENT_SIM"]).parent
DOCUMENTS = sorted(path.relative_to(ROOT) for pattern in ("*.md", "docs/*.md", "tests/**/*.md") for path in ROOT.glob(pattern))
COMMAND = re.compile(r"(\$ |(scripts|bench|tests|build)/\S|\.\./release/|krx-agent-sim |zephan-(log|session|status|config-check) |cmake |ctest |xmllint |curl |lnav |"
                     r"git |for |cd |mkdir |cp |rm |sed |[A-Z_]+=\S+ )")

# What is not run here, and why.
SKIPPED = [
    (r"\[|FILE\b|SCENARIO", "a form, not a command"),
    (r"^scripts/(?!rooms)|^cmake|^ctest|^bench/(run|counted)|ctest --preset", "takes minutes, and builds in the tree that is being tested"),
    (r"^tests/faults/campaign\.py build/(release$|asan)|^tests/mutation|^bench/zephan_log\.py", "takes minutes; the tests run a short form"),
    (r"^tests/faults/long_run\.py|test_console\.py", "the tests run a short form"),
    (r"^build/fuzz", "takes minutes, and needs clang"),
    (r"--preemptions=|LOG_STEP_SEEDS=|SCENARIOS=|VISITS=", "takes minutes"),
    (r"axe-core|axe\.py", "needs a package that Debian does not have"),
    (r"git ", "asks the repository, which an archive of the tree does not have"),
    (r" run ", "on the real clock"),
    (r"^curl", "needs the live console; tests/page/test_console.py tries these"),
    (r"lnav", "a program for a terminal"),
    (r"yesterday", "asks for a log of last night"),
    (r"openssl|/etc/", "changes the system; tests/fleet tries it"),
]

# What a reader has at this point of a document: a directory below the tree, and what was done there before.
VISIT = ("build/demo/service-visit", "krx-agent-sim replay ../../../examples/service-visit.scenario --trace trace.jsonl")
READER = {
    "docs/zephan-log.md": VISIT,
    "docs/session-page.md": VISIT,
    "docs/status.md": ("build/demo/kill-and-resume", "true"),
    "README.md": (".", f"cd {VISIT[0]} && {VISIT[1]}"),
    "tests/golden/README.md": (".", "cp tests/golden/entry.scenario tests/golden/*.xml ."),
}


def blocks(document):
    """The indented blocks of a document, each a list of (line number, text)."""
    block, before, fenced = [], "", False
    for number, line in enumerate((ROOT / document).read_text(encoding="utf-8").splitlines() + [""], 1):
        fenced ^= line.startswith("```")
        if not fenced and line.startswith("    ") and (block or not before.strip()):
            block.append((number, line[4:]))
        else:
            if block:
                yield block
            block = []
        before = line


def commands(document):
    """The commands of a document: the line, the text, and what it prints or None."""
    for block in blocks(document):
        shown = any(text.startswith("$ ") for _, text in block)
        found, loop = [], False
        for number, text in block:
            if shown and text.startswith("$ "):
                found.append([number, text[2:], []])
            elif shown and found:
                found[-1][2].append(text)
            elif loop:
                found[-1][1] += "\n" + text
                loop = text != "done" and not text.startswith("done ")
            elif not shown and COMMAND.match(text):
                text = re.sub(r"\s+# .*", "", text)
                if not re.search(r"\S {3,}\S", text):  # a table of figures
                    found.append([number, text, None])
                    loop = text.startswith("for ")
        yield from found


def fits(shown, printed):
    """Whether printed lines are the shown ones, "..." being any."""
    pattern = "".join("(?:.*\n)*" if line.strip() == "..." else re.escape(line.rstrip()) + "\n" for line in shown)
    return re.fullmatch(pattern, "".join(line.rstrip() + "\n" for line in printed)) is not None


class DocumentsTest(unittest.TestCase):
    def tree(self):
        """A directory in which the tree lies with its programs."""
        directory = pathlib.Path(tempfile.mkdtemp(prefix="documents-"))
        self.addCleanup(shutil.rmtree, directory)
        for entry in ROOT.iterdir():
            if entry.name not in ("build", ".git"):
                (directory / entry.name).symlink_to(entry)
        programs = directory / "build" / "release" / "bin"  # links, so that nothing here can change a program
        programs.mkdir(parents=True)
        for program in PROGRAMS.iterdir():
            (programs / program.name).symlink_to(program)
        return directory

    def place(self, directory):
        """A directory as the example configuration wants it."""
        for folder in ("log", "state"):
            (directory / folder).mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / "examples" / "zephan-config.xml", directory)

    def shell(self, command, directory):
        # By its name first: a reader has the installed programs, or says where they are.
        environment = dict(os.environ, PATH=f"{PROGRAMS}:{os.environ['PATH']}", TZ="UTC", LC_ALL="C.UTF-8")
        return subprocess.run(["sh", "-ec", command], cwd=directory, env=environment, stdin=subprocess.DEVNULL, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")

    def test_commands(self):
        ran = 0
        for document in DOCUMENTS:
            folder, before = READER.get(str(document), (".", "true"))
            tree = self.tree()
            directory = tree / folder
            for place in (directory, tree / VISIT[0]):
                self.place(place)
            self.assertEqual(self.shell(before, directory).returncode, 0, before)
            done = ""  # a directory that was entered stays the reader's
            for number, command, shown in commands(document):
                if any(re.search(pattern, command) for pattern, _ in SKIPPED):
                    continue
                with self.subTest(document=str(document), line=number, command=command):
                    result = self.shell(f"{done}{command}", directory)
                    # The status of zephan-status says what a start would do.
                    self.assertIn(result.returncode, (0, 3, 4) if command.startswith("zephan-status") else (0,), result.stdout)
                    if shown is not None:
                        self.assertTrue(fits(shown, result.stdout.splitlines()), result.stdout)
                    if command.startswith("cd "):
                        done += command + "\n"
                    ran += 1
        self.assertGreater(ran, 8)

    def test_timelines(self):
        """What the README shows of a session is what the simulator prints of the examples, and its six lines are theirs."""
        tree, printed = self.tree(), {line.strip() for line in (ROOT / "examples" / "six-lines.cpp").read_text().splitlines()}
        for scenario in (ROOT / "examples").glob("*.scenario"):
            directory = tree / "replays" / scenario.stem
            self.place(directory)
            replay = self.shell(f"krx-agent-sim replay '{scenario}' --brief", directory)
            printed.update(line.rstrip() for line in replay.stdout.splitlines())
        for fence in re.findall(r"^```(?:cpp)?\n(.*?)^```$", (ROOT / "README.md").read_text(encoding="utf-8"), re.M | re.S):
            for line in fence.splitlines():
                self.assertTrue(line.strip() == "..." or line.rstrip() in printed, line)

    def test_tables_of_the_sources(self):
        """Log lines with their levels, build options, exports and settings with defaults are those of the sources, both ways."""
        found, kept, levels = {}, {}, {"Warn": "40", "Error": "50", "Force": "250"}
        for path in (ROOT / "src").rglob("*.[ch]*"):
            code = re.sub(r"^\s*(//|#).*|\s//.*$", "", path.read_text(encoding="utf-8"), flags=re.M)
            code = "" if path.parent.name == "config" and path.stem != "XMLConfigReader" else re.sub(r'"\s*\n\s*"', "", code)
            for level, line in re.findall(r'(?:KRXLog\(\s*(?:::)?level::k(\w+),\s*)?"((?:\\.|[^"\\\n])*)"', code):
                line = re.sub(r"^(\\n|\s)+|(\\n|\s)+$", "", line)
                if " " in line and re.search(r"[A-Za-z]{2}", line):
                    found[line] = found.get(line, set()) | ({levels[level]} if level else set())
        for cell, level in re.findall(r"^\| (`.*?) \| (.*?) \|", (ROOT / "docs" / "log-lines.md").read_text(encoding="utf-8"), re.M):
            kept.update((line, set(level.split(", "))) for line in re.findall(r"`(.+?)`", cell))
        self.assertEqual(set(found), set(kept))
        self.assertEqual([line for line in found if not found[line] <= kept[line]], [])
        functions = re.findall(r"(?:(\w+)\(|^(\w+)$)", (ROOT / "src" / "entry" / "agent-functions").read_text(), re.M)
        page = set(re.findall(r"`(\w+)`", (ROOT / "docs" / "agent-interface.md").read_text(encoding="utf-8")))
        self.assertEqual({name or plain for name, plain in functions} - page, set())
        pages = pathlib.Path(self.shell("scripts/manual build; pwd", tree := self.tree()).stdout.strip(), "build")
        exports = re.findall(r"<elf-symbol name='(ZP\w+)'", (ROOT / "src" / "entry" / "exports.abi").read_text())
        brackets = re.findall(r"^\.SS (ZP.*)\n(?:.*\n)*?\\fI\[(?:any|start)", (pages / "zephan-rsm-logger.3").read_text(), re.M)
        self.assertEqual(sorted(exports), sorted(", ".join(brackets).split(", ")))
        (tree / "empty.xml").write_text("<empty/>")
        checked = json.loads(self.shell("zephan-config-check --json empty.xml || true", tree).stdout)["files"][0]["settings"]
        defaults = {one["name"]: one.get("value") or "none" for one in checked}
        told = {}
        for section in (pages / "zephan-config.5").read_text().replace("\\-", "-").replace("\\e", "\\").split(".SH ")[3:]:
            for own, default in re.findall(r"(?:\.TP\n\\fB(\w+)\\fR\n|\A\w+\n).*When absent: (.+?)(?:[.,]? .*|\.?)$", section, re.M):
                told["/".join(filter(None, (section.split("\n", 1)[0], own)))] = default
        self.assertEqual(told, defaults)
        options = set(re.findall(r"^(?:option|set)\((ZEPHAN_\w+)", (ROOT / "CMakeLists.txt").read_text(), re.M))
        self.assertEqual(options, set(re.findall(r"^\| `(ZEPHAN_\w+)`", (ROOT / "docs" / "package.md").read_text(), re.M)))

    def test_links(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)#\s]+)", (ROOT / document).read_text(encoding="utf-8")):
                if "://" not in target:
                    self.assertTrue(((ROOT / document).parent / target).exists(), f"{document}: {target}")

    def test_help(self):
        """Each program of the tree says what it does, from anywhere, and refuses what it does not know."""
        for program in [path for path in (ROOT / "scripts").iterdir() if os.access(path, os.X_OK)] + [
                ROOT / "bench" / "run", ROOT / "bench" / "zephan_log.py", *(ROOT / "tests" / "faults").glob("*.py"),
                ROOT / "tests" / "mutation" / "mutate.py"]:
            with self.subTest(program=program.name):
                result = self.shell(f"'{program}' --help", "/")
                self.assertEqual(result.returncode, 0, result.stdout)
                self.assertIn(program.name, result.stdout)
                if program.name != "run":  # hands options on
                    self.assertEqual(self.shell(f"'{program}' --unheard-of", "/").returncode, 2)

    @unittest.skipUnless(shutil.which("dpkg-query"), "no Debian system")
    def test_without_root_and_sudo(self):
        nobody = "id() { echo 1000; }; sudo() { return 1; }; . scripts/common.sh; need "
        asked = self.shell(f"bash -c '{nobody} bash no-such-package nor-this; echo went on'", ROOT)
        self.assertEqual(asked.returncode, 1)
        self.assertIn("\n    apt-get install no-such-package nor-this\n", asked.stdout)
        self.assertNotIn("went on", asked.stdout)
        self.assertEqual(self.shell(f"bash -c '{nobody} bash; echo went on'", ROOT).stdout, "went on\n")

    def test_failures_of_a_build_are_shown(self):
        shown = self.shell("bash -c '. scripts/common.sh; quietly sh -c \"echo the reason; exit 3\" || echo failed'", ROOT)
        self.assertEqual(shown.stdout, "the reason\nfailed\n")
        self.assertEqual(self.shell("bash -c '. scripts/common.sh; quietly echo much'", ROOT).stdout, "")

    def test_headers_fit(self):
        """A page that is read first is read in a terminal."""
        for header in (ROOT / "include").iterdir():
            for number, line in enumerate(header.read_text(encoding="utf-8").splitlines(), 1):
                self.assertLessEqual(len(line), 112, f"{header.name}:{number}")


if __name__ == "__main__":
    unittest.main()
