#!/usr/bin/env python3
"""Calls the Python package with one of its allocations failing, another one each time, and checks that the process
lives on.

usage: LD_PRELOAD=build/release/libtarn_hard_times.so python3 exhaust_python.py [--stride N] [--for-good] [--calls NAME,..]

Each call is made in a process of its own, forked from one that has made no call yet. With --for-good all allocations
fail from that one on, the interpreter's as well, until the call is back. A call ends well if it

- returns what it returns with all its memory, or
- raises MemoryError, or an error of the package that says that there was no memory, or
- returns a result in which a test says so (220012 or 220002),

and if the same call, made once more with all the memory, returns what it should. Anything else is told with the number
of the allocation, and the status is 1.
"""

import argparse
import ctypes
import os
import pathlib
import signal
import sys
import tempfile
from collections.abc import Callable

import tarn

SOURCES = pathlib.Path(__file__).resolve().parents[2]
OUT_OF_MEMORY = ("220012", "220002")
SECONDS = 60
FEWEST_FAILURES = 8  # of a call, whatever the stride
DONE = 77  # the status of a process that came to its end

shim = ctypes.PyDLL(None)
call_in_hard_times = shim.TarnCallInHardTimes
call_in_hard_times.restype = ctypes.py_object
call_in_hard_times.argtypes = [ctypes.py_object, ctypes.c_long, ctypes.c_int, ctypes.POINTER(ctypes.c_long)]


def sleep_clinic() -> dict[str, list[object]]:
    lines = (SOURCES / "examples" / "sleep_clinic.csv").read_text().splitlines()
    names, rows = lines[0].split(","), [line.split(",") for line in lines[1:]]
    columns: dict[str, list[object]] = {}
    for place, name in enumerate(names):
        cells = [row[place] for row in rows]
        try:
            columns[name] = [float(cell) if cell not in ("", "NA") else None for cell in cells]
        except ValueError:
            columns[name] = list(cells)
    return columns


DATA = sleep_clinic()
LARGE = {name: [float((i * step) % 9973) for i in range(3000)] for name, step in (("a", 17), ("b", 31))}
PLAN = {"tests": [{"sign": {"variableName": ["hours_before", "hours_after"]}}]}
REQUEST = {"relatedVariables": ["hours_before", "hours_after"], "RSign": {"isSelected": True}, "end": True}


def calls(document: pathlib.Path) -> dict[str, Callable[[], str]]:
    """Each returns a text that shows all of what the call found."""
    return {
        "groups": lambda: tarn.analyze(DATA, "hours_before ~ arm", compare="pairwise", threads=1).to_json(),
        "pair": lambda: tarn.analyze(DATA, related=["hours_before", "hours_after"], threads=1).to_json(),
        "threads": lambda: tarn.analyze(LARGE, related=["a", "b"], threads=2).to_json(),
        "exact": lambda: tarn.analyze(DATA, "hours_before ~ sex", exact=True, like="r", threads=1).to_json(),
        "parts": lambda: tarn.analyze(DATA, "hours_before ~ sex", split="arm", threads=1).to_json(),
        "plan": lambda: tarn.run(DATA, PLAN, threads=1).to_json(),
        "request": lambda: tarn.run(DATA, REQUEST, threads=1).to_json(),
        "page": lambda: tarn.analyze(DATA, "hours_before ~ arm", threads=1).to_html(),
        "look": lambda: str(tarn.look(DATA)),
        "load": lambda: tarn.load(document).to_json(),
        "mistake": lambda: mistake_of(lambda: tarn.analyze(DATA, "hours_bofore ~ arm")),
    }


def mistake_of(call: Callable[[], object]) -> str:
    try:
        call()
    except tarn.InputError as mistake:
        return str(mistake)
    return "no mistake"


def tried(call: Callable[[], str], failing: int, for_good: bool) -> tuple[str, int]:
    """How the call ended, and how many allocations it tried."""
    taken = ctypes.c_long(0)
    try:
        text = call_in_hard_times(call, failing, for_good, ctypes.byref(taken))
    except MemoryError:
        text = "MemoryError"
    except (tarn.InputError, tarn.EngineError) as error:
        text = f"{type(error).__name__}: {error}"
    return text, taken.value


def mistake_in(call: Callable[[], str], failing: int, for_good: bool, reference: str) -> str:
    """What is wrong with the call; nothing for a good end."""
    text, _ = tried(call, failing, for_good)
    is_told = text == "MemoryError" or (text.startswith(("InputError: ", "EngineError: ")) and "memory" in text)
    if not (text == reference or is_told or any(code in text for code in OUT_OF_MEMORY)):
        return f"another result: {text[:300]!r}"
    again = call()
    return "" if again == reference else f"afterwards another result: {again[:300]!r}"


def in_child(work: Callable[[], str]) -> str:
    """What `work` returns in a forked process, or how that one ended."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        signal.alarm(SECONDS)
        told = b"other exception"
        try:
            told = work().encode()
        except BaseException as error:
            told = f"{type(error).__name__}: {error}".encode()
        finally:
            os.write(writing, told[:4000])
            os._exit(DONE)
    os.close(writing)
    with os.fdopen(reading, "rb") as told_by_child:
        text = told_by_child.read().decode(errors="replace")
    _, status = os.waitpid(child, 0)
    if os.WIFSIGNALED(status):
        return f"ended by signal {os.WTERMSIG(status)}"
    return text if os.WEXITSTATUS(status) == DONE else f"ended with status {os.WEXITSTATUS(status)}"


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("--stride", type=int, default=1)
    parser.add_argument("--first", type=int, default=1)
    parser.add_argument("--for-good", action="store_true")
    parser.add_argument("--calls", default="")
    options = parser.parse_args()
    chosen = set(filter(None, options.calls.split(",")))
    walked = mistakes = 0
    with tempfile.TemporaryDirectory() as folder:
        document, reference_file = pathlib.Path(folder, "document.xml"), pathlib.Path(folder, "reference")
        # Also what comes before is done in processes of their own, so that this one stays without a call.
        in_child(lambda: str(tarn.analyze(DATA, "hours_before ~ arm").save(str(document))))
        for turn, (name, call) in enumerate(calls(document).items()):
            if chosen and name not in chosen:
                continue
            allocations = int(in_child(lambda: str(tried(call, 0, False)[1])))
            written = in_child(lambda: str(reference_file.write_text(call())))
            if not written.isdigit():
                print(f"{name}: {written} with all memory")
                mistakes += 1
                continue
            reference = reference_file.read_text()
            stride = min(options.stride, max(1, allocations // FEWEST_FAILURES))
            failing = range(options.first + turn % stride, allocations + 1, stride)
            wrong = []
            for number in failing:
                told = in_child(lambda: mistake_in(call, number, options.for_good, reference))
                if told:
                    wrong.append((number, told))
            walked += len(failing)
            mistakes += len(wrong)
            print(f"{name}: {len(failing)} of {allocations} allocations failed, {len(wrong)} bad ends", flush=True)
            for number, told in wrong[:8]:
                print(f"    {number}: {told}")
    print(f"{walked} calls, {mistakes} bad ends")
    return 1 if mistakes or not walked else 0


if __name__ == "__main__":
    sys.exit(main())
