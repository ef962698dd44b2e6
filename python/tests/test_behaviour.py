"""How a call behaves in a program: threads, signals, progress, imports."""

from __future__ import annotations

import random
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import pytest
import tarn

# So many arrangements take far longer than a test waits for them.
ENDLESS = 10**12


def table(count: int, seed: int = 1) -> dict[str, list[float]]:
    numbers = random.Random(seed)
    return {name: [numbers.gauss(0, 1) for _ in range(count)] for name in ("x", "y")}


def test_analyses_in_threads_give_what_they_give_alone() -> None:
    tables = [table(500, seed) for seed in range(16)]

    def analyze(data: dict[str, list[float]]) -> str:
        return tarn.analyze(data, related=["x", "y"], tests=["sign", "wilcoxon"], monte_carlo=500).to_json()

    alone = [analyze(data) for data in tables]
    with ThreadPoolExecutor(4) as pool:
        assert list(pool.map(analyze, tables)) == alone


def test_threads_change_nothing() -> None:
    data = table(70000)
    results = [tarn.analyze(data, related=["x", "y"], threads=threads, monte_carlo=20) for threads in (1, 2, 5)]
    assert len({result.to_json() for result in results}) == 1


class Stop(Exception):
    pass


def test_a_run_takes_no_more_memory_than_it_may() -> None:
    data = {**table(1000), "s": ["a", "b"] * 500}
    plan = {"tests": [{"sign": {"variableName": ["x", "y"]}}]}
    # Of the table, and where that has room, of the run: 1000 rows of 3 columns take 8 bytes for each cell, a test 52,000
    # and each of its fields 36,000.
    for memory, what in ((1024, r"1000 rows of .*"), (25 * 1024, "1 results of tests, 2 related fields")):
        refusal = rf"may take .* of memory \({what}\); expected at most {memory // 1024}\.0 KiB, or more told by memory="
        for options in ({}, {"split": "s"}):
            with pytest.raises(tarn.InputError, match=refusal):
                tarn.analyze(data, related=["x", "y"], tests="sign", memory=memory, **options)  # type: ignore[arg-type]
        with pytest.raises(tarn.InputError, match=refusal):
            tarn.run(data, plan, memory=memory)
    enough = tarn.analyze(data, related=["x", "y"], tests="sign", memory="1.5G")
    assert enough.to_json() == tarn.analyze(data, related=["x", "y"], tests="sign").to_json()
    assert enough.rerun(data).request["memory"] == 3 * 2**29
    for wrong in ("8", "8g", "G", 0, -1, 1.5, True):
        with pytest.raises(tarn.InputError, match='expected a size like "8G"'):
            tarn.analyze(data, related=["x", "y"], memory=wrong)  # type: ignore[arg-type]


def test_other_threads_go_on_meanwhile() -> None:
    count = 0
    is_over = threading.Event()
    has_counted = threading.Event()

    def work() -> None:
        nonlocal count
        while not is_over.wait(0.001):
            count += 1
            if count > 20:
                has_counted.set()

    counter = threading.Thread(target=work)

    def stop_when_counted(percent: float) -> None:
        if has_counted.wait(60):
            raise Stop

    counter.start()
    try:
        # Were the interpreter locked, nothing would be counted and the run would never be stopped.
        with pytest.raises(Stop):
            tarn.analyze(table(50), related=["x", "y"], tests="wilcoxon", monte_carlo=ENDLESS, progress=stop_when_counted)
    finally:
        is_over.set()
        counter.join()
    assert count > 20


def test_progress_is_told_on_the_calling_thread() -> None:
    told: list[tuple[float, int]] = []
    tarn.analyze(table(1000), related=["x", "y"], progress=lambda percent: told.append((percent, threading.get_ident())))
    percents = [percent for percent, _ in told]
    assert percents and percents == sorted(percents) and 0 < percents[0] and percents[-1] <= 100
    assert {thread for _, thread in told} == {threading.get_ident()}


def test_progress_is_shown_by_tqdm(capfd: pytest.CaptureFixture[str]) -> None:
    result = tarn.analyze(table(1000), related=["x", "y"], progress=True)
    assert "%" in capfd.readouterr().err
    assert result.to_json() == tarn.analyze(table(1000), related=["x", "y"], progress=False).to_json()


def test_an_exception_of_progress_ends_the_analysis() -> None:
    def stop(percent: float) -> None:
        raise Stop

    with pytest.raises(Stop):
        tarn.analyze(table(1000), related=["x", "y"], monte_carlo=ENDLESS, progress=stop)
    with pytest.raises(tarn.InputError, match="progress= is of type int; expected a function"):
        tarn.analyze(table(10), related=["x", "y"], progress=3)  # type: ignore[arg-type]


def test_ctrl_c_stops_an_analysis() -> None:
    program = (
        "import tarn\n"
        "data = {'x': list(range(1000)), 'y': [number * 7 % 1000 for number in range(1000)]}\n"
        "print('begun', flush=True)\n"
        "try:\n"
        f"    tarn.analyze(data, related=['x', 'y'], tests='wilcoxon', monte_carlo={ENDLESS})\n"
        "except KeyboardInterrupt:\n"
        "    print('stopped', flush=True)\n"
        "print(tarn.sign([1, 2], [2, 3]).statistic)\n"
    )
    with subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE, text=True) as process:
        assert process.stdout is not None
        assert process.stdout.readline() == "begun\n"
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        try:
            out, _ = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
    assert out == "stopped\n2.0\n"


def test_effects_that_come_later_are_the_same_in_any_thread() -> None:
    data = table(3000)
    expected = tarn.analyze(data, related=["x", "y"], tests="wilcoxon")[0].effect
    test = tarn.wilcoxon(data["x"], data["y"])
    with ThreadPoolExecutor(4) as pool:
        assert list(pool.map(lambda _: test.result[0].effect, range(8))) == [expected] * 8
    assert test.effect == expected


def test_ctrl_c_stops_what_comes_later() -> None:
    program = (
        "import numpy, tarn\n"
        "numbers = numpy.random.default_rng(1)\n"
        "x, y = numbers.normal(size=3000), numbers.normal(size=3000)\n"
        f"test = tarn.wilcoxon(x, y, monte_carlo={ENDLESS})\n"
    )
    with subprocess.Popen([sys.executable, "-c", program], stderr=subprocess.PIPE, text=True) as process:
        time.sleep(1.5)
        process.send_signal(signal.SIGINT)
        try:
            _, err = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
    assert err.rstrip().endswith("KeyboardInterrupt")


def test_nothing_is_printed(capfd: pytest.CaptureFixture[str]) -> None:
    tarn.analyze(table(100), related=["x", "y"])
    with pytest.raises(tarn.InputError):
        tarn.analyze(table(100), related=["x", "z"])
    assert capfd.readouterr() == ("", "")


def test_the_import_brings_no_library() -> None:
    program = "import sys, tarn; print(*(name for name in ('numpy', 'pandas', 'polars', 'pyarrow', 'narwhals') if name in sys.modules))"
    done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, check=True)
    assert done.stdout.strip() == ""


def test_extended_arithmetic_is_the_rule() -> None:
    assert '"arithmetic": "extended"' in tarn.analyze(table(10), related=["x", "y"]).to_json()
    assert '"arithmetic": "as-defined"' in tarn.analyze(table(10), related=["x", "y"], as_defined=True).to_json()
