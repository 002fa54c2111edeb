#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the second witness by the documents written by hand, and that no derived one is stale."""

import contextlib
import io
import json
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import derive_expected as witness  # noqa: E402
import make_eight_nodes  # noqa: E402
import make_ordinary_bmc  # noqa: E402

MACHINES = pathlib.Path(__file__).resolve().parents[2] / "machines"


def machine_files():
    return sorted(path for path in MACHINES.glob("*.json") if witness.is_machine_file(path))


def in_order(value):
    """Objects as lists of pairs, so that the order of properties counts."""
    if isinstance(value, dict):
        return [(key, in_order(item)) for key, item in value.items()]
    return [in_order(item) for item in value] if isinstance(value, list) else value


class ExpectedDocuments(unittest.TestCase):
    maxDiff = None

    def test_the_script_agrees_with_the_hand(self):
        for name in sorted(witness.HAND_WRITTEN):
            with self.subTest(name):
                path = MACHINES / f"{name}.json"
                by_hand = json.loads(witness.expected_path(path).read_text(encoding="utf-8"))
                self.assertEqual(in_order(by_hand), in_order(witness.derive(path)))

    def test_no_derived_document_is_stale(self):
        for path in machine_files():
            if path.stem not in witness.HAND_WRITTEN:
                with self.subTest(path.name):
                    text = witness.expected_path(path).read_text(encoding="utf-8")
                    self.assertEqual(text, witness.layout(witness.derive(path)))

    def test_no_document_of_two_requests_is_stale_or_left_over(self):
        present = {path.name.removesuffix(".reinit.json")
                   for path in (MACHINES / "expected").glob("*.reinit.json")}
        self.assertEqual(witness.REINIT, present)
        for name in sorted(witness.REINIT):
            with self.subTest(name):
                path = MACHINES / f"{name}.json"
                text = witness.expected_path(path, reinit=True).read_text(encoding="utf-8")
                self.assertEqual(text, witness.layout(witness.derive(path, 2, True)))

    def test_the_eight_node_machine_is_what_its_script_prints(self):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            make_eight_nodes.main()
        text = (MACHINES / "eight-nodes.json").read_text(encoding="utf-8")
        self.assertEqual(text, printed.getvalue())


    def test_the_ordinary_servers_are_what_their_script_writes(self):
        for name, machine in make_ordinary_bmc.MACHINES.items():
            with self.subTest(name):
                text = (MACHINES / f"{name}.json").read_text(encoding="utf-8")
                self.assertEqual(text,
                                 make_ordinary_bmc.layout(make_ordinary_bmc.machine_file(*machine)))


class CountsKnownBeforehand(unittest.TestCase):
    """A few sums that a person can do without reading a document."""

    def commands(self, name, repeat=1, reinit=False):
        queries = witness.derive(MACHINES / f"{name}.json", repeat, reinit)["queries"]
        return [[entry.get("command") for entry in query["traffic"]] for query in queries]

    def test_thirty_empty_commands_after_a_double_failure_and_61_after_a_second_init(self):
        first, second = self.commands("both-sends-fail", 2, True)
        self.assertEqual((2 * 30, 2 * 61), (first.count(""), second.count("")))

    def test_eight_nodes_publish_512_dimms_and_zero_follows_255(self):
        document = witness.derive(MACHINES / "eight-nodes.json")
        names = [instance["properties"]["Name"]["value"]
                 for instance in document["queries"][0]["instances"]
                 if instance["class"] == "KRXSG_Vpd" and "DIMM" in
                 instance["properties"]["Name"]["value"]]
        self.assertEqual(512, len(names))
        self.assertEqual(["Node 4: DIMM 255", "Node 4: DIMM 0", "Node 5: DIMM 1"], names[254:257])

    def test_a_request_without_a_new_init_collects_nothing(self):
        _, second = witness.derive(MACHINES / "two-nodes.json", 2)["queries"]
        self.assertEqual(([], [], []),
                         (second["core_log"], second["failure_log"], second["traffic"]))
        self.assertTrue(second["instances"])


class OrdinaryBmc(unittest.TestCase):
    """What stands in its bytes, written down a second time without them."""

    maxDiff = None

    def instances(self, name, class_name):
        query, = witness.derive(MACHINES / f"{name}.json")["queries"]
        return [{key: entry["value"] for key, entry in instance["properties"].items()}
                for instance in query["instances"] if instance["class"] == class_name]

    def frus(self, name):
        return {fru["FRUDeviceID"]: fru for fru in self.instances(name, "KRXSG_IPMIFRU")}

    def commands(self, name):
        query, = witness.derive(MACHINES / f"{name}.json")["queries"]
        return len(query["traffic"])

    BOARD = {
        "FRUDeviceID": 0, "Name": "BMC", "Description": "System board", "EntityID": 7,
        "EntityInstance": 1, "ChassisType": "Rack Mount Chassis", "ChassisPartNumber": "KC-2U-0007",
        "ChassisSerialNumber": "CH-0K7001", "BoardManufacturer": "KRX Boards",
        "BoardProductName": "Ordinary 2S Board", "BoardSerialNumber": "BD-0K7001",
        "BoardPartNumber": "KB-2S-0007", "BoardManufactureDate": "20240101140500.000000+000",
        "ProductManufacturer": "KRX", "ProductName": "Ordinary Server 2U",
        "ProductPartNumber": "6120AC1", "ProductVersion": "02", "ProductSerialNumber": "KQ0K701",
        "ProductAssetTag": "RACK7-U12"}
    SUPPLY = {
        "FRUDeviceID": 1, "Name": "PSU 1", "Description": "Power supply", "EntityID": 10,
        "EntityInstance": 1, "ProductManufacturer": "KRX Power", "ProductName": "PSU-1200W-01",
        "ProductPartNumber": "KP-1200", "ProductVersion": "010A",
        "ProductSerialNumber": "720001-1 9"}
    BACKPLANE = {
        "FRUDeviceID": 3, "Name": "Backplane 1", "Description": "Drive backplane", "EntityID": 15,
        "EntityInstance": 1, "BoardManufacturer": "KRX", "BoardProductName": "R\u00FCckwand",
        "BoardPartNumber": "KD-0007"}
    LOCATED = ("FRUDeviceID", "Name", "Description", "EntityID", "EntityInstance")

    def located(self, fru, notes):
        return {name: fru[name] for name in self.LOCATED} | {"Notes": notes}

    def all_frus(self):
        second = self.SUPPLY | {"FRUDeviceID": 2, "Name": "PSU 2", "EntityInstance": 2,
                                "ProductSerialNumber": "720002-1 9"}
        return {0: self.BOARD, 1: self.SUPPLY, 2: second, 3: self.BACKPLANE}

    def test_all_devices(self):
        self.assertEqual(self.all_frus(), self.frus("ordinary-server"))
        self.assertEqual(self.all_frus(), self.frus("ordinary-server-small-reads"))

    def test_the_controller(self):
        self.assertEqual(
            [{"Name": "BMC", "DeviceID": 32, "DeviceRevision": 1, "FirmwareVersion": "2.13",
              "AuxiliaryFirmwareRevision": "010A00FF", "IPMIVersion": "2.0", "ManufacturerID": 343,
              "ProductID": 0x1234, "GUID": "6c0a7d31-9b4e-4f52-8a10-5c0000a1b2c3"}],
            self.instances("ordinary-server", "KRXSG_ManagementController"))

    def test_a_loop_ends_the_walk(self):
        self.assertEqual({n: self.all_frus()[n] for n in (0, 1)}, self.frus("ordinary-server-sdr-loop"))

    def test_wrong_areas_cost_no_others(self):
        board = {name: value for name, value in self.BOARD.items() if not name.startswith("Board")}
        board |= {"Name": "Chassis BMC", "Description": "System chassis", "EntityID": 23,
                  "EntityInstance": 97, "Notes": "board area: wrong checksum"}
        dimm = {"FRUDeviceID": 20, "Name": "DIMM A1", "Description": "Memory device", "EntityID": 32,
                "EntityInstance": 97,
                "Notes": "FRU device: holds a memory module's SPD data, not read"}
        expected = self.all_frus() | {
            0: board, 20: dimm,
            1: self.located(self.SUPPLY, "product area: its length reaches past the device's end"),
            3: self.located(self.BACKPLANE, "board area: version 2 is not known")}
        self.assertEqual(expected, self.frus("ordinary-server-corrupt-fru"))

    def test_a_silent_bmc_is_asked_once(self):
        self.assertEqual(({}, 1), (self.frus("ordinary-server-silent-bmc"),
                                   self.commands("ordinary-server-silent-bmc")))

    def test_no_more_is_asked_than_needed(self):
        # Device ID, GUID, seven records; board: size, header, chassis, board, product in two;
        # supplies: size, header, product; backplane: size, header, board in two
        self.assertEqual(1 + 1 + 7 + 6 + 3 + 3 + 4, self.commands("ordinary-server"))


if __name__ == "__main__":
    unittest.main()
