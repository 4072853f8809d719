#!/usr/bin/env python3
"""Prints the budgets beside what a benchmark run measured; ends with 1 if one is exceeded."""
import json
import sys

NS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def main() -> int:
    with open(sys.argv[1], encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    times = {}
    counters = {}
    for run in runs:
        name = run["name"].split("/iterations:")[0].removesuffix("/manual_time").removesuffix("/real_time")
        times[name] = run["real_time"] * NS[run["time_unit"]]
        counters[name] = run
    worst_match = max((t for n, t in times.items() if n.startswith("match/")), default=None)
    growth = times["tick/live/1000"] / times["tick/live/100"]
    rows = [
        ("a tick, 300 live + 300 static, 200 records/s: mean", "100 us", times["tick/live/300"] / 1e3, 100, "us"),
        ("the same: 99.9 %", "1 ms", counters["tick/live/300"]["p999_us"], 1000, "us"),
        ("growth of a tick from 100 to 1,000 live", "x12", growth, 12, "x"),
        ("a feed line out of range", "150 ns", times["feed/out_of_range"], 150, "ns"),
        ("a feed line in range", "1 us", times["feed/in_range"], 1000, "ns"),
        ("replay with 100 aircraft: a second takes", "5 ms", 1000 / counters["replay/100_aircraft"]["times_real_time"],
         5, "ms"),
        ("a livery match, slowest step", "2 us", worst_match, 2000, "ns"),
        ("frame handler, 300 positions", "0.5 ms", times["frame/300_positions"] / 1e3, 500, "us"),
        ("an airport file, 400 stands, 40,000 options", "60 ms", times["airport/load"] / 1e6, 60, "ms"),
        ("neighbours of 400 stands", "5 ms", times["airport/neighbours"] / 1e6, 5, "ms"),
        ("the catalogue, 28,000 airports", "100 ms", times["airport/catalogue"] / 1e6, 100, "ms"),
        ("standAtPosition among 400 stands", "50 us", times["airport/stand_at_position"] / 1e3, 50, "us"),
        ("closestAirport among 28,000", "1 ms", times["airport/closest"] / 1e6, 1, "ms"),
        ("static parking: 300 stands of 100 options, 48 offsets", "5 ms", times["parking/plan"] / 1e6, 5, "ms"),
        ("one static aircraft placed", "200 us", times["parking/plan_step"] / 1e3, 200, "us"),
        ("renewal with 200 static aircraft", "5 ms", times["parking/adjustments"] / 1e6, 5, "ms"),
        ("start: 20,000 liveries, 400,000 registrations", "1.5 s", times["start/stored"] / 1e9, 1.5, "s"),
        ("20,000 liveries in 22,000 folders, beside find and cat", "x3",
         times["scan/liveries"] / times["scan/find_liveries"], 3, "x"),
        ("holdsAirports, beside opening and reading 4 KiB", "x2",
         times["scan/holds_airports"] / times["scan/open_and_read"], 2, "x"),
        ("decoding scenery files, beside cat", "x2", times["scan/decode"] / times["scan/cat_sceneries"], 2, "x"),
    ]
    exceeded = 0
    print(f"{'what':55} {'budget':>8} {'measured':>12}")
    for what, budget, measured, limit, unit in rows:
        over = measured > limit
        exceeded += over
        print(f"{what:55} {budget:>8} {measured:>9.2f} {unit}{'  EXCEEDED' if over else ''}")
    return 1 if exceeded else 0


if __name__ == "__main__":
    sys.exit(main())
