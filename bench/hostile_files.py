#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What hostile machine files cost before they are refused: time and peak memory of `velhost check`, for
each file of tests/host/hostile_files_test.py, the best of five processes.

Usage: hostile_files.py VELHOST
"""
import importlib.util
import multiprocessing
import os
import pathlib
import subprocess
import sys
import tempfile
import time

TEST = pathlib.Path(__file__).resolve().parent.parent / "tests" / "host" / "hostile_files_test.py"
PROCESSES = 5


def write_files(folder, names):
    """In a process of its own: what a process held before it became another one counts for that."""
    spec = importlib.util.spec_from_file_location("hostile_files_test", TEST)
    test = importlib.util.module_from_spec(spec)
    sys.argv = [TEST.name, "", "", "0"]
    spec.loader.exec_module(test)
    for name, content in test.DUMPS.items():
        (folder / name).write_bytes(content)
    for what, text, _ in test.HOSTILE:
        (folder / f"{what}.json").write_text(text, encoding="utf-8")
        names.put(what)
    names.put(None)


def cost(velhost, file):
    """Milliseconds of wall clock and mebibytes at the peak of one process."""
    begin = time.monotonic()
    process = subprocess.Popen([velhost, "check", file], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, _, usage = os.wait4(process.pid, 0)
    return (time.monotonic() - begin) * 1e3, usage.ru_maxrss / 1024


def main():
    velhost = os.path.abspath(sys.argv[1])
    print(f"{'what the file is':34}{'size in KiB':>12}{'ms':>8}{'MiB':>8}")
    with tempfile.TemporaryDirectory() as name:
        folder, names = pathlib.Path(name), multiprocessing.Queue()
        writer = multiprocessing.Process(target=write_files, args=(folder, names))
        writer.start()
        hostile = list(iter(names.get, None))
        writer.join()
        for what in hostile:
            file = folder / f"{what}.json"
            milliseconds, mebibytes = min(cost(velhost, file) for _ in range(PROCESSES))
            print(f"{what:34}{file.stat().st_size / 1024:12.1f}{milliseconds:8.1f}{mebibytes:8.1f}")


if __name__ == "__main__":
    main()
