#!/usr/bin/env python3
"""The real processes together: the stand-in world, and Velatra without a window.

usage: end_to_end.py SOURCE_DIR BINARY_DIR [SCENARIO PUBLISHED_DIR]
Each scenario is a process of its own, on a machine of its own. The feed's ports are fixed by the feed, so each gets a
network of its own, too; where the system allows none they run one after the other.
"""
import fcntl
import json
import os
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(sys.argv[1]).resolve()
BINARIES = Path(sys.argv[2]).resolve()
sys.path.append(str(SOURCE / "tools"))
from machine import Machine  # noqa: E402

WORLD = SOURCE / "data" / "world"
# Sanitizers slow the processes down, not the clocks that they are judged by.
SLOWNESS = float(os.environ.get("VELATRA_TEST_SLOWNESS", "1"))
STOP_LIMIT = 3.0 * SLOWNESS  # seconds from the stop request to the end of the process
IN_THE_AIR = ("--user-lat", 47.6, "--user-lon", 11.5, "--user-alt", 12000)
ON_STAND_R4 = ("--user-lat", 47.602509, "--user-lon", 11.509576, "--user-on-ground", "--ground-elevation", 1600)
NO_FEED = (*IN_THE_AIR, "--no-feed")


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


def wait_for_status(process: subprocess.Popen, holds, seconds: float = 70) -> dict:
    deadline = time.monotonic() + seconds
    status = {}
    while time.monotonic() < deadline:
        status = json.loads(wait_for_line(process, '"live"'))
        if holds(status):
            return status
    raise AssertionError(f"the status has not come, the last was {status}")


def ask_for_summary(machine: Machine, world: subprocess.Popen) -> dict:
    world.send_signal(signal.SIGUSR1)
    time.sleep(0.5)
    try:
        return machine.summary()
    except (FileNotFoundError, json.JSONDecodeError):
        return {"objects": []}  # not written yet, or not to its end


def wait_for_objects(machine: Machine, world: subprocess.Popen, fits, count: int, seconds: float = 100):
    """Waits until the simulator has had so many of Velatra's objects that fit."""
    deadline = time.monotonic() + seconds
    found = []
    while len(found) < count and time.monotonic() < deadline:
        found = [o for o in ask_for_summary(machine, world)["objects"] if o["byProgram"] and fits(o)]
    assert len(found) >= count, f"only {len(found)} objects"


def stop(process: subprocess.Popen) -> int:
    begin = time.monotonic()
    process.send_signal(signal.SIGTERM)
    code = process.wait(20)
    took = time.monotonic() - begin
    assert took <= STOP_LIMIT, f"the end took {took:.1f} s"
    return code


def end_world(machine: Machine, world: subprocess.Popen) -> dict:
    """Its last summary; all that Velatra has sent must have been right."""
    world.send_signal(signal.SIGTERM)
    assert world.wait(20) == 0
    summary = machine.summary()
    assert summary["complaints"] == 0, summary["complaintList"][:3]
    return summary


def simulators_pipe(machine: Machine) -> socket.socket:
    """The end of the simulator's pipe, to play a simulator that misbehaves."""
    path = machine.folder / "runtime" / "pipe" / "Lockheed Martin Prepar3D v5" / "SimConnect"
    path.parent.mkdir(parents=True)
    server = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    server.bind(str(path))
    server.listen()
    return server


def nothing_is_left_of_downloads(machine: Machine):
    leftovers = [p.name for p in machine.program.rglob("*") if p.suffix in (".part", ".zip", ".new")]
    assert not leftovers, leftovers


def traffic_appears_and_flies(machine: Machine):
    world, _ = machine.start_world(*IN_THE_AIR, "--user-heading", 90, "--user-speed", 250, "--user-model", "B350",
                                   "--user-title", "A user's aircraft")
    velatra = machine.start_velatra()
    status = wait_for_status(velatra, lambda status: status["live"] >= 15)
    assert (status["title"], status["model"]) == ("A user's aircraft", "B350"), status
    wait_for_objects(machine, world, lambda o: o["firstPosition"] is not None, 15)
    assert stop(velatra) == 0
    summary = end_world(machine, world)
    flown = [o for o in summary["objects"] if o["byProgram"] and o["firstPosition"] is not None]
    assert len(flown) >= 15, len(flown)
    for o in flown:
        assert o["released"] <= o["firstPosition"] and o["frozen"] <= o["firstPosition"], o
    assert (machine.folder / "traffic.svg").stat().st_size > 1000
    assert "Exiting: USER CLOSED SIM" in machine.log()
    # A second run in the same place finds the settings that the first one wrote.
    assert (machine.folder / "appdata" / "Velatra" / "parameters.xml").exists()


def the_airport_around_the_user_is_known(machine: Machine):
    world, _ = machine.start_world(*ON_STAND_R4)  # and facing its way
    velatra = machine.start_velatra()
    status = wait_for_status(velatra, lambda status: status["airport"] == "XVEL" and status["userStand"])
    assert status["stands"] == 62, status
    assert status["airportName"] == "Velatra Field" and status["quality"] == "60", status
    assert status["userStand"] == status["reservedStand"] == "R4", status

    def on_the_ground(o: dict) -> bool:
        return bool(o.get("track", {}).get("first", {}).get("onGround"))

    wait_for_objects(machine, world, on_the_ground, 2)
    assert stop(velatra) == 0
    end_world(machine, world)
    log = machine.log()
    for line in ("User aircraft on the ground at XVEL", "The park airport is XVEL",
                 'Airport file read from "archive/stock/XVEL.xml" for Velatra Field', "my_park_airports.txt created with XVEL,R4"):
        assert line in log, line
    assert (machine.program / "airports" / "my_park_airports.txt").read_text().strip() == "XVEL,R4"


def without_its_file_the_park_airport_has_no_stands(machine: Machine):
    (machine.program / "airports").mkdir()
    (machine.program / "airports" / "my_park_airports.txt").write_text("XVEL\n")
    machine.start_world(*NO_FEED, "--http-fault", "cut", "--http-fault-path", "XVEL.xml")
    velatra = machine.start_velatra()
    wait_for_line(velatra, "XVEL not found")
    status = wait_for_status(velatra, lambda status: True)
    assert status["stands"] == 0 and status["airportName"] == "", status
    assert stop(velatra) == 0
    nothing_is_left_of_downloads(machine)


def what_is_wrong_at_the_start_is_told(machine: Machine):
    for arguments, code, text in ((("--headles",), 2, "--headles isn't understood"),
                                  (("--headless", "--status", "x"), 2, "x isn't understood"), ((), 2, "--headless"),
                                  (("--help",), 0, "usage: velatra")):
        process = machine.start("velatra", *arguments)
        assert process.wait(10) == code and text in process.stdout.read(), arguments
        assert not (machine.program / "Log.txt").exists()
    (machine.folder / "appdata" / "Velatra").write_text("a file where the folder should be")
    process = machine.start_velatra()
    assert process.wait(10) == 4 and "Failed to create directory" in process.stdout.read()


def a_second_instance_leaves_the_first_alone(machine: Machine):
    machine.start_world(*NO_FEED)
    first = machine.start_velatra()
    wait_for_line(first, "Waiting for Prepar3Dv5 ...")
    before = machine.log()
    second = machine.start_velatra()
    assert second.wait(10) == 255, second.returncode
    assert machine.log().startswith(before[:200])
    assert not (machine.program / "Log0.txt").exists()
    assert stop(first) == 0


def it_waits_for_the_simulator_and_ends_in_every_wait(machine: Machine):
    machine.start_world(*NO_FEED, "--no-simulator-for", 6)
    velatra = machine.start_velatra()
    wait_for_line(velatra, "Waiting for Prepar3Dv5 ...")
    assert stop(velatra) == 0
    velatra = machine.start_velatra()
    wait_for_line(velatra, "connected")
    assert stop(velatra) == 0
    assert machine.log().count("Waiting for Prepar3Dv5") == 1


def over_the_network_the_configuration_leads_to_the_simulator(machine: Machine):
    _, ready = machine.start_world(*NO_FEED, "--no-pipe", "--ipv4-port", 0, "--ipv6-port", 0)
    for protocol, address, port in (("IPv4", "127.0.0.1", ready["ipv4"]), ("IPv6", "::1", ready["ipv6"])):
        (machine.folder / "documents" / "SimConnect.cfg").write_text(
            f"[SimConnect]\nProtocol={protocol}\nAddress={address}\nPort={port}\n")
        velatra = machine.start_velatra()
        wait_for_status(velatra, lambda status: status["simRunning"])
        assert stop(velatra) == 0


def after_a_broken_connection_it_waits_again(machine: Machine, velatra: subprocess.Popen):
    wait_for_line(velatra, "SimConnect request error")
    wait_for_line(velatra, "Restarting after 9 seconds")
    wait_for_line(velatra, "Waiting for Prepar3Dv5 ...")
    assert stop(velatra) == 0
    log = machine.log()
    assert -1 < log.find("Exiting: SIMCONNECT ERROR") < log.find("Exiting: USER CLOSED SIM")
    assert "no longer connected" not in log


def a_simulator_killed_in_traffic_is_waited_for_again(machine: Machine):
    world, _ = machine.start_world(*IN_THE_AIR)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["live"] > 0)  # and more are on their way
    world.kill()
    after_a_broken_connection_it_waits_again(machine, velatra)


def a_simulator_killed_before_its_flight_runs_is_waited_for_again(machine: Machine):
    """It opens the conversation, and goes without a word while nothing would be asked of it."""
    opening = struct.pack("<III256s10I", 308, 4, 2, b"Lockheed Martin Prepar3D v5", 5, 4, 9, 1, 5, 4, 9, 1, 0, 0)
    machine.start_world(*NO_FEED, "--no-simulator-for", 600)
    with simulators_pipe(machine) as server:
        velatra = machine.start_velatra()
        client, _ = server.accept()
        client.sendall(opening)
        wait_for_line(velatra, "connected")
        client.close()
    after_a_broken_connection_it_waits_again(machine, velatra)


def a_simulator_that_hangs_up_while_it_starts_is_tried_again(machine: Machine):
    machine.start_world(*NO_FEED, "--no-simulator-for", 600)
    with simulators_pipe(machine) as server:
        velatra = machine.start_velatra()
        for _ in range(2):
            client, _ = server.accept()
            time.sleep(0.2)
            client.close()
        wait_for_status(velatra, lambda status: True)
        assert stop(velatra) == 0
    log = machine.log()
    assert "SimConnect request error" not in log and "no longer connected" not in log
    assert log.count("Waiting for Prepar3Dv5") == 1


def after_a_simulators_goodbye_it_stays_until_the_user_closes(machine: Machine):
    world, _ = machine.start_world(*NO_FEED, "--quit-at-end")
    velatra = machine.start_velatra()
    wait_for_line(velatra, "No traffic in this region?")
    end_world(machine, world)
    wait_for_status(velatra, lambda status: not status["simRunning"])
    time.sleep(4)
    assert velatra.poll() is None
    assert stop(velatra) == 0
    log = machine.log()
    assert -1 < log.find("Flight not running") < log.find("Exiting: USER CLOSED SIM")
    assert "SimConnect request error" not in log and "no longer connected" not in log


def without_a_server_the_error_stays_until_the_user_closes(machine: Machine):
    machine.environment["VELATRA_SERVER"] = "http://127.0.0.1:9/"
    velatra = machine.start_velatra()
    wait_for_line(velatra, "Error: data base could not be read from on-line?")
    time.sleep(1)
    assert velatra.poll() is None
    assert stop(velatra) == 0
    assert "Exiting: SYSTEM ERROR" in machine.log()
    nothing_is_left_of_downloads(machine)


def a_server_that_errs_leaves_an_error_and_no_files(machine: Machine):
    for fault in ("404", "500", "cut", "not-a-zip"):
        machine.start_world(*NO_FEED, "--http-fault", fault)
        velatra = machine.start_velatra()
        wait_for_line(velatra, "Error: data base could not be read from on-line?")
        assert stop(velatra) == 0, fault
        assert "Exiting: SYSTEM ERROR" in machine.log(), fault
        nothing_is_left_of_downloads(machine)


def a_server_that_is_silent_does_not_hold_the_user(machine: Machine):
    machine.start_world(*NO_FEED, "--http-fault", "silent")
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: True)
    assert stop(velatra) == 0
    assert "Exiting: USER CLOSED SIM" in machine.log()
    nothing_is_left_of_downloads(machine)


# The longest first.
SCENARIOS = (
    the_airport_around_the_user_is_known,
    traffic_appears_and_flies,
    after_a_simulators_goodbye_it_stays_until_the_user_closes,
    a_simulator_killed_in_traffic_is_waited_for_again,
    a_simulator_killed_before_its_flight_runs_is_waited_for_again,
    a_server_that_errs_leaves_an_error_and_no_files,
    without_its_file_the_park_airport_has_no_stands,
    over_the_network_the_configuration_leads_to_the_simulator,
    it_waits_for_the_simulator_and_ends_in_every_wait,
    a_simulator_that_hangs_up_while_it_starts_is_tried_again,
    without_a_server_the_error_stays_until_the_user_closes,
    a_second_instance_leaves_the_first_alone,
    what_is_wrong_at_the_start_is_told,
    a_server_that_is_silent_does_not_hold_the_user,
)


def bring_up_loopback():
    """A new network begins with its loopback down."""
    get_flags, set_flags, up, form = 0x8913, 0x8914, 1, "16sh14x"
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        _, flags = struct.unpack(form, fcntl.ioctl(any_socket, get_flags, struct.pack(form, b"lo", 0)))
        if not flags & up:
            fcntl.ioctl(any_socket, set_flags, struct.pack(form, b"lo", flags | up))


def run_scenario(name: str, published: Path):
    bring_up_loopback()
    scenario = next(s for s in SCENARIOS if s.__name__ == name)
    with tempfile.TemporaryDirectory(prefix="velatra-e2e-", ignore_cleanup_errors=True) as folder:
        machine = Machine(Path(folder), BINARIES, WORLD)
        machine.copy_published(published)
        try:
            scenario(machine)
        finally:
            machine.close()


def run_all() -> int:
    own_network = ["unshare", "--map-root-user", "--net"]
    alone = subprocess.run([*own_network, "true"], stderr=subprocess.DEVNULL).returncode == 0
    with tempfile.TemporaryDirectory(prefix="velatra-e2e-") as folder:
        published = Path(folder) / "published"
        Machine(published, BINARIES, WORLD).publish(SOURCE / "data" / "airports_p3d.xml")

        def run(scenario) -> bool:
            begin = time.monotonic()
            done = subprocess.run([*(own_network if alone else []), sys.executable, __file__, SOURCE, BINARIES,
                                   scenario.__name__, published], capture_output=True, text=True)
            good = done.returncode == 0
            print(f"{'passed' if good else 'FAILED'}: {scenario.__name__}, {time.monotonic() - begin:.0f} s",
                  done.stdout + done.stderr, flush=True)
            return good

        with ThreadPoolExecutor(4 if alone else 1) as pool:
            return 0 if all(list(pool.map(run, SCENARIOS))) else 1


if __name__ == "__main__":
    if len(sys.argv) > 3:
        run_scenario(sys.argv[3], Path(sys.argv[4]))
    else:
        sys.exit(run_all())
