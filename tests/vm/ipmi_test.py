#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The IPMI collector on a live machine: what velhost says of a BMC and its FRU devices is what ipmitool
says. The BMC is qemu's, with the repository and the FRU devices of machines/ordinary-server.json."""

import json
import pathlib
import re
import sys
import tempfile
import unittest
from datetime import datetime

import bed
from guest_test import SAID, replay

sys.path.insert(0, str(bed.HERE.parent / "machines"))
import make_ordinary_bmc as ordinary  # noqa: E402

IPMITOOL = "/usr/bin/ipmitool"
DEVICE_SIZE = 512  # of each FRU device of qemu's BMC

# ipmitool's words: property
CONTROLLER = {"Device ID": "DeviceID", "Device Revision": "DeviceRevision",
              "Firmware Revision": "FirmwareVersion", "IPMI Version": "IPMIVersion",
              "Manufacturer ID": "ManufacturerID", "Product ID": "ProductID"}
FRU = {"Chassis Type": "ChassisType", "Chassis Part Number": "ChassisPartNumber",
       "Chassis Serial": "ChassisSerialNumber", "Board Mfg": "BoardManufacturer",
       "Board Product": "BoardProductName", "Board Serial": "BoardSerialNumber",
       "Board Part Number": "BoardPartNumber", "Product Manufacturer": "ProductManufacturer",
       "Product Name": "ProductName", "Product Part Number": "ProductPartNumber",
       "Product Version": "ProductVersion", "Product Serial": "ProductSerialNumber",
       "Product Asset Tag": "ProductAssetTag"}


def fields(text, names):
    """Those of ipmitool's lines that have a property."""
    lines = (re.fullmatch(r" ?([^:]+?) *: (.*)", line) for line in text.splitlines())
    return {names[match[1]]: match[2].strip() for match in lines if match and match[1] in names}


def ipmitool_spells(value):
    """A value as ipmitool prints it: it has small letters in binary fields."""
    return value.lower() if re.fullmatch("([0-9A-F]{2}){2,}", value) else value


def cim_date(text):
    """Of ipmitool's "Mon Jan  1 14:05:00 2024 UTC"."""
    return datetime.strptime(text, "%a %b %d %H:%M:%S %Y UTC").strftime("%Y%m%d%H%M%S.000000+000")


def in_blocks(contents):
    return b"".join(data[:DEVICE_SIZE].ljust(DEVICE_SIZE, b"\xFF") for data in contents)


def ordinary_frus():
    """The backplane's texts in English: ipmitool knows no UTF-16."""
    backplane = ordinary.device(DEVICE_SIZE, board=ordinary.area(
        "19", "00 00 00", *ordinary.text("KRX"), *ordinary.text("Backplane"), "C0",
        *ordinary.text("KD-0007"), ordinary.END))
    return [*(data for data, _ in list(ordinary.FRUS.values())[:3]), backplane]


class BmcTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def boot(cls, frus):
        with tempfile.TemporaryDirectory() as folder:
            data, records = pathlib.Path(folder) / "frus", pathlib.Path(folder) / "sdrs"
            data.write_bytes(in_blocks(frus))
            records.write_bytes(b"".join(ordinary.RECORDS))
            guest = bed.server(bed.BMC, [
                "-device", f"ipmi-bmc-sim,id=bmc0,fruareasize={DEVICE_SIZE},frudatafile={data},"
                           f"sdrfile={records},device_id=32,fwrev1=2,fwrev2=19,mfg_id=343,"
                           "product_id=4660,guid=6c0a7d31-9b4e-4f52-8a10-5c0000a1b2c3",
                "-device", "isa-ipmi-kcs,bmc=bmc0"])
            guest.files.add_program(IPMITOOL)
            guest.files.link("/bin/ipmitool", IPMITOOL)
            cls.result = guest.run(SAID + """
                await "ls /dev/ipmi0"
                said all velhost query --log-level -1 --format trace
                said record velhost record --output recorded.json
                said mc ipmitool mc info
                said guid ipmitool raw 6 8
                for number in 0 1 2 3; do said fru$number ipmitool fru print $number; done
                """)
        cls.query, = json.loads(cls.result.text("all.out"))["queries"]

    def of_class(self, name):
        return [{name: value["value"] for name, value in entry["properties"].items()}
                for entry in self.query["instances"] if entry["class"] == name]

    def frus(self):
        return {fru["FRUDeviceID"]: fru for fru in self.of_class("KRXSG_IPMIFRU")}


class OrdinaryBmcTest(BmcTest):
    @classmethod
    def setUpClass(cls):
        cls.boot(ordinary_frus())

    def test_it_complains_of_nothing(self):
        self.assertEqual(("0\n", ""), (self.result.text("all.status"), self.result.text("all.err")))

    def test_the_controller_is_as_ipmitool_says(self):
        controller, = self.of_class("KRXSG_ManagementController")
        theirs = fields(self.result.text("mc.out"), CONTROLLER)
        self.assertEqual(set(CONTROLLER.values()), set(theirs))
        theirs["ProductID"] = theirs["ProductID"].split()[0]
        self.assertEqual(theirs, {name: str(controller[name]) for name in theirs})

    def test_the_guid_is_the_bytes_from_the_last_one(self):
        controller, = self.of_class("KRXSG_ManagementController")
        theirs = self.result.text("guid.out").split()
        self.assertEqual("".join(theirs[::-1]), controller["GUID"].replace("-", ""))

    def test_the_fru_devices_are_as_ipmitool_says(self):
        self.assertEqual([0, 1, 2, 3], list(self.frus()))
        for number, ours in self.frus().items():
            with self.subTest(number):
                theirs = fields(self.result.text(f"fru{number}.out"), FRU)
                self.assertTrue(theirs)
                self.assertEqual(
                    {name: value for name, value in theirs.items() if value.strip("0")},
                    {name: ipmitool_spells(value) for name, value in ours.items()
                     if name in FRU.values()})

    def test_the_dates_are_as_ipmitool_says(self):
        dates = {number: match[1] for number in self.frus() if (match := re.search(
            "Board Mfg Date *: (.*)", self.result.text(f"fru{number}.out")))}
        self.assertEqual("Unspecified", dates.pop(3))
        self.assertEqual({number: cim_date(date) for number, date in dates.items()},
                         {number: fru["BoardManufactureDate"] for number, fru in self.frus().items()
                          if "BoardManufactureDate" in fru})

    def test_no_more_is_asked_than_needed(self):
        # Device ID, GUID, seven records; board: size, header, chassis, board, product in two; the
        # others: size, header, their area in two
        self.assertEqual(1 + 1 + 7 + 6 + 4 + 4 + 4, len(self.query["traffic"]))

    def test_recorded_file_replays_outside(self):
        document = json.loads(self.result.text("all.out"))
        del document["machine"]
        self.assertEqual(document, replay(self.result.data("recorded.json")))


class CorruptFruTest(BmcTest):
    @classmethod
    def setUpClass(cls):
        cls.boot(data for data, _ in ordinary.corrupt().values())

    def test_a_wrong_area_costs_no_other(self):
        self.assertEqual(
            {0: "board area: wrong checksum",
             1: "product area: its length reaches past the device's end",
             3: "board area: version 2 is not known"},
            {number: fru["Notes"] for number, fru in self.frus().items() if "Notes" in fru})
        self.assertEqual(("CH-0K7001", "KQ0K701"), tuple(
            self.frus()[0][name] for name in ("ChassisSerialNumber", "ProductSerialNumber")))
        self.assertNotIn("BoardSerialNumber", self.frus()[0])
        self.assertEqual("720002-1 9", self.frus()[2]["ProductSerialNumber"])


if __name__ == "__main__":
    if not pathlib.Path(IPMITOOL).exists():
        print("SKIPPED: ipmitool is not installed")
        sys.exit(bed.SKIPPED)
    bed.main()
