#!/usr/bin/env python3
"""Makes include/kef/vm_functions.hpp, the function objects of the C++ interface, from
vm/surface/surface.def.

    tools/make_cxx.py            rewrites the header
    tools/make_cxx.py --check    fails where it is not current
"""
import sys

from generated import ROOT, write_or_check
from make_prototypes import rows

TARGET = ROOT / "include/kef/vm_functions.hpp"

# The template of kef/vm.hpp behind each shape; modulus and from_real are functions of one argument
# whose result is of another type.
SHAPES = {"map1": "Map1", "modulus": "Map1", "from_real": "Map1", "map2": "Map2", "mapx": "MapPower",
          "map1x2": "Map1x2", "linear_frac": "MapLinearFraction"}
MOVES = {"PackI": "PackStride", "PackV": "PackIndex", "PackM": "PackMask",
         "UnpackI": "UnpackStride", "UnpackV": "UnpackIndex", "UnpackM": "UnpackMask"}
CALLS = {"Map1": "(x, y)", "Map2": "(a, b, y)", "MapPower": "(a, b, y)", "Map1x2": "(x, y, z)",
         "MapLinearFraction": "(a, b, scale_a, shift_a, scale_b, shift_b, y)",
         "PackStride": "(x, stride, y)", "PackIndex": "(x, index, y)", "PackMask": "(x, mask, y)",
         "UnpackStride": "(x, y, stride)", "UnpackIndex": "(x, y, index)",
         "UnpackMask": "(x, y, mask)"}

ARGUMENT = {"s": "float", "d": "double", "c": "std::complex<float>", "z": "std::complex<double>"}
REAL = {"s": "s", "d": "d", "c": "s", "z": "d"}

# C name: C++ name, what it is. Where the C++ library has the function, the name is its.
NAMES = {
    "Abs": ("abs", "|x|"),
    "Acos": ("acos", "arc cosine"),
    "Asin": ("asin", "arc sine"),
    "Atan": ("atan", "arc tangent"),
    "Acosh": ("acosh", "inverse hyperbolic cosine"),
    "Asinh": ("asinh", "inverse hyperbolic sine"),
    "Atanh": ("atanh", "inverse hyperbolic tangent"),
    "Add": ("add", "a + b"),
    "Sub": ("sub", "a - b"),
    "Mul": ("mul", "a b"),
    "Div": ("div", "a / b"),
    "Arg": ("arg", "the angle of x"),
    "Atan2": ("atan2", "the angle of the point (b, a)"),
    "CIS": ("cis", "cos x + i sin x; x real"),
    "Cbrt": ("cbrt", "cube root"),
    "InvCbrt": ("inv_cbrt", "1 / cube root"),
    "CdfNorm": ("cdf_norm", "distribution function of the standard normal law"),
    "CdfNormInv": ("cdf_norm_inv", "quantile of the standard normal law"),
    "Ceil": ("ceil", "the next integer upwards"),
    "Floor": ("floor", "the next integer downwards"),
    "Round": ("round", "the nearest integer, halves away from zero"),
    "Trunc": ("trunc", "the next integer towards zero"),
    "Rint": ("rint", "the nearest integer, halves to even; raises inexact"),
    "NearbyInt": ("nearbyint", "the nearest integer, halves to even; raises nothing"),
    "Conj": ("conj", "conjugate"),
    "Cos": ("cos", "cosine"),
    "Sin": ("sin", "sine"),
    "Tan": ("tan", "tangent"),
    "Cosh": ("cosh", "hyperbolic cosine"),
    "Sinh": ("sinh", "hyperbolic sine"),
    "Tanh": ("tanh", "hyperbolic tangent"),
    "Erf": ("erf", "error function"),
    "Erfc": ("erfc", "1 - erf x"),
    "ErfInv": ("erf_inv", "inverse of erf"),
    "ErfcInv": ("erfc_inv", "inverse of erfc"),
    "Exp": ("exp", "e^x"),
    "Ln": ("log", "natural logarithm"),
    "Log10": ("log10", "decimal logarithm"),
    "Expm1": ("expm1", "e^x - 1"),
    "Log1p": ("log1p", "log(1 + x)"),
    "Hypot": ("hypot", "sqrt(a^2 + b^2)"),
    "Inv": ("inv", "1 / x"),
    "InvSqrt": ("inv_sqrt", "1 / sqrt x"),
    "Sqr": ("sqr", "x^2"),
    "LGamma": ("lgamma", "log |Gamma(x)|"),
    "TGamma": ("tgamma", "Gamma(x)"),
    "LinearFrac": ("linear_frac", "(a scale_a + shift_a) / (b scale_b + shift_b), numbers in scale and shift"),
    "Modf": ("modf", "y the integer part of x, z the rest"),
    "MulByConj": ("mul_by_conj", "a conj b"),
    "Pow": ("pow", "a^b; b a range, or one number"),
    "Pow2o3": ("pow2o3", "x^(2/3)"),
    "Pow3o2": ("pow3o2", "x^(3/2)"),
    "SinCos": ("sincos", "y sine, z cosine of x"),
    "Sqrt": ("sqrt", "square root"),
    "PackI": ("pack_stride", "y[i] = x[i stride]"),
    "PackV": ("pack_index", "y[i] = x[index[i]]; int32_t or int64_t"),
    "PackM": ("pack_mask", "the x[i] with mask[i] != 0 in order; gives their number"),
    "UnpackI": ("unpack_stride", "y[i stride] = x[i]"),
    "UnpackV": ("unpack_index", "y[index[i]] = x[i]"),
    "UnpackM": ("unpack_mask", "the y[i] with mask[i] != 0 get x in order; gives their number"),
}

# They never report an element, of any type (docs/errors.md).
SILENT = {"Add", "Sub", "Mul", "MulByConj", "Conj", "Sqr", "Ceil", "Floor", "Round", "Trunc", "Rint",
          "NearbyInt", "Modf"}

HEAD = """\
// clang-format off
/// The functions of vector math. Made from vm/surface/surface.def by tools/make_cxx.py; do not edit.
///
/// x, y, z, a, b are contiguous ranges of the types that stand behind each call; an accuracy may
/// follow. Functions of one argument take it in place as well where the result is of its type.
/// Bounds, special results and conditions: docs/functions.md, docs/errors.md.
#ifndef KEF_VM_FUNCTIONS_HPP
#define KEF_VM_FUNCTIONS_HPP

#ifndef KEF_VM_HPP
#error "include kef/vm.hpp"
#endif

namespace kef {
"""

TAIL = """
}  // namespace kef

#endif
"""


def header():
    functions = {}
    for letter, name, shape in rows():
        functions.setdefault(name, {})[letter] = shape
    for name in functions:
        if name not in NAMES and name != "Powx":
            sys.exit(f"tools/make_cxx.py has no name for {name}")
    lines = [HEAD]
    for name, (cxx, what) in NAMES.items():
        shapes = functions[name]
        letters = "".join(shapes)
        shape = next(iter(shapes.values()))
        template = MOVES.get(name) or ("MapPower" if name == "Pow" else SHAPES[shape])
        types = ", ".join(ARGUMENT[REAL[l] if shapes[l] == "from_real" else l] for l in letters)

        def tables(function, c_name):
            for letter in letters:
                argument = ARGUMENT[REAL[letter] if shapes[letter] == "from_real" else letter]
                yield (f"    static auto* {function}(const {argument}*) "
                       f"{{ return kef_vtm_kernel_{letter}{c_name}_ttab; }}")

        lines.append(f"namespace detail::functions {{\nstruct {name} {{")
        lines.append(f'    static constexpr const char* name = "kef::{cxx}";')
        if name not in MOVES:
            lines.append(f"    static constexpr bool reports = {str(name not in SILENT).lower()};")
        lines += tables("table", name)
        if template == "MapPower":
            lines += tables("scalar_table", name + "x")
        lines.append("};\n}  // namespace detail::functions")
        lines.append(f"/// {cxx}{CALLS[template]}: {what}. Of {types}.")
        lines.append(f"inline constexpr detail::{template}<detail::functions::{name}> {cxx}{{}};\n")
    return "\n".join(lines) + TAIL


if __name__ == "__main__":
    write_or_check(TARGET, header())
