"""Prints the figures that RoundTrips measured as a Markdown table.

With --svg, also draws a plot; with --readme, replaces the table in that file.

Usage: report.py CSV [--svg FILE] [--readme FILE]
"""

import argparse
import csv
import datetime
import math
import os
import platform
import re
from html import escape
from pathlib import Path


def read(file):
    """{operation: {messages: microseconds}}, in the order of the file."""
    costs = {}
    for row in csv.DictReader(file):
        costs.setdefault(row["operation"], {})[int(row["messages"])] = float(row["microseconds"])
    return costs


def table(costs):
    sizes = list(costs["ping"])

    def cell(cost, ping):
        pings = cost / ping
        return f"{cost:,.0f} ({pings:,.{0 if pings >= 9.95 else 1}f})"

    lines = ["| µs (in pings) | " + " | ".join(f"{size:,} messages" for size in sizes) + " |",
             "|---|" + "--:|" * len(sizes)]
    for operation, by_size in costs.items():
        cells = [cell(by_size[size], costs["ping"][size]) for size in sizes]
        lines.append(f"| {operation} | " + " | ".join(cells) + " |")
    day = datetime.date.today()
    lines += ["", f"{day}, {platform.system()} on {platform.machine()}, {os.cpu_count()} processors."]
    return "\n".join(lines)


# One line per call, in the colour of its kind.
KINDS = {"search": "search", "claim": "write", "inbox": "read", "recado": "read", "destinos": "read"}
WIDTH, HEIGHT = 500, 436  # narrow, so that the texts can be read on a phone
LEFT, RIGHT, TOP, BOTTOM = 70, 292, 44, 372  # of the area inside the axes
LABELS = 22  # minimum distance between two


def spread(wanted, gap):
    """The places closest to the wanted ones, in the same order and at least `gap` apart."""
    blocks = []  # of touching labels: where each label wants the first of its block
    for place in wanted:
        blocks.append([place])
        while len(blocks) > 1 and mean(blocks[-2]) + gap * len(blocks[-2]) > mean(blocks[-1]):
            touching = blocks.pop()
            blocks[-1] += [place - gap * len(blocks[-1]) for place in touching]
    return [mean(block) + gap * i for block in blocks for i in range(len(block))]


def mean(values):
    return sum(values) / len(values)


def duration(microseconds):
    for unit, size in (("s", 1e6), ("ms", 1e3)):
        if microseconds >= size:
            return f"{microseconds / size:g} {unit}"
    return f"{microseconds:g} µs"


def plot(costs):
    sizes = list(costs["ping"])
    all_costs = [cost for by_size in costs.values() for cost in by_size.values()]
    lowest, highest = math.floor(math.log10(min(all_costs))), math.ceil(math.log10(max(all_costs)))

    def x(size):
        first, last = math.log10(sizes[0]), math.log10(sizes[-1])
        return LEFT + (math.log10(size) - first) / (last - first) * (RIGHT - LEFT)

    def y(cost):
        return BOTTOM - (math.log10(cost) - lowest) / (highest - lowest) * (BOTTOM - TOP)

    parts = []
    for power in range(lowest, highest + 1):
        parts += [f'<path class="grid" d="M{LEFT} {y(10**power):.1f}H{RIGHT}"/>',
                  f'<text class="small" x="{LEFT - 8}" y="{y(10**power) + 5:.1f}" text-anchor="end">'
                  f"{duration(10**power)}</text>"]
    for size in sizes:
        parts += [f'<path class="grid" d="M{x(size):.1f} {TOP}V{BOTTOM}"/>',
                  f'<text class="small" x="{x(size):.1f}" y="{BOTTOM + 26}" text-anchor="middle">'
                  f"{size:,}</text>"]
    parts += [f'<text class="small" x="{(LEFT + RIGHT) / 2}" y="{BOTTOM + 50}" text-anchor="middle">'
              "messages in the inbox</text>",
              f'<text class="small" x="{LEFT}" y="{TOP - 18}">time until the reply</text>']

    lines = sorted(costs.items(), key=lambda line: y(line[1][sizes[-1]]))
    ends = [y(by_size[sizes[-1]]) for _, by_size in lines]
    for (operation, by_size), end, label in zip(lines, ends, spread(ends, LABELS)):
        kind = next((kind for start, kind in KINDS.items() if operation.startswith(start)), "other")
        points = " ".join(f"{x(size):.1f},{y(cost):.1f}" for size, cost in by_size.items())
        parts += [f'<g class="{kind}"><polyline class="line" points="{points}"/>']
        parts += [f'<circle cx="{x(size):.1f}" cy="{y(cost):.1f}" r="3"/>'
                  for size, cost in by_size.items()]
        parts += [f'<path class="lead" d="M{RIGHT + 5} {end:.1f}L{RIGHT + 16} {label:.1f}"/>',
                  f'<text x="{RIGHT + 20}" y="{label + 5:.1f}">{escape(operation)}</text></g>']
    return FRAME.format(width=WIDTH, height=HEIGHT, parts="\n  ".join(parts))


FRAME = """<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" \
viewBox="0 0 {width} {height}" role="img" aria-labelledby="title" \
font-family="system-ui, sans-serif" font-size="15.5">
  <title id="title">The time until the reply against the messages in the inbox, for each call</title>
  <style>
    .paper {{ fill: #fff }} .grid {{ stroke: #e6e5f0; fill: none }}
    .line {{ stroke-width: 2; fill: none; stroke-linejoin: round }} .lead {{ opacity: .5 }}
    .small {{ fill: #5a5872 }}
    .other {{ stroke: #77758f; fill: #5a5872 }} .read {{ stroke: #4f46b8; fill: #4f46b8 }}
    .search {{ stroke: #1f7a8c; fill: #1f7a8c }} .write {{ stroke: #a63d84; fill: #a63d84 }}
    text {{ stroke: none }}
    @media (prefers-color-scheme: dark) {{
      .paper {{ fill: #15141f }} .grid {{ stroke: #2e2c42 }} .small {{ fill: #b4b2cc }}
      .other {{ stroke: #9a98b0; fill: #b4b2cc }} .read {{ stroke: #9d95ff; fill: #aea7ff }}
      .search {{ stroke: #4fb3c6; fill: #6cc5d6 }} .write {{ stroke: #e58bc4; fill: #eba0d0 }}
    }}
  </style>
  <rect class="paper" width="{width}" height="{height}" rx="8"/>
  {parts}
</svg>
"""

arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
arguments.add_argument("csv", type=argparse.FileType())
arguments.add_argument("--svg", type=Path)
arguments.add_argument("--readme", type=Path)
given = arguments.parse_args()
figures = read(given.csv)
print(table(figures))
if given.svg:
    given.svg.write_text(plot(figures))
if given.readme:
    before, after = "<!-- Scripts/bench --record writes what follows -->\n", "\n<!-- until here -->"
    text, count = re.subn(f"(?s)(?<={before}).*(?={after})", lambda _: table(figures),
                          given.readme.read_text())
    assert count == 1, "the table's place is not marked"
    given.readme.write_text(text)
