"""The manual page and docs/cli.md against the program."""

import re
import subprocess
import unittest

from harness import SOURCES, CommandLineTest

VERBS = ([], ["send"], ["env", "list"], ["env", "show"], ["env", "url"], ["sign"], ["verify"],
         ["shutdown"], ["doctor"], ["completion"], ["version"])


class Manual(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.page = (SOURCES / "mvserver.1").read_text().replace("\\-", "-")
        self.guide = (SOURCES.parent.parent / "docs" / "cli.md").read_text()
        self.helps = {" ".join(v): self.succeed(*v, "--help").stdout.decode() for v in VERBS}

    def missing_from(self, text, pattern):
        names = {name for page in self.helps.values() for name in re.findall(pattern, page)}
        self.assertGreater(len(names), 5)
        return sorted(name for name in names if not re.search(re.escape(name) + r"\b", text))

    def test_every_option_is_in_the_page(self):
        self.assertEqual([], self.missing_from(self.page, r"(?m)^ +(?:-\w,)?(--[a-z-]+)"))

    def test_every_variable_is_in_the_page_and_in_the_guide(self):
        self.assertEqual([], self.missing_from(self.page, r"Env:(MV_[A-Z_]+)"))
        self.assertEqual([], self.missing_from(self.guide, r"Env:(MV_[A-Z_]+)"))

    def test_every_exit_code_is_in_the_page_and_in_the_guide(self):
        for code, meaning in re.findall(r"(?m)^ +(\d+) +(.*)$", self.helps[""]):
            with self.subTest(code=code):
                self.assertRegex(self.page, rf"(?m)^\.B {code}$")
                self.assertRegex(self.guide, rf"(?m)^\| {code} \|")

    def test_every_verb_has_its_section(self):
        for verb in VERBS[1:]:
            with self.subTest(verb=verb):
                self.assertIn(".SS " + " ".join(verb), self.page)

    def test_the_page_is_free_of_formatting_errors(self):
        done = subprocess.run(["man", "--warnings", "-l", str(SOURCES / "mvserver.1")],
                              capture_output=True, text=True,
                              env=self.environment(MANROFFSEQ="", LC_ALL="C.UTF-8", PATH="/usr/bin:/bin"))
        self.assertEqual((0, ""), (done.returncode, done.stderr))


if __name__ == "__main__":
    unittest.main()
