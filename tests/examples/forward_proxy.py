#!/usr/bin/env python3
"""Runs a command behind a forward proxy that demands Basic credentials.

usage: forward_proxy.py USER PASSWORD COMMAND [ARGUMENT...]

The proxy listens on a free loopback port, named in http_proxy, and relays a request that carries
the right credentials; any other is answered with 407. The command does not learn where the hub is:
requests to a known hub go there directly.
"""
import base64
import http.client
import os
import subprocess
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import urlsplit


class ForwardProxy(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    wanted = ""

    def log_message(self, *_):
        pass

    def admitted(self):
        return self.headers.get("Proxy-Authorization") == self.wanted

    def handle_expect_100(self):
        return super().handle_expect_100() if self.admitted() else self.challenge()

    def challenge(self):
        self.send_response(407)
        self.send_header("Proxy-Authenticate", 'Basic realm="gateway"')
        self.send_header("Content-Length", "0")
        self.send_header("Connection", "close")
        self.end_headers()
        self.close_connection = True
        return False

    def body(self):
        if self.headers.get("Transfer-Encoding") != "chunked":
            return self.rfile.read(int(self.headers.get("Content-Length", 0)))
        pieces = []
        while size := int(self.rfile.readline(), 16):
            pieces.append(self.rfile.read(size))
            self.rfile.readline()
        self.rfile.readline()
        return b"".join(pieces)

    def do_POST(self):
        if not self.admitted():
            self.challenge()
            return
        target = urlsplit(self.path)
        hop = ("proxy-", "connection", "expect", "transfer-encoding", "content-length", "host")
        headers = {k: v for k, v in self.headers.items() if not k.lower().startswith(hop)}
        connection = http.client.HTTPConnection(target.netloc)
        connection.request("POST", target.path, self.body(), headers)
        answer = connection.getresponse()
        content = answer.read()
        self.send_response(answer.status, answer.reason)
        for name, value in answer.getheaders():
            if not name.lower().startswith(hop):
                self.send_header(name, value)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        self.wfile.write(content)
        connection.close()


def main():
    user, password, *command = sys.argv[1:]
    token = base64.b64encode(f"{user}:{password}".encode()).decode()
    ForwardProxy.wanted = "Basic " + token
    server = ThreadingHTTPServer(("127.0.0.1", 0), ForwardProxy)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    environment = dict(os.environ, http_proxy=f"http://127.0.0.1:{server.server_port}")
    for variable in ("no_proxy", "NO_PROXY", "MV_SERVERPROXY_HUB"):
        environment.pop(variable, None)
    result = subprocess.run(command, env=environment, timeout=60).returncode
    server.shutdown()
    sys.exit(result)


if __name__ == "__main__":
    main()
