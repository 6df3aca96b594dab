#!/usr/bin/env python3
"""Checks the links of a built site: every file and anchor they name is there, and no page needs the
network to be shown.

usage: check_links.py SITE_FOLDER
"""
import html.parser
import pathlib
import sys
import urllib.parse

SHOWN = {("script", "src"), ("link", "href"), ("img", "src"), ("iframe", "src")}


class Page(html.parser.HTMLParser):
    """The anchors of a page, its links, and what it loads."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loads = set(), [], []
        self.feed(path.read_text(encoding="utf-8", errors="replace"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (tag == "a" and name == "name"):
                self.anchors.add(value)
            elif (tag, name) in SHOWN and dict(attributes).get("rel") != "canonical":
                self.loads.append(value or "")
            elif tag == "a" and name == "href":
                self.links.append(value or "")


def troubles(site):
    pages = {path: Page(path) for path in site.rglob("*.html")}
    for path, page in pages.items():
        for target in page.links + page.loads:
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
                if target in page.loads and parts.scheme not in ("data", "javascript"):
                    yield path, f"loads {target} from the network"
                continue
            named = urllib.parse.unquote(parts.path)
            wanted = (path.parent / named).resolve() if named else path
            if not named.startswith("/") and wanted.is_dir():
                wanted = wanted / "index.html"
            anchor = urllib.parse.unquote(parts.fragment)
            if named.startswith("/") or not wanted.exists():
                yield path, f"names {target}, which is not there"
            elif anchor and wanted in pages and anchor not in pages[wanted].anchors:
                yield path, f"names {target}, which has no such anchor"


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    found = sorted({f"{path.relative_to(site)} {trouble}" for path, trouble in troubles(site)
                    if path.name != "404.html"})
    count = len(list(site.rglob("*.html")))
    print("\n".join(found + [f"{count} pages, {len(found)} broken links"]))
    sys.exit(1 if found or not count else 0)


if __name__ == "__main__":
    main()
