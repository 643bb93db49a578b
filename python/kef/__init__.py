"""Numerical kernels for arrays: functions of every element, random numbers, statistics, splines.

The functions of this module work element by element on NumPy arrays, like NumPy's own, in three
accuracies; `kef.random`, `kef.stats` and `kef.interpolate` are the other parts.

>>> import kef
>>> import numpy as np
>>> kef.exp(np.array([0.0, 1.0]))
array([1.        , 2.71828183])
>>> with np.errstate(all="ignore"):
...     kef.ln(np.array([1.0, 0.0, -1.0]))
array([  0., -inf,  nan])
>>> kef.ln([1.0, 0.0], errors=lambda error: -1e6)
array([       0., -1000000.])
"""

from . import _functions
from ._errors import ElementError
from ._library import library

_version = library.kef_version()
__version__ = f"{_version // 10000}.{_version // 100 % 100}.{_version % 100}"


def member():
    """Which member of the library runs: 'generic', 'x86-64-v3' or 'x86-64-v4'."""
    return library.kef_member().decode()


_expanded = _functions._expand()
globals().update(_expanded)
# `from kef import *` leaves the names of built-in functions alone.
__all__ = sorted(set(_expanded) - {"abs", "pow", "round"}) + ["ElementError", "member"]
