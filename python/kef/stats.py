"""Statistics: of data that come in chunks (`Statistics`), and of arrays (the functions).

Observations are the rows of an array of n by p, variables its columns; an array of one axis is one
variable, whose results are scalars. Neither row- nor column-major arrays are copied.

>>> import numpy as np
>>> from kef import stats
>>> s = stats.Statistics(["mean", "variance", "minimum"], quantiles=[0.5])
>>> for chunk in np.split(np.arange(12.0), 3):
...     s.update(chunk)
>>> float(s.count), float(s.mean), float(s.variance), float(s.minimum), s.quantiles
(12.0, 5.5, 13.0, 0.0, array([5.]))
"""

import ctypes
import functools
import operator
import threading
import warnings
from typing import NamedTuple

import numpy as np

from ._library import aligned, contiguous, freed_with, integer, prototype, status_text, unmasked
from ._tables import ESTIMATES, PARAMETERS, STATS_METHODS, STATS_STATUS

_ROWS, _COLUMNS = 0x10000, 0x20000
_FULL = 0
_pointer, _i32, _i64, _u64 = ctypes.c_void_p, ctypes.c_int32, ctypes.c_int64, ctypes.c_uint64
_delete_task = prototype("__vtsSSDeleteTask", _pointer)
_image_size = prototype("__vtsSSGetStreamQuantilesSize", _pointer, result=_i64)
_image_save = prototype("__vtsSSSaveStreamQuantiles", _pointer, _pointer)
_image_load = prototype("__vtsSSLoadStreamQuantiles", _pointer, ctypes.c_char_p, _u64)
_NAMES = {code: name for name, code in STATS_STATUS.items()}


def _check(status, what):
    """Raises what a status means. Without convergence there are results, and a warning."""
    if status >= 0:
        return
    name, text = _NAMES.get(status), f"{what}: {status_text('ss', status)}"
    if name == "ITERATION_LIMIT":
        warnings.warn(text, RuntimeWarning, stacklevel=4)
    elif name == "NO_MEMORY":
        raise MemoryError(text)
    elif name == "NOT_POSITIVE_DEFINITE":
        raise np.linalg.LinAlgError(text)
    else:
        raise ValueError(text)


def _free(task):
    _delete_task(ctypes.addressof(task))


class _Task:
    """A task of the library, and the arrays that it refers to."""

    def __init__(self, p, dtype):
        self.p, self.dtype, self.letter = p, np.dtype(dtype), "d" if np.dtype(dtype).itemsize == 8 else "s"
        self.arrays, self._task = {}, _pointer()
        self._sizes = np.array([p, 1, _ROWS], np.int64)
        start = self._sizes.__array_interface__["data"][0]
        new = prototype(f"__vts{self.letter}SSNewTask", *[_pointer] * 7, _i32)
        _check(new(ctypes.addressof(self._task), start, start + 8, start + 16, None, None, None, 1), "task")
        freed_with(self, _free, self._task)
        self._edit = {"integer": prototype("__vtsiSSEditTask", _pointer, _i64, _pointer)}
        self._edit["input"] = self._edit["output"] = prototype(f"__vts{self.letter}SSEditTask", _pointer, _i64,
                                                               _pointer)

    def set(self, **arrays):
        """Registers arrays; numbers and lists become arrays."""
        for name, value in arrays.items():
            kind, number = PARAMETERS[name]
            dtype = np.int64 if kind == "integer" else self.dtype
            array = contiguous(value, dtype)
            self.arrays[name] = array
            _check(self._edit[kind](self._task, number, array.__array_interface__["data"][0]), name)

    def results(self, **shapes):
        """Registers new arrays of the given shapes, for results."""
        self.set(**{name: np.zeros(shape, self.dtype) for name, shape in shapes.items()})

    def observe(self, x, n, storage):
        """The observations of the next computations."""
        self._sizes[1:] = n, storage
        self.arrays["x"] = x
        _check(self._edit["input"](self._task, PARAMETERS["x"][1], x.__array_interface__["data"][0]), "x")

    def compute(self, name, estimates=0, method=0):
        function = prototype(f"_vts{self.letter}SS{name}", _pointer, _u64, _i32)
        _check(function(self._task, estimates, method), name)

    def merge(self, other, estimates, method):
        function = prototype(f"_vts{self.letter}SSMerge", _pointer, _pointer, _u64, _i32)
        _check(function(self._task, other._task, estimates, method), "merge")

    def image(self):
        size = _image_size(self._task)
        _check(size, "image")
        image = ctypes.create_string_buffer(size)
        _check(_image_save(self._task, ctypes.addressof(image)), "image")
        return image.raw

    def load(self, image):
        _check(_image_load(self._task, image, len(image)), "image")


class _Data(NamedTuple):
    x: np.ndarray
    n: int
    p: int
    storage: int
    one: bool  # one variable without an axis of its own


def _data(x, dtype=None, name="x"):
    """Observations as the library takes them."""
    x = unmasked(x, name)
    if x.dtype.kind not in "biuf" or x.dtype.itemsize > 8:
        raise TypeError(f"{name}: dtype {x.dtype} is none of float32, float64 and the integers")
    if x.ndim not in (1, 2):
        raise ValueError(f"{name}: it has {x.ndim} axes, not one or two")
    if dtype is None:
        dtype = np.dtype(np.float32 if x.dtype.kind == "f" and x.dtype.itemsize <= 4 else np.float64)
    x = x.astype(dtype, copy=False)
    one = x.ndim == 1
    n, p = (len(x), 1) if one else x.shape
    if not one and p == 0:
        raise ValueError(f"{name}: it has no variables")
    x = contiguous(x) if p == 1 or not x.flags.f_contiguous else aligned(x)
    return _Data(x, n, p, _COLUMNS if x.flags.c_contiguous and p > 1 else _ROWS, one)


def _some(data, name="x"):
    if not data.n:
        raise ValueError(f"{name}: it holds no observations")
    return data


def _numbers(values, name, shape, dtype=np.float64):
    """An array argument of a known shape."""
    array = unmasked(values, name)
    if array.dtype.kind not in "biuf":
        raise TypeError(f"{name}: dtype {array.dtype} is not one of real numbers")
    if array.shape != shape:
        raise ValueError(f"{name}: its shape is {array.shape}, not {shape}")
    return contiguous(array, dtype)


def _task_of(data):
    task = _Task(data.p, data.x.dtype)
    task.observe(data.x, data.n, data.storage)
    return task


def _plain(result, one):
    """A result whose last axis is that of the variables."""
    return (result[..., 0] if result.ndim > 1 else result[0]) if one else result


ALIASES = {"variance": "central_moment_2", "quantiles": "stream_quantiles"}
# What must be kept beside an estimate, so that its state can be taken up from the arrays.
_BESIDE = {"correlation": ["covariance"], "central_sum_3": ["central_sum_2"],
           "central_sum_4": ["central_sum_2", "central_sum_3"]}
_MINMAX = ("minimum", "maximum")


def _alone(method):
    """One thread at a time has the task."""
    @functools.wraps(method)
    def locked(self, *arguments, **named):
        with self._lock:
            return method(self, *arguments, **named)
    return locked


class Statistics:
    """Statistics of data that come in chunks, in one pass.

    Parameters
    ----------
    estimates : iterable of str, optional
        Of 'mean', 'variance' (or 'central_moment_2'), 'raw_moment_2' to 4, 'central_moment_3' and 4,
        'skewness', 'kurtosis', 'variation', 'covariance', 'correlation', 'minimum', 'maximum', 'sum',
        'raw_sum_2' to 4, 'central_sum_2' to 4, 'cross_product'. Central moments of all orders have the
        divisor of the unbiased variance, n - 1 without weights (one observation: 1).
    quantiles : array_like, optional
        Orders in [0, 1]: quantiles of the stream, in bounded memory.
    epsilon : float, optional
        Bound of the error of their ranks, in units of the number of observations: 2^-20 to 1/2.
    method : {'tiled', 'recurrence', 'raw'}, optional
        How moments are accumulated; 'tiled' is the fastest and the most accurate.
    dtype : {float64, float32}, optional
        Of the results; that of the first chunk without it.

    Results are attributes and items by these names, and `count`, the sum of weights. They can be
    pickled and merged: chunks may go to other processes and machines.

    Examples
    --------
    >>> import numpy as np
    >>> from kef import stats
    >>> a, b = stats.Statistics(["covariance"]), stats.Statistics(["covariance"])
    >>> x = np.arange(12.0).reshape(6, 2) ** 2
    >>> a.update(x[:4]); b.update(x[4:])
    >>> a.merge(b).covariance
    array([[1519.46666667, 1799.46666667],
           [1799.46666667, 2135.46666667]])
    """

    def __init__(self, estimates=("mean", "variance"), *, quantiles=None, epsilon=0.001, method="tiled",
                 dtype=None):
        names = [estimates] if isinstance(estimates, str) else list(estimates)
        self._asked = names
        wanted = [ALIASES.get(name, name) for name in names]
        for name, given in zip(wanted, names):
            if name not in ESTIMATES or name == "stream_quantiles":
                raise ValueError(f"estimates: {given!r} is none")
        if method not in ("tiled", "recurrence", "raw"):
            raise ValueError(f"method: {method!r} is not 'tiled', 'recurrence' or 'raw'")
        if dtype is not None and np.dtype(dtype).newbyteorder("=") not in (np.float64, np.float32):
            raise TypeError(f"dtype: {np.dtype(dtype)} is neither float64 nor float32")
        self._method, self._dtype = method, None if dtype is None else np.dtype(dtype).newbyteorder("=")
        self._orders, self._epsilon = None, float(epsilon)
        if quantiles is not None:
            self._orders = np.array(quantiles, np.float64, ndmin=1).ravel()
            if not self._orders.size or not ((self._orders >= 0) & (self._orders <= 1)).all():
                raise ValueError("quantiles: orders between 0 and 1 are needed")
            if not 2.0**-20 <= self._epsilon <= 0.5:
                raise ValueError("epsilon: it is not between 2**-20 and 1/2")
        everything = [beside for name in wanted for beside in (name, *_BESIDE.get(name, ()))]
        self._basic = [name for name in everything if name not in _MINMAX]
        self._minmax = [name for name in everything if name in _MINMAX]
        self._task, self._one, self._pending, self._lock = None, None, None, threading.RLock()

    # ---- the task

    def _bits(self, names):
        return functools.reduce(operator.or_, (ESTIMATES[name][0] for name in names), 0)

    def _start(self, p, one, dtype):
        """The task with its arrays, when the number of variables is known."""
        task = _Task(p, dtype)
        kept = {array for name in self._basic for column in ESTIMATES[name][3:] for array in column}
        matrices = {name for name, row in ESTIMATES.items() if row[2]}
        task.results(accumulated_weights=2, **{name: (p, p) if name in matrices else p for name in kept})
        task.set(**{f"{name}_storage": _FULL for name in kept & matrices})
        task.set(**{name: np.full(p, np.nan) for name in self._minmax})
        if self._orders is not None:
            task.results(stream_quantiles=(p, len(self._orders)))
            task.set(stream_quantile_orders=self._orders, stream_quantile_order_count=len(self._orders),
                     stream_quantile_parameters=[self._epsilon], stream_quantile_parameter_count=1)
        self._task, self._one, self._dtype = task, one, task.dtype

    @_alone
    def update(self, x, weights=None):
        """Adds observations.

        Parameters
        ----------
        x : array_like
            n observations of one variable, or n by p.
        weights : array_like of n numbers, optional
            1 without it. Negative ones (method 'recurrence') take observations away, as long as their sum
            stays positive.
            Weights play no part for quantiles and extremes.
        """
        data = _data(x, self._dtype)
        if self._task is not None and (data.p != self._task.p or data.one != self._one):
            raise ValueError(f"x: it has {'no axis of' if data.one else data.p} variables, the chunks before had "
                             f"{'none' if self._one else self._task.p}")
        if weights is not None:
            weights = _numbers(weights, "weights", (data.n,), data.x.dtype)
            if not np.isfinite(weights).all():
                raise ValueError("weights: a number is not finite")
        if self._task is None:
            self._start(data.p, data.one, data.x.dtype)
        task = self._task
        if not data.n:
            return
        if weights is None and "weights" in task.arrays:
            weights = np.ones(data.n, task.dtype)
        if weights is not None:
            task.set(weights=weights)
        task.observe(data.x, data.n, data.storage)
        task.compute("Basic", self._bits(self._basic), STATS_METHODS[self._method.upper()])
        if not self._basic:
            task.arrays["accumulated_weights"] += (data.n if weights is None else weights.sum(),) * 2
        if self._minmax:
            task.compute("Minmax", self._bits(self._minmax), STATS_METHODS["MINMAX"])
        if self._orders is not None:
            self._sketch(data)
        task.arrays.pop("x")

    def _sketch(self, data):
        """Adds all observations to the sketch but the last one, which goes with the question for the
        quantiles: the library answers together with an observation alone."""
        if self._pending is not None:
            self._feed(self._pending, 0)
        if data.n > 1:
            self._feed(contiguous(data.x[:-1]), 0)
        self._pending = np.array(data.x[-1:])

    def _feed(self, x, orders):
        """Adds observations to the sketch, and asks for quantiles of so many orders."""
        self._task.arrays["stream_quantile_order_count"][...] = orders
        self._task.observe(x, len(x), _ROWS if self._task.p == 1 else _COLUMNS)
        self._task.compute("StreamQuantiles")

    def _settle(self):
        """Brings the quantiles up to date."""
        if self._pending is not None:
            self._feed(self._pending, len(self._orders))
            self._pending = None
        elif self._orders is not None and self._task is not None:
            self._task.arrays["stream_quantile_order_count"][...] = len(self._orders)

    # ---- merging, pickling

    def merge(self, other):
        """Adds what another one has seen. Returns this one; the other stays as it is."""
        if not isinstance(other, Statistics):
            raise TypeError(f"other: {type(other).__name__} is not Statistics")
        if other is self:
            raise ValueError("other: it is this one")
        if self._key() != other._key():
            raise ValueError("other: it has other estimates, orders, epsilon or method")
        # Two that are merged into each other at once take their locks in one order.
        first, second = sorted((self, other), key=id)
        with first._lock, second._lock:
            return self._merge(other)

    def _merge(self, other):
        if other._task is None:
            return self
        if self._dtype is not None and self._dtype != other._dtype:
            raise ValueError(f"other: its dtype is {other._dtype}, not {self._dtype}")
        if self._task is None:
            self.__setstate__(other.__getstate__())
            return self
        if self._task.p != other._task.p or self._one != other._one:
            raise ValueError(f"other: it has {other._task.p} variables, not {self._task.p}")
        self._settle()
        other._settle()
        names = [*self._basic, *self._minmax, *(["stream_quantiles"] if self._orders is not None else [])]
        mine, others = (s._task.arrays["accumulated_weights"] for s in (self, other))
        total = mine + others
        if others[0] or others[1]:
            self._task.merge(other._task, self._bits(names), STATS_METHODS[self._method.upper()])
        if not self._basic:
            mine[...] = total
        return self

    def _key(self):
        orders = () if self._orders is None else (*self._orders, self._epsilon)
        return set(self._basic), set(self._minmax), orders, self._method

    def __iadd__(self, other):
        return self.merge(other)

    def __add__(self, other):
        return self.copy().merge(other)

    def copy(self):
        made = Statistics.__new__(Statistics)
        made.__setstate__(self.__getstate__())
        return made

    @_alone
    def __getstate__(self):
        state = {name: value for name, value in self.__dict__.items() if name not in ("_task", "_pending", "_lock")}
        if self._task is not None:
            self._settle()
            kept = {name: array.copy() for name, array in self._task.arrays.items()
                    if PARAMETERS[name][0] == "output"}
            image = self._task.image() if self._orders is not None and self._task.arrays[
                "accumulated_weights"].any() else None
            state["_saved"] = self._task.p, kept, image
        return state

    def __setstate__(self, state):
        """A state that was read from somewhere is looked at before the library is given addresses."""
        try:
            state = dict(state)
            p, kept, image = state.pop("_saved", (None, None, None))
            lock = self.__dict__.get("_lock")
            Statistics.__init__(self, state["_asked"], quantiles=state["_orders"], epsilon=state["_epsilon"],
                                method=state["_method"], dtype=state["_dtype"])
            self._lock = lock or self._lock
            if p is not None:
                p, one = operator.index(p), bool(state["_one"])
                shapes = {np.shape(array)[0] for name, array in kept.items() if name != "accumulated_weights"}
                if self._dtype is None or one and p != 1 or p < 1 or shapes - {p}:
                    raise ValueError("the shapes do not fit")
                self._start(p, one, self._dtype)
                arrays = {name: array for name, array in self._task.arrays.items()
                          if PARAMETERS[name][0] == "output"}
                if arrays.keys() != kept.keys():
                    raise ValueError("other results")
                for name, array in arrays.items():
                    array[...] = _numbers(kept[name], name, array.shape, array.dtype)
                if image is not None:
                    self._task.load(bytes(memoryview(image)))
        except (AttributeError, IndexError, KeyError, TypeError, ValueError) as problem:
            raise ValueError(f"state: it is not that of Statistics: {problem}") from None
        # What else was set on the object.
        self.__dict__.update((name, value) for name, value in state.items() if name not in self.__dict__)

    # ---- results

    @property
    def count(self):
        """The sum of weights: the number of observations without them."""
        return float(self._task.arrays["accumulated_weights"][0]) if self._task is not None else 0.0

    @property
    def names(self):
        """The results that there are."""
        return [*self._asked, *(["quantiles"] if self._orders is not None else [])]

    @_alone
    def __getitem__(self, name):
        if name not in self.names and name not in map(ALIASES.get, self.names):
            raise KeyError(f"{name!r} is none of {', '.join(self.names)}")
        if not self.count and not (self._task is not None and self._task.arrays["accumulated_weights"].any()):
            raise ValueError(f"{name}: no observation yet")
        stored = ALIASES.get(name, name)
        if stored == "stream_quantiles":
            self._settle()
            return _plain(self._task.arrays[stored].T.copy(), self._one)
        result = self._task.arrays[stored].copy()
        return result.reshape(-1)[0] if self._one else result

    def __getattr__(self, name):
        if not name.startswith("_") and (name in ESTIMATES or name in ALIASES):
            try:
                return self[name]
            except KeyError as error:
                raise AttributeError(error.args[0]) from None
        raise AttributeError(f"Statistics has no attribute {name!r}")

    def results(self):
        """All results by name, and `count`."""
        return {"count": self.count} | {name: self[name] for name in self.names}

    def __repr__(self):
        return f"<Statistics of {self.count:g}: {', '.join(self.names)}>"


def merged(parts):
    """The statistics of all parts, which stay as they are: for `functools.reduce`, dask and the like.

    Examples
    --------
    >>> import numpy as np
    >>> from kef import stats
    >>> parts = [stats.Statistics("sum") for i in range(3)]
    >>> for i, part in enumerate(parts):
    ...     part.update(np.full(2, float(i)))
    >>> float(stats.merged(parts).sum)
    6.0
    """
    parts = list(parts)
    if not parts:
        raise ValueError("parts: there are none")
    for part in parts:
        if not isinstance(part, Statistics):
            raise TypeError(f"parts: {type(part).__name__} is not Statistics")
    total = parts[0].copy()
    for part in parts[1:]:
        total.merge(part)
    return total


def from_sums(estimates, count, count_of_squares=None, **sums):
    """Estimates from sums that were made elsewhere.

    Parameters
    ----------
    estimates : iterable of str
        As of `Statistics`, but sums, minimum and maximum.
    count : float
        The sum of weights: without weights the number of observations.
    count_of_squares : float, optional
        The sum of squared weights; `count` without it.
    **sums : array_like of p numbers, or p by p
        'sum', 'raw_sum_2' to 4, 'central_sum_2' to 4, 'cross_product', as far as the estimates need them;
        also 'mean' and central moments, where the estimates go on from those.

    Returns
    -------
    dict

    Examples
    --------
    >>> from kef import stats
    >>> stats.from_sums(["mean", "variance"], 4, sum=[10.0], central_sum_2=[5.0])
    {'mean': array([2.5]), 'variance': array([1.66666667])}
    """
    names = [estimates] if isinstance(estimates, str) else list(estimates)
    if not sums:
        raise TypeError("sums: there are none")
    first, values = next(iter(sums.items()))
    if not np.ndim(values) or not np.size(values):
        raise ValueError(f"{first}: an array of a number for each variable is needed")
    if not 0 < count < np.inf:
        raise ValueError(f"count: {count} is not positive and finite")
    p = len(values)
    task = _Task(p, np.float64)
    matrices = {name for name, row in ESTIMATES.items() if row[2]}
    for name, values in sums.items():
        if name not in PARAMETERS or name not in ESTIMATES:
            raise TypeError(f"{name}: it is no sum")
        task.set(**{name: _numbers(values, name, (p, p) if name in matrices else (p,)).copy()})
    bits = 0
    for given in names:
        name = ALIASES.get(given, given)
        if name not in ESTIMATES or name in _MINMAX or name == "stream_quantiles":
            raise ValueError(f"estimates: {given!r} is none that comes from sums")
        bits |= ESTIMATES[name][0]
        if name not in task.arrays:
            task.results(**{name: (p, p) if name in matrices else p})
    for name in matrices & set(task.arrays):
        task.set(**{f"{name}_storage": _FULL})
    task.set(accumulated_weights=[count, count if count_of_squares is None else count_of_squares])
    try:
        task.compute("Basic", bits, STATS_METHODS["SUMS"])
    except ValueError as problem:
        raise ValueError(f"sums: {', '.join(sums)} do not give {', '.join(names)}: {problem}") from None
    return {given: task.arrays[ALIASES.get(given, given)] for given in names}


# ---- functions of arrays

def quantiles(x, orders):
    """Quantiles by definition 7 of Hyndman and Fan, as `numpy.quantile`, the first axis those of the
    orders.

    Examples
    --------
    >>> from kef import stats
    >>> stats.quantiles([3.0, 1.0, 2.0, 10.0], [0.5, 1.0])
    array([ 2.5, 10. ])
    """
    data, orders = _some(_data(x)), np.array(orders, np.float64, ndmin=1).ravel()
    if not orders.size or not ((orders >= 0) & (orders <= 1)).all():
        raise ValueError("orders: numbers between 0 and 1 are needed")
    task = _task_of(data)
    task.set(quantile_orders=orders, quantile_order_count=len(orders))
    task.results(quantiles=(data.p, len(orders)))
    task.compute("Quantiles")
    return _plain(task.arrays["quantiles"].T.copy(), data.one)


def order_statistics(x):
    """The observations of each variable in ascending order.

    Examples
    --------
    >>> from kef import stats
    >>> stats.order_statistics([3.0, 1.0, 2.0])
    array([1., 2., 3.])
    """
    data = _some(_data(x))
    task = _task_of(data)
    task.set(order_statistics_storage=_ROWS)
    task.results(order_statistics=(data.p, data.n))
    task.compute("Quantiles")
    return _plain(task.arrays["order_statistics"].T.copy(), data.one)


def median_absolute_deviation(x):
    """The median of the distances from the median.

    Examples
    --------
    >>> from kef import stats
    >>> float(stats.median_absolute_deviation([1.0, 2.0, 4.0, 8.0, 100.0]))
    3.0
    """
    data = _some(_data(x))
    task = _task_of(data)
    task.results(median_absolute_deviation=data.p)
    task.compute("MAD")
    return _plain(task.arrays["median_absolute_deviation"], data.one)


def weighted_median(x, weights):
    """The least x with half of the weight at or below it; the mean with the next one where that is
    exactly a half.

    Examples
    --------
    >>> from kef import stats
    >>> float(stats.weighted_median([1.0, 2.0, 3.0], [1, 1, 5]))
    3.0
    """
    data = _some(_data(x))
    task = _task_of(data)
    task.set(weights=_numbers(weights, "weights", (data.n,)))
    task.results(quantiles=data.p)
    task.compute("WMedian")
    return _plain(task.arrays["quantiles"], data.one)


def mahalanobis_distance(x, mean=None, covariance=None):
    """The distance of each observation from a mean, in the metric of a covariance; those of x itself
    without them.

    Examples
    --------
    >>> from kef import stats
    >>> stats.mahalanobis_distance([[3.0, 4.0]], [0.0, 0.0], [[1.0, 0.0], [0.0, 4.0]])
    array([3.60555128])
    """
    data = _some(_data(x))
    if mean is None or covariance is None:
        own = Statistics(["mean", "covariance"], dtype=data.x.dtype)
        own.update(data.x.reshape(data.n, data.p))
        mean, covariance = own.mean if mean is None else mean, own.covariance if covariance is None else covariance
    task = _task_of(data)
    task.set(mean=_numbers(mean, "mean", (data.p,)), covariance_storage=_FULL,
             covariance=_numbers(covariance, "covariance", (data.p, data.p)))
    task.results(mahalanobis_distance=data.n)
    task.compute("MahDistance")
    return task.arrays["mahalanobis_distance"]


class Partial(NamedTuple):
    """Covariance and correlation with other variables held fixed."""
    covariance: np.ndarray
    correlation: np.ndarray


def _square(matrix, name):
    matrix = unmasked(matrix, name)
    if matrix.ndim != 2 or matrix.shape[0] != matrix.shape[1] or not matrix.size:
        raise ValueError(f"{name}: a square matrix is needed")
    return _numbers(matrix, name, matrix.shape)


def partial_covariance(covariance, of, given):
    """Covariance and correlation of the variables `of` with the variables `given` held fixed; both are
    lists of indices.

    Examples
    --------
    >>> from kef import stats
    >>> stats.partial_covariance([[2.0, 1.0, 1.0], [1.0, 2.0, 1.0], [1.0, 1.0, 1.0]], [0, 1], [2]).covariance
    array([[1., 0.],
           [0., 1.]])
    """
    covariance = _square(covariance, "covariance")
    p, marks = len(covariance), np.zeros(len(covariance), np.int64)
    for name, indices, mark in (("of", of, 1), ("given", given, -1)):
        indices = np.array(indices, ndmin=1)
        if len(np.unique(indices)) != indices.size or indices.dtype.kind not in "iu" or not ((indices >= 0) & (indices < p)).all() or marks[indices].any():
            raise ValueError(f"{name}: different indices of variables, 0 .. {p - 1}, are needed")
        marks[indices] = mark
    y = int((marks > 0).sum())
    task = _Task(p, np.float64)
    task.set(partial_indices=marks, covariance=covariance, covariance_storage=_FULL,
             partial_covariance_storage=_FULL, partial_correlation_storage=_FULL)
    task.results(partial_covariance=(y, y), partial_correlation=(y, y))
    task.compute("PartialCovariance")
    # Rows stand in the order of the variables; bring them to that of the caller.
    order = np.argsort(np.argsort(np.asarray(of)))
    return Partial(*(task.arrays[f"partial_{name}"][np.ix_(order, order)] for name in Partial._fields))


class Pooled(NamedTuple):
    """What `pooled_covariance` finds."""
    mean: np.ndarray
    covariance: np.ndarray
    group_means: np.ndarray
    group_covariances: np.ndarray


def pooled_covariance(x, groups, weights=None):
    """Covariance within groups, and the groups' own.

    Parameters
    ----------
    x : array_like, n by p
    groups : array_like of n int
        0 to G - 1; a negative one leaves the observation out.
    weights : array_like of n numbers, optional

    Returns
    -------
    Pooled
        mean (p), covariance (p, p), group_means (G, p), group_covariances (G, p, p)

    Examples
    --------
    >>> from kef import stats
    >>> stats.pooled_covariance([[1.0], [3.0], [10.0], [14.0]], [0, 0, 1, 1]).covariance
    array([[5.]])
    """
    data, groups = _some(_data(x)), np.asarray(groups)
    if groups.dtype.kind not in "iu" or groups.shape != (data.n,):
        raise ValueError(f"groups: {data.n} integers are needed")
    count = max(int(groups.max()) + 1, 0)
    if count > max(1000, 100 * data.n):
        raise ValueError(f"groups: {count} groups for {data.n} observations")
    task = _task_of(data)
    task.set(group_indices=groups, requested_groups=np.ones(max(count, 1), np.int64),
             pooled_covariance_storage=_FULL, group_covariances_storage=_FULL)
    if weights is not None:
        task.set(weights=_numbers(weights, "weights", (data.n,)))
    p = data.p
    task.results(pooled_mean=p, pooled_covariance=(p, p), group_means=(count, p), group_covariances=(count, p, p))
    task.compute("PooledCovariance")
    return Pooled(*(task.arrays[name] for name in ("pooled_mean", "pooled_covariance", "group_means",
                                                   "group_covariances")))


def nearest_correlation(matrix):
    """A correlation matrix near a symmetric matrix that has negative eigenvalues.

    Examples
    --------
    >>> from kef import stats
    >>> stats.nearest_correlation([[1.0, 2.0], [2.0, 1.0]])
    array([[1., 1.],
           [1., 1.]])
    """
    matrix = _square(matrix, "matrix")
    task = _Task(len(matrix), np.float64)
    task.set(correlation=matrix, correlation_storage=_FULL, parametrized_matrix_storage=_FULL)
    task.results(parametrized_matrix=matrix.shape)
    task.compute("CorParametrization")
    return task.arrays["parametrized_matrix"]


def outliers(x, alpha=0.05, start=2, tolerance=0.0):
    """Which observations are outliers, by BACON: an array of bool.

    Parameters
    ----------
    x : array_like, n by p
    alpha : float, optional
        Probability with which any observation of normal data is called an outlier.
    start : {2, 1}, optional
        2: from the medians, for up to 40 % of outliers; 1: from the mean, for some 20 %, whatever the
        units of the variables are.
    tolerance : float, optional
        Stops where the subset changes by so small a part.

    Examples
    --------
    >>> from kef import stats
    >>> stats.outliers([1.0, 2.0, 3.0, 2.0, 1.5, 2.5, 100.0]).nonzero()[0].tolist()
    [6]
    """
    data = _some(_data(x))
    task = _task_of(data)
    task.set(outlier_parameters=[start, alpha, tolerance], outlier_parameter_count=3)
    task.results(outlier_weights=data.n)
    task.compute("OutliersDetection")
    return task.arrays["outlier_weights"] == 0


class Robust(NamedTuple):
    """Robust mean and covariance."""
    mean: np.ndarray
    covariance: np.ndarray


def robust_covariance(x, breakdown=0.5, rejection=0.05, tolerance=1e-8, limit=200):
    """Location and covariance that outliers do not move: the S-estimate with the translated biweight.

    Parameters
    ----------
    x : array_like, n by p
    breakdown : float, optional
        The share of outliers that it bears, up to 1/2.
    rejection : float, optional
        Probability with which an observation of normal data has weight 0.
    tolerance, limit : float, int, optional
        Stops where a step changes less, or after so many.

    Examples
    --------
    >>> from kef import stats
    >>> round(float(stats.robust_covariance([1.0, 2.0, 3.0, 2.0, 1.5, 2.5, 100.0]).mean[0]), 3)
    2.0
    """
    data = _some(_data(x))
    task = _task_of(data)
    task.set(robust_parameters=[breakdown, rejection, tolerance, limit], robust_parameter_count=4,
             robust_covariance_storage=_FULL)
    task.results(robust_mean=data.p, robust_covariance=(data.p, data.p))
    task.compute("RobustCovariance")
    return Robust(task.arrays["robust_mean"], task.arrays["robust_covariance"])


class Missing(NamedTuple):
    """What `missing_values` finds."""
    mean: np.ndarray
    covariance: np.ndarray
    imputations: np.ndarray


class Prior(NamedTuple):
    """The prior of `missing_values`: covariances of an inverse Wishart law of nu degrees of freedom and a
    matrix, means normal around `mean` with that covariance over tau."""
    tau: float
    nu: float
    mean: np.ndarray
    matrix: np.ndarray


def _law(mean, matrix, name, p):
    """A mean and the upper triangle of a matrix, row by row, behind one another."""
    matrix = _numbers(matrix, f"{name}: the matrix", (p, p))
    return np.concatenate([_numbers(mean, f"{name}: the mean", (p,)), matrix[np.triu_indices(p)]])


def missing_values(x, imputations=0, steps=1000, between=20, tolerance=1e-8, *, start=None, prior=None):
    """Mean and covariance (divisor n) of normal data in which NaN is a missing value, by EM, and
    imputations by data augmentation.

    Parameters
    ----------
    x : array_like, n by p
    imputations : int, optional
        How many copies of x with the gaps filled in.
    steps, tolerance : int, float, optional
        Of EM.
    between : int, optional
        Steps of data augmentation from one imputation to the next.
    start : (mean, covariance), optional
        Where EM begins, instead of means and variances of what is there.
    prior : Prior or (tau, nu, mean, matrix), optional
        Of the data augmentation, instead of tau 0, nu -1 and the matrix 0.

    Returns
    -------
    Missing
        mean (p), covariance (p, p), imputations (imputations, n, p)

    Examples
    --------
    >>> import numpy as np
    >>> from kef import stats
    >>> x = [[1.0, 2.0], [2.0, np.nan], [3.0, 5.0], [4.0, 9.0], [5.0, 9.5]]
    >>> stats.missing_values(x, imputations=3).imputations.shape
    (3, 5, 2)
    """
    data = _some(_data(x))
    imputations = integer(imputations, "imputations")
    if imputations < 0:
        raise ValueError("imputations: it is negative")
    p, gaps = data.p, np.isnan(data.x.reshape(data.n, data.p))
    law = p + p * (p + 1) // 2
    missing = int(gaps.sum())
    task = _task_of(data)
    task.set(missing_a=[steps, between, tolerance, imputations, 0], missing_a_count=5,
             missing_d_count=imputations * missing, missing_e_count=(1 + imputations) * law)
    if start is not None:
        mean, covariance = start
        law_of_start = _law(mean, covariance, "start", p)
        task.set(missing_b=law_of_start, missing_b_count=law_of_start.size)
    if prior is not None:
        tau, nu, mean, matrix = prior
        law_of_prior = np.concatenate([[float(tau), float(nu)], _law(mean, matrix, "prior", p)])
        task.set(missing_c=law_of_prior, missing_c_count=law_of_prior.size)
    task.results(missing_d=imputations * missing, missing_e=(1 + imputations, law))
    task.compute("MissingValues")
    estimate = task.arrays["missing_e"][0]
    covariance = np.zeros((p, p), data.x.dtype)
    covariance[np.triu_indices(p)] = estimate[p:]
    covariance = np.triu(covariance, 1).T + covariance
    filled = np.repeat(data.x.reshape(1, data.n, p), imputations, axis=0)
    filled[:, gaps] = task.arrays["missing_d"].reshape(imputations, missing)
    return Missing(estimate[:p].copy(), covariance, filled)


__all__ = ["Statistics", "merged", "from_sums", "quantiles", "order_statistics", "median_absolute_deviation", "weighted_median",
           "mahalanobis_distance", "partial_covariance", "pooled_covariance", "nearest_correlation", "outliers",
           "robust_covariance", "Prior", "missing_values"]
