#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""`velhost report` without a browser: that its page is valid and has all that a query tells, which files
it takes, how it ends.

Usage: report_test.py VELHOST SOURCE-FOLDER
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import html5lib

VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MACHINES = ROOT / "machines"
HTML = "{http://www.w3.org/1999/xhtml}"


def velhost(*arguments, stdin=subprocess.DEVNULL, **more):
    return subprocess.run([VELHOST, *arguments], capture_output=True, check=False, stdin=stdin,
                          encoding="utf-8", **more)


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def parsed(page):
    """The document; an error of its HTML is an exception."""
    return html5lib.HTMLParser(strict=True).parse(page.read_text(encoding="utf-8"))


def text_of(element):
    return "".join(element.itertext())


def has_class(element, name):
    return name in element.get("class", "").split()


def sections(document):
    return [e for e in document.iter(HTML + "section") if has_class(e, "machine")]


class Report(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.page = self.path("page.html")

    def path(self, name):
        return pathlib.Path(self.folder.name) / name

    def report(self, *files, status=0, error="", **more):
        run = velhost("report", *files, "--output", self.page, **more)
        self.assertEqual((status, "", error), (run.returncode, run.stdout, run.stderr))
        return parsed(self.page)

    def refused(self, error, *arguments):
        run = velhost("report", *arguments)
        self.assertEqual((2, ""), (run.returncode, run.stdout))
        self.assertRegex(run.stderr, f"^velhost: {error}[^\n]*\n$")

    def test_every_machine_has_all_that_a_query_tells(self):
        files = machine_files()
        told = sections(self.report(*files))
        self.assertEqual(len(files), len(told))
        for file, section in zip(files, told):
            inventory = json.loads(velhost("query", "--machine", file, "--format", "inventory").stdout)
            text = text_of(section)
            for entry in inventory["classes"]:
                with self.subTest(file.name, entry=entry["class"]):
                    self.check_class(entry, section, text)

    def check_class(self, entry, section, text):
        rows = [[text_of(cell) for cell in row] for table in section.iter(HTML + "table")
                if has_class(table, "classes") for row in table.iter(HTML + "tr")]
        row = next(row for row in rows if row[0] == entry["class"])
        self.assertEqual([entry["state"], str(len(entry["instances"]))], row[1:3])
        self.assertEqual(entry["reason"] or "", row[4])
        for instance in entry["instances"]:
            for name, value in instance.items():
                # Dates and numbers may be shown otherwise, what cannot be seen is escaped.
                if isinstance(value, str) and value.strip() and value.isprintable() and \
                        not re.fullmatch(r"\d{14}\..*", value) and "\ufffd" not in value:
                    self.assertIn(value.rstrip(" "), text, name)

    def test_the_same_machines_give_the_same_bytes(self):
        files = machine_files()
        self.report(*files)
        first = self.page.read_bytes()
        self.report(*files)
        self.assertEqual(first, self.page.read_bytes())

    def test_whatever_velhost_writes_is_taken(self):
        machine = MACHINES / "two-nodes.json"
        self.report(machine)
        names = {"machine file": machine, "DMI dump": MACHINES / "ordinary-server.dmi"}
        for output in ("inventory", "trace", "json"):
            names[output] = self.path(output + ".json")
            names[output].write_text(velhost("query", "--machine", machine, "--format", output).stdout,
                                     encoding="utf-8")
        for what, file in names.items():
            with self.subTest(what):
                self.assertEqual(1, len(sections(self.report(file))))
        with open(machine, encoding="utf-8") as stdin:
            text = text_of(self.report("-", stdin=stdin))
        self.assertIn("standard input", text)
        self.assertIn("DIMM 5", text)

    def test_a_document_without_states_does_not_call_anything_absent(self):
        plain = self.path("plain.json")
        plain.write_text('{ "KRXSG_cKVM": [] }')
        text = text_of(sections(self.report(plain))[0])
        self.assertIn("not told", text)
        self.assertNotIn("absent", text)

    def test_one_bad_file_of_several_is_told_on_the_page_too(self):
        bad = self.path("bad<b>.json")
        bad.write_text("{")
        missing = self.path("missing.json")
        run = velhost("report", bad, MACHINES / "two-nodes.json", missing, "--output", self.page)
        self.assertEqual((2, ""), (run.returncode, run.stdout))
        self.assertEqual(2, run.stderr.count("\n"))
        for line, file in zip(run.stderr.splitlines(), (bad, missing)):
            self.assertTrue(line.startswith(f"velhost: {file}:"), line)
        document = parsed(self.page)
        self.assertEqual(1, len(sections(document)))
        rows = [text_of(row) for row in document.iter(HTML + "tr")]
        for file in (bad, missing):
            self.assertTrue(any(row.startswith(f"{file.name}unreadable {file}:") for row in rows), rows)

    def test_without_a_machine_there_is_no_page(self):
        self.page.write_text("before")
        self.refused(".*missing.json: cannot be read: No such file or directory",
                     self.path("missing.json"), "--output", self.page)
        self.assertEqual("before", self.page.read_text())

    def test_bad_use_is_one_line(self):
        machine = MACHINES / "two-nodes.json"
        self.refused("--output is required", machine)
        self.refused("FILE is required", "--output", self.page)
        self.refused(".*nowhere/page.html", machine, "--output", self.path("nowhere/page.html"))
        self.refused("/dev/full: .*No space left on device", machine, "--output", "/dev/full")
        self.assertFalse(self.page.exists())

    def test_a_page_that_cannot_be_written_leaves_what_was_there(self):
        self.page.write_text("before")
        # What a build for coverage counted would be above the limit too.
        limited = 'ulimit -f 8; LLVM_PROFILE_FILE=/dev/null exec "$@"'
        run = subprocess.run(["bash", "-c", limited, "bash", VELHOST, "report",
                              MACHINES / "eight-nodes.json", "--output", self.page],
                             capture_output=True, check=False)
        self.assertEqual(2, run.returncode)
        self.assertEqual(1, run.stderr.count(b"\n"))
        self.assertEqual("before", self.page.read_text())
        self.assertEqual(["page.html"], [path.name for path in pathlib.Path(self.folder.name).iterdir()])

    def test_the_page_may_go_into_a_pipe(self):
        machine = MACHINES / "two-nodes.json"
        self.report(machine)
        run = velhost("report", machine, "--output", "/dev/stdout")
        self.assertEqual((0, self.page.read_text(encoding="utf-8"), ""),
                         (run.returncode, run.stdout, run.stderr))
        closed = subprocess.run(
            ["bash", "-c", '"$@" | true; exit ${PIPESTATUS[0]}', "bash", VELHOST, "report",
             MACHINES / "eight-nodes.json", "--output", "/dev/stdout"],
            capture_output=True, check=False)
        self.assertIn(closed.returncode, (2, -13, 141))

    def test_two_machines_tell_what_changed(self):
        later = self.path("later.json")
        text = (MACHINES / "two-nodes.json").read_text(encoding="utf-8")
        self.assertIn("1.08 [ABC123]", text)
        later.write_text(text.replace("1.08 [ABC123]", "1.09 [ABD124]"), encoding="utf-8")
        document = self.report(MACHINES / "two-nodes.json", later)
        rows = [[text_of(cell) for cell in row] for table in document.iter(HTML + "table")
                if has_class(table, "changes") for row in table.iter(HTML + "tr")]
        self.assertEqual([
            ["What", "Before: two nodes with dot-command SPstwo-nodes.json",
             "After: two nodes with dot-command SPslater.json"],
            ["System BIOS or UEFI firmware, by node"],
            *([f"Node {node}: System BIOS {name}", old, new] for node in (1, 2)
              for name, old, new in (("Version", "108", "109"), ("BuildNumber", "ABC123", "ABD124")))
        ], rows)
        odd = [e for e in document.iter(HTML + "span") if has_class(e, "odd")]
        self.assertEqual([], odd)  # which of the two?

    def test_of_several_the_odd_one_is_marked(self):
        later = self.path("later.json")
        text = (MACHINES / "two-nodes.json").read_text(encoding="utf-8")
        later.write_text(text.replace("1.08 [ABC123]", "1.09 [ABD124]"), encoding="utf-8")
        document = self.report(MACHINES / "two-nodes.json", later, MACHINES / "two-nodes.json")
        notes = [text_of(item) for item in document.iter(HTML + "li")
                 if any(has_class(e, "odd") for e in item)]
        self.assertEqual(["odd two nodes with dot-command SPs later.json: System BIOS or UEFI firmware, "
                          "by node, System BIOS 109 (ABD124); most have 108 (ABC123)"], notes)
        cells = [text_of(cell) for cell in document.iter(HTML + "td")
                 if any(has_class(e, "odd") for e in cell.iter())]
        self.assertEqual(["odd 109 (ABD124)"], cells)


if __name__ == "__main__":
    unittest.main()
