#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""How many commands a whole query sends to the SPs and the BMC of each machine, and how the number
grows: with the nodes and their components, by nothing else. The numbers are those of the machines'
expected documents, which are not the program's.

Usage: commands_test.py VELHOST MACHINES-FOLDER
"""
import collections
import functools
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

VELHOST, MACHINES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))

# Dot commands, Tamber commands and IPMI commands of one query for everything. Machines that are not
# here have none.
COMMANDS = {
    "backplane-alternate": (17, 0, 0),
    "bmc-with-ipmi-drivers": (9, 0, 0),
    "both-sends-fail": (69, 0, 0),
    "both-sends-fail-midway": (58, 0, 0),
    "ckvm": (0, 0, 1),
    "ckvm-bad-completion": (0, 0, 1),
    "ckvm-blank-level": (0, 0, 1),
    "ckvm-class-missing": (0, 0, 1),
    "ckvm-device-code": (0, 0, 1),
    "ckvm-empty-reply": (0, 0, 1),
    "ckvm-faults": (0, 0, 1),
    "ckvm-long-reply": (0, 0, 1),
    "ckvm-send-fails": (0, 0, 1),
    "ckvm-short-reply": (0, 0, 1),
    "ckvm-text-behind-zeros": (0, 0, 1),
    "ckvm-unprintable": (0, 0, 1),
    "class-missing": (11, 0, 0),
    "components-silent": (15, 0, 0),
    "diagnostics-empty-on-both-nodes": (22, 0, 0),
    "diagnostics-empty-then-filled": (17, 0, 0),
    "diagnostics-filled-then-empty": (17, 0, 0),
    "diagnostics-node-without-vpd": (72, 0, 0),
    "eight-nodes": (592, 0, 0),
    "empty-command-answered": (15, 0, 0),
    "faults": (23, 0, 0),
    "fields-full-and-empty": (50, 0, 0),
    "first-send-fails": (16, 0, 0),
    "ipmi-fru-instances": (11, 0, 0),
    "odd-replies": (15, 0, 0),
    "one-sp-everything": (14, 0, 1),
    "ordinary-server": (0, 0, 25),
    "ordinary-server-corrupt-fru": (0, 0, 25),
    "ordinary-server-sdr-loop": (0, 0, 14),
    "ordinary-server-silent-bmc": (0, 0, 1),
    "ordinary-server-small-reads": (0, 0, 75),
    "qla-class-missing": (4, 0, 0),
    "runtime-error": (7, 0, 0),
    "smbios-cannot-open": (10, 0, 0),
    "tamber": (0, 1, 0),
    "tamber-failing": (0, 1, 0),
    "tamber-length-too-large": (0, 1, 0),
    "tamber-level-with-points": (0, 1, 0),
    "tamber-long-reply": (0, 1, 0),
    "tamber-short-reply": (0, 1, 0),
    "tamber-silent": (0, 1, 0),
    "tamber-torvik-library-twg-stop": (0, 1, 0),
    "two-nodes": (30, 0, 0),
    "uefi-two-node": (24, 0, 0),
}

# Of a node whose SP answers: main and boot-ROM firmware, hardware revision, diagnostics, power
# backplane, processor card, planar, POST and BIOS; besides one for each DIMM, power supply and
# backplane for disks.
COMMANDS_OF_A_NODE = 8
# One that is refused is sent once more, and the record of diagnostics is read by a second collector when
# the first got none for a node.
MOST_SENDS_OF_A_COMMAND = 3
# When one is refused twice, the lines that are left of the table of commands, 30 at most, go out as
# commands of no bytes, and those are refused twice too.
MOST_COMMANDS_OF_NO_BYTES = 60


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def without_comments(text):
    token = r'"(?:\\.|[^"\\])*"|//[^\n]*|/\*.*?\*/'
    return re.sub(token, lambda m: m[0] if m[0][0] == '"' else " ", text, flags=re.DOTALL)


@functools.cache
def traffic(machine, *more):
    run = subprocess.run([VELHOST, "query", "--machine", machine, "--format", "trace", *more],
                         capture_output=True, check=False)
    return [query["traffic"] for query in json.loads(run.stdout)["queries"]]


def numbers(sent):
    kinds = collections.Counter(command["operation"] for command in sent)
    return kinds["dot_command"], kinds["tamber_command"], kinds["ipmi_command"]


def commands_of_nodes(sp):
    """What the nodes of a machine file ask for, when all is answered at once."""
    components = sum(count for count in sp.get("components", {}).values() if count > 0)
    return sp.get("count", 1) * (COMMANDS_OF_A_NODE + components)


class Machines(unittest.TestCase):
    def test_each_sends_its_number_of_commands(self):
        self.assertLess(70, len(machine_files()))
        for file in machine_files():
            with self.subTest(file.stem):
                sent, = traffic(file)
                self.assertEqual(COMMANDS.get(file.stem, (0, 0, 0)), numbers(sent))

    def test_the_expected_documents_say_the_same(self):
        for file in machine_files():
            with self.subTest(file.stem):
                expected = json.loads((MACHINES / "expected" / file.name).read_text())
                self.assertEqual(COMMANDS.get(file.stem, (0, 0, 0)),
                                 numbers(expected["queries"][0]["traffic"]))

    def test_no_command_is_sent_again_and_again(self):
        """Whatever fails, a dot command goes to an SP a few times at most with one set of data."""
        seen = set()
        for file in machine_files():
            sp = json.loads(without_comments(file.read_text())).get("sp", {})
            sent, = traffic(file)
            times = collections.Counter((command["sp"], command["command"], command["data"])
                                        for command in sent if command["operation"] == "dot_command")
            for (node, command, data), count in times.items():
                most = MOST_SENDS_OF_A_COMMAND if command else MOST_COMMANDS_OF_NO_BYTES
                self.assertGreaterEqual(most, count, (file.stem, node, command, data))
                seen.add((command == "", count))
            bound = MOST_SENDS_OF_A_COMMAND * commands_of_nodes(sp)
            bound += max(sp.get("count", 1), 0) * MOST_COMMANDS_OF_NO_BYTES
            self.assertGreaterEqual(bound, sum(times.values()), file.stem)
        self.assertLessEqual({(False, MOST_SENDS_OF_A_COMMAND), (True, MOST_COMMANDS_OF_NO_BYTES)}, seen)

    def test_a_second_request_sends_none(self):
        for name in ("eight-nodes", "both-sends-fail", "tamber", "ckvm", "ordinary-server"):
            first, second = traffic(MACHINES / (name + ".json"), "--repeat", "2")
            own = [command for command in second if name != "ordinary-server"]
            self.assertNotEqual([], first, name)
            self.assertEqual([], own, name)


class Growth(unittest.TestCase):
    """The eight nodes, fewer and more of them, with fewer DIMMs each."""

    EIGHT = json.loads(without_comments((MACHINES / "eight-nodes.json").read_text()))

    def number_of(self, nodes, dimms):
        sp = dict(self.EIGHT["sp"], count=nodes, bmc_nodes=nodes)
        sp["components"] = dict(sp["components"], **{"04 03 05 0B": dimms})
        sp["dot_commands"] = [dict(entry, sp=node) for node in range(nodes)
                              for entry in self.EIGHT["sp"]["dot_commands"]
                              if entry.get("sp", 0) == node % 8]
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump(dict(self.EIGHT, sp=sp), file)
            file.flush()
            sent, = traffic(file.name, "KRXSG_SPROMFirmwareVPDMain")
        self.assertEqual(nodes, len({command["sp"] for command in sent}))
        return numbers(sent)

    def test_with_the_nodes(self):
        for nodes in (1, 2, 3, 8, 64):
            # 64 DIMMs, a power supply and a backplane for disks
            self.assertEqual((nodes * (COMMANDS_OF_A_NODE + 66), 0, 0), self.number_of(nodes, 64))

    def test_with_the_components(self):
        for dimms in (1, 32, 63):
            self.assertEqual((8 * (COMMANDS_OF_A_NODE + 2 + dimms), 0, 0), self.number_of(8, dimms))


if __name__ == "__main__":
    unittest.main()
