"""Lets the site hold what stands outside of docs/: pages of the root, examples, and the API pages.

In the tree, links work as they stand, from a page to any other file. In the site, docs/ is the top;
links that lead out of docs/ are rewritten to the copies that are taken in here. The API pages come
from the folder in MV_API_PAGES, which holds "api".
"""
import os
import pathlib
import posixpath
import re

from mkdocs.structure.files import File

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = ["README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md", "LICENSE",
         "packaging/README.md", "examples/README.md"]
LINK = re.compile(r"(\]\()([^)#\s]+)([^)]*\))")


def taken_in():
    found = [path for path in PAGES if (ROOT / path).exists()]
    found += sorted(f"examples/{path.name}" for path in (ROOT / "examples").glob("*.c*"))
    return found


def api_pages(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def on_files(files, config):
    for file in [file for file in files if file.src_path in ("CMakeLists.txt", "Doxyfile")]:
        files.remove(file)
    api = pathlib.Path(os.environ["MV_API_PAGES"])
    for folder, paths in ((ROOT, taken_in()), (api, api_pages(api))):
        for path in paths:
            files.append(File(path, str(folder), config["site_dir"], config["use_directory_urls"]))
    return files


def in_site(page, target):
    """Where a link of a page leads to in the site."""
    folder = posixpath.dirname(page)
    top = "" if page in PAGES else "docs"
    wanted = posixpath.normpath(posixpath.join(top, folder, target))
    if wanted.startswith("docs/"):
        wanted = wanted[len("docs/"):]
    return posixpath.relpath(wanted, folder or ".")


def on_page_markdown(markdown, page, config, files):
    def rewritten(match):
        target = match[2]
        if re.match(r"[a-z]+:", target):
            return match[0]
        return match[1] + in_site(page.file.src_path.replace(os.sep, "/"), target) + match[3]

    return LINK.sub(rewritten, markdown)
