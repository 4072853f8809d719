#!/usr/bin/env python3
"""The real processes together: the stand-in world, and Velatra without a window.

usage: end_to_end.py SOURCE_DIR BINARY_DIR
Each scenario works in a folder of its own; the feed's ports are fixed by the feed, so run one at a time.
"""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SOURCE = Path(sys.argv[1])
BINARIES = Path(sys.argv[2])
STOP_LIMIT = 3.0  # seconds from the stop request to the end of the process


class Machine:
    """One PC: its folders, its environment, and the processes started on it."""

    def __init__(self, folder: Path):
        self.folder = folder
        self.install = folder / "install"
        self.processes = []
        for name in ("appdata", "documents", "public", "runtime", "server", "drive_c/Prepar3D v5/Scenery", "out",
                     "install/docs", "install/input/my_regcodes", "install/output"):
            (folder / name).mkdir(parents=True)
        (folder / "appdata" / "registry.ini").write_text(
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\nSetupPath=C:\\Prepar3D v5\n")
        self.environment = dict(
            os.environ, VELATRA_APPDATA=str(folder / "appdata"), VELATRA_DOCUMENTS=str(folder / "documents"),
            VELATRA_PUBLIC_DOCUMENTS=str(folder / "public"), VELATRA_RUNTIME=str(folder / "runtime"),
            VELATRA_DRIVE_C=str(folder / "drive_c"))
        world = SOURCE / "data" / "world"
        catalogue = ("--base", SOURCE / "data" / "airports_p3d.xml")
        for what, out, more in (("dbase", "server", ()), ("regcodes", "server", ()), ("airport-files", "server", ()),
                                ("liveries", "install/output", ()),
                                ("catalogue", "install/airports_p3d.xml", catalogue)):
            subprocess.run([BINARIES / "velatra-tool", "publish", what, "--world", world, "--out", folder / out, *more],
                           check=True, stdout=subprocess.DEVNULL)

    def start(self, name: str, *arguments) -> subprocess.Popen:
        process = subprocess.Popen([str(BINARIES / name), *map(str, arguments)], cwd=self.install, env=self.environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.processes.append(process)
        return process

    def start_world(self, *arguments, user=(47.6, 11.5)) -> dict:
        world = self.start("velatra-standin", "--world", SOURCE / "data" / "world", "--out", self.folder / "out",
                           "--serve", self.folder / "server", "--http-port", 0, "--user-lat", user[0], "--user-lon", user[1],
                           "--user-alt", 12000, *arguments)
        ready = json.loads(world.stdout.readline())
        self.environment["VELATRA_SERVER"] = f"http://127.0.0.1:{ready['http']}/"
        return {"process": world, **ready}

    def start_velatra(self) -> subprocess.Popen:
        return self.start("velatra", "--headless", "--status", "1")

    def log(self) -> str:
        return (self.install / "Log.txt").read_text()

    def close(self):
        for process in self.processes:
            if process.poll() is None:
                process.kill()
            process.wait()


def wait_for_line(process: subprocess.Popen, text: str, seconds: float = 60) -> str:
    deadline = time.monotonic() + seconds
    seen = []
    for line in process.stdout:
        seen.append(line)
        if text in line:
            return line
        if time.monotonic() > deadline:
            break
    raise AssertionError(f"{text!r} has not come; the last lines were {seen[-5:]}")


def stop(process: subprocess.Popen) -> int:
    begin = time.monotonic()
    process.send_signal(signal.SIGTERM)
    code = process.wait(20)
    took = time.monotonic() - begin
    # A machine under the load of sanitizers is given twice the time.
    limit = STOP_LIMIT * float(os.environ.get("VELATRA_TEST_SLOWNESS", "1"))
    assert took <= limit, f"the end took {took:.1f} s"
    return code


def traffic_appears_and_flies(machine: Machine):
    world = machine.start_world("--builtin-day", "--seconds", 75)
    velatra = machine.start_velatra()
    deadline = time.monotonic() + 70
    live = 0
    while live < 15 and time.monotonic() < deadline:
        live = json.loads(wait_for_line(velatra, '"live"'))["live"]
    assert live >= 15, f"only {live} live aircraft"
    time.sleep(5)
    assert stop(velatra) == 0
    world["process"].send_signal(signal.SIGTERM)
    world["process"].wait(20)
    summary = json.loads((machine.folder / "out" / "summary.json").read_text())
    assert summary["complaints"] == 0, summary["complaintList"][:3]
    flown = [o for o in summary["objects"] if o["byProgram"] and o["firstPosition"] is not None]
    assert len(flown) >= 15, len(flown)
    for o in flown:
        assert o["released"] <= o["firstPosition"] and o["frozen"] <= o["firstPosition"], o
    assert (machine.folder / "out" / "traffic.svg").stat().st_size > 1000
    assert "Exiting: USER CLOSED SIM" in machine.log()
    # A second run in the same place finds the settings that the first one wrote.
    assert (machine.folder / "appdata" / "Velatra" / "parameters.xml").exists()


def the_airport_around_the_user_is_known(machine: Machine):
    # On stand R4, facing its way.
    world = machine.start_world("--builtin-day", "--seconds", 150, "--user-on-ground", "--ground-elevation", 1600,
                                user=(47.602509, 11.509576))
    velatra = machine.start_velatra()
    wait_for_line(velatra, '"airport":"XVEL"', 40)
    status = {}
    deadline = time.monotonic() + 40
    while not status.get("userStand") and time.monotonic() < deadline:
        status = json.loads(wait_for_line(velatra, '"stands"'))
    assert status["stands"] == 62, status
    assert status["airportName"] == "Velatra Field" and status["quality"] == "60", status
    assert status["userStand"] == status["reservedStand"] == "R4", status
    time.sleep(60)
    assert stop(velatra) == 0
    world["process"].send_signal(signal.SIGTERM)
    world["process"].wait(20)
    log = machine.log()
    for line in ("User aircraft on the ground at XVEL", "The park airport is XVEL",
                 'Airport file read from "archive/stock/XVEL.xml" for Velatra Field', "my_park_airports.txt created with XVEL,R4"):
        assert line in log, line
    assert (machine.install / "airports" / "my_park_airports.txt").read_text().strip() == "XVEL,R4"
    summary = json.loads((machine.folder / "out" / "summary.json").read_text())
    on_ground = [o for o in summary["objects"] if o["byProgram"] and o.get("track", {}).get("first", {}).get("onGround")]
    assert len(on_ground) >= 2, "no aircraft appeared on the ground"


def a_second_instance_leaves_the_first_alone(machine: Machine):
    machine.start_world("--no-feed")
    first = machine.start_velatra()
    wait_for_line(first, "Waiting for Prepar3Dv5 ...")
    before = machine.log()
    second = machine.start_velatra()
    assert second.wait(10) == 255, second.returncode
    assert machine.log().startswith(before[:200])
    assert not (machine.install / "Log0.txt").exists()
    assert stop(first) == 0


def it_waits_for_the_simulator_and_ends_in_every_wait(machine: Machine):
    machine.start_world("--no-feed", "--no-simulator-for", 6)
    velatra = machine.start_velatra()
    wait_for_line(velatra, "Waiting for Prepar3Dv5 ...")
    assert stop(velatra) == 0
    velatra = machine.start_velatra()
    wait_for_line(velatra, "connected")
    assert stop(velatra) == 0
    assert machine.log().count("Waiting for Prepar3Dv5") == 1


def a_killed_simulator_ends_the_program(machine: Machine):
    world = machine.start_world("--builtin-day")
    velatra = machine.start_velatra()
    wait_for_line(velatra, '"live"')
    wait_for_line(velatra, '"simRunning":true')
    world["process"].kill()
    wait_for_line(velatra, "Flight Simulator no longer connected, Velatra will stop ...")
    assert velatra.wait(20) == 0
    assert "Exiting: SIM WAS CLOSED" in machine.log()


def without_a_server_the_error_stays_until_the_user_closes(machine: Machine):
    machine.environment["VELATRA_SERVER"] = "http://127.0.0.1:9/"
    velatra = machine.start_velatra()
    wait_for_line(velatra, "Error: data base could not be read from on-line?")
    time.sleep(1)
    assert velatra.poll() is None
    assert stop(velatra) == 0
    assert "Exiting: SYSTEM ERROR" in machine.log()
    leftovers = [p.name for p in machine.install.rglob("*") if p.suffix in (".part", ".zip", ".new")]
    assert not leftovers, leftovers


SCENARIOS = (
    without_a_server_the_error_stays_until_the_user_closes,
    a_second_instance_leaves_the_first_alone,
    it_waits_for_the_simulator_and_ends_in_every_wait,
    a_killed_simulator_ends_the_program,
    traffic_appears_and_flies,
    the_airport_around_the_user_is_known,
)


def main() -> int:
    failed = 0
    for scenario in SCENARIOS:
        folder = Path(tempfile.mkdtemp(prefix="velatra-e2e-"))
        machine = Machine(folder)
        try:
            scenario(machine)
            print(f"passed: {scenario.__name__}", flush=True)
        except Exception as error:  # every scenario is reported, whatever became of it
            failed += 1
            print(f"FAILED: {scenario.__name__}: {type(error).__name__}: {error}", flush=True)
        finally:
            machine.close()
            shutil.rmtree(folder, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
