#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Every machine file, recorded: the recording answers as the machine did, and records as itself.

Usage: record_replay_test.py VELHOST MACHINES-FOLDER
"""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import jsonschema

VELHOST, MACHINES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
VALIDATOR = jsonschema.Draft202012Validator(
    json.loads((MACHINES / "machine.schema.json").read_text())
)

# Serial numbers and unique ids of the machine files, a few of each kind of place.
SERIALS = {
    "one-sp-everything": ["KQ0K301", "M450-000301", "PS3001", "PB3001", "PC3001", "DB3001", "PL3001"],
    "ordinary-server": ["CH-0K7001", "BD-0K7001", "KQ0K701", "720001-1 9", "RACK7-U12",
                        "6c0a7d31-9b4e-4f52-8a10-5c0000a1b2c3"],
    "two-nodes": ["KQ0K401", "KQ0K402", "N200-000401", "PS4001", "PL4002"],
}

# What of an inventory identifies a machine or a part of it.
IDENTITIES = ("SerialNumber", "AssetTag", "UUID", "ChassisSerialNumber", "ChassisAssetTag",
              "BoardSerialNumber")


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def velhost(*arguments):
    return subprocess.run([VELHOST, *map(str, arguments)], capture_output=True, check=False)


def result(machine):
    run = velhost("query", "--machine", machine, "--format", "trace")
    document = json.loads(run.stdout)
    del document["machine"]
    return run.returncode, document


class Recordings(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def record(self, machine, *options):
        output = self.folder / "recorded.json"
        output.unlink(missing_ok=True)
        run = velhost("record", "--machine", machine, "--output", output, *options)
        self.assertEqual(b"", run.stdout)
        return run.returncode, output.read_bytes()

    def keep(self, name, text):
        file = self.folder / name
        file.write_bytes(text)
        return file

    def test_replay(self):
        self.assertTrue(machine_files())
        for machine in machine_files():
            with self.subTest(machine.name):
                status, text = self.record(machine)
                VALIDATOR.validate(json.loads(text))
                recorded = self.keep("once.json", text)
                self.assertEqual(result(machine), result(recorded))
                self.assertEqual(result(machine)[0], status)
                self.assertEqual((status, text), self.record(recorded))

    def test_this_machine(self):
        run = velhost("record")
        self.assertEqual(run.returncode == 3, run.stderr != b"")
        self.assertIn(run.returncode, (0, 3))
        VALIDATOR.validate(json.loads(run.stdout))
        live = json.loads(velhost("query", "--format", "trace").stdout)
        del live["machine"]
        self.assertEqual((0, live), result(self.keep("live.json", run.stdout)))

    def test_redacted(self):
        for machine in machine_files():
            with self.subTest(machine.name):
                status, text = self.record(machine, "--redact")
                VALIDATOR.validate(json.loads(text))
                recorded = self.keep("once.json", text)
                self.assertEqual((status, text), self.record(recorded))
                self.assertEqual((status, text), self.record(recorded, "--redact"))

    def test_redacted_documents_differ_in_serial_numbers_only(self):
        for name, serials in SERIALS.items():
            with self.subTest(name):
                machine = MACHINES / f"{name}.json"
                _, text = self.record(machine, "--redact")
                _, before = result(machine)
                _, after = result(self.keep("once.json", text))
                for serial in serials:
                    self.assertIn(serial, json.dumps(before))
                    self.assertNotIn(serial, json.dumps(after))
                    self.assertNotIn(serial.encode().hex(" ").upper().encode(), text)
                self.assertEqual(self.without_serials(before), self.without_serials(after))

    def test_a_redacted_inventory_identifies_nothing(self):
        dump = {"dump": str(MACHINES.resolve() / "ordinary-server.dmi")}
        machine = self.keep("ordinary.json", json.dumps({
            "format": "vel-machine/1", "name": "ordinary", "smbios": dump,
            "collectors": ["SMBIOSInventory"]}).encode())
        _, text = self.record(machine, "--redact")
        _, before = result(machine)
        _, after = result(self.keep("once.json", text))
        pairs = [(name, old["value"], new["properties"][name]["value"])
                 for before_query, after_query in zip(before["queries"], after["queries"])
                 for one, new in zip(before_query["instances"], after_query["instances"])
                 for name, old in one["properties"].items()]
        identities = [old for name, old, _ in pairs if name in IDENTITIES]
        # Serial numbers and tags of twelve modules, five properties of the machine.
        self.assertEqual(12 * 2 + 5, len(identities))
        for identity in identities:
            self.assertNotIn(identity, json.dumps(after))
            self.assertNotIn(identity.encode().hex(" ").upper().encode(), text)
        kept = [(name, old) for name, old, _ in pairs if name not in IDENTITIES]
        self.assertEqual(kept, [(name, new) for name, _, new in pairs if name not in IDENTITIES])

    def without_serials(self, document):
        pseudonymous = ("SerialNumber", "UniqueID", "DevicePrefix", "ChassisSerialNumber",
                        "BoardSerialNumber", "ProductSerialNumber", "ProductAssetTag", "GUID",
                        "AssetTag", "UUID", "ChassisAssetTag")
        for query in document["queries"]:
            for instance in query["instances"]:
                for name in pseudonymous:
                    if name in instance["properties"]:
                        value = instance["properties"][name]["value"]
                        instance["properties"][name]["value"] = len(value)
        return document


if __name__ == "__main__":
    unittest.main()
