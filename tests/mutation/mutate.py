#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes random changes of one place each to the sources, builds and runs the tests, and tells which
test saw each one. A change that no test sees is one that nobody would notice.

    tests/mutation/mutate.py [--folder FOLDER]... [--count N] [--seed N] [--jobs N] [--near]
                             [--again FILE]

FOLDERs (or single files) are those of the product; of each N changes that compile are tried, by
default 40. The kinds of changes (conditions, constants, operators, severities, statements, texts) take
turns. Changes that do not compile are not counted; those that nobody can see are listed, with the
reason, in unseen.toml beside this script: they count as tried and are not run. What nobody saw goes to
build-mutation/unseen.toml, in the form of that list; --again tries the changes of such a list. --near
asks only the tests beside a source and in its folder, then the few programs that know the folder best,
which is quick, and less than all see.

The work tree is left alone: a copy of what git has in HEAD, or stands uncommitted, is changed and
built in build-mutation/, one for each job. Exit status: 0 when every change was seen or is listed, 1
when one is not, 2 when the tests fail without any change or the list is wrong.
"""
import argparse
import collections
import concurrent.futures
import dataclasses
import itertools
import json
import pathlib
import random
import re
import sys
import threading
import time
import tomllib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "changes"))
from changedtree import ROOT, SHORTEST_LIMIT, ChangedTree, Trouble, run, run_limited

from mutants import mutants_of

WORK = ROOT / "build-mutation"
LISTED = pathlib.Path(__file__).resolve().parent / "unseen.toml"
FOLDERS = ("plugin", "spcommand", "smbios", "vpd", "peripheral", "platform", "host", "collectors")
MOST_UNITS = 25  # that a header is included by: more take too long to build for one change
DOES_NOT_COMPILE = object()
# What makes a rebuild after one change short: no program is linked anew for a library that it loads,
# none is run by the build, and no debug information is copied.
LINKING = "-fuse-ld=gold -Wl,--strip-debug"
OPTIONS = ("-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
           "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
           "-DCMAKE_CXX_ARCHIVE_CREATE=<CMAKE_AR> qcT <TARGET> <OBJECTS>",
           *(f"-DCMAKE_{kind}_LINKER_FLAGS={LINKING}" for kind in ("EXE", "SHARED", "MODULE")))

PROGRAM = ("velhost", "spfirmwarevpd", "ipmiinventory", "smbiosinventory", "deviceinventory")
PLUGIN_TESTS = ("firmware_plugin_tests", "firmware_spcommand_tests", "firmware_smbios_tests",
                "firmware_vpd_tests", "firmware_peripheral_tests", "smbioswalk_tests",
                "spdrivercalls_tests", "usbtapetext_tests", "sharedobject_tests",
                "spyplatform_tests", "tinyhost_tests", "machines_tests", "plugin_sweep_tests")
PROGRAM_TESTS = ("machines_tests", "velhost_test", "table", "terminal", "timeout", "machine_schema",
                 "machine_commands", "formats", "comparison", "explain", "report", "manpages",
                 "completion", "record_replay", "hostile_files", "rights")
PLATFORM_TESTS = ("vel_core_test", "vel_pluginmanager_test", "vel_smbios_test", "vel_spdriver_test",
                  "ipmidevice_sweep_tests", "firmware_plugin_tests", "host_test", *PROGRAM_TESTS)
HOST_TESTS = ("host_test", "files_sweep_tests", "machine_states_test", *PROGRAM_TESTS)
COLLECTOR_TESTS = ("collectorsupport_tests", "deviceinventory_tests", "udevtree_test",
                   "ipmiinventory_tests", "smbiosinventory_tests", "firmware_plugin_tests",
                   *PROGRAM_TESTS)
TESTS = {**{folder: PLUGIN_TESTS for folder in FOLDERS[:5]}, "platform": PLATFORM_TESTS,
         "host": HOST_TESTS, "collectors": COLLECTOR_TESTS}
# Asked first, in this order; the others behind them, the shortest first.
NEAREST = {"plugin": tuple(f"firmware_{folder}_tests" for folder in FOLDERS[:5]),
           **{folder: (f"firmware_{folder}_tests",) for folder in FOLDERS[1:5]},
           **{f"platform/{library}": (f"vel_{library}_test",)
              for library in ("core", "pluginmanager", "smbios", "spdriver")},
           "platform": ("vel_core_test",),
           **{f"collectors/{name}": (f"{name}_tests",)
              for name in ("deviceinventory", "ipmiinventory", "smbiosinventory")},
           "collectors": ("collectorsupport_tests",),
           "host/comparison": ("host_test", "comparison"),
           "host/explanation": ("host_test", "explain"),
           "host/files": ("host_test", "files_sweep_tests"),
           "host/formats": ("host_test", "formats", "table"),
           "host/progress": ("host_test", "terminal"),
           "host/recording": ("host_test", "record_replay"),
           "host/report": ("host_test", "report"),
           "host/commandline": ("host_test", "velhost_test", "comparison"),
           "host/main.cpp": ("velhost_test", "terminal"),
           "host": ("host_test",)}


# ---- the sources and their mutants

def sources_in(folder):
    """The sources below a folder, by name."""
    place = ROOT / folder
    found = [place] if place.is_file() else sorted(p for p in place.rglob("*")
                                                   if p.suffix in (".cpp", ".h"))
    return {str(path.relative_to(ROOT)): path.read_text() for path in found}


def all_mutants(sources):
    return [mutant for file, source in sources.items() for mutant in mutants_of(file, source)]


def in_turns(mutants, seed):
    """All of them in a random order in which the kinds take turns."""
    kinds = collections.defaultdict(list)
    for mutant in mutants:
        kinds[mutant.kind].append(mutant)
    order = random.Random(seed)
    for kind in sorted(kinds):
        order.shuffle(kinds[kind])
    rounds = itertools.zip_longest(*(kinds[kind] for kind in sorted(kinds)))
    return [mutant for each in rounds for mutant in each if mutant is not None]


# ---- the list of changes that nobody can see

@dataclasses.dataclass(frozen=True)
class Place:
    """A change as a list has it: the file, and its lines before and after."""
    file: str
    old: str
    new: str


def place_of(mutant, source):
    return Place(mutant.file, *mutant.lines(source))


def read_list(path):
    """The places of a list with their reasons."""
    with open(path, "rb") as stream:
        entries = tomllib.load(stream).get("change", [])
    return {Place(e["file"], e["old"], e["new"]): e["reason"] for e in entries}


def listed_mutants(places, sources):
    """The mutants at the places of a list, each of which must be that of a mutant."""
    found = {}
    for file in sorted({place.file for place in places}):
        source = sources.get(file, "")
        for mutant in mutants_of(file, source):
            if (place := place_of(mutant, source)) in places:
                found.setdefault(place, mutant)
    for place in places:
        if place not in found:
            raise Trouble(f"{place.file}: no change makes this of a line: {place.new}")
    return list(found.values())


def entry_text(place):
    """A place as a list has it; JSON's texts are TOML's."""
    texts = {"file": place.file, "old": place.old, "new": place.new, "reason": ""}
    return "\n[[change]]\n" + "".join(f"{name} = {json.dumps(text, ensure_ascii=False)}\n"
                                     for name, text in texts.items())


# ---- building and testing one

def including_units(tree):
    """How many units include each file, as the last build saw it."""
    counts = collections.Counter()
    listed = run(["ninja", "-C", tree.binaries, "-t", "deps"])
    for line in listed.stdout.splitlines():
        if line.startswith(" "):
            path = (tree.binaries / line.strip()).resolve()
            if path.is_relative_to(tree.tree):
                counts[str(path.relative_to(tree.tree))] += 1
    return counts


def suites_in(text):
    """The suites of GoogleTest's in a test file."""
    return set(re.findall(r"^TEST(?:_[FP])?\((\w+),", text, re.MULTILINE))


def nearest_of(file):
    return next((tests for place, tests in NEAREST.items() if f"{file}/".startswith(f"{place}/")), ())


class Tester:
    """Builds and runs tests of a changed tree, or only those near to the change."""

    def __init__(self, job, near=False):
        self.tree = ChangedTree(WORK / str(job))
        self.near = near
        self.commands = {}

    def prepare(self, tests):
        """Raises Trouble when a test fails without any change; each has its limit afterwards."""
        self.tree.copy()
        self.tree.configure(*OPTIONS)
        self.commands = self.tree.commands()
        for test in tests:
            if complaint := self.tree.build(*self.targets_of(test)):
                raise Trouble(complaint)
        for test in tests:
            begin = time.monotonic()
            self.tree.limits[test] = 10 * SHORTEST_LIMIT
            if failing := self.failures_of(test):
                raise Trouble("the tests fail without any change: " + ", ".join(failing))
            self.tree.limits[test] = SHORTEST_LIMIT + 10 * (time.monotonic() - begin)
        self.tree.environment["CCACHE_READONLY"] = "1"  # what was changed is nobody else's

    def targets_of(self, test):
        return PROGRAM if test in self.commands else (test,)

    def failures_of(self, test):
        if test not in self.commands:
            return self.tree.failures_of(test)
        outcome = run_limited(self.commands[test], self.tree.limits[test], cwd=self.tree.binaries)
        return [] if outcome.status == 0 else [test]

    def failures_nearby(self, test, file):
        """Of a program of GoogleTest's, asked for the tests beside a source alone, then for its folder's; for
        all when the folder has none of its own."""
        folder = ROOT / "tests" / pathlib.Path(file).parent
        beside = folder / f"{pathlib.Path(file).stem}_test.cpp"
        for tests in ([beside] if beside.exists() else [], folder.glob("*_test.cpp")):
            suites = sorted({suite for each in tests for suite in suites_in(each.read_text())})
            if suites and (failing := self.tree.failures_of(test, *suites)):
                return failing
        return [] if suites else self.tree.failures_of(test)

    def failures_in(self, test, file):
        is_own = test in nearest_of(file)[:1] and test not in self.commands
        nearby = self.failures_nearby(test, file) if is_own else []
        return nearby or ([] if is_own and self.near else self.failures_of(test))

    def in_order(self, tests, file):
        nearest = nearest_of(file)
        if self.near:
            return nearest
        others = sorted(set(tests) - set(nearest), key=lambda test: (self.tree.limits[test], test))
        return [*(test for test in nearest if test in tests), *others]

    def seen_by(self, mutant, source, tests):
        """The first test that fails, or nothing; DOES_NOT_COMPILE."""
        with self.tree.replaced(mutant.file, mutant.applied(source)):
            for test in self.in_order(tests, mutant.file):
                if self.tree.build(*self.targets_of(test)):
                    return DOES_NOT_COMPILE
                if failing := self.failures_in(test, mutant.file):
                    return failing[0]
        return ""


# ---- a folder

@dataclasses.dataclass
class Figures:
    tried: int = 0
    seen: int = 0
    listed: int = 0
    not_compiled: int = 0
    unseen: list = dataclasses.field(default_factory=list)

    def __str__(self):
        share = 100 * self.seen / self.tried if self.tried else 100
        return (f"{self.tried} tried, {self.seen} seen ({share:.1f} %), {self.listed} cannot be seen, "
                f"{len(self.unseen)} not seen; {self.not_compiled} more did not compile")


class FolderRun:
    """The changes of one folder, which the testers take one by one."""

    def __init__(self, mutants, sources, tests, listed, count):
        self.mutants, self.sources, self.tests = iter(mutants), sources, tests
        self.listed, self.count = listed, count
        self.figures, self.under_way, self.lock = Figures(), 0, threading.Lock()

    def next_mutant(self):
        with self.lock:
            if self.figures.tried + self.under_way >= self.count:
                return None
            mutant = next(self.mutants, None)
            self.under_way += mutant is not None
            return mutant

    def note(self, mutant, witness):
        source = self.sources[mutant.file]
        place = place_of(mutant, source)
        is_listed = witness == "" and place in self.listed
        said = {DOES_NOT_COMPILE: "does not compile", "": "cannot be seen" if is_listed else "NOT SEEN"}
        with self.lock:
            self.under_way -= 1
            self.figures.tried += witness is not DOES_NOT_COMPILE
            self.figures.not_compiled += witness is DOES_NOT_COMPILE
            self.figures.seen += witness not in ("", DOES_NOT_COMPILE)
            self.figures.listed += is_listed
            if witness == "" and not is_listed:
                self.figures.unseen.append(place)
            print(f"{mutant.file}:{mutant.line_number(source)}: {mutant.kind}: {place.new}\n"
                  f"    {said.get(witness, witness)}", flush=True)

    def work(self, tester):
        while (mutant := self.next_mutant()) is not None:
            source = self.sources[mutant.file]
            skipped = place_of(mutant, source) in self.listed
            self.note(mutant, "" if skipped else tester.seen_by(mutant, source, self.tests))


def tests_of(folder, sources, near):
    if near:
        return sorted({test for file in sources for test in nearest_of(file)})
    return TESTS[folder.split("/")[0]]


def try_folder(testers, folder, candidates, sources, listed, count):
    tests = tests_of(folder, sources, testers[0].near)
    for tester in testers:
        tester.prepare(tests)
    units = including_units(testers[0].tree)
    small = [mutant for mutant in candidates
             if units[mutant.file] <= MOST_UNITS or mutant.file.endswith(".cpp")]
    folder_run = FolderRun(small, sources, tests, listed, count)
    with concurrent.futures.ThreadPoolExecutor(len(testers)) as pool:
        for done in [pool.submit(folder_run.work, tester) for tester in testers]:
            done.result()
    print(f"{folder}: {folder_run.figures}", flush=True)
    return folder_run.figures


# ---- the command

def candidates_of(folder, sources, arguments):
    """What is tried of a folder: of a list as it stands there, else at random."""
    if arguments.again:
        places = {p: r for p, r in read_list(arguments.again).items() if p.file in sources}
        return listed_mutants(places, sources)
    return in_turns(all_mutants(sources), f"{arguments.seed} {folder}")


def try_folders(arguments):
    listed = read_list(LISTED)
    listed_mutants(listed, {file: text for folder in FOLDERS
                            for file, text in sources_in(folder).items()})
    testers = [Tester(job, arguments.near) for job in range(arguments.jobs)]
    unseen = []
    for folder in arguments.folder or FOLDERS:
        sources = sources_in(folder)
        candidates = candidates_of(folder, sources, arguments)
        count = len(candidates) if arguments.again else arguments.count
        if candidates:
            figures = try_folder(testers, folder, candidates, sources,
                                 {} if arguments.again else listed, count)
            unseen += figures.unseen
    WORK.joinpath("unseen.toml").write_text("".join(map(entry_text, unseen)))
    return 1 if unseen else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--folder", action="append", help="a folder or file (default: all of the product)")
    parser.add_argument("--count", type=int, default=40, help="changes tried of each folder")
    parser.add_argument("--seed", default="1", help="another seed takes other changes")
    parser.add_argument("--jobs", type=int, default=1, help="copies of the tree that are worked on at once")
    parser.add_argument("--near", action="store_true", help="ask only the tests near to a change")
    parser.add_argument("--again", metavar="FILE", help="try the changes of this list")
    return try_folders(parser.parse_args())


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Trouble as trouble:
        print(f"mutate: {trouble}", file=sys.stderr)
        sys.exit(2)
