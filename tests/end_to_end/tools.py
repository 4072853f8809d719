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


def test_decode():
    def outcome(text, *options):
        last = call(["decode", "--user", "47", "8", *options], text + "\n")[-1]
        return last.get("dropped", "record")

    park = ("--park", "47", "8", "500")
    null_island = ("--user", "0", "0")
    for what, text, options, expected in (
            ("vehicle", line(p16="X VEH"), (), "a ground vehicle"),
            ("tail of 12", line(p11="A" * 12), (), "record"),
            ("tail of 13", line(p11="A" * 13), (), "the registration is too long"),
            ("hexid 10000", line(p1="10000"), (), "the address is too low"),
            ("hexid 10001", line(p1="10001"), (), "record"),
            ("hexid overflows", line(p1="4294967296"), (), "a field is missing or unreadable"),
            ("C2", line(p28="C2"), (), "not an aircraft by category or type"),
            ("GLID without category", line(p28="null", p10="GLID"), (), "record"),
            ("1000 ft at 30 kt", line(p4="1000", p8="30"), (), "on the ground without a park airport"),
            ("560 ft at 75 kt", line(p4="560", p8="75"), park, "record"),
            ("ground away from the airport", line(p4="0", p2="47.2"), park, "on the ground away from the park airport"),
            ("@ without tail", line(p9="A@B", p11="null"), (), "neither call sign nor registration"),
            ("short line", "RTTFC,1,2,3", (), "a field is missing or unreadable"),
            ("repeated, elsewhere", line() + "\n" + line(), (), "the same as the datagram before"),
            ("repeated, here", line() + "\n" + line(), ("--here",), "record")):
        expect(what, expected, outcome(text, *options))
    expect("null position", "no valid position",
           call(["decode", *null_island], line(p2="0.0005", p3="0.01") + "\n")[0].get("dropped"))
    low, high = call(["decode", "--user", "47", "8", *park],
                     line(p4="560", p8="75") + "\n" + line(p4="600", p8="75") + "\n")
    expect("560 ft is on the ground", False, low["record"]["airborne"])
    expect("600 ft is in the air", True, high["record"]["airborne"])
    heading = call(["decode", "--user", "47", "8"], line(p7="0", p17="adsb_icao", p25="0") + "\n")[0]["record"]
    expect("a heading of 0 is 2 pi", True, abs(heading["heading"] - 6.283185307179586) < 1e-12)
    expect("and a track of 0 is 360", 360.0, heading["track"])


def test_match(folder):
    for what in ("dbase", "liveries"):
        subprocess.run([TOOL, "publish", what, "--world", WORLD, "--out", folder], check=True, stdout=subprocess.DEVNULL)
    with (WORLD / "liveries.csv").open() as file:
        liveries = list(csv.DictReader(file))
    files = ["match", "--dbase", folder / "dbase.zip", "--liveries", folder / "LiveriesScanned.xml", "--no-random"]

    def match(*options):
        return call([*files, *options], "")[0]

    own = next(row for row in liveries if row["atcid"])
    expect("unknown registration at depth 1", None, match("--airline", "BAW", "--model", "A319", "--depth", "1")["title"])
    by_registration = match("--airline", "XXX", "--model", "ZZZ9", "--regcode", own["atcid"], "--depth", "1")
    expect("its own registration wins over all", (1, own["title"]), (by_registration["step"], by_registration["title"]))
    expect("airline and model", 2, match("--airline", "BAW", "--model", "A319")["step"])
    expect("private", 4, match("--airline", "PVT", "--model", "C172")["step"])
    expect("a large one of nobody's", None, match("--airline", "XXX", "--model", "A124")["title"])
    refused = match("--airline", "BAW", "--model", "A319")["title"]
    expect("refused before", None, match("--airline", "BAW", "--model", "A319", "--refused", refused)["title"])
    pax_only = next(row for row in liveries if row["cargo"] in ("0", "false", "") and not row["atcid"]
                    and row["airl"] not in ("ZZZ", "PVT") and not any(
                        other["airl"] == row["airl"] and other["type"] == row["type"] and other is not row
                        for other in liveries))
    cargo = match("--airline", pax_only["airl"], "--model", pax_only["type"], "--cargo")
    expect("cargo takes the airline's passenger livery", (2, pax_only["title"]), (cargo["step"], cargo["title"]))


with tempfile.TemporaryDirectory(prefix="velatra-tools-") as scratch:
    test_decode()
    test_match(Path(scratch))
for failure in failures:
    print("FAILED:", failure)
sys.exit(1 if failures else 0)
