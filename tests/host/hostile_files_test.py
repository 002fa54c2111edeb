#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Hostile machine files end in one line and status 2, and cost neither the memory nor the day.

Usage: hostile_files_test.py VELHOST PLUGIN MEBIBYTES

MEBIBYTES is the address space that the program gets; 0 is no limit, for the sanitizers, which need
terabytes of it.
"""
import json
import os
import pathlib
import resource
import struct
import subprocess
import sys
import tempfile
import unittest

MEBIBYTES = int(sys.argv.pop())
PLUGIN = sys.argv.pop()
VELHOST = sys.argv.pop()

HEAD = '{ "format": "vel-machine/1", "name": "x", '
GOOD = HEAD + '"sp": {} }'
MEBI_ZEROS = '{"zeros": 1048576}'
LONGEST_LINE = 420
UNSEEN = "\x7f\x80\x9b\u00ad\u061c\u200b\u200f\u2028\u202e\u2066\u2069\ufeff\U000e0041"


def many(text, count):
    return ", ".join([text] * count)


def dump(table):
    """A DMI dump with a 64-bit entry point (DSP0134 5.2.2), whose table begins at 32."""
    entry = bytearray(b"_SM3_" + bytes([0, 24, 3, 0, 0, 1, 0]) + struct.pack("<IQ", len(table), 32))
    entry[5] = -sum(entry) & 0xFF
    return bytes(entry).ljust(32, b"\0") + table


DUMPS = {
    "structures.dmi": dump(bytes([1, 4, 0, 0, 0, 0]) * 5_000_000),
    "large.dmi": dump(bytes(65 << 20)),
}

# What the file is, its text, and how the line about it goes on behind the file's name.
HOSTILE = [
    ("lists in lists", HEAD + '"sp": ' + "[" * 32_000_000,
     " /sp" + "/0" * 31 + ": lies deeper than 32 levels"),
    ("objects in objects", HEAD + '"sp": ' + '{"sp":' * 5_000_000,
     " /sp" + "/sp" * 31 + ": lies deeper than 32 levels"),
    ("values", HEAD + '"missing_classes": [' + many("0", 2_000_000) + "] }",
     " /missing_classes/249996: the file has more than 250000 values"),
    ("empty structures", HEAD + '"smbios": { "structures": [' + many("{}", 2_000_000) + "] } }",
     " /smbios/structures/249995: the file has more than 250000 values"),
    ("keys", HEAD + ", ".join(f'"key {i}": 1' for i in range(240_000)) + "}",
     " /key 0: unknown key"),
    # With the command's byte the 64th mebibyte is too much.
    ("many zeros in a reply",
     HEAD + '"sp": { "dot_commands": [ { "command": "04", "reply": ['
     + many(MEBI_ZEROS, 28_000) + "] } ] } }",
     " /sp/dot_commands/0/reply/63: with it the file has more than 67108864 bytes"),
    ("many replies of zeros",
     HEAD + '"sp": { "dot_commands": [ { "command": "04", "replies": ['
     + many("[" + MEBI_ZEROS + "]", 28_000) + "] } ] } }",
     " /sp/dot_commands/0/replies/63/0: with it the file has more than 67108864 bytes"),
    ("many structures of zeros",
     HEAD + '"smbios": { "structures": ['
     + many('{ "raw": [{ "text": "", "size": 1048576 }] }', 28_000) + "] } }",
     " /smbios/structures/64/raw/0: with it the file has more than 67108864 bytes"),
    ("more structures than handles",
     HEAD + '"smbios": { "structures": [' + many('{ "raw": "" }', 65_537) + "] } }",
     " /smbios/structures: has more than 65536 entries"),
    ("a dump of many structures", HEAD + '"smbios": { "dump": "structures.dmi" } }',
     " /smbios/dump: {folder}/structures.dmi: its table has more than 65536 structures"),
    ("a large dump", HEAD + '"smbios": { "dump": "large.dmi" } }',
     " /smbios/dump: cannot read {folder}/large.dmi: File too large"),
    ("a component's count", HEAD + '"sp": { "kind": "dot-command", "components": '
     '{ "04 03 05 0B": 2147483647 } } }',
     " /sp/components/04 03 05 0B: must be from -2147483648 to 1024"),
    ("components of many SPs", HEAD + '"sp": { "kind": "dot-command", "count": 255, "components": '
     '{ "04 03 05 0B": 1024, "04 03 05 0C": 1024 } } }',
     " /sp/components: its counts, for each of the 255 SPs, come to more than 262144"),
    ("SPs", HEAD + '"sp": { "count": 256 } }', " /sp/count: must be from -2147483648 to 255"),
    ("nodes", HEAD + '"sp": { "bmc_nodes": 256 } }', " /sp/bmc_nodes: must be from 0 to 255"),
    ("a walk without an end", HEAD + '"smbios": { "end_status": 0 } }',
     " /smbios/end_status: must not be 0: a walk over the structures would never end"),
    ("a long key", HEAD + '"' + "k" * 5_000_000 + '": 1 }',
     " /" + "k" * 29 + "..." + "k" * 28 + ": unknown key"),
    ("a zero byte in a key", HEAD + '"a\\u0000b": 1 }', " /a\\x00b: unknown key"),
    ("a direction override in a key", HEAD + '"a\u202eb": 1 }', " /a\\u202Eb: unknown key"),
]


def limited():
    if MEBIBYTES:
        resource.setrlimit(resource.RLIMIT_AS, (MEBIBYTES << 20, MEBIBYTES << 20))


class HostileFilesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def put(self, name, text):
        file = self.folder / name
        file.write_text(text, encoding="utf-8")
        return str(file)

    def run_velhost(self, *arguments):
        return subprocess.run([VELHOST, *arguments], capture_output=True, check=False,
                              encoding="utf-8", preexec_fn=limited,
                              env={**os.environ, "COLUMNS": "400"})

    def test_each_is_refused_in_one_line_and_the_next_file_is_checked(self):
        for name, content in DUMPS.items():
            (self.folder / name).write_bytes(content)
        good = self.put("good.json", GOOD)
        for what, text, complaint in HOSTILE:
            with self.subTest(what):
                file = self.put("hostile.json", text)
                result = self.run_velhost("check", file, good)
                line = f"velhost: {file}:{complaint}\n".replace("{folder}", str(self.folder))
                self.assertEqual((2, good + ": ok\n", line),
                                 (result.returncode, result.stdout, result.stderr))

    def test_no_line_is_long(self):
        cases = [
            ("a text without its end", HEAD + '"sp": { "kind": "' + "k" * 5_000_000),
            ("long keys in each other", ('{"' + "k" * 100_000 + '":') * 33),
            ("a dump's name", HEAD + '"smbios": { "dump": "' + "k" * 5_000_000 + '" } }'),
        ]
        for what, text in cases:
            with self.subTest(what):
                file = self.put("hostile.json", text)
                result = self.run_velhost("check", file)
                self.assertEqual(2, result.returncode)
                self.assertEqual(1, result.stderr.count("\n"))
                self.assertTrue(result.stderr.startswith(f"velhost: {file}:"), result.stderr)
                self.assertLess(len(result.stderr), LONGEST_LINE)
        result = self.run_velhost("k" * 100_000)
        self.assertEqual(2, result.returncode)
        self.assertLess(len(result.stderr), LONGEST_LINE)

    def test_what_a_terminal_obeys_is_shown_as_escapes(self):
        name = "a" + UNSEEN + "b"
        file = self.put("unseen.json", json.dumps({"format": "vel-machine/1", "name": name}))
        query = ["query", "KRXSG_Vpd", "--plugin", PLUGIN, "--machine", file, "--format"]
        trace = self.run_velhost(*query, "trace")
        self.assertEqual(name, json.loads(trace.stdout)["machine"]["name"])
        record = self.run_velhost("record", "--plugin", PLUGIN, "--machine", file)
        self.assertEqual(name, json.loads(record.stdout)["name"])
        table = self.run_velhost(*query, "table")
        self.assertIn(" on a\\x7f\\u0080\\u009B\\u00AD\\u061C\\u200B\\u200F\\u2028\\u202E\\u2066"
                      "\\u2069\\uFEFF\\uDB40\\uDC41b (machine file)\n", table.stdout)
        for shown in (trace.stdout, record.stdout, table.stdout):
            self.assertFalse(set(shown) & set(UNSEEN))


if __name__ == "__main__":
    unittest.main()
