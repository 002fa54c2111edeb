# SPDX-License-Identifier: Apache-2.0
"""The seeds of the fuzz targets of IPMI bytes: what the BMC of tests/machines/make_ordinary_bmc.py says."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "machines"))
import ipmi_inventory  # noqa: E402
import make_ordinary_bmc as ordinary  # noqa: E402

AREAS = {  # behind the number of the kind
    "chassis": b"\0" + ordinary.CHASSIS, "board": b"\1" + ordinary.BOARD,
    "unicode": b"\1" + ordinary.BACKPLANE, "product": b"\2" + ordinary.PRODUCT,
    "encodings": b"\2" + ordinary.SUPPLY_1}
RECORDS = {
    "controller": ordinary.RECORDS[0], "fru-device": ordinary.RECORDS[2],
    "device-id": ordinary.DEVICE_ID, "guid": ordinary.DEVICE_GUID,
    "header": ordinary.FRUS[0][0][:8]}
DEVICES = {  # behind the size of a piece
    "board": b"\x30" + ordinary.FRUS[0][0], "supply": b"\x08" + ordinary.FRUS[1][0]}


def dialogue(**changes):
    """What the BMC answers, from its repository on: how many bytes, completion code, data."""
    bmc, said = ordinary.Bmc(**changes), []

    def send(request):
        reply, length = bmc(request)
        said.append(bytes([length - 5]) + reply[4:length])
        return reply, length

    collector = ipmi_inventory.Collector(send)
    collector.get_device_id()
    said.clear()
    collector.frus()
    return b"".join(said)


DIALOGUES = {"ordinary": dialogue(), "small-reads": dialogue(most=8)}
