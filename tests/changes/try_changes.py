#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes one small change after the other to the sources, builds and runs the tests, and tells which
test saw it. A change that no test sees is a demand that nobody would miss.

    tests/changes/try_changes.py [-l] [-k TEXT] [FILE...]

FILEs are lists of changes (default: all *.toml beside this script); -k takes those changes whose
name contains TEXT; -l lists them. A change is a file, an old text that stands in it once, and the
new text; further edits of the same change follow as [[change.more]]. The work tree is left alone: a
copy of what git has in HEAD, or stands uncommitted, is changed and built in build-changes/. Exit
status: 0 when every change was seen, 1 when one was not, 2 when the tests fail without any change
or a list is wrong.
"""
import argparse
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
WORK = ROOT / "build-changes"
TREE = WORK / "tree"
BUILD = WORK / "build"
OWN = {folder: f"firmware_{folder}_tests"
       for folder in ("plugin", "spcommand", "smbios", "vpd", "peripheral")}
OWN["collectors"] = "collectorsupport_tests"
TARGETS = [*OWN.values(), "smbioswalk_tests", "spdrivercalls_tests", "usbtapetext_tests",
           "sharedobject_tests", "spyplatform_tests", "tinyhost_tests"]
LONGEST_RUN = 60  # seconds; a change may make a program run without end


class Trouble(Exception):
    """The changes cannot be tried: what() is for people."""


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def read_changes(files, text):
    changes = []
    for file in files:
        with open(file, "rb") as stream:
            for change in tomllib.load(stream)["change"]:
                if text in change["name"]:
                    changes.append(change)
    return changes


def copy_tree():
    """The tracked files as they stand, newer ones only, so that a build goes on where it was."""
    listed = run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
    TREE.mkdir(parents=True, exist_ok=True)
    names = [name for name in listed.stdout.split("\0") if name and (ROOT / name).exists()]
    for name in names:
        source, target = ROOT / name, TREE / name
        if target.exists() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)
    for old in [p for p in TREE.rglob("*") if p.is_file()]:
        if not (ROOT / old.relative_to(TREE)).exists():
            old.unlink()


def configure():
    result = run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                  "-DBUILD_TESTING=ON"])
    if result.returncode != 0:
        raise Trouble(f"cmake: {result.stderr}")


def build(*targets):
    """None, or what the compiler said."""
    result = run(["ninja", "-C", BUILD, *targets])
    return None if result.returncode == 0 else result.stdout


def failures_of(program):
    """The first test of a program that fails; the program itself when it ends otherwise."""
    try:
        result = run([BUILD / "tests" / program, "--gtest_brief=1", "--gtest_fail_fast"],
                     timeout=LONGEST_RUN)
    except subprocess.TimeoutExpired:
        return [f"{program} (does not end)"]
    if result.returncode == 0:
        return []
    named = [line.split("]")[1].split("(")[0].split(",")[0].strip()
             for line in result.stdout.splitlines() if line.startswith("[  FAILED  ]")]
    return list(dict.fromkeys(name for name in named if "." in name)) or [f"{program} (crashes)"]


def edit(place, name):
    """Makes one edit of a change and returns how to take it back."""
    path = TREE / place["file"]
    text = path.read_text()
    count = text.count(place["old"])
    if count != 1:
        raise Trouble(f'{name}: {place["file"]} has the old text {count} times')
    path.write_text(text.replace(place["old"], place["new"]))
    return lambda: path.write_text(text)


@contextlib.contextmanager
def applied(change):
    with contextlib.ExitStack() as undo:
        for place in [change, *change.get("more", [])]:
            undo.callback(edit(place, change["name"]))
        yield


def first_error(compiler_output):
    errors = [line for line in compiler_output.splitlines() if " error: " in line or "ld:" in line]
    return (errors or ["no error line"])[0].replace(str(TREE) + "/", "")


def seen_by(change):
    """Up to the first program with a witness; the one of the changed folder is asked first."""
    own = OWN.get(change["file"].split("/")[0])
    with applied(change):
        for program in sorted(TARGETS, key=lambda target: target != own):
            complaint = build(program)
            if complaint:
                return [f"the compiler: {first_error(complaint)}"]
            if failing := failures_of(program):
                return failing
    return []


def try_all(changes):
    unseen = []
    for change in changes:
        witnesses = seen_by(change)
        print(f'{change["name"]}: {", ".join(witnesses[:3]) or "NOT SEEN"}', flush=True)
        if not witnesses:
            unseen.append(change["name"])
    print(f"{len(changes) - len(unseen)} of {len(changes)} changes seen")
    return 1 if unseen else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("-l", "--list", action="store_true", help="list the changes")
    parser.add_argument("-k", metavar="TEXT", default="", help="only those whose name contains TEXT")
    parser.add_argument("files", metavar="FILE", nargs="*")
    arguments = parser.parse_args()
    beside = sorted(pathlib.Path(__file__).parent.glob("*.toml"))
    changes = read_changes(arguments.files or beside, arguments.k)
    if arguments.list:
        print("\n".join(change["name"] for change in changes))
        return 0
    os.environ.setdefault("CCACHE_BASEDIR", str(TREE))
    copy_tree()
    configure()
    complaint = build(*TARGETS)
    failing = [complaint] if complaint else [t for program in TARGETS for t in failures_of(program)]
    if failing:
        raise Trouble("the tests fail without any change: " + ", ".join(failing))
    return try_all(changes)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Trouble as trouble:
        print(f"try_changes: {trouble}", file=sys.stderr)
        sys.exit(2)
