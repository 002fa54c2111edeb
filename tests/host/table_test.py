#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The table of `velhost query`, as people see it: whole tables of several machines, each cell held against
the plain JSON, terminals of several widths with and without colours, and --node in every format.

Usage: table_test.py VELHOST SOURCE-FOLDER
"""
import csv
import fcntl
import io
import json
import os
import pathlib
import pty
import re
import shlex
import struct
import subprocess
import sys
import tempfile
import termios
import unicodedata
import unittest

VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MACHINES = ROOT / "machines"
TABLES = ROOT / "tests" / "host" / "tables"
# Nothing of the caller's that says how tables look.
PLAIN = {name: value for name, value in os.environ.items()
         if name not in ("COLUMNS", "NO_COLOR", "TERM")}
HEXADECIMAL = {"LoadedStartingAddress", "LoadedEndingAddress"}
SHOWN_CUT = 1000  # characters; longer texts are cut wherever they stand


def velhost(*arguments, **environment):
    run = subprocess.run([VELHOST, *map(str, arguments)], capture_output=True, check=False, cwd=ROOT,
                         stdin=subprocess.DEVNULL, env={**PLAIN, **environment})
    return run.returncode, run.stdout.decode(), run.stderr.decode()


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def width(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1
               for c in text)


def on_terminal(columns, *arguments, **environment):
    """The output of a terminal so many columns wide."""
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
    with subprocess.Popen([VELHOST, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=theirs,
                          stderr=subprocess.PIPE, cwd=ROOT, env={**PLAIN, **environment}) as run:
        os.close(theirs)
        text = b""
        while True:
            try:
                piece = os.read(ours, 65536)
            except OSError:  # the other side is closed
                break
            if not piece:
                break
            text += piece
    os.close(ours)
    return text.decode().replace("\r\n", "\n")


class WholeTables(unittest.TestCase):
    def test_tables_are_as_written(self):
        tables = sorted(TABLES.glob("*.txt"))
        self.assertGreaterEqual(len(tables), 8)
        for table in tables:
            with self.subTest(table=table.name):
                command, _, expected = table.read_text(encoding="utf-8").partition("\n")
                words = shlex.split(command)
                self.assertEqual(["$", "velhost"], words[:2])
                self.maxDiff = None
                self.assertEqual(expected, velhost(*words[2:])[1])

    def test_eight_nodes_have_a_line_a_component(self):
        words = ("query", "--machine", MACHINES / "eight-nodes.json")
        instances = sum(map(len, json.loads(velhost(*words, "--format", "json")[1]).values()))
        lines = velhost(*words)[1].splitlines()
        self.assertEqual(592, instances)
        self.assertLess(len(lines), instances + 60)


def shown(name, value):
    """As people read a value that has no name in the schema."""
    if value is None:
        return ""
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, int):
        return f"0x{value:X}" if name in HEXADECIMAL else str(value)
    date = re.fullmatch(r"(\d{4})(\d\d)(\d\d)(\d\d)(\d\d)(\d\d)\.000000\+000", value)
    if date and not value.startswith("0" * 8):
        day, time = "-".join(date.groups()[:3]), ":".join(date.groups()[3:])
        return day if time == "00:00:00" else f"{day} {time}"
    return "" if date else value.rstrip(" ")


def node_of(instance):
    if "SourceNode" in instance:
        return instance["SourceNode"]
    label = re.match(r"Node (\d+): ", instance.get("Name") or "")
    return int(label[1]) if label else None


def without_label(text, node):
    label = re.match(rf"Node {node} *(: *|$)", text) if node else None
    return text[label.end():] if label else text


def agrees(cell, value):
    """The value, or what is left of it without its middle."""
    if cell == value:
        return True
    begin, dots, end = cell.partition("...")
    return bool(dots) and value.startswith(begin) and value.endswith(end)


def blocks(table):
    """The lines of each class, by its name; blank lines are between instances."""
    block = re.compile(r"^(KRXSG_\w+)  \((\d+) instances?\).*\n((?:  .*\n|\n(?=  ))*)", re.M)
    for head in block.finditer(table):
        yield head[1], int(head[2]), head[3].splitlines()


def is_printable(value):
    return all(" " <= c and c != "\ufffd" and c.isprintable() for c in value)


class Cells(unittest.TestCase):
    """The other witness: positions in the table's lines against the instances of `--format json`."""

    def check_rows(self, instances, lines):
        head, *rows = lines
        starts = [m.start() for m in re.finditer(r"\S+", head)]
        names = head.split()
        instances = sorted(instances, key=lambda i: (node_of(i) is not None, node_of(i) or 0))
        last = None
        for instance, row in zip(instances, rows):
            ends = [*starts[1:], None]
            cells = {n: row[a:b].rstrip() for n, a, b in zip(names, starts, ends)}
            node = node_of(instance)
            if "Node" in cells:
                self.assertEqual("" if node in (None, last) else str(node), cells.pop("Node"))
                last = node
            if list(cells.values())[:1] == ["-"]:
                continue
            for name, cell in cells.items():
                value = without_label(shown(name, instance.get(name)), node)
                if is_printable(value):
                    self.assertTrue(agrees(cell, value), (name, cell, value))

    def test_every_cell_is_the_value_of_its_instance(self):
        checked = 0
        for machine in machine_files():
            table = velhost("query", "--machine", machine)[1]
            plain = json.loads(velhost("query", "--machine", machine, "--format", "json",
                                       "--log-level", "-1")[1])
            for name, count, lines in blocks(table):
                with self.subTest(machine=machine.name, name=name):
                    self.assertEqual(len(plain[name]), count)
                    if count > 1 and lines[0].split()[0] != "-":
                        self.check_rows(plain[name], lines)
                        checked += count
        self.assertGreater(checked, 700)

    def test_all_properties_are_shown_of_a_class_that_is_named_and_with_wide(self):
        machine = MACHINES / "two-nodes.json"
        plain = json.loads(velhost("query", "--machine", machine, "--format", "json")[1])
        for words in (["--wide"], list(plain)):
            table = velhost("query", *words, "--machine", machine)[1]
            for name, count, lines in blocks(table):
                self.assertEqual(len(plain[name]), count)
                text = "\n".join(lines)
                for instance in plain[name]:
                    for key, value in instance.items():
                        if shown(key, value):
                            self.assertIn(f"{key}:", text)
                        if isinstance(value, str):
                            self.assertIn(shown(key, value), text)
            self.assertIn("Running", table)
            self.assertLessEqual(max(map(width, table.splitlines())), 80)


class Terminals(unittest.TestCase):
    MACHINE = MACHINES / "sp-silent.json"
    WORDS = ("query", "--machine", MACHINE, "--why")

    def test_a_table_is_as_wide_as_the_terminal(self):
        for columns in (20, 40, 80, 132):
            for extra in ((), ("--wide",)):
                text = on_terminal(columns, *self.WORDS, *extra, TERM="xterm")
                plain = re.sub("\x1b\\[[0-9]*m", "", text)
                self.assertLessEqual(max(map(width, plain.splitlines())), columns)
                same = velhost(*self.WORDS, *extra, COLUMNS=str(columns))[1]
                self.assertEqual(same, plain)

    def test_columns_go_before_the_terminal(self):
        self.assertEqual(velhost(*self.WORDS)[1],
                         on_terminal(132, *self.WORDS, COLUMNS="80", TERM="dumb"))

    def test_a_terminal_that_tells_no_width_has_80_columns(self):
        self.assertEqual(velhost(*self.WORDS)[1], on_terminal(0, *self.WORDS, TERM="dumb"))

    def test_colours_are_for_terminals_that_take_them(self):
        cases = (
            ({"TERM": "xterm"}, True),
            ({"TERM": "xterm", "NO_COLOR": ""}, True),
            ({"TERM": "xterm", "NO_COLOR": "1"}, False),
            ({"TERM": "dumb"}, False),
        )
        for environment, has_colour in cases:
            with self.subTest(environment=environment):
                text = on_terminal(80, *self.WORDS, **environment)
                self.assertEqual(has_colour, "\x1b[31munanswered\x1b[0m" in text)
                self.assertEqual(has_colour, "\x1b[33mpartial:\x1b[0m" in text)
                self.assertEqual(has_colour, "\x1b[1mKRXSG_DiagnosticVPD\x1b[0m  (1 instance)" in text)
                self.assertEqual(has_colour, "\x1b" in text)
                self.assertEqual(velhost(*self.WORDS)[1], re.sub("\x1b\\[[0-9]*m", "", text))

    def test_other_tables_have_heads_too(self):
        for words in (("classes", "KRXSG_Vpd"), ("collectors",)):
            text = on_terminal(60, *words, TERM="xterm")
            self.assertTrue(text.startswith("\x1b[1m"), text)
            plain = re.sub("\x1b\\[[0-9]*m", "", text)
            self.assertLessEqual(max(map(width, plain.splitlines())), 60)

    def test_nothing_else_is_coloured(self):
        self.assertNotIn("\x1b", velhost(*self.WORDS, TERM="xterm")[1])
        self.assertNotIn("\x1b", on_terminal(80, *self.WORDS[:-1], "--format", "csv", TERM="xterm"))
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "answer"
            self.assertEqual("", on_terminal(40, *self.WORDS, "--output", file, TERM="xterm"))
            self.assertEqual(velhost(*self.WORDS)[1], file.read_text(encoding="utf-8"))


class Nodes(unittest.TestCase):
    MACHINE = MACHINES / "two-nodes.json"

    def answer(self, output_format, *more):
        status, out, err = velhost("query", "--machine", self.MACHINE, "--format", output_format, *more)
        return status, out, err

    def test_a_node_alone_in_every_format(self):
        plain = json.loads(self.answer("json")[1])
        expected = {name: [i for i in instances if node_of(i) == 2]
                    for name, instances in plain.items()}
        self.assertEqual(6, len(expected["KRXSG_Vpd"]))
        more = ("--node", "2")
        self.assertEqual(expected, json.loads(self.answer("json", *more)[1]))
        inventory = json.loads(self.answer("inventory", *more)[1])
        self.assertEqual(expected, {c["class"]: c["instances"] for c in inventory["classes"]})
        lines = [json.loads(line) for line in self.answer("ndjson", *more)[1].splitlines()]
        nodes = {line["node"] for line in lines if "properties" in line}
        self.assertEqual({2}, nodes)
        rows = list(csv.DictReader(io.StringIO(self.answer("csv", *more)[1])))
        self.assertEqual({"2", ""}, {row["node"] for row in rows})
        self.assertEqual({""}, {row["property"] for row in rows if not row["node"]})
        self.assertIn('krxsg_instances{machine="two nodes with dot-command SPs",class="KRXSG_Vpd"} 6\n',
                      self.answer("openmetrics", *more)[1])
        table = {name: count for name, count, _ in blocks(self.answer("table", *more)[1])}
        self.assertEqual({name: len(i) for name, i in expected.items() if i}, table)

    def test_the_trace_has_all_nodes(self):
        self.assertEqual(self.answer("trace"), self.answer("trace", "--node", "2"))

    def test_a_node_that_the_machine_has_not(self):
        status, out, err = self.answer("json", "--node", "9", "--log-level", "-1")
        self.assertEqual(0, status)
        self.assertEqual(set(), {len(i) for i in json.loads(out).values()} - {0})
        self.assertEqual("velhost: the answer has no node 9, only 1 to 2\n", err)

    def test_no_number_is_no_node(self):
        for word in ("0", "-1", "one", ""):
            status, out, err = self.answer("json", "--node", word)
            self.assertEqual((2, ""), (status, out))
            self.assertEqual(1, err.count("\n"), err)


if __name__ == "__main__":
    unittest.main()
