"""The function of each test gives the numbers of SciPy, or those that a hand works out."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import numpy
import pandas
import polars
import pyarrow
import pytest
import tarn
from scipy import stats

X = [1.83, 0.50, 1.62, 2.48, 1.68, 1.88, 1.55, 3.06, 1.30]
Y = [0.878, 0.647, 0.598, 2.05, 1.06, 1.29, 1.06, 3.14, 1.29]
Z = [1.1, 0.9, 1.7, 2.2, 1.5, 1.4, 1.2, 2.9, 1.6]
TABLE = {"len": X + Y, "supp": ["OJ"] * 9 + ["VC"] * 9}
PAIRS = {"a": X, "b": Y, "c": Z}


def check(result: tarn.TestResult, expected: Any) -> None:
    """Holds a result to one of SciPy, which has as many digits as a document."""
    statistic, pvalue = result
    assert statistic == pytest.approx(float(expected[0]), rel=1e-12)
    assert pvalue == pytest.approx(float(expected[1]), rel=1e-12)


@pytest.mark.parametrize("alternative", ["two-sided", "less", "greater"])
def test_mann_whitney(alternative: Any) -> None:
    expected = stats.mannwhitneyu(X, Z, alternative=alternative, method="exact")  # without ties
    check(tarn.mann_whitney(X, Z, alternative=alternative, exact=True), expected)
    asymptotic = stats.mannwhitneyu(X, Y, alternative=alternative, method="asymptotic", use_continuity=True)
    check(tarn.mann_whitney(TABLE, "len", by="supp", alternative=alternative, continuity=True), asymptotic)


def test_samples_are_a_table_of_two_groups() -> None:
    by_samples = tarn.mann_whitney(X, Y)
    by_table = tarn.mann_whitney(TABLE, "len", by="supp")
    assert tuple(by_samples) == tuple(by_table)
    assert by_samples.direction == "x minus y"
    assert by_table.direction == "OJ minus VC"


def arrow_chunks(values: list[float]) -> Any:
    return pyarrow.chunked_array([values[:4], values[4:]])


@pytest.mark.parametrize("kind", [numpy.array, pandas.Series, polars.Series, pyarrow.array, arrow_chunks, tuple])
def test_samples_of_any_kind(kind: Callable[[list[float]], Any]) -> None:
    assert tuple(tarn.mann_whitney(kind(X), kind(Y))) == tuple(tarn.mann_whitney(X, Y))
    assert tuple(tarn.wilcoxon(kind(X), kind(Y))) == tuple(tarn.wilcoxon(X, Y))


@pytest.mark.parametrize(
    "sample",
    [
        numpy.array([1, 3, 5, 8], dtype="int8"),
        numpy.array([1, 3, 5, 8], dtype="float32"),
        numpy.arange(8.0)[::2] * 0 + [1, 3, 5, 8],
        numpy.array([[1, 0], [3, 0], [5, 0], [8, 0]])[:, 0],
        pandas.Series([1, 3, 5, 8, None], dtype="Int64"),
        pandas.Series([1, 3, 5, 8, None], dtype="int64[pyarrow]"),
        polars.Series([1, 3, None, 5, 8]),
        pyarrow.array([1, 3, None, 5, 8]),
        [1, 3, 5, 8, None, float("nan")],
    ],
)
def test_samples_in_any_layout(sample: Any) -> None:
    # By hand: of the 16 pairs with 2, 4, 6, 7 the sample is larger in 0 + 1 + 2 + 4.
    assert tarn.mann_whitney(sample, [2, 4, 6, 7]).statistic == 7


def test_samples_with_names() -> None:
    before, after = pandas.Series(X, name="before"), pandas.Series(Y, name="after")
    assert tarn.mann_whitney(before, after).direction == "before minus after"
    assert tarn.sign(before, after).fields == ("before", "after")


def test_kruskal_wallis() -> None:
    check(tarn.kruskal_wallis(X, Y, Z), stats.kruskal(X, Y, Z))
    check(tarn.kruskal_wallis(TABLE, "len", by="supp"), stats.kruskal(X, Y))


def test_median() -> None:
    # Without the correction that SciPy makes for two groups alone.
    check(tarn.median(X, Y, Z), stats.median_test(X, Y, Z, ties="below", correction=False)[:2])


def test_kolmogorov_smirnov_of_two_samples() -> None:
    expected = stats.ks_2samp(X, Z, method="exact")
    result = tarn.kolmogorov_smirnov(X, Z, exact=True)
    assert result.pvalue == pytest.approx(expected.pvalue, rel=1e-12)


def test_kolmogorov_smirnov_of_one_sample() -> None:
    result = tarn.kolmogorov_smirnov(X, distribution="uniform")
    # By hand: the largest difference from the uniform distribution between the ends of the data.
    expected = stats.kstest(X, "uniform", args=(min(X), max(X) - min(X)))
    figures = tarn.analyze({"x": X}, one_sample="x", tests="kolmogorov-smirnov", distribution="uniform")
    assert result == figures[0]
    assert f"{expected.statistic:.4f}" in figures.to_text(details=True)


def test_jonckheere_takes_samples_in_their_order() -> None:
    # By hand: of 1, 2 | 3, 4 | 5, 6 all 12 pairs rise.
    assert tarn.jonckheere([1, 2], [3, 4], [5, 6]).statistic == 12
    assert tarn.jonckheere([5, 6], [3, 4], [1, 2]).statistic == 0
    words = {"v": [1, 2, 3, 4, 5, 6], "dose": ["low", "low", "mid", "mid", "high", "high"]}
    assert tarn.jonckheere(words, "v", by="dose", order={"dose": ["low", "mid", "high"]}).statistic == 12


def test_wilcoxon() -> None:
    expected = stats.wilcoxon(Y, X, correction=False, method="asymptotic")
    result = tarn.wilcoxon(PAIRS, "a", "b", continuity=False)
    assert result.pvalue == pytest.approx(expected.pvalue, rel=1e-12)
    exact = stats.wilcoxon([value - 1.0 for value in X], method="exact")
    assert tarn.wilcoxon(X, test_value=1.0, exact=True).pvalue == pytest.approx(exact.pvalue, rel=1e-12)
    assert tarn.wilcoxon(PAIRS, "a", test_value=1.0, exact=True).pvalue == pytest.approx(exact.pvalue, rel=1e-12)


def test_sign() -> None:
    greater = sum(b > a for a, b in zip(X, Y, strict=True))
    result = tarn.sign(X, Y)
    assert result.statistic == greater
    assert result.pvalue == pytest.approx(stats.binomtest(greater, 9).pvalue, rel=1e-12)


def test_friedman_and_kendall() -> None:
    expected = stats.friedmanchisquare(X, Y, Z)
    check(tarn.friedman(X, Y, Z), expected)
    concordance = tarn.kendall(PAIRS, "a", "b", "c")
    check(concordance, expected)
    assert concordance.effect is not None
    assert concordance.effect.value == pytest.approx(expected.statistic / (9 * 2), rel=1e-12)  # W = Q / n (k - 1)


def test_cochran_and_mcnemar() -> None:
    # By hand: of the cases that change two go up and five go down; Q of two columns is (5 - 2)^2 / 7.
    first = ["y"] * 5 + ["n"] * 2 + ["y"] * 4
    second = ["n"] * 5 + ["y"] * 2 + ["y"] * 4
    assert tarn.mcnemar(first, second, exact=True).pvalue == pytest.approx(stats.binomtest(2, 7).pvalue, rel=1e-12)
    assert tarn.cochran(first, second).statistic == pytest.approx(9 / 7, rel=1e-12)
    numbers = [[1 if word == "y" else 0 for word in words] for words in (first, second)]
    assert tarn.cochran(*numbers, success=1).statistic == pytest.approx(9 / 7, rel=1e-12)


def test_marginal_homogeneity() -> None:
    # By hand: the pairs that differ are (1,2), (1,2), (2,3), (3,1): the sum of the first values is 7, and 7 is less
    # than its expectation 7.5.
    result = tarn.marginal_homogeneity([1, 1, 2, 3, 2], [2, 2, 3, 1, 2])
    assert result.statistic == 7


def test_binomial() -> None:
    words = ["yes"] * 7 + ["no"] * 3
    assert tarn.binomial(words, exact=True).pvalue == pytest.approx(stats.binomtest(7, 10).pvalue, rel=1e-12)
    less = tarn.binomial({"w": words}, "w", success="no", probability=0.4, alternative="less", exact=True)
    assert less.pvalue == pytest.approx(stats.binomtest(3, 10, 0.4, "less").pvalue, rel=1e-12)


def test_chi_square() -> None:
    check(tarn.chi_square([1, 1, 1, 2, 2, 3, 3, 3, 3]), stats.chisquare([3, 2, 4]))
    check(tarn.chi_square({"w": list("aaabbcccc")}, "w"), stats.chisquare([3, 2, 4]))


def test_runs() -> None:
    # By hand: a a b a b b has the runs aa, b, a, bb.
    assert tarn.runs(list("aababb")).statistic == 4
    assert tarn.runs([1, 2, 8, 1, 9, 9], cut_point=5).statistic == 4


def test_hodges_lehmann() -> None:
    differences = [x - z for x in X for z in Z]
    result = tarn.hodges_lehmann(X, Z)
    assert result.interval is not None
    assert result.interval.estimate == pytest.approx(numpy.median(differences), rel=1e-9)
    assert result.pvalue is None
    paired = [y - x for x, y in zip(X, Y, strict=True)]
    walsh = [(paired[i] + paired[j]) / 2 for i in range(9) for j in range(i, 9)]
    related = tarn.hodges_lehmann_related(X, Y)
    assert related.interval is not None
    assert abs(related.interval.estimate or 0) == pytest.approx(abs(numpy.median(walsh)), rel=1e-9)


def test_moses_and_wald_wolfowitz() -> None:
    # By hand: x x y y x y in ascending order has the runs xx, yy, x, y.
    assert tarn.wald_wolfowitz([1, 2, 5], [3, 4, 6]).statistic == 4
    # By hand: of 1 to 9 against 4.5, 5.5 and 6.5, without one case at each end, the ranks go from 2 to 11.
    assert tarn.moses([1, 2, 3, 4, 5, 6, 7, 8, 9], [4.5, 5.5, 6.5], outliers=1).statistic == 10


def test_weights_stand_for_cases() -> None:
    weighted = tarn.mann_whitney([1, 2, 5], [3, 4, 6], weights=[1, 2, 1, 1, 1, 2])
    assert tuple(weighted) == tuple(tarn.mann_whitney([1, 2, 2, 5], [3, 4, 6, 6]))


def test_like_names_the_call() -> None:
    result = tarn.mann_whitney(X, Y, like="scipy")
    assert result.pvalue == pytest.approx(stats.mannwhitneyu(X, Y).pvalue, rel=1e-12)
    assert result.call is not None and "mannwhitneyu" in result.call


@pytest.mark.parametrize(
    ("call", "what"),
    [
        (lambda: tarn.mann_whitney(X, Y, Z), "mann-whitney of 3 samples; expected 2"),
        (lambda: tarn.mann_whitney(X), "mann-whitney of 1 sample; expected 2"),
        (lambda: tarn.kruskal_wallis(X), "kruskal-wallis of 1 sample; expected 2 or more"),
        (lambda: tarn.mann_whitney(TABLE, "len"),
         "a table without groups; expected by= with the column whose categories are the groups"),
        (lambda: tarn.mann_whitney(X, Y, by="supp"),
         "by='supp' goes with a table and one column; expected mann_whitney(data, \"column\", by='supp')"),
        (lambda: tarn.mann_whitney(X, ["a", "b"]), "sample y holds texts; expected numbers"),
        (lambda: tarn.mann_whitney(X, 3), "sample y is of type int; expected a sequence of numbers"),
        (lambda: tarn.sign(X, Y[:3]), 'column "y" has 3 values and "x" 9; expected as many in each'),
        (lambda: tarn.mann_whitney(X, Y, alternatve="less"), "alternatve= is no argument; did you mean alternative?"),  # type: ignore[call-arg]
    ],
)  # fmt: skip
def test_mistakes_in_a_call(call: Callable[[], object], what: str) -> None:
    with pytest.raises(tarn.InputError) as mistake:
        call()
    assert str(mistake.value) == what
