#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The companions on a live machine: what velhost says of a BMC, its FRU devices and SMBIOS is what
ipmitool and dmidecode say. The BMC is qemu's, with the repository and the FRU devices of
machines/ordinary-server.json."""

import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
from datetime import datetime

import bed
from bmc import Bmc
from guest_test import SAID, replay

MACHINES = bed.HERE.parent / "machines"
sys.path.insert(0, str(MACHINES))
import make_ordinary_bmc as ordinary  # noqa: E402

IPMITOOL = "/usr/bin/ipmitool"
DMIDECODE = "/usr/sbin/dmidecode"
DEVICE_SIZE = 512  # of each FRU device of qemu's BMC

# What qemu tells of the machine that is not there; the rest is its own.
SMBIOS = [word for structure in (
    "type=0,vendor=KRX,version=2.10.1,date=03/15/2024,release=2.10",
    "type=1,manufacturer=KRX,product=Ordinary Server,version=2,serial=KQ0TEST,sku=K-1,family=Rack,"
    "uuid=0f1e2d3c-4b5a-4978-8796-a5b4c3d2e1f0",
    "type=2,manufacturer=KRX Boards,product=Board,version=1,serial=KB0TEST",
    "type=3,manufacturer=KRX,serial=KC0TEST,asset=RACK7-U12",
    "type=17,manufacturer=80CE000080CE,serial=3A51C000,part=M32R5,asset=A1,speed=4800,loc_pfx=DIMM,bank=B0",
) for word in ("-smbios", structure)]
SMBIOS_CLASSES = ["KRXSG_SystemFirmware", "KRXSG_ComputerSystem", "KRXSG_PhysicalMemory"]

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
                "-device", "isa-ipmi-kcs,bmc=bmc0", *SMBIOS])
            for program in (IPMITOOL, DMIDECODE):
                guest.files.add_program(program)
                guest.files.link(f"/bin/{pathlib.Path(program).name}", program)
            cls.result = guest.run(SAID + """
                await "ls /dev/ipmi0"
                said all velhost query --log-level -1 --format trace
                said record velhost record --output recorded.json
                said mc ipmitool mc info
                said guid ipmitool raw 6 8
                said dump dmidecode --dump-bin machine.dmi
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

    def test_the_smbios_classes_are_as_dmidecode_says(self):
        with tempfile.TemporaryDirectory() as folder:
            dump, machine = pathlib.Path(folder) / "machine.dmi", pathlib.Path(folder) / "m.json"
            dump.write_bytes(self.result.data("machine.dmi"))
            machine.write_text(json.dumps({
                "format": "vel-machine/1", "name": "guest", "smbios": {"dump": str(dump)},
                "collectors": ["SMBIOSInventory"]}))
            velhost = bed.BUILD / "bin" / "velhost"
            subprocess.run([sys.executable, MACHINES / "dmidecode_inventory.py", velhost, dump],
                           check=True)
            dumped = json.loads(subprocess.run(
                [velhost, "query", "--format", "json", "--machine", machine, *SMBIOS_CLASSES],
                check=True, capture_output=True).stdout)
        self.assertEqual(dumped, {name: self.of_class(name) for name in SMBIOS_CLASSES})
        self.assertEqual("2.10.1", dumped["KRXSG_SystemFirmware"][0]["Version"])
        self.assertEqual("0f1e2d3c-4b5a-4978-8796-a5b4c3d2e1f0",
                         dumped["KRXSG_ComputerSystem"][0]["UUID"])
        self.assertEqual("Samsung", dumped["KRXSG_PhysicalMemory"][0]["Manufacturer"])

    def test_no_more_is_asked_than_needed(self):
        # Device ID, GUID, seven records; board: size, header, chassis, board, product in two; the
        # others: size, header, their area in two
        self.assertEqual(1 + 1 + 7 + 6 + 4 + 4 + 4, len(self.query["traffic"]))

    def test_recorded_file_replays_outside(self):
        document = json.loads(self.result.text("all.out"))
        del document["machine"]
        self.assertEqual(document, replay(self.result.data("recorded.json")))


class SmallReadsTest(unittest.TestCase):
    """A BMC that gives 16 bytes of its FRU device a read and refuses to be asked for more."""

    @classmethod
    def setUpClass(cls):
        board = ordinary_frus()[0]
        with Bmc(bed.BMC_MODULE, "C1", fru=board, most=16) as bmc:
            cls.result = bed.server(bed.BMC, bmc.qemu()).run(SAID + """
                await "ls /dev/ipmi0"
                said frus velhost query --log-level -1 KRXSG_IPMIFRU --format json
                """)
            cls.refused = bmc.refused_reads()

    def test_the_device_is_read_in_the_pieces_that_it_gives(self):
        self.assertEqual(("0\n", ""), (self.result.text("frus.status"), self.result.text("frus.err")))
        fru, = json.loads(self.result.text("frus.out"))["KRXSG_IPMIFRU"]
        self.assertEqual((0, "CH-0K7001", "BD-0K7001", "KQ0K701"), tuple(
            fru[name] for name in ("FRUDeviceID", "ChassisSerialNumber", "BoardSerialNumber",
                                   "ProductSerialNumber")))
        self.assertNotIn("Notes", fru)

    def test_a_size_that_was_refused_is_not_tried_again(self):
        sizes = [request.split()[3] for request in self.refused]
        self.assertTrue(sizes)
        self.assertEqual(sorted(set(sizes), reverse=True), sizes)


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
    for tool in (IPMITOOL, DMIDECODE):
        if not pathlib.Path(tool).exists():
            print(f"SKIPPED: {tool} is not installed")
            sys.exit(bed.SKIPPED)
    bed.main()
