#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the machines that the benchmarks collect from: NODESxDIMMS.json, that many DIMMs in each of so
many nodes.

Usage: machines.py FOLDER NODESxDIMMS...
"""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "machines"))
import make_eight_nodes  # noqa: E402


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for size in sys.argv[2:]:
        nodes, dimms = map(int, size.split("x"))
        text = make_eight_nodes.machine(f"{nodes} nodes of {dimms} DIMMs", nodes, dimms)
        (folder / f"{size}.json").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
