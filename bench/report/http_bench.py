"""Runs mv_bench_http: each job with each client, in random order, all on one core with the server."""
import collections
import json
import os
import random
import subprocess

import http_server
import judge

SMALL_ANSWER = 1024
RUNS = 7
# job: server, path, https, body, exchanges, gzip, clients
JOBS = {
    "download": ("nginx", "/large", False, 10, 1, False, ("library", "curl", "poco")),
    "download_tls": ("nginx", "/large", True, 10, 1, False, ("library", "curl", "poco")),
    "upload": ("sink", "/", False, "large", 1, False, ("library", "curl", "poco")),
    "upload_tls": ("sink", "/", True, "large", 1, False, ("library", "curl", "poco")),
    "gzip": ("nginx", "/gzip", False, 10, 1, True, ("library", "curl", "poco")),
    "small": ("nginx", "/small", False, 100, "small", False, ("library", "curl", "poco", "httplib")),
}


# The same with one client and once: only the memory of a very long exchange is of interest.
LONG_JOBS = {
    "download_8_gib": ("nginx", "/huge", False, 10, 1, False, ("library",)),
    "upload_8_gib": ("sink", "/", False, "huge", 1, False, ("library",)),
}


def environment(authorities):
    kept = {name: value for name, value in os.environ.items() if "proxy" not in name.lower()}
    return {**kept, "MV_SERVERPROXY_CA_FILE": str(authorities)}


def one(program, client, ports, job, sizes, env):
    server, path, tls, body, exchanges, compressed, _ = job
    url = f"{'https' if tls else 'http'}://127.0.0.1:{ports[server][tls]}{path}"
    command = [program, client, url, str(sizes.get(body, body)),
               str(sizes.get(exchanges, exchanges))] + (["gzip"] if compressed else [])
    out = subprocess.run(command, capture_output=True, text=True, env=env, timeout=600)
    if out.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: {out.stderr.strip()}")
    return json.loads(out.stdout)


def schedule(quick):
    """Every job of every client several times in random order, then the long ones once."""
    order = [(name, client) for name, job in JOBS.items() for client in job[-1]]
    for _ in range(2 if quick else RUNS):
        yield from random.sample(order, len(order))
    if not quick:
        yield from ((name, "library") for name in LONG_JOBS)


def check_equal(received):
    for name, amounts in received.items():
        if len(set(amounts.values())) != 1:
            raise RuntimeError(f"{name}: the clients received different amounts: {amounts}")


def run(program, quick):
    sizes = {"large": (64 if quick else 1024) << 20, "huge": 8 << 30,
             "small": 2000 if quick else 20000}
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    measured = collections.defaultdict(lambda: collections.defaultdict(list))
    received = collections.defaultdict(dict)
    with http_server.running(sizes, 200_000_000, SMALL_ANSWER) as (ports, authorities):
        env = environment(authorities)
        for name, client in schedule(quick):
            job = JOBS.get(name) or LONG_JOBS[name]
            result = one(program, client, ports, job, sizes, env)
            received[name][client] = result.pop("received")
            for key, value in result.items():
                measured[f"{name}/{client}"][key].append(value)
    check_equal(received)
    return {name: {key: judge.summary(values) for key, values in row.items()}
            for name, row in sorted(measured.items())}
