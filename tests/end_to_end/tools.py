#!/usr/bin/env python3
"""velatra-tool decode and match as their users call them.

usage: tools.py SOURCE_DIR BINARY_DIR
"""
import csv
import json
import subprocess
import sys
import tempfile
from pathlib import Path

WORLD = Path(sys.argv[1]) / "data" / "world"
TOOL = Path(sys.argv[2]) / "velatra-tool"


def call(arguments, lines):
    done = subprocess.run([TOOL, *arguments], input="".join(line + "\n" for line in lines), capture_output=True,
                          text=True, check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def line(**changes):
    fields = {"_0": "RTTFC", "_1": 4198297, "_2": 47.0, "_3": 8.0, "_4": 560, "_8": 75, "_9": "BAW3AK", "_10": "A319",
              "_11": "G-DBCJ", "_14": 1717665811.8, "_17": "adsb_other", "_28": "A3", **changes}
    return ",".join(str(fields.get(f"_{place}", -1)) for place in range(43))


def decode():
    cases = ((line(), None), (line(), "the same as the datagram before"), (line(_16="X VEH"), "a ground vehicle"),
             (line(_2=47.2, _4=0), "on the ground away from the park airport"), ("", "an empty datagram"),
             ("RTTFC,1,2,3", "a field is missing or unreadable"), ("x" * 16384, "the datagram is too long"))
    answers = call(["decode", "--user", "47", "8", "--park", "47", "8", "500"], [text for text, _ in cases])
    assert [answer.get("dropped") for answer in answers] == [dropped for _, dropped in cases], answers
    record = answers[0]["record"]
    assert not record["airborne"], "75 kt at 60 ft above the airport"


def match(folder):
    for what in ("dbase", "liveries"):
        subprocess.run([TOOL, "publish", what, "--world", WORLD, "--out", folder], check=True,
                       stdout=subprocess.DEVNULL)
    with (WORLD / "liveries.csv").open() as file:
        own = next(row for row in csv.DictReader(file) if row["atcid"])
    files = ["match", "--dbase", folder / "dbase.zip", "--liveries", folder / "LiveriesScanned.xml", "--no-random"]
    # A query in the options, or several as lines.
    first, = call([*files, "--airline", "BAW", "--model", "A319"], ())
    queries = ({"airline": "BAW", "model": "A319"}, {"airline": "BAW", "model": "A319", "refused": [first["title"]]},
               {"airline": "XXX", "model": "ZZZ9", "regcode": own["atcid"], "depth": 1})
    same, other, by_registration = call(files, map(json.dumps, queries))
    assert same == first and first["step"] == 2, (first, same)
    assert other["title"] != first["title"], other
    assert (by_registration["step"], by_registration["title"]) == (1, own["title"]), by_registration


decode()
with tempfile.TemporaryDirectory(prefix="velatra-tools-") as scratch:
    match(Path(scratch))
