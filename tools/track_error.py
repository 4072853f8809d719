#!/usr/bin/env python3
"""How well an aircraft flew its reported track: compares the stand-in's tracks.csv with the recording it played.

Prints the distribution of the distance from the reported track, of the delay behind the reports, and of the
distance from where a delay of exactly 30 s would have put the aircraft.
"""
import argparse
import csv
import math
from pathlib import Path

DELAY = 30.0
METRES_PER_DEGREE = 111132.95


def metres(a, b):
    """Distance and offset of b from a on a local plane, good for the few hundred metres that matter here."""
    north = (b[0] - a[0]) * METRES_PER_DEGREE
    east = (b[1] - a[1]) * METRES_PER_DEGREE * math.cos(math.radians(a[0]))
    return east, north


def nearest(track, point):
    """(distance in m, time) of the place on the reported track that lies nearest to a point."""
    best = (math.inf, 0.0)
    for (t0, *a), (t1, *b) in zip(track, track[1:]):
        leg = metres(a, b)
        to = metres(a, point)
        length = leg[0] ** 2 + leg[1] ** 2
        share = 0 if length == 0 else max(0.0, min(1.0, (to[0] * leg[0] + to[1] * leg[1]) / length))
        distance = math.hypot(to[0] - share * leg[0], to[1] - share * leg[1])
        best = min(best, (distance, t0 + share * (t1 - t0)))
    return best


def at(track, time):
    for (t0, *a), (t1, *b) in zip(track, track[1:]):
        if t0 <= time <= t1:
            share = (time - t0) / (t1 - t0) if t1 > t0 else 0
            return a[0] + share * (b[0] - a[0]), a[1] + share * (b[1] - a[1])
    return None


def show(what, values, unit):
    values.sort()
    pick = lambda share: values[min(len(values) - 1, int(share * len(values)))]
    print(f"{what}: median {pick(0.5):.1f} {unit}, 95 % {pick(0.95):.1f} {unit}, worst {values[-1]:.1f} {unit}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("recording", type=Path)
    parser.add_argument("tracks", type=Path)
    parser.add_argument("callsign")
    parser.add_argument("--start", type=float, default=0, help="seconds of the recording at which the run began")
    options = parser.parse_args()
    reports = [line.split(",") for line in options.recording.read_text().splitlines() if line]
    first = float(reports[0][14]) + options.start
    track = [(float(r[14]) - first, float(r[2]), float(r[3])) for r in reports if r[9] == options.callsign]
    distances, delays, off_place = [], [], []
    with options.tracks.open() as file:
        for row in csv.DictReader(file):
            if row["callsign"] != options.callsign or float(row["tas"]) == 0:
                continue
            now, place = float(row["time"]), (float(row["lat"]), float(row["lon"]))
            window = [p for p in track if now - 90 <= p[0] <= now]
            if len(window) < 2:
                continue
            distance, time = nearest(window, place)
            distances.append(distance)
            delays.append(now - time)
            wanted = at(track, now - DELAY)
            if wanted:
                off_place.append(math.hypot(*metres(place, wanted)))
    print(f"{len(distances)} seconds of {options.callsign}")
    show("distance from the reported track", distances, "m")
    show("delay behind the reports", delays, "s")
    show("distance from the place of 30 s before", off_place, "m")


if __name__ == "__main__":
    main()
