#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The witnesses of the properties of random machines. None of them shares code with the program.

  judge.py VELHOST FOLDER

Of each line of standard input, the name of a witness, one line comes back: "ok", or what it finds wrong
with the files of FOLDER. Those are told with each witness.
"""

import json
import pathlib
import subprocess
import sys
import traceback

sys.dont_write_bytecode = True
TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / name) for name in ("properties", "origins", "machines")]
import counts  # noqa: E402
import derive_expected as model  # noqa: E402
import evidence  # noqa: E402
import mofclasses  # noqa: E402
import origins_test  # noqa: E402
import proof  # noqa: E402
import redaction  # noqa: E402


class Judge:
    def __init__(self, velhost, folder):
        self.velhost, self.folder, self.known_lines = velhost, pathlib.Path(folder), None

    def file(self, name):
        return self.folder / f"{name}.json"

    def read(self, name):
        return json.loads(self.file(name).read_text(encoding="utf-8"))

    def lines(self):
        """The origins of each class, as the schema has them."""
        if self.known_lines is None:
            printed = subprocess.run([self.velhost, "classes", "--format", "mof"], check=True,
                                     capture_output=True, text=True).stdout
            self.known_lines = {name: origins_test.lines_of(read)
                                for name, read in mofclasses.read_classes(printed).items()}
        return self.known_lines

    def origins(self):
        """machine, document: each value is explained by what was sent and read."""
        machine = evidence.Machine(self.file("machine"), self.read("document"))
        for instance in machine.instances:
            outcome = proof.prove(self.lines()[instance.class_name], instance, machine)
            if outcome.unexplained:
                return (f"{instance.class_name} {instance.text('Name')!r}: no origin explains "
                        + str({name: instance.values[name] for name in outcome.unexplained}))
        return ""

    def model(self):
        """machine, document: the document is the one that the second witness works out."""
        expected, found = model.derive(self.file("machine")), self.read("document")
        return first_difference(expected, found, "")

    def counts(self):
        """machine, document"""
        return counts.complaint(self.read("machine"), self.read("document"))

    def redaction(self):
        """recorded, document: of the machine; redacted, redacted_document: of what is shown of it."""
        return redaction.complaint(*map(self.read, ("recorded", "document", "redacted",
                                                    "redacted_document")))


def first_difference(expected, found, place):
    """The order of properties counts; the words of an error are free."""
    if place.endswith(("/what", "/machine")):
        return ""
    if isinstance(expected, dict) and isinstance(found, dict):
        if list(expected) != list(found) and set(expected) != {"exception", "code", "what"}:
            ordered = place.endswith("/properties")
            if ordered or set(expected) != set(found):
                return f"{place}: {list(found)} and not {list(expected)}"
        pairs = [(key, expected[key], found[key]) for key in expected]
    elif isinstance(expected, list) and isinstance(found, list):
        pairs = list(zip(range(len(expected)), expected, found))
    else:
        same = type(expected) is type(found) and expected == found
        return "" if same else f"{place}: {found!r} and not {expected!r}"
    for key, one, other in pairs:
        if difference := first_difference(one, other, f"{place}/{key}"):
            return difference
    if len(expected) != len(found):
        return f"{place}: {len(found)} and not {len(expected)}"
    return ""


def main():
    judge = Judge(*sys.argv[1:])
    for line in sys.stdin:
        try:
            verdict = getattr(judge, line.strip())() or "ok"
        except Exception:  # a witness that cannot tell is no witness
            verdict = traceback.format_exc()
        print(verdict.replace("\n", "\\n"), flush=True)


if __name__ == "__main__":
    main()
