#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The manual pages: what they tell of commands, options, formats and keys is what the program and its
JSON Schemas have, no more and no less; mandoc and groff find nothing wrong; lines fit a terminal; the
examples, and those of the program's own help, do what they should.

Usage: manpages_test.py CMAKE VELHOST SOURCE-FOLDER BUILD-FOLDER
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from parserhelp import Parser

CMAKE = sys.argv.pop(1)
VELHOST, ROOT, BUILD = (pathlib.Path(sys.argv.pop(1)).absolute() for _ in range(3))
PARSER = Parser(VELHOST)
PAGES = {page.name: page for page in sorted((ROOT / "share" / "man").iterdir())}
WIDTH = 80


def run(*words, **more):
    return subprocess.run([str(word) for word in words], capture_output=True, check=False,
                          text=True, **more)


def sections(page, macro):
    """The source below each .Sh or .Ss, by its heading."""
    text = PAGES[page].read_text(encoding="utf-8")
    pieces = re.split(rf"^\.{macro} (.*)$", text, flags=re.MULTILINE)[1:]
    return {name.strip('"'): re.split(r"^\.S[hs] ", body, flags=re.MULTILINE)[0]
            for name, body in zip(pieces[::2], pieces[1::2])}


def items(source, macro):
    """The names that the tags of a list have: .It Li a , b"""
    tags = re.findall(rf"^\.It {macro} (.*)$", source, re.MULTILINE)
    return [name for tag in tags for name in tag.split(" , ")]


def literal_blocks(source):
    """What is shown as it is typed: displays of several lines, and single lines of them."""
    text = re.sub(r"^\.Dl (.*)\n", r".Bd -literal\n\1\n.Ed\n", source, flags=re.MULTILINE)
    text = text.replace("\n.Ed\n.Bd -literal\n", "\n").replace("\\ ", " ")
    return re.findall(r"^\.Bd -literal.*\n((?:.*\n)*?)\.Ed$", text, re.MULTILINE)


def commands_of(block):
    """"$ " begins one; a line without it goes on."""
    return [piece.strip() for piece in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]]


class Pages(unittest.TestCase):
    def test_there_are_two(self):
        self.assertEqual(["velhost-formats.5", "velhost.1"], list(PAGES))

    def test_mandoc_finds_nothing(self):
        for page in PAGES.values():
            lint = run("mandoc", "-T", "lint", "-W", "warning", page)
            self.assertEqual((0, "", ""), (lint.returncode, lint.stdout, lint.stderr), page)

    def test_groff_finds_nothing_and_lines_fit(self):
        for page in PAGES.values():
            shown = run("man", "--warnings", "-l", page,
                        env={**os.environ, "MANWIDTH": str(WIDTH), "LC_ALL": "C.UTF-8"})
            self.assertEqual((0, ""), (shown.returncode, shown.stderr), page)
            self.assertLess(100, shown.stdout.count("\n"))
            for line in shown.stdout.split("\n"):
                self.assertGreaterEqual(WIDTH, len(line), line)

    def test_man_finds_them_beside_the_program(self):
        for name in PAGES:
            title, section = name.rsplit(".", 1)
            found = run("man", "-M", BUILD / "share" / "man", "-w", section, title)
            self.assertEqual(0, found.returncode, found.stderr)
            self.assertEqual(PAGES[name], pathlib.Path(found.stdout.strip()).resolve())


    def test_they_are_installed(self):
        with tempfile.TemporaryDirectory() as prefix:
            run(CMAKE, f"-DCMAKE_INSTALL_PREFIX={prefix}", "-P", BUILD / "share/cmake_install.cmake")
            files = {str(file.relative_to(prefix)): file.read_text()
                     for folder in ("man", "bash-completion")
                     for file in pathlib.Path(prefix, "share", folder).rglob("*") if file.is_file()}
        expected = {"share/man/man1/velhost.1": ROOT / "share/man/velhost.1",
                    "share/man/man5/velhost-formats.5": ROOT / "share/man/velhost-formats.5",
                    "share/bash-completion/completions/velhost": ROOT / "share/bash-completion/velhost"}
        self.assertEqual({name: file.read_text() for name, file in expected.items()}, files)


class Program(unittest.TestCase):
    """velhost.1 and the parser."""

    def test_the_commands(self):
        headings = [name.removeprefix("velhost ") for name in sections("velhost.1", "Ss")]
        self.assertEqual(sorted(PARSER.commands()), sorted(headings))

    def options_in(self, source):
        found = {}
        for tag in re.findall(r"^\.It Fl (.*)$", source, re.MULTILINE):
            name, _, argument = tag.removeprefix("h , ").partition(" Ar ")
            found["-" + name] = argument
        return found

    def test_the_options_of_each_command(self):
        for heading, source in sections("velhost.1", "Ss").items():
            expected = PARSER.options(heading.removeprefix("velhost "))
            del expected["--help"]  # told once for all
            self.assertEqual(expected, self.options_in(source), heading)

    def test_the_options_of_velhost(self):
        self.assertEqual(PARSER.options(), self.options_in(sections("velhost.1", "Sh")["OPTIONS"]))

    def test_the_formats(self):
        for heading, source in sections("velhost.1", "Ss").items():
            told = source.partition(".It Fl -format")[2].partition("\n.It ")[0]
            self.assertEqual(sorted(PARSER.formats(heading.removeprefix("velhost "))),
                             sorted(re.findall(r"^\.Cm (\w+)", told, re.MULTILINE)), heading)

    def test_the_states(self):
        schema = json.loads((ROOT / "schema/json/inventory.schema.json").read_text())
        states = re.findall(r'"(present|partial|absent|elsewhere|unused|unanswered|unreadable|'
                            r'forbidden|failed)"', json.dumps(schema))
        told = items(sections("velhost.1", "Sh")["HOW A CLASS ENDS"], "Cm")
        self.assertEqual(9, len(told))
        self.assertEqual(sorted(set(states)), sorted(told))


class Formats(unittest.TestCase):
    """velhost-formats.5, the schema of machine files, and the parser."""

    SCHEMA = json.loads((ROOT / "machines" / "machine.schema.json").read_text())

    def test_the_keys_of_machine_files(self):
        for heading, properties in [("Top level", self.SCHEMA["properties"]),
                                    ("smbios", self.SCHEMA["$defs"]["smbios"]["properties"]),
                                    ("sp", self.SCHEMA["$defs"]["sp"]["properties"])]:
            told = items(sections("velhost-formats.5", "Ss")[heading], "Li")
            self.assertEqual(sorted(properties), sorted(told), heading)

    def test_the_formats_of_a_query(self):
        told = items(sections("velhost-formats.5", "Sh")["FORMATS OF A QUERY"], "Cm")
        self.assertEqual(PARSER.formats("query"), told)


class Examples(unittest.TestCase):
    """Each is run in a folder that has the files which the examples name."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        shutil.copy(ROOT / "machines" / "two-nodes.json", self.folder / "server.json")
        shutil.copy(ROOT / "machines" / "qemu-q35.dmi", self.folder / "server.dmi")
        shutil.copy(ROOT / "machines" / "two-nodes.json", self.folder / "monday.json")

    # By the machine that is asked; the live one may have something that cannot be read.
    STATUSES = {"velhost diff": [1], "server.": [0], "one-sp.": [3]}

    def expect_answer(self, command):
        with tempfile.TemporaryDirectory() as fresh:
            shutil.copytree(self.folder, fresh, dirs_exist_ok=True)
            shell = run("bash", "-o", "pipefail", "-c", command, cwd=fresh,
                        env={"PATH": f"{VELHOST.parent}:/usr/bin:/bin"}, stdin=subprocess.DEVNULL)
        expected = next((status for file, status in self.STATUSES.items() if file in command), [0, 3])
        self.assertIn(shell.returncode, expected, (command, shell))
        self.assertTrue(shell.stdout or "--output" in command, (command, shell))

    def test_of_the_pages(self):
        smallest, = (block for block in
                     literal_blocks(sections("velhost-formats.5", "Sh")["MACHINE FILES"]))
        one_sp, = (block for block in
                   literal_blocks(sections("velhost-formats.5", "Sh")["EXAMPLES"]) if block[0] == "{")
        (self.folder / "smallest.json").write_text(smallest)
        (self.folder / "one-sp.json").write_text(one_sp)
        self.assertEqual("one-sp.json: ok\nsmallest.json: ok\n",
                         run(VELHOST, "check", "one-sp.json", "smallest.json", cwd=self.folder).stdout)
        for page, least in [("velhost.1", 6), ("velhost-formats.5", 1)]:
            blocks = literal_blocks(sections(page, "Sh")["EXAMPLES"])
            commands = [command for block in blocks for command in commands_of(block)]
            self.assertLessEqual(least, len(commands))
            for command in commands:
                self.expect_answer(command)

    def test_of_the_help(self):
        for command in [None, *PARSER.commands()]:
            examples = PARSER.help(command).partition("\nExamples:\n")[2].partition("\n\n")[0]
            commands = re.findall(r"^  (velhost .*)$", examples, re.MULTILINE)
            self.assertTrue(commands, command)
            for line in commands:
                self.expect_answer(line)

    def test_of_the_help_are_of_that_command(self):
        for command in PARSER.commands():
            examples = PARSER.help(command).partition("\nExamples:\n")[2]
            self.assertIn(f"\n  velhost {command}", "\n" + examples, command)


class Help(unittest.TestCase):
    def test_lines_fit(self):
        for command in [None, *PARSER.commands()]:
            for line in PARSER.help(command).split("\n"):
                self.assertGreaterEqual(WIDTH, len(line), line)


if __name__ == "__main__":
    unittest.main()
