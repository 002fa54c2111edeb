# SPDX-License-Identifier: Apache-2.0
"""What a collector was given on a machine: replies, SMBIOS structures, others' instances."""

import dataclasses
import json
import subprocess

import derive_expected as witness
import ipmi_inventory

NO_MORE_STRUCTURES = 5


@dataclasses.dataclass(frozen=True)
class Reply:
    source: str     # as in the notation
    command: bytes  # IPMI: network function and command
    data: bytes
    sp: int | None  # the number of the SP, from 1
    bytes: bytes    # as the reader's buffer has it, behind its end zeros
    length: int     # as reported


class Fru:
    """A FRU device as the BMC gives it: the record that locates it, good areas, what was wrong."""

    def __init__(self, values, record, areas):
        self.record, self.areas, self.wrong = record, areas, values.get("Notes", "")

    def field(self, area, number):
        """None for an area or a field that is not there."""
        data = self.areas.get(area)
        if data is None:
            return None
        first, english = ipmi_inventory.AREAS[area][1], ipmi_inventory.is_english(area, data)
        fields, _ = ipmi_inventory.fields_of(data, first, english)
        return fields[number - 1] if 0 < number <= len(fields) else None


def frus_of(described):
    """What the second witness finds; it puts the same questions."""
    if ipmi_inventory.NAME not in described.get("collectors", []):
        return []
    # A BMC that stops answering is not asked for the records again.
    records = ipmi_inventory.Collector(witness.SpLibrary(described).send_ipmi).locators()
    collector = ipmi_inventory.Collector(witness.SpLibrary(described).send_ipmi)
    found = collector.frus()
    return [Fru(values, records.get(values["FRUDeviceID"]),
                {name: data for (number, name), data in collector.good_areas.items()
                 if number == values["FRUDeviceID"]})
            for values in found]


class Machine:
    def __init__(self, path, document):
        self.name = path.stem
        described = witness.load_machine(path)
        query = document["queries"][0]
        self.instances = [Instance(entry) for entry in query["instances"]]
        sp = witness.SpLibrary(described)
        self.sp_count, self.nodes = sp.count, max(sp.count, sp.flag("bmc_nodes", 0), 1)
        self.replies = [reply for entry in query["traffic"] if (reply := replay(sp, entry))]
        self.smbios = witness.Smbios(described)
        self.frus = frus_of(described)
        self.companions = described.get("instances", {})

    def structures(self, structure_type):
        """Those delivered; an end that is not told as such delivers one more, of nothing."""
        if self.smbios.load_status:
            return []
        delivered = [data for data, _ in self.smbios.of_type(structure_type)]
        return delivered + [b""] * (self.smbios.end_status != NO_MORE_STRUCTURES)

    def label(self, sp):
        return f"Node {sp}: " if self.sp_count > 1 else ""


class Instance:
    """A published instance; its values are texts of one character a byte, but for numbers."""

    def __init__(self, entry):
        self.class_name = entry["class"]
        self.values = {name: value_of(value) for name, value in entry["properties"].items()}

    def text(self, name):
        return str(self.values.get(name, ""))


def value_of(entry):
    if "bytes" in entry:
        return bytes.fromhex(entry["bytes"]).decode("latin-1")
    value = entry["value"]
    return witness.latin(value) if isinstance(value, str) else value


# A kind of command: how it is sent again.
def dot_command(sp, entry):
    command, data = bytes.fromhex(entry["command"]), bytes.fromhex(entry["data"])
    return Reply("DotCommand.VEL", command, data, entry["sp"] + 1,
                 *sp.send_dot(entry["sp"], command, data))


def tamber_command(sp, entry):
    command = bytes.fromhex(entry["command"])
    return Reply("TamberCommand.VEL", command, bytes.fromhex(entry["data"]), None,
                 *sp.send_tamber(command, entry["flags"]))


def ipmi_command(sp, entry):
    request = bytes.fromhex(entry["request"])
    return Reply("IPMI.VEL", request[2:3] + request[4:5], request[9:], None,
                 *sp.send_ipmi(request))


COMMANDS = {"dot_command": dot_command, "tamber_command": tamber_command,
            "ipmi_command": ipmi_command}


def replay(sp, entry):
    """The reply to a command that was sent, from the machine file; None for one without a reply."""
    reply = COMMANDS[entry["operation"]](sp, entry)
    found = (reply.bytes is not None, reply.length)
    if found != (entry["answered"], entry["length"]):
        raise ValueError(f"the machine file answers {entry} otherwise: {found}")
    return reply if entry["answered"] else None


def collect(velhost, path):
    """The machine with what the collector published on it. Status 1: the request threw."""
    outcome = subprocess.run([velhost, "query", "--machine", path, "--format", "trace"],
                             capture_output=True, check=False)
    if outcome.returncode not in (0, 1):
        raise ValueError(f"{path.name}: {outcome.stderr.decode()}")
    return Machine(path, json.loads(outcome.stdout))
