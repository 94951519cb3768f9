"""Shows what coverage.py counts, on an export of llvm-cov that is made up."""

import collections
import pathlib
import tempfile
import unittest

import coverage

_SOURCE = """\
bool f(int a, int b) {
  if (a == 1 || b == 2) {
    return true;
  }
  return false;
}
"""
_A, _B, _DECISION = [2, 7, 2, 13], [2, 17, 2, 23], [2, 7, 2, 23]


def _branch(span, taken, not_taken):
    return [*span, taken, not_taken, 0, 0, 6]


def _function(branches, *flags, path="build/./ini/f.h"):
    return {"filenames": [path], "branches": branches,
            "mcdc_records": [[*_DECISION, 0, 5, list(flags)]]}


def _lcov(*counts):
    return "SF:/elsewhere/g.h\nDA:1,0\nSF:build/ini/f.h\n" + "".join(
        f"DA:{line},{count}\n" for line, count in enumerate(counts, 1))


class CoverageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._source = pathlib.Path(folder.name)
        (self._source / "ini").mkdir()
        (self._source / "ini/f.h").write_text(_SOURCE)

    def _coverage(self, *functions, lines=(1, 1, 1, 1, 1)):
        return coverage.Coverage({"data": [{"functions": functions}]},
                                 _lcov(*lines), self._source)

    def test_what_is_reached_is_not_missing(self):
        found = self._coverage(
            _function([_branch(_A, 1, 1), _branch(_B, 1, 1)], True, True))
        self.assertEqual(found.missing().total(), 0)
        self.assertEqual(found.figures(),
                         ("lines 100.0 % (5 of 5)", "branches 100.0 % (4 of 4)",
                          "conditions 100.0 % (2 of 2)"))

    def test_what_is_not_reached_is_named_as_it_stands(self):
        found = self._coverage(
            _function([_branch(_A, 1, 1), _branch(_B, 0, 1)], True, False),
            lines=(1, 1, 1, 1, 0))
        self.assertEqual(dict(found.missing()),
                         {"ini/f.h  return false;  is never run": 1,
                          "ini/f.h  b == 2  is never true": 1,
                          "ini/f.h  b == 2  never decides by itself": 1})

    def test_what_one_instantiation_reaches_is_reached(self):
        found = self._coverage(
            _function([_branch(_A, 1, 0), _branch(_B, 0, 0)], True, False),
            _function([_branch(_A, 0, 1), _branch(_B, 1, 1)], False, True))
        self.assertEqual(found.missing().total(), 0)

    def test_a_constant_condition_does_not_count(self):
        found = self._coverage(_function([_branch(_B, 1, 1)], False, True))
        self.assertEqual(found.missing().total(), 0)
        self.assertEqual(found.figures()[2], "conditions 100.0 % (1 of 1)")

    def test_a_condition_beside_a_constant_one_is_missing(self):
        found = self._coverage(_function([_branch(_B, 1, 1)], False, False))
        self.assertEqual(
            dict(found.missing()),
            {"ini/f.h  a == 1 || b == 2  never decides by itself": 1})

    def test_equal_conditions_are_a_row_each(self):
        (self._source / "ini/f.h").write_text(_SOURCE.replace("b == 2", "a == 1"))
        found = self._coverage(
            _function([_branch(_A, 0, 1), _branch(_B, 0, 1)], True, True))
        self.assertEqual(dict(found.missing()),
                         {"ini/f.h  a == 1  is never true": 2})

    def test_a_build_below_the_sources_counts_without_decisions(self):
        function = _function([_branch(_A, 1, 0)],
                             path="./build/fuzz_coverage/./ini/f.h")
        del function["mcdc_records"]
        found = self._coverage(function)
        self.assertEqual(dict(found.missing()),
                         {"ini/f.h  a == 1  is never false": 1})
        self.assertEqual(found.sides(), [1, 0])

    def test_other_sources_do_not_count(self):
        found = self._coverage(
            _function([_branch(_A, 1, 1), _branch(_B, 1, 1)], True, True),
            _function([_branch(_A, 0, 0)], False, False, path="/usr/f.h"))
        self.assertEqual(found.missing().total(), 0)

    def test_what_is_missing_is_named_and_an_error(self):
        coverage.require_none(collections.Counter())
        missing = collections.Counter({"b is never true": 2,
                                       "a is never run": 1})
        with self.assertRaises(SystemExit) as failure:
            coverage.require_none(missing)
        self.assertEqual(failure.exception.code,
                         "a is never run\nb is never true\nb is never true")


if __name__ == "__main__":
    unittest.main()
