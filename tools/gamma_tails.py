#!/usr/bin/env python3
"""Writes tests/data/gamma_tails.txt: probabilities of the gamma law below and above a point, by
mpmath with 60 digits, rounded once. Usage: tools/gamma_tails.py OUTPUT"""
import sys

import mpmath

mpmath.mp.dps = 60
shapes = [0.5, 1, 1.5, 2, 2.5, 5, 8, 15.5, 16, 20, 50, 127.5, 500, 2500]
# In deviations from the mean, and as shares of it.
deviations = [-8, -4, -2, -1, -0.25, 0, 0.25, 1, 2, 4, 8, 15, 30]
shares = [1e-12, 1e-3, 0.1, 0.4]


def tails(a, x):
    lower = mpmath.gammainc(a, 0, x, regularized=True)
    upper = mpmath.gammainc(a, x, mpmath.inf, regularized=True)
    assert abs(lower + upper - 1) < mpmath.mpf(10) ** -50
    return lower, upper


with open(sys.argv[1], "w") as out:
    print("# Gamma law: shape, point, probability below, above. Made by tools/gamma_tails.py.", file=out)
    for a in shapes:
        points = [float(a + d * a**0.5) for d in deviations] + [a * s for s in shares]
        for x in sorted(points):
            if x <= 0:
                continue
            lower, upper = tails(mpmath.mpf(a), mpmath.mpf(x))
            if min(lower, upper) > 1e-290:
                print(a, repr(x), *(mpmath.nstr(t, 20) for t in (lower, upper)), file=out)
