"""Prints the figures that RoundTrips measured as a Markdown table.

With FILE, replaces the table in that file.

Usage: report.py CSV [FILE]
"""

import argparse
import csv
import datetime
import os
import platform
import re
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


arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
arguments.add_argument("csv", type=argparse.FileType())
arguments.add_argument("file", type=Path, nargs="?")
given = arguments.parse_args()
figures = table(read(given.csv))
print(figures)
if given.file:
    text, count = re.subn(r"(?sm)^\| µs .* processors\.$", lambda _: figures, given.file.read_text())
    assert count == 1, "there is no table to replace"
    given.file.write_text(text)
