# SPDX-License-Identifier: Apache-2.0
"""A second witness for the IPMI collector: what a BMC's answers mean, and which questions lead to them.
Shares no code with the plug-in.

Sources: IPMI 2.0 (sections 20, 33, 34, 43); IPMI Platform Management FRU Information Storage
Definition 1.0 rev. 1.3.
"""

import datetime
import string

NAME = "IPMIInventory"
CLASSES = ["KRXSG_ManagementController", "KRXSG_IPMIFRU"]

GET_DEVICE_ID, GET_DEVICE_GUID = (0x06, 0x01), (0x06, 0x08)
GET_FRU_AREA_INFO, READ_FRU_DATA = (0x0A, 0x10), (0x0A, 0x11)
RESERVE_SDR_REPOSITORY, GET_SDR = (0x0A, 0x22), (0x0A, 0x23)
TOO_MUCH, LOST, NOT_PRESENT = (0xC7, 0xC8, 0xCA), 0xC5, 0xCB

ENTITIES = dict(enumerate("""Other;Unknown;Processor;Disk or disk bay;Peripheral bay
System management module;System board;Memory module;Processor module;Power supply;Add-in card
Front panel board;Back panel board;Power system board;Drive backplane
System internal expansion board;Other system board;Processor board;Power unit;Power module
Power management board;Chassis back panel board;System chassis;Sub-chassis;Other chassis board
Disk drive bay;Peripheral bay;Device bay;Fan;Cooling unit;Cable or interconnect;Memory device
System management software;System firmware;Operating system;System bus;Group
Remote management communication device;External environment;Battery;Processing blade
Connectivity switch;Processor and memory module;I/O module;Processor and I/O module
Management controller firmware;IPMI channel;PCI bus;PCI Express bus;SCSI bus;SATA or SAS bus
Processor front-side bus;Real-time clock""".replace("\n", ";").split(";"), 1)) | {55: "Air inlet"}

CHASSIS_TYPES = dict(enumerate("""Other;Unknown;Desktop;Low Profile Desktop;Pizza Box;Mini Tower
Tower;Portable;Laptop;Notebook;Hand Held;Docking Station;All in One;Sub Notebook;Space-saving
Lunch Box;Main Server Chassis;Expansion Chassis;SubChassis;Bus Expansion Chassis
Peripheral Chassis;RAID Chassis;Rack Mount Chassis;Sealed-case PC;Multi-system chassis;Compact PCI
Advanced TCA;Blade;Blade Enclosure;Tablet;Convertible;Detachable;IoT Gateway;Embedded PC;Mini PC
Stick PC""".replace("\n", ";").split(";"), 1))

AREAS = {  # place in the common header, offset of the first field, properties
    "chassis area": (2, 3, ["ChassisPartNumber", "ChassisSerialNumber"]),
    "board area": (3, 6, ["BoardManufacturer", "BoardProductName", "BoardSerialNumber",
                          "BoardPartNumber"]),
    "product area": (4, 3, ["ProductManufacturer", "ProductName", "ProductPartNumber",
                            "ProductVersion", "ProductSerialNumber", "ProductAssetTag"])}


class Bad(Exception):
    """What is wrong, in words."""


# ---------------------------------------------------------------------------------------------
# Texts and numbers


def plain(text):
    text = text.split("\0")[0]
    controls = {c: " " for c in (*range(0x20), *range(0x7F, 0xA0))}
    return text.translate(controls).strip(" ")


def hex_digits(data):
    return data.hex().upper() if any(data) else ""


def bcd_plus(data):
    return plain("".join((string.digits + " -.:,_")[int(digit, 16)] for digit in data.hex()))


def six_bit(data):
    bits = int.from_bytes(data, "little")
    return plain("".join(chr(0x20 + (bits >> 6 * i & 0x3F)) for i in range(len(data) * 8 // 6)))


def latin1(data):
    return plain(data.decode("latin-1"))


def unicode_text(data):
    units = [data[i:i + 2] for i in range(0, len(data), 2)]
    text = ""
    while units:
        for count in (1, 2):
            try:
                text += b"".join(units[:count]).decode("utf-16-le")
                break
            except UnicodeDecodeError:
                pass
        else:
            text, count = text + "\uFFFD", 1
        del units[:count]
    return plain(text)


def field_text(type_length, data, english):
    by_language = latin1 if english else unicode_text
    return (hex_digits, bcd_plus, six_bit, by_language)[type_length >> 6](data)


def sdr_text(data):
    """From the type/length byte of a record's text on."""
    text = data[1:1 + (data[0] & 0x1F)]
    return (unicode_text, bcd_plus, six_bit, latin1)[data[0] >> 6](text)


def bcd_version(data):
    return f"{data[0] & 0x7F}.{data[1]:02X}"


def ipmi_version(byte):
    return f"{byte & 0x0F}.{byte >> 4}"


def number(data, bits):
    """None for all zeros and all ones."""
    value = int.from_bytes(data, "little") & ((1 << bits) - 1)
    return None if value in (0, (1 << bits) - 1) else value


def guid(data):
    if len(data) != 16 or set(data) in ({0x00}, {0xFF}):
        return ""
    digits = data[::-1].hex()
    return "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))


def fru_date(data):
    minutes = int.from_bytes(data, "little")
    date = datetime.datetime(1996, 1, 1) + datetime.timedelta(minutes=minutes)
    return f"{date:%Y%m%d%H%M}00.000000+000" if minutes else ""


def chassis_type(byte):
    return "" if byte & 0x7F == 2 else CHASSIS_TYPES.get(byte & 0x7F, "")  # 2: unknown


# ---------------------------------------------------------------------------------------------
# FRU information


def check_version(byte):
    if byte & 0x0F != 1:
        raise Bad(f"version {byte & 0x0F} is not known")


def check_sum(data):
    if sum(data) % 256:
        raise Bad("wrong checksum")


def area_offsets(header):
    """By place in the header."""
    if set(header) in ({0x00}, {0xFF}):
        raise Bad("blank")
    check_version(header[0])
    check_sum(header)
    return {place: header[place] * 8 for place in range(1, 6)}


def area_size(start, room):
    check_version(start[0])
    if not start[1]:
        raise Bad("its length is 0")
    if start[1] * 8 > room:
        raise Bad("its length reaches past the device's end")
    return start[1] * 8


class Field(bytes):
    """A field of an area: its type/length byte, its bytes, and whether its texts are English."""

    english = True

    def text(self):
        return field_text(self[0], self[1:], self.english)


def fields_of(area, first, english):
    """([fields], what is wrong)"""
    fields, at, end = [], first, len(area) - 1
    while at < end and area[at] != 0xC1:
        length = area[at] & 0x3F
        if at + 1 + length > end:
            return fields, f"field {len(fields) + 1} reaches past its end"
        fields.append(Field(area[at:at + 1 + length]))
        fields[-1].english = english
        at += 1 + length
    return fields, "" if at < end else "its fields have no end mark"


def is_english(name, area):
    return name == "chassis area" or area[2] in (0, 25)


def area_properties(name, area):
    """({property: text}, what is wrong)"""
    check_sum(area)
    _, first, properties = AREAS[name]
    fields, fault = fields_of(area, first, is_english(name, area))
    values = {}
    if name == "chassis area":
        values["ChassisType"] = chassis_type(area[2])
    for found, field in zip(properties, fields):
        values[found] = field.text()
    if name == "board area":
        values["BoardManufactureDate"] = fru_date(area[3:6])
    return {key: value for key, value in values.items() if value}, fault


# ---------------------------------------------------------------------------------------------
# The collector


class Collector:
    """`send` takes a request record and gives (reply record, filled with zeros; its length)."""

    def __init__(self, send, log=lambda severity, text: None):
        self.send, self.log, self.silent, self.limit = send, log, False, 250
        self.device_id = None
        self.good_areas = {}  # (FRU device ID, name): bytes

    def ask(self, command, data=b"", lun=0):
        """(completion code, data); None without an answer."""
        if self.silent:
            return None
        record = bytes([1, 0x20, command[0], lun, command[1], len(data), 0, 0, 0]) + data
        reply, length = self.send(record)
        self.silent = reply is None
        if self.silent:
            return None
        return (reply[4], reply[5:length]) if length > 4 else (0xFF, b"")

    def get_device_id(self):
        if self.device_id is None:
            answer = self.ask(GET_DEVICE_ID)
            self.device_id = answer[1] if answer and not answer[0] and len(answer[1]) > 10 else b""
        return self.device_id

    # The controller

    def controllers(self):
        said = self.get_device_id()
        if not said:
            self.log(3, "IPMIInventory: no BMC says what it is.")
            return []
        answer = self.ask(GET_DEVICE_GUID)
        values = {
            "Name": "BMC", "DeviceID": said[0], "DeviceRevision": said[1] & 0x0F,
            "FirmwareVersion": bcd_version(said[2:4]),
            "AuxiliaryFirmwareRevision": said[11:15].hex().upper() if len(said) > 14 else "",
            "IPMIVersion": ipmi_version(said[4]), "ManufacturerID": number(said[6:9], 20),
            "ProductID": number(said[9:11], 16),
            "GUID": guid(answer[1][:16]) if answer and not answer[0] else ""}
        return [{key: value for key, value in values.items() if value not in ("", None)}]

    # The repository

    def get_sdr(self, record, offset, count):
        """(completion code, next record, bytes)"""
        answer = self.ask(GET_SDR, self.reservation + record.to_bytes(2, "little")
                          + bytes([offset, count]))
        if not answer or answer[0] or len(answer[1]) < 2:
            return (answer[0] or 0xFF if answer else 0xFF), None, b""
        return 0, int.from_bytes(answer[1][:2], "little"), answer[1][2:]

    def reserve(self):
        self.reservations += 1
        answer = self.ask(RESERVE_SDR_REPOSITORY) if self.reservations <= 8 else None
        if not answer or answer[0] or len(answer[1]) < 2:
            return False
        self.reservation = answer[1][:2]
        return True

    def in_pieces(self, record):
        code, following, data = self.get_sdr(record, 0, 5)
        if code or len(data) < 5 or data[3] not in (0x11, 0x12):
            return code, following, data
        length = 5 + data[4]
        while len(data) < min(length, 255):
            code, _, more = self.get_sdr(record, len(data), min(self.piece, length - len(data)))
            if code in TOO_MUCH and self.piece > 4:
                self.piece //= 2
            elif code == LOST:
                return code, None, b""
            elif code or not more:
                break
            else:
                data += more
        return 0, following, data

    def read_record(self, record):
        while True:
            got = self.in_pieces(record) if self.pieces else self.get_sdr(record, 0, 255)
            if got[0] == LOST and self.reserve():
                continue
            if self.pieces or got[0] not in TOO_MUCH:
                return got
            self.pieces = True
            if not self.reserve():
                return got

    def records(self):
        """The repository's records; what ended the walk early is logged."""
        self.reservation, self.reservations, self.pieces, self.piece = bytes(2), 0, False, 16
        record, known, fault = 0, set(), ""
        while record != 0xFFFF and not fault:
            known.add(record)
            code, following, data = self.read_record(record)
            if code:
                fault = "" if record == 0 and code == NOT_PRESENT else "a record cannot be read"
                break
            if record == 0 and len(data) > 4:
                known.add(int.from_bytes(data[:2], "little"))
            yield data
            record = following
            if record in known:
                fault = "a record leads back"
        if fault:
            self.log(1, "IPMIInventory: there may be more FRU devices: in the BMC's SDR repository "
                     + fault)

    def locators(self):
        """FRU device ID to the first record that locates it at the BMC."""
        found = {}
        said = self.get_device_id()
        if self.silent or said and not said[5] & 2:
            return found
        for data in self.records():
            if len(data) < 16 or data[5] & 0xFE != 0x20:
                continue
            if data[3] == 0x11 and data[7] & 0x80:
                found.setdefault(data[6], data)
            if data[3] == 0x12 and data[8] & 0x08:
                found.setdefault(0, data)
        return found

    # FRU devices

    def asked(self, command, data, lun, shortest):
        answer = self.ask(command, data, lun)
        if answer is None:
            raise Bad("the BMC does not answer")
        code, said = answer
        if code:
            words = {NOT_PRESENT: "not there", 0x81: "busy"}.get(code, "cannot be read")
            raise Bad(f"{words} (completion code {code:02X}h)", code)
        if len(said) < shortest:
            raise Bad("the BMC's answer is too short")
        return said

    def read(self, device, offset, count):
        data = b""
        number_, lun, word = device
        while len(data) < count:
            at, ask = offset + len(data), min(count - len(data), self.limit)
            request = bytes([number_]) + (at // word).to_bytes(2, "little") + bytes([ask // word])
            try:
                said = self.asked(READ_FRU_DATA, request, lun, 1)
            except Bad as bad:
                if bad.args[-1] not in TOO_MUCH or ask <= 8:
                    raise
                self.limit = 1 << (ask - 1).bit_length() - 1
                continue
            more = said[1:][:said[0] * word][:ask]
            more = more[:len(more) // word * word]
            if len(more) < min(ask, 8):
                raise Bad("the BMC's answer is too short")
            data += more
        return data

    def area(self, device, size, offsets, name):
        offset = offsets[AREAS[name][0]]
        if not offset:
            return {}, ""
        if offset >= size:
            raise Bad("it begins past the device's end")
        room = min([at for at in offsets.values() if at > offset] + [size]) - offset
        start = self.read(device, offset, room if room <= self.limit else 8)
        length = area_size(start, size - offset)
        if length > len(start):
            start += self.read(device, offset + len(start), length - len(start))
        found = area_properties(name, start[:length])
        self.good_areas[device[0], name] = start[:length]
        return found

    def contents(self, device, size, notes):
        values = {}
        if size < 8:
            notes.append("FRU device: the device has no room for FRU areas")
            return values
        try:
            offsets = area_offsets(self.read(device, 0, 8))
        except Bad as bad:
            notes.append(f"common header: {bad.args[0]}")
            return values
        for name in AREAS:
            try:
                found, fault = self.area(device, size, offsets, name)
            except Bad as bad:
                found, fault = {}, bad.args[0]
            values |= found
            if fault:
                notes.append(f"{name}: {fault}")
        return values

    def fru(self, number_, record):
        """None for a device that nobody locates and that is not there."""
        values, notes = {"FRUDeviceID": number_}, []
        lun = record[7] >> 3 & 3 if record and record[3] == 0x11 else 0
        if record:
            values["Name"] = sdr_text(record[15:])
        if record and record[12]:
            values |= {"Description": ENTITIES.get(record[12], ""), "EntityID": record[12],
                       "EntityInstance": record[13]}
        other = {1: "memory module's SPD data", 3: "processor's information ROM"}
        if record and record[3] == 0x11 and 8 <= record[10] <= 16 and record[11] in other:
            notes.append(f"FRU device: holds a {other[record[11]]}, not read")
        else:
            try:
                said = self.asked(GET_FRU_AREA_INFO, bytes([number_]), lun, 3)
                size = int.from_bytes(said[:2], "little") // 8 * 8
                values |= self.contents((number_, lun, 1 + (said[2] & 1)), size, notes)
            except Bad as bad:
                if not record:
                    return None
                notes.append(f"FRU device: {bad.args[0]}")
        values["Notes"] = "; ".join(notes)
        return {key: value for key, value in values.items() if value != ""}

    def frus(self):
        self.limit = 250
        found = self.locators()
        numbers = sorted({0, *found})
        return [fru for n in numbers if (fru := self.fru(n, found.get(n)))]

    def collect(self):
        """[(class, {property: value})]"""
        return ([(CLASSES[0], values) for values in self.controllers()]
                + [(CLASSES[1], values) for values in self.frus()])


TYPES = {  # every other property is a string
    "DeviceID": "uint8", "DeviceRevision": "uint8", "ManufacturerID": "uint64", "ProductID": "uint16",
    "FRUDeviceID": "uint8", "EntityID": "uint8", "EntityInstance": "uint8",
    "BoardManufactureDate": "datetime"}
