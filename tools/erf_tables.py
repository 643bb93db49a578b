#!/usr/bin/python3
"""Makes the tables of vm/core/erf_core.h: tools/erf_tables.py DIRECTORY

One line for each centre c = k step, 0 <= c <= 6: a polynomial in d, |d| <= step/2, for
W(c + d), W = erf for c < 1/2 and erfc from there on. It interpolates W at the Chebyshev points.

erf97.inc         step 1/16, degree 11, with low parts
erf193_short.inc  step 1/32, degree 5; for c < 1/2 degree 3, for c = 0 odd
erf769_slope.inc  step 1/128, erf c, erfc c and erf' c alone

With --errors instead of a directory: the errors of each line, coefficients as rounded,
relative to W.
"""
import pathlib
import struct
import sys

from mpmath import chop, cos, erf, erfc, exp, log, lu_solve, matrix, mp, mpf, nstr, pi, polyval, sqrt

mp.prec = 200
STEP, SHORT_STEP, SLOPE_STEP = mpf(1) / 16, mpf(1) / 32, mpf(1) / 128


def double(x):
    return mpf(float(x))


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def leading(x):
    """The leading 26 bits."""
    return mpf(struct.unpack("<d", struct.pack("<Q", bits(x) & -0x8000000 % 2**64))[0])


def reach(step):
    """|d|, with room for the rounding of CdfNorm's argument."""
    return step / 2 * (1 + mpf(2) ** -20)


def centres(step):
    return [k * step for k in range(int(6 / step) + 1)]


def function(c):
    return erf if c < mpf(1) / 2 else erfc


def interpolate(f, points, exponents, scale):
    """Coefficients of the powers with these exponents."""
    size = len(exponents)
    powers, values = matrix(size, size), matrix(size, 1)
    for i, x in enumerate(points):
        values[i] = f(x)
        for j, e in enumerate(exponents):
            powers[i, j] = (x / scale) ** e
    # chop: where W is odd the even coefficients are nothing but rounding errors
    return [chop(a, mpf(2) ** -150) / scale**e for a, e in zip(lu_solve(powers, values), exponents)]


def coefficients(c, step, degree):
    w, r = function(c), reach(step)
    points = [r * cos(pi * (2 * i + 1) / (2 * degree + 2)) for i in range(degree + 1)]
    return interpolate(lambda d: w(c + d), points, range(degree + 1), r)


def entry(c):
    """a0 to a11, and the rests of a0 and a1, the latter beyond 26 bits."""
    a = coefficients(c, STEP, 11)
    high, slope = double(a[0]), leading(a[1])
    return [high, *a[1:], a[0] - high, slope, a[1] - slope]


def short_entry(c):
    """a0 to a5."""
    if c == 0:  # x (a + b x^2), at the Chebyshev points of x^2
        r = reach(SHORT_STEP)
        a, b = interpolate(erf, [sqrt(r**2 * (1 + cos(pi * i / 4)) / 2) for i in (1, 3)], (1, 3), r)
        return [mpf(0), a, mpf(0), b] + [mpf(0)] * 2
    if c >= mpf(1) / 2:
        return coefficients(c, SHORT_STEP, 5)
    return coefficients(c, SHORT_STEP, 3) + [mpf(0)] * 2


def slope_entry(c):
    return [erf(c), erfc(c), 2 / sqrt(pi) * exp(-c * c)]


def show_errors(name, step, make):
    print(name)
    for c in centres(step):
        a, w = make(c), function(c)
        if len(a) > 12:
            a = [double(a[0]) + double(a[12]), a[13] + double(a[14]), *a[2:12]]
        a = [x if i < 2 and len(a) > 6 else double(x) for i, x in enumerate(a)]
        points = [reach(step) * mpf(i) / 24 for i in range(-24, 25) if i != 0]
        error = max(abs(polyval(a[::-1], d) / w(c + d) - 1) for d in points)
        print(nstr(c, 6), "2^" + nstr(log(error, 2), 4))


def write(directory, name, macro, step, make):
    lines = [f"// {name}: made by tools/erf_tables.py vm/tables; do not edit.\n"]
    for c in centres(step):
        numbers = ", ".join(f"0x{bits(a):016X}" for a in make(c))
        lines.append(f"{macro}({numbers})  // {nstr(c, 6)}\n")
    (directory / name).write_text("".join(lines))


def main():
    if sys.argv[1] == "--errors":
        show_errors("erf97", STEP, entry)
        show_errors("erf193_short", SHORT_STEP, short_entry)
        return
    directory = pathlib.Path(sys.argv[1])
    write(directory, "erf97.inc", "KEF_ERF", STEP, entry)
    write(directory, "erf193_short.inc", "KEF_ERF", SHORT_STEP, short_entry)
    write(directory, "erf769_slope.inc", "KEF_ERF", SLOPE_STEP, slope_entry)


if __name__ == "__main__":
    main()
