"""Random streams: generators for `numpy.random.Generator`, and vector draws of the library's own.

Each generator is a `numpy.random.BitGenerator`. A `Generator` reads its bits 256 words ahead; the
vector draws, skips and leapfrogs below go on behind what was read ahead.

>>> import numpy as np
>>> from kef import random
>>> stream = random.MRG32K3A(2024)
>>> stream.normal(3, mean=10.0, sigma=2.0)
array([10.700568  ,  9.17246713, 13.50553281])
>>> generator = np.random.Generator(stream)
>>> generator.integers(6, size=4).tolist()
[4, 1, 2, 3]
"""

import ctypes
import math
import operator
import os
import pathlib
import secrets
import stat
import sys
import threading
import traceback
import weakref

import numpy as np

from ._laws import LAWS, METHODS
from ._library import address, answers, contiguous, freed_with, integer, library, prototype, short, status_text
from ._tables import DRAWS, GENERATORS, RNG_STATUS

_WORDS = 256
_SHORT = 1000  # numbers; calls for fewer keep the interpreter's lock
_BLOCK = 1 << 30  # numbers of one call

_pointer, _i32, _u64 = ctypes.c_void_p, ctypes.c_int32, ctypes.c_uint64
_new = prototype("__vtsNewStreamEx", _pointer, _i32, _i32, _pointer)
_delete = prototype("__vtsDeleteStream", _pointer)
_copy = prototype("__vtsCopyStream", _pointer, _pointer)
_skip = prototype("__vtsSkipAheadStream", _pointer, _u64)
_leapfrog = prototype("__vtsLeapfrogStream", _pointer, _i32, _i32)
_size_of_image = prototype("__vtsGetStreamSize", _pointer)
_save = prototype("__vtsSaveStreamM", _pointer, _pointer)
_load = prototype("__vtsLoadStreamMBounded", _pointer, ctypes.c_char_p, _u64)
_brng_of = prototype("__vtsGetStreamStateBrng", _pointer)


class _Source(ctypes.Structure):
    """kef_bit_source."""
    _fields_ = [("stream", _pointer), ("status", _i32), ("left", _i32), ("words", ctypes.c_uint32 * _WORDS)]


class _Bitgen(ctypes.Structure):
    """bitgen_t of numpy.random."""
    _fields_ = [("state", _pointer), ("next_uint64", _pointer), ("next_uint32", _pointer),
                ("next_double", _pointer), ("next_raw", _pointer)]


def _capsule_pointer(capsule, name):
    get = ctypes.PYFUNCTYPE(_pointer, ctypes.py_object, ctypes.c_char_p)(("PyCapsule_GetPointer", ctypes.pythonapi))
    return get(capsule, name)


_NEXT = {f"next_{kind}": ctypes.cast(getattr(library, f"kef_vts_next_{function}"), _pointer).value
         for kind, function in (("uint64", "uint64"), ("uint32", "uint32"), ("double", "double"),
                                ("raw", "uint64"))}


class StreamError(RuntimeError):
    """What a stream refuses: the library's status in words, and as `status`."""

    def __init__(self, status, what):
        super().__init__(f"{what}: {status_text('vts', status)}")
        self.status = status


def _check(status, what):
    if status == RNG_STATUS["NO_MEMORY"]:
        raise MemoryError(what)
    if status < 0:
        raise StreamError(status, what)


def _free(source):
    _delete(ctypes.addressof(source))  # the stream is its first field


class Stream(np.random.BitGenerator):
    """A random stream; the generators are its subclasses.

    Parameters
    ----------
    seed : None, int, array_like of int or SeedSequence, optional
        Goes through `numpy.random.SeedSequence`, which makes the words of the generator's seed.
    words : array_like of int, optional
        The seed words themselves, as the C interface takes them, in place of `seed`; empty for the
        generator's default.

    Examples
    --------
    >>> from kef import random
    >>> a = random.MT19937(words=[2024])
    >>> b = a.jumped(1000)
    >>> ignored = a.uniform(1000)
    >>> bool((a.uniform(5) == b.uniform(5)).all())
    True
    """

    _name = None
    _seed_words = 8
    _members = 1  # parameter sets
    _distance = 0  # binary logarithm of the distance of spawned pieces, 0: it cannot skip

    def __init__(self, seed=None, *, words=None, member=0):
        if self._name is None:
            raise TypeError("Stream is the base of the generators: make one of those")
        super().__init__(seed)
        self._seeds = getattr(self, "_seed_seq")  # the base's own, which cannot be set
        member = integer(member, "member")
        if not 0 <= member < self._members:
            raise ValueError(f"member: {self._name} has the parameter sets 0 .. {self._members - 1}")
        if words is None:
            words = self._seeds.generate_state(self._seed_words)
        words = np.asarray(words)
        if words.size and (words.dtype.kind not in "iu" or words.min() < 0 or words.max() >= 2**32):
            raise ValueError("words: they are not integers of 32 bits")
        words = contiguous(words, np.uint32).ravel()
        stream = _pointer()
        _check(_new(ctypes.addressof(stream), GENERATORS[self._name] + member, words.size, address(words)),
               self._name)
        self._attach(stream.value)

    @property
    def seed_seq(self):
        """The SeedSequence that `spawn` by seeds goes on from."""
        return self._seeds

    def _attach(self, stream, words=(), spawned=(0, 0)):
        """Takes a stream over, with words that were read ahead of it."""
        self._source = _Source(stream, 0, len(words))
        self._source.words[_WORDS - len(words):] = list(words)
        self._spawned, self._level = spawned
        freed_with(self, _free, self._source)
        bitgen = _Bitgen.from_address(_capsule_pointer(self.capsule, b"BitGenerator"))
        bitgen.state = ctypes.addressof(self._source)
        for field, function in _NEXT.items():
            setattr(bitgen, field, function)

    @classmethod
    def _of(cls, stream, words=(), spawned=(0, 0), seed=None):
        """A new object over a stream."""
        self = cls.__new__(cls)
        np.random.BitGenerator.__init__(self, 0 if seed is None else seed)
        self._seeds = np.random.SeedSequence() if seed is None else seed
        self._attach(stream, words, spawned)
        return self

    @property
    def _stream(self):
        return self._source.stream

    @property
    def _ahead(self):
        return list(self._source.words[_WORDS - self._source.left:]) if self._source.left else []

    # ---- copies, images

    def copy(self):
        """A stream that goes on alike, what was read ahead included."""
        stream = _pointer()
        with self.lock:
            _check(_copy(ctypes.addressof(stream), self._stream), "copy")
            return self._of(stream.value, self._ahead, (self._spawned, self._level), self._seeds)

    def to_bytes(self):
        """The image of the stream, as the C interface saves it, without what was read ahead."""
        with self.lock:
            return self._image()

    def _image(self):
        size = _size_of_image(self._stream)
        _check(size, "to_bytes")
        image = ctypes.create_string_buffer(size)
        _check(_save(self._stream, ctypes.addressof(image)), "to_bytes")
        return image.raw

    @property
    def state(self):
        """Image, words read ahead and pieces spawned, as a dictionary; it may be set."""
        with self.lock:
            return {"bit_generator": self._name, "image": self._image(), "ahead": self._ahead,
                    "spawned": (self._spawned, self._level), "seed_seq": self._seeds}

    @state.setter
    def state(self, value):
        if not isinstance(value, dict) or value.get("bit_generator") != self._name:
            raise ValueError(f"state: it is not that of {self._name}")
        try:  # all of it, before anything is changed
            ahead = [operator.index(word) for word in value["ahead"]]
            spawned, level = map(operator.index, value["spawned"])
            image, seeds = value["image"], value["seed_seq"]
        except (KeyError, TypeError, ValueError) as problem:
            raise ValueError(f"state: it is not that of {self._name}: {problem!r}") from None
        if len(ahead) > _WORDS or not all(0 <= word < 2**32 for word in ahead):
            raise ValueError("state: 'ahead' holds no words that were read ahead")
        if spawned < 0 or not 0 <= level < 2**31:
            raise ValueError("state: 'spawned' holds no counts")
        if not isinstance(seeds, np.random.bit_generator.ISeedSequence):
            raise ValueError("state: 'seed_seq' is no seed sequence")
        other = _stream_of(image)
        if _brng_of(other) >> 20 != GENERATORS[self._name] >> 20:
            _delete(ctypes.addressof(_pointer(other)))
            raise ValueError(f"state: it is not that of {self._name}")
        with self.lock:
            _free(self._source)
            self._source.stream, self._source.left = other, len(ahead)
            self._source.words[_WORDS - len(ahead):] = ahead
            self._spawned, self._level, self._seeds = spawned, level, seeds

    def __reduce__(self):
        return _blank, (self._name,), self.state

    def __setstate__(self, state):
        self.state = state

    def __copy__(self):
        return self.copy()

    def __deepcopy__(self, memo):
        return self.copy()

    def save(self, path):
        """Writes the image to a file, which `load` and the C interface read. The file is whole, or
        as it was. Devices and pipes are written to as they are."""
        try:
            _write(self.to_bytes(), path)
        except OSError as problem:  # a write names no file, and who reads it knows this one alone
            raise OSError(problem.errno, problem.strerror, os.fspath(path)) from None

    # ---- pieces of one sequence

    def skip(self, count):
        """Drops the next `count` numbers, which may be any, in place. Returns the stream."""
        count = integer(count, "count")
        if count < 0:
            raise ValueError("count: it is negative")
        if count >> 80:
            raise ValueError("count: it is 2**80 or more")
        with self.lock:
            while count:
                step = min(count, 1 << 63)
                _check(_skip(self._stream, step), f"skip of {self._name}")
                count -= step
        return self

    def jumped(self, count):
        """A stream that is `count` numbers further on."""
        return self.copy().skip(count)

    def leapfrog(self, k, count):
        """Goes on with numbers k, k + count, k + 2 count, ... alone, in place. Returns the stream."""
        k, count = integer(k, "k"), integer(count, "count")
        if not 0 <= k < count < 1 << 31:
            raise ValueError("k, count: 0 <= k < count < 2**31 is needed")
        with self.lock:
            _check(_leapfrog(self._stream, k, count), f"leapfrog of {self._name}")
        return self

    def spawn(self, n_children, method=None):
        """Streams that are independent of this one and of one another, also of those spawned later.

        Parameters
        ----------
        n_children : int
        method : {'skip', 'members', 'seeds'}, optional
            'skip': pieces of this stream's sequence, far ahead and far apart, which do not overlap;
            'members': other parameter sets of the generator (MT2203, WH), with seeds of their own;
            'seeds': other seeds, by `SeedSequence.spawn`. The default is the best that the generator
            has.

        Returns
        -------
        list of Stream

        Examples
        --------
        >>> from kef import random
        >>> a, b = random.MRG32K3A(1).spawn(2)
        >>> bool(a.uniform() == b.uniform())
        False
        """
        n_children = integer(n_children, "n_children")
        if n_children < 0:
            raise ValueError("n_children: it is negative")
        if method is None:
            method = "members" if self._members > 1 else "skip" if self._distance else "seeds"
        first, self._spawned = self._spawned, self._spawned + n_children
        try:
            if method == "skip":
                return self._pieces(first, n_children)
            seeds = self._seeds.spawn(n_children)
            if method == "seeds":
                return [type(self)(seed) for seed in seeds]
            if method == "members" and self._members > 1:
                return self._sets(first, seeds)
        except BaseException:
            self._spawned = first
            raise
        self._spawned = first
        raise ValueError(f"method: {method!r} is none that {self._name} has")

    def _pieces(self, first, n):
        """Children of a level stand 2^(distance - 12 level) numbers apart, and have as many."""
        exponent = self._distance - 12 * self._level
        if not self._distance:
            raise ValueError(f"method: {self._name} cannot skip ahead")
        if exponent < 12 or first + n >= 1 << 12:
            raise ValueError(f"n_children: {self._name} has no room for more pieces; spawn by 'seeds'")
        children = []
        for i in range(first, first + n):
            child = self.copy()
            child._source.left, child._spawned, child._level = 0, 0, self._level + 1
            children.append(child.skip((i + 1) << exponent))
        return children

    def _sets(self, first, seeds):
        """Parameter sets behind this one's; children of children take the sets that are left by
        seeds alone."""
        member = _brng_of(self._stream) & 0xFFFFF
        if self._level or member + first + len(seeds) >= self._members:
            raise ValueError(f"n_children: {self._name} has no more parameter sets; spawn by 'seeds'")
        children = [type(self)(seed, member=member + first + i + 1) for i, seed in enumerate(seeds)]
        for child in children:
            child._level = 1
        return children

    # ---- draws

    def _fill(self, function, out, method, parameters, vectors=1):
        """A library function over an array, whose length is a multiple of `vectors`."""
        n = out.size // vectors
        call = getattr(short if n * vectors <= _SHORT else library, function)
        with self.lock:
            for first in range(0, n, _BLOCK):
                place = _pointer(out.__array_interface__["data"][0] + first * vectors * out.itemsize)
                _check(call(_i32(method), _pointer(self._stream), _i32(min(_BLOCK, n - first)), place,
                            *parameters), self._name)
        return out

    def bits(self, size=None, width=32):
        """Words of 32 or 64 random bits, of the generators that have them (the twisters, MCG59, TRNG)."""
        if width not in (32, 64):
            raise ValueError("width: it is neither 32 nor 64")
        out = self._fill(f"_vtsiRngUniformBits{width}", _new_array(size, np.dtype(f"u{width // 8}")), 0, ())
        return out if size is not None else out[()]

    def multivariate_normal(self, size=None, mean=(0.0,), covariance=None, factor=None, dtype=np.float64,
                            method="box_muller_pairs"):
        """Vectors of a normal law, the last axis of the result.

        Parameters
        ----------
        size : None, int or tuple of int, optional
            How many vectors.
        mean : array_like of p numbers
        covariance : array_like, p by p, optional
            Its Cholesky factor is computed; the identity without it.
        factor : array_like, p by p, optional
            The lower Cholesky factor, in place of `covariance`.
        dtype : {float64, float32}, optional
        method : {'box_muller', 'box_muller_pairs', 'inversion'}, optional

        Examples
        --------
        >>> from kef import random
        >>> random.MRG32K3A(1).multivariate_normal(2, [0.0, 100.0]).shape
        (2, 2)
        """
        letter, dtype = _real(dtype)
        mean = contiguous(mean, dtype)
        if mean.ndim != 1 or not mean.size or not np.isfinite(mean).all():
            raise ValueError("mean: a vector of finite numbers is needed")
        if covariance is not None and factor is not None:
            raise TypeError("covariance, factor: one of them is enough")
        if covariance is not None:
            covariance = np.asarray(covariance, np.float64)
            if covariance.shape != (mean.size, mean.size) or not np.allclose(covariance, covariance.T, 1e-8, 0):
                raise ValueError(f"covariance: a finite, symmetric matrix of {mean.size} by {mean.size} is needed")
            try:
                factor = np.linalg.cholesky(covariance)
            except np.linalg.LinAlgError:
                raise ValueError("covariance: it is not positive definite") from None
        factor = np.eye(mean.size) if factor is None else factor
        factor = contiguous(factor, dtype)
        if factor.shape != (mean.size, mean.size) or not np.isfinite(np.tril(factor)).all():
            raise ValueError(f"factor: a finite matrix of {mean.size} by {mean.size} is needed")
        out = _new_array(size, dtype, (mean.size,))
        return self._fill(f"_vts{letter}RngGaussianMV", out, _method("Gaussian", method),
                          (_i32(mean.size), _i32(0), address(mean), address(factor)), mean.size)


def _shape(size):
    """The shape that a size asks for."""
    try:
        shape = (operator.index(size),)
    except TypeError:
        try:
            shape = tuple(map(operator.index, size))
        except TypeError:
            raise TypeError(f"size: {size!r} is neither an integer nor integers") from None
    if any(n < 0 for n in shape):
        raise ValueError("size: it is negative")
    return shape


def _new_array(size, dtype, trailing=()):
    shape = (*(() if size is None else _shape(size)), *trailing)
    if math.prod(shape) * dtype.itemsize > sys.maxsize:  # which NumPy calls a wrong value
        raise MemoryError(f"size: {size} numbers of {dtype} are more than a process can hold")
    return np.empty(shape, dtype)


def _real(dtype):
    dtype = np.dtype(dtype).newbyteorder("=")
    if dtype not in (np.dtype(np.float64), np.dtype(np.float32)):
        raise TypeError(f"dtype: {dtype} is neither float64 nor float32")
    return "d" if dtype.itemsize == 8 else "s", dtype


def _method(law, method):
    try:
        return METHODS[law][method]
    except (KeyError, TypeError):
        raise ValueError(f"method: {method!r} is none of {', '.join(METHODS[law])}") from None


def _given(out, size, dtype):
    if not isinstance(out, np.ndarray) or out.dtype != dtype or not out.dtype.isnative:
        raise TypeError(f"out: an array of {dtype} is needed")
    if not out.flags.c_contiguous or not out.flags.aligned:
        raise ValueError("out: the array is not contiguous, or not aligned")
    if not out.flags.writeable:
        raise ValueError("out: the array is read-only")
    if size is not None and _shape(size) != out.shape:
        raise ValueError(f"out: its shape is {out.shape}, not {_shape(size)}")
    return out


_C_TYPES = {"double": ctypes.c_double, "float": ctypes.c_float, "int32_t": ctypes.c_int32}


def _law_method(name, law):
    """The method of one law."""
    names = [parameter for parameter, _, _ in law.parameters]
    defaults = {parameter: default for parameter, default, _ in law.parameters if default is not None}
    letters = {"d": np.dtype(np.float64), "s": np.dtype(np.float32), "i": np.dtype(np.int32)}

    def draw(self, size=None, *values, dtype=law.dtypes[0], method=None, out=None, **named):
        if len(values) > len(names):
            raise TypeError(f"{name}: {len(values)} parameters, it has {len(names)}")
        given = dict(zip(names, values))
        for parameter in named:
            if parameter not in names or parameter in given:
                raise TypeError(f"{name}: {parameter!r} is " +
                                ("given twice" if parameter in given else "no parameter"))
        given = defaults | given | named
        dtype = np.dtype(dtype).newbyteorder("=")
        if dtype.name not in law.dtypes:
            raise TypeError(f"dtype: {dtype} is none of {', '.join(law.dtypes)}")
        letter = next(letter for letter, kind in letters.items() if kind == dtype)
        function, arguments = law.function, []
        if name == "poisson" and np.ndim(given.get("mean", 0)):
            means = contiguous(given["mean"], np.float64)
            if not (np.isfinite(means).all() and (means >= 0).all()):
                raise ValueError("mean: a number is negative or not finite")
            if size is None:
                size = means.shape
            means = contiguous(np.broadcast_to(means, _shape(size)))
            function, arguments = "PoissonV", [address(means)]
        else:
            for (parameter, _, check), (kind, _) in zip(law.parameters, DRAWS[law.function][letter]):
                if parameter not in given:
                    raise TypeError(f"{name}: {parameter} is missing")
                arguments.append(_parameter(parameter, given[parameter], check, kind))
            law.together(*(argument.value for argument in arguments))
        result = _new_array(size, dtype) if out is None else _given(out, size, dtype)
        number = _method(law.function, method or next(iter(METHODS[law.function])))
        self._fill(f"_vts{letter}Rng{function}", result, number, arguments)
        if name == "integers":
            np.minimum(result, arguments[1].value - 1, out=result)  # the floor of what was rounded up
        return result if out is not None or size is not None else result[()]

    draw.__name__, draw.__qualname__, draw.__module__ = name, f"Stream.{name}", __name__
    draw.__doc__ = law.docstring(name, METHODS[law.function])
    return draw


def _parameter(name, value, check, kind):
    """A parameter as the library takes it, after its check."""
    words, holds = check
    try:
        if kind == "int32_t":
            number = operator.index(value)
        else:
            number = float(value)
    except (TypeError, ValueError, OverflowError):
        raise TypeError(f"{name}: {value!r} is not a number of the kind that is needed") from None
    if kind == "int32_t" and not -2**31 <= number < 2**31:
        raise ValueError(f"{name}: {value} has more than 32 bits")
    argument = _C_TYPES[kind](number)
    if not holds(argument.value):
        raise ValueError(f"{name}: {value} is not {words}")
    return argument


for _name, _law in LAWS.items():
    setattr(Stream, _name, _law_method(_name, _law))


def _write(image, path):
    try:
        before = os.stat(path)
    except FileNotFoundError:
        before = None
    path = pathlib.Path(os.path.realpath(os.fsdecode(path)))
    if before and not stat.S_ISREG(before.st_mode):
        path.write_bytes(image)
        return
    part = path.with_name(f"{path.name}.{secrets.token_hex(8)}")
    with open(part, "xb") as file:
        try:
            file.write(image)
            file.close()
            if before:
                os.chmod(part, stat.S_IMODE(before.st_mode))
            os.replace(part, path)
        except BaseException:
            part.unlink()
            raise


def _stream_of(image, name="image"):
    stream = _pointer()
    image = bytes(memoryview(image))
    _check(_load(ctypes.addressof(stream), image, len(image)), name)
    return stream.value


def _stream(stream):
    """An object of its family over a stream."""
    return globals()[next(name for name, brng in GENERATORS.items() if brng >> 20 == _brng_of(stream) >> 20)]._of(stream)


def from_bytes(image):
    """The stream of an image (`Stream.to_bytes`). One that is damaged is refused."""
    return _stream(_stream_of(image))


def load(path):
    """The stream of a file (`Stream.save`, or the C interface)."""
    path = os.fsdecode(path)
    return _stream(_stream_of(pathlib.Path(path).read_bytes(), path))


def _blank(name):
    """A generator that is about to be given a state."""
    stream = _pointer()
    _check(_new(ctypes.addressof(stream), GENERATORS[name], 0, None), name)
    return globals()[name]._of(stream.value)


def _generator(name, words, seed_words=8, members=1, distance=0):
    return type(name, (Stream,), {
        "__doc__": f"{words}\n\nParameters are those of `Stream`" +
                   (f"; `member`, 0 to {members - 1}, is the parameter set." if members > 1 else "."),
        "__module__": __name__, "_name": name, "_seed_words": seed_words, "_members": members,
        "_distance": distance})


MCG31M1 = _generator("MCG31M1", "Multiplicative congruential generator, period 2^31 - 2.", 1, distance=18)
R250 = _generator("R250", "Generalised feedback shift register of 250 words, period 2^250 - 1.")
MRG32K3A = _generator("MRG32K3A", "Combined multiple recursive generator, period 2^191.", 6, distance=64)
MCG59 = _generator("MCG59", "Multiplicative congruential generator modulo 2^59, period 2^57.", 2, distance=44)
WH = _generator("WH", "Combined congruential generators, 273 sets, period above 2^92.", 4, members=273,
                distance=64)
MT19937 = _generator("MT19937", "Mersenne twister, period 2^19937 - 1.", distance=64)
MT2203 = _generator("MT2203", "Mersenne twisters of 6024 parameter sets, period 2^2203 - 1.", members=6024)
SFMT19937 = _generator("SFMT19937", "Mersenne twister of 128-bit words.", distance=64)
TRNG = _generator("TRNG", "Random numbers of the processor (RDRAND), which no seed repeats.", 0)


class _Quasi(Stream):
    """Quasi-random points: numbers come point by point, coordinate by coordinate.

    Parameters
    ----------
    dimension : int, optional
        Coordinates of a point: 1 to 40 (SOBOL) or 318 (NIEDERR).

    Examples
    --------
    >>> from kef import random
    >>> random.SOBOL(2).uniform((3, 2))
    array([[0.5 , 0.5 ],
           [0.75, 0.25],
           [0.25, 0.75]])
    """

    def __init__(self, dimension=1):
        dimension = integer(dimension, "dimension")
        if not 1 <= dimension <= self._most:
            raise ValueError(f"dimension: {self._name} has 1 to {self._most} coordinates")
        super().__init__(0, words=[dimension])

    def spawn(self, n_children, method=None):
        raise ValueError(f"method: points of {self._name} are one sequence; skip ahead in copies")


SOBOL = type("SOBOL", (_Quasi,), {"__doc__": _Quasi.__doc__, "__module__": __name__, "_name": "SOBOL", "_most": 40})
NIEDERR = type("NIEDERR", (_Quasi,), {"__doc__": _Quasi.__doc__, "__module__": __name__, "_name": "NIEDERR",
                                      "_most": 318})

_Refill = ctypes.CFUNCTYPE(_i32, _pointer)  # of the four arguments none is needed
_new_abstract = prototype("__vtsdNewAbstractStream", _pointer, _i32, _pointer, ctypes.c_double, ctypes.c_double, _Refill)


class Numbers(Stream):
    """A stream over the caller's own numbers, for all laws and for `numpy.random.Generator`.

    Parameters
    ----------
    refill : callable
        ``refill(n)`` gives n numbers, or fewer but one; what it raises leaves the draw that asked (in a
        `Generator`, which cannot be told, it is reported and the bits are 0).
    low, high : float, optional
        The interval [low, high) that the numbers lie on.
    length : int, optional
        How many numbers are asked for at a time.

    Examples
    --------
    >>> import itertools
    >>> from kef import random
    >>> steps = itertools.cycle([0.25, 0.5, 0.75])
    >>> stream = random.Numbers(lambda n: list(itertools.islice(steps, n)))
    >>> stream.uniform(4, 0.0, 4.0)
    array([1., 2., 3., 1.])
    """

    _name = "DABSTRACT"

    def __init__(self, refill, low=0.0, high=1.0, length=1024):
        np.random.BitGenerator.__init__(self, 0)
        self._seeds = None
        length, low, high = integer(length, "length"), float(low), float(high)
        if not 1 <= length < 1 << 24:
            raise ValueError("length: it is not between 1 and 2**24 - 1")
        if not (np.isfinite([low, high]).all() and low < high):
            raise ValueError("low, high: finite numbers are needed, low below high")
        self._refill, self._ends, self._problem, self._drawing = refill, (low, high), None, True
        self._asking = None
        self._buffer, filled = np.empty(length), 0
        while filled < length:
            filled += self._ask(self._buffer[filled:])
        self._drawing = False
        # The callback must not keep the stream alive, or it would never be freed.
        this = weakref.ref(self)
        self._callback = _Refill(answers(lambda stream: this()._refilled(), lambda problem: this()._failed(problem)))
        stream = _pointer()
        _check(_new_abstract(ctypes.addressof(stream), length, address(self._buffer), low, high, self._callback),
               "Numbers")
        self._attach(stream.value)

    def _ask(self, place):
        """Puts numbers into a place; how many."""
        numbers = np.asarray(self._refill(len(place)), np.float64).ravel()
        if not 1 <= numbers.size <= len(place):
            raise ValueError(f"refill: it gave {numbers.size} numbers, not 1 to {len(place)}")
        if not ((numbers >= self._ends[0]) & (numbers < self._ends[1])).all():
            raise ValueError(f"refill: a number is not on [{self._ends[0]}, {self._ends[1]})")
        place[:numbers.size] = numbers
        return numbers.size

    def _refilled(self):
        self._asking = threading.get_ident()
        try:
            return self._ask(self._buffer)
        finally:
            self._asking = None

    def _failed(self, problem):
        if self._drawing:
            self._problem = problem
        else:
            traceback.print_exception(type(problem), problem, problem.__traceback__)  # a Generator asked, which nothing can be told
        return 0

    def _fill(self, *arguments):
        if self._asking == threading.get_ident():
            raise RuntimeError("refill: it draws from the stream that it fills")
        self._drawing = True
        try:
            return super()._fill(*arguments)
        except StreamError:
            problem, self._problem = self._problem, None
            if problem is None:
                raise
            raise problem from None
        finally:
            self._drawing = False

    def _refuse(self, *arguments, **keywords):
        raise TypeError("Numbers: a stream over the caller's numbers has no copies, images or pieces")

    copy = to_bytes = spawn = jumped = skip = leapfrog = __reduce__ = __reduce_ex__ = _refuse


__all__ = ["Stream", "StreamError", "from_bytes", "load", "MCG31M1", "R250", "MRG32K3A", "MCG59", "WH", "SOBOL",
           "NIEDERR", "Numbers", "MT19937", "MT2203", "SFMT19937", "TRNG"]
