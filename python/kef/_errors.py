"""Element errors: errors='raise', 'warn', 'ignore' or a callable, in place of numpy.errstate."""

import ctypes
import warnings
from typing import NamedTuple

import numpy as np

from ._library import answers, prototype, status_text
from ._tables import VM_STATUS

CALLBACK_MODE, IGNORE_MODE, ERROR_MODES = 0x1000, 0x100, 0xFF00
KINDS = {"ERRDOM": "domain", "SING": "singularity", "OVERFLOW": "overflow", "UNDERFLOW": "underflow"}
ERRSTATE = {"domain": "invalid", "singularity": "divide", "overflow": "over", "underflow": "under"}
BLOCK = 1 << 30  # elements of one call, whose count and indices have 32 bits


class ElementError(NamedTuple):
    """What ``errors=callable`` is called with, for each element without a proper result.

    Attributes
    ----------
    function : str
        Name of the function.
    kind : str
        ``'domain'``, ``'singularity'``, ``'overflow'`` or ``'underflow'``.
    index : tuple of int
        Where the element stands in the broadcast arguments.
    arguments : tuple
        The element's arguments.
    results : tuple
        What the library gives for it.
    """
    function: str
    kind: str
    index: tuple
    arguments: tuple
    results: tuple

    def __str__(self):
        place = f"[{', '.join(map(str, self.index))}]" if self.index else ""
        values = ", ".join(f"{name}{place} = {value}" for name, value in zip("xy", self.arguments))
        code = next(code for code, name in VM_STATUS.items() if KINDS.get(name) == self.kind)
        return f"kef.{self.function}: {status_text('vtm', code)}: {values}"


class _Record(ctypes.Structure):
    """kef_vtm_error_record."""
    _fields_ = [("code", ctypes.c_int32), ("index", ctypes.c_int32), ("argument", ctypes.c_double * 2),
                ("result", ctypes.c_double * 2), ("name", ctypes.c_char * 64),
                ("name_length", ctypes.c_int32), ("reserved", ctypes.c_int32),
                ("argument_imag", ctypes.c_double * 2), ("result_imag", ctypes.c_double * 2)]


_Callback = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(_Record))
_set_callback = prototype("_vtmSetErrorCallBack", ctypes.c_void_p, result=ctypes.c_void_p)
_get_callback = prototype("_vtmGetErrorCallBack", result=ctypes.c_void_p)
_get_mode = prototype("_vtmGetMode", result=ctypes.c_uint32)
_clear_callback = prototype("_vtmClearErrorCallBack", result=ctypes.c_void_p)
_set_mode = prototype("_vtmSetMode", ctypes.c_uint32, result=ctypes.c_uint32)


def policy_of(errors):
    """What is done by kind, or the callable."""
    if callable(errors):
        return errors
    if errors is None:
        state = np.geterr()
        return {kind: state[name] if state[name] in ("ignore", "raise") else "warn"
                for kind, name in ERRSTATE.items()}
    if errors not in ("raise", "warn", "ignore"):
        raise ValueError(f"errors: {errors!r} is not 'raise', 'warn', 'ignore', None or a callable")
    return dict.fromkeys(ERRSTATE, errors)


class Handler:
    """What becomes of the errors of one call: ``run`` makes it, and ``finish`` raises or warns."""

    def __init__(self, errors, function, place, arguments, results):
        self.policy, self.function, self.place = policy_of(errors), function, place
        self.arguments, self.results = arguments, results
        self.offset, self.problem, self.seen = 0, None, {}

    def _values(self, arrays, real, imaginary):
        """The numbers of a record, in the types of the arrays."""
        return tuple(array.dtype.type(complex(r, i) if array.dtype.kind == "c" else r)
                     for array, r, i in zip(arrays, real, imaginary))

    def _meet(self, record):
        kind, by_kind = KINDS[VM_STATUS[record.code]], not callable(self.policy)
        if by_kind and (kind in self.seen or self.policy[kind] == "ignore"):
            return 1
        error = ElementError(self.function, kind,
                             self.place(self.offset + record.index),
                             self._values(self.arguments, record.argument, record.argument_imag),
                             self._values(self.results, record.result, record.result_imag))
        if by_kind:
            self.seen[kind] = error
            if self.policy[kind] == "raise" or all(
                    k in self.seen or policy == "ignore" for k, policy in self.policy.items()):
                _clear_callback()
            return 1
        value = self.policy(error)
        if value is None:
            return 1
        parts = value if isinstance(value, tuple) else (value,)
        try:
            parts = [complex(part) for part in parts]
        except (TypeError, ValueError):
            parts = ()
        if not 1 <= len(parts) <= len(self.results):
            raise TypeError(f"errors: the callable gave {value!r}, not None, a number or a tuple of "
                            f"{len(self.results)} at most")
        for i, part in enumerate(parts):
            record.result[i], record.result_imag[i] = part.real, part.imag
        return 0

    def _fail(self, problem):
        self.problem = problem
        _clear_callback()
        return 1

    def run(self, kernel, n, numbers=()):
        """The kernel over the arrays, which are contiguous and of n elements."""
        callback = _Callback(answers(lambda record: self._meet(record.contents), self._fail))

        def places(arrays):
            return [ctypes.c_void_p(array.__array_interface__["data"][0] + self.offset * array.itemsize)
                    for array in arrays]
        before, mode = _get_callback(), _get_mode()
        try:
            _set_mode(CALLBACK_MODE)
            for self.offset in range(0, n, BLOCK):
                _set_callback(callback)
                kernel(ctypes.c_int32(min(BLOCK, n - self.offset)), *places(self.arguments), *numbers,
                       *places(self.results))
                if self.problem is not None:
                    break
        finally:
            try:
                _set_callback(before)
            finally:  # also where an interrupt comes just here
                _set_mode(mode if mode & ERROR_MODES else mode | IGNORE_MODE)
        if self.problem is not None:
            raise self.problem

    def finish(self, stacklevel):
        for error in self.seen.values():
            if self.policy[error.kind] == "raise":
                raise FloatingPointError(str(error))
            warnings.warn(str(error), RuntimeWarning, stacklevel=stacklevel + 1)
