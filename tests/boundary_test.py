#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The boundary between the plug-in and the platform under it: what the plug-in's folders read, what
its shared object leaves undefined, and that docs/porting.md names all of it.

Who brings another platform works from that document, so its tables are read here: a name that the
code needs and the document does not have is a failure, and so is one that nobody needs.

Usage: boundary_test.py SOURCE-FOLDER BUILD-FOLDER OUR-PLATFORMS-FOLDER ANOTHERS-FOLDER
"""
import concurrent.futures
import functools
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PUBLIC = ROOT / "platform" / "include" / "vel"
FOLDERS = [ROOT / name for name in ("plugin", "spcommand", "smbios", "vpd", "peripheral",
                                    "collectors/support")]
SPYPLATFORM = ROOT / "tests" / "spyplatform"

# The folder of the four libraries, and of the plug-in that is linked with them.
PLATFORMS = {"ours": pathlib.Path(sys.argv.pop(1)), "another's": pathlib.Path(sys.argv.pop(1))}
PLUGIN = "libspfirmwarevpd.pi.so"

# CMake's targets, which name the folders of their objects.
PLUGIN_TARGETS = ("spfirmwarevpd_collectors", "collector_support", "jedec_makers", "spfirmwarevpd",
                  "spfirmwarevpd_elsewhere")
OTHER_SIDE = ("spy_recorder", "spy_core", "spy_pluginmanager", "spy_spdriver", "spy_smbios",
              "spyplatform_machines", "tinyhost_tests")

# The libraries of the compiler and the system; the last two under the sanitizers only.
CLANGS_OWN = ("__asan_", "__ubsan_", "__sanitizer_cov_", "__sancov_")
RUNTIME = re.compile(r"(libstdc\+\+|libgcc_s|libc|libm|ld-linux[-\w]*|libasan|libubsan)\.so\.\d+")

# What the libraries' own headers read is found by reading these; GoogleTest reads the system's too.
LIBRARY_HEADERS = "#include <bits/stdc++.h>\n#include <cxxabi.h>\n"
SYSTEM_HEADERS = LIBRARY_HEADERS + "".join(
    f"#include <{name}.h>\n"
    for name in ("dlfcn", "link", "pthread", "regex", "stdlib", "sys/stat", "sys/wait"))


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, **options).stdout


# ---- what is read

def compilations(targets):
    """The compile commands of the targets' sources, by source."""
    found = {}
    for entry in json.loads((BUILD / "compile_commands.json").read_text(encoding="utf-8")):
        target = re.search(r"-o \S*CMakeFiles/([^/]+)\.dir/", entry["command"])
        if target and target[1] in targets:
            found[pathlib.Path(entry["file"]).resolve()] = shlex.split(entry["command"])
    return found


def without(command, option):
    """The command without the option and the word behind it."""
    at = command.index(option)
    return command[:at] + command[at + 2:]


def preprocessing(command):
    """The same, but for the object and for headers that CMake has read in advance, which no source asks
    for: the compiler lists the files that it reads."""
    kept = without(command, "-o")
    if "-include" in kept:
        kept = without(kept, "-include")
    return kept[:kept.index("-c")] + ["-M"]


def files_read(command, source, text=None):
    listed = run(preprocessing(command) + ([source] if text is None else ["-x", "c++", "-"]),
                 cwd=BUILD, input=text)
    names = shlex.split(listed.replace("\\\n", " ").partition(":")[2])
    return {pathlib.Path(os.path.realpath(BUILD / name)) for name in names if name != "-"}


def is_strange(file, folders, libraries):
    """Neither in the folders nor of a library, which stands outside of the project."""
    if file.is_relative_to(ROOT):
        return not any(file.is_relative_to(folder) for folder in folders)
    return not libraries & set(file.parts)


@functools.cache
def files_read_by(*targets):
    """By source."""
    commands = compilations(targets)
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        read = pool.map(lambda source: files_read(commands[source], source), commands)
        return dict(zip(commands, read))


def strangers(targets, folders, system_headers, libraries):
    """The files that are read and are neither in the folders nor of the libraries."""
    known = files_read(next(iter(compilations(targets).values())), None, system_headers)
    for source, files in files_read_by(*targets).items():
        for file in sorted(files - known):
            if is_strange(file, folders, libraries):
                yield f"{source.relative_to(ROOT)} reads {file}"


# ---- what is linked

def plain(name):
    """A demangled name as the public headers have it."""
    name = name.replace("NKRXVEL20::", "").replace("[abi:cxx11]", "")
    name = re.sub(r"std::__cxx11::basic_string<char, std::char_traits<char>, "
                  r"std::allocator<char> ?>", "std::string", name)
    return re.sub(r"((?:unsigned )?[\w:]+) const(?=[*&])", r"const \1", name)


def symbols(file, *options):
    """Of the dynamic table: (kind, name without its version, as it is linked)."""
    listed = run(["nm", "--dynamic", *options, file])
    return [(kind, name.partition("@")[0])
            for kind, name in re.findall(r"^[0-9a-f ]*? ([A-Za-z]) (\S+)$", listed, re.MULTILINE)]


def demangled(names):
    return set(map(plain, run(["c++filt"], input="\n".join(names)).splitlines()))


def offered(file):
    return demangled([name for _, name in symbols(file, "--defined-only")])


def needed_libraries(file):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run(["readelf", "--wide", "--dynamic", file]))


def runtime_names(file):
    """What the libraries of the compiler and the system define."""
    for name, path in re.findall(r"^\s*(\S+) (?:=> )?(/\S*)?", run(["ldd", file]), re.MULTILINE):
        path = path or name
        if RUNTIME.fullmatch(pathlib.Path(path).name):
            yield from (symbol for _, symbol in symbols(path, "--defined-only"))


def left_to_the_platform(file):
    """The undefined names that neither the compiler nor the system brings. A weak one of the
    compiler's own (__gmon_start__) may be brought by nobody, and those of clang's sanitizers stand
    in the program."""
    known = set(runtime_names(file))
    return demangled([name for kind, name in symbols(file, "--undefined-only")
                      if name not in known and not (kind == "w" and not name.startswith("_Z"))
                      and not name.startswith(CLANGS_OWN)])


def compiled_in(file):
    """The members of the platform's classes that are inline in the headers. How many are left
    as functions, the optimiser decides."""
    listed = run(["nm", "--defined-only", file])
    return demangled(re.findall(r" [tTwW] (_ZNK?9NKRXVEL20\S+)$", listed, re.MULTILINE))


def is_emitted_at_will(name):
    """What a compiler asks for or not, as it optimises and as the sanitizers want it."""
    return name.startswith(("vtable for ", "typeinfo for "))


# ---- what the document says

DOCUMENT = (ROOT / "docs" / "porting.md").read_text(encoding="utf-8")


def section(title):
    """The text below a heading, up to the next one."""
    return re.search(rf"^#+ {re.escape(title)}\n(.*?)(?=^#|\Z)", DOCUMENT, re.M | re.S)[1]


def first_cells(text):
    """The names in the first column of a table, each between backquotes."""
    return re.findall(r"^\| `([^`]+)` \|", text, re.MULTILINE)


def libraries():
    return re.findall(r"^### `(lib\S+\.so)`$", DOCUMENT, re.MULTILINE)


def documented(library):
    return first_cells(section(f"`{library}`"))


# ---- what the headers say

def header(name):
    """Its code: without comments and the declarations for hosts."""
    text = re.sub(r"//.*", "", (PUBLIC / name).read_text(encoding="utf-8"))
    return re.sub(r"^namespace host \{.*?^\}", "", text, flags=re.M | re.S)


def declared(text):
    """Types, constants and enumerators; functions are in the libraries' tables."""
    yield from re.findall(r"^(?:class|struct|enum(?: class)?) (?:VEL_API )?(\w+)", text, re.M)
    yield from re.findall(r"^using (\w+) =", text, re.M)
    yield from re.findall(r"\b(?:k[A-Z]|fdrPlugin)\w+", text)


def interfaces(text):
    """Each class with virtual operations of its own, and these in their order."""
    for name, body in re.findall(r"^class VEL_API (\w+)[^;{]*\{(.*?)^\};", text, re.M | re.S):
        operations = re.findall(r"\bvirtual [^;(]*?(~?\w+)\(", body)
        if operations:
            yield name, operations


class Reading(unittest.TestCase):
    maxDiff = None  # each stranger is told

    def test_the_folders_read_themselves_the_public_headers_and_boost(self):
        sources = {file for folder in FOLDERS for file in folder.rglob("*.cpp")}
        self.assertEqual(sources, set(files_read_by(*PLUGIN_TARGETS)))
        found = strangers(PLUGIN_TARGETS, [*FOLDERS, PUBLIC], LIBRARY_HEADERS, {"boost"})
        self.assertEqual([], list(found))

    def test_the_other_platform_and_its_host_share_the_public_headers_alone(self):
        self.assertLessEqual({SPYPLATFORM / "tinyhost_test.cpp", SPYPLATFORM / "spdriver.cpp"},
                             set(files_read_by(*OTHER_SIDE)))
        found = strangers(OTHER_SIDE, [SPYPLATFORM, PUBLIC], SYSTEM_HEADERS,
                          {"boost", "gtest", "gmock"})
        self.assertEqual([], list(found))

    def test_a_stranger_is_seen(self):
        for file, strange in (
            (ROOT / "vpd/vpdrecords.h", False),
            (ROOT / "collectors/support/corelog.h", False),
            (ROOT / "collectors/deviceinventory/devices.h", True),
            (ROOT / "platform/include/vel/cim.h", False),
            (ROOT / "platform/include/other.h", True),
            (ROOT / "platform/hostapi/velhost/rootobject.h", True),
            (ROOT / "platform/core/smbiosstring.h", True),
            (ROOT / "tests/spyplatform/boost/core.h", True),
            (pathlib.Path("/usr/include/boost/shared_ptr.hpp"), False),
            (pathlib.Path("/usr/include/libudev.h"), True),
        ):
            with self.subTest(file=file):
                self.assertEqual(strange, is_strange(file, [*FOLDERS, PUBLIC], {"boost"}))

    def test_what_a_header_reads_is_read(self):
        command = next(iter(compilations({"spfirmwarevpd"}).values()))
        read = files_read(command, None, '#include "plugin/spfirmwarevpd.h"\n')
        self.assertLessEqual({PUBLIC / "export.h", ROOT / "plugin/spfirmwarevpd.h"}, read)


class Linking(unittest.TestCase):
    def test_the_reading_of_names(self):
        for linked, name in (
            ("_ZN9NKRXVEL209TCIMValueC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE",
             "TCIMValue::TCIMValue(const std::string&)"),
            ("_ZNK9NKRXVEL209TCIMValue8ToStringB5cxx11Ei", "TCIMValue::ToString(int) const"),
            ("_ZN9NKRXVEL206dotCmdC1EhiiPKhS2_",
             "dotCmd::dotCmd(unsigned char, int, int, const unsigned char*, const unsigned char*)"),
        ):
            with self.subTest(linked):
                self.assertEqual({name}, demangled([linked]))

    def test_every_name_that_is_left_undefined_is_documented(self):
        known = {name for library in libraries() for name in documented(library)}
        for platform, folder in PLATFORMS.items():
            with self.subTest(platform):
                left = left_to_the_platform(folder / PLUGIN)
                self.assertIn("smBiosLoad(TPluginManagerProvider*, TSmBiosHandle**)", left)
                self.assertEqual([], sorted(left - known))

    def test_every_documented_function_is_needed(self):
        for library in libraries():
            names = {name for name in documented(library) if not is_emitted_at_will(name)}
            self.assertTrue(names, library)
            unneeded = names - left_to_the_platform(PLATFORMS["ours"] / PLUGIN)
            self.assertEqual([], sorted(unneeded), library)

    def test_each_platform_has_the_documented_names_in_the_documented_library(self):
        for platform, folder in PLATFORMS.items():
            for library in libraries():
                with self.subTest(platform, library=library):
                    missing = set(documented(library)) - offered(folder / library)
                    self.assertEqual([], sorted(missing))

    def test_the_documented_libraries_are_needed_and_no_other(self):
        for platform, folder in PLATFORMS.items():
            with self.subTest(platform):
                names = needed_libraries(folder / PLUGIN)
                others = [name for name in names if not RUNTIME.fullmatch(name)]
                self.assertEqual(sorted(libraries()), sorted(others))

    def test_every_name_that_is_compiled_in_is_documented(self):
        known = set(first_cells(section("The names that are inline")))
        for platform, folder in PLATFORMS.items():
            with self.subTest(platform):
                self.assertEqual([], sorted(compiled_in(folder / PLUGIN) - known))

    def test_the_tiny_host_has_nothing_of_the_plugin(self):
        listed = run(["nm", "--demangle", BUILD / "tests" / "tinyhost_tests"])
        self.assertIn("TinyHostTest", listed)
        self.assertNotIn("SPFirmwareVpd::", listed)


class Document(unittest.TestCase):
    def headers_in_use(self):
        read = set().union(*files_read_by(*PLUGIN_TARGETS).values())
        return sorted(file.name for file in read if file.parent == PUBLIC)

    def test_it_lists_the_headers_in_use(self):
        listed = [name.removeprefix("vel/") for name in first_cells(section("The headers"))]
        self.assertEqual(self.headers_in_use(), sorted(listed))

    def test_it_names_every_type_and_constant(self):
        words = {word for name in re.findall(r"`([^`]+)`", DOCUMENT)
                 for word in re.findall(r"\w+", name)}
        for name in self.headers_in_use():
            with self.subTest(name):
                self.assertEqual([], sorted(set(declared(header(name))) - words))

    def test_it_has_the_virtual_operations_in_their_order(self):
        rows = re.findall(r"^\| `(\w+)` \| (.*?) \|", section("The interfaces"), re.MULTILINE)
        written = {name: re.findall(r"`(~?\w+)`", cell) for name, cell in rows}
        found = dict(pair for name in self.headers_in_use() for pair in interfaces(header(name)))
        self.assertEqual(found, written)


if __name__ == "__main__":
    unittest.main()
