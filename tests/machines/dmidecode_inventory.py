#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""dmidecode_inventory.py VELHOST FILE...: what velhost publishes of types 0, 1, 2, 3 and 17 is what dmidecode
reads. Each FILE is a DMI dump, a machine file whose structures are put into one, or a folder of dumps."""

import csv
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
from datetime import datetime

sys.dont_write_bytecode = True
import derive_expected  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
CLASSES = ["KRXSG_SystemFirmware", "KRXSG_ComputerSystem", "KRXSG_PhysicalMemory"]
UNITS = {"bytes": 1, "kB": 2**10, "MB": 2**20, "GB": 2**30, "TB": 2**40}

# The standard's names where dmidecode has others.
NAMES = {"All In One": "All in One", "Sub Chassis": "SubChassis",
         "Multi-system": "Multi-system chassis", "CompactPCI": "Compact PCI",
         "AdvancedTCA": "Advanced TCA", "Blade Enclosing": "Blade Enclosure",
         "Row Of Chips": "Row of chips", "Flash": "FLASH"}
SAYS_NOTHING = ("Unknown", "Reserved", "<OUT OF SPEC>")
TOO_NEW = ("CAMM", "HBM3")  # for dmidecode 3.4
NOT_TOLD = object()  # dmidecode ends the structure of an empty slot before the field

# Codes in the maker's field of the project's own machines, by JEDEC JEP106.
MAKERS = {"80AD000080AD": "Hyundai Electronics", "80CE000080CE": "Samsung", "CE80": "Samsung",
          "CE00000000000000": "Samsung", "7F7F9E0000000000": "Corsair", "7F98": "Kingston",
          "0xAD80": "Hyundai Electronics"}

# Where dmidecode stands, also for those who have no such folder in their PATH.
os.environ["PATH"] += ":/usr/sbin"


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          encoding="latin-1").stdout


# ---------------------------------------------------------------------------------------------
# dmidecode's structures


class Structure:
    def __init__(self, kind, length, lines):
        self.kind, self.length = int(kind), int(length)
        self.lines = [line.strip("\t") for line in lines]
        self.values = dict(line.split(": ", 1) for line in lines
                           if re.match(r"\t[^\t].*?: ", line))
        self.values = {key.strip("\t"): value for key, value in self.values.items()}

    def text(self, key, strip=True):
        """None for what is not there, and for "Not Specified", which a firmware may also write."""
        value = self.values.get(key, "Not Specified")
        if value in ("Not Specified", "<BAD INDEX>") or not value.strip(" "):
            return None
        return value.rstrip(" ") if strip else value

    def texts(self, **keys):
        return {name: self.text(key) for name, key in keys.items()}

    def name(self, key):
        value = self.text(key)
        return None if value in SAYS_NOTHING else NAMES.get(value, value)

    def size(self, key):
        match = re.fullmatch(r"(\d+) (\w+)", self.text(key) or "")
        return match and int(match[1]) * UNITS[match[2]]


def decoded(dump):
    """The structures by type."""
    found = {}
    for block in output("dmidecode", "--from-dump", dump).split("\n\n"):
        head, *lines = block.split("\n")
        match = re.match(r"Handle 0x\w+, DMI type (\d+), (\d+) bytes", head)
        if match:
            found.setdefault(int(match[1]), []).append(Structure(match[1], match[2], lines))
    return found


# ---------------------------------------------------------------------------------------------
# What has to be published of them


def release_date(text):
    for form in ("%m/%d/%Y", "%m/%d/%y"):
        try:
            return datetime.strptime(text or "", form).strftime("%Y%m%d000000.000000+000")
        except ValueError:
            pass
    return None


def firmware(bios, number):
    return {"InstanceID": f"KRXSG:SystemFirmware:{number}", "Vendor": bios.text("Vendor"),
            "Version": bios.text("Version", strip=False),
            "ReleaseDate": release_date(bios.text("Release Date")),
            "SystemFirmwareRevision": bios.text("BIOS Revision"),
            "EmbeddedControllerRevision": bios.text("Firmware Revision"),
            "ROMSize": bios.size("ROM Size"),
            "UEFI": "UEFI is supported" in bios.lines if bios.length >= 0x14 else None}


def system(found):
    parts = {"Name": "System"}
    if 1 in found:
        first = found[1][0]
        parts |= first.texts(Manufacturer="Manufacturer", ProductName="Product Name",
                             Version="Version", SerialNumber="Serial Number", UUID="UUID",
                             SKUNumber="SKU Number", Family="Family")
    if 3 in found:
        first = found[3][0]
        parts |= {"ChassisType": first.name("Type")} | first.texts(
            ChassisSerialNumber="Serial Number", ChassisAssetTag="Asset Tag")
    if 2 in found:
        mains = [board for board in found[2] if board.text("Type") == "Motherboard"]
        parts |= (mains or found[2])[0].texts(
            BoardManufacturer="Manufacturer", BoardProduct="Product Name",
            BoardSerialNumber="Serial Number")
    return parts


def makers():
    with open(HERE.parent / "data" / "jep106.tsv", encoding="ascii", newline="") as file:
        return {(int(row["bank"]), int(row["code"], 16)): row["name"]
                for row in csv.DictReader(file, delimiter="\t")}


def maker(device):
    text = device.text("Manufacturer")
    code = re.fullmatch(r"Bank (\d+), Hex 0x(\w+)", device.text("Module Manufacturer ID") or "")
    if text is None and code:
        return makers().get((int(code[1]), int(code[2], 16) & 0x7F))
    return MAKERS.get(text, text)


def speed(device, empty):
    """Bit 31 of the extended field is reserved; dmidecode takes it for one of the number's."""
    if empty and "Speed" not in device.values:
        return NOT_TOLD
    match = re.fullmatch(r"(\d+) MT/s", device.text("Speed") or "")
    return match and int(match[1]) % 2**31


def memory(device):
    empty = device.text("Size") == "No Module Installed"
    module = {} if empty else {"Manufacturer": maker(device)} | device.texts(
        PartNumber="Part Number", SerialNumber="Serial Number", AssetTag="Asset Tag")
    return {"DeviceLocator": device.text("Locator"), "BankLocator": device.text("Bank Locator"),
            "Populated": not empty, "Capacity": 0 if empty else device.size("Size"),
            "FormFactor": device.name("Form Factor"), "MemoryType": device.name("Type"),
            "Speed": speed(device, empty), **module}


def wanted(found):
    return {CLASSES[0]: [firmware(bios, n) for n, bios in enumerate(found.get(0, []), 1)],
            CLASSES[1]: [system(found)] if {1, 2, 3} & set(found) else [],
            CLASSES[2]: [memory(device) for device in found.get(17, []) if device.length >= 0x15]}


# ---------------------------------------------------------------------------------------------
# The comparison


def published(velhost, dump, folder):
    machine = folder / "machine.json"
    machine.write_text(json.dumps({"format": "vel-machine/1", "name": "dump", "machine_type": "",
                                   "smbios": {"dump": str(dump.resolve())},
                                   "collectors": ["SMBIOSInventory"]}))
    return json.loads(output(velhost, "query", *CLASSES, "--machine", machine, "--format", "json")
                      .encode("latin-1"))


def differs(ours, theirs):
    return not (ours == theirs or theirs is NOT_TOLD
                or (theirs is None and ours in ("Not Specified", *TOO_NEW)))


def differences(ours, theirs):
    if len(ours) != len(theirs):
        yield f"{len(ours)} instances, {len(theirs)} structures"
    for number, (one, other) in enumerate(zip(ours, theirs)):
        for name in sorted(one.keys() | other.keys()):
            if differs(one.get(name), other.get(name)):
                yield f"{number} {name}: {one.get(name)!r}, dmidecode: {other.get(name)!r}"


def whole(structure):
    return len(structure) > 3 and 4 <= structure[1] <= len(structure) - 2


def dump_of(machine, folder):
    """A dump with the machine's structures, but for those that no table can hold."""
    smbios = derive_expected.Smbios(derive_expected.load_machine(machine))
    table = b"".join(data for data, _ in smbios.structures if whole(data))
    entry = struct.pack("<5sBBBBBBBIQ", b"_SM3_", 0, 24, 3, 5, 0, 1, 0, len(table), 0x20)
    entry = entry[:5] + bytes([-sum(entry) & 0xFF]) + entry[6:]
    dump = folder / "table.dmi"
    dump.write_bytes(entry.ljust(0x20, b"\0") + table)
    return dump


def dumps(names):
    for path in map(pathlib.Path, names):
        yield from sorted(path.glob("*.bin")) if path.is_dir() else [path]


def main(velhost, *names):
    wrong = []
    for file in dumps(names):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            dump = dump_of(file, folder) if file.suffix == ".json" else file
            ours, theirs = published(velhost, dump, folder), wanted(decoded(dump))
            count = sum(len(theirs[name]) for name in CLASSES)
            print(f"{file.name}: {count} instances")
            wrong += [f"{file.name}: {name} {line}" for name in CLASSES
                      for line in differences(ours[name], theirs[name])]
            if not count:
                wrong.append(f"{file.name}: nothing to compare")
    sys.exit("\n".join(wrong) or 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
