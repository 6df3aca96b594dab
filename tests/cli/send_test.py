"""What `mvserver send` sends, and what it prints."""

import hashlib
import re
import unittest

from harness import CommandLineTest, fixed_answer


class Send(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.hub = self.start_hub()

    def send(self, *arguments, **more):
        return self.succeed("send", "--url", self.hub.url + "/echo", *arguments, **more)

    def test_the_body_of_the_response_is_all_that_is_on_standard_output(self):
        done = self.send("-d", "hello")
        self.assertEqual(b"hello", done.stdout)
        self.assertEqual(b"", done.stderr)

    def test_a_body_from_a_file_comes_back_unchanged(self):
        document = b"".join(b"<line number='%d'/>\n" % i for i in range(80000))
        self.assertGreater(len(document), 1 << 20)
        path = self.file("document.xml", document)
        out = self.folder / "out.xml"
        self.send("--compressed", "-d", f"@{path}", "-o", out)
        self.assertEqual(hashlib.sha256(document).digest(),
                         hashlib.sha256(out.read_bytes()).digest())

    def test_a_dash_reads_the_body_from_standard_input(self):
        self.assertEqual(b"piped", self.send("-d", "-", stdin=b"piped").stdout)

    def test_an_empty_body_is_sent_as_a_stream(self):
        self.assertEqual(b"", self.send("-d", "").stdout)

    def test_text_mode_sends_the_same_body(self):
        path = self.file("body.txt", "a text")
        self.assertEqual(b"a text", self.send("--text", "-d", f"@{path}").stdout)

    def test_several_bodies_are_answered_in_order(self):
        self.assertEqual(b"onetwo", self.send("-d", "one", "-d", "two").stdout)

    def test_each_body_may_have_its_output_file(self):
        self.send("-d", "one", "-d", "two", "-o", "1.txt", "-o", "2.txt")
        self.assertEqual("one", (self.folder / "1.txt").read_text())
        self.assertEqual("two", (self.folder / "2.txt").read_text())

    def test_nothing_is_left_in_the_temporary_folder(self):
        self.send("-d", "hello")
        self.assertEqual([], self.leftovers())


class HeadersSent(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"fine"))

    def sent_with(self, *arguments):
        self.succeed("send", "--url", self.server.url, "-d", "x", *arguments)
        return self.server.heads[-1].decode()

    def test_header_options_become_request_headers(self):
        head = self.sent_with("-H", "Service-Name=orders", "--header", "X-Sum=a=b")
        self.assertIn("Service-Name: orders\r\n", head)
        self.assertIn("X-Sum: a=b\r\n", head)

    def test_the_environment_option_is_the_env_name_header(self):
        self.assertIn("Env-Name: Test\r\n", self.sent_with("--env", "Test"))

    def test_compressed_asks_for_gzip(self):
        self.assertRegex(self.sent_with("--compressed"), re.compile("accept-encoding: gzip", re.I))
        self.assertNotRegex(self.sent_with(), re.compile("accept-encoding: gzip", re.I))


class Verbose(CommandLineTest):
    def test_the_exchange_is_shown_on_standard_error_without_secrets(self):
        hub = self.start_hub()
        url = hub.url.replace("://", "://joe:canary@") + "/echo?token=canary"
        done = self.run_program("-v", "send", "--url", url, "-H", "Authorization=canary",
                                "-H", "Service-Name=orders", "-d", "hello")
        shown = done.stderr.decode()
        self.assertIn("> Service-Name=orders\n", shown)
        self.assertIn("> Authorization=(6 bytes not shown)\n", shown)
        self.assertIn("/echo?***", shown)
        self.assertNotIn("canary", shown)

    def test_the_response_is_shown_too(self):
        hub = self.start_hub()
        done = self.succeed("-v", "send", "--url", hub.url + "/echo", "-d", "hello")
        self.assertIn("< 200 OK\n", done.stderr.decode())
        self.assertIn("sent 5 bytes, received 5 bytes\n", done.stderr.decode())

    def test_twice_verbose_shows_the_time(self):
        hub = self.start_hub()
        arguments = ("send", "--url", hub.url + "/echo", "-d", "hello")
        self.assertNotIn("after", self.succeed("-v", *arguments).stderr.decode())
        self.assertRegex(self.succeed("-vv", *arguments).stderr.decode(), r"after \d+\.\d+ s")


if __name__ == "__main__":
    unittest.main()
