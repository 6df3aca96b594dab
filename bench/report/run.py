#!/usr/bin/env python3
"""Runs all benchmarks and writes bench/results/: tables.md, results.json and the plots.

    run.py FOLDER-OF-THE-PROGRAMS [--quick]
"""
import argparse
import datetime
import json
import pathlib
import platform

import goals
import growth
import http_bench
import judge
import micro
import plots

RESULTS = pathlib.Path(__file__).parent.parent / "results"


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def goal_table(judged):
    lines = ["| work | measured | goal | |", "|---|---|---|---|"]
    lines += [f"| {row['work']} | {row['value']:.4g} | {row['goal']} | "
              f"{'met' if row['met'] else '**missed**'} |" for row in judged]
    return "\n".join(lines)


def micro_table(rows):
    lines = ["| row | ns | noise |", "|---|---|---|"]
    lines += [f"| {name} | {row['time']['median']:,.0f} | {row['time']['spread']:.1%} |"
              for name, row in rows.items()]
    return "\n".join(lines)


def http_table(rows):
    lines = ["| job | wall, s | noise | CPU, s | peak, MiB |", "|---|---|---|---|---|"]
    lines += [f"| {name} | {row['wall']['median']:.3f} | {row['wall']['spread']:.1%} | "
              f"{row['cpu']['median']:.3f} | {row['peak_kib']['median'] / 1024:.1f} |"
              for name, row in rows.items()]
    return "\n".join(lines)


def growth_table(points):
    lines = ["| work | units | ns a unit | peak, MiB |", "|---|---|---|---|"]
    lines += [f"| {p['work']} | {p['size']:,} | {p['seconds'] / p['size'] * 1e9:.4g} | "
              f"{p['peak_kib'] / 1024:.1f} |" for p in points]
    return "\n".join(lines)


def write(result):
    RESULTS.mkdir(exist_ok=True)
    (RESULTS / "results.json").write_text(json.dumps(result, indent=1) + "\n")
    (RESULTS / "tables.md").write_text(
        f"# Measured on {result['date']}, {result['machine']}\n\n"
        f"## Goals\n\n{goal_table(result['goals'])}\n\n"
        f"## Rows of one process\n\n{micro_table(result['micro'])}\n\n"
        f"## Exchanges over http\n\n{http_table(result['http'])}\n\n"
        f"## Growth\n\n{growth_table(result['growth'])}\n")
    plots.ratios(result["goals"], RESULTS / "goals.svg")
    plots.growth(result["growth"], RESULTS / "growth.svg")
    plots.memory(result["growth"], RESULTS / "memory.svg")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true")
    arguments = parser.parse_args()
    result = {"date": datetime.date.today().isoformat(), "machine": processor(),
              "micro": micro.run(arguments.programs / "mv_bench", arguments.quick),
              "growth": growth.run(arguments.programs / "mv_bench_growth", arguments.quick),
              "http": http_bench.run(arguments.programs / "mv_bench_http", arguments.quick)}
    result["goals"] = (judge.judge(goals.MICRO, result["micro"]) +
                       judge.judge(goals.HTTP, result["http"]))
    write(result)
    print(goal_table(result["goals"]))
    missed = sum(not row["met"] for row in result["goals"])
    print(f"{len(result['goals']) - missed} goals met, {missed} missed; see {RESULTS}/tables.md")


if __name__ == "__main__":
    main()
