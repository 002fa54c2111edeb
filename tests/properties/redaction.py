# SPDX-License-Identifier: Apache-2.0
"""Whether a redacted recording still has a value that it should not have: docs/machine-file.md, read a
second time. Texts have one character a byte."""

import itertools
import re
import uuid

IDENTIFYING = (  # properties, of collectors' instances and of those in the file
    "SerialNumber", "UniqueID", "DevicePrefix", "AssetTag", "UUID", "ChassisSerialNumber",
    "ChassisAssetTag", "BoardSerialNumber", "ProductSerialNumber", "ProductAssetTag", "GUID")
STRINGS = {  # SMBIOS type: offsets of the strings' numbers
    1: (0x07,), 2: (0x07, 0x08), 3: (0x07, 0x08), 4: (0x20, 0x21), 17: (0x18, 0x19), 22: (0x07,),
    39: (0x08, 0x09)}
NO_VALUES = {text.strip().lower() for text in """None, Empty, Unknown, Invalid, Undefined, Not Specified,
Not Available, Not Applicable, Not Present, Not Set, Default, Default string, To be filled by O.E.M.,
Serial Number, System Serial Number, Base Board Serial Number, Chassis Serial Number, Asset Tag,
No Asset Tag, No Asset Information""".split(",")}
PACKED = "KRXSG_IPMIFRU"  # texts that need not be ASCII or UTF-16 where they stand
TAMBER_HEADER, IPMI_REQUEST_HEADER, IPMI_REPLY_HEADER = 3, 9, 5


def to_bytes(field):
    """Recordings have all bytes as one text."""
    return bytes.fromhex(field)


def latin(text):
    return text.encode("utf-8").decode("latin-1")


# ---------------------------------------------------------------------------------------------
# The values that become known


def published(document, names=None, but=()):
    """(class, property, text) of what is published, or of the properties of these names."""
    for query in document["queries"]:
        for instance in query["instances"]:
            for name, entry in instance["properties"].items():
                if entry["type"] == "string" and (names is None or name in names) \
                        and instance["class"] not in but:
                    text = (bytes.fromhex(entry["bytes"]).decode("latin-1") if "bytes" in entry
                            else latin(entry["value"]))
                    yield instance["class"], name, text


def structure_bytes(entry):
    if "raw" in entry:
        return to_bytes(entry["raw"])
    data = to_bytes(entry.get("data", ""))
    strings = b"".join(text.encode() + b"\0" for text in entry.get("strings", [])) or b"\0"
    return bytes([entry["type"], 4 + len(data), 0, 0]) + data + strings + b"\0"


def strings_of(string_set):
    """Up to the first empty one, which ends the set."""
    return list(itertools.takewhile(bool, string_set.split(b"\0")))


def smbios_values(machine):
    for entry in machine.get("smbios", {}).get("structures", []):
        data = structure_bytes(entry)
        if len(data) < 4 or not 4 <= data[1] <= len(data):
            continue
        strings = strings_of(data[data[1]:])
        for offset in STRINGS.get(data[0], ()):
            if offset < data[1] and 1 <= data[offset] <= len(strings):
                yield strings[data[offset] - 1].decode("latin-1")
        if data[0] == 1 and data[1] >= 0x18:
            yield str(uuid.UUID(bytes_le=data[8:24]))


def instance_values(machine):
    for rows in machine.get("instances", {}).values():
        for row in rows:
            for name, value in row.items():
                if name in IDENTIFYING:
                    yield latin(value)
                elif name == "DeviceID" and "\\" in value:
                    yield re.sub(r"&[0-9]*\Z", "", latin(value).rpartition("\\")[2])


def characters(value):
    return [c for c in value if c.isascii() and c.isalnum()]


def like_a_pseudonym(value):
    """The first digits and letters of a shape, but for the last two; without any it stays as it is."""
    return all(c in "0AGag" for c in characters(value)[:-2])


def is_looked_for(value):
    return (len(value) >= 4 and len(set(value)) > 1 and value.lower() not in NO_VALUES
            and not like_a_pseudonym(value))


def known_values(machine, document):
    values = {text for _, _, text in published(document, IDENTIFYING)}
    values |= {*smbios_values(machine), *instance_values(machine)}
    return {value for text in values if is_looked_for(value := text.strip(" "))}


# ---------------------------------------------------------------------------------------------
# The forms of a value: (bytes, whether case counts)


def as_uuid(value):
    digits = value.replace("-", "")
    plain = re.fullmatch("[0-9A-Fa-f]{32}", digits)
    dashed = re.fullmatch(r"[^-]{8}(-[^-]{4}){3}-[^-]{12}", value)
    return uuid.UUID(digits) if plain and (dashed or value == digits) else None


def telling_bytes(value):
    """None where they could stand anywhere."""
    if len(value) < 8 or len(value) % 2 or not re.fullmatch("[0-9A-Fa-f]+", value):
        return None
    data = bytes.fromhex(value)
    printable = all(0x20 <= byte <= 0x7E for byte in data)
    return None if printable or sum(byte not in (0x00, 0xFF) for byte in data) < 3 else data


def texts_of(value):
    found = as_uuid(value)
    if not found:
        return [value]
    other = uuid.UUID(bytes=found.bytes_le)
    return [str(found), str(other), found.hex, other.hex]


def forms(value):
    for text in texts_of(value):
        data = text.lower().encode("latin-1")[:256]
        yield data, False
        yield b"".join(bytes([byte, 0]) for byte in data)[:256], False
    if found := as_uuid(value):
        yield found.bytes, True
        yield found.bytes_le, True
    elif data := telling_bytes(value):
        yield data[:256], True


# ---------------------------------------------------------------------------------------------
# Where it may stand


def replies(entry, header):
    for reply in [entry[key] for key in ("reply",) if key in entry] + entry.get("replies", []):
        if reply != "fail":
            yield to_bytes(reply)[header:]


def commands(sp):
    for entry in sp.get("dot_commands", []):
        yield from replies(entry, 0)
        yield to_bytes(entry.get("data", ""))
    for entry in sp.get("tamber_commands", []):
        yield from replies(entry, TAMBER_HEADER)
        yield to_bytes(entry.get("data", ""))
    for entry in sp.get("ipmi_commands", []):
        yield from replies(entry, IPMI_REPLY_HEADER)
        yield to_bytes(entry["request"])[IPMI_REQUEST_HEADER:]


def places(machine):
    for number, entry in enumerate(machine.get("smbios", {}).get("structures", [])):
        yield f"SMBIOS structure {number}", structure_bytes(entry)[4:]
    for number, data in enumerate(commands(machine.get("sp", {}))):
        yield f"bytes {number} of the commands", data
    for name, rows in machine.get("instances", {}).items():
        for row in rows:
            for key, value in row.items():
                if isinstance(value, str):
                    yield f"{name}.{key}", value.encode()
    yield "the name", machine["name"].encode()
    yield "the description", machine.get("description", "").encode()


def places_shown(document):
    """What is published must not bring back what is not in the file."""
    for found in (published(document, but=(PACKED,)), published(document, IDENTIFYING)):
        for class_name, name, text in found:
            yield f"the published {class_name}.{name}", text.encode("latin-1")


def shape(document):
    """Each instance with the properties that it has."""
    return [[instance["class"], *instance["properties"]] for query in document["queries"]
            for instance in query["instances"]]


def complaint(recorded, document, redacted, redacted_document):
    found = [*places(redacted), *places_shown(redacted_document)]
    for value in sorted(known_values(recorded, document)):
        for form, case_counts in forms(value):
            for place, data in found:
                if form in (data if case_counts else data.lower()):
                    return f"{value!r} still stands in {place}, as {form!r}"
    before, after = shape(document), shape(redacted_document)
    return "" if before == after else f"instances of {after} and not of {before}"
