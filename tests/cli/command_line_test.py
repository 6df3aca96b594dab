"""Options: their variables, their help, where they may stand."""

import re
import shlex
import subprocess
import unittest

from harness import LIMIT, PROGRAM, CommandLineTest, closed_port, fixed_answer

VERBS = (["send"], ["env", "list"], ["env", "show"], ["env", "url"], ["sign"], ["verify"],
         ["shutdown"], ["doctor"], ["completion"], ["version"])


class Help(CommandLineTest):
    def test_help_goes_to_standard_output(self):
        for verb in ([], ["env"], *VERBS):
            with self.subTest(verb=verb):
                done = self.succeed(*verb, "--help")
                self.assertIn(b"Usage: mvserver", done.stdout)
                self.assertEqual(b"", done.stderr)

    def test_every_exit_code_is_listed(self):
        text = self.succeed("--help").stdout.decode()
        for code in (0, 2, 3, 4, 5, 6, 7, 8, 9, 22, 28, 130):
            self.assertRegex(text, rf"(?m)^ +{code} +\w")

    def test_every_option_but_help_and_version_has_a_variable(self):
        for verb in ([], *VERBS):
            text = self.succeed(*verb, "--help").stdout.decode()
            for line in re.findall(r"(?m)^ +-.*$", text):
                with self.subTest(verb=verb, option=line):
                    if not re.search(r"--help|--version|--no-progress{", line):
                        self.assertRegex(line, r"\(Env:MV_[A-Z_]+\)")


class Variables(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_server(fixed_answer(["HTTP/1.1 404 No"], b"fine"))

    def run_with(self, code=0, **variables):
        done = self.run_program("send", env={"MV_URL": self.server.url, "MV_DATA": "x",
                                             **variables})
        self.assertEqual(code, done.returncode, done.stderr)
        return done

    def head(self):
        return self.server.heads[-1].decode()

    def test_url_and_data(self):
        self.assertEqual(b"fine", self.run_with().stdout)

    def test_header_and_environment(self):
        self.run_with(MV_HEADER="A=1", MV_ENV="Test")
        self.assertIn("A: 1\r\n", self.head())
        self.assertIn("Env-Name: Test\r\n", self.head())

    def test_flags(self):
        self.run_with(22, MV_FAIL="true", MV_COMPRESSED="1", MV_TEXT="true")
        self.assertRegex(self.head(), re.compile("accept-encoding: gzip", re.I))

    def test_output_and_verbosity(self):
        done = self.run_with(MV_OUTPUT="out", MV_VERBOSE="2")
        self.assertEqual("fine", (self.folder / "out").read_text())
        self.assertRegex(done.stderr.decode(), r"after \d")

    def test_the_command_line_wins(self):
        done = self.run_program("send", "--url", self.server.url, "-d", "x",
                                env={"MV_URL": closed_port()})
        self.assertEqual(0, done.returncode)

    def test_a_bad_value_in_a_variable_is_a_usage_error(self):
        text = self.run_with(2, MV_TIMEOUT="soon").stderr
        self.assertIn(b"--timeout: Value soon", text)
        self.assertIn(b"MV_... variables", text)

    def test_the_log_folder_and_level(self):
        logs = self.folder / "logs"
        logs.mkdir()
        self.run_with(MV_LOG_DIR=str(logs), MV_CPPBINDING_LOG_LEVEL="DEBUG")
        self.assertIn("Encoded Headers", next(logs.iterdir()).read_text())
        self.assertEqual([], self.leftovers())


class Places(CommandLineTest):
    def test_global_options_may_stand_before_and_after_the_verb(self):
        self.assertEqual(self.succeed("--json", "version").stdout,
                         self.succeed("version", "--json").stdout)

    def test_the_version_flag_and_verb_agree(self):
        self.assertEqual(self.succeed("--version").stdout, self.succeed("version").stdout)


class Mistakes(CommandLineTest):
    def test_a_word_that_is_no_verb_or_option_is_named(self):
        for arguments, word in ((["fly"], "fly"), (["sedn", "-d", "x"], "sedn"),
                                (["env", "fly"], "fly"), (["send", "--fly"], "--fly"),
                                (["send", "-d", "x", "--fly"], "--fly")):
            with self.subTest(arguments=arguments):
                self.assertIn(word, self.fail_with(2, *arguments).splitlines()[0])

    def test_an_option_without_its_text_is_refused(self):
        for option in ("--url", "--env", "--session", "--output", "--hub", "--password-file"):
            with self.subTest(option=option):
                self.assertIn(f"{option}: it is given without a text",
                              self.fail_with(2, "send", "-d", "x", option, ""))

    def test_a_variable_without_a_text_counts_as_not_set(self):
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"fine"))
        self.succeed("send", "--url", server.url, "-d", "x",
                     env={name: "" for name in ("MV_ENV", "MV_SESSION", "MV_OUTPUT", "MV_JSON",
                                                "MV_PROGRESS", "MV_TIMEOUT", "MV_VERBOSE")})

    def test_a_flags_variable_is_true_or_false(self):
        for name in ("MV_JSON", "MV_PROGRESS", "MV_VERBOSE"):
            with self.subTest(name=name):
                self.fail_with(2, "version", env={name: "maybe"})
                self.succeed("version", env={name: "false"})

    def test_a_body_file_without_a_name(self):
        self.assertIn('the body "@" names no file', self.fail_with(2, "send", "-d", "@"))


class StandardOutput(CommandLineTest):
    def run_with(self, redirection, *arguments):
        words = shlex.join([PROGRAM, *map(str, arguments)])
        return subprocess.run(["sh", "-c", f"exec {words} {redirection}"], capture_output=True,
                              env=self.environment(), cwd=self.folder, timeout=LIMIT)

    def test_a_full_disk_is_a_local_failure_whatever_is_printed(self):
        for arguments in (["version"], ["version", "--json"], ["--help"], ["--version"],
                          ["completion", "bash"]):
            with self.subTest(arguments=arguments):
                done = self.run_with("> /dev/full", *arguments)
                self.assertEqual((9, b"mvserver: file: cannot write standard output: "
                                     b"No space left on device\n"), (done.returncode, done.stderr))

    def test_an_error_that_cannot_be_printed_as_json_is_printed_as_text(self):
        done = self.run_with("> /dev/full", "--json", "fly")
        self.assertEqual(2, done.returncode)
        self.assertTrue(done.stderr.startswith(b"mvserver: usage: "), done.stderr)

    def test_a_closed_stream_is_a_local_failure_and_no_socket_takes_its_place(self):
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"fine"))
        done = self.run_with(">&-", "send", "--url", server.url, "-d", "x")
        self.assertEqual((9, b"mvserver: file: cannot write standard output: "
                             b"Bad file descriptor\n"), (done.returncode, done.stderr))
        done = self.run_with("<&-", "send", "--url", server.url, "-d", "-")
        self.assertEqual((9, b"mvserver: file: cannot read standard input: "
                             b"Bad file descriptor\n"), (done.returncode, done.stderr))
        done = self.run_with("<&- >&- 2>&-", "send", "--url", server.url, "-d", "x", "-o", "out")
        self.assertEqual((0, "fine"), (done.returncode, (self.folder / "out").read_text()))


class BrokenPipe(CommandLineTest):
    def test_a_reader_that_leaves_ends_the_program_quietly(self):
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"x" * (1 << 22)))
        process = subprocess.Popen([PROGRAM, "send", "--url", server.url, "-d", "x"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=self.environment())
        process.stdout.read(10)
        process.stdout.close()
        error = process.stderr.read()
        process.stderr.close()
        self.assertEqual((-13, b""), (process.wait(), error))
        self.assertEqual([], self.leftovers())


if __name__ == "__main__":
    unittest.main()
