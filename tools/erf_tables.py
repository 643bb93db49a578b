#!/usr/bin/python3
"""Makes the tables of vm/core/erf_core.h: tools/erf_tables.py DIRECTORY

One line for each centre c = k/16, k = 0 to 96: a polynomial in d, |d| <= 1/32, for W(c + d),
W = erf for c < 1/2 and erfc from there on. It interpolates W at the Chebyshev points.

erf97.inc        degree 11, with low parts
erf97_short.inc  degree 6; for c < 1/2 degree 4, for c = 0 odd

With --errors instead of a directory: the errors of each line, coefficients as rounded,
relative to W.
"""
import pathlib
import struct
import sys

from mpmath import chop, cos, erf, erfc, log, lu_solve, matrix, mp, mpf, nstr, pi, polyval, sqrt

mp.prec = 200
ENTRIES, STEP = 97, mpf(1) / 16
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


def interpolate(f, points, exponents):
    """Coefficients of the powers with these exponents."""
    size = len(exponents)
    powers, values = matrix(size, size), matrix(size, 1)
    for i, x in enumerate(points):
        values[i] = f(x)
        for j, e in enumerate(exponents):
            powers[i, j] = (x / REACH) ** e
    # chop: where W is odd the even coefficients are nothing but rounding errors
    return [chop(a, mpf(2) ** -150) / REACH**e for a, e in zip(lu_solve(powers, values), exponents)]


def chebyshev(size):
    return [REACH * cos(pi * (2 * i + 1) / (2 * size)) for i in range(size)]


def coefficients(k, degree):
    w = function(k)
    return interpolate(lambda d: w(k * STEP + d), chebyshev(degree + 1), range(degree + 1))


def entry(k):
    """a0 to a11, and the rests of a0 and a1, the latter beyond 26 bits."""
    a = coefficients(k, 11)
    high, slope = double(a[0]), leading(a[1])
    return [high, *a[1:], a[0] - high, slope, a[1] - slope]


def short_entry(k):
    """a0 to a6."""
    if k == 0:  # x (a + b x^2), at the Chebyshev points of x^2
        points = [sqrt(REACH**2 * (1 + cos(pi * i / 4)) / 2) for i in (1, 3)]
        a, b = interpolate(erf, points, (1, 3))
        return [mpf(0), a, mpf(0), b] + [mpf(0)] * 3
    return coefficients(k, 6) if k >= 8 else coefficients(k, 4) + [mpf(0)] * 2


def error(k, a):
    w = function(k)
    points = [REACH * mpf(i) / 24 for i in range(-24, 25) if i != 0]
    return max(abs(polyval(a[::-1], d) / w(k * STEP + d) - 1) for d in points)


def show_errors():
    for k in range(ENTRIES):
        e, short = [double(a) for a in entry(k)], [double(a) for a in short_entry(k)]
        long = [e[0] + e[12], e[13] + e[14], *e[2:12]]
        print(nstr(k * STEP, 6), *("2^" + nstr(log(error(k, a), 2), 4) for a in (long, short)))


def write(directory, name, macro, make):
    lines = [f"// {name}: made by tools/erf_tables.py vm/tables; do not edit.\n"]
    for k in range(ENTRIES):
        numbers = ", ".join(f"0x{bits(a):016X}" for a in make(k))
        lines.append(f"{macro}({numbers})  // {nstr(k * STEP, 6)}\n")
    (directory / name).write_text("".join(lines))


def main():
    if sys.argv[1] == "--errors":
        return show_errors()
    directory = pathlib.Path(sys.argv[1])
    write(directory, "erf97.inc", "KEF_ERF", entry)
    write(directory, "erf97_short.inc", "KEF_ERF", short_entry)


if __name__ == "__main__":
    main()
