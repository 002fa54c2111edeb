# SPDX-License-Identifier: Apache-2.0
"""A machine of our choice: a kernel in qemu under software emulation that runs one shell script.

The kernel's console is the first serial port. What the script leaves comes back over the second
one: the folder /out as a base64-encoded tar archive between two marker lines, the second of which
carries the script's exit status.
"""

import base64
import io
import pathlib
import re
import shutil
import subprocess
import tarfile
import tempfile

import kernel
from initramfs import Initramfs

QEMU = "qemu-system-x86_64"
BUSYBOX = "/bin/busybox"
TIMEOUT_SECONDS = 120

_INIT = """#!/bin/busybox sh
/bin/busybox --install -s /bin
mount -t devtmpfs none /dev
mount -t proc none /proc
mount -t sysfs none /sys
while read -r module; do insmod $module || echo "no module $module" >/dev/console; done </modules
cd /out
sh -eu /script >stdout 2>stderr
status=$?
stty -F /dev/ttyS1 raw
{
  echo "guest-result-begin"
  tar -c . | base64
  echo "guest-result-end $status"
} >/dev/ttyS1
poweroff -f
"""


class Failed(Exception):
    """The guest did not get as far as to hand its results back."""


class Result:
    """What the script left: its exit status and the files in /out, `stdout` and `stderr` too."""

    def __init__(self, status, archive):
        self.status = status
        self._files = {}
        with tarfile.open(fileobj=io.BytesIO(archive)) as tar:
            for member in filter(tarfile.TarInfo.isfile, tar):
                self._files[member.name.removeprefix("./")] = tar.extractfile(member).read()

    def data(self, name):
        return self._files[name]

    def text(self, name):
        return self._files[name].decode()


class Guest:
    """The makings of one boot; `run` boots. Each module is a name, parameters may follow it."""

    def __init__(self, cache, modules=(), qemu=()):
        for tool in (QEMU, BUSYBOX):
            if not shutil.which(tool):
                raise kernel.Unavailable(f"{tool} is not installed")
        self._kernel = kernel.fetch(cache)
        self._qemu = list(qemu)
        self.files = Initramfs()
        self.files.add_file(BUSYBOX, "/bin/busybox")
        self.files.add("/init", _INIT, 0o755)
        self.files.add("/etc/passwd", "root:x:0:0::/:/bin/sh\nnobody:x:65534:65534::/:/bin/sh\n")
        for folder in ("/dev", "/proc", "/sys", "/out"):
            self.files.folder(folder)
        self.files.folder("/tmp", 0o1777)
        self._add_modules(dict(module.partition(" ")[::2] for module in modules))

    def run(self, script, timeout=TIMEOUT_SECONDS):
        """Boots, runs the script as root in /out under `sh -eu`, and returns its Result."""
        self.files.add("/script", script)
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            self.files.write(folder / "initramfs")
            said = self._boot(folder, timeout)
            found = re.search(
                rb"guest-result-begin\r?\n(.*)guest-result-end (\d+)",
                _content(folder / "results"),
                re.DOTALL,
            )
            if not found:
                console = _content(folder / "console").decode(errors="replace")
                raise Failed(f"{said}; the end of its console:\n{console[-2000:]}")
            return Result(int(found.group(2)), base64.b64decode(found.group(1)))

    def _add_modules(self, parameters):
        lines = []
        for path in self._kernel.modules(parameters):
            self.files.add(f"/modules.d/{path.name}", path.read_bytes())
            lines.append(f"/modules.d/{path.name} {parameters.get(kernel.module_name(path), '')}\n")
        self.files.add("/modules", "".join(lines))

    def _boot(self, folder, timeout):
        """Runs qemu to its end, or for `timeout` seconds, and returns how it ended."""
        command = [QEMU, "-accel", "tcg", "-cpu", "max", "-m", "256", "-nodefaults", "-no-reboot"]
        command += ["-display", "none"]
        command += ["-serial", f"file:{folder}/console", "-serial", f"file:{folder}/results"]
        command += ["-kernel", self._kernel.vmlinux, "-initrd", folder / "initramfs"]
        command += ["-append", "console=ttyS0 panic=-1 quiet"]
        try:
            ended = subprocess.run(
                command + self._qemu, timeout=timeout, check=False, stdin=subprocess.DEVNULL,
                stderr=subprocess.PIPE, text=True,
            )
        except subprocess.TimeoutExpired:
            return f"the guest was still running after {timeout} seconds"
        return f"the guest ended without a result ({ended.stderr.strip() or 'qemu said nothing'})"


def _content(path):
    return path.read_bytes() if path.exists() else b""
