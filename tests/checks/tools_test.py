"""The checking tools against small projects that break one rule each."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))

import check_behaviours  # noqa: E402
import check_layers  # noqa: E402

NOTE = "// By design: odd. (Suite.Odd)\n"
TEST = "TEST_F(Suite, Odd) {}\n"
ROW = "| odd | | | Suite.Odd |\n"


class Behaviours(unittest.TestCase):
    def complaints(self, code, test, index):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in [("util/a.h", code), ("tests/a_test.cpp", test),
                               ("docs/behaviours.md", index)]:
                (root / name).parent.mkdir()
                (root / name).write_text(text, encoding="utf-8")
            return list(check_behaviours.complaints(root))

    def test_note_with_test_and_row_is_good(self):
        self.assertEqual(self.complaints(NOTE, TEST, ROW), [])

    def test_note_may_go_on_over_lines(self):
        self.assertEqual(self.complaints(" * By design: odd,\n * very. (Suite.Odd)\n", TEST, ROW), [])

    def test_note_without_a_test_name(self):
        self.assertEqual(self.complaints("// By design: odd.\n// (see below)\nint a;\n" + NOTE, TEST, ROW),
                         ["util/a.h:1: the note names no test, as (Suite.Test)"])

    def test_each_note_needs_a_name_of_its_own(self):
        self.assertEqual(self.complaints("// By design: odd.\n" + NOTE, TEST, ROW),
                         ["util/a.h:1: the note names no test, as (Suite.Test)"])

    def test_test_that_does_not_exist(self):
        self.assertEqual(self.complaints(NOTE, "TEST(Suite, Even) {}\n", ROW),
                         ["util/a.h:1: there is no test Suite.Odd"])

    def test_row_that_is_missing(self):
        self.assertEqual(self.complaints(NOTE, TEST, "Suite.Odd in prose\n"),
                         ["util/a.h:1: docs/behaviours.md has no row for Suite.Odd"])

    def test_row_without_a_note(self):
        self.assertEqual(self.complaints(NOTE, TEST, ROW + "| even | Suite.Even |\n"),
                         ["docs/behaviours.md: a row names Suite.Even, which no note names"])


class Layers(unittest.TestCase):
    def breaches(self, name, text, target):
        return list(check_layers.breaches(name, [(text, target)]))

    def test_downwards_is_good(self):
        self.assertEqual(self.breaches("client/HeaderText.cpp", "util/Text.h", "util/Text.h"), [])

    def test_upwards_and_sideways_are_not(self):
        for target in ["client/HeaderText.h", "util/Secret.h"]:
            self.assertEqual(len(self.breaches("util/Text.cpp", target, target)), 1)

    def test_leaf_includes_no_other_header(self):
        header = "morvenn/net/mvserverproxy/client/Credentials.h"
        self.assertEqual(len(self.breaches("include/morvenn/net/mvserverproxy/client/MSPSession.h",
                                           header, "include/" + header)), 1)

    def test_foreign_headers_stay_at_home(self):
        self.assertEqual(self.breaches("client/MSPStream.cpp", "zlib.h", None), [])
        self.assertEqual(len(self.breaches("client/HeaderText.cpp", "zlib.h", None)), 1)

    def test_new_file_needs_a_level(self):
        self.assertEqual(self.breaches("util/New.h", "string", None),
                         ["util/New.h: has no level; add it to LEVELS"])

    def test_circle_is_found(self):
        self.assertEqual(check_layers.cycle({"a": ["b"], "b": ["c"], "c": ["b"]}), ["b", "c", "b"])
        self.assertEqual(check_layers.cycle({"a": ["b", "c"], "b": ["c"]}), [])


if __name__ == "__main__":
    unittest.main()
