#!/usr/bin/env python3
"""Makes docs/functions.md, every function with accuracy, cost and error conditions, and the table of
README.md, some functions with their figures.

    tools/list_functions.py            rewrites it
    tools/list_functions.py --check    fails where it is not current

The kernels and costs come from vm/surface/surface.def, the errors from the measured table of
docs/accuracy.md, speeds from that of docs/performance.md, the conditions from docs/errors.md.
"""
import math
import re

from generated import ROOT, write_or_check

TARGET = ROOT / "docs/functions.md"
SLOTS = ("HA", "LA", "EP")

HEAD = """\
# Functions

Made by `tools/list_functions.py` from [vm/surface/surface.def](../vm/surface/surface.def),
[accuracy.md](accuracy.md) and [errors.md](errors.md); do not edit.

- **error**: the worst of accuracy.md, in ulp for HA (*rounded*: correctly rounded), in bits of the
  relative error for the others; of two results the worse. Slots that share a kernel stand together.
- **cost** of an element relative to others, as published in `kef_vtm_kernel_..._ctab`; the order is that
  of the errors. Pack and Unpack carry the mark of pure data movement.
- Conditions are those of both types; a threshold in parentheses is single precision's. What the results
  are beyond that, and the names in reports: [errors.md](errors.md).
- Of a complex result the error is that of the worse component, or where the bound is that of the norm, in units of
  2^-53 (2^-24) of it.

"""

CONDITIONS = ("domain error", "singularity", "overflow", "underflow")

# Title, the types, single first, and the last columns.
TABLES = (("Real functions", "sd", CONDITIONS), ("Complex functions", "cz", ("conditions",)))


def columns(line):
    """Of a table row; a bar may be quoted."""
    return [c.strip() for c in re.split(r"(?<!\\)\|", line)[1:-1]]


def surface():
    """By function and type: the kernels and costs of the slots, in the order of SLOTS."""
    found = {}
    text = (ROOT / "vm/surface/surface.def").read_text()
    for m in re.finditer(r"^KEF_ROW\((\w), (\w+), +\w+, +(.*)\)", text, re.M):
        fields = [f.strip() for f in m[3].split(",")]
        kernels, costs = fields[:3], [float(c.rstrip("f")) for c in fields[3:]]
        found.setdefault(m[2], {})[m[1]] = [(kernels[i], costs[i]) for i in (1, 0, 2)]
    return found


def figure(text):
    return float(text.split()[0]) if text != "rounded" else 0


def measured():
    """By function with type, and kernel: the worst error as text; of a complex result that of the components, or of
    the norm where the bound is."""
    found = {}
    for line in (ROOT / "docs/accuracy.md").read_text().splitlines():
        m = re.match(r"\| ([sdcz][A-Z]\w*)( \w+)? \| ((?:HA|LA|EP)[ HLAEP]*) \|", line)
        if not m:
            continue
        _, _, _, ulp, _, _, bits, _, bound = columns(line)
        for slot in m[3].split():
            if not bound or (m[2] == " norm" and "units" not in bound):
                continue
            exact = bits == "exact" or "rounded" in bound
            key = (m[1], slot)
            # No figure promises more than was measured.
            up = math.ceil(float(ulp) * 100) / 100
            down = math.floor(float(bits) * 10) / 10 if not exact else 0
            unit = re.search("ulp|units", bound)
            text = "rounded" if exact else f"{up:.2f} {unit[0]}" if unit else f"{down:.1f} bits"
            # The second result or part of it; ulp count upwards, bits downwards.
            worse = min if "bits" in text else max
            found[key] = worse(found[key], text, key=figure) if key in found else text
    return found


def conditions():
    """By types and function: domain, singularity, overflow, underflow; of complex functions in one cell. Their rows
    stand below a heading that names them, in a table like the real one or with a column of statuses."""
    found, kinds = {}, "sd"
    for line in (ROOT / "docs/errors.md").read_text().splitlines():
        if line.startswith("#"):
            kinds = "cz" if "omplex" in line else "sd"
        cells = columns(line)
        if line.startswith("| `"):
            for name in re.findall(r"`(\w+)`", cells[0]):
                found[kinds, name] = cells[3:7] if kinds == "sd" else [joined(cells[3:7])]
        elif kinds == "cz" and line.startswith("| "):
            for name in re.findall(r"\w+", cells[0]):
                found[kinds, name] = [cells[1].removeprefix("none")]
    return found


def joined(cells):
    return "; ".join(f"{name}: {cell}" for name, cell in zip(CONDITIONS, cells) if cell)


def cells_of(function, kind, slots, errors):
    """The cells `error` and `cost` of one type."""
    kernels = {}
    for name, (kernel, cost) in zip(SLOTS, slots):
        kernels.setdefault(kernel, ([], cost))[0].append(name)
    error = [f"{' '.join(names)}: {errors[kind + function, names[0]]}"
             for names, _ in kernels.values() if (kind + function, names[0]) in errors]
    return "; ".join(error), " / ".join(f"{cost:g}" for _, cost in kernels.values())


def document():
    errors, conditions_of = measured(), conditions()
    lines = [HEAD.rstrip("\n")]
    for title, kinds, heads in TABLES:
        lines += ["", f"## {title}", "", "| " + " | ".join(
            ["function", "single: error", "cost", "double: error", "cost", *heads]) + " |",
            "|" + "---|" * (5 + len(heads))]
        for function, types in surface().items():
            if kinds[0] not in types:
                continue
            cells = [cell for kind in kinds for cell in cells_of(function, kind, types[kind], errors)]
            # Pack and Unpack have one row for all types.
            of_kind = [""] if "ack" in function and kinds == "cz" else conditions_of[kinds, function]
            lines.append("| " + " | ".join([f"`{function}`", *cells, *of_kind]) + " |")
    return "\n".join(lines) + "\n"


# The libraries of README.md, and where their speeds stand: document, words of the command.
LIBRARIES = {"i386": ("docs/performance.md", ""), "x86-64-v3": ("docs/members.md", " --member v3")}


def speeds(library):
    """By function with type, and kernel: cycles at n = 1000, and the peer with its cycles; and the words on
    all of them."""
    document, words = LIBRARIES[library]
    text = (ROOT / document).read_text()
    found, means = {}, []
    for kind in "real", "complex":
        part = text.split(f"<!-- ./run bench --{kind}{words} --markdown -->")[1].split("<!-- end -->")[0]
        for line in part.splitlines():
            if m := re.match(r"\| ([sdcz][A-Z]\w*) \| ((?:HA|LA|EP)[ HLAEP]*) \|", line):
                cells = columns(line)
                for slot in m[2].split():
                    found[m[1], slot] = cells[5].split()[0], cells[7].split(";")[0]
        mean, kernels = re.search(r"n = 1000, all: ([\d.]+) \((\d+) kernels\)", part).groups()
        means.append(f"{float(mean):.2f} over {kernels} kernels of {kind} functions")
    return found, f"{' and '.join(means)} ({library})"


IN_README = "dExp dLn dSin dPow dAtan dErf dTGamma sExp sLn zExp zLn zSin zPow".split()
TYPES = {"s": "single", "d": "double", "c": "complex single", "z": "complex double"}


def readme():
    """README.md with its table made again."""
    errors, measurements = measured(), {library: speeds(library) for library in LIBRARIES}
    head = [f"{library}: HA / LA / EP | fastest peer of HA's class" for library in LIBRARIES]
    lines = ["| " + " | ".join(["function", *head, "worst error of HA"]) + " |", "|---" * (2 * len(head) + 2) + "|"]
    for name in IN_README:
        cells = [f"{TYPES[name[0]]} {name[1:]}"]
        for speed, _ in measurements.values():
            cells += [" / ".join(speed[name, slot][0] for slot in SLOTS), speed[name, "HA"][1]]
        cells.append(errors[name, "HA"].replace("rounded", "correctly rounded"))
        lines.append("| " + " | ".join(cells) + " |")
    means = ", ".join(words for _, words in measurements.values())
    table = "\n".join(lines) + f"\n\nThe geometric mean of the ratio to the fastest peer of a slot's class is {means}."
    return re.sub(r"(<!-- tools/list_functions.py -->\n\n).*?(\n\n<!-- end -->)", lambda m: m[1] + table + m[2],
                  (ROOT / "README.md").read_text(), flags=re.S)


def main():
    for target, text in (TARGET, document()), (ROOT / "README.md", readme()):
        write_or_check(target, text)


if __name__ == "__main__":
    main()
