#!/usr/bin/env python3
"""The real processes together: the stand-in world, and Velatra without a window.

usage: end_to_end.py SOURCE_DIR BINARY_DIR [SCENARIO PUBLISHED_DIR]
Each scenario is a process of its own, on a machine of its own. The feed's ports are fixed by the feed, so each gets a
network of its own, too; where the system allows none they run one after the other.
"""
import csv
import fcntl
import json
import os
import re
import resource
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from xml.etree import ElementTree

SOURCE = Path(sys.argv[1]).resolve()
BINARIES = Path(sys.argv[2]).resolve()
sys.path.append(str(SOURCE / "tools"))
from machine import Machine  # noqa: E402

WORLD = SOURCE / "data" / "world"
# Sanitizers slow the processes down, not the clocks that they are judged by.
SLOWNESS = float(os.environ.get("VELATRA_TEST_SLOWNESS", "1"))
STOP_LIMIT = 3.0 * SLOWNESS  # seconds from the stop request to the end of the process
IN_THE_AIR = ("--user-lat", 47.6, "--user-lon", 11.5, "--user-alt", 12000)
NO_FEED = (*IN_THE_AIR, "--no-feed")


def wait_for_line(process: subprocess.Popen, text: str, seconds: float = 70) -> str:
    deadline = time.monotonic() + seconds
    seen = []
    for line in process.stdout:
        seen.append(line)
        if text in line:
            return line
        if time.monotonic() > deadline:
            break
    raise AssertionError(f"{text!r} has not come; the last lines were {seen[-5:]}")


def wait_for_status(process: subprocess.Popen, holds=lambda status: True) -> dict:
    deadline = time.monotonic() + 70
    status = {}
    while time.monotonic() < deadline:
        status = json.loads(wait_for_line(process, '"live"'))
        if holds(status):
            return status
    raise AssertionError(f"the status has not come, the last was {status}")


def wait_for_objects(machine: Machine, world: subprocess.Popen, fits, count: int):
    """Waits until the simulator has had so many of Velatra's objects that fit."""
    deadline = time.monotonic() + 100
    found = []
    while len(found) < count and time.monotonic() < deadline:
        world.send_signal(signal.SIGUSR1)
        time.sleep(0.5)
        try:
            found = [o for o in machine.summary()["objects"] if o["byProgram"] and fits(o)]
        except (FileNotFoundError, json.JSONDecodeError):
            pass  # not written yet, or not to its end
    assert len(found) >= count, f"only {len(found)} objects"


def stop(process: subprocess.Popen) -> float:
    """Velatra ends in time and in good order."""
    begin = time.monotonic()
    process.send_signal(signal.SIGTERM)
    assert process.wait(20) == 0
    took = time.monotonic() - begin
    assert took <= STOP_LIMIT, f"the end took {took:.1f} s"
    return took


def end_world(machine: Machine, world: subprocess.Popen, excused: str = "-") -> dict:
    """Its last summary; all that Velatra has sent must have been right, but for what is excused."""
    world.send_signal(signal.SIGTERM)
    assert world.wait(20) == 0
    summary = machine.summary()
    wrong = [c for c in summary["complaintList"] if excused not in c["reason"]]
    assert not wrong, wrong[:3]
    return summary


def expect_log(machine: Machine, *lines: str, never: tuple = ()):
    """The lines stand in the log in this order, `never` nowhere."""
    log = machine.log()
    at = 0
    for line in lines:
        at = log.find(line, at)
        assert at >= 0, line
    for line in never:
        assert line not in log, line


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


def traffic_appears_at_the_airport_around_the_user(machine: Machine):
    world, _ = machine.start_world("--user-lat", 47.602509, "--user-lon", 11.509576, "--user-on-ground",
                                   "--ground-elevation", 1600, "--user-model", "B350", "--user-title", "A user's own")
    velatra = machine.start_velatra()
    status = wait_for_status(velatra, lambda status: status["airport"] == "XVEL" and status["userStand"])
    expected = {"stands": 68, "airportName": "Velatra Field", "quality": "60", "userStand": "R4", "reservedStand": "R4",
                "title": "A user's own", "model": "B350"}
    assert expected.items() <= status.items(), status
    wait_for_objects(machine, world, lambda o: o.get("track", {}).get("first", {}).get("onGround"), 2)
    wait_for_objects(machine, world, lambda o: o["firstPosition"] is not None, 15)
    stop(velatra)
    for o in end_world(machine, world)["objects"]:
        if o["byProgram"] and o["firstPosition"] is not None:
            assert o["released"] <= o["firstPosition"] and o["frozen"] <= o["firstPosition"], o
    assert (machine.folder / "traffic.svg").stat().st_size > 1000
    for line in ("User aircraft on the ground at XVEL", "The park airport is XVEL", "Exiting: USER CLOSED SIM",
                 'Airport file read from "archive/stock/XVEL.xml" for Velatra Field',
                 "my_park_airports.txt created with XVEL,R4"):
        expect_log(machine, line)
    assert (machine.program / "airports" / "my_park_airports.txt").read_text().strip() == "XVEL,R4"
    # A second run in the same place finds the settings that the first one wrote.
    assert (machine.folder / "appdata" / "Velatra" / "parameters.xml").exists()


def wait_until_no_static_is_left(machine: Machine, world: subprocess.Popen, velatra: subprocess.Popen):
    left = [None]
    for _ in range(10):  # removals are metered
        world.send_signal(signal.SIGUSR1)
        wait_for_status(velatra)
        left = [o["callsign"] for o in machine.summary()["objects"]
                if o["byProgram"] and o["removed"] is None and o["callsign"].endswith("*")]
        if not left:
            break
    assert not left, left


def saved_parameter(file: Path, name: str) -> str:
    """Out of an airport file, which must be whole."""
    elements = file.read_text().split("?>", 1)[1]
    return ElementTree.fromstring(f"<all>{elements}</all>").find(f"parameters/parameter[@name='{name}']").get("value")


def static_parking_answers_its_user_and_a_stop_saves_what_was_learned(machine: Machine):
    (machine.program / "airports").mkdir()
    (machine.program / "airports" / "my_park_airports.txt").write_text("XVEL\n")
    machine.set_parameters(SCAN_LIVERIES="false", SCAN_AIRPORTS="false", CUSTOM_MAX_PARK="6")
    world, _ = machine.start_world(*IN_THE_AIR)
    velatra = machine.start_velatra()
    all_stand = wait_for_status(velatra, lambda s: s["wanted"] == 6 and s["static"] > 2 and s["parkingEnabled"])
    assert not all_stand["percentageEnabled"]  # nothing is learned here yet
    say(velatra, "WEEK=on")
    wait_for_line(velatra, "Velatra will respond in")
    say(velatra, "press Flush static")
    wait_for_line(velatra, "All static parked aircraft will be removed ...")
    wait_for_line(velatra, '/XVEL.xml" saved with')
    gone = wait_for_status(velatra)
    assert (gone["airport"], gone["static"], gone["flushStaticEnabled"]) == ("", 0, False), gone
    wait_until_no_static_is_left(machine, world, velatra)
    learned, = (machine.program / "airports" / "learned").rglob("XVEL.xml")
    assert saved_parameter(learned, "parking_percentage") == "30"
    wait_for_status(velatra, lambda s: s["airport"] == "XVEL" and s["static"] > 2 and s["parkingEnabled"])
    say(velatra, "press Re-read\nCUSTOM_MAX_PARK=\nparking_percentage=90")
    wait_for_line(velatra, "Velatra will respond in")
    wait_for_line(velatra, "park airports and stands are okay")
    wait_for_status(velatra, lambda s: s["wanted"] == 61 and s["static"] > 9 and not s["parkingEnabled"])
    before = learned.stat().st_mtime_ns
    stop(velatra)
    assert learned.stat().st_mtime_ns > before
    assert saved_parameter(learned, "parking_percentage") == "90"
    end_world(machine, world)
    nothing_is_left_of_downloads(machine)


def without_its_file_the_park_airport_has_no_stands(machine: Machine):
    (machine.program / "airports").mkdir()
    (machine.program / "airports" / "my_park_airports.txt").write_text("XVEL\n")
    machine.start_world(*NO_FEED, "--http-fault", "cut", "--http-fault-path", "XVEL.xml")
    velatra = machine.start_velatra()
    wait_for_line(velatra, "XVEL not found")
    status = wait_for_status(velatra)
    assert status["stands"] == 0 and status["airportName"] == "", status
    stop(velatra)
    nothing_is_left_of_downloads(machine)


def what_is_wrong_at_the_start_is_told(machine: Machine):
    for arguments, code, text in ((("--headles",), 2, "--headles isn't understood"),
                                  (("--headless", "--status", "x"), 2, "x isn't understood"), ((), 2, "--headless"),
                                  (("--help",), 0, "usage: velatra")):
        process = machine.start("velatra", *arguments)
        assert process.wait(10) == code and text in process.stdout.read(), arguments
        assert not (machine.program / "Log.txt").exists()
    shutil.rmtree(machine.folder / "appdata" / "Velatra")
    (machine.folder / "appdata" / "Velatra").write_text("a file where the folder should be")
    process = machine.start_velatra()
    assert process.wait(10) == 4 and "Failed to create directory" in process.stdout.read()


def it_waits_for_the_simulator_and_leaves_a_second_instance_alone(machine: Machine):
    machine.start_world(*NO_FEED, "--no-simulator-for", 6)
    (machine.program / "airports_p3d.xml").write_text("<airports/>")  # told, but no reason to stop
    first = machine.start_velatra()
    wait_for_line(first, '"airports_p3d.xml" holds no airport')
    wait_for_line(first, "Waiting for Prepar3Dv5 ...")
    before = machine.log()
    assert machine.start_velatra().wait(10) == 255
    assert machine.log().startswith(before[:200])
    assert not (machine.program / "Log0.txt").exists()
    stop(first)
    velatra = machine.start_velatra()
    wait_for_line(velatra, "connected")
    stop(velatra)
    assert machine.log().count("Waiting for Prepar3Dv5") == 1


def over_the_network_the_configuration_leads_to_the_simulator(machine: Machine):
    _, ready = machine.start_world(*NO_FEED, "--no-pipe", "--ipv4-port", 0, "--ipv6-port", 0)
    for protocol, address, port in (("IPv4", "127.0.0.1", ready["ipv4"]), ("IPv6", "::1", ready["ipv6"])):
        (machine.folder / "documents" / "SimConnect.cfg").write_text(
            f"[SimConnect]\nProtocol={protocol}\nAddress={address}\nPort={port}\n")
        velatra = machine.start_velatra()
        wait_for_status(velatra, lambda status: status["simRunning"])
        stop(velatra)


def after_a_broken_connection_it_waits_again(machine: Machine, velatra: subprocess.Popen):
    for line in ("SimConnect request error", "Restarting after 9 seconds", "Waiting for Prepar3Dv5 ..."):
        wait_for_line(velatra, line)
    stop(velatra)
    expect_log(machine, "Exiting: SIMCONNECT ERROR", "Exiting: USER CLOSED SIM", never=("no longer connected",))
    settings = (machine.folder / "appdata" / "Velatra" / "parameters.xml").read_text()
    for ended in ('"SCAN_LIVERIES" value="false"', '"BLOCK_CALLSIGN" value=""'):  # neither outlives the run
        assert ended in settings, settings


def a_simulator_killed_in_traffic_is_waited_for_again(machine: Machine):
    world, _ = machine.start_world(*IN_THE_AIR)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["live"] > 0)  # and more are on their way
    world.kill()
    after_a_broken_connection_it_waits_again(machine, velatra)


def a_simulator_killed_before_its_flight_runs_is_waited_for_again(machine: Machine):
    """It hangs up while it starts, then opens the conversation, and goes while nothing would be asked of it."""
    opening = struct.pack("<III256s10I", 308, 4, 2, b"Lockheed Martin Prepar3D v5", 5, 4, 9, 1, 5, 4, 9, 1, 0, 0)
    machine.start_world(*NO_FEED, "--no-simulator-for", 600)
    machine.set_parameters(SCAN_LIVERIES="false", SCAN_AIRPORTS="false", BLOCK_CALLSIGN="ANY1")
    with simulators_pipe(machine) as server:
        velatra = machine.start_velatra()
        for _ in range(2):
            client, _ = server.accept()
            time.sleep(0.2)
            client.close()
        wait_for_status(velatra)
        expect_log(machine, "Waiting for Prepar3Dv5", never=("SimConnect request error", "no longer connected"))
        for once in ("Waiting for Prepar3Dv5", "no connection to the simulator: it hangs up"):
            assert machine.log().count(once) == 1, once
        assert "SimConnect closed" not in machine.log()
        client, _ = server.accept()
        client.sendall(opening)
        wait_for_line(velatra, "connected")
        client.close()
    after_a_broken_connection_it_waits_again(machine, velatra)


def after_a_simulators_goodbye_it_stays_until_the_user_closes(machine: Machine):
    world, _ = machine.start_world(*IN_THE_AIR, "--quit-at-end")
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["live"] > 0)
    end_world(machine, world)
    wait_for_status(velatra, lambda status: not status["simRunning"])
    time.sleep(4)
    assert velatra.poll() is None
    stop(velatra)
    expect_log(machine, "Flight not running", "Exiting: USER CLOSED SIM",
               never=("SimConnect request error", "no longer connected"))


def a_server_that_errs_leaves_an_error_until_the_user_closes_and_no_files(machine: Machine):
    no_server = "http://127.0.0.1:9/"
    for fault in (no_server, "404", "500", "cut", "not-a-zip", "silent"):
        machine.environment["VELATRA_SERVER"] = no_server
        if fault != no_server:
            machine.start_world(*NO_FEED, "--http-fault", fault)
        velatra = machine.start_velatra()
        if fault == "silent":  # holds Velatra, but not the user
            wait_for_status(velatra)
        else:
            wait_for_line(velatra, "Error: data base could not be read from on-line?")
            wait_for_status(velatra)
        stop(velatra)
        expect_log(machine, "Exiting: USER CLOSED SIM" if fault == "silent" else "Exiting: SYSTEM ERROR")
        nothing_is_left_of_downloads(machine)


def say(process: subprocess.Popen, line: str):
    """To Velatra a command, to the world what goes wrong now."""
    process.stdin.write(line + "\n")
    process.stdin.flush()


def strike(machine: Machine, world: subprocess.Popen, velatra: subprocess.Popen, fault: str, *log: str,
           becomes=lambda status: status["live"] > 0, within: float = 20, holds_for: int = 1):
    """A fault, what Velatra's state becomes and stays for so many seconds, and what the log tells meanwhile."""
    before = len(machine.log())
    begin = time.monotonic()
    say(world, fault)
    wait_for_status(velatra)  # one from before may still be on its way
    wait_for_status(velatra, becomes)
    took = time.monotonic() - begin
    for _ in range(holds_for - 1):
        status = wait_for_status(velatra)
        assert becomes(status), f"{fault}: {status}"
    deadline = time.monotonic() + within
    while missing := [line for line in log if line not in machine.log()[before:]]:
        assert time.monotonic() < deadline, f"{fault}: {missing} in {machine.log()[before:]}"
        wait_for_status(velatra)
    print(f"    {fault}: {took:.1f} s, told: {'; '.join(log) or 'nothing'}")
    assert took <= within * SLOWNESS, f"{fault} took {took:.1f} s"


def realtraffic_comes_and_goes(machine: Machine):
    machine.install_realtraffic()
    world, _ = machine.start_world(*IN_THE_AIR, "--realtraffic-port", 10747)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["live"] > 1)
    strike(machine, world, velatra, "realtraffic-garbage", holds_for=3)
    strike(machine, world, velatra, "realtraffic-leaves", "RealTraffic gone? Wait for RealTraffic to re-connect ...",
           becomes=lambda status: status["live"] == 0 and not status["realTraffic"], holds_for=3)
    for _ in range(10):  # objects that were on their way come first
        world.send_signal(signal.SIGUSR1)
        wait_for_status(velatra)
        left = [o for o in machine.summary()["objects"] if o["byProgram"] and o["removed"] is None]
    assert not left, left
    strike(machine, world, velatra, "realtraffic-back", "RealTraffic re-connected",
           becomes=lambda status: status["realTraffic"])
    wait_for_status(velatra, lambda status: status["live"] > 0)
    strike(machine, world, velatra, "realtraffic-half-open", holds_for=3)
    strike(machine, world, velatra, "realtraffic-leaves", "RealTraffic gone?",
           becomes=lambda status: not status["realTraffic"])
    stop(velatra)
    summary = end_world(machine, world)
    assert summary["realTrafficConnections"] == 2 and summary["timeLines"] >= 2, summary["timeLines"]
    assert summary["lastPosition"].startswith("Qs121=0;0;") and ";12000000;0;0.830777;0.200713" in summary["lastPosition"]
    expect_log(machine, "Waiting for RealTraffic to connect to Velatra ...", "RealTraffic connected")


def a_setting_begins_the_work_anew_while_realtraffic_is_waited_for(machine: Machine):
    machine.install_realtraffic()
    machine.install_addons()
    for wrong in ("nonsense@1", "sim-dies", "sim-dies@soon"):
        assert machine.start("velatra-standin", "--fault", wrong).wait(10) != 0, wrong
    machine.start_world(*NO_FEED, "--fault", "sim-pauses@0", "--fault", f"sim-resumes@{5 * SLOWNESS}")
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["simConnected"] and not status["simRunning"])
    wait_for_line(velatra, "Waiting for RealTraffic to connect to Velatra ...")
    for command in ("MAX_LIVE=17", "MAX_LIVE=a few", "SCAN_LIVERIES=off", "SCAN_LIVERIES=on"):
        say(velatra, command)
    for line in ("The new MAX_LIVE is 17", "MAX_LIVE is a number, and stays 17", "Your liveries will be scanned",
                 "Restarting after 2 seconds", "Restarting after 1 second",
                 "Waiting for RealTraffic to connect to Velatra ..."):
        wait_for_line(velatra, line)
    with socket.create_connection(("127.0.0.1", 10747)):  # a client that never answers
        wait_for_status(velatra)
        stop(velatra)
    expect_log(machine, "Exiting: NEW SETTINGS", "MAX_LIVE=17", "Exiting: USER CLOSED SIM")
    velatra = machine.start_velatra()
    wait_for_line(velatra, "Waiting for RealTraffic to connect to Velatra ...")
    say(velatra, "SCAN_AIRPORTS=off\nSCAN_AIRPORTS=on")
    wait_for_line(velatra, "Restarting after 2 seconds")
    stop(velatra)


def the_flight_survives_what_the_simulator_and_the_feed_do(machine: Machine):
    world, _ = machine.start_world(*IN_THE_AIR)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["live"] > 1)
    log_file = machine.program / "Log.txt"
    before = resource.prlimit(velatra.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(velatra.pid, resource.RLIMIT_FSIZE, (log_file.stat().st_size, before[1]))  # a full disk
    full = log_file.stat().st_size
    say(velatra, "MAX_LIVE=50")
    say(world, "sim-pauses")
    wait_for_status(velatra, lambda status: not status["simRunning"])
    say(world, "sim-resumes")
    wait_for_status(velatra, lambda status: status["simRunning"])
    assert log_file.stat().st_size == full
    resource.prlimit(velatra.pid, resource.RLIMIT_FSIZE, before)
    running = {"becomes": lambda status: status["simRunning"] and status["live"] > 0}
    for fault, *log in (("sim-pauses", "could not be written)", "Flight not running"), ("sim-resumes", "Flight resumed"),
                        ("sim-stalls",), ("frames-stop",), ("frames-go-on",), ("objects-never-come",), ("feed-burst",),
                        ("objects-come",), ("feed-clock-off",), ("feed-clock-right",),
                        ("objects-fill", "SimConnect: too many objects (max 1000)")):
        becomes = {"becomes": lambda status: not status["simRunning"]} if fault == "sim-pauses" else running
        strike(machine, world, velatra, fault, *log, **becomes, within=60, holds_for=3)
    say(world, "user-teleports")
    wait_for_line(velatra, "New flight detected, Velatra will close, please restart manually ...")
    begin = time.monotonic()
    assert velatra.wait(20) == 0
    assert 9 < time.monotonic() - begin < 10 + STOP_LIMIT
    # A frame sends positions first: after a time without frames they overtake the freezes of a new object.
    end_world(machine, world, excused="moved without its three freezes")
    expect_log(machine, "Teleport", "Exiting: NEW FLIGHT")


def a_stop_ends_every_state_of_a_run_in_time_and_a_full_disk_spoils_nothing(machine: Machine):
    """A run for each state that no other scenario stops in."""
    machine.install_realtraffic()
    world, _ = machine.start_world("--user-lat", 47.602509, "--user-lon", 11.509576, "--user-on-ground",
                                   "--ground-elevation", 1600, "--realtraffic-port", 10747)
    learned = machine.program / "airports" / "learned" / "stock" / "XVEL.xml"
    learned.parent.mkdir(parents=True)
    before = '<parameters><parameter name="AUTO_RANGE" value="false"/></parameters><parkpositions/>'
    learned.write_text(before)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["stands"] == 68)
    say(velatra, "AUTO_RANGE=on")
    with socket.create_connection(("127.0.0.1", 10747)) as second:
        assert second.recv(100) == b""
    expect_log(machine, "a second client of the position server is turned away")
    room = resource.prlimit(velatra.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(velatra.pid, resource.RLIMIT_FSIZE, (len(before), room[1]))  # a full disk
    stop(velatra)
    assert 'XVEL.xml" did not succeed' in velatra.stdout.read()
    assert learned.read_text() == before and len(list(learned.parent.iterdir())) == 1
    all_goes_on = lambda status: True
    for faults, becomes, ends in (
            (["sim-pauses"], lambda status: not status["simRunning"], ["sim-resumes"]),
            (["realtraffic-leaves"], lambda status: not status["realTraffic"], ["realtraffic-back"]),
            (["server-silent", "objects-never-come", "realtraffic-half-open", "frames-stop", "sim-stalls"], all_goes_on,
             ["server-well", "objects-come", "frames-go-on", "realtraffic-leaves", "realtraffic-back"]),
            (["titles-refused"], all_goes_on, ["titles-accepted"]),
            (["flight-loaded"], lambda status: status["message"].startswith("New flight detected"), [])):
        velatra = machine.start_velatra()
        wait_for_status(velatra, lambda status: status["trafficFeed"] == "receiving")
        say(velatra, "DESTINATION=EDDM")
        for fault in faults:
            say(world, fault)
        wait_for_status(velatra)  # one from before may still be on its way
        wait_for_status(velatra, becomes)
        print(f"    {', '.join(faults)}: the end took {stop(velatra):.1f} s")
        for word in ends:
            say(world, word)
    end_world(machine, world)
    expect_log(machine, "Simconnect: flight loaded event", "Exiting: NEW FLIGHT")


def scan_results(machine: Machine) -> dict:
    """The bytes of all results and reports of both scans, without the date of a file's making."""
    files = [p for folder in ("output", "airports/my_thirdparty", "airports/my_ORBX")
             for p in (machine.program / folder).rglob("*") if p.is_file()]
    return {str(p.relative_to(machine.program)): re.sub(rb'<info name="date".*', b"", p.read_bytes()) for p in files}


def what_the_user_has_installed_is_found_and_a_stop_leaves_it_as_it_was(machine: Machine):
    published = (machine.program / "output" / "LiveriesScanned.xml").read_bytes()
    machine.install_addons()
    faulty = machine.folder / "drive_c" / "Addons" / "Velatra World" / "SimObjects" / "Airplanes" / "Faulty"
    faulty.mkdir()
    (faulty / "aircraft.cfg").write_text("[fltsim.0]\ntitle=Nobody's\nmodel=x\n[General]\natc_model=A320\n")
    machine.start_world(*NO_FEED)
    velatra = machine.start_velatra()
    wait_for_status(velatra, lambda status: status["simRunning"])
    stop(velatra)
    results = scan_results(machine)
    assert results["output/LiveriesScanned.xml"] == published
    assert results["output/errors/IncompleFltsimSections.txt"].decode() == (
        "C:\\Addons\\Velatra World\\SimObjects\\Airplanes\\Faulty\\model.x "
        "C:\\Addons\\Velatra World\\SimObjects\\Airplanes\\Faulty\\aircraft.cfg does not exist\n")
    assert results["airports/my_thirdparty/XVEL.txt"] == b"archive/thirdparty/Velatra%20Sceneries/XVEL.xml\n"
    with (WORLD / "stands.csv").open() as file:
        rows = [row for row in csv.DictReader(file) if row["airport"] == "XSEE"]
    stands = re.findall(r'<parkpos id="(.+?)" latitude="(.+?)" longitude="(.+?)" heading="(.+?)" radius="(.+?)"',
                        results["airports/my_thirdparty/XSEE.xml"].decode())
    assert stands == sorted((r["id"], f'{float(r["lat"]):.6f}', f'{float(r["lon"]):.6f}', f'{float(r["heading"]):.1f}',
                             f'{float(r["radius_m"]):.1f}') for r in rows), stands
    # A list of very many folders holds the next scan in its middle, whoever ends it.
    lists = machine.folder / "drive_c" / "ProgramData" / "Lockheed Martin" / "Prepar3D v5"
    many = "".join(f"<Path>C:\\Addons\\{n}</Path>\n" for n in range(200000))
    (lists / "scenery_add-ons.xml").write_text(f"<List>{many}<Path>C:\\Addons</Path></List>")
    for end in (stop, lambda process: (process.kill(), process.wait())):
        machine.set_parameters(SCAN_LIVERIES="false")
        velatra = machine.start_velatra()
        wait_for_line(velatra, "Scanning for addon airports")
        end(velatra)
        assert scan_results(machine) == results, scan_results(machine).keys()
        assert 'SCAN_AIRPORTS" value="true' in (machine.folder / "appdata/Velatra/parameters.xml").read_text()


# The longest first.
SCENARIOS = (
    the_flight_survives_what_the_simulator_and_the_feed_do,
    realtraffic_comes_and_goes,
    a_stop_ends_every_state_of_a_run_in_time_and_a_full_disk_spoils_nothing,
    static_parking_answers_its_user_and_a_stop_saves_what_was_learned,
    traffic_appears_at_the_airport_around_the_user,
    a_simulator_killed_in_traffic_is_waited_for_again,
    a_simulator_killed_before_its_flight_runs_is_waited_for_again,
    a_server_that_errs_leaves_an_error_until_the_user_closes_and_no_files,
    without_its_file_the_park_airport_has_no_stands,
    what_the_user_has_installed_is_found_and_a_stop_leaves_it_as_it_was,
    after_a_simulators_goodbye_it_stays_until_the_user_closes,
    over_the_network_the_configuration_leads_to_the_simulator,
    a_setting_begins_the_work_anew_while_realtraffic_is_waited_for,
    it_waits_for_the_simulator_and_leaves_a_second_instance_alone,
    what_is_wrong_at_the_start_is_told,
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

        with ThreadPoolExecutor(5 if alone else 1) as pool:
            return 0 if all(list(pool.map(run, SCENARIOS))) else 1


if __name__ == "__main__":
    if len(sys.argv) > 3:
        run_scenario(sys.argv[3], Path(sys.argv[4]))
    else:
        sys.exit(run_all())
