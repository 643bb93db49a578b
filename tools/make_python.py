#!/usr/bin/env python3
"""Makes python/kef/_tables.py, the lists that the Python package is expanded from, of the tables and
public headers of the library.

    tools/make_python.py            rewrites it
    tools/make_python.py --check    fails where it is not current
"""
import pprint
import re

from generated import ROOT, write_or_check

TARGET = ROOT / "python/kef/_tables.py"


def rows(path, macro):
    """The arguments of each MACRO(...) of a table file."""
    text = re.sub(r"//.*", "", (ROOT / path).read_text())
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return [[word.strip() for word in found.split(",")]
            for found in re.findall(rf"^{macro}\(([^)]*)\)", text, re.M)]


def header(name):
    return re.sub(r"/\*.*?\*/", "", (ROOT / "include" / name).read_text(), flags=re.S)


def constants(name, prefix):
    """Enumerated values and defined numbers whose names begin with the prefix, without it."""
    found = re.findall(rf"\b{prefix}(\w+)(?: = | UINT64_C\()(-?(?:0x)?[\dA-Fa-f]+)", header(name))
    return {word: int(value, 0) for word, value in found}


def functions():
    """Function: shape by type."""
    found = {}
    for letter, name, shape, *_ in rows("vm/surface/surface.def", "KEF_ROW"):
        found.setdefault(name, {})[letter] = shape
    return found


def estimates():
    """Estimate: bit, result, whether it is a matrix, and the arrays that TILED and RAW require."""
    bits = constants("kef_stats.h", "VTS_SS_ESTIMATE_")
    found = {}
    for name, result, _, shape, _, _, raw, observed, _ in rows("stats/estimate.def", "KEF_ESTIMATE"):
        found[name.lower()] = (bits[name], result, shape == "matrix",
                               re.findall(r"\w+", observed), re.findall(r"\w+", raw))
    for name in ("minimum", "maximum"):
        found[name] = (bits[name.upper()], name, False, [name], [name])
    found["stream_quantiles"] = (bits["STREAM_QUANTILES"], "stream_quantiles", False,
                                 ["stream_quantiles"], ["stream_quantiles"])
    return found


def draws():
    """Law: parameters, as (type, name), by the letter of the result."""
    found = {}
    prototype = r"int32_t _vts([dsi])Rng(\w+)\(int32_t method, kef_stream \*stream, int32_t n,\s*\w+ \*r(?:, )?([^)]*)\)"
    for letter, law, parameters in re.findall(prototype, header("kef_dist.h")):
        words = [p.rsplit(maxsplit=1) for p in re.sub(r"\s+", " ", parameters).split(", ") if p]
        found.setdefault(law, {})[letter] = [
            ("pointer" if "*" in name else kind.removeprefix("const "), name.lstrip("*"))
            for kind, name in words]
    return found


def document():
    tables = {
        "FUNCTIONS": functions(),
        "VM_STATUS": {int(code): name.removeprefix("VTM_STATUS_")
                      for name, code, *_ in rows("include/kef_vm_status.def", "KEF_STATUS_ROW")},
        "RNG_STATUS": {name.removeprefix("VTS_STATUS_"): int(code)
                       for name, code, *_ in rows("include/kef_rng_status.def", "KEF_STATUS_ROW")},
        "STATS_STATUS": {name.removeprefix("VTS_SS_STATUS_"): int(code)
                         for name, code, *_ in rows("include/kef_stats_status.def", "KEF_STATUS_ROW")},
        "GENERATORS": constants("kef_rng.h", "VTS_BRNG_"),
        "DRAWS": draws(),
        "PARAMETERS": {name: (kind, int(number))
                       for kind, number, name, _ in rows("stats/task.def", "KEF_PARAMETER")},
        "ESTIMATES": estimates(),
        "STATS_METHODS": constants("kef_stats.h", "VTS_SS_METHOD_"),
        "FIT": constants("kef_fit.h", "DF_"),
    }
    lines = ['"""Lists of the library. Made by tools/make_python.py of its tables and headers; do not edit."""']
    for name, table in tables.items():
        assert table, name
        lines.append(f"{name} = {pprint.pformat(table, width=110, sort_dicts=False, compact=True)}")
    return "\n\n".join(lines) + "\n"


if __name__ == "__main__":
    write_or_check(TARGET, document())
