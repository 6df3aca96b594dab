#!/usr/bin/env python3
"""Holds the include directions of the library.

    tools/check_layers.py [ROOT]

Every file has a level. A file includes its own header and files of a lower level; files of one level
never include each other. Public headers but MvServerRequest.h are leaves.
Includes form no cycle. Foreign headers stay with the files that are named for them.

Prints a line for every include that breaks a rule; the exit status is 1 then.
"""
import pathlib
import re
import sys

PUBLIC = "morvenn/net/mvserverproxy/"
FOLDERS = ["include", "util", "client", "admin", "crypto"]
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]', re.MULTILINE)

# First match counts. Sources have the level of what they implement.
LEVELS = [
    (r"include/.*/client/MvServerRequest\.h", 7),
    (r"include/.*", 0),
    (r"util/(Text|Secret)\.(h|cpp)", 1),
    (r"util/(Platform|Utf8Converter)\.(h|cpp)", 2),
    (r"util/(TextConversion|MvServerCppBindingLogger)\.(h|cpp)", 3),
    (r"client/(ProxyErrors|Exceptions|ResultBuffer)\.(h|cpp)", 4),
    (r"client/(ResponseStream|MSPStream|HeaderText|Credentials|MSPSession)\.(h|cpp)", 5),
    (r"crypto/Base64\.(h|cpp)|admin/Environment\.cpp", 5),
    (r"client/CredentialChallenge\.(h|cpp)|admin/EnvironmentText\.(h|cpp)", 6),
    (r"client/(MvServerRequest|Request\w+|Lifecycle)\.cpp", 7),
    (r"client/MvServerSimpleRequest\.cpp|admin/EnvironmentInfo\.cpp|crypto/PKCS7\w*\.cpp", 8),
]

# A public header may include these and the standard library; the request's header all leaves.
LEAF_MAY_INCLUDE = {PUBLIC + "Export.h"}

FOREIGN = [
    (re.compile(r"unicode/"), re.compile(r"util/(Utf8Converter|TextConversion)\.")),
    (re.compile(r"zlib\.h"), re.compile(r"client/MSPStream\.cpp")),
    (re.compile(r"(unistd|fcntl|sys/\w+|pthread|dlfcn)\.h"), re.compile(r"util/Platform\.")),
    (re.compile(r"(curl|microhttpd|openssl|nlohmann|CLI)"), re.compile(r"$^")),
]


def level_of(name):
    for pattern, level in LEVELS:
        if re.fullmatch(pattern, name):
            return level
    return None


def file_included(root, text):
    """The project's file behind an include, as a name below the root; None for foreign headers."""
    for name in ("include/" + text, text):
        if (root / name).is_file():
            return name
    return None


def is_own_header(source, header):
    return pathlib.PurePath(source).stem == pathlib.PurePath(header).stem


def lies_below(target, level):
    """Public headers may also be used on their own level: that of the sources that implement them."""
    other = level_of(target)
    return other is not None and (other < level or
                                  other == level and target.startswith("include/"))


def breaches(name, includes):
    """What is wrong with one file; includes: pairs of the text and the project's file or None."""
    level = level_of(name)
    if level is None:
        yield f"{name}: has no level; add it to LEVELS"
        return
    for text, target in includes:
        if target is None:
            for foreign, home in FOREIGN:
                if foreign.match(text) and not home.match(name):
                    yield f"{name}: includes {text}, which belongs to {home.pattern}"
        elif name.startswith("include/") and level == 0:
            if text not in LEAF_MAY_INCLUDE:
                yield f"{name}: a leaf includes {text}"
        elif name.startswith("include/") and level_of(target) != 0:
            yield f"{name}: a public header includes {text}, which is no leaf"
        elif not is_own_header(name, target) and not lies_below(target, level):
            yield f"{name} (level {level}): includes {target} (level {level_of(target)})"


def cycle(graph):
    """One circle of includes, as a list of names; empty when there is none."""
    state = {}

    def visit(name, path):
        state[name] = "open"
        for target in graph.get(name, []):
            if state.get(target) == "open":
                return path[path.index(target):] + [target] if target in path else [name, target]
            if target not in state:
                found = visit(target, path + [target])
                if found:
                    return found
        state[name] = "done"
        return []

    for name in sorted(graph):
        if name not in state:
            found = visit(name, [name])
            if found:
                return found
    return []


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__).resolve()
    root = root if root.is_dir() else root.parent.parent
    lines, graph = [], {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = str(path.relative_to(root))
                texts = INCLUDE.findall(path.read_text(encoding="utf-8"))
                includes = [(text, file_included(root, text)) for text in texts]
                lines += breaches(name, includes)
                graph[name] = [target for _, target in includes if target]
    circle = cycle(graph)
    if circle:
        lines.append("a circle of includes: " + " -> ".join(circle))
    if not graph:
        lines.append("no files found: is this the root of the project?")
    print("\n".join(lines) if lines else f"{len(graph)} files include only what lies below them")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
