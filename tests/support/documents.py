# SPDX-License-Identifier: Apache-2.0
"""What documents in Markdown show: blocks of code, commands with their output, code in a line, links; and
how commands are run as a page shows them."""
import collections
import pathlib
import re
import subprocess
import tempfile

# `name` is that of a file, in a comment above the block, or empty; `line` is counted from 1.
Block = collections.namedtuple("Block", "line name language text")
Command = collections.namedtuple("Command", "text shown")  # and what the page shows of its output
Outcome = collections.namedtuple("Outcome", "status out err")


def blocks(page):
    """Those between fences, in order."""
    fence = re.compile(r"^(?:<!-- (\S+) -->\n)?```(\w*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
    return [Block(page.count("\n", 0, found.start(2)) + 1, found[1] or "", found[2], found[3])
            for found in fence.finditer(page)]


def prose(page):
    """The page without its blocks, line by line in its place."""
    fence = re.compile(r"^```\w*\n.*?^```$", re.DOTALL | re.MULTILINE)
    return fence.sub(lambda found: "\n" * found[0].count("\n"), page)


def commands(text):
    """Of a console block: "$ " begins a command, a backslash at its end goes on with it."""
    found = re.compile(r"^\$ ((?:.*\\\n)*.*)\n((?:(?!\$ ).*\n)*)", re.MULTILINE)
    return [Command(*one.groups()) for one in found.finditer(text)]


def page_commands(page):
    return [command for block in blocks(page) if block.language == "console"
            for command in commands(block.text)]


def inline_code(page):
    """Each with its lines as one."""
    return [" ".join(code.split()) for code in re.findall(r"(?<!`)`([^`]+)`(?!`)", prose(page))]


def links(page):
    """What is linked to, as the page has it."""
    return re.findall(r"\]\(([^()\s]+)\)", re.sub(r"`[^`]*`", "", prose(page)))


def anchors(page):
    """Those that headings have."""
    headings = re.findall(r"^#+ +(.*)$", prose(page), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def followed(lines, folder, environment):
    """The outcomes of commands that are run one after the other in one shell, in that folder: `cd` and $?
    count for the next one."""
    with tempfile.TemporaryDirectory() as results:
        files = [pathlib.Path(results) / str(number) for number in range(len(lines))]
        script = "".join(f"{{ {line}\n}} >{file}.out 2>{file}.err\n"
                         f"status=$?; echo $status >{file}.status; (exit $status)\n"
                         for file, line in zip(files, lines))
        subprocess.run(["bash", "-c", script], cwd=folder, env=environment,
                       stdin=subprocess.DEVNULL, check=False)
        return [Outcome(int(file.with_suffix(".status").read_text()),
                        *(file.with_suffix(end).read_text(encoding="utf-8") for end in (".out", ".err")))
                for file in files]


def shows(shown, text):
    """Whether the page shows that text; a line of three points stands for lines that it leaves out, and
    blanks at the end of a line nobody sees."""
    pieces = [re.escape(piece) for piece in re.split(r"^\.\.\.\n", shown, flags=re.MULTILINE)]
    text = re.sub(r" +$", "", text, flags=re.MULTILINE)
    return re.fullmatch(r"(?:.*\n)+".join(pieces), text) is not None


def first_unshown(shown, text):
    """The number of the first line, from 0, with which a page no longer shows the beginning of a text."""
    lines = shown.splitlines(keepends=True)
    begins = ("".join(lines[:count]) for count in range(1, len(lines) + 1))
    return next((number for number, begin in enumerate(begins)
                 if not shows(begin, text) and not shows(begin + "...\n", text)), len(lines))
