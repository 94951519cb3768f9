#!/usr/bin/env python3
"""report.py [--whole] [--docs FOLDER] [--compiler NAME] OUTPUT INPUT...

Makes two tables of the JSON files that the benchmark programs write: prints
them, and writes them as JSON to OUTPUT. With --docs it also rewrites the
figures in FOLDER/performance.md and draws the plots beside it.

Fails, after all that, if the library is faster than a floor by more than noise,
or if benchmarks and bench/rows.py do not agree. With --whole a row that was not
measured is a failure too.
"""

import argparse
import json
import pathlib
import platform
import sys
from collections import defaultdict

import plots
import rows as listed
from wording import ratio, readable

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library adds to a name.
NAME_SUFFIXES = {"manual_time", "real_time", "process_time"}
OURS, FLOOR, YARDSTICK = "ours", "floor", "yardstick"
# Figures differ by as much from run to run.
NOISE = 0.1
BEGIN = "<!-- Figures: scripts/bench writes them. -->\n"
END = "<!-- End of the figures. -->\n"


def name_of(run):
    """The row and the competitor of a benchmark, row/competitor[/size]."""
    row, competitor, *rest = run["name"].split("/")
    sizes = [part for part in rest if part not in NAME_SUFFIXES
             and not part.startswith(("iterations:", "repeats:"))]
    return "_".join([row, *sizes]), competitor


def figure_of(run):
    """Bytes for a key, or nanoseconds for an operation."""
    if "bytes_per_key" in run:
        return run["bytes_per_key"]
    # A time taken by hand is the processor's already.
    kind = "real_time" if "manual_time" in run["name"] else "cpu_time"
    return run[kind] * NANOSECONDS[run["time_unit"]] / run.get("operations", 1)


class Figures:
    """What was measured: the best figure of each row and competitor."""

    def __init__(self, paths):
        self.best = defaultdict(dict)
        self.units = {}
        self.errors = []
        self.context = {}
        self.repetitions = 0
        for path in paths:
            text = pathlib.Path(path).read_text()
            if text:  # else every benchmark of the program was filtered out
                self._add(json.loads(text))

    def _add(self, report):
        self.context = self.context or report["context"]
        for run in report["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            if run.get("error_occurred"):
                self.errors.append(f"{run['name']}: {run['error_message']}")
                continue
            row, competitor = name_of(run)
            # What disturbs a benchmark makes it slower and never faster.
            self.best[row][competitor] = min(
                figure_of(run), self.best[row].get(competitor, float("inf")))
            self.units[row] = "B" if "bytes_per_key" in run else "ns"
            self.repetitions = max(self.repetitions, run["repetitions"])


def check(row, best):
    """What is wrong with the figures of a row."""
    errors = []
    if OURS not in best:
        return [f"{row.name}: the library was not measured"]
    for kind, description, known in (
            (FLOOR, row.floor, listed.FLOORS),
            (YARDSTICK, row.yardstick, listed.YARDSTICKS)):
        if (kind in best) != (description is not None):
            errors.append(f"{row.name}: {kind} measured: {kind in best}; "
                          f"described: {description is not None}")
        if description is not None and description not in known:
            errors.append(f"{row.name}: no {kind} is called {description}")
    errors += [f"{row.name}: no competitor is called {name}"
               for name in best if name not in listed.COMPETITORS]
    if FLOOR in best and best[OURS] < best[FLOOR] * (1 - NOISE):
        errors.append(f"{row.name}: {best[OURS]:.3g} is less than the floor, "
                      f"{best[FLOOR]:.3g}: that is no floor")
    return errors


def compare(figures, tables=listed.TABLES, is_whole=False):
    """The tables with their figures, and what is wrong with them. Rows that
    were not measured are left out, which is wrong in a whole run."""
    errors = list(figures.errors)
    unlisted = dict(figures.best)
    compared = []
    for table in tables:
        sections = []
        for section in table.sections:
            rows = []
            for row in section.rows:
                best = unlisted.pop(row.name, None)
                if best is None:
                    if is_whole:
                        errors.append(f"{row.name}: it was not measured")
                    continue
                errors += check(row, best)
                if OURS not in best:
                    continue
                ours = best[OURS]
                rows.append({
                    "name": row.name,
                    "title": row.title,
                    "unit": figures.units[row.name],
                    "line": row.line,
                    "keys": row.keys,
                    "keys_each": row.keys_each,
                    "ours": ours,
                    "others": {
                        name: {"figure": figure, "to_ours": figure / ours}
                        for name, figure in best.items() if name != OURS},
                    "floor": row.floor,
                    "yardstick": row.yardstick,
                })
            if rows:
                sections.append({"title": section.title, "rows": rows})
        if sections:
            compared.append({"title": table.title, "sections": sections})
    errors += [f"{name}: bench/rows.py does not list it" for name in unlisted]
    return compared, errors


def rows_of(tables):
    return [row for table in tables for section in table["sections"]
            for row in section["rows"]]


def section_cells(section):
    """The texts of a section, line by line; the first is its heading."""
    names = {name for row in section["rows"] for name in row["others"]}
    columns = [name for name in listed.COMPETITORS if name in names]
    lines = [[section["title"], "korvan", *columns]]
    for row in section["rows"]:
        line = [row["title"], readable(row["ours"], row["unit"])]
        for name in columns:
            other = row["others"].get(name)
            line.append(
                f"{readable(other['figure'], row['unit'])} "
                f"{'(' + ratio(other['to_ours']) + ')':>7}" if other else "-")
        lines.append(line)
    return lines


def table_lines(table):
    """The sections of a table, aligned. Titles and our own figures stand in the
    same columns everywhere; the others differ from section to section."""
    sections = [section_cells(section) for section in table["sections"]]
    common = [max(len(line[column]) for section in sections for line in section)
              for column in (0, 1)]
    lines = []
    for section in sections:
        widths = [max(map(len, column)) for column in zip(*section)]
        widths[:2] = common
        if lines:
            lines.append("")
        lines += ["  ".join([first.ljust(widths[0]),
                             *(text.rjust(width) for text, width
                               in zip(others, widths[1:]))])
                  for first, *others in section]
    return lines


def least(tables):
    """(title, [(operation, what its floor or yardstick does)]), of those that
    were measured."""
    for kind, descriptions, title in (
            (FLOOR, listed.FLOORS, "Floors: nothing can be faster"),
            (YARDSTICK, listed.YARDSTICKS,
             "Yardsticks: cleverer code can be faster")):
        used = {row[kind] for row in rows_of(tables)}
        lines = [both for key, both in descriptions.items() if key in used]
        if lines:
            yield title, lines


EXPLANATION = ("Time for one operation, and in brackets how many times "
               "korvan's time that is:\nabove 1 is slower than korvan.")


def print_tables(tables):
    print(EXPLANATION)
    for table in tables:
        print(f"\n{table['title'].upper()}\n")
        print(*table_lines(table), sep="\n")
    for title, lines in least(tables):
        print(f"\n{title.upper()}\n")
        for operation, text in lines:
            print(f"{operation}:\n    {text}")


def machine(figures, compiler, is_whole):
    context = figures.context
    try:
        system = platform.freedesktop_os_release()["PRETTY_NAME"]
    except OSError:
        system = platform.system()
    parts = [f"{context['num_cpus']} cores of {context['mhz_per_cpu']} MHz",
             system, *([compiler] if compiler else [])]
    return (f"{', '.join(parts)}; the best of {figures.repetitions} "
            "repetitions. The load average was "
            f"{context['load_avg'][0]:.1f} when the first program began."
            + ("" if is_whole else " The largest documents were left out."))


def page_figures(figures, tables, compiler, is_whole):
    """The part of docs/performance.md that holds figures."""
    lines = [machine(figures, compiler, is_whole), "",
             EXPLANATION.replace("\n", " "), ""]
    for table in tables:
        lines += [f"### {table['title']}", "", "```", *table_lines(table),
                  "```", ""]
    for title, least_of in least(tables):
        lines += [f"### {title}", "", "| Operation | What is timed |",
                  "|---|---|"]
        lines += [f"| {operation} | {text} |" for operation, text in least_of]
        lines.append("")
    return "\n".join(lines)


def with_figures(page, text):
    before, begin, rest = page.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        raise ValueError("the page does not mark where its figures stand")
    return f"{before}{BEGIN}\n{text}\n{END}{after}"


def main():
    parser = argparse.ArgumentParser(
        description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--whole", action="store_true")
    parser.add_argument("--docs", type=pathlib.Path)
    parser.add_argument("--compiler")
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("inputs", nargs="+")
    given = parser.parse_args()
    figures = Figures(given.inputs)
    tables, errors = compare(figures, is_whole=given.whole)
    print_tables(tables)
    given.output.write_text(json.dumps(tables, indent=1) + "\n")
    if given.docs:
        page = given.docs / "performance.md"
        page.write_text(with_figures(
            page.read_text(),
            page_figures(figures, tables, given.compiler, given.whole)))
        plots.draw_ratios(tables[0], given.docs / "performance_ratios.svg")
        plots.draw_costs(tables, given.docs / "performance_cost.svg")
    for error in errors:
        print(f"error: {error}", file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
