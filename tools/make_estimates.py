#!/usr/bin/env python3
"""Makes the table of required arrays in include/kef_stats.h from stats/estimate.def.

    tools/make_estimates.py            rewrites the table
    tools/make_estimates.py --check    fails where it is not current
"""
import re

from generated import ROOT, write_or_check

SOURCE = ROOT / "stats/estimate.def"
TARGET = ROOT / "include/kef_stats.h"

BEGIN = "/* Made from stats/estimate.def by tools/make_estimates.py: the table below.\n"
END = " * End of the table. */\n"
LINE = " *   {:<17}{:<30}{:<30}{}"


def fields(expression, own):
    """`mean | raw_moment_2 | raw_moment_3` as `mean, raw 2 3`, without the row's own result."""
    if "impossible" in expression:
        return "BAD_METHOD"
    orders = {}
    for name in re.split(r"[\s|]+", expression.strip()):
        if name == own:
            continue
        base, _, order = name.partition("_moment_")
        if not order:
            base, sum_, order = name.partition("_sum_")
            base += " sum" if sum_ else ""
        orders.setdefault(base.replace("_", "-"), []).append(order)
    groups = (" ".join([base, *filter(None, numbers)]) for base, numbers in orders.items())
    return ", ".join(groups) or "-"


def table():
    rows = re.findall(r"^KEF_ESTIMATE\(([^)]*)\)", SOURCE.read_text(), re.M)
    lines = [LINE.format("estimate", "RAW", "RECURRENCE, TILED", "from sums")]
    for row in rows:
        name, result, _, _, _, _, *columns = (part.strip() for part in row.split(","))
        lines.append(LINE.format(name, *(fields(column, result) for column in columns)))
    return "".join(line.rstrip() + "\n" for line in lines)


def main():
    old = TARGET.read_text()
    start = old.index(BEGIN) + len(BEGIN)
    new = old[:start] + table() + old[old.index(END, start):]
    write_or_check(TARGET, new)


if __name__ == "__main__":
    main()
