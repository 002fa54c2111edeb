#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds what the tests ran, as llvm-cov exports it, against what they must run.

    tests/coverage/compare.py COVERAGE.json

Prints for each folder the lines that ran, the outcomes of conditions that came about, and the conditions
of which it was shown that each alone decides (MC/DC). Of a template, and of a function that several
programs have, each counts once: it is covered when it is in any of them. Exit status: 0 when what is held
to 100 % is covered, but for what exceptions.toml lists; 1 for anything else, and for a listed exception
that is covered or is not there, with a line for each place.
"""
import collections
import json
import pathlib
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXCEPTIONS = pathlib.Path(__file__).with_name("exceptions.toml")

# What is held to 100 %: the plug-in, and whatever reads bytes from outside. What the names of files
# begin with.
HELD = (
    "plugin/", "spcommand/", "smbios/", "vpd/", "peripheral/",
    "collectors/",          # udev, BMCs, SMBIOS
    "platform/core/cimdatetime", "platform/core/mof", "platform/core/schemafolder",
    "platform/core/smbiosstring", "platform/core/utf8",
    "platform/smbios/",     # firmware tables and dumps
    "platform/spdriver/",   # what SPs and BMCs answer
    "host/files/",          # files, terminals, standard streams
    "host/machine/",        # machine files
    "host/recording/",      # what a machine answered, searched for whom it identifies
    "host/results/",        # documents read back
    "host/text/",           # texts from all of these
)
# What is counted beside it, without a bound.
COUNTED = ("platform/", "host/")
KINDS = ("lines", "outcomes", "MC/DC conditions")
MCDC_BRANCH = 6  # the kind of an outcome that belongs to a decision of several conditions


def name_of(filename):
    path = pathlib.Path(filename)
    return str(path.relative_to(ROOT)) if path.is_relative_to(ROOT) else ""


def lines_run(segments):
    """Line -> whether it ran, as llvm-cov tells it from the segments of a file."""
    by_line = collections.defaultdict(list)
    for line, _, count, has_count, is_entry, is_gap in segments:
        by_line[line].append((count, has_count, is_entry, is_gap))
    result, wrapped = {}, (0, False)
    for line in range(min(by_line, default=1), max(by_line, default=0) + 1):
        here = by_line.get(line, [])
        entries = [segment for segment in here if segment[1] and segment[2]]
        counts = [count for count, _, _, is_gap in entries if not is_gap]
        is_left_out = bool(here) and here[0][2] and not here[0][1]
        if entries or (wrapped[1] and not is_left_out):
            result[line] = max(wrapped[0], *counts, 0) > 0
        wrapped = here[-1][:2] if here else wrapped
    return result


class File:
    """What ran of a file. A place is (line, column, end line, end column)."""

    def __init__(self, name, segments):
        self.name = name
        self.source = (ROOT / name).read_text(encoding="utf-8").split("\n")
        self.lines = lines_run(segments)
        self.outcomes = collections.defaultdict(lambda: [False, False])  # place -> true, false
        self.decisions = collections.defaultdict(dict)  # place -> {place of a condition: shown}

    def add(self, function, index):
        """A function, or the part of it that stands in this file."""
        conditions = []
        for *place, taken, not_taken, file, _, kind in function["branches"]:
            if file != index:
                continue
            outcomes = self.outcomes[tuple(place)]
            outcomes[0] |= taken > 0
            outcomes[1] |= not_taken > 0
            if kind == MCDC_BRANCH:
                conditions.append(tuple(place))
        for *place, file, _, shown in function["mcdc_records"]:
            if file == index:
                self.add_decision(tuple(place), conditions, shown)

    def add_decision(self, place, conditions, shown):
        inside = sorted(c for c in conditions if place[:2] <= c[:2] and c[2:] <= place[2:])
        assert len(inside) == len(shown), (self.name, place)
        decision = self.decisions[place]
        for condition, is_shown in zip(inside, shown):
            decision[condition] = decision.get(condition, False) or is_shown

    def text(self, place):
        line, column, end_line, end_column = place
        lines = self.source[line - 1:end_line]
        lines[-1] = lines[-1][:end_column - 1]
        lines[0] = lines[0][column - 1:]
        return " ".join(part.strip() for part in lines)

    def gaps(self):
        """(line, what is wrong) of everything that is not covered. Left out are lines of nothing but
        brackets, outcomes on lines that did not run, and conditions that have not had both outcomes."""
        for line, ran in self.lines.items():
            if not ran and any(c.isalnum() for c in self.source[line - 1]):
                yield line, "never run"
        for place, outcomes in sorted(self.outcomes.items()):
            for outcome, seen in zip(("true", "false"), outcomes):
                if not seen and self.lines.get(place[0], True):
                    yield place[0], f"never {outcome}: {self.text(place)}"
        for decision in self.decisions.values():
            for condition, is_shown in decision.items():
                if not is_shown and all(self.outcomes[condition]):
                    yield condition[0], f"never decides alone: {self.text(condition)}"

    def figures(self):
        """Of each of KINDS how many are covered, and of how many."""
        outcomes = [seen for pair in self.outcomes.values() for seen in pair]
        shown = [seen for decision in self.decisions.values() for seen in decision.values()]
        return [(sum(all_), len(all_)) for all_ in (self.lines.values(), outcomes, shown)]


def read_files(export):
    files = {}
    for entry in export["files"]:
        name = name_of(entry["filename"])
        if name.startswith(HELD + COUNTED):
            files[name] = File(name, entry["segments"])
    for function in export["functions"]:
        for index, filename in enumerate(function["filenames"]):
            if (name := name_of(filename)) in files:
                files[name].add(function, index)
    return files


def read_exceptions():
    """(file, text of the line, what is wrong) -> how often."""
    with open(EXCEPTIONS, "rb") as stream:
        listed = tomllib.load(stream)["exception"]
    assert all(entry["reason"] for entry in listed)
    return collections.Counter((place[0], place[1], what)
                               for entry in listed for place in entry["places"]
                               for what in place[2:])


def failures_of(files, exceptions):
    left = exceptions.copy()
    for name, file in sorted(files.items()):
        if not name.startswith(HELD):
            continue
        for line, what in sorted(file.gaps()):
            key = name, file.source[line - 1].strip(), what
            if left[key]:
                left[key] -= 1
            else:
                yield f"{name}:{line}: {what}"
    for name, line, what in left.elements():
        yield f"{EXCEPTIONS.name}: {name}: {line}: is covered or not there: {what}"
    # A source in no program at all would be missed silently. A registration is an object that is made as
    # its library is loaded: no code that counts.
    for path in sorted(ROOT.glob("*/**/*.cpp")):
        name = str(path.relative_to(ROOT))
        if name.startswith(HELD) and name not in files and path.name != "registration.cpp":
            yield f"{name}: is in no program"


def folder_of(name):
    parts = name.split("/")
    return "/".join(parts[:2] if parts[0] in ("platform", "host", "collectors") else parts[:1])


def print_table(files, exceptions):
    sums = {}
    for name, file in files.items():
        is_held = name.startswith(HELD)
        row = sums.setdefault((not is_held, folder_of(name)), [[0, 0] for _ in KINDS])
        for total, figure in zip(row, file.figures()):
            total[:] = total[0] + figure[0], total[1] + figure[1]
    excepted = collections.Counter(folder_of(key[0]) for key in exceptions.elements())
    print(f"{'':34}" + "".join(f"{kind:>22}" for kind in KINDS) + f"{'exceptions':>12}")
    for (is_free, folder), row in sorted(sums.items()):
        cells = "".join(f"{covered} of {all_} {100 * covered / (all_ or 1) if all_ else 100:7.2f} %"
                        .rjust(22) for covered, all_ in row)
        print(f"{folder + (', the others' if is_free else ''):34}{cells}"
              f"{'' if is_free else excepted[folder]:>12}")


def main():
    with open(sys.argv[1], encoding="utf-8") as stream:
        files = read_files(json.load(stream)["data"][0])
    exceptions = read_exceptions()
    print_table(files, exceptions)
    failures = list(failures_of(files, exceptions))
    print("\n".join(failures) or f"100 % with {exceptions.total()} exceptions")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
