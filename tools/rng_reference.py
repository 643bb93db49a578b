#!/usr/bin/env python3
"""Reference outputs of the basic generators, by exact integers and plain loops.

    tools/rng_reference.py > tests/data/rng_reference.txt

A line: generator id, number of seed words, the seed words, place of the first number, count, raw
words (components of a WH word one after another); all but the counts in hexadecimal.
"""

import re
import sys
from itertools import islice
from pathlib import Path

TABLES = Path(__file__).parent.parent / "rng/brng/tables"
WORD = 0xFFFFFFFF


def rows(name):
    return [[int(x, 0) for x in re.findall(r"0x[0-9A-Fa-f]+|\d+", line)]
            for line in (TABLES / name).read_text().splitlines() if line.startswith("{")]


def mcg(x, a, m):
    while True:
        yield x
        x = a * x % m


def mcg31m1(key):
    m = 2**31 - 1
    return mcg((key[0] if key else 1) % m or 1, 1132489760, m)


def mcg59(key):
    x = (key[0] if key else 1) + ((key[1] & 0x7FFFFFF) << 32 if len(key) > 1 else 0)
    return mcg(x or 1, 13**13, 2**59)


def mrg32k3a(key):
    m1, m2 = 2**32 - 209, 2**32 - 22853
    key = (key + [1] * 6)[:6]
    x, y = [w % m1 for w in key[:3]], [w % m2 for w in key[3:]]  # newest first
    x, y = x if any(x) else [1, 0, 0], y if any(y) else [1, 0, 0]
    while True:
        x = [(1403580 * x[1] - 810728 * x[2]) % m1, x[0], x[1]]
        y = [(527612 * y[0] - 1370589 * y[2]) % m2, y[0], y[1]]
        yield (x[0] - y[0]) % m1


def wh(number, key):
    row = rows("wh.inc")[number]
    m, a = row[:4], row[4:]
    x = [(w % p) or 1 for w, p in zip((key + [1] * 4)[:4], m)]
    while True:
        x = [u * v % p for u, v, p in zip(a, x, m)]
        yield x


def key_array(n, key):
    key = key or [1]
    x = [19650218]
    for i in range(1, n):
        x.append((1812433253 * (x[-1] ^ x[-1] >> 30) + i) & WORD)
    i = j = 0
    i = 1
    for _ in range(max(n, len(key))):
        x[i] = ((x[i] ^ (x[i - 1] ^ x[i - 1] >> 30) * 1664525) + key[j] + j) & WORD
        i, j = i + 1, (j + 1) % len(key)
        if i == n:
            x[0], i = x[-1], 1
    for _ in range(n - 1):
        x[i] = ((x[i] ^ (x[i - 1] ^ x[i - 1] >> 30) * 1566083941) - i) & WORD
        i += 1
        if i == n:
            x[0], i = x[-1], 1
    x[0] = 0x80000000
    return x


def twister(x, m, lower, a, u, b, c):
    x = list(x)
    while True:
        y = x[0] & ~lower & WORD | x[1] & lower
        x.append(x[m] ^ y >> 1 ^ (a if y & 1 else 0))
        x.pop(0)
        z = x[-1]
        z ^= z >> u
        z ^= z << 7 & b
        z ^= z << 15 & c
        yield z ^ z >> 18


def mt19937(key):
    return twister(key_array(624, key), 397, 0x7FFFFFFF, 0x9908B0DF, 11, 0x9D2C5680, 0xEFC60000)


def mt2203(number, key):
    a, b, c = rows("mt2203.inc")[number]
    return twister(key_array(69, key), 34, 0x1F, a, 12, b, c)


def sfmt19937(key):
    key, n = key or [1], 624
    x = [0x8B8B8B8B] * n
    f = lambda w, k: (w ^ w >> 27) * k & WORD
    mid, lag = (n - 11) // 2, 11
    extras = [len(key)] + [(key[j] if j < len(key) else 0) + (j + 1) % n
                           for j in range(max(len(key) + 1, n) - 1)]
    i = 0
    for extra in extras:
        r = f(x[i] ^ x[(i + mid) % n] ^ x[i - 1], 1664525)
        x[(i + mid) % n] = x[(i + mid) % n] + r & WORD
        r = r + extra & WORD
        x[(i + mid + lag) % n] = x[(i + mid + lag) % n] + r & WORD
        x[i] = r
        i = (i + 1) % n
    for _ in range(n):
        r = f(x[i] + x[(i + mid) % n] + x[i - 1] & WORD, 1566083941)
        x[(i + mid) % n] ^= r
        r = r - i & WORD
        x[(i + mid + lag) % n] ^= r
        x[i] = r
        i = (i + 1) % n
    inner = x[0] & 1 ^ x[3] & 0x13C9E684
    if bin(inner).count("1") % 2 == 0:
        x[0] ^= 1
    words = [sum(x[4 * i + j] << 32 * j for j in range(4)) for i in range(156)]
    mask = 0xBFFFFFF6_BFFAFFFF_DDFECB7F_DFFFFFEF
    lanes = lambda w, g: sum(g(w >> 32 * j & WORD) << 32 * j for j in range(4))
    while True:
        a, b, c, d = words[0], words[122], words[154], words[155]
        w = (a ^ a << 8 & (1 << 128) - 1 ^ lanes(b, lambda v: v >> 11) & mask ^ c >> 8
             ^ lanes(d, lambda v: v << 18 & WORD))
        words.append(w)
        words.pop(0)
        for j in range(4):
            yield w >> 32 * j & WORD


def r250(key):
    if len(key) >= 250:
        x = key[:250]
    else:
        x = key_array(250, key)
        for i in range(32):
            bit = 1 << 31 - i
            x[7 * i + 3] = x[7 * i + 3] & bit - 1 | bit
    while True:
        x.append(x[-103] ^ x[-250])
        yield x[-1]


def digital(columns):
    index = 1
    while True:
        gray = index ^ index >> 1
        for column in columns:
            x = 0
            for j in range(32):
                if gray >> j & 1:
                    x ^= column[j]
            yield x
        index += 1


def sobol(key):
    return digital(rows("sobol.inc")[: key[0] if key else 1])


def poly_mul(x, y):
    r = 0
    while y:
        if y & 1:
            r ^= x
        x, y = x << 1, y >> 1
    return r


def poly_mod(x, p):
    while x.bit_length() >= p.bit_length():
        x ^= p << x.bit_length() - p.bit_length()
    return x


def niederr(key):
    """By Laurent series: row j of C holds the coefficients of t^u h / p^(q+1), h given by the
    first values of the linear sequence."""
    polynomials, p = [], 2
    while len(polynomials) < (key[0] if key else 1):
        if all(poly_mod(p, f) for f in polynomials if 2 * f.bit_length() <= p.bit_length() + 1):
            polynomials.append(p)
        p += 1
    columns = []
    for p in polynomials:
        e = p.bit_length() - 1
        column = [0] * 32
        power, q = 1, 0
        while q * e < 32:
            power = poly_mul(power, p)
            m = power.bit_length() - 1
            v = [0] * (e * q) + [1] * e
            while len(v) < 80:
                v.append(sum(v[len(v) - m + t] for t in range(m) if power >> t & 1) % 2)
            for u in range(e):
                if q * e + u < 32:
                    for r in range(32):
                        column[r] |= v[r + u] << 31 - (q * e + u)
            q += 1
        columns.append(column)
    return digital(columns)


CASES = [
    (0x100000, mcg31m1, [[], [1], [0], [0x7FFFFFFF], [0x80000000], [777], [0xFFFFFFFF, 5]]),
    (0x200000, r250, [[], [12345], [1, 2, 3], list(range(7, 7 * 252, 7))]),
    (0x300000, mrg32k3a, [[], [12345] * 6, [1, 2, 3], [WORD] * 6, [0] * 6, [7, 11, 13, 17, 19, 23]]),
    (0x400000, mcg59, [[], [0, 0x08000000], [2], [0xDEADBEEF, 0x07654321], [WORD, WORD, 9]]),
    (0x600000, sobol, [[], [1], [2], [3], [5], [7], [40], [41], [0]]),
    (0x700000, niederr, [[], [1], [3], [10], [60]]),
    (0x800000, mt19937, [[], [1], [5489], [0x123, 0x234, 0x345, 0x456], list(range(700))]),
    (0xD00000, sfmt19937, [[], [1], [0x1234, 0x5678, 0x9ABC, 0xDEF0], list(range(700))]),
]


def line(number, key, place, words):
    flat = [x for w in words for x in (w if isinstance(w, list) else [w])]
    print(f"{number:x} {len(key)}", *(f"{w:x}" for w in key), place, len(words),
          *(f"{w:x}" for w in flat))


def main():
    cases = [(number, make, key) for number, make, keys in CASES for key in keys]
    cases += [(0x500000 + i, lambda key, i=i: wh(i, key), key)
              for i in (0, 1, 272) for key in ([], [1, 2, 3, 4], [WORD, 0])]
    cases += [(0x900000 + i, lambda key, i=i: mt2203(i, key), key)
              for i in range(4) for key in ([], [1, 2])]
    for number, make, key in cases:
        if number in (0x600000, 0x700000) and key and not 0 < key[0] <= (40 if number == 0x600000 else 318):
            numbers = make([1])
        else:
            numbers = make(key)
        line(number, key, 0, list(islice(numbers, 12)))
        line(number, key, 2000, list(islice(numbers, 2000 - 12, 2000)))


main()
