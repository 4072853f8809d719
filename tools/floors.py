#!/usr/bin/env python3
"""Holds every #include of src against the floors of the house: a room (a source with its header) includes its own
floor or a lower one, no two folders include each other, and no includes run in a circle. The stand-in and the tools
stand beside the house: there only circles are looked for."""
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
BESIDE = ["standin", "tools"]
ROOT = pathlib.Path(__file__).resolve().parent.parent


def place(room):
    """The number of the room's floor, and its folder there; the records count as one folder."""
    found = [(len(front), -n, front) for n, floor in enumerate(FLOORS) for front in floor
             if room == front or room.startswith(front + "/")]
    if not found:
        sys.exit(f"{room} stands on no floor")
    _, floor, front = max(found)
    return -floor, "records" if -floor == 2 else front


def read(base, folder):
    """The rooms below a folder, each with those that it includes."""
    found = {}
    for path in sorted((base / folder).rglob("*.[ch]*")):
        room = str(path.relative_to(base).with_suffix(""))
        found.setdefault(room, set()).update(re.findall(r'^#include "(.+)\.h"', path.read_text(), re.M))
        found[room].discard(room)
    return found


house = read(ROOT / "src", "")
rooms, folders, faults = dict(house), set(), []
for folder in BESIDE:
    rooms.update(read(ROOT, folder))
for room, lines in house.items():
    for line in sorted(lines):
        (floor, folder), (other_floor, other) = place(room), place(line)
        folders.add((folder, other))
        if other_floor > floor:
            faults.append(f"{room} includes upwards: {line}")
faults += [f"{a} and {b} include each other" for a, b in sorted(folders) if a < b and (b, a) in folders]
try:
    TopologicalSorter(rooms).prepare()
except CycleError as circle:
    faults.append("a circle: " + " -> ".join(circle.args[1]))
print("\n".join(faults)
      or f"{len(house)} rooms on {len(FLOORS)} floors, {len(rooms) - len(house)} beside them, no circle")
sys.exit(1 if faults else 0)
