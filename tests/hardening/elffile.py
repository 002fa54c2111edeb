# SPDX-License-Identifier: Apache-2.0
"""What readelf and nm tell of a linked file."""
import pathlib
import re
import subprocess

DYNAMIC_FLAGS = re.compile(r"\((FLAGS|FLAGS_1)\)\s+(?:Flags: )?(.*)$", re.MULTILINE)
SEGMENT = re.compile(r"^\s+(GNU_RELRO|GNU_STACK)\s+(?:0x\w+\s+){5}(.*?)\s+0x\w+$", re.MULTILINE)
ENDBR64 = b"\xf3\x0f\x1e\xfa"


def is_linked(file):
    """An ELF file that the loader reads: a program or a shared object (e_type 2 or 3)."""
    with file.open("rb") as stream:
        head = stream.read(18)
    return head[:4] == b"\x7fELF" and head[16] in (2, 3)


def is_of_cmake(file):
    """It tried the compiler with it."""
    return "CMakeFiles" in file.parts


def linked_files(*folders):
    files = (f for folder in folders for f in pathlib.Path(folder).rglob("*") if f.is_file())
    return sorted(f for f in files if not f.is_symlink() and not is_of_cmake(f) and is_linked(f))


def told_by(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


class ElfFile:
    def __init__(self, path):
        self.path = path
        self.kind = re.search(r"Type:\s+(\w+)", told_by("readelf", "-hW", path)).group(1)
        self.segments = dict(SEGMENT.findall(told_by("readelf", "-lW", path)))
        flags = DYNAMIC_FLAGS.findall(told_by("readelf", "-dW", path))
        self.flags = set(" ".join(text for _, text in flags).split())

    def imports(self):
        return set(re.findall(r" U (\w+)", told_by("nm", "-D", "--undefined-only", self.path)))

    def exports(self):
        lines = told_by("nm", "-DC", "--defined-only", self.path).splitlines()
        return sorted({line.split(maxsplit=2)[2] for line in lines})

    def has_landing_pads(self):
        """Places that an indirect jump may go to (Intel's control-flow enforcement)."""
        return ENDBR64 in self.path.read_bytes()
