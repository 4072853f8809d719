#!/usr/bin/env python3
"""Holds every #include of src against the floors of the house: a room (a source with its header) includes its own
floor or a lower one, no two folders include each other, and no includes run in a circle."""
import pathlib
import re
import sys
from graphlib import CycleError, TopologicalSorter

FLOORS = [
    ["platform"],
    ["core/base"],
    ["traffic/traffic", "traffic/geodesy", "traffic/category", "airports/airports", "liveries/liveries"],
    ["sim/wire", "liveries", "airports", "scenery"],
    ["sim", "link"],
    ["traffic"],
    ["airports/parking"],
    ["ui"],
    ["core"],
]
SRC = pathlib.Path(__file__).resolve().parent.parent / "src"


def place(room):
    """The number of the room's floor, and its folder there; the records count as one folder."""
    found = [(len(front), -n, front) for n, floor in enumerate(FLOORS) for front in floor
             if room == front or room.startswith(front + "/")]
    if not found:
        sys.exit(f"{room} stands on no floor")
    _, floor, front = max(found)
    return -floor, "records" if -floor == 2 else front


rooms, folders, faults = {}, set(), []
for path in sorted(SRC.rglob("*.[ch]*")):
    room = str(path.relative_to(SRC).with_suffix(""))
    for line in re.findall(r'^#include "(.+)\.h"', path.read_text(), re.M):
        if line == room:
            continue
        rooms.setdefault(room, set()).add(line)
        (floor, folder), (other_floor, other) = place(room), place(line)
        folders.add((folder, other))
        if other_floor > floor:
            faults.append(f"{room} includes upwards: {line}")
faults += [f"{a} and {b} include each other" for a, b in sorted(folders) if a < b and (b, a) in folders]
try:
    TopologicalSorter(rooms).prepare()
except CycleError as circle:
    faults.append("a circle: " + " -> ".join(circle.args[1]))
print("\n".join(faults) or f"{len(rooms)} rooms on {len(FLOORS)} floors")
sys.exit(1 if faults else 0)
