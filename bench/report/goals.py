"""The goals: which rows are set against each other, and what is wanted of the result."""
from dataclasses import dataclass


@dataclass(frozen=True)
class Goal:
    """`kind` says what `value` is computed from: see judge.py."""
    work: str
    kind: str
    limit: float
    text: str
    over: str = "limit"
    row: str = "library"
    at_most: bool = True


def at_most(work, over, limit, text, row="library"):
    return Goal(work, "ratio", limit, text, over=over, row=row)


def faster_than(work, over, limit, text):
    return Goal(work, "ratio", limit, text, over="library", row=over, at_most=False)


MICRO = (
    at_most("stream_in_place", "limit", 1.03, "uncompressed, in place, 32 MiB / raw Receive loop"),
    at_most("stream_read", "limit", 1.08, "uncompressed, read(16384) / Receive and memcpy"),
    faster_than("stream_read", "boost", 1.0, "boost::iostreams::stream / the same"),
    Goal("small_blocks", "added_ns", 10, "added cost of a 64-byte block, ns"),
    at_most("gzip_xml", "limit", 1.015, "gzip, XML / raw zlib"),
    at_most("gzip_json", "limit", 1.015, "gzip, JSON / raw zlib"),
    faster_than("gzip_xml", "poco", 1.07, "Poco / gzip, XML"),
    faster_than("gzip_json", "poco", 1.07, "Poco / gzip, JSON"),
    faster_than("gzip_xml", "boost", 1.5, "Boost's defaults / gzip, XML"),
    faster_than("gzip_json", "boost", 1.5, "Boost's defaults / gzip, JSON"),
    at_most("gzip_1_kib", "limit", 1.10, "one gzip response of 1 KiB / raw zlib"),
    at_most("execute_1_mib", "limit", 2.5, "execute(), 1 MiB / the ideal of a known size"),
    faster_than("execute_1_mib", "stringstream", 1.6, "ostringstream << rdbuf() / execute()"),
    faster_than("execute_1_mib", "iterators", 18, "istreambuf_iterator / execute()"),
    at_most("to_utf8_ascii", "limit", 1.05, "toUtf8, 1 MiB ASCII / raw ICU"),
    at_most("to_utf8_mixed", "limit", 1.04, "toUtf8, 1 MiB mixed / raw ICU"),
    at_most("to_utf8_latin1", "limit", 1.07, "toUtf8, 1 MiB Latin-1 letters / raw ICU"),
    at_most("to_utf8_220", "limit", 1.3, "toUtf8, 220 bytes / raw ICU"),
    Goal("directory", "unit_ns", 4.0, "directory, 10,000 environments, ns a byte"),
    at_most("directory", "getline", 0.33, "directory / getline and split"),
    faster_than("directory", "boost_ini", 4.0, "Boost's INI reader / directory"),
    faster_than("base64_encode", "openssl", 1.4, "OpenSSL's block function / base64 encode"),
    faster_than("base64_decode", "openssl", 1.7, "OpenSSL's block function / base64 decode"),
    at_most("log_line", "limit", 1.25, "a log line / the bare write of it"),
    Goal("disabled_message", "unit_ns", 1.0, "a disabled message, ns"),
    Goal("open_and_destroy", "unit_ns", 150, "open and destroy of a plain stream, ns"),
)

HTTP = (
    Goal("download", "wall", 1.05, "1 GiB down, http: wall / libcurl", over="curl"),
    Goal("download", "cpu", 1.05, "1 GiB down, http: CPU / libcurl", over="curl"),
    Goal("upload", "wall", 1 / 0.9, "1 GiB up, http: wall / libcurl", over="curl"),
    Goal("download_tls", "wall", 1 / 0.9, "1 GiB down, https: wall / libcurl", over="curl"),
    Goal("upload_tls", "wall", 1 / 0.9, "1 GiB up, https: wall / libcurl", over="curl"),
    Goal("gzip", "wall", 1.03, "gzip, 200 MB: wall / libcurl", over="curl"),
    Goal("gzip", "wall", 0.95, "gzip, 200 MB: wall / Poco", over="poco"),
    Goal("small", "wall", 1 / 0.9, "20,000 small exchanges: wall / libcurl", over="curl"),
    Goal("small", "wall", 1.0, "20,000 small exchanges: wall / Poco", over="poco"),
    Goal("download", "added_kib", 4096, "peak memory above libcurl's at 1 GiB down, KiB",
         over="curl"),
    Goal("download_8_gib", "peak_mib", 32, "peak memory at 8 GiB down, MiB"),
    Goal("upload_8_gib", "peak_mib", 32, "peak memory at 8 GiB up, MiB"),
    Goal("upload", "added_kib", 4096, "peak memory above libcurl's at 1 GiB up, KiB", over="curl"),
)
