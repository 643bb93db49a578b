#!/usr/bin/env python3
"""The parallel examples: the same valuation, bit for bit, whatever the number of workers; statistics to
the digits that docs/parallel.md promises.    test.py threads PROGRAM | mpi PROGRAM THREADS-PROGRAM"""
import math
import re
import shutil
import subprocess
import sys

SKIPPED = 77


def results(command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=100)
    if done.returncode != 0:
        sys.exit(f"{command}: status {done.returncode}\n{done.stderr}")
    print(" ".join(map(str, command)), done.stdout, sep="\n")
    return done.stdout.splitlines()


def compare(expected, got, quantile_digits=0.01):
    def same(condition, words):
        if not condition:
            sys.exit(f"{words}: expected\n{expected}\ngot\n{got}")
    same(expected[0] == got[0], "the valuation")
    same(expected[1] == got[1], "the count")
    for a, b in zip(expected[2:], got[2:], strict=True):
        words_a, words_b = a.split(), b.split()
        quartiles = len(words_a) - 3 if "quartiles" in words_a else len(words_a)
        extremes = [words_a.index(w) + 1 for w in ("minimum", "maximum") if w in words_a]
        for i, (x, y) in enumerate(zip(words_a, words_b, strict=True)):
            if not re.match(r"[-\d]", x):
                same(x == y, "the words")
            elif i in extremes:
                same(x == y, "an extreme")
            elif i < quartiles:
                same(math.isclose(float(x.rstrip(":")), float(y.rstrip(":")), rel_tol=1e-9, abs_tol=1e-9), "mean or covariance")
            else:
                same(abs(float(x) - float(y)) < quantile_digits, "a quartile")


def sane(lines):
    """The valuation is near the closed form, the statistics near the law of the data."""
    if not abs(float(lines[0].split()[2])) < 5e-3:
        sys.exit(f"far from the closed form: {lines[0]}")
    covariance = [float(word) for word in lines[-1].split()[1:]]
    for got, expected in zip(covariance, [1, 0.5, 0.25 + 4, -0.2, 0.5 * -0.2 + 2 * 0.3, 0.04 + 0.09 + 0.01], strict=True):
        if abs(got - expected) > 0.03:
            sys.exit(f"far from the law of the data: {lines[-1]}")


def main():
    kind, program = sys.argv[1:3]
    if kind == "threads":
        runs = [[program, str(n), "50"] for n in (1, 2, 3, 7, 60)]
    else:
        if not shutil.which("mpirun"):
            print("MPI is not installed: nothing was run")
            sys.exit(SKIPPED)
        mpirun = ["mpirun", "--allow-run-as-root", "--oversubscribe", "-n"]
        runs = [[sys.argv[3], "1", "50"]] + [mpirun + [n, program, "50"] for n in ("1", "2", "4")]
    first = results(runs[0])
    sane(first)
    for run in runs[1:]:
        compare(first, results(run))


main()
