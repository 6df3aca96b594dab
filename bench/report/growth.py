"""Runs mv_bench_growth over sizes, each point in a process of its own."""
import json
import subprocess

SIZES = {
    "response_bytes": [1 << shift for shift in range(10, 31, 2)],
    "headers": [1, 3, 10, 30, 100, 300, 1000],
    "environments": [10, 100, 1000, 10_000, 100_000],
    "items_to_sign": [1, 10, 100, 1000, 10_000, 100_000],
}


def run(program, quick):
    points = []
    for work, sizes in SIZES.items():
        for size in sizes[:-2] if quick else sizes:
            out = subprocess.run([program, work, str(size)], check=True, capture_output=True,
                                 text=True).stdout
            points.append(json.loads(out))
    return points
