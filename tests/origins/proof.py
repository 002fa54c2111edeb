# SPDX-License-Identifier: Apache-2.0
"""Explains a published instance by the lines of its class and what the collector was given.

One view has to explain all properties together: one reply, one SMBIOS structure of each type, one
string of a structure, one FRU device and one instance of another collector at most. So a line cannot
borrow the bytes of a reply that belongs to another component. What a BMC says of itself, asked without
data, are several replies of one component.
"""

import dataclasses
import functools
import itertools
import re

import derive_expected as witness
import notation
import rules
import smbios_inventory as inventory

# Bytes of a string set that are read: for the string of a number, for one that has a text in it.
NUMBERED_READ, CONTAINING_READ = 100, 1024
LONGEST_STRING = 99


@dataclasses.dataclass(frozen=True)
class View:
    """What an instance is explained by; None for what has no part in it."""
    replies: tuple
    structures: dict         # bytes by SMBIOS type
    string: tuple | None     # SMBIOS type, bytes
    companion: tuple | None  # class, values
    fru: object              # evidence.Fru
    placeholders: dict


def holds(condition, instance):
    name, comparison, text = condition
    value = instance.text(name)
    return {"set": name in instance.values, "unset": name not in instance.values,
            "is": value == text, "is not": value != text,
            "has": text in value, "lacks": text not in value}[comparison]


# ---------------------------------------------------------------------------------------------
# The bytes that a line names, in a view


def command_matches(line, reply):
    return (line.source == reply.source and len(line.command) == len(reply.command)
            and all(byte in (notation.ANY, sent) for byte, sent in zip(line.command, reply.command))
            and line.data in (None, reply.data))


def bytes_of_reply(line, view):
    reply = next((reply for reply in view.replies if command_matches(line, reply)), None)
    if reply is None:
        return None
    end = line.first + max(reply.length, 0) if line.last is None else line.last + 1
    return reply.bytes[line.first:end]


def bytes_of_smbios(line, view):
    if line.contains:
        found = view.string and view.string[0] == line.structure
        return view.string[1] if found and line.contains.encode() in view.string[1] else None
    if view.structures.get(line.structure) is None:
        return None
    data = view.structures[line.structure].ljust(260, b"\0")
    if line.kind in notation.SIZES:
        return data[line.offset:line.offset + notation.SIZES[line.kind]]
    if line.kind == "whole string":
        text = inventory.whole_string(data[data[1]:], data[line.offset])
    else:
        text = witness.string_number(data[data[1]:][:NUMBERED_READ], data[line.offset])
    return text.encode("latin-1")


def bytes_of_companion(line, view):
    if not view.companion or view.companion[0] != line.origin[0]:
        return None
    return str(view.companion[1].get(line.origin[1], "")).encode()


def bytes_of_record(line, view):
    if not view.fru or not view.fru.record or view.fru.record[3] != line.record:
        return None
    return view.fru.record[line.first:None if line.last is None else line.last + 1]


def bytes_of_fru(line, view):
    if not view.fru:
        return None
    if not line.area:
        return view.fru.wrong.encode()
    if line.field:
        return view.fru.field(line.area, line.field)
    area = view.fru.areas.get(line.area)
    return None if area is None else area[line.first:line.last + 1]


# Classes that publish whatever their sources give: where a property is unset, its lines give nothing.
COMPLETE = ("KRXSG_ManagementController", "KRXSG_IPMIFRU")

BYTES = {"DotCommand.VEL": bytes_of_reply, "TamberCommand.VEL": bytes_of_reply,
         "IPMI.VEL": bytes_of_reply, "IPMI.SDR": bytes_of_record, "IPMI.FRU": bytes_of_fru,
         "SMBIOS.DMTF": bytes_of_smbios,
         "Instance.VEL": bytes_of_companion,
         "Constant.VEL": lambda line, view: b"", "Derived.VEL": lambda line, view: b""}


# ---------------------------------------------------------------------------------------------
# The value that a line gives


@functools.cache
def placeholders_of(template):
    return re.findall(r"\{(.*?)\}", template)


IN_WORDS = " in words"


def word_of(line, name, instance):
    """The name that the schema has for the value of a property."""
    return line.words[name].get(instance.text(name), "")


def filled_in(line, value, instance, view):
    """None where the view has nothing for a placeholder."""
    text = line.template
    for name in placeholders_of(line.template):
        if name.endswith(IN_WORDS):
            part = word_of(line, name.removesuffix(IN_WORDS), instance)
        else:
            part = value if not name else view.placeholders.get(name, instance.text(name))
        if part is None:
            return None
        text = text.replace("{" + name + "}", part, 1)
    return text


def typed(text, sample):
    if isinstance(sample, bool):
        return {"TRUE": True, "FALSE": False}.get(text)
    if isinstance(sample, int):
        return int(text) if text.isdigit() else None
    return text


def text_of(line, instance, view):
    """What the line gives; None where the view has nothing for it."""
    data = BYTES[line.source](line, view)
    if data is None:
        return None
    value = rules.rule(line.rule)(data) if line.rule else ""
    return value if line.template == "{}" else filled_in(line, value, instance, view)


def explains(line, name, instance, view):
    text = text_of(line, instance, view)
    return text is not None and typed(text, instance.values[name]) == instance.values[name]


# ---------------------------------------------------------------------------------------------
# The views of a machine


def replies_for(lines, machine):
    """Tuples of those of one component."""
    named = [line for line in lines if line.command]
    found = [reply for reply in machine.replies
             if any(command_matches(line, reply) for line in named)]
    of_bmc = tuple(reply for reply in found if reply.source == "IPMI.VEL" and not reply.data)
    return [(reply,) for reply in found if reply not in of_bmc] + ([of_bmc] if of_bmc else [])


def structures_for(lines, machine):
    """Dictionaries with a structure of each type, or none of it, and the number of the last one."""
    types = sorted({line.structure for line in lines if line.kind})
    found = [[*enumerate(machine.structures(number), 1), (None, None)] for number in types]
    for chosen in itertools.product(*found):
        yield dict(zip(types, (data for _, data in chosen))), chosen[-1][0] if chosen else None


def strings_of(structure):
    length = structure[1] if len(structure) > 1 else 0
    found = structure[length:][:CONTAINING_READ].split(b"\0")
    return [text[:LONGEST_STRING] for text in found if text]


def strings_for(lines, machine):
    types = sorted({line.structure for line in lines if line.contains})
    return [(number, text) for number in types for data in machine.structures(number)
            for text in strings_of(data)]


def companions_for(lines, machine):
    classes = sorted({line.origin[0] for line in lines if line.origin})
    return [(name, values) for name in classes for values in machine.companions.get(name, [])]


def frus_for(lines, machine):
    return machine.frus if any(line.record or line.source == "IPMI.FRU" for line in lines) else []


def numbers(machine, replies):
    """The numbers of SP and node, and the one in the command."""
    reply = replies[0] if replies else None
    if reply and reply.sp is not None:
        return [(reply.sp, reply.command[-1] if reply.command else None)]
    return [(sp, None) for sp in range(1, machine.nodes + 1)]


def placeholders(machine, sp, n, structure):
    return {"sp": str(sp), "node": str(sp), "label": machine.label(sp),
            "n": None if n is None else str(n),
            "structure": None if structure is None else str(structure)}


def views(lines, machine, structures):
    rest = [[*found(lines, machine), None] for found in (strings_for, companions_for, frus_for)]
    for replies in [*replies_for(lines, machine), ()]:
        for sp, n in numbers(machine, replies):
            for (chosen, number), *others in itertools.product(structures, *rest):
                yield View(replies, chosen, *others, placeholders(machine, sp, n, number))


# ---------------------------------------------------------------------------------------------
# The proof of an instance


@dataclasses.dataclass
class Outcome:
    views: list        # that explain every property
    lines: set         # (property, number of the line) that have a part in it
    unexplained: list  # properties, of the view that explains most; none: proven


def holding(lines, instance):
    """(property, [(number, line)]) for each property that is set; of some classes for all."""
    names = lines if instance.class_name in COMPLETE else instance.values
    return [(name, [(number, line) for number, line in enumerate(lines.get(name, []))
                    if all(holds(condition, instance) for condition in line.conditions)])
            for name in names]


def explained(view, wanted, instance):
    """The properties that a view explains, with the numbers of the lines that do."""
    return {(name, number) for name, found in wanted if name in instance.values
            for number, line in found if explains(line, name, instance, view)}


def is_whole(view, wanted, instance):
    return all(any(explains(line, name, instance, view) for _, line in found)
               if name in instance.values else
               not any(text_of(line, instance, view) for _, line in found)
               for name, found in wanted)


def all_views(lines, wanted, machine):
    """The structures are those of the whole class: one may have nothing but its number."""
    structures = list(structures_for([line for found in lines.values() for line in found], machine))
    return views([line for _, found in wanted for _, line in found], machine, structures)


def nearest(lines, wanted, instance, machine):
    """The properties that stay unexplained in the view that explains most."""
    known = [{name for name, _ in explained(view, wanted, instance)}
             for view in all_views(lines, wanted, machine)]
    best = max(known, key=len)
    return [name for name in instance.values if name not in best]


def prove(lines, instance, machine):
    wanted = holding(lines, instance)
    whole = [view for view in all_views(lines, wanted, machine)
             if is_whole(view, wanted, instance)]
    used = set().union(*(explained(view, wanted, instance) for view in whole))
    return Outcome(whole, used, [] if whole else nearest(lines, wanted, instance, machine))


def still_proven(lines, instance, machine, outcome):
    """Whether other lines explain the instance too; the views of an earlier proof come first."""
    wanted = holding(lines, instance)
    return any(is_whole(view, wanted, instance)
               for view in itertools.chain(outcome.views, all_views(lines, wanted, machine)))
