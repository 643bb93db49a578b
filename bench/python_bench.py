#!/usr/bin/env python3
"""The Python package beside NumPy and SciPy, by turns in one run: ./run bench python [words] [--markdown]

Words choose the tables: functions, calls, random, statistics, splines, threads. Each figure is the best of
many runs of processor time, threads apart."""

import os
import sys
import threading
import time

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")

import numpy as np  # noqa: E402
import scipy.interpolate  # noqa: E402
import scipy.special  # noqa: E402

import kef  # noqa: E402
from kef import interpolate, random, stats  # noqa: E402

LARGE, SMALL = 10**6, 100
words = [word for word in sys.argv[1:] if not word.startswith("--")]
markdown = "--markdown" in sys.argv


def by_turns(calls, seconds=0.4):
    """Nanoseconds of each call, the best of short runs that take turns."""
    counts, best = [], [float("inf")] * len(calls)
    for call in calls:
        call()
        start = time.process_time()
        call()
        counts.append(max(1, int(2e-3 / max(time.process_time() - start, 1e-7))))
    end = time.monotonic() + seconds * len(calls)
    while True:
        for i, (call, count) in enumerate(zip(calls, counts)):
            start = time.process_time_ns()
            for _ in range(count):
                call()
            best[i] = min(best[i], (time.process_time_ns() - start) / count)
        if time.monotonic() > end:
            return best


def table(word, heads, rows):
    """Prints rows of cells as they are made, where the table is wanted."""
    if words and word not in words:
        return
    widths = [max(38, len(heads[0])), *[max(12, len(head)) for head in heads[1:]]]

    def line(cells):
        if markdown:
            print("| " + " | ".join(cells) + " |", flush=True)
        else:
            print("  ".join(cell.ljust(w) if i == 0 else cell.rjust(w)
                            for i, (cell, w) in enumerate(zip(cells, widths))), flush=True)
    print()
    line(heads)
    if markdown:
        print("|" + "---|" * len(heads))
    for row in rows:
        line(row)


RNG = np.random.default_rng(1)
UNIT, REAL, POSITIVE = (RNG.uniform(*ends, LARGE) for ends in ((-0.99, 0.99), (-10, 10), (0.01, 10)))
FUNCTIONS = [("exp", np.exp, (REAL,)), ("ln", np.log, (POSITIVE,)), ("sin", np.sin, (REAL,)),
             ("tan", np.tan, (REAL,)), ("asin", np.arcsin, (UNIT,)), ("tanh", np.tanh, (REAL,)),
             ("expm1", np.expm1, (REAL,)), ("cbrt", np.cbrt, (REAL,)), ("pow", np.power, (POSITIVE, REAL)),
             ("hypot", np.hypot, (POSITIVE, REAL)), ("add", np.add, (POSITIVE, REAL)), ("sqrt", np.sqrt, (POSITIVE,)),
             ("erf", scipy.special.erf, (REAL,)), ("cdfnorm", scipy.special.ndtr, (REAL,)),
             ("cdfnorminv", scipy.special.ndtri, (POSITIVE / 10.01,)), ("tgamma", scipy.special.gamma, (POSITIVE,)),
             ("lgamma", scipy.special.gammaln, (POSITIVE,)), ("exp", np.exp, (UNIT[::2] + 1j * REAL[::2],)),
             ("ln", np.log, (UNIT[::2] + 1j * REAL[::2],))]


def functions():
    for name, peer, arguments in FUNCTIONS:
        mine = getattr(kef, name)
        for dtype in ("d", "f") if arguments[0].dtype.kind == "f" else ("D",):
            given = [a.astype(dtype) for a in arguments]
            out = np.empty_like(given[0])
            n = len(out)
            ours = by_turns([*[lambda a=a: mine(*given, out=out, accuracy=a) for a in ("high", "low", "enhanced")],
                             lambda: peer(*given, out=out)], 0.15)
            yield [f"{name} {np.dtype(dtype).name}", *[f"{t / n:.2f}" for t in ours], f"{ours[-1] / ours[0]:.1f}"]


def calls():
    """What a call costs: of one element, that is, the call itself."""
    for name, peer, count in (("exp", np.exp, 1), ("sin", np.sin, 1), ("erf", scipy.special.erf, 1),
                              ("add", np.add, 2), ("pow", np.power, 2)):
        mine = getattr(kef, name)
        for n in (1, SMALL):
            given = [POSITIVE[:n].copy()] * count
            ours = by_turns([lambda: mine(*given), lambda: mine(*given, accuracy="low"), lambda: peer(*given)])
            yield [f"{name}, n = {n}", *[f"{t:.0f}" for t in ours], f"{ours[-1] / ours[0]:.2f}"]


def streams():
    own = [kind(1) for kind in (random.MT19937, random.SFMT19937, random.MRG32K3A)]
    all_ = [np.random.Generator(bits) for bits in (*own, np.random.MT19937(1), np.random.PCG64(1))]
    for what, sources, draw in (
            ("Generator.random", all_, lambda g: g.random(LARGE)),
            ("Generator.standard_normal", all_, lambda g: g.standard_normal(LARGE)),
            ("Generator.gamma, shape 2.5", all_, lambda g: g.gamma(2.5, size=LARGE)),
            ("Generator.poisson, mean 20", all_, lambda g: g.poisson(20, size=LARGE)),
            ("the library's uniform", own, lambda s: s.uniform(LARGE)),
            ("the library's normal", own, lambda s: s.normal(LARGE)),
            ("the library's normal, inversion", own, lambda s: s.normal(LARGE, method="inversion")),
            ("the library's gamma, shape 2.5", own, lambda s: s.gamma(LARGE, 2.5)),
            ("the library's poisson, mean 20", own, lambda s: s.poisson(LARGE, 20))):
        times = by_turns([lambda s=s: draw(s) for s in sources])
        yield [what, *[f"{t / LARGE:.2f}" for t in times], *[""] * (len(all_) - len(sources))]


def statistics():
    x, wide = POSITIVE, POSITIVE.reshape(-1, 10)

    def ours(estimates, x, **more):
        s = stats.Statistics(estimates, **more)
        s.update(x)
        return s.results()
    for what, mine, peer in (
            ("mean, variance", lambda: ours(["mean", "variance"], x), lambda: (x.mean(), x.var(ddof=1))),
            ("four moments", lambda: ours(["mean", "variance", "skewness", "kurtosis"], x),
             lambda: (x.mean(), x.var(), ((x - x.mean()) ** 3).mean(), ((x - x.mean()) ** 4).mean())),
            ("minimum, maximum", lambda: ours(["minimum", "maximum"], x), lambda: (x.min(), x.max())),
            ("covariance, 10 variables", lambda: ours("covariance", wide), lambda: np.cov(wide.T)),
            ("five quantiles", lambda: stats.quantiles(x, [0.05, 0.25, 0.5, 0.75, 0.95]),
             lambda: np.quantile(x, [0.05, 0.25, 0.5, 0.75, 0.95])),
            ("order statistics", lambda: stats.order_statistics(x), lambda: np.sort(x))):
        a, b = by_turns([mine, peer])
        yield [what, f"{a / LARGE:.2f}", f"{b / LARGE:.2f}", f"{b / a:.1f}"]


def splines():
    x = np.sort(RNG.uniform(0, 1, 1000))
    y, sites = np.sin(9 * x), RNG.uniform(x[0], x[-1], LARGE)
    mine, peer = interpolate.CubicSpline(x, y), scipy.interpolate.CubicSpline(x, y)
    ascending = np.sort(sites)
    limits = sites[:10000], sites[10000:20000]
    for what, n, ours, theirs in (
            ("CubicSpline, 1000 points", 1000, lambda: interpolate.CubicSpline(x, y),
             lambda: scipy.interpolate.CubicSpline(x, y)),
            ("Akima, 1000 points", 1000, lambda: interpolate.Akima1DInterpolator(x, y),
             lambda: scipy.interpolate.Akima1DInterpolator(x, y)),
            ("values, random sites", LARGE, lambda: mine(sites), lambda: peer(sites)),
            ("values, ascending sites", LARGE, lambda: mine(ascending), lambda: peer(ascending)),
            ("slopes, random sites", LARGE, lambda: mine(sites, 1), lambda: peer(sites, 1)),
            ("one integral", 1, lambda: mine.integrate(0.1, 0.9), lambda: peer.integrate(0.1, 0.9)),
            ("integrals, each of 10000", 10000, lambda: mine.integrate(*limits),
             lambda: [peer.integrate(a, b) for a, b in zip(*limits)])):
        a, b = by_turns([ours, theirs])
        yield [what, f"{a / n:.1f}", f"{b / n:.1f}", f"{b / a:.1f}"]


def threads():
    """Elements a second of one thread and of as many as there are processors: what both get of a busy
    machine shows in the first one."""
    cores = len(os.sched_getaffinity(0))
    for name, work in (("tgamma", lambda: kef.tgamma(POSITIVE)), ("normal", lambda: random.MRG32K3A(1).normal(LARGE))):
        rates = []
        for count in (1, cores, 1, cores):
            def repeat():
                for _ in range(5):
                    work()
            running = [threading.Thread(target=repeat) for _ in range(count)]
            start = time.monotonic()
            [t.start() for t in running]
            [t.join() for t in running]
            rates.append(5 * count * LARGE / (time.monotonic() - start) / 1e6)
        one, all_ = max(rates[::2]), max(rates[1::2])
        yield [name, f"{one:.0f}", f"{all_:.0f}", f"{all_ / one:.2f}"]


print(f"kef {kef.__version__} ({kef.member()}), NumPy {np.__version__}, SciPy {scipy.__version__}, "
      f"Python {sys.version.split()[0]}")
table("functions", ["ns an element, n = 10^6", "HA", "LA", "EP", "NumPy/SciPy", "times HA"], functions())
table("calls", ["ns a call", "HA", "LA", "NumPy/SciPy", "times HA"], calls())
table("random", ["ns a number, n = 10^6", "kef MT19937", "kef SFMT19937", "kef MRG32K3A", "NumPy MT19937",
                 "NumPy PCG64"], streams())
table("statistics", ["ns a number, n = 10^6", "kef", "NumPy", "times kef"], statistics())
table("splines", ["ns each", "kef", "SciPy", "times kef"], splines())
table("threads", ["million elements a second", "one thread", "a thread a core", "ratio"], threads())
