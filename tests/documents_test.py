#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The documents are run: each command that a page shows in a console block prints what stands below it; each
that cannot be run here is listed with the reason, and its options are the program's; links lead somewhere.

Usage: documents_test.py VELHOST SOURCE-FOLDER BUILD-FOLDER
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "support"))
import documents
from parserhelp import Parser

VELHOST, ROOT, BUILD = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(3))
PARSER = Parser(VELHOST)
PAGES = {str(file.relative_to(ROOT)): file.read_text(encoding="utf-8")
         for file in [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md"))]}

# Its commands build, install and remove: tests/sdk_test.py follows it in a home of its own.
FOLLOWED_ELSEWHERE = {"docs/writing-a-collector.md"}

# What is neither a command nor an output. Signs and drawings are `text`.
NO_COMMANDS = {"text", "json", "jsonc", "mof", "cpp", "cmake", "yaml", "promql"}

# Every command of a `sh` block, by the reason why it cannot be run here.
NOT_RUN = {
    "installs packages and builds for minutes": [
        "./run",
        "./test",
        "./test all",
        "tools/build-packages",
        "tools/test-packages",
        "cmake --preset dev && cmake --build --preset dev && ctest --preset dev",
        "bench/table",
        "bench/build && build-bench/bin/collection_bench --benchmark_filter=8x64",
    ],
    "the build folder may be another one than that of this test": [
        "ctest --preset dev -R '^documents$'",
        "build-dev/bin/velhost query --machine machines/two-nodes.json",
    ],
    "takes its time, and tells how much": [
        "RC_PARAMS=\"seed=11212026 max_success=1450\" build/tests/properties_tests",
        "python3 bench/hostile_files.py build/bin/velhost",
        "tests/fuzz/fuzz_long 60",
        "tests/fuzz/fuzz_long 3600 machinefile_fuzz",
        "RC_PARAMS=\"seed=$RANDOM max_success=10000\" build/tests/properties_tests "
        "--gtest_filter='*Redaction*'",
        "tests/mutation/mutate.py --near --folder plugin --folder smbios --folder spcommand "
        "--folder peripheral --folder vpd --folder collectors --count 20",
        "tests/mutation/mutate.py --near --folder platform --folder host --count 40",
        "tests/mutation/mutate.py --near --seed 2 --folder collectors --folder plugin --folder platform "
        "--folder host --count 20",
        "tests/mutation/mutate.py --near --folder spcommand --count 20",
        "build-bench/bin/firstread_bench",
        "build/tests/plugin_sweep_tests",
        "build/tests/files_sweep_tests",
        "build/tests/ipmidevice_sweep_tests",
    ],
    "asks the machine that it runs on, as root": [
        "sudo velhost query",
        "sudo velhost record --output server.json",
        "sudo velhost record --redact --output server.json",
        "sudo velhost query --format inventory --output monday.json",
        "sudo velhost query --format inventory | velhost diff monday.json -",
        "velhost query --format openmetrics --output /var/lib/prometheus/node-exporter/velhost.prom",
    ],
    "needs systemd": [
        "systemctl enable --now velhost-metrics.timer",
    ],
    "is for a shell with a person before it; tests/share has both": [
        "man -M build/share/man velhost",
        "source build/share/bash-completion/completions/velhost",
        "PATH=$PWD/build/bin:$PATH",
    ],
}

# Options that a page names by themselves, of programs that are not of the tree.
OTHERS_OPTIONS = {"--cflags", "--libs", "--variable", "--storage", "--whole-archive"}

SHOWN_COMMAND = re.compile(r"^\s*(?:\$ |(?:sudo )?(?:\S*/)?velhost [a-z]|velhost: )", re.MULTILINE)


def environment(home):
    return {"HOME": str(home), "PATH": f"{VELHOST.parent}:/usr/bin:/bin", "LC_ALL": "C.UTF-8",
            "COLUMNS": "80"}


def playground(folder):
    """What a checkout has, to be read; what a page writes stays here."""
    place, home = folder / "checkout", folder / "home"
    place.mkdir()
    home.mkdir()
    for entry in ROOT.iterdir():
        if not entry.name.startswith((".", "build")):
            (place / entry.name).symlink_to(entry)
    (place / "build").symlink_to(BUILD)
    return place, home


def shell_commands(text):
    """The lines of a `sh` block, without comments; a backslash at the end goes on with the next one."""
    lines = (re.sub(r"(^|\s+)# .*", "", line) for line in text.replace("\\\n", "").splitlines())
    return [" ".join(line.split()) for line in lines if line.strip()]


def invocations(command):
    """The words behind each velhost in a command line."""
    for part in re.split(r"[|;&()<>]+", command):
        words = [word for word in part.split() if word not in ("sudo", "$")]
        if words and (words[0] == "./run" or words[0].rpartition("/")[2] == "velhost"):
            yield words[1:]


def sh_commands():
    """(page, command) of every `sh` block."""
    return [(name, command) for name, page in PAGES.items() for block in documents.blocks(page)
            if block.language == "sh" for command in shell_commands(block.text)]


def options_of_scripts():
    """Those that the tree's own Python programs take."""
    programs = [file.read_text(encoding="utf-8") for file in (ROOT / "tests").rglob("*.py")]
    return {option for text in programs if "ArgumentParser" in text
            for option in re.findall(r'add_argument\(\s*"(--[\w-]+)"', text)}


def listed_tests(pattern):
    return subprocess.run(["ctest", "--test-dir", BUILD, "-N", "-R", pattern], check=True,
                          capture_output=True, text=True).stdout


class Reading(unittest.TestCase):
    """How the others read a page."""

    def test_what_is_shown(self):
        for shown, text, expected in (
                ("a\nb\n", "a\nb\n", True),
                ("a\n", "a\nb\n", False),
                ("", "a\n", False),
                ("a\n", "a  \n", True),
                ("a.c\n", "abc\n", False),
                ("a\n...\n", "a\nb\nc\n", True),
                ("...\nc\n", "a\nb\nc\n", True),
                ("a\n...\nd\n...\n", "a\nb\nc\nd\ne\n", True),
                ("a\n...\n", "a\n", False),  # nothing is left out
                ("a\n...\nc\n", "a\nb\nd\n", False)):
            with self.subTest(shown=shown, text=text):
                self.assertEqual(expected, documents.shows(shown, text))

    def test_the_first_line_that_is_not_so(self):
        for shown, expected in (("x\nb\nc\n", 0), ("a\nx\n", 1), ("a\n...\nx\n", 2), ("a\nb\n", 2)):
            with self.subTest(shown):
                self.assertEqual(expected, documents.first_unshown(shown, "a\nb\nc\n"))

    def test_a_console_block(self):
        self.assertEqual([("a \\\n  b", "one\ntwo\n"), ("echo $?", "1\n")],
                         documents.commands("$ a \\\n  b\none\ntwo\n$ echo $?\n1\n"))

    def test_commands_that_are_not_run(self):
        self.assertEqual(["./run", "a b c"], shell_commands("./run   # builds\n\na \\\n  b c\n"))

    def test_calls_of_velhost(self):
        for command, expected in (
                ("sudo build/bin/velhost query --wide", [["query", "--wide"]]),
                ("velhost query | velhost diff a -", [["query"], ["diff", "a", "-"]]),
                ("systemd-cat -t velhost", []),
                ("./run explain X >file", [["explain", "X"]])):
            with self.subTest(command):
                self.assertEqual(expected, list(invocations(command)))

    def test_links_and_headings(self):
        page = "# A `b` c's\n\n[x](a.md#d) `[y](none)`\n\n```text\n# no [z](none)\n```\n"
        self.assertEqual((["a.md#d"], {"a-b-cs"}), (documents.links(page), documents.anchors(page)))

    def test_commands_run_in_one_shell(self):
        with tempfile.TemporaryDirectory() as folder:
            outcomes = documents.followed(["cd /", "pwd; echo x >&2; false", "echo $?"], folder, os.environ)
        self.assertEqual([(0, "", ""), (1, "/\n", "x\n"), (0, "1\n", "")], outcomes)


class Form(unittest.TestCase):
    """So that nothing is shown which nobody runs."""

    def test_blocks_are_of_a_known_kind(self):
        for name, page in PAGES.items():
            self.assertEqual(2 * len(documents.blocks(page)), len(re.findall("^ *```", page, re.MULTILINE)),
                             name)
            for block in documents.blocks(page):
                self.assertIn(block.language, NO_COMMANDS | {"console", "sh"}, (name, block.line))

    def test_no_block_is_indented(self):
        """A line behind another one only goes on with it."""
        for name, page in PAGES.items():
            found = re.search(r"(?:^|\n)[ >]*\n(?:    |\t).*", documents.prose(page))
            self.assertIsNone(found, f"{name}: {found and found[0].strip()}")

    def test_other_blocks_show_no_command(self):
        for name, page in PAGES.items():
            for block in documents.blocks(page):
                if block.language in NO_COMMANDS:
                    self.assertIsNone(SHOWN_COMMAND.search(block.text), (name, block.line))

    def test_console_blocks_are_commands(self):
        for name, page in PAGES.items():
            for block in documents.blocks(page):
                if block.language == "console":
                    shown = documents.commands(block.text)
                    self.assertTrue(block.text.startswith("$ "), (name, block.line))
                    self.assertEqual(block.text, "".join(f"$ {one.text}\n{one.shown}" for one in shown))


class Shown(unittest.TestCase):
    """Of one page each, in one shell, in the folder of a checkout."""

    def test_outputs_are_as_shown(self):
        for name in sorted(PAGES.keys() - FOLLOWED_ELSEWHERE):
            shown = documents.page_commands(PAGES[name])
            with tempfile.TemporaryDirectory() as folder:
                place, home = playground(pathlib.Path(folder).resolve())
                outcomes = documents.followed([one.text for one in shown], place, environment(home))
            followers = [one.text for one in shown[1:]] + [""]
            for command, follower, outcome in zip(shown, followers, outcomes):
                with self.subTest(page=name, command=command.text):
                    self.check(command, outcome)
                    if follower != "echo $?":
                        self.assertEqual(0, outcome.status, "the page does not show the status")

    def check(self, command, outcome):
        """A terminal shows both streams; which one comes first is for the page to know."""
        both = (outcome.err + outcome.out, outcome.out + outcome.err)
        if not any(documents.shows(command.shown, text) for text in both):
            line = min(documents.first_unshown(command.shown, text) for text in both)
            self.fail(f"line {line + 1} below the command is not what it prints:\n{both[0][:4000]}")

    def test_pages_of_commands_have_some(self):
        for name in ("README.md", "CONTRIBUTING.md", "docs/operators.md", "docs/formats.md",
                     "docs/explain.md", "docs/states.md", "docs/machine-file.md"):
            self.assertTrue(documents.page_commands(PAGES[name]), name)


class Named(unittest.TestCase):
    """What is not run is held against the program and the tree."""

    def check_words(self, words):
        if not words or words[0].isupper():
            return
        command = None if words[0].startswith("-") else words[0]
        self.assertIn(command, [None, *PARSER.commands()])
        known = PARSER.options(command)
        for place, word in enumerate(words):
            option, _, value = word.partition("=")
            if option.startswith("--"):
                self.assertIn(option, known)
            if option == "--format" and (value or words[place + 1]).islower():
                self.assertIn(value or words[place + 1], PARSER.formats(command))

    def test_every_command_that_is_not_run_is_listed(self):
        listed = [command for commands in NOT_RUN.values() for command in commands]
        self.assertEqual(sorted(set(listed)), sorted(listed))
        for page, command in sh_commands():
            self.assertIn(command, listed, page)
        self.assertEqual(set(), set(listed) - {command for _, command in sh_commands()}, "no page shows")

    def test_the_options_of_what_is_not_run(self):
        for page, command in sh_commands():
            for words in invocations(command):
                with self.subTest(page=page, command=command):
                    self.check_words(words)

    def test_the_options_of_code_in_a_line(self):
        for name, page in PAGES.items():
            for code in documents.inline_code(page):
                for words in invocations(code):
                    with self.subTest(page=name, code=code):
                        self.check_words(words)

    def test_options_by_themselves(self):
        known = {option for command in [None, *PARSER.commands()] for option in PARSER.options(command)}
        named = {re.match(r"--[\w-]+", code)[0] for page in PAGES.values()
                 for code in documents.inline_code(page) if re.match(r"--\w", code)}
        self.assertEqual(set(), named - known - options_of_scripts() - OTHERS_OPTIONS)
        self.assertEqual(set(), OTHERS_OPTIONS - named, "no page names")

    def test_presets_and_settings_of_the_build(self):
        presets = {one["name"] for one in
                   json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}
        settings = (ROOT / "CMakeLists.txt").read_text() + "".join(
            file.read_text() for file in (ROOT / "tests").rglob("CMakeLists.txt"))
        for name, page in PAGES.items():
            for preset in re.findall(r"--preset[ =]([\w+]+)", page):
                self.assertIn(preset, presets, name)
            for setting in re.findall(r"-D(SPFW_\w+)", page):
                self.assertIn(setting, settings, name)

    def test_tests_that_are_named(self):
        settings = set((BUILD / "CMakeCache.txt").read_text().splitlines())
        has_all = {"SPFW_LONG_TESTS:BOOL=ON", "CMAKE_BUILD_TYPE:STRING=Release"} <= settings
        if not has_all or re.search("Total Tests: 0\n|_NOT_BUILT", listed_tests(".")):
            self.skipTest("not all tests are built")
        for name, page in PAGES.items():
            for pattern in re.findall(r"\bctest\s[^`\n]*-R\s+('[^']*'|[\w.]+)", page):
                self.assertNotIn("Total Tests: 0\n", listed_tests(pattern.strip("'")), (name, pattern))

    def test_files_of_the_tree(self):
        """Code in a line that begins like a place in the tree is one. `share/vel` is an installation's, and a
        name in capitals stands for one."""
        folders = {entry.name for entry in ROOT.iterdir() if entry.is_dir()}
        for name, page in PAGES.items():
            for code in documents.inline_code(page):
                first, slash, _ = code.partition("/")
                is_place = slash and first in folders - {"build"} and re.fullmatch(r"[\w./-]+", code)
                if is_place and not code.startswith("share/vel/") and not pathlib.Path(code).stem.isupper():
                    found = (ROOT / code).exists() or list(ROOT.glob(code + ".*"))
                    self.assertTrue(found, f"{name}: {code}")


class Links(unittest.TestCase):
    def targets(self, name):
        """(page or file from the root, anchor) of each link within the tree."""
        for link in documents.links(PAGES[name]):
            if not re.match(r"[a-z]+:", link):
                file, _, anchor = link.partition("#")
                place = (ROOT / name).parent / file if file else ROOT / name
                yield os.path.relpath(place, ROOT), anchor

    def test_links_lead_somewhere(self):
        for name in PAGES:
            for file, anchor in self.targets(name):
                self.assertTrue((ROOT / file).exists(), f"{name}: {file}")
                if anchor:
                    self.assertIn(anchor, documents.anchors(PAGES[file]), f"{name}: {file}")

    def test_every_page_is_found_from_the_first_one(self):
        found, left = set(), ["README.md"]
        while left:
            name = left.pop()
            if name in PAGES and name not in found:
                found.add(name)
                left += [file for file, _ in self.targets(name)]
        self.assertEqual(set(PAGES), found)


if __name__ == "__main__":
    unittest.main()
