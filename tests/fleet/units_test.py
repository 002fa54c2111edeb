#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The systemd service may do little, and its command needs no more. systemd's own tools judge the unit;
the command is run without the capabilities that it takes away, and each system call that it makes is
one that it allows.

Usage: units_test.py VELHOST SOURCE-FOLDER BUILD-FOLDER CMAKE
"""
import os
import pathlib
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

VELHOST, ROOT, BUILD = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(3))
CMAKE = sys.argv.pop(1)
UNITS = BUILD / "share" / "systemd"
SERVICE, TIMER = UNITS / "velhost-metrics.service", UNITS / "velhost-metrics.timer"
MACHINE = ROOT / "machines" / "ordinary-server.json"
MOST_EXPOSURE = 15  # of 100, by systemd's own count


def settings(unit):
    """The values of each setting of a unit."""
    found = {}
    for name, value in re.findall(r"^(\w+)=(.*)$", unit.read_text(), re.MULTILINE):
        found.setdefault(name, []).append(value)
    return found


def command_of_unit(output):
    """The unit's command, with this program, a machine file and a place of the test's own."""
    program, *arguments = settings(SERVICE)["ExecStart"][0].split()
    assert pathlib.Path(program).name == VELHOST.name, program
    arguments[arguments.index("--output") + 1] = str(output)
    return [str(VELHOST), *arguments, "--machine", str(MACHINE)]


def allowed_calls():
    """The system calls that the unit's filters leave."""
    def members(groups):
        text = subprocess.run(["systemd-analyze", "syscall-filter", *groups], check=True,
                              capture_output=True, text=True).stdout
        names = {line.strip() for line in text.splitlines() if line.startswith("    ")}
        inner = {name for name in names if name.startswith("@")}
        plain = {name for name in names if not name.startswith(("@", "#"))}
        return plain | (members(sorted(inner)) if inner else set())

    calls = set()
    for value in settings(SERVICE)["SystemCallFilter"]:
        groups = value.lstrip("~").split()
        calls = calls - members(groups) if value.startswith("~") else calls | members(groups)
    return calls


class UnitsTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.output = self.folder / "velhost.prom"

    def assert_written_whole(self):
        text = self.output.read_text()
        self.assertTrue(text.startswith("# TYPE krxsg_element_info gauge\n"))
        self.assertTrue(text.endswith("# EOF\n"))
        self.assertEqual([self.output], list(self.folder.iterdir()))

    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd is not installed")
    def test_systemd_takes_the_units(self):
        for unit in (SERVICE, TIMER):
            text = unit.read_text()
            program = settings(SERVICE)["ExecStart"][0].split()[0]  # only installed later
            (self.folder / unit.name).write_text(
                re.sub("^Documentation=.*\n", "", text, flags=re.MULTILINE).replace(program, str(VELHOST)))
        run = subprocess.run(["systemd-analyze", "verify", *sorted(map(str, self.folder.iterdir()))],
                             capture_output=True, text=True, check=False)
        self.assertEqual((0, ""), (run.returncode, run.stderr))

    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd is not installed")
    def test_the_service_is_exposed_to_little(self):
        run = subprocess.run(["systemd-analyze", "security", "--offline=true",
                              f"--threshold={MOST_EXPOSURE}", SERVICE],
                             capture_output=True, text=True, check=False)
        self.assertEqual(0, run.returncode, run.stdout)

    @unittest.skipUnless(os.geteuid() == 0, "only root has capabilities to lose")
    def test_no_capability_is_needed(self):
        unit = settings(SERVICE)
        self.assertEqual(([""], ["yes"], ["noroot-locked"]),
                         tuple(unit[name] for name in
                               ("CapabilityBoundingSet", "NoNewPrivileges", "SecureBits")))
        subprocess.run(["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--no-new-privs",
                        "--securebits=+noroot,+noroot_locked", *command_of_unit(self.output)], check=True)
        self.assert_written_whole()

    @unittest.skipUnless(os.geteuid() == 0, "needs a network namespace")
    def test_no_network_is_needed(self):
        run = subprocess.run(["unshare", "--net", *command_of_unit(self.output)], check=False,
                             capture_output=True, text=True)
        if "unshare failed" in run.stderr:
            self.skipTest(run.stderr.strip())
        self.assertEqual((0, ""), (run.returncode, run.stderr))
        self.assert_written_whole()

    @unittest.skipUnless(shutil.which("strace") and shutil.which("systemd-analyze"), "strace or systemd")
    def test_no_other_system_call_is_made(self):
        trace = self.folder / "trace"
        run = subprocess.run(["strace", "-f", "-qq", "-o", trace, *command_of_unit(self.output)],
                             check=False, capture_output=True, text=True,
                             env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})  # it is traced already
        self.assertEqual((0, ""), (run.returncode, run.stderr))
        made = set(re.findall(r"^\d+ +(\w+)\(", trace.read_text(), re.MULTILINE))
        trace.unlink()
        self.assertIn("openat", made)
        self.assertEqual(set(), made - allowed_calls())
        self.assert_written_whole()

    def test_the_exporter_may_read_what_is_written(self):
        os.umask(int(settings(SERVICE)["UMask"][0], 8))
        subprocess.run(command_of_unit(self.output), check=True)
        self.assertTrue(self.output.stat().st_mode & stat.S_IROTH)
        self.assertEqual(".prom", pathlib.Path(
            settings(SERVICE)["ExecStart"][0].split()[-1]).suffix)

    def test_they_are_installed(self):
        subprocess.run([CMAKE, f"-DCMAKE_INSTALL_PREFIX={self.folder}", "-P",
                        BUILD / "share" / "cmake_install.cmake"], check=True, capture_output=True)
        for file, source in (("lib/systemd/system/velhost-metrics.service", SERVICE),
                             ("lib/systemd/system/velhost-metrics.timer", TIMER),
                             ("share/velhost/prometheus/velhost-rules.yml",
                              ROOT / "share/prometheus/velhost-rules.yml"),
                             ("share/velhost/grafana/velhost-firmware.json",
                              ROOT / "share/grafana/velhost-firmware.json")):
            with self.subTest(file):
                self.assertEqual(source.read_text(), (self.folder / file).read_text())

    def test_the_timer_starts_the_service(self):
        self.assertEqual(SERVICE.stem, TIMER.stem)
        self.assertEqual(["timers.target"], settings(TIMER)["WantedBy"])


if __name__ == "__main__":
    unittest.main()
