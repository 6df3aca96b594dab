#!/usr/bin/env python3
"""Holds three lists together: the notes "By design: <what> (<Suite.Test>)" in the code, the tests they
name, and the rows of docs/behaviours.md.

    tools/check_behaviours.py [ROOT]

Prints a line for everything that is amiss; the exit status is 1 then.
"""
import pathlib
import re
import sys

FOLDERS = ["include", "client", "admin", "crypto", "util", "proxy", "hub", "tools", "testing"]
SUFFIXES = {".h", ".cpp", ".c", ".hpp"}
INDEX = "docs/behaviours.md"

NOTE = re.compile(r"by design:", re.IGNORECASE)
COMMENT = re.compile(r"^\s*(//[/<!]*|/?\*+<?/?)\s?")
NAME = r"[A-Z]\w*\.[A-Z]\w*"
NAMED_TESTS = re.compile(r"\((" + NAME + r"(?:,\s*" + NAME + r")*)\)")
TEST = re.compile(r"^\s*TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)


def sources(root, folders):
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SUFFIXES:
                yield path


def comment_after(lines, start):
    """The note's own text: from the word on, as long as the comment goes and no other note begins."""
    text = [lines[start][NOTE.search(lines[start]).end():]]
    for line in lines[start + 1:]:
        if not COMMENT.match(line):
            break
        text.append(COMMENT.sub("", line))
    return NOTE.split(" ".join(part.strip() for part in text))[0]


def notes(root):
    """(where, tests named) of every note."""
    for path in sources(root, FOLDERS):
        lines = path.read_text(encoding="utf-8").splitlines()
        for number, line in enumerate(lines):
            if NOTE.search(line):
                named = NAMED_TESTS.search(comment_after(lines, number))
                where = f"{path.relative_to(root)}:{number + 1}"
                yield where, re.findall(NAME, named.group(1)) if named else []


def existing_tests(root):
    return {f"{suite}.{name}" for path in sources(root, ["tests"])
            for suite, name in TEST.findall(path.read_text(encoding="utf-8"))}


def indexed_tests(root):
    """The tests in the rows of the index; its prose may name others."""
    rows = [line for line in (root / INDEX).read_text(encoding="utf-8").splitlines()
            if line.startswith("|")]
    return set(re.findall(NAME, "\n".join(re.sub(r"\.(h|cpp|md)\b", "", row) for row in rows)))


def complaints(root):
    existing = existing_tests(root)
    indexed = indexed_tests(root)
    found = list(notes(root))
    if not found or not existing:
        yield "no notes or no tests found: is this the root of the project?"
    for where, named in found:
        if not named:
            yield f"{where}: the note names no test, as (Suite.Test)"
        for test in named:
            if test not in existing:
                yield f"{where}: there is no test {test}"
            if test not in indexed:
                yield f"{where}: {INDEX} has no row for {test}"
    known = {test for _, named in found for test in named}
    for test in sorted(indexed - known):
        yield f"{INDEX}: a row names {test}, which no note names"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__).resolve()
    root = root if root.is_dir() else root.parent.parent
    lines = list(complaints(root))
    print("\n".join(lines) if lines else "every note has its test and its row")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
