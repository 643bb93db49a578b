#!/usr/bin/python3
"""Makes the table of vm/core/erf_core.h: tools/erf_tables.py DIRECTORY

erf97.inc  one line for each centre c = k/16, k = 0 to 96: the polynomial of degree 11
           in d, |d| <= 1/32, for W(c + d), W = erf for c < 1/2 and erfc from there on.
           It interpolates W at the Chebyshev points.

With --errors instead of a directory: the error of each line, coefficients as rounded,
relative to W.
"""
import pathlib
import struct
import sys

from mpmath import chop, cos, erf, erfc, log, lu_solve, matrix, mp, mpf, nstr, pi, polyval

mp.prec = 200
ENTRIES, STEP, DEGREE = 97, mpf(1) / 16, 11
REACH = STEP / 2 * (1 + mpf(2) ** -20)  # |d|, with room for the rounding of CdfNorm's argument


def double(x):
    return mpf(float(x))


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def leading(x):
    """The leading 26 bits."""
    return mpf(struct.unpack("<d", struct.pack("<Q", bits(x) & -0x8000000 % 2**64))[0])


def function(k):
    return erf if k < 8 else erfc


def coefficients(k):
    c, w, size = k * STEP, function(k), DEGREE + 1
    points = [REACH * cos(pi * (2 * i + 1) / (2 * size)) for i in range(size)]
    powers, values = matrix(size, size), matrix(size, 1)
    for i, d in enumerate(points):
        values[i] = w(c + d)
        for j in range(size):
            powers[i, j] = (d / REACH) ** j
    solution = lu_solve(powers, values)
    # erf is odd: its even coefficients at 0 are nothing but rounding errors
    return [chop(a, mpf(2) ** -150) / REACH**j for j, a in enumerate(solution)]


def entry(k):
    """The columns in their order."""
    a = coefficients(k)
    high, slope = double(a[0]), leading(a[1])
    return [high, *a[1:], a[0] - high, slope, a[1] - slope]


def error(k):
    e = [double(a) for a in entry(k)]
    high = [e[0] + e[DEGREE + 1], e[DEGREE + 2] + e[DEGREE + 3], *e[2 : DEGREE + 1]]
    points = [REACH * mpf(i) / 24 for i in range(-24, 25) if i != 0]
    w = function(k)
    return max(abs(polyval(high[::-1], d) / w(k * STEP + d) - 1) for d in points)


def main():
    if sys.argv[1] == "--errors":
        for k in range(ENTRIES):
            print(nstr(k * STEP, 6), "2^" + nstr(log(error(k), 2), 4))
        return
    lines = ["// erf97.inc: made by tools/erf_tables.py vm/tables; do not edit.\n"]
    for k in range(ENTRIES):
        numbers = ", ".join(f"0x{bits(a):016X}" for a in entry(k))
        lines.append(f"KEF_ERF({numbers})  // {nstr(k * STEP, 6)}\n")
    (pathlib.Path(sys.argv[1]) / "erf97.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
