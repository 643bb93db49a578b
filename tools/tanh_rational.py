#!/usr/bin/python3
"""Makes the rational function of single EP Tanh (vm/real/tanh.cpp): tools/tanh_rational.py

tanh x ~ x P(x^2) / Q(x^2), |x| <= 4.6, both of degree 2, Q(0) = 1; then P times
1 + 2^-12, so that the quotient reaches 1 at the end.
"""
from mpmath import log, mpf, nstr, tanh

from rational_fit import chebyshev, fit, polynomial, show

END = mpf("4.6")


def main():
    xs = chebyshev(END)
    worst, P, Q = fit([x * x for x in xs], [tanh(x) / x for x in xs], 2, 2)
    P = [p * (1 + mpf(2) ** -12) for p in P]
    print("error of the fit 2^", nstr(log(worst, 2), 5))
    show("P", P)
    show("Q", Q[1:])
    print("at the end", nstr(END * polynomial(P, END**2) / polynomial(Q, END**2), 10))


if __name__ == "__main__":
    main()
