"""Sessions: in one call, and between calls."""

import unittest

from harness import CommandLineTest, fixed_answer


class Sessions(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.hub = self.start_hub()
        self.path = self.folder / "session"

    def send(self, *arguments):
        return self.succeed("send", "--url", self.hub.url + "/echo", *arguments)

    def session(self):
        return self.path.read_text().strip()

    def test_the_bodies_of_one_call_share_a_session(self):
        ids = iter(["first", "second"])

        def answer(connection, head):
            fixed_answer(["HTTP/1.1 200 OK", f"ResponseSessionID: {next(ids)}"], b"")(
                connection, head)

        server = self.start_server(answer)
        self.succeed("send", "--url", server.url, "-d", "1", "-d", "2")
        self.assertNotIn(b"SessionID", server.heads[0])
        self.assertIn(b"SessionID: first\r\n", server.heads[1])

    def test_a_file_keeps_the_session_between_calls(self):
        for arguments in (["-d", "1"], ["-d", "2"], ["--text", "-d", "3"],
                          ["--compressed", "-d", "4"]):
            self.assertEqual(arguments[-1].encode(),
                             self.send("--session", self.path, *arguments).stdout)
            first = self.session()
        self.assertRegex(first, r"^[0-9a-f]{32}$")
        self.send("--session", self.path, "-d", "5")
        self.assertEqual(first, self.session())

    def test_the_file_is_for_its_owner_only(self):
        self.send("--session", self.path, "-d", "1")
        self.assertEqual(0o600, self.path.stat().st_mode & 0o777)

    def test_an_answer_without_a_session_removes_the_file(self):
        self.path.write_text("stale\n")
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b""))
        self.succeed("send", "--url", server.url, "-d", "1", "--session", self.path)
        self.assertIn(b"SessionID: stale\r\n", server.heads[0])
        self.assertFalse(self.path.exists())

    def test_a_file_with_anything_else_in_it_is_refused(self):
        for content in ("two words", "two\nlines", "x" * 5000, "caf\u00e9"):
            with self.subTest(content=content[:10]):
                self.path.write_text(content, encoding="utf-8")
                text = self.fail_with(9, "send", "--url", self.hub.url, "-d", "1", "--session",
                                      self.path)
                self.assertIn("does not hold a session id", text)

    def test_it_excludes_a_session_header(self):
        self.fail_with(2, "send", "-d", "1", "--session", self.path, "-H", "SessionID=x")


if __name__ == "__main__":
    unittest.main()
