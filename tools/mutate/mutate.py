#!/usr/bin/env python3
"""Changes one thing in the library and sees whether a test notices: a mutation run.

    tools/mutate/mutate.py                 every mutant; hours
    tools/mutate/mutate.py --sample 50     so many, chosen by --seed (default: 1)
    tools/mutate/mutate.py --list          only shows the mutants
    tools/mutate/mutate.py client/HeaderText.cpp ...   only of these files

Works on a copy of the tree in build/mutate. A mutant counts as killed when the build fails, a test
fails or the tests do not end in time. Survivors are printed with their place and written to
build/mutate/survivors.txt; what is known of them stands in tools/mutate/SURVIVORS.md.
"""
import argparse
import pathlib
import random
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutate"
FOLDERS = ("client", "admin", "crypto", "util")
TESTS = ("mv_unit_tests", "mv_retaining_tests", "mv_torture_tests")
TORTURE_FILTER = "*FaultTorture.Every*/StreamB*:*.Every*/TextOne*:*.Every*/GzipG*:*.Every*/SignT*:*.Every*/DirectoryO*"
TIMEOUT = 240

# What is replaced by what; the pattern is looked for outside comments and texts.
OPERATORS = [
    (r"(?<![<>=!-])<(?![<=>])(?= )", "<="),
    (r"(?<![<>=!-])>(?![>=])(?= )", ">="),
    (r"<=(?= )", "<"),
    (r">=(?= )", ">"),
    (r"==", "!="),
    (r"!=", "=="),
    (r"&&(?= )", "||"),
    (r"\|\|", "&&"),
    (r"(?<= )\+(?= )", "-"),
    (r"(?<= )-(?= )", "+"),
    (r"\btrue\b", "false"),
    (r"\bfalse\b", "true"),
]
NUMBER = re.compile(r"(?<![\w.'\"])(\d+)(?![\w.'\"])")
TEXT = re.compile(r'"((?:[^"\\]|\\.)+)"')
CALL = re.compile(r"^ +[\w.:>()*-]+\(.*\);$")
MASK = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)+\'|//.*$|<[\w:, *]+>')


class Mutant:
    def __init__(self, path, line, before, after, what):
        self.path, self.line, self.before, self.after, self.what = path, line, before, after, what

    def __str__(self):
        return f"{self.path}:{self.line}: {self.what}\n    {self.before.strip()}\n    {self.after.strip()}"


def mutants_of_line(path, number, line):
    if line.lstrip().startswith(("//", "#", "using", "namespace", "template", "static_assert")):
        return
    masked = MASK.sub(lambda m: " " * len(m.group()), line)
    code_end = len(masked.rstrip())

    def at(span, text, what):
        return Mutant(path, number, line, line[: span[0]] + text + line[span[1] :], what)

    for pattern, replacement in OPERATORS:
        for match in re.finditer(pattern, masked):
            yield at(match.span(), replacement, f"{match.group()} -> {replacement}")
    for match in NUMBER.finditer(masked):
        yield at(match.span(), str(int(match.group()) + 1), f"{match.group()} + 1")
    for match in TEXT.finditer(line):
        if match.start() < code_end or masked.strip() == "":
            yield at(match.span(1), match.group(1)[1:] or "x", "text changed")
    if CALL.match(line) and "return" not in line and "throw" not in line and " = " not in masked:
        yield Mutant(path, number, line, "    ;", "call removed")


def all_mutants(paths):
    mutants = []
    for path in paths:
        for number, line in enumerate((ROOT / path).read_text(encoding="utf-8").split("\n"), 1):
            mutants.extend(mutants_of_line(path, number, line))
    return mutants


def run(command, timeout=None):
    try:
        done = subprocess.run(command, cwd=COPY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=timeout, check=False)
        return done.returncode == 0
    except subprocess.TimeoutExpired:
        return False


def prepare():
    COPY.mkdir(parents=True, exist_ok=True)
    files = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True)
    for name in files.stdout.split("\n"):
        source = ROOT / name
        if name and source.is_file():
            (COPY / name).parent.mkdir(parents=True, exist_ok=True)
            target = COPY / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                shutil.copy2(source, target)
    configured = run(["cmake", "-S", ".", "-B", "out", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                      "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DMV_BUILD_PROXY=OFF", "-DMV_BUILD_HUB=OFF",
                      "-DMV_BUILD_TOOLS=OFF", "-DMV_BUILD_EXAMPLES=OFF"])
    return configured and build() and survives()


def targets():
    return [name for name in TESTS if (COPY / "out" / "build.ninja").read_text().find(f"{name}:") > 0]


def build():
    return run(["cmake", "--build", "out", "--target", *targets()])


# True when every test passes.
def survives():
    for name in targets():
        program = next((COPY / "out" / "tests").rglob(name))
        options = [f"--gtest_filter={TORTURE_FILTER}"] if name == "mv_torture_tests" else []
        if not run([str(program), *options], TIMEOUT):
            return False
    return True


def killed(mutant):
    path = COPY / mutant.path
    original = path.read_text(encoding="utf-8")
    lines = original.split("\n")
    lines[mutant.line - 1] = mutant.after
    path.write_text("\n".join(lines), encoding="utf-8")
    try:
        return not build() or not survives()
    finally:
        path.write_text(original, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--sample", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("files", nargs="*")
    arguments = parser.parse_args()

    paths = arguments.files or sorted(
        path.relative_to(ROOT).as_posix() for folder in FOLDERS for path in (ROOT / folder).glob("*.cpp"))
    mutants = all_mutants(paths)
    if arguments.sample:
        mutants = random.Random(arguments.seed).sample(mutants, min(arguments.sample, len(mutants)))
    if arguments.list:
        print("\n".join(str(mutant) for mutant in mutants))
        print(f"{len(mutants)} mutants")
        return 0
    if not prepare():
        print("the copy in build/mutate does not build or pass its tests unchanged", file=sys.stderr)
        return 1
    survivors = []
    for count, mutant in enumerate(mutants, 1):
        if not killed(mutant):
            survivors.append(mutant)
            print(f"SURVIVED {mutant}", flush=True)
        if count % 10 == 0:
            print(f"{count} of {len(mutants)}, {len(survivors)} survived", flush=True)
    (COPY / "survivors.txt").write_text("\n".join(map(str, survivors)) + "\n", encoding="utf-8")
    dead = len(mutants) - len(survivors)
    print(f"{len(mutants)} mutants, {dead} killed ({100 * dead / max(1, len(mutants)):.1f} %)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
