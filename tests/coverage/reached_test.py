"""Shows what fuzz/reached.py takes for right, of what is missing and listed."""

import collections
import pathlib
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "fuzz"))
import reached
import reasons

_TARGETS = ["narrow_fuzzer", "wide_fuzzer", "text_fuzzer"]
_ROW = "ini/f.h  a == 1  is never true"


def _gone(rows, root):
    """The rows whose condition no longer stands in its source."""
    found = []
    for row in rows:
        path, condition = re.fullmatch(
            r"\S+  (\S+)  (.*)  is never (?:true|false)", row).groups()
        if condition not in " ".join((root / path).read_text().split()):
            found.append(row)
    return found


class ReachedTest(unittest.TestCase):
    def _compare(self, missing, *rows, target="wide_fuzzer"):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "unreached.txt")
            path.write_text("\n".join(["A reason.", "",
                                       *(f"  {row}" for row in rows)]))
            listed = reached.listed_for(target, reasons.read(path), _TARGETS)
            reasons.compare(collections.Counter(missing), path, "reached",
                            listed)

    def test_what_is_missing_and_listed_is_right(self):
        self._compare([_ROW], f"wide_fuzzer  {_ROW}")
        self._compare([_ROW], f"*e_fuzzer  {_ROW}")

    def test_what_is_missing_and_not_listed_is_wrong(self):
        with self.assertRaisesRegex(SystemExit, "^not reached, nor listed"):
            self._compare([_ROW])

    def test_what_is_listed_for_another_target_is_not_listed(self):
        with self.assertRaisesRegex(SystemExit, "^not reached, nor listed"):
            self._compare([_ROW], f"narrow_fuzzer  {_ROW}")
        self._compare([], f"narrow_fuzzer  {_ROW}")

    def test_what_is_listed_and_not_missing_is_wrong(self):
        with self.assertRaisesRegex(SystemExit, "but reached or gone: ini/f.h"):
            self._compare([], f"*_fuzzer  {_ROW}")

    def test_two_equal_conditions_need_two_rows(self):
        row = f"wide_fuzzer  {_ROW}"
        with self.assertRaisesRegex(SystemExit, "^not reached, nor listed"):
            self._compare([_ROW, _ROW], row)
        with self.assertRaisesRegex(SystemExit, "^listed in unreached.txt"):
            self._compare([_ROW], row, row)
        self._compare([_ROW, _ROW], row, row)

    def test_a_row_of_no_target_is_wrong(self):
        with self.assertRaisesRegex(SystemExit, "no target gone_fuzzer"):
            self._compare([], f"gone_fuzzer  {_ROW}")

    def test_each_condition_of_the_list_stands_in_its_source(self):
        rows = reasons.read(reached.ROOT / "fuzz/unreached.txt")
        self.assertGreater(rows.total(), 0)
        self.assertEqual(_gone(rows, reached.ROOT), [])

    def test_a_condition_that_is_gone_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "f.h").write_text("if (a &&\n    b) {")
            rows = [f"*_fuzzer  f.h  {condition}  is never true"
                    for condition in ("a && b", "b", "c")]
            self.assertEqual(_gone(rows, pathlib.Path(folder)),
                             rows[2:])


if __name__ == "__main__":
    unittest.main()
