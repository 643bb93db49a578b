#!/usr/bin/env python3
"""What a uniform of 0 does to mean and variance of the laws that take -744.44 for its logarithm.

    tools/zero_uniform.py            writes the table of docs/distributions.md
    tools/zero_uniform.py --check    fails where it is not current

A uniform of N equally likely values k/N stands for its cell [k/N, (k + 1)/N). With e = -ln u, a law
X = g(e) has E(X^k | u < 1/N) = integral of g(ln N + t)^k e^-t over t > 0; the value g(744.44) stands
for it. The table holds what this changes, 1/N of the difference: the mean in standard deviations of
the law, the variance relative to it.
"""
import pathlib
import sys

from mpmath import besseli, erfinv, exp, expm1, floor, inf, log, mp, mpf, pi, quad, sqrt

mp.dps = 20
DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs/distributions.md"
BEGIN, END = "<!-- tools/zero_uniform.py -->", "<!-- end -->"
E0 = mpf("744.4400719213812")
CELLS = {"single": mpf(2) ** 24, "double": mpf(2) ** 32}


def cell_mean(f, start):
    """E(f(start + t)), t standard exponential."""
    points = [0, 1, 4, 16, 64, 256, 1024, inf]
    return quad(lambda t: f(start + t) * exp(-t), points)


def of_logarithm(power, mean, square):
    """power(k, e) = E(X^k | e)."""
    return (lambda k: power(k, E0)), (lambda k, n: cell_mean(lambda e: power(k, e), log(n))), mean, square


def plain(g, mean, square):
    return of_logarithm(lambda k, e: g(e) ** k, mpf(mean), mpf(square))


def weibull(alpha):
    a = mpf(alpha)
    return plain(lambda e: e ** (1 / a), mp.gamma(1 + 1 / a), mp.gamma(1 + 2 / a))


def lognormal(sigma):
    s = mpf(sigma)
    return of_logarithm(lambda k, e: besseli(0, k * s * sqrt(2 * e)), exp(s * s / 2), exp(2 * s * s))


def inversion(g, mean, square):
    """X = g(z), z = sqrt2 erf^-1(u) of u on [-1, 1), -0.767 sqrt2 for u = -1."""
    z0 = -sqrt(mpf(2)) * mpf("0.7670519064056041")

    def cell(k, n):
        end = sqrt(mpf(2)) * erfinv(2 / n - 1)
        density = lambda z: g(z) ** k * exp(-z * z / 2) / sqrt(2 * pi)
        return n * quad(density, [end - 12, end - 3, end - 1, end])

    return (lambda k: g(z0) ** k), cell, mpf(mean), mpf(square)


def geometric(p):
    p = mpf(p)
    rate = -log(1 - p)

    def cell(k, n):
        first = floor(log(n) / rate)
        head = first**k * (1 - n * exp(-rate * (first + 1)))
        size = int(60 / rate)
        return head + sum((first + j) ** k * n * exp(-rate * (first + j)) * p for j in range(1, size))

    return (lambda k: floor(E0 / rate) ** k), cell, (1 - p) / p, (1 - p) * (2 - p) / p**2


LAWS = [
    ("normal, methods 0 and 1", of_logarithm(lambda k, e: e if k == 2 else mpf(0), mpf(0), mpf(1))),
    ("normal, method 2", inversion(lambda z: z, 0, 1)),
    ("lognormal of sigma 0.1, method 0", lognormal("0.1")),
    ("lognormal of sigma 0.5, method 0", lognormal("0.5")),
    ("lognormal of sigma 1, method 0", lognormal(1)),
    ("lognormal of sigma 1, method 1", inversion(exp, exp(mpf(1) / 2), exp(mpf(2)))),
    ("exponential, gamma of shape 1", plain(lambda e: e, 1, 2)),
    ("Laplace", of_logarithm(lambda k, e: e * e if k == 2 else mpf(0), mpf(0), mpf(2))),
    ("Weibull of shape 0.5", weibull("0.5")),
    ("Weibull of shape 2.5", weibull("2.5")),
    ("Rayleigh", weibull(2)),
    ("Gumbel", plain(log, -mp.euler, mp.euler**2 + pi**2 / 6)),
    ("geometric of p = 0.5", geometric("0.5")),
    ("geometric of p = 0.01", geometric("0.01")),
]


def effect(law, n):
    value, cell, mean, square = law
    m, s = (moment + (value(k) - cell(k, n)) / n for k, moment in ((1, mean), (2, square)))
    variance = square - mean**2
    return (m - mean) / sqrt(variance), (s - m * m) / variance - 1


def table():
    lines = ["| law | mean, single | variance, single | mean, double | variance, double |",
             "|---|---|---|---|---|"]
    for name, law in LAWS:
        cells = []
        for precision, n in CELLS.items():
            if name.startswith("geometric") and precision == "double":
                cells += ["-", "-"]
            else:
                cells += [f"{float(x):+.1e}" if abs(x) > 1e-30 else "0" for x in effect(law, n)]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def main():
    text = DOCUMENT.read_text()
    head, rest = text.split(BEGIN)
    old, tail = rest.split(END, 1)
    new = f"\n\n{table()}\n\n"
    if "--check" in sys.argv[1:]:
        if old != new:
            sys.exit(f"{DOCUMENT.name} is not current: run {sys.argv[0]}")
    else:
        DOCUMENT.write_text(head + BEGIN + new + END + tail)


if __name__ == "__main__":
    main()
