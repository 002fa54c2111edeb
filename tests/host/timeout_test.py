#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""`velhost query --timeout`: machines whose first command takes a minute, and what is told of them.

Usage: timeout_test.py VELHOST MACHINES-FOLDER
"""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

VELHOST, MACHINES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1)).resolve()
A_MINUTE = 60000000
OVER = "the time of 0.2 s was over"


def query(machine, *arguments):
    return subprocess.run([VELHOST, "query", "--machine", machine, *arguments],
                          capture_output=True, check=False, text=True, timeout=50)


def states(run):
    return {entry["class"].removeprefix("KRXSG_"): (entry["state"], entry["reason"])
            for entry in json.loads(run.stdout)["classes"]}


class Timeout(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def slow(self, name):
        machine = json.loads((MACHINES / f"{name}.json").read_text())
        machine["sp"]["latency_us"] = A_MINUTE
        if "dump" in machine.get("smbios", {}):
            machine["smbios"]["dump"] = str(MACHINES / machine["smbios"]["dump"])
        file = self.folder / f"{name}.json"
        file.write_text(json.dumps(machine))
        return file

    def test_what_was_not_asked_is_told(self):
        run = query(self.slow("two-nodes"), "--timeout", "0.2", "--format", "inventory")
        self.assertEqual((3, ""), (run.returncode, run.stderr))
        told = states(run)
        self.assertEqual(("unanswered", f"not asked: {OVER}"), told["HardwareRevisionLevel"])
        self.assertEqual(("unanswered", f"not asked: {OVER}"), told["SPROMFirmwareVPDBootROM"])
        self.assertEqual(("unanswered", f"not asked: {OVER}"), told["Vpd"])
        state, reason = told["SystemBIOSElement"]  # SMBIOS has most of it
        self.assertEqual(("partial", f"not asked: {OVER}"), (state, reason))
        self.assertEqual("unused", told["DeviceDriver"][0])

    def test_the_table_has_the_reasons(self):
        run = query(self.slow("two-nodes"), "--timeout", "0.2")
        self.assertEqual((3, ""), (run.returncode, run.stderr))
        self.assertIn(f"not asked: {OVER}", run.stdout)

    def test_formats_without_states_have_a_line(self):
        for output_format in ("json", "trace"):
            run = query(self.slow("two-nodes"), "--timeout", "0.2", "--format", output_format,
                        "--log-level", "-1")
            self.assertEqual(3, run.returncode)
            self.assertEqual(f"velhost: {OVER} before all was asked; --timeout sets another\n",
                             run.stderr)
            json.loads(run.stdout)

    def test_only_what_was_sent_is_traffic(self):
        run = query(self.slow("eight-nodes"), "--timeout", "0.2", "--format", "trace")
        traffic = json.loads(run.stdout)["queries"][0]["traffic"]
        self.assertEqual([("0403050601", False)],
                         [(command["command"], command["answered"]) for command in traffic])

    def test_a_bmc(self):
        run = query(self.slow("ordinary-server"), "--timeout", "0.2", "--format", "inventory")
        self.assertEqual(3, run.returncode)
        told = states(run)
        self.assertEqual("unanswered", told["ManagementController"][0])
        self.assertEqual("unanswered", told["IPMIFRU"][0])
        self.assertIn(OVER, told["IPMIFRU"][1])
        self.assertEqual("present", told["ComputerSystem"][0])

    def test_each_step(self):
        run = query(self.slow("two-nodes"), "--timeout", "0.2", "--why", "KRXSG_HardwareRevisionLevel")
        self.assertIn(OVER, run.stdout.partition("Vpd")[0])

    def test_every_request_has_its_own_time(self):
        run = query(self.slow("two-nodes"), "--timeout", "0.2", "--repeat", "2", "--reinit",
                    "--format", "trace")
        sent = [len(made["traffic"]) for made in json.loads(run.stdout)["queries"]]
        self.assertEqual([1, 1], sent)

    def test_enough_time_changes_nothing(self):
        machine = MACHINES / "two-nodes.json"
        for output_format in ("table", "json", "inventory", "trace"):
            usual = query(machine, "--format", output_format)
            limited = query(machine, "--format", output_format, "--timeout", "1000000")
            self.assertEqual((usual.returncode, usual.stdout), (limited.returncode, limited.stdout))

    def test_bad_use(self):
        for time in ("0", "-1", "0.0001", "", "x", "5s", "1e3", "inf", "nan", "1000001", "0x5", " 5",
                     "1,5"):
            run = query(MACHINES / "two-nodes.json", f"--timeout={time}")
            self.assertEqual((2, ""), (run.returncode, run.stdout), time)
            self.assertEqual(1, run.stderr.count("\n"), time)
            self.assertIn("--timeout", run.stderr)

    def test_good_use(self):
        for time in ("5", "0.001", "1.5", "1000000", ".5", "5."):
            run = query(MACHINES / "empty-machine.json", f"--timeout={time}")
            self.assertNotEqual(2, run.returncode, time)


if __name__ == "__main__":
    unittest.main()
