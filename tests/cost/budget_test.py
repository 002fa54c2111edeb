#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What a collection and a query of each format take, in instructions, held against budget.toml: neither
more nor less than it says, by 3 %. What takes less now gets a smaller budget, or the next change could
spend the difference unseen.

The counts are those of one compiler and its libraries, which budget.toml names. With others nothing is
compared.

Usage: budget_test.py COSTPROBE MACHINES-FOLDER COMPILER    compares
       budget_test.py COSTPROBE MACHINES-FOLDER COMPILER --renew    writes budget.toml anew
"""
import os
import pathlib
import platform
import shlex
import sys
import tomllib

import costs
import growth

BUDGET = pathlib.Path(__file__).resolve().parent / "budget.toml"
MARGIN = 0.03
# What was given back is found at once, so that what malloc takes depends less on what the heap was before:
# the length of a path is enough to change that.
STEADY_HEAP = {"GLIBC_TUNABLES": "glibc.malloc.tcache_count=60000"}
# The other steps are small, and what malloc takes is much of them.
HELD = ("collection", "query")
SKIPPED = 77

# What the plug-in is asked on, and the machine of which each format is written.
COLLECTED = {"one node": "one-sp-everything", "two nodes": "two-nodes", "eight nodes": "eight-nodes"}
QUERIED = "two-nodes"


# What is counted on each of those machines, as the deed that has it and the one that lacks it alone.
STEPS = {"collection": ("collect", "ready"), "its floor": ("repeat", "ready"),
         "publication": ("ask", "collect")}


def collections(probe, machines):
    """{what: instructions} of each step on each of the machines, {what: file}"""
    steps = {f"{step}, {what}": [(word, file) for word in words]
             for what, file in machines.items() for step, words in STEPS.items()}
    deeds = [*dict.fromkeys(deed for pair in steps.values() for deed in pair)]
    counts = dict(zip(deeds, growth.counted(probe, deeds, next(iter(machines.values())))))
    return {what: counts[deed] - counts[without] for what, (deed, without) in steps.items()}


def queries(probe, machine):
    deeds = [["velhost", "query", "--format", name, "--machine", machine] for name in growth.FORMATS]
    return dict(zip((f"query, {name}" for name in growth.FORMATS),
                    growth.counted(probe, deeds, machine)))


def measured(probe, folder):
    collected = {what: folder / f"{name}.json" for what, name in COLLECTED.items()}
    return collections(probe, collected) | queries(probe, folder / f"{QUERIED}.json")


def ratio(counts, what):
    """A collection, divided by its floor: the same calls of the platform without a plug-in."""
    return counts[f"collection, {what}"] / counts[f"its floor, {what}"]


def here(compiler):
    return f"{compiler}, {' '.join(platform.libc_ver())}, {platform.machine()}"


def text_of(compiler, counts):
    rows = "".join(f'"{what}" = {count}\n' for what, count in counts.items() if what.startswith(HELD))
    return (f"# SPDX-License-Identifier: Apache-2.0\n#\n# Written by budget_test.py --renew.\n"
            f'counted_with = "{here(compiler)}"\n\n[instructions]\n{rows}')


def differences(budget, counts):
    """A line for each count, and whether all are within their budgets."""
    held = {what: count for what, count in counts.items() if what.startswith(HELD)}
    lines, good = [], set(budget) == set(held)
    for what, count in held.items():
        ratio = count / budget[what] if what in budget else float("inf")
        within = abs(ratio - 1) <= MARGIN
        good = good and within
        lines.append(f"{what:26}{count:12}{ratio:8.3f}{'' if within else '  not within 3 %'}")
    return lines, good


def main():
    probe, machines, compiler = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
    os.environ.update(STEADY_HEAP)
    if sys.argv[4:] == ["--renew"]:
        BUDGET.write_text(text_of(compiler, measured(probe, machines)), encoding="utf-8")
        return 0
    budget = tomllib.loads(BUDGET.read_text(encoding="utf-8"))
    if budget["counted_with"] != here(compiler):
        print(f"the budget is for {budget['counted_with']}, this is {here(compiler)}")
        return SKIPPED
    counts = measured(probe, machines)
    lines, good = differences(budget["instructions"], counts)
    print(f"{'':26}{'instructions':>12}{'budget':>8}", *lines, sep="\n")
    for what in COLLECTED:
        print(f"collection / its floor, {what}: {ratio(counts, what):.3f}")
    if not good:
        print(f"If that is meant, renew the budget: {shlex.join(['python3', *sys.argv])} --renew")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
