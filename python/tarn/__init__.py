"""Nonparametric hypothesis tests, with effects, exact significances and comparisons.

`analyze` runs any of them on a table; each test has a function of its own, too. `tests` lists them, `explain` says what
one of them asks, assumes and decides by.
"""

from ._analyze import TestInfo, analyze, explain, load, look, run, tests
from ._binding import version as __version__
from ._errors import EngineError, InputError
from ._functions import (
    binomial,
    chi_square,
    cochran,
    friedman,
    hodges_lehmann,
    hodges_lehmann_related,
    jonckheere,
    kendall,
    kolmogorov_smirnov,
    kruskal,
    kruskal_wallis,
    mann_whitney,
    marginal_homogeneity,
    mcnemar,
    median,
    moses,
    runs,
    sign,
    wald_wolfowitz,
    wilcoxon,
)
from ._look import Look
from ._plot import Plot
from ._result import Effect, Interval, Message, Result, Significance, TestResult
from ._screen import Screening, screen

__all__ = [
    "Effect",
    "EngineError",
    "InputError",
    "Interval",
    "Look",
    "Message",
    "Plot",
    "Result",
    "Screening",
    "Significance",
    "TestInfo",
    "TestResult",
    "__version__",
    "analyze",
    "binomial",
    "chi_square",
    "cochran",
    "explain",
    "friedman",
    "hodges_lehmann",
    "hodges_lehmann_related",
    "jonckheere",
    "kendall",
    "kolmogorov_smirnov",
    "kruskal",
    "kruskal_wallis",
    "load",
    "look",
    "mann_whitney",
    "marginal_homogeneity",
    "mcnemar",
    "median",
    "moses",
    "run",
    "runs",
    "screen",
    "sign",
    "tests",
    "wald_wolfowitz",
    "wilcoxon",
]
