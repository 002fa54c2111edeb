#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out, from a machine file, the result document that `velhost query --machine FILE --format
trace` has to print. It is a second witness: it shares no code with the plug-in or its platform, and
nothing in it was printed by them. Python 3.11, standard library only.

How the documents beside the machine files come about
  machines/NAME.json                    a machine
  machines/expected/NAME.json           its result document
  machines/expected/NAME.reinit.json    the one of `--repeat 2 --reinit`, for some machines
Written by hand, line by line, before this script was: those listed in HAND_WRITTEN below. They
check it (derive_expected_test.py). All others come from it:

  derive_expected.py machines/NAME.json                     prints the document
  derive_expected.py --repeat 2 --reinit machines/NAME.json the same for two requests
  derive_expected.py --write machines/*.json                writes every derived document anew

Whoever changes behaviour on purpose changes the hand-written documents first, then this script
until it agrees with them, then runs it with --write and reads the difference.

Two things a comparison has to know: the properties of an instance come in the order in which they
were first set, so their order counts; and the text of an exception is free, so "what" is null here
and stands for any text.

All texts are kept as str with one character a byte (Latin-1), as the firmware gives bytes and the
logs and properties take them as they are.
"""

import argparse
import codecs
import csv
import datetime
import json
import pathlib
import re
import struct
import sys

import ipmi_inventory
import smbios_inventory

HAND_WRITTEN = {"no-sp-two-oem-structures", "uefi-two-node", "one-sp-everything", "qemu-q35",
                "memory-slots", "smbios-identity"}
REINIT = {"no-sp-two-oem-structures", "one-sp-everything", "both-sends-fail", "ckvm",
          "ckvm-blank-level", "diagnostics-empty-on-both-nodes", "first-send-fails",
          "faults-at-publication", "qla-class-missing", "runtime-error", "tamber"}

# ---------------------------------------------------------------------------------------------
# The machine file


def without_comments(text):
    token = re.compile(r'"(?:\\.|[^"\\])*"|//[^\n]*|/\*.*?\*/', re.S)
    return token.sub(lambda m: m[0] if m[0][0] == '"' else " ", text)


def load_machine(path):
    machine = json.loads(without_comments(path.read_text(encoding="utf-8")))
    machine["folder"] = path.parent
    return machine


def to_bytes(pieces):
    """Bytes as a hex string or a list of pieces."""
    if isinstance(pieces, str):
        return bytes.fromhex(pieces)
    if isinstance(pieces, list):
        return b"".join(to_bytes(piece) for piece in pieces)
    if "zeros" in pieces:
        return bytes(pieces["zeros"])
    text = pieces["text"].encode("utf-8")
    return text.ljust(pieces.get("size", len(text)), b"\0")


def latin(text):
    return text.encode("utf-8").decode("latin-1")


def text_of(data):
    """A text ends at its first zero byte."""
    return bytes(data).split(b"\0")[0].decode("latin-1")


# ---------------------------------------------------------------------------------------------
# The framework: schema, faults, namespace, logs

CLASS_NAMES = [  # the plug-in's table; index 7 is the last that the SP firmware collector walks
    "KRXSG_DiagnosticVPD", "KRXSG_PostBIOSVPD", "KRXSG_SystemBIOSElement",
    "KRXSG_HardwareRevisionLevel", "KRXSG_Vpd", "KRXSG_SPROMFirmwareVPDMain",
    "KRXSG_SPROMFirmwareVPDBootROM", "KRXSG_DeviceDriver", "KRXSG_SystemBIOS", "KRXSG_cKVM"]
TAPE_CLASS = "KRXSG_USBTapeFirmwareElement"
(DIAGNOSTIC, _, SYSTEM_BIOS_ELEMENT, _, VPD, MAIN, BOOT_ROM, _, _, CKVM) = CLASS_NAMES

TYPES = {  # every other property is a string
    "SourceNode": "uint8", "SoftwareElementState": "uint16", "TargetOperatingSystem": "uint16",
    "PrimaryBIOS": "boolean", "LoadedStartingAddress": "uint64", "LoadedEndingAddress": "uint64",
    "ReleaseDate": "datetime", "BuildDate": "datetime", "ROMSize": "uint64", "UEFI": "boolean",
    "Populated": "boolean", "Capacity": "uint64", "Speed": "uint64", **ipmi_inventory.TYPES}

FIRMWARE = ("Name SourceNode SoftwareElementID SoftwareElementState TargetOperatingSystem Version "
            "BuildNumber BuildDate Checksum FileName PartNumber")
SCHEMA = {name: frozenset(properties.split()) for name, properties in {
    DIAGNOSTIC: "Name SourceNode SoftwareElementID SoftwareElementState TargetOperatingSystem "
                "Version BuildNumber BuildDate Checksum FileName Header Signature Length "
                "SerialNumber UniqueID MachineTypeModel",
    SYSTEM_BIOS_ELEMENT: "SourceNode Name SoftwareElementState SoftwareElementID "
                         "TargetOperatingSystem PrimaryBIOS LoadedStartingAddress "
                         "LoadedEndingAddress ReleaseDate Manufacturer Version BuildNumber "
                         "FileName UniqueID MachineTypeModel SerialNumber",
    "KRXSG_HardwareRevisionLevel": "Name SourceNode SoftwareElementID SoftwareElementState "
                                   "TargetOperatingSystem Hardwarelevel Version",
    VPD: "Name IdentifyingNumber Location PartNumber SerialNumber FRUNumber DevicePrefix Vendor "
         "SlotNumber RevisionLevel",
    MAIN: FIRMWARE,
    BOOT_ROM: FIRMWARE,
    CKVM: "SoftwareElementID SoftwareElementState TargetOperatingSystem Version FirmwareVersion",
    "KRXSG_USBDevice": "DeviceID Description",
    "KRXSG_TapeDrive": "DeviceID Description",
    "KRXSG_QLA_ComputerSystem": "SourceNode Description",
    "KRXSG_IPMIFRU": "Name Description",
}.items()}


class VelException(Exception):
    def __init__(self, code):
        super().__init__(code)
        self.code = code


class StdRuntimeError(Exception):
    pass


class Instance:
    def __init__(self, namespace, class_name):
        self.namespace, self.class_name, self.values = namespace, class_name, {}

    def check(self, operation, name):
        self.namespace.meet_faults(operation, self.class_name, name)
        if name not in SCHEMA[self.class_name]:
            raise VelException(12)

    def get(self, name):
        self.check("get_property", name)
        return self.values.get(name)

    def set(self, name, value_type, value):
        self.check("set_property", name)
        if TYPES.get(name, "string") != value_type:
            raise VelException(13)
        self.values[name] = value

    def add_to_class(self):
        self.namespace.meet_faults("add_to_class", self.class_name)
        self.namespace.published.append(self)


class Namespace:
    def __init__(self, machine):
        self.missing = set(machine.get("missing_classes", []))
        self.faults = [dict(fault, calls=0) for fault in machine.get("faults", [])]
        self.published = []
        self.collect = {}  # what enumerating a class first has its collector publish
        self.companions = {}
        for class_name, rows in machine.get("instances", {}).items():
            self.companions[class_name] = [self.companion(class_name, row) for row in rows]

    def companion(self, class_name, row):
        instance = Instance(self, class_name)
        for name, value in row.items():
            instance.values[name] = latin(value) if isinstance(value, str) else value
        return instance

    def meet_faults(self, operation, class_name, property_name=None):
        due = []
        for fault in self.faults:
            if (fault["operation"] != operation or fault.get("class", class_name) != class_name
                    or fault.get("property", property_name) != property_name):
                continue
            fault["calls"] += 1
            if fault.get("nth", fault["calls"]) == fault["calls"]:
                due.append(fault)
        if due:  # the first of the list throws
            runtime = due[0].get("throw") == "runtime_error"
            raise StdRuntimeError() if runtime else VelException(1)

    def get_class(self, class_name):
        self.meet_faults("get_class", class_name)
        if class_name in self.missing:
            raise VelException(5)

    def create(self, class_name):
        """Class lookup and instance creation."""
        self.get_class(class_name)
        self.meet_faults("create_instance", class_name)
        return Instance(self, class_name)

    def instances_of(self, class_name):
        """Class lookup and enumeration."""
        self.get_class(class_name)
        self.meet_faults("enumerate_instances", class_name)
        if class_name in self.collect and class_name not in self.companions:
            return self.collect[class_name]()
        return self.companions.get(class_name, [])


class Logs:
    def __init__(self):
        self.core, self.failure = [], []

    def log(self, severity, *texts):
        """Each text is an entry of its own."""
        self.core += [{"severity": severity, "text": text} for text in texts]

    def note(self, severity, text):
        self.failure.append({"severity": severity, "text": text})


# ---------------------------------------------------------------------------------------------
# Texts, versions, dates

NO_DATE = "00000000000000.000000+000"  # a date-time as constructed


def strtol(text):
    match = re.match(r"[ \t-\r]*([+-]?[0-9]+)", text)
    return int(match[1]) if match else 0


def alphanumeric(text):
    return re.sub(r"[^A-Za-z0-9]", "", text)


def break_apart_version(text):
    """(version part, build part)"""
    at_start = re.match(r"[0-9]+(?:[a-z](?![a-z]))?", text)
    if at_start:
        return at_start[0], text[at_start.end():]
    at_end = re.search(r"[0-9]+[a-z]?\Z", text)
    return (at_end[0], text[:at_end.start()]) if at_end else ("", text)


def is_all_numeric(text):
    return all(c in "0123456789." for c in text)  # an empty text is


def set_date_time(year, month, day):
    """fdrSetDateTime: the timestamp, None for status 3."""
    try:
        date = datetime.date(year, month, day)
    except (ValueError, OverflowError):
        return None
    return f"{date.year:04}{date.month:02}{date.day:02}000000.000000+000"


def date_fields(text):
    """(year, month, day); None when the text's form gives none."""
    if len(text) == 8:
        yy = strtol(text[6:8])
        return (1900 if yy > 50 else 2000) + yy, strtol(text[0:2]), strtol(text[3:5])
    if text.find("-") in (-1, 2):
        return strtol(text[6:10]), strtol(text[0:2]), strtol(text[3:5])
    if text.find("-") == 4:
        return strtol(text[0:4]), strtol(text[5:7]), strtol(text[8:10])
    return None


# ---------------------------------------------------------------------------------------------
# The SMBIOS library


def structure_bytes(entry, position):
    if "raw" in entry:
        return to_bytes(entry["raw"])
    data = to_bytes(entry.get("data", ""))
    header = struct.pack("<BBH", entry["type"], 4 + len(data), entry.get("handle", position))
    strings = [text.encode("utf-8") + b"\0" for text in entry.get("strings", [])]
    return header + data + (b"".join(strings) or b"\0") + b"\0"


def structures_of_dump(dump):
    """A dump as `dmidecode --dump-bin` writes it."""
    if dump.startswith(b"_SM3_"):
        size, start = struct.unpack_from("<IQ", dump, 0x0C)
        count = None
    else:
        size, start, count = struct.unpack_from("<HIH", dump, 0x16)
    table, structures, at = dump[start:start + size], [], 0
    while at + 4 <= len(table) and (count is None or len(structures) < count):
        length = table[at + 1]
        if length < 4 or at + length > len(table):
            break
        end = table.find(b"\0\0", at + length)
        end = len(table) if end < 0 else end + 2
        structures.append((table[at:end], 0))
        if count is None and table[at] == 127:
            break
        at = end
    return structures


class Smbios:
    def __init__(self, machine):
        table = machine.get("smbios")
        self.load_status = 1 if table is None else table.get("load_status", 0)
        self.end_status = (table or {}).get("end_status", 5)
        if table and "dump" in table:
            self.structures = structures_of_dump((machine["folder"] / table["dump"]).read_bytes())
        else:
            entries = (table or {}).get("structures", [])
            self.structures = [(structure_bytes(entry, i), entry.get("status", 0))
                               for i, entry in enumerate(entries)]
        self.machine_type_given = machine.get("machine_type")

    def of_type(self, structure_type):
        return [s for s in self.structures if s[0] and s[0][0] == structure_type]

    def machine_type(self):
        if self.machine_type_given is not None:
            return latin(self.machine_type_given)
        systems = [] if self.load_status else self.of_type(1)
        if not systems:
            return ""
        data = systems[0][0].ljust(4096, b"\0")
        number = data[5] if data[1] > 5 else 0  # Product Name
        product = string_number(data[data[1]:], number)
        for pattern in (r"[0-9]{4}[A-Za-z0-9]{3}", r"[0-9]{4}"):
            match = re.search(rf"(?<![A-Za-z0-9]){pattern}(?![A-Za-z0-9])", product)
            if match:
                return match[0][:4]
        return ""


def string_number(string_set, number):
    """getBIDString on a window of the string set."""
    for position, text in enumerate(string_set.split(b"\0"), 1):
        if not text:  # an empty string ends the set
            return ""
        if position == number:
            return text[:99].decode("latin-1")
    return ""


# ---------------------------------------------------------------------------------------------
# The SP driver


class Answers:
    """One entry of a command list."""

    def __init__(self, entry):
        self.entry, self.sent = entry, 0

    def next(self):
        """Bytes; None for a send that fails."""
        if self.entry.get("fail"):
            return None
        replies = self.entry.get("replies", [self.entry.get("reply")])
        reply = replies[min(self.sent, len(replies) - 1)]
        self.sent += 1
        return None if reply == "fail" else to_bytes(reply)


class SpLibrary:
    def __init__(self, machine):
        sp = machine.get("sp", {})
        self.sp = sp
        self.kind = sp.get("kind", "none")
        self.answers = sp.get("answers", True)
        self.count = sp.get("count", 0 if self.kind == "none" else 1)
        self.components = {bytes.fromhex(k): n for k, n in sp.get("components", {}).items()}
        self.dot_commands = [Answers(e) for e in sp.get("dot_commands", [])]
        self.tamber_commands = [Answers(e) for e in sp.get("tamber_commands", [])]
        self.ipmi_commands = [Answers(e) for e in sp.get("ipmi_commands", [])]
        self.traffic = []

    def flag(self, name, default=False):
        return self.sp.get(name, default)

    def is_dot_command(self):
        return self.kind == "dot-command"

    def dot_command_answers(self):
        """isDotcommand() and checkSPComm()"""
        return self.is_dot_command() and self.answers

    def bmc_with_ipmi_drivers(self):
        return self.flag("bmc") and self.flag("ipmi_drivers")

    def exchange(self, candidates, description, header, capacity):
        """(reply or None, reported length)"""
        reply, length = None, 0
        if candidates:
            reply = candidates[0].next()
        if reply is not None:
            reply = reply[:capacity]
            length = candidates[0].entry.get("length", max(len(reply) - header, 0))
        self.traffic.append(dict(description, answered=reply is not None, length=length))
        return reply, length

    def send_dot(self, sp, command, data=b"", capacity=2048):
        """(zero-filled reply buffer or None, reported length)"""
        fits = [a for a in self.dot_commands if self.answers and a.entry.get("sp", 0) == sp
                and to_bytes(a.entry["command"]) == command
                and ("data" not in a.entry or to_bytes(a.entry["data"]) == data)]
        reply, length = self.exchange(
            fits, {"operation": "dot_command", "sp": sp, "type": 2, "command": hex_of(command),
                   "data": hex_of(data)}, 0, capacity)
        return (None if reply is None else reply.ljust(capacity, b"\0")), length

    def send_tamber(self, command, flags, capacity=255):
        fits = [a for a in self.tamber_commands if self.answers
                and to_bytes(a.entry["command"]) == command
                and ("data" not in a.entry or to_bytes(a.entry["data"]) == b"")]
        reply, length = self.exchange(
            fits, {"operation": "tamber_command", "command": hex_of(command), "data": "",
                   "flags": flags}, 3, capacity)
        return (None if reply is None else reply.ljust(capacity, b"\0")), length

    def send_ipmi(self, request, capacity=256):
        fits = [a for a in self.ipmi_commands if request.startswith(to_bytes(a.entry["request"]))]
        reply, length = self.exchange(
            fits, {"operation": "ipmi_command", "request": hex_of(request)}, 0, capacity)
        return (None if reply is None else reply.ljust(capacity, b"\0")), length


def hex_of(data):
    return data.hex().upper()


# ---------------------------------------------------------------------------------------------
# The plug-in: state and helpers that all collectors share

FAILED = 3
STATE_AND_OS = [("SoftwareElementState", "uint16", 3), ("TargetOperatingSystem", "uint16", 66)]


class Collector:
    """The plug-in object; the collectors below are its mix-ins, one a subject."""

    def __init__(self, machine):
        self.smbios, self.sp = Smbios(machine), SpLibrary(machine)
        self.namespace, self.logs = Namespace(machine), Logs()
        self.log = self.logs.log
        self.instances = {name: [] for name in CLASS_NAMES}
        self.oem = {}           # normalised OEM string to its letters and digits
        self.records = []       # (class name, properties) that the SPs gave
        self.command_table = []
        self.init()

    def init(self):
        self.data_gathered = self.fru_exists = self.fru_probed = self.ckvm_exists = False
        self.machine_type = self.ckvm_version = ""
        self.command_table += SP_COMMANDS  # a second Init doubles it

    def create(self, class_name, message):
        try:
            return self.namespace.create(class_name)
        except VelException:
            self.log(0, message)
            return None

    def set_rows(self, instance, rows):
        """Rows are (property, type, value, message); False after the first failure."""
        for name, value_type, value, message in rows:
            try:
                instance.set(name, value_type, value)
            except VelException:
                self.log(0, message)
                return False
        return True

    def keep(self, instance):
        self.instances[instance.class_name].append(instance)


# ---------------------------------------------------------------------------------------------
# SMBIOS: the structure walk, the OEM strings, names

WALK = "SMBIOSInfo::getSMBIOSInfo - "
NORMALISED = [  # (what the OEM string contains, what it becomes)
    ("KRX Diagnostics", "KRX Diagnostics"),
    ("KRX Ambrel Management Processor", "KRX Ambrel Management Processor"),
    ("KRX Ambrels Management Processor", "KRX Ambrel Management Processor"),
    ("KRX Quellon Link Adapter", "KRX Quellon Link Adapter"),
    ("KRX Torvik Management Processor", "KRX Torvik Management Processor"),
    ("KRX Torviks Management Processor", "KRX Torvik Management Processor")]
CKVM_MODELS = "3105 3110 3220 3225 3340 3345 3450 3455 3560 3565 3670 3675".split()
BRENNA = ("4210", "4215")
CALLOWAY = ("4320", "4325")
DURNIK = ("4430",)
PER_NODE_DIAGNOSTICS = ("5010", "5020", "5030", "5040", "5050")


def normalise(name):
    for part, becomes in NORMALISED:
        if part in name:
            if part == "KRX Quellon Link Adapter" and "-" in name:
                return name[:name.index("-")]
            return becomes
    return name


class SmbiosWalk:
    def walk(self, structure_type):
        """Yields each structure that is to be processed, as a 4096-byte buffer."""
        deliveries = self.smbios.of_type(structure_type) + [(b"", self.smbios.end_status)]
        for position, (data, status) in enumerate(deliveries):
            self.log(3, WALK + ("Retrieving the next SMBIOS structure." if position else
                                "Retrieving first SMBIOS structure"))
            if status == 5:
                self.log(3, WALK + "read all smbios structures available for type 0")
                return
            if status == 3:
                self.log(3, WALK + "smbios read operation failed! ")
            yield data[:4096].ljust(4096 + 1280, b"\0")
            if status != 0:
                return

    def get_machine_type(self):
        self.log(3, "getMachineType() entered.", "getMachineType() completed.")
        return self.smbios.machine_type()

    def get_type11(self):
        self.log(3, "Entering SPFirmwareVpd::getType11()")
        if self.smbios.load_status:
            self.log(0, "getDiagsFirmware: Unable to open SMBIOS lib error = "
                        f"{self.smbios.load_status}")
            return
        for structure in self.walk(11):
            string_set = structure[structure[1]:][:1024]
            for number in range(1, structure[4] + 1):
                name = string_number(string_set, number)
                if name.strip(" \t\n\v\f\r"):
                    self.oem.setdefault(normalise(name), alphanumeric(name))
        self.log(3, "Exiting SPFirmwareVpd::getType11()")

    def first_adapter_key(self):
        return next((key for key in sorted(self.oem) if "KRX Quellon Link Adapter" in key), None)

    def sp_name_from_smbios(self):
        if "KRX Torvik Management Processor" in self.oem:
            return "KRX Torvik Management Processor"
        return self.first_adapter_key() or "KRX Quellon Link Adapter"


# ---------------------------------------------------------------------------------------------
# System BIOS


class SystemBios:
    def do_time(self, text):
        """(status, timestamp or None when nothing is to be set)"""
        if len(text) not in (8, 10):
            return 0, None
        fields = date_fields(text)
        if fields is None:
            return 0, NO_DATE
        value = set_date_time(*fields)
        if value is None:
            self.log(0, "Error Setting DateTime..")
            return FAILED, None
        return 0, value

    def get_bios_structure(self):
        self.log(3, "Entering SPFirmwareVpd::getBIOSstructure()")
        machine_type = self.get_machine_type()
        if self.smbios.load_status:
            self.log(0, "getBIOSstructure: Unable to open SMBIOS lib error = "
                        f"{self.smbios.load_status}")
            return FAILED
        for structure in self.walk(0):
            nodes = self.sp.flag("bmc_nodes", 0) or 1
            for node in range(1, nodes + 1):
                if not self.bios_element(structure, node, nodes):
                    return FAILED
            for family, models in (("Calloway", CALLOWAY), ("Durnik", DURNIK)):
                if machine_type in models:
                    self.log(3, f"This machine is a {family}. Finished collecting first SMBIOS "
                                "record for 'System BIOS'.")
                    break
            else:
                continue
            break
        self.log(3, "Exiting SPFirmwareVpd::getBIOSstructure()")
        return 0

    def bios_element(self, structure, node, nodes):
        instance = self.create(SYSTEM_BIOS_ELEMENT,
                               "Error adding KRXSG_SystemBIOSElement class")
        if not instance:
            return False
        string_set = structure[structure[1]:][:100]
        kind = "UEFI" if self.sp.flag("integrated_bmc") else "System BIOS"
        segment = structure[6] | structure[7] << 8

        def adding(rows):
            return [row if len(row) == 4 else row + (f"Error adding {row[0]}",) for row in rows]

        if not self.set_rows(instance, adding([
                ("SourceNode", "uint8", node, "Error adding Name"),
                ("Name", "string", f"Node {node} : {kind}" if nodes > 1 else kind),
                ("SoftwareElementState", "uint16", 3),
                ("SoftwareElementID", "string", "SP Firmware VPD Collector"),
                ("TargetOperatingSystem", "uint16", 66),
                ("PrimaryBIOS", "boolean", True),
                ("LoadedStartingAddress", "uint64", segment << 16 & 0xFFFFFFFF),
                ("LoadedEndingAddress", "uint64", structure[9] << 16)])):
            return False
        self.set_release_date(instance, string_number(string_set, structure[8]))
        version, build = break_apart_version(alphanumeric(string_number(string_set, structure[5])))
        if not self.set_rows(instance, adding([
                ("Manufacturer", "string", string_number(string_set, structure[4])),
                ("Version", "string", version),
                ("BuildNumber", "string", build, "Error adding Build Number")])):
            return False
        if self.sp.dot_command_answers():
            reply, _ = self.sp.send_dot(node - 1, bytes.fromhex("04030501"))
            if reply is not None and not self.set_rows(instance, adding([
                    ("FileName", "string", text_of(reply[56:68])),
                    ("UniqueID", "string", text_of(reply[29:40])),
                    ("MachineTypeModel", "string", text_of(reply[40:47])),
                    ("SerialNumber", "string", text_of(reply[22:29]))])):
                return False
        self.keep(instance)
        return True

    def set_release_date(self, instance, text):
        status, value = self.do_time(text)
        if value is not None and not self.set_rows(
                instance, [("ReleaseDate", "datetime", value, "Error adding BuildDate property")]):
            status = FAILED
        if status == FAILED:
            self.log(0, "failed to create CIMDateTime")


# ---------------------------------------------------------------------------------------------
# Diagnostics

DIAGNOSTIC_FIELDS = [  # property, first and last byte of the reply, message
    ("Header", 0, 1, "KRXSG_DiagnosticVPD: Error adding Build Number"),
    ("Signature", 2, 4, "KRXSG_DiagnosticVPD: Error adding Build Number"),
    ("Length", 5, 5, "KRXSG_DiagnosticVPD: Error adding Build Number"),
    ("BuildNumber", 13, 21, "KRXSG_DiagnosticVPD: Error adding Build Number"),
    ("SerialNumber", 22, 28, "Error adding SerialNumber"),
    ("UniqueID", 29, 39, "Error adding UniqueID"),
    ("MachineTypeModel", 40, 46, "Error adding MachineTypeModel"),
    ("FileName", 56, 67, "Error adding FileName"),
    ("Version", 68, 68, "KRXSG_DiagnosticVPD: Error adding Version")]


def with_digit_run(key, value):
    position = key.find(value)
    if position >= 0:
        run = re.search(r"[0-9](?:.*[0-9])?", key[:position], re.S)
        if run and run[0] not in value:
            return value + "-" + run[0]
    return value


class Diagnostics:
    def get_diags_firmware(self):
        for key, value in sorted(self.oem.items()):
            if any(part in key for part in ("KRX Diagnostics", "KRX Preboot Diagnostics", "$DS ")):
                self.create_diag_instance(with_digit_run(key, value))
        if self.machine_type in PER_NODE_DIAGNOSTICS:
            self.create_diag_instances_of_nodes()
        return 0

    def create_diag_instance(self, text):
        self.log(3, "Entering  SPFirmwareVpd::createDiagInstance")
        instance = self.create(DIAGNOSTIC, "Error allocating instance KRXSG_DiagnosticVPD")
        if not instance:
            return
        version, build = break_apart_version(alphanumeric(text))
        prefix = "KRXSG_DiagnosticVPD: Error adding "
        rows = [("BuildNumber", "string", build, prefix + "Build Number"),
                ("Version", "string", version if is_all_numeric(version) else " ",
                 prefix + "Version"),
                ("SoftwareElementID", "string", " ", prefix + "SoftwareElementID")]
        rows += [row + (prefix + row[0],) for row in STATE_AND_OS]
        if self.set_rows(instance, rows):
            self.keep(instance)
            self.log(3, "Leaving  SPFirmwareVpd::createDiagInstance")

    def create_diag_instances_of_nodes(self):
        if not self.sp.dot_command_answers() or self.sp.count <= 1:
            return
        prefix = "KRXSG_DiagnosticVPD: Error adding "
        for node in range(1, self.sp.count + 1):
            reply, _ = self.sp.send_dot(node - 1, bytes.fromhex("0403050101"))
            if reply is None or not any(reply[0:69]):
                continue
            instance = self.create(DIAGNOSTIC, "Error adding KRXSG_SystemBIOSElement class")
            if not instance:
                return
            rows = [(name, "string", text_of(reply[first:last + 1]), message)
                    for name, first, last, message in DIAGNOSTIC_FIELDS]
            rows += [("SoftwareElementID", "string", str(node), prefix + "SoftwareElementID")]
            rows += [row + (prefix + row[0],) for row in STATE_AND_OS]
            rows += [("SourceNode", "uint8", node, "Error adding Name"),
                     ("Name", "string", f"Node {node} : Diagnostics", "Error adding Name")]
            if not self.set_rows(instance, rows):
                return
            self.keep(instance)


# ---------------------------------------------------------------------------------------------
# SP main firmware that SMBIOS names


class SpFirmwareOfSmbios:
    def get_sp_firmware(self):
        found = [("KRX Ambrel Management Processor", "1"), (self.first_adapter_key(), "2"),
                 ("KRX Torvik Management Processor", "3")]
        statuses = [self.create_sp_firmware_instance(key, self.oem[key], identifier)
                    for key, identifier in found if key in self.oem]
        return FAILED if any(statuses) else 0

    def create_sp_firmware_instance(self, name, version_text, identifier):
        if self.machine_type in BRENNA:
            # letters and digits only, so there is never a "-" and the second text stays empty
            self.log(3, "This machine is a Brenna.",
                     f"The version string is:{version_text}.\nThe TempVersion is: .\n")
            if "ZPXN42BQD" in version_text:
                self.log(3, "The KRXSG_SPROMFirmwareVPDMain value is 'ZPXN42BQD'.")
                return 0
            self.log(100, "QLA will be shows in the logs, even if no QLA present in the system.")
        instance = self.create(MAIN, "KRXSG_SPROMFirmwareVPDMain: Error allocating instance "
                                     "KRXSG_SPROMFirmwareVPDMain")
        rows = [("Version", "string", " "), ("BuildNumber", "string", version_text),
                ("SoftwareElementID", "string", identifier), ("Name", "string", name)]
        rows = [row + (f"KRXSG_SPROMFirmwareVPDMain: Error adding {row[0]}",)
                for row in rows + STATE_AND_OS]
        if not instance or not self.set_rows(instance, rows):
            return FAILED
        self.keep(instance)
        return 0


# ---------------------------------------------------------------------------------------------
# The dot-command walk

SP_COMMANDS = """\
d|5|4|3|5|6|1|KRXSG_SPROMFirmwareVPDMain|
a|7|BuildNumber|
r|3|Reserved|
a|12|FileName|
b|1|Checksum|
a|8|BuildDate|
b|1|Version|
a|8|PartNumber|
d|5|4|3|5|6|2|KRXSG_SPROMFirmwareVPDBootROM|
a|7|BuildNumber|
r|3|Reserved|
a|12|FileName|
b|1|Checksum|
a|8|BuildDate|
b|1|Version|
a|8|PartNumber|
d|4|4|3|5|7|KRXSG_HardwareRevisionLevel|
b|1|Hardwarelevel|
d|5|4|3|5|1|1|KRXSG_DiagnosticVPD|
a|2|Header|
a|3|Signature
b|1|Length|
r|7|Reserved|
a|9|BuildNumber|
a|7|SerialNumber|
a|11|UniqueID|
a|7|MachineTypeModel|
b|1|Checksum|
a|8|BuildDate|
a|12|FileName|
b|1|Version|""".split("\n")


class LineReader:
    """Takes a line's tokens from its front; a token needs a bar behind it."""

    def __init__(self, line):
        self.rest = line

    def take(self):
        token, bar, rest = self.rest.partition("|")
        if not bar:
            return None
        self.rest = rest
        return token


class DotCommandWalk:
    def get_parse_vpd(self):
        records = []
        self.trace = ""  # never emptied within a call
        for sp in range(self.sp.count):
            self.walk_sp(sp, records)
        return records

    def walk_sp(self, sp, records):
        table, index = self.command_table, 0
        line = LineReader(table[0])
        self.log(3, " starting to read data types of dotcommand ", table[0])
        while True:
            command, class_name = self.command_step(line)
            reply, _ = self.sp.send_dot(sp, command)
            if reply is None:
                reply, _ = self.sp.send_dot(sp, command)
            if reply is None:
                self.log(1, " cmd failed..trying again.. ")
                index += 1
                if index < len(table):
                    continue  # on the consumed line: no reload
                return
            self.log(3, " memset data ", "sent dotcommand to sp driver")
            index = index or 1
            if index >= len(table):
                return
            properties, index = self.field_loop(sp, class_name, reply, index)
            records.append((class_name, properties))
            line = LineReader(table[index] if index < len(table) else "")
            index += 1
            if index >= len(table):
                return

    def command_step(self, line):
        line.take()
        command = bytearray(strtol(line.take() or ""))
        for i in range(len(command)):
            token = line.take()
            if token is None:
                continue
            self.log(3, " reading dotcommand ", token)
            self.trace += token
            command[i] = strtol(token) & 0xFF
        class_name = line.take() or ""
        self.log(3, "dotcommand ", self.trace)
        return bytes(command), class_name

    def field_loop(self, sp, class_name, reply, index):
        """The group's properties and the index of the line that ends it."""
        properties = {"Version": ""} if DIAGNOSTIC in class_name else {}
        properties |= {"TargetOperatingSystem": "", "SoftwareElementState": "",
                       "SourceNode": str(sp + 1), "SoftwareElementID": str(sp + 1)}
        kind, length, offset = "x", 0, 0
        while index < len(self.command_table):
            self.log(3, "spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , "
                        "description")
            line = LineReader(self.command_table[index])
            token = line.take()
            kind = kind if token is None else token
            token = line.take()
            length = length if token is None else strtol(token)
            name = line.take() or ""
            field = reply[offset:offset + length]
            if kind == "b":
                properties.setdefault(name, str(field[0]))
                if "KRXSG_HardwareRevisionLevel" in class_name and "Hardwarelevel" in name:
                    properties.setdefault("Version", str(field[0]))
            elif kind == "a":
                text = text_of(field)
                properties.setdefault(name, self.build_date(text) if "BuildDate" in name else text)
            elif kind == "v":
                properties.setdefault("Version", "")
            elif kind != "r":
                break
            offset += length
            index += 1
        return properties, index

    def build_date(self, text):
        if not text:
            return ""
        status, value = self.do_time(text)
        if status == FAILED:
            self.log(0, "failed to create CIMDateTime")
        return value or NO_DATE


# ---------------------------------------------------------------------------------------------
# SP firmware instances from the records


class SpFirmware:
    def get_sp_firmware_vpd(self):
        if not self.records:
            self.records = self.get_parse_vpd()
        names = {}
        for system in self.namespace.instances_of("KRXSG_QLA_ComputerSystem"):  # nothing caught
            node, description = system.get("SourceNode") or 0, system.get("Description") or ""
            names.setdefault(node, description)
        diagnostics_filled = False
        for class_name, properties in self.records:
            if DIAGNOSTIC in class_name:
                diagnostics_filled |= any("BuildNumber" in k and v for k, v in properties.items())
                if not diagnostics_filled:
                    self.get_diags_firmware()
                    continue
            for known in CLASS_NAMES[:8]:
                self.log(3, f"IN getSPFirmwareVpd:: Current Class = {known}. "
                            f"Current Iter = {class_name}")
                if known in class_name:
                    self.record_instance(known, class_name, properties, names)
        return 0 if self.records else FAILED

    def record_instance(self, known, class_name, properties, names):
        instance = self.create(class_name, f"Error adding Class {class_name}")
        if not instance:
            return
        if MAIN in class_name or BOOT_ROM in class_name:
            name = names[min(names)] if names else self.sp_name_from_smbios()
            name += " Main VPD" if MAIN in class_name else " BootROM VPD"
            if not self.set_rows(instance, [("Name", "string", name,
                                             "Error adding SP Name property")]):
                return
        for name, text in sorted(properties.items()):
            try:
                if name:
                    self.set_record_property(instance, name, text)
            except VelException:
                self.log(0, f"Error adding Property {name}")
                return
        self.instances[known].append(instance)

    @staticmethod
    def set_record_property(instance, name, text):
        if "SourceNode" in name:
            instance.set("Name", "string", f"Node {text} : {instance.get('Name') or ''}")
            instance.set(name, "uint8", strtol(text) & 0xFF)
        elif "SoftwareElementState" in name:
            instance.set(name, "uint16", 3)
        elif "TargetOperatingSystem" in name:
            instance.set(name, "uint16", 66)
        elif "BuildDate" in name:
            instance.set(name, "datetime", text or NO_DATE)
        else:
            instance.set(name, "string", text)


# ---------------------------------------------------------------------------------------------
# Component VPD


def load_jedec():
    path = pathlib.Path(__file__).resolve().parent.parent / "data" / "jep106.tsv"
    with path.open(encoding="utf-8", newline="") as file:
        rows = list(csv.reader(file, delimiter="\t", quoting=csv.QUOTE_NONE))[1:]
    return {(int(bank) - 1, int(code, 16)): name for bank, code, name in rows}


JEDEC = load_jedec()


def memory_maker(identity):
    bank = 0
    while bank < 7 and identity[bank] == 0x7F:
        bank += 1
    return JEDEC.get((bank, identity[bank] & 0x7F), "")


def label_prefix(label):
    return f"{label}: " if label else ""


class ComponentVpd:
    def get_vpd_data(self):
        built = self.sp.flag("command_list", True)
        self.log(3, "1.1 command passed : got dotcommand list " if built else
                    "1.1 command failed: can not build dotcommand list ")
        self.numbers = {0x0B: 1, 0x0C: 1, 0x0E: 1}  # run on from SP to SP
        for sp in range(self.sp.count):
            self.components_of(sp, f"Node {sp + 1}" if self.sp.count > 1 else "")
        return 0

    def components_of(self, sp, label):
        from_qla = not self.sp.bmc_with_ipmi_drivers()
        if from_qla:
            self.log(3, "get DIMM info only from QLA")
            for number in self.passes(0x0B):
                self.dimm(sp, label, number)
        for number in self.passes(0x0C):
            self.component(sp, label, 0x0C, number, "00008000", f"Power Supply {number}",
                           f"Power Supply  {number} VPD not available ")
        if from_qla:
            self.log(3, "get power backplane info only from QLA")
            if not self.component(sp, label, 0x0D, 1, "00008100", "Power BackPlane",
                                  "power backplane VPD not available...trying alternate data set"):
                self.component(sp, label, 0x0D, 1, "00008000", "Power BackPlane",
                               "Power backplane VPD not available")
        self.component(sp, label, 0x03, 1, "0000A000", "Processor Card",
                       "Processor Card VPD not available")
        for number in self.passes(0x0E):
            self.component(sp, label, 0x0E, number, "00007000", "DASD BackPlane",
                           "DASD backplane VPD not available")
        self.component(sp, label, 0x02, 1, "10001000", "Planar", "planar VPD not available")

    def passes(self, code):
        """The instance number of each pass: one byte of the command, so 0 follows 255."""
        for _ in range(self.sp.components.get(bytes([4, 3, 5, code]), -1)):
            yield self.numbers[code]
            self.numbers[code] = self.numbers[code] + 1 & 0xFF

    def read(self, sp, code, number, data):
        return self.sp.send_dot(sp, bytes([4, 3, 5, code, number]), bytes.fromhex(data))

    def dimm(self, sp, label, number):
        reply, length = self.read(sp, 0x0B, number, "00007F00")
        if reply is None:
            self.log(0, f"DIMM  {number} VPD sendDotCommand failed ")
        elif length < 1:
            self.log(3, f"DIMM  {number} VPD not populated.")
        else:
            self.publish_vpd(self.dimm_rows(label, reply, number))

    def component(self, sp, label, code, number, data, name, note):
        reply, length = self.read(sp, code, number, data)
        if reply is None or length < 1:
            self.log(3, "getMachineType() completed.")  # this text, whatever it says
            self.logs.note(3, note)
            return False
        rows = self.planar_rows if name == "Planar" else self.common_rows
        self.publish_vpd(rows(label, reply, name))
        return True

    def publish_vpd(self, rows):
        if self.fru_exists:
            return
        instance = self.create(VPD, "Error adding KRXSG_VPD class")
        if instance and self.set_rows(instance, [(name, "string", value, message)
                                                 for name, value, message in rows]):
            self.keep(instance)

    @staticmethod
    def common_rows(label, record, name):
        serial = text_of(record[38:44])
        return [("Name", label_prefix(label) + name or " ", "Error adding VPD data"),
                ("IdentifyingNumber", " ", "Error adding IdentifyingNumber"),
                ("Location", label, "Error adding Location Data"),
                ("PartNumber", text_of(record[14:26]), "Error adding PartNumber"),
                ("SerialNumber", serial, "Error adding SerialNumber"),
                ("FRUNumber", text_of(record[26:38]) or " ", "Error adding FRUNumber"),
                ("DevicePrefix", serial, "Error adding DevicePrefix"),
                ("Vendor", text_of(record[50:54]) or " ", "Error adding Vendor Data"),
                ("SlotNumber", text_of(record[54:55]), "Error adding SlotNumber")]

    @staticmethod
    def dimm_rows(label, record, number):
        serial = record[95:99]
        return [("Name", f"{label_prefix(label)}DIMM {number}", "Error adding Name"),
                ("IdentifyingNumber", str(number), "Error adding IdentifyingNumber"),
                ("FRUNumber", " ", "Error adding FRUNumber"),
                ("Vendor", memory_maker(record[64:72]) or " ", "Error adding Vendor"),
                ("Location", label_prefix(label) + text_of(record[72:73]),
                 "Error adding Location"),
                ("PartNumber", text_of(record[73:91]), "Error adding PartNumber"),
                ("RevisionLevel", text_of(record[91:93]), "Error adding RevisionLevel"),
                ("SerialNumber", hex_of(serial) if any(serial) else "",
                 "Error adding SerialNumber")]

    @staticmethod
    def planar_rows(label, record, name):
        return [("IdentifyingNumber", " ", "Error adding IdentifyingNumber"),
                ("Name", label_prefix(label) + name or " ", "Error adding Name"),
                ("Vendor", " ", "Error adding Vendor"),
                ("FRUNumber", " ", "Error adding FRUNumber"),
                ("Location", label, "Error adding Location"),
                ("PartNumber", text_of(record[6:18]), "Error adding PartNumber"),
                ("SerialNumber", text_of(record[0:6]), "Error adding SerialNumber")]


# ---------------------------------------------------------------------------------------------
# Tamber SP


class Tamber:
    def get_tamber_firmware(self):
        reply, length = self.sp.send_tamber(bytes.fromhex("01F1F10F"), [False, True])
        if reply is None:
            self.log(0, "Command Failed..while getting SP Firmware data")
            return FAILED
        instance = self.create(MAIN, "Error adding SP Firmware VPD data")
        build = text_of(reply[3:3 + min(max(length, 0), 252)])
        ambrel = "KRX Ambrel Management Processor"
        rows = [("Name", "string", ambrel), ("SoftwareElementID", "string", ambrel),
                *STATE_AND_OS, ("BuildNumber", "string", build), ("Version", "string", build)]
        if not instance or not self.set_rows(
                instance, [row + (f"Error adding {row[0]}",) for row in rows]):
            return FAILED
        self.keep(instance)
        return 0


# ---------------------------------------------------------------------------------------------
# cKVM and IPMI FRU

CKVM_REQUEST = bytes.fromhex("012006005206000000F568101D0100")


class Peripherals:
    def determine_ipmi_fru(self):
        self.fru_probed = True
        if self.sp.bmc_with_ipmi_drivers():
            self.fru_exists = True
            return
        try:
            count = len(self.namespace.instances_of("KRXSG_IPMIFRU"))
        except VelException:
            self.log(3, "spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU")
            return
        self.fru_exists = count > 0
        self.log(3, "spfirmwarevpd: There " + (
            "is no KRXSG_IPMIFRU instance." if count == 0 else
            "is one KRXSG_IPMIFRU instance." if count == 1 else
            f"are {count} KRXSG_IPMIFRU instances."))

    def determine_ckvm(self):
        try:
            devices = self.namespace.instances_of("KRXSG_USBDevice")
        except VelException:
            self.log(3, "spfirmwarevpd: Can't get any instance of KRXSG_USBDevice")
            return
        if not devices:
            self.ckvm_exists = False
            self.log(3, "spfirmwarevpd: There is no cKVM.")
        for device in devices:
            try:
                description = device.get("Description") or ""
            except VelException:
                self.log(3, "spfirmwarevpd: No Description property in the current instance of "
                            "KRXSG_USBDevice")
                continue
            if "cKVM" in description:
                self.ckvm_exists = True
                self.log(3, "spfirmwarevpd: There is cKVM.")
                return

    def get_ckvm_firmware_version(self):
        self.ckvm_version = ""
        self.log(3, "cKVM - " + ", ".join(f"0x{byte:02X}" for byte in CKVM_REQUEST))
        reply, length = self.sp.send_ipmi(CKVM_REQUEST)
        if reply is None:
            self.log(3, "cKVM - IPMI command failed to send successfully.")
            return
        self.log(3, "cKVM - IPMI command was sent successfully.")
        for wrong, message in ((length == 0, "cKVM - Incorrect IPMI response length."),
                               (reply[8] != 0, "cKVM - Incorrect completion code."),
                               (reply[4] != 0, "cKVM - Bad IPMI completion code."),
                               (not 0x20 <= reply[9] <= 0x7E,
                                "cKVM - Ineffective response data.")):
            if wrong:
                self.log(0, message)
                return
        level = reply[9:9 + max(length, 0)].decode("latin-1")
        self.ckvm_version = re.sub(r"[^0-9A-Za-z.()\[\]]", "", level)
        self.create_ckvm_instance()

    def create_ckvm_instance(self):
        instance = self.create(CKVM, "cKVM - Cannot create KRXSG_cKVM instance.")
        rows = [("SoftwareElementID", "string", "cKVM"), *STATE_AND_OS,
                ("Version", "string", self.ckvm_version),
                ("FirmwareVersion", "string", self.ckvm_version)]
        message = "cKVM - Cannot set property value for KRXSG_cKVM instance."
        if instance and self.set_rows(instance, [row + (message,) for row in rows]):
            self.keep(instance)

    def probe_ckvm(self):
        self.determine_ckvm()
        if self.ckvm_exists:
            self.get_ckvm_firmware_version()
            if not self.ckvm_version:
                self.ckvm_version = "1.3.11.37"
                self.create_ckvm_instance()


# ---------------------------------------------------------------------------------------------
# The driver and the query entry


class PlugIn(SmbiosWalk, SystemBios, Diagnostics, SpFirmwareOfSmbios, DotCommandWalk, SpFirmware,
             ComponentVpd, Tamber, Peripherals, Collector):

    def run(self, collector, message):
        status = collector()
        if status:
            self.log(0, message)
        return status

    def diagnostics_step(self):
        self.run(self.get_diags_firmware, "Failed to collect diags information from smbios")

    def sp_firmware_step(self):
        self.run(self.get_sp_firmware, "Failed to collect SP firmware data from smbios")

    def bios_step(self):
        self.run(self.get_bios_structure, "Failed to collect BIOS data from smbios")

    def fall_back(self):
        self.diagnostics_step()
        self.sp_firmware_step()
        self.bios_step()

    def gather_sp_data(self):
        if self.sp.is_dot_command():
            self.gather_dot_command()
        elif self.sp.kind == "tamber":
            self.gather_tamber()
        else:
            self.fall_back()
            self.log(3, "No SP's installed on the system")

    def gather_dot_command(self):
        if not self.sp.dot_command_answers():
            self.log(0, "Unknown Error Code, Possible causes: Driver/SP failure!")
            self.fall_back()
            return
        self.log(3, "Getting firmware and vpd")
        firmware = self.get_sp_firmware_vpd()
        self.get_vpd_data()  # its status is always 0
        if firmware:
            self.fall_back()
        else:
            self.bios_step()

    def gather_tamber(self):
        self.log(3, "Getting AMP firmware and vpd")
        if not self.sp.flag("twg_stop") and self.sp.flag("tvm_library"):
            self.log(1, "Tvmlibrary present on the system..can not get AMP firmware")
            status = FAILED
        else:
            status = self.run(self.get_tamber_firmware,
                              "Failed to collect full set of AMP firmware data")
        if status:
            self.sp_firmware_step()
        self.diagnostics_step()
        self.bios_step()

    def get_data(self, requested):
        if not self.fru_probed:
            self.determine_ipmi_fru()
        if not self.data_gathered:
            self.get_type11()
            self.machine_type = self.get_machine_type()
            self.gather_sp_data()
            self.data_gathered = True
            if any(model in self.machine_type for model in CKVM_MODELS):
                self.probe_ckvm()
        for name in requested:
            self.publish(name)

    def publish(self, name):
        if name not in CLASS_NAMES and name != TAPE_CLASS:
            raise VelException(2)
        if name == VPD and self.fru_exists:
            return
        for instance in self.instances.get(name, []):
            instance.add_to_class()


# ---------------------------------------------------------------------------------------------
# The companions that a machine file lists


def smbios_instances(plug_in):
    inventory = smbios_inventory.Inventory(
        plug_in.smbios, memory_maker, set_date_time,
        lambda text: plug_in.logs.note(0, f"SMBIOSInventory: {text}"))
    for class_name, values in inventory.instances():
        instance = Instance(plug_in.namespace, class_name)
        instance.values = values
        yield instance


def smbios_inventory_of(plug_in):
    return lambda: list(smbios_instances(plug_in))


class IpmiInventory:
    """The IPMI collector's instances in one request. The FRU devices are asked for once, when the
    firmware collector looks for them or behind the controller."""

    def __init__(self, plug_in):
        self.plug_in, self.known = plug_in, None
        self.collector = ipmi_inventory.Collector(plug_in.sp.send_ipmi, plug_in.log)

    def frus(self):
        if self.known is None:
            self.known = self.instances(ipmi_inventory.CLASSES[1], self.collector.frus())
        return self.known

    def all(self):
        controllers = self.instances(ipmi_inventory.CLASSES[0], self.collector.controllers())
        return controllers + self.frus()

    def instances(self, class_name, found):
        made = [Instance(self.plug_in.namespace, class_name) for _ in found]
        for instance, values in zip(made, found):
            instance.values = {name: latin(value) if isinstance(value, str) else value
                               for name, value in values.items()}
        return made


def ipmi_inventory_of(plug_in):
    inventory = IpmiInventory(plug_in)
    plug_in.namespace.collect["KRXSG_IPMIFRU"] = inventory.frus
    return inventory.all


COMPANIONS = {  # its classes, and what begins a request of it and tells what it then publishes
    "IPMIInventory": (ipmi_inventory.CLASSES, ipmi_inventory_of),
    "SMBIOSInventory": (["KRXSG_SystemFirmware", "KRXSG_ComputerSystem", "KRXSG_PhysicalMemory"],
                        smbios_inventory_of)}


def companions_of(machine):
    return [COMPANIONS[name] for name in machine.get("collectors", []) if name in COMPANIONS]


# ---------------------------------------------------------------------------------------------
# The result document

codecs.register_error(  # one U+FFFD for each offending byte
    "each", lambda error: ("\uFFFD" * (error.end - error.start), error.end))


def value_entry(name, value):
    entry = {"type": TYPES.get(name, "string"), "value": value}
    if isinstance(value, str):
        data = value.encode("latin-1")
        entry["value"] = data.decode("utf-8", "each")
        if entry["value"].encode("utf-8") != data:
            entry["bytes"] = hex_of(data)
    return entry


def one_query(plug_in, requested, companions):
    plug_in.logs.core.clear()
    plug_in.logs.failure.clear()
    plug_in.sp.traffic.clear()
    plug_in.namespace.published.clear()
    error = None
    collected = [(names, begin(plug_in)) for names, begin in companions]
    try:
        plug_in.get_data(requested)
    except VelException as exception:
        error = {"exception": "TVELException", "code": exception.code, "what": None}
    except StdRuntimeError:
        error = {"exception": "std::runtime_error", "what": None}
    for names, publish in collected:  # of their classes those that have instances are told
        published = publish()
        filled = {instance.class_name for instance in published}
        requested = requested + [name for name in names if name in filled]
        plug_in.namespace.published += published
    instances = [{"class": instance.class_name,
                  "properties": {name: value_entry(name, value)
                                 for name, value in instance.values.items()}}
                 for instance in plug_in.namespace.published]
    return {"requested": requested, "instances": instances, "error": error,
            "core_log": plug_in.logs.core[:], "failure_log": plug_in.logs.failure[:],
            "traffic": plug_in.sp.traffic[:]}


def derive(path, repeat=1, reinit=False):
    machine = load_machine(pathlib.Path(path))
    plug_in, queries = PlugIn(machine), []
    for round_number in range(repeat):
        if reinit and round_number:
            plug_in.init()
        queries.append(one_query(plug_in, CLASS_NAMES + [TAPE_CLASS], companions_of(machine)))
    return {"format": "vel-result/1",
            "machine": {"source": "file", "name": machine["name"]},
            "plugin": {"name": "SPFirmwareVPD", "version": "1.0", "interface_version": "1.0",
                       "type": 0},
            "queries": queries}


def layout(document):
    """JSON with one instance, log entry or command a line."""
    def compact(value):
        return json.dumps(value, ensure_ascii=False)

    def entries(key, value):
        if not isinstance(value, list) or not value:
            return f'      "{key}": {compact(value)}'
        lines = ",\n".join("        " + compact(item) for item in value)
        return f'      "{key}": [\n{lines}\n      ]'

    head = [f'  "{key}": {compact(value)}' for key, value in document.items() if key != "queries"]
    queries = ["    {\n" + ",\n".join(entries(k, v) for k, v in query.items()) + "\n    }"
               for query in document["queries"]]
    return ("{\n" + ",\n".join(head) + ',\n  "queries": [\n' + ",\n".join(queries)
            + "\n  ]\n}\n")


def is_machine_file(path):
    return path.name != "machine.schema.json"


def expected_path(machine, reinit=False):
    return machine.parent / "expected" / f"{machine.stem}{'.reinit' if reinit else ''}.json"


def write_anew(path):
    """Writes the derived documents of a machine file; leaves hand-written ones alone."""
    if path.stem not in HAND_WRITTEN:
        expected_path(path).write_text(layout(derive(path)), encoding="utf-8")
    if path.stem in REINIT:
        expected_path(path, reinit=True).write_text(layout(derive(path, 2, True)),
                                                    encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description="Derives the result document of a machine file.")
    parser.add_argument("machine", nargs="+", type=pathlib.Path)
    parser.add_argument("--repeat", type=int, default=1)
    parser.add_argument("--reinit", action="store_true")
    parser.add_argument("--write", action="store_true", help="write the documents into the folder expected")
    arguments = parser.parse_args()
    for path in arguments.machine:
        if not arguments.write:
            sys.stdout.write(layout(derive(path, arguments.repeat, arguments.reinit)))
        elif is_machine_file(path):
            write_anew(path)


if __name__ == "__main__":
    main()
