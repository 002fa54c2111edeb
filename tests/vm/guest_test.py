#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""velhost on a live machine: each class boots one guest and looks at what velhost said inside."""

import json
import subprocess
import tempfile
import unittest

import bed
from bmc import Bmc

# Shell for the guest. said NAME COMMAND...: keeps what the command prints, complains and returns.
# The queries show no log entries (--log-level -1), so that all they say is their own complaint.
SAID = """
. /gadgets.sh
said() {
  name=$1; shift
  "$@" >$name.out 2>$name.err && echo 0 >$name.status || echo $? >$name.status
}
"""


def smbios(product, *oem_strings):
    """qemu's options for a firmware table with this product name and these type 11 strings."""
    texts = "".join(f",value={text}" for text in oem_strings)
    return [
        "-smbios", "type=0,vendor=KRX,version=1.08 [ABC123],date=03/15/2007",
        "-smbios", f"type=1,manufacturer=KRX,product={product},serial=KQ0TEST",
        "-smbios", f"type=11{texts}",
    ]


def replay(recorded):
    """The result document of a recorded machine file, queried outside the guest."""
    with tempfile.NamedTemporaryFile(suffix=".json") as machine:
        machine.write(recorded)
        machine.flush()
        command = [bed.BUILD / "bin" / "velhost", "query", "--machine", machine.name]
        command += ["--format", "trace"]
        document = json.loads(subprocess.run(command, check=True, capture_output=True).stdout)
    del document["machine"]
    return document


class GuestTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def boot(cls, script, modules=(), qemu=()):
        cls.result = bed.server(modules, qemu).run(SAID + script)

    def said(self, name):
        return tuple(self.result.text(f"{name}.{end}") for end in ("status", "out", "err"))

    def answer(self, name):
        """The JSON document that a command printed: it succeeded and complained of nothing."""
        status, out, err = self.said(name)
        self.assertEqual(("0\n", ""), (status, err))
        return json.loads(out)

    def assert_replays(self, live, recorded):
        document = self.answer(live)
        del document["machine"]
        self.assertEqual(document, replay(self.result.data(recorded)))


class ServerWithoutBmcTest(GuestTest):
    """A server of which only SMBIOS tells something, asked by root and by others."""

    @classmethod
    def setUpClass(cls):
        cls.boot(
            """
            said firmware velhost query --log-level -1 --format json \
              KRXSG_SystemBIOSElement KRXSG_DiagnosticVPD KRXSG_SPROMFirmwareVPDMain
            said all velhost query --log-level -1 --format trace
            said record velhost record --output recorded.json
            ls -l recorded.json >mode
            said nobody su nobody -c "velhost query --log-level -1 KRXSG_SystemBIOSElement --format json"
            mount -t tmpfs none /sys/firmware
            said no_smbios velhost query --log-level -1 KRXSG_SystemBIOSElement --format json
            """,
            qemu=smbios(
                "KRX Server 6220AC1",
                "KRX Diagnostics DIA789C12",
                "KRX Quellon Link Adapter-II QLA400B",
                "io.systemd.credential:ssh.key=secret",
            ),
        )

    def test_firmware_elements_are_what_smbios_says(self):
        self.assertEqual(
            {
                "KRXSG_SystemBIOSElement": [
                    {
                        "SourceNode": 1,
                        "Name": "System BIOS",
                        "SoftwareElementState": 3,
                        "SoftwareElementID": "SP Firmware VPD Collector",
                        "TargetOperatingSystem": 66,
                        "PrimaryBIOS": True,
                        "LoadedStartingAddress": 0xE8000000,  # SeaBIOS: segment E800, no ROM size
                        "LoadedEndingAddress": 0,
                        "ReleaseDate": "20070315000000.000000+000",
                        "Manufacturer": "KRX",
                        "Version": "108",
                        "BuildNumber": "ABC123",
                    }
                ],
                "KRXSG_DiagnosticVPD": [
                    {
                        "BuildNumber": "KRXDiagnosticsDIA789C",
                        "Version": "12",
                        "SoftwareElementID": " ",
                        "SoftwareElementState": 3,
                        "TargetOperatingSystem": 66,
                    }
                ],
                "KRXSG_SPROMFirmwareVPDMain": [
                    {
                        "Version": " ",
                        "BuildNumber": "KRXQuellonLinkAdapterIIQLA400B",
                        "SoftwareElementID": "2",
                        "Name": "KRX Quellon Link Adapter",
                        "SoftwareElementState": 3,
                        "TargetOperatingSystem": 66,
                    }
                ],
            },
            self.answer("firmware"),
        )

    def test_no_bmc_is_seen(self):
        texts = [entry["text"] for entry in self.answer("all")["queries"][0]["core_log"]]
        self.assertIn("spfirmwarevpd: There is no KRXSG_IPMIFRU instance.", texts)

    def test_recorded_file_replays_outside(self):
        self.assertEqual(("0\n", ""), self.said("record")[:2])
        self.assert_replays("all", "recorded.json")

    def test_recorded_file_is_its_owners_alone(self):
        self.assertEqual("-rw-------", self.result.text("mode").split()[0])

    def test_credentials_are_not_recorded(self):
        self.assertNotIn("secret", self.result.text("recorded.json"))

    def test_without_root_one_line_says_so(self):
        status, out, err = self.said("nobody")
        self.assertEqual("3\n", status)
        self.assertEqual({"KRXSG_SystemBIOSElement": []}, json.loads(out))
        self.assertRegex(err, r"\A[^\n]*/sys/firmware/dmi/tables[^\n]*\n\Z")

    def test_without_smbios_one_line_says_so(self):
        status, out, err = self.said("no_smbios")
        self.assertEqual("3\n", status)
        self.assertEqual({"KRXSG_SystemBIOSElement": []}, json.loads(out))
        self.assertRegex(err, r"\A[^\n]*/sys/firmware/dmi/tables[^\n]*\n\Z")


# Master Write-Read of the console's level, as the BMC gets it: bus, slave, count, data.
LEVEL_REQUEST = "F5 68 10 1D 01 00"
LEVEL_TRAFFIC = "012006005206000000F568101D0100"


def sent(entry):
    return entry["request"], entry["answered"], entry["length"]


class ConsoleServerTest(GuestTest):
    """A cKVM machine type with a cKVM on USB, a BMC that knows its level, and two tape drives."""

    @classmethod
    def setUpClass(cls):
        # Completion code; three bytes, the device's completion code and twelve of text.
        reply = "00 10 1D 01 00 " + b"2.01.7[C] \0\0".hex(" ")
        with Bmc(bed.BMC_MODULE, reply) as bmc:
            cls.boot(
                """
                usb_gadget console KRX "Console cKVM" C1 Loopback.0
                plug_in console 0
                usb_tape 1 ACME TAPE1 0102 T1
                await "ls /dev/ipmi0"
                said all velhost query --log-level -1 --format trace
                said level velhost query --log-level -1 KRXSG_cKVM --format json
                said record velhost record --output recorded.json
                chmod 644 /sys/firmware/dmi/tables/*
                said nobody su nobody -c "velhost query --log-level -1 KRXSG_cKVM --format json"
                """,
                bed.BMC + bed.USB + bed.TAPES,
                smbios("KRX Server 3105AC1", "KRX Diagnostics DIA789C12") + bmc.qemu(),
            )
            cls.requests = bmc.requests()

    def test_level_is_the_bmcs(self):
        self.assertEqual(
            [
                {
                    "SoftwareElementID": "cKVM",
                    "SoftwareElementState": 3,
                    "TargetOperatingSystem": 66,
                    "Version": "2.01.7[C]",
                    "FirmwareVersion": "2.01.7[C]",
                }
            ],
            self.answer("level")["KRXSG_cKVM"],
        )

    def test_request_reaches_the_bmc(self):
        self.assertEqual([LEVEL_REQUEST] * 3, self.requests)  # the two queries and the recording
        traffic = self.answer("all")["queries"][0]["traffic"]
        self.assertEqual((LEVEL_TRAFFIC, True, 21), sent(traffic[0]))

    def test_bmc_without_a_repository_or_fru_devices_refuses_once_each(self):
        traffic = self.answer("all")["queries"][0]["traffic"]
        self.assertEqual(
            [
                ("012006000100000000", True, 20),  # Get Device ID
                ("012006000800000000", True, 5),  # Get Device GUID
                ("01200A0023060000000000000000FF", True, 5),  # Get SDR
                ("01200A00100100000000", True, 5),  # Get FRU Inventory Area Info
            ],
            [sent(entry) for entry in traffic[1:]],
        )

    def test_bmc_is_seen(self):
        recorded = json.loads(self.result.text("recorded.json"))
        self.assertEqual((True, True), (recorded["sp"]["bmc"], recorded["sp"]["ipmi_drivers"]))

    def test_usb_device_has_maker_and_product(self):
        recorded = json.loads(self.result.text("recorded.json"))
        texts = [device["Description"] for device in recorded["instances"]["KRXSG_USBDevice"]]
        self.assertIn("KRX Console cKVM", texts)

    def test_usb_tape_has_a_usbstor_identifier(self):
        recorded = json.loads(self.result.text("recorded.json"))
        tapes = [drive["DeviceID"] for drive in recorded["instances"]["KRXSG_TapeDrive"]]
        self.assertEqual(2, len(tapes))
        usb = [tape for tape in tapes if "USBSTOR" in tape]
        self.assertEqual(1, len(usb))
        self.assertRegex(usb[0], r"\AUSBSTOR\\[^\\]*&VEN_ACME&PROD_TAPE1&REV_0102\\")

    def test_recorded_file_replays_outside(self):
        self.assertEqual(("0\n", ""), self.said("record")[:2])
        self.assert_replays("all", "recorded.json")

    def test_without_permission_the_bmc_is_absent(self):
        status, out, err = self.said("nobody")
        self.assertEqual("3\n", status)
        self.assertEqual("1.3.11.37", json.loads(out)["KRXSG_cKVM"][0]["Version"])
        self.assertRegex(err, r"\A[^\n]*/dev/ipmi0[^\n]*\n\Z")


class FailingBmcTest(GuestTest):
    """The machine with the cKVM and a BMC that answers a request for its level with `reply`."""

    reply = None
    format = None

    @classmethod
    def setUpClass(cls):
        with Bmc(bed.BMC_MODULE, cls.reply) as bmc:
            cls.boot(
                f"""
                usb_gadget console KRX "Console cKVM" C1 Loopback.0
                plug_in console 0
                await "ls /dev/ipmi0"
                said all velhost query --log-level -1 --format {cls.format}
                said record velhost record --output recorded.json
                """,
                bed.BMC + bed.USB,
                smbios("KRX Server 3105AC1", "KRX Diagnostics DIA789C12") + bmc.qemu(),
            )


class RefusingBmcTest(FailingBmcTest):
    """The same machine with a BMC that does not know the request."""

    reply, format = "C1", "trace"

    def test_standing_level_is_published(self):
        query, = self.answer("all")["queries"]
        levels = [
            instance["properties"]["Version"]["value"]
            for instance in query["instances"]
            if instance["class"] == "KRXSG_cKVM"
        ]
        self.assertEqual(["1.3.11.37"], levels)
        self.assertIn({"severity": 0, "text": "cKVM - Bad IPMI completion code."}, query["core_log"])

    def test_recorded_file_replays_outside(self):
        self.assert_replays("all", "recorded.json")


class DeafBmcTest(FailingBmcTest):
    """The same machine with a BMC that is found and then answers nothing any more."""

    reply, format = "", "json"

    def test_silence_is_told_in_one_line_with_status_3(self):
        for name in ("all", "record"):
            status, _, err = self.said(name)
            self.assertEqual("3\n", status)
            self.assertRegex(
                err, r"\Avelhost: the BMC behind /dev/ipmi0 did not answer within [45]\.\d s, [^\n]*\n\Z")

    def test_the_rest_is_answered(self):
        classes = json.loads(self.said("all")[1])
        self.assertEqual("108", classes["KRXSG_SystemBIOSElement"][0]["Version"])  # 1.08

    def test_recorded_file_is_whole(self):
        recorded = json.loads(self.result.text("recorded.json"))
        self.assertTrue(recorded["sp"]["ipmi_drivers"])


if __name__ == "__main__":
    bed.main()
