# SPDX-License-Identifier: Apache-2.0
"""The rules of docs/schema.md: what becomes of bytes. Texts have one character a byte."""

import functools
import re

import derive_expected as witness


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


PLAIN = {
    "text": witness.text_of,
    "decimal": lambda data: str(data[0]) if data else "0",
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

NEVER_NOTHING = ("decimal", "date", "shift 16")


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
    return PLAIN[name]
