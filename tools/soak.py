#!/usr/bin/env python3
"""A whole evening: Velatra and the world outside in real time, with faults in a random order.

usage: tools/soak.py BINARY_DIR [--minutes M] [--seed N]

The faults are those that a flight is to survive, each followed by what ends it. Every minute the processes are looked
at: threads, descriptors, memory, and objects (created - removed = alive). The exit code tells whether all was well; what
was seen stands on standard output, a line of JSON a minute.
"""
import argparse
import json
import os
import random
import signal
import sys
import tempfile
import time
from pathlib import Path
from threading import Thread

from machine import Machine

SOURCE = Path(__file__).resolve().parent.parent
IN_THE_AIR = ("--user-lat", 47.6, "--user-lon", 11.5, "--user-alt", 12000)
# What goes wrong, and what follows after so many seconds each.
FAULTS = (("sim-pauses", 8, "sim-resumes"), ("sim-stalls",), ("frames-stop", 8, "frames-go-on"),
          ("objects-never-come", 20, "objects-come"), ("objects-come-late", 25, "objects-come"),
          ("feed-silent", 40, "feed-back"), ("feed-burst",), ("feed-clock-off", 20, "feed-clock-right"),
          ("realtraffic-leaves", 15, "realtraffic-back"), ("realtraffic-garbage",),
          ("realtraffic-half-open", 20, "realtraffic-leaves", 5, "realtraffic-back"),
          ("server-slow", 20, "server-well"), ("sim-dies", 10, "sim-back"))
CALM = 5  # seconds before the next
COMMANDS = ("NAV_LIGHTS_WHILE_PARKED=off", "NAV_LIGHTS_WHILE_PARKED=on", "AUTO_RANGE=off", "LATERAL_RANGE=60",
            "LATERAL_RANGE=25", "AUTO_RANGE=on", "MAX_LIVE=5", "MAX_LIVE=", "DESTINATION=XVEL", "DESTINATION=",
            "BLOCK_CALLSIGN=KLM123", "press Unblock", "press Re-read", "MATCHING_DEPTH=2", "MATCHING_DEPTH=4", "nonsense")


def say(process, line):
    process.stdin.write(line + "\n")
    process.stdin.flush()


class Watch:
    """Reads the status lines, so that Velatra is never held by us."""

    def __init__(self, process):
        self.status = {}
        self.errors = []
        self.thread = Thread(target=self.read, args=(process,), daemon=True)
        self.thread.start()

    def read(self, process):
        for line in process.stdout:
            if line.startswith("{"):
                self.status = json.loads(line)
            elif any(word in line for word in ("Error:", "Sanitizer", "runtime error")):
                self.errors.append(line.strip())


def look(pid):
    status = dict(line.split(":", 1) for line in Path(f"/proc/{pid}/status").read_text().splitlines())
    return {"mb": int(status["VmRSS"].split()[0]) / 1024, "threads": int(status["Threads"]),
            "descriptors": len(os.listdir(f"/proc/{pid}/fd"))}


def soak(machine, minutes, seed):
    chance = random.Random(seed)
    machine.install_realtraffic()
    world, _ = machine.start_world(*IN_THE_AIR, "--realtraffic-port", 10747)
    velatra = machine.start_velatra()
    watch = Watch(velatra)
    end = time.monotonic() + 60 * minutes
    next_look = time.monotonic() + 60
    waiting = []  # (when, word), in their order
    looks, wrong = [], []
    while time.monotonic() < end and velatra.poll() is None:
        time.sleep(0.2)
        now = time.monotonic()
        while waiting and waiting[0][0] <= now:
            _, word = waiting.pop(0)
            if word:
                print(f"  {word}", flush=True)
                say(world, word)
        if not waiting and watch.status.get("live", 0) > 0:
            word, *rest = chance.choice(FAULTS)
            waiting = [(now, word)]
            for seconds, follows in zip(rest[::2], rest[1::2]):
                waiting.append((waiting[-1][0] + seconds, follows))
            waiting.append((waiting[-1][0] + CALM, None))
            say(velatra, chance.choice(COMMANDS))
        if now >= next_look:
            next_look += 60
            world.send_signal(signal.SIGUSR1)
            time.sleep(2)
            counts = machine.summary()
            alive = sum(o["removed"] is None for o in counts["objects"])
            seen = {**look(velatra.pid), **watch.status, "created": counts["created"], "removed": counts["removed"],
                    "alive": alive}
            if counts["created"] - counts["removed"] != alive:
                wrong.append(f"{counts['created']} - {counts['removed']} isn't {alive}")
            looks.append(seen)
            print(json.dumps({k: seen.get(k) for k in ("mb", "threads", "descriptors", "live", "created", "removed",
                                                        "alive", "simRunning", "realTraffic", "message")}), flush=True)
    if velatra.poll() is not None:
        wrong.append(f"Velatra has ended with {velatra.returncode}")
    else:
        begin = time.monotonic()
        velatra.send_signal(signal.SIGTERM)
        if velatra.wait(60) != 0:
            wrong.append(f"it ended with {velatra.returncode}")
        print(f"the end took {time.monotonic() - begin:.1f} s")
    wrong += watch.errors
    calm = [seen for seen in looks if seen.get("live", 0) > 0 and seen["realTraffic"]]
    for what in ("threads", "descriptors"):
        if calm and max(seen[what] for seen in calm) > calm[0][what] + 3:  # fewer are there while it waits
            wrong.append(f"{what}: {[seen[what] for seen in calm]}")
    return wrong, machine


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binaries", type=Path)
    parser.add_argument("--minutes", type=float, default=20)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="velatra-soak-", ignore_cleanup_errors=True) as folder:
        machine = Machine(Path(folder) / "machine", options.binaries.resolve(), SOURCE / "data" / "world")
        machine.publish(SOURCE / "data" / "airports_p3d.xml")
        try:
            wrong, _ = soak(machine, options.minutes, options.seed)
            for line in machine.log().splitlines():
                if line.startswith("Exiting") or "exception" in line or "fails" in line:
                    print("log:", line)
        finally:
            machine.close()
    print("\n".join(wrong) or "all was well")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
