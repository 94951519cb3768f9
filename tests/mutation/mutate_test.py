"""Shows on a small project that the mutation tester finds, runs and reports
what it should, and that each of its complaints can be heard."""

import contextlib
import dataclasses
import fcntl
import io
import json
import os
import pathlib
import shutil
import tempfile
import threading
import time
import unittest
from unittest import mock

import accepted
import literals
import mutants
import mutate
import run
import source
import syntax
from folders import Folder, Project, Round

FILES = {
    "CMakeLists.txt": """\
cmake_minimum_required(VERSION 3.25)
project(sample CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
add_library(sample SHARED calc/calc.cc)
target_include_directories(sample PRIVATE .)
add_executable(calc_test calc_test.cc)
target_link_libraries(calc_test sample)
enable_testing()
add_test(NAME calc_test COMMAND calc_test)
""",
    "calc/calc.cc": """\
// A "quote" in a comment.
#define NOT_MUTATED(x) ((x) < 1)
int Sum(int left, int right) { return left + right; }
int Same(int number) { return static_cast<int>(number); }
constexpr int kProved = 10;
static_assert(kProved == 10);
constexpr int kLimit = 10;
bool IsSmall(int number) { return number < kLimit; }
void Halve(int& number) { number /= 2; }
int Bits(int number) {
  int bits = 0;
  while (number != 0) {
    Halve(number);
    ++bits;
  }
  return bits;
}
#include "calc/double.inc"
const int kSquares[] = {
#define ROW(name, number) number,
#include "calc/rows.inc"
};
""",
    "calc/double.inc": "int Double(int number) { return 2 * number; }\n",
    "calc/rows.inc": """\
ROW("one", 1)
ROW("two", 4)
""",
    "calc_test.cc": """\
int Sum(int, int);
int Same(int);
bool IsSmall(int);
int Bits(int);
int main() {
  bool passed = Sum(2, 3) == 5 && Same(4) == 4 && IsSmall(5) && !IsSmall(50) &&
                Bits(6) == 3;
#ifdef THOROUGH
  passed = passed && !IsSmall(10);
#endif
  return passed ? 0 : 1;
}
""",
}
SUM, SAME, PROVED, LIMIT, HALVE = (
    f"calc/calc.cc:{line}" for line in (3, 4, 5, 7, 13))


def change(place, old, new, path="calc/calc.cc", ordinal=1):
    return mutants.Change(path, place, tuple(old.split("\n")),
                          tuple(new.split("\n")), ordinal)


ELEVEN = change("kLimit", "constexpr int kLimit = 10;",
                "constexpr int kLimit = 11;")
NINE = ELEVEN._replace(new=("constexpr int kLimit = 9;",))
MINUS = change("Sum", "int Sum(int left, int right) { return left + right; }",
               "int Sum(int left, int right) { return left - right; }")


class OnSample(unittest.TestCase):
    """Each test begins with the sample project and no results. The builds stay
    for the next test, so that they are configured once."""

    @classmethod
    def setUpClass(cls):
        if not hasattr(OnSample, "root"):
            OnSample.root = pathlib.Path(tempfile.mkdtemp())
            unittest.addModuleCleanup(shutil.rmtree, OnSample.root)

    def setUp(self):
        for path in run.files_of(self.root):
            (self.root / path).unlink()
        (self.root / "build/mutation").mkdir(parents=True, exist_ok=True)
        (self.root / "build/mutation/results").unlink(missing_ok=True)
        for name, text in FILES.items():
            self.write(name, text)
        options = ("-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                   "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                   "-DCMAKE_SHARED_LINKER_FLAGS=-s")
        self.project = Project(
            root=self.root, accepted=self.root / "accepted.txt",
            folders={"calc": Folder(("calc/*.cc", "calc/*.inc"),
                                    ("calc_test",))},
            rounds=(Round("plain", options),
                    Round("thorough",
                          (*options, "-DCMAKE_CXX_FLAGS=-DTHOROUGH"))))
        self.accept()
        for constant in ("TEST_LEAST", "TEST_FACTOR"):
            patch = mock.patch.object(run, constant, 1)
            patch.start()
            self.addCleanup(patch.stop)

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def accept(self, *changes):
        reason = "No caller can tell.\n\n" if changes else ""
        self.write("accepted.txt", reason + "\n\n".join(
            map(accepted.written, changes)))

    def mutate(self, *arguments):
        """(status, output)"""
        with contextlib.redirect_stdout(io.StringIO()) as output, (
                contextlib.redirect_stderr(output)):
            status = mutate.main(["--jobs", "1", *arguments], self.project)
        return status, output.getvalue()

    def verdicts(self):
        lines = (self.root / "build/mutation/results").read_text().splitlines()
        return {tuple(new): verdict for _, _, _, new, _, *verdict
                in map(json.loads, lines[1:])}

    def must_end(self, expected, result, *parts):
        status, output = result
        self.assertEqual(status, expected, output)
        for part in parts:
            self.assertIn(part, output)


class Verdicts(OnSample):
    def test_survivor_is_reported_and_accepted_as_it_is_printed(self):
        written = self.times()
        result = self.mutate("--file", LIMIT)
        self.must_end(1, result, "survived: calc/calc.cc:7\n" +
                      accepted.written(NINE))
        self.assertEqual(self.verdicts()[ELEVEN.new],
                         ["killed", "thorough: calc_test"])
        self.assertEqual(self.times(), written)
        printed = [line for line in result[1].splitlines()
                   if line.startswith("  ")]
        self.write("accepted.txt", "Reason.\n\n" + "\n".join(printed))
        self.must_end(0, self.mutate("--file", LIMIT))

    def times(self):
        """When the files of the project were written."""
        return {path: (self.root / path).stat().st_mtime_ns for path in FILES}

    def test_hanging_mutant_is_killed(self):
        self.mutate("--file", HALVE)
        self.assertEqual(self.verdicts()[";",], ["killed", "plain: time limit"])

    def test_command_that_goes_on_printing_is_not_killed(self):
        worker = run.Worker(self.project, self.root / "build/mutation/worker1",
                            threading.Event())
        worker.configure()
        round_ = self.project.rounds[0]
        self.assertEqual(
            worker._run(round_, ["sh", "-c", "for i in 1 2 3 4 5; do echo $i; "
                                 "sleep 0.3; done"], limit=1), 0)
        self.assertIsNone(
            worker._run(round_, ["sh", "-c", "echo; sleep 9"], limit=1))

    def test_each_test_runs_among_the_quick_or_the_slow_ones(self):
        worker = run.Worker(self.project, self.root / "build/mutation/worker1",
                            threading.Event())
        worker.configure()
        round_ = self.project.rounds[0]
        for quick, is_quick in (("^calc_test$", True), ("^another$", False)):
            worker._quick[round_] = quick
            listed = []
            for command in worker._commands_in_turn(
                    round_, self.project.folders["calc"]):
                worker._run(round_, [*command, "--show-only"], limit=60)
                listed.append("calc_test" in worker._output())
            self.assertEqual(listed, [is_quick, not is_quick])

    def test_same_code_is_equivalent_and_a_proof_does_not_compile(self):
        self.must_end(0, self.mutate("--file", SAME))
        self.assertEqual(
            self.verdicts()["int Same(int number) { return (number); }",][0],
            "equivalent")
        self.must_end(0, self.mutate("--file", PROVED))
        verdict, by = self.verdicts()["constexpr int kProved = 11;",]
        self.assertEqual(verdict, "not compiled")
        self.assertIn("static assertion failed", by)

    def count_costs(self, difference):
        """Adds a round with a ledger that counts the characters of the source,
        and ends with `difference` if they are not as many as without a
        mutant."""
        self.write("bench/cost/ledger.py", f"""
import pathlib, sys
kept = pathlib.Path(sys.argv[-3])
count = str(len(pathlib.Path("calc/calc.cc").read_text()))
if sys.argv[1] == "--update":
    kept.write_text(count)
elif kept.read_text() != count:
    sys.exit({difference!r})
""")
        folder = dataclasses.replace(self.project.folders["calc"],
                                     costs=("calc_test",))
        costs = dataclasses.replace(self.project.rounds[0], counts_costs=True)
        self.project = dataclasses.replace(
            self.project, folders={"calc": folder},
            rounds=(*self.project.rounds, costs))

    def test_mutant_that_only_costs_is_killed_by_its_cost(self):
        self.count_costs("1 counted\noperation: expected 3, found 4\n1 of 2")
        self.mutate("--file", LIMIT)
        self.assertEqual(self.verdicts()[NINE.new],
                         ["killed", "cost: operation: expected 3, found 4"])
        self.assertEqual(self.verdicts()[ELEVEN.new],
                         ["killed", "thorough: calc_test"])

    def test_mutant_that_ends_what_counts_is_killed_by_its_cost(self):
        self.count_costs("calc_test failed:\nProcess terminating")
        self.mutate("--file", LIMIT)
        self.assertEqual(self.verdicts()[NINE.new],
                         ["killed", "cost: calc_test failed:"])

    def test_share_of_the_accepted_mutants_is_told(self):
        self.accept(MINUS)
        self.must_end(0, self.mutate("--file", SUM),
                      "1 of 3 mutants are accepted, 33.3 %.")

    def test_accepted_mutant_that_is_killed_is_told_only_if_it_is_run(self):
        self.accept(MINUS)
        self.must_end(0, self.mutate("--file", SUM))
        self.must_end(1, self.mutate("--file", SUM, "--accepted"),
                      "accepted, but killed plain: calc_test:\n" +
                      accepted.written(MINUS))

    def test_accepted_change_that_is_no_mutant(self):
        self.accept(MINUS._replace(ordinal=2))
        self.must_end(1, self.mutate("--limit", "0"),
                      "accepted, but no such mutant:", "Sum  occurrence 2")

    def test_two_jobs_agree_with_one(self):
        self.mutate("--file", SUM, "--jobs", "2")
        self.assertEqual(list(self.verdicts().values()),
                         [["killed", "plain: calc_test"]] * 3)
        self.assertTrue((self.root / "build/mutation/worker2/plain").is_dir())


class Runs(OnSample):
    def judged(self, result=("killed", ""), stop_after=None):
        """Replaces the judgement, and returns the changes that it saw."""
        seen = []

        def judge(_, folder, mutant):
            if len(seen) == stop_after:
                raise KeyboardInterrupt
            seen.append(mutant.change)
            return result
        for name, instead in (("judge", judge), ("prepare", mock.Mock())):
            patch = mock.patch.object(run.Worker, name, instead)
            patch.start()
            self.addCleanup(patch.stop)
        return seen

    def test_stopped_run_goes_on_where_it_stopped(self):
        first = self.judged(stop_after=2)
        self.must_end(130, self.mutate("--file", SUM), "the same command")
        # What a killed process leaves.
        with open(self.root / "build/mutation/results", "a") as results:
            results.write('\n["calc/calc.cc", "Su')
        second = self.judged()
        self.must_end(0, self.mutate("--file", SUM))
        self.assertEqual((len(first), len(second)), (2, 1))
        self.assertFalse(set(first) & set(second))
        third = self.judged()
        self.must_end(0, self.mutate("--file", SUM))
        self.assertEqual(third, [])

    def test_other_tests_mean_other_results(self):
        self.judged()
        self.mutate("--file", SUM)
        self.write("calc_test.cc", FILES["calc_test.cc"] + "// more\n")
        seen = self.judged()
        self.mutate("--file", SUM)
        self.assertEqual(len(seen), 3)

    def test_another_ledger_means_other_results(self):
        for text in ("", "# more\n"):
            self.write("bench/cost/ledger.py", text)
            seen = self.judged()
            self.mutate("--file", SUM)
        self.assertEqual(len(seen), 3)

    def test_failing_tests_end_the_run(self):
        for broken, what in (("return passed ? 1 : 0;", "tested"),
                             ("return missing;", "built")):
            self.write("calc_test.cc", FILES["calc_test.cc"].replace(
                "return passed ? 0 : 1;", broken))
            self.must_end(2, self.mutate("--file", SUM),
                          f"without a mutant 'plain' can't be {what}")
        self.write("CMakeLists.txt", "nonsense()\n")
        self.must_end(2, self.mutate("--file", SUM), "can't be configured")

    def test_tests_that_fail_after_the_mutants_end_the_run(self):
        with mock.patch.object(run.Worker, "judge", lambda *_: (
                self.broken_copy(), ("killed", ""))[1]):
            self.must_end(2, self.mutate("--file", SUM), "can't be tested")

    def broken_copy(self):
        path = self.root / "build/mutation/worker1/source/calc_test.cc"
        path.write_text("int main() { return 1; }\n")

    def test_sample_is_always_the_same(self):
        sample = self.mutate("--list", "--limit", "4")[1]
        self.assertEqual(sample, self.mutate("--list", "--limit", "4")[1])
        self.assertIn("\n4 mutants\n", sample)

    def test_source_that_is_in_no_build(self):
        self.write("calc/alone.cc", "int Alone() { return 1; }\n")
        self.must_end(2, self.mutate("--list"), "no source of the build")

    def test_second_run_at_the_same_time(self):
        with open(self.root / "build/mutation/lock", "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.must_end(2, self.mutate("--list"), "another run is at work")

    def test_unknown_folder(self):
        with self.assertRaises(SystemExit):
            self.mutate("clac")


class Finding(OnSample):
    def found(self, path):
        folder = self.root / "build/mutation/worker1"
        worker = run.Worker(self.project, folder, threading.Event())
        worker.configure()
        parser = syntax.Parser(worker.source,
                               folder / "plain/compile_commands.json")
        return parser.mutants_of(path)

    def test_changes_of_code(self):
        found = self.found("calc/calc.cc")
        changes = {mutant.change for mutant in found}
        self.assertLessEqual({MINUS, ELEVEN, NINE}, changes)
        self.assertIn(change("Bits", "++bits;\n}", "++bits;\nbreak; }"),
                      changes)
        self.assertIn(change("Bits", "while (number != 0) {",
                             "while (false) {"), changes)
        self.assertIn(change("Bits", "return bits;", "return (bits) + 1;"),
                      changes)
        # Each change changes something, and is listed once.
        self.assertEqual(len(changes), len(found))
        text = FILES["calc/calc.cc"]
        self.assertEqual(len({mutant.applied_to(text) for mutant in found}),
                         len(found))
        for mutant in found:
            self.assertNotRegex(" ".join(mutant.change.old),
                                "static_assert|#|quote")
            self.assertEqual(mutant.change.place == "kProved",
                             mutant.line == 5)

    def test_code_and_rows_that_a_source_includes(self):
        changes = {mutant.change for mutant in self.found("calc/double.inc")}
        self.assertIn(change(
            "Double", "int Double(int number) { return 2 * number; }",
            "int Double(int number) { return 2 / number; }",
            path="calc/double.inc"), changes)
        changes = {mutant.change for mutant in self.found("calc/rows.inc")}
        first, second = 'ROW("one", 1)', 'ROW("two", 4)'
        for old, new in ((f"{first}\n{second}", f"{second}\n{first}"),
                         (second, 'ROW("two", 5)')):
            self.assertIn(change("", old, new, path="calc/rows.inc"), changes)
        self.assertIn(mutants.Change("calc/rows.inc", "", (first,), (), 1),
                      changes)


class Units(unittest.TestCase):
    def test_tokens(self):
        text = ('a<<=b; // x < y\n#define Q(a) \\\n  (a < 3)\n'
                '/* 1 */ R"x(")" 1)x" u8"\\"" L\'\\\'\' 1\'000.5e-3f')
        self.assertEqual(
            [token.text for token in source.tokenize(text)],
            ["a", "<<=", "b", ";", 'R"x(")" 1)x"', 'u8"\\""', "L'\\''",
             "1'000.5e-3f"])

    def test_literals(self):
        for changed, literal, expected in (
                (literals.changed_integers, "0", ["1", "-1"]),
                (literals.changed_integers, "1", ["2", "0"]),
                (literals.changed_integers, "7u", ["8u", "6u", "0u"]),
                (literals.changed_integers, "0x4", ["0x8", "0x0"]),
                (literals.changed_integers, "0x2E23", ["0x2e24", "0x2e22"]),
                (literals.changed_integers, "0xFFFFFFFF", ["0xfffffffe"]),
                (literals.changed_strings, '"ab"',
                 ['"a"', '"b"', '"Ab"', '""']),
                (literals.changed_strings, 'L"\\x41\\n"',
                 ['L"\\x41"', 'L"\\n"', 'L"?\\n"', 'L""']),
                (literals.changed_strings, '""', ['"?"']),
                (literals.changed_characters, "'a'", ["'A'", "'b'"]),
                (literals.changed_characters, "L'&'", ["L'\\''"]),
                (literals.changed_characters, r"'\0'", [r"'\1'"])):
            self.assertEqual(changed(literal), expected)

    def test_equal_changes_of_equal_lines_are_counted(self):
        found = mutants.Mutants(source.Source("f", "a;\nb;\na;\n"))
        found.add(0, 1, "c", "F")
        found.add(6, 7, "c", "F")
        self.assertEqual([mutant.change.ordinal for mutant in found.found()],
                         [1, 2])

    def test_equal_results_are_one_mutant(self):
        found = mutants.Mutants(source.Source("f", "a + b;"))
        found.add(0, 5, "a - b", "F")
        found.add(2, 3, "-", "F")
        found.add(4, 5, "b", "F")
        self.assertEqual([(mutant.start, mutant.end, mutant.text)
                          for mutant in found.found()], [(2, 3, "-")])

    def test_only_a_share_of_a_table_is_tried(self):
        rows = "".join(f"ROW({number})\n" for number in range(200))
        found = mutants.Mutants(source.Source("f", rows))
        mutants.add_rows_of_macros(found)
        of_table = found.found()
        sample = mutants.sample_tables(of_table)
        self.assertEqual(len(of_table), 599)
        self.assertEqual(len(sample), 30)
        self.assertEqual(sample, mutants.sample_tables(of_table))
        self.assertEqual(len(mutants.sample_tables(of_table[:4])), 4)

    def test_time_limit_ends_all_that_was_started(self):
        with tempfile.TemporaryDirectory() as folder:
            project = Project(pathlib.Path(folder), {}, (), None)
            worker = run.Worker(project, project.root, threading.Event())
            worker.source.mkdir()
            started = time.monotonic()
            pids = project.root / "pids"
            self.assertIsNone(worker._run(
                Round("", ()), ["sh", "-c", f"sleep 99 & echo $! > {pids}; "
                                "sleep 99"], 0.3))
            self.assertLess(time.monotonic() - started, 9)
            child = int(pids.read_text())
            with self.assertRaises((ProcessLookupError, TimeoutError)):
                self.wait_until_ended(child)

    @staticmethod
    def wait_until_ended(pid):
        for _ in range(100):
            os.kill(pid, 0)
            time.sleep(0.05)


class List(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "list")
            path.write_text(text)
            return accepted.read(path)

    def test_what_is_written_can_be_read(self):
        changes = [
            change("F", "a\nb", "c"), change("F", "a", "c", ordinal=2),
            change("operator bool", "a", "b", ordinal=11),
            change("", "a", "b"), change("F", "x", "y"), change("F", "x", "z"),
            mutants.Change("f.cc", "kRows", ("{1},",), (), 1)]
        text = "# comment\nA reason\nof two lines.\n\n" + "\n\n".join(
            map(accepted.written, changes))
        self.assertEqual(self.read(text),
                         dict.fromkeys(changes, "A reason of two lines."))

    def test_changes_of_one_place_need_it_once(self):
        text = ("One.\n\n  f.cc  F\n    - a\n    + b\n\n    - a\n    + c\n"
                "    - d\n    + e\n\nTwo.\n\n  f.cc  F\n    -   a   a\n"
                "    + c\n")
        self.assertEqual(
            {(found.old, found.new): reason
             for found, reason in self.read(text).items()},
            {(("a",), ("b",)): "One.", (("a",), ("c",)): "One.",
             (("d",), ("e",)): "One.", (("a a",), ("c",)): "Two."})

    def test_faults_of_the_list_are_told_with_their_line(self):
        block = "  f.cc  F\n    - a\n    + b\n"
        for text, message in (
                (block, "list:1: a change without a reason"),
                ("One.\n\n    - a\n", "list:3: a change of no file"),
                ("One.\n\n  f.cc  F\n    + b\n",
                 "list:4: a line that takes no line's place"),
                ("One.\n\n  f.cc  F\n", "list:3: a place without a change"),
                ("One.\n\n  f.cc  F\n  f.cc  G\n",
                 "list:4: a place without a change"),
                ("One.\n\nTwo.\n\n" + block,
                 "list:3: a reason without a change"),
                ("One.\n\n" + block + "\nTwo.\n",
                 "list:7: a reason without a change"),
                ("One.\n\n" + block + block, "list:8: the same change once"),
                ("One.\n\n  f.cc is it\n", "list:3: no place")):
            with self.assertRaises(accepted.BadList, msg=text) as raised:
                self.read(text)
            self.assertIn(message, str(raised.exception))


class Projects(unittest.TestCase):
    def test_list_of_this_project_can_be_read(self):
        accepted.read(mutate.KORVAN.accepted)


if __name__ == "__main__":
    unittest.main()
