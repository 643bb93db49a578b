#!/usr/bin/env python3
"""Writes tests/data/stats_reference.txt: data sets and their statistics in exact
rational arithmetic, rounded once. Usage: tools/stats_reference.py OUTPUT MICHELSON UNIVARIATE

The public univariate reference sets are made by their published formulas or read from
UNIVARIATE (tests/data/univariate_sets.txt); their certified mean and standard
deviation are checked here against the exact ones of the decimal data. What the file holds are the results for the doubles nearest to the data.
"""
import sys
from fractions import Fraction
from math import isqrt


def pi_digits(count):
    """The first digits of pi, 3 included, by Machin's formula in integers."""
    scale = 10 ** (count + 20)

    def arctan_inverse(x):
        term = total = scale // x
        k, sign = 3, -1
        while term:
            term //= x * x
            total += sign * (term // k)
            k, sign = k + 2, -sign
        return total

    pi = 4 * (4 * arctan_inverse(5) - arctan_inverse(239))
    digits = []
    for _ in range(count):  # str() refuses numbers of this size
        digits.append(str(pi // scale))
        pi = pi % scale * 10
    return digits


def published_pi_digits():
    """The reference set of 5000 digits: the published one has a 3 for an 8, and its
    certified values are those of the published digits."""
    digits = pi_digits(5000)
    assert digits[956] == "8"
    digits[956] = "3"
    return digits


def read_sets(path):
    """Name, data, certified mean and standard deviation of each set of the file."""
    words = " ".join(l for l in open(path) if l[0] != "#").split()
    while words:
        (_, name, count, mean, deviation), words = words[:5], words[5:]
        yield name, words[: int(count)], mean, deviation
        words = words[int(count) :]


def alternating(base):
    """The numerical accuracy sets: base.2, then base.1 and base.3 in turn."""
    return [base + ".2"] + [base + ".1", base + ".3"] * 500


michelson = [line.strip() for line in open(sys.argv[2]) if line.strip() and line[0] != "#"]

# name, data as decimal texts, certified mean and standard deviation (or None)
sets = [
    ("michelson", michelson, "299.8524", "0.0790105478190518"),
    ("accuracy1", ["10000001", "10000003", "10000002"], "10000002", "1"),
    ("accuracy2", alternating("1"), "1.2", "0.1"),
    ("accuracy3", alternating("1000000"), "1000000.2", "0.1"),
    ("accuracy4", alternating("10000000"), "10000000.2", "0.1"),
    ("pi_digits", published_pi_digits(), "4.53480000000000", "2.86733906028871"),
    *read_sets(sys.argv[3]),
    ("shifted", [str(10**9 + Fraction(j * j % 17, 16) + 0.0) for j in range(1000)], None, None),
    ("trend", [str(0.1 * j) for j in range(3000)], None, None),
    ("outlier", ["1e9"] + [str((j * 37 % 101) / 64) for j in range(1500)], None, None),
]


def agrees(x, text):
    """Whether x lies within half a unit of the text's last digit."""
    unit = Fraction(1, 10 ** len(text.partition(".")[2]))
    return 2 * abs(x - Fraction(text)) <= unit


def root(x):
    """sqrt of a fraction, to 40 digits and more."""
    scale = 10**50
    return Fraction(isqrt(x.numerator * scale**2 // x.denominator), scale)


def check_certified(name, texts, mean, deviation):
    data = [Fraction(t) for t in texts]
    m = sum(data) / len(data)
    v = sum((x - m) ** 2 for x in data) / (len(data) - 1)
    assert agrees(m, mean), (name, float(m))
    assert agrees(root(v), deviation), (name, float(root(v)))


def statistics(x, y, w):
    """mean, W, W2, central sums 2 to 4, sum of products of deviations."""
    W = sum(w)
    m = sum(a * b for a, b in zip(w, x)) / W
    my = sum(a * b for a, b in zip(w, y)) / W
    central = [sum(a * (b - m) ** k for a, b in zip(w, x)) for k in (2, 3, 4)]
    product = sum(a * (b - m) * (c - my) for a, b, c in zip(w, x, y))
    return [m, W, sum(a * a for a in w)] + central + [product]


with open(sys.argv[1], "w") as out:
    print("# Made by tools/stats_reference.py.", file=out)
    print("# data NAME COUNT VALUES; then for weights 1 and for weights (j mod 5) + 0.5:", file=out)
    print("# mean, W, W2, central sums 2, 3, 4, cross-product with the data in the order", file=out)
    print("# 17j mod COUNT. Exact, rounded to nearest.", file=out)
    for name, texts, mean, deviation in sets:
        if mean is not None:
            check_certified(name, texts, mean, deviation)
        values = [float(t) for t in texts]
        n = len(values)
        assert n % 17
        x = [Fraction(v) for v in values]
        y = [x[17 * j % n] for j in range(n)]
        ones = [Fraction(1)] * n
        weights = [j % 5 + Fraction(1, 2) for j in range(n)]
        print("data", name, n, *[repr(v) for v in values], file=out)
        for w in (ones, weights):
            print(*[repr(float(s)) for s in statistics(x, y, w)], file=out)
