#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Completion in bash: what is offered for a line, as bash would ask for it, and that it is what the
program's own parser knows.

Usage: completion_test.py VELHOST SOURCE-FOLDER COMPLETION-FILE-OF-THE-BUILD-TREE
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from parserhelp import Parser

VELHOST, ROOT, COMPLETION = (pathlib.Path(sys.argv.pop(1)).absolute() for _ in range(3))
PARSER = Parser(VELHOST)

# What bash does when the last word of "$@" is completed: compopt keeps the files away.
DRIVER = """
compopt() { files=no; }
source "$1" || exit
shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMP_LINE="$*" COMP_POINT=${#COMP_LINE}
_velhost "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
((${#COMPREPLY[@]})) && printf '%s\\n' "${COMPREPLY[@]}"
[[ ${files-} ]] || echo FILES
exit 0
"""


def complete(*words, program="velhost", completion=COMPLETION, path="/usr/bin:/bin"):
    """The words offered for the last one of a line; "FILES" when bash is to name files itself."""
    run = subprocess.run(["bash", "--norc", "-c", DRIVER, "bash", completion, program, *words],
                         capture_output=True, check=False, text=True, env={"PATH": path})
    assert run.returncode == 0 and not run.stderr, run
    return run.stdout.split("\n")[:-1]


FIRMWARE = ["KRXSG_SPROMFirmwareVPDMain", "KRXSG_SPROMFirmwareVPDBootROM"]
FILES, NOTHING = ["FILES"], []

CASES = [
    # what                            the line behind velhost       what is offered
    ("a command",                     ["rec"],                      ["record"]),
    ("several commands",              ["c"],                        ["check", "collectors", "classes"]),
    ("no such command",               ["x"],                        NOTHING),
    ("velhost's own options",         ["--"],                       ["--help", "--version"]),
    ("an option",                     ["query", "--ma"],            ["--machine"]),
    ("options of that command alone", ["record", "--re"],           ["--redact"]),
    ("an option behind a class",      ["query", "KRXSG_Vpd", "--why"], ["--why"]),
    ("a command without options",     ["check", "--"],              ["--help"]),
    ("a format",                      ["query", "--format", "in"],  ["inventory"]),
    ("the formats of that command",   ["classes", "--format", "m"], ["mof"]),
    ("a format behind a sign",        ["query", "--format", "=", "tr"], ["trace"]),
    ("each format behind a sign",     ["classes", "--format", "="], ["table", "json", "mof"]),
    ("a class",                       ["query", "KRXSG_SPROM"],     FIRMWARE),
    ("a class behind options",        ["query", "--format", "json", "--why", "KRXSG_cK"], ["KRXSG_cKVM"]),
    ("no abstract class to query",    ["query", "CIM_"],            NOTHING),
    ("an abstract class to look at",  ["classes", "CIM_SoftwareE"], ["CIM_SoftwareElement"]),
    ("a class to explain",            ["explain", "KRXSG_cK"],      ["KRXSG_cKVM"]),
    ("a property to explain",         ["explain", "KRXSG_cKVM.V"],  ["KRXSG_cKVM.Version"]),
    ("an inherited one too",          ["explain", "KRXSG_Vpd.Part"], ["KRXSG_Vpd.PartNumber"]),
    ("an option behind a property",   ["explain", "KRXSG_Vpd.Name", "--no"], ["--node"]),
    ("a machine",                     ["query", "--machine", ""],   FILES),
    ("a machine behind a sign",       ["query", "--machine", "=", "ser"], FILES),
    ("an output",                     ["record", "--output", "x"],  FILES),
    ("a plug-in",                     ["query", "--plugin", "lib"], FILES),
    ("a file to check",               ["check", "serv"],            FILES),
    ("a second file to check",        ["check", "a.json", ""],      FILES),
    ("a second file to compare",      ["diff", "a.json", ""],       FILES),
    ("files to sum up",               ["summary", "--format", "csv", ""], FILES),
    ("a file to be shown",            ["report", "a.json", ""],     FILES),
    ("a page",                        ["report", "--output", ""],   FILES),
    ("a number is nobody's to know",  ["query", "--repeat", ""],    NOTHING),
    ("a node neither",                ["query", "--node", ""],      NOTHING),
    ("no time either",                ["query", "--timeout", ""],   NOTHING),
    ("a level neither",               ["query", "--log-level", ""], NOTHING),
    ("a command to be helped with",   ["help", "que"],              ["query"]),
    ("nothing behind collectors",     ["collectors", ""],           NOTHING),
    ("nothing behind record",         ["record", ""],               NOTHING),
    ("a word with blanks and quotes", ["query", "a 'b $(touch x)"], NOTHING),
]


class Completion(unittest.TestCase):
    def test_a_line_is_completed(self):
        for what, words, expected in CASES:
            with self.subTest(what):
                self.assertEqual(expected, complete(*words))

    def test_the_parser_knows_the_same(self):
        self.assertEqual(sorted(PARSER.commands()), sorted(complete("")))
        for command in [None, *PARSER.commands()]:
            words = [command] if command else []
            with self.subTest(command=command):
                self.assertEqual(sorted(PARSER.options(command)), sorted(complete(*words, "--")))
                for option, argument in PARSER.options(command).items():
                    offered = complete(*words, option, "")
                    if argument == "FORMAT":
                        self.assertEqual(PARSER.formats(command), offered)
                    elif argument in ("FILE", "PAGE"):
                        self.assertEqual(FILES, offered, option)
                    elif argument:
                        self.assertEqual(NOTHING, offered, option)

    def test_all_classes_are_offered(self):
        schema = PARSER.run("classes", "--format", "mof").stdout
        classes = [line.split()[1] for line in schema.split("\n") if line.startswith("class ")]
        concrete = [name for name in classes if not name.startswith("CIM_")]
        self.assertLess(15, len(concrete))
        self.assertEqual(sorted(concrete), sorted(complete("query", "")))
        self.assertEqual(sorted(classes), sorted(complete("classes", "")))


class Places(unittest.TestCase):
    """Where the classes come from: the program's schema, whatever PATH says."""

    def test_a_program_that_is_named_by_its_path(self):
        alone = ROOT / "share" / "bash-completion" / "velhost"  # has no schema beside itself
        self.assertEqual(FIRMWARE, complete("query", "KRXSG_SPROM", program=str(VELHOST),
                                            completion=alone))

    def test_a_program_in_path(self):
        alone = ROOT / "share" / "bash-completion" / "velhost"
        path = f"{VELHOST.parent}:/usr/bin:/bin"
        self.assertEqual(FIRMWARE, complete("query", "KRXSG_SPROM", path=path, completion=alone))

    def test_a_program_that_a_link_names(self):
        alone = ROOT / "share" / "bash-completion" / "velhost"
        with tempfile.TemporaryDirectory() as folder:
            link = pathlib.Path(folder) / "velhost"
            link.symlink_to(VELHOST)
            self.assertEqual(FIRMWARE, complete("query", "KRXSG_SPROM", program=str(link),
                                                completion=alone))

    def test_without_a_schema_there_are_no_classes(self):
        with tempfile.TemporaryDirectory() as folder:
            alone = pathlib.Path(folder) / "velhost"
            shutil.copy(COMPLETION, alone)
            self.assertEqual(FILES, complete("query", "KRXSG_", completion=alone))
            self.assertEqual(["query"], complete("q", completion=alone))

    def test_a_class_of_somebody_elses(self):
        with tempfile.TemporaryDirectory() as folder:
            share = pathlib.Path(folder) / "share"
            shutil.copytree(ROOT / "schema", share / "vel" / "schema")
            (share / "vel" / "schema" / "70-mine.mof").write_text(
                '  [Description("Fan")]\n  class MINE_Fan: CIM_FRU\n  {\n    string Colour;\n  };\n')
            (share / "bash-completion" / "completions").mkdir(parents=True)
            own = share / "bash-completion" / "completions" / "velhost"
            shutil.copy(COMPLETION, own)
            self.assertEqual(["MINE_Fan"], complete("query", "MINE", completion=own))


if __name__ == "__main__":
    unittest.main()
