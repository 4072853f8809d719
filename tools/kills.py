#!/usr/bin/env python3
"""Kills Velatra again and again while it learns, and looks at what is left of its learned airport files.

usage: tools/kills.py BINARY_DIR [--kills N] [--seed N] [--lanes N]

Every second kill comes at a random moment of the run; the others are aimed at a save: the user flushes the airport, and
the kill follows as soon as the save is seen in the folder, or a moment later. After each, every file in airports/learned
must be whole, and none may be lost. Each lane is a machine in a network of its own. The exit code tells whether all was
well; what was seen stands on standard output.
"""
import argparse
import ctypes
import fcntl
import json
import os
import random
import re
import select
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from xml.etree import ElementTree

from machine import Machine
from soak import IN_THE_AIR, Watch, say

SOURCE = Path(__file__).resolve().parent.parent
LOADED = 60  # seconds until an airport is loaded and planned, at most


def bring_up_loopback():
    get_flags, set_flags, up, form = 0x8913, 0x8914, 1, "16sh14x"
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        _, flags = struct.unpack(form, fcntl.ioctl(any_socket, get_flags, struct.pack(form, b"lo", 0)))
        if not flags & up:
            fcntl.ioctl(any_socket, set_flags, struct.pack(form, b"lo", flags | up))


def kill_when_a_file_is_made(pid: int, folders, wait: float, seconds: float) -> bool:
    """Kills the process so many seconds after a file is made in one of the folders, if one is in time. The system tells
    it: to look again and again is too slow."""
    made = 0x100
    libc = ctypes.CDLL(None, use_errno=True)
    watch = libc.inotify_init()
    for folder in folders:
        libc.inotify_add_watch(watch, os.fsencode(folder), made)
    try:
        seen = select.select([watch], [], [], seconds)[0]
        end = time.perf_counter() + wait
        while time.perf_counter() < end:
            pass
        os.kill(pid, signal.SIGKILL)
        return bool(seen)
    finally:
        os.close(watch)


def much_learned(archived: Path) -> str:
    """As after very many visits: a save takes long enough to be struck."""
    text = re.sub(r' *<opt .*?/>\n', lambda opt: "".join(opt[0].replace('reg="', f'reg="{n}-') for n in range(40)),
                  archived.read_text())
    return '<?xml version="1.0"?>\n' + text


class Lane:
    def __init__(self, machine: Machine, chance: random.Random):
        self.machine = machine
        self.chance = chance
        self.learned = machine.program / "airports" / "learned"
        self.known = {}  # path: options in it, and when it was written
        self.seen = 0  # saves that were seen to begin
        self.struck = 0  # kills that left an unfinished file
        self.changed = 0  # kills after which a learned file was written anew
        self.wrong = []

    def start(self):
        velatra = self.machine.start_velatra()
        return velatra, Watch(velatra)

    def at_a_random_moment(self):
        """Flushing as often as there is something to flush."""
        velatra, watch = self.start()
        end = time.monotonic() + self.chance.uniform(1, LOADED)
        while time.monotonic() < end:
            if watch.status.get("flushStaticEnabled") and watch.status.get("parkingEnabled"):
                say(velatra, f"WEEK={self.chance.choice(('on', 'off'))}\npress Flush static")
            time.sleep(min(1.0, max(0.0, end - time.monotonic())))
        return velatra

    def in_a_save(self):
        velatra, watch = self.start()
        end = time.monotonic() + LOADED
        while time.monotonic() < end and not (watch.status.get("static", 0) > 0 and watch.status["parkingEnabled"]
                                              and watch.status["flushStaticEnabled"]):
            time.sleep(0.1)
        say(velatra, "WEEK=on\nWEEK=off\npress Flush static")
        folders = [path for path in self.learned.rglob("*") if path.is_dir()]
        wait = self.chance.choice((0, self.chance.uniform(0, 0.005)))
        self.seen += kill_when_a_file_is_made(velatra.pid, folders, wait, 3)
        return velatra

    def look(self, kill: str):
        now = {}
        for file in self.learned.rglob("*"):
            if file.is_dir():
                continue
            if file.suffix != ".xml":
                self.struck += 1
                print(f"  {kill}: left {file.name} of {file.stat().st_size} bytes", flush=True)
                file.unlink()  # so that the next one counts; Velatra would overwrite it
                continue
            try:
                text = file.read_text()
                root = ElementTree.fromstring(f"<all>{text.split('?>', 1)[1]}</all>")
                assert root.find("parkpositions") is not None and root.find("parameters") is not None
                options = len(root.findall(".//opt"))
                now[file] = (options, file.stat().st_mtime_ns)
                if options < self.known.get(file, (0,))[0]:
                    self.wrong.append(f"{kill}: {file.name} has {options} options, it had {self.known[file][0]}")
            except (ElementTree.ParseError, IndexError, AssertionError, UnicodeDecodeError) as error:
                self.wrong.append(f"{kill}: {file.name} is broken: {error}")
        self.wrong += [f"{kill}: {file.name} is lost" for file in self.known if file not in now]
        self.changed += now != self.known
        self.known = now

    def run(self, kills: int):
        for n in range(kills):
            aimed = n % 2 == 1
            velatra = self.in_a_save() if aimed else self.at_a_random_moment()
            velatra.kill()
            if velatra.wait(20) != -signal.SIGKILL:
                self.wrong.append(f"kill {n}: it had ended with {velatra.returncode}")
            self.look(f"kill {n}{' in a save' if aimed else ''}")
        velatra, watch = self.start()  # and a run that isn't killed reads what is there
        end = time.monotonic() + LOADED
        while time.monotonic() < end and not watch.status.get("percentageEnabled"):
            time.sleep(0.2)
        if self.known and not watch.status.get("percentageEnabled"):
            self.wrong.append("the last run hasn't read the learned file")
        velatra.send_signal(signal.SIGTERM)
        if velatra.wait(30) != 0:
            self.wrong.append(f"the last run ended with {velatra.returncode}")
        self.look("the end")


def run_lane(options) -> int:
    bring_up_loopback()
    with tempfile.TemporaryDirectory(prefix="velatra-kills-", ignore_cleanup_errors=True) as folder:
        machine = Machine(Path(folder) / "machine", options.binaries.resolve(), SOURCE / "data" / "world")
        machine.publish(SOURCE / "data" / "airports_p3d.xml")
        (machine.program / "airports").mkdir()
        (machine.program / "airports" / "my_park_airports.txt").write_text("XVEL\n")
        learned = machine.program / "airports" / "learned" / "stock" / "XVEL.xml"
        learned.parent.mkdir(parents=True)
        learned.write_text(much_learned(machine.folder / "server" / "archive" / "stock" / "XVEL.xml"))
        machine.set_parameters(SCAN_LIVERIES="false", SCAN_AIRPORTS="false", CUSTOM_MAX_PARK="12")
        machine.start_world(*IN_THE_AIR)
        lane = Lane(machine, random.Random(options.seed))
        try:
            lane.run(options.kills)
        finally:
            machine.close()
    print(json.dumps({"kills": options.kills, "savesSeen": lane.seen, "leftUnfinished": lane.struck, "changedTheFile": lane.changed,
                      "options": [n for n, _ in lane.known.values()], "wrong": lane.wrong}), flush=True)
    return 1 if lane.wrong else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("binaries", type=Path)
    parser.add_argument("--kills", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--lanes", type=int, default=5, help="machines at a time; 0: this very network")
    options = parser.parse_args()
    if options.lanes == 0:
        return run_lane(options)
    each = -(-options.kills // options.lanes)
    lanes = [subprocess.Popen(["unshare", "--map-root-user", "--net", sys.executable, __file__, options.binaries,
                               "--lanes", "0", "--kills", str(each), "--seed", str(options.seed + n)])
             for n in range(options.lanes)]
    return max([lane.wait() for lane in lanes])


if __name__ == "__main__":
    sys.exit(main())
