#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Cost grows in a straight line: what each command takes, in instructions, on machines of 256 and 2,048
DIMMs, and a summary of 3 and 24 files. For ten times the files it takes hardly more memory. growth.py beside
this test goes further.

Usage: growth_test.py COSTPROBE
"""
import sys
import unittest

import growth

PROBE = sys.argv.pop(1)

# A search in a sorted index grows by a little more than 1, one in a list by more than this.
MOST = 1.1
SIZES = [(2, 128), (16, 128)]  # nodes, DIMMs of each
FILES = [3, 24]
MORE_FILES = [50, 500]
MOST_KIB_OF_A_FILE = 2  # its name, and those of what it has


class Fit(unittest.TestCase):
    def test_the_exponent_is_that_of_the_power(self):
        for what, costs, expected in (("a line", [30, 60, 120], 1), ("a square", [5, 20, 80], 2),
                                      ("a fixed cost", [7, 7, 7], 0), ("between", [1, 1, 4], 1)):
            with self.subTest(what):
                self.assertAlmostEqual(expected, growth.Growth([10, 20, 40], costs).exponent())


class Lines(unittest.TestCase):
    def check(self, name, grown):
        print(growth.row(name, grown), flush=True)
        with self.subTest(name):
            self.assertGreater(grown.costs[0], 0)
            self.assertLessEqual(grown.exponent(), MOST)

    def test_with_the_machine(self):
        growths = growth.with_machines(PROBE, growth.COMMANDS, SIZES)
        print(growth.head("DIMMs", growths["check"].sizes))
        for name, grown in growths.items():
            self.check(name, grown)

    def test_with_the_files(self):
        files = growth.with_files(PROBE, FILES)
        print(growth.head("files", files.sizes))
        self.check(growth.MANY_FILES, files)

    def test_memory_with_the_files(self):
        few, many = growth.summary_peaks(PROBE, MORE_FILES)
        print(f"KiB at the peak, {MORE_FILES} files: {few}, {many}")
        self.assertLessEqual(many - few, (MORE_FILES[1] - MORE_FILES[0]) * MOST_KIB_OF_A_FILE)


if __name__ == "__main__":
    unittest.main()
