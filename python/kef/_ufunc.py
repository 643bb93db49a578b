"""NumPy's own ufuncs over the library's kernels: broadcasting, strides, byte orders, out=, where= and
errstate are NumPy's, the inner loop is the library's (kef_vtm_loop)."""

import ctypes

import numpy as np

from ._library import library

try:
    from numpy._core import _multiarray_umath as _umath
except ImportError:
    from numpy.core import _multiarray_umath as _umath


class Loop(ctypes.Structure):
    """kef_loop of kef_bind.h."""
    _fields_ = [("kernel", ctypes.c_void_p), ("arguments", ctypes.c_int32), ("results", ctypes.c_int32),
                ("sizes", ctypes.c_int32 * 3)]


DTYPES = {letter: np.dtype(code) for letter, code in zip("sdcz", "fdFD")}
REAL = {"s": "s", "d": "d", "c": "s", "z": "d"}
SUFFIXES = {"high": dict.fromkeys("sdcz", "_HA"),
            "low": {"s": "_21", "d": "_50", "c": "_21", "z": "_50"},
            "enhanced": {"s": "_11", "d": "_26", "c": "_11", "z": "_26"}}

# Arrays of each shape, arguments and results: T is the type of the function, R its real type.
LOOP_SHAPES = {"map1": ("T", "T"), "map2": ("TT", "T"), "map1x2": ("T", "TT"), "modulus": ("T", "R"),
               "from_real": ("R", "T")}
SHAPES = LOOP_SHAPES | {"mapx": ("T", "T"), "linear_frac": ("TT", "T")}  # and numbers


def entry(function, letter, accuracy):
    """An entry point, as a function of ctypes without types."""
    return getattr(library, f"_vtm{letter}{function}{SUFFIXES[accuracy][letter]}")


def operands(shape, letter):
    """The types of arguments and of results, as dtypes."""
    return [[DTYPES[letter if kind == "T" else REAL[letter]] for kind in kinds] for kinds in SHAPES[shape]]


def _from_function_and_data():
    """PyUFunc_FromFuncAndData, the second entry of NumPy's table of ufunc functions."""
    pointer = ctypes.pythonapi.PyCapsule_GetPointer
    pointer.restype, pointer.argtypes = ctypes.c_void_p, [ctypes.py_object, ctypes.c_char_p]
    table = ctypes.cast(pointer(_umath._UFUNC_API, None), ctypes.POINTER(ctypes.c_void_p))
    shape = ctypes.PYFUNCTYPE(ctypes.py_object, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p,
                              *[ctypes.c_int] * 4, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int)
    return shape(table[1])


_make = _from_function_and_data()
_LOOP = ctypes.cast(library.kef_vtm_loop, ctypes.c_void_p).value
_NO_IDENTITY = -1


def make_ufunc(name, function, shapes, accuracy):
    """The ufunc of one function in one accuracy; shapes by type, in NumPy's order of types."""
    letters = [letter for letter in "sdcz" if letter in shapes]
    kinds = [operands(shapes[letter], letter) for letter in letters]
    loops = (Loop * len(letters))()
    for loop, letter, (arguments, results) in zip(loops, letters, kinds):
        loop.kernel = ctypes.cast(entry(function, letter, accuracy), ctypes.c_void_p).value
        loop.arguments, loop.results = len(arguments), len(results)
        loop.sizes = tuple(dtype.itemsize for dtype in arguments + results)
    data = (ctypes.c_void_p * len(letters))(*[ctypes.addressof(loop) for loop in loops])
    functions = (ctypes.c_void_p * len(letters))(*[_LOOP] * len(letters))
    types = bytes(dtype.num for arguments, results in kinds for dtype in arguments + results)
    types = ctypes.create_string_buffer(types)
    text = ctypes.create_string_buffer(name.encode())
    # The ufunc refers to all this as long as it lives, and it may outlive this module.
    for kept in (loops, data, functions, types, text):
        ctypes.pythonapi.Py_IncRef(ctypes.py_object(kept))
    return _make(ctypes.addressof(functions), ctypes.addressof(data), ctypes.addressof(types), len(letters),
                 len(kinds[0][0]), len(kinds[0][1]), _NO_IDENTITY, ctypes.cast(text, ctypes.c_char_p), None, 0)
