"""mvserver sign and verify, with signatures of the hub."""

import base64
import pathlib
import resource
import shutil
import struct
import subprocess
import tempfile
import unittest

from harness import CommandLineTest, fixed_answer

NOTE = "the library itself never verifies a signature"


class SignVerify(CommandLineTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.keys = pathlib.Path(tempfile.mkdtemp(prefix="mvserver-test-keys-"))
        cls.addClassCleanup(shutil.rmtree, cls.keys)

    def setUp(self):
        super().setUp()
        self.hub = self.start_hub(state=self.keys)
        self.one = self.file("one.txt", "first document\n")
        self.two = self.file("two.bin", b"second \0 document")

    def sign(self, *arguments):
        return self.succeed("--hub", self.hub.url, "sign", *arguments)

    def authority(self):
        return self.hub.state / "ca.pem"

    def test_signatures_stand_beside_the_files_and_their_names_are_printed(self):
        done = self.sign("one.txt", "two.bin")
        self.assertEqual("one.txt.p7s\ntwo.bin.p7s\n", done.stdout.decode())
        self.assertEqual(b"\x30", (self.folder / "two.bin.p7s").read_bytes()[:1])

    def test_one_by_one_gives_the_same_files(self):
        self.sign("--one-by-one", "one.txt", "two.bin")
        self.succeed("verify", "--ca", self.authority(), "one.txt", "two.bin")

    def test_the_output_folder(self):
        (self.folder / "signatures").mkdir()
        self.assertEqual(b"signatures/one.txt.p7s\n",
                         self.sign("--output-dir", "signatures", self.one).stdout)

    def test_verify_names_the_signer_and_says_who_verified(self):
        self.sign("one.txt", "two.bin")
        done = self.succeed("verify", "--ca", self.authority(), "one.txt", "two.bin")
        self.assertRegex(done.stdout.decode(),
                         r"^one\.txt: valid, signed by CN=.+\ntwo\.bin: valid, signed by CN=.+\n$")
        self.assertIn(NOTE, done.stderr.decode())

    def test_openssl_accepts_the_signature_too(self):
        self.sign("one.txt")
        subprocess.run(["openssl", "cms", "-verify", "-binary", "-inform", "DER", "-in",
                        "one.txt.p7s", "-content", "one.txt", "-CAfile", self.authority(),
                        "-purpose", "any", "-out", "/dev/null"],
                       cwd=self.folder, check=True, capture_output=True)

    def test_a_changed_file_does_not_verify(self):
        self.sign("one.txt")
        self.one.write_text("changed\n")
        text = self.fail_with(4, "verify", "--ca", self.authority(), "one.txt")
        self.assertIn("one.txt.p7s does not verify for one.txt", text)

    def test_a_signer_of_another_authority_does_not_verify(self):
        self.sign("one.txt")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout",
                        "other.key", "-out", "other.pem", "-subj", "/CN=Other"],
                       cwd=self.folder, check=True, capture_output=True)
        self.fail_with(4, "verify", "--ca", "other.pem", "one.txt")

    def test_a_file_that_is_no_signature(self):
        text = self.fail_with(4, "verify", "--ca", self.authority_after_signing(), "--signature",
                              "one.txt", "two.bin")
        self.assertIn("one.txt is no signature", text)

    def authority_after_signing(self):
        self.sign("one.txt")
        return self.authority()

    def test_missing_and_empty_files_are_refused_before_anything_is_sent(self):
        self.file("empty", "")
        self.fail_with(9, "--hub", self.hub.url, "sign", "one.txt", "missing")
        text = self.fail_with(9, "--hub", self.hub.url, "sign", "one.txt", "empty")
        self.assertIn("empty cannot be signed: it has 0 bytes", text)
        self.assertFalse((self.folder / "one.txt.p7s").exists())

    def test_two_files_whose_signatures_would_have_one_name_are_refused(self):
        for folder in ("a", "b"):
            (self.folder / folder).mkdir()
            self.file(f"{folder}/same", folder)
        text = self.fail_with(2, "--hub", self.hub.url, "sign", "a/same", "b/same",
                              "--output-dir", ".")
        self.assertIn("two signatures would get the name ./same.p7s", text)
        self.fail_with(2, "--hub", self.hub.url, "sign", "a/same", "b/../a/same")

    def test_more_files_than_a_process_may_open(self):
        names = [f"{number}.txt" for number in range(40)]
        for name in names:
            self.file(name, name)
        few = lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (30, 30))
        done = self.succeed("--hub", self.hub.url, "sign", *names, preexec_fn=few)
        self.assertEqual([f"{name}.p7s" for name in names], done.stdout.decode().split())

    def test_an_authority_file_without_certificates_is_a_local_failure(self):
        self.assertIn("holds no certificates",
                      self.fail_with(9, "verify", "--ca", "one.txt", "two.bin"))

    def test_json(self):
        _, signed = self.json_of("--hub", self.hub.url, "sign", "one.txt")
        size = (self.folder / "one.txt.p7s").stat().st_size
        self.assertEqual([{"file": "one.txt", "signature": "one.txt.p7s", "bytes": size}],
                         signed["signatures"])
        _, verified = self.json_of("verify", "--ca", self.authority(), "one.txt")
        self.assertEqual("one.txt", verified["verified"][0]["file"])
        self.assertIn(NOTE, verified["note"])


class BadSigningServer(CommandLineTest):
    def answering(self, record):
        server = self.start_server(
            fixed_answer(["HTTP/1.1 200 OK"], base64.b64encode(record)))
        self.file("one.txt", "x")
        return server.url

    def test_an_entry_that_is_no_signature_writes_nothing(self):
        url = self.answering(struct.pack(">I?I", 1, True, 3) + b"abc")
        text = self.fail_with(4, "--hub", url, "sign", "one.txt")
        self.assertIn("the server sent no signature for one.txt", text)
        self.assertFalse((self.folder / "one.txt.p7s").exists())

    def test_another_number_of_signatures_than_of_files_writes_nothing(self):
        entry = struct.pack(">?I", True, 3) + b"\x30ab"
        for count in (0, 1, 3):
            with self.subTest(count=count):
                url = self.answering(struct.pack(">I", count) + count * entry)
                self.file("two.txt", "y")
                text = self.fail_with(4, "--hub", url, "sign", "one.txt", "two.txt")
                self.assertIn(f"the server answered 2 files with {count} signatures", text)
                self.assertEqual([], list(self.folder.glob("*.p7s*")))

    def test_no_entry_at_all_one_by_one(self):
        url = self.answering(struct.pack(">I", 0))
        self.fail_with(5, "--hub", url, "sign", "--one-by-one", "one.txt")

    def test_an_answer_that_ends_too_early(self):
        url = self.answering(b"\0")
        self.fail_with(4, "--hub", url, "sign", "one.txt")


if __name__ == "__main__":
    unittest.main()
