"""What the docstrings of the functions say: a line and an example for each."""

# The names that NumPy has for some of the functions.
NUMPY_NAMES = {"absolute": "abs", "arccos": "acos", "arcsin": "asin", "arctan": "atan", "arctan2": "atan2",
               "arccosh": "acosh", "arcsinh": "asinh", "arctanh": "atanh", "subtract": "sub",
               "multiply": "mul", "divide": "div", "angle": "arg", "log": "ln", "reciprocal": "inv",
               "square": "sqr", "power": "pow", "conjugate": "conj"}

# Name: what it computes, the arguments of an example, and its result.
WORDS = {
    "abs": ("Absolute value; the modulus of complex numbers.", "[-1.5, 2.0]", "array([1.5, 2. ])"),
    "acos": ("Inverse cosine, in [0, pi].", "[1.0, 0.5, -1.0]", "array([0.        , 1.04719755, 3.14159265])"),
    "asin": ("Inverse sine, in [-pi/2, pi/2].", "[1.0, 0.5, -1.0]", "array([ 1.57079633,  0.52359878, -1.57079633])"),
    "atan": ("Inverse tangent, in [-pi/2, pi/2].", "[0.0, 1.0, -1.0]", "array([ 0.        ,  0.78539816, -0.78539816])"),
    "acosh": ("Inverse hyperbolic cosine, of x >= 1.", "[1.0, 2.0, 10.0]", "array([0.        , 1.3169579 , 2.99322285])"),
    "asinh": ("Inverse hyperbolic sine.", "[0.0, 1.0, -10.0]", "array([ 0.        ,  0.88137359, -2.99822295])"),
    "atanh": ("Inverse hyperbolic tangent, of -1 < x < 1.", "[0.0, 0.5, -0.5]", "array([ 0.        ,  0.54930614, -0.54930614])"),
    "add": ("The sum x + y.", "[1.0, 2.0], 0.5", "array([1.5, 2.5])"),
    "sub": ("The difference x - y.", "[1.0, 2.0], 0.5", "array([0.5, 1.5])"),
    "mul": ("The product x y.", "[1.0, 2.0], 0.5", "array([0.5, 1. ])"),
    "div": ("The quotient x / y.", "[1.0, 2.0], 4.0", "array([0.25, 0.5 ])"),
    "arg": ("The argument of complex numbers, in [-pi, pi].", "[1j, -1 + 0j, 1 + 1j]", "array([1.57079633, 3.14159265, 0.78539816])"),
    "atan2": ("The angle of the point (y, x): the first argument is the ordinate.", "[1.0, -1.0], [1.0, -1.0]", "array([ 0.78539816, -2.35619449])"),
    "cis": ("cos x + i sin x of real x.", "[0.0, 1.0]", "array([1.        +0.j        , 0.54030231+0.84147098j])"),
    "cbrt": ("Real cube root.", "[8.0, -27.0, 2.0]", "array([ 2.        , -3.        ,  1.25992105])"),
    "invcbrt": ("One over the real cube root.", "[8.0, -27.0, 2.0]", "array([ 0.5       , -0.33333333,  0.79370053])"),
    "cdfnorm": ("Distribution function of the standard normal law.", "[0.0, 1.959964, -1.0]", "array([0.5       , 0.975     , 0.15865525])"),
    "cdfnorminv": ("Quantile of the standard normal law, of 0 < x < 1.", "[0.5, 0.975, 0.01]", "array([ 0.        ,  1.95996398, -2.32634787])"),
    "ceil": ("The least integer not below x.", "[1.5, -1.5, 2.0]", "array([ 2., -1.,  2.])"),
    "floor": ("The largest integer not above x.", "[1.5, -1.5, 2.0]", "array([ 1., -2.,  2.])"),
    "round": ("The nearest integer, halves away from zero.", "[1.5, 2.5, -0.5]", "array([ 2.,  3., -1.])"),
    "trunc": ("The integer part, towards zero.", "[1.5, -1.5, 2.0]", "array([ 1., -1.,  2.])"),
    "rint": ("The nearest integer, halves to even; raises inexact.", "[1.5, 2.5, -0.5]", "array([ 2.,  2., -0.])"),
    "nearbyint": ("The nearest integer, halves to even.", "[1.5, 2.5, -0.5]", "array([ 2.,  2., -0.])"),
    "conj": ("Complex conjugate.", "[1 + 2j, -1j]", "array([ 1.-2.j, -0.+1.j])"),
    "cos": ("Cosine, of any finite x.", "[0.0, 1.0, 1e22]", "array([1.        , 0.54030231, 0.52321479])"),
    "sin": ("Sine, of any finite x.", "[0.0, 1.0, 1e22]", "array([ 0.        ,  0.84147098, -0.85220085])"),
    "tan": ("Tangent, of any finite x.", "[0.0, 1.0, 1e22]", "array([ 0.        ,  1.55740772, -1.62877823])"),
    "cosh": ("Hyperbolic cosine.", "[0.0, 1.0, -1.0]", "array([1.        , 1.54308063, 1.54308063])"),
    "sinh": ("Hyperbolic sine.", "[0.0, 1.0, -1.0]", "array([ 0.        ,  1.17520119, -1.17520119])"),
    "tanh": ("Hyperbolic tangent.", "[0.0, 1.0, -20.0]", "array([ 0.        ,  0.76159416, -1.        ])"),
    "erf": ("Error function.", "[0.0, 1.0, -1.0]", "array([ 0.        ,  0.84270079, -0.84270079])"),
    "erfc": ("Complementary error function 1 - erf x.", "[0.0, 1.0, 10.0]", "array([1.00000000e+00, 1.57299207e-01, 2.08848758e-45])"),
    "erfinv": ("Inverse of erf, of -1 < x < 1.", "[0.0, 0.5, -0.9]", "array([ 0.        ,  0.47693628, -1.16308715])"),
    "erfcinv": ("Inverse of erfc, of 0 < x < 2.", "[1.0, 0.5, 1e-10]", "array([0.        , 0.47693628, 4.57282497])"),
    "exp": ("e to the power x.", "[0.0, 1.0, -1.0]", "array([1.        , 2.71828183, 0.36787944])"),
    "ln": ("Natural logarithm, of x > 0.", "[1.0, 10.0, 0.5]", "array([ 0.        ,  2.30258509, -0.69314718])"),
    "log10": ("Decimal logarithm, of x > 0.", "[1.0, 1000.0, 0.5]", "array([ 0.     ,  3.     , -0.30103])"),
    "expm1": ("e to the power x, less 1, exact for small x.", "[0.0, 1.0, 1e-10]", "array([0.00000000e+00, 1.71828183e+00, 1.00000000e-10])"),
    "log1p": ("ln(1 + x), exact for small x, of x > -1.", "[0.0, 1.0, 1e-10]", "array([0.00000000e+00, 6.93147181e-01, 1.00000000e-10])"),
    "hypot": ("Square root of x^2 + y^2, without overflow on the way.", "[3.0, 1e300], [4.0, 1e300]", "array([5.00000000e+000, 1.41421356e+300])"),
    "inv": ("1 / x.", "[2.0, -4.0, 3.0]", "array([ 0.5       , -0.25      ,  0.33333333])"),
    "invsqrt": ("One over the square root, of x > 0.", "[4.0, 0.25, 2.0]", "array([0.5       , 2.        , 0.70710678])"),
    "sqr": ("The square of x.", "[3.0, -1.5]", "array([9.  , 2.25])"),
    "lgamma": ("Logarithm of the absolute value of the gamma function.", "[1.0, 0.5, 100.0]", "array([  0.        ,   0.57236494, 359.13420537])"),
    "tgamma": ("Gamma function.", "[5.0, 0.5, -1.5]", "array([24.        ,  1.77245385,  2.3632718 ])"),
    "linearfrac": ("(scale_x x + shift_x) / (scale_y y + shift_y); the numbers are 1, 0, 1, 0 if not given.",
                   "[1.0, 2.0], [4.0, 8.0], 1.0, 1.0", "array([0.5  , 0.375])"),
    "modf": ("The parts before and behind the decimal point, two arrays.", "[1.5, -2.25]", "(array([ 1., -2.]), array([ 0.5 , -0.25]))"),
    "mulbyconj": ("x times the conjugate of y, complex numbers.", "[1 + 2j], [1 + 1j]", "array([3.+1.j])"),
    "pow": ("x to the power y.", "[2.0, 9.0, 10.0], [10.0, 0.5, -2.0]", "array([1.024e+03, 3.000e+00, 1.000e-02])"),
    "pow2o3": ("x to the power 2/3: the square of the real cube root.", "[8.0, -27.0, 2.0]", "array([4.        , 9.        , 1.58740105])"),
    "pow3o2": ("x to the power 3/2, of x >= 0.", "[4.0, 9.0, 2.0]", "array([ 8.        , 27.        ,  2.82842712])"),
    "powx": ("x to the power of one number.", "[2.0, 9.0, 10.0], 0.5", "array([1.41421356, 3.        , 3.16227766])"),
    "sincos": ("Sine and cosine, two arrays.", "[0.0, 1.0]", "(array([0.        , 0.84147098]), array([1.        , 0.54030231]))"),
    "sqrt": ("Square root, of x >= 0; of complex numbers with a real part >= 0.", "[4.0, 2.0, 0.25]", "array([2.        , 1.41421356, 0.5       ])"),
    "pack": ("The elements of x at every step-th place, at the places of an index array, or where a mask is not 0.",
             "[1.0, 2.0, 3.0, 4.0], mask=[0, 1, 0, 1]", "array([2., 4.])"),
    "unpack": ("Puts values at every step-th place of out, at those of an index array, or where a mask is not 0.",
               "[1.0, 2.0], np.zeros(4), index=[3, 0]", "array([2., 0., 0., 1.])"),
}

_ARGUMENTS = """\
Parameters
----------
{arguments} : array_like
    float32, float64, complex64 or complex128, as far as the function has them; integers are taken as
    float64. Any shapes that broadcast, any strides and byte order.
out : ndarray, optional
    Where the result goes{two}.
where : array_like of bool, optional
    Elements where it is False are not computed, and keep what `out` holds.
accuracy : {{'high', 'low', 'enhanced'}}, optional
    'high' (or 'HA'): the most accurate; 'low' ('LA'): 50 bits, 21 of single precision; 'enhanced'
    performance ('EP'): 26 and 11 bits.
errors : {{None, 'raise', 'warn', 'ignore'}} or callable, optional
    What elements without a proper result do. None: as `numpy.errstate` says. 'raise' and 'warn' name
    the element. A callable is called with an `ElementError` for each, and may return another result.

Returns
-------
ndarray or scalar
    {returns}
"""

_PLACES = """\
Parameters
----------
{arguments}
step : int, optional
    Every step-th place, from the first one.
index : array_like of int, optional
    The places, from 0.
mask : array_like, optional
    The places where it is not 0.

Returns
-------
ndarray
    {returns}
"""


def docstring(name):
    """The docstring of a function, in NumPy's style."""
    summary, arguments, result = WORDS[name]
    if name == "pack":
        body = _PLACES.format(arguments="x : array_like", returns="The elements, in order.")
    elif name == "unpack":
        body = _PLACES.format(arguments="values : array_like\n    As many as there are places.\n"
                              "out : ndarray\n    A contiguous array.", returns="`out`.")
    else:
        two = name in ("modf", "sincos")
        both = name in ("add", "sub", "mul", "div", "atan2", "hypot", "pow", "mulbyconj", "linearfrac")
        body = _ARGUMENTS.format(arguments="x, y" if both else "x", two=", a tuple of two" if two else "",
                                 returns="The two results." if two else "The result; a scalar for scalars.")
    numpy = "\n>>> import numpy as np" if "np." in arguments else ""
    return f"{summary}\n\n{body}\nExamples\n--------\n>>> import kef{numpy}\n>>> kef.{name}({arguments})\n{result}\n"
