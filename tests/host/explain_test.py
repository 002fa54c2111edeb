#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""`velhost explain` as people run it: wrong use, statuses, widths, hostile values, many nodes,
a pipe that is closed. That its bytes are right is tests/origins/explain_test.py's business.

Usage: explain_test.py VELHOST SOURCE-FOLDER
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MACHINES = ROOT / "machines"
# What a terminal obeys or does not show, but for line feeds.
UNSEEN = re.compile("[\0-\x09\x0b-\x1f\x7f-\x9f\xad\u061c\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f"
                    "\ufeff\ufff9-\ufffb\U000e0000-\U000e007f]")


def explain(*words, columns="80", **more):
    return subprocess.run([VELHOST, "explain", *words], capture_output=True, check=False,
                          env={**os.environ, "COLUMNS": columns},
                          **{"stdin": subprocess.DEVNULL, **more})


def classes():
    shown = subprocess.run([VELHOST, "classes", "--format", "json"], capture_output=True, check=True)
    return json.loads(shown.stdout)


class Explain(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def machine(self, **described):
        file = self.folder / "machine.json"
        file.write_text(json.dumps({"format": "vel-machine/1", "name": "x", "machine_type": "5010",
                                    "smbios": {}, **described}))
        return file

    def test_wrong_use_is_one_line(self):
        machine = MACHINES / "two-nodes.json"
        for words, told in [
                ([], "CLASS[.PROPERTY] is required"),
                (["KRXSG_Vdp"], '"KRXSG_Vdp" is no class; did you mean KRXSG_Vpd?'),
                (["KRXSG_Vpd.PartNumbr"],
                 '"PartNumbr" is no property of KRXSG_Vpd; did you mean PartNumber?'),
                (["KRXSG_Vpd.x"], '"x" is no property of KRXSG_Vpd; velhost explain KRXSG_Vpd lists'),
                (["KRXSG_Vpd."], '"" is no property of KRXSG_Vpd'),
                ([".PartNumber"], '"" is no class'),
                (["KRXSG_Vpd", "KRXSG_cKVM"], "KRXSG_cKVM is not expected here"),
                (["KRXSG_Vpd", "--machin", machine], "--machin is no option here; did you mean --machine?"),
                (["KRXSG_Vpd", "--node", "1"], "--node needs a machine; give --machine FILE"),
                (["KRXSG_Vpd", "--machine", machine, "--node", "-1"], "is no whole number from 0"),
                (["KRXSG_Vpd", "--machine", self.folder / "none.json"], "none.json: cannot"),
                (["KRXSG_\x1b[2J\udcff"], '"KRXSG_\\x1b[2J\\xff" is no class')]:
            with self.subTest(words=words):
                outcome = explain(*words)
                self.assertEqual((2, b"", 1), (outcome.returncode, outcome.stdout,
                                               outcome.stderr.count(b"\n")))
                self.assertIn(told, outcome.stderr.decode())

    def test_statuses_are_those_of_a_query(self):
        for name, class_name, status in [("two-nodes", "KRXSG_Vpd", 0), ("sp-silent", "KRXSG_Vpd", 3),
                                         ("runtime-error", "KRXSG_Vpd", 1),
                                         ("brenna", "KRXSG_cKVM", 0)]:
            machine = MACHINES / f"{name}.json"
            with self.subTest(name):
                query = subprocess.run([VELHOST, "query", class_name, "--machine", machine],
                                       capture_output=True, check=False)
                self.assertEqual(status, query.returncode)
                for word in (class_name, class_name + ".Name" * (class_name == "KRXSG_Vpd")):
                    self.assertEqual(status, explain(word, "--machine", machine).returncode)

    def test_steps_are_in_the_words_of_why(self):
        for path in sorted(MACHINES.glob("*.json")):
            if path.name == "machine.schema.json":
                continue
            outcome = subprocess.run([VELHOST, "query", "KRXSG_Vpd", "--why", "--machine", path],
                                     capture_output=True, check=False, text=True,
                                     env={**os.environ, "COLUMNS": "1000"})
            why = re.findall(r"^    (.*)$", outcome.stdout.partition("\nSteps that failed:\n")[2], re.M)
            said = explain("KRXSG_Vpd.Name", "--machine", path, columns="1000").stdout.decode()
            steps = re.findall(r"^  (.*)$", said.partition("\nSteps that failed:\n")[2], re.M)
            self.assertEqual(why[:32], steps[:32], path.name)

    def test_every_class_and_property_fits_a_terminal(self):
        for described in classes():
            names = [described["name"]] + [f"{described['name']}.{one['name']}"
                                           for one in described["properties"]]
            for name in names:
                outcome = explain(name, columns="60")
                self.assertEqual((0, b""), (outcome.returncode, outcome.stderr), name)
                for line in outcome.stdout.decode().split("\n"):
                    self.assertLessEqual(len(line), 60, name)

    def test_a_machine_fits_a_terminal(self):
        for word in ("KRXSG_Vpd", "KRXSG_Vpd.PartNumber", "KRXSG_Vpd.Vendor", "KRXSG_Vpd.Name"):
            for columns in ("80", "60"):
                said = explain(word, "--machine", MACHINES / "two-nodes.json", columns=columns)
                for line in said.stdout.decode().split("\n"):
                    self.assertLessEqual(len(line), int(columns), word)

    def test_a_machine_may_be_a_dump_or_standard_input(self):
        outcome = explain("KRXSG_SystemBIOSElement.Version", "--machine", MACHINES / "qemu-q35.dmi")
        self.assertIn("    SMBIOS type 0, handle 0000h, string 2\n", outcome.stdout.decode())
        with open(MACHINES / "two-nodes.json", "rb") as file:
            outcome = explain("KRXSG_Vpd.PartNumber", "--machine", "-", stdin=file)
        self.assertEqual(explain("KRXSG_Vpd.PartNumber", "--machine",
                                 MACHINES / "two-nodes.json").stdout, outcome.stdout)

    def test_any_number_of_nodes(self):
        for count in (0, 1, 8, 255):
            machine = self.machine(sp={
                "kind": "dot-command", "count": count, "dot_commands": [
                    command for sp in range(count) for command in (
                        {"sp": sp, "command": "04 03 05 06 01", "reply": [{"zeros": 80}]},
                        {"sp": sp, "command": "04 03 05 06 02", "reply": [{"zeros": 80}]},
                        {"sp": sp, "command": "04 03 05 01 01", "reply": [{"zeros": 80}]},
                        {"sp": sp, "command": "04 03 05 07", "reply": f"{sp:02X}"})]})
            said = explain("KRXSG_HardwareRevisionLevel.Version", "--machine", machine).stdout.decode()
            found = re.findall(r'  Node (\d+): "(\d+)"\n    SP (\d+), dot command 04 03 05 07: 1 byte '
                               r"in reply\n      0  (..)  \|", said)
            self.assertEqual([(str(n + 1), str(n), str(n + 1), f"{n:02X}") for n in range(count)], found)
            if count == 255:
                said = explain("KRXSG_HardwareRevisionLevel.Version", "--machine", machine,
                               "--node", "200").stdout.decode()
                self.assertEqual(["200"], re.findall(r"^  Node (\d+):", said, re.M))

    def test_hostile_texts_stay_in_their_place(self):
        text = "A\x1b[2J\n<b>'\"\u202e\x9b"
        machine = self.machine(
            smbios={"structures": [{"type": 0, "data": "01 02 00 E0 03 3F",
                                    "strings": [text, "1" * 3_000_000, "03/15/07"]}]},
            name=text, collectors=["SMBIOSInventory"])
        for word in ("KRXSG_SystemBIOSElement.Manufacturer", "KRXSG_SystemFirmware.Version",
                     "KRXSG_SystemFirmware.Vendor", "KRXSG_SystemFirmware"):
            with self.subTest(word):
                outcome = explain(word, "--machine", machine)
                self.assertEqual((0, b""), (outcome.returncode, outcome.stderr))
                said = outcome.stdout.decode()
                self.assertIsNone(UNSEEN.search(said.replace("\n", "")))
                self.assertLess(len(said), 6000)

    def test_a_closed_pipe_ends_quietly(self):
        shell = subprocess.run(
            ["bash", "-c", f'"{VELHOST}" explain KRXSG_Vpd.PartNumber --machine '
                           f'"{MACHINES}/eight-nodes.json" | head -1'],
            capture_output=True, check=False, text=True)
        self.assertEqual("KRXSG_Vpd.PartNumber: Part number\n", shell.stdout)
        self.assertLessEqual(shell.stderr.count("\n"), 1)

    def test_a_full_disk_is_told(self):
        with open("/dev/full", "wb") as full:
            outcome = subprocess.run([VELHOST, "explain", "KRXSG_Vpd"], stdout=full,
                                     stderr=subprocess.PIPE, check=False)
        self.assertEqual((2, 1), (outcome.returncode, outcome.stderr.count(b"\n")))
        self.assertIn(b"No space left on device", outcome.stderr)


if __name__ == "__main__":
    unittest.main()
