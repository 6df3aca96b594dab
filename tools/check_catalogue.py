#!/usr/bin/env python3
"""Checks that the documentation names every text of a failure and every setting of the sources.

usage: check_catalogue.py ROOT

Texts: string literals of the library and the default proxy library that read as a sentence, against
docs/errors.md. Settings: names of environment variables, against docs/settings.md and docs/cli.md.
"""
import pathlib
import re
import sys

# Texts of the log, and words of HTTP and of the protocols, are no failures.
NO_FAILURE = re.compile(
    r"Logger::(debug|info)|header(?:Value|Text)?\(|equalIgnoringCase|lines\.(push|emplace)_back")
NO_SENTENCE = re.compile(r"^[A-Za-z0-9-]+: |^&?[a-z]+=|^https?:|^An example|::|\{\"")
LITERALS = re.compile(r'"((?:[^"\\]|\\.)*)"(?:\s*"((?:[^"\\]|\\.)*)")*', re.S)
SENTENCE = re.compile(r"\w[\w'.,:;()-]* +[\w'(]+ +[\w'(]+")
VARIABLE = re.compile(r'"(MV_[A-Z_]+|MVHUB_[A-Z_]+|TE?MP|TMPDIR|NO_COLOR|(?:[a-z]+|[A-Z]+)_(?:proxy|PROXY)'
                      r'|XDG_[A-Z_]+)"')


def words(text):
    """A text as it is compared: escapes undone, marks of the page and blanks at the ends dropped."""
    text = text.replace("\\n", " ").replace('\\"', '"').replace("`", "").replace("*", "")
    return re.sub(r"[\s\"|]+", " ", text).strip(" ;:.,(")


def failures(path):
    source = re.sub(r"(^|\s)// [^\n]*", "", path.read_text(encoding="utf-8"))
    statements = re.split(r"(?<=[;{}])\s*\n", source)
    for statement in statements:
        if NO_FAILURE.search(statement) or "#include" in statement and "throw" not in statement:
            continue
        for match in LITERALS.finditer(statement):
            text = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', match[0]))
            if SENTENCE.search(text) and not NO_SENTENCE.search(text):
                yield words(text)


def main():
    root = pathlib.Path(sys.argv[1])
    page = words((root / "docs/errors.md").read_text(encoding="utf-8"))
    settings = "".join((root / "docs" / name).read_text(encoding="utf-8")
                       for name in ("settings.md", "cli.md"))
    missing, count = [], 0
    for folder in ("client", "admin", "crypto", "util", "proxy"):
        for path in sorted((root / folder).glob("*.cpp")):
            for text in failures(path):
                count += 1
                if text not in page:
                    missing.append(f"{folder}/{path.name}: docs/errors.md lacks: {text}")
    for folder in ("util", "proxy", "hub", "tools/mvserver"):
        for path in sorted((root / folder).glob("*.cpp")):
            for name in VARIABLE.findall(path.read_text(encoding="utf-8")):
                count += 1
                if f"`{name}`" not in settings:
                    missing.append(f"{folder}/{path.name}: docs/settings.md lacks {name}")
    print("\n".join(missing + [f"{count} texts and settings, {len(missing)} not documented"]))
    sys.exit(1 if missing or not count else 0)


if __name__ == "__main__":
    main()
