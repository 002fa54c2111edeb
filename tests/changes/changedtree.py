# SPDX-License-Identifier: Apache-2.0
"""A copy of the work tree in which a source may be changed, built and tested; the work tree itself is
left alone."""

import contextlib
import dataclasses
import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SHORTEST_LIMIT = 60  # seconds; a change may make a program run without end,
LIMITS = ["prlimit", "--data=4294967296", "--fsize=268435456",  # or take memory without end;
          "env", "--default-signal"]  # nohup has the tests ignore SIGHUP


class Trouble(Exception):
    """The changes cannot be tried: what() is for people."""


@dataclasses.dataclass(frozen=True)
class Outcome:
    status: int  # of the command; None when it did not end in time
    output: str


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def run_limited(command, seconds, **options):
    """Runs a command that may go wrong in any way, and ends all that it started."""
    with tempfile.TemporaryFile("w+", errors="replace") as output:
        with subprocess.Popen([*LIMITS, *map(str, command)], stdin=subprocess.DEVNULL, stdout=output,
                              stderr=subprocess.STDOUT, start_new_session=True, **options) as process:
            try:
                status = process.wait(seconds)
            except subprocess.TimeoutExpired:
                status = None
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
        output.seek(0)
        return Outcome(status, output.read())


class ChangedTree:
    """What git has in HEAD, or stands uncommitted, in FOLDER/tree; the preset dev in tree/build-dev."""

    def __init__(self, folder):
        self.tree = folder / "tree"
        self.binaries = self.tree / "build-dev"
        self.limits = {}  # seconds, by test
        self.environment = {**os.environ, "CCACHE_BASEDIR": str(self.tree), "CCACHE_NOHASHDIR": "1"}

    def copy(self):
        """The tracked files as they stand, newer ones only, so that a build goes on where it was."""
        listed = run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
        names = {name for name in listed.stdout.split("\0") if name and (ROOT / name).exists()}
        for name in names:
            source, target = ROOT / name, self.tree / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        for old in [p for p in self.tree.rglob("*") if p.is_file()]:
            name = str(old.relative_to(self.tree))
            if name not in names and not name.startswith("build-"):
                old.unlink()

    def configure(self, *options):
        result = run(["cmake", "--preset", "dev", "-DBUILD_TESTING=ON", *options], cwd=self.tree,
                     env=self.environment)
        if result.returncode != 0:
            raise Trouble(f"cmake: {result.stderr}")

    def build(self, *targets):
        """None, or what the compiler said."""
        result = run(["ninja", "-C", self.binaries, *targets], env=self.environment)
        return None if result.returncode == 0 else result.stdout

    def commands(self):
        """What ctest runs, by the name of the test; GoogleTest's programs are run by failures_of."""
        shown = run(["ctest", "--test-dir", self.binaries, "--show-only=json-v1"])
        return {test["name"]: test["command"] for test in json.loads(shown.stdout)["tests"]
                if "command" in test}

    def failures_of(self, program, *suites):
        """The first test of a program of GoogleTest's that fails, of these suites or of all; the program
        itself when it ends otherwise."""
        chosen = ["--gtest_filter=" + ":".join(f"{s}.*:*/{s}.*" for s in suites)] if suites else []
        outcome = run_limited(
            [self.binaries / "tests" / program, "--gtest_brief=1", "--gtest_fail_fast", *chosen],
            self.limits.get(program, SHORTEST_LIMIT), cwd=self.binaries)
        if outcome.status is None:
            return [f"{program} (does not end)"]
        if outcome.status == 0:
            return []
        named = [line.split("]")[1].split("(")[0].split(",")[0].strip()
                 for line in outcome.output.splitlines() if line.startswith("[  FAILED  ]")]
        return list(dict.fromkeys(name for name in named if "." in name)) or [f"{program} (crashes)"]

    def first_error(self, compiler_output):
        errors = [line for line in compiler_output.splitlines() if " error: " in line or "ld:" in line]
        return (errors or ["no error line"])[0].replace(f"{self.tree}/", "")

    @contextlib.contextmanager
    def replaced(self, file, text):
        """The file has another text meanwhile."""
        path = self.tree / file
        before = path.read_text()
        path.write_text(text)
        try:
            yield
        finally:
            path.write_text(before)
