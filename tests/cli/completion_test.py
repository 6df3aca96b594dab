"""Completion scripts: the committed ones are current, and bash's completes."""

import re
import subprocess
import unittest

from harness import SOURCES, CommandLineTest

FILES = {"bash": "mvserver.bash", "zsh": "_mvserver", "fish": "mvserver.fish"}


class Completion(CommandLineTest):
    def complete(self, *words):
        """What bash offers for the last word."""
        script = f"source {SOURCES}/completions/mvserver.bash\n" \
                 'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _mvserver\n' \
                 'printf "%s\\n" "${COMPREPLY[@]}"'
        done = subprocess.run(["bash", "-c", script, "bash", "mvserver", *words],
                              capture_output=True, text=True, check=True)
        self.assertEqual("", done.stderr)
        return done.stdout.split()

    def test_the_files_in_the_tree_are_what_the_program_prints(self):
        for shell, name in FILES.items():
            with self.subTest(shell=shell):
                self.assertEqual((SOURCES / "completions" / name).read_bytes(),
                                 self.succeed("completion", shell).stdout)

    def test_the_scripts_are_valid_for_their_shells(self):
        for shell, name in FILES.items():
            with self.subTest(shell=shell):
                subprocess.run([shell, "-n", SOURCES / "completions" / name], check=True)

    def test_bash_completes_verbs(self):
        self.assertEqual(["send", "env", "sign", "verify", "shutdown", "doctor", "completion",
                          "version"], self.complete(""))
        self.assertEqual(["send", "sign", "shutdown"], self.complete("s"))

    def test_bash_completes_verbs_below_env_with_options_between(self):
        self.assertEqual(["list", "show", "url"], self.complete("--json", "env", ""))

    def test_bash_completes_options_of_the_verb_and_of_all(self):
        self.assertEqual(["--stream", "--session"],
                         [name for name in self.complete("send", "--s") if name])
        self.assertEqual(["--json"], self.complete("env", "list", "--js"))

    def test_every_option_of_help_is_completed(self):
        for verb in (["send"], ["env", "list"], ["env", "show"], ["sign"], ["verify"],
                     ["shutdown"], ["doctor"]):
            text = self.succeed(*verb, "--help").stdout.decode()
            offered = self.complete(*verb, "--")
            for name in re.findall(r"(?m)^ +(?:-\w,)?(--[a-z-]+)", text):
                with self.subTest(verb=verb, option=name):
                    self.assertIn(name, offered)


if __name__ == "__main__":
    unittest.main()
