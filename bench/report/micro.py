"""Runs mv_bench: every row several times, in random order, each median over the repetitions."""
import collections
import json
import subprocess

import judge


def run(program, quick):
    command = [program, f"--benchmark_repetitions={5 if quick else 25}",
               "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.03",
               "--benchmark_format=json"]
    out = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    times, units = collections.defaultdict(list), {}
    for line in json.loads(out)["benchmarks"]:
        if line["run_type"] == "iteration":
            times[line["run_name"]].append(line["cpu_time"])
            units[line["run_name"]] = line["units"]
    return {name: {"time": judge.summary(times[name]), "units": units[name]}
            for name in sorted(times)}
