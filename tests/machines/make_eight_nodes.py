#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints machines/eight-nodes.json: eight nodes of 64 DIMMs, each of its own maker and serial number.
Whoever needs another number of either has machine().

The instance number is one byte of the command and runs on from node to node, so 0 follows 255 and
node 5 starts with number 1 again.
"""

import json

MAKERS = ["CE", "2C", "AD", "7F 98", "7F 7F 9E", "7F 94", "C1", "7F 7F 7F 7F CD"]  # JEP106


def dot(sp, command, reply, data=None):
    entry = {"sp": sp, "command": command}
    if data:
        entry["data"] = data
    return entry | {"reply": reply}


def text(value, size):
    return {"text": value, "size": size}


def firmware(sp):
    node = sp + 1
    yield dot(sp, "04 03 05 06 01", [text("YUOO73C", 10), text("QLAMAIN.PKT", 12), "5A",
                                     text("07/14/09", 8), "04", text("KPM00731", 8)])
    yield dot(sp, "04 03 05 06 02", [text("YUOB21A", 10), text("QLABOOT.PKT", 12), "C3",
                                     text("02/03/09", 8), "02", text("KPB00732", 8)])
    yield dot(sp, "04 03 05 07", f"{node:02X}")
    yield dot(sp, "04 03 05 01 01", [text("DVDSA", 5), "45", {"zeros": 7}, text("DSYT83A", 9),
                                     text(f"KQ0K8{node:02}", 7), text(f"E990-0008{node:02}", 11),
                                     text("5040AC1", 7), "7F", text("06/30/09", 8),
                                     text("DSYT83A.IMG", 12), "02"])
    yield dot(sp, "04 03 05 01", [{"zeros": 22}, text(f"KQ0K8{node:02}", 7),
                                  text(f"E990-0008{node:02}", 11), text("5040AC1", 7), {"zeros": 9},
                                  text("ABC123A.UPD", 12)])


def dimms(sp, count):
    for slot in range(count):
        number = sp * count + slot + 1
        maker = bytes.fromhex(MAKERS[number % len(MAKERS)]).ljust(8, b"\0").hex(" ").upper()
        yield dot(sp, f"04 03 05 0B {number & 0xFF:02X}",
                  [{"zeros": 64}, maker, chr(ord("A") + slot % 26).encode().hex().upper(),
                   text(f"P16G72-{number:03}", 18), "41 31", "11 07",
                   f"{number:08X}"])


def boards(sp):
    tag = f"80{sp + 1:02}"
    for code, data, prefix in (("0C", "00 00 80 00", "PS"), ("0D", "00 00 81 00", "PB"),
                               ("03", "00 00 A0 00", "PC"), ("0E", "00 00 70 00", "DB")):
        number = sp + 1 if code in ("0C", "0E") else 1
        yield dot(sp, f"04 03 05 {code} {number:02X}",
                  [{"zeros": 14}, text(f"KP-{prefix}-0900", 12), text(f"KF-{prefix}-0901", 12),
                   text(prefix + tag, 6), {"zeros": 6}, text("KRX", 4), "31"], data)
    yield dot(sp, "04 03 05 02 01", [text("PL" + tag, 6), text("KP-PL-0900", 12)], "10 00 10 00")


def machine(name, nodes, dimms_of_each):
    commands = [entry for sp in range(nodes)
                for entry in (*firmware(sp), *dimms(sp, dimms_of_each), *boards(sp))]
    lines = ",\n".join("      " + json.dumps(entry) for entry in commands)
    return f"""{{
  "format": "vel-machine/1",
  "name": "{name}",
  "description": "Made by tests/machines/make_eight_nodes.py. The DIMM number is one byte and runs on over the nodes: 0 follows 255.",
  "machine_type": "5040",
  "smbios": {{
    "structures": [
      {{ "type": 0, "data": "01 02 00 E0 03 3F", "strings": ["KRX", "1.08 [ABC123]", "03/15/07"] }},
      {{ "type": 11, "data": "02", "strings": ["KRX Diagnostics DSYT83A - 2.10", "KRX Quellon Link Adapter II"] }}
    ]
  }},
  "sp": {{
    "kind": "dot-command",
    "count": {nodes},
    "bmc_nodes": {nodes},
    "integrated_bmc": true,
    "components": {{ "04 03 05 0B": {dimms_of_each}, "04 03 05 0C": 1, "04 03 05 0E": 1 }},
    "dot_commands": [
{lines}
    ]
  }}
}}"""


def main():
    print(machine("eight nodes of 64 DIMMs", 8, 64))


if __name__ == "__main__":
    main()
