#!/usr/bin/env python3
"""velatra-tool decode and match as their users call them, over the edge cases of the feed and the ladder.

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
failures = []


def expect(what, expected, actual):
    if expected != actual:
        failures.append(f"{what}: expected {expected!r}, got {actual!r}")


def call(arguments, text):
    done = subprocess.run([TOOL, *arguments], input=text, capture_output=True, text=True, check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def line(**changes):
    places = ["-1"] * 43
    fields = {0: "RTTFC", 1: "4198297", 2: "47.0", 3: "8.0", 4: "35000", 5: "0", 6: "0", 7: "90", 8: "450", 9: "BAW3AK",
              10: "A319", 11: "G-DBCJ", 12: "TLS", 13: "LHR", 14: "1717665811.8", 17: "adsb_other", 28: "A3"}
    fields.update({int(key[1:]): value for key, value in changes.items()})
    for place, value in fields.items():
        places[place] = value
    return ",".join(places)


def decode(lines, *options):
    answers = call(["decode", *options], "".join(text + "\n" for text in lines))
    expect("each line is answered", len(lines), len(answers))
    return answers


def test_decode():
    airborne = ("--user", "47", "8")
    park = (*airborne, "--park", "47", "8", "500")
    repeated = line(p14="1717665812.8")
    for options, cases in (
            (airborne, (
                ("vehicle", line(p16="X VEH"), "a ground vehicle"),
                ("tail of 12", line(p11="A" * 12), "record"),
                ("tail of 13", line(p11="A" * 13), "the registration is too long"),
                ("hexid 10000", line(p1="10000"), "the address is too low"),
                ("hexid 10001", line(p1="10001"), "record"),
                ("hexid overflows", line(p1="4294967296"), "a field is missing or unreadable"),
                ("C2", line(p28="C2"), "not an aircraft by category or type"),
                ("GLID without category", line(p28="null", p10="GLID"), "record"),
                ("1000 ft at 30 kt", line(p4="1000", p8="30"), "on the ground without a park airport"),
                ("@ without tail", line(p9="A@B", p11="null"), "neither call sign nor registration"),
                ("short line", "RTTFC,1,2,3", "a field is missing or unreadable"),
                ("once", repeated, "record"),
                ("repeated, elsewhere", repeated, "the same as the datagram before"))),
            ((*airborne, "--here"), (
                ("once", repeated, "record"),
                ("repeated, here", repeated, "record"))),
            (("--user", "0", "0"), (
                ("null position", line(p2="0.0005", p3="0.01"), "no valid position"),)),
            (park, (
                ("ground away from the airport", line(p4="0", p2="47.2"), "on the ground away from the park airport"),))):
        answers = decode([text for _, text, _ in cases], *options)
        for (what, _, expected), answer in zip(cases, answers):
            expect(what, expected, answer.get("dropped", "record"))
    low, high, zero = decode([line(p4="560", p8="75"), line(p4="600", p8="75"), line(p7="0", p17="adsb_icao", p25="0")], *park)
    expect("560 ft is on the ground", False, low["record"]["airborne"])
    expect("600 ft is in the air", True, high["record"]["airborne"])
    expect("a heading of 0 is 2 pi", True, abs(zero["record"]["heading"] - 6.283185307179586) < 1e-12)
    expect("and a track of 0 is 360", 360.0, zero["record"]["track"])


def test_match(folder):
    for what in ("dbase", "liveries"):
        subprocess.run([TOOL, "publish", what, "--world", WORLD, "--out", folder], check=True, stdout=subprocess.DEVNULL)
    with (WORLD / "liveries.csv").open() as file:
        liveries = list(csv.DictReader(file))
    files = ["match", "--dbase", folder / "dbase.zip", "--liveries", folder / "LiveriesScanned.xml", "--no-random"]
    own = next(row for row in liveries if row["atcid"])
    pax_only = next(row for row in liveries if row["cargo"] in ("0", "false", "") and not row["atcid"]
                    and row["airl"] not in ("ZZZ", "PVT") and not any(
                        other["airl"] == row["airl"] and other["type"] == row["type"] and other is not row
                        for other in liveries))
    # A query in the options, the others as lines.
    first = call([*files, "--airline", "BAW", "--model", "A319"], "")[0]
    cases = (
        ("unknown registration at depth 1", {"airline": "BAW", "model": "A319", "depth": 1}, None, None),
        ("its own registration wins over all",
         {"airline": "XXX", "model": "ZZZ9", "regcode": own["atcid"], "depth": 1}, 1, own["title"]),
        ("airline and model", {"airline": "BAW", "model": "A319"}, 2, first["title"]),
        ("private", {"airline": "PVT", "model": "C172"}, 4, ...),
        ("a large one of nobody's", {"airline": "XXX", "model": "A124"}, None, None),
        ("refused before", {"airline": "BAW", "model": "A319", "refused": [first["title"]]}, None, None),
        ("cargo takes the airline's passenger livery",
         {"airline": pax_only["airl"], "model": pax_only["type"], "cargo": True}, 2, pax_only["title"]))
    answers = call(files, "".join(json.dumps(query) + "\n" for _, query, _, _ in cases))
    expect("each query is answered", len(cases), len(answers))
    for (what, _, step, title), answer in zip(cases, answers):
        if step is not None:
            expect(what, step, answer["step"])
        if title is not ...:
            expect(what, title, answer["title"])


with tempfile.TemporaryDirectory(prefix="velatra-tools-") as scratch:
    test_decode()
    test_match(Path(scratch))
for failure in failures:
    print("FAILED:", failure)
sys.exit(1 if failures else 0)
