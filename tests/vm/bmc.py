# SPDX-License-Identifier: Apache-2.0
"""A baseboard management controller for a guest: OpenIPMI's ipmi_sim behind qemu's KCS interface."""

import pathlib
import re
import socket
import subprocess
import tempfile
import time

MODULES = ["ipmi_si", "ipmi_devintf"]  # they give the guest /dev/ipmi0

_CONFIGURATION = """name "bmc"
set_working_mc 0x20
  serial 15 127.0.0.1 {port} codec VM
  loadlib "{module}" "{options}"
"""

_COMMANDS = """mc_setbmc 0x20
mc_add 0x20 0 no-device-sdrs 0x23 9 8 0x9f 0x1291 0xf02
mc_enable 0x20
"""


class Bmc:
    """Answers Master Write-Read with the bytes of `reply` (hex pairs, completion code first), and
    all that a BMC must know as ipmi_sim does; without bytes it is deaf from that command on. With
    `fru`, its FRU device 0 is these bytes, of which it gives `most` a read. Lives as long as its with
    block."""

    def __init__(self, module, reply, fru=None, most=None):
        self._module, self._reply, self._fru, self._most = module, reply, fru, most
        self._port = _free_port()

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(self._folder.name)
        options = self._reply
        if self._fru is not None:
            (folder / "fru").write_bytes(self._fru)
            options += f" | {self._most} {folder / 'fru'}"
        (folder / "configuration").write_text(
            _CONFIGURATION.format(port=self._port, module=self._module, options=options)
        )
        (folder / "commands").write_text(_COMMANDS)
        self._log = folder / "log"
        with open(self._log, "w", encoding="utf-8") as log:
            self._process = subprocess.Popen(
                ["ipmi_sim", "-c", folder / "configuration", "-f", folder / "commands",
                 "-s", folder, "-n"],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log,
            )
        try:
            self._await_listening()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._folder.cleanup()

    def qemu(self):
        """The devices of the guest. A chardev that connects when it is made would reach the BMC
        device before its interface exists, and qemu 7.2 dies of that: `reconnect` puts it off."""
        return [
            "-chardev", f"socket,id=bmc,host=127.0.0.1,port={self._port},reconnect=1",
            "-device", "ipmi-bmc-extern,id=bmc0,chardev=bmc",
            "-device", "isa-ipmi-kcs,bmc=bmc0",
        ]

    def requests(self):
        """The data of each Master Write-Read so far, as hex pairs."""
        return re.findall(r"^master write-read: ?(.*)$", self._log.read_text(), re.MULTILINE)

    def refused_reads(self):
        """The data of each read of the FRU device that was refused, as hex pairs."""
        return re.findall(r"^refused read: ?(.*)$", self._log.read_text(), re.MULTILINE)

    def _await_listening(self):
        for _ in range(100):
            if _listens(self._port):
                return
            if self._process.poll() is not None:
                break
            time.sleep(0.1)
        raise RuntimeError(f"ipmi_sim does not listen; it says: {self._log.read_text()}")


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def _listens(port):
    """Whether a port of this machine is listened on. Connecting would take the one place there is."""
    local, listening = f"0100007F:{port:04X}", "0A"
    for line in pathlib.Path("/proc/net/tcp").read_text().splitlines():
        if line.split()[1:4:2] == [local, listening]:
            return True
    return False
