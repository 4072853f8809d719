#!/usr/bin/env python3
"""The demo: the stand-in world and Velatra, started as real processes and judged by what came of it.

Leaves summary.json, traffic.svg, traffic.png and both programs' output in build/demo. Ends with 0 when the
picture of the traffic is as it should be.
"""
import argparse
import json
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from machine import Machine

ROOT = Path(__file__).resolve().parent.parent
INSTALL = ROOT / "build" / "install"
DEMO = ROOT / "build" / "demo"
LEAST_STATIC_SHARE = 0.5  # of the wanted ones: a short run ends before all stand, and some stands get live ones
LEAST_LIVE = 15  # within the 10 nm that the automatic range leaves around the airport
DAY_START = 1717665600  # second 0 of the built-in day in the history's week, seconds since 1970
WEEK = 7 * 86400
SET_UP_SECONDS = 6  # from the creation of an object to its first move, at most


def prepare(world: Path) -> Machine:
    """A fresh machine of its own for the demo, whose user wants parking at the world's airport."""
    shutil.rmtree(DEMO, ignore_errors=True)
    machine = Machine(DEMO, INSTALL, world)
    machine.publish(INSTALL / "airports_p3d.xml")
    (machine.program / "output" / "LiveriesScanned.xml").rename(DEMO / "LiveriesPublished.xml")
    machine.install_addons()
    (machine.program / "airports").mkdir()
    (machine.program / "airports" / "my_park_airports.txt").write_text("XVEL\n")
    return machine


def start_world(machine: Machine, options: argparse.Namespace) -> subprocess.Popen:
    arguments = ["--seconds", options.seconds, "--ground-elevation", options.ground, "--user-lat", options.user[0],
                 "--user-lon", options.user[1], "--user-alt", options.user[2]]
    if options.recording:
        arguments += ["--recording", options.recording.resolve(), "--from", options.start]
    else:  # the part of the timetable that the airport's history knows at this moment of the week
        arguments += ["--from", int(time.time() - DAY_START) % WEEK]
    return machine.start_world(*arguments, stderr=(DEMO / "standin.err").open("w"))[0]


def run(options: argparse.Namespace) -> int:
    machine = prepare(options.world.resolve())
    try:
        standin = start_world(machine, options)
        velatra = machine.start_velatra(5, stdout=(DEMO / "velatra.out").open("w"))
        deadline = time.monotonic() + options.seconds - 2
        while time.monotonic() < deadline and velatra.poll() is None and standin.poll() is None:
            time.sleep(0.2)
        velatra.send_signal(signal.SIGTERM)
        code = velatra.wait(10)
        standin.wait(30)
    finally:
        machine.close()
    return code


def airport_shown() -> dict:
    """What the last status line that knew an airport told about it."""
    shown = {}
    for line in (DEMO / "velatra.out").read_text().splitlines():
        if line.startswith("{") and json.loads(line).get("stands"):
            shown = json.loads(line)
    return shown


def judge(code: int, builtin_day: bool) -> int:
    shown = airport_shown()
    airport = {key: shown[key] for key in ("airport", "airportName", "stands", "quality")} if shown else {}
    summary = json.loads((DEMO / "summary.json").read_text())
    objects = [o for o in summary["objects"] if o["byProgram"]]
    statics = [o for o in objects if o["callsign"].endswith("*")]
    live = [o for o in objects if o not in statics]
    positioned = [o for o in live if o["firstPosition"] is not None]
    late = [o for o in positioned
            if o["released"] is None or o["frozen"] is None or o["frozen"] > o["firstPosition"]]
    complaints = summary["complaintList"]
    problems = []
    if code != 0:
        problems.append(f"Velatra ended with {code}")
    if len(live) < LEAST_LIVE:
        problems.append(f"only {len(live)} live aircraft were created")
    if builtin_day and len(statics) < shown.get("wanted", 0) * LEAST_STATIC_SHARE:
        problems.append(f"only {len(statics)} static aircraft were created, {shown['wanted']} are wanted")
    moved = [o["callsign"] for o in statics if o["positions"] or o["firstPosition"] is not None]
    if moved:
        problems.append(f"static aircraft were moved: {moved}")
    if shown.get("updates") and not list((DEMO / "program/airports/learned").rglob("XVEL.xml")):
        problems.append("what was learned at the airport was not saved")
    if builtin_day and airport != {"airport": "XVEL", "airportName": "Velatra Field", "stands": 68, "quality": "60"}:
        problems.append(f"the park airport was not loaded: {airport}")
    if (DEMO / "program/output/LiveriesScanned.xml").read_bytes() != (DEMO / "LiveriesPublished.xml").read_bytes():
        problems.append("the scan has found other liveries than are published")
    scanned = {p.name for p in (DEMO / "program/airports/my_thirdparty").iterdir()}
    if scanned != {"XVEL.txt", "XSEE.xml", "XBRG.xml"}:
        problems.append(f"the scan has found other airports than are installed: {sorted(scanned)}")
    if late:
        problems.append(f"{len(late)} objects were moved before their release and three freezes")
    unclaimed = [o for o in live if o["firstPosition"] is None and o["removed"] - o["created"] > SET_UP_SECONDS]
    if unclaimed:
        problems.append(f"{len(unclaimed)} objects were created and never moved")
    if complaints:
        problems.append(f"{len(complaints)} packets were wrong, the first: {complaints[0]}")
    if shutil.which("rsvg-convert"):
        subprocess.run(["rsvg-convert", "-w", "1600", DEMO / "traffic.svg", "-o", DEMO / "traffic.png"], check=True)
    print(f"objects: {len(objects)}, moved: {len(positioned)}, wrong packets: {len(complaints)}")
    print(f"static aircraft: {len(statics)} of {shown.get('wanted')} wanted, learned: {shown.get('updates')} updates")
    print(f"park airport: {airport}")
    print(f"picture and summary: {DEMO.relative_to(ROOT)}/traffic.svg, {DEMO.relative_to(ROOT)}/summary.json")
    for problem in problems:
        print("NOT AS IT SHOULD BE:", problem)
    return 1 if problems else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seconds", type=int, default=120, help="of the whole run")
    parser.add_argument("--recording", type=Path, help="play this recording instead of the built-in day")
    parser.add_argument("--start", type=float, default=0, help="seconds of the recording to begin at")
    parser.add_argument("--world", type=Path, default=ROOT / "data" / "world")
    parser.add_argument("--user", type=float, nargs=3, default=(47.6, 11.5, 12000), metavar=("LAT", "LON", "FEET"))
    parser.add_argument("--ground", type=float, default=1600, help="elevation of the ground, feet")
    options = parser.parse_args()
    return judge(run(options), not options.recording)


if __name__ == "__main__":
    sys.exit(main())
