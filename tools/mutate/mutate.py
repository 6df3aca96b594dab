#!/usr/bin/env python3
"""Changes one thing in the library and sees whether a test notices: a mutation run.

    tools/mutate/mutate.py                 every mutant, in an order chosen by --seed (default: 1)
    tools/mutate/mutate.py --minutes 40    as many of them as fit: a random sample
    tools/mutate/mutate.py --sample 50     so many of them
    tools/mutate/mutate.py --list          only shows the mutants
    tools/mutate/mutate.py client/HeaderText.cpp ...   only of these files

Works on a copy of the tree in build/mutate, so that the tree may change meanwhile. The programs of
PROGRAMS are built and run one after the other up to the first test that fails, and the tests that
killed a mutant of the same file before are run first: most mutants cost one compilation, one link and
one test. A mutant counts as killed when it does not compile,
a test fails, or a test takes more processor time or memory than any test needs. Survivors are printed
with their place and written to build/mutate/survivors.txt; what is known of them stands in
tools/mutate/SURVIVORS.md.
"""
import argparse
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutate"
FOLDERS = ("client", "admin", "crypto", "util")
TORTURE = "*FaultTorture.Every*/StreamB*:*.Every*/TextOne*:*.Every*/GzipG*:*.Every*/SignT*:*.Every*/DirectoryO*"
# The quick ones first; each with its options.
PROGRAMS = {
    "mv_unit_tests": [],
    "mv_retaining_tests": [],
    "mv_retained_memory_tests": [],
    "mv_torture_tests": [f"--gtest_filter={TORTURE}"],
}
KILLERS = {}  # the tests that killed mutants of a file, the last one first, each with its program
FAILED = re.compile(r"^([\w/]+\.[\w/]+): ", re.MULTILINE)
PROCESSOR_SECONDS = 20  # for each test, which is a process of its own
MEMORY = 4 << 30
TIMEOUT = 900

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


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (PROCESSOR_SECONDS, PROCESSOR_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, before=None):
    try:
        return subprocess.run(command, cwd=COPY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=TIMEOUT, check=False, preexec_fn=before, text=True, errors="replace")
    except subprocess.TimeoutExpired:
        return subprocess.CompletedProcess(command, 1, "")


def prepare():
    COPY.mkdir(parents=True, exist_ok=True)
    files = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True)
    for name in files.stdout.split("\n"):
        source = ROOT / name
        if name and source.is_file():
            (COPY / name).parent.mkdir(parents=True, exist_ok=True)
            target = COPY / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                shutil.copy(source, target)  # with a new time, so that it is built anew
    configured = run(["cmake", "-S", ".", "-B", "out", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                      "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DMV_BUILD_PROXY=OFF", "-DMV_BUILD_HUB=OFF",
                      "-DMV_BUILD_TOOLS=OFF", "-DMV_BUILD_EXAMPLES=OFF"])
    return configured.returncode == 0 and survives("")


# True when the program can be built and its tests pass; adds the test that failed to `killers`.
def passes(name, options, killers):
    if run(["cmake", "--build", "out", "--target", name]).returncode != 0:
        return False
    program = next(path for path in (COPY / "out" / "tests").rglob(name) if path.is_file())
    done = run([str(program), "--gtest_fail_fast", *options], limit)
    if done.returncode == 0:
        return True
    failed = FAILED.search(done.stdout)
    if failed and (name, failed[1]) not in killers:
        killers.insert(0, (name, failed[1]))
    return False


# True when every test passes on the tree with a change in the file.
def survives(path):
    killers = KILLERS.setdefault(path, [])
    for name in PROGRAMS:
        known = [test for program, test in killers if program == name]
        if known and not passes(name, ["--gtest_filter=" + ":".join(known) + ":-"], killers):
            return False
    return all(passes(name, options, killers) for name, options in PROGRAMS.items())


def killed(mutant):
    path = COPY / mutant.path
    original = path.read_text(encoding="utf-8")
    lines = original.split("\n")
    lines[mutant.line - 1] = mutant.after
    path.write_text("\n".join(lines), encoding="utf-8")
    try:
        return not survives(mutant.path)
    finally:
        path.write_text(original, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--sample", type=int, default=0)
    parser.add_argument("--minutes", type=float, default=float("inf"))
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("files", nargs="*")
    arguments = parser.parse_args()

    paths = arguments.files or sorted(
        path.relative_to(ROOT).as_posix() for folder in FOLDERS for path in (ROOT / folder).glob("*.cpp"))
    mutants = all_mutants(paths)
    in_all = len(mutants)
    random.Random(arguments.seed).shuffle(mutants)
    if arguments.sample:
        mutants = mutants[: arguments.sample]
    if arguments.list:
        print("\n".join(str(mutant) for mutant in mutants))
        print(f"{len(mutants)} mutants")
        return 0
    if not prepare():
        print("the copy in build/mutate does not build or pass its tests unchanged", file=sys.stderr)
        return 1
    survivors = []
    tried = 0
    end = time.monotonic() + arguments.minutes * 60
    for mutant in mutants:
        if time.monotonic() > end:
            break
        tried += 1
        if not killed(mutant):
            survivors.append(mutant)
            print(f"SURVIVED {mutant}", flush=True)
        if tried % 10 == 0:
            print(f"{tried} of {len(mutants)}, {len(survivors)} survived", flush=True)
    (COPY / "survivors.txt").write_text("\n".join(map(str, survivors)) + "\n", encoding="utf-8")
    dead = tried - len(survivors)
    print(f"{tried} of {in_all} mutants tried, seed {arguments.seed}: "
          f"{dead} killed ({100 * dead / max(1, tried):.1f} %)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
