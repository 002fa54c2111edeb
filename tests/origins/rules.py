# SPDX-License-Identifier: Apache-2.0
"""The rules of docs/schema.md: what becomes of bytes. Texts have one character a byte."""

import functools
import re

import derive_expected as witness
import ipmi_inventory
import smbios_inventory as inventory


def date(data):
    text = witness.text_of(data)
    fields = witness.date_fields(text) if len(text) in (8, 10) else None
    return fields and witness.set_date_time(*fields) or witness.NO_DATE


def letters_and_digits(data):
    return witness.alphanumeric(witness.text_of(data))


def version_part(data):
    return witness.break_apart_version(letters_and_digits(data))[0]


def build_part(data):
    return witness.break_apart_version(letters_and_digits(data))[1]


def numeric_version_part(data):
    version = version_part(data)
    return version if witness.is_all_numeric(version) else " "


def of_bytes(count, value):
    """A rule that takes so many bytes and gives nothing for None."""
    def apply(data):
        found = value(data) if len(data) == count else None
        return "" if found is None else str(found)
    return apply


def of_number(count, value):
    return of_bytes(count, lambda data: value(int.from_bytes(data, "little")))


def named(names):
    return of_number(1, lambda code: names.get(code))


def of_text(value):
    return lambda data: value(witness.text_of(data)) or ""


def month_day_year(text):
    fields = inventory.month_day_year(text)
    return fields and witness.set_date_time(*fields)


def truth(value):
    return str(bool(value)).upper()


def number(size, bits):
    """Nothing for all zeros and all ones."""
    return of_bytes(size, lambda data: ipmi_inventory.number(data, bits))


def typed_text(data):
    """A FRU field knows its encodings itself."""
    if isinstance(data, ipmi_inventory.Field):
        return witness.latin(data.text())
    return witness.latin(ipmi_inventory.sdr_text(data)) if data else ""


PLAIN = {
    "text": witness.text_of,
    "decimal": lambda data: str(data[0]) if data else "0",
    "hex bytes": witness.hex_of,
    "hex digits": lambda data: witness.hex_of(data) if any(data) else "",
    "date": date,
    "level": lambda data: re.sub(r"[^0-9A-Za-z.()\[\]]", "", data.decode("latin-1")),
    "letters and digits": letters_and_digits,
    "version part": version_part,
    "build part": build_part,
    "numeric version part": numeric_version_part,
    "shift 16": lambda data: str(int.from_bytes(data, "little") << 16),
    "JEP106 maker": lambda data: witness.memory_maker(data.ljust(8, b"\0")),
}
OF_STRUCTURES = {  # where these give nothing, the property is not set
    "trimmed": of_text(inventory.trimmed),
    "month/day/year": of_text(month_day_year),
    "major.minor": of_bytes(2, lambda data: inventory.release(*data)),
    "number": lambda data: str(int.from_bytes(data, "little") % 2**31) if len(data) < 5 else "",
    "not zero": of_number(2, truth),
    "bit 3": of_number(1, lambda byte: truth(byte & 8)),
    "UUID": of_bytes(16, inventory.uuid_text),
    "ROM size": of_number(1, inventory.rom_size),
    "extended ROM size": of_number(2, inventory.extended_rom_size),
    "memory size": of_number(2, inventory.memory_size),
    "extended memory size": of_number(4, inventory.extended_memory_size),
    "chassis type": of_number(1, lambda code: inventory.CHASSIS_TYPES.get(code % 0x80)),
    "form factor": named(inventory.FORM_FACTORS),
    "memory type": named(inventory.MEMORY_TYPES),
    "JEP106 text": of_text(lambda text: inventory.maker_of_text(witness.memory_maker, text)),
    "JEP106 module maker": of_bytes(
        2, lambda data: inventory.module_maker(witness.memory_maker, data)),
}
OF_BMC = {  # the same
    "low nibble": of_number(1, lambda byte: byte & 0x0F),
    "16-bit number": number(2, 16),
    "20-bit number": number(3, 20),
    "BCD version": of_bytes(2, ipmi_inventory.bcd_version),
    "IPMI version": of_number(1, ipmi_inventory.ipmi_version),
    "GUID": of_bytes(16, ipmi_inventory.guid),
    "minutes since 1996": of_bytes(3, ipmi_inventory.fru_date),
    "typed text": typed_text,
}

NEVER_NOTHING = ("decimal", "date", "shift 16", *OF_STRUCTURES, *OF_BMC)


def before(end):
    def apply(data):
        text, found, _ = witness.text_of(data).partition(end)
        return text if found else ""
    return apply


def between(start, end):
    def apply(data):
        behind = witness.text_of(data).partition(start)[2]
        return before(end)(behind.encode("latin-1"))
    return apply


@functools.cache
def rule(name):
    """The function of a rule: from bytes to text."""
    if name.endswith(" or blank"):
        plain = rule(name.removesuffix(" or blank"))
        return lambda data: plain(data) or " "
    if match := re.fullmatch("before (.+)", name, re.S):
        return before(match[1])
    if match := re.fullmatch("between (.+) and (.+)", name, re.S):
        return between(match[1], match[2])
    return PLAIN.get(name) or OF_STRUCTURES.get(name) or OF_BMC[name]
