"""The commands of docs/cli.md and of the manual page, run as they are written."""

import re
import subprocess
import unittest

from harness import LIMIT, PROGRAM, SOURCES, CommandLineTest

# Programs of the reader, and jq, which need not be installed.
PRELUDE = f"""
set -euo pipefail
fpath=(unused "$HOME")
mvserver() {{ {PROGRAM} "$@"; }}
generate-query() {{ echo '<query/>'; }}
secret-tool() {{ echo secret; }}
jq() {{ cat; }}
"""


class Guide(CommandLineTest):
    def setUp(self):
        super().setUp()
        root = SOURCES.parent.parent
        self.hub = self.start_hub(
            environments=(root / "hub" / "example-environments.txt").read_text(encoding="utf-8"))
        for name in ("query.xml", "login.xml", "contract.pdf", "annex.pdf"):
            self.file(name, f"<{name}/>")
        (self.folder / "ca.pem").symlink_to(self.hub.state / "ca.pem")
        for folder in (".local/share/bash-completion/completions", ".config/fish/completions"):
            (self.folder / folder).mkdir(parents=True)

    def run_as_written(self, line):
        """A place holder of three dots stands for a request."""
        command = line.replace("http://127.0.0.1:16064", self.hub.url)
        command = command.replace(" ...", ' --url "$URL" -d hello')
        done = subprocess.run(
            ["bash", "-c", PRELUDE + command], capture_output=True, timeout=LIMIT, cwd=self.folder,
            env=self.environment(HOME=str(self.folder), URL=self.hub.url + "/echo",
                                 MV_SERVERPROXY_HUB=self.hub.url))
        self.assertEqual(0, done.returncode, done.stderr.decode(errors="replace"))

    def run_all(self, lines):
        self.assertGreater(len(lines), 3)
        for line in lines:
            with self.subTest(line=line):
                self.run_as_written(line)

    def test_every_command_of_the_guide(self):
        page = (SOURCES.parent.parent / "docs" / "cli.md").read_text(encoding="utf-8")
        self.run_all("".join(re.findall(r"(?s)```sh\n(.*?)```", page)).splitlines())

    def test_every_example_of_the_manual_page(self):
        page = (SOURCES / "mvserver.1").read_text(encoding="utf-8")
        self.run_all(page.split(".SH EXAMPLES\n.nf\n")[1].split(".fi")[0]
                     .replace("\\-", "-").splitlines())


if __name__ == "__main__":
    unittest.main()
