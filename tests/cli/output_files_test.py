"""-o: a file is there whole or not at all."""

import os
import resource
import unittest

from harness import CommandLineTest, fixed_answer


class OutputFiles(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"new"))

    def send(self, *arguments):
        return self.succeed("send", "--url", self.server.url, "-d", "x", *arguments)

    def cut_short(self, path):
        def answer(connection, head):
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort")
            return False

        server = self.start_server(answer)
        self.fail_with(3, "send", "--url", server.url, "-d", "x", "-o", path)

    def test_the_file_gets_ordinary_access_rights(self):
        os.umask(0o027)
        self.addCleanup(os.umask, 0o022)
        self.send("-o", "out")
        self.assertEqual(0o640, (self.folder / "out").stat().st_mode & 0o777)

    def test_an_existing_file_is_replaced(self):
        out = self.file("out", "old")
        self.send("-o", out)
        self.assertEqual("new", out.read_text())

    def test_a_failure_leaves_the_existing_file_and_nothing_else(self):
        out = self.file("out", "old")
        self.cut_short(out)
        self.assertEqual("old", out.read_text())
        self.assertEqual(["out", "tmp"], sorted(p.name for p in self.folder.iterdir()))

    def test_a_link_stays_and_its_target_is_replaced(self):
        target = self.file("target", "old")
        link = self.folder / "link"
        link.symlink_to(target)
        self.send("-o", link)
        self.assertTrue(link.is_symlink())
        self.assertEqual("new", target.read_text())

    def test_a_device_is_written_to_directly(self):
        self.send("-o", "/dev/null")
        self.assertTrue(os.path.exists("/dev/null") and not os.path.isfile("/dev/null"))

    def test_a_dash_is_standard_output(self):
        self.assertEqual(b"new", self.send("-o", "-").stdout)

    def test_a_full_disk_is_a_local_failure(self):
        text = self.fail_with(9, "send", "--url", self.server.url, "-d", "x", "-o", "/dev/full")
        self.assertIn("cannot write /dev/full: No space left on device", text)

    def test_a_file_that_may_not_grow_is_a_local_failure_and_leaves_the_old_one(self):
        out = self.file("out", "old")
        server = self.start_server(fixed_answer(["HTTP/1.1 200 OK"], b"x" * 20000))
        text = self.fail_with(
            9, "send", "--url", server.url, "-d", "x", "-o", "out",
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (10000, 10000)))
        self.assertIn("cannot write out: File too large", text.replace(f"{self.folder}/", ""))
        self.assertEqual("old", out.read_text())
        self.assertEqual(["out", "tmp"], sorted(p.name for p in self.folder.iterdir()))


if __name__ == "__main__":
    unittest.main()
