#!/usr/bin/python3
"""Makes the tables of the trigonometric functions: tools/trig_tables.py DIRECTORY

sine256.inc      a = (j - 128) pi/256, j = 0..255: sin a and cos a rounded to nearest, what
                 is left of sin a, and cos a - 1
inverse_2pi.inc  1/(2 pi), 40 words of 32 bits behind the binary point

With --constants it prints pi/256 and pi in parts for the Cody-Waite reductions.
"""
import pathlib
import struct
import sys

from mpmath import cos, floor, ldexp, log, mp, mpf, pi, sin

mp.prec = 1500


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", float(x)))[0]


def head(name):
    return f"// {name}: made by tools/trig_tables.py vm/tables; do not edit.\n"


def parts(value, width, count, last_width=53):
    """value as `count` parts of `width` bits, towards zero, and a rounded rest."""
    result = []
    for _ in range(count):
        unit = floor(log(value, 2)) - (width - 1)
        part = ldexp(floor(ldexp(value, -int(unit))), int(unit))
        result.append(part)
        value -= part
    with mp.workprec(last_width):
        rest = +value
    return result + [rest]


def constants():
    for name, value, width, count in (
            ("pi, near", +pi, 35, 2), ("pi, far", +pi, 26, 3),
            ("pi, LA", +pi, 36, 2), ("pi, single HA", +pi, 36, 1), ("pi, EP", +pi, 40, 1),
            ("2 pi", 2 * pi, 53, 1)):
        print(name, *(f"0x{bits(p):016X}" for p in parts(value, width, count)))
    for name, value, width, count in (("pi, LA", +pi, 16, 2), ("pi, EP", +pi, 17, 1),
                                      ("pi/2, LA", pi / 2, 16, 2), ("pi/2, EP", pi / 2, 17, 1)):
        print("single", name, *(f"{float(p).hex()}f" for p in parts(value, width, count, 24)))
    for name, value in (("256/pi", 256 / pi), ("1/pi", 1 / pi), ("2/pi", 2 / pi)):
        print(name, f"0x{bits(value):016X}")


def rest(x):
    return x - mpf(float(x))


def sines(path, steps, fields):
    """Those fields of sin a and cos a for the angles a of one half turn."""
    lines = [head(path.name)]
    for j in range(steps):
        a = (j - steps // 2) * pi / steps
        s, c = sin(a), cos(a)
        if j == 0:
            c = mpf(0)
        if j == steps // 2:
            s = mpf(0)
        numbers = ", ".join(f"0x{bits(v):016X}" for v in fields(s, c))
        lines.append(f"KEF_SINE({numbers})  // {j - steps // 2}\n")
    path.write_text("".join(lines))


def main():
    if sys.argv[1] == "--constants":
        return constants()
    target = pathlib.Path(sys.argv[1])
    sines(target / "sine256.inc", 256, lambda s, c: (s, c, rest(s), c - 1))
    sines(target / "sine16.inc", 16, lambda s, c: (s, c, rest(s), rest(c)))
    lines = [head("inverse_2pi.inc")]
    value = 1 / (2 * pi)
    for _ in range(40):
        value *= 2**32
        lines.append(f"0x{int(floor(value)):08X},\n")
        value -= floor(value)
    (target / "inverse_2pi.inc").write_text("".join(lines))


if __name__ == "__main__":
    main()
