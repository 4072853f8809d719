#!/usr/bin/env python3
"""Is learning worth anything? Replays days of the built-in feed with one folder of learned files, then asks
the planner for the first day again, with nothing heard, and holds its static aircraft against those that the
feed shows standing: a stand and half hour counts as met if airline and type are those of an aircraft that
stood there then. Prints a table by Max fit, and the size of the learned file after each week.

    tools/week_learned.py --days 7 --out build/week            whole days
    tools/week_learned.py --days 28 --hours 2 --weeks --out …  the same week four times, two hours of each day
"""
import argparse
import collections
import json
import math
import pathlib
import re
import subprocess

MIDNIGHT = 52800  # seconds of the feed until the first midnight, UTC; it is a Friday that begins then
DAY = 86400
FIRST_WEEKDAY = 5
STANDS_WITHIN_M = 15
FITS = (0, 4, 12, 47)


def tool(bin_folder, *arguments):
    command = [str(bin_folder / "velatra-tool"), *map(str, arguments)]
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode not in (0, 2):  # 2: a replay in which something was that must never be, told below
        raise RuntimeError(f"{' '.join(command)}: {done.stderr}")
    return done.stdout


def stands_of(file):
    stands = {}
    for tag in re.findall(r"<parkpos\b[^>]*>", file.read_text(encoding="utf-8")):
        at = dict(re.findall(r'(\w+)="([^"]*)"', tag))
        stands[at["id"]] = (float(at["latitude"]), float(at["longitude"]))
    return stands


def without_history(file):
    file.write_text(re.sub(r"\s*<opt\b[^>]*/>", "", file.read_text(encoding="utf-8")), encoding="utf-8")


class Truth:
    """Who the feed shows standing at a stand in each half hour of its first day."""

    def __init__(self, recording, stands):
        self.stands = stands
        self.callsigns = {}
        found = []
        for line in recording.open(encoding="utf-8"):
            cells = line.rstrip("\n").split(",")
            if len(cells) < 15:
                continue
            if cells[9] != "null":
                self.callsigns[cells[1]] = cells[9].rstrip("_")
            if cells[6] == "1" and float(cells[8]) == 0:
                found.append((cells[1], float(cells[2]), float(cells[3]), cells[10], float(cells[14])))
        self.standing = collections.defaultdict(set)  # (slot, stand): airline and type
        for hexid, lat, lon, kind, stamp in found:
            stand = self.stand_at(lat, lon)
            callsign = self.callsigns.get(hexid, "")
            if stand and re.match(r"[A-Z]{3}\d", callsign):
                self.standing[int(stamp % DAY // 1800), stand].add((callsign[:3], kind))

    def stand_at(self, lat, lon):
        def metres(at):
            return math.hypot((at[0] - lat) * 111120, (at[1] - lon) * 111120 * math.cos(math.radians(lat)))

        stand = min(self.stands, key=lambda name: metres(self.stands[name]))
        return stand if metres(self.stands[stand]) < STANDS_WITHIN_M else None


def predicted(bin_folder, airport, learned, slot, fit):
    arguments = ["plan", "--airport-file", airport, "--day", FIRST_WEEKDAY, "--slot", slot, "--percentage", 100,
                 "--max-fit", fit, "--in-order"]
    lines = tool(bin_folder, *arguments, *(["--airports", learned] if learned else []))
    return [json.loads(line) for line in lines.splitlines()]


def measure(bin_folder, airport, learned, truth, slots):
    """By Max fit: stands and half hours met, planned wrongly, and empty by reason."""
    table = {}
    for fit in FITS:
        counts = collections.Counter()
        for slot in slots:
            for row in predicted(bin_folder, airport, learned, slot, fit):
                real = truth.standing.get((slot, row["stand"]))
                if real is None:
                    counts["planned, none in the feed"] += "empty" not in row
                elif "empty" in row:
                    counts["empty: " + row["empty"]] += 1
                else:
                    counts["met" if (row["airline"], row["type"]) in real else "another aircraft"] += 1
        table[fit] = counts
    return table


def show(title, table, total):
    print(f"{title}, of {total} stands and half hours")
    for fit, counts in table.items():
        rest = ", ".join(f"{what} {n}" for what, n in counts.most_common() if what != "met" and n)
        print(f"  Max fit {fit:2}: met {counts['met']:4} = {100 * counts['met'] / total:5.1f} %; {rest}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release"))
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("build/week"))
    parser.add_argument("--days", type=int, default=7)
    parser.add_argument("--hours", type=float, default=24, help="of each day that are replayed, from midnight")
    parser.add_argument("--weeks", action="store_true", help="the first seven days over and over")
    parser.add_argument("--archive", action="store_true", help="keep the archived history beside what is learned")
    options = parser.parse_args()
    out = options.out
    out.mkdir(parents=True, exist_ok=True)
    tool(options.bin, "replay", "--seconds", 1, "--no-events", "--out", out / "try")
    airport = out / "XVEL.xml"
    (out / "try" / "XVEL.xml").replace(airport)
    if not options.archive:
        without_history(airport)
    seconds = int(options.hours * 3600)
    recording = out / "first_day.txt"
    subprocess.run([str(options.bin / "velatra-standin"), "--write-recording", str(recording), "--from",
                    str(MIDNIGHT), "--seconds", str(seconds)], check=True)
    truth = Truth(recording, stands_of(airport))
    slots = range(math.ceil(seconds / 1800))
    total = len(truth.standing)
    show("before", measure(options.bin, airport, None, truth, slots), total)
    learned = out / "learned"
    for day in range(options.days):
        of_feed = day % 7 if options.weeks else day
        told = json.loads(tool(options.bin, "replay", "--from", MIDNIGHT + of_feed * DAY, "--seconds", seconds, "--range", 10,
                    "--no-events", "--every", 100000, "--airport-file", airport, "--airport", "XVEL", "--airports",
                    learned, "--out", out / f"day{day + 1}"))
        size = (learned / "XVEL.xml").stat().st_size
        print(f"day {day + 1}: learned file of {size} bytes; invariant breaks {told['invariantBreaks']}", flush=True)
        if day in (0, options.days - 1):
            show(f"after day {day + 1}", measure(options.bin, airport, learned, truth, slots), total)


if __name__ == "__main__":
    main()
