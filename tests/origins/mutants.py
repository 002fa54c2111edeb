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
    if not (line.command or line.record or line.area and not line.field):
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
    of_bmc = line.record or line.area or line.rule in rules.OF_BMC
    return [*rules.PLAIN, *(rules.OF_STRUCTURES if of_structures else ()),
            *(rules.OF_BMC if of_bmc else ())]


def of_a_bmc(line):
    """SDR records and FRU areas."""
    for step in (-1, 1):
        if line.record:
            yield f"type {line.record + step}", {"record": line.record + step}
        if line.field:
            yield f"field {line.field + step}", {"field": line.field + step}
    for area in ("chassis area", "board area", "product area") if line.area else ():
        if area != line.area:
            yield area, {"area": area}


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
    changes = (commands, data, byte_ranges, smbios, of_a_bmc, other_rules)
    for change in (*(changes if line.has_bytes() else ()), texts):
        for name, fields in change(line):
            yield name, dataclasses.replace(line, **fields)
