#!/usr/bin/env python3
"""A Monte Carlo valuation and statistics of one data set over processes, or by dask.

    examples/parallel/processes.py [--workers N] [--dask] [--draws N]

The valuation is the same number for any number of workers: the draws are cut into blocks, each block
has its own place in one sequence, and the blocks' sums are added in their order. The statistics are
merged from one part for each worker, and agree to rounding."""

import argparse
import math
import multiprocessing

import numpy as np

import kef
from kef import random, stats

BLOCKS = 64
SPOT, STRIKE, RATE, VOLATILITY, YEARS = 100.0, 105.0, 0.03, 0.2, 1.0
QUANTILES = [0.01, 0.5, 0.99]


def value_of_block(block, draws):
    """Sum and sum of squares of discounted payoffs. A normal number by inversion takes one number of the
    sequence, so block after block begins where the one before it ends."""
    stream = random.MRG32K3A(words=[2024]).skip(block * draws)
    end = SPOT * kef.exp((RATE - VOLATILITY**2 / 2) * YEARS
                        + VOLATILITY * math.sqrt(YEARS) * stream.normal(draws, method="inversion"))
    payoff = math.exp(-RATE * YEARS) * np.maximum(end - STRIKE, 0)
    return payoff.sum(), (payoff**2).sum()


def valuation(map_blocks, draws):
    """Value and standard error."""
    sums = map_blocks(value_of_block, [(block, draws // BLOCKS) for block in range(BLOCKS)])
    n = draws // BLOCKS * BLOCKS
    total, squares = (math.fsum(column) for column in zip(*sums))
    return total / n, math.sqrt((squares / n - (total / n) ** 2) / n)


def exact_value():
    """Black and Scholes."""
    d = (math.log(SPOT / STRIKE) + (RATE + VOLATILITY**2 / 2) * YEARS) / (VOLATILITY * math.sqrt(YEARS))

    def below(x):
        return math.erfc(-x / math.sqrt(2)) / 2
    return SPOT * below(d) - STRIKE * math.exp(-RATE * YEARS) * below(d - VOLATILITY * math.sqrt(YEARS))


def part_of(first, count):
    """Statistics of some rows of the data, which are drawn where they are needed: three variables."""
    stream = random.MRG32K3A(words=[7]).skip(3 * first)
    part = stats.Statistics(["mean", "covariance", "kurtosis"], quantiles=QUANTILES)
    part.update(stream.exponential((count, 3)))
    return part


def statistics(map_parts, rows, workers):
    ends = [rows * i // workers for i in range(workers + 1)]
    return stats.merged(map_parts(part_of, [(a, b - a) for a, b in zip(ends, ends[1:])]))


def by_processes(workers):
    def run(function, arguments):
        with multiprocessing.Pool(workers) as pool:
            return pool.starmap(function, arguments)
    return run


def by_dask(workers):
    import dask

    def run(function, arguments):
        with dask.config.set(scheduler="processes", num_workers=workers):
            return dask.compute(*[dask.delayed(function)(*each) for each in arguments])
    return run


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--draws", type=int, default=1_000_000)
    parser.add_argument("--dask", action="store_true", help="dask in place of multiprocessing")
    options = parser.parse_args()
    run = (by_dask if options.dask else by_processes)(options.workers)
    value, error = valuation(run, options.draws)
    print(f"value {value!r}, standard error {error:.2g}, exact {exact_value():.6f}")
    found = statistics(run, options.draws, options.workers)
    print("mean", *map(float, found.mean))
    print("covariance", *map(float, found.covariance.ravel()))
    print("kurtosis", *map(float, found.kurtosis))
    print("quantiles", *map(float, found.quantiles.ravel()))


if __name__ == "__main__":
    main()
