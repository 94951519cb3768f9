"""Draws the plots of docs/performance.md, as SVG."""

import html
import math
from collections import defaultdict

from wording import ratio, readable

NO_PEERS = {"floor", "yardstick"}
INK, PALE, GRID = "#222222", "#9a9a9a", "#dddddd"
SLOWER, EQUAL, FASTER = "#0072b2", "#555555", "#d55e00"
# Colours that people who do not see red from green can tell apart.
LINES = {"ours": "#000000", "plain maps": "#0072b2", "GLib": "#e69f00",
         "SimpleIni": "#009e73", "Boost ptree": "#cc79a7", "inih": "#56b4e9",
         "floor": PALE}
WORDS = {"ours": "korvan", "floor": "floor: nothing can be faster"}


class Svg:
    def __init__(self, width, height):
        self.elements = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} '
            f'{height}" width="{width}" height="{height}" '
            'font-family="DejaVu Sans, Verdana, sans-serif" font-size="12">',
            '<rect width="100%" height="100%" fill="#ffffff"/>']

    def line(self, x1, y1, x2, y2, colour=GRID, width=1, dashes=""):
        self.elements.append(
            f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" '
            f'stroke="{colour}" stroke-width="{width}"'
            + (f' stroke-dasharray="{dashes}"' if dashes else "") + "/>")

    def text(self, x, y, text, anchor="start", colour=INK, bold=False,
             size=12):
        self.elements.append(
            f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" '
            f'fill="{colour}" font-size="{size}"'
            + (' font-weight="bold"' if bold else "")
            + f">{html.escape(text)}</text>")

    def path(self, points, colour, width, dashes=""):
        self.elements.append(
            f'<polyline fill="none" stroke="{colour}" stroke-width="{width}"'
            + (f' stroke-dasharray="{dashes}"' if dashes else "")
            + ' points="' + " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
            + '"/>')

    def dot(self, x, y, colour, radius):
        self.elements.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" '
                             f'r="{radius}" fill="{colour}"/>')

    def write(self, path):
        path.write_text("\n".join(self.elements + ["</svg>"]) + "\n")


def scale(low, high, start, end):
    """From a logarithmic axis to places on paper."""
    factor = (end - start) / math.log(high / low)
    return lambda value: start + math.log(value / low) * factor


def decades(low, high):
    """The powers of ten around an interval."""
    first = math.floor(math.log10(low))
    last = math.ceil(math.log10(high))
    return [10.0**power for power in range(first, last + 1)]


# The first plot. Its axis ends where differences no longer matter.
LOW, HIGH = 0.06, 100
TITLES, TIMES, LEFT, RIGHT, STEP, TOP = 20, 376, 400, 760, 21, 128


def draw_ratios(table, path):
    """A line for each row: the peers' times as multiples of korvan's."""
    lines = sum(len(section["rows"]) + 1 for section in table["sections"])
    bottom = TOP + lines * STEP + 6
    svg = Svg(960, bottom + 52)
    x = scale(LOW, HIGH, LEFT, RIGHT)

    svg.text(TITLES, 28, f"{table['title']}: korvan beside its peers",
             bold=True, size=16)
    for place, (colour, text) in enumerate((
            (SLOWER, "the fastest peer: slower than korvan"),
            (EQUAL, "about as fast (within 10 %)"),
            (FASTER, "faster than korvan"))):
        at = TITLES + 8 + (0, 264, 478)[place]
        svg.dot(at, 50, colour, 5)
        svg.text(at + 12, 54, text)
    svg.dot(TITLES + 8, 74, PALE, 3)
    svg.text(TITLES + 20, 78, "the other peers")
    svg.line(TITLES + 272, 67, TITLES + 272, 81, INK, 2)
    svg.text(TITLES + 284, 78, "the floor: nothing can be faster")

    for tick in (0.1, 1, 10, 100):
        svg.line(x(tick), TOP, x(tick), bottom)
        svg.text(x(tick), bottom + 16, f"{tick:g}x", "middle")
    svg.line(x(1), TOP - 4, x(1), bottom, INK, 1.5)
    svg.text(x(1), TOP - 10, "korvan", "middle", bold=True)
    svg.text(LEFT, TOP - 10, "faster", "start", FASTER)
    svg.text(RIGHT, TOP - 10, "slower", "end", SLOWER)
    svg.text(TIMES, TOP - 10, "korvan's time", "end", "#666666")
    svg.text(RIGHT + 22, TOP - 10, "the fastest peer", "start", "#666666")
    svg.text((LEFT + RIGHT) / 2, bottom + 38,
             "time of the others, as a multiple of korvan's", "middle")

    y = TOP - STEP / 2
    for section in table["sections"]:
        y += STEP
        svg.text(TITLES, y + 4, section["title"], bold=True)
        for row in section["rows"]:
            y += STEP
            draw_ratio(svg, row, x, y)
    svg.write(path)


def draw_ratio(svg, row, x, y):
    def place(to_ours):
        return x(min(max(to_ours, LOW), HIGH))

    svg.text(TITLES + 12, y + 4, row["title"])
    svg.text(TIMES, y + 4, readable(row["ours"], row["unit"]), "end",
             "#666666")
    svg.line(LEFT, y, RIGHT, y, "#eeeeee")
    peers = sorted((other["to_ours"], name)
                   for name, other in row["others"].items()
                   if name not in NO_PEERS)
    if "floor" in row["others"]:
        at = place(row["others"]["floor"]["to_ours"])
        svg.line(at, y - 7, at, y + 7, INK, 2)
    if peers:
        to_ours, name = peers[0]
        colour = (EQUAL if 0.9 <= to_ours <= 1.1
                  else SLOWER if to_ours > 1 else FASTER)
        svg.line(x(1), y, place(to_ours), y, colour, 3)
        for other, _ in peers[1:]:
            svg.dot(place(other), y, PALE, 3)
            if other > HIGH:
                svg.text(RIGHT + 4, y + 4, "\u203a", colour=PALE)
        svg.dot(place(to_ours), y, colour, 5)
        svg.text(RIGHT + 22, y + 4, f"{name} {ratio(to_ours)}x", "start",
                 colour)


def panels_of(tables):
    """{panel: {competitor: [(keys, nanoseconds for a key)]}}"""
    panels = defaultdict(lambda: defaultdict(list))
    for table in tables:
        for section in table["sections"]:
            for row in section["rows"]:
                if row["line"] is None:
                    continue
                figures = {"ours": row["ours"],
                           **{name: other["figure"]
                              for name, other in row["others"].items()}}
                for name, figure in figures.items():
                    panels[row["line"]][name].append(
                        (row["keys"], figure / row["keys_each"]))
    return panels


def draw_costs(tables, path):
    """A panel for each operation: what a key costs in documents of all
    sizes."""
    panels = panels_of(tables)
    points = [point for panel in panels.values()
              for line in panel.values() for point in line]
    if not points:
        return
    sizes = sorted({keys for keys, _ in points})
    costs = [cost for _, cost in points]
    width, height, columns, top = 430, 250, 2, 70
    svg = Svg(width * columns + 10,
              top + height * math.ceil(len(panels) / columns))
    svg.text(20, 28, "What one key costs as documents grow", bold=True,
             size=16)
    at = 24
    for name in LINES:
        if any(name in panel for panel in panels.values()):
            draw_line(svg, name, [(at, 50), (at + 26, 50)])
            label = WORDS.get(name, name)
            svg.text(at + 32, 54, label, bold=name == "ours")
            at += 54 + 7.2 * len(label)
    for place, (title, lines) in enumerate(sorted(panels.items())):
        left = place % columns * width + 70
        base = top + place // columns * height + 200
        x = scale(sizes[0], max(sizes[-1], 10 * sizes[0]), left,
                  left + width - 100)
        ticks = decades(min(costs), max(costs))
        y = scale(ticks[0], ticks[-1], base, base - 164)
        svg.text(left, base - 174, title, bold=True)
        for tick in ticks:
            svg.line(left, y(tick), x(sizes[-1]), y(tick))
            svg.text(left - 6, y(tick) + 4, f"{tick:,.0f} ns", "end", size=11)
        for keys in sizes:
            svg.line(x(keys), y(ticks[0]), x(keys), y(ticks[-1]))
            svg.text(x(keys), base + 16, f"{keys:,}", "middle", size=11)
        svg.text((left + x(sizes[-1])) / 2, base + 32, "keys in the document",
                 "middle", size=11)
        for name in reversed(LINES):
            if name in lines:
                draw_line(svg, name, [(x(keys), y(cost))
                                      for keys, cost in sorted(lines[name])])
    svg.write(path)


def draw_line(svg, name, points):
    svg.path(points, LINES[name], 3 if name == "ours" else 1.6,
             "5 3" if name == "floor" else "")
