#!/usr/bin/env python3
"""Is the planner's choice among equal candidates even? Plans an invented airport 10,000 times and holds the
counts against even ones by the chi-square test: which aircraft a stand gets among 2 to 10 of the same half
hour, and which stands stay empty when more are known than wanted. Ends with 1 if a test fails at 0.1 %.
"""
import json
import pathlib
import subprocess
import sys
import tempfile

PLANS = 10_000
# Upper 0.1 % points of the chi-square distribution by degrees of freedom, from any table of it.
CRITICAL = {1: 10.83, 2: 13.82, 3: 16.27, 4: 18.47, 5: 20.52, 6: 22.46, 7: 24.32, 8: 26.12, 9: 27.88, 19: 43.82}
CANDIDATES = range(2, 11)
STANDS = 20


def option(stand, number):
    reg = f"D-{stand:02}{number:02}"
    return f'<opt airl="DLH" type="A320" reg="{reg}" cs="DLH{stand}{number}" day="3" hh="20" />'


def airport(stands):
    rows = "".join(
        f'<parkpos id="P{n}" latitude="{50 + n * 0.01:.6f}" longitude="8.0" heading="0" radius="20">'
        + "".join(option(n, i) for i in range(count)) + "</parkpos>" for n, count in enumerate(stands))
    return ('<meta/><parameters><parameter name="altitude" value="100"/></parameters>'
            f'<parkpositions>{rows}</parkpositions>')


def counts(tool, text, *arguments):
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder, "XCHI.xml")
        file.write_text(text, encoding="utf-8")
        lines = subprocess.run([tool, "plan", "--airport-file", file, "--day", "3", "--slot", "20", "--plans",
                                str(PLANS), *arguments], check=True, capture_output=True, text=True).stdout
    return [json.loads(line)["chosen"] for line in lines.splitlines()]


def chi_square(found, cells):
    expected = sum(found) / cells
    return sum((n - expected) ** 2 / expected for n in found) + (cells - len(found)) * expected


def main():
    tool = sys.argv[1] if len(sys.argv) > 1 else "build/release/velatra-tool"
    failed = 0

    def judge(what, found, cells, spread=1.0):
        nonlocal failed
        value = chi_square(found, cells) / spread
        limit = CRITICAL[cells - 1]
        failed += not value < limit
        print(f"{what:45} chi-square {value:6.2f}, limit {limit:6.2f}{'' if value < limit else '  UNEVEN'}")

    for cells, chosen in zip(CANDIDATES, counts(tool, airport(CANDIDATES), "--percentage", "100")):
        judge(f"{cells} aircraft of one half hour", list(chosen.values()), cells)
    half = counts(tool, airport([1] * STANDS), "--percentage", "50")
    # Half of the stands are drawn without putting back: the counts spread less, by that half and n / (n - 1).
    judge("20 stands of which 10 are wanted", [sum(c.values()) for c in half], STANDS, 0.5 * STANDS / (STANDS - 1))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
