#!/usr/bin/env python3
"""Builds deliberately wrong variants of the library and sees whether the torture catches each.

    tools/wrong_variants/run.py            every variant of variants.toml
    tools/wrong_variants/run.py NAME ...   only these

Works on a copy of the tree in build/wrong_variants. What the torture lets pass is put before the unit
tests, so that the report tells "missed by all" from "missed by the torture". Ends with 0 when the
torture caught every variant.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tomllib

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
COPY = ROOT / "build" / "wrong_variants"
PROGRAMS = {"torture": ["mv_torture_tests"], "unit": ["mv_unit_tests", "mv_retaining_tests"]}


def run(*command):
    return subprocess.run(command, cwd=COPY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)


def must(*command):
    done = run(*command)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {done.returncode}:\n{done.stdout[-3000:]}")


def copy_tree():
    names = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True).stdout
    for name in names.splitlines():
        source, target = ROOT / name, COPY / name
        if source.is_file() and (not target.exists() or target.read_bytes() != source.read_bytes()):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source, target)


def configure():
    launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    must("cmake", "--preset", "dev", "-DMV_BUILD_PROXY=OFF", "-DMV_BUILD_HUB=OFF", "-DMV_BUILD_TOOLS=OFF",
         "-DMV_BUILD_EXAMPLES=OFF", "-DMV_WERROR=OFF", *launcher)


def build(label):
    must("cmake", "--build", "--preset", "dev", "--target", *PROGRAMS[label])


def first_failure(label):
    """The first test with this label that fails, or None."""
    build(label)
    done = run("ctest", "--test-dir", "build/dev", "--label-regex", f"^{label}$", "--parallel", "2",
               "--no-tests=error", "--stop-on-failure")
    if done.returncode == 0:
        return None
    failed = re.search(r"^\s*\d+ - (.+) \(\w+\)", done.stdout, re.MULTILINE)
    return failed.group(1) if failed else f"ctest ended with {done.returncode}"


def verdict(variant):
    path = COPY / variant["file"]
    right = path.read_text(encoding="utf-8")
    if right.count(variant["before"]) != 1:
        return "DOES NOT APPLY: its `before` stands %d times in %s" % (right.count(variant["before"]),
                                                                     variant["file"])
    path.write_text(right.replace(variant["before"], variant["after"]), encoding="utf-8")
    try:
        for label in PROGRAMS:
            test = first_failure(label)
            if test is not None:
                return ("caught by " if label == "torture" else "MISSED by the torture, caught by ") + test
        return "MISSED by all"
    finally:
        path.write_text(right, encoding="utf-8")


def main():
    variants = tomllib.loads((HERE / "variants.toml").read_text(encoding="utf-8"))["variant"]
    wanted = set(sys.argv[1:])
    unknown = wanted - {variant["name"] for variant in variants}
    if unknown:
        sys.exit(f"no such variant: {', '.join(sorted(unknown))}; see variants.toml")
    chosen = [variant for variant in variants if not wanted or variant["name"] in wanted]
    COPY.mkdir(parents=True, exist_ok=True)
    copy_tree()
    configure()
    if (test := first_failure("torture")) is not None:
        sys.exit(f"the tree itself fails: {test}")
    caught = 0
    for variant in chosen:
        found = verdict(variant)
        caught += found.startswith("caught")
        print(f"{variant['name']}: {variant['mistake']}: {found}", flush=True)
    print(f"{caught} of {len(chosen)} wrong variants caught by the torture")
    return 0 if caught == len(chosen) else 1


if __name__ == "__main__":
    sys.exit(main())
