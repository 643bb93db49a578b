#!/usr/bin/env python3
"""Makes include/kef_vm_functions.h from vm/surface/surface.def, shapes.def and costs.def.

    tools/make_prototypes.py            rewrites the header
    tools/make_prototypes.py --check    fails where it is not current
"""
import re

from generated import ROOT, write_or_check

SOURCE = ROOT / "vm/surface/surface.def"
COSTS = ROOT / "vm/surface/costs.def"
SHAPES = ROOT / "vm/surface/shapes.def"
TARGET = ROOT / "include/kef_vm_functions.h"

ELEMENT = {"s": "float", "d": "double", "c": "kef_complex8", "z": "kef_complex16"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}
SUFFIXES = {"s": ("_21", "_11"), "d": ("_50", "_26"), "c": ("_21", "_11"), "z": ("_50", "_26")}

HEAD = """\
/* clang-format off */
/* Made from vm/surface/surface.def by tools/make_prototypes.py; do not edit.
 *
 * For each function F of type t: four entry points and two tables.
 *
 *   _vtmtF, _vtmtF_HA     the most accurate kernel (slot 1)
 *   _vtmtF_21, _vtmtF_50  21 bits in single, 50 in double precision (slot 0)
 *   _vtmtF_11, _vtmtF_26  11 bits in single, 26 in double precision (slot 2)
 *   kef_vtm_kernel_tF_ttab  the kernels by slot (VTM_SLOT_...); an entry point reads
 *                           its slot at every call
 *   kef_vtm_kernel_tF_ctab  the relative cost of an element in each slot;
 *                           VTM_COST_DATA_MOVEMENT for Pack and Unpack
 *
 * The costs of ANCHORS are anchors: settled values, which
 * measured speeds miss by factors up to 2. The others are measured cycles times the
 * factor that fits the anchors best (least squares of logarithms). Functions of one
 * loop and formula have one cost, an anchor's where one of them is an anchor.
 *
 * r[i] = F(a[i]), or F(a[i], b[i]), for 0 <= i < n; n <= 0 does nothing. A
 * result vector may be an argument vector itself, or must not overlap it.
 * Nothing need be aligned. Bounds, special results and error conditions of each
 * function: docs/accuracy.md and docs/errors.md.
 *
 * Pack gathers elements of a into the first places of y, Unpack scatters the first
 * elements of a over y; the vector that describes the places stands beside the one
 * that it describes:
 *
 *   PackI(n, a, inca, y)     y[i] = a[i*inca]       UnpackI(n, a, y, incy)   y[i*incy] = a[i]
 *   PackV(n, a, ia, y)       y[i] = a[ia[i]]        UnpackV(n, a, y, iy)     y[iy[i]] = a[i]
 *   PackM(n, a, mask, y)     y gets the a[i] whose mask[i] is not zero, in order
 *   UnpackM(n, a, y, mask)   the y[i] whose mask[i] is not zero get a's elements in order
 *
 * For instance _vtmdPackM_HA(4, {1, 2, 3, 4}, {0, 1, 0, 1}, y) gives y = {2, 4}. Their
 * entry points use the low 32 bits of counts and strides. A slot called directly takes
 * one more argument: 1 does the same; with any other value counts and strides are 64-bit
 * and index and mask vectors hold 64-bit integers. */
#ifndef KEF_VM_FUNCTIONS_H
#define KEF_VM_FUNCTIONS_H

#ifndef KEF_VM_H
#error "include kef_vm.h"
#endif

KEF_BEGIN_DECLS
"""

TAIL = """
KEF_END_DECLS

#endif
"""


def rows():
    pattern = re.compile(r"^KEF_ROW\((\w), (\w+), +(\w+),", re.M)
    return pattern.findall(SOURCE.read_text())


def shapes():
    """Shape -> parameters, as C writes them, with T, R, I and W(...) left."""
    pattern = re.compile(r"^#define KEF_SHAPE_(\w+)\(T, R, I, W\)\s*\((.*?)\),\s*\(n, ", re.M | re.S)
    text = SHAPES.read_text().replace("\\\n", "")
    return {shape: re.sub(r"(\w)\* ", r"\1 *", parameters.replace("std::", ""))
            for shape, parameters in pattern.findall(text)}


def arguments(parameters, letter, slot):
    """The parameters of an entry or a slot of one type."""
    parameters = re.sub(r" W\((.*?)\)", r", \1" if slot else "", parameters)
    types = {"T": ELEMENT[letter], "R": REAL[letter], "I": "void" if slot else "int32_t"}
    return re.sub(r"\b[TRI]\b", lambda match: types[match[0]], parameters)


def head():
    """With the anchors among the functions that there are."""
    present = {letter + name for letter, name, _ in rows()}
    found = re.findall(r"^KEF_ANCHOR\((\w), (\w+),", COSTS.read_text(), re.M)
    *most, last = [a + b for a, b in found if a + b in present]
    return HEAD.replace("ANCHORS", f"{', '.join(most)} and {last}")


def header():
    lines = [head()]
    seen = set()
    parameters = shapes()
    for letter, _, shape in rows():
        if (letter, shape) in seen:
            continue
        seen.add((letter, shape))
        slot = arguments(parameters[shape], letter, True)
        lines.append(f"typedef void (*kef_vtm_{letter}_{shape})({slot});")
    for letter, name, shape in rows():
        entry = arguments(parameters[shape], letter, False)
        function = f"{letter}{name}"
        if name in ("PackM", "UnpackM"):
            entry = re.sub(r"\*i[ay]\b", "*mask", entry)
        lines.append("")
        for suffix in ("", "_HA", *SUFFIXES[letter]):
            lines.append(f"KEF_API void _vtm{function}{suffix}({entry});")
        lines.append(f"extern KEF_API kef_vtm_{letter}_{shape} kef_vtm_kernel_{function}_ttab[3];")
        lines.append(f"extern KEF_API const float kef_vtm_kernel_{function}_ctab[3];")
    return "\n".join(lines) + "\n" + TAIL


if __name__ == "__main__":
    write_or_check(TARGET, header())
