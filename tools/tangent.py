#!/usr/bin/python3
"""Quotients of polynomials for the tangent (vm/core/trig_plain.h): tools/tangent.py

tan r ~ r (1 + p1 y + ...) / (1 + q1 y + ...), y = r^2, |r| <= pi/4: the linearised
fit P - f Q, weighted by 1/(f Q) of the last turn and, after C. L. Lawson, by the error
itself until it is level. Prints the relative error and the coefficients' bits.
"""
import struct

from mpmath import cos, log, matrix, mp, mpf, pi, qr_solve, sqrt, tan

mp.prec = 300


def quotient(c, top, y):
    numerator = 1 + sum(c[j] * y ** (j + 1) for j in range(top))
    denominator = 1 + sum(c[top + j] * y ** (j + 1) for j in range(len(c) - top))
    return numerator, denominator


def fit(top, bottom, edge, turns=12):
    unknowns = top + bottom
    points = 6 * unknowns + 40
    ys = [edge**2 * (1 - cos(pi * (mpf(i) + mpf(1) / 2) / points)) / 2 for i in range(points)]
    fs = [tan(sqrt(y)) / sqrt(y) for y in ys]
    weights, c = [mpf(1)] * points, [mpf(0)] * unknowns
    for _ in range(turns):
        a, b = matrix(points, unknowns), matrix(points, 1)
        for i, (y, f) in enumerate(zip(ys, fs)):
            scale = weights[i] / (f * quotient(c, top, y)[1])
            for j in range(top):
                a[i, j] = y ** (j + 1) * scale
            for j in range(bottom):
                a[i, top + j] = -f * y ** (j + 1) * scale
            b[i] = (f - 1) * scale
        solution, _ = qr_solve(a, b)
        c = [solution[i] for i in range(unknowns)]
        errors = []
        for y, f in zip(ys, fs):
            p, q = quotient(c, top, y)
            errors.append(abs(p / q / f - 1))
        worst = max(errors)
        weights = [sqrt(w * w * (e / worst + mpf(1) / 1000)) for w, e in zip(weights, errors)]
        largest = max(weights)
        weights = [w / largest for w in weights]
    return c, worst


def show(name, top, bottom, single):
    c, worst = fit(top, bottom, pi / 4 * (1 + mpf(2) ** -20))
    pack = (lambda x: f"0x{struct.unpack('<I', struct.pack('<f', float(x)))[0]:08X}") if single else (
        lambda x: f"0x{struct.unpack('<Q', struct.pack('<d', float(x)))[0]:016X}")
    print(f"{name}: error 2^{float(log(worst, 2)):.2f}, p {' '.join(map(pack, c[:top]))}, "
          f"q {' '.join(map(pack, c[top:]))}")


if __name__ == "__main__":
    show("double LA, single HA", 3, 3, False)
    show("double short", 2, 2, False)
    show("single LA", 1, 2, True)
