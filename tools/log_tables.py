#!/usr/bin/python3
"""Makes the table of vm/core/log_core.h: tools/log_tables.py DIRECTORY

log128.inc  for each of 128 intervals of z in [0.705, 1.41) the reciprocal of its
            centre, rounded to 24 bits, and minus the logarithm of that
            reciprocal: a high part that is a multiple of 2^-43, the rest, and
            the whole rounded. The interval around 1 has the reciprocal 1.
"""
import pathlib
import struct
import sys

from mpmath import mp, mpf, log, nint

mp.prec = 200

OFFSET = 0x3FE6900000000000  # bits of the lower end of the first interval
ONE = 0x3FF0000000000000


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def value(b):
    return mpf(struct.unpack("<d", struct.pack("<Q", b))[0])


def main():
    lines = ["// log128.inc: made by tools/log_tables.py vm/tables; do not edit.\n"]
    widest = mpf(0)
    for j in range(128):
        first = OFFSET + (j << 45)
        last = first + (1 << 45)
        low, high = value(first), value(last)
        if first < ONE < last:
            inverse = mpf(1)
        else:
            inverse = nint(2 / (low + high) * 2**23) / 2**23
        logarithm = -log(inverse)
        rough = nint(logarithm * 2**43) / 2**43
        widest = max(widest, abs(low * inverse - 1), abs(high * inverse - 1))
        lines.append(f"KEF_LOG128(0x{bits(inverse):016X}, 0x{bits(rough):016X}, "
                     f"0x{bits(logarithm - rough):016X}, 0x{bits(logarithm):016X})  // {j}\n")
    print(f"largest |z/c - 1|: {mp.nstr(widest, 10)} = 2^-8 * {mp.nstr(widest * 256, 10)}")
    (pathlib.Path(sys.argv[1]) / "log128.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
