#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""make_ordinary_bmc.py FOLDER: writes the machine files of an ordinary server whose BMC knows a board, two
power supplies and a backplane, and of four that are like it but for one thing.

The bytes stand here field by field; which questions a collector puts, and so which answers a file needs,
the second witness says (ipmi_inventory.py). All makers and products are invented.
"""

import json
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import ipmi_inventory  # noqa: E402

# ---------------------------------------------------------------------------------------------
# FRU information: bytes as pieces of a machine file, hex strings and texts


def size(pieces):
    return sum(len(p["text"].encode()) if isinstance(p, dict) else len(p.split()) for p in pieces)


def octets(pieces):
    return b"".join(p["text"].encode() if isinstance(p, dict) else bytes.fromhex(p)
                    for p in pieces)


def text(value):
    """A field of Latin-1, here of ASCII."""
    return [f"{0xC0 | len(value):02X}", {"text": value}]


def checked(*pieces):
    """Filled to whole units of eight bytes, the last one the checksum."""
    data = octets(pieces)
    data += bytes(-(len(data) + 1) % 8)
    return data + bytes([-sum(data) % 256])


def area(*pieces):
    """Behind version and length."""
    units = (2 + size(pieces) + 1 + 7) // 8
    return checked(f"01 {units:02X}", *pieces)


def device(total, chassis=b"", board=b"", product=b""):
    """A device of `total` bytes whose areas follow the common header; FF behind them."""
    header, at = bytes([1, 0]), 8
    for part in (chassis, board, product):
        header += bytes([at // 8 if part else 0])
        at += len(part)
    data = checked((header + bytes(2)).hex(" ")) + chassis + board + product
    return data.ljust(total, b"\xFF")


def minutes(days, hours, minute):
    """Since 1996-01-01."""
    return ((days * 24 + hours) * 60 + minute).to_bytes(3, "little").hex(" ").upper()


END = "C1"
CHASSIS = area(
    "17",                                            # rack mount
    *text("KC-2U-0007"), *text("CH-0K7001"), *text("custom"), END)
BOARD = area(
    "19", minutes(10227, 14, 5),                     # English; 2024-01-01, 14:05
    *text("KRX Boards"), *text("Ordinary 2S Board"), *text("BD-0K7001"), *text("KB-2S-0007"),
    *text("fru-1.2"), *text("custom"), END)
PRODUCT = area(
    "00",                                            # English
    *text("KRX"), *text("Ordinary Server 2U"), *text("6120AC1"), *text("02"), *text("KQ0K701"),
    *text("RACK7-U12"), "C0", END)
SUPPLY = [
    "19", *text("KRX Power"),
    "89 F0 5C 37 91 04 41 77 03 45",                 # six-bit ASCII: PSU-1200W-01
]
SUPPLY_1 = area(
    *SUPPLY, *text("KP-1200"),
    "02 01 0A",                                      # version, binary
    "45 72 00 01 B1 A9",                             # serial number, BCD plus: 720001-1 9
    "00", "C0", END)
SUPPLY_2 = area(
    *SUPPLY, *text("KP-1200  "),                     # blanks fill the field
    "02 01 0A", "45 72 00 02 B1 A9",
    "02 00 00", "C0", END)                           # asset tag of zeros: there is none
BACKPLANE = area(
    "16", "00 00 00",                                # German; no date
    "C6 4B 00 52 00 58 00",                                  # KRX, UTF-16
    "D0 52 00 FC 00 63 00 6B 00 77 00 61 00 6E 00 64 00",  # Rückwand
    "C0",
    "CE 4B 00 44 00 2D 00 30 00 30 00 30 00 37 00",  # KD-0007
    END)

FRUS = {  # device ID: contents, whether it counts in words
    0: (device(512, CHASSIS, BOARD, PRODUCT), False),
    1: (device(128, product=SUPPLY_1), False),
    2: (device(128, product=SUPPLY_2), False),
    3: (device(2048, board=BACKPLANE), True),
}

# ---------------------------------------------------------------------------------------------
# Records of the repository: record ID, version 1.5, type, length, the rest


def record(record_id, kind, *pieces):
    data = octets(pieces)
    return record_id.to_bytes(2, "little") + bytes([0x51, kind, len(data)]) + data


def fru_locator(record_id, address, number, entity, instance, name, modifier="02"):
    return record(record_id, 0x11,
                  f"{address:02X} {number:02X}", "80 00 00",  # logical, LUN 0; channel 0
                  f"10 {modifier}",                           # 02: FRU inventory device
                  f"{entity:02X} {instance:02X} 00", *text(name))


SENSOR = ["20 00 01 0A 01 67 40 01 01"]  # an upper part of a sensor's record, which nobody reads
RECORDS = [
    record(1, 0x12, "20 00 00 BF", "00 00 00", "07 01 00", *text("BMC")),
    record(2, 0x01, *SENSOR),
    fru_locator(3, 0x20, 1, 0x0A, 1, "PSU 1"),
    fru_locator(4, 0x20, 2, 0x0A, 2, "PSU 2"),
    fru_locator(5, 0xC0, 1, 0x0B, 1, "Riser"),  # behind another controller
    fru_locator(6, 0x20, 3, 0x0F, 1, "Backplane 1"),
    record(7, 0xC0, "57 01 00"),                # OEM
]

# ID 20h, revision 1 with device SDRs, firmware 2.13, IPMI 2.0, supports all, IANA 343, product 1234h
DEVICE_ID = bytes.fromhex("20 81 02 13 02 BF 57 01 00 34 12 01 0A 00 FF")
DEVICE_GUID = bytes.fromhex("C3 B2 A1 00 00 5C 10 8A 52 4F 4E 9B 31 7D 0A 6C")


# ---------------------------------------------------------------------------------------------
# The BMC


class Bmc:
    def __init__(self, **changes):
        self.device_id, self.frus, self.most, self.back = DEVICE_ID, dict(FRUS), 255, None
        self.silent, self.records = False, RECORDS
        self.__dict__.update(changes)
        self.entries = []

    def __call__(self, request):
        """(reply record, its length); each conversation is kept as an entry of a machine file."""
        entry = {"request": spaced(request)}
        if all(known["request"] != entry["request"] for known in self.entries):
            self.entries.append(entry)
        if self.silent:
            entry["fail"] = True
            return None, 0
        data = self.answer((request[2], request[4]), request[9:])
        reply = bytes([1, 0x20, request[2] + 4, request[3]]) + data
        entry["reply"] = spaced(reply)
        return reply, len(reply)

    def answer(self, command, data):
        """Completion code and data."""
        fixed = {ipmi_inventory.GET_DEVICE_ID: self.device_id,
                 ipmi_inventory.GET_DEVICE_GUID: DEVICE_GUID,
                 ipmi_inventory.RESERVE_SDR_REPOSITORY: bytes.fromhex("34 12")}
        if command in fixed:
            return b"\0" + fixed[command]
        if command == ipmi_inventory.GET_SDR:
            return self.sdr(int.from_bytes(data[2:4], "little"), data[4], data[5])
        contents, words = self.frus[data[0]]
        if command == ipmi_inventory.GET_FRU_AREA_INFO:
            return b"\0" + len(contents).to_bytes(2, "little") + bytes([words])
        word = 2 if words else 1
        at, count = int.from_bytes(data[1:3], "little") * word, data[3] * word
        if count > self.most:
            return b"\xCA"
        return bytes([0, data[3]]) + contents[at:at + count]

    def sdr(self, number, offset, count):
        place = max(number, 1) - 1
        if count == 255 and self.most < 255:
            return b"\xCA"
        following = place + 2 if place + 1 < len(self.records) else 0xFFFF
        if self.back and place + 1 == self.back[0]:
            following = self.back[1]
        part = self.records[place][offset:offset + count]
        if len(part) > self.most:
            return b"\xCA"
        return b"\0" + following.to_bytes(2, "little") + part


def spaced(data):
    return data.hex(" ").upper()


def corrupt():
    """A wrong byte in the board's area, a length past the end, an area of another version."""
    board = bytearray(FRUS[0][0])
    board[FRUS[0][0].index(b"Ordinary 2S Board")] = 0x30
    supply, backplane = bytearray(FRUS[1][0]), bytearray(FRUS[3][0])
    supply[9] = 0x40
    backplane[8] = 0x02
    frus = {0: (bytes(board), False), 1: (bytes(supply), False), 3: (bytes(backplane), True)}
    return dict(FRUS) | frus


# The BMC as a part of the chassis, and a memory module's SPD data as a FRU device.
OTHER_RECORDS = [
    record(1, 0x12, "20 00 00 BF", "00 00 00", "17 61 00", *text("Chassis BMC")),
    *RECORDS[1:],
    fru_locator(8, 0x20, 0x14, 0x20, 0x61, "DIMM A1", "01"),  # device-relative instance
]


MACHINES = {
    "ordinary-server": (
        "ordinary server", "Two sockets, twelve memory modules, and a BMC that knows the FRU devices"
        " of the board, two power supplies and a backplane.", {}),
    "ordinary-server-corrupt-fru": (
        "ordinary server with corrupt FRU areas", "One area each of three devices cannot be used,"
        " a fourth holds something else; the auxiliary firmware revision, the maker and the product are not told.",
        {"frus": corrupt(), "records": OTHER_RECORDS, "device_id": DEVICE_ID[:6] + bytes.fromhex("FF FF FF FF FF")}),
    "ordinary-server-small-reads": (
        "ordinary server whose BMC gives eight bytes at a time",
        "The BMC refuses longer pieces of FRU devices and of records (CAh).",
        {"most": 8,
         "device_id": DEVICE_ID[:2] + bytes.fromhex("81 05 51 BF 02 00 F1 01 00 00 00 00 00")}),
    "ordinary-server-sdr-loop": (
        "ordinary server with a record that leads back",
        "The record behind the first power supply's is the first one again.", {"back": (3, 1)}),
    "ordinary-server-silent-bmc": (
        "ordinary server whose BMC does not answer",
        "The operating system has an IPMI driver, and nobody answers it.", {"silent": True}),
}


def machine_file(name, description, changes):
    bmc = Bmc(**changes)
    ipmi_inventory.Collector(bmc).collect()
    found = not bmc.silent
    sp = {"bmc": found, "ipmi_drivers": True, "integrated_bmc": True, "ipmi_commands": bmc.entries}
    return {"format": "vel-machine/1", "name": name, "description": description,
            "smbios": {"dump": "ordinary-server.dmi"}, "sp": sp,
            "collectors": [ipmi_inventory.NAME, "SMBIOSInventory"]}


def layout(machine):
    """One command a line."""
    commands = ",\n".join("      " + json.dumps(entry) for entry in machine["sp"]["ipmi_commands"])
    short = machine | {"sp": machine["sp"] | {"ipmi_commands": []}}
    return (json.dumps(short, indent=2, ensure_ascii=False)
            .replace('"ipmi_commands": []', f'"ipmi_commands": [\n{commands}\n    ]') + "\n")


def main(folder):
    for name, machine in MACHINES.items():
        (pathlib.Path(folder) / f"{name}.json").write_text(layout(machine_file(*machine)),
                                                           encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
