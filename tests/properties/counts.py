# SPDX-License-Identifier: Apache-2.0
"""How many instances of each class a machine has to give, counted in its file. Where an SP or BMC answers
in turns or not at all, the number depends on what was asked before, and of that class nothing is said.
"""

import collections

COMPONENTS = [  # fourth byte of the command; data; whether it is asked for once, or by its count
    (0x0B, "00 00 7F 00", False), (0x0C, "00 00 80 00", False), (0x03, "00 00 A0 00", True),
    (0x0E, "00 00 70 00", False), (0x02, "10 00 10 00", True)]
FIRST_FIRMWARE_ONLY = ("4320", "4325", "4430")
OF_BMC_MACHINES = (0x0B, 0x0D)  # left to IPMI there
DONE = 5


def to_bytes(field):
    if isinstance(field, str):
        return bytes.fromhex(field)
    return b"".join(bytes.fromhex(piece) if isinstance(piece, str) else
                    bytes(piece["zeros"]) if "zeros" in piece else
                    piece["text"].encode().ljust(piece.get("size", 0), b"\0") for piece in field)


class Machine:
    def __init__(self, described):
        self.described, self.sp = described, described.get("sp", {})
        self.table = described.get("smbios", {"load_status": 1})
        self.collectors = described.get("collectors", [])
        kind = self.sp.get("kind", "none")
        self.is_dot_command = kind == "dot-command" and self.sp.get("answers", True)
        self.sps = range(max(self.sp.get("count", 0 if kind == "none" else 1), 0))

    # SMBIOS: (type, whether its status is one of success, length of the area)

    def structures(self):
        for entry in self.table.get("structures", []):
            if "raw" in entry:
                raw = to_bytes(entry["raw"])
                kind, length = (raw[0] if raw else None), (raw[1] if len(raw) > 3 else 0)
            else:
                kind, length = entry["type"], 4 + len(to_bytes(entry.get("data", "")))
            yield kind, entry.get("status", 0), length if length > 3 else 0

    def of_type(self, wanted):
        """Lengths, and the status that ended the reading."""
        lengths = []
        for kind, status, length in self.structures():
            if kind == wanted:
                if status:
                    return lengths, status
                lengths.append(length)
        return lengths, self.table.get("end_status", DONE)

    def lengths(self, wanted):
        return self.of_type(wanted)[0] if self.is_open() else []

    def is_open(self):
        return not self.table.get("load_status", 0)

    # The SPs

    def entry(self, sp, command, data):
        command, data = bytes.fromhex(command), bytes.fromhex(data)
        return next((entry for entry in self.sp.get("dot_commands", [])
                     if entry.get("sp", 0) == sp and to_bytes(entry["command"]) == command
                     and ("data" not in entry or to_bytes(entry["data"]) == data)), None)

    def answers(self, sp, command, data=""):
        """Whether there is something in the answer."""
        entry = self.entry(sp, command, data)
        if entry is None or "fail" in entry:
            return False
        return entry.get("length", len(to_bytes(entry["reply"]))) > 0

    def is_plain(self):
        return not any("replies" in entry for entry in self.sp.get("dot_commands", []))

    def walk_is_answered(self):
        """All that the firmware of each SP is asked for."""
        entries = [self.entry(sp, command, "") for sp in self.sps for command in
                   ("04 03 05 06 01", "04 03 05 06 02", "04 03 05 07", "04 03 05 01 01")]
        return all(entry is not None and "fail" not in entry for entry in entries)

    # The BMC

    def ipmi(self, request):
        """(completion code, data) of the first entry that the request begins with; None."""
        request = bytes.fromhex(request)
        for entry in self.sp.get("ipmi_commands", []):
            if request.startswith(to_bytes(entry["request"])):
                if "fail" in entry or "length" in entry:
                    return None
                reply = to_bytes(entry["reply"])
                return reply[4], reply[5:]
        return None

    def has_odd_bmc(self):
        """Refuses something, does not answer, or says another length than it is."""
        return any("fail" in entry or "length" in entry or to_bytes(entry["reply"])[4]
                   for entry in self.sp.get("ipmi_commands", []))

    def records(self):
        """Of the repository; None when one leads back."""
        found, number, known = [], 0, set()
        while number != 0xFFFF:
            if number in known:
                return None
            known.add(number)
            answer = self.ipmi(f"01 20 0A 00 23 06 00 00 00 00 00 {number % 256:02X} "
                               f"{number // 256:02X} 00 FF")
            if not answer:
                return None
            number = int.from_bytes(answer[1][:2], "little")
            found.append(answer[1][2:])
        return found


# ---------------------------------------------------------------------------------------------
# The rules: a number, or None where nothing is said


def firmwares(machine):
    return len(machine.lengths(0))


def systems(machine):
    return int(any(machine.lengths(kind) for kind in (1, 2, 3)))


def memories(machine):
    return sum(length >= 0x0E for length in machine.lengths(17))


def bios_elements(machine):
    """One a node for each structure; what a failed read delivers counts as well."""
    if "machine_type" not in machine.described:
        return None
    if not machine.is_open():
        return 0
    lengths, status = machine.of_type(0)
    count = len(lengths) + (status != DONE)
    if machine.described["machine_type"] in FIRST_FIRMWARE_ONLY:
        count = min(count, 1)
    return count * max(machine.sp.get("bmc_nodes", 0), 1)


def of_each_sp(machine):
    """SMBIOS stands in where no SP answers at all."""
    if not machine.sps or not machine.is_dot_command or not machine.is_plain() or not machine.walk_is_answered():
        return None
    return len(machine.sps)


def components(machine):
    ipmi_has_them = machine.sp.get("bmc") and machine.sp.get("ipmi_drivers")
    if machine.described.get("instances", {}).get("KRXSG_IPMIFRU") or ipmi_has_them:
        return 0
    if "IPMIInventory" in machine.collectors or not machine.is_plain():
        return None
    if not machine.is_dot_command:
        return 0
    asked = {bytes.fromhex(key)[3]: count
             for key, count in machine.sp.get("components", {}).items()}
    found, numbers = 0, collections.Counter()
    for sp in machine.sps:
        for code, data, once in COMPONENTS:
            for _ in range(1 if once else asked.get(code, 0)):
                numbers[code] += 1
                number = 1 if once else numbers[code]
                found += machine.answers(sp, f"04 03 05 {code:02X} {number:02X}", data)
        found += any(machine.answers(sp, "04 03 05 0D 01", data)
                     for data in ("00 00 81 00", "00 00 80 00"))
    return found


def controllers(machine):
    answer = machine.ipmi("01 20 06 00 01 00 00 00 00")
    return None if machine.has_odd_bmc() else int(bool(answer) and len(answer[1]) >= 11)


def frus(machine):
    """Those that a record locates at the BMC, and device 0 where it answers. A BMC that did not answer
    for its GUID is not asked any more."""
    said = machine.ipmi("01 20 06 00 01 00 00 00 00")
    records = machine.records()
    if machine.has_odd_bmc() or not said or len(said[1]) < 11 or records is None:
        return None
    if not machine.ipmi("01 20 06 00 08 00 00 00 00"):
        return None
    if not said[1][5] & 0x02:
        records = []
    located = {data[6] for data in records
               if data[3] == 0x11 and data[5] == 0x20 and data[7] & 0x80}
    located |= {0 for data in records if data[3] == 0x12 and data[8] & 0x08}
    return len(located | ({0} if machine.ipmi("01 20 0A 00 10 01 00 00 00 00") else set()))


RULES = [  # class, the companion that has to run, the rule
    ("KRXSG_SystemFirmware", "SMBIOSInventory", firmwares),
    ("KRXSG_ComputerSystem", "SMBIOSInventory", systems),
    ("KRXSG_PhysicalMemory", "SMBIOSInventory", memories),
    ("KRXSG_SystemBIOSElement", None, bios_elements),
    ("KRXSG_HardwareRevisionLevel", None, of_each_sp),
    ("KRXSG_SPROMFirmwareVPDMain", None, of_each_sp),
    ("KRXSG_SPROMFirmwareVPDBootROM", None, of_each_sp),
    ("KRXSG_Vpd", None, components),
    ("KRXSG_ManagementController", "IPMIInventory", controllers),
    ("KRXSG_IPMIFRU", "IPMIInventory", frus),
]


def complaint(described, document):
    machine = Machine(described)
    published = collections.Counter(instance["class"] for query in document["queries"]
                                    for instance in query["instances"])
    for name, collector, rule in RULES:
        if collector is not None and collector not in machine.collectors:
            continue
        expected = rule(machine)
        if expected is not None and published[name] != expected:
            return f"{name}: {published[name]} instances where the machine has {expected}"
    return ""
