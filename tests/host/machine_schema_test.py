#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The JSON Schema of machine files and the program agree on what a machine file is.

Usage: machine_schema_test.py VELHOST MACHINES-FOLDER
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

VELHOST, MACHINES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
SCHEMA = json.loads((MACHINES / "machine.schema.json").read_text())
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)

JSON_TYPES = {
    "string": {"type": "string"},
    "boolean": {"type": "boolean"},
    "uint8": {"$ref": "#/$defs/uint8"},
    "uint16": {"$ref": "#/$defs/uint16"},
    "uint64": {"$ref": "#/$defs/uint64"},
    "datetime": {"$ref": "#/$defs/datetime"},
}


def without_comments(text):
    """Comments go, texts that look like them stay."""
    token = r'"(?:\\.|[^"\\])*"|//[^\n]*|/\*.*?\*/'
    return re.sub(token, lambda m: m[0] if m[0][0] == '"' else " ", text, flags=re.DOTALL)


def machine(**members):
    return {"format": "vel-machine/1", "name": "x", **members}


def smbios(*structures, **members):
    return machine(smbios={"structures": list(structures), **members})


def sp(**members):
    return machine(sp=members)


def dot(**members):
    return sp(dot_commands=[{"command": "04 03", "reply": "00", **members}])


def instance(class_name, **properties):
    return machine(instances={class_name: [properties]})


def fault(**members):
    return machine(faults=[{"operation": "set_property", **members}])


GOOD = [
    machine(),
    machine(description="", machine_type="5010", missing_classes=["KRXSG_Vpd"]),
    machine(**{"$schema": "https://example.org/machine.schema.json"}),
    machine(collectors=["DeviceInventory"], instances={"KRXSG_TapeDrive": []}),
    smbios({"type": 0, "handle": 65535, "data": "01 02", "strings": ["a"], "status": -1}),
    smbios({"type": 127}, {"raw": "", "status": 3}, end_status=-1, load_status=1),
    smbios({"type": 1, "data": ["00", {"text": "a", "size": 2}, {"text": "b"}, {"zeros": 0}]}),
    machine(smbios={}),
    machine(sp={}),
    sp(kind="tamber", count=-1, bmc_nodes=255, latency_us=0, components={"04 03 05 0B": -1}),
    sp(components={" 0403  050b ": 1024}),
    dot(sp=-1, data="", length=-2147483648),
    sp(dot_commands=[{"command": "", "replies": ["fail", "", [{"zeros": 1}]]}]),
    sp(dot_commands=[{"command": [], "fail": True}]),
    sp(tamber_commands=[{"command": "01 F1 F1 0F", "reply": "000000"}]),
    sp(tamber_commands=[{"command": ["01F1", {"zeros": 2}], "fail": True, "data": "01"}]),
    sp(count=255, components={"04 03 05 0B": 255, "04 03 05 0C": 2, "04 03 05 0E": -1}),
    sp(ipmi_commands=[{"request": "", "reply": "", "length": 5}]),
    instance("KRXSG_SystemBIOSElement", SourceNode=255, TargetOperatingSystem=65535,
             LoadedEndingAddress=18446744073709551615, PrimaryBIOS=False, Version="",
             ReleaseDate="20070315000000.000000-060"),
    instance("KRXSG_USBDevice"),
    fault(property="Vendor"),
    fault(**{"class": "KRXSG_Vpd", "property": "Vendor", "nth": 1, "throw": "runtime_error"}),
    machine(faults=[{"operation": "get_class", "throw": "TVELException"}]),
]

# What both refuse.
BAD = [
    [], {}, 7,
    {"format": "vel-machine/1"}, {"name": "x"}, {"format": "vel-machine/2", "name": "x"},
    machine(name=1), machine(description=None), machine(machine_type=5010), machine(smbus={}),
    machine(**{"$schema": {}}), machine(schema="machine.schema.json"),
    machine(smbios=None), machine(sp=[]), machine(instances=[]), machine(faults={}),
    machine(missing_classes=["KRXSG_None"]), machine(missing_classes="KRXSG_Vpd"),
    smbios(end_status=0), smbios(end_status=1.5), smbios(load_status=2147483648), smbios(table=1),
    smbios(*[{"raw": ""}] * 65537),
    machine(smbios={"dump": "a.dmi", "structures": []}), machine(smbios={"dump": 1}),
    smbios({}), smbios(5), smbios({"type": 256}), smbios({"type": -1}), smbios({"data": "00"}),
    smbios({"type": 1, "handle": 65536}), smbios({"type": 1, "status": "0"}),
    smbios({"type": 1, "data": "012"}), smbios({"type": 1, "data": "0 1"}),
    smbios({"type": 1, "data": "0G"}), smbios({"type": 1, "data": "01\t02"}),
    smbios({"type": 1, "data": "01\n"}), smbios({"type": 1, "data": [1]}),
    smbios({"type": 1, "data": [{}]}), smbios({"type": 1, "data": [{"zeros": -1}]}),
    smbios({"type": 1, "data": [{"zeros": 1, "text": "a"}]}),
    smbios({"type": 1, "data": [{"zeros": 1, "size": 1}]}), smbios({"type": 1, "data": [["00"]]}),
    smbios({"type": 1, "strings": [""]}), smbios({"type": 1, "strings": ["a\0"]}),
    smbios({"type": 1, "strings": "a"}), smbios({"type": 1, "raw": "00"}),
    smbios({"raw": "00", "handle": 1}), smbios({"raw": "00", "data": ""}),
    smbios({"raw": "00", "strings": []}), smbios({"type": 1, "string": []}),
    sp(kind="bmc"), sp(answers=1), sp(count=256), sp(bmc_nodes=256), sp(bmc_nodes=-1),
    sp(latency_us=-1), sp(nodes=1), sp(bmc="no"), sp(command_list=None),
    sp(components={"040305": 1}), sp(components={"04 03 05 0B 01": 1}),
    sp(components={"04 03 05 0B": 1025}),
    sp(components={"04 03 05 0B": "1"}), sp(components={"04 03 05 0 B": 1}),
    dot(replies=["00"]), dot(fail=True), dot(length=2147483648), dot(sp="0"), dot(request="00"),
    dot(reply="fail"), dot(reply=None), dot(command="4"), dot(data=1),
    sp(dot_commands=[{"command": "04"}]), sp(dot_commands=[{"reply": "04"}]),
    sp(dot_commands=[{"command": "04", "replies": []}]),
    sp(dot_commands=[{"command": "04", "replies": ["failed"]}]),
    sp(dot_commands=[{"command": "04", "fail": False}]),
    sp(tamber_commands=[{"command": "01 F1 F1", "reply": ""}]),
    sp(tamber_commands=[{"command": "01 F1 F1 0F"}]),
    sp(tamber_commands=[{"command": "01 F1 F1 0F", "reply": "", "sp": 0}]),
    sp(ipmi_commands=[{"request": "01"}]), sp(ipmi_commands=[{"reply": "01"}]),
    sp(ipmi_commands=[{"request": "01", "reply": "", "data": ""}]),
    sp(ipmi_commands=[{"request": "01", "reply": "", "fail": True}]),
    instance("KRXSG_None"), instance("KRXSG_USBDevice", Colour="red"),
    instance("KRXSG_USBDevice", Description=5), instance("KRXSG_USBDevice", Description=None),
    instance("KRXSG_QLA_ComputerSystem", SourceNode=256),
    instance("KRXSG_QLA_ComputerSystem", SourceNode="1"),
    instance("KRXSG_SystemBIOSElement", TargetOperatingSystem=65536),
    instance("KRXSG_SystemBIOSElement", LoadedEndingAddress=18446744073709551616),
    instance("KRXSG_SystemBIOSElement", PrimaryBIOS=1),
    instance("KRXSG_SystemBIOSElement", ReleaseDate="2007-03-15"),
    machine(faults=[{}]), fault(operation="delete"), fault(nth=0), fault(nth=-1),
    fault(throw="std::runtime_error"), fault(when=1), fault(property="Colour"),
    fault(**{"class": "KRXSG_None"}), fault(**{"class": "KRXSG_Vpd", "property": "Checksum"}),
    fault(operation="get_class", property="Name"),
    fault(operation="add_to_class", property="Name"),
]

# What a schema cannot see and the program refuses.
BAD_FOR_THE_PROGRAM = [
    machine(smbios={"dump": "none.dmi"}),
    smbios({"type": 1, "data": [{"text": "abc", "size": 2}]}),
    smbios({"type": 1, "data": [{"zeros": 252}]}),
    sp(components={"04 03 05 0B": 1, "0403050b": 1}),
    sp(count=255, components={"04 03 05 0B": 1024, "04 03 05 0C": 5}),
    dot(reply=[{"zeros": 1048576}] * 65),
    sp(tamber_commands=[{"command": [{"zeros": 5}], "reply": ""}]),
]


class MachineSchemaTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def check(self, document):
        file = self.folder / "machine.json"
        file.write_text(json.dumps(document))
        return subprocess.run([VELHOST, "check", file], capture_output=True, check=False)

    def test_schema_is_a_schema(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_good_documents(self):
        for document in GOOD:
            with self.subTest(document=document):
                VALIDATOR.validate(document)
                self.assertEqual(b"", self.check(document).stderr)

    def test_bad_documents(self):
        for document in BAD:
            with self.subTest(document=document):
                self.assertFalse(VALIDATOR.is_valid(document))
                self.assertEqual(2, self.check(document).returncode)

    def test_what_a_schema_cannot_see(self):
        for document in BAD_FOR_THE_PROGRAM:
            with self.subTest(document=document):
                VALIDATOR.validate(document)
                self.assertEqual(2, self.check(document).returncode)

    def test_every_machine_file(self):
        for file in sorted(MACHINES.rglob("*.json")):
            document = json.loads(without_comments(file.read_text()))
            if not isinstance(document, dict) or document.get("format") != "vel-machine/1":
                continue
            with self.subTest(file=file.name):
                VALIDATOR.validate(document)
                result = subprocess.run([VELHOST, "check", file], capture_output=True, check=False)
                self.assertEqual(b"", result.stderr)

    def test_classes_are_those_of_the_namespace(self):
        output = subprocess.check_output([VELHOST, "classes", "--format", "json"])
        expected = {
            c["name"]: {p["name"]: JSON_TYPES[p["type"]] for p in c["properties"]}
            for c in json.loads(output)
        }
        classes = SCHEMA["$defs"]["classes"]["properties"]
        self.assertEqual(expected, {n: c["items"]["properties"] for n, c in classes.items()})
        self.assertTrue(all(not c["items"]["additionalProperties"] for c in classes.values()))


if __name__ == "__main__":
    unittest.main()
