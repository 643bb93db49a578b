"""The example over processes: the same for any number of workers."""

import pathlib
import subprocess
import sys

import numpy as np
import pytest

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples/parallel/processes.py"


def run(*options):
    """The line of the valuation, and the numbers of the others by name."""
    done = subprocess.run([sys.executable, EXAMPLE, "--draws", "64000", *options], check=True, capture_output=True,
                          text=True, timeout=60)
    value, *lines = done.stdout.splitlines()
    return value, {name: np.array(numbers, float) for name, *numbers in map(str.split, lines)}


@pytest.fixture(scope="module")
def one_worker():
    return run("--workers", "1")


@pytest.mark.parametrize("options", [("--workers", "2"), ("--workers", "4"), ("--workers", "2", "--dask")], ids=" ".join)
def test_any_number_of_workers(options, one_worker):
    if "--dask" in options:
        pytest.importorskip("dask")
    value, found = run(*options)
    assert value == one_worker[0]
    estimate, exact = float(value.split()[1].rstrip(",")), float(value.split()[-1])
    assert abs(estimate - exact) < 5 * float(value.split()[4].rstrip(","))
    for name in ("mean", "covariance", "kurtosis"):
        np.testing.assert_allclose(found[name], one_worker[1][name], rtol=1e-12, atol=1e-14)
    exact = -np.log1p(-np.repeat([0.01, 0.5, 0.99], 3))
    np.testing.assert_allclose(found["quantiles"], exact, rtol=0.15)
