#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What `velhost explain` says of every property of every machine file, held against the evidence that
proves the origins: the line, what was asked, the place and the bytes.

  explain_test.py VELHOST MACHINES_FOLDER
"""

import collections
import concurrent.futures
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "machines")]
import derive_expected as witness  # noqa: E402
import evidence  # noqa: E402
import ipmi_inventory  # noqa: E402
import mofclasses  # noqa: E402
import notation  # noqa: E402
import proof  # noqa: E402

MOST_BYTES = 64    # of a place, that are shown
WIDE = {**os.environ, "COLUMNS": "100000"}

# One instance in what is printed.
Entry = collections.namedtuple("Entry", "head source place data more")
DUMP = re.compile(r" +(\d+)  ((?:[0-9A-F]{2} ?)+?) *\|.*\|")


@dataclasses.dataclass
class Answer:
    entries: dict          # by line of origin
    unconfirmed: list
    states: str


def paragraphs(text):
    return [part.split("\n") for part in text.rstrip("\n").split("\n\n")]


def entry_of(lines):
    """The head, where the bytes are from, the bytes."""
    rows = [match for match in map(DUMP.fullmatch, lines) if match]
    data = bytes.fromhex("".join(row[2] for row in rows))
    more = next((int(match[1]) for line in lines
                 if (match := re.fullmatch(r" +and (\d+) bytes more", line))), 0)
    source = lines[1].strip() if len(lines) > 1 else ""
    return Entry(lines[0].strip(), source, int(rows[0][1]) if rows else None, data, more)


def parse(text, known):
    """`known`: the property's lines of origin, by what is shown of them."""
    answer, line = Answer(collections.defaultdict(list), [], ""), None
    for part in paragraphs(text):
        if part[0] in known:
            line = known[part[0]]
        elif part[0].startswith("  ") and line is not None:
            answer.entries[line].append(entry_of(part))
        else:
            line = None
            if part[0].startswith("Not confirmed"):
                answer.unconfirmed = part[1:]
            if part[0].startswith("On "):
                answer.states = part[0]
    return answer


# ---------------------------------------------------------------------------------------------
# What may be said: (the beginning of what was asked, place, bytes)


def spaced(data):
    return data.hex(" ").upper()


def of_reply(line, view, machine):
    reply = next(reply for reply in view.replies if proof.command_matches(line, reply))
    command = spaced(reply.command) + (f", data {spaced(reply.data)}" if reply.data else "")
    kind = {"DotCommand.VEL": f"SP {reply.sp}, dot command ",
            "TamberCommand.VEL": "Tamber command ",
            "IPMI.VEL": "IPMI network function and command "}[line.source]
    yield kind + command + ": ", line.first, proof.bytes_of_reply(line, view)


def of_structure(line, view, machine):
    for data, structure in ((data, data.ljust(260, b"\0"))
                            for data in machine.structures(line.structure)):
        head = f"SMBIOS type {line.structure}"
        if len(data) >= 4:
            head += f", handle {data[3]:02X}{data[2]:02X}h"
        if line.contains:
            start = structure[1]
            for match in re.finditer(rb"[^\0]+", structure[start:][:proof.CONTAINING_READ]):
                if match[0][:proof.LONGEST_STRING] == view.string[1]:
                    yield head, start + match.start(), view.string[1]
        elif data == view.structures[line.structure]:
            found = proof.bytes_of_smbios(line, view)
            place = line.offset
            if line.kind not in notation.SIZES:
                behind = structure[structure[1]:].split(b"\0")[:max(structure[line.offset] - 1, 0)]
                place = structure[1] + sum(len(text) + 1 for text in behind) if found else None
            yield head, place, found


def of_instance(line, view, machine):
    for number, values in enumerate(machine.companions.get(line.origin[0], []), 1):
        if values == view.companion[1]:
            yield f"{line.origin[0]} {number}, {line.origin[1]}", 0, proof.bytes_of_companion(
                line, view)


def of_record(line, view, machine):
    number = view.fru.record[6] if view.fru.record[3] == 0x11 else 0
    yield (f"FRU device {number}, the record of type {line.record}", line.first,
           proof.bytes_of_record(line, view))


def of_fru(line, view, machine):
    if not line.area:
        yield "FRU device ", None, b""
        return
    data, place = view.fru.areas[line.area], line.first
    if line.field:
        first, english = ipmi_inventory.AREAS[line.area][1], True
        before = ipmi_inventory.fields_of(data, first, english)[0][:line.field - 1]
        place = first + sum(map(len, before))
    yield "FRU device ", place, bytes(proof.bytes_of_fru(line, view))


SAID = {"DotCommand.VEL": of_reply, "TamberCommand.VEL": of_reply, "IPMI.VEL": of_reply,
        "SMBIOS.DMTF": of_structure, "Instance.VEL": of_instance, "IPMI.SDR": of_record,
        "IPMI.FRU": of_fru}


def may_be_said(line, view, machine):
    return SAID[line.source](line, view, machine) if line.source in SAID else [("", None, b"")]


# The bytes that an open range shows may end before the zeros behind the reply.
def agrees(entry, line, said):
    head, place, data = said
    if not entry.source.startswith(head) or entry.more != max(len(entry.data) + entry.more
                                                              - MOST_BYTES, 0):
        return False
    if line.source == "Instance.VEL" or not data:
        return entry.data == data[:MOST_BYTES] if data else not entry.data
    shown = data[:MOST_BYTES]
    if line.last is None:
        return entry.place == place and entry.data.rstrip(b"\0") == shown.rstrip(b"\0")
    return (entry.place, entry.data) == (place, shown)


class Explain(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        printed = subprocess.run([VELHOST, "classes", "--format", "mof"], check=True,
                                 capture_output=True, text=True).stdout
        cls.classes = mofclasses.read_classes(printed)
        cls.lines = {name: cls.lines_of(read) for name, read in cls.classes.items()}

    @staticmethod
    def lines_of(read):
        words = {name: declared.words for name, declared in read.properties.items()}
        return {name: [dataclasses.replace(notation.parse(text), words=words)
                       for text in declared.mapping_strings]
                for name, declared in read.properties.items()}

    def explain(self, path, class_name, name):
        outcome = subprocess.run([VELHOST, "explain", f"{class_name}.{name}", "--machine", path],
                                 capture_output=True, check=False, env=WIDE)
        return parse(outcome.stdout.decode(), {line.text.rstrip(): line.text for line in self.lines[class_name][name]})

    def answers(self, path, class_names):
        """By class and property, but for those that are always the same."""
        topics = [(class_name, name) for class_name in class_names
                  for name, lines in self.lines[class_name].items()
                  if any(line.source != "Constant.VEL" for line in lines)]
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return dict(zip(topics, pool.map(lambda topic: self.explain(path, *topic), topics)))

    def check_instance(self, machine, instance, views, name, answer):
        """Takes the instance's entry out of the answer."""
        holding = [line for line in self.lines[instance.class_name][name]
                   if all(proof.holds(condition, instance) for condition in line.conditions)]
        for line in holding:
            if not answer.entries[line.text] or not any(
                    proof.explains(line, name, instance, view) for view in views):
                continue
            entry = answer.entries[line.text].pop(0)
            said = [said for view in views if proof.explains(line, name, instance, view)
                    for said in may_be_said(line, view, machine)]
            self.assertTrue(any(agrees(entry, line, one) for one in said),
                            f"{line.text}: {entry} is none of {said[:3]}")
            return
        self.fail(f"{instance.text('Name')!r} has no entry for {instance.values[name]!r}")

    def check_property(self, machine, answer, instances, name):
        self.assertEqual([], answer.unconfirmed)
        for line, entries in answer.entries.items():
            answer.entries[line] = [e for e in entries if not e.head.endswith(": not set")]
        for instance, views in instances:
            if name in instance.values:
                self.check_instance(machine, instance, views, name, answer)
        self.assertEqual([], [entry for found in answer.entries.values() for entry in found])

    def instances_by_class(self, machine):
        found = collections.defaultdict(list)
        for instance in machine.instances:
            found[instance.class_name].append((instance, self.views_of(instance, machine)))
        return found

    def views_of(self, instance, machine):
        """Those that explain every value, whatever else is not set."""
        lines = self.lines[instance.class_name]
        outcome = proof.prove(lines, instance, machine)
        if outcome.views:
            return outcome.views
        wanted = proof.holding(lines, instance)
        return [view for view in proof.all_views(lines, wanted, machine)
                if len({name for name, _ in proof.explained(view, wanted, instance)})
                == len(instance.values)]

    def test_what_is_said_of_every_property_is_what_was_read(self):
        paths = [p for p in sorted(MACHINES.glob("*.json")) if witness.is_machine_file(p)]
        seen = 0
        for path in paths:
            machine = evidence.collect(VELHOST, path)
            found = self.instances_by_class(machine)
            for (class_name, name), answer in self.answers(path, found).items():
                with self.subTest(f"{path.name}: {class_name}.{name}"):
                    self.check_property(machine, answer, found[class_name], name)
                    seen += 1
        self.assertGreater(seen, 1000)


if __name__ == "__main__":
    VELHOST, MACHINES = sys.argv[1], pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
