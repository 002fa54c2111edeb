# SPDX-License-Identifier: Apache-2.0
"""What velhost's parser knows, read from the help that it prints of itself."""
import re
import subprocess


class Parser:
    def __init__(self, velhost):
        self.velhost = velhost

    def run(self, *arguments):
        return subprocess.run([self.velhost, *arguments], capture_output=True, check=False,
                              text=True, stdin=subprocess.DEVNULL)

    def help(self, command=None):
        run = self.run(command, "--help") if command else self.run("--help")
        assert run.returncode == 0, (command, run)
        return run.stdout

    def commands(self):
        """In the order of the help; an empty name stands for velhost itself."""
        listed = self.help().partition("\nSubcommands:\n")[2].partition("\n\n\n")[0]
        return re.findall(r"^([a-z]+)\n  [A-Z]", listed, re.MULTILINE)

    def options(self, command=None):
        """The long names, each with the name of its argument or an empty text."""
        listed = self.help(command).partition("\nOptions:\n")[2].partition("\n\n")[0]
        return dict(re.findall(r"^  (?:-\w,)?(--[a-z-]+)(?: ([A-Z]+))?", listed, re.MULTILINE))

    def formats(self, command):
        """As the program itself lists them for a format that there is not."""
        if "--format" not in self.options(command):
            return []
        operands = {"diff": ["a", "b"], "summary": ["a"]}.get(command, [])
        error = self.run(command, *operands, "--format", "none-of-them").stderr
        return error.rpartition(" is none of ")[2].split("\n")[0].partition(";")[0].split(", ")
