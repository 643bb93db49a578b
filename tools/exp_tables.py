#!/usr/bin/python3
"""Makes the tables of vm/core/exp_core.h: tools/exp_tables.py DIRECTORY

exp64.inc   2^(j/64), j = 0..63, as a high part whose last 8 bits are zero and
            the rest, rounded to nearest
exp128.inc  the 52 fraction bits of 2^(j/128), j = 0..127, rounded to nearest
exp16.inc   the same of 2^(j/16), and what the rounding left
"""
import pathlib
import struct
import sys

from mpmath import mp, mpf

mp.prec = 200


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", x))[0]


def value(b):
    return mpf(struct.unpack("<d", struct.pack("<Q", b))[0])


def head(name):
    return f"// {name}: made by tools/exp_tables.py vm/tables; do not edit.\n"


def truncated(x):
    b = bits(float(x))
    if value(b) > x:
        b -= 1
    return b & ~0xFF


def main():
    target = pathlib.Path(sys.argv[1])
    lines = [head("exp64.inc")]
    for j in range(64):
        t = mpf(2) ** (mpf(j) / 64)
        high = truncated(t)
        low = bits(float(t - value(high)))
        lines.append(f"KEF_EXP64(0x{high:016X}, 0x{low:016X})  // {j}\n")
    (target / "exp64.inc").write_text("".join(lines))
    for size in 128, 16:
        lines = [head(f"exp{size}.inc")]
        for j in range(size):
            t = mpf(2) ** (mpf(j) / size)
            fraction, low = bits(float(t)) & (2**52 - 1), bits(float(t - float(t)))
            fields = f"0x{fraction:016X}," if size == 128 else \
                f"KEF_EXP16(0x{fraction:016X}, 0x{low:016X})"
            lines.append(f"{fields}  // {j}\n")
        (target / f"exp{size}.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
