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
import pathlib
import sys
import tomllib

from changedtree import ROOT, ChangedTree, Trouble

OWN = {folder: f"firmware_{folder}_tests"
       for folder in ("plugin", "spcommand", "smbios", "vpd", "peripheral")}
OWN["collectors"] = "collectorsupport_tests"
TARGETS = [*OWN.values(), "smbioswalk_tests", "spdrivercalls_tests", "usbtapetext_tests",
           "sharedobject_tests", "spyplatform_tests", "tinyhost_tests"]


def lists():
    return sorted(pathlib.Path(__file__).parent.glob("*.toml"))


def read_changes(files, text):
    changes = []
    for file in files:
        with open(file, "rb") as stream:
            for change in tomllib.load(stream)["change"]:
                if text in change["name"]:
                    changes.append(change)
    return changes


@contextlib.contextmanager
def applied(tree, change):
    with contextlib.ExitStack() as edits:
        for place in [change, *change.get("more", [])]:
            text = (tree.tree / place["file"]).read_text()
            count = text.count(place["old"])
            if count != 1:
                raise Trouble(f'{change["name"]}: {place["file"]} has the old text {count} times')
            edits.enter_context(
                tree.replaced(place["file"], text.replace(place["old"], place["new"])))
        yield


def seen_by(tree, change):
    """Up to the first program with a witness; the one of the changed folder is asked first."""
    own = OWN.get(change["file"].split("/")[0])
    with applied(tree, change):
        for program in sorted(TARGETS, key=lambda target: target != own):
            complaint = tree.build(program)
            if complaint:
                return [f"the compiler: {tree.first_error(complaint)}"]
            if failing := tree.failures_of(program):
                return failing
    return []


def try_all(tree, changes):
    unseen = []
    for change in changes:
        witnesses = seen_by(tree, change)
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
    changes = read_changes(arguments.files or lists(), arguments.k)
    if arguments.list:
        print("\n".join(change["name"] for change in changes))
        return 0
    tree = ChangedTree(ROOT / "build-changes")
    tree.copy()
    tree.configure("-DSPFW_WERROR=OFF")
    complaint = tree.build(*TARGETS)
    failing = [complaint] if complaint else [t for p in TARGETS for t in tree.failures_of(p)]
    if failing:
        raise Trouble("the tests fail without any change: " + ", ".join(failing))
    return try_all(tree, changes)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Trouble as trouble:
        print(f"try_changes: {trouble}", file=sys.stderr)
        sys.exit(2)
