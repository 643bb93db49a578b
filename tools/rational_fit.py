"""Rational functions P/Q of small relative error, by Lawson's weighted least squares;
used by the tools of single-precision functions."""
import struct

from mpmath import cos, lu_solve, matrix, mp, mpf, pi

mp.prec = 120
POINTS, STEPS = 120, 60


def chebyshev(end):
    """Points of (0, end), denser at its ends."""
    return [end * (1 - cos(pi * (i + mpf(0.5)) / POINTS)) / 2 for i in range(POINTS)]


def polynomial(c, x):
    return sum(a * x**i for i, a in enumerate(c))


def fit(xs, values, p_degree, q_degree):
    """Worst relative error, P, and Q with Q(0) = 1."""
    weights, scale = [mpf(1)] * POINTS, [mpf(1)] * POINTS
    best = None
    for _ in range(STEPS):
        size = p_degree + 1 + q_degree
        A, b = matrix(size, size), matrix(size, 1)
        for x, t, w, q in zip(xs, values, weights, scale):
            s = w / (t * q) ** 2
            row = [x**j for j in range(p_degree + 1)] + [-t * x**j for j in range(1, q_degree + 1)]
            for i in range(size):
                b[i] += s * row[i] * t
                for j in range(size):
                    A[i, j] += s * row[i] * row[j]
        c = lu_solve(A, b)
        P, Q = list(c[: p_degree + 1]), [mpf(1)] + list(c[p_degree + 1 :])
        scale = [polynomial(Q, x) for x in xs]
        error = [abs(polynomial(P, x) / (q * t) - 1) for x, t, q in zip(xs, values, scale)]
        worst = max(error)
        if best is None or worst < best[0]:
            best = worst, P, Q
        weights = [w * (e / worst + mpf("0.001")) for w, e in zip(weights, error)]
    return best


def show(name, c):
    """The bits in single precision."""
    print(name, *(f"0x{struct.unpack('<I', struct.pack('<f', float(a)))[0]:08X}" for a in c))
