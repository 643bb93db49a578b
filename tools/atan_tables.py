#!/usr/bin/python3
"""Makes the table of vm/core/atan_core.h: tools/atan_tables.py DIRECTORY

atan386.inc  entry 0: zero. Entries 1 to 384: the centre c of one of 32 intervals
             of an octave of [2^-6, 2^6), and atan c as a double and the rest.
             Entry 385: the same for c = 64.
atan16.inc   c of one of 2 intervals of an octave of [2^-4, 2^3), near the tangent of
             the middle of their angles, so that atan c is a double to 2^-11 ulp; 0
             below and one above
"""
import pathlib
import struct
import sys

from mpmath import mp, mpf, atan, inf, tan

mp.prec = 200


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def main():
    lines = ["// atan386.inc: made by tools/atan_tables.py vm/tables; do not edit.\n"]
    centres = [mpf(0)]
    for octave in range(-6, 6):
        centres += [mpf(2) ** octave * (1 + (mpf(j) + mpf(0.5)) / 32) for j in range(32)]
    centres.append(mpf(64))
    for c in centres:
        high = mpf(float(atan(c)))
        lines.append(f"KEF_ATAN(0x{bits(c):016X}, 0x{bits(high):016X}, 0x{bits(atan(c) - high):016X})"
                     f"  // {mp.nstr(c, 8)}\n")
    target = pathlib.Path(sys.argv[1])
    (target / "atan386.inc").write_text("".join(lines))

    lines = ["// atan16.inc: made by tools/atan_tables.py vm/tables; do not edit.\n"]
    bounds = [mpf(2) ** octave * half for octave in range(-4, 3) for half in (1, mpf(1.5))]
    bounds += [mpf(8), inf]
    for c in [mpf(0)] + [tan((atan(a) + atan(b)) / 2) for a, b in zip(bounds, bounds[1:])]:
        near = [mpf(float(c * (1 + mpf(j) / 2**40))) for j in range(1024)]
        c = min(near, key=lambda c: abs(atan(c) - float(atan(c))))
        lines.append(f"KEF_ATAN16(0x{bits(c):016X}, 0x{bits(atan(c)):016X})  // {mp.nstr(c, 8)}\n")
    (target / "atan16.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
