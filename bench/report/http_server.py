"""An nginx of its own on free ports of 127.0.0.1, in a temporary folder, ended by its process."""
import contextlib
import gzip
import pathlib
import socket
import subprocess
import tempfile
import time

import sink

TEMPLATE = pathlib.Path(__file__).with_name("nginx.conf.in")
RECORD = b'<entry id="%07d"><kind>invoice</kind><amount currency="EUR">%d</amount></entry>\n'


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def make_certificate(folder):
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
         "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
         "-keyout", folder / "server.key", "-out", folder / "server.crt"],
        check=True, capture_output=True)


def make_files(folder, sizes, inflated):
    files = folder / "files"
    files.mkdir()
    for name in ("large", "huge"):
        with open(files / name, "wb") as out:
            out.truncate(sizes[name])
    with gzip.open(files / "gzip", "wb", compresslevel=6) as out:
        piece = b"".join(RECORD % (i, i * 7919 % 100000) for i in range(20000))
        for _ in range(inflated // len(piece)):
            out.write(piece)


def wait_until_open(port, server):
    for _ in range(200):
        if server.poll() is not None:
            break
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port)):
            return
        time.sleep(0.05)
    raise RuntimeError("nginx does not answer on its port")


@contextlib.contextmanager
def running(sizes, inflated, small):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        folder.chmod(0o755)
        make_certificate(folder)
        make_files(folder, sizes, inflated)
        places = {"folder": name, "port": str(free_port()), "tls_port": str(free_port()),
                  "small": "x" * small}
        text = TEMPLATE.read_text()
        for key, value in places.items():
            text = text.replace(f"@{key}@", value)
        (folder / "nginx.conf").write_text(text)
        with open(folder / "start.log", "wb") as log:
            server = subprocess.Popen(["nginx", "-p", name, "-c", folder / "nginx.conf"],
                                      stdout=log, stderr=log)
        try:
            wait_until_open(int(places["port"]), server)
            with sink.running(folder / "server.crt", folder / "server.key") as sinks:
                yield ({"nginx": (places["port"], places["tls_port"]), "sink": sinks},
                       folder / "server.crt")
        finally:
            server.terminate()
            server.wait(timeout=20)
