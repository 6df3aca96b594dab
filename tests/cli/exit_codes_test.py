"""Every exit code, by what leads to it."""

import re
import socket
import unittest

from harness import CommandLineTest, closed_port, fixed_answer


def with_code(code, text=b"gone"):
    return fixed_answer([f"HTTP/1.1 {code} Whatever"], text)


class ExitCodes(CommandLineTest):
    def test_0_done(self):
        server = self.start_server(with_code(200))
        self.succeed("send", "--url", server.url, "-d", "x")

    def test_0_for_a_bad_answer_without_fail(self):
        server = self.start_server(with_code(500))
        self.assertEqual(b"gone", self.succeed("send", "--url", server.url, "-d", "x").stdout)

    def test_2_usage(self):
        for arguments in ([], ["fly"], ["send"], ["send", "--fly"],
                          ["send", "-d", "x", "-H", "no equals sign"],
                          ["send", "-d", "x", "-H", "=value"],
                          ["send", "-d", "x", "-H", "A=1", "-H", "A=2"],
                          ["send", "-d", "x", "-H", "A=1\r\nB=2"],
                          ["send", "-d", "x", "-d", "y", "-o", "one-file"],
                          ["send", "-d", "-", "-d", "-"],
                          ["send", "-d", "x", "--stream", "--text"],
                          ["send", "-d", "x", "--timeout", "-1"],
                          ["send", "-d", "x", "--log-level", "LOUD"],
                          ["send", "-d", "", "--text"],
                          ["env"], ["completion", "tcsh"], ["verify", "x"]):
            with self.subTest(arguments=arguments):
                self.assertIn("usage", self.fail_with(2, *arguments))

    def test_3_connection_refused(self):
        text = self.fail_with(3, "send", "--url", closed_port(), "-d", "x")
        self.assertRegex(text, r"^mvserver: connection: .*127\.0\.0\.1")

    def test_3_connection_lost_in_the_body(self):
        def answer(connection, head):
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort")
            return False

        server = self.start_server(answer)
        self.fail_with(3, "send", "--url", server.url, "-d", "x", "-o", "out")
        self.assertFalse((self.folder / "out").exists())

    def test_4_protocol(self):
        self.fail_with(4, "send", "--url", "file:///etc/passwd", "-d", "x")
        self.fail_with(4, "send", "--url", closed_port(), "-d", "x", "-H", "Host=other")

    def test_5_runtime(self):
        self.fail_with(5, "send", "--url", closed_port(), "-d", "x",
                       env={"MV_SERVERPROXY_SPOOL_LIMIT": "many"})

    def test_6_credentials(self):
        proxy = self.start_server(
            fixed_answer(["HTTP/1.1 407 No", 'Proxy-Authenticate: Basic realm="corp"'], b""))
        text = self.fail_with(6, "send", "--url", "http://192.0.2.1/", "-d", "x",
                              env={"http_proxy": proxy.url}, start_new_session=True)
        self.assertIn("corp", text)

    def test_7_conversion(self):
        icu = self.json_of("doctor", "--hub", closed_port())[1]["checks"][-1]["value"]
        version = re.search(r"ICU (\d+)", icu).group(1)
        other = self.shared_library("void* ucnv_open_%s(const char* name, int* error) "
                                    "{ (void)name; *error = 2; return 0; }" % version)
        text = self.fail_with(7, "env", "list", env=self.preload(other))
        self.assertIn("conversion: Error opening converter U_MISSING_RESOURCE_ERROR", text)

    def test_8_unrecognised(self):
        other = self.shared_library("int MvServerProxy_Init(void* a, void* r) "
                                    "{ (void)a; (void)r; return 7; }")
        text = self.fail_with(8, "send", "-d", "x", env=self.preload(other))
        self.assertRegex(text, r"^mvserver: unrecognised: ")

    def test_9_local_file(self):
        directory = self.folder / "folder"
        directory.mkdir()
        for arguments in (["-d", "@missing"], ["-d", f"@{directory}"],
                          ["-d", "x", "-o", "missing/out"], ["-d", "x", "-o", f"{directory}"],
                          ["-d", "x", "--log-dir", "missing"]):
            with self.subTest(arguments=arguments):
                server = self.start_server(with_code(200))
                text = self.fail_with(9, "send", "--url", server.url, *arguments)
                self.assertRegex(text, r"^mvserver: file: cannot .*(missing|folder)")

    def test_9_a_body_with_a_zero_byte_is_refused_with_its_place(self):
        path = self.file("binary", b"a" * 70000 + b"\0b")
        server = self.start_server(with_code(200))
        text = self.fail_with(9, "send", "--url", server.url, "-d", f"@{path}")
        self.assertIn("zero byte at offset 70000", text)

    def test_22_the_server_answers_failure_with_fail(self):
        server = self.start_server(with_code(404, b"no such \x1b[31mpage"))
        text = self.fail_with(22, "send", "--fail", "--url", server.url, "-d", "x", "-o", "out")
        self.assertIn("the server answered 404 Whatever: no such \\x1b[31mpage", text)
        self.assertFalse((self.folder / "out").exists())

    def test_22_only_from_400_on(self):
        server = self.start_server(with_code(399))
        self.succeed("send", "--fail", "--url", server.url, "-d", "x")

    def test_28_the_exchange_or_a_silence_takes_too_long(self):
        def silent(connection, head):
            connection.recv(1 << 16)
            connection.recv(1 << 16)

        server = self.start_server(silent)
        for option in ("--timeout", "--idle-timeout"):
            with self.subTest(option=option):
                text = self.fail_with(28, "send", "--url", server.url, "-d", "x", option, "0.2")
                self.assertRegex(text, r"^mvserver: timeout: ")

    def test_28_connecting_takes_too_long(self):
        with socket.create_server(("127.0.0.1", 0), backlog=0) as full:
            waiting = [socket.socket() for _ in range(4)]
            for client in waiting:  # more than the queue takes: later ones get no answer
                client.setblocking(False)
                client.connect_ex(full.getsockname())
            url = f"http://127.0.0.1:{full.getsockname()[1]}"
            self.fail_with(28, "send", "--url", url, "-d", "x", "--connect-timeout", "0.3")
            for client in waiting:
                client.close()

    def test_the_error_names_the_log(self):
        text = self.fail_with(3, "send", "--url", closed_port(), "-d", "x")
        self.assertRegex(text, r"\n  log: " + str(self.temporary) +
                         r"/mvserver-\w+/CppBinding_\d+_Morvenn\.log\n$")
        folder = next(self.temporary.iterdir())
        self.assertEqual(0o700, folder.stat().st_mode & 0o777)
        self.assertEqual(1, len(list(folder.iterdir())))


if __name__ == "__main__":
    unittest.main()
