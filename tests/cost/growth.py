#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""How what each command costs grows with the machine, and what a summary costs with the number of its
files: instructions, and the exponent of the line that fits them best on logarithmic scales (1: twice the
machine, twice the cost; 2: four times). What the command takes on a machine without any node, or for one
file, is taken off first: a fixed cost in front would hide the growth.

Usage: growth.py COSTPROBE
"""
import dataclasses
import math
import pathlib
import sys
import tempfile

import costs

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "machines"))
import make_eight_nodes  # noqa: E402

FORMATS = ["table", "json", "inventory", "ndjson", "csv", "openmetrics", "trace"]

# The words behind velhost; FILE is the machine, OTHER one whose DIMMs are others.
COMMANDS = {
    "check": ["check", "FILE"],
    **{f"query, {name}": ["query", "--format", name, "--machine", "FILE"] for name in FORMATS},
    "record": ["record", "--machine", "FILE"],
    "diff": ["diff", "FILE", "OTHER"],
    "summary": ["summary", "FILE"],
}
# These go through the same machine in further ways.
MORE_COMMANDS = {
    "query, why": ["query", "--why", "--machine", "FILE"],
    "record, redacted": ["record", "--redact", "--machine", "FILE"],
    "explain": ["explain", "KRXSG_Vpd.SerialNumber", "--machine", "FILE"],
    "report": ["report", "FILE", "OTHER", "--output", "PAGE"],
}
MANY_FILES = "summary of files"
STATUSES = {0, 1, 3}  # answered, different, unanswered (a machine without nodes)


@dataclasses.dataclass
class Growth:
    sizes: list
    costs: list

    def exponent(self):
        """The slope of the least-squares line through the logarithms."""
        xs, ys = ([math.log(value) for value in values] for values in (self.sizes, self.costs))
        x_mean, y_mean = sum(xs) / len(xs), sum(ys) / len(ys)
        return (sum((x - x_mean) * (y - y_mean) for x, y in zip(xs, ys))
                / sum((x - x_mean) ** 2 for x in xs))


class Machines:
    """Machine files in a folder."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)

    def file(self, nodes, dimms, name="server"):
        return self.put(f"{name}-{nodes}-{dimms}", make_eight_nodes.machine(name, nodes, dimms))

    def other(self, nodes, dimms):
        text = make_eight_nodes.machine("server", nodes, dimms)
        return self.put(f"other-{nodes}-{dimms}", text.replace("P16G72", "P16G73"))

    def put(self, name, text):
        file = self.folder / f"{name}.json"
        file.write_text(text, encoding="utf-8")
        return file

    def deed(self, command, size):
        places = {"FILE": lambda: self.file(*size), "OTHER": lambda: self.other(*size),
                  "PAGE": lambda: self.folder / "page.html"}
        return ["velhost", *(places.get(word, lambda word=word: word)() for word in command)]

    def summary(self, count):
        return ["velhost", "summary", *(self.file(1, 1, f"server {i}") for i in range(count))]


def counted(probe, deeds, machine):
    told = costs.instructions(probe, deeds, machine)
    for deed, (_, status) in zip(deeds, told):
        if status not in STATUSES:
            raise RuntimeError(f"{deed[1]} ends with {status}")
    return [count for count, _ in told]


def with_machines(probe, commands, sizes):
    """{command: Growth over the number of DIMMs} for machines of so many nodes with so many DIMMs each."""
    with tempfile.TemporaryDirectory() as folder:
        machines = Machines(folder)
        deeds = [machines.deed(command, size) for command in commands.values()
                 for size in [(0, 0), *sizes]]
        counts = iter(counted(probe, deeds, machines.file(1, 1)))
    growths = {}
    for name in commands:
        fixed, *rest = (next(counts) for _ in [(0, 0), *sizes])
        growths[name] = Growth([nodes * dimms for nodes, dimms in sizes],
                               [cost - fixed for cost in rest])
    return growths


def with_files(probe, numbers):
    """Growth of a summary over the number of its files."""
    with tempfile.TemporaryDirectory() as folder:
        machines = Machines(folder)
        deeds = [machines.summary(count + 1) for count in [0, *numbers]]
        fixed, *rest = counted(probe, deeds, machines.file(1, 1))
    return Growth(numbers, [cost - fixed for cost in rest])


def summary_peaks(probe, numbers):
    """How many KiB a summary of so many files has resident at most."""
    with tempfile.TemporaryDirectory() as folder:
        machines = Machines(folder)
        told = costs.peaks(probe, [machines.summary(count) for count in numbers])
    if any(status != 0 for _, status in told):
        raise RuntimeError(f"a summary ends with {told}")
    return [peak for peak, _ in told]


def row(name, growth, fitted=0):
    """The cost of each, and the exponent from the fitted-th size on."""
    each = (f"{cost / size / 1e3:9.1f}" for size, cost in zip(growth.sizes, growth.costs))
    exponent = Growth(growth.sizes[fitted:], growth.costs[fitted:]).exponent()
    return f"{name:18}{''.join(each)}{exponent:10.3f}"


def head(what, sizes):
    return f"{what:18}{''.join(f'{size:9}' for size in sizes)}  exponent"


def report(probe):
    print("Thousands of instructions for each DIMM of a machine with so many, and for each file; the fit is"
          " that of the\nmachines with 128 DIMMs a node, as those with few cost more for their nodes:\n")
    sizes = [(2, 8), (2, 32), (2, 128), (8, 128), (32, 128), (64, 128)]
    growths = with_machines(probe, COMMANDS | MORE_COMMANDS, sizes)
    print(head("DIMMs", growths["check"].sizes))
    for name, growth in growths.items():
        print(row(name, growth, fitted=2))
    files = with_files(probe, [30, 100, 300])
    print("\n" + head("files", files.sizes) + "\n" + row(MANY_FILES, files))
    numbers = [100, 1000, 10000]
    print("\n" + f"{'files':18}" + "".join(f"{number:9}" for number in numbers))
    print(f"{'KiB at the peak':18}" + "".join(f"{peak:9}" for peak in summary_peaks(probe, numbers)))


if __name__ == "__main__":
    report(sys.argv[1])
