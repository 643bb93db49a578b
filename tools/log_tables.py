#!/usr/bin/python3
"""Makes the tables of vm/core/log_core.h: tools/log_tables.py DIRECTORY

log128.inc  for each of 128 intervals of z in [0.705, 1.41) the reciprocal of its
            centre, rounded to 24 bits, and minus the logarithm of that
            reciprocal: a high part that is a multiple of 2^-43, the rest, and
            the whole rounded. The interval around 1 has the reciprocal 1.
log16.inc   the same for 16 intervals of z in [0.698, 1.396), that around 1 with 1 in its
            middle, and reciprocals of 53 bits.
"""
import pathlib
import struct
import sys

from mpmath import mp, mpf, log, nint

mp.prec = 200

ONE = 0x3FF0000000000000


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def value(b):
    return mpf(struct.unpack("<d", struct.pack("<Q", b))[0])


def intervals(offset, shift, inverse_bits):
    """The reciprocals and minus their logarithms; `offset` is the start of the first interval, 2^shift
    the length of one, both as bits of doubles."""
    widest = mpf(0)
    for first in range(offset, offset + (1 << 52), 1 << shift):
        low, high = value(first), value(first + (1 << shift))
        inverse = mpf(1) if low < 1 < high else \
            nint(2 / (low + high) * 2**(inverse_bits - 1)) / mpf(2)**(inverse_bits - 1)
        widest = max(widest, abs(low * inverse - 1), abs(high * inverse - 1))
        yield inverse, -log(inverse)
    print(f"largest |z/c - 1|: {mp.nstr(widest, 10)} = 2^-8 * {mp.nstr(widest * 256, 10)}")


def write(name, lines):
    head = f"// {name}: made by tools/log_tables.py vm/tables; do not edit.\n"
    (pathlib.Path(sys.argv[1]) / name).write_text(
        head + "".join(f"{line}  // {j}\n" for j, line in enumerate(lines)))


def table(name, shift, offset, inverse_bits):
    """NAME.inc of those intervals, a macro of the same name in capitals for each."""
    lines = []
    for inverse, logarithm in intervals(offset, shift, inverse_bits):
        rough = nint(logarithm * 2**43) / 2**43
        lines.append(f"KEF_{name.upper()}(0x{bits(inverse):016X}, 0x{bits(rough):016X}, "
                     f"0x{bits(logarithm - rough):016X}, 0x{bits(logarithm):016X})")
    write(f"{name}.inc", lines)


def main():
    table("log128", 45, 0x3FE6900000000000, 24)
    table("log16", 48, 0x3FE6555600000000, 53)


if __name__ == "__main__":
    main()
