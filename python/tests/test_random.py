"""Random streams: the bits in NumPy's generator, laws, pieces, images."""

import copy
import os
import pickle
import threading

import numpy as np
import pytest

from kef import random
from kef._laws import LAWS

GENERATORS = ["MCG31M1", "R250", "MRG32K3A", "MCG59", "WH", "MT19937", "MT2203", "SFMT19937"]


def make(name, seed=1):
    return getattr(random, name)(seed)


def test_numpy_generator_gets_the_same_numbers_as_from_its_own_twister():
    mine, numpys = random.MT19937(words=[1, 2, 3]), np.random.MT19937()
    numpys._legacy_seeding(np.array([1, 2, 3], np.uint32))
    assert isinstance(mine, np.random.BitGenerator)
    a, b = np.random.Generator(mine), np.random.Generator(numpys)
    for draw in (lambda g: g.random(1001), lambda g: g.random(1000, np.float32), lambda g: g.integers(100, size=999),
                 lambda g: g.standard_normal(5000), lambda g: g.gamma(2.5, size=1000),
                 lambda g: g.permutation(100), lambda g: g.binomial(40, 0.3, 1000)):
        np.testing.assert_array_equal(draw(a), draw(b))


@pytest.mark.parametrize("name", [*GENERATORS, "TRNG"])
def test_bits_in_numpys_generator_look_random(name):
    try:
        u = np.random.Generator(make(name)).random(40000)
    except random.StreamError:
        pytest.skip("the processor has no RDRAND")
    counts = np.histogram(u, 100, (0, 1))[0]
    assert ((counts - 400.0) ** 2 / 400).sum() < 180  # chi squared, 99 degrees: probability 1e-6
    assert abs(np.corrcoef(u[:-1], u[1:])[0, 1]) < 0.03


# Law: parameters, and mean and standard deviation.
MOMENTS = {
    "uniform": ({"low": 2, "high": 4}, 3, 12**-0.5 * 2), "integers": ({"low": -2, "high": 3}, 0, 2**0.5),
    "normal": ({"mean": 3, "sigma": 2}, 3, 2),
    "lognormal": ({"sigma": 0.25, "shift": 1, "scale": 2}, 1 + 2 * np.exp(1 / 32),
                  2 * np.sqrt(np.expm1(1 / 16) * np.exp(1 / 16))),
    "exponential": ({"shift": 1, "scale": 2}, 3, 2), "laplace": ({"shift": 1, "scale": 2}, 1, 8**0.5),
    "weibull": ({"shape": 2, "scale": 2}, np.pi**0.5, (4 - np.pi) ** 0.5),
    "rayleigh": ({"scale": 2}, np.pi**0.5, (4 - np.pi) ** 0.5),
    "gumbel": ({"shift": 1}, 1 - np.euler_gamma, np.pi / 6**0.5), "gamma": ({"shape": 4, "scale": 2}, 8, 4),
    "beta": ({"p": 2, "q": 3, "scale": 5}, 2, 1), "bernoulli": ({"p": 0.25}, 0.25, 0.1875**0.5),
    "geometric": ({"p": 0.25}, 3, 12**0.5), "binomial": ({"trials": 12, "p": 0.25}, 3, 1.5),
    "hypergeometric": ({"population": 30, "sample": 10, "marked": 12}, 4, (10 * 0.4 * 0.6 * 20 / 29) ** 0.5),
    "poisson": ({"mean": 9}, 9, 3), "negative_binomial": ({"successes": 4, "p": 0.5}, 4, 8**0.5),
}


@pytest.mark.parametrize("name", LAWS)
def test_laws(name):
    law, draw, n = LAWS[name], getattr(random.MRG32K3A(5), name), 40000
    parameters, mean, sigma = MOMENTS.get(name, ({}, None, None))
    for dtype in law.dtypes:
        x = draw((4, n // 4), dtype=dtype, **parameters)
        assert x.shape == (4, n // 4) and x.dtype == dtype
        if name == "cauchy":
            assert abs(np.median(x)) < 0.05 and abs(np.quantile(x, 0.75) - 1) < 0.1
            continue
        x = x.astype(float)
        assert abs(x.mean() - mean) < 5 * sigma / n**0.5
        assert abs(x.std() / sigma - 1) < 0.06
    assert np.isscalar(draw(**parameters)) and draw((), **parameters).shape == ()
    out = np.full((2, 3), 77, law.dtypes[0])
    assert draw(out=out, **parameters) is out and (out != 77).all()


def test_methods_and_arrays():
    a, b = random.MRG32K3A(1), random.MRG32K3A(1)
    assert (a.normal(100) != b.normal(100, method="inversion")).any()
    x = random.MT19937(3).poisson(mean=np.repeat([1.0, 50.0], 20000))
    assert abs(x[:20000].mean() - 1) < 0.05 and abs(x[20000:].mean() - 50) < 0.3
    covariance = np.array([[4.0, 1.0, 0.0], [1.0, 2.0, -0.5], [0.0, -0.5, 1.0]])
    v = random.MT19937(4).multivariate_normal(40000, [1.0, 2.0, 3.0], covariance)
    assert np.abs(np.cov(v.T) - covariance).max() < 0.15 and np.abs(v.mean(0) - [1, 2, 3]).max() < 0.06
    v = random.MT19937(4).multivariate_normal((2, 5), np.zeros(2, "f"), factor=np.eye(2), dtype="f4")
    assert v.shape == (2, 5, 2) and v.dtype == np.float32
    words = random.MT19937(words=[5489]).bits(2)
    assert words.tolist() == random.MT19937(words=[5489]).bits(1, 64).view(np.uint32).tolist()
    x = random.MCG31M1(1).integers(100000, 0, 2)
    assert set(x.tolist()) == {0, 1}


def test_seeds_go_through_seed_sequences():
    seeds = np.random.SeedSequence(9)
    assert random.WH(seeds).uniform() == random.WH(9).uniform() != random.WH(10).uniform()
    assert random.MT19937().uniform() != random.MT19937().uniform()
    expected = random.MT2203(1, member=1).uniform()
    assert random.MT2203(1).uniform() != expected
    # The generator's own seed: the first number of the twister of 1998 and of the congruential one.
    assert random.MT19937(words=[0x123, 0x234, 0x345, 0x456]).bits() == 1067595299
    assert random.MCG31M1(words=[1]).uniform() == 1 / (2**31 - 1)


@pytest.mark.parametrize("name", GENERATORS)
def test_images_and_copies(name, tmp_path):
    stream = make(name)
    generator = np.random.Generator(stream)
    generator.random(3), stream.normal(3)  # words read ahead, a kept pair of normal numbers
    others = [stream.copy(), copy.deepcopy(stream), pickle.loads(pickle.dumps(stream))]
    other = make(name, 2)
    other.state = stream.state
    others.append(other)
    assert type(others[2]) is type(stream)
    expected = generator.random(300), stream.normal(5), stream.uniform(10)
    for other in others:
        got = np.random.Generator(other).random(300), other.normal(5), other.uniform(10)
        for a, b in zip(got, expected):
            np.testing.assert_array_equal(a, b)
    stream.save(tmp_path / "stream")
    loaded = random.load(tmp_path / "stream")
    assert loaded.uniform() == stream.uniform() and [p.name for p in tmp_path.iterdir()] == ["stream"]
    stream.save(os.fsencode(tmp_path / "stream"))
    assert random.load(os.fsencode(tmp_path / "stream")).to_bytes() == stream.to_bytes()
    if os.name == "posix":  # the rights of other files; a link and a pipe stay what they are
        mask = os.umask(0)
        os.umask(mask)
        assert (tmp_path / "stream").stat().st_mode & 0o777 == 0o666 & ~mask
        (tmp_path / "stream").chmod(0o640), (tmp_path / "link").symlink_to("stream"), os.mkfifo(tmp_path / "pipe")
        stream.save(tmp_path / "link")
        assert (tmp_path / "link").is_symlink() and (tmp_path / "stream").stat().st_mode & 0o777 == 0o640
        (tmp_path / "short").write_bytes(stream.to_bytes()[:50])
        with pytest.raises(random.StreamError, match="short"):
            random.load(tmp_path / "short")
        for place in "/dev/full", tmp_path / "none/stream":
            with pytest.raises(OSError, match=f"'{place}'"):
                stream.save(place)
        (tmp_path / "sub").mkdir(), (tmp_path / "ahead").symlink_to("sub/new"), (tmp_path / "loop").symlink_to("loop")
        stream.save(tmp_path / "ahead")
        assert (tmp_path / "ahead").is_symlink() and (tmp_path / "sub/new").read_bytes() == stream.to_bytes()
        with pytest.raises(OSError, match="loop"):
            stream.save(tmp_path / "loop")
        assert (tmp_path / "loop").is_symlink()
        reader = os.open(tmp_path / "pipe", os.O_RDONLY | os.O_NONBLOCK)
        stream.save(tmp_path / "pipe")
        assert (tmp_path / "pipe").is_fifo() and os.read(reader, 100000) == stream.to_bytes()
        os.close(reader)
    image = stream.to_bytes()
    for damaged in (image[:-1], b"", image[:16] + b"\x77" * 4 + image[20:]):
        with pytest.raises(random.StreamError):
            random.from_bytes(damaged)
    for wrong in ({"bit_generator": "other"}, *({**stream.state, key: value} for key, value in (
            ("ahead", [-1]), ("ahead", [0] * 257), ("ahead", None), ("spawned", 3), ("spawned", (0, -1 << 30)),
            ("seed_seq", 5)))):
        with pytest.raises(ValueError, match="state"):
            stream.state = wrong
    for key in ("image", "ahead", "spawned", "seed_seq"):
        with pytest.raises(ValueError, match=f"state.*{key}"):
            stream.state = {k: v for k, v in stream.state.items() if k != key}
    with pytest.raises(TypeError):
        random.from_bytes(1 << 40)
    assert stream.to_bytes() == image  # as it was


def test_a_generator_is_pickled_with_its_stream(run_python):
    generator = np.random.Generator(random.SFMT19937(1))
    generator.random(7)
    image = pickle.dumps(generator)
    again = pickle.loads(image)
    expected = generator.random(500)
    np.testing.assert_array_equal(again.random(500), expected)
    # In a process that has not imported the package.
    assert run_python(f"import pickle; print(pickle.loads({image!r}).random(500).sum())") == f"{expected.sum()}\n"


@pytest.mark.parametrize("name", ["MCG31M1", "MCG59", "WH", "MRG32K3A", "MT19937", "SFMT19937"])
def test_pieces_of_a_sequence(name):
    whole = make(name).uniform(3000)
    assert (make(name).jumped(1000).uniform(50) == whole[1000:1050]).all()
    if name in ("MCG31M1", "MCG59", "WH"):
        assert (make(name).leapfrog(2, 5).uniform(50) == whole[2:252:5]).all()
    else:
        with pytest.raises(random.StreamError, match=name):
            make(name).leapfrog(2, 5)
    assert make(name).skip((1 << 64) + 5).uniform() == make(name).skip(1 << 63).skip(1 << 63).skip(5).uniform()
    far = make(name).skip(1 << 40).skip(1 << 41)
    assert far.uniform() == make(name).skip(3 << 40).uniform()


def test_spawned_streams_do_not_meet():
    parent = random.MCG31M1(words=[1])
    first, second = parent.spawn(2)
    third, = parent.spawn(1)
    starts = [random.MCG31M1(words=[1]).skip(place).uniform() for place in
              (1 << 18, 2 << 18, 3 << 18)]
    assert [s.copy().uniform() for s in (first, second, third)] == starts
    with pytest.raises(ValueError, match="n_children"):
        second.spawn(1)
    with pytest.raises(ValueError, match="n_children"):
        parent.spawn(1 << 12)
    sets = random.MT2203(3).spawn(3)
    assert [random._brng_of(s._stream) & 0xFFFFF for s in sets] == [1, 2, 3]
    for name in GENERATORS:
        parent = make(name)
        children = [*parent.spawn(2), *parent.spawn(2), *make(name, 99).spawn(2, "seeds")]
        numbers = {tuple(s.uniform(4)) for s in [parent, *children]}
        assert len(numbers) == 5 + 2, name
    parent = random.MRG32K3A(1)
    np.random.Generator(parent).random()
    child, = parent.spawn(1)
    assert np.random.Generator(child).random() != np.random.Generator(parent).random()  # what was read ahead stays
    with pytest.raises(ValueError, match="method"):
        random.MT19937(1).spawn(1, "members")
    with pytest.raises(ValueError, match="cannot skip"):
        random.R250(1).spawn(1, "skip")


def test_quasi_random_points():
    for kind, most in ((random.SOBOL, 40), (random.NIEDERR, 318)):
        points = kind(most).uniform((1023, most))
        assert (np.abs(points.mean(0) - 0.5) < 1e-2).all()
        one = kind(most).leapfrog(3, most).uniform(10)
        assert (one == points[:10, 3]).all()
        with pytest.raises(ValueError, match="dimension"):
            kind(most + 1)


def test_bad_arguments_are_named():
    s = random.MRG32K3A(1)
    for call, name in ((lambda: s.normal(3, sigma=-1), "sigma"), (lambda: s.normal(3, mean=np.nan), "mean"),
                       (lambda: s.gamma(3), "shape"), (lambda: s.gamma(3, 0), "shape"),
                       (lambda: s.uniform(3, 1, 1), "low"), (lambda: s.uniform(-1), "size"),
                       (lambda: s.uniform("a"), "size"), (lambda: s.uniform((2, -3)), "size"),
                       (lambda: s.uniform(3, dtype="i4"), "dtype"), (lambda: s.binomial(3, 2**31, 0.5), "trials"),
                       (lambda: s.binomial(3, 1.5, 0.5), "trials"), (lambda: s.poisson(3, [1, -1]), "mean"),
                       (lambda: s.hypergeometric(3, 5, 6, 1), "sample"), (lambda: s.normal(3, tail=1), "tail"),
                       (lambda: s.normal(3, method="guess"), "method"), (lambda: s.bits(3, 33), "width"),
                       (lambda: s.exponential(3, scale=1e-60, dtype="f4"), "scale"),
                       (lambda: s.uniform(out=np.empty(3, "f4")), "out"), (lambda: s.skip(-1), "count"),
                       (lambda: s.uniform(4, out=np.empty(3)), "out"), (lambda: s.leapfrog(3, 2), "k"),
                       (lambda: s.uniform(out=np.empty((3, 2))[:, 0]), "out"),
                       (lambda: s.multivariate_normal(2, [0, 0], [[1, 2], [2, 1]]), "covariance"),
                       (lambda: s.multivariate_normal(2, [0, 0], factor=[1]), "factor"),
                       (lambda: s.multivariate_normal(2, [0, 0], np.ones((2, 3))), "covariance.* symmetric"),
                       (lambda: s.multivariate_normal(2, [0, 0], [[1, 0.5], [-0.5, 1]]), "covariance.* symmetric"),
                       (lambda: s.normal(3, "a"), "mean"), (lambda: s.normal(3, 10**400), "mean"),
                       (lambda: random.MT2203(1, member=6024), "member"),
                       (lambda: random.MT19937(words=[-1]), "words"), (lambda: random.MT19937(words=[0.5]), "words")):
        with pytest.raises((ValueError, TypeError), match=name):
            call()
    for size in 1 << 50, 1 << 62, (1 << 40, 1 << 40):
        for draw in s.uniform, s.bits, s.multivariate_normal:
            with pytest.raises(MemoryError):
                draw(size)
    with pytest.raises(random.StreamError):
        s.bits(3)
    with pytest.raises(TypeError):
        random.Stream(1)
    assert s.uniform(0).size == 0 and s.uniform(0, dtype=">f8").dtype == np.float64
    assert s.uniform() == random.MRG32K3A(1).uniform()  # nothing was drawn


def test_threads_share_a_stream():
    stream, parts = random.MT19937(1), []
    threads = [threading.Thread(target=lambda: parts.append(stream.uniform(50000))) for _ in range(4)]
    [t.start() for t in threads]
    [t.join() for t in threads]
    with stream.lock:  # who holds it has the stream alone
        waiting = threading.Thread(target=stream.uniform)
        waiting.start()
        waiting.join(0.1)
        assert waiting.is_alive()
    waiting.join()
    assert np.sort(np.concatenate(parts)).tolist() == np.sort(random.MT19937(1).uniform(200000)).tolist()


def test_numbers_of_the_caller(capfd):
    source, empty = np.random.default_rng(5), []

    def refill(n):
        if empty:
            raise LookupError("no more")
        return source.random(n)
    stream, expected = random.Numbers(refill, length=100), np.random.default_rng(5).random(300)
    np.testing.assert_array_equal(stream.uniform(150), expected[:150])
    empty.append(True)
    with pytest.raises(LookupError, match="no more"):
        stream.uniform(100)
    empty.clear()
    assert 0.4 < stream.uniform(10000).mean() < 0.6  # goes on
    assert 0.4 < np.random.Generator(stream).random(10000).mean() < 0.6
    for wrong, words in ((lambda n: [], "gave 0"), (lambda n: [1.0], "is not on"), (lambda n: [0.5] * (n + 1), "gave")):
        with pytest.raises(ValueError, match=words):
            random.Numbers(wrong)
    with pytest.raises(ValueError, match="low"):
        random.Numbers(refill, 1.0, 1.0)
    with pytest.raises(TypeError, match="no copies"):
        pickle.dumps(stream)
    own = []
    own.append(random.Numbers(lambda n: own[0].uniform(n) if own else [0.5] * n, length=10))
    with pytest.raises(RuntimeError, match="draws from the stream"):
        own[0].uniform(20)
    calls = iter([[0.5] * 10, "x"])
    last = random.Numbers(lambda n: np.full(n, 1 - 2.0**-53), length=10)
    assert (last.integers(20, 2**30, 2**30 + 1) == 2**30).all()  # where rounding gives the end
    broken = np.random.Generator(random.Numbers(lambda n: next(calls), length=10))
    assert broken.random() == 0
    assert "ValueError" in capfd.readouterr().err
