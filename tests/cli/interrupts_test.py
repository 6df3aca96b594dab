"""Signals: what is said, what is left."""

import json
import signal
import subprocess
import threading
import unittest

from harness import LIMIT, PROGRAM, CommandLineTest


class Interrupts(CommandLineTest):
    def interrupted(self, number, *arguments):
        """Sends the signal while the body of the response is on its way."""
        arrived = threading.Event()

        def answer(connection, head):
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf")
            arrived.set()
            while connection.recv(1024):
                pass
            return False

        server = self.start_server(answer)
        process = subprocess.Popen(
            [PROGRAM, "send", "--url", server.url, "-d", "x", *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment(),
            cwd=self.folder)
        self.assertTrue(arrived.wait(LIMIT))
        process.send_signal(number)
        output, error = process.communicate(timeout=LIMIT)
        return process.returncode, output, error

    def test_sigint_is_130_and_leaves_nothing(self):
        code, _, error = self.interrupted(signal.SIGINT, "-o", "out")
        self.assertEqual((130, b"\nmvserver: interrupted\n"), (code, error))
        self.assertEqual([], self.leftovers())
        self.assertEqual(["tmp"], sorted(p.name for p in self.folder.iterdir()))

    def test_sigint_with_json_prints_the_object(self):
        code, output, error = self.interrupted(signal.SIGINT, "--json", "-o", "out")
        self.assertEqual((130, b""), (code, error))
        self.assertEqual({"ok": False, "error": {"exit": 130, "kind": "interrupted",
                                                 "message": "interrupted"}}, json.loads(output))

    def test_sigterm_is_143(self):
        code, _, _ = self.interrupted(signal.SIGTERM, "-o", "out")
        self.assertEqual(143, code)
        self.assertEqual([], self.leftovers())


if __name__ == "__main__":
    unittest.main()
