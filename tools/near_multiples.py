#!/usr/bin/env python3
"""Hard arguments of sine, cosine and tangent: in each binade the numbers next to a multiple of
pi/2, where the reduction cancels most.

    tools/near_multiples.py [> tests/data/near_multiples.txt]

A line is `d` or `s` and the bits of a number. For the exponent e, m 2^e is near n pi/2 where m
is a multiple of a denominator q of a convergent of 2^e / (pi/2), or lies between two such
(Khinchin, Continued Fractions, section 6); m runs over the significands of the binade.
"""
import struct

from mpmath import mp, mpf, nint, pi

mp.prec = 2400


def best(digits, e):
    """The significands of the binade of 2^(e + digits - 1) whose product with 2^e is nearest."""
    alpha = mpf(2) ** e / (pi / 2)
    low, high = 2 ** (digits - 1), 2**digits
    distance = lambda m: abs(m * alpha - nint(m * alpha))
    candidates = set()
    q0, q1, x = 0, 1, alpha
    while q1 < high:
        candidates |= {k * q1 for k in (-(-low // q1), (high - 1) // q1)}
        fraction = x - mp.floor(x)
        if fraction == 0:
            break
        x = 1 / fraction
        a = int(mp.floor(x))
        for k in range(max(0, (low - q0) // q1 - 1), min(a, (high - q0) // q1 + 1) + 1)[:64]:
            candidates.add(q0 + k * q1)
        q0, q1 = q1, q0 + a * q1
    inside = [m for m in candidates if low <= m < high]
    return sorted(inside, key=distance)[:2]


def main():
    for letter, digits, last in (("d", 53, 1023), ("s", 24, 127)):
        for exponent in range(1, last + 1):
            e = exponent - digits + 1
            for m in best(digits, e):
                x = float(m * mpf(2) ** e)
                if letter == "d":
                    print("d %016X" % struct.unpack("<Q", struct.pack("<d", x)))
                else:
                    print("s %08X" % struct.unpack("<I", struct.pack("<f", x)))


main()
