#!/usr/bin/env python3
"""Writes the seed corpora anew: fuzz/make_seeds.py. Deterministic; inputs that a fuzzer found are
kept under other names and left alone."""
import gzip
import hashlib
import pathlib
import random
import struct
import zlib
from base64 import b64encode

HERE = pathlib.Path(__file__).resolve().parent
RANDOM = random.Random(1)


def noise(size):
    return bytes(RANDOM.randrange(256) for _ in range(size))


def packed(data, level=6):
    return gzip.compress(data, level, mtime=0)


def gzip_stream():
    texts = [b"", b"a", b"line\n" * 10, noise(100), noise(5000), b"x" * 70000, noise(17000)]
    for text in texts:
        for block in (b"\x00", b"\x01", b"\xff"):
            yield block + packed(text)
    whole = packed(b"line of text\n" * 200)
    for cut in (1, 9, 10, 11, len(whole) // 2, len(whole) - 8, len(whole) - 1):
        yield b"\x00" + whole[:cut]
    for place in (0, 3, 12, 30, len(whole) - 6):
        yield b"\x02" + whole[:place] + bytes([whole[place] ^ 0x55]) + whole[place + 1 :]
    yield b"\x01" + whole + whole
    yield b"\x01" + whole + b"trailing"
    yield b"\x01" + zlib.compress(b"zlib " * 50)


def response_headers():
    lines = [
        b"ResponseHeaderResponseCode=200\r\n",
        b" ResponseHeaderResponseCode = 200 \r\n",
        b"ResponseSessionID=abc\n",
        b"ResponseHeaderCompression=true\n",
        b"X=a=b\n",
        b"X\n",
        b"=v\n",
        b"==\n",
        b"\r\n",
        b"\t=\x0b\n",
        b"A=1\nA=2\n",
        b"long=" + b"v" * 600 + b"\n",
        b"\xff\x00=\x00\xff\n",
    ]
    for size in (b"\x00", b"\x07"):
        for line in lines:
            yield size + line
        yield size + b"".join(lines)


def credential_challenge():
    head = b"\x04user\x06secret\x00"
    for text in (
        b"host:gateway\nport:3128\nrealm:corp\n",
        b"host:a:b\n",
        b"HOST:a\n",
        b"host:\n",
        b"host\n",
        b"",
        b"\n",
        b":\n",
        b"::\n",
        b"realm:a\nrealm:b\n",
        b"host:gateway\r\nport:3128\r\nrealm:corp\r\n",
        b"realm:no line feed",
        b"host:x\x00y\n",
        b"port:1\x00",
        b"r" * 300 + b":v\n",
        b"realm:" + b"v" * 300,
        b"\xff:\xff\n",
        b"host :x\n",
        b" host:x\n",
        b"host:x\nhost:\n",
    ):
        yield head + text
        yield b"\x1f" + noise(31) + b"\x1f" + noise(31) + b"\x05dom\r\n" + text


def directory_answer():
    yield b""
    for text in (
        "Production\n7\n2\ntype=web\nurl=http://p\n\n",
        "A\n1\n1\ntype=x\n1\ntype=y\n\nB\n2\n0\n\n",
        "A\r\n1\r\n1\r\ntype=x\r\n\r\n",
        "A\n\n\n",
        "A\n1\n\nB\n2\n\n",
        "A\n 7 \nabc\n\n",
        "A\nabc\n-3\n\n",
        "A\n1\n2147483647\ntype=x\n",
        "A\n1\n99999999999\na=b\n",
        "A\n1\n3\n=skip\nflag\n a = b : c = d \n\n",
        "A\n1\n2\ntype=x\ntype=y\n\n",
        "A\n1\n1\ntype=x\n1\ntype=x\n\n",
        "A\n1\n1\ntype=x",
        "\nA\n1\n\n",
        " \n1\n0\n\n",
        "A\n+5\n1\n\n\n",
        "A\n1\n1\n\t=\x0b\n\n",
        "A",
        "A\n1",
        "A\n1\n1",
    ):
        yield text.encode()
    yield b"A\n1\n1\nk\x00=v\x00w\n\n"


def conversion():
    texts = [
        b"plain", "Grüße".encode(), "日本語".encode(), "😀".encode(), b"\xff", b"\xc3", b"\xe2\x82",
        b"\xf0\x9f\x98", b"\xed\xa0\x80", b"\xf4\x90\x80\x80", b"\xc0\x80", b"a\x00b", b"",
    ]
    for text in texts:
        for front in range(4):
            yield bytes([front, 1]) + text * 3
    yield b"\x02\x02" + "😀".encode() * 2000
    yield b"\x02\x03" + "é".encode() * 15000


def signature_answer():
    def answer(*entries, flag=1, count=None):
        record = struct.pack(">i", len(entries) if count is None else count)
        for entry in entries:
            record += bytes([flag]) + struct.pack(">i", len(entry)) + entry
        return record

    records = [
        answer(b"ABC"), answer(b"ABC", flag=0), answer(), answer(b""), answer(b"a", b"bb", b"ccc"),
        answer(count=-1), answer(count=3), answer(b"x", count=2), answer(b"ABC")[:-1],
        answer(b"ABC")[:8], b"", b"\x00", b"\x00\x00\x00", answer(noise(500)),
        struct.pack(">iBi", 1, 1, -1) + b"rest", struct.pack(">iBi", 2, 1, -6) + b"rest",
        struct.pack(">iBi", 1, 1, 2147483647) + b"rest", struct.pack(">iBi", 2, 1, 2147483647) + b"r",
        struct.pack(">iBi", 2, 1, -2147483648) + b"rest", answer(*[b"x"] * 50),
    ]
    for record in records:
        yield record
        yield b64encode(record)
    yield b"AAAAAQEAAAADQUJD=more"
    yield b"AAAAAQEAAAADQUJ!"


def base64():
    for size in list(range(18)) + [63, 64, 65, 300]:
        data = noise(size)
        yield data
        yield b64encode(data)
    yield b"QUJD\nREVG"
    yield b"QUI=QUI="
    yield b"Q"


def logger():
    names = [b"", b"Prod", b"../x", b"a/b", b"n" * 180, b"n" * 255, b"CR\r\nLF", b"%s%n", b"\xff\xfe"]
    for name in names:
        for level in range(5):
            yield bytes([level, len(name)]) + name + b"a text"
    yield b"\x01\x01x"
    yield b"\x01\x01x" + b"two\nlines\x00and zeros" + noise(300)


def exchange_script():
    good = bytes([0, 2]) + bytes([20, 9]) + b"A=1\n\nbody" + bytes([4])
    for scenario in range(49):
        yield bytes([scenario]) + good
    for first in (16, 17, 18):
        body = bytes([{16: 0, 17: 1, 18: 2}[first]])
        yield bytes([8]) + body + bytes([20, 12]) + b"host:a\nport:" + good
    yield bytes([2, 0, 2, 20, 5]) + b"\nAAAA" + bytes([5])
    yield bytes([18, 20, 40]) + b"ResponseHeaderCompression=true\n\n" + packed(b"x")[:8] + bytes([4])
    yield bytes([33, 20, 30]) + b"Production\n7\n1\ntype=web\n\n" + bytes([3, 4])


def proxy_request():
    for form in (b"\x00", b"\x01"):
        for text in (
            b"\r\n", b"A=1\r\nB=2\r\n\r\n", b"A=1\r\n\r\nthe body", b"getEnv:All\r\n\r\n",
            b"getEnv:mapURLtoEnv::http://h/x\r\n\r\n", b"ShutdownServer\r\n\r\n",
            b"ShutdownServer\r\nSessionID=5\r\n\r\n", b"B=1\r\nA=2\r\n\r\n", b"A=1\r\nA=2\r\n\r\n",
            b"A=1\rB\r\n\r\n", b"A=1\nB=2\r\n\r\n", b"=x\r\n\r\n", b"noequals\r\n\r\n", b"",
            b"Base-Full-Url=http://user:pw@host:80/p?q\r\n\r\n", b"Host=evil\r\n\r\n",
            b"Server-Url=file:///etc/passwd\r\n\r\n", b"Content-Length=5\r\n\r\n",
            b"Proxy-Authorization=x\r\n\r\n", b"A=\x00\r\n\r\n", b"Base-Full-Url=null\r\n\r\nx",
            b"SessionID=a%3Db\r\n\r\n",
        ):
            yield form + text


def proxy_response():
    def lines(*texts, connect=0):
        return b"".join(bytes([connect, len(text)]) + text for text in texts)

    heads = [
        (b"HTTP/1.1 200 OK\r\n", b"Content-Type: text/xml\r\n", b"\r\n"),
        (b"HTTP/1.1 407 Auth\r\n", b"Proxy-Authenticate: Basic realm=\"a\"\r\n", b"\r\n"),
        (b"HTTP/1.1 100 Continue\r\n", b"\r\n", b"HTTP/1.1 200 OK\r\n", b"\r\n"),
        (b"HTTP/1.1 200 OK\r\n", b"ResponseHeaderResponseCode: 500\r\n", b"\r\n"),
        (b"HTTP/1.1 200 OK\r\n", b"X: a\r\n b\r\n", b"\r\n"),
        (b"HTTP/1.1 200 OK\r\n", b"SessionID: a=b\r\n", b"\r\n"),
        (b"HTTP/1.1 200 OK\r\n", b"Content-Encoding: gzip\r\n", b"\r\n"),
        (b"HTTP/2 204\r\n", b"\r\n"), (b"junk\r\n",), (b"\r\n",), (b"HTTP/1.1\r\n", b"\r\n"),
        (b"HTTP/1.1 200 a\x00b\r\n", b"X: \x00\r\n", b"\r\n"),
        (b"HTTP/1.1 200 OK\n", b"no colon\n", b": v\n", b"\n"),
    ]
    for head in heads:
        yield lines(*head)
        yield lines(*head, connect=1) + lines(*heads[0])


def proxy_challenge():
    for values in (
        [b'Basic realm="corp"'], [b'Digest realm="a", nonce="b", qop="auth"'],
        [b"NTLM"], [b"Negotiate"], [b'Basic realm="a", Digest realm="b"'], [b'Basic realm="a\\"b"'],
        [b"Basic"], [b""], [b"Basic realm=token"], [b'Basic realm="open'], [b",,,"],
        [b'Digest realm="a\r\nb"'], [b"NTLM TlRMTVNTUAAC"], [b'BASIC REALM="x:y"'],
    ):
        for ntlm in (0, 1):
            body = bytes([ntlm, len(values)])
            for value in values:
                body += bytes([len(value)]) + value
            yield body + b"user:u\r\npassword:p:q\r\ndomain:d\r\n\r\n"
    yield b"\x00\x00user:u\r\npassword:p\r\n"
    yield b"\x00\x00user:\r\npassword:\r\ndomain:\r\n\r\n"


def hub_directory():
    yield from directory_answer()
    yield b"# comment\nA\n1\n1\ntype=x\n\n# another\nB\n2\n1\nversion=5\n"
    yield b"A\n1\n1\ntype=x\nB\n"


def hub_request():
    for value in (
        b"gzip", b"gzip;q=0", b"gzip;q=0.5, br", b"*", b"identity", b"", b";", b"gzip;q=", b"GZIP",
        b"0", b"5", b"-1", b"18446744073709551615", b"99999999999999999999", b"1 ", b"0x10",
        b"127.0.0.1", b"localhost:80", b"evil.example", b"true",
    ):
        for kind in range(5):
            yield bytes([kind, len(value)]) + value


def hub_signing():
    def request(*items, count=None):
        record = struct.pack(">i", len(items) if count is None else count)
        for item in items:
            record += struct.pack(">i", len(item)) + item
        return record

    for record in (
        request(b"ab", b"xyz"), request(b""), request(), request(b"a", count=2), request(b"a", count=0),
        request(count=-1), request(count=4096), request(count=4097), request(b"abc")[:-1], b"",
        request(b"abc") + b"more", request(noise(300)), struct.pack(">ii", 1, -1), b"\x00" * 8,
    ):
        yield record
        yield b64encode(record)


def main():
    for target in (
        gzip_stream, response_headers, credential_challenge, directory_answer, conversion,
        signature_answer, base64, logger, exchange_script, proxy_request, proxy_response,
        proxy_challenge, hub_directory, hub_request, hub_signing,
    ):
        folder = HERE / "corpus" / target.__name__
        folder.mkdir(parents=True, exist_ok=True)
        for old in folder.glob("seed-*"):
            old.unlink()
        names = set()
        for data in target():
            names.add(hashlib.sha1(data).hexdigest()[:12])
            (folder / f"seed-{hashlib.sha1(data).hexdigest()[:12]}").write_bytes(data)
        print(f"{target.__name__}: {len(names)} seeds")


if __name__ == "__main__":
    main()
