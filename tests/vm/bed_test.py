#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The test bed itself: each device that the guest tests rely on is what they take it for."""

import unittest

import bed
from bmc import Bmc


class DevicesTest(unittest.TestCase):
    """One guest that has all of them."""

    @classmethod
    def setUpClass(cls):
        with Bmc(bed.BMC_MODULE, reply="00") as bmc:
            options = bmc.qemu() + ["-smbios", "type=1,manufacturer=KRX,product=KRX Server 3105AC1"]
            guest = bed.server(bed.BMC + bed.USB + bed.TAPES, options)
            cls.result = guest.run(
                """
                . /gadgets.sh
                usb_gadget console KRX "Console cKVM" C1 Loopback.0
                plug_in console 0
                usb_tape 1 ACME TAPE1 0102 T1
                cat /sys/class/dmi/id/product_name >product
                await "ls /dev/ipmi0"
                cat /sys/class/ipmi/ipmi0/device/bmc/manufacturer_id >bmc
                for usb in /sys/bus/usb/devices/[0-9]-[0-9]; do
                  echo "$(cat $usb/manufacturer)/$(cat $usb/product)"
                done >usb
                for tape in /sys/class/scsi_tape/st[0-9]; do
                  cd $tape/device
                  echo "$(cat vendor)/$(cat model)/$(cat rev)"
                done >tapes
                """
            )

    def test_script_ran(self):
        self.assertEqual((0, ""), (self.result.status, self.result.text("stderr")))

    def test_smbios_text_arrives(self):
        self.assertEqual("KRX Server 3105AC1\n", self.result.text("product"))

    def test_bmc_answers_get_device_id(self):
        self.assertEqual("0x001291\n", self.result.text("bmc"))

    def test_usb_devices_have_their_texts(self):
        self.assertEqual("KRX/Console cKVM\nTapeworks/USB tape\n", self.result.text("usb"))

    def test_tape_drives_have_their_inquiry_data(self):
        self.assertEqual(
            "DISKLESS/SCSITAPE        /0007\nACME    /TAPE1           /0102\n",
            self.result.text("tapes"),
        )


if __name__ == "__main__":
    bed.main()
