#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What somebody else builds a collector with: an installation alone, by docs/writing-a-collector.md.

The page is followed to the letter in a home folder of the test's own: its commands are run in
order and have to print what it shows, and the code it shows has to be the example's. Then what the
page tells is looked at more closely.

Usage: sdk_test.py CMAKE COMPILER FLAGS SOURCE-FOLDER BUILD-FOLDER
"""
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "support"))
from documents import Outcome, blocks, followed, page_commands

CMAKE, COMPILER, FLAGS = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PAGE = (ROOT / "docs" / "writing-a-collector.md").read_text(encoding="utf-8")
EXAMPLE = ROOT / "examples" / "microcode"

WARNINGS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Werror"
CLASS = "ACME_ProcessorMicrocode"
TWO_PACKAGES = [
    {
        "Package": package,
        "Processor": "Example Xylem 8 CPU @ 2.10GHz",
        "Version": "0x5003604",
        "SoftwareElementID": "06-55-07",
        "SoftwareElementState": 3,
        "TargetOperatingSystem": 66,
    }
    for package in (0, 1)
]


def environment(home):
    """Nothing that the caller has set up leads to another installation."""
    kept = {name: value for name, value in os.environ.items()
            if not re.match(r"CMAKE_PREFIX|CMAKE_BUILD|CMAKE_INSTALL|PKG_CONFIG|LD_LIBRARY|DESTDIR|"
                            r"vel_|CPATH|LIBRARY_PATH", name)}
    return kept | {"HOME": str(home), "CXX": COMPILER, "CXXFLAGS": f"{WARNINGS} {FLAGS}",
                   "LDFLAGS": FLAGS, "LC_ALL": "C.UTF-8",
                   "COLUMNS": str(80 + len(str(home)) - len("/home/you"))}  # that stands for it


def installed(prefix, **variables):
    subprocess.run([CMAKE, "--install", BUILD, *(["--prefix", prefix] if prefix else [])],
                   env={**os.environ, **variables}, capture_output=True, check=True)


class Folder:
    """A home, the project beside it as the page has it, and what the page's commands did there."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        top = pathlib.Path(self.folder.name).resolve()
        self.home, self.project = top / "home", top / "project"
        self.home.mkdir()
        self.project.mkdir()
        (self.project / "build").symlink_to(BUILD)
        shutil.copytree(EXAMPLE, self.project / "examples" / "microcode")
        self.prefix = self.home / "vel"
        self.example = self.home / "microcode"
        outcomes = followed([command.text for command in page_commands(PAGE)], self.project,
                            environment(self.home))
        self.outcomes = [Outcome(one.status, self.shown(one.out), self.shown(one.err)) for one in outcomes]

    def shown(self, text):
        return text.replace(str(self.home), "/home/you")

    def run(self, *command):
        run = subprocess.run([str(word) for word in command], env=environment(self.home),
                             cwd=self.home, capture_output=True, text=True, check=False)
        return Outcome(run.returncode, run.stdout, run.stderr)

    def velhost(self, *arguments):
        return self.run(self.prefix / "bin" / "velhost", *arguments)

    def pkg_config(self, *arguments):
        package = self.prefix / "lib" / "pkgconfig"
        run = self.run("pkg-config", f"--with-path={package}", *arguments, "vel")
        return shlex.split(run.out)


class Kit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.here = Folder()
        cls.addClassCleanup(cls.here.folder.cleanup)

    def setUp(self):
        """The collector of the invented machine is installed, and no other's."""
        install = self.here.run(CMAKE, "--install", self.here.example / "build")
        self.assertEqual(0, install.status, install.err)

    # ---- the page

    def test_the_pages_code_is_the_examples(self):
        shown = [block for block in blocks(PAGE) if block.language != "console"]
        self.assertTrue(shown)
        for block in shown:
            with self.subTest(block.line):
                self.assertIn(block.text, (EXAMPLE / block.name).read_text(encoding="utf-8"))

    def test_the_page_names_each_file(self):
        for file in EXAMPLE.iterdir():
            with self.subTest(file.name):
                self.assertIn(file.name, PAGE)

    def test_the_pages_commands(self):
        listed = page_commands(PAGE)
        self.assertGreater(len(listed), 20)
        for command, outcome in zip(listed, self.here.outcomes):
            with self.subTest(command.text):
                if command.shown.startswith("velhost: "):
                    self.assertNotIn(outcome.status, (0, 3))
                    self.assertIn(command.shown.strip(), outcome.err.splitlines())
                    continue
                self.assertIn(outcome.status, self.good_statuses(command.text), outcome)
                if command.shown:
                    self.assertEqual(command.shown, outcome.out)

    def good_statuses(self, command):
        """3: of the machine that the test runs on something cannot be read."""
        return (0, 3) if re.match(r"velhost (query|record) (?!.*--machine)", command) else (0,)

    # ---- the installation

    def test_the_installation_may_be_moved(self):
        """It has the same bytes wherever it is installed, and says nowhere where that is."""
        with tempfile.TemporaryDirectory() as stage, tempfile.TemporaryDirectory() as prefix:
            installed(None, DESTDIR=stage)
            staged = next(pathlib.Path(stage).rglob("bin/velhost")).parent.parent
            installed(prefix)
            files = self.contents(pathlib.Path(prefix))
            self.assertEqual(files, self.contents(staged))
        self.assertIn(pathlib.Path("lib/pkgconfig/vel.pc"), files)
        # Programs and libraries may have the sources' names in their debug information.
        texts = {name: text for name, text in files.items() if not text.startswith(b"\x7fELF")}
        for name, text in texts.items():
            for folder in (ROOT, BUILD, prefix):
                self.assertNotIn(os.fsencode(folder) + b"/", text, name)

    def contents(self, folder):
        return {file.relative_to(folder): file.read_bytes()
                for file in folder.rglob("*") if file.is_file()}

    def test_the_headers_are_the_public_ones_and_each_compiles_alone(self):
        include = self.here.prefix / "include" / "vel"
        headers = sorted(file.name for file in include.iterdir())
        public = ROOT / "platform" / "include" / "vel"
        self.assertEqual(sorted(file.name for file in public.iterdir()), headers)
        compile_one = [COMPILER, *WARNINGS.split(), "-std=c++17", "-fsyntax-only", "-x", "c++",
                       *self.here.pkg_config("--cflags")]
        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            runs = pool.map(lambda name: self.alone(compile_one, name), headers)
            for name, run in zip(headers, runs):
                self.assertEqual((0, ""), (run.returncode, run.stderr), name)

    def alone(self, compile_one, name):
        return subprocess.run([*compile_one, "-"], input=f"#include <vel/{name}>\n",
                              capture_output=True, text=True, check=False)

    def test_both_packages_tell_the_same(self):
        include, library = self.here.prefix / "include", self.here.prefix / "lib"
        flags = [self.resolved(flag) for flag in self.here.pkg_config("--cflags", "--libs")]
        self.assertEqual([f"-I{include}", "-DBOOST_ENABLE_ASSERT_HANDLER", f"-L{library}",
                          "-lvelcore", "-lplugin.nsp", "-lspdriver", "-lsmbios"], flags)
        for variable, folder in (("collectorsdir", library),
                                 ("schemadir", self.here.prefix / "share" / "vel" / "schema")):
            told, = self.here.pkg_config(f"--variable={variable}")
            self.assertEqual(str(folder), self.resolved(told))
        self.assertEqual(self.here.pkg_config("--modversion"), [self.package_version()])
        self.assertIn("-DBOOST_ENABLE_ASSERT_HANDLER ", self.build_commands())

    def resolved(self, flag):
        option, slash, path = flag.partition("/")
        return option + (os.path.normpath(slash + path) if slash else "")

    def package_version(self):
        file = self.here.prefix / "lib" / "cmake" / "vel" / "vel-config-version.cmake"
        return re.search(r'PACKAGE_VERSION "(.*)"', file.read_text(encoding="utf-8"))[1]

    def build_commands(self):
        return self.here.run("ninja", "-C", self.here.example / "build", "-t", "commands").out

    # ---- what was built with it

    def test_the_installation_alone_is_used(self):
        build, plugin = self.here.example / "build", "libmicrocode.pi.so"
        read = self.build_commands() + self.here.run("ninja", "-C", build, "-t", "deps").out
        self.assertIn(f"{self.here.prefix}/include/vel/plugin.h", read)
        self.assertIn(f"{self.here.prefix}/lib/libvelcore.so", read)
        for file in (build / plugin, self.here.prefix / "lib" / plugin):
            read += self.here.run("readelf", "--wide", "--dynamic", file).out
        for folder in (ROOT, BUILD):
            self.assertNotIn(f"{folder}/", read)

    def test_libraries_are_the_installations(self):
        plugin = self.here.prefix / "lib" / "libmicrocode.pi.so"
        trace = subprocess.run(
            [self.here.prefix / "bin" / "velhost", "query", CLASS], cwd=self.here.home,
            env=environment(self.here.home) | {"LD_DEBUG": "files"},
            capture_output=True, text=True, check=False).stderr
        loaded = set(re.findall(r"calling init: (\S+)", trace))
        self.assertIn(str(plugin), loaded)
        self.assertEqual({str(self.here.prefix / "lib")},
                         {os.path.dirname(os.path.normpath(file)) for file in loaded if re.search(
                             r"velcore|plugin\.nsp|spdriver|smbios|\.pi\.so", file)})

    # ---- the collector among the others

    def machine(self, *collectors):
        """A machine of ours on which these collectors run too."""
        text = (ROOT / "machines" / "two-nodes.json").read_text(encoding="utf-8")
        file = self.here.home / "machine.json"
        file.write_text(json.dumps(json.loads(text) | {"collectors": collectors}), encoding="utf-8")
        return file

    def answer(self, *arguments):
        run = self.here.velhost("query", "--format", "json", *arguments)
        self.assertIn(run.status, (0, 3), run.err)
        return json.loads(run.out)

    def test_it_answers_beside_ours(self):
        ours = self.answer("--machine", ROOT / "machines" / "two-nodes.json")
        self.assertTrue(ours["KRXSG_Vpd"])
        both = self.answer("--machine", self.machine("Microcode"))
        self.assertEqual(list({**ours, CLASS: TWO_PACKAGES}.items()), list(both.items()))
        asked = self.answer("--machine", self.machine("Microcode"), CLASS, "KRXSG_Vpd")
        self.assertEqual([(CLASS, TWO_PACKAGES), ("KRXSG_Vpd", ours["KRXSG_Vpd"])],
                         list(asked.items()))
        self.assertEqual(TWO_PACKAGES, self.answer()[CLASS])

    def test_this_machines_processors(self):
        """The plug-in that was built without CMake reads the kernel's own text."""
        plugin = self.here.example / "libmicrocode.pi.so"
        told = [(row["Package"], row["Version"])
                for row in self.answer("--plugin", plugin, CLASS)[CLASS]]
        text = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8")
        expected = {}
        for processor in text.split("\n\n"):
            revision = re.search(r"^microcode\s*: (.*)$", processor, re.MULTILINE)
            package = re.search(r"^physical id\s*: (\d+)$", processor, re.MULTILINE)
            if revision:
                expected.setdefault(int(package[1]) if package else 0, revision[1])
        self.assertEqual(sorted(expected.items()), told)

    def test_a_recording_has_what_it_published(self):
        machine, recorded = self.machine("Microcode"), self.here.home / "both.json"
        run = self.here.velhost("record", "--machine", machine, "--output", recorded, "--force")
        self.assertEqual(0, run.status, run.err)
        document = json.loads(recorded.read_text(encoding="utf-8"))
        self.assertEqual(["Microcode"], document["collectors"])
        self.assertEqual(TWO_PACKAGES, document["instances"][CLASS])
        before = self.here.velhost("query", "--machine", machine, "--format", "trace")
        (self.here.prefix / "lib" / "libmicrocode.pi.so").unlink()
        after = self.here.velhost("query", "--machine", recorded, "--format", "trace")
        self.assertEqual(self.queries(before), self.queries(after))

    def queries(self, run):
        self.assertEqual(0, run.status, run.err)
        return json.loads(run.out)["queries"]

    def test_mof_is_printed_as_the_same_class(self):
        printed = self.here.velhost("classes", "--format", "mof", CLASS)
        table = self.here.velhost("classes", "--format", "json", CLASS)
        own = printed.out[printed.out.index('[Description("Microcode'):]
        schema = self.here.prefix / "share" / "vel" / "schema"
        (schema / "70-microcode.mof").write_text(own, encoding="utf-8")
        self.assertEqual(printed, self.here.velhost("classes", "--format", "mof", CLASS))
        self.assertEqual(table, self.here.velhost("classes", "--format", "json", CLASS))

    def test_what_is_missing_is_told_in_one_line(self):
        plugin = self.here.prefix / "lib" / "libmicrocode.pi.so"
        refused = f"velhost: the plug-in refused the request: TVELException code 2: class {CLASS} is not served\n"
        unserved = refused + f"velhost: no collector serves {CLASS}: "
        missing = "Microcode (libmicrocode.pi.so) is missing or does not load\n"
        for what, collectors, prepare, lines in (
            ("not listed", [], lambda: None,
             unserved + "the machine's file does not list Microcode\n"),
            ("no shared object", ["Microcode"], lambda: plugin.write_bytes(b""),
             f"{refused}velhost: {plugin}: file too short\n"
             f"velhost: no collector serves {CLASS}: {missing}"),
            ("not there", ["Microcode"], plugin.unlink, unserved + missing),
        ):
            with self.subTest(what):
                prepare()
                run = self.here.velhost("query", "--format", "json", "--log-level", "-1",
                                        "--machine", self.machine(*collectors),
                                        "KRXSG_SystemBIOSElement", CLASS)
                self.assertEqual((1, lines), (run.status, run.err))
                answer = json.loads(run.out)
                self.assertTrue(answer["KRXSG_SystemBIOSElement"])
                self.assertEqual([], answer[CLASS])


if __name__ == "__main__":
    unittest.main()
