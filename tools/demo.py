#!/usr/bin/env python3
"""The demo: the stand-in world and Velatra, started as real processes and judged by what came of it.

Leaves summary.json, traffic.svg, traffic.png and both programs' output in build/demo. Ends with 0 when the
picture of the traffic is as it should be.
"""
import argparse
import json
import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
INSTALL = ROOT / "build" / "install"
DEMO = ROOT / "build" / "demo"
PROGRAM = DEMO / "program"  # the installed program, in a folder that may be written to
LEAST_OBJECTS = 15  # within the 10 nm that the automatic range leaves around the airport
SET_UP_SECONDS = 6  # from the creation of an object to its first move, at most


def prepare(world: Path) -> dict:
    """A fresh machine of its own for the demo: folders, an installed simulator, a download server's files."""
    shutil.rmtree(DEMO, ignore_errors=True)
    for folder in ("appdata", "documents", "public", "runtime", "server", "drive_c/Prepar3D v5/Scenery"):
        (DEMO / folder).mkdir(parents=True)
    (DEMO / "appdata" / "registry.ini").write_text(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\nSetupPath=C:\\Prepar3D v5\n")
    environment = dict(
        os.environ,
        VELATRA_APPDATA=str(DEMO / "appdata"),
        VELATRA_DOCUMENTS=str(DEMO / "documents"),
        VELATRA_PUBLIC_DOCUMENTS=str(DEMO / "public"),
        VELATRA_RUNTIME=str(DEMO / "runtime"),
        VELATRA_DRIVE_C=str(DEMO / "drive_c"),
    )
    for folder in ("output", "input/my_regcodes", "airports"):
        (PROGRAM / folder).mkdir(parents=True)
    (PROGRAM / "docs").symlink_to(INSTALL / "docs")
    (PROGRAM / "airports" / "my_park_airports.txt").write_text("XVEL\n")
    publish(world, PROGRAM / "output", "liveries")
    publish(world, PROGRAM / "airports_p3d.xml", "catalogue", "--base", INSTALL / "airports_p3d.xml")
    for what in ("dbase", "regcodes", "airport-files"):
        publish(world, DEMO / "server", what)
    return environment


def publish(world: Path, out: Path, what: str, *more):
    subprocess.run([INSTALL / "velatra-tool", "publish", what, "--world", world, "--out", out, *more], check=True,
                   stdout=subprocess.DEVNULL)


def start_world(options: argparse.Namespace, environment: dict) -> tuple[subprocess.Popen, dict]:
    command = [INSTALL / "velatra-standin", "--world", options.world, "--seconds", str(options.seconds), "--out", DEMO,
               "--serve", DEMO / "server", "--http-port", "0", "--ground-elevation", str(options.ground),
               "--user-lat", str(options.user[0]), "--user-lon", str(options.user[1]),
               "--user-alt", str(options.user[2])]
    if options.recording:
        command += ["--recording", options.recording, "--from", str(options.start)]
    else:
        command += ["--builtin-day"]
    standin = subprocess.Popen([str(c) for c in command], env=environment, stdout=subprocess.PIPE, text=True,
                               stderr=(DEMO / "standin.err").open("w"))
    ready = json.loads(standin.stdout.readline())
    return standin, ready


def run(options: argparse.Namespace) -> int:
    environment = prepare(options.world)
    standin, ready = start_world(options, environment)
    environment["VELATRA_SERVER"] = f"http://127.0.0.1:{ready['http']}/"
    velatra = subprocess.Popen([INSTALL / "velatra", "--headless", "--status", "5"], cwd=PROGRAM, env=environment,
                               stdout=(DEMO / "velatra.out").open("w"), stderr=subprocess.STDOUT)
    try:
        deadline = time.monotonic() + options.seconds - 2
        while time.monotonic() < deadline and velatra.poll() is None and standin.poll() is None:
            time.sleep(0.2)
        velatra.send_signal(signal.SIGTERM)
        code = velatra.wait(10)
        standin.wait(30)
    finally:
        for process in (velatra, standin):
            if process.poll() is None:
                process.kill()
    return code


def airport_shown() -> dict:
    """What the last status line that knew an airport told about it."""
    shown = {}
    for line in (DEMO / "velatra.out").read_text().splitlines():
        if line.startswith("{") and json.loads(line).get("stands"):
            shown = {key: json.loads(line)[key] for key in ("airport", "airportName", "stands", "quality")}
    return shown


def judge(code: int, builtin_day: bool) -> int:
    airport = airport_shown()
    summary = json.loads((DEMO / "summary.json").read_text())
    objects = [o for o in summary["objects"] if o["byProgram"]]
    positioned = [o for o in objects if o["firstPosition"] is not None]
    late = [o for o in positioned
            if o["released"] is None or o["frozen"] is None or o["frozen"] > o["firstPosition"]]
    complaints = summary["complaintList"]
    problems = []
    if code != 0:
        problems.append(f"Velatra ended with {code}")
    if len(objects) < LEAST_OBJECTS:
        problems.append(f"only {len(objects)} objects were created")
    if builtin_day and airport != {"airport": "XVEL", "airportName": "Velatra Field", "stands": 62, "quality": "60"}:
        problems.append(f"the park airport was not loaded: {airport}")
    if late:
        problems.append(f"{len(late)} objects were moved before their release and three freezes")
    unclaimed = [o for o in objects if o["firstPosition"] is None and o["removed"] - o["created"] > SET_UP_SECONDS]
    if unclaimed:
        problems.append(f"{len(unclaimed)} objects were created and never moved")
    if complaints:
        problems.append(f"{len(complaints)} packets were wrong, the first: {complaints[0]}")
    if shutil.which("rsvg-convert"):
        subprocess.run(["rsvg-convert", "-w", "1600", DEMO / "traffic.svg", "-o", DEMO / "traffic.png"], check=True)
    print(f"objects: {len(objects)}, moved: {len(positioned)}, wrong packets: {len(complaints)}")
    print(f"park airport: {airport}")
    print(f"picture and summary: {DEMO.relative_to(ROOT)}/traffic.svg, {DEMO.relative_to(ROOT)}/summary.json")
    for problem in problems:
        print("NOT AS IT SHOULD BE:", problem)
    return 1 if problems else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seconds", type=int, default=120, help="of the whole run")
    parser.add_argument("--recording", help="play this recording instead of the built-in day")
    parser.add_argument("--start", type=float, default=0, help="seconds of the recording to begin at")
    parser.add_argument("--world", type=Path, default=ROOT / "data" / "world")
    parser.add_argument("--user", type=float, nargs=3, default=(47.6, 11.5, 12000), metavar=("LAT", "LON", "FEET"))
    parser.add_argument("--ground", type=float, default=1600, help="elevation of the ground, feet")
    options = parser.parse_args()
    return judge(run(options), not options.recording)


if __name__ == "__main__":
    sys.exit(main())
