"""Runs mvserver, mvhub and small scripted servers. Everything stays on 127.0.0.1."""

import fcntl
import json
import os
import pathlib
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import termios
import threading
import unittest

PROGRAM = os.environ["MVSERVER_PROGRAM"]
HUB = os.environ["MVHUB_PROGRAM"]
SOURCES = pathlib.Path(os.environ["MVSERVER_SOURCES"])
LIMIT = 60  # seconds that any single program may take

ENVIRONMENTS = """\
Development
1
3
type=orders
url=http://127.0.0.1:16064/request
version=1.0

Produktion Süd
3
3
type=orders
url=https://www.example.com/orders
version=2.0

"""


def clean_environment(folder, **more):
    """The tester's environment without anything that steers mvserver or a forward proxy."""
    steering = re.compile(r"(?i)MV_|MVHUB_|(http|https|all|no)_proxy$|TE?MP$|TMPDIR$|NO_COLOR$")
    environment = {k: v for k, v in os.environ.items() if not steering.match(k)}
    return {**environment, "TMPDIR": str(folder), **more}


class Hub:
    """A hub on a free port. It makes its keys at first use, in `state`."""

    def __init__(self, folder, *options, state=None, environments=ENVIRONMENTS):
        directory = folder / "environments.txt"
        directory.write_text(environments, encoding="utf-8")
        self.state = state or folder / "hub-state"
        self.process = subprocess.Popen(
            [HUB, "--port", "0", "--environments", str(directory), "--state-dir", str(self.state),
             "--faults", "--quiet", *options],
            stdout=subprocess.PIPE, text=True, env=clean_environment(folder))
        first = self.process.stdout.readline()
        self.url = re.search(r"http://\S+", first).group()

    def ended(self):
        """The exit status, once the hub ends by itself."""
        return self.process.wait(LIMIT)

    def stop(self):
        if self.process.poll() is None:
            self.process.terminate()
        self.process.wait(LIMIT)
        self.process.stdout.close()


class ScriptedServer:
    """Answers every connection with what `answer` makes of the request's bytes.

    `answer(connection, head)` gets the socket and the bytes up to the empty line.
    """

    def __init__(self, answer):
        self.answer = answer
        self.heads = []
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        self.url = f"http://127.0.0.1:{self.port}"
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:  # closed
                return
            threading.Thread(target=self.converse, args=(connection,), daemon=True).start()

    def converse(self, connection):
        with connection:
            try:
                while True:
                    head = read_head(connection)
                    if not head:
                        return
                    self.heads.append(head)
                    if self.answer(connection, head) is False:
                        return
            except ConnectionError:
                return

    def stop(self):
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()


def read_head(connection):
    data = b""
    while b"\r\n\r\n" not in data:
        more = connection.recv(1)
        if not more:
            return b""
        data += more
    return data


def read_body(connection, head):
    length = re.search(rb"(?i)content-length: *(\d+)", head)
    remaining = int(length.group(1)) if length else 0
    body = b""
    while len(body) < remaining:
        more = connection.recv(remaining - len(body))
        if not more:
            raise ConnectionError("the body ended early")
        body += more
    return body


def fixed_answer(head_lines, body):
    """An answer for ScriptedServer: reads the body, then says this."""

    def answer(connection, head):
        if b"expect: 100-continue" in head.lower():
            connection.sendall(b"HTTP/1.1 100 Continue\r\n\r\n")
        read_body(connection, head)
        connection.sendall("\r\n".join(head_lines).encode() +
                           f"\r\nContent-Length: {len(body)}\r\n\r\n".encode() + body)

    return answer


class CommandLineTest(unittest.TestCase):
    """A temporary folder for each test, and what runs the program in it."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="mvserver-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir()

    def environment(self, **more):
        return clean_environment(self.temporary, **more)

    def run_program(self, *arguments, env=None, stdin=None, **more):
        """Runs mvserver; standard input is empty unless given as bytes."""
        return subprocess.run(
            [PROGRAM, *map(str, arguments)], input=stdin if stdin is not None else b"",
            capture_output=True, timeout=LIMIT, env=self.environment(**(env or {})),
            cwd=self.folder, **more)

    def succeed(self, *arguments, **more):
        done = self.run_program(*arguments, **more)
        self.assertEqual(0, done.returncode, done.stderr.decode(errors="replace"))
        return done

    def fail_with(self, code, *arguments, **more):
        done = self.run_program(*arguments, **more)
        self.assertEqual(code, done.returncode, (done.stdout + done.stderr).decode(errors="replace"))
        return done.stderr.decode()

    def json_of(self, *arguments, **more):
        """The exit code and the one JSON object that was printed."""
        done = self.run_program("--json", *arguments, **more)
        self.assertEqual(1, done.stdout.count(b"\n"), done.stdout)
        return done.returncode, json.loads(done.stdout)

    def start_hub(self, *options, **more):
        hub = Hub(self.folder, *options, **more)
        self.addCleanup(hub.stop)
        return hub

    def start_server(self, answer):
        server = ScriptedServer(answer)
        self.addCleanup(server.stop)
        return server

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def shared_library(self, source):
        """A shared library made of C source."""
        path = self.folder / "other.so"
        subprocess.run(["cc", "-shared", "-fPIC", "-o", path, self.file("other.c", source)],
                       check=True)
        return path.resolve()

    def preload(self, library):
        """The variables that put the library in front of those that the program comes with."""
        return {"LD_PRELOAD": str(library), "ASAN_OPTIONS": "verify_asan_link_order=0"}

    def leftovers(self):
        """What the program left in its temporary folder."""
        return sorted(path.name for path in self.temporary.iterdir())


HELD_PORTS = []


def closed_port():
    """The URL of a port where nobody listens, nor starts to: it stays taken while the tests run."""
    holder = socket.socket()
    holder.bind(("127.0.0.1", 0))
    HELD_PORTS.append(holder)
    return f"http://127.0.0.1:{holder.getsockname()[1]}"


class OnTerminal:
    """The program on a pseudo terminal: standard input, error and, unless redirected, output."""

    def __init__(self, test, *arguments, env=None, stdout=None, pass_fds=()):
        self.master, slave = os.openpty()
        self.seen = b""
        self.process = subprocess.Popen(
            [PROGRAM, *map(str, arguments)], stdin=slave,
            stdout=slave if stdout is None else stdout, stderr=slave, start_new_session=True,
            preexec_fn=lambda: take_terminal(slave),
            env=test.environment(**(env or {})), cwd=test.folder, pass_fds=pass_fds)
        os.close(slave)
        test.addCleanup(self.close)

    def read_until(self, text):
        """Reads until `text` has been shown; fails at the end of output."""
        while text not in self.seen:
            if not self.read_more():
                raise AssertionError(f"{text!r} was not shown: {self.seen!r}")

    def read_more(self):
        ready, _, _ = select.select([self.master], [], [], LIMIT)
        try:
            piece = os.read(self.master, 65536) if ready else b""
        except OSError:  # the program has ended
            piece = b""
        self.seen += piece
        return bool(piece)

    def type(self, text):
        os.write(self.master, text)

    def finish(self):
        """Everything shown, and the exit status."""
        while self.read_more():
            pass
        return self.seen, self.process.wait(LIMIT)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait(LIMIT)
        os.close(self.master)


def take_terminal(slave):
    fcntl.ioctl(slave, termios.TIOCSCTTY, 0)
    default_signals()


def default_signals():
    """Before a program starts: tests that run in the background hand on an ignored SIGINT."""
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        signal.signal(number, signal.SIG_DFL)
