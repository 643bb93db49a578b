"""Splines of one variable, with the call shapes of `scipy.interpolate`.

>>> import numpy as np
>>> from kef import interpolate
>>> x = np.linspace(0.0, 3.0, 7)
>>> spline = interpolate.CubicSpline(x, x**3)
>>> spline([0.25, 2.2]).round(6)
array([ 0.015625, 10.648   ])
>>> round(float(spline(1.0, nu=1)), 6), round(float(spline.integrate(0.0, 2.0)), 6)
(3.0, 4.0)
"""

import ctypes
import math
import operator

import numpy as np

from ._library import address, contiguous, freed_with, integer, prototype, status_text, unmasked
from ._tables import FIT

_pointer, _i32, _i64 = ctypes.c_void_p, ctypes.c_int32, ctypes.c_int64
_delete_task = prototype("kef_df_kernel_DeleteTask", _pointer)
_BLOCK = 1 << 24  # sites of one call


def _functions(letter):
    """The functions of one precision that splines need."""
    name = f"kef_df_kernel_{letter}".__add__
    return {
        "new": prototype(name("NewTask1D"), _pointer, _i64, _pointer, _i64, _i64, _pointer, _i64, _i32),
        "edit": prototype(name("EditPPSpline1D"), _pointer, _i64, _i64, _i64, _pointer, _i64, _pointer, _pointer,
                          _i64),
        "values": prototype(name("DFInterpolate1D"), _pointer, _i64, _i64, _pointer, _i64, _i64, _pointer, _pointer,
                            _i64, _pointer),
        "integrals": prototype(name("DFIntegrate1D"), _pointer, _i64, _i64, _pointer, _i64, _pointer, _i64,
                               _pointer, _i64),
        "search": prototype(name("DFSearch1D"), _pointer, _i64, _pointer, _i64, _pointer),
    }


_OF = {letter: _functions(letter) for letter in "ds"}


def _check(status, what):
    if status >= 0:
        return
    text = f"{what}: {status_text('df', status)}"
    raise MemoryError(text) if "memory" in status_text("df", status) else ValueError(text)


def _free(task):
    if task.value:
        _delete_task(ctypes.addressof(task))


def _breakpoints(x, dtype, name="x"):
    x = np.array(x, dtype, order="C")  # the task refers to them
    if x.ndim != 1 or len(x) < 2:
        raise ValueError(f"{name}: an array of one axis and at least 2 numbers is needed")
    if not np.isfinite(x).all():
        raise ValueError(f"{name}: a number is not finite")
    if not (np.diff(x) > 0).all():
        raise ValueError(f"{name}: the numbers do not ascend")
    return x


def _extrapolation(given, own):
    if not isinstance(given, (int, str, np.bool_, type(None))) or given not in (None, True, False, "periodic"):
        raise ValueError(f"extrapolate: {given!r} is not True, False or 'periodic'")
    return own if given is None else given


def _real_dtype(*arrays):
    """float32 where all is of single precision, else float64."""
    common = np.result_type(*arrays)
    if common.kind not in "biuf" or common.itemsize > 8:
        raise TypeError(f"x, y: dtype {common} is none of float32, float64 and the integers")
    return np.dtype(np.float32 if common.kind == "f" and common.itemsize <= 4 else np.float64)


class PPoly:
    """A piecewise polynomial of order 1 to 4, as `scipy.interpolate.PPoly`.

    Parameters
    ----------
    c : array_like, (k, m, ...)
        Coefficients of m pieces, the highest power of x - x[i] first.
    x : array_like, (m + 1,)
        Breakpoints, ascending.
    extrapolate : {True, False, 'periodic'}, optional
        Outside: the end polynomials go on, NaN, or the period is repeated.
    axis : int, optional
        Where the axis of x stands in the results.

    Examples
    --------
    >>> from kef import interpolate
    >>> p = interpolate.PPoly([[1.0, 2.0], [0.0, 1.0]], [0.0, 1.0, 2.0])
    >>> p([0.5, 1.5])
    array([0.5, 2. ])
    >>> float(p.derivative()(1.5))
    2.0
    """

    def __init__(self, c, x, extrapolate=None, axis=0):
        c, x = unmasked(c, "c"), unmasked(x, "x")
        if c.ndim < 2 or not 1 <= len(c) <= 4:
            raise ValueError("c: an array of 1 to 4 coefficients by pieces is needed")
        dtype = _real_dtype(c, x)
        x = _breakpoints(x, dtype)
        if c.shape[1] != len(x) - 1:
            raise ValueError(f"c: it is for {c.shape[1]} pieces, x has {len(x) - 1}")
        rows = np.moveaxis(c.astype(dtype)[::-1], (1, 0), (-2, -1)).reshape(-1, c.shape[1], len(c))
        self._become(x, rows, c.shape[2:], axis, extrapolate)

    # A task holds breakpoints and coefficients: function by function, piece by piece, the lowest power first.

    def _become(self, x, rows, trailing, axis, extrapolate):
        """Takes coefficients over, for functions of the shape `trailing`."""
        self.extrapolate = _extrapolation(extrapolate, True)
        axis = integer(axis, "axis")
        if not -len(trailing) - 1 <= axis <= len(trailing):
            raise ValueError(f"axis: {axis} is none of {len(trailing) + 1} axes")
        self.axis = axis % (len(trailing) + 1)
        self._trailing, self._rows = tuple(trailing), contiguous(rows)
        self._order, self._x = rows.shape[-1], x
        self._start()

    def _start(self):
        x, rows = self._x, self._rows
        self._letter = "d" if rows.dtype.itemsize == 8 else "s"
        self._do = _OF[self._letter]
        self._task = _pointer()
        # The task asks for values of the functions, and does not read them.
        self._values = np.zeros((len(rows), len(x)), rows.dtype)
        if len(rows):
            _check(self._do["new"](ctypes.addressof(self._task), len(x), address(x), FIT["NON_UNIFORM"], len(rows),
                                   address(self._values), FIT["BY_ROWS"], 1), "PPoly")
            freed_with(self, _free, self._task)
            _check(self._do["edit"](self._task, self._order, FIT["TYPE_DEFAULT"], 0, None, 0, None, address(rows),
                                    FIT["BY_ROWS"]), "PPoly")

    def __getstate__(self):
        return {name: value for name, value in self.__dict__.items() if name not in ("_task", "_do", "_values")}

    def __setstate__(self, state):
        """A state that was read from somewhere is looked at before the library is given addresses."""
        try:
            x, rows, axis, extrapolate = (state[name] for name in ("_x", "_rows", "axis", "extrapolate"))
            trailing, dtype = tuple(map(operator.index, state["_trailing"])), _real_dtype(rows)
            fits = rows.ndim == 3 and rows.shape[:2] == (math.prod(trailing), len(x) - 1)
        except (AttributeError, KeyError, TypeError) as problem:
            raise ValueError(f"state: it is not that of {type(self).__name__}: {problem!r}") from None
        if not fits or min(trailing, default=0) < 0 or not 1 <= rows.shape[2] <= 4:
            raise ValueError(f"state: it is not that of {type(self).__name__}: the shapes do not fit")
        self.__dict__.update(state)
        self._become(_breakpoints(x, dtype), rows.astype(dtype), trailing, axis, extrapolate)

    @property
    def x(self):
        """The breakpoints."""
        return self._x.copy()

    @property
    def c(self):
        """The coefficients as SciPy has them, (k, m, ...), the highest power first."""
        pieces = np.moveaxis(self._rows, (1, 2), (1, 0))[::-1]
        return pieces.reshape(self._order, len(self._x) - 1, *self._trailing).copy()

    def _sites(self, x, name, extrapolate):
        """Sites as the library takes them, and which of them are outside of a spline that ends."""
        x = unmasked(x, name)
        if x.dtype.kind not in "biuf" or x.dtype.itemsize > 8:
            raise TypeError(f"{name}: dtype {x.dtype} is none of float32, float64 and the integers")
        sites = contiguous(x, self._rows.dtype).ravel()
        first, last = self._x[0], self._x[-1]
        if extrapolate == "periodic":
            sites = first + (sites - first) % (last - first)
        outside = None if extrapolate else ~((sites >= first) & (sites <= last))
        return sites, x.shape, outside

    def _shaped(self, result, shape):
        """Results function by function as an array: the axes of the sites stand at `axis`."""
        result = result.T.reshape((*shape, *self._trailing))
        sites = len(shape)
        moved = np.moveaxis(result, range(sites), range(self.axis, self.axis + sites)) if self.axis else result
        return moved if moved.shape else moved[()]

    def __call__(self, x, nu=0, extrapolate=None):
        """Values, or derivatives of order `nu`.

        Parameters
        ----------
        x : array_like
        nu : int, optional
            From 0.
        extrapolate : {None, True, False, 'periodic'}, optional
            In place of the spline's own.

        Returns
        -------
        ndarray or scalar
            The axes of x stand where `axis` was in y.
        """
        nu = integer(nu, "nu")
        if nu < 0:
            raise ValueError("nu: it is negative; integrals are made by integrate")
        sites, shape, outside = self._sites(x, "x", _extrapolation(extrapolate, self.extrapolate))
        result = np.zeros((len(self._rows), len(sites)), self._rows.dtype)
        if nu < self._order and result.size:
            asked = np.zeros(nu + 1, np.int64)
            asked[nu] = 1
            for first in range(0, len(sites), _BLOCK):
                some = sites[first:first + _BLOCK]
                part = result if len(some) == len(sites) else np.empty((len(result), len(some)), result.dtype)
                _check(self._do["values"](self._task, FIT["SPLINE"], len(some), address(some), FIT["DEFAULT_HINT"],
                                          nu + 1, address(asked), address(part), FIT["BY_ROWS"], None), "x")
                if part is not result:
                    result[:, first:first + _BLOCK] = part
        result[:, np.isnan(sites)] = np.nan
        if outside is not None:
            result[:, outside] = np.nan
        return self._shaped(result, shape)

    def integrate(self, a, b, extrapolate=None):
        """Integrals from a to b, which may be arrays.

        Parameters
        ----------
        a, b : array_like
            Limits.
        extrapolate : {None, True, False, 'periodic'}, optional
            In place of the spline's own.
        """
        how = _extrapolation(extrapolate, self.extrapolate)
        a, b = np.broadcast_arrays(a, b)
        if how == "periodic":
            return self._periodic_integral(np.asarray(a, self._rows.dtype), np.asarray(b, self._rows.dtype))
        left, shape, outside = self._sites(a, "a", how)
        right, _, beyond = self._sites(b, "b", how)
        result = np.zeros((len(self._rows), len(left)), self._rows.dtype)
        if result.size:
            _check(self._do["integrals"](self._task, 0, len(left), address(left), FIT["DEFAULT_HINT"], address(right),
                                         FIT["DEFAULT_HINT"], address(result), FIT["BY_ROWS"]), "a, b")
        if outside is not None:
            result[:, outside | beyond] = np.nan
        return self._shaped(result, shape)

    def _periodic_integral(self, a, b):
        """Whole periods, and what is left of one."""
        first, last = self._x[0], self._x[-1]
        period = last - first
        whole = self.integrate(first, last, extrapolate=True)

        def upto(x):
            periods = np.floor((x - first) / period)
            part = self.integrate(np.full_like(x, first), x - periods * period, extrapolate=True)
            return part + np.multiply.outer(periods, whole) if not self.axis else \
                part + np.moveaxis(np.multiply.outer(periods, np.asarray(whole)), range(x.ndim),
                                   range(self.axis, self.axis + x.ndim))
        return upto(b) - upto(a)

    def _of(self, rows):
        made = PPoly.__new__(PPoly)
        made._become(self._x, rows, self._trailing, self.axis, self.extrapolate)
        return made

    def derivative(self, nu=1):
        """The derivative of order `nu`, a `PPoly`."""
        nu = integer(nu, "nu")
        if nu < 0:
            return self.antiderivative(-nu)
        rows = self._rows
        for _ in range(nu):
            powers = np.arange(1, rows.shape[-1], dtype=rows.dtype)
            rows = rows[..., 1:] * powers if len(powers) else np.zeros_like(rows)
        return self._of(rows)

    def antiderivative(self, nu=1):
        """The integral from x[0], a `PPoly`; of splines below the cubic, since there are no more than 4
        coefficients a piece. `integrate` serves all."""
        nu = integer(nu, "nu")
        if nu < 0:
            return self.derivative(-nu)
        if self._order + nu > 4:
            raise ValueError("nu: a piece would have more than 4 coefficients; integrate gives the values")
        made = self
        for _ in range(nu):
            rows = np.zeros((*made._rows.shape[:2], made._order + 1), made._rows.dtype)
            rows[..., 1:] = made._rows / np.arange(1, made._order + 1)
            start = made.integrate(np.full(len(made._x) - 1, made._x[0]), made._x[:-1], extrapolate=True)
            start = np.moveaxis(np.asarray(start), self.axis, -1).reshape(len(rows), -1)
            rows[..., 0] = start
            made = self._of(rows)
        return made

    def search(self, x):
        """The piece of each site: from 0; -1 to the left of all and for NaN, the number of pieces from the
        last breakpoint on."""
        sites, shape, _ = self._sites(x, "x", True)
        cells = np.empty(len(sites), np.int64)
        if len(sites):
            _check(self._do["search"](self._task, len(sites), address(sites), FIT["DEFAULT_HINT"], address(cells)),
                   "x")
        return cells.reshape(shape) - 1


class _Spline(PPoly):
    """A spline that is constructed from values."""

    def _construct(self, x, y, axis, extrapolate, constructor, order, kind, boundary=0, ends=(), slopes=None):
        """The coefficients by one of the library's constructors. ends: values of the boundary
        conditions, for all functions; slopes: at all breakpoints, of the shape of y."""
        x, y = unmasked(x, "x"), unmasked(y, "y")
        dtype = _real_dtype(x, y, *([] if slopes is None else [slopes]))
        x = _breakpoints(x, dtype)
        axis = integer(axis, "axis")
        if not -y.ndim <= axis < y.ndim:
            raise ValueError(f"axis: y has {y.ndim} axes")
        axis %= y.ndim
        trailing = y.shape[:axis] + y.shape[axis + 1:]

        def rows_of(array, name):
            if array.shape[axis] != len(x):
                raise ValueError(f"{name}: {array.shape[axis]} values along the axis for {len(x)} breakpoints")
            if not np.isfinite(array).all():
                raise ValueError(f"{name}: a number is not finite")
            return contiguous(np.moveaxis(array, axis, -1), dtype).reshape(-1, len(x))
        values = rows_of(y, "y")
        rows = np.empty((len(values), len(x) - 1, order), dtype)
        letter = "d" if dtype.itemsize == 8 else "s"
        do, build = _OF[letter], prototype(f"kef_df_kernel_{letter}DF{constructor}1D", _pointer, _i64)
        ends, inner, internal = np.array(ends, dtype), None, 0
        if not np.isfinite(ends).all():
            raise ValueError("bc_type: a number is not finite")
        groups = [slice(0, len(values))] if len(values) else []
        if slopes is not None:
            # Conditions are the same for all functions of a task: so a task for each.
            slopes, internal = rows_of(slopes, "dydx"), FIT["INTERNAL_FIRST"]
            groups = [slice(i, i + 1) for i in range(len(values))]
        task = _pointer()
        try:
            for group in groups:
                some, made = values[group], rows[group]
                if slopes is not None:
                    own = slopes[group][0]
                    ends, inner = own[[0, -1]], own[1:-1].copy()
                _check(do["new"](ctypes.addressof(task), len(x), address(x), FIT["NON_UNIFORM"], len(some),
                                 address(some), FIT["BY_ROWS"], 1), "x")
                _check(do["edit"](task, order, FIT[f"TYPE_{kind}"], boundary, address(ends) if ends.size else None,
                                  internal, None if inner is None else address(inner), address(made), FIT["BY_ROWS"]),
                       "bc_type")
                _check(build(task, 0), type(self).__name__)
                _free(task)
        finally:
            _free(task)
        self._become(x, rows, trailing, axis, extrapolate)


_ENDS = {(1, 1): "FIRST_FIRST", (1, 2): "FIRST_SECOND", (2, 1): "SECOND_FIRST", (2, 2): "SECOND_SECOND"}
_NAMED = {"clamped": (1, 0.0), "natural": (2, 0.0)}


def _boundary(bc_type):
    """The library's boundary type and values of what SciPy's bc_type says."""
    if isinstance(bc_type, str) and bc_type in ("not-a-knot", "periodic"):
        return FIT["NOT_A_KNOT" if bc_type == "not-a-knot" else "PERIODIC"], ()
    pair = (bc_type, bc_type) if isinstance(bc_type, str) else bc_type
    try:
        left, right = (_NAMED[end] if isinstance(end, str) else (operator.index(end[0]), float(end[1]))
                       for end in pair)
        return FIT[_ENDS[left[0], right[0]]], (left[1], right[1])
    except (KeyError, TypeError, ValueError, IndexError):
        raise ValueError(f"bc_type: {bc_type!r} is none of 'not-a-knot', 'periodic', 'clamped', 'natural' and "
                         "pairs of ends, 'clamped', 'natural' or (order of derivative, number)") from None


class CubicSpline(_Spline):
    """The twice differentiable cubic spline, as `scipy.interpolate.CubicSpline`.

    Parameters
    ----------
    x : array_like, (n,)
        Breakpoints, ascending.
    y : array_like
        Values, n of them along `axis`.
    axis : int, optional
    bc_type : str or pair, optional
        'not-a-knot', 'periodic' (y[0] and y[-1] equal), 'clamped' (slopes 0), 'natural' (second derivatives
        0), or a pair of ends: 'clamped', 'natural' or (order of derivative, number), the number being the
        same for all functions.
    extrapolate : {True, False, 'periodic'}, optional

    Examples
    --------
    >>> from kef import interpolate
    >>> spline = interpolate.CubicSpline([0.0, 1.0, 2.0, 3.0], [0.0, 1.0, 0.0, 1.0], bc_type="natural")
    >>> float(spline(1.5))
    0.5
    >>> bool(abs(spline([0.0, 3.0], 2)).max() < 1e-14)
    True
    """

    def __init__(self, x, y, axis=0, bc_type="not-a-knot", extrapolate=None):
        boundary, ends = _boundary(bc_type)
        if boundary == FIT["PERIODIC"] and np.size(y):
            y = unmasked(y, "y")
            first, last = np.take(y, 0, axis), np.take(y, -1, axis)
            if not np.allclose(first, last, rtol=1e-15, atol=1e-15):
                raise ValueError("y: its first and last values differ, and bc_type is 'periodic'")
            extrapolate = "periodic" if extrapolate is None else extrapolate
        if np.size(x) > 3 or np.size(x) == 3 and boundary != FIT["NOT_A_KNOT"]:
            self._construct(x, y, axis, extrapolate, "NaturalCubicSpline", 4, "NATURAL", boundary, ends)
        else:  # the parabola, the line, or the cubic of two ends: Bessel's
            self._construct(x, y, axis, extrapolate, "BesselCubicSpline", 4, "BESSEL", boundary if ends else 0, ends)


class Akima1DInterpolator(_Spline):
    """Akima's spline (1970), as `scipy.interpolate.Akima1DInterpolator`: no values outside, unless
    `extrapolate` says so.

    Parameters
    ----------
    x, y, axis
        As of `CubicSpline`.
    extrapolate : {False, True, 'periodic'}, optional

    Examples
    --------
    >>> from kef import interpolate
    >>> spline = interpolate.Akima1DInterpolator([0.0, 1.0, 2.0, 3.0, 4.0], [0.0, 0.0, 0.0, 1.0, 2.0])
    >>> spline([0.5, 3.5, 9.0])
    array([0. , 1.5, nan])
    """

    def __init__(self, x, y, axis=0, extrapolate=False):
        self._construct(x, y, axis, extrapolate, "AkimaCubicSpline", 4, "AKIMA")


class CubicHermiteSpline(_Spline):
    """The cubic spline of given values and slopes, as `scipy.interpolate.CubicHermiteSpline`.

    Parameters
    ----------
    x, y, axis, extrapolate
        As of `CubicSpline`.
    dydx : array_like
        Slopes, of the shape of y.

    Examples
    --------
    >>> from kef import interpolate
    >>> float(interpolate.CubicHermiteSpline([0.0, 1.0], [0.0, 1.0], [0.0, 0.0])(0.5))
    0.5
    """

    def __init__(self, x, y, dydx, axis=0, extrapolate=None):
        y, dydx = unmasked(y, "y"), unmasked(dydx, "dydx")
        if y.shape != dydx.shape:
            raise ValueError(f"dydx: its shape is {dydx.shape}, not that of y, {y.shape}")
        self._construct(x, y, axis, extrapolate, "HermiteCubicSpline", 4, "HERMITE", FIT["FIRST_FIRST"], slopes=dydx)


class _PlainSpline(_Spline):
    """Splines without words on their ends; `_made_by`: constructor, order, kind."""

    def __init__(self, x, y, axis=0, extrapolate=None):
        self._construct(x, y, axis, extrapolate, *self._made_by)


class LinearSpline(_PlainSpline):
    """Straight lines from point to point.

    Parameters
    ----------
    x, y, axis, extrapolate
        As of `CubicSpline`.

    Examples
    --------
    >>> from kef import interpolate
    >>> interpolate.LinearSpline([0.0, 1.0, 3.0], [0.0, 1.0, 0.0])([0.5, 2.0])
    array([0.5, 0.5])
    """

    _made_by = "LinearSpline", 2, "DEFAULT"


class QuadraticSpline(_PlainSpline):
    """The differentiable quadratic spline whose curvature jumps least.

    Parameters
    ----------
    x, y, axis, extrapolate
        As of `CubicSpline`.

    Examples
    --------
    >>> from kef import interpolate
    >>> float(interpolate.QuadraticSpline([0.0, 1.0, 3.0, 4.0], [0.0, 1.0, 9.0, 16.0])(2.0))
    4.0
    """

    _made_by = "QuadraticSpline", 3, "DEFAULT"


class BesselSpline(_PlainSpline):
    """The differentiable cubic spline with slopes of parabolas through three neighbours.

    Parameters
    ----------
    x, y, axis, extrapolate
        As of `CubicSpline`.

    Examples
    --------
    >>> from kef import interpolate
    >>> float(interpolate.BesselSpline([0.0, 1.0, 2.0, 4.0], [0.0, 1.0, 4.0, 16.0])(3.0))
    9.0
    """

    _made_by = "BesselCubicSpline", 4, "BESSEL"


__all__ = ["PPoly", "CubicSpline", "Akima1DInterpolator", "CubicHermiteSpline", "LinearSpline", "QuadraticSpline",
           "BesselSpline"]
