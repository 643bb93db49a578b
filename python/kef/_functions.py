"""Functions of arrays, expanded from the library's list."""

import ctypes

import numpy as np

from ._errors import Handler
from ._library import address, contiguous, integer, library, refuse_masked, unmasked
from ._tables import FUNCTIONS
from ._ufunc import DTYPES, LOOP_SHAPES, SUFFIXES, entry, make_ufunc, operands
from ._words import NUMPY_NAMES, docstring

ACCURACIES = {"HA": "high", "LA": "low", "EP": "enhanced"} | {name: name for name in SUFFIXES}
_NATIVE = frozenset(DTYPES.values())


def promoted(value, name):
    """An argument in a type that NumPy brings to one of the library's: integers are float64. What has
    its own way with ufuncs (arrays of other libraries) stays as it is."""
    if not isinstance(value, np.ndarray):
        if type(value) in (float, complex):
            return value
        if type(value) in (int, bool):
            try:
                return float(value)
            except OverflowError:
                raise OverflowError(f"{name}: an integer beyond the largest double") from None
        if hasattr(value, "__array_ufunc__") and not isinstance(value, np.generic):
            return value
        value = np.asarray(value)
    kind, size = value.dtype.kind, value.dtype.itemsize
    if kind in "biu":
        return value.astype(np.float64)
    if kind == "f" and size <= 8:
        return value.astype(np.float32) if size == 2 else value
    if kind == "c" and size <= 16:
        return value
    raise TypeError(f"{name}: dtype {value.dtype} is none of float32, float64, complex64, complex128 and "
                    "the integers")


def accuracy_of(word):
    try:
        return ACCURACIES[word]
    except (KeyError, TypeError):
        raise ValueError(f"accuracy: {word!r} is not 'high', 'low' or 'enhanced'") from None


def letter_for(function, values):
    """The first type of a function that its arguments convert to without loss."""
    common = np.result_type(*values)
    for letter in "sdcz":
        shape = FUNCTIONS[function].get(letter)
        if shape and np.can_cast(common, operands(shape, letter)[0][0]):
            return letter
    raise TypeError(f"kef.{function.lower()} has no form for {common}")


def _by_value(name, number, letter):
    """A number as an argument of a call."""
    number = promoted(number, name)
    if np.ndim(number):
        raise ValueError(f"{name}: one number is needed, not an array")
    if letter in "cz":
        return (_Complex8 if letter == "c" else _Complex16)(number.real, number.imag)
    return (ctypes.c_float if letter == "s" else ctypes.c_double)(number)


def _stored(result, out, shape, chosen):
    """The result of the chosen elements (None: all) as what a ufunc returns."""
    if out is None:
        if chosen is None:
            out = result.reshape(shape)
        else:
            out = np.empty(shape, result.dtype)
            out.ravel()[chosen] = result  # a view: new arrays are contiguous
        return out if shape else out[()]
    if not isinstance(out, np.ndarray) or out.shape != shape:
        raise ValueError(f"out: an array of shape {shape} is needed")
    if not out.flags.writeable:
        raise ValueError("out: the array is read-only")
    if not np.can_cast(result.dtype, out.dtype, "same_kind"):
        raise TypeError(f"out: {result.dtype} does not go into {out.dtype}")
    if chosen is None:
        np.copyto(out, result.reshape(shape), casting="same_kind")
    else:
        out[np.unravel_index(chosen, shape)] = result
    return out


def with_errors(function, values, scalars, out, where, accuracy, errors):
    """A call that sees every element error, over contiguous copies of what `where` selects. scalars:
    names and values of the numbers that a function takes besides arrays."""
    for value, name in zip(values, "xy"):
        refuse_masked(value, name)
    numbers = [number for _, number in scalars]
    letter = letter_for(function, [*values, *numbers])
    arguments, results = operands(FUNCTIONS[function][letter], letter)
    *arrays, mask = np.broadcast_arrays(*values, where)
    shape, chosen = mask.shape, None if where is True else np.flatnonzero(mask)
    arrays = [contiguous(array.ravel() if chosen is None else array.ravel()[chosen], dtype)
              for array, dtype in zip(arrays, arguments)]
    n = arrays[0].size
    made = [np.empty(n, dtype) for dtype in results]

    def place(i):
        return tuple(map(int, np.unravel_index(i if chosen is None else chosen[i], shape)))
    handler = Handler(errors, function.lower(), place, arrays, made)
    handler.run(entry(function, letter, accuracy), n,
                [_by_value(name, number, letter) for name, number in scalars])
    handler.finish(stacklevel=4)
    if len(made) == 1:
        return _stored(made[0], out[0] if isinstance(out, tuple) else out, shape, chosen)
    outs = (None,) * len(made) if out is None else out
    if not isinstance(outs, tuple) or len(outs) != len(made):
        raise ValueError(f"out: a tuple of {len(made)} arrays is needed")
    return tuple(_stored(result, given, shape, chosen) for result, given in zip(made, outs))


def _elementwise(function, inputs):
    """The Python function over the ufuncs of the three accuracies."""
    name = function.lower()
    ufuncs = {accuracy: make_ufunc(name, function, FUNCTIONS[function], accuracy) for accuracy in SUFFIXES}
    ufuncs |= {short: ufuncs[accuracy] for short, accuracy in ACCURACIES.items()}
    ndarray = np.ndarray

    def ufunc_of(accuracy):
        try:
            return ufuncs[accuracy]
        except (KeyError, TypeError):
            return ufuncs[accuracy_of(accuracy)]  # which tells what is wrong

    def call(values, out, where, accuracy, errors, keywords):
        if errors is None or isinstance(errors, str) and errors == "ignore":
            given = keywords if out is None else keywords | {"out": out}
            if errors is None:
                return ufunc_of(accuracy)(*values, where=where, **given)
            with np.errstate(all="ignore"):
                return ufunc_of(accuracy)(*values, where=where, **given)
        if keywords:
            raise TypeError(f"errors= goes with out= and where=, not with {', '.join(keywords)}")
        return with_errors(function, values, (), out, where, accuracy_of(accuracy), errors)

    if inputs == 1:
        def elementwise(x, /, out=None, *, where=True, accuracy="high", errors=None, **keywords):
            if type(x) is not ndarray or x.dtype not in _NATIVE:
                x = promoted(x, "x")
            if out is None and where is True and errors is None and not keywords:
                return ufunc_of(accuracy)(x)
            return call((x,), out, where, accuracy, errors, keywords)
    else:
        def elementwise(x, y, /, out=None, *, where=True, accuracy="high", errors=None, **keywords):
            if type(x) is not ndarray or x.dtype not in _NATIVE:
                x = promoted(x, "x")
            if type(y) is not ndarray or y.dtype not in _NATIVE:
                y = promoted(y, "y")
            if out is None and where is True and errors is None and not keywords:
                return ufunc_of(accuracy)(x, y)
            return call((x, y), out, where, accuracy, errors, keywords)
    elementwise.ufuncs = {accuracy: ufuncs[accuracy] for accuracy in SUFFIXES}
    return elementwise


class _Complex8(ctypes.Structure):
    _fields_ = [("re", ctypes.c_float), ("im", ctypes.c_float)]


class _Complex16(ctypes.Structure):
    _fields_ = [("re", ctypes.c_double), ("im", ctypes.c_double)]


def powx(x, exponent, /, out=None, *, where=True, accuracy="high", errors=None):
    return with_errors("Powx", (promoted(x, "x"),), [("exponent", promoted(exponent, "exponent"))], out, where,
                       accuracy_of(accuracy), errors)


def linearfrac(x, y, /, scale_x=1.0, shift_x=0.0, scale_y=1.0, shift_y=0.0, out=None, *, where=True,
               accuracy="high", errors=None):
    scalars = [("scale_x", scale_x), ("shift_x", shift_x), ("scale_y", scale_y), ("shift_y", shift_y)]
    return with_errors("LinearFrac", (promoted(x, "x"), promoted(y, "y")), scalars, out, where,
                       accuracy_of(accuracy), errors)


# ---- gather and scatter

def _places(array, step, index, mask, name):
    """What describes places in an array: the letter of the library's functions, how many places there
    are, and the argument."""
    if sum(given is not None for given in (step, index, mask)) != 1:
        raise TypeError("one of step, index and mask is needed")
    n = array.size
    if step is not None:
        step = integer(step, "step")
        if step < 1:
            raise ValueError("step: it is not positive")
        return "I", -(-n // step), ctypes.c_int64(step)
    if index is not None:
        index = np.asarray(index)
        if index.dtype.kind not in "iu" and index.size:
            raise TypeError(f"index: dtype {index.dtype} is not one of integers")
        index = contiguous(index, np.int64).ravel()
        if index.size and not (0 <= index.min() and index.max() < n):
            raise IndexError(f"index: a place outside 0 .. {n - 1} of {name}")
        return "V", index.size, index
    mask = np.asarray(mask)
    if mask.dtype.kind not in "biufc":
        raise TypeError(f"mask: dtype {mask.dtype} is not one of numbers")
    if mask.size != n:
        raise ValueError(f"mask: it has {mask.size} elements, {name} has {n}")
    mask = contiguous(mask.ravel() != 0, np.int64)
    return "M", int(mask.sum()), mask


def _move(function, letter, n, *arguments):
    """A slot of a dispatch table, with counts and places of 64 bits."""
    slots = (ctypes.c_void_p * 3).in_dll(library, f"kef_vtm_kernel_{letter}{function}_ttab")
    arguments = [address(a) if isinstance(a, np.ndarray) else a for a in arguments]
    ctypes.CFUNCTYPE(None)(slots[1])(ctypes.c_int64(n), *arguments, ctypes.c_int32(0))


def _movable(array, name):
    array = contiguous(promoted(unmasked(array, name), name)).ravel()
    return array.astype(array.dtype.newbyteorder("="), copy=False)


def pack(x, *, step=None, index=None, mask=None):
    x = _movable(x, "x")
    kind, n, places = _places(x, step, index, mask, "x")
    result = np.empty(n, x.dtype)
    _move("Pack" + kind, _LETTERS[x.dtype], x.size if kind == "M" else n, x, places, result)
    return result


def unpack(values, out, *, step=None, index=None, mask=None):
    if not isinstance(out, np.ndarray) or out.dtype not in _NATIVE or not out.flags.c_contiguous or not out.flags.aligned:
        raise TypeError("out: a contiguous, aligned array of float32, float64, complex64 or complex128 is needed")
    if not out.flags.writeable:
        raise ValueError("out: the array is read-only")
    kind, n, places = _places(out, step, index, mask, "out")
    if kind == "V" and np.may_share_memory(places, out):  # who writes over indices reads others
        places = places.copy()
    values = contiguous(promoted(unmasked(values, "values"), "values"))
    if not np.can_cast(values.dtype, out.dtype, "same_kind"):
        raise TypeError(f"values: {values.dtype} does not go into {out.dtype}")
    values = values.astype(out.dtype).ravel()
    if values.size != n:
        raise ValueError(f"values: there are {values.size} for {n} places")
    _move("Unpack" + kind, _LETTERS[out.dtype], out.size if kind == "M" else n, values, out, places)
    return out


_LETTERS = {dtype: letter for letter, dtype in DTYPES.items()}


def _expand():
    """All functions by name, with their docstrings, and the names that NumPy has for them."""
    made = {"powx": powx, "linearfrac": linearfrac, "pack": pack, "unpack": unpack}
    for function, shapes in FUNCTIONS.items():
        if all(shape in LOOP_SHAPES for shape in shapes.values()):
            inputs = 2 if "map2" in shapes.values() else 1
            made[function.lower()] = _elementwise(function, inputs)
    for name, function in made.items():
        function.__name__ = function.__qualname__ = name
        function.__module__ = "kef"
        function.__doc__ = docstring(name)
    return made | {alias: made[name] for alias, name in NUMPY_NAMES.items()}
