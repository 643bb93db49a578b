"""Functions of arrays: values, types, shapes, errors."""

import pickle
import signal
import threading
import warnings

import numpy as np
import pytest

import kef
from kef import _tables, _ufunc, random

RNG = np.random.default_rng(1)


def phi(x):
    from math import erfc, sqrt
    return np.vectorize(lambda t: erfc(-t / sqrt(2)) / 2)(x)


def by_math(name):
    import math
    return np.vectorize(getattr(math, name))


# Function: a reference that is not the library's, and arguments of the inside of the domain.
REAL = {
    "abs": (np.abs, -3, 3), "acos": (np.arccos, -1, 1), "asin": (np.arcsin, -1, 1), "atan": (np.arctan, -9, 9),
    "acosh": (np.arccosh, 1.5, 9), "asinh": (np.arcsinh, -9, 9), "atanh": (np.arctanh, -0.9, 0.9),
    "cbrt": (np.cbrt, -9, 9), "invcbrt": (lambda x: 1 / np.cbrt(x), 1, 9), "cdfnorm": (phi, -4, 4),
    "ceil": (np.ceil, -9, 9), "floor": (np.floor, -9, 9), "trunc": (np.trunc, -9, 9), "rint": (np.rint, -9, 9),
    "nearbyint": (np.rint, -9, 9), "round": (lambda x: np.sign(x) * np.floor(np.abs(x) + 0.5), -9, 9),
    "cos": (np.cos, -9, 9), "sin": (np.sin, -9, 9), "tan": (np.tan, -1, 1), "cosh": (np.cosh, -9, 9),
    "sinh": (np.sinh, -9, 9), "tanh": (np.tanh, -9, 9), "erf": (by_math("erf"), -3, 3),
    "erfc": (by_math("erfc"), -3, 5), "exp": (np.exp, -9, 9), "ln": (np.log, 0.01, 9),
    "log10": (np.log10, 0.01, 9), "expm1": (np.expm1, -3, 3), "log1p": (np.log1p, -0.9, 9),
    "inv": (np.reciprocal, 1, 9), "invsqrt": (lambda x: 1 / np.sqrt(x), 0.1, 9), "sqr": (np.square, -9, 9),
    "lgamma": (by_math("lgamma"), 3, 9), "tgamma": (by_math("gamma"), 0.5, 9),
    "pow2o3": (lambda x: np.cbrt(x) ** 2, -9, 9), "pow3o2": (lambda x: x * np.sqrt(x), 0.1, 9),
    "sqrt": (np.sqrt, 0, 9),
}
TWO = {"add": np.add, "sub": np.subtract, "mul": np.multiply, "div": np.divide, "atan2": np.arctan2,
       "hypot": np.hypot, "pow": np.power}
COMPLEX = {"abs": np.abs, "acos": np.arccos, "asin": np.arcsin, "atan": np.arctan, "acosh": np.arccosh,
           "asinh": np.arcsinh, "atanh": np.arctanh, "arg": np.angle, "conj": np.conj, "cos": np.cos,
           "sin": np.sin, "tan": np.tan, "cosh": np.cosh, "sinh": np.sinh, "tanh": np.tanh, "exp": np.exp,
           "ln": np.log, "log10": np.log10, "sqrt": np.sqrt}
# Relative bounds of the three accuracies, with room for the references.
BOUNDS = {"f": {"high": 3e-7, "low": 2e-6, "enhanced": 2e-3}, "d": {"high": 2e-15, "low": 4e-15, "enhanced": 1e-7}}


@pytest.mark.parametrize("accuracy", BOUNDS["d"])
@pytest.mark.parametrize("code", "fd")
def test_values(code, accuracy):
    def close(name, got, expected):
        assert got.dtype == np.dtype(code if expected.dtype.kind == "f" else code.upper()), name
        np.testing.assert_allclose(got, expected, rtol=BOUNDS[code][accuracy], atol=1e-6 if accuracy == "enhanced"
                                   or code == "f" else 1e-15, err_msg=name)
    for name, (reference, low, high) in REAL.items():
        x = np.linspace(low, high, 1001).astype(code)
        close(name, getattr(kef, name)(x, accuracy=accuracy), reference(x.astype("d")))
    x, y = RNG.uniform(0.5, 3, (2, 501)).astype(code)
    for name, reference in TWO.items():
        close(name, getattr(kef, name)(x, y, accuracy=accuracy), reference(x.astype("d"), y.astype("d")))
    z = (RNG.normal(size=301) + 1j * RNG.normal(size=301)).astype(code.upper())
    for name, reference in COMPLEX.items():
        got, expected = getattr(kef, name)(z, accuracy=accuracy), reference(z.astype("D"))
        scale = np.abs(expected) if accuracy != "enhanced" else np.abs(expected) + 1
        assert (np.abs(got - expected) <= (20 if code == "f" else 10) * BOUNDS[code][accuracy] * scale).all(), name
    close("cis", kef.cis(x, accuracy=accuracy), np.exp(1j * x.astype("d")))
    close("mulbyconj", kef.mulbyconj(z, z[::-1].copy()), z.astype("D") * z[::-1].conj().astype("D"))
    for got, expected in zip(kef.sincos(x, accuracy=accuracy), (np.sin(x.astype("d")), np.cos(x.astype("d")))):
        close("sincos", got, expected)
    for got, expected in zip(kef.modf(x), np.modf(x.astype("d"))[::-1]):
        close("modf", got, expected)
    close("powx", kef.powx(x, 1.7, accuracy=accuracy), x.astype("d") ** 1.7)
    close("linearfrac", kef.linearfrac(x, y, 2, 1, 3, 4, accuracy=accuracy),
          (2 * x.astype("d") + 1) / (3 * y.astype("d") + 4))
    for name, inverse in (("cdfnorminv", "cdfnorm"), ("erfinv", "erf"), ("erfcinv", "erfc")):
        p = np.linspace(0.1, 0.9, 99).astype(code)
        close(name, getattr(kef, inverse)(getattr(kef, name)(p, accuracy=accuracy)), p)


def test_every_function_of_the_library_is_tested():
    tested = {*REAL, *TWO, *COMPLEX, "cis", "mulbyconj", "sincos", "modf", "powx", "linearfrac", "cdfnorminv",
              "erfinv", "erfcinv"}
    assert {name.lower() for name in _tables.FUNCTIONS if "ack" not in name} == tested
    assert all(kef.exp.ufuncs[a](1.0) > 2 for a in _ufunc.SUFFIXES)


def test_accuracies_differ_and_have_two_names():
    x = np.linspace(-5, 5, 999)
    high, low, enhanced = (kef.exp(x, accuracy=a) for a in ("high", "low", "enhanced"))
    assert (high != low).any() and (low != enhanced).any()
    assert (kef.exp(x, accuracy="EP") == enhanced).all()
    for wrong in ("medium", None, []):
        with pytest.raises(ValueError, match="accuracy"):
            kef.exp(x, accuracy=wrong)


def test_shapes_strides_orders_and_types():
    x = RNG.uniform(0.5, 2, (6, 8, 10))
    expected = kef.ln(x)
    for same in (np.asfortranarray(x), x.astype(">f8"), x.transpose(2, 0, 1), x[::2, ::-1, 1::3]):
        np.testing.assert_array_equal(kef.ln(same), np.asarray(
            [kef.ln(float(v)) for v in same.ravel()]).reshape(same.shape))
    raw = np.zeros(8 * 11 + 1, np.uint8)
    odd = raw[1:].view("f8")  # not aligned
    odd[:] = x.ravel()[:11]
    np.testing.assert_array_equal(kef.ln(odd), expected.ravel()[:11])
    np.testing.assert_array_equal(kef.pow(x[:, :1], x[0, 0]), np.vectorize(kef.pow)(x[:, :1], x[0, 0]))
    for dtype in ("?", "i1", "u2", "i4", "i8", "u8"):
        assert kef.exp(np.array([0, 1], dtype)).dtype == np.float64
        assert kef.exp(np.array([0, 1], dtype))[1] == kef.exp(1.0)
    assert kef.exp(np.array([1], np.float16)).dtype == np.float32
    assert kef.pow(np.float32([2]), 2).dtype == np.float32
    assert kef.exp(np.empty((3, 0))).shape == (3, 0)
    assert isinstance(kef.exp(1), np.float64) and isinstance(kef.exp(np.float32(1)), np.float32)
    assert isinstance(kef.powx(2.0, 3.0), np.float64) and isinstance(kef.sincos(1.0)[0], np.float64)
    assert kef.arg(-1.0 + 0j) == np.pi and kef.conj([1j])[0] == -1j


def test_numbers_at_odd_addresses(unaligned):
    """The library is never given one: sanitizers would tell."""
    x = np.arange(1.0, 40.0)
    for call in (kef.exp, lambda x: kef.exp(x, errors="raise"), lambda x: kef.pack(x, step=2), lambda x: kef.powx(x, 2.0),
                 lambda x: kef.pack(x, index=unaligned(np.arange(9))), lambda x: kef.add(x, x, out=unaligned(x))):
        np.testing.assert_array_equal(call(unaligned(x)), call(x))
    with pytest.raises(TypeError, match="out"):
        kef.unpack([1.0], unaligned(x), index=[0])
    stream = random.MT19937(1)
    with pytest.raises(ValueError, match="out"):
        stream.normal(out=unaligned(x))
    assert stream.poisson(mean=unaligned(x)).shape == x.shape


def test_out_and_where():
    x, out = np.array([1.0, -1.0, 4.0]), np.full(3, 9.0)
    assert kef.sqrt(x, out, where=x > 0) is out
    assert out.tolist() == [1, 9, 2]
    for errors in (None, "ignore", "raise", lambda e: None):
        out[:] = 9
        assert kef.sqrt(x, out=out, where=x > 0, errors=errors) is out  # the -1 is no error
        assert out.tolist() == [1, 9, 2]
    got = kef.ln(x, where=[False, True, True], errors=lambda e: float(e.index[0]))
    assert got[1:].tolist() == [1, kef.ln(4.0)]
    y = np.arange(10.0)
    kef.sqr(y[:-1], out=y[1:])  # overlapping: NumPy copies
    assert y.tolist() == [0, 0, 1, 4, 9, 16, 25, 36, 49, 64]
    z = np.array([4.0, 9.0])
    assert kef.sqrt(z, z, errors="raise") is z and z.tolist() == [2, 3]
    s, c = np.empty(3), np.empty(3)
    kef.sincos(x, out=(s, c), errors="raise")
    assert (s == kef.sin(x)).all() and (c == kef.cos(x)).all()
    read_only = np.empty(3)
    read_only.flags.writeable = False
    for errors in (None, "raise"):
        with pytest.raises(ValueError, match="(out|output).*read-only"):
            kef.exp(x, out=read_only, errors=errors)
        with pytest.raises(ValueError):
            kef.exp(x, out=np.empty(4), errors=errors)
        with pytest.raises(TypeError):
            kef.exp(x, out=np.empty(3, int), errors=errors)


@pytest.mark.parametrize("value", [np.array(["a"]), np.array([None]), np.zeros(2, "M8[s]")] +
                         [np.zeros(2, code) for code in "gG" if np.dtype(code).itemsize not in (8, 16)])
def test_other_types_are_refused_by_name(value):
    with pytest.raises(TypeError, match="x: dtype"):
        kef.exp(value)
    with pytest.raises(TypeError, match="y: dtype"):
        kef.add(1.0, value)


def test_errstate_is_followed():
    x = np.array([1.0, 0.0, -1.0, 2.0])
    with np.errstate(all="raise"):
        with pytest.raises(FloatingPointError, match="ln"):
            kef.ln(x)
        with pytest.raises(FloatingPointError, match="powx"):
            kef.powx(-x, 0.5)
        assert kef.ln(x, errors="ignore")[1] == -np.inf
        with pytest.raises(FloatingPointError, match="overflow"):
            kef.exp(np.full(600, 1000.0))
        with pytest.raises(FloatingPointError, match="underflow"):
            kef.exp(-1000.0)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with np.errstate(all="ignore"):
            kef.ln(x), kef.powx(-x, 0.5)
        kef.ln(np.full(5, np.nan)), kef.exp(-np.inf)
        kef.exp(-1000.0), kef.powx(1e-200, 2.0)  # NumPy ignores underflow unless told
    with pytest.warns(RuntimeWarning, match="divide by zero"):
        kef.ln(np.zeros(3))
    with pytest.warns(RuntimeWarning, match="pole"):
        kef.powx(0.0, -1.5)


def test_errors_name_the_element():
    x = np.array([[1.0, 2.0, 3.0], [4.0, -5.0, 0.0]])
    with pytest.raises(FloatingPointError, match=r"kef.ln: .*domain: x\[1, 1\] = -5.0"):
        kef.ln(x.T.copy().T, errors="raise")  # column-major: the index is the caller's
    with pytest.raises(FloatingPointError, match=r"pole.* x\[0\] = 1.0, y\[0\] = 0.0"):
        kef.div([1.0], 0.0, errors="raise")
    with pytest.warns(RuntimeWarning) as found:
        kef.ln(x, errors="warn")
    assert [str(w.message).split(":")[1] for w in found] == [" an argument is outside the function's domain",
                                                            " an argument is a pole of the function"]
    assert found[0].filename == __file__
    seen = []
    result = kef.ln(x, errors=lambda e: seen.append(e) or (7.0 if e.kind == "domain" else None))
    assert [(e.kind, e.index) for e in seen] == [("domain", (1, 1)), ("singularity", (1, 2))]
    assert result[1, 1] == 7 and result[1, 2] == -np.inf and result[0, 0] == 0
    assert kef.ln(np.zeros(3, "F"), errors=lambda e: 1 + 2j).tolist() == [1 + 2j] * 3
    s, c = kef.sincos([1.0, np.inf], errors=lambda e: (3.0, 4.0))
    assert s[1] == 3 and c[1] == 4 and s[0] == kef.sin(1.0)
    with pytest.raises(ZeroDivisionError):
        kef.ln(x, errors=lambda e: 1 / 0)
    assert len(seen) == 2
    for wrong in ("seven", (1.0, 2.0), (), [1.0, 2.0]):
        with pytest.raises(TypeError, match="errors: the callable gave"):
            kef.ln(x, errors=lambda e: wrong)
    with pytest.raises(ValueError, match="errors"):
        kef.ln(x, errors="sometimes")
    with pytest.raises(OverflowError, match="y: "):
        kef.pow(2.0, 10**400)
    with pytest.raises(TypeError, match="exponent: dtype"):
        kef.powx(x, "two")
    # A call inside of a callback has its own callback, and the outer one goes on after it.
    inner = []
    result = kef.ln([-1.0, 0.0, -2.0], errors=lambda e: float(kef.sqrt(-4.0, errors=lambda f: inner.append(f) or 8.0)))
    assert result.tolist() == [8, 8, 8] and [f.function for f in inner] == ["sqrt"] * 3
    # The thread's own mode and callback are back.
    assert not kef._library.library._vtmGetErrorCallBack() and kef._library.library._vtmGetMode() == 0x1A02


@pytest.mark.skipif(not hasattr(signal, "setitimer"), reason="the system has no timers")
def test_an_interrupt_leaves_a_callback(capfd):
    """Wherever it comes: in the library, on entry to the callback or within it."""
    class Stop(BaseException):
        pass

    def stop(*arguments):
        raise Stop
    numbers = random.Numbers(lambda n: np.full(1, 0.5), length=1)
    before = signal.signal(signal.SIGALRM, stop)
    try:
        for call in (lambda: kef.ln(np.full(10**6, -1.0), errors=lambda error: 0.0), lambda: numbers.uniform(10**6)):
            for i in range(20):
                signal.setitimer(signal.ITIMER_REAL, 0.01 + i * 1e-4)
                with pytest.raises(Stop):
                    call()
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert "ignored" not in capfd.readouterr().err
    assert kef.ln([-1.0, 1.0], errors=lambda error: 7.0).tolist() == [7.0, 0.0] and numbers.uniform() == 0.5


def test_pack_and_unpack():
    for dtype in "fdFD":
        x = np.arange(1, 8).astype(dtype)
        assert kef.pack(x, step=3).tolist() == [1, 4, 7]
        assert kef.pack(x, index=[6, 0, 0]).tolist() == [7, 1, 1]
        assert kef.pack(x, mask=x.real > 5).tolist() == [6, 7]
        out = np.zeros(7, dtype)
        kef.unpack([1, 2, 3], out, step=3)
        kef.unpack([5], out, index=[1])
        kef.unpack([8, 9], out, mask=[0, 0, 1, 0, 1, 0, 0])
        assert out.tolist() == [1, 5, 8, 2, 9, 0, 3]
    for wrong, what in (({"index": [7]}, "index"), ({"index": [-1]}, "index"), ({"step": 0}, "step"),
                        ({"mask": [1]}, "mask"), ({"mask": list("abcdefg")}, "mask")):
        with pytest.raises((IndexError, TypeError, ValueError), match=what):
            kef.pack(np.arange(7.0), **wrong)
    out = np.zeros(4)
    index = out.view(np.int64)
    index[:] = [1, 3, 0, 2]  # which the values are put over
    assert kef.unpack([1e300, 2, 3, 4], out, index=index).tolist() == [3, 1e300, 4, 2]
    masked = np.ma.array([4.0, -1.0], mask=[0, 1])
    for call in (lambda: kef.sqrt(masked, errors="raise"), lambda: kef.pack(masked, step=1),
                 lambda: kef.unpack(masked, np.zeros(2), step=1)):
        with pytest.raises(ValueError, match="masked"):
            call()
    with np.errstate(invalid="ignore"):
        assert kef.sqrt(masked).tolist() == [2.0, None]  # a ufunc, as NumPy's
    with pytest.raises(ValueError, match="values"):
        kef.unpack([1, 2], np.zeros(7), step=3)
    with pytest.raises(TypeError):
        kef.pack(np.arange(7.0))


def test_threads_work_at_once():
    """Many threads in long calls, with errors of their own: each gets its own results and records."""
    x = np.linspace(0.1, 5, 200_000)
    expected, wrong = kef.tgamma(x), []

    def work(i):
        for _ in range(3):
            y = x.copy()
            y[i] = -1.0
            records = []
            got = kef.ln(y, errors=records.append)
            if [r.index for r in records] != [(i,)] or (kef.tgamma(x) != expected).any() or not np.isnan(got[i]):
                wrong.append(i)
    threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
    [t.start() for t in threads]
    [t.join() for t in threads]
    assert not wrong


def test_functions_are_ordinary_objects():
    assert pickle.loads(pickle.dumps(kef.exp)) is kef.exp
    assert kef.log is kef.ln and "Parameters" in kef.exp.__doc__
    names = {}
    exec("from kef import *", names)
    assert "exp" in names and not {"abs", "pow", "round"} & set(names)


@pytest.mark.skipif("not __import__('importlib').util.find_spec('dask')")
def test_arrays_of_other_libraries():
    import dask.array
    x = np.linspace(0, 1, 1000)
    y = kef.exp(dask.array.from_array(x, 100))
    assert isinstance(y, dask.array.Array)
    np.testing.assert_array_equal(y.compute(scheduler="threads"), kef.exp(x))
