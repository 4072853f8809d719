#!/usr/bin/env python3
"""How landings come out at different pressures: one replay per sea level pressure and kind of altitude.

    python3 tools/landing_table.py --tool build/install/velatra-tool [--seconds 3600] [replay options]

Prints for each: landings, distance from touchdown to the first report on the ground, sink rate at touchdown, and
the deepest that wheels were below the ground.
"""
import argparse
import csv
import json
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path


def replay(tool: str, qnh: int, pressure: bool, more: list[str], folder: Path) -> tuple[list[dict], dict]:
    command = [tool, "replay", "--qnh", str(qnh), "--out", str(folder), "--no-events", "--every", "1000", *more]
    if pressure:
        command.append("--pressure-altitudes")
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    with (folder / "aircraft.csv").open(encoding="utf-8") as file:
        lives = list(csv.DictReader(file))
    return lives, json.loads((folder / "report.json").read_text())


def row(qnh: int, lives: list[dict], report: dict) -> str:
    landings = [life for life in lives if life["touchdown"]]
    distances = sorted(float(life["first_ground_report_m"]) for life in landings
                       if float(life["first_ground_report_m"]) >= 0)
    sinks = sorted(float(life["sink_fpm"]) for life in landings)
    if not distances:
        return f"{qnh:>5} {len(landings):>8}"
    return (f"{qnh:>5} {len(landings):>8} {statistics.median(distances):>10.0f} {distances[-1]:>9.0f}"
            f" {statistics.median(sinks):>10.0f} {sinks[-1]:>9.0f} {-report['lowestWheelsFt']:>9.1f}")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    options, more = parser.parse_known_args()
    for pressure in (False, True):
        print("pressure altitudes" if pressure else "corrected altitudes")
        print("  QNH landings   median m   worst m median fpm worst fpm    low ft")
        for qnh in range(980, 1041, 10):
            with tempfile.TemporaryDirectory() as folder:
                print(row(qnh, *replay(options.tool, qnh, pressure, more, Path(folder))), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
