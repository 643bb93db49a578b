#!/usr/bin/python3
"""Makes the rational function of single EP Tanh (vm/real/tanh.cpp): tools/tanh_rational.py

tanh x ~ x P(x^2) / Q(x^2), |x| <= 4.6, both of degree 2, Q(0) = 1, by Lawson's weighted
least squares; then P times 1 + 2^-12, so that the quotient reaches 1 at the end.
"""
import struct

from mpmath import cos, log, lu_solve, matrix, mp, mpf, nstr, pi, tanh

mp.prec = 120
END, DEGREE, POINTS, STEPS = mpf("4.6"), 2, 120, 60


def polynomial(c, u):
    return sum(a * u**i for i, a in enumerate(c))


def fit():
    xs = [END * (1 - cos(pi * (i + 0.5) / POINTS)) / 2 for i in range(POINTS)]
    weights, scale = [mpf(1)] * POINTS, [mpf(1)] * POINTS
    best = None
    for _ in range(STEPS):
        size = 2 * DEGREE + 1
        A, b = matrix(size, size), matrix(size, 1)
        for x, w, q in zip(xs, weights, scale):
            u, t = x * x, tanh(x) / x
            s = w / (t * q) ** 2
            row = [u**j for j in range(DEGREE + 1)] + [-t * u**j for j in range(1, DEGREE + 1)]
            for i in range(size):
                b[i] += s * row[i] * t
                for j in range(size):
                    A[i, j] += s * row[i] * row[j]
        c = lu_solve(A, b)
        P, Q = list(c[: DEGREE + 1]), [mpf(1)] + list(c[DEGREE + 1 :])
        scale = [polynomial(Q, x * x) for x in xs]
        error = [abs(x * polynomial(P, x * x) / (q * tanh(x)) - 1) for x, q in zip(xs, scale)]
        worst = max(error)
        if best is None or worst < best[0]:
            best = worst, P, Q
        weights = [w * (e / worst + mpf("0.001")) for w, e in zip(weights, error)]
    return best


def main():
    worst, P, Q = fit()
    P = [p * (1 + mpf(2) ** -12) for p in P]
    print("error of the fit 2^", nstr(log(worst, 2), 5))
    for name, c in (("P", P), ("Q", Q[1:])):
        print(name, *(f"0x{struct.unpack('<I', struct.pack('<f', float(a)))[0]:08X}" for a in c))
    print("at the end", nstr(END * polynomial(P, END**2) / polynomial(Q, END**2), 10))


if __name__ == "__main__":
    main()
