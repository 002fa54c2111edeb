#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Where the loader looks for libraries: in named folders, never in the current directory.

An empty or relative element of a run path stands for the current directory, or one below it, and so
does a needed library that is named by a relative path: whoever may write there could have a root's
velhost run their code.

Usage: runpath_test.py CMAKE BUILD-FOLDER MACHINE-FILE
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from elffile import linked_files, told_by

CMAKE = sys.argv.pop(1)
BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
MACHINE = pathlib.Path(sys.argv.pop(1)).resolve()
ENTRY = re.compile(r"\((NEEDED|RPATH|RUNPATH)\)[^\[]*\[(.*)\]$", re.MULTILINE)
SHIPPED = {
    "velhost",
    "libspfirmwarevpd.pi.so",
    "libplugin.nsp.so",
    "libsmbios.so",
    "libspdriver.so",
    "libvelcore.so",
}


def is_named(element):
    return element.startswith("/") or re.fullmatch(r"(\$ORIGIN|\$\{ORIGIN\})(/.*)?", element)


def complaints(dynamic_section):
    """What is wrong with it; `dynamic_section` as readelf prints it."""
    for tag, value in ENTRY.findall(dynamic_section):
        if tag == "NEEDED":
            if "/" in value and not value.startswith("/"):
                yield f"needs {value!r} by a relative path"
        else:
            yield from (f"{tag} {value!r}" for e in value.split(":") if not is_named(e))


def dynamic_section(file):
    return told_by("readelf", "--wide", "--dynamic", file)


def line(tag, text):
    return f" 0x000000000000001d ({tag})            Library runpath: [{text}]\n"


class RunPaths(unittest.TestCase):
    def test_the_reading(self):
        for tag, text, is_good in (
            ("RUNPATH", "$ORIGIN", True),
            ("RUNPATH", "$ORIGIN/../lib", True),
            ("RUNPATH", "${ORIGIN}/../lib:/opt/lib", True),
            ("RUNPATH", "$ORIGIN:", False),
            ("RUNPATH", ":/opt/lib", False),
            ("RUNPATH", "/opt/lib::$ORIGIN", False),
            ("RUNPATH", "", False),
            ("RUNPATH", ".", False),
            ("RUNPATH", "../lib", False),
            ("RUNPATH", "$ORIGINAL", False),
            ("RPATH", "$ORIGIN:", False),
            ("NEEDED", "libudev.so.1", True),
            ("NEEDED", "/opt/libx.so", True),
            ("NEEDED", "lib/libx.so", False),
        ):
            with self.subTest(tag=tag, text=text):
                self.assertEqual(is_good, not list(complaints(line(tag, text))))

    def expect_named_folders(self, files):
        names = {f.name for f in files}
        self.assertLessEqual(SHIPPED, names)
        for file in files:
            with self.subTest(str(file)):
                self.assertEqual([], list(complaints(dynamic_section(file))))

    def expect_deaf_to_the_current_directory(self, program):
        """It runs where every library that it needs has a namesake that cannot be loaded."""
        with tempfile.TemporaryDirectory() as shared:
            for file in linked_files(program.parent.parent):
                for tag, name in ENTRY.findall(dynamic_section(file)):
                    if tag == "NEEDED":
                        (pathlib.Path(shared) / name).write_text("a stranger's\n")
            command = [program, "query", "--machine", MACHINE, "--format", "json"]
            run = subprocess.run(command, cwd=shared, capture_output=True, text=True, check=False)
        self.assertEqual(0, run.returncode, run.stderr)
        self.assertIn("KRXSG_SPROMFirmwareVPDMain", run.stdout)

    def test_built(self):
        files = linked_files(BUILD)
        self.assertTrue([f for f in files if f.name == "host_test"])
        self.expect_named_folders(files)
        self.expect_deaf_to_the_current_directory(BUILD / "bin" / "velhost")

    def test_installed(self):
        with tempfile.TemporaryDirectory() as prefix:
            install = [CMAKE, "--install", BUILD, "--prefix", prefix]
            subprocess.run(install, capture_output=True, check=True)
            self.expect_named_folders(linked_files(pathlib.Path(prefix)))
            program = pathlib.Path(prefix) / "bin" / "velhost"
            self.expect_deaf_to_the_current_directory(program)


if __name__ == "__main__":
    unittest.main()
