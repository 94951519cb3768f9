#!/usr/bin/env python3
"""report.py [--plots FOLDER] OUTPUT INPUT...

Makes one table of the JSON files that benchmark programs write: prints it,
writes it as JSON to OUTPUT, and draws plots of it into FOLDER.

A benchmark is named operation/competitor[/size]. The competitor "ours" is
compared with the fastest of the others, and with "limit", what can't be had
for less. Figures are medians of the repetitions, of the processor's time or,
where a benchmark counts "bytes_per_key", of that.
"""

import argparse
import json
import math
import pathlib
import statistics
import sys
from collections import defaultdict

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library adds to a name.
NAME_SUFFIXES = {"manual_time", "real_time", "process_time"}


def read(paths):
    """{(operation, size): {competitor: [figures]}} and the operations' units."""
    figures = defaultdict(lambda: defaultdict(list))
    units = {}
    for path in paths:
        text = pathlib.Path(path).read_text()
        if not text:  # every benchmark of the program was filtered out
            continue
        for run in json.loads(text)["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            if run.get("error_occurred"):
                sys.exit(f"{run['name']}: {run['error_message']}")
            parts = [part for part in run["name"].split("/")
                     if part not in NAME_SUFFIXES
                     and not part.startswith(("iterations:", "repeats:"))]
            if len(parts) not in (2, 3):
                continue
            operation, competitor = parts[:2]
            key = operation, int(parts[2]) if len(parts) == 3 else None
            if "bytes_per_key" in run:
                figure, units[key] = run["bytes_per_key"], "B"
            else:
                # A time taken by hand is the processor's already.
                kind = "real" if "manual_time" in run["name"] else "cpu"
                figure = run[kind + "_time"] * NANOSECONDS[run["time_unit"]]
                units[key] = "ns"
            figures[key][competitor].append(figure)
    return figures, units


def compare(figures, units):
    """The rows of the table."""
    rows = []
    for (operation, size), competitors in figures.items():
        medians = {name: statistics.median(values)
                   for name, values in competitors.items()}
        if "ours" not in medians:
            continue
        ours = medians.pop("ours")
        limit = medians.pop("limit", None)
        best = min(medians, key=medians.get, default=None)
        rows.append({
            "operation": operation,
            "size": size,
            "unit": units[operation, size],
            "ours": ours,
            "peers": medians,
            "best_peer": best,
            "limit": limit,
            "to_peer": ours / medians[best] if best else None,
            "to_limit": ours / limit if limit else None,
        })
    return sorted(rows, key=lambda row: (row["operation"], row["size"] or 0))


def readable(figure, unit):
    if figure is None:
        return "-"
    if unit == "ns":
        for unit, nanoseconds in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
            if figure >= nanoseconds:
                figure /= nanoseconds
                break
        else:
            unit = "ns"
    return f"{figure:.3g} {unit}" if figure < 1000 else f"{figure:.0f} {unit}"


def label(row):
    return row["operation"] + (f" {row['size']}" if row["size"] else "")


def print_table(rows):
    lines = [("operation", "ours", "best peer", "limit", "ours to peer",
              "ours to limit")]
    for row in rows:
        unit, best = row["unit"], row["best_peer"]
        lines.append((
            label(row),
            readable(row["ours"], unit),
            f"{readable(row['peers'][best], unit)} ({best})" if best else "-",
            readable(row["limit"], unit),
            f"{row['to_peer']:.2f}" if row["to_peer"] else "-",
            f"{row['to_limit']:.2f}" if row["to_limit"] else "-"))
    widths = [max(map(len, column)) for column in zip(*lines)]
    for first, *others in lines:
        print(first.ljust(widths[0]),
              *(text.rjust(width) for text, width in zip(others, widths[1:])),
              sep="  ")


# Plots. Colours that people who do not see red from green can tell apart.
COLOURS = {"ours": "#000000", "limit": "#999999"}
PEER_COLOURS = ["#0072b2", "#e69f00", "#009e73", "#cc79a7", "#d55e00",
                "#56b4e9", "#b2a000", "#7f3c8d"]


class Svg:
    def __init__(self, width, height):
        self.elements = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} '
            f'{height}" width="{width}" height="{height}" '
            'font-family="sans-serif" font-size="11">',
            '<rect width="100%" height="100%" fill="#ffffff"/>']

    def line(self, x1, y1, x2, y2, colour="#dddddd"):
        self.elements.append(
            f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" '
            f'stroke="{colour}"/>')

    def text(self, x, y, text, anchor="start", colour="#333333"):
        self.elements.append(f'<text x="{x:.1f}" y="{y:.1f}" '
                             f'text-anchor="{anchor}" fill="{colour}">'
                             f'{text}</text>')

    def path(self, points, colour, width):
        self.elements.append(
            f'<polyline fill="none" stroke="{colour}" stroke-width="{width}" '
            'points="' + " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
            + '"/>')

    def bar(self, x, y, width, height, colour):
        self.elements.append(f'<rect x="{x:.1f}" y="{y:.1f}" '
                             f'width="{width:.1f}" height="{height:.1f}" '
                             f'fill="{colour}"/>')

    def circle(self, x, y, colour):
        self.elements.append(
            f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>')

    def write(self, path):
        path.write_text("\n".join(self.elements + ["</svg>"]) + "\n")


def scale(low, high, start, end):
    """From a logarithmic axis to places on paper."""
    factor = (end - start) / (math.log(high) - math.log(low))
    return lambda value: start + (math.log(value) - math.log(low)) * factor


def plot_costs(rows, path):
    """Cost per key against the number of keys, one panel an operation."""
    panels = defaultdict(dict)
    for row in rows:
        if row["unit"] == "ns" and row["size"] in (10**3, 10**4, 10**5, 10**6):
            panels[row["operation"]][row["size"]] = {
                "ours": row["ours"], **row["peers"],
                **({"limit": row["limit"]} if row["limit"] else {})}
    panels = {operation: sizes for operation, sizes in panels.items()
              if len(sizes) >= 3}
    if not panels:
        return
    peers = sorted({name for sizes in panels.values()
                    for figures in sizes.values() for name in figures}
                   - set(COLOURS))
    colours = {**COLOURS, **dict(zip(peers, PEER_COLOURS))}
    width, height, columns = 360, 240, 2
    svg = Svg(width * columns,
              height * math.ceil(len(panels) / columns) + 30)
    for place, name in enumerate(colours):
        svg.text(20 + place * 85, 18, name, colour=colours[name])
    for place, (operation, sizes) in enumerate(panels.items()):
        left = place % columns * width + 50
        top = place // columns * height + 50
        costs = [figure / size for size, figures in sizes.items()
                 for figure in figures.values()]
        low = 10 ** math.floor(math.log10(min(costs)))
        high = 10 ** math.ceil(math.log10(max(costs)))
        x = scale(10**3, 10**6, left, left + width - 80)
        y = scale(low, high, top + height - 70, top)
        svg.text(left, top - 8, f"{operation}, ns a key")
        for size in (10**3, 10**4, 10**5, 10**6):
            svg.line(x(size), y(low), x(size), y(high))
            svg.text(x(size), y(low) + 14, f"{size:,}".replace(",", " "),
                     "middle")
        tick = low
        while tick <= high:
            svg.line(x(10**3), y(tick), x(10**6), y(tick))
            svg.text(left - 5, y(tick) + 4, f"{tick:g}", "end")
            tick *= 10
        for name, colour in colours.items():
            points = [(x(size), y(figures[name] / size))
                      for size, figures in sorted(sizes.items())
                      if name in figures]
            if points:
                svg.path(points, colour, 2.5 if name == "ours" else 1.2)
    svg.write(path)


def plot_ratios(rows, path):
    """Ours to the best peer, as bars, and to the limit, as dots."""
    rows = [row for row in rows if row["to_peer"] or row["to_limit"]]
    ratios = [row[kind] for row in rows for kind in ("to_peer", "to_limit")
              if row[kind]]
    if not ratios:
        return
    low = min(0.1, 10 ** math.floor(math.log10(min(ratios))))
    high = max(10, 10 ** math.ceil(math.log10(max(ratios))))
    left, right, step = 300, 700, 16
    svg = Svg(720, len(rows) * step + 60)
    x = scale(low, high, left, right)
    bottom = 50 + len(rows) * step
    svg.text(20, 18, "ours to the best peer (bars) and to the limit (dots); "
                     "less is better")
    tick = low
    while tick <= high:
        svg.line(x(tick), 40, x(tick), bottom,
                 "#333333" if math.isclose(tick, 1) else "#dddddd")
        svg.text(x(tick), 35, f"{tick:g}", "middle")
        tick *= 10
    for place, row in enumerate(rows):
        y = 50 + place * step
        svg.text(left - 8, y + 9, label(row), "end")
        if row["to_peer"]:
            ends = sorted((x(1), x(row["to_peer"])))
            svg.bar(ends[0], y, max(ends[1] - ends[0], 1), step - 5,
                    "#0072b2" if row["to_peer"] <= 1 else "#d55e00")
        if row["to_limit"]:
            svg.circle(x(row["to_limit"]), y + (step - 5) / 2, "#000000")
    svg.write(path)


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--plots", type=pathlib.Path)
    arguments.add_argument("output", type=pathlib.Path)
    arguments.add_argument("inputs", nargs="+")
    given = arguments.parse_args()
    rows = compare(*read(given.inputs))
    if not rows:
        sys.exit("no benchmark is named operation/ours")
    print_table(rows)
    given.output.write_text(json.dumps(rows, indent=1) + "\n")
    if given.plots:
        plot_costs(rows, given.plots / "performance_cost.svg")
        plot_ratios(rows, given.plots / "performance_ratios.svg")


if __name__ == "__main__":
    main()
