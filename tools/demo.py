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
LEAST_OBJECTS = 25


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
    tool = INSTALL / "velatra-tool"
    (INSTALL / "output").mkdir(exist_ok=True)
    for what, out in (("dbase", DEMO / "server"), ("regcodes", DEMO / "server"), ("liveries", INSTALL / "output")):
        subprocess.run([tool, "publish", what, "--world", world, "--out", out], check=True, stdout=subprocess.DEVNULL)
    return environment


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
    velatra = subprocess.Popen([INSTALL / "velatra", "--headless", "--status", "10"], cwd=INSTALL, env=environment,
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


def judge(code: int) -> int:
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
    if late:
        problems.append(f"{len(late)} objects were moved before their release and three freezes")
    if complaints:
        problems.append(f"{len(complaints)} packets were wrong, the first: {complaints[0]}")
    if shutil.which("rsvg-convert"):
        subprocess.run(["rsvg-convert", "-w", "1600", DEMO / "traffic.svg", "-o", DEMO / "traffic.png"], check=True)
    print(f"objects: {len(objects)}, moved: {len(positioned)}, wrong packets: {len(complaints)}")
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
    return judge(run(options))


if __name__ == "__main__":
    sys.exit(main())
