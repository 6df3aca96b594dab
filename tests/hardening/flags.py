#!/usr/bin/env python3
"""Checks that every source of the product is compiled with the hardening flags that leave no trace
in the finished file: flags.py compile_commands.json"""
import json
import pathlib
import re
import sys

PRODUCT = ("client", "admin", "crypto", "util", "proxy", "hub", "tools/mvserver")
FLAGS = {
    "optimisation": r" -O[23]( |$)",
    "fortified functions": r" -D_FORTIFY_SOURCE=3( |$)",
    "stack protector": r" -fstack-protector-strong( |$)",
    "stack clash protection": r" -fstack-clash-protection( |$)",
    "control-flow protection": r" -fcf-protection( |$)",
    "checked library": r" -D_GLIBCXX_ASSERTIONS( |$)",
    "no paths of the machine": r" -ffile-prefix-map=",
}


def main():
    root = pathlib.Path(__file__).resolve().parents[2]
    commands = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    checked = 0
    problems = []
    for entry in commands:
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if not source.is_relative_to(root):
            continue
        path = source.relative_to(root).as_posix()
        if not path.startswith(tuple(folder + "/" for folder in PRODUCT)):
            continue
        checked += 1
        for what, pattern in FLAGS.items():
            if not re.search(pattern, entry["command"]):
                problems.append(f"{path}: without {what}")
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{checked} sources checked, {len(problems)} problems")
    return 1 if problems or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
