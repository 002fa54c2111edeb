#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""`velhost diff` and `velhost summary` as people and scripts run them: every machine file against itself,
against what a query wrote of it and against itself in another order; hostile values; many nodes and many
files; documents against their JSON Schemas; pipes that are closed and disks that are full.

Usage: comparison_test.py VELHOST SOURCE-FOLDER MEMORY-LIMIT-IN-MIB (0: none)
"""
import copy
import csv
import io
import json
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

VELHOST, ROOT = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
LIMIT = int(sys.argv.pop(1))
MACHINES = ROOT / "machines"
SCHEMAS = {name: json.loads((ROOT / "schema" / "json" / f"{name}.schema.json").read_text())
           for name in ("diff", "summary", "inventory")}
UNSEEN = re.compile("[\0-\x09\x0b-\x1f\x7f-\x9f\xad\u061c\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f"
                    "\ufeff\ufff9-\ufffb\U000e0000-\U000e007f]")
WIDTH = 80
# Of each kind one whose traces and plain JSON are read too.
WRITTEN = {"two-nodes", "uefi-two-node", "ordinary-server", "sp-silent", "runtime-error", "odd-replies",
           "class-missing", "ckvm", "empty-machine"}
HOSTILE = ["\x1b[2J", "a\"b'c", "a\nb\r\nc", "\u2028\x85", "<script>alert(1)</script>", "=1+1", "@x",
           "a,b;c\td", "\ufeff\u202e", "\U0001f5a5", "", " ", "x" * 20_000]


def velhost(*arguments, **more):
    return subprocess.run([VELHOST, *map(str, arguments)], capture_output=True, check=False,
                          **({"stdin": subprocess.DEVNULL} | more))


def machine_files():
    return sorted(file for file in MACHINES.glob("*.json") if file.name != "machine.schema.json")


def inventory(file):
    return json.loads(velhost("query", "--machine", file, "--format", "inventory").stdout)


class Folder(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def put(self, name, document):
        file = self.folder / name
        file.write_text(document if isinstance(document, str) else json.dumps(document))
        return file

    def check_lines(self, text):
        self.assertIsNone(UNSEEN.search(text))
        for line in text.split("\n"):
            self.assertLessEqual(len(line), WIDTH, line)

    def diff(self, old, new, status):
        """The difference document; the table has the same status."""
        run = velhost("diff", old, new, "--format", "json")
        self.assertEqual((status, b""), (run.returncode, run.stderr), run.stdout[:2000])
        document = json.loads(run.stdout)
        jsonschema.Draft202012Validator(SCHEMAS["diff"]).validate(document)
        self.assertEqual(status == 1, document["different"])
        self.assertEqual(document["different"], any(c["different"] for c in document["classes"]))
        if document["classes"]:
            table = velhost("diff", old, new)
            self.assertEqual((status, b""), (table.returncode, table.stderr))
            self.check_lines(table.stdout.decode())
        return {entry["class"]: entry for entry in document["classes"]}

    def summary(self, *files, status=0):
        run = velhost("summary", *files, "--format", "json")
        self.assertEqual(status, run.returncode, run.stderr)
        document = json.loads(run.stdout)
        jsonschema.Draft202012Validator(SCHEMAS["summary"]).validate(document)
        table = velhost("summary", *files)
        self.assertEqual(status, table.returncode)
        self.check_lines(table.stdout.decode())
        records = list(csv.reader(io.StringIO(
            velhost("summary", *files, "--format", "csv").stdout.decode(), newline=""), strict=True))
        self.assertEqual(["model", "class", "name", "version", "build", "state", "odd", "machines",
                          "named"], records[0])
        levels = [(e["model"], e["class"], l["machines"], l["odd"])
                  for e in document["elements"] for l in e["levels"]]
        self.assertEqual(len(records) - 1, len(levels) + len(document["untold"]))
        self.assertEqual([(machines, "yes" if odd else "no") for *_, machines, odd in levels],
                         [(int(r[7]), r[6]) for r in records[1:] if not r[5]])
        return document


class Diff(Folder):
    def test_every_machine_is_the_same_as_itself_and_as_what_was_written_of_it(self):
        for file in machine_files():
            with self.subTest(file.name):
                self.diff(file, file, 0)
                outputs = ("inventory", "trace", "json") if file.stem in WRITTEN else ("inventory",)
                for output in outputs:
                    written = self.folder / "written.json"
                    written.write_bytes(
                        velhost("query", "--machine", file, "--format", output).stdout)
                    self.diff(written, file, 0)

    def test_order_makes_no_difference(self):
        shuffled = random.Random(5)
        for file in machine_files():
            with self.subTest(file.name):
                document = inventory(file)
                old = self.put("old.json", document)
                shuffled.shuffle(document["classes"])
                for entry in document["classes"]:
                    shuffled.shuffle(entry["instances"])
                    entry["instances"] = [dict(shuffled.sample(list(i.items()), len(i)))
                                          for i in entry["instances"]]
                self.diff(old, self.put("new.json", document), 0)

    def test_commands_of_the_sps_in_another_order(self):
        document = json.loads((MACHINES / "eight-nodes.json").read_text())
        document["sp"]["dot_commands"].reverse()
        self.diff(MACHINES / "eight-nodes.json", self.put("new.json", document), 0)

    def test_nodes_in_another_order_are_the_same(self):
        document = inventory(MACHINES / "eight-nodes.json")
        for entry in document["classes"]:
            entry["instances"].sort(key=lambda i: -i.get("SourceNode", 0))
        self.diff(MACHINES / "eight-nodes.json", self.put("new.json", document), 0)

    def test_nodes_that_have_other_numbers_moved_and_did_not_change(self):
        for machine, exchanged in (("two-nodes", {1: 2, 2: 1}),
                                   ("eight-nodes", {1: 3, 3: 8, 8: 1})):
            with self.subTest(machine):
                document = inventory(MACHINES / f"{machine}.json")
                old = self.put("old.json", document)
                for entry in document["classes"]:
                    for instance in entry["instances"]:
                        self.renumber(instance, exchanged)
                for entry in self.diff(old, self.put("new.json", document), 1).values():
                    self.assertEqual(([], [], []),
                                     (entry["changed"], entry["went"], entry["came"]), entry["class"])
                    self.assertTrue(entry["moved"])

    @staticmethod
    def renumber(instance, exchanged):
        """In every place that has the number of a node."""
        if "SourceNode" in instance:
            instance["SourceNode"] = exchanged.get(instance["SourceNode"], instance["SourceNode"])
        for name, value in instance.items():
            if isinstance(value, str):
                instance[name] = re.sub(
                    r"\b(Node|SP) (\d+)\b",
                    lambda m: f"{m[1]} {exchanged.get(int(m[2]), int(m[2]))}", value)

    def test_dimms_that_all_changed_places_moved_and_nothing_else(self):
        document = inventory(MACHINES / "eight-nodes.json")
        old = self.put("old.json", document)
        entry, = (c for c in document["classes"] if c["class"] == "KRXSG_Vpd")
        dimms = [i for i in entry["instances"] if "DIMM" in i["Name"]]
        self.assertEqual(512, len(dimms))
        places = [(i["Name"], i["IdentifyingNumber"], i["Location"]) for i in dimms]
        for dimm, (name, number, location) in zip(dimms, places[1:] + places[:1]):
            own = dimm["Location"].rsplit(" ", 1)[1]
            dimm |= {"Name": name, "IdentifyingNumber": number,
                     "Location": location.rsplit(" ", 1)[0] + " " + own}
        found = self.diff(old, self.put("new.json", document), 1)
        self.assertEqual(["KRXSG_Vpd"], list(found))
        moved = found["KRXSG_Vpd"].pop("moved")
        self.assertEqual([(a[0], b[0], {}) for a, b in zip(places, places[1:] + places[:1])],
                         [(m["old"]["name"], m["new"]["name"], m["properties"]) for m in moved])
        for what in ("changed", "went", "came"):
            self.assertEqual([], found["KRXSG_Vpd"][what], what)

    def test_a_level_that_changed(self):
        document = json.loads((MACHINES / "two-nodes.json").read_text())
        text = json.dumps(document).replace("1.08 [ABC123]", "1.09 [ABC200]")
        found = self.diff(MACHINES / "two-nodes.json", self.put("new.json", text), 1)
        self.assertEqual(["KRXSG_SystemBIOSElement"], list(found))
        self.assertEqual(
            [{"name": f"Node {node} : System BIOS", "keys": {"SourceNode": node},
              "properties": {"Version": {"old": "108", "new": "109"},
                             "BuildNumber": {"old": "ABC123", "new": "ABC200"}}} for node in (1, 2)],
            found["KRXSG_SystemBIOSElement"]["changed"])

    def test_the_table(self):
        new = json.dumps({"KRXSG_Vpd": [{"Name": "DIMM 2", "PartNumber": "P", "SerialNumber": "A"},
                                        {"Name": "DIMM 4", "PartNumber": "Q", "SerialNumber": "D"}],
                          "KRXSG_cKVM": []})
        old = json.dumps({"format": "vel-inventory/1", "machine": {"source": "live", "name": "srv1"},
                          "collectors": [], "classes": [
            {"class": "KRXSG_Vpd", "collector": None, "state": "partial",
             "reason": "slot 3 is empty", "instances": [
                {"Name": "DIMM 1", "PartNumber": "P", "SerialNumber": "A"},
                {"Name": "DIMM 3", "PartNumber": "P", "SerialNumber": "C"},
                {"Name": "DIMM 4", "PartNumber": "P", "SerialNumber": "D"}]},
            {"class": "KRXSG_cKVM", "collector": None, "state": "unanswered",
             "reason": "the BMC did not answer within 5 s", "instances": []}]})
        self.put("old.json", old)
        self.put("new.json", new)
        run = velhost("diff", "old.json", "new.json", cwd=self.folder)
        self.assertEqual((1, b""), (run.returncode, run.stderr))
        self.assertEqual("""\
Old  srv1 (old.json)
New  new.json (new.json)

KRXSG_Vpd
  old  partial, 3 instances: slot 3 is empty
  new  present, 2 instances
  changed  DIMM 4
    PartNumber  P -> Q
  moved    DIMM 1 -> DIMM 2
  went     DIMM 3: part P, serial C

Cannot be compared:
KRXSG_cKVM
  old  unanswered: the BMC did not answer within 5 s
  new  absent: the file does not tell why

1 changed, 1 moved, 1 went.
""", run.stdout.decode())

    def test_what_did_not_answer_is_not_gone(self):
        found = self.diff(MACHINES / "two-nodes.json", MACHINES / "sp-silent.json", 1)
        entry = found["KRXSG_SPROMFirmwareVPDBootROM"]
        self.assertEqual((True, False, "present", "unanswered", []),
                         (entry["different"], entry["compared"], entry["old"]["state"],
                          entry["new"]["state"], entry["went"]))
        table = velhost("diff", MACHINES / "ordinary-server.json",
                        MACHINES / "ordinary-server-silent-bmc.json").stdout.decode()
        self.assertTrue(table.endswith("\n\n3 classes in another state.\n"), table)

    def test_hostile_values(self):
        def plain(text):
            return {"KRXSG_Vpd": [{"Name": text, "PartNumber": text}],
                    "KRXSG_SystemBIOSElement": [{"SourceNode": 1, "Version": text}],
                    text: [{text: text}]}
        for text in HOSTILE:
            with self.subTest(text[:20]):
                old = self.put("old.json", plain(text))
                new = self.put("new.json", plain(text + "2"))
                found = self.diff(old, new, 1)
                self.assertEqual({"Version": {"old": text, "new": text + "2"}},
                                 found["KRXSG_SystemBIOSElement"]["changed"][0]["properties"])
                self.diff(old, old, 0)

    def test_a_long_text(self):
        old = self.put("old.json", {"KRXSG_Vpd": [{"Name": "x" * 10_000_000}]})
        new = self.put("new.json", {"KRXSG_Vpd": [{"Name": "x" * 10_000_000, "Vendor": "y"}]})
        found = self.diff(old, new, 1)
        self.assertEqual({"Vendor": {"old": None, "new": "y"}},
                         found["KRXSG_Vpd"]["changed"][0]["properties"])

    def test_nodes(self):
        for count in (0, 1, 8, 255):
            with self.subTest(count):
                document = {"KRXSG_SystemBIOSElement": [
                    {"SourceNode": node + 1, "Version": "1"} for node in range(count)]}
                old = self.put("old.json", document)
                for instance in document["KRXSG_SystemBIOSElement"]:
                    instance["Version"] = "2"
                document["KRXSG_SystemBIOSElement"].reverse()
                found = self.diff(old, self.put("new.json", document), 1 if count else 0)
                changed = found.get("KRXSG_SystemBIOSElement", {"changed": []})["changed"]
                self.assertEqual(list(range(1, count + 1)), [c["keys"]["SourceNode"] for c in changed])

    def test_standard_input(self):
        file = MACHINES / "two-nodes.json"
        with file.open() as stream:
            run = velhost("diff", "-", file, stdin=stream)
        self.assertEqual((0, b""), (run.returncode, run.stderr))
        self.assertIn(b"(standard input)", run.stdout)
        twice = velhost("diff", "-", "-")
        self.assertEqual((2, b"", b"velhost: standard input cannot be both files\n"),
                         (twice.returncode, twice.stdout, twice.stderr))

    def test_trouble_is_told_in_a_line(self):
        good = MACHINES / "two-nodes.json"
        cases = [("nothing there", "none.json", None, "none.json: cannot be read: "),
                 ("no JSON", "bad.json", "{", "bad.json:1:"),
                 ("no format", "bad.json", "{}\n5", "bad.json:2:1: "),
                 ("another format", "bad.json", '{"format": "x"}', "bad.json: /format: must be one of "),
                 ("a bad machine", "bad.json", '{"format": "vel-machine/1"}', "bad.json: /name: is missing"),
                 ("a bad value", "bad.json", '{"KRXSG_Vpd": [{"Name": 5}]}',
                  "bad.json: /KRXSG_Vpd/0/Name: must be a text")]
        for what, name, text, complaint in cases:
            with self.subTest(what):
                if text is not None:
                    self.put(name, text)
                for files in ((self.folder / name, good), (good, self.folder / name)):
                    run = velhost("diff", *files)
                    self.assertEqual((2, b"", 1), (run.returncode, run.stdout, run.stderr.count(b"\n")))
                    self.assertIn(complaint, run.stderr.decode())

    def test_wrong_use(self):
        for words in (["diff"], ["diff", "a"], ["diff", "a", "b", "c"], ["summary"],
                      ["diff", "a", "b", "--format", "csv"], ["summary", "a", "--format", "trace"]):
            with self.subTest(words):
                run = velhost(*words)
                self.assertEqual((2, b"", 1), (run.returncode, run.stdout, run.stderr.count(b"\n")))

    def test_an_output_that_cannot_be_written(self):
        file = MACHINES / "two-nodes.json"
        for words in (["diff", file, file], ["summary", file]):
            with self.subTest(words[0]), open("/dev/full", "wb") as full:
                run = subprocess.run([VELHOST, *words], stdout=full, stderr=subprocess.PIPE, check=False)
                self.assertEqual((2, 1), (run.returncode, run.stderr.count(b"\n")), run.stderr)
            with self.subTest(words[0]):
                pipe = subprocess.run(
                    ["bash", "-c", '"$@" | true; echo "${PIPESTATUS[0]}"', "bash", VELHOST,
                     *words], capture_output=True, check=False, text=True)
                self.assertIn(pipe.stdout, ("2\n", "0\n", "141\n"))


class Summary(Folder):
    def server(self, name, version, **more):
        return self.put(f"{name}.json", {
            "format": "vel-inventory/1", "machine": {"source": "live", "name": name}, "collectors": [],
            "classes": [{"class": "KRXSG_SystemBIOSElement", "collector": None, "state": "present",
                         "reason": None, "instances": [
                             {"SourceNode": 1, "Name": "UEFI", "Version": version,
                              "MachineTypeModel": "5020AC1"}]}]} | more)

    def test_which_servers_have_the_old_firmware(self):
        files = [self.server(f"srv{i}", "103" if i in (3, 7) else "104") for i in range(10)]
        document = self.summary(*files)
        self.assertEqual((10, 0), (document["machines"], document["unread_files"]))
        element, = document["elements"]
        self.assertEqual([("104", 8, False), ("103", 2, True)],
                         [(l["version"], l["machines"], l["odd"]) for l in element["levels"]])
        self.assertEqual(["srv3", "srv7"], [n["machine"] for n in element["levels"][1]["named"]])
        table = velhost("summary", *files)
        self.assertEqual("""\
5020AC1
  KRXSG_SystemBIOSElement, UEFI
         104, 8 machines: srv0 (node 1); srv1 (node 1); srv2 (node 1) and 5 more
    odd  103, 2 machines: srv3 (node 1); srv7 (node 1)

10 machines, 1 odd level.
""", table.stdout.decode())

    def test_every_kind_of_file(self):
        machine = MACHINES / "uefi-two-node.json"
        files = [machine, MACHINES / "qemu-q35.dmi"]
        for output in ("inventory", "trace", "json"):
            file = self.folder / f"{output}.json"
            file.write_bytes(velhost("query", "--machine", machine, "--format", output).stdout)
            files.append(file)
        document = self.summary(*files)
        self.assertEqual(5, document["machines"])
        bios, = (e for e in document["elements"]
                 if (e["model"], e["class"]) == ("5020AC1", "KRXSG_SystemBIOSElement"))
        self.assertEqual([("104", "KRE104C", 4, 8)],
                         [(l["version"], l["build"], l["machines"], l["instances"]) for l in bios["levels"]])

    def test_all_machines(self):
        document = self.summary(*machine_files())
        self.assertEqual(len(machine_files()), document["machines"])
        self.assertTrue(any(u["state"] == "unanswered" for u in document["untold"]))

    def test_a_bad_file_keeps_no_other_from_being_summed_up(self):
        bad = self.put("bad.json", "{")
        run = velhost("summary", bad, self.server("a", "1"), self.folder / "none.json")
        self.assertEqual(2, run.returncode)
        lines = run.stderr.decode().splitlines()
        self.assertEqual(2, len(lines))
        self.assertIn("bad.json:1:", lines[0])
        self.assertIn("none.json: cannot be read", lines[1])
        self.assertIn(b"1 machine, 0 odd levels; 2 files could not be read.", run.stdout)
        self.assertEqual(2, self.summary(bad, bad, status=2)["unread_files"])

    def test_hostile_values(self):
        files = [self.server(f"srv{i}", text) for i, text in enumerate(HOSTILE)]
        files += [self.put(f"name{i}.json", {"format": "vel-inventory/1", "machine":
                  {"source": "live", "name": text}, "collectors": [], "classes": [
                      {"class": text or "x", "collector": None, "state": "present", "reason": None,
                       "instances": [{"Name": text, "Version": "1"}]}]})
                  for i, text in enumerate(HOSTILE)]
        document = self.summary(*files)
        self.assertEqual(len(files), document["machines"])
        for text in json.dumps(document, ensure_ascii=False).split('"'):
            self.assertLess(len(text), 1000)

    def test_nodes(self):
        for count in (0, 1, 8, 255):
            with self.subTest(count):
                file = self.put("nodes.json", {"KRXSG_SystemBIOSElement": [
                    {"SourceNode": node + 1, "Name": f"Node {node + 1} : UEFI", "Version": "1"}
                    for node in range(count)]})
                levels = [l for e in self.summary(file)["elements"] for l in e["levels"]]
                self.assertEqual([list(range(1, count + 1))] if count else [],
                                 [l["named"][0]["nodes"] for l in levels])

    def test_many_files_are_summed_up_in_little_memory(self):
        document = inventory(MACHINES / "two-nodes.json")
        files = []
        for i in range(2000):
            document["machine"]["name"] = f"srv{i}"
            files.append(self.put(f"{i}.json", document))
        limit = f"ulimit -v {LIMIT * 1024} && " if LIMIT else ""
        run = subprocess.run(["bash", "-c", limit + 'exec "$@"', "bash", VELHOST, "summary", *files],
                             capture_output=True, check=False)
        self.assertEqual((0, b""), (run.returncode, run.stderr))
        self.assertIn(b"\n2000 machines, ", run.stdout)
        self.assertLess(len(run.stdout), 10_000)


class Schemas(unittest.TestCase):
    def test_they_are_schemas(self):
        for schema in SCHEMAS.values():
            jsonschema.Draft202012Validator.check_schema(schema)

    def test_they_refuse(self):
        side = {"file": "a", "machine": {"source": "file", "name": "a"}}
        good = {"format": "vel-diff/1", "old": side, "new": side, "different": False, "classes": []}
        entry = {"class": "C", "old": None, "new": None, "different": True, "compared": True,
                 "changed": [], "moved": [], "went": [], "came": []}
        validator = jsonschema.Draft202012Validator(SCHEMAS["diff"])
        validator.validate(good | {"classes": [entry]})
        for bad in (good | {"format": "x"}, good | {"more": 1}, good | {"classes": [entry | {"old": 1}]},
                    good | {"classes": [entry | {"compared": False, "came": [
                        {"name": "x", "properties": {}}]}]},
                    copy.deepcopy(good) | {"old": {"file": "a"}}):
            self.assertFalse(validator.is_valid(bad), bad)
        summary = {"format": "vel-summary/1", "machines": 0, "unread_files": 0, "elements": [],
                   "untold": []}
        validator = jsonschema.Draft202012Validator(SCHEMAS["summary"])
        validator.validate(summary)
        for bad in (summary | {"machines": -1}, summary | {"elements": [{}]}, summary | {"format": "x"}):
            self.assertFalse(validator.is_valid(bad), bad)


if __name__ == "__main__":
    unittest.main()
