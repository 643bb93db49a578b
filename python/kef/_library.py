"""The shared library: where it is found, and how its statuses become exceptions."""

import ctypes
import operator
import os
import pathlib
import sys
import weakref

import numpy as np

NAMES = {"win32": ("kef.dll",)}.get(sys.platform, ("libkef.so.0.1", "libkef.so"))


def _load():
    """The library by KEF_LIBRARY, else beside the package, else as the system's loader finds it."""
    named = os.environ.get("KEF_LIBRARY")
    beside = [path for path in (pathlib.Path(__file__).parent / name for name in NAMES) if path.exists()]
    tried = []
    for candidate in [named] if named else [*map(str, beside), *NAMES]:
        try:
            library = ctypes.CDLL(candidate)
        except OSError as error:
            tried.append(f"{candidate}: {error}")
            continue
        if hasattr(library, "kef_vtm_loop"):
            return library
        tried.append(f"{candidate}: not the KEF library, or one that is older than this package")
    how = ("KEF_LIBRARY names no usable library" if named else
           f"the KEF library was found neither beside the package nor by the system's loader; "
           f"KEF_LIBRARY may name it (for a Python of {64 if sys.maxsize > 2**32 else 32} bits)")
    raise ImportError(how + "\n  " + "\n  ".join(tried))


library = _load()
# Short calls keep the interpreter's lock: to give it up would cost more than they take.
short = ctypes.PyDLL(library._name, handle=library._handle)

library.kef_member.restype = ctypes.c_char_p


def prototype(name, *arguments, result=ctypes.c_int32, of=library):
    """An exported function with its types."""
    function = getattr(of, name)
    function.argtypes, function.restype = arguments, result
    return function


_TEXTS = {family: prototype(f"kef_{family}_status_text", ctypes.c_int32, result=ctypes.c_char_p)
          for family in ("vtm", "vts", "ss", "df")}


def status_text(family, status):
    return _TEXTS[family](status).decode()


def freed_with(owner, free, *what):
    """Calls free(*what) when the owner dies. Not at the end of the interpreter: functions of atexit and
    threads may use it until the process ends, which frees all."""
    weakref.finalize(owner, free, *what).atexit = False


def answers(answer, fail):
    """A callback of one argument which nothing leaves: it gives answer(argument), or fail(problem) where that
    raises. An interrupt is raised on entry to the code that a callback runs: here that is inside of `try`."""
    def run():
        result = None
        while True:
            try:
                while True:
                    result = answer((yield result))
            except GeneratorExit:
                return
            except BaseException as problem:
                result = fail(problem)
    running = run()
    next(running)
    return running.send


def integer(value, name):
    """An argument that is an integer of any type."""
    try:
        return operator.index(value)
    except TypeError:
        raise TypeError(f"{name}: {value!r} is not an integer") from None


def refuse_masked(value, name):
    """The library does not see masks."""
    if np.ma.is_masked(value):
        raise ValueError(f"{name}: elements are masked; fill or compress the array")


def unmasked(value, name):
    """An argument as an array."""
    refuse_masked(value, name)
    return np.asarray(value)


def aligned(array):
    """An array as it is, or a copy where its numbers stand at odd addresses (`numpy.frombuffer` at an offset)."""
    return array if array.flags.aligned else array.copy(order="K")


def contiguous(array, dtype=None):
    """An array as the library reads it."""
    return aligned(np.ascontiguousarray(array, dtype))


def address(array):
    """Where an array's data begins, as an argument of a call."""
    return ctypes.c_void_p(array.__array_interface__["data"][0])
