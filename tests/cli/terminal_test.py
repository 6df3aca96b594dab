"""What is different on a terminal."""

import subprocess
import threading
import unittest

from harness import LIMIT, CommandLineTest, OnTerminal, closed_port, fixed_answer, read_body


class TextOfTheServer(CommandLineTest):
    HOSTILE = b"a\x1b]0;title\x07b\x7f\xc2\x9bc\nnext\tline"

    def setUp(self):
        super().setUp()
        self.server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], self.HOSTILE))

    def test_control_characters_are_escaped_on_a_terminal(self):
        shown, code = OnTerminal(self, "send", "--url", self.server.url, "-d", "x").finish()
        self.assertEqual(0, code)
        self.assertEqual(b"a\\x1b]0;title\\x07b\\x7f\\xc2\\x9bc\r\nnext\tline", shown)

    def test_and_pass_unchanged_to_a_pipe(self):
        done = self.succeed("send", "--url", self.server.url, "-d", "x")
        self.assertEqual(self.HOSTILE, done.stdout)

    def test_a_control_character_split_between_two_pieces_is_escaped(self):
        second = threading.Event()

        def answer(connection, head):
            read_body(connection, head)
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\na\xc2")
            second.wait(LIMIT)
            connection.sendall(b"\x9bb")

        server = self.start_server(answer)
        terminal = OnTerminal(self, "send", "--url", server.url, "-d", "x")
        terminal.read_until(b"a")
        second.set()
        self.assertEqual((b"a\\xc2\\x9bb", 0), terminal.finish())


class Colour(CommandLineTest):
    def shown(self, **env):
        return OnTerminal(self, "send", "--url", closed_port(), "-d", "x", env=env).finish()[0]

    def test_errors_are_red_on_a_terminal(self):
        self.assertIn(b"\x1b[1;31mmvserver: \x1b[0mconnection: ", self.shown())

    def test_no_color_turns_it_off(self):
        self.assertNotIn(b"\x1b", self.shown(NO_COLOR="1"))


class Meter(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.second = threading.Event()

        def answer(connection, head):
            read_body(connection, head)
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\nhalf")
            self.second.wait(LIMIT)
            connection.sendall(b"half")

        self.server = self.start_server(answer)

    def on_terminal(self, *arguments, stdout=None):
        return OnTerminal(self, "send", "--url", self.server.url, "-d", "hello", *arguments,
                          stdout=stdout)

    def test_it_is_shown_when_the_data_goes_elsewhere_and_removed_at_the_end(self):
        terminal = self.on_terminal("-o", "out")
        terminal.read_until(b"sent 5 B of 5 B, received ")
        self.second.set()
        shown, code = terminal.finish()
        self.assertEqual(0, code)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)

    def test_it_is_not_shown_when_the_data_goes_to_the_terminal(self):
        self.second.set()
        self.assertEqual((b"halfhalf", 0), self.on_terminal().finish())

    def test_no_progress_turns_it_off(self):
        self.second.set()
        terminal = self.on_terminal("--no-progress", "-o", "out")
        self.assertEqual((b"", 0), terminal.finish())

    def test_progress_shows_it_without_a_terminal(self):
        self.second.set()
        done = self.succeed("send", "--url", self.server.url, "-d", "hello", "--progress")
        self.assertIn(b"\rsent 5 B of 5 B, received 0 B", done.stderr)
        self.assertEqual(b"halfhalf", done.stdout)

    def test_it_is_not_shown_without_a_terminal(self):
        self.second.set()
        done = self.succeed("send", "--url", self.server.url, "-d", "hello")
        self.assertEqual(b"", done.stderr)


if __name__ == "__main__":
    unittest.main()
