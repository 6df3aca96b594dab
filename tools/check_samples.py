#!/usr/bin/env python3
"""Checks the code in the documentation: every ```cpp and ```c block of the given Markdown files.

A comment on the line above a block says what holds for it:

    <!-- sample: from examples/send.cpp -->   its lines stand in that file, in one piece
    <!-- sample: prints hello -->             it is a program that prints exactly this line
    <!-- sample: compiles -->                 it is a program that is compiled but not run

Without a comment, a block with a main function is a program that ends well; any other block is the
inside of a function, below all public headers, and run likewise. The hub is the one named in
MV_SERVERPROXY_HUB; its address takes the place of the one in the text.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap

DEFAULT_HUB = "http://127.0.0.1:16064"
MARK = re.compile(r"<!-- sample: (from|prints|compiles) ?(.*?) -->")
FRAGMENT = """{includes}
using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::Admin;
using namespace Morvenn::Net::MvServerProxy::Crypto;
using namespace Morvenn::Net::MvServerProxy::Util;
void fragment();
void fragment() {{
{code}
}}
int main() {{ fragment(); }}
"""
STANDARD_HEADERS = ("fstream", "iostream", "memory", "sstream", "string", "vector")


class Block:
    """A fenced block: where it stands, its language, its mark and its lines."""

    def __init__(self, file, line, language, mark, code):
        self.file, self.line, self.language, self.mark = file, line, language, mark
        self.code = code

    def __str__(self):
        return f"{self.file}:{self.line}"


def blocks_of(file):
    lines = file.read_text(encoding="utf-8").splitlines()
    number = 0
    while number < len(lines):
        fence = re.fullmatch(r"( *)```(cpp|c)", lines[number])
        if fence:
            end = next(i for i in range(number + 1, len(lines)) if lines[i].strip() == "```")
            mark = MARK.fullmatch(lines[number - 1].strip()) if number else None
            code = textwrap.dedent("\n".join(lines[number + 1:end]) + "\n")
            yield Block(file, number + 1, fence[2], mark.groups() if mark else None, code)
            number = end
        number += 1


def stands_in(code, text):
    """Whether the lines stand in the text in one piece, at whatever depth."""
    wanted = code.splitlines()
    lines = text.splitlines()
    for start in range(len(lines) - len(wanted) + 1):
        piece = "\n".join(lines[start:start + len(wanted)])
        if textwrap.dedent(piece).splitlines() == wanted:
            return True
    return False


def uses_kit(block):
    return "/testkit/" in block.code or "TestKit::" in block.code


class Checker:
    def __init__(self, options):
        self.options = options
        self.root = pathlib.Path(options.root)
        headers = sorted((self.root / "include").glob("morvenn/**/*.h"))
        self.includes = "\n".join(
            [f'#include "{h.relative_to(self.root / "include")}"' for h in headers]
            + [f"#include <{name}>" for name in STANDARD_HEADERS])

    def source(self, block):
        code = block.code.replace(DEFAULT_HUB, os.environ.get("MV_SERVERPROXY_HUB", DEFAULT_HUB))
        if block.language == "c" or re.search(r"\bint main\(|\bTEST(_F)?\(", code):
            return code
        includes = self.includes
        if uses_kit(block):
            includes += "\n#include \"morvenn/net/mvserverproxy/testkit/FakeProxy.h\""
        return FRAGMENT.format(includes=includes, code=code)

    def compile(self, block, folder):
        source = folder / ("sample.c" if block.language == "c" else "sample.cpp")
        source.write_text(self.source(block), encoding="utf-8")
        compiler = self.options.cc if block.language == "c" else self.options.cxx
        standard = "c99" if block.language == "c" else "c++17"
        libraries = self.options.library
        if uses_kit(block):
            libraries = self.options.kit + libraries
        flags = [f"-I{path}" for path in self.options.include]
        flags += [f"-Wl,-rpath,{pathlib.Path(path).parent}" for path in libraries
                  if ".so" in path]
        program = folder / "sample"
        result = subprocess.run(
            [compiler, f"-std={standard}", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
             "-Wno-unused", str(source), "-o", str(program), *flags, *libraries],
            capture_output=True, text=True)
        if result.returncode:
            return None, f"does not compile:\n{result.stderr}"
        return program, None

    def run(self, block, program, folder):
        result = subprocess.run([program], cwd=folder, capture_output=True, text=True, timeout=60)
        if result.returncode:
            return f"ends with {result.returncode}: {result.stderr}{result.stdout}"
        if block.mark and block.mark[0] == "prints" and result.stdout != block.mark[1] + "\n":
            return f"prints {result.stdout!r} instead of {block.mark[1]!r}"
        return None

    def check(self, block):
        if block.mark and block.mark[0] == "from":
            text = (self.root / block.mark[1]).read_text(encoding="utf-8")
            return None if stands_in(block.code, text) else f"does not stand in {block.mark[1]}"
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            program, trouble = self.compile(block, folder)
            if trouble or (block.mark and block.mark[0] == "compiles"):
                return trouble
            return self.run(block, program, folder)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", required=True, help="top of the tree")
    parser.add_argument("--cxx", default="c++")
    parser.add_argument("--cc", default="cc")
    parser.add_argument("--include", action="append", default=[])
    parser.add_argument("--library", action="append", default=[])
    parser.add_argument("--kit", action="append", default=[], help="libraries of the test kit")
    parser.add_argument("files", nargs="+", type=pathlib.Path)
    options = parser.parse_args()

    checker = Checker(options)
    blocks = [block for file in options.files for block in blocks_of(file)]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for block, trouble in zip(blocks, pool.map(checker.check, blocks)):
            kind = block.mark[0] if block.mark else "holds"
            print(f"{block}: {trouble or kind}")
            failed += trouble is not None
    print(f"{len(blocks)} samples, {failed} failed")
    sys.exit(1 if failed or not blocks else 0)


if __name__ == "__main__":
    main()
