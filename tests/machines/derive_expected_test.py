#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the second witness by the documents written by hand, and that no derived one is stale."""

import contextlib
import io
import json
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import derive_expected as witness  # noqa: E402
import make_eight_nodes  # noqa: E402

MACHINES = pathlib.Path(__file__).resolve().parents[2] / "machines"


def machine_files():
    return sorted(path for path in MACHINES.glob("*.json") if witness.is_machine_file(path))


def in_order(value):
    """Objects as lists of pairs, so that the order of properties counts."""
    if isinstance(value, dict):
        return [(key, in_order(item)) for key, item in value.items()]
    return [in_order(item) for item in value] if isinstance(value, list) else value


class ExpectedDocuments(unittest.TestCase):
    maxDiff = None

    def test_the_script_agrees_with_the_hand(self):
        for name in sorted(witness.HAND_WRITTEN):
            with self.subTest(name):
                path = MACHINES / f"{name}.json"
                by_hand = json.loads(witness.expected_path(path).read_text(encoding="utf-8"))
                self.assertEqual(in_order(by_hand), in_order(witness.derive(path)))

    def test_no_derived_document_is_stale(self):
        for path in machine_files():
            if path.stem not in witness.HAND_WRITTEN:
                with self.subTest(path.name):
                    text = witness.expected_path(path).read_text(encoding="utf-8")
                    self.assertEqual(text, witness.layout(witness.derive(path)))

    def test_no_document_of_two_requests_is_stale_or_left_over(self):
        present = {path.name.removesuffix(".reinit.expected.json")
                   for path in MACHINES.glob("*.reinit.expected.json")}
        self.assertEqual(witness.REINIT, present)
        for name in sorted(witness.REINIT):
            with self.subTest(name):
                path = MACHINES / f"{name}.json"
                text = witness.expected_path(path, reinit=True).read_text(encoding="utf-8")
                self.assertEqual(text, witness.layout(witness.derive(path, 2, True)))

    def test_the_eight_node_machine_is_what_its_script_prints(self):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            make_eight_nodes.main()
        text = (MACHINES / "eight-nodes.json").read_text(encoding="utf-8")
        self.assertEqual(text, printed.getvalue())


class CountsKnownBeforehand(unittest.TestCase):
    """A few sums that a person can do without reading a document."""

    def commands(self, name, repeat=1, reinit=False):
        queries = witness.derive(MACHINES / f"{name}.json", repeat, reinit)["queries"]
        return [[entry.get("command") for entry in query["traffic"]] for query in queries]

    def test_thirty_empty_commands_after_a_double_failure_and_61_after_a_second_init(self):
        first, second = self.commands("both-sends-fail", 2, True)
        self.assertEqual((2 * 30, 2 * 61), (first.count(""), second.count("")))

    def test_eight_nodes_publish_512_dimms_and_zero_follows_255(self):
        document = witness.derive(MACHINES / "eight-nodes.json")
        names = [instance["properties"]["Name"]["value"]
                 for instance in document["queries"][0]["instances"]
                 if instance["class"] == "KRXSG_Vpd" and "DIMM" in
                 instance["properties"]["Name"]["value"]]
        self.assertEqual(512, len(names))
        self.assertEqual(["Node 4: DIMM 255", "Node 4: DIMM 0", "Node 5: DIMM 1"], names[254:257])

    def test_a_request_without_a_new_init_collects_nothing(self):
        _, second = witness.derive(MACHINES / "two-nodes.json", 2)["queries"]
        self.assertEqual(([], [], []),
                         (second["core_log"], second["failure_log"], second["traffic"]))
        self.assertTrue(second["instances"])


if __name__ == "__main__":
    unittest.main()
