#!/usr/bin/env python3
"""Makes include/kef_vm_functions.h from vm/surface/surface.def.

    tools/make_prototypes.py            rewrites the header
    tools/make_prototypes.py --check    fails where it is not current
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = ROOT / "vm/surface/surface.def"
TARGET = ROOT / "include/kef_vm_functions.h"

ELEMENT = {"s": "float", "d": "double", "c": "kef_complex8", "z": "kef_complex16"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}
SUFFIXES = {"s": ("_21", "_11"), "d": ("_50", "_26"), "c": ("_21", "_11"), "z": ("_50", "_26")}

# Arguments of an entry and of a slot; {T} element, {R} its real type.
SHAPES = {
    "map1": "int32_t n, const {T} *a, {T} *r",
    "map2": "int32_t n, const {T} *a, const {T} *b, {T} *r",
    "mapx": "int32_t n, const {T} *a, {T} b, {T} *r",
    "map1x2": "int32_t n, const {T} *a, {T} *y, {T} *z",
    "modulus": "int32_t n, const {T} *a, {R} *r",
    "from_real": "int32_t n, const {R} *a, {T} *r",
    "linear_frac": "int32_t n, const {T} *a, const {T} *b, {T} scalea, {T} shifta, "
                   "{T} scaleb, {T} shiftb, {T} *r",
    "pack_i": "int64_t n, const {T} *a, int64_t inca, {T} *y",
    "pack_v": "int64_t n, const {T} *a, const int32_t *ia, {T} *y",
    "unpack_i": "int64_t n, const {T} *a, {T} *y, int64_t incy",
    "unpack_v": "int64_t n, const {T} *a, {T} *y, const int32_t *iy",
}
WIDE = {"pack_i", "pack_v", "unpack_i", "unpack_v"}

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


def header():
    lines = [HEAD]
    seen = set()
    for letter, _, shape in rows():
        if (letter, shape) in seen:
            continue
        seen.add((letter, shape))
        arguments = SHAPES[shape].format(T=ELEMENT[letter], R=REAL[letter])
        if shape in WIDE:
            arguments = arguments.replace("const int32_t *", "const void *") + ", int32_t width"
        lines.append(f"typedef void (*kef_vtm_{letter}_{shape})({arguments});")
    for letter, name, shape in rows():
        arguments = SHAPES[shape].format(T=ELEMENT[letter], R=REAL[letter])
        function = f"{letter}{name}"
        if name in ("PackM", "UnpackM"):
            arguments = re.sub(r"\*i[ay]\b", "*mask", arguments)
        lines.append("")
        for suffix in ("", "_HA", *SUFFIXES[letter]):
            lines.append(f"KEF_API void _vtm{function}{suffix}({arguments});")
        lines.append(f"extern KEF_API kef_vtm_{letter}_{shape} kef_vtm_kernel_{function}_ttab[3];")
        lines.append(f"extern KEF_API const float kef_vtm_kernel_{function}_ctab[3];")
    return "\n".join(lines) + "\n" + TAIL


def main():
    text = header()
    if sys.argv[1:] == ["--check"]:
        if not TARGET.exists() or TARGET.read_text() != text:
            sys.exit(f"{TARGET.name} is not current: run ./run generate")
    else:
        TARGET.write_text(text)


if __name__ == "__main__":
    main()
