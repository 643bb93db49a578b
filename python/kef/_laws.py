"""The laws of kef.random: parameters, their checks and what the docstrings say, a row each."""

import math
from typing import Callable, NamedTuple

# What a parameter has to be: in words, and as a test of the value that the library takes.
FINITE = ("finite", math.isfinite)
POSITIVE = ("positive and finite", lambda x: 0 < x < math.inf)
NOT_NEGATIVE = ("finite and 0 or more", lambda x: 0 <= x < math.inf)
PROBABILITY = ("between 0 and 1", lambda x: 0 <= x <= 1)
POSITIVE_PROBABILITY = ("above 0 and 1 at most", lambda x: 0 < x <= 1)
SHIFT, SCALE = ("shift", 0.0, FINITE), ("scale", 1.0, POSITIVE)

_GAUSSIAN = {"box_muller_pairs": 1, "box_muller": 0, "inversion": 2}
_STANDARD = {"standard": 0}

# By function of the library, the default first.
METHODS = {"Uniform": {"standard": 0, "accurate": 0x40000000}, "Gaussian": _GAUSSIAN,
           "Lognormal": {"box_muller_pairs": 0, "inversion": 1}, "Poisson": {"uniform": 0, "normal": 1}}
for _function in ("Exponential", "Laplace", "Weibull", "Cauchy", "Rayleigh", "Gumbel", "Gamma", "Beta",
                  "Bernoulli", "Geometric", "Binomial", "Hypergeometric", "Negbinomial"):
    METHODS[_function] = _STANDARD


def _any(*values):
    pass


def _ascending(low, high):
    if not low < high:
        raise ValueError(f"low, high: {low} is not below {high}")


def _of_population(population, sample, marked):
    for name, number in (("sample", sample), ("marked", marked)):
        if number > population:
            raise ValueError(f"{name}: {number} is more than the population, {population}")


class Law(NamedTuple):
    """A law.

    function    of the library
    dtypes      of the results
    parameters  name, default (None: it has to be given) and check, in the library's order
    words       what the law is
    together    a check of all parameters
    """
    function: str
    dtypes: tuple
    parameters: list
    words: str
    together: Callable = _any

    def docstring(self, name, methods):
        listed = "".join(f"{parameter} : number{'' if default is None else ', optional'}\n"
                         f"    {check[0].capitalize()}{'' if default is None else f'; {default:g}'}.\n"
                         for parameter, default, check in self.parameters)
        given = ", ".join(f"{parameter}={EXAMPLES.get(parameter, 2)}"
                          for parameter, default, _ in self.parameters if default is None)
        return (f"{self.words}\n\nParameters\n----------\n"
                "size : None, int or tuple of int, optional\n    None: one number.\n"
                f"{listed}"
                f"dtype : {{{', '.join(self.dtypes)}}}, optional\n"
                f"method : {{{', '.join(map(repr, methods))}}}, optional\n"
                "out : ndarray, optional\n    A contiguous array of the dtype, which is filled.\n\n"
                "Returns\n-------\nndarray or scalar\n\n"
                "Examples\n--------\n>>> from kef import random\n"
                f">>> random.MRG32K3A(1).{name}((2, 3){', ' if given else ''}{given}).shape\n(2, 3)\n")


EXAMPLES = {"p": 0.25, "population": 30, "sample": 10, "marked": 5, "trials": 10, "low": 0, "high": 6}
_BOTH, _WHOLE = ("float64", "float32"), ("int32",)

LAWS = {
    "uniform": Law("Uniform", _BOTH, [("low", 0.0, FINITE), ("high", 1.0, FINITE)],
                   "Uniform on [low, high): the generator's own numbers. Method 'accurate' clamps.", _ascending),
    "integers": Law("Uniform", _WHOLE, [("low", None, FINITE), ("high", None, FINITE)],
                    "Integers uniform on [low, high).", _ascending),
    "normal": Law("Gaussian", _BOTH, [("mean", 0.0, FINITE), ("sigma", 1.0, NOT_NEGATIVE)],
                  "Normal, of a mean and a standard deviation."),
    "lognormal": Law("Lognormal", _BOTH, [("mean", 0.0, FINITE), ("sigma", 1.0, NOT_NEGATIVE), SHIFT, SCALE],
                     "shift + scale exp(x), x normal with mean and standard deviation."),
    "exponential": Law("Exponential", _BOTH, [SHIFT, SCALE], "Exponential, from shift on, of mean shift + scale."),
    "laplace": Law("Laplace", _BOTH, [SHIFT, SCALE], "Laplace around shift, of variance 2 scale^2."),
    "weibull": Law("Weibull", _BOTH, [("shape", None, POSITIVE), SHIFT, SCALE], "Weibull of a shape."),
    "cauchy": Law("Cauchy", _BOTH, [SHIFT, SCALE], "Cauchy around shift."),
    "rayleigh": Law("Rayleigh", _BOTH, [SHIFT, SCALE],
                    "Rayleigh: P(x > shift + scale t) = exp(-t^2), so scale is sqrt(2) sigma."),
    "gumbel": Law("Gumbel", _BOTH, [SHIFT, SCALE], "Gumbel, of minima."),
    "gamma": Law("Gamma", _BOTH, [("shape", None, POSITIVE), SHIFT, SCALE], "Gamma of a shape."),
    "beta": Law("Beta", _BOTH, [("p", None, POSITIVE), ("q", None, POSITIVE), SHIFT, SCALE],
                "Beta of two shapes, on [shift, shift + scale]."),
    "bernoulli": Law("Bernoulli", _WHOLE, [("p", None, PROBABILITY)], "1 with probability p, or 0."),
    "geometric": Law("Geometric", _WHOLE, [("p", None, POSITIVE_PROBABILITY)],
                     "Failures before the first success of probability p."),
    "binomial": Law("Binomial", _WHOLE, [("trials", None, NOT_NEGATIVE), ("p", None, PROBABILITY)],
                    "Successes in trials of probability p."),
    "hypergeometric": Law("Hypergeometric", _WHOLE,
                          [("population", None, NOT_NEGATIVE), ("sample", None, NOT_NEGATIVE),
                           ("marked", None, NOT_NEGATIVE)],
                          "Marked elements in a sample of a population.", _of_population),
    "poisson": Law("Poisson", _WHOLE, [("mean", None, NOT_NEGATIVE)],
                   "Poisson of a mean; of an array of means, whose shape `size` is then, one number each."),
    "negative_binomial": Law("Negbinomial", _WHOLE,
                             [("successes", None, POSITIVE), ("p", None, POSITIVE_PROBABILITY)],
                             "Failures before a number of successes of probability p."),
}
