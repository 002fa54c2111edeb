#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""make_seeds.py TREE FOLDER: writes the seeds of each fuzz target to FOLDER/TARGET/, made of the machine
files, their results and the schema of the source tree, their names to FOLDER/TARGET.list, as -seed_inputs
takes them, and the words of a target's documents to FOLDER/TARGET.dict, as -dict does."""

import json
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import ipmi_seeds as ipmi  # noqa: E402

LONGEST_MACHINE = 12000  # bytes of text; what is longer is too slow
LONGEST_DOCUMENT = 12000


# ---- what there is

def machine_files(tree):
    """Names and texts of the machine files."""
    for file in sorted((tree / "machines").glob("*.json")):
        if file.name != "machine.schema.json" and not file.name.endswith("expected.json"):
            yield file.stem, file.read_bytes()


def without_comments(text):
    return re.sub(r'("(?:\\.|[^"\\])*")|//[^\n]*|/\*.*?\*/', lambda m: m.group(1) or "", text,
                  flags=re.DOTALL)


def machines(tree):
    for name, text in machine_files(tree):
        yield name, json.loads(without_comments(text.decode()))


def results(tree):
    """The result documents, without logs and traffic, which nobody reads back."""
    for file in sorted((tree / "machines/expected").glob("*.json")):
        document = json.loads(file.read_text())
        for query in document["queries"]:
            for key in ("core_log", "failure_log", "traffic"):
                query[key] = []
        yield file.stem, document


def dumps(tree):
    for file in sorted((tree / "machines").glob("*.dmi")):
        yield file.name, file.read_bytes()


def bytes_of(pieces):
    """The bytes that a machine file means (docs/machine-file.md)."""
    if isinstance(pieces, str):
        return bytes.fromhex(pieces)
    if isinstance(pieces, list):
        return b"".join(map(bytes_of, pieces))
    if "zeros" in pieces:
        return bytes(pieces["zeros"])
    text = pieces["text"].encode()
    return text.ljust(pieces.get("size", len(text)), b"\0")


def structures(tree):
    """The firmware structures of the machine files, each as it stands in a table."""
    for name, machine in machines(tree):
        for number, row in enumerate(machine.get("smbios", {}).get("structures", [])):
            if "raw" in row:
                yield f"{name}-{number}", bytes_of(row["raw"])
                continue
            data = bytes_of(row.get("data", ""))
            strings = b"".join(text.encode() + b"\0" for text in row.get("strings", []))
            header = bytes([row["type"], 4 + len(data)]) + number.to_bytes(2, "little")
            yield f"{name}-{number}", header + data + (strings or b"\0") + b"\0"


def tables(tree):
    """The firmware table of each machine file that has one."""
    found = {}
    for name, structure in structures(tree):
        found.setdefault(name.rpartition("-")[0], []).append(structure)
    for name, rows in found.items():
        yield name, b"".join(rows)


def replies(machine):
    """What the SPs, the Tamber processor or the BMC of a machine file answer, in the file's order."""
    sp = machine.get("sp", {})
    for kind in ("dot_commands", "tamber_commands", "ipmi_commands"):
        for row in sp.get(kind, []):
            for reply in row.get("replies", [row.get("reply", "fail")]):
                yield None if reply == "fail" else bytes_of(reply)


# ---- the targets' seeds: names and bytes

def machinefile_seeds(tree):
    yield from (row for row in machine_files(tree) if len(row[1]) <= LONGEST_MACHINE)
    yield from dumps(tree)


def plain(document):
    """`--format json` of a result document."""
    classes = {name: [] for name in document["queries"][-1]["requested"]}
    for row in document["queries"][-1]["instances"]:
        values = {name: value["value"] for name, value in row["properties"].items()}
        classes.setdefault(row["class"], []).append(values)
    return classes


def inventory(document):
    """`--format inventory` of it, as far as it is known here."""
    return {"format": "vel-inventory/1", "machine": document["machine"],
            "collectors": [{"name": "SPFirmwareVPD", "version": "1.0", "state": "answered", "reason": None}],
            "classes": [{"class": name, "collector": "SPFirmwareVPD",
                         "state": "present" if rows else "absent",
                         "reason": None if rows else "none", "instances": rows}
                        for name, rows in plain(document).items()]}


def documents_seeds(tree):
    before = None
    for name, document in results(tree):
        forms = [document, plain(document), inventory(document)]
        for number, form in enumerate(forms):
            pair = {"before": before or form, "after": form}
            text = json.dumps(pair, separators=(",", ":"), ensure_ascii=False).encode()
            if len(text) <= LONGEST_DOCUMENT:
                yield f"{name}-{number}", text
            before = form


MACHINE_TYPES = ["", "5010", "4210", "4320", "4430", "3105"]  # as firmwarecollector_fuzz.cpp has them


def firmwarecollector_seeds(tree):
    """What a machine file's SPs answer, in the file's order, to whatever they are asked."""
    table_of = dict(tables(tree))
    for name, machine in machines(tree):
        sp = machine.get("sp", {})
        kind = sp.get("kind", "none")
        flags = (sp.get("answers", True) | (kind == "dot-command") << 1 | (kind == "tamber") << 2
                 | sp.get("twg_stop", False) << 3 | sp.get("tvm_library", False) << 4
                 | sp.get("bmc", False) << 5 | sp.get("ipmi_drivers", False) << 6
                 | sp.get("integrated_bmc", False) << 7 | (sp.get("bmc_nodes", 0) > 0) << 8
                 | sp.get("command_list", True) << 9)
        table = table_of.get(name, b"")[:1023]
        machine_type = machine.get("machine_type", "")
        number = MACHINE_TYPES.index(machine_type) if machine_type in MACHINE_TYPES else 0
        said = b"".join(b"\0" if reply is None else bytes([3, min(len(reply), 255)]) + reply[:255]
                        for reply in replies(machine))
        yield name, (bytes([number]) + len(table).to_bytes(2, "little") + table + b"\1\0"
                     + flags.to_bytes(2, "little") + bytes([min(max(sp.get("count", 1), 0), 4)]) + said)


def ipmidevice_seeds(tree):
    """A device that opens, is asked for its identity, then carries the replies of each BMC."""
    def message(reply):  # sent; polled; received: ours, so many bytes, well
        return b"\0\1\1\0\1" + bytes([min(len(reply), 255)]) + reply[:255] + b"\0"

    yield "opens", b"\0" + message(bytes(16))
    for name, machine in machines(tree):
        rows = machine.get("sp", {}).get("ipmi_commands", [])
        talk = b"\0" + message(bytes(16))
        for row in rows[:4]:
            request = bytes_of(row["request"]).ljust(64, b"\0")
            talk += bytes([len(request)]) + request
            talk += message(bytes_of(row["reply"])[4:] if isinstance(row.get("reply"), (str, list)) else b"\0")
        if rows:
            yield name, talk


def devices_seeds(_tree):
    yield "usb", b"\x3d1d6b\x000104\x00KRX\x00 cKVM \x00"
    yield "tape-on-usb", b"\x3e1\x00ACME    \x00TAPE 1          \x000102\x00"
    yield "tape", b"\x3c1\x00ACME\x00TAPE,1\x00\x00"
    yield "both", b"\x3d1d6b\x00\x00\xff\x00\xe2\x80\xae\x00\x3c1\x00A&\\\x00\t\x00\x7f\x00"


def texts_seeds(tree):
    for number, text in enumerate(["", "DIMM 1", "\u5bbd\u5b57\u7b26 wide", "e\u0301\u0301\u0301",
                                   "=1+1", "a,\"b\"\r\n", "<b>&amp;", "a\u202eb\u200b", "04 03 05 0b"]):
        yield f"text-{number}", b"\x13" + text.encode()
    unseen = "\x7f\x80\x9f\xad\u061c\u180e\u200b\u200f\u2028\u202e\u2060\u206f\ufeff\ufff9\U000e0001\U000e007f"
    yield "unseen", b"\x20" + unseen.encode()
    yield "bytes", b"\x05\xff\xfe\xc0\x80\xed\xa0\x80\xf4\x90\x80\x80"
    for name, machine in machines(tree):
        yield name, b"\x4f" + machine.get("description", machine["name"]).encode()[:400]


def options(tree):
    return sorted(set(re.findall(r"--[a-z][a-z-]+",
                                 (tree / "share/bash-completion/velhost").read_text())))


def commandline_seeds(tree):
    """The examples of the manual page."""
    page = (tree / "share/man/velhost.1").read_text().replace("\\-", "-")
    for number, line in enumerate(sorted(set(re.findall(r"\bvelhost ([a-z][^\n]*)", page)))):
        yield f"example-{number}", b"\0".join(word.encode() for word in line.split()) + b"\0"
    for option in options(tree):
        yield option[2:], b"query\0" + option.encode() + b"\0" + b"1\0"


def dmidump_seeds(tree):
    for name, data in dumps(tree):
        for kind in range(4):
            yield f"{name}-{kind}", bytes([kind]) + data


def mof_seeds(tree):
    """The first two files, qualifiers and superclasses, alone and with each of the others."""
    first, second, *others = sorted((tree / "schema").glob("*.mof"))
    base = first.read_bytes() + b"\1" + second.read_bytes()
    yield first.name, first.read_bytes()
    yield second.name, base
    for file in others:
        yield file.name, base + b"\1" + file.read_bytes()
    small = (b"Qualifier Key : boolean = false, Scope(property);\n"
             b"Qualifier Abstract : boolean = false, Scope(class);\n"
             b"[Abstract(FALSE)]\nclass A { [Key(FALSE)] string S; [Key(TRUE)] uint8 N; };\n")
    yield "booleans", small


def behind(byte, rows):
    return ((name, byte + data) for name, data in rows)


SEEDS = {
    "bmcdialogue_fuzz": lambda tree: ipmi.DIALOGUES.items(),
    "bmcrecords_fuzz": lambda tree: ipmi.RECORDS.items(),
    "commandline_fuzz": commandline_seeds,
    "devices_fuzz": devices_seeds,
    "dmidump_fuzz": dmidump_seeds,
    "documents_fuzz": documents_seeds,
    "firmwarecollector_fuzz": firmwarecollector_seeds,
    "fruarea_fuzz": lambda tree: ipmi.AREAS.items(),
    "fruimage_fuzz": lambda tree: ipmi.DEVICES.items(),
    "ipmidevice_fuzz": ipmidevice_seeds,
    "machinefile_fuzz": machinefile_seeds,
    "memorymaker_fuzz": lambda tree: [("samsung", b"0xCE00"), ("digits", b"802c0000802C"), ("none", b"")],
    "mof_fuzz": mof_seeds,
    "smbiosinventory_fuzz": structures,
    "smbiosparts_fuzz": structures,
    "tablesplitter_fuzz": lambda tree: behind(b"\0", tables(tree)),
    "texts_fuzz": texts_seeds,
}


def words(value):
    """The keys and texts that a JSON Schema names."""
    if isinstance(value, dict):
        for key, part in value.items():
            if key == "properties":
                yield from part
            if key in ("enum", "const"):
                yield from (word for word in (part if isinstance(part, list) else [part])
                            if isinstance(word, str))
            yield from words(part)
    elif isinstance(value, list):
        for part in value:
            yield from words(part)


def dictionary(texts):
    return "".join(f'"{text}"\n' for text in sorted(set(texts)) if re.fullmatch(r"[\w./ $#-]+", text))


def machine_words(tree):
    schema = json.loads((tree / "machines/machine.schema.json").read_text())
    return list(words(schema)) + class_words(tree)


def class_words(tree):
    found = []
    for file in (tree / "schema").glob("*.mof"):
        found += re.findall(r"\b(?:class|string|boolean|uint\d+|datetime) (\w+)", file.read_text())
    return found


def document_words(tree):
    states = ["present", "partial", "absent", "elsewhere", "unused", "unanswered", "unreadable",
              "forbidden", "failed", "answered", "vel-result/1", "vel-inventory/1"]
    keys = ["format", "machine", "source", "name", "collectors", "classes", "class", "collector",
            "state", "reason", "instances", "properties", "queries", "requested", "type", "value",
            "bytes", "error", "exception", "code", "what"]
    return states + keys + class_words(tree)


def option_words(tree):
    return options(tree) + [
        "table", "json", "inventory", "ndjson", "csv", "openmetrics", "trace", "mof", "query", "diff",
        "explain", "summary", "report", "record", "check", "collectors", "classes", "help"]


WORDS = {
    "commandline_fuzz": option_words,
    "documents_fuzz": document_words,
    "machinefile_fuzz": machine_words,
    "mof_fuzz": lambda tree: ["class", "string", "uint8", "boolean", "datetime", "Key", "Override",
                              "Description", "MappingStrings", "Qualifier", "ToSubclass", "Scope",
                              "Flavor", "FALSE", "TRUE", "ValueMap", "Values", "MaxLen", "Abstract", "#pragma include"],
}


def main(tree, folder):
    tree, folder = pathlib.Path(tree), pathlib.Path(folder)
    for target, seeds in SEEDS.items():
        (folder / target).mkdir(parents=True, exist_ok=True)
        files = []
        for name, data in seeds(tree):
            files.append(folder / target / name)
            files[-1].write_bytes(data)
        (folder / f"{target}.list").write_text(",".join(map(str, files)))
        found = WORDS[target](tree) if target in WORDS else []
        (folder / f"{target}.dict").write_text("# words\n" + dictionary(found))
    (folder / "made").touch()


if __name__ == "__main__":
    main(*sys.argv[1:])
