"""Tests of what scripts/bench prints and of when it fails."""

import contextlib
import io
import json
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

import report
import rows
from rows import Row, Section, Table
from wording import ratio, readable

FIND = "find_oid"  # a row with a floor
LIST = "ini_narrow_list_1000_in_50"  # a row with a yardstick
LARGE = "ini_narrow_load_1000000"


def run(name, nanoseconds, **more):
    return {"name": name, "run_type": "iteration", "repetitions": 2,
            "cpu_time": nanoseconds, "real_time": 1e9, "time_unit": "ns",
            **more}


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def figures(self, *runs):
        path = self.folder / "in.json"
        path.write_text(json.dumps({
            "context": {"num_cpus": 2, "mhz_per_cpu": 2500, "load_avg": [1]},
            "benchmarks": list(runs)}))
        return report.Figures([path])

    def compare(self, *runs):
        return report.compare(self.figures(*runs))

    def errors(self, *runs):
        return self.compare(*runs)[1]


class FloorTest(ReportTest):
    def test_a_floor_that_the_library_undercuts_is_an_error(self):
        errors = self.errors(run(f"{FIND}/ours", 8), run(f"{FIND}/floor", 10))
        self.assertEqual(len(errors), 1)
        self.assertIn("no floor", errors[0])

    def test_noise_is_no_error(self):
        self.assertEqual(
            self.errors(run(f"{FIND}/ours", 9.5), run(f"{FIND}/floor", 10)),
            [])

    def test_a_yardstick_may_be_undercut(self):
        self.assertEqual(
            self.errors(run(f"{LIST}/ours", 1), run(f"{LIST}/yardstick", 10)),
            [])

    def test_the_program_fails_and_still_reports(self):
        self.figures(run(f"{FIND}/ours", 5), run(f"{FIND}/floor", 10))
        output, printed, errors = (self.folder / "out.json", io.StringIO(),
                                   io.StringIO())
        with mock.patch.object(sys, "argv", ["report.py", str(output),
                                             str(self.folder / "in.json")]), \
                contextlib.redirect_stdout(printed), \
                contextlib.redirect_stderr(errors):
            self.assertEqual(report.main(), 1)
        self.assertIn("Look up one OID", printed.getvalue())
        self.assertIn("error: find_oid", errors.getvalue())
        self.assertEqual(json.loads(output.read_text())[0]["sections"][0]
                         ["rows"][0]["ours"], 5)

    def test_a_floor_is_measured_where_one_is_described_and_only_there(self):
        self.assertEqual(len(self.errors(run(f"{FIND}/ours", 8))), 1)
        self.assertEqual(len(self.errors(
            run(f"{LIST}/ours", 8), run(f"{LIST}/yardstick", 8),
            run(f"{LIST}/floor", 8))), 1)


class FiguresTest(ReportTest):
    def test_the_best_repetition_counts(self):
        best = self.figures(run("a/ours", 9), run("a/ours", 7),
                            run("a/ours", 8)).best
        self.assertEqual(best, {"a": {"ours": 7}})

    def test_aggregates_do_not_count(self):
        best = self.figures(run("a/ours", 9),
                            run("a/ours", 1, run_type="aggregate")).best
        self.assertEqual(best["a"]["ours"], 9)

    def test_a_time_is_that_of_one_operation_in_nanoseconds(self):
        best = self.figures(run("a/ours", 6, operations=4, time_unit="us")).best
        self.assertEqual(best["a"]["ours"], 1500)

    def test_a_time_taken_by_hand_is_the_real_time(self):
        best = self.figures(run("a/ours/manual_time", 6, real_time=5)).best
        self.assertEqual(best["a"]["ours"], 5)

    def test_a_size_belongs_to_the_row(self):
        best = self.figures(run("a/ours/64/repeats:3/manual_time", 6)).best
        self.assertEqual(list(best), ["a_64"])

    def test_bytes_count_where_they_are_measured(self):
        figures = self.figures(run("a/ours", 6, bytes_per_key=160))
        self.assertEqual((figures.best["a"]["ours"], figures.units["a"]),
                         (160, "B"))

    def test_a_benchmark_that_failed_is_an_error(self):
        self.assertEqual(
            self.errors(run("a/ours", 0, error_occurred=True,
                            error_message="no such key")),
            ["a/ours: no such key"])


class TablesTest(ReportTest):
    def test_rows_stand_in_their_tables_in_the_order_of_the_list(self):
        names = [LARGE, LIST, FIND]
        tables, _ = self.compare(*(run(f"{name}/ours", 1) for name in names))
        self.assertEqual(
            [[row["name"] for row in report.rows_of([table])]
             for table in tables], [[FIND, LIST], [LARGE]])
        self.assertEqual(
            [section["title"] for section in tables[0]["sections"]],
            ["OIDs", "INI documents, narrow text"])

    def test_a_benchmark_that_is_not_listed_is_an_error(self):
        self.assertEqual(self.errors(run("other/ours", 1)),
                         ["other: bench/rows.py does not list it"])

    def test_a_row_without_the_library_is_an_error(self):
        tables, errors = self.compare(run(f"{LIST}/GLib", 1))
        self.assertEqual((tables, errors),
                         ([], [f"{LIST}: the library was not measured"]))

    def test_only_a_whole_run_must_have_all_rows(self):
        figures = self.figures(run("a/ours", 1))
        table = (Table("T", (Section("S", (Row("a", "A"), Row("b", "B"))),)),)
        self.assertEqual(report.compare(figures, table)[1], [])
        self.assertEqual(report.compare(figures, table, is_whole=True)[1],
                         ["b: it was not measured"])

    def test_an_unknown_competitor_is_an_error(self):
        errors = self.errors(run(f"{LIST}/ours", 1),
                             run(f"{LIST}/yardstick", 1),
                             run(f"{LIST}/glib", 1))
        self.assertEqual(errors, [f"{LIST}: no competitor is called glib"])

    def test_columns_are_aligned_and_in_the_order_of_the_list(self):
        table = (Table("T", (
            Section("S", (Row("a", "Short"), Row("b", "A longer title"))),
            Section("U", (Row("c", "Other"),)))),)
        tables, _ = report.compare(self.figures(
            run("b/GLib", 4000), run("b/ours", 2000), run("a/ours", 1),
            run("b/plain maps", 1000), run("a/plain maps", 1500),
            run("c/ours", 1), run("c/inih", 1)), table)
        self.assertEqual(report.table_lines(tables[0]), [
            "S                korvan       plain maps             GLib",
            "Short           1.00 ns  1.50 us  (1500)                -",
            "A longer title  2.00 us  1.00 us  (0.50)  4.00 us  (2.00)",
            "",
            "U                korvan             inih",
            "Other           1.00 ns  1.00 ns  (1.00)"])


class ListTest(unittest.TestCase):
    ROWS = [row for table in rows.TABLES for section in table.sections
            for row in section.rows]

    def test_each_row_has_a_floor_or_a_yardstick(self):
        for row in self.ROWS:
            self.assertTrue(row.floor or row.yardstick, row.name)
            self.assertIn(row.floor, [None, *rows.FLOORS])
            self.assertIn(row.yardstick, [None, *rows.YARDSTICKS])

    def test_names_are_unique(self):
        names = [row.name for row in self.ROWS]
        self.assertEqual(len(names), len(set(names)))

    def test_the_first_table_fits_a_plot(self):
        rows_of_first = [row for section in rows.TABLES[0].sections
                         for row in section.rows]
        self.assertLessEqual(len(rows_of_first), 25)


class WordingTest(unittest.TestCase):
    def test_figures_have_three_digits(self):
        for figure, unit, text in (
                (0.742, "ns", "0.742 ns"), (8, "ns", "8.00 ns"),
                (99.96, "ns", "100 ns"), (999.4, "ns", "999 ns"),
                (999.6, "ns", "1.00 us"), (12345678, "ns", "12.3 ms"),
                (2e9, "ns", "2.00 s"), (160, "B", "160 B")):
            self.assertEqual(readable(figure, unit), text)

    def test_ratios_have_two_digits_at_least(self):
        for value, text in ((0.123, "0.12"), (9.99, "9.99"), (9.996, "10.0"),
                            (54.32, "54.3"), (2742.4, "2742")):
            self.assertEqual(ratio(value), text)


class PageTest(ReportTest):
    def test_only_the_marked_part_of_the_page_changes(self):
        page = f"before\n{report.BEGIN}old\n{report.END}after\n"
        self.assertEqual(report.with_figures(page, "new\n"),
                         f"before\n{report.BEGIN}\nnew\n\n{report.END}after\n")

    def test_a_page_without_marks_is_refused(self):
        with self.assertRaises(ValueError):
            report.with_figures("before and after\n", "new\n")

    def test_docs_get_figures_and_plots(self):
        page = self.folder / "performance.md"
        page.write_text(f"{report.BEGIN}{report.END}")
        self.figures(*(run(f"{name}/{competitor}", 2) for name in (
            FIND, LARGE, "ini_narrow_load_1000")
            for competitor in ("ours", "floor", "GLib")))
        with mock.patch.object(sys, "argv", [
                "report.py", "--docs", str(self.folder), "--compiler", "g++ 0",
                str(self.folder / "out.json"), str(self.folder / "in.json")]), \
                contextlib.redirect_stdout(io.StringIO()), \
                contextlib.redirect_stderr(io.StringIO()):
            report.main()
        text = page.read_text()
        self.assertIn("g++ 0; the best of 2 repetitions", text)
        self.assertIn("The largest documents were left out.", text)
        self.assertIn("Look up one OID", text)
        self.assertIn("| Load from memory |", text)
        self.assertIn("Look up one OID", (
            self.folder / "performance_ratios.svg").read_text())
        self.assertIn("Load keys in order, narrow text", (
            self.folder / "performance_cost.svg").read_text())


if __name__ == "__main__":
    unittest.main()
