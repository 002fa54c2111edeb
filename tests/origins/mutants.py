# SPDX-License-Identifier: Apache-2.0
"""Lines that are wrong in one place: each number one lower and higher, another rule, a
character more in each text."""

import dataclasses

import notation
import rules


def beside(values):
    """Sequences of bytes in which one is one lower or higher."""
    for at, byte in enumerate(values):
        if byte is not notation.ANY:
            for other in (byte - 1, byte + 1):
                yield (*values[:at], other % 256, *values[at + 1:])


def commands(line):
    for command in beside(line.command):
        yield "command " + " ".join("n" if b is None else f"{b:02X}" for b in command), {
            "command": command}


def data(line):
    for other in beside(line.data or b""):
        yield "data " + bytes(other).hex(" ").upper(), {"data": bytes(other)}


def byte_ranges(line):
    if not line.command:
        return
    first, last = line.first, line.last
    pairs = [(first + step, None if last is None else last) for step in (-1, 1)]
    if last is not None:
        pairs += [(first, last + step) for step in (-1, 1)]
    if last == first:
        pairs = [(first + step, last + step) for step in (-1, 1)]
    for low, high in pairs:
        if low >= 0 and (high is None or high >= low):
            yield f"bytes {low}-{'' if high is None else high}", {"first": low, "last": high}


def other_kinds(line):
    """A string that is taken whole where a part would do is no mistake of the line's."""
    kinds = ("string", *notation.SIZES) if line.kind else ()
    return [kind for kind in kinds if kind != line.kind]


def smbios(line):
    if line.source != "SMBIOS.DMTF":
        return
    for step in (-1, 1):
        if line.structure + step >= 0:
            yield f"type {line.structure + step}", {"structure": line.structure + step}
        if line.kind:
            yield f"offset {line.offset + step}", {"offset": line.offset + step}
    for kind in other_kinds(line):
        yield kind, {"kind": kind}


def rules_beside(line):
    """Those that a line's author may have meant."""
    of_structures = line.kind == "whole string" or line.rule in rules.OF_STRUCTURES
    return [*rules.PLAIN, *(rules.OF_STRUCTURES if of_structures else ())]


def other_rules(line):
    blank = " or blank"
    plain = line.rule.removesuffix(blank)
    suffix = line.rule[len(plain):]
    for other in rules_beside(line):
        if other != plain:
            yield other + suffix, {"rule": other + suffix}
    if plain not in rules.NEVER_NOTHING:
        yield plain + ("" if suffix else blank), {"rule": plain + ("" if suffix else blank)}


def texts(line):
    yield f"as {line.template}~", {"template": line.template + "~"}
    if line.contains:
        yield f"string with {line.contains}~", {"contains": line.contains + "~"}


def mutants(line):
    """(what is changed, the changed line)"""
    of_bytes = (commands, data, byte_ranges, smbios, other_rules) if line.has_bytes() else ()
    for change in (*of_bytes, texts):
        for name, fields in change(line):
            yield name, dataclasses.replace(line, **fields)
