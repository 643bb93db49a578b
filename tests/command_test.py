#!/usr/bin/env python3
"""The command kef from outside: numbers beside Python's own, bad input, full disks, closed pipes and
signals.    command_test.py PROGRAM SOURCE-DIRECTORY [unittest word...]"""
import bisect
import csv
import io
import math
import os
import pty
import random
import re
import resource
import signal
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree
from fractions import Fraction
from pathlib import Path

KEF, SOURCE = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()


def kef(*words, stdin=b"", status=0, **options):
    """Standard output as text; the status has to be that."""
    stdin = stdin.encode() if isinstance(stdin, str) else stdin
    done = subprocess.run([KEF, *map(str, words)], input=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=60, **options)
    if done.returncode != status or b"Sanitizer" in done.stderr:
        raise AssertionError(f"kef {words}: status {done.returncode}: {done.stderr.decode()}")
    return (done.stdout if status == 0 else done.stderr).decode(errors="replace")


def table(text):
    return list(csv.DictReader(io.StringIO(text)))


def stats(*words, **options):
    return table(kef("stats", "--format", "csv", *words, **options))


class InDirectory(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.work = Path(directory.name)

    def file(self, name, content):
        path = self.work / name
        path.write_bytes(content.encode() if isinstance(content, str) else content)
        return path

    def left(self):
        return sorted(path.name for path in self.work.iterdir())


class Stats(InDirectory):
    def expect(self, row, numbers):
        exact = [Fraction(x) for x in numbers]
        n, mean = len(exact), sum(exact) / len(exact)
        central = [float(sum((x - mean) ** k for x in exact) / n) for k in (2, 3, 4)]
        self.assertEqual(int(row["count"]), n)
        for name, value in (("mean", float(mean)), ("deviation", statistics.stdev(exact)), ("sum", float(sum(exact))),
                            ("skewness", central[1] / central[0] ** 1.5), ("kurtosis", central[2] / central[0] ** 2 - 3)):
            self.assertTrue(math.isclose(float(row[name]), value, rel_tol=1e-11, abs_tol=1e-11), (name, row, value))
        self.assertEqual((float(row["minimum"]), float(row["maximum"])), (min(numbers), max(numbers)))

    def test_columns_beyond_a_block(self):
        source = random.Random(17)
        rows = [(source.gauss(1e6, 1), source.expovariate(1), source.choice("abc")) for _ in range(30000)]
        path = self.file("long.csv", "x,y,group\n" + "".join(f"{x!r},{y!r},{g}\n" for x, y, g in rows))
        self.assertGreater(path.stat().st_size, 1 << 18)
        for i, row in enumerate(stats(path)):
            self.expect(row, [r[i] for r in rows])
        self.assertEqual([row["column"] for row in stats(path)], ["x", "y"])
        for row in stats(path, "--by", "group", "--columns", "y,1"):
            i = "xy".index(row["column"])
            self.expect(row, [r[i] for r in rows if r[2] == row["group"]])
        # Below 128/epsilon the observation of rank ceil(q N).
        orders = [0, 0.001, 0.25, 0.5, 0.999, 1]
        row = stats("--quantiles", ",".join(map(str, orders)), path)[1]
        ascending = sorted(r[1] for r in rows)
        for order in orders:
            rank = max(1, math.ceil(Fraction(str(order)) * len(rows)))
            self.assertEqual(float(row[f"q{order:g}"]), ascending[rank - 1])
        # Beyond it within epsilon.
        row = stats("--quantiles", "0.3", "--epsilon", "0.02", path)[1]
        self.assertAlmostEqual(bisect.bisect(ascending, float(row["q0.3"])) / len(rows), 0.3, delta=0.02)

    def test_forms_of_a_file(self):
        same = [("a.csv", "x,y\r\n1,2\r\n\r\n3,4\r\n", []), ("b.csv", "\ufeffx,y\n\"1\",2\n3,\"4\"", []),
                ("c.tsv", "x\ty\n 1\t2\n3\t4\n", []), ("d", "x;y\n1;+2\n3e0;4\n", []), ("e.csv", "# a, b\nx,y\n1,2\n3,4\n", []),
                ("f", "x|y\n1|2\n3|4\n", ["--delimiter", "|"]), ("g.csv", "x,\"y\"\n1,2\n3,4\n,NA\n", []),
                ("h.csv", "x,y\r1,2\r3,4\r", []), ("i.csv", "\n# a, b\n\n# c\nx;y\n1;2\n3;4\n", []),
                ("j", "\ufeff# a\tb;c\rx,y\r1,2\r3,4\r", [])]
        for name, text, words in same:
            rows = stats(*words, self.file(name, text))
            self.assertEqual([(r["column"], r["count"], r["sum"]) for r in rows], [("x", "2", "4"), ("y", "2", "6")], name)
        self.assertEqual([r["missing"] for r in stats(self.work / "g.csv")], ["1", "1"])
        left_out = subprocess.run([KEF, "stats", self.work / "h.csv", "--columns", "y"], stderr=subprocess.PIPE, stdout=subprocess.PIPE)
        self.assertEqual(left_out.stderr, b"")
        left_out = subprocess.run([KEF, "stats", "-"], input=b"x,y\nword,1\n", stderr=subprocess.PIPE, stdout=subprocess.PIPE)
        self.assertIn(b"x is left out", left_out.stderr)
        self.assertEqual([r["sum"] for r in stats("--header", "no", "-", stdin="1,2\n3,4\n")], ["4", "6"])
        self.assertEqual([r["column"] for r in stats("--header", "yes", "-", stdin="1,2\n3,4\n")], ["1", "2"])
        quoted = stats("-", stdin='"a, ""b""\nc",y\n1,2\n')
        self.assertEqual(quoted[0]["column"], 'a, "b"\nc')
        self.assertEqual(stats("-", stdin='"a;b;\nc",y\n1,2\n')[0]["column"], "a;b;\nc")

    def test_refused_with_file_line_and_column(self):
        for text, words in [
                ("x,y\n1,2\n3\n", ["standard input:3: 1 field where the first row has 2"]),
                ("x,y\n1,2\n3,4,5\n", [":3: 3 fields"]),
                ("# a\n\n# b\r\nx,y\n1,2\na,3\n", [":6: column 1 (x): not a number"]),
                ("x,y\n\n1,2\n3,1e999\n", [":4: column 2 (y): too large for a double: 1e999"]),
                ("x,y\n\"1\",2\n\"a\n\n\",4\n5,6\n7,z\n", [":3: column 1 (x): not a number"]),
                ("x,y\n1,2\n1,\"2\n\"\n3,4\n5,6z\n", [":3: column 2"]),
                ("n,y\n\"a\nb\",2\nc,4\nd,6z\n", [":5: column 2 (y): not a number: \"6z\""]),
                ("x,y\r\n1,2\r\n3,--4\r\n", [":3: column 2"]),
                ("1\n2\n0x10\n", [":3: column 1: not a number"]),
                ("x,y\n1,\"2\n3,4\n", [":2: column 2: the file ends within a quoted field"]),
                ("x,y\n1,2\n3,4\"5\n", [":3: column 2: a quote in the midst of a field"]),
                ("x\n1\n" + "2\n" * 200000 + "three\n", [":200003: column 1 (x)"]),
                ("x\n1\n\"" + "2\n" * 700000, [":3: column 1: a field of more than 1 MiB"]),
                ("x,y\n1,2\n3,\033[5m\n", [":3: column 2 (y): not a number: \"?[5m\""]), ("x\033[5m,y\n1\n", ["1 field where"]),
                ("x\0,y\n1,2\n", ["null bytes"]), ("x,y\n1,2\n".encode("utf-16"), ["null bytes"]), (b"PK\3\4\0\0a.npy", ["null bytes"]),
                ("x,y\n", ["no rows of data"]), ("", ["no data"]), ("a,b\nc,d\n", ["no column of numbers"])]:
            said = kef("stats", "-", stdin=text, status=1)
            self.assertTrue(all(word in said for word in words), (text[:40], said))
            self.assertNotIn("\033", said)
        self.assertNotIn("\033", kef("stats", "-", stdin="x\033[5m,y\n1,2\n"))
        for words, said in [(["--columns", "z"], "no column z; there are: x, y"), (["--quantiles", "2"], "--quantiles"),
                            (["--columns", "3"], "no column 3"), (["--by"], "--by needs COLUMN"), (["--wrong"], "no option"),
                            (["--epsilon", "0"], "--epsilon")]:
            self.assertIn(said, kef("stats", "-", *words, stdin="x,y\n1,2\n", status=2))
        self.assertIn("No such file", kef("stats", self.work / "none", status=1))

    def test_robust(self):
        numbers = [math.fmod(i * 0.618, 1) - 0.5 for i in range(200)] + [50, 60, 70]
        row = stats("--robust", "-", stdin="\n".join(map(repr, numbers)))[0]
        median = statistics.median(numbers)
        self.assertEqual(float(row["median"]), median)
        self.assertAlmostEqual(float(row["mad"]), statistics.median(abs(x - median) for x in numbers), delta=1e-15)
        self.assertEqual(row["outliers"], "3")
        self.assertLess(abs(float(row["robust mean"])), 0.1)
        self.assertEqual(stats("--robust", "-", stdin="1\n1\n1\n")[0]["robust mean"], "nan")

    def test_arrays(self):
        def npy(code, shape, fortran, data, version=1):
            text = f"{{'descr': '{code}', 'fortran_order': {fortran}, 'shape': {shape}, }}\n".encode()
            size = struct.pack("<H" if version == 1 else "<I", len(text))
            return b"\x93NUMPY" + bytes([version, 0]) + size + text + data
        rows = [(k, 3 * k % 101, -k % 50) for k in range(20000)]
        for code, form in [("<f8", "<d"), (">f8", ">d"), ("<f4", "<f"), (">i4", ">i"), ("<i2", "<h"), ("<u8", "<Q")]:
            values = [[abs(v) if "u" in code else v for v in row] for row in rows]
            by_rows = b"".join(struct.pack(form, v) for row in values for v in row)
            by_columns = b"".join(struct.pack(form, v) for column in zip(*values) for v in column)
            for fortran, data in (False, by_rows), (True, by_columns):
                whole = npy(code, (20000, 3), fortran, data, version=1 + fortran)
                path = self.file("a.npy", whole)
                found = stats(path, "--columns", "3,1")
                self.assertEqual([float(r["sum"]) for r in found], [sum(r[i] for r in values) for i in (2, 0)], code)
                if not fortran:
                    self.assertEqual(stats("-", stdin=whole), stats(path))
                    self.assertIn("cut off in row 20000", kef("stats", "-", stdin=whole[:-1], status=1))
                else:
                    self.assertIn("Fortran order", kef("stats", "-", stdin=whole, status=1))
                self.assertIn("cut off", kef("stats", self.file("b.npy", whole[:-1]), status=1))
        halves = [struct.pack("<H", bits) for bits in range(0x7C00)]
        self.assertEqual([float(stats(self.file("half.npy", npy(code, "(31744,)", False, b"".join(data))))[0]["sum"]) for code, data in [
            ("<f2", halves), (">f2", [half[::-1] for half in halves])]], [sum(struct.unpack("<e", half)[0] for half in halves)] * 2)
        odd = stats(self.file("half.npy", npy("<f2", "(4,)", False, struct.pack("<eeee", -2, math.inf, math.nan, -0.5))))[0]
        self.assertEqual([odd[name] for name in ("count", "missing", "minimum", "maximum")], ["3", "1", "-2", "inf"])
        self.assertEqual(stats(self.file("one.npy", npy("|i1", "(3,)", False, bytes([1, 255, 3]))))[0]["sum"], "3")
        for data, said in [(npy("<c16", "(1,)", False, bytes(16)), "type <c16"), (npy("<f8", "(1, 1, 1)", False, bytes(8)), "3 dim"),
                           (npy("<f8", "(-1,)", False, b""), "wrong shape"), (npy("<f8", "(0, 3)", False, b""), "no data"),
                           (npy("<f8", f"({2**53 - 1}, 1000)", False, b""), "wrong shape"), (b"\x93NUMPY\x01\0\xff\xff{", "cut off")]:
            self.assertIn(said, kef("stats", self.file("bad.npy", data), status=1))

    def test_many_groups(self):
        """A group costs what its numbers cost."""
        data = self.file("groups.csv", "g,a,b,c,d\n" + "".join(f"g{i % 9000},{i},1,2,3\n" for i in range(27000)))
        with open(self.work / "out", "w+") as out:
            running = subprocess.Popen([KEF, "stats", data, "--by", "g", "--quantiles", "0.5", "--format", "csv"], stdout=out)
            _, status, used = os.wait4(running.pid, 0)
            running.returncode = 0
            out.seek(0)
            rows = list(csv.DictReader(out))
        self.assertEqual((status, len(rows)), (0, 36000))
        self.assertEqual([(r["count"], r["mean"], r["q0.5"]) for r in rows if (r["g"], r["column"]) == ("g17", "a")], [("3", "9017", "9017")])
        self.assertLess(used.ru_maxrss, 300 << 10)

    def test_picture(self):
        out = self.work / "out.svg"
        text = "group,\"speed <km/s>\"\n" + "".join(f"g{i % 3},{i % 97 / 10}\n" for i in range(9700))
        stats("--by", "group", "--plot", out, "-", stdin=text)
        svg = xml.etree.ElementTree.parse(out).getroot()
        words = [e.text for e in svg.iter("{http://www.w3.org/2000/svg}text")]
        for word in ["speed <km/s>: 9700 values", "speed <km/s>", "g0", "g2", "0", "2", "10"]:
            self.assertIn(word, words)
        # 49 bins of width 0.2, each of two of the values but the last, as high as their counts: 200 and 100.
        boxes = [e for e in svg.iter("{http://www.w3.org/2000/svg}rect") if e.get("fill") == "#a8c0e0"]
        bars = [float(e.get("height")) for e in boxes[:-3]]
        self.assertEqual(len(bars), 20)
        self.assertAlmostEqual(sum(bars) / max(bars), 97 / 5, delta=0.01)
        # Bins grow with the range, to both sides: 20 of width 50 with 250 values each, and 5000 more from 0 to 1.
        stats("--plot", out, "-", stdin="".join(f"{i % 1000 / 1000}\n" for i in range(5000))
              + "".join(f"{i / 5 - 500}\n" for i in range(5000)))
        boxes = [e for e in xml.etree.ElementTree.parse(out).getroot().iter("{http://www.w3.org/2000/svg}rect") if e.get("fill") == "#a8c0e0"]
        bars = [float(e.get("height")) for e in sorted(boxes[:-1], key=lambda e: float(e.get("x")))]
        self.assertEqual((len(bars), bars.index(max(bars))), (20, 10))
        for bar in bars[:10] + bars[11:]:
            self.assertAlmostEqual(bar / max(bars), 250 / 5250, delta=1e-3)
        for odd in "1\n", "1e308\n-1e308\n", "1e-320\n0\n", "inf\n1\n", "NA\nNA\n", "7\n7\n7\n", "a\xff\n1e17\n100000000000000002e0\n":
            stats("--plot", out, "-", stdin=odd.encode("latin-1"))
            self.assertNotIn("nan", out.read_text())
        self.assertEqual(self.left(), ["out.svg"])


class Random(InDirectory):
    def numbers(self, *words):
        return [float(line) for line in kef("random", *words).split()]

    def test_words_are_those_of_the_twister(self):
        source = random.Random(2024)  # the same initialisation by a key
        self.assertEqual(self.numbers("words", "-n", 40000, "--seed", 2024), [source.getrandbits(32) for _ in range(40000)])

    def test_every_law_has_its_mean(self):
        means = {"uniform 2 5": 3.5, "gaussian 1 2": 1, "lognormal 0 0.5": math.exp(0.125), "exponential 1 2": 3,
                 "laplace 1 2": 1, "weibull 2": math.gamma(1.5), "rayleigh": math.gamma(1.5), "gumbel": -0.5772156649,
                 "gamma 2.5 beta=2": 5, "beta 2 3": 0.4, "integer -5 6": 0, "bernoulli 0.3": 0.3, "geometric 0.25": 3,
                 "binomial 10 0.3": 3, "hypergeometric 50 10 20": 4, "poisson 3.5": 3.5, "poisson-means 1,2,6": 3,
                 "negbinomial 3 0.5": 3, "bits32": 2**31, "bits64": 2**63, "words": 2**31, "cauchy": None, "vectors 0,3 1,0.5,1": 1.5}
        laws = re.findall(r"^  (\S+)", kef("random", "--list").split("Generators")[0], re.M)
        self.assertEqual(sorted(laws), sorted(call.split()[0] for call in means))
        for call, mean in means.items():
            text = kef("random", *call.split(), "-n", 30000)
            numbers = [float(x) for x in text.replace(",", "\n").split()]
            width = 2 if "vectors" in call else 1
            self.assertEqual(len(numbers), 30000 * width, call)
            if mean is not None:
                self.assertLess(abs(statistics.fmean(numbers) - mean), 6 * statistics.stdev(numbers) / 30000**0.5, call)
            # The first ones do not depend on the count, nor bytes on the format.
            self.assertEqual(kef("random", *call.split(), "-n", 20001), "".join(text.splitlines(True)[:20001]), call)
            if "bits64" not in call:
                raw = subprocess.run([KEF, "random", *call.split(), "-n", "30000", "--format", "f64"], stdout=subprocess.PIPE).stdout
                self.assertEqual(list(struct.unpack(f"={30000 * width}d", raw)), numbers)

    def test_methods_generators_and_skips(self):
        listed = kef("random", "--list")
        for generator in [line.split()[0] for line in listed.split("Generators:\n")[1].splitlines()] + ["mt2203:6023", "wh:272"]:
            numbers = self.numbers("uniform", "-n", 20000, "--generator", generator)
            self.assertAlmostEqual(statistics.fmean(numbers), 0.5, delta=0.02, msg=generator)
            if "cannot skip" not in next(line for line in listed.splitlines() if line.split()[:1] == [generator.split(":")[0]]):
                self.assertEqual(self.numbers("uniform", "-n", 10, "--generator", generator, "--skip", 9999), numbers[9999:10009])
        self.assertNotEqual(self.numbers("words", "--generator", "mt2203:1"), self.numbers("words", "--generator", "mt2203:2"))
        self.assertIn("r250 cannot skip", kef("random", "uniform", "--generator", "r250", "--skip", 1, status=2))
        for method in "inversion", "box-muller", "pairs":
            numbers = self.numbers("gaussian", "-n", 50000, "--method", method)
            self.assertAlmostEqual(statistics.stdev(numbers), 1, delta=0.02)
        u = self.numbers("uniform", "-n", 2, "--seed", "1,2,3")
        self.assertAlmostEqual(self.numbers("gaussian", "--seed", "1,2,3", "--method", "box-muller")[0],
                               math.sqrt(-2 * math.log(u[0])) * math.sin(2 * math.pi * u[1]), delta=1e-6)
        # Coordinates of Sobol's points, by their binary digits.
        self.assertEqual(self.numbers("uniform", "--generator", "sobol", "--seed", 2, "-n", 4)[:4], [0.5, 0.5, 0.75, 0.25])

    def test_refused_by_name(self):
        for call, said in [("gamma", "alpha is not given"), ("gamma 0", "alpha = 0: a finite number above 0"), ("gamma x", "not a number"),
                           ("uniform 1 1", "a is not below b"), ("binomial 2.5 1", "trials = 2.5"), ("poisson -1", "lambda = -1"),
                           ("bernoulli p=1.5", "p = 1.5"), ("geometric 0", "p = 0"), ("gaussian sd=1", "no parameter sd"),
                           ("gaussian 1 2 3", "takes 2"), ("gaussian 1 mean=2", "mean is given twice"), ("hypergeometric 5 6 1", "sample"),
                           ("vectors 0,1 1,2", "3 numbers are wanted"), ("integer 0 1e10", "b = 1e10"), ("cauchy inf", "a = inf"),
                           ("none", "no law none"), ("uniform -n 1.5", "-n: not a count"), ("uniform -n -1", "-n: not a count"),
                           ("uniform --generator mt", "no generator mt"), ("uniform --generator wh:273", "0 to 272"),
                           ("uniform --generator sobol --seed 41", "dimensions 1 to 40"), ("uniform --generator sobol --seed 0", "--seed"),
                           ("uniform --generator niederr --seed 319", "1 to 318"), ("uniform --seed 1e10", "--seed"), ("gaussian --method x", "inversion, box-muller, pairs"),
                           ("uniform --format f32", "--format"), ("bits64 --format f64", "64 bits"), ("", "a law is wanted")]:
            self.assertIn(said, kef("random", *call.split(), status=2))
        self.assertIn("random bits", kef("random", "bits32", "--generator", "mrg32k3a", status=1))


class Spline(InDirectory):
    def test_cubic_comes_back(self):
        points = "t,p,q\n" + "".join(f"{x},{x**3 - 2 * x},{2 * x * x}\n" for x in (0, 0.5, 1, 2, 3.5, 4))
        rows = table(kef("spline", "-", "--at", "0.25,3,-1", stdin=points))
        for row in rows:
            t = float(row["t"])
            self.assertAlmostEqual(float(row["p"]), t**3 - 2 * t, delta=1e-12)
            self.assertAlmostEqual(float(row["q"]), 2 * t * t, delta=1e-12)
        rows = table(kef("spline", "-", "--grid", 9, "--derivative", 2, "--columns", "t,p", stdin=points))
        self.assertEqual([float(r["t"]) for r in rows], [k / 2 for k in range(9)])
        for row in rows:
            self.assertAlmostEqual(float(row["d2 p"]), 6 * float(row["t"]), delta=1e-11)
        row = table(kef("spline", "-", "--integrate", -1, 4, stdin=points))[0]
        self.assertAlmostEqual(float(row["integral of p"]), 4**4 / 4 - 16 - (1 / 4 - 1), delta=1e-11)
        self.assertEqual(kef("spline", "-", "--kind", "linear", "--at", "0.75", "--columns", "t,q", stdin=points), "t,q\n0.75,1.25\n")
        for kind in "natural", "akima", "bessel", "quadratic":
            out = self.work / f"{kind}.svg"
            kef("spline", "-", "--kind", kind, "--plot", out, "--at", 2, stdin=points)
            self.assertEqual(len(list(xml.etree.ElementTree.parse(out).getroot().iter("{http://www.w3.org/2000/svg}circle"))), 12)
        self.assertEqual(len(kef("spline", "-", "--grid", 10000, "--columns", "t,p", stdin=points).splitlines()), 10001)

    def test_periodic(self):
        """Slopes by hand, 2, -1, -1, from s_0 + 4 s_1 + s_2 = 3 (y_2 - y_0); it repeats itself on both sides."""
        points = "t,p\n0,0\n1,1\n2,-1\n3,0\n"
        at = [float(r["p"]) for r in table(kef("spline", "-", "--kind", "periodic", "--at", "0.5,3.5,-2.5,3,0,-3,300.5", stdin=points))]
        middle = 0.5 + (2 - -1) / 8
        for value, wanted in zip(at, [middle, middle, middle, 0, 0, 0, middle]):
            self.assertAlmostEqual(value, wanted, delta=1e-13)
        slopes = [float(r["d1 p"]) for r in table(kef("spline", "-", "--kind", "periodic", "--grid", 4, "--derivative", 1, stdin=points))]
        for slope, wanted in zip(slopes, [2, -1, -1, 2]):
            self.assertAlmostEqual(slope, wanted, delta=1e-13)

        def integral(a, b):
            return float(table(kef("spline", "-", "--kind", "periodic", "--integrate", a, b, stdin=points))[0]["integral of p"])
        for a, b in (-1, 0), (2, 7.5), (5, -4), (3, 0):
            self.assertAlmostEqual(integral(a, b), integral(0, b % 3) - integral(0, a % 3), delta=1e-13)
        self.assertIn("column p: it begins with 0 and ends with 2", kef("spline", "-", "--kind", "periodic", "--at", 1,
                                                                        stdin="t,p\n0,0\n1,1\n2,2\n", status=1))

    def test_refused(self):
        for text, said in [("x,y\n-1e308,0\n0,1\n1e308,1\n1.7e308,3\n", "standard input: the numbers are so large, or x so close together, that the spline overflows"), ("x,y\n1,2\n1,3\n", ":3: column x: 1 is not above"), ("x,y\n1,2\n2,\n3,4\n", ":3: column y: a finite"),
                           ("x,y\n1,2\n2,3\n", "2 points; not-a-knot needs 3"), ("x\n1\n", "two columns")]:
            self.assertIn(said, kef("spline", "-", "--at", "1", stdin=text, status=1))
        for words, said in [([], "what is wanted"), (["--at", "x"], "--at: not a number"), (["--integrate", "1"], "needs A B"),
                            (["--at", "1", "--kind", "k"], "--kind"), (["--grid", "1"], "--grid")]:
            self.assertIn(said, kef("spline", "-", *words, stdin="x,y\n1,2\n2,3\n4,5\n", status=2))


class Math(InDirectory):
    def test_columns(self):
        numbers = [k / 1000 for k in range(1, 40000, 7)]
        text = "x,y\n" + "".join(f"{x!r},{x / 2!r}\n" for x in numbers)
        for row, x in zip(table(kef("math", "ln", "-", stdin=text)), numbers):
            self.assertTrue(math.isclose(float(row["Ln(x)"]), math.log(x), rel_tol=3e-16, abs_tol=1e-300))
            self.assertTrue(math.isclose(float(row["Ln(y)"]), math.log(x / 2), rel_tol=3e-16, abs_tol=1e-300))
        for row, x in zip(table(kef("math", "Pow", "-", stdin=text)), numbers):
            self.assertTrue(math.isclose(float(row["Pow(x,y)"]), x ** (x / 2), rel_tol=3e-16))
        for row, x in zip(table(kef("math", "SinCos", "--columns", "y", "-", stdin=text)), numbers):
            self.assertTrue(math.isclose(float(row["SinCos.2(y)"]), math.cos(x / 2), abs_tol=2e-16))
        exact, fast = (table(kef("math", "exp", "--accuracy", a, "-", stdin=text)) for a in ("HA", "EP"))
        errors = [abs(float(f["Exp(x)"]) / float(e["Exp(x)"]) - 1) for e, f in zip(exact, fast)]
        self.assertTrue(0 < max(errors) < 2**-26)
        self.assertEqual(kef("math", "powx", "--scalars", "0.5", "-", stdin="x\n4\n9\n"), "Powx(x)\n2\n3\n")
        self.assertEqual(kef("math", "LinearFrac", "--scalars", "2,1,1,0", "-", stdin="3,2\n"), '"LinearFrac(1,2)"\n3.5\n')

    def test_errors(self):
        text = "x\n" + "1\n" * 100000 + "-1\n0\n"
        said = subprocess.run([KEF, "math", "ln", "-"], input=text.encode(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.assertEqual(said.returncode, 0)
        self.assertIn(b"standard input:100002: column x: Ln: ", said.stderr)
        self.assertIn(b"1 more", said.stderr)
        for words in ["ln"], ["ln", "--strict"]:
            said = subprocess.run([KEF, "math", *words, "-"], input=b"x\n1\n", stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            self.assertEqual((said.returncode, said.stderr), (0, b""))
        out = self.file("out.csv", "before")
        self.assertIn(":100002", kef("math", "ln", "-", "--strict", "-o", out, stdin=text, status=1))
        self.assertEqual((out.read_text(), self.left()), ("before", ["out.csv"]))
        for words, said in [(["sinn", "-"], "no function sinn"), (["sin"], "a function and a file"), (["pow", "-"], "two columns"),
                            (["powx", "-"], "takes 1"), (["sin", "-", "--accuracy", "X"], "--accuracy")]:
            self.assertIn(said, kef("math", *words, stdin="x\n1\n", status=2))


class Ends(InDirectory):
    def test_full_disk(self):
        points = "x,y\n1,2\n2,3\n4,5\n"
        for words in ["random gaussian -n 10", "stats -", "math exp -", "spline - --grid 3", "info", "random --list", "--help", "bench Exp"]:
            with open("/dev/full", "w") as full:
                done = subprocess.run([KEF, *words.split()], input=points.encode(), stdout=full, stderr=subprocess.PIPE)
            self.assertEqual((done.returncode, b"No space left" in done.stderr), (1, True), words)
        self.assertIn("No space left", kef("random", "gaussian", "-o", "/dev/full", status=1))

        def limited():
            resource.setrlimit(resource.RLIMIT_FSIZE, (50000, 50000))
        out = self.file("out", "before")
        said = kef("random", "gaussian", "-n", "1e5", "-o", out, status=1, preexec_fn=limited)
        self.assertIn(f"{out}: File too large", said)
        self.assertEqual((out.read_text(), self.left()), ("before", ["out"]))
        kef("random", "gaussian", "-n", "100000", "-o", out)
        self.assertEqual((len(out.read_text().split()), self.left()), (100000, ["out"]))
        self.assertIn("No such file", kef("random", "gaussian", "-o", self.work / "none/out", status=1))
        self.assertIn("No such file", kef("stats", "-", "--plot", self.work / "none/out", stdin=points, status=1))

    def test_links(self):
        """A file goes where a link points to, and the link stays."""
        (self.work / "sub").mkdir()
        places = {"link": "sub/there", "ahead": "sub/new", "twice": "ahead", "absolute": self.work / "sub/other",
                  "lost": "none/out", "loop": "loop"}
        for name, place in places.items():
            (self.work / name).symlink_to(place)
        (self.work / "sub/there").write_text("before")
        for name in "link", "ahead", "twice", "absolute":
            kef("random", "gaussian", "-n", "3", "-o", name, cwd=self.work)
            self.assertEqual(len((self.work / name).read_text().split()), 3, name)
        self.assertIn("none/out: No such file", kef("random", "gaussian", "-o", self.work / "lost", status=1))
        self.assertIn("loop: Too many levels", kef("random", "gaussian", "-o", self.work / "loop", status=1))
        for name, place in places.items():
            self.assertEqual(os.readlink(self.work / name), str(place))
        self.assertEqual(sorted(path.name for path in (self.work / "sub").iterdir()), ["new", "other", "there"])

    def test_closed_descriptors(self):
        """What is opened never becomes a standard stream."""
        points = self.file("points.csv", "x,y\n1,-2\n2,3\n4,5\n")
        for closed in "<&-", ">&-", "2>&-", "<&- >&-", "<&- >&- 2>&-":
            for words in "random gaussian -n 3 -o out", "math ln points.csv -o out", "spline points.csv --grid 3 -o out":
                done = subprocess.run(["sh", "-c", f'"$0" {words} {closed}', KEF], cwd=self.work, stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, len((self.work / "out").read_text().splitlines())), (0, 3 + ("points" in words)), (words, closed))
                (self.work / "out").unlink()
        for words, closed in ("stats points.csv", ">&-"), ("stats -", "<&-"):
            done = subprocess.run(["sh", "-c", f'"$0" {words} {closed}', KEF], cwd=self.work, stderr=subprocess.PIPE)
            self.assertEqual((done.returncode, b"Bad file descriptor" in done.stderr), (1, True))

    def test_closed_pipe(self):
        long = self.file("long.csv", "x,y\n" + "".join(f"{i},1\n" for i in range(300000)))
        for words in [["random", "gaussian", "-n", "1e12"], ["random", "uniform", "-n", "1e12", "--format", "f64"], ["math", "exp", long],
                      ["spline", long, "--grid", "1e6"]]:
            running = subprocess.Popen([KEF, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            running.stdout.read(100)
            running.stdout.close()
            self.assertEqual((running.wait(20), running.stderr.read()), (-signal.SIGPIPE, b""), words)
            running.stderr.close()

    def interrupt(self, words, ready, number=signal.SIGINT, **options):
        running = subprocess.Popen([KEF, *map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        ready(running)
        running.send_signal(number)
        out, said = running.communicate(timeout=20)
        self.assertEqual(running.returncode, 128 + number, said)
        return out.decode(), said.decode()

    def test_signals(self):
        def fed(running):
            running.stdin.write(b"x\n" + b"1\n3\n" * 300000)
            running.stdin.flush()
            time.sleep(0.5)  # it has read all that, and waits
        picture = self.work / "p.svg"
        out, said = self.interrupt(["stats", "-", "--format", "csv", "--plot", picture], fed, stdin=subprocess.PIPE)
        self.assertIn("partial: stopped by a signal after", out.splitlines()[0])
        self.assertIn("partial", said)
        row = table(out.split("\n", 1)[1])[0]
        self.assertGreater(int(row["count"]), 100000)
        self.assertAlmostEqual(float(row["mean"]), 2, delta=1e-4)
        # A record that is not complete does not count; nothing at all is no data.
        def fed_little(running):
            running.stdin.write(b"x,y\n1,2\n3,4\n5,6")
            running.stdin.flush()
            time.sleep(0.3)
        out, _ = self.interrupt(["stats", "-", "--format", "csv"], fed_little, stdin=subprocess.PIPE)
        self.assertEqual([row["sum"] for row in table(out.split("\n", 1)[1])], ["4", "6"])
        out, said = self.interrupt(["stats", "-"], lambda running: time.sleep(0.3), stdin=subprocess.PIPE)
        self.assertEqual((out, "stopped by a signal" in said), ("", True))
        results = self.work / "results"
        for words in [["random", "gaussian", "-n", "1e12", "-o", results], ["random", "gaussian", "-n", "1e12", "--format", "raw", "-o", results]]:
            for number in signal.SIGINT, signal.SIGTERM:
                _, said = self.interrupt(words, lambda running: time.sleep(0.2), number)
                self.assertIn("no file is left", said)
        # A signal that comes twice, as from a wrapper that passes it on, is one.
        def fed_and_sent(running):
            fed(running)
            running.send_signal(signal.SIGINT)
            time.sleep(0.02)  # the robust estimates take longer
        _, said = self.interrupt(["stats", "-", "--robust"], fed_and_sent, stdin=subprocess.PIPE)
        self.assertIn("partial", said)
        self.assertEqual(self.left(), [])
        out, said = self.interrupt(["random", "gaussian", "-n", "1e12"], lambda running: running.stdout.read(1000))
        self.assertIn("what was written is partial", said)

    def test_progress_on_a_terminal(self):
        ours, its = pty.openpty()
        running = subprocess.Popen([KEF, "random", "gaussian", "-n", "1e10", "-o", "/dev/null"], stderr=its, stdout=subprocess.DEVNULL)
        os.close(its)
        seen = b""
        while b" left" not in seen:
            seen += os.read(ours, 1000)
        running.send_signal(signal.SIGINT)
        self.assertEqual(running.wait(20), 130)
        os.close(ours)
        minutes = re.search(r"gaussian \[#*-*\] +\d+ %, (\d+):\d\d left", seen.decode())
        self.assertGreater(int(minutes[1]), 0, "ten billion lines take longer on any machine")


class Words(unittest.TestCase):
    def test_manual_and_completion_know_every_option(self):
        page = (SOURCE / "command/kef.1").read_text()
        for command in kef("--words").split():
            self.assertIn(f".Cm {command}\n", page)
            self.assertIn(f"usage: kef {command}", kef(command, "--help"))
            for option in kef("--words", command).split():
                if option.startswith("-"):
                    self.assertIn("Fl " + option[1:] + " ", page.replace("\n", " "))
        if subprocess.run(["which", "mandoc"], stdout=subprocess.DEVNULL).returncode == 0:
            lint = subprocess.run(["mandoc", "-Tlint", "-W", "warning", SOURCE / "command/kef.1"], stdout=subprocess.PIPE)
            self.assertEqual(lint.stdout, b"")
        script = f"""PATH={KEF.parent}:$PATH; . {SOURCE}/command/kef.bash
            ask() {{ COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _kef; echo "${{COMPREPLY[@]}}"; }}
            ask kef s; ask kef random ga; ask kef stats --q"""
        done = subprocess.run(["bash", "-c", script], stdout=subprocess.PIPE, cwd="/proc/self/fdinfo", text=True)
        self.assertEqual(done.stdout, "stats spline\ngaussian gamma\n--quantiles\n")

    def test_whole_command(self):
        self.assertIn("usage: kef COMMAND", kef("--help"))
        self.assertRegex(kef("--version"), r"^kef \d+\.\d+\.\d+\n$")
        self.assertIn("no command x", kef("x", status=2))
        self.assertIn("usage", kef(status=2))
        self.assertRegex(kef("info"), r"member +(generic|x86-64-v\d)\n")
        self.assertRegex(kef("bench", "--elements", 100, "Exp"), r"Exp( +[\d.e+-]+){5}\n")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
