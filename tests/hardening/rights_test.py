#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Root's velhost is nobody's process by the time that a plug-in is asked.

Usage: rights_test.py CMAKE BUILD-FOLDER MACHINE-FILE
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

MACHINE = pathlib.Path(sys.argv.pop()).read_bytes()
BUILD = pathlib.Path(sys.argv.pop()).resolve()
CMAKE = sys.argv.pop()

NOBODY = "user 65534, group 65534, 0 other groups, back nowhere"
ROOT = "user 0, group 0, "
ASKED = "KRXSG_SPROMFirmwareVPDBootROM"


@unittest.skipUnless(os.geteuid() == 0, "only root has rights to give up")
class Rights(unittest.TestCase):
    """In a folder that everyone may enter, whatever the build tree's may be."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.folder.chmod(0o755)
        install = [CMAKE, "--install", BUILD, "--prefix", cls.folder]
        subprocess.run(install, capture_output=True, check=True)
        cls.plugin = cls.folder / "test.pi.so"
        shutil.copy(BUILD / "tests" / "libhost_testplugin.pi.so", cls.plugin)
        cls.machine = cls.folder / "machine.json"
        cls.machine.write_bytes(MACHINE)

    def told(self, *arguments, plugin=None, **as_user):
        command = [self.folder / "bin" / "velhost", "query", ASKED, "--machine", self.machine]
        command += ["--plugin", plugin or self.plugin, "--log-level", "1", *arguments]
        run = subprocess.run(command, capture_output=True, text=True, check=False, **as_user)
        self.assertEqual("", run.stderr.replace(run.stderr.partition("\n")[0] + "\n", ""))
        return run.stderr.partition(": ")[2].strip()

    def test_nobody_asks_a_plugin(self):
        self.assertEqual(f"log[1]: {NOBODY}", self.told())

    def test_a_file_takes_its_place_in_the_end(self):
        told = self.told("--output", self.folder / "answer.txt")
        self.assertTrue(told.startswith(f"log[1]: {ROOT}"), told)
        self.assertTrue((self.folder / "answer.txt").exists())

    def test_what_nobody_may_read_is_read_by_root(self):
        private = self.folder / "private"
        private.mkdir(mode=0o700, exist_ok=True)
        shutil.copy(self.plugin, private)
        inside = private / "inside"
        inside.mkdir(exist_ok=True)
        shutil.copy(self.plugin, inside)
        for plugin, folder in ((private / self.plugin.name, "/"), (f"./{self.plugin.name}", inside)):
            told = self.told(plugin=plugin, cwd=folder)
            self.assertTrue(told.startswith(f"log[1]: {ROOT}"), (plugin, told))

    def test_roots_group_is_not_nobodys(self):
        ours = self.folder / "ours"
        ours.mkdir(exist_ok=True)
        ours.chmod(0o750)
        shutil.copy(self.plugin, ours)
        told = self.told(plugin=ours / self.plugin.name)
        self.assertTrue(told.startswith(f"log[1]: {ROOT}"), told)

    def test_another_user_stays_who_it_is(self):
        told = self.told(user=1234, group=1235, extra_groups=[])
        self.assertEqual("log[1]: user 1234, group 1235, 0 other groups, back nowhere", told)

    def test_what_others_may_write_is_refused_to_root_all_the_same(self):
        open_to_all = self.folder / "open.pi.so"
        shutil.copy(self.plugin, open_to_all)
        open_to_all.chmod(0o777)
        self.assertIn("may write", self.told(plugin=open_to_all))


if __name__ == "__main__":
    unittest.main()
