#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The way in: what ./run and ./test say where packages are missing and nobody is root, and what becomes
of the build folder of a checkout that was copied or moved.

Usage: packages_test.py SOURCE-FOLDER
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PACKAGES = (pathlib.Path(sys.argv.pop(1)) / "tools" / "packages.sh").resolve()


def bash(script, **more):
    return subprocess.run(["bash", "-c", f"source {PACKAGES}\n{script}", "./test"],
                          capture_output=True, text=True, check=False, **more)


class InstallMissingTest(unittest.TestCase):
    def test_what_is_there_is_not_mentioned(self):
        run = bash("install_missing bash coreutils")
        self.assertEqual((0, "", ""), (run.returncode, run.stdout, run.stderr))

    def test_who_is_not_root_gets_the_line_for_one_who_is(self):
        with tempfile.TemporaryDirectory() as programs:  # without sudo
            os.chmod(programs, 0o755)
            for program in ("bash", "dpkg-query", "grep"):
                os.symlink(f"/usr/bin/{program}", f"{programs}/{program}")
            user = {"user": 65534} if os.geteuid() == 0 else {}
            run = bash("install_missing bash velhost-nowhere-1 velhost-nowhere-2",
                       env={"PATH": programs}, executable="/bin/bash", cwd="/", **user)
        self.assertEqual(
            (1, "", "test: packages are missing; let someone who is root run: "
                    "apt-get install --no-install-recommends velhost-nowhere-1 velhost-nowhere-2\n"),
            (run.returncode, run.stdout, run.stderr))


class OwnTreeTest(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory())).resolve()
        self.cache = self.root / "build" / "CMakeCache.txt"
        self.cache.parent.mkdir()

    def own_tree(self, home):
        if home:
            self.cache.write_text(f"CMAKE_BUILD_TYPE:STRING=Release\nCMAKE_HOME_DIRECTORY:INTERNAL={home}\n")
        run = bash("own_tree build", cwd=self.root)
        self.assertEqual((0, "", ""), (run.returncode, run.stdout, run.stderr))

    def test_its_own_stays(self):
        self.own_tree(self.root)
        self.assertTrue(self.cache.exists())

    def test_one_that_came_along_goes(self):
        for home in ("/somewhere/else", f"{self.root}/deeper"):
            with self.subTest(home):
                self.cache.parent.mkdir(exist_ok=True)
                self.own_tree(home)
                self.assertFalse(self.cache.parent.exists())

    def test_one_without_a_cache_stays(self):
        self.own_tree(None)
        self.assertTrue(self.cache.parent.exists())


if __name__ == "__main__":
    unittest.main()
