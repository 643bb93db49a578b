#!/usr/bin/python3
"""Makes the rational functions of the single-precision error functions
(vm/core/erf_single.h): tools/erf_rational.py

  erf x ~ x P(x^2) / Q(x^2)      0 <= x <= 3.92 (LA; then P times 1 + 2^-24, so that the
                                 quotient reaches 1 at the end), 0 <= x <= 2.6 (EP)
  exp(u^2) erfc u ~ P(u) / Q(u)  0 <= u <= 9.3; then P(0) = 1
"""
from mpmath import erf, erfc, exp, log, mpf, nstr

from rational_fit import chebyshev, fit, polynomial, show


def report(name, worst, P, Q):
    print(name, "error of the fit 2^", nstr(log(worst, 2), 5))
    show("P", P)
    show("Q", Q[1:])


def main():
    for name, end, degree, factor in (("erf LA", mpf("3.92"), 5, 1 + mpf(2) ** -24),
                                      ("erf EP", mpf("2.6"), 2, 1)):
        xs = chebyshev(end)
        worst, P, Q = fit([x * x for x in xs], [erf(x) / x for x in xs], degree, degree)
        P = [a * factor for a in P]
        report(name, worst, P, Q)
        print("at the end", nstr(end * polynomial(P, end**2) / polynomial(Q, end**2), 10))
    xs = chebyshev(mpf("9.3"))
    for name, p, q in (("erfc LA", 4, 5), ("erfc EP", 2, 3)):
        worst, P, Q = fit(xs, [exp(x * x) * erfc(x) for x in xs], p, q)
        report(name, worst, [mpf(1), *P[1:]], Q)


if __name__ == "__main__":
    main()
