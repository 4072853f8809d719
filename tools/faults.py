#!/usr/bin/env python3
"""Puts small faults into the product, one at a time, and tells which of them no test notices.

    python3 tools/faults.py [--count N] [--seed S] [--build build/release] [--only FILE] [PATH...]

PATH is a .cpp file or a folder of the product; without one it is all that has test programs below. A fault alters
one operator, number, condition or order of arguments, or deletes one statement; the same paths, count and seed give
the same faults as long as the code is the same, and `--only` repeats those of an earlier output. Each is built, and
the folder's test programs run until one fails. A line per fault tells its place and what became of it: "found",
"survived", or "no build", which doesn't count. Faults that change no behaviour stand in faults_without_effect.txt,
each with its reason, and are left out. At the end stand the tally by folder and the share of tests in the code.

The files are altered in place and put back afterwards, also after Ctrl+C: let nothing else build there meanwhile.
"""
import argparse
import collections
import pathlib
import random
import re
import subprocess
import sys

# Which test programs could notice a fault in a folder, the quickest first.
TESTS = {
    "src/traffic": ["test_traffic", "test_sim", "test_ui", "test_flow"],
    "src/airports": ["test_airports", "test_traffic", "test_ui", "test_flow"],
    "src/liveries": ["test_liveries", "test_flow"],
    "src/sim": ["test_sim", "test_traffic", "test_transport", "test_flow"],
    "src/link": ["test_link", "test_flow"],
    "src/ui": ["test_ui", "test_flow"],
}
PATIENCE = 120  # seconds for one test program; a fault that hangs it is found
WITHOUT_EFFECT = pathlib.Path(__file__).with_name("faults_without_effect.txt")

# What a fault may alter: a pattern, and what stands in its place.
ALTERATIONS = [
    ("<= ", "< "), (">= ", "> "), (" < ", " <= "), (" > ", " >= "), (" == ", " != "), (" != ", " == "),
    (" && ", " || "), (" || ", " && "), (" + ", " - "), (" - ", " + "), (" * ", " / "), (" / ", " * "),
    (" += ", " -= "), (" -= ", " += "), (r"\bmin\(", "max("), (r"\bmax\(", "min("),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"!(?=[\w(])", ""),
    (r"(?<=\w\()(\w[\w.]*), (\w[\w.]*)(?=\))", r"\2, \1"),
    (r"\bif \((?!const|auto)(.*)(?=\) \{$)", r"if (!(\1)"),
    (r"(?<![\w.\"'])\d+\.\d+(?![\w.])", lambda m: str(round(float(m[0]) * 1.25 + 0.01, 6))),
    (r"(?<![\w.\"'\[])\d+(?![\w.\]])", lambda m: str(int(m[0]) + 1)),
]
STATEMENT = re.compile(
    r"^\s+(?!return|break|continue|using|const|auto|static|case|throw)[\w.>:\[\]()*-]+(\(.*\)| \S?= .*);$")
CODE = re.compile(r"^(    |(static |inline )*constexpr )")
NO_BEHAVIOUR = re.compile(r"log(Line|Talkative)\(|Log\(|assert\(|reserve\(")  # what a log line says is read by people only

Fault = collections.namedtuple("Fault", "path index was altered")


def name(fault):
    """The fault without its line's number, which any commit may change."""
    return f"{fault.path}: {fault.was.strip()}  ->  {fault.altered.strip() or '(deleted)'}"


def faults_of(path):
    """All faults that a file can hold."""
    for index, line in enumerate(path.read_text().split("\n")):
        code = re.sub(r"\s*//.*", "", line)
        if not CODE.match(code) or NO_BEHAVIOUR.search(code):
            continue
        quoted = [m.span() for m in re.finditer(r'"[^"]*"', code)]
        for pattern, instead in ALTERATIONS:
            for match in re.finditer(pattern if "\\" in pattern else re.escape(pattern), code):
                if any(a < match.start() < b for a, b in quoted):
                    continue
                put = match.expand(instead) if isinstance(instead, str) else instead(match)
                yield Fault(path, index, code, code[:match.start()] + put + code[match.end():])
        if STATEMENT.match(code):
            yield Fault(path, index, code, "")


def tests_of(path):
    return next(tests for folder, tests in TESTS.items() if path.is_relative_to(folder))


def became_of(fault, build):
    """Builds and runs with the fault; the file is as before afterwards."""
    before = fault.path.read_text()
    lines = before.split("\n")
    lines[fault.index] = fault.altered
    try:
        fault.path.write_text("\n".join(lines))
        for test in tests_of(fault.path):
            if subprocess.run(["cmake", "--build", build, "--target", test], capture_output=True).returncode:
                return "no build"
            try:
                run = subprocess.run([f"{build}/{test}", "--gtest_fail_fast", "--gtest_brief=1"],
                                     capture_output=True, timeout=PATIENCE)
            except subprocess.TimeoutExpired:
                return "found"
            if run.returncode:
                return "found"
        return "survived"
    finally:
        fault.path.write_text(before)


def chosen(options):
    """The faults to try, in their order, without those that have no effect."""
    paths = options.paths or [pathlib.Path(folder) for folder in TESTS]
    files = sorted(f for p in paths for f in ([p] if p.is_file() else p.rglob("*.cpp")))
    faults = [fault for file in files for fault in faults_of(file)]
    random.Random(options.seed).shuffle(faults)
    if WITHOUT_EFFECT.exists():
        left_out = set(WITHOUT_EFFECT.read_text().split("\n"))
        faults = [fault for fault in faults if name(fault) not in left_out]
    if options.only:
        earlier = {re.sub(r"^(?:found|survived|no build) +(.*?):\d+: ", r"\1: ", line)
                   for line in options.only.read_text().split("\n")}
        faults = [fault for fault in faults if name(fault) in earlier]
    return faults


def share_of_tests():
    def lines(*folders):
        listed = subprocess.run(["git", "ls-files", *folders], capture_output=True, text=True, check=True).stdout
        code = [f for f in listed.split() if f.endswith((".cpp", ".h", ".py"))]
        return sum(1 for f in code for line in pathlib.Path(f).read_text().split("\n") if line.strip())

    product, tests = lines("src", "standin", "tools", "bench"), lines("tests", "fuzz")
    return f"tests are {tests} lines to {product} of code, {100 * tests / product:.1f} %"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("paths", nargs="*", type=pathlib.Path)
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--only", type=pathlib.Path, help="an earlier output: the faults in it, no others")
    options = parser.parse_args()
    tally = collections.defaultdict(collections.Counter)
    tried = 0
    for fault in chosen(options):
        if tried == options.count:
            break
        outcome = became_of(fault, options.build)
        print(f"{outcome:9} {fault.path}:{fault.index + 1}: {name(fault).split(': ', 1)[1]}", flush=True)
        tried += outcome != "no build"
        tally[str(fault.path.parts[1])][outcome] += 1
    for folder, count in sorted(tally.items()):
        print(f"{folder:9} {count['found']:4} of {count['found'] + count['survived']:4} found")
    found = sum(count["found"] for count in tally.values())
    print(f"{found} of {tried} faults found, {100 * found / max(tried, 1):.0f} %; {share_of_tests()}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
