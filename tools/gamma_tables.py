#!/usr/bin/python3
"""Makes the tables of vm/core/gamma_table.h and gamma_single.h: tools/gamma_tables.py DIRECTORY

gamma353.inc   for each centre c = 0, 1/8, ..., 44 the coefficients of t^0 to t^12 of a
               polynomial for Gamma(1 + c + t), |t| <= 1/16, rounded to nearest, and what
               is left of the first two
lgamma353.inc  the same for ln Gamma: of 1 + c + t up to c = 7/8, of c + t from there on;
               relative to its zeros at 1 and 2

Polynomials interpolate at Chebyshev points. With --errors the tool
prints the largest relative errors of these, and of the polynomials that end at t^7, t^6
and t^3; with --constants the constants of gamma_core.h and gamma_mirrored.h.
"""
import pathlib
import struct
import sys

from mpmath import bernoulli, chebyfit, gamma, log, loggamma, mp, mpf, pi, psi, sqrt

mp.prec = 200

ROWS, DEGREE = 353, 12
NEAR = [mpf(-1) / 16, mpf(1) / 16]


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def fit(function, degree, interval):
    """Coefficients of t^0 ... t^degree."""
    return chebyfit(function, interval, degree + 1)[::-1]


def gamma_row(j):
    """The function of row j, and its polynomial."""
    c = 1 + mpf(j) / 8
    return (lambda t: gamma(c + t)), fit(lambda t: gamma(c + t), DEGREE, NEAR)


def lgamma_row(j):
    c = mpf(j) / 8 + (j < 8)
    if c in (1, 2):
        p = [mpf(0)] + fit(lambda t: loggamma(c + t) / t if t else psi(0, c), DEGREE - 1, NEAR)
    else:
        p = fit(lambda t: loggamma(c + t), DEGREE, NEAR)
    return (lambda t: loggamma(c + t)), p


def errors(name, row):
    worst = {}
    for j in range(ROWS):
        function, exact = row(j)
        coefficients = [mpf(float(a)) if i > 1 else a for i, a in enumerate(exact)]
        for i in range(-8, 9):
            t = mpf(i) / 128 if i else mpf("1e-9")
            for top in (DEGREE, 7, 6, 3):
                p = sum(a * t**k for k, a in enumerate(coefficients[:top + 1]))
                worst[top] = max(worst.get(top, (0, 0)), (abs(p / function(t) - 1), j))
    for top, (error, j) in worst.items():
        print(f"{name}, t^{top}: 2^{mp.nstr(log(error, 2), 6)} in row {j}")


def parts(name, value):
    high = mpf(float(value))
    print(f"{name} 0x{bits(high):016X} 0x{bits(value - high):016X}")


def constants():
    parts("pi", pi)
    print(f"pi, leading 26 bits, rest 0x{bits(pi) & ~0x7FFFFFF:016X} "
          f"0x{bits(pi - struct.unpack('<d', struct.pack('<Q', bits(pi) & ~0x7FFFFFF))[0]):016X}")
    parts("ln pi", log(pi))
    parts("ln(2 pi)/2", log(2 * pi) / 2)
    parts("ln(pi/2)/2", log(pi / 2) / 2)
    # s(v) = ln Gamma(y) - ((y - 1/2) ln y - y + ln(2 pi)/2), times y, for v = 1/y^2.
    def exact(v):
        return sum(bernoulli(2 * k) / (2 * k * (2 * k - 1)) * v**(k - 1) for k in range(1, 12))
    s = [mpf(float(a)) for a in fit(exact, 4, [0, mpf(1) / 400])]
    worst = max(abs(sum(a * v**k for k, a in enumerate(s)) - exact(v)) * sqrt(v)
                for v in (mpf(i) / 40000 for i in range(101)))
    print(f"Stirling, absolute error 2^{mp.nstr(log(worst, 2), 4)}", *(f"0x{bits(a):016X}" for a in s))


def main():
    if sys.argv[1] == "--errors":
        errors("Gamma", gamma_row)
        return errors("ln Gamma", lgamma_row)
    if sys.argv[1] == "--constants":
        return constants()
    for name, row in (("gamma353", gamma_row), ("lgamma353", lgamma_row)):
        lines = [f"// {name}.inc: made by tools/gamma_tables.py vm/tables; do not edit.\n"]
        for j in range(ROWS):
            _, exact = row(j)
            fields = exact + [exact[i] - mpf(float(exact[i])) for i in range(2)]
            lines.append(f"KEF_GAMMA({j}, " + ", ".join(f"0x{bits(a):016X}" for a in fields) + ")\n")
        (pathlib.Path(sys.argv[1]) / f"{name}.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
