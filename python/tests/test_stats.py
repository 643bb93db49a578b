"""Statistics beside NumPy's, in chunks, merged and pickled."""

import pickle
import threading

import numpy as np
import pytest

from kef import stats

RNG = np.random.default_rng(4)
X = RNG.gamma(2.0, size=(1200, 3)) @ RNG.normal(size=(3, 3)) + [0, 10, 100]
W = RNG.uniform(0.5, 2, 1200)


def expected(x, w=None):
    """All estimates by their definitions."""
    w = np.ones(len(x)) if w is None else w
    total, d = w.sum(), x - (w @ x) / w.sum()
    norm = total - (w**2).sum() / total
    m = {k: w @ d**k for k in (2, 3, 4)}
    c = d.T @ (w[:, None] * d)
    s = np.sqrt(np.diag(c))
    found = {"mean": w @ x / total, "sum": w @ x, "variance": m[2] / norm, "covariance": c / norm,
             "correlation": c / np.outer(s, s), "cross_product": c, "minimum": x.min(0), "maximum": x.max(0),
             "skewness": m[3] / total / (m[2] / total) ** 1.5, "kurtosis": m[4] / total / (m[2] / total) ** 2 - 3,
             "variation": np.sqrt(m[2] / norm) / (w @ x / total)}
    for k in (2, 3, 4):
        found |= {f"raw_moment_{k}": w @ x**k / total, f"raw_sum_{k}": w @ x**k, f"central_sum_{k}": m[k],
                  f"central_moment_{k}": m[k] / norm}
    return found


def close(got, wanted, tolerance=1e-10):
    assert np.shape(got) == np.shape(wanted)
    np.testing.assert_allclose(got, wanted, rtol=tolerance, atol=tolerance * np.abs(wanted).max())


@pytest.mark.parametrize("weighted", [False, True])
@pytest.mark.parametrize("method", ["tiled", "recurrence"])
def test_all_estimates_by_chunks(method, weighted):
    wanted = expected(X, W if weighted else None)
    for x in (X, np.asfortranarray(X), X[:, ::-1][:, ::-1], X.astype(">f8")):
        for cuts in ([], [1, 2, 500], range(0, 1200, 37)):
            s = stats.Statistics(list(wanted), method=method)
            for chunk, w in zip(np.split(x, cuts), np.split(W, cuts)):
                s.update(chunk, w if weighted else None)
            for name, value in wanted.items():
                close(s[name], value)
            assert abs(s.count - (W.sum() if weighted else 1200)) < 1e-9


@pytest.mark.parametrize("each", list(expected(X)))
def test_every_estimate_alone_merged_and_pickled(each):
    wanted = expected(X, W)[each]
    parts = []
    for chunk, w in zip(np.split(X, [5, 6, 800]), np.split(W, [5, 6, 800])):
        part = stats.Statistics(each)
        part.update(chunk, w)
        part = pickle.loads(pickle.dumps(part))
        if len(parts) == 1:
            part = pickle.loads(pickle.dumps(stats.Statistics(each))).merge(part)
        parts.append(part)
    tolerance = 1e-6  # what was pickled keeps no more digits than the results have
    close(stats.merged(parts)[each], wanted, tolerance)
    close(stats.merged(reversed(parts))[each], wanted, tolerance)
    resumed = pickle.loads(pickle.dumps(parts[0]))
    resumed.update(x=X[5:], weights=W[5:])
    close(getattr(resumed, each), wanted, tolerance)
    close(parts[0][each], expected(X[:5], W[:5])[each], 1e-6)  # merging left it alone


def test_a_damaged_state_is_refused():
    s = stats.Statistics(["covariance", "minimum"], quantiles=[0.5])
    s.update(X)
    state = s.__getstate__()
    p, kept, image = state["_saved"]
    other = stats.Statistics()
    for wrong in ({"_saved": (2, kept, image)}, {"_saved": (1 << 40, kept, image)}, {"_saved": (p, kept, image[:-1])},
                  {"_saved": (p, kept | {"mean": kept["mean"][:2]}, image)}, {"_dtype": np.dtype("f2")}, {"_one": True},
                  {"_dtype": np.dtype("i8")}, {"_asked": ["mean"]}, {"_orders": np.zeros(9)}, {"_method": 3}, {"_dtype": None},
                  {"_saved": (p, {k: v for k, v in kept.items() if k != "accumulated_weights"}, image)}):
        with pytest.raises(ValueError, match="state"):
            other.__setstate__(state | wrong)
    for key in ("_asked", "_orders", "_epsilon", "_method", "_one"):
        with pytest.raises(ValueError, match=f"state.*{key}"):
            other.__setstate__({k: v for k, v in state.items() if k != key})
    other.__setstate__(state)
    close(other.covariance, s.covariance)


def test_numbers_at_odd_addresses(unaligned):
    for x in (unaligned(X), unaligned(X.T).T, unaligned(X[:, 0]), unaligned(X.astype("f"))):
        s = stats.Statistics(["mean", "covariance", "minimum"], quantiles=[0.5])
        s.update(x, unaligned(W))
        close(s.mean, expected(X, W)["mean"] if x.ndim == 2 else expected(X[:, :1], W)["mean"][0], 1e-5)
        np.testing.assert_array_equal(stats.quantiles(x, 0.5), stats.quantiles(x.copy(), 0.5))
    np.testing.assert_array_equal(stats.mahalanobis_distance(X, np.zeros(3), unaligned(np.eye(3))),
                                  stats.mahalanobis_distance(X, np.zeros(3), np.eye(3)))


def test_weights_that_come_and_go():
    s = stats.Statistics(["mean", "variance"])
    s.update(X[:10], W[:10])
    s.update(X[10:])
    wanted = expected(X, np.concatenate([W[:10], np.ones(1190)]))
    close(s.mean, wanted["mean"]), close(s.variance, wanted["variance"])
    s = stats.Statistics("sum")
    s.update(X[:5])
    s.update(X[5:8], [0, 1, 2])
    close(s.sum, X[:5].sum(0) + X[6] + 2 * X[7])
    assert s.count == 8


def test_merging_counts_every_observation():
    parts = [stats.Statistics([], quantiles=[0, 0.5, 1]) for _ in range(3)]
    for i, part in enumerate(parts):
        part.update(np.array([i, 10.0 * i, -i]))
    assert parts[1].merge(parts[2]).quantiles.tolist() == [-2, 1, 20]
    assert parts[0].merge(parts[1]).quantiles.tolist() == [-2, 0, 20] and parts[0].count == 9
    parts[0].update([99.0])
    assert parts[0].quantiles.tolist() == [-2, 0, 99]


def test_threads_share_statistics():
    a, b = (stats.Statistics(["mean", "maximum"], quantiles=[0.5], epsilon=0.01) for _ in range(2))

    def work():
        for _ in range(20):
            a.update(X * 1.0), b.update(X * 1.0)
            a.quantiles
    threads = [threading.Thread(target=work) for _ in range(4)]
    threads += [threading.Thread(target=lambda s=s, t=t: s.copy().merge(t)) for s, t in ((a, b), (b, a))]
    [t.start() for t in threads]
    [t.join() for t in threads]
    for s in (a, b):
        assert s.count == 80 * 1200
        close(s.mean, X.mean(0), 1e-12)


def test_quantiles_of_a_stream():
    data = RNG.permutation(60000).reshape(-1, 3) * 1.0
    orders = [0, 0.1, 0.5, 1]

    def of(chunk):
        s = stats.Statistics([], quantiles=orders, epsilon=0.01)
        s.update(chunk)
        return s
    one = of(data)
    many = stats.Statistics([], quantiles=orders, epsilon=0.01)
    for chunk in np.split(data, range(0, 20000, 999)):
        many.update(chunk)
        if many.count:
            many.quantiles  # asking changes nothing
    np.testing.assert_array_equal(one.quantiles, many.quantiles)
    merged = stats.merged(pickle.loads(pickle.dumps(of(chunk))) for chunk in np.split(data, [1, 2, 9000]))
    assert merged.count == 20000
    merged.update(data[:0])
    for s in (one, merged, pickle.loads(pickle.dumps(merged))):
        ranks = [[(data[:, i] <= s.quantiles[k, i]).mean() for i in range(3)] for k in range(4)]
        assert np.abs(np.array(ranks) - np.array(orders)[:, None]).max() <= 0.011
        assert (s.quantiles[0] == data.min(0)).all() and (s.quantiles[3] == data.max(0)).all()
    assert of(data[:, 0]).quantiles.shape == (4,)


def test_single_precision_shapes_and_names():
    s = stats.Statistics(["mean", "covariance"])
    s.update(X.astype("f"))
    assert s.mean.dtype == np.float32
    close(s.covariance, np.cov(X.T), 1e-5)
    one = stats.Statistics(["mean", "covariance", "variance"])
    one.update(np.arange(5))
    assert one.mean == 2 and one.covariance == 2.5 == one.central_moment_2 and np.isscalar(one.mean)
    assert one.results() == {"count": 5.0, "mean": 2.0, "covariance": 2.5, "variance": 2.5}
    column = stats.Statistics()
    column.update(np.arange(5.0)[:, None])
    assert column.mean.shape == (1,)
    column.mean[0] = 99  # a copy: the state cannot be written to
    assert column.mean[0] == 2
    with pytest.raises(AttributeError, match="maximum"):
        one.maximum
    with pytest.raises(KeyError):
        one["nothing"]
    with pytest.raises(ValueError, match="no observation"):
        stats.Statistics().mean


def test_functions():
    for x in (X, np.asfortranarray(X), X[::-1]):
        close(stats.quantiles(x, [0.2, 0.5]), np.quantile(x, [0.2, 0.5], axis=0), 1e-14)
        np.testing.assert_array_equal(stats.order_statistics(x), np.sort(x, axis=0))
        close(stats.median_absolute_deviation(x), np.median(np.abs(x - np.median(x, 0)), 0), 1e-14)
        close(stats.weighted_median(x, np.ones(1200)), np.median(x, 0), 1e-14)
        d = x - x.mean(0)
        close(stats.mahalanobis_distance(x), np.sqrt(np.einsum("ni,ij,nj->n", d, np.linalg.inv(np.cov(x.T)), d)), 1e-9)
    assert stats.quantiles(X[:, 0], 0.5).shape == (1,) and np.isscalar(stats.median_absolute_deviation(X[:, 0]))
    c = np.cov(X.T)
    p = c[np.ix_([2, 0], [2, 0])] - np.outer(c[[2, 0], 1], c[1, [2, 0]]) / c[1, 1]
    partial = stats.partial_covariance(c, [2, 0], [1])
    close(partial.covariance, p, 1e-10)
    close(partial.correlation[0, 1], p[0, 1] / np.sqrt(p[0, 0] * p[1, 1]), 1e-10)
    groups = np.arange(1200) % 3
    pooled = stats.pooled_covariance(X, groups)
    parts = [X[groups == g] for g in range(3)]
    close(pooled.group_means, np.array([part.mean(0) for part in parts]))
    close(pooled.group_covariances, np.array([np.cov(part.T) for part in parts]), 1e-9)
    close(pooled.covariance, sum(399 * np.cov(part.T) for part in parts) / 1197, 1e-9)
    fixed = stats.nearest_correlation([[1, 0.9, -0.9], [0.9, 1, 0.9], [-0.9, 0.9, 1]])
    assert np.linalg.eigvalsh(fixed).min() > -1e-12 and (np.diag(fixed) == 1).all()


def test_from_sums():
    wanted = expected(X, W)
    sums = {name: wanted[name] for name in ("sum", "central_sum_2", "central_sum_3", "central_sum_4", "cross_product",
                                            "raw_sum_2")}
    names = ["mean", "variance", "central_moment_3", "central_moment_4", "raw_moment_2", "covariance", "correlation",
             "skewness", "kurtosis"]
    found = stats.from_sums(names, W.sum(), (W**2).sum(), **sums)
    for name in names:
        close(found[name], wanted[name], 1e-9)
    for arguments, sums, name in ((("mean", 3), {"sun": [1.0]}, "sun"), (("sum", 3), {"sum": [1.0]}, "Basic"),
                                  (("maximum", 3), {"sum": [1.0]}, "estimates"),
                                  (("covariance", 3), {"sum": [1.0], "cross_product": [1.0]}, "cross_product"),
                                  (("variance", 3), {"sum": [1.0]}, "Basic")):
        with pytest.raises((TypeError, ValueError), match=name):
            stats.from_sums(*arguments, **sums)


def test_outliers_and_missing_values():
    x = RNG.normal(size=(300, 3))
    x[:60] += 8
    assert stats.outliers(x).nonzero()[0].tolist() == list(range(60))
    robust = stats.robust_covariance(x)
    assert np.abs(robust.mean).max() < 0.3 and np.abs(np.diag(robust.covariance) - 1).max() < 0.6
    y = RNG.normal(size=(500, 2)) @ [[1, 0.5], [0, 1]]
    complete = stats.missing_values(y)
    close(complete.mean, y.mean(0), 1e-9)
    close(complete.covariance, np.cov(y.T, bias=True), 1e-9)
    gaps = RNG.uniform(size=y.shape) < 0.1
    gaps[gaps.all(1)] = False
    holes = np.where(gaps, np.nan, y)
    found = stats.missing_values(holes, imputations=4)
    assert not np.isnan(found.imputations).any() and found.imputations.shape == (4, 500, 2)
    assert (found.imputations[:, ~gaps] == y[~gaps]).all()
    assert (found.imputations[0] != found.imputations[1])[gaps].all()
    close(found.covariance, np.cov(y.T, bias=True), 0.2)
    # What is filled in follows the other variable.
    filled, other = found.imputations[:, gaps[:, 1], 1].mean(0), y[gaps[:, 1], 0]
    assert np.corrcoef(filled, other)[0, 1] > 0.2
    with pytest.warns(RuntimeWarning, match="convergence"):
        stats.missing_values(holes, steps=1, tolerance=0)
    # EM that starts at its result stays there; a far start ends there too; a prior of much weight decides.
    exact = stats.missing_values(holes, tolerance=1e-13)
    with pytest.warns(RuntimeWarning, match="convergence"):
        at_rest = stats.missing_values(holes, steps=1, tolerance=0, start=exact[:2])
    far = stats.missing_values(holes, tolerance=1e-13, start=([50, -50], [[9, 8.5], [8.5, 9]]))
    for law in at_rest, far:
        close(law.mean, exact.mean, 1e-9)
        close(law.covariance, exact.covariance, 1e-9)
    prior = stats.Prior(1e8, 1e8, [7, 8], np.diag([1e8, 4e8]) + np.array([[0, 1.6e8], [1.6e8, 0]]))
    drawn = stats.missing_values(holes, imputations=40, prior=prior).imputations[:, gaps[:, 1], 1]
    left = drawn - (8 + 1.6 * (y[gaps[:, 1], 0] - 7))  # given the first variable, of variance 4 - 1.6^2
    known = ~gaps[gaps[:, 1], 0]
    assert abs(left[:, known].mean()) < 6 * 1.2 / np.sqrt(left[:, known].size)
    assert abs(left[:, known].var() / 1.44 - 1) < 6 * np.sqrt(2 / left[:, known].size)
    for call, name in ((lambda: stats.missing_values(holes, start=([1], np.eye(2))), "start"),
                       (lambda: stats.missing_values(holes, start=([1, 1], np.eye(3))), "start"),
                       (lambda: stats.missing_values(holes, prior=(1, 1, [0], np.eye(2))), "prior"),
                       (lambda: stats.missing_values(holes, start=([0, 0], [[1, 2], [2, 1]])), "MissingValues")):
        with pytest.raises((ValueError, np.linalg.LinAlgError), match=name):
            call()


def test_bad_arguments_are_named():
    s = stats.Statistics()
    s.update(X)
    for call, name in ((lambda: s.update(X[:, :2]), "x"), (lambda: s.update(X[:, 0]), "x"),
                       (lambda: s.update(X + 0j), "x"), (lambda: s.update(["a"]), "x"),
                       (lambda: s.update(X[None]), "x"), (lambda: s.update(np.ma.array(X, mask=X > 1)), "x: elements are masked"),
                       (lambda: s.update(X, np.ma.array(W, mask=W > 1)), "weights: elements are masked"),
                       (lambda: stats.from_sums("kurtosis", 4, sum=[1.0]), "sum do not give kurtosis"), (lambda: s.update(X, W[1:]), "weights"),
                       (lambda: stats.Statistics("median"), "estimates"), (lambda: stats.Statistics(method="x"), "method"),
                       (lambda: stats.Statistics(quantiles=[2]), "quantiles"),
                       (lambda: stats.Statistics(quantiles=[0.5], epsilon=0), "epsilon"),
                       (lambda: stats.Statistics(dtype="i4"), "dtype"), (lambda: s.merge(s), "other"),
                       (lambda: s.merge(stats.Statistics("sum")), "other"), (lambda: s.merge(1), "other"),
                       (lambda: stats.Statistics(dtype="f4").merge(s), "other"), (lambda: stats.merged([1]), "parts"),
                       (lambda: s.update(X, np.full(1200, np.nan)), "weights"),
                       (lambda: stats.from_sums("mean", 4, sum=1.0), "sum"),
                       (lambda: stats.from_sums("mean", 0, sum=[1.0]), "count"),
                       (lambda: stats.partial_covariance(np.eye(3), [0, 0], [1]), "of"),
                       (lambda: stats.quantiles(X, []), "orders"),
                       (lambda: stats.quantiles(X, 1.5), "orders"), (lambda: stats.quantiles([], 0.5), "x"),
                       (lambda: stats.weighted_median([1, 2], [1, -1]), "WMedian"),
                       (lambda: stats.weighted_median([1, 2], [1]), "weights"),
                       (lambda: stats.mahalanobis_distance(X, [0, 0], np.eye(3)), "mean"),
                       (lambda: stats.partial_covariance(np.eye(3), [0], [0]), "given"),
                       (lambda: stats.partial_covariance(np.eye(3), [3], [0]), "of"),
                       (lambda: stats.partial_covariance(np.ones((2, 3)), [0], [1]), "covariance"),
                       (lambda: stats.pooled_covariance(X, np.zeros(3, int)), "groups"),
                       (lambda: stats.pooled_covariance(X, np.full(1200, 2**40)), "groups"),
                       (lambda: stats.missing_values(X, imputations=-1), "imputations"),
                       (lambda: stats.merged([]), "parts"), (lambda: stats.Statistics().update(np.empty((3, 0))), "x")):
        with pytest.raises((ValueError, TypeError), match=name):
            call()
    with pytest.raises(np.linalg.LinAlgError):
        stats.mahalanobis_distance(X, covariance=np.ones((3, 3)))
    close(s.mean, X.mean(0))  # as it was
    fresh = stats.Statistics(dtype=">f8")
    with pytest.raises(ValueError, match="weights"):
        fresh.update(X, [1.0])
    fresh.update(X[:, 0])  # what was refused has left nothing
    close(fresh.mean, X[:, 0].mean())
    s.update(X[:0])
    assert s.count == 1200
