"""A forward proxy's credentials: where they come from, and that they show up nowhere."""

import base64
import os
import pathlib
import re
import subprocess
import termios
import time
import unittest

from harness import LIMIT, PROGRAM, CommandLineTest, OnTerminal, fixed_answer

CANARY = "canary-pa:ss wörd"
TARGET = "http://192.0.2.1/anything"  # never reached: the forward proxy answers


class ForwardProxy(CommandLineTest):
    """A forward proxy that wants joe and CANARY by Basic."""

    def setUp(self):
        super().setUp()
        wanted = b"Basic " + base64.b64encode(f"joe:{CANARY}".encode())

        def answer(connection, head):
            given = re.search(rb"(?i)proxy-authorization: ([^\r]*)", head)
            if given and given.group(1) == wanted:
                return fixed_answer(["HTTP/1.1 200 OK"], b"fine")(connection, head)
            connection.sendall(b"HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=\"corp\"\r\n"
                               b"Content-Length: 0\r\nConnection: close\r\n\r\n")
            return False

        self.proxy = self.start_server(answer)
        self.env = {"http_proxy": self.proxy.url}
        self.secret = self.file("secret", CANARY + "\nsecond line\n")
        self.secret.chmod(0o600)

    def send(self, *arguments, **more):
        return self.run_program("send", "--url", TARGET, "-d", "x", *arguments, env=self.env,
                                start_new_session=True, **more)


class FromFile(ForwardProxy):
    def test_the_first_line_of_a_file(self):
        done = self.send("--user", "joe", "--password-file", self.secret)
        self.assertEqual((0, b"fine", b""), (done.returncode, done.stdout, done.stderr))

    def test_an_open_descriptor(self):
        reading, writing = os.pipe()
        os.write(writing, CANARY.encode() + b"\n")
        os.close(writing)
        self.addCleanup(os.close, reading)
        done = self.send("--user", "joe", "--password-fd", reading, pass_fds=[reading])
        self.assertEqual((0, b"fine"), (done.returncode, done.stdout))

    def test_a_file_that_others_may_read_gets_a_warning(self):
        self.secret.chmod(0o644)
        done = self.send("--user", "joe", "--password-file", self.secret)
        self.assertEqual(0, done.returncode)
        self.assertIn(b"others may read", done.stderr)

    def test_a_refused_password_is_offered_once(self):
        self.secret.write_text("wrong\n")
        done = self.send("--user", "joe", "--password-file", self.secret)
        self.assertEqual(6, done.returncode)
        self.assertRegex(done.stderr.decode(),
                         r"credentials: forward proxy 127\.0\.0\.1:\d+ \(corp\) refused")
        self.assertEqual(2, len(self.proxy.heads))

    def test_a_password_without_a_user(self):
        done = self.send("--password-file", self.secret)
        self.assertEqual(6, done.returncode)
        self.assertIn(b"no user was given", done.stderr)

    def test_an_unusable_password_file_is_a_local_failure(self):
        for content in ("", "\n", "tab\there", "x" * 1025):
            with self.subTest(content=content[:10]):
                self.secret.write_text(content)
                done = self.send("--user", "joe", "--password-file", self.secret)
                self.assertEqual(9, done.returncode)
                self.assertIn(b"no usable password", done.stderr)

    def test_there_is_no_option_that_takes_a_password(self):
        text = self.succeed("send", "--help").stdout.decode()
        self.assertEqual({"--password-file", "--password-fd"},
                         set(re.findall(r"--[a-z-]*passw[a-z-]*", text)))

    def test_neither_password_nor_terminal(self):
        done = self.send("--user", "joe")
        self.assertEqual(6, done.returncode)
        self.assertIn(b"neither a password nor a terminal", done.stderr)


class NothingShowsThePassword(ForwardProxy):
    def everything_written(self, done):
        files = [path.read_bytes() for path in self.folder.rglob("*")
                 if path.is_file() and path != self.secret]
        return b"".join([done.stdout, done.stderr, *files])

    def test_not_with_debug_log_and_full_verbosity(self):
        for password in (CANARY, "canary-wrong"):
            with self.subTest(password=password):
                self.secret.write_text(password + "\n")
                done = self.send("-vv", "--log-level", "DEBUG", "--log-dir", self.temporary,
                                 "--user", "joe", "--password-file", self.secret)
                written = self.everything_written(done)
                self.assertIn(b"wont be logged due to security reasons", written)
                self.assertNotIn(b"canary", written)

    def arguments_of(self, folder):
        """Popen returns as soon as the descriptors of the old image are closed, and the kernel
        shows no arguments until it has set up the new one."""
        deadline = time.monotonic() + LIMIT
        while time.monotonic() < deadline:
            if arguments := (folder / "cmdline").read_bytes():
                return arguments
        self.fail("the process never showed its arguments")

    def test_not_in_the_arguments_or_variables_of_the_process(self):
        process = subprocess.Popen(
            [PROGRAM, "send", "--url", TARGET, "-d", "-", "--user", "joe", "--password-file",
             str(self.secret)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            env=self.environment(**self.env))
        folder = pathlib.Path(f"/proc/{process.pid}")
        arguments = self.arguments_of(folder)
        seen = arguments + (folder / "environ").read_bytes()
        output, _ = process.communicate(b"x", timeout=LIMIT)
        self.assertEqual(b"fine", output)
        self.assertIn(b"--password-file", seen)
        self.assertNotIn(b"canary", seen)


class FromPrompt(ForwardProxy):
    def terminal(self):
        return OnTerminal(self, "send", "--url", TARGET, "-d", "x", env=self.env)

    def test_user_and_password_are_asked_for_and_the_password_is_not_echoed(self):
        terminal = self.terminal()
        terminal.read_until(b"User for forward proxy 127.0.0.1:")
        terminal.type(b"joe\n")
        terminal.read_until(b"Password for forward proxy 127.0.0.1:")
        terminal.type(CANARY.encode() + b"\n")
        shown, code = terminal.finish()
        self.assertEqual(0, code, shown)
        self.assertIn(b"joe", shown)
        self.assertTrue(shown.endswith(b"fine"), shown)
        self.assertNotIn(b"canary", shown)

    def test_a_third_wrong_answer_is_the_last(self):
        terminal = self.terminal()
        for attempt in range(3):
            terminal.read_until(b"User for")
            terminal.seen = b""
            terminal.type(b"joe\n")
            terminal.read_until(b"Password for")
            terminal.type(b"canary-wrong\n")
        shown, code = terminal.finish()
        self.assertEqual(6, code, shown)
        self.assertNotIn(b"canary", shown)

    def test_an_interrupt_at_the_prompt_turns_the_echo_on_again(self):
        terminal = self.terminal()
        terminal.read_until(b"User for")
        terminal.type(b"joe\n")
        terminal.read_until(b"Password for")
        self.assertFalse(termios.tcgetattr(terminal.master)[3] & termios.ECHO)
        terminal.type(b"\x03")
        terminal.read_until(b"interrupted")
        self.assertEqual(130, terminal.process.wait(LIMIT))
        self.assertTrue(termios.tcgetattr(terminal.master)[3] & termios.ECHO)


if __name__ == "__main__":
    unittest.main()
