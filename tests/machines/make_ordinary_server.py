#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""make_ordinary_server.py FILE: writes machines/ordinary-server.dmi, the firmware table of an ordinary
server of two sockets and sixteen memory slots, twelve of them filled, as `dmidecode --dump-bin` would.

Fields stand in the order of the SMBIOS standard (DSP0134 3.5). All makers and products are invented but
those of the memory, which are makers of JEDEC JEP106.
"""

import pathlib
import struct
import sys

TABLE = 0x20  # where dmidecode puts the table, behind the entry point
KILOBYTE, MEGABYTE, TERABYTE = 2**10, 2**20, 2**40


def byte(*values):
    return bytes(values)


def word(*values):
    return struct.pack(f"<{len(values)}H", *values)


def double(*values):
    return struct.pack(f"<{len(values)}I", *values)


def quad(*values):
    return struct.pack(f"<{len(values)}Q", *values)


def structure(kind, handle, *fields, strings=()):
    data = b"".join(fields)
    texts = b"".join(text.encode("ascii") + b"\0" for text in strings) or b"\0"
    return struct.pack("<BBH", kind, 4 + len(data), handle) + data + texts + b"\0"


def firmware():
    return structure(
        0, 0x0000,
        byte(1, 2), word(0xF000), byte(3),   # vendor, version, starting segment, release date
        byte(0xFF),                          # ROM size: see the extended field
        quad(0x0000000000099880),            # PCI, upgradeable, shadowed, boots from CD and more
        byte(0x03, 0x0D),                    # ACPI, USB legacy; boot specification, content, UEFI
        byte(2, 10), byte(1, 31),            # firmware release 2.10, embedded controller 1.31
        word(32),                            # ROM size: 32 MB
        strings=["Corvane Firmware", "2.10.1", "03/14/2024"])


def system():
    uuid = bytes.fromhex("6c0a7d31 9b4e 4f52 8a10 5c0000a1b2c3")
    time_low, time_mid, time_high = struct.unpack(">IHH", uuid[:8])
    return structure(
        1, 0x0100,
        byte(1, 2, 3, 4),                    # manufacturer, product name, version, serial number
        double(time_low), word(time_mid, time_high), uuid[8:],
        byte(6),                             # woken by the power switch
        byte(5, 6),                          # SKU number, family
        strings=["Vendane Systems", "Vendane R220", "A02", "VSR220-0042", "R220-2S-16D",
                 "Vendane Rack"])


def board():
    return structure(
        2, 0x0200,
        byte(1, 2, 3, 4, 5),                 # manufacturer, product, version, serial number, asset tag
        byte(0x09), byte(6), word(0x0300),   # hosting, replaceable; location; chassis
        byte(0x0A, 0),                       # motherboard, contains nothing
        strings=["Vendane Systems", "VB-2S16", "1.03", "VB16-31-00917", "Default asset tag",
                 "Tray 1"])


def chassis():
    return structure(
        3, 0x0300,
        byte(1, 0x17, 2, 3, 4),              # manufacturer, rack mount, version, serial number, asset tag
        byte(3, 3, 3, 2), double(0),         # states safe, security unknown; OEM
        byte(2, 2, 0, 3),                    # 2 U, two power cords, no contained elements of 3 bytes
        byte(5),                             # SKU number
        strings=["Vendane Systems", "2U", "VC2U-0042", "DC1-ROW7-14", "R220-2S-16D"])


def processor(socket):
    return structure(
        4, 0x0400 + socket,
        byte(1, 3, 0x01, 2),                 # socket, central processor, family other, manufacturer
        quad(0x178BFBFF00A10F11), byte(3),   # identification, version
        byte(0x80 | 11), word(100),          # 1.1 V, 100 MHz
        word(3800, 2600), byte(0x41, 0x01),  # most, now; filled and enabled; upgrade other
        word(0xFFFF, 0xFFFF, 0xFFFF),        # caches not told
        byte(4, 5, 6),                       # serial number, asset tag, part number
        byte(24, 24, 48), word(0x00FC),      # cores, enabled, threads; characteristics
        word(0x0001), word(24, 24, 48),      # family 2; the counts once more
        strings=[f"CPU {socket + 1}", "Arvent", "Arvent 24-Core Processor", f"AR24-{socket + 1:04}",
                 "Unknown", "AR-24-2600"])


def memory_array():
    return structure(
        16, 0x1000,
        byte(3, 3, 6),                       # on the board, system memory, multi-bit ECC
        double(0x80000000), word(0xFFFE, 16),  # capacity: see behind; no error handle; 16 devices
        quad(4 * TERABYTE))


def memory_slot(number, size, words, form_type, strings, technology, maker_id, volatile_size):
    """The fields that a module and an empty slot have in common."""
    widths, speed, configured, millivolts = words
    in_megabytes = size // MEGABYTE
    return structure(
        17, 0x1100 + number,
        word(0x1000, 0xFFFE, *widths),       # array, no error handle, total and data width
        word(min(in_megabytes, 0x7FFF)),     # size in MB; 7FFFh: see the extended field
        byte(form_type[0], 0, 1, 2, form_type[1]),  # form, no set, locators, type
        word(form_type[2], speed),           # type detail, MT/s
        byte(3, 4, 5, 6), byte(form_type[3]),  # maker, serial number, asset tag, part number; rank
        double(in_megabytes if in_megabytes >= 0x7FFF else 0),
        word(configured, millivolts, millivolts, millivolts),
        byte(technology[0]), word(technology[1]), byte(0),  # technology, mode, no firmware version
        word(maker_id, 0, 0, 0),             # module maker and product, controller maker and product
        quad(0, volatile_size, 0, 0),        # non-volatile, volatile, cache, logical sizes
        double(0, 0),                        # extended speeds
        strings=strings)


# Text in the maker's field, and his JEDEC code: number of continuation codes, then the code.
MAKERS = [("Samsung", 0xCE80), ("80AD000080AD", 0xAD80)]
PARTS = ["M32R5-4800-2R8", "H32R5-4800-2R8"]
CHANNELS = "ABCDEFGH"
FILLED = "ABCEFG"


def slot(socket, channel):
    number = socket * len(CHANNELS) + CHANNELS.index(channel)
    locators = [f"P{socket + 1}-DIMM{channel}1", f"CPU {socket + 1} Channel {channel}"]
    if channel not in FILLED:
        return memory_slot(number, 0, ((0xFFFF, 0xFFFF), 0, 0, 0), (9, 2, 0x0004, 0),
                           locators + ["NO DIMM"] * 4, (2, 0x0004), 0, 2**64 - 1)
    size = 32 * KILOBYTE * MEGABYTE
    maker, maker_id = MAKERS[socket]
    serial = f"{0x3A51C000 + number * 0x1D3:08X}"
    texts = [maker, serial, f"{locators[0]}_AssetTag", PARTS[socket] + "  "]  # padded, as firmware does
    return memory_slot(number, size, ((80, 64), 4800, 4400, 1100), (9, 0x22, 0x2080, 2),
                       locators + texts, (3, 0x0008), maker_id, size)


def controller_interface():
    return structure(
        38, 0x2600,
        byte(1, 0x20, 0x20, 0xFF),           # KCS, IPMI 2.0, address, no storage device
        quad(0xCA3), byte(0x00, 0))          # I/O port CA2h, registers side by side, no interrupt


def table():
    slots = [slot(socket, channel) for socket in (0, 1) for channel in CHANNELS]
    return b"".join([firmware(), system(), board(), chassis(), processor(0), processor(1),
                     memory_array(), *slots, controller_interface(), structure(127, 0x7F00)])


def entry_point(length):
    """The 64-bit entry point, version 3.5, with its checksum."""
    entry = b"_SM3_" + byte(0, 24, 3, 5, 0, 1, 0) + double(length) + quad(TABLE)
    return entry[:5] + byte(-sum(entry) & 0xFF) + entry[6:]


if __name__ == "__main__":
    contents = table()
    entry = entry_point(len(contents))
    pathlib.Path(sys.argv[1]).write_bytes(entry.ljust(TABLE, b"\0") + contents)
