"""Draws cost against size out of what the benchmarks measured: plot.py MEASURED.json PLOT.svg"""

import json
import math
import pathlib
import re
import sys

WIDTH, HEIGHT = 390, 250  # of a panel
LEFT, RIGHT, TOP, BOTTOM = 72, 34, 58, 40
COLOURS = ("#0b6e99", "#c2571a", "#4a7c2c", "#7a4fa3")
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1, "s": 1e3}

# Title, what the size counts, and the lines: a name, a benchmark and a counter of it in ms, or its time.
PANELS = (
    ("Save of a scheme", "goods", (("embedded", "SaveScheme", None), ("by hand", "SaveScheme", "floor_ms"),
                                   ("server, loopback", "SaveSchemeOnServer", None))),
    ("List of all schemes", "schemes", (("list", "SchemeList", None), ("bare query", "SchemeList", "floor_ms"))),
    ("Rate grid read", "entities of ten rates", (("GetRebateRule", "LoadGrid", None),
                                                 ("bare query", "LoadGrid", "floor_ms"))),
    ("Overlap check of ten goods", "stored schemes", (("unknown", "OverlapUnknown", None),
                                                      ("in 20 schemes", "OverlapKnown", None),
                                                      ("one pair", "OverlapPair", None))),
    ("Few schemes out of many", "stored schemes", (("by id", "ListById", None), ("by number", "ListByNumber", None),
                                                   ("by status", "ListByStatus", None))),
    ("Questions about one scheme", "stored schemes", (("name free", "SchemeNameFree", None),
                                                      ("name taken", "SchemeNameTaken", None),
                                                      ("CheckEnable", "CheckEnable", None))),
)


def points_of(measured, benchmark, counter):
    """Size and milliseconds of each run of the benchmark."""
    points = []
    for each in measured:
        match = re.match(rf"{benchmark}/(\d+)\b", each["run_name"])
        if not match or each.get("error_occurred"):
            continue
        time = each[counter] if counter else each["real_time"] * MILLISECONDS[each["time_unit"]]
        points.append((int(match[1]), time))
    return sorted(points)


def decades(values):
    return math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))


def size_text(power):
    return {0: "1", 1: "10", 2: "100", 3: "1,000", 4: "10,000", 5: "100,000", 6: "1,000,000"}[power]


def time_text(power):
    return f"{10 ** power:,} ms" if power >= 0 else f"{10.0 ** power:.{-power}f} ms"


class Panel:
    """One diagram with logarithmic axes, drawn at its place in the picture."""

    def __init__(self, left, top, points):
        self.left, self.top = left, top
        self.sizes = decades([size for size, _ in points])
        self.times = decades([time for _, time in points])
        if self.sizes[0] == self.sizes[1]:
            self.sizes = (self.sizes[0], self.sizes[1] + 1)
        if self.times[0] == self.times[1]:
            self.times = (self.times[0], self.times[1] + 1)

    def x(self, size):
        share = (math.log10(size) - self.sizes[0]) / (self.sizes[1] - self.sizes[0])
        return self.left + LEFT + share * (WIDTH - LEFT - RIGHT)

    def y(self, time):
        share = (math.log10(time) - self.times[0]) / (self.times[1] - self.times[0])
        return self.top + HEIGHT - BOTTOM - share * (HEIGHT - TOP - BOTTOM)

    def frame(self, title, unit):
        yield text(self.left + LEFT, self.top + 20, title, weight="bold", size=13)
        for power in range(self.times[0], self.times[1] + 1):
            y = self.y(10.0 ** power)
            yield line(self.left + LEFT, y, self.left + WIDTH - RIGHT, y)
            yield text(self.left + LEFT - 6, y + 4, time_text(power), anchor="end")
        for power in range(self.sizes[0], self.sizes[1] + 1):
            x = self.x(10.0 ** power)
            yield line(x, self.top + TOP, x, self.top + HEIGHT - BOTTOM)
            yield text(x, self.top + HEIGHT - BOTTOM + 15, size_text(power), anchor="middle")
        yield text(self.left + (LEFT + WIDTH - RIGHT) / 2, self.top + HEIGHT - 8, unit, anchor="middle")

    def curve(self, number, name, points):
        colour = COLOURS[number]
        places = " ".join(f"{self.x(size):.1f},{self.y(time):.1f}" for size, time in points)
        yield f'<polyline points="{places}" fill="none" stroke="{colour}" stroke-width="2"/>'
        for size, time in points:
            yield f'<circle cx="{self.x(size):.1f}" cy="{self.y(time):.1f}" r="2.5" fill="{colour}"/>'
        yield text(self.left + LEFT + 100 * number, self.top + 40, name, colour=colour)


def line(x1, y1, x2, y2):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="#ddd"/>'


def text(x, y, words, anchor="start", weight="normal", size=11, colour="#333"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" font-weight="{weight}" text-anchor="{anchor}" '
            f'fill="{colour}">{words}</text>')


def main():
    measured = json.loads(pathlib.Path(sys.argv[1]).read_text())["benchmarks"]
    measured = [each for each in measured if each.get("aggregate_name", "median") == "median"]
    rows = (len(PANELS) + 1) // 2
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{2 * WIDTH}" height="{rows * HEIGHT}" '
             f'font-family="sans-serif"><rect width="100%" height="100%" fill="white"/>']
    for place, (title, unit, curves) in enumerate(PANELS):
        found = [(name, points_of(measured, benchmark, counter)) for name, benchmark, counter in curves]
        found = [(name, points) for name, points in found if points]
        if not found:
            continue
        panel = Panel(place % 2 * WIDTH, place // 2 * HEIGHT, [point for _, points in found for point in points])
        parts.extend(panel.frame(title, unit))
        for number, (name, points) in enumerate(found):
            parts.extend(panel.curve(number, name, points))
    parts.append("</svg>\n")
    pathlib.Path(sys.argv[2]).write_text("\n".join(parts))


if __name__ == "__main__":
    main()
