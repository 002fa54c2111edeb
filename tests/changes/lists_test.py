#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The lists of changes keep up with the sources: each text to be changed stands in its file once."""
import unittest

import try_changes


class Lists(unittest.TestCase):
    def test_every_old_text_stands_in_its_file_once(self):
        changes = try_changes.read_changes(try_changes.lists(), "")
        self.assertGreater(len(changes), 100)
        for change in changes:
            for place in [change, *change.get("more", [])]:
                with self.subTest(change["name"]):
                    text = (try_changes.ROOT / place["file"]).read_text()
                    self.assertEqual(1, text.count(place["old"]), place["file"])

    def test_no_two_have_a_name(self):
        names = [change["name"] for change in try_changes.read_changes(try_changes.lists(), "")]
        self.assertEqual(sorted(set(names)), sorted(names))


if __name__ == "__main__":
    unittest.main()
