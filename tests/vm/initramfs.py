# SPDX-License-Identifier: Apache-2.0
"""The guest's root file system: a cpio archive of the "newc" format that the kernel unpacks."""

import pathlib
import re
import stat
import subprocess


class Initramfs:
    """A tree of files, folders and symbolic links, all root's."""

    def __init__(self):
        self._entries = {}

    def add(self, path, content, mode=0o644):
        """A file with this content (text or bytes), and the folders above it."""
        data = content.encode() if isinstance(content, str) else content
        self._put(path, stat.S_IFREG | mode, data)

    def link(self, path, target):
        self._put(path, stat.S_IFLNK | 0o777, str(target).encode())

    def folder(self, path, mode=0o755):
        self._put(path, stat.S_IFDIR | mode, b"")

    def add_file(self, source, path=None):
        """A file of the host's, where it stands there or at `path`, with its mode."""
        source = pathlib.Path(source)
        self.add(path or source.absolute(), source.read_bytes(), source.stat().st_mode & 0o777)

    def add_program(self, source):
        """A program or shared object of the host's, where it stands there, with the libraries that
        it needs where they stand, so that it finds them the same way."""
        self.add_file(source)
        listing = subprocess.run(["ldd", source], capture_output=True, text=True, check=False)
        for library in re.findall(r"(/\S+) \(0x", listing.stdout):  # none when linked statically
            self.add_file(library)

    def write(self, path):
        with open(path, "wb") as out:
            for number, (name, (mode, data)) in enumerate(self._entries.items(), start=1):
                out.write(_member(number, name, mode, data))
            out.write(_member(0, "TRAILER!!!", 0, b""))

    def _put(self, path, mode, data):
        path = pathlib.PurePosixPath(path)
        for parent in reversed(path.parents):
            self._entries.setdefault(_name(parent), (stat.S_IFDIR | 0o755, b""))
        self._entries[_name(path)] = (mode, data)


def _name(path):
    return str(path).lstrip("/") or "."


def _member(number, name, mode, data):
    name = name.encode() + b"\0"
    fields = (number, mode, 0, 0, 1, 0, len(data), 0, 0, 0, 0, len(name), 0)
    header = b"070701" + b"".join(b"%08X" % field for field in fields)
    return _padded(header + name) + _padded(data)


def _padded(data):
    return data + bytes(-len(data) % 4)
