#!/usr/bin/env python3
"""Counts instructions (callgrind) and allocations of fixed exchanges and judges them.

    gate.py PROGRAM CONFIGURATION [--write]

Every count has to stay within the tolerance of the committed figure of its configuration, upwards
and downwards, and below its goal where it has one. A count that fell is no failure of the code: the
new figure is to be committed, with --write, so that the gain is kept.
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

FIGURES = pathlib.Path(__file__).with_name("figures.json")
CASES = ("text_exchange", "stream_exchange", "stream_exchange_long_headers",
         "text_exchange_0_lines", "text_exchange_1_mib", "open_and_destroy")
LINES = 10


def run(command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=120).stdout


def instructions(program, case):
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder, "callgrind.out")
        run(["valgrind", "--quiet", "--tool=callgrind", "--toggle-collect=mvGateMeasured",
             f"--callgrind-out-file={out}", program, case, "run"])
        return int(re.search(r"^(?:summary|totals): (\d+)", out.read_text(), re.MULTILINE)[1])


def measure(program):
    counts = {case: {"instructions": instructions(program, case),
                     "allocations": int(run([program, case, "count"]))} for case in CASES}
    none, ten = counts.pop("text_exchange_0_lines"), counts["text_exchange"]
    counts["header_line"] = {unit: round((ten[unit] - none[unit]) / LINES, 1) for unit in ten}
    return counts


def judge(counts, figures, goals, tolerance):
    failures = []
    print(f"{'case':<30}{'unit':<14}{'count':>12}{'committed':>12}{'change':>9}{'goal':>9}")
    for case, row in counts.items():
        for unit, count in row.items():
            committed = figures.get(case, {}).get(unit)
            goal = goals.get(case, {}).get(unit)
            change = (count - committed) / max(committed, 1) if committed is not None else 0.0
            print(f"{case:<30}{unit:<14}{count:>12}{committed!s:>12}{change:>+9.1%}{goal or '':>9}")
            if committed is None:
                failures.append(f"{case}: no committed count of {unit}")
            elif abs(change) > tolerance:
                failures.append(f"{case}: {unit} changed by {change:+.1%}, from {committed} to "
                                f"{count}; at most {tolerance:.0%} is allowed")
            if goal is not None and count > goal:
                failures.append(f"{case}: {count} {unit}, the goal is at most {goal}")
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("configuration", help="a key of figures.json")
    parser.add_argument("--write", action="store_true", help="commit the counts as new figures")
    arguments = parser.parse_args()

    table = json.loads(FIGURES.read_text())
    counts = measure(arguments.program)
    if arguments.write:
        table["figures"][arguments.configuration] = counts
        FIGURES.write_text(json.dumps(table, indent=2) + "\n")
    failures = judge(counts, table["figures"].get(arguments.configuration, {}), table["goals"],
                     table["tolerance"])
    for failure in failures:
        print(f"FAILED: {failure}")
    if failures:
        print(f"When the change is wanted: {sys.argv[0]} {arguments.program} "
              f"'{arguments.configuration}' --write")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
