# SPDX-License-Identifier: Apache-2.0
"""What the guest tests share: the guest, its devices, and the way a test skips itself.

A test runs with the build folder as its only argument before unittest's own.
"""

import pathlib
import shutil
import sys
import unittest

import bmc
import kernel
from guest import Guest

SKIPPED = 77  # ctest's SKIP_RETURN_CODE

HERE = pathlib.Path(__file__).resolve().parent
BUILD = pathlib.Path(sys.argv.pop(1))
BMC_MODULE = BUILD / "tests" / "bmc_module.so"

# The modules of each kind of device.
BMC = bmc.MODULES
USB = ["dummy_hcd num=2", "libcomposite", "usb_f_ss_lb", "usb_f_fs", "usb_storage delay_use=0"]
TAPES = ["st", "scsi_debug ptype=1 inq_vendor=DISKLESS inq_product=SCSITAPE inq_rev=0007"]


def server(modules=(), qemu=()):
    """A guest that has velhost, usbtape and gadgets.sh."""
    guest = Guest(BUILD / "vm", modules, qemu)
    for program in (BUILD / "tests" / "usbtape", BUILD / "bin" / "velhost"):
        guest.files.add_program(program)
        guest.files.link(f"/bin/{program.name}", program)
    for library in (BUILD / "lib").rglob("*.so"):
        guest.files.add_program(library)
    for mof in (BUILD / "share" / "vel" / "schema").glob("*.mof"):
        guest.files.add_file(mof)
    guest.files.add_file(HERE / "gadgets.sh", "/gadgets.sh")
    return guest


def main():
    """unittest.main, but a machine that cannot boot the guest skips the tests in plain words."""
    try:
        if not (shutil.which("ipmi_sim") and BMC_MODULE.exists()):
            raise kernel.Unavailable("openipmi and libopenipmi-dev are not installed")
        Guest(BUILD / "vm")
    except kernel.Unavailable as reason:
        print(f"SKIPPED: {reason}")
        sys.exit(SKIPPED)
    unittest.main()
