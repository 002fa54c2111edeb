# SPDX-License-Identifier: Apache-2.0
"""A line of MappingStrings, in the notation of docs/schema.md."""

import dataclasses
import re

ANY = None  # the byte of a command that holds the instance number
SIZES = {"uint8": 1, "uint16": 2, "uint32": 4, "16 bytes": 16}  # of what stands at an offset


@dataclasses.dataclass(frozen=True)
class Line:
    source: str
    text: str                # the line as it stands
    conditions: tuple = ()   # (property, comparison, text)
    template: str = "{}"
    rule: str = ""
    command: tuple = ()      # bytes, ANY for the instance number; IPMI: function and command
    data: bytes | None = None
    first: int = 0           # the reply's bytes
    last: int | None = 0     # None: as many as the reported length says
    structure: int = 0       # SMBIOS type
    offset: int = 0
    kind: str = ""           # "string", "whole string" or one of SIZES, at the offset
    contains: str = ""       # what a string of the structure has in it
    origin: tuple = ()       # class and property of another collector's instance
    record: int = 0          # type of an SDR record
    area: str = ""           # of a FRU device
    field: int = 0           # in the area, from 1; 0: bytes of it
    words: dict = dataclasses.field(default_factory=dict)  # property: {value: its name}

    def has_bytes(self):
        return self.source not in ("Constant.VEL", "Derived.VEL", "Sysfs.Linux")


def condition(text):
    match = re.fullmatch(r"(\w+) (?:is (set|unset)|(is not|is|has|lacks) (.+))", text)
    if not match:
        raise ValueError(f"no condition: {text}")
    return match[1], match[2] or match[3], match[4] or ""


def command_bytes(text):
    return tuple(ANY if byte == "n" else int(byte, 16) for byte in text.split())


def byte_range(text):
    match = re.fullmatch(r"byte (\d+)|bytes (\d+)-(\d*)", text)
    if not match:
        raise ValueError(f"no bytes: {text}")
    first = int(match[1] or match[2])
    last = first if match[1] else int(match[3]) if match[3] else None
    return {"first": first, "last": last}


def number_behind(word, text):
    if not re.fullmatch(rf"{word} \d+", text):
        raise ValueError(f"no {word}: {text}")
    return int(text.split()[1])


def command_fields(elements):
    command, *data, read, rule = elements
    fields = {"command": command_bytes(command), "rule": rule, **byte_range(read)}
    if data:
        fields["data"] = bytes.fromhex(data[0].removeprefix("data "))
    return fields


def smbios_fields(elements):
    fields = {"structure": number_behind("type", elements[0]), "rule": elements[-1]}
    if elements[1].startswith("string with "):
        return fields | {"contains": elements[1].removeprefix("string with ")}
    return fields | {"offset": number_behind("offset", elements[1]), "kind": elements[2]}


def instance_fields(elements):
    return {"origin": tuple(elements[0].split(".")), "rule": elements[1]}


def record_fields(elements):
    kind, read, rule = elements
    return {"record": number_behind("type", kind), "rule": rule, **byte_range(read)}


def fru_fields(elements):
    *area, read, rule = elements
    fields = {"area": area[0] if area else "", "rule": rule}
    if not area:
        return fields
    if read.startswith("field "):
        return fields | {"field": number_behind("field", read)}
    return fields | byte_range(read)


FIELDS = {
    "DotCommand.VEL": command_fields,
    "TamberCommand.VEL": command_fields,
    "IPMI.VEL": command_fields,
    "IPMI.SDR": record_fields,
    "IPMI.FRU": fru_fields,
    "SMBIOS.DMTF": smbios_fields,
    "Instance.VEL": instance_fields,
    "Sysfs.Linux": lambda elements: {},
    "Constant.VEL": lambda elements: {"template": elements[0]},
    "Derived.VEL": lambda elements: {"template": elements[0]},
}


def parse(text):
    source, *elements = text.split("|")
    fields = {}
    if elements[-1].startswith("when "):
        conditions = elements.pop().removeprefix("when ").split(" and ")
        fields["conditions"] = tuple(condition(part) for part in conditions)
    if elements[-1].startswith("as "):
        fields["template"] = elements.pop().removeprefix("as ")
    return Line(source, text, **fields, **FIELDS[source](elements))
