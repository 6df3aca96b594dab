"""--json: one object for results and for errors."""

import base64
import unittest

from harness import CommandLineTest, closed_port, fixed_answer


class Json(CommandLineTest):
    def test_send_tells_about_each_exchange(self):
        server = self.start_server(
            fixed_answer(["HTTP/1.1 201 Made", "Content-Type: text/plain"], "süß".encode()))
        code, result = self.json_of("send", "--url", server.url, "-d", "hello")
        exchange = result["exchanges"][0]
        self.assertGreater(exchange.pop("seconds"), 0)
        self.assertEqual((0, True), (code, result["ok"]))
        self.assertEqual({"code": "201", "text": "Made", "contentType": "text/plain",
                          "bytesSent": 5, "bytesReceived": 5, "body": "süß"}, exchange)

    def test_a_body_that_is_no_text_comes_as_base64(self):
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"\xff\x00\xfe"))
        _, result = self.json_of("send", "--url", server.url, "-d", "x")
        exchange = result["exchanges"][0]
        self.assertNotIn("body", exchange)
        self.assertEqual(b"\xff\x00\xfe", base64.b64decode(exchange["bodyBase64"]))

    def test_base64_of_a_long_body_is_in_one_piece(self):
        body = bytes(range(256)) * 1000
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], body))
        _, result = self.json_of("send", "--url", server.url, "-d", "x")
        self.assertEqual(base64.b64encode(body).decode(), result["exchanges"][0]["bodyBase64"])

    def test_with_an_output_file_its_name_stands_for_the_body(self):
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"fine"))
        _, result = self.json_of("send", "--url", server.url, "-d", "x", "-o", "out")
        self.assertEqual("out", result["exchanges"][0]["file"])
        self.assertNotIn("body", result["exchanges"][0])

    def test_an_error_is_an_object_with_code_kind_message_hint_and_log(self):
        code, result = self.json_of("send", "--url", closed_port(), "-d", "x")
        self.assertEqual(3, code)
        self.assertFalse(result["ok"])
        self.assertEqual({"exit", "kind", "message", "hint", "log"}, set(result["error"]))
        self.assertEqual((3, "connection"), (result["error"]["exit"], result["error"]["kind"]))

    def test_a_usage_error_is_an_object_too(self):
        code, result = self.json_of("send", "--fly")
        self.assertEqual((2, 2, "usage"),
                         (code, result["error"]["exit"], result["error"]["kind"]))

    def test_the_variable_selects_it_for_usage_errors_as_well(self):
        done = self.run_program("fly", env={"MV_JSON": "true"})
        self.assertTrue(done.stdout.startswith(b'{"error":'), done.stdout)

    def test_nothing_goes_to_standard_error(self):
        done = self.run_program("--json", "send", "--url", closed_port(), "-d", "x")
        self.assertEqual(b"", done.stderr)

    def test_version(self):
        code, result = self.json_of("version")
        self.assertEqual({"ok": True, "version": result["version"]}, result)
        self.assertRegex(result["version"], r"^\d+\.\d+\.\d+$")


if __name__ == "__main__":
    unittest.main()
