#!/usr/bin/env python3
"""Writes measured costs into vm/surface/surface.def.

    ./run bench --costs --markdown | tools/set_costs.py && ./run generate
"""
import pathlib
import re
import sys

SURFACE = pathlib.Path(__file__).resolve().parent.parent / "vm/surface/surface.def"


def main():
    costs = {}
    for line in sys.stdin:
        if m := re.match(r"\| (\w)(\w+) \|[^|]*\|[^|]*\| ([\d.f, ]+) \|", line):
            costs[m[1], m[2]] = m[3]
    if not costs:
        sys.exit("no costs in the input")
    # What the columns of a row are, up to its last kernel, stays.
    SURFACE.write_text(re.sub(
        r"^(KEF_ROW\((\w), (\w+),(?:[^,]*,){4} )(.*)\)$",
        lambda m: m[1] + costs.get((m[2], m[3]), m[4]) + ")", SURFACE.read_text(), flags=re.M))


if __name__ == "__main__":
    main()
