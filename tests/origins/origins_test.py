#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Proves the MappingStrings of the schema by what velhost publishes on every machine file.

  origins_test.py VELHOST MACHINES_FOLDER
"""

import collections
import dataclasses
import pathlib
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "machines")]
import derive_expected as witness  # noqa: E402
import evidence  # noqa: E402
import mofclasses  # noqa: E402
import mutants  # noqa: E402
import notation  # noqa: E402
import proof  # noqa: E402
import rules  # noqa: E402

PROVIDERS = ("SPFirmwareVPD", "IPMIInventory", "SMBIOSInventory")
SERVED_EMPTY = ("KRXSG_PostBIOSVPD", "KRXSG_DeviceDriver", "KRXSG_SystemBIOS")
NEVER_SEEN = {  # classes whose lines no machine file can prove
    "KRXSG_USBTapeFirmwareElement": "the collection does not ask for the firmware of tape drives",
    "KRXSG_USBDevice": "from the devices of the machine that the program runs on",
    "KRXSG_TapeDrive": "from the devices of the machine that the program runs on"}

HAS_LETTERS = "a string that has the name in it is never without letters"
NO_MAKER = "the list of makers ends with six continuation bytes, so the eighth byte names none"
CHECKED = "the collector takes only replies in which byte 8 is zero, and the rule drops zeros"
ONE_MACHINE = "the only machine with this spelling has a level of digits alone"
HAS_NAME = "every adapter of the machine files has a name"
NO_VERSION = "the version of firmware that gives none is not set"
MAIN, BOOT_ROM, DIAGNOSTIC, CKVM = ("KRXSG_SPROMFirmwareVPDMain", "KRXSG_SPROMFirmwareVPDBootROM",
                                    "KRXSG_DiagnosticVPD", "KRXSG_cKVM")
UNNOTICED = [  # class, property, what its line has in it, what is wrong there, why nothing shows it
    (DIAGNOSTIC, "BuildNumber", "with KRX Diagnostics|", "build part or blank", HAS_LETTERS),
    (DIAGNOSTIC, "BuildNumber", "with KRX Preboot Diagnostics|", "build part or blank",
     HAS_LETTERS),
    (DIAGNOSTIC, "BuildNumber", "with $DS |", "build part or blank", HAS_LETTERS),
    (MAIN, "BuildNumber", "KRX Ambrel Management", "letters and digits or blank", HAS_LETTERS),
    (MAIN, "BuildNumber", "KRX Ambrels Management", "letters and digits or blank", HAS_LETTERS),
    (MAIN, "BuildNumber", "KRX Quellon Link", "letters and digits or blank", HAS_LETTERS),
    (MAIN, "BuildNumber", "KRX Torvik Management", "letters and digits or blank", HAS_LETTERS),
    (MAIN, "BuildNumber", "KRX Torviks Management", "letters and digits or blank", HAS_LETTERS),
    (MAIN, "Name", "before -|as", "before - or blank", HAS_LETTERS),
    (MAIN, "Name", "before -|when", "before - or blank", HAS_LETTERS),
    (BOOT_ROM, "Name", "before -|as", "before - or blank", HAS_LETTERS),
    ("KRXSG_Vpd", "Vendor", "bytes 64-71", "bytes 64-70", NO_MAKER),
    ("KRXSG_Vpd", "Vendor", "bytes 64-71", "bytes 64-72", NO_MAKER),
    (CKVM, "Version", "bytes 9-", "bytes 8-", CHECKED),
    (CKVM, "FirmwareVersion", "bytes 9-", "bytes 8-", CHECKED),
    (MAIN, "BuildNumber", "KRX Torviks Management", "level", ONE_MACHINE),
    ("KRXSG_SystemFirmware", "Version", "whole string", "text or blank", NO_VERSION),
    (MAIN, "Name", "Instance.VEL", "text or blank", HAS_NAME),
    (BOOT_ROM, "Name", "Instance.VEL", "text or blank", HAS_NAME)]

Case = collections.namedtuple("Case", "machine instance outcome")


def lines_of(read):
    words = {name: declared.words for name, declared in read.properties.items()}
    return {name: [dataclasses.replace(notation.parse(text), words=words)
                   for text in declared.mapping_strings]
            for name, declared in read.properties.items()}


def with_line(lines, name, number, line):
    """The class's lines with another one in the place of one."""
    changed = list(lines[name])
    changed[number] = line
    return lines | {name: changed}


class Origins(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        printed = subprocess.run([VELHOST, "classes", "--format", "mof"], check=True,
                                 capture_output=True, text=True).stdout
        cls.classes = mofclasses.read_classes(printed)
        cls.lines = {name: lines_of(read) for name, read in cls.classes.items()}
        machines = [evidence.collect(VELHOST, path) for path in sorted(MACHINES.glob("*.json"))
                    if witness.is_machine_file(path)]
        cls.cases = [Case(machine, instance, cls.prove(instance, machine))
                     for machine in machines for instance in machine.instances]
        cls.cases_of_line = collections.defaultdict(list)
        for case in sorted(cls.cases, key=lambda case: len(case.machine.instances)):
            for name, number in case.outcome.lines:
                cls.cases_of_line[case.instance.class_name, name, number].append(case)

    @classmethod
    def prove(cls, instance, machine):
        return proof.prove(cls.lines[instance.class_name], instance, machine)

    def all_lines(self):
        return [(class_name, name, number, line) for class_name, lines in self.lines.items()
                for name, found in lines.items() for number, line in enumerate(found)]

    def filled(self):
        return [read for read in self.classes.values()
                if read.provider in PROVIDERS and read.name not in SERVED_EMPTY]

    def stands(self, class_name, lines, cases):
        return all(proof.still_proven(lines, case.instance, case.machine, case.outcome)
                   for case in cases if case.instance.class_name == class_name)

    def test_every_rule_is_known(self):
        for class_name, name, _, line in self.all_lines():
            if line.rule:
                with self.subTest(f"{class_name}.{name}: {line.text}"):
                    self.assertTrue(callable(rules.rule(line.rule)))

    def test_every_property_of_a_filled_class_has_an_origin(self):
        without = [f"{read.name}.{name}" for read in self.filled()
                   for name in read.properties if not self.lines[read.name][name]]
        self.assertEqual([], without)

    def test_classes_that_are_never_filled_have_neither_origins_nor_instances(self):
        seen = {case.instance.class_name for case in self.cases}
        for name in SERVED_EMPTY:
            self.assertEqual([], [text for lines in self.lines[name].values() for text in lines])
            self.assertNotIn(name, seen)

    def test_every_published_value_comes_from_what_was_sent_and_read(self):
        self.assertTrue(self.cases)
        for case in self.cases:
            with self.subTest(f"{case.machine.name}: {case.instance.class_name} "
                              f"{case.instance.text('Name')!r}"):
                values = case.instance.values
                self.assertEqual({}, {name: values[name] for name in case.outcome.unexplained})

    def test_no_text_is_longer_than_its_bound(self):
        for case in self.cases:
            for name, value in case.instance.values.items():
                bound = self.classes[case.instance.class_name].properties[name].max_len
                if bound and isinstance(value, str):
                    with self.subTest(f"{case.machine.name}: {case.instance.class_name}.{name}"):
                        self.assertLessEqual(len(value), bound)

    def test_every_line_explains_something(self):
        idle = [f"{class_name}.{name}: {line.text}"
                for class_name, name, number, line in self.all_lines()
                if class_name not in NEVER_SEEN
                and not self.cases_of_line[class_name, name, number]]
        self.assertEqual([], idle)

    def test_classes_that_are_never_seen_are_not_seen(self):
        seen = {case.instance.class_name for case in self.cases}
        self.assertEqual(set(), seen & set(NEVER_SEEN))

    def test_a_property_without_its_origins_is_noticed(self):
        for class_name, name in {key[:2] for key, cases in self.cases_of_line.items() if cases}:
            with self.subTest(f"{class_name}.{name}"):
                self.assertFalse(self.stands(class_name, self.lines[class_name] | {name: []},
                                             self.cases))

    def cases_that_may_notice(self, class_name, name, number):
        """Those that the line explains; a complete class is proven by what it has not, too."""
        cases = self.cases_of_line[class_name, name, number]
        if cases and class_name in proof.COMPLETE:
            return [case for case in self.cases if case.instance.class_name == class_name]
        return cases

    def unnoticed(self):
        """(class, property, line, change) of wrong lines that prove everything all the same."""
        for class_name, name, number, line in self.all_lines():
            cases = self.cases_that_may_notice(class_name, name, number)
            for change, wrong in mutants.mutants(line) if cases else ():
                if class_name in proof.COMPLETE and wrong.rule.endswith(" or blank"):
                    continue  # nothing is not set there, and a blank is no value
                if self.stands(class_name, with_line(self.lines[class_name], name, number, wrong),
                               cases):
                    yield class_name, name, line.text, change

    def test_a_wrong_line_is_noticed(self):
        unnoticed, known = [], []
        for class_name, name, text, change in self.unnoticed():
            row = next((row for row in UNNOTICED if row[:2] == (class_name, name)
                        and row[2] in text and row[3] == change), None)
            (known if row else unnoticed).append(
                row or f"{class_name}.{name}: {text}, with {change}")
        self.assertEqual([], unnoticed)
        self.assertEqual(sorted(UNNOTICED), sorted(known))


if __name__ == "__main__":
    VELHOST, MACHINES = sys.argv[1], pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
