# SPDX-License-Identifier: Apache-2.0
"""What the SMBIOS collector has to publish of a machine's structures (DSP0134 3.7), worked out a second
time: the part of derive_expected.py for KRXSG_SystemFirmware, KRXSG_ComputerSystem and
KRXSG_PhysicalMemory. It shares no code with the collector. Texts have one character a byte."""

import re
import uuid

KILOBYTE, MEGABYTE, GIGABYTE = 2**10, 2**20, 2**30

# Codes by name; those that are reserved or mean "Unknown" (02h) are left out.
CHASSIS_TYPES = {  # 7.4.1
    0x01: "Other", 0x03: "Desktop", 0x04: "Low Profile Desktop", 0x05: "Pizza Box",
    0x06: "Mini Tower", 0x07: "Tower", 0x08: "Portable", 0x09: "Laptop", 0x0A: "Notebook",
    0x0B: "Hand Held", 0x0C: "Docking Station", 0x0D: "All in One", 0x0E: "Sub Notebook",
    0x0F: "Space-saving", 0x10: "Lunch Box", 0x11: "Main Server Chassis",
    0x12: "Expansion Chassis", 0x13: "SubChassis", 0x14: "Bus Expansion Chassis",
    0x15: "Peripheral Chassis", 0x16: "RAID Chassis", 0x17: "Rack Mount Chassis",
    0x18: "Sealed-case PC", 0x19: "Multi-system chassis", 0x1A: "Compact PCI",
    0x1B: "Advanced TCA", 0x1C: "Blade", 0x1D: "Blade Enclosure", 0x1E: "Tablet",
    0x1F: "Convertible", 0x20: "Detachable", 0x21: "IoT Gateway", 0x22: "Embedded PC",
    0x23: "Mini PC", 0x24: "Stick PC"}
FORM_FACTORS = {  # 7.18.1
    0x01: "Other", 0x03: "SIMM", 0x04: "SIP", 0x05: "Chip", 0x06: "DIP", 0x07: "ZIP",
    0x08: "Proprietary Card", 0x09: "DIMM", 0x0A: "TSOP", 0x0B: "Row of chips", 0x0C: "RIMM",
    0x0D: "SODIMM", 0x0E: "SRIMM", 0x0F: "FB-DIMM", 0x10: "Die", 0x11: "CAMM"}
MEMORY_TYPES = {  # 7.18.2
    0x01: "Other", 0x03: "DRAM", 0x04: "EDRAM", 0x05: "VRAM", 0x06: "SRAM", 0x07: "RAM",
    0x08: "ROM", 0x09: "FLASH", 0x0A: "EEPROM", 0x0B: "FEPROM", 0x0C: "EPROM", 0x0D: "CDRAM",
    0x0E: "3DRAM", 0x0F: "SDRAM", 0x10: "SGRAM", 0x11: "RDRAM", 0x12: "DDR", 0x13: "DDR2",
    0x14: "DDR2 FB-DIMM", 0x18: "DDR3", 0x19: "FBD2", 0x1A: "DDR4", 0x1B: "LPDDR",
    0x1C: "LPDDR2", 0x1D: "LPDDR3", 0x1E: "LPDDR4", 0x1F: "Logical non-volatile device",
    0x20: "HBM", 0x21: "HBM2", 0x22: "DDR5", 0x23: "LPDDR5", 0x24: "HBM3"}


# ---------------------------------------------------------------------------------------------
# Values: None where nothing is known


def whole_string(strings, number):
    """The string of a set, however long; "" when there is none. An empty one ends the set."""
    texts = strings.partition(b"\0\0")[0].split(b"\0") if strings[:1] != b"\0" else []
    return texts[number - 1].decode("latin-1") if 1 <= number <= len(texts) else ""


def trimmed(text):
    return text.rstrip(" ") or None


def verbatim(text):
    return text if text.strip(" ") else None


def month_day_year(text):
    """The date-time as (year, month, day)."""
    match = re.fullmatch(r"([0-9]{2})/([0-9]{2})/([0-9]{4}|[0-9]{2}) *", text)
    if not match:
        return None
    year = int(match[3])
    if len(match[3]) == 2:
        year += 1900 if year > 50 else 2000
    return year, int(match[1]), int(match[2])


def release(major, minor):
    return None if 0xFF in (major, minor) else f"{major}.{minor}"


def rom_size(blocks):
    return (blocks + 1) * 64 * KILOBYTE


def extended_rom_size(field):
    unit, count = divmod(field, 0x4000)
    return count * (MEGABYTE, GIGABYTE)[unit] if unit < 2 and count else None


def uuid_text(data):
    return None if set(data) in ({0}, {0xFF}) else str(uuid.UUID(bytes_le=bytes(data)))


def memory_size(field):
    if field == 0xFFFF:
        return None
    return (field - 0x8000) * KILOBYTE if field >= 0x8000 else field * MEGABYTE


def extended_memory_size(field):
    return field % 2**31 * MEGABYTE


def jep106_code(data):
    """The eight bytes of older modules' SPD for the two of newer ones."""
    count, code = (byte & 0x7F for byte in data[:2])
    return b"\x7F" * count + bytes([code]) if count < 7 and code else b""


def module_maker(makers, data):
    return makers(jep106_code(data).ljust(8, b"\0")) or None


def maker_of_text(makers, text):
    """The maker whose code a text is, otherwise the text."""
    text = text.rstrip(" ")
    match = re.fullmatch(r"(0[xX])?((?:[0-9A-Fa-f]{2}){2,8})", text)
    if match:
        data = bytes.fromhex(match[2])
        swapped = jep106_code(data[::-1]) if len(data) == 2 else b""
        older = data if re.fullmatch(b"\x7F*[^\x7F]\0*", data, re.S) else b""
        forms = [jep106_code(data), older, swapped]
        for form in [swapped, *forms] if match[1] else forms:
            if maker := makers(form.ljust(8, b"\0")):
                return maker
    return text or None


# ---------------------------------------------------------------------------------------------
# The classes


class Structure:
    def __init__(self, data, makers, date_time):
        self.makers, self.date_time = makers, date_time
        length = data[1] if len(data) > 3 and data[1] > 3 else 0
        self.area, self.strings = data[:length].ljust(length, b"\0"), data[length:]

    def field(self, offset, size):
        return self.area[offset:offset + size] if offset + size <= len(self.area) else None

    def number(self, offset, size):
        data = self.field(offset, size)
        return None if data is None else int.from_bytes(data, "little")

    def text(self, offset):
        return whole_string(self.strings, self.number(offset, 1) or 0)

    def firmware(self, number):
        size = self.number(0x09, 1)
        if size == 0xFF and self.number(0x18, 2) is not None:
            size = extended_rom_size(self.number(0x18, 2))
        elif size is not None:
            size = rom_size(size)
        date = month_day_year(self.text(0x08))
        bits = self.number(0x13, 1)
        return {"InstanceID": f"KRXSG:SystemFirmware:{number}", "Vendor": trimmed(self.text(0x04)),
                "Version": verbatim(self.text(0x05)),
                "ReleaseDate": date and self.date_time(*date),
                "SystemFirmwareRevision": self.release(0x14),
                "EmbeddedControllerRevision": self.release(0x16), "ROMSize": size,
                "UEFI": None if bits is None else bool(bits & 8)}

    def release(self, offset):
        pair = self.field(offset, 2)
        return pair and release(*pair)

    def texts(self, **offsets):
        return {name: trimmed(self.text(offset)) for name, offset in offsets.items()}

    def system(self):
        data = self.field(0x08, 16)
        return {**self.texts(Manufacturer=0x04, ProductName=0x05, Version=0x06, SerialNumber=0x07),
                "UUID": data and uuid_text(data), **self.texts(SKUNumber=0x19, Family=0x1A)}

    def chassis(self):
        return {"ChassisType": CHASSIS_TYPES.get((self.number(0x05, 1) or 0) % 0x80),
                **self.texts(ChassisSerialNumber=0x07, ChassisAssetTag=0x08)}

    def board(self):
        return self.texts(BoardManufacturer=0x04, BoardProduct=0x05, BoardSerialNumber=0x07)

    def memory(self):
        size = self.number(0x0C, 2)
        capacity = memory_size(size)
        if size == 0x7FFF and self.number(0x1C, 4) is not None:
            capacity = extended_memory_size(self.number(0x1C, 4))
        speed = self.number(0x15, 2)
        if speed == 0xFFFF:
            speed = (self.number(0x54, 4) or 0) % 2**31
        maker = maker_of_text(self.makers, self.text(0x17))
        if maker is None and (code := self.field(0x2C, 2)):
            maker = module_maker(self.makers, code)
        module = {"Manufacturer": maker,
                  **self.texts(PartNumber=0x1A, SerialNumber=0x18, AssetTag=0x19)}
        return {**self.texts(DeviceLocator=0x10, BankLocator=0x11), "Populated": size != 0,
                "Capacity": capacity, "FormFactor": FORM_FACTORS.get(self.number(0x0E, 1)),
                "MemoryType": MEMORY_TYPES.get(self.number(0x12, 1)), "Speed": speed or None,
                **(module if size else {})}


class Inventory:
    """Of a machine: `smbios` is derive_expected's, `note` writes to the failure-data log."""

    def __init__(self, smbios, makers, date_time, note):
        self.smbios, self.note = smbios, note
        self.decode = lambda data: Structure(data, makers, date_time)

    def structures(self, structure_type):
        for data, status in [*self.smbios.of_type(structure_type),
                             (None, self.smbios.end_status)]:
            if status == 5:
                return
            if status != 0:
                self.note(f"reading SMBIOS structures of type {structure_type} failed, "
                          f"status {status}")
                return
            yield self.decode(data)

    def firmwares(self):
        return [s.firmware(number) for number, s in enumerate(self.structures(0), 1)]

    def systems(self):
        systems, chassis, boards = (list(self.structures(number)) for number in (1, 3, 2))
        board = next((s for s in boards if s.number(0x0D, 1) == 0x0A), boards and boards[0])
        parts = [part for part in (systems and systems[0].system(),
                                   chassis and chassis[0].chassis(), board and board.board())
                 if part]
        found = {"Name": "System"}
        for part in parts:
            found |= part
        return [found] if parts else []

    def memories(self):
        return [s.memory() for s in self.structures(17) if s.number(0x0C, 2) is not None]

    def instances(self):
        """(class, values) in the order in which they are published."""
        for name, found in (("KRXSG_SystemFirmware", self.firmwares),
                            ("KRXSG_ComputerSystem", self.systems),
                            ("KRXSG_PhysicalMemory", self.memories)):
            if self.smbios.load_status:
                self.note("the SMBIOS library cannot be opened, error "
                          f"{self.smbios.load_status}")
                continue
            for values in found():
                yield name, {key: value for key, value in values.items() if value is not None}
