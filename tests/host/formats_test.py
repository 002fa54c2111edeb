#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The formats of `velhost query`, read by those for whom they are made: JSON Schema, a JSON parser,
a CSV reader, the OpenMetrics and Prometheus parsers, and promtool where it is installed. All of them
have to say the same of every machine file, and of hostile ones. docs/formats.md names what is printed.

Usage: formats_test.py VELHOST SOURCE-FOLDER
"""
import collections
import csv
import io
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import jsonschema
from prometheus_client import openmetrics, parser as prometheus
import prometheus_client.openmetrics.parser

csv.field_size_limit(sys.maxsize)
VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MACHINES = ROOT / "machines"
SCHEMA = json.loads((ROOT / "schema" / "json" / "inventory.schema.json").read_text())
PAGE = (ROOT / "docs" / "formats.md").read_text(encoding="utf-8")
PROMTOOL = shutil.which("promtool")

FORMATS = ("inventory", "ndjson", "csv", "openmetrics")
COLUMNS = ["machine", "class", "node", "instance", "name", "property", "value", "state", "reason"]
TROUBLE = {"unanswered", "unreadable", "forbidden", "failed"}
# What a terminal obeys or does not show, but for line feeds.
UNSEEN = re.compile("[\0-\x09\x0b-\x1f\x7f-\x9f\xad\u061c\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f"
                    "\ufeff\ufff9-\ufffb\U000e0000-\U000e007f]")

Outcome = collections.namedtuple("Outcome", "status out err")


def velhost(*arguments):
    run = subprocess.run([VELHOST, *arguments], capture_output=True, check=False,
                         stdin=subprocess.DEVNULL)
    return Outcome(run.returncode, run.stdout, run.stderr.decode())


def query(machine, output_format, *more):
    return velhost("query", *more, "--machine", machine, "--format", output_format)


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def node_of(instance):
    if "SourceNode" in instance:
        return instance["SourceNode"]
    label = re.match(r"Node (\d+): ", instance.get("Name") or "")
    return int(label[1]) if label else None


def cell(value):
    """As csv has a value, before anything is put in front of it."""
    if isinstance(value, bool) or value is None:
        return {True: "true", False: "false", None: ""}[value]
    date = re.fullmatch(r"(\d{4})(\d\d)(\d\d)(\d\d)(\d\d)(\d\d)\.000000\+000", str(value))
    if value == "00000000000000.000000+000":  # a date that nobody told
        return ""
    if not date or value.startswith("0" * 8):
        return str(value)
    day, time = "-".join(date.groups()[:3]), ":".join(date.groups()[3:])
    return day if time == "00:00:00" else f"{day} {time}"


def guarded(text):
    return "'" + text if re.match("[ \n]*[-=+@'＝＋－＠]", text) else text


def records(sp):
    """What is asked for before the hardware revision."""
    return [{"sp": sp, "command": command, "reply": [{"zeros": 80}]}
            for command in ("04 03 05 06 01", "04 03 05 06 02", "04 03 05 01 01")]


LEVELLED = {c["name"] for c in json.loads(velhost("classes", "--format", "json").out)
            if {"Version", "FirmwareVersion"} & {p["name"] for p in c["properties"]}}


class FormatsTest(unittest.TestCase):
    maxDiff = None

    def answers(self, machine, *more):
        """The text of each format; a second query gives the same bytes and status."""
        texts = {}
        for name in FORMATS:
            outcome = query(machine, name, *more)
            self.assertEqual(outcome, query(machine, name, *more))
            texts[name] = outcome.out.decode()  # UTF-8, strictly
            self.assertIsNone(UNSEEN.search(texts[name].replace("\r\n", "\n")), name)
        return texts

    def check_all(self, machine, *more):
        texts = self.answers(machine, *more)
        inventory = json.loads(texts["inventory"])
        jsonschema.Draft202012Validator(SCHEMA).validate(inventory)
        self.check_plain(machine, inventory, *more)
        self.check_ndjson(inventory, texts["ndjson"])
        self.check_csv(inventory, texts["csv"])
        self.check_openmetrics(inventory, texts["openmetrics"])
        return inventory

    def check_plain(self, machine, inventory, *more):
        outcome = query(machine, "json", *more)
        plain = json.loads(outcome.out)
        shown = {entry["class"]: entry["instances"] for entry in inventory["classes"]}
        self.assertEqual(plain, {name: shown[name] for name in plain})
        self.assertTrue(all(not shown[name] for name in shown.keys() - plain.keys()))
        if outcome.status != 1:
            troubled = any(entry["state"] in TROUBLE for entry in inventory["classes"])
            self.assertEqual(3 if troubled else 0, outcome.status)

    def check_ndjson(self, inventory, text):
        machine = inventory["machine"]["name"]
        expected = []
        for entry in inventory["classes"]:
            head = {"machine": machine, "class": entry["class"]}
            expected += [{**head, "node": node_of(instance), "properties": instance}
                         for instance in entry["instances"]]
            if not entry["instances"]:
                expected.append({**head, "state": entry["state"], "reason": entry["reason"]})
        lines = text.split("\n")
        self.assertEqual("", lines.pop())
        self.assertEqual([json.dumps(line) for line in expected],
                         [json.dumps(json.loads(line)) for line in lines])

    def check_csv(self, inventory, text):
        expected = []
        for entry in inventory["classes"]:
            end = [entry["state"], entry["reason"] or ""]
            head = [inventory["machine"]["name"], entry["class"]]
            if not entry["instances"]:
                expected.append([*head, "", "", "", "", *end])
            for number, instance in enumerate(entry["instances"], 1):
                node = node_of(instance)
                cells = [*head, "" if node is None else str(node), str(number)]
                rows = instance.items() or [("", "")]
                expected += [[*cells, property_name, cell(value), *end]
                             for property_name, value in rows]
        records = list(csv.reader(io.StringIO(text, newline=""), strict=True))
        self.assertEqual(COLUMNS, records[0])
        self.assertEqual(len(records), len(re.findall(r"\r\n", text)))
        for record in records[1:]:
            del record[4]  # the name, which the program chooses by the schema
        spelt = [[UNSEEN.sub("", guarded(c)) for c in record] for record in expected]
        unspelt = [[re.sub(r"\\(?:[rt]|x[0-9a-f]{2}|u[0-9A-F]{4})", "", c) for c in record]
                   for record in records[1:]]
        self.assertEqual(spelt, unspelt)

    def check_openmetrics(self, inventory, text):
        families = list(openmetrics.parser.text_string_to_metric_families(text))
        self.assertEqual({"gauge"}, {family.type for family in families} or {"gauge"})
        samples = [sample for family in families for sample in family.samples]
        # What the textfile collector reads is the older format.
        self.assertEqual([sample[:3] for sample in samples],
                         [sample[:3] for family in prometheus.text_string_to_metric_families(text)
                          for sample in family.samples])
        keys = [(sample.name, *sorted(sample.labels.items())) for sample in samples]
        self.assertEqual(len(keys), len(set(keys)), "a series stands twice")
        by_name = collections.defaultdict(list)
        for sample in samples:
            by_name[sample.name].append((sample.labels, sample.value))
        self.assertEqual(
            [(entry["class"], len(entry["instances"])) for entry in inventory["classes"]],
            [(labels["class"], value) for labels, value in by_name.pop("krxsg_instances", [])])
        self.assertEqual(
            [(entry["class"], entry["state"], 1) for entry in inventory["classes"]],
            [(labels["class"], labels["state"], value)
             for labels, value in by_name.pop("krxsg_class_state", [])])
        self.check_elements(inventory, by_name.pop("krxsg_element_info", []))
        self.assertEqual({}, by_name)
        self.check_promtool(text)

    def check_elements(self, inventory, elements):
        shown = []
        for labels, value in elements:
            self.assertEqual(["machine", "class", "node", "name", "version", "build"], list(labels))
            self.assertEqual(1, value)
            shown.append((labels["class"], labels["node"], labels["version"], labels["build"]))
        expected = set()
        for entry in inventory["classes"]:
            for instance in entry["instances"]:
                if entry["class"] not in LEVELLED:
                    continue
                node = node_of(instance)
                level = (str(instance.get("Version", "")).rstrip(" ") or instance.get("FirmwareVersion", ""),
                         instance.get("BuildNumber", ""))
                expected.add((entry["class"], "" if node is None else str(node),
                              *(UNSEEN.sub("", text).replace("\n", "").rstrip(" ")[:400]
                                for text in level)))
        unspelt = {(*row[:2], *(re.sub(r"\\(?:[nrt]|x[0-9a-f]{2}|u[0-9A-F]{4})", "", text)[:400]
                                for text in row[2:])) for row in shown}
        self.assertEqual(expected, unspelt)

    def check_promtool(self, text):
        if PROMTOOL is None:
            return
        run = subprocess.run([PROMTOOL, "check", "metrics"], input=text, text=True,
                             capture_output=True, check=False)
        self.assertEqual((0, "", ""), (run.returncode, run.stdout, run.stderr))

    # ---- machines

    def test_the_schema_is_one(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_the_schema_refuses_what_is_no_inventory(self):
        validator = jsonschema.Draft202012Validator(SCHEMA)
        entry = {"class": "A", "collector": "C", "state": "present", "reason": None,
                 "instances": [{"Name": "x"}]}
        good = {"format": "vel-inventory/1", "machine": {"source": "file", "name": "x"},
                "collectors": [{"name": "C", "version": "1", "state": "failed", "reason": "r"}],
                "classes": [entry]}
        validator.validate(good)
        bad_entries = [{"state": "gone"}, {"state": "absent"}, {"instances": []}, {"reason": ""},
                       {"instances": [{"Name": ["x"]}]}, {"instances": [{"N": -1}]}, {"more": 1}]
        bad = [good | {"classes": [entry | change]} for change in bad_entries]
        bad += [good | {"format": "vel-inventory/2"}, good | {"time": 1}, good | {"collectors": None},
                good | {"machine": {"source": "dump", "name": "x"}}]
        bad += [{key: value for key, value in good.items() if key != gone} for gone in good]
        for document in bad:
            with self.subTest(document=document):
                self.assertFalse(validator.is_valid(document))

    def test_every_machine_file(self):
        for file in machine_files():
            with self.subTest(file=file.name):
                self.check_all(file)

    def test_named_classes(self):
        file = MACHINES / "two-nodes.json"
        inventory = self.check_all(file, "KRXSG_cKVM", "KRXSG_Vpd")
        self.assertEqual(["KRXSG_cKVM", "KRXSG_Vpd"], [c["class"] for c in inventory["classes"]])

    def test_output_and_status(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("two-nodes", "sp-silent"):
                for output_format in FORMATS:
                    with self.subTest(machine=name, format=output_format):
                        file = pathlib.Path(folder) / "out"
                        shown = query(MACHINES / f"{name}.json", output_format)
                        written = query(MACHINES / f"{name}.json", output_format, "--output", file)
                        self.assertEqual((shown.status, b"", shown.err), written)
                        self.assertEqual(shown.out, file.read_bytes())
                        self.assertEqual(3 if name == "sp-silent" else 0, shown.status)

    def test_repeat_shows_the_last_request(self):
        again = ("KRXSG_HardwareRevisionLevel", "--repeat", "2", "--reinit")
        commands = [*records(0), {"command": "04 03 05 07", "replies": ["01", "fail"]}]
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "machine.json"
            file.write_text(json.dumps({
                "format": "vel-machine/1", "name": "x",
                "sp": {"kind": "dot-command", "dot_commands": commands}}))
            inventory = self.check_all(file, *again)
            first, last = json.loads(query(file, "trace", *again).out)["queries"]
        self.assertNotEqual(first["instances"], last["instances"])
        self.assertEqual([{name: p["value"] for name, p in i["properties"].items()}
                          for i in last["instances"]], inventory["classes"][0]["instances"])

    def test_bytes_are_added_to_the_trace(self):
        """What the machine file says, and nothing else is different."""
        for file in machine_files():
            with self.subTest(machine=file.name):
                plain, full = query(file, "trace"), query(file, "trace", "--bytes")
                document = json.loads(full.out)
                for sent in (entry for asked in document["queries"] for entry in asked["traffic"]):
                    reply = bytes.fromhex(sent.pop("reply"))
                    self.assertTrue(sent["answered"] or not reply)
                self.assertEqual(json.dumps(json.loads(plain.out)), json.dumps(document))
                self.assertEqual((plain.status, plain.err), (full.status, full.err))

    def test_bytes_are_those_of_the_reply(self):
        commands = [{"command": "04 03 05 06 01", "reply": [{"text": "KRX", "size": 5}, "FF"]},
                    {"command": "04 03 05 06 02", "reply": "0a"},
                    {"command": "04 03 05 07", "replies": ["fail"]}]
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "machine.json"
            file.write_text(json.dumps({"format": "vel-machine/1", "name": "x", "sp": {
                "kind": "dot-command", "dot_commands": commands}}))
            asked, = json.loads(query(file, "trace", "--bytes").out)["queries"]
        got = {entry["command"]: entry["reply"] for entry in asked["traffic"]}
        self.assertEqual(("4B52580000FF", "0A", ""),
                         tuple(got[sent] for sent in ("0403050601", "0403050602", "04030507")))

    def test_a_live_machine_has_its_time(self):
        outcome = velhost("query", "KRXSG_USBDevice", "--format", "openmetrics")
        self.assertIn(outcome.status, (0, 3), outcome.err)
        values = {sample.name: sample.value
                  for family in openmetrics.parser.text_string_to_metric_families(outcome.out.decode())
                  for sample in family.samples}
        self.assertGreaterEqual(values["krxsg_collection_seconds"], 0)
        self.assertGreater(values["krxsg_collection_timestamp_seconds"], 1.7e9)
        self.check_promtool(outcome.out.decode())

    # ---- hostile machines

    def check_machine(self, **members):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "machine.json"
            file.write_text(json.dumps({"format": "vel-machine/1", "name": "x", **members}))
            return self.check_all(file)

    def test_hostile_texts(self):
        texts = ["\x1b[2J\x1b[31m", "a\"b'c", "a\nb\r\nc", "\u2028\u2029\x85", "<script>alert(1)</script>",
                 "=HYPERLINK(\"http://x\",\"y\")", "  +1", "-1", "@x", "'", "＝1", "a,b;c\td", "\\n\\",
                 "{machine=\"y\"} 1\n# EOF", "\ufeff\u202e\U000e0041", "\U0001f5a5", " ", ""]
        devices = [{"DeviceID": str(number), "Description": text}
                   for number, text in enumerate(texts)]
        for name in texts:
            with self.subTest(name=name):
                inventory = self.check_machine(name=name, collectors=["DeviceInventory"],
                                               instances={"KRXSG_USBDevice": devices})
                self.assertEqual(name, inventory["machine"]["name"])
                self.assertEqual(devices, inventory["classes"][-1]["instances"])

    def test_a_long_text(self):
        long = "\"" * 1_000_000
        inventory = self.check_machine(collectors=["DeviceInventory"], instances={
            "KRXSG_USBDevice": [{"DeviceID": "1-1", "Description": long}]})
        self.assertEqual(long, inventory["classes"][-1]["instances"][0]["Description"])

    def test_bytes_that_are_no_text(self):
        reply = ["FF FE 22 0A 5C C3 28", {"zeros": 24}, "02", {"zeros": 8}]
        inventory = self.check_machine(sp={
            "kind": "dot-command", "dot_commands": [{"command": "04 03 05 06 01", "reply": reply}]})
        entry, = [c for c in inventory["classes"] if c["class"] == "KRXSG_SPROMFirmwareVPDMain"]
        self.assertEqual("\ufffd\ufffd\"\n\\\ufffd(", entry["instances"][0]["BuildNumber"])

    def test_nodes(self):
        for count in (0, 1, 8, 255):
            commands = [command for sp in range(count) for command in (
                *records(sp), {"sp": sp, "command": "04 03 05 07", "reply": f"{sp:02X}"})]
            with self.subTest(count=count):
                inventory = self.check_machine(
                    sp={"kind": "dot-command", "count": count, "dot_commands": commands})
                entry, = [c for c in inventory["classes"]
                          if c["class"] == "KRXSG_HardwareRevisionLevel"]
                self.assertEqual([(sp + 1, str(sp)) for sp in range(count)],
                                 [(i["SourceNode"], i["Version"]) for i in entry["instances"]])

    # ---- the page

    def test_the_page_names_each_column_metric_and_format(self):
        names = [*COLUMNS, *FORMATS, "table", "json", "trace", "krxsg_element_info", "krxsg_instances",
                 "krxsg_class_state", "krxsg_collection_seconds", "krxsg_collection_timestamp_seconds"]
        for name in names:
            self.assertIn(f"`{name}`", PAGE)


if __name__ == "__main__":
    unittest.main()
