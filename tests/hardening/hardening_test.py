#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The files built are hardened, and nothing leaves a library but what its list names.

Read from the files themselves where they show it, else from the commands that compiled them.

Usage: hardening_test.py BUILD-FOLDER CONFIGURATION
"""
import json
import pathlib
import platform
import sys
import unittest

from elffile import ElfFile, linked_files

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
CONFIGURATION = sys.argv.pop(1)
EXPORTS = pathlib.Path(__file__).resolve().parent / "exports"
IS_RELEASE = CONFIGURATION == "Release"
GUESTS = BUILD / "vm"  # the kernel that they boot is not built here
IS_SANITIZED = "SPFW_SANITIZE:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text()
CONTROL_FLOW = {"x86_64": "-fcf-protection=full", "aarch64": "-mbranch-protection=standard"}
COMPILED_WITH = [
    "-fstack-protector-strong",
    "-fstack-clash-protection",
    CONTROL_FLOW.get(platform.machine()),
    "-fvisibility=hidden",
    "-D_FORTIFY_SOURCE=3" if IS_RELEASE else "-D_GLIBCXX_ASSERTIONS",
]
# Loaded by somebody else's simulator of a BMC, whose names it uses and which uses its own.
SIMULATORS_MODULE = "bmc_module"
SHIPPED = {file.stem for file in EXPORTS.iterdir()} | {"velhost"}


class Hardening(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        paths = (path for path in linked_files(BUILD)
                 if path.stem != SIMULATORS_MODULE and not path.is_relative_to(GUESTS))
        cls.files = [ElfFile(path) for path in paths]

    def test_nothing_is_left_out(self):
        names = {file.path.name for file in self.files}
        self.assertLessEqual(SHIPPED, names)
        self.assertIn("host_test", names)

    def test_every_file(self):
        for file in self.files:
            with self.subTest(str(file.path)):
                self.assertEqual("DYN", file.kind, "code has its place when it is loaded only")
                self.assertIn("GNU_RELRO", file.segments)
                self.assertTrue({"NOW", "BIND_NOW"} & file.flags, "all bound, so all read-only")
                self.assertEqual("RW", file.segments["GNU_STACK"].strip())
                self.assertNotIn("TEXTREL", file.flags)

    def test_what_is_shipped_checks_its_stack(self):
        for file in self.files:
            if file.path.name in SHIPPED:
                with self.subTest(file.path.name):
                    self.assertIn("__stack_chk_fail", file.imports())

    @unittest.skipUnless(platform.machine() == "x86_64", "of this processor only")
    def test_jumps_have_landing_pads(self):
        for file in self.files:
            with self.subTest(str(file.path)):
                self.assertTrue(file.has_landing_pads())

    def test_every_unit_is_compiled_so(self):
        entries = json.loads((BUILD / "compile_commands.json").read_text())
        self.assertGreater(len(entries), 200)
        for entry in entries:
            if pathlib.Path(entry["file"]).stem == SIMULATORS_MODULE:
                continue
            words = entry["command"].split()
            with self.subTest(entry["file"]):
                self.assertEqual([], [w for w in COMPILED_WITH if w and w not in words])

    @unittest.skipIf(IS_SANITIZED, "the sanitizers export names of their own")
    def test_exports(self):
        for file in self.files:
            listed = EXPORTS / (file.path.name + ".txt")
            if listed.exists() and file.path.parent == BUILD / "lib":
                with self.subTest(file.path.name):
                    self.assertEqual(listed.read_text().splitlines(), sorted(file.exports()))


if __name__ == "__main__":
    unittest.main()
