#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The rooms of the host: each file includes only from its own room and from those below it, in the
order in which host/CMakeLists.txt builds them, and docs/architecture.md has a line for each.

Usage: rooms_test.py SOURCE-FOLDER
"""
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
HOST = ROOT / "host"
ROOMS = re.findall(r"^add_subdirectory\((\w+)\)$", (HOST / "CMakeLists.txt").read_text(), re.M)
# Neighbours: neither of them knows the other.
SIDE_BY_SIDE = {"formats", "recording"}


def sources(room):
    return sorted(path for path in (HOST / room).iterdir() if path.suffix in (".cpp", ".h"))


def rooms_included(path):
    return re.findall(r'^#include "host/(?:(\w+)/)?[\w.]+"$', path.read_text(), re.M)


def may_know(room, other):
    if room != other and {room, other} <= SIDE_BY_SIDE:
        return False
    return other in ROOMS[:ROOMS.index(room) + 1]


class Rooms(unittest.TestCase):
    def test_every_source_is_in_a_room(self):
        self.assertEqual(["main.cpp"], [p.name for p in HOST.iterdir() if p.suffix in (".cpp", ".h")])
        folders = {path.name for path in HOST.iterdir() if path.is_dir()}
        self.assertEqual(folders, set(ROOMS))

    def test_arrows_go_down(self):
        arrows = 0
        for room in ROOMS:
            for path in sources(room):
                for other in rooms_included(path):
                    arrows += 1
                    self.assertTrue(may_know(room, other),
                                    f"{path.relative_to(ROOT)} includes from host/{other or '.'}")
        self.assertGreater(arrows, 50)

    def test_a_type_has_its_name_for_itself(self):
        """All rooms are one namespace: two types of one name are undefined behaviour, and no error."""
        declared = {}
        for room in ROOMS:
            for path in sources(room):
                if path.suffix == ".h":
                    text = path.read_text(encoding="utf-8")
                    for name in re.findall(r"^(?:struct|enum class|class|enum) (\w+)[^;{]*\{", text, re.M):
                        declared.setdefault(name, []).append(path.name)
        self.assertGreater(len(declared), 50)
        self.assertEqual({}, {n: files for n, files in declared.items() if len(files) > 1})

    def test_the_page_has_a_line_a_room_from_the_top_down(self):
        page = (ROOT / "docs" / "architecture.md").read_text(encoding="utf-8")
        self.assertEqual(list(reversed(ROOMS)), re.findall(r"^\| `host/(\w+)/` \|", page, re.M))


if __name__ == "__main__":
    unittest.main()
