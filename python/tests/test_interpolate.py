"""Splines beside SciPy's and beside what they have to be."""

import pickle

import numpy as np
import pytest

from kef import interpolate

scipy = pytest.importorskip("scipy.interpolate")
RNG = np.random.default_rng(3)
X = np.sort(RNG.uniform(0, 10, 12))
Y = RNG.normal(size=(3, 12, 2))
SITES = np.linspace(X[0] - 1, X[-1] + 1, 57).reshape(3, 19)


def close(got, expected, tolerance=1e-13):
    got, expected = np.asarray(got), np.asarray(expected)
    assert got.shape == expected.shape
    np.testing.assert_allclose(got, expected, rtol=0, atol=tolerance * max(1, np.nanmax(np.abs(expected), initial=0)))


BOUNDARIES = ["not-a-knot", "natural", "clamped", ((1, 0.5), (2, 1.0)), ((2, -1.0), (1, 0.25)), "periodic"]


@pytest.mark.parametrize("bc", BOUNDARIES, ids=str)
@pytest.mark.parametrize("n", [2, 3, 4, 12])
def test_cubic_splines(bc, n):
    x, y = X[:n], Y[:, :n].copy()
    if bc == "periodic":
        y[:, -1] = y[:, 0]
        if n == 2:
            y[:] = 1
    for axis in (1, -2):
        mine = interpolate.CubicSpline(x, y, axis=axis, bc_type=bc)
        each = [[scipy.CubicSpline(x, y[i, :, j], bc_type=bc) for j in range(2)] for i in range(3)]
        sites = x[0] + np.linspace(-0.1, 1.1, 57).reshape(3, 19) * (x[-1] - x[0])

        def expected(f):
            made = np.array([[f(s) for s in row] for row in each])
            return np.moveaxis(made, 1, -1)
        for nu in range(5):
            close(mine(sites, nu), expected(lambda s: s(sites, nu)), 1e-11 * max(1, np.diff(x).min() ** -nu))
        close(mine.c, np.moveaxis(expected(lambda s: s.c), (1, 2), (0, 1)), 1e-11)
        close(mine.integrate(X[0], 7.5), expected(lambda s: s.integrate(X[0], 7.5)), 1e-12)
        again = pickle.loads(pickle.dumps(mine))
        np.testing.assert_array_equal(again(sites), mine(sites))


def test_other_splines():
    sites = SITES
    y, slopes = Y[0].T.copy(), Y[1].T.copy()  # (2, 12)
    close(interpolate.CubicHermiteSpline(X, y, slopes, axis=1)(sites),
          scipy.CubicHermiteSpline(X, y, slopes, axis=1)(sites))
    close(interpolate.CubicHermiteSpline(X[:2], y[:, :2], slopes[:, :2], axis=1)(sites),
          scipy.CubicHermiteSpline(X[:2], y[:, :2], slopes[:, :2], axis=1)(sites), 1e-11)
    close(interpolate.Akima1DInterpolator(X, y[0])(sites), scipy.Akima1DInterpolator(X, y[0])(sites))
    assert np.isnan(interpolate.Akima1DInterpolator(X, y[0])(sites)).any()
    assert not np.isnan(interpolate.Akima1DInterpolator(X, y[0])(sites, extrapolate=True)).any()
    close(interpolate.LinearSpline(X, y[0], extrapolate=False)(sites),
          np.where((sites < X[0]) | (sites > X[-1]), np.nan, np.interp(sites, X, y[0])))
    for kind in (interpolate.QuadraticSpline, interpolate.BesselSpline):
        close(kind(X, X**2)(sites), sites**2, 1e-12)


@pytest.mark.parametrize("k", [1, 2, 3, 4])
def test_piecewise_polynomials(k):
    c = RNG.normal(size=(k, 11, 2))
    for how in (None, False, "periodic"):
        mine, theirs = interpolate.PPoly(c, X, how), scipy.PPoly(c, X, how)
        np.testing.assert_array_equal(mine.c, c)
        inside = SITES[1]  # breakpoints belong to the piece on their right
        for sites in (inside, X[:-1], SITES if how == "periodic" else inside):
            for nu in range(k + 1):
                close(mine(sites, nu), theirs(sites, nu), 1e-11)
        for a, b in ((X[2], X[9]), (X[8], X[1]), (3.3, 3.4), (X[0], X[-1]), (X[0] - 2, X[-1] + 30)):
            if how or X[0] <= a <= b <= X[-1]:
                close(mine.integrate(a, b), theirs.integrate(a, b), 1e-10)
        close(mine.derivative()(inside), theirs.derivative()(inside), 1e-12)
        close(mine.derivative(k + 1)(inside), 0 * theirs(inside))
        if k < 4:
            close(mine.antiderivative()(inside), theirs.antiderivative()(inside), 1e-11)
    a, b = np.array([X[1], 5.0]), np.array([[6.0], [2.0]])
    close(mine.integrate(a, b)[1, 0], theirs.integrate(X[1], 2.0), 1e-11)
    assert mine.integrate(a, b).shape == (2, 2, 2)


def test_search_single_precision_and_scalars():
    spline = interpolate.CubicSpline(X, Y[0, :, 0])
    np.testing.assert_array_equal(spline.search(SITES), np.where(
        SITES == X[-1], 10, np.searchsorted(X, SITES, "right") - 1))
    single = interpolate.CubicSpline(X.astype("f"), Y[0, :, 0].astype("f"))
    assert single(1.0).dtype == np.float32 and isinstance(spline(1.0), np.float64)
    close(single(SITES), spline(SITES), 1e-4)
    assert spline([]).shape == (0,) and np.isnan(spline(np.nan)) and np.isnan(spline([1.0, np.nan], nu=9)[1])
    assert interpolate.CubicSpline(X, np.zeros((12, 0)))(SITES).shape == (3, 19, 0)
    np.testing.assert_array_equal(spline(SITES[:, ::2]), spline(SITES)[:, ::2])
    np.testing.assert_array_equal(spline(SITES.astype(">f8")), spline(SITES))


def test_numbers_at_odd_addresses(unaligned):
    y = Y[0, :, 0]
    spline, other = interpolate.CubicSpline(X, y), interpolate.CubicSpline(unaligned(X), unaligned(y))
    for call in (lambda s, x: s(x), lambda s, x: s.integrate(x, x[::-1]), lambda s, x: s.search(x)):
        np.testing.assert_array_equal(call(other, unaligned(SITES)), call(spline, SITES))
    close(interpolate.PPoly(unaligned(spline.c), unaligned(X))(SITES), spline(SITES))


def test_a_damaged_state_is_refused():
    spline = interpolate.CubicSpline(X, Y[0])
    spline.note = "kept"
    state, other = spline.__getstate__(), interpolate.PPoly(np.ones((2, 1)), [0.0, 1.0])
    x, rows = state["_x"], state["_rows"]
    for wrong in ({"_x": x[:-1]}, {"_x": x[::-1]}, {"_x": 3}, {"_x": np.full(12, np.nan)}, {"_rows": rows[:, :-1]}, {"_rows": rows[:-1]},
                  {"_rows": rows[0]}, {"_rows": rows.astype(object)}, {"_rows": np.repeat(rows, 2, 2)}, {"_rows": None},
                  {"_trailing": (-1, -rows.shape[0])}, {"_trailing": 3}, {"axis": 9}, {"extrapolate": "no"}, {"_rows": rows[..., :0]}):
        with pytest.raises((ValueError, TypeError), match="state|x: |x, y: |axis|extrapolate"):
            other.__setstate__(state | wrong)
    other.__setstate__({k: v for k, v in state.items() if k in ("_x", "_rows", "_trailing", "axis", "extrapolate", "note")}
                       | {"_rows": rows.astype(">f8")[:, :, ::1], "_order": 12, "_letter": "s"})
    np.testing.assert_array_equal(other(SITES), spline(SITES))
    assert other.note == "kept"


def test_breakpoints_are_the_splines_own():
    x = X.copy()
    made = interpolate.CubicSpline(x, Y[0, :, 0]), interpolate.PPoly(np.ones((2, 11)), x)
    before = [spline(X + 0.01) for spline in made]
    x[:] = 0
    for spline, values in zip(made, before):
        np.testing.assert_array_equal(spline(X + 0.01), values)


def test_bad_arguments_are_named():
    y = Y[0, :, 0]
    spline = interpolate.CubicSpline(X, y)
    for call, name in ((lambda: interpolate.CubicSpline(X[::-1], y), "x"),
                       (lambda: interpolate.CubicSpline(X, y[:-1]), "y"),
                       (lambda: interpolate.CubicSpline([1.0], [1.0]), "x"),
                       (lambda: interpolate.CubicSpline(X, np.full(12, np.nan)), "y"),
                       (lambda: interpolate.CubicSpline(np.append(X[:-1], np.inf), y), "x"),
                       (lambda: interpolate.CubicSpline(X, y, axis=1), "axis"),
                       (lambda: interpolate.CubicSpline(X, y, bc_type="loose"), "bc_type"),
                       (lambda: interpolate.CubicSpline(X, y, bc_type=((3, 0.0), (1, 0.0))), "bc_type"),
                       (lambda: interpolate.CubicSpline(X, y, bc_type="periodic"), "periodic"),
                       (lambda: interpolate.CubicSpline([], [], bc_type="periodic"), "x"),
                       (lambda: interpolate.CubicSpline(X, np.ma.array(y, mask=y > y[0])), "y: elements are masked"),
                       (lambda: spline(np.ma.array(X, mask=X > X[0])), "x: elements are masked"),
                       (lambda: interpolate.CubicSpline(X, y, bc_type=((1, np.nan), (2, 0.0))), "bc_type"),
                       (lambda: spline(1.0, extrapolate="no"), "extrapolate"),
                       (lambda: spline.integrate(0, 1, "no"), "extrapolate"),
                       (lambda: interpolate.CubicSpline(X, y, extrapolate=[True]), "extrapolate"),
                       (lambda: interpolate.CubicSpline(X, y + 0j), "dtype"),
                       (lambda: interpolate.CubicSpline(X, y, extrapolate="no"), "extrapolate"),
                       (lambda: interpolate.CubicHermiteSpline(X, y, y[1:]), "dydx"),
                       (lambda: interpolate.PPoly(np.zeros((5, 11)), X), "c"),
                       (lambda: interpolate.PPoly(np.zeros((4, 12)), X), "c"),
                       (lambda: spline(1j), "x"), (lambda: spline("a"), "x"), (lambda: spline(1.0, nu=-1), "nu"),
                       (lambda: spline(1.0, nu=1.5), "nu: 1.5"),
                       (lambda: spline.antiderivative(), "nu"), (lambda: spline.integrate(0, "b"), "b")):
        with pytest.raises((ValueError, TypeError), match=name):
            call()
