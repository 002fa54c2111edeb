# SPDX-License-Identifier: Apache-2.0
"""What the deeds of costprobe cost. Instructions are counted by valgrind: the same on a busy machine as on
an idle one, and on processors without counters. The start of a program is in neither figure."""
import os
import re
import subprocess
import tempfile

# cachegrind without its caches counts fastest of valgrind's tools.
COUNTER = ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null"]
COUNTED = re.compile(r"^==(\d+)== I +refs: +([\d,]+)$", re.MULTILINE)


def answers(probe, deeds, counter=()):
    """What the probe says of each deed, a list of words."""
    run = subprocess.run([*counter, probe], text=True, check=True, stdout=subprocess.PIPE,
                         input="".join("\t".join(map(str, deed)) + "\n" for deed in deeds),
                         env={**os.environ, "LC_ALL": "C.UTF-8", "COLUMNS": "80"})
    return [tuple(map(int, line.split())) for line in run.stdout.splitlines()]


def instructions(probe, deeds, machine):
    """[(instructions, exit status)] of the deeds. The machine file is gone through first: what valgrind
    has translated then, it need not translate for each deed."""
    with tempfile.NamedTemporaryFile("r") as log:
        told = answers(probe, [["warm", "summary", machine], *deeds],
                       [*COUNTER, f"--log-file={log.name}"])
        counted = {int(process): int(count.replace(",", ""))
                   for process, count in COUNTED.findall(log.read())}
    return [(counted[process] - counted[before], status) for before, process, status, _ in told]


def peaks(probe, deeds):
    """[(most KiB that were resident at a time, exit status)] of the deeds."""
    return [(peak, status) for _, _, status, peak in answers(probe, deeds)]
