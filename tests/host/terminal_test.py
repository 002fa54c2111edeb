#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""A slow machine, asked from a terminal: what is shown meanwhile, that nothing of it is left behind, and
how Ctrl-C ends it all.

Usage: terminal_test.py VELHOST MACHINES-FOLDER
"""
import fcntl
import json
import os
import pathlib
import pty
import re
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

VELHOST, MACHINES = os.path.abspath(sys.argv.pop(1)), pathlib.Path(sys.argv.pop(1)).resolve()
COMMANDS = 30  # of the two nodes
INTERRUPTED = "velhost: interrupted, nothing was written\n"
LONG = 60000000  # microseconds, the most that a command may take


def slow(folder, latency, name="two-nodes"):
    machine = json.loads((MACHINES / f"{name}.json").read_text())
    machine["sp"]["latency_us"] = latency
    file = pathlib.Path(folder) / "slow.json"
    file.write_text(json.dumps(machine))
    return str(file)


def screen(written):
    """What stands on a terminal that got the bytes: its lines, without blanks at their ends."""
    lines, column = [""], 0
    for piece in re.findall(r"\x1b\[K|\r|\n|[^\x1b\r\n]", written):
        if piece == "\n":
            lines.append("")
        elif piece == "\r":
            column = 0
        elif piece == "\x1b[K":
            lines[-1] = lines[-1][:column]
        else:
            lines[-1] = lines[-1][:column].ljust(column) + piece + lines[-1][column + 1:]
            column += 1
        column = 0 if piece == "\n" else column
    return stripped("\n".join(lines))


def stripped(text):
    return "\n".join(line.rstrip() for line in text.split("\n"))


class Terminal:
    """A program with a terminal of its own: standard error, and what else is asked for."""

    def __init__(self, arguments, columns=80, term="xterm", stdout=None):
        self.written = b""
        self.started = time.monotonic()
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            fcntl.ioctl(2, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            os.environ.pop("TERM", None)
            if term is not None:
                os.environ["TERM"] = term
            if stdout is not None:
                os.dup2(os.open(stdout, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), 1)
            os.execv(VELHOST, ["velhost", *arguments])

    def read_until(self, text=None):
        """Reads until the text has come, or the program has ended."""
        while text is None or text not in self.written:
            ready, _, _ = select.select([self.master], [], [], 60)
            assert ready, self.written
            try:
                self.written += os.read(self.master, 65536)
            except OSError:  # nobody has the other end any more
                return

    def type(self, text):
        os.write(self.master, text)

    def end(self):
        """The wait status, and all that was written."""
        self.read_until()
        _, status = os.waitpid(self.pid, 0)
        os.close(self.master)
        return status, self.written.decode().replace("\r\n", "\n")


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def files(self):
        return sorted(file.name for file in self.folder.iterdir())

    def run_on_terminal(self, *arguments, **more):
        terminal = Terminal(arguments, stdout=str(self.folder / "out"), **more)
        status, written = terminal.end()
        return os.waitstatus_to_exitcode(status), written, time.monotonic() - terminal.started


class Shown(Folder):
    def test_how_far_the_collection_is(self):
        for command in ("query", "record"):
            status, written, took = self.run_on_terminal(
                command, "--machine", slow(self.folder, 100000))
            self.assertEqual(0, status, written)
            drawn = re.findall(r"\r([^\r\x1b]+)\x1b\[K", written)
            self.assertLessEqual(len(drawn), took * 10 + 1)
            for text in drawn:
                self.assertRegex(text, r"^SP [12] of 2, [A-Za-z0-9 ,-]+(: \d+ (of 30 )?commands?"
                                       r"(, about \d+ s left)?)?$")
            self.assertTrue(any("about" in text for text in drawn), drawn)
            self.assertTrue(any(", DIMM " in text for text in drawn), drawn)
            self.assertEqual("", screen(written))
            self.assertNotEqual("", (self.folder / "out").read_text())

    def test_inside_the_terminal(self):
        for columns in (1, 10, 60):
            _, written, _ = self.run_on_terminal("query", "--machine", slow(self.folder, 60000),
                                                 columns=columns)
            for text in re.findall(r"\r([^\r\x1b]+)\x1b\[K", written):
                self.assertLess(len(text), columns)
            self.assertEqual("", screen(written))

    def test_the_answer_on_the_same_terminal(self):
        machine = slow(self.folder, 50000)
        _, written = Terminal(["query", "--machine", machine, "--format", "json"]).end()
        expected = subprocess.run([VELHOST, "query", "--machine", machine, "--format", "json"],
                                  capture_output=True, check=True, text=True)
        self.assertRegex(written, "SP [12] of 2")
        self.assertEqual(stripped(expected.stderr + expected.stdout), screen(written))

    def test_log_lines_between(self):
        machine = slow(self.folder, 60000)
        arguments = ["query", "--machine", machine, "--log-level", "100"]
        _, written, _ = self.run_on_terminal(*arguments)
        expected = subprocess.run([VELHOST, *arguments], capture_output=True, check=True, text=True)
        self.assertRegex(written, "SP [12] of 2")
        self.assertLess(3, expected.stderr.count("\n"))
        self.assertEqual(stripped(expected.stderr), screen(written))

    def test_errors_behind_it(self):
        machine = json.loads(pathlib.Path(slow(self.folder, 60000)).read_text())
        machine["faults"] = [{"operation": "add_to_class", "throw": "runtime_error"}]
        (self.folder / "slow.json").write_text(json.dumps(machine))
        status, written, _ = self.run_on_terminal("query", "--machine",
                                                  str(self.folder / "slow.json"))
        self.assertEqual(1, status)
        self.assertRegex(written, "SP [12] of 2")
        self.assertRegex(screen(written), r"^velhost: [^\n]+\n$")


class NotShown(Folder):
    def test_where_nobody_could_read_it(self):
        machine = slow(self.folder, 50000)
        for term in ("dumb", "", None):
            status, written, _ = self.run_on_terminal("query", "--machine", machine, term=term)
            self.assertEqual((0, ""), (status, written), term)
        run = subprocess.run([VELHOST, "query", "--machine", machine], capture_output=True,
                             check=False, env={**os.environ, "TERM": "xterm"})
        self.assertEqual((0, b""), (run.returncode, run.stderr))

    def test_when_the_machine_is_quick(self):
        status, written, _ = self.run_on_terminal("query", "--machine", slow(self.folder, 0))
        self.assertEqual((0, ""), (status, written))


class Interrupted(Folder):
    def test_ctrl_c(self):
        terminal = Terminal(["query", "--machine", slow(self.folder, 300000)],
                            stdout=str(self.folder / "out"))
        terminal.read_until(b" of 2")
        terminal.type(b"\x03")
        status, written = terminal.end()
        self.assertTrue(os.WIFSIGNALED(status))
        self.assertEqual(signal.SIGINT, os.WTERMSIG(status))
        self.assertEqual(INTERRUPTED, screen(written))
        self.assertEqual("", (self.folder / "out").read_text())

    def interrupt(self, number, *arguments, ignored=False):
        """Sends the signal when the first command, which takes a minute, is under way."""
        with open(self.folder / "err", "w+b") as err:
            process = subprocess.Popen(
                [VELHOST, *arguments], stdout=subprocess.PIPE, stderr=err, cwd=self.folder,
                preexec_fn=(lambda: signal.signal(number, signal.SIG_IGN)) if ignored else None)
            self.addCleanup(process.kill)
            while not self.is_waiting(process.pid):
                time.sleep(0.01)
            process.send_signal(number)
            out, _ = process.communicate(timeout=60)
            err.seek(0)
            return process.returncode, out.decode(), err.read().decode()

    @staticmethod
    def is_waiting(pid):
        """It sleeps, as the simulated SP does, and has loaded the plug-in before."""
        if "libspfirmwarevpd" not in pathlib.Path(f"/proc/{pid}/maps").read_text():
            return False
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(") ")[2].startswith("S")

    def test_a_command_that_is_under_way(self):
        machine = slow(self.folder, LONG)
        for number in (signal.SIGINT, signal.SIGTERM):
            for command in ("query", "record"):
                outcome = self.interrupt(number, command, "--machine", machine)
                self.assertEqual((-number, "", INTERRUPTED), outcome)

    def test_no_half_file(self):
        machine = slow(self.folder, LONG)
        (self.folder / "old").write_text("old")
        for output in ("old", "new"):
            for command in (["query"], ["record", "--force"]):
                outcome = self.interrupt(signal.SIGINT, *command, "--machine", machine,
                                         "--output", output)
                self.assertEqual((-signal.SIGINT, "", INTERRUPTED), outcome)
                self.assertEqual(["err", "old", "slow.json"], self.files())
                self.assertEqual("old", (self.folder / "old").read_text())

    def test_a_signal_that_was_ignored_stays_so(self):
        machine = slow(self.folder, 50000)
        status, out, err = self.interrupt(signal.SIGINT, "query", "--machine", machine, ignored=True)
        self.assertEqual((0, ""), (status, err))
        self.assertIn("KRXSG_Vpd", out)

    def test_what_was_written_is_not_denied(self):
        fifo = self.folder / "fifo"
        os.mkfifo(fifo)
        process = subprocess.Popen([VELHOST, "check", MACHINES / "two-nodes.json", fifo],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertIn(b"ok", process.stdout.readline())
        process.send_signal(signal.SIGTERM)
        _, err = process.communicate(timeout=60)
        self.assertEqual((-signal.SIGTERM, b"velhost: interrupted\n"), (process.returncode, err))


if __name__ == "__main__":
    unittest.main()
