"""The Debian packages, made of a build and laid out in a directory of their own, and the module as a part of another project.

The environment names the build (BUILD), the objects of its module (OBJECTS), CMAKE, CPACK, the compilers (CC, CXX) and their warnings (WARNINGS)."""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = SOURCE / "examples"


def run(*command, cwd, environment=None, status=0):
    """Runs a command: what it printed, standard error included."""
    done = subprocess.run([str(word) for word in command], cwd=cwd, env={**os.environ, **(environment or {})}, text=True,
                          errors="replace", stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=500)
    if done.returncode != status:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}")
    return done.stdout


def workspace(parent, name, configuration):
    """A directory with the folders that the example configuration names."""
    place = parent / name
    for folder in ("log", "state"):
        (place / folder).mkdir(parents=True)
    shutil.copy(configuration, place / "zephan-config.xml")
    return place


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="package test ")  # with blanks, as paths may be
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name)
        cls.root = cls.scratch / "root"
        run(os.environ["CPACK"], "--config", f"{os.environ['BUILD']}/CPackConfig.cmake", "-B", cls.scratch / "packages",
            cwd=cls.scratch)
        cls.packages = {path.name.split("_")[0]: path for path in (cls.scratch / "packages").glob("*.deb")}
        for package in cls.packages.values():
            run("dpkg-deb", "--extract", package, cls.root, cwd=cls.scratch)
        cls.libraries = next(cls.root.glob("usr/lib/**/libZephanRSMLogger.so.1")).parent
        cls.share = cls.root / "usr/share/zephan-rsm-logger"
        cls.examples = cls.root / "usr/share/doc/zephan-rsm-logger/examples"
        # As if the libraries lay where the loader and the linker look.
        cls.environment = {"LD_LIBRARY_PATH": str(cls.libraries)}

    def test_names_and_dependencies(self):
        depends = {name: run("dpkg-deb", "--field", path, "Depends", cwd=self.scratch)
                   for name, path in self.packages.items()}
        own = {name: set(re.findall(r"libexpat1|[\w-]*(?:krx|zephan)[\w-]*", words)) for name, words in depends.items()}
        self.assertEqual(own, {
            "libzephan-rsm-logger1": {"libexpat1", "krx-agent-libraries"},
            "libzephan-rsm-logger1-dbgsym": {"libzephan-rsm-logger1"},
            "libzephan-rsm-logger-dev": {"libkrx-agent1", "libzephan-rsm-logger1"},
            "libkrx-agent1": {"libexpat1"},
            "zephan-rsm-logger-tools": {"libexpat1"},
            "krx-agent-sim": {"libexpat1", "libkrx-agent1", "libzephan-rsm-logger1", "zephan-rsm-logger-tools"}})
        for name in depends:
            self.assertIn("Niels Lohmann", (self.root / "usr/share/doc" / name / "copyright").read_text())

    def test_an_upgrade_from_1_1_0(self):
        """The programs and the stand-in's library were in other packages then."""
        if os.geteuid() != 0:
            self.skipTest("dpkg installs only as root")
        place = self.scratch / "upgrade"
        (place / "root/var/lib/dpkg/updates").mkdir(parents=True)
        (place / "root/var/lib/dpkg/info").mkdir()
        (place / "root/var/lib/dpkg/status").touch()
        libraries = self.libraries.relative_to(self.root)
        moved = {libraries / "libkrx-agent.so.1": ("libzephan-rsm-logger1", "libkrx-agent1"),
                 "usr/bin/zephan-log": ("krx-agent-sim", "zephan-rsm-logger-tools"),
                 "usr/share/zephan-rsm-logger/zephan-config.xsd": ("krx-agent-sim", "zephan-rsm-logger-tools")}
        for path, (package, _) in moved.items():
            (place / package / "DEBIAN").mkdir(parents=True, exist_ok=True)
            (place / package / "DEBIAN/control").write_text(
                f"Package: {package}\nVersion: 1.1.0\nArchitecture: all\nMaintainer: M <m@m.example>\nDescription: of before\n")
            (place / package / path).parent.mkdir(parents=True)
            (place / package / path).touch()
            run("dpkg-deb", "--build", package, cwd=place)
        dpkg = ("dpkg", "--root=root", "--log=/dev/null", "--force-depends", "--auto-deconfigure", "--install")
        run(*dpkg, *place.glob("*.deb"), cwd=place)
        run(*dpkg, *self.packages.values(), cwd=place)
        for path, (_, package) in moved.items():
            self.assertEqual(run("dpkg-query", "--root=root", "--search", f"/{path}", cwd=place), f"{package}: /{path}\n")

    def test_a_device_is_asked_for_its_agents_packages(self):
        text, place = (SOURCE / "cmake/package/begin.cmake.in").read_text(), self.scratch / "asked"
        (place / "package").mkdir(parents=True)
        for libraries, packages, status in (("/opt/libagent.so", "", 1), ("/opt/libagent.so", "none", 0), ("", "", 0)):
            values = {"PROJECT_SOURCE_DIR": str(SOURCE), "PROJECT_BINARY_DIR": str(place), "ZEPHAN_AGENT_LIBRARIES": libraries,
                      "ZEPHAN_AGENT_PACKAGES": packages}
            (place / "begin.cmake").write_text(re.sub(r"@(\w+)@", lambda found: values.get(found[1], "1"), text))
            said = run(os.environ["CMAKE"], "-P", "begin.cmake", cwd=place, status=status)
            self.assertEqual("Which packages have the agent's libraries?" in said, status == 1)

    def test_each_package_says_its_size_and_one_time(self):
        times = set()
        for package in self.packages.values():
            listed = re.findall(r"(?m)^(.)\S+ \S+ +(\d+) (\S+ \S+) ", run("dpkg-deb", "--contents", package, cwd=self.scratch))
            size = sum(-(-int(size) // 1024) if kind == "-" else 1 for kind, size, _ in listed)
            self.assertEqual(int(run("dpkg-deb", "--field", package, "Installed-Size", cwd=self.scratch)), size, package.name)
            times |= {time for _, _, time in listed}
        self.assertEqual(len(times), 1)

    def test_links_of_the_documents_lead_somewhere(self):
        for page in self.examples.parent.rglob("*.md"):
            for target in re.findall(r"\]\(([\w./@-]+)[)#]", page.read_text()):
                self.assertTrue((page.parent / target).exists(), f"{page.name}: {target}")

    def test_units_are_sound(self):
        if shutil.which("systemd-analyze") is None:
            self.skipTest("no systemd-analyze")
        units = sorted((self.examples / "fleet").glob("zephan-*@.*"))
        self.assertEqual([unit.name for unit in units], ["zephan-log-ship@.service", "zephan-metrics@.service", "zephan-metrics@.timer"])
        for unit in units:
            self.assertEqual(run("systemd-analyze", "verify", unit, cwd=self.scratch), "")
            if unit.suffix == ".service":
                run("systemd-analyze", "security", "--offline=true", "--threshold=20", unit, cwd=self.scratch)

    def test_debug_symbols_are_those_of_the_library(self):
        symbols, = self.root.glob("usr/lib/debug/.build-id/*/*.debug")
        notes = run("readelf", "--notes", self.libraries / "libZephanRSMLogger.so.1", cwd=self.scratch)
        self.assertIn(f"Build ID: {symbols.parent.name}{symbols.stem}\n", notes)
        self.assertIn("ForcePollingTask", run("nm", "--demangle", symbols, cwd=self.scratch))

    def test_nothing_tells_where_it_was_built(self):
        """So two trees give the same packages. What compilers write of it would be in the debug symbols, and so in each build ID."""
        symbols, = self.root.glob("usr/lib/debug/.build-id/*/*.debug")
        run("objcopy", "--decompress-debug-sections", symbols, "symbols", cwd=self.scratch)
        for path in [self.scratch / "symbols", *self.root.rglob("*")]:
            if path.is_file():
                for place in (str(SOURCE), os.environ["BUILD"]):
                    self.assertNotIn(os.fsencode(place), path.read_bytes(), path)

    def test_what_is_shipped_is_hardened(self):
        files = [path for folder in ("usr/bin", self.libraries) for path in (self.root / folder).rglob("*")
                 if path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF"]
        self.assertGreaterEqual(len(files), 5)
        for path in files:
            with self.subTest(path.name):
                told = run("readelf", "--wide", "--file-header", "--program-headers", "--dynamic", path, cwd=self.scratch)
                self.assertRegex(told, r"Type:\s+DYN")  # a library, or a program that may lie anywhere
                self.assertIn("GNU_RELRO", told)
                self.assertRegex(told, r"FLAGS.*NOW")
                self.assertNotRegex(told, r"GNU_STACK.*E 0x")
                symbols = run("readelf", "--wide", "--dyn-syms", path, cwd=self.scratch)
                self.assertIn("__stack_chk_fail", symbols)
                self.assertRegex(symbols, r"__\w+_chk@")

    def test_what_the_module_needs_of_an_agent_is_written_down(self):
        """All of it is bound when the module is loaded: an agent that lacks one function does not load it."""
        module = next(self.libraries.glob("libZephanRSMLogger.so.*.*"))
        found = run("nm", "--dynamic", "--undefined-only", "--demangle", module, cwd=self.scratch)
        needed = {line.strip().split(" ", 1)[1] for line in found.splitlines()}
        needed = {name for name in needed if "@" not in name and not name.startswith(("XML_", "_ITM_", "__gmon"))}
        written = {line for line in (SOURCE / "src/entry/agent-functions").read_text().splitlines() if not line.startswith("#")}
        self.assertEqual(needed - {line.removesuffix(" [by some]") for line in written}, set())
        self.assertEqual({line for line in written if not line.endswith("]")} - needed, set())

    def test_lintian_finds_nothing(self):
        if shutil.which("lintian") is None:
            self.skipTest("no lintian")
        found = run("lintian", "--allow-root", "--fail-on", "error,warning", *self.packages.values(), cwd=self.scratch)
        self.assertNotRegex(found, "(?m)^[EW]:")

    def test_each_program_has_a_manual_page(self):
        programs = sorted(path.name for path in (self.root / "usr/bin").iterdir())
        self.assertEqual(programs, ["krx-agent-sim", "zephan-config-check", "zephan-log", "zephan-session", "zephan-status"])
        for program in programs:
            page = run("zcat", self.root / f"usr/share/man/man1/{program}.1.gz", cwd=self.scratch)
            for section in ("NAME", "SYNOPSIS", "DESCRIPTION"):
                self.assertIn(f".SH {section}\n", page)

    def test_completions_know_every_option(self):
        helper = pathlib.Path("/usr/share/bash-completion/bash_completion")
        if not helper.exists():
            self.skipTest("no bash-completion")
        for program in (self.root / "usr/bin").iterdir():
            completion = self.root / "usr/share/bash-completion/completions" / program.name
            script = (f'. {helper}; . "$1"; COMP_WORDS=({program.name} --); COMP_CWORD=1; COMP_LINE="{program.name} --"; '
                      f'COMP_POINT=${{#COMP_LINE}}; _{program.name.replace("-", "_")} {program.name} 2>/dev/null; '
                      'printf "%s\\n" "${COMPREPLY[@]}"')
            words = run("bash", "-c", script, "bash", completion, cwd=self.scratch,
                        environment={"PATH": f"{program.parent}:{os.environ['PATH']}"}).split()
            options = re.findall(r"(?m)^ {2,6}(?:-\w, )?(--[\w-]+)", run(program, "--help", cwd=self.scratch))
            self.assertGreater(len(options), 3)
            self.assertEqual(sorted(word.rstrip("=") for word in words), sorted(options), program.name)

    def test_a_replay_is_that_of_the_build(self):
        place = workspace(self.scratch, "replay", self.share / "zephan-config.xml")
        run(self.root / "usr/bin/krx-agent-sim", "replay", self.share / "service-visit.scenario", "--trace", "trace.jsonl",
            cwd=place, environment={"TZ": "UTC"})
        self.assertEqual((place / "trace.jsonl").read_text(), (SOURCE / "tests/golden/service-visit.jsonl").read_text())
        self.assertIn("Remote tunnel opened", run(self.root / "usr/bin/zephan-log", "log/kelp-logs.xml", cwd=place))
        run(self.root / "usr/bin/zephan-config-check", "--quiet", "zephan-config.xml", cwd=place)

    def test_c_example_with_pkg_config(self):
        place = workspace(self.scratch, "c", self.share / "zephan-config.xml")
        shutil.copy(self.examples / "minimal-agent.c", place)
        flags = run("pkg-config", "--cflags", "--libs", "zephan-rsm-logger", cwd=place,
                    environment={"PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")})
        run(os.environ["CC"], "-std=c99", *shlex.split(os.environ["WARNINGS"]), "-o", "agent", "minimal-agent.c",
            *shlex.split(flags), cwd=place, environment=self.environment)
        said = run("./agent", "zephan-config.xml", "state/schedule.xml", cwd=place, environment=self.environment)
        self.assertIn("CommandResult: Pass", said)
        self.assertIn("An audit message", (place / "log/kelp-logs.xml").read_text())
        # A host linked with 1.0.0 asks for the library by its name without a number, and for exports without a version.
        exports = re.findall(r" T (\w+)", run("nm", "--dynamic", self.libraries / "libZephanRSMLogger.so.1", cwd=place))
        (place / "before.c").write_text("".join(f"void {name}(void) {{}}\n" for name in exports))
        run(os.environ["CC"], "-shared", "-fPIC", "-Wl,-soname,libZephanRSMLogger.so", "-o", "before.so", "before.c", cwd=place)
        run(os.environ["CC"], "-o", "host", "minimal-agent.c", f"-I{self.root}/usr/include", "./before.so", cwd=place)
        said = run("./host", "zephan-config.xml", "state/schedule.xml", cwd=place, environment=self.environment)
        self.assertIn("CommandResult: Pass", said)
        self.assertIn("ZPXRSMLoggerStatup answered -1",
                      run("./agent", "missing.xml", "state/schedule.xml", cwd=place, environment=self.environment, status=1))

    def test_cpp_example_with_find_package(self):
        place = workspace(self.scratch, "cpp", self.share / "zephan-config.xml")
        run(os.environ["CMAKE"], "-S", SOURCE / "tests/package/consumer", "-B", "build", f"-DCMAKE_PREFIX_PATH={self.root}/usr",
            f"-DEXAMPLE={self.examples}/minimal-agent.cpp", f"-DCMAKE_CXX_FLAGS={os.environ['WARNINGS']}", cwd=place)
        run(os.environ["CMAKE"], "--build", "build", cwd=place)
        # By the name without a number, as agents load it.
        said = run("build/agent", "libZephanRSMLogger.so", "zephan-config.xml", "state/schedule.xml", cwd=place,
                   environment=self.environment)
        self.assertIn("Thread exited successfully.", said)
        self.assertNotIn("answered", said)


class Subproject(unittest.TestCase):
    def test_a_device_with_an_agent_of_its_own(self):
        with tempfile.TemporaryDirectory(prefix="package test ") as scratch:
            place = workspace(pathlib.Path(scratch), "run", EXAMPLES / "zephan-config.xml")
            run(os.environ["CMAKE"], "-G", "Ninja", "-S", EXAMPLES / "own-agent", "-B", "build", f"-DZEPHAN_SOURCE={SOURCE}",
                f"-DCMAKE_PROJECT_Device_INCLUDE={SOURCE}/tests/package/Subproject.cmake",
                f"-DBUILT_OBJECTS={os.environ['OBJECTS'].replace(',', ';')}", cwd=scratch)
            run(os.environ["CMAKE"], "--build", "build", cwd=scratch)
            self.assertEqual(run("../build/device", "zephan-config.xml", cwd=place),
                             "report after 0 polls: FORCE_POLL_GRACE\nreport after 4 polls: NOT_ACTIVE\nconnect: 0, 4 polls\n")
            run(os.environ["CMAKE"], "--install", "build", "--component", "module", "--prefix", place / "device", cwd=scratch)
            # The library with its two links, and nothing else.
            self.assertEqual(len([path for path in (place / "device").rglob("*") if not path.is_dir()]), 3)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[1:]])
