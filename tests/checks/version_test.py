"""The version stands in VERSION; what cannot read it from there says the same."""
import json
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
VERSION = (ROOT / "VERSION").read_text(encoding="utf-8").strip()


class Version(unittest.TestCase):
    def test_it_is_a_semantic_version(self):
        self.assertRegex(VERSION, r"^\d+\.\d+\.\d+$")

    def test_the_changelog_tells_about_it_first(self):
        text = (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")
        released = re.findall(r"(?m)^## (\d\S*) - \d{4}-\d\d-\d\d$", text)
        self.assertEqual(VERSION, released[0])

    def test_the_vcpkg_port_has_it(self):
        port = ROOT / "packaging" / "vcpkg" / "mvservercppbinding" / "vcpkg.json"
        self.assertEqual(VERSION, json.loads(port.read_text(encoding="utf-8"))["version-semver"])


if __name__ == "__main__":
    unittest.main()
