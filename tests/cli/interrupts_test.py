"""Signals: what is said, what is left."""

import json
import os
import signal
import subprocess
import threading
import time
import unittest

from harness import LIMIT, PROGRAM, CommandLineTest, default_signals, read_body


class Interrupts(CommandLineTest):
    def start(self, *arguments, prepare=default_signals):
        return subprocess.Popen(
            [PROGRAM, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            env=self.environment(), cwd=self.folder, preexec_fn=prepare)

    def interrupted(self, number, *arguments, prepare=default_signals):
        """Sends the signal while the body of the response is on its way."""
        arrived = threading.Event()
        signalled = threading.Event()

        def answer(connection, head):
            read_body(connection, head)
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\nhalf")
            arrived.set()
            signalled.wait(LIMIT)
            connection.sendall(b"half")
            return False

        server = self.start_server(answer)
        process = self.start("send", "--url", server.url, "-d", "x", *arguments, prepare=prepare)
        self.assertTrue(arrived.wait(LIMIT))
        process.send_signal(number)
        if prepare == default_signals:
            process.wait(LIMIT)
        signalled.set()
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

    def test_sighup_is_129(self):
        code, _, _ = self.interrupted(signal.SIGHUP, "-o", "out")
        self.assertEqual(129, code)
        self.assertEqual(["tmp"], sorted(p.name for p in self.folder.iterdir()))

    def test_a_signal_that_was_ignored_from_the_start_stays_ignored(self):
        for number in (signal.SIGINT, signal.SIGHUP):
            with self.subTest(number=number):
                self.assertEqual((0, b"halfhalf", b""), self.interrupted(
                    number, prepare=lambda: signal.signal(number, signal.SIG_IGN)))

    def test_many_signatures_on_their_way_go_too(self):
        hub = self.start_hub()
        names = [f"{number:03}" for number in range(70)]
        for name in names:
            self.file(name, name)
        # The program waits in open() for a reader of the last one.
        os.mkfifo(self.folder / f"{names[-1]}.p7s")
        process = self.start("--hub", hub.url, "sign", *names)
        deadline = time.monotonic() + LIMIT
        while len(self.signatures()) < len(names) and time.monotonic() < deadline:
            self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        self.assertEqual((b"", b"\nmvserver: interrupted\n"), process.communicate(timeout=LIMIT))
        self.assertEqual([f"{names[-1]}.p7s"], self.signatures())

    def signatures(self):
        return sorted(path.name for path in self.folder.glob("*.p7s*"))


if __name__ == "__main__":
    unittest.main()
