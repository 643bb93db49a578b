#!/usr/bin/python3
"""Makes the tables of vm/core/erf_inverse_core.h: tools/erf_inverse_tables.py DIRECTORY

Each row is a polynomial of the offset y from the centre c of an interval, where an octave has
16 intervals (single precision: 8):

erf_inverse_near.inc    F(q) = erfc^-1(q) / (1 - q), q in [2^-10, 1), c = centre in q
erf_inverse_tail.inc    F(s) = erfc^-1(e^-s), s in [6.75, 768), c = centre in s
erf_inverse_single.inc  F(q) as above, q in [2^-126, 1), polynomials of degree 3 and degree 1 of y / 2^e, where
                        2^e <= q < 2^(e+1)

A row in double precision has F(c) and sqrt2 F(c), each as the leading 26 bits and the rest, and
c1 to c8 of F(c + y) = F(c) + y (c1 + y (c2 + ...)). The last row of the tables in q stands for
q = 1, with F = sqrt(pi)/2 alone.

The polynomials interpolate at the zeros of a Chebyshev polynomial. Prints the largest errors
relative to F before the coefficients are rounded.
"""
import pathlib
import struct
import sys

from mpmath import mp, mpf, cos, erf, erfc, exp, floor, frexp, log, pi, sqrt

mp.prec = 150


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def bits_single(x):
    return struct.unpack("<I", struct.pack("<f", float(x)))[0]


def newton(x, step):
    while True:
        d = step(x)
        x -= d
        if abs(d) < mpf(2) ** -70 * x:  # and its square is below the precision
            return x


def tail(s, start=None):
    """x of erfc x = e^-s, s >= 0.3, by the logarithm of both sides."""
    def step(x):
        value = erfc(x)
        return (log(value) + s) * value * exp(x * x) * sqrt(pi) / -2

    return newton(start or sqrt(s - log(sqrt(pi * s)) if s > 2 else s / 2), step)


def near(q):
    """erfc^-1(q) / (1 - q)."""
    if q < 0.75:
        return tail(-log(q)) / (1 - q)
    x = 1 - q
    if x == 0:
        return sqrt(pi) / 2
    return newton(x * sqrt(pi) / 2, lambda r: (erf(r) - x) * exp(r * r) * sqrt(pi) / 2) / x


def monomials(nodes, values):
    """Coefficients of the polynomial through the points: Newton's differences, expanded."""
    n, a = len(nodes), list(values)
    for k in range(1, n):
        for i in range(n - 1, k - 1, -1):
            a[i] = (a[i] - a[i - 1]) / (nodes[i] - nodes[i - k])
    p = [mpf(0)] * n
    for i in range(n - 1, -1, -1):
        p = [(p[k - 1] if k else a[i]) - nodes[i] * p[k] for k in range(n)]
    return p


def fit(function, c, half, count):
    """F(c) and c1, ... c_count; the largest relative error."""
    base = function(c)
    zeros = [cos(pi * (2 * i + 1) / (2 * count + 2)) for i in range(count + 1)]
    nodes = [half * t for t in zeros if abs(t) > mpf(2) ** -100]
    if len(nodes) == count:  # one of the zeros is 0
        p = monomials(nodes, [(function(c + y) - base) / y for y in nodes])
    else:
        p = monomials(nodes, [function(c + y) for y in nodes])
        base, p = p[0], p[1:]
    worst = mpf(0)
    for t in (-1, -0.85, 0.85, 1):
        y, value = half * t, function(c + half * t)
        worst = max(worst, abs(base + y * mp.polyval(p[::-1], y) - value) / value)
    return base, p, worst


def intervals(first, last, per_octave):
    """Centres and half widths from first up to last."""
    low = mpf(first)
    while low < last:
        octave = mpf(2) ** (frexp(low)[1] - 1)
        yield low + octave / (2 * per_octave), octave / (2 * per_octave)
        low += octave / per_octave


def parts(value):
    unit = mpf(2) ** (frexp(value)[1] - 26)
    lead = floor(value / unit + mpf(0.5)) * unit
    return [lead, value - lead]


def rows(function, first, last):
    worst = mpf(0)
    for c, half in intervals(first, last, 16):
        base, p, e = fit(function, c, half, 8)
        worst = max(worst, e)
        yield c, parts(base) + parts(base * sqrt(2)) + p
    print(f"{function.__name__}: 2^{mp.nstr(log(worst, 2), 4)}")


def single_rows():
    worst, worst_line = mpf(0), mpf(0)
    for c, half in intervals(mpf(2) ** -126, 1, 8):
        base, p, e = fit(near, c, half, 3)
        start, slope, e_line = fit(near, c, half, 1)
        worst, worst_line = max(worst, e), max(worst_line, e_line)
        octave = 16 * half
        yield c, [base] + [x * octave ** (i + 1) for i, x in enumerate(p)] + [start, slope[0] * octave]
    print(f"single: degree 3 2^{mp.nstr(log(worst, 2), 4)}, degree 1 2^{mp.nstr(log(worst_line, 2), 4)}")


def write(directory, name, macro, lines, number):
    text = [f"// {name}.inc: made by tools/erf_inverse_tables.py vm/tables; do not edit.\n"]
    for c, values in lines:
        text.append(f"{macro}({', '.join(map(number, values))})  // {mp.nstr(c, 8)}\n")
    (directory / f"{name}.inc").write_text("".join(text))


def main():
    directory = pathlib.Path(sys.argv[1])
    limit = sqrt(pi) / 2

    def number(x):
        return f"0x{bits(x):016X}" if x else "0"

    def number_single(x):
        return f"0x{bits_single(x):08X}" if x else "0"

    write(directory, "erf_inverse_near", "KEF_ERF_INVERSE",
          [*rows(near, mpf(2) ** -10, 1), (1, parts(limit) + parts(limit * sqrt(2)) + [0] * 8)],
          number)
    write(directory, "erf_inverse_tail", "KEF_ERF_INVERSE", rows(tail, 6.75, 768), number)
    write(directory, "erf_inverse_single", "KEF_ERF_INVERSE",
          [*single_rows(), (1, [limit, 0, 0, 0, limit, 0])], number_single)


if __name__ == "__main__":
    main()
