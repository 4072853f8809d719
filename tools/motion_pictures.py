#!/usr/bin/env python3
"""Draws the pictures of docs/motion.md from a replay of the built-in day.

Runs `velatra-tool replay` with a fixed seed in a temporary folder, picks the aircraft by what they did, and writes
one SVG for each picture. The reports beside the flown lines come from `velatra-standin`, which lies beside the tool.
The same program and world give the same bytes.
"""
import argparse
import csv
import math
import re
import subprocess
import tempfile
from collections import defaultdict
from pathlib import Path
from typing import NamedTuple

SEED = "1"
DAY_BEGINS = 1717665600.0  # time stamp of the built-in day's second 0
DELAY = 30.0  # seconds from a report to its due time
TICKS_PER_SECOND = 100
EVERY = 25  # ticks between the rows of tracks.csv
METRES_PER_DEGREE = 111132.95
KNOTS = 3600 / 1852  # of a metre per second

INK, PALE, GRID = "#1d2733", "#5b6875", "#dfe4e9"
BLUE, ORANGE, GREEN, RED, PURPLE = "#1f6fb4", "#d9730d", "#2b8a3e", "#c92a2a", "#7048a8"
GROUND = "#fbeee2"
PHASES = {"parked": PALE, "pushing_back": RED, "pushed_back": PURPLE, "taxi": BLUE, "parking": GREEN}


class Row(NamedTuple):
    """One row of tracks.csv; times in seconds, heights in feet, angles in degrees, nose up positive."""
    time: float
    hexid: int
    callsign: str
    phase: str
    lat: float
    lon: float
    alt: float
    heading: float
    pitch: float
    speed: float
    ground: bool


class Stand(NamedTuple):
    name: str
    lat: float
    lon: float
    radius: float  # metres


# --- the replay and its files

def replay(tool, world, seconds, folder):
    subprocess.run([str(tool), "replay", "--world", str(world), "--seed", SEED, "--seconds", str(seconds), "--every",
                    str(EVERY), "--no-events", "--out", str(folder)], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([str(tool.with_name("velatra-standin")), "--world", str(world), "--seed", SEED, "--seconds",
                    str(seconds), "--write-recording", str(folder / "reports.txt")], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def read_tracks(path):
    """The rows of each object, in the order of the objects' first rows."""
    tracks = defaultdict(list)
    with open(path, encoding="utf-8", newline="") as file:
        for r in csv.DictReader(file):
            tracks[r["object"]].append(Row(
                int(r["tick"]) / TICKS_PER_SECOND, int(r["hexid"]), r["callsign"], r["st"], float(r["lat"]),
                float(r["lon"]), float(r["alt"]), float(r["hdg"]), -float(r["pitch"]), float(r["speed"]),
                r["on_ground"] == "1"))
    return list(tracks.values())


def read_aircraft(path):
    with open(path, encoding="utf-8", newline="") as file:
        return {int(r["hexid"]): r for r in csv.DictReader(file)}


def read_spans(path):
    with open(path, encoding="utf-8", newline="") as file:
        return {r["type"]: float(r["span_m"]) for r in csv.DictReader(file) if r["span_m"]}


def read_stands(path):
    """The stands of the airport file that the replay leaves; it isn't one XML document but several."""
    stands = []
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.lstrip().startswith("<parkpos "):
            given = dict(re.findall(r'(\w+)="([^"]*)"', line))
            stands.append(Stand(given["id"], *(float(given[key]) for key in ("latitude", "longitude", "radius"))))
    return stands


def read_reports(path):
    """(due time, latitude, longitude) of every report of each address."""
    reports = defaultdict(list)
    for line in path.read_text(encoding="utf-8").splitlines():
        fields = line.split(",")
        if len(fields) > 14 and fields[1].isdigit() and fields[14]:
            due = float(fields[14]) - DAY_BEGINS + DELAY
            reports[int(fields[1])].append((due, float(fields[2]), float(fields[3])))
    return reports


# --- what is looked for

def phase_starts(track):
    """(index, phase) wherever the phase changes."""
    return [(i, row.phase) for i, row in enumerate(track) if i == 0 or row.phase != track[i - 1].phase]


def find_phases(tracks, *wanted):
    """The first track in time that goes through these phases in a row, and the indices at which they begin."""
    found = []
    for track in tracks:
        starts = phase_starts(track)
        for n in range(len(starts) - len(wanted) + 1):
            part = starts[n:n + len(wanted)]
            if tuple(phase for _, phase in part) == wanted:
                found.append((track[part[0][0]].time, track, [i for i, _ in part]))
    if not found:
        raise SystemExit(f"no aircraft goes through {', '.join(wanted)}; try more --seconds")
    return min(found, key=lambda entry: entry[0])[1:]


def between(track, begin, end):
    return [row for row in track if begin <= row.time <= end]


def find_touchdown(tracks, aircraft):
    """The first track with a touchdown, and the time of it."""
    downs = {hexid: int(a["touchdown"]) / TICKS_PER_SECOND for hexid, a in aircraft.items() if a["touchdown"]}
    landed = [(downs[t[0].hexid], t) for t in tracks if t[0].hexid in downs and t[0].time < downs[t[0].hexid]]
    if not landed:
        raise SystemExit("nobody touches down; try more --seconds")
    time, track = min(landed, key=lambda entry: entry[0])
    return track, time


def find_bends(tracks):
    """The stretch of taxiing with the most turning over its length, of the first aircraft that taxies far."""
    seconds, far = 90, 300
    for track in sorted(tracks, key=lambda t: t[0].time):
        taxi = [row for row in track if row.phase == "taxi" and row.ground and row.speed < 40]
        windows = [between(taxi, row.time, row.time + seconds) for row in taxi[::40]]
        windows = [w for w in windows if w and path_length(w) >= far]
        if windows:
            return max(windows, key=turning)
    raise SystemExit(f"nobody taxies {far} m; try more --seconds")


def path_length(rows):
    return sum(math.hypot(*metres(a, b)) for a, b in zip(rows, rows[1:]))


def turning(rows):
    return sum(abs(math.remainder(b.heading - a.heading, 360)) for a, b in zip(rows, rows[1:]))


def metres(origin, place):
    """East and north of an origin."""
    east = (place.lon - origin.lon) * METRES_PER_DEGREE * math.cos(math.radians(origin.lat))
    return east, (place.lat - origin.lat) * METRES_PER_DEGREE


# --- drawing

class Svg:
    def __init__(self, width, height, title, caption):
        self.width, self.height = width, height
        self.parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
                      f'height="{height}" font-family="Helvetica, Arial, sans-serif" font-size="13">',
                      f'<rect width="{width}" height="{height}" fill="white"/>']
        self.text(20, 28, title, size=17, weight="bold")
        self.text(20, height - 16, caption, colour=PALE)

    def text(self, x, y, text, colour=INK, size=13, anchor="start", weight="normal", turn=0):
        where = f'x="{x:.1f}" y="{y:.1f}"' + (f' transform="rotate({turn} {x:.1f} {y:.1f})"' if turn else "")
        text = text.replace("&", "&amp;").replace("<", "&lt;")
        self.parts.append(f'<text {where} fill="{colour}" font-size="{size}" text-anchor="{anchor}" '
                          f'font-weight="{weight}">{text}</text>')

    def line(self, points, colour, width=1.5, dash=""):
        if len(points) > 1:
            places = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
            dashes = f' stroke-dasharray="{dash}"' if dash else ""
            self.parts.append(f'<polyline points="{places}" fill="none" stroke="{colour}" '
                              f'stroke-width="{width}"{dashes}/>')

    def shape(self, points, colour, opacity):
        places = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polygon points="{places}" fill="{colour}" fill-opacity="{opacity}" stroke="{colour}" '
                          f'stroke-width="1"/>')

    def circle(self, x, y, radius, colour, fill="none", dash=""):
        dashes = f' stroke-dasharray="{dash}"' if dash else ""
        self.parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius:.1f}" fill="{fill}" stroke="{colour}" '
                          f'stroke-width="1.5"{dashes}/>')

    def box(self, x, y, width, height, fill, stroke="none"):
        self.parts.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" '
                          f'fill="{fill}" stroke="{stroke}"/>')

    def legend(self, x, y, entries):
        """(colour, words) one below the other."""
        self.box(x - 10, y - 18, 194, 20 * len(entries) + 12, "white", GRID)
        for n, (colour, words) in enumerate(entries):
            self.box(x, y - 10 + 20 * n, 12, 12, colour, GRID)
            self.text(x + 20, y + 20 * n, words)

    def write(self, path):
        path.write_text("\n".join(self.parts) + "\n</svg>\n", encoding="utf-8")


def nice_step(span, most):
    """The least step of 1, 2, 5, 10 ... that cuts a span into at most so many pieces."""
    step = 10.0 ** math.floor(math.log10(span / most))
    return next(step * f for f in (1, 2, 5, 10) if span / (step * f) <= most)


def steps(low, high, step):
    return [n * step for n in range(math.ceil(low / step - 1e-9), math.floor(high / step + 1e-9) + 1)]


class Plan:
    """A plan view in metres around an origin, north up, with the same scale both ways."""
    LEFT, TOP, RIGHT, BOTTOM = 66, 46, 226, 84

    def __init__(self, svg, origin, points, margin):
        self.svg, self.origin = svg, origin
        width, height = svg.width - self.LEFT - self.RIGHT, svg.height - self.TOP - self.BOTTOM
        xs, ys = zip(*points)
        self.scale = min(width / (max(xs) - min(xs) + 2 * margin), height / (max(ys) - min(ys) + 2 * margin))
        self.half = (width / self.scale / 2, height / self.scale / 2)
        self.middle = ((max(xs) + min(xs)) / 2, (max(ys) + min(ys)) / 2)
        self.frame()

    def at(self, east, north):
        x = self.LEFT + (east - self.middle[0] + self.half[0]) * self.scale
        y = self.TOP + (self.middle[1] + self.half[1] - north) * self.scale
        return x, y

    def place(self, place):
        return self.at(*metres(self.origin, place))

    def frame(self):
        (west, east), (south, north) = [(m - h, m + h) for m, h in zip(self.middle, self.half)]
        step = nice_step(max(east - west, north - south), 8)
        for x in steps(west, east, step):
            self.svg.line([self.at(x, south), self.at(x, north)], GRID, 1)
            self.svg.text(self.at(x, south)[0], self.at(x, south)[1] + 18, f"{x:.0f}", PALE, 12, "middle")
        for y in steps(south, north, step):
            self.svg.line([self.at(west, y), self.at(east, y)], GRID, 1)
            self.svg.text(self.at(west, y)[0] - 8, self.at(west, y)[1] + 4, f"{y:.0f}", PALE, 12, "end")
        left, bottom = self.at(west, south)
        right, top = self.at(east, north)
        self.svg.text((left + right) / 2, bottom + 38, "east, m", PALE, 12, "middle")
        self.svg.text(18, (top + bottom) / 2, "north, m", PALE, 12, "middle", turn=-90)
        self.beside = right + 22

    def aircraft(self, row, span, colour):
        """A silhouette as wide and as long as the wing span."""
        outline = [(0.5, 0), (0.42, 0.05), (0.14, 0.05), (-0.12, 0.5), (-0.2, 0.5), (-0.07, 0.05), (-0.38, 0.04),
                   (-0.46, 0.17), (-0.5, 0.17)]
        outline += [(forward, -right) for forward, right in reversed(outline[1:])]
        heading = math.radians(row.heading)
        x, y = metres(self.origin, row)
        points = []
        for forward, right in outline:
            east = forward * math.sin(heading) + right * math.cos(heading)
            north = forward * math.cos(heading) - right * math.sin(heading)
            points.append(self.at(x + span * east, y + span * north))
        self.svg.shape(points, colour, 0.16)

    def stand(self, stand):
        x, y = self.place(stand)
        self.svg.circle(x, y, stand.radius * self.scale, INK, dash="5 4")
        self.svg.circle(x, y, 2.5, INK, INK)


def told_apart(rows, seconds):
    """Every so many seconds, but only where the aircraft has moved or turned since the last one."""
    shown = [rows[0]]
    for row in rows[1:]:
        last = shown[-1]
        moved = math.hypot(*metres(last, row)) > 4 or abs(math.remainder(row.heading - last.heading, 360)) > 30
        if moved and row.time - last.time >= seconds - 1e-6:
            shown.append(row)
    return shown


def draw_phases(plan, rows, span, seconds):
    for row in told_apart(rows, seconds):
        plan.aircraft(row, span, PHASES[row.phase])
    for a, b in zip(rows, rows[1:]):
        if (a.lat, a.lon) != (b.lat, b.lon):
            plan.svg.line([plan.place(a), plan.place(b)], PHASES[a.phase], 2)


# --- curves over time

class Panel:
    """One curve diagram over time; several of them stand below one another."""
    LEFT, RIGHT = 76, 206

    def __init__(self, svg, top, height, times, limits, label):
        self.svg, self.top, self.height, self.times, self.limits = svg, top, height, times, limits
        self.width = svg.width - self.LEFT - self.RIGHT
        low, high = limits
        for value in steps(low, high, nice_step(high - low, 5)):
            svg.line([self.at(times[0], value), self.at(times[1], value)], GRID, 1)
            svg.text(self.LEFT - 8, self.at(0, value)[1] + 4, f"{value:g}", PALE, 12, "end")
        svg.text(20, top + height / 2, label, INK, 12, "middle", turn=-90)

    def at(self, time, value):
        x = self.LEFT + (time - self.times[0]) / (self.times[1] - self.times[0]) * self.width
        y = self.top + (self.limits[1] - value) / (self.limits[1] - self.limits[0]) * self.height
        return x, y

    def curve(self, points, colour, dash=""):
        self.svg.line([self.at(*point) for point in points], colour, 2, dash)

    def shade(self, begin, end, colour):
        x, x2 = self.at(begin, 0)[0], self.at(end, 0)[0]
        self.svg.box(x, self.top, x2 - x, self.height, colour)

    def time_axis(self, words):
        for time in steps(*self.times, nice_step(self.times[1] - self.times[0], 10)):
            x, y = self.at(time, self.limits[0])
            self.svg.line([(x, y), (x, y + 5)], PALE, 1)
            self.svg.text(x, y + 20, f"{time:g}", PALE, 12, "middle")
        self.svg.text(self.LEFT + self.width / 2, self.top + self.height + 40, words, PALE, 12, "middle")


def wide_limits(values, step):
    return math.floor(min(values) / step) * step, math.ceil((max(values) + step / 10) / step) * step


def stacked(svg, rows, zero, curves, words):
    """Panels below one another: each (label, step of its limits, [(value of a row, colour, dash)])."""
    top, gap, below = 46, 18, 92
    height = (svg.height - top - below - gap * (len(curves) - 1)) / len(curves)
    times = (round(rows[0].time - zero), round(rows[-1].time - zero))
    for n, (label, step, lines) in enumerate(curves):
        drawn = [([(a.time - zero, value(b, a)) for b, a in zip(rows, rows[1:])], c, d) for value, c, d in lines]
        limits = wide_limits([v for points, _, _ in drawn for _, v in points], step)
        panel = Panel(svg, top + n * (height + gap), height, times, limits, label)
        for begin, end in on_ground(rows):
            panel.shade(begin - zero, end - zero, GROUND)
        for points, colour, dash in drawn:
            panel.curve(points, colour, dash)
        panel.curve([(0, limits[0]), (0, limits[1])], INK, "3 4")
    panel.time_axis(words)


def on_ground(rows):
    """The stretches of time in which the aircraft is driven on the ground."""
    changes = [n for n in range(1, len(rows)) if rows[n].ground != rows[n - 1].ground]
    stretches = zip([0] + changes, changes + [len(rows) - 1])
    return [(rows[a].time, rows[b].time) for a, b in stretches if rows[a].ground]


def moved_knots(before, row):
    return math.hypot(*metres(before, row)) / (row.time - before.time) * KNOTS


# --- the pictures

class World(NamedTuple):
    tracks: list
    aircraft: dict
    reports: dict
    spans: dict
    stands: list

    def who(self, row):
        return f"{row.callsign}, {self.aircraft[row.hexid]['model']}"

    def span(self, row):
        return self.spans.get(self.aircraft[row.hexid]["model"], 35.0)

    def stand_at(self, row):
        return min(self.stands, key=lambda stand: math.hypot(*metres(row, stand)))


def push_back(world):
    track, (begin, pushed, off) = find_phases(world.tracks, "pushing_back", "pushed_back", "taxi")
    rows = between(track, track[begin].time - 1, track[off].time + 30)
    stand = world.stand_at(track[begin])
    svg = Svg(900, 560, "Push-back", f"{world.who(rows[0])} at stand {stand.name}; built-in day, "
              f"{rows[0].time:.0f} s to {rows[-1].time:.0f} s; a silhouette every 10 s while it moves")
    plan = Plan(svg, stand, [metres(stand, row) for row in rows], stand.radius + 6)
    plan.stand(stand)
    draw_phases(plan, rows, world.span(rows[0]), 10)
    standing = track[off].time - track[pushed].time
    svg.legend(plan.beside, 70, [(PALE, "parked"), (RED, "pushing back"), (PURPLE, f"pushed back, {standing:.0f} s"),
                                 (BLUE, "taxiing"), (INK, f"stand, {stand.radius:.0f} m radius")])
    return svg


def taxi(world):
    rows = find_bends(world.tracks)
    due = [Stand("", lat, lon, 0) for time, lat, lon in world.reports[rows[0].hexid]
           if rows[0].time - DELAY <= time <= rows[-1].time + DELAY]
    svg = Svg(900, 560, "Taxiing round bends", f"{world.who(rows[0])}; built-in day, {rows[0].time:.0f} s to "
              f"{rows[-1].time:.0f} s; reports due up to {DELAY:.0f} s earlier and later")
    plan = Plan(svg, rows[0], [metres(rows[0], row) for row in rows], 30)
    for row in told_apart(rows, 12):
        plan.aircraft(row, world.span(row), BLUE)
    svg.line([plan.place(row) for row in rows], BLUE, 2)
    for place in inside(plan, due):
        svg.circle(*place, 3.5, ORANGE, ORANGE)
    svg.legend(plan.beside, 70, [(BLUE, "flown, with silhouettes"), (ORANGE, "reported positions")])
    return svg


def inside(plan, places):
    east, north = (2 * half * plan.scale for half in plan.half)
    return [(x, y) for x, y in map(plan.place, places)
            if plan.LEFT <= x <= plan.LEFT + east and plan.TOP <= y <= plan.TOP + north]


def landing(world):
    track, down = find_touchdown(world.tracks, world.aircraft)
    rows = between(track, down - 60, down + 20)
    runway = rows[-1].alt
    svg = Svg(900, 520, "Flare, touchdown and landing roll", f"{world.who(rows[0])}; touchdown at "
              f"{down:.2f} s of the built-in day; heights over the height of the rolling aircraft")
    stacked(svg, rows, down, [
        ("height, ft", 100, [(lambda _, row: row.alt - runway, BLUE, "")]),
        ("pitch, ° nose up", 2, [(lambda _, row: row.pitch, GREEN, "")])], "seconds from the touchdown")
    svg.legend(svg.width - 192, 64, [(BLUE, "height above runway"), (GREEN, "pitch"), (GROUND, "driven on the ground")])
    return svg


def arrival(world):
    track, (begin, parked) = find_phases(world.tracks, "parking", "parked")
    rows = between(track, track[begin].time - 40, track[parked].time + 1)
    rows = [row for row in rows if row.phase in PHASES]
    stand = world.stand_at(track[parked])
    svg = Svg(900, 560, "The drive onto a stand", f"{world.who(rows[0])} at stand {stand.name}; built-in day, "
              f"{rows[0].time:.0f} s to {rows[-1].time:.0f} s; a silhouette every 6 s while it moves")
    due = [Stand("", lat, lon, 0) for time, lat, lon in world.reports[rows[0].hexid]
           if rows[0].time <= time <= rows[-1].time + DELAY]
    plan = Plan(svg, stand, [metres(stand, row) for row in rows], stand.radius + 6)
    plan.stand(stand)
    draw_phases(plan, rows, world.span(rows[0]), 6)
    for place in inside(plan, due):
        svg.circle(*place, 3, ORANGE, ORANGE)
    svg.legend(plan.beside, 70, [(BLUE, "taxiing"), (GREEN, "parking"),
                                 (ORANGE, "reported positions"), (INK, f"stand, {stand.radius:.0f} m radius")])
    return svg


def take_off(world):
    fast = [t for t in world.tracks if any(row.phase == "take_off" and row.speed > 80 for row in t)]
    track, (begin, _) = find_phases(fast, "take_off", "flying")
    rotation = track[begin].time
    rows = between(track, rotation - 30, rotation + 30)
    ground = track[begin].alt
    svg = Svg(900, 600, "Take-off run, rotation and climb", f"{world.who(rows[0])}; rotation at {rotation:.2f} s "
              "of the built-in day; heights over the height at the rotation")
    stacked(svg, rows, rotation, [
        ("height, ft", 100, [(lambda _, row: row.alt - ground, BLUE, "")]),
        ("pitch, ° nose up", 5, [(lambda _, row: row.pitch, GREEN, "")]),
        ("speed, kn", 50, [(moved_knots, RED, ""), (lambda _, row: row.speed, PURPLE, "6 3")])],
            "seconds from the rotation")
    svg.legend(svg.width - 192, 64, [(BLUE, "height above runway"), (GREEN, "pitch"), (RED, "speed as it moved"),
                         (PURPLE, "speed as sent, dashed"), (GROUND, "driven on the ground")])
    return svg


PICTURES = {"push-back": push_back, "taxi": taxi, "landing": landing, "arrival": arrival, "take-off": take_off}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", type=Path, default=Path("build/install/velatra-tool"))
    parser.add_argument("--world", type=Path, default=Path("data/world"))
    parser.add_argument("--out", type=Path, default=Path("docs/pictures"))
    parser.add_argument("--seconds", type=int, default=1800, help="of the replay")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        replay(options.tool.resolve(), options.world, options.seconds, folder)
        world = World(read_tracks(folder / "tracks.csv"), read_aircraft(folder / "aircraft.csv"),
                      read_reports(folder / "reports.txt"), read_spans(options.world / "types.csv"),
                      read_stands(next(folder.glob("*.xml"))))
    options.out.mkdir(parents=True, exist_ok=True)
    for name, draw in PICTURES.items():
        draw(world).write(options.out / f"{name}.svg")
        print(options.out / f"{name}.svg")


if __name__ == "__main__":
    main()
