#!/usr/bin/env python3
"""Runs the command again and again, each time with another of its allocations failing, and checks how it ends.

usage: exhaust_memory.py --program build/release/tarn --shim build/release/libtarn_hard_times.so
                         [--stride N] [--for-good] [--tests NAME,..]

With --for-good all allocations fail from that one on. A run ends well if it

- has status 0, and what it says and stores is to the byte what the same run says with all its memory, or
- has status 1 or 2, says why on standard error in lines that begin with "tarn:", prints nothing, and leaves the file
  that was there as it was, and no other one.

A document in which a test says that it had no memory (220012 or 220002) is a third good end. Anything else is told with the
number of the allocation, and the status is 1.
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

SOURCES = pathlib.Path(__file__).resolve().parents[2]
SLEEP = SOURCES / "examples" / "sleep_clinic.csv"
OLD_FILE = b"what was there before\n"
OUT_OF_MEMORY = (b"220012", b"220002")
SECONDS = 60

ONE_SAMPLE = {
    "one-sample/kolmogorov-smirnov": ["--one-sample", "age", "--distribution", "normal,exponential",
                                      "--tests", "kolmogorov-smirnov"],
    "one-sample/binomial": ["--one-sample", "relapse,sex", "--tests", "binomial"],
    "one-sample/chi-square": ["--one-sample", "quality,arm", "--tests", "chi-square"],
    "one-sample/runs": ["--one-sample", "sex,age", "--tests", "runs"],
    "one-sample/wilcoxon": ["--one-sample", "age", "--tests", "wilcoxon", "--test-value", "40"],
}
PAIR = ["--related", "hours_before,hours_after"]
THREE = ["--related", "hours_before,hours_after,hours_followup", "--compare", "pairwise"]
STEPS = [*THREE[:-1], "stepwise"]
RELATED = {
    "related/sign": [*PAIR, "--tests", "sign"],
    "related/wilcoxon": [*PAIR, "--tests", "wilcoxon"],
    "related/hodges-lehmann": [*PAIR, "--tests", "hodges-lehmann"],
    "related/friedman": [*THREE, "--tests", "friedman"],
    "related/friedman-steps": [*STEPS, "--tests", "friedman"],
    "related/kendall": [*THREE, "--tests", "kendall"],
}
DICHOTOMIES = "{folder}/dichotomies.csv"
RELATED_WORDS = {
    "related/mcnemar": ["--related", "a,b", "--nominal", "a,b", "--tests", "mcnemar"],
    "related/cochran": ["--related", "a,b,c", "--nominal", "a,b,c", "--tests", "cochran", "--compare", "pairwise"],
    "related/marginal-homogeneity": ["--related", "a,b", "--ordinal", "a,b", "--tests", "marginal-homogeneity"],
}
TWO = ["--independent", "hours_before", "--group", "sex"]
SEVERAL = ["--independent", "hours_before", "--group", "arm", "--compare", "pairwise"]
INDEPENDENT = {
    **{f"independent/{name}": [*TWO, "--tests", name]
       for name in ("mann-whitney", "kolmogorov-smirnov", "wald-wolfowitz", "moses", "hodges-lehmann")},
    **{f"independent/{name}": [*SEVERAL, "--tests", name] for name in ("kruskal-wallis", "median")},
    "independent/jonckheere": [*SEVERAL, "--tests", "jonckheere", "--order", "arm=placebo,low,high"],
    "independent/kruskal-steps": [*SEVERAL[:-1], "stepwise", "--tests", "kruskal-wallis"],
}
# What else goes through the command: JSON that is read and written, words, parts, choices.
OTHERS = {
    "command/formula": ["hours_before ~ arm", "--where", "age > 30", "--format", "json"],
    "command/parts": ["hours_before ~ sex", "--split", "arm", "--format", "csv"],
    "command/exact": [*TWO, "--tests", "mann-whitney", "--exact", "--like", "r"],
    "command/monte-carlo": [*SEVERAL, "--tests", "kruskal-wallis", "--monte-carlo", "100"],
    "command/saved": ["--one-sample", "age", "--save", "{folder}/study.json"],
}


def make_tables(folder):
    rows = ["a,b,c"] + [f"{(i * 7) % 2},{(i * 5 // 3) % 2},{(i // 4) % 2}" for i in range(40)]
    pathlib.Path(folder, "dichotomies.csv").write_text("\n".join(rows) + "\n")


def commands():
    runs = {}
    for name, options in {**ONE_SAMPLE, **RELATED, **INDEPENDENT, **OTHERS}.items():
        out = [] if "--split" in options else ["--out", "{folder}/out.xml"]
        runs[name] = ["analyze", str(SLEEP), *options, "--threads", "1", *out]
    for name, options in RELATED_WORDS.items():
        runs[name] = ["analyze", DICHOTOMIES, *options, "--threads", "1", "--out", "{folder}/out.xml"]
    plan = str(SOURCES / "examples" / "sign.plan.json")
    runs["command/plan"] = ["run", "--data", str(SOURCES / "examples" / "headache.csv"), "--plan", plan,
                            "--fields", str(SOURCES / "examples" / "headache.fields.json"), "--out", "{folder}/out.xml"]
    runs["command/look"] = ["look", str(SLEEP)]
    return runs


class Walk:
    def __init__(self, options, name, words):
        self.options, self.name, self.words = options, name, words
        self.reference = self.run(None)
        self.allocations = self.reference["count"]

    def run(self, failing):
        with tempfile.TemporaryDirectory() as folder:
            make_tables(folder)
            out = pathlib.Path(folder, "out.xml")
            out.write_bytes(OLD_FILE)
            before = set(os.listdir(folder))
            count = pathlib.Path(folder, "count")
            environment = dict(os.environ, LD_PRELOAD=str(self.options.shim), LC_ALL="C.UTF-8")
            if failing is None:
                environment["TARN_COUNT_FILE"] = str(count)
            else:
                environment["TARN_FAIL_AT"] = str(failing)
                if self.options.for_good:
                    environment["TARN_FAIL_ALL"] = "1"
            words = [word.replace("{folder}", folder) for word in self.words]
            try:
                done = subprocess.run([str(self.options.program), *words], env=environment, capture_output=True,
                                      timeout=SECONDS)
                status, shown, told = done.returncode, done.stdout, done.stderr
            except subprocess.TimeoutExpired:
                status, shown, told = "hung", b"", b""
            number = int(count.read_text()) if count.exists() else 0
            count.unlink(missing_ok=True)
            files = {name: pathlib.Path(folder, name).read_bytes() for name in os.listdir(folder)}
            place = folder.encode()
            return {"status": status, "out": shown.replace(place, b""), "err": told.replace(place, b""),
                    "files": files, "new": set(files) - before, "count": number}

    def mistake(self, failing):
        """What is wrong with the run in which that allocation fails; None for a good end."""
        ran = self.run(failing)
        reference = self.reference
        if ran["status"] == 0:
            same = all(ran[key] == reference[key] for key in ("out", "err", "files"))
            if same or any(code in ran["files"]["out.xml"] for code in OUT_OF_MEMORY):
                return None
            differing = [key for key in ("out", "err", "files") if ran[key] != reference[key]]
            return f"status 0 with other {', '.join(differing)}: {ran['err'][-200:]!r}"
        if ran["status"] not in (1, 2):
            return f"status {ran['status']}: {ran['err'][-300:]!r}"
        lines = ran["err"].decode(errors="replace").splitlines()
        if not lines or not all(line.startswith("tarn: ") for line in lines):
            return f"status {ran['status']} with {ran['err'][-300:]!r}"
        if ran["status"] == 2 and reference["status"] == 0 and b"memory" not in ran["err"]:
            return f"status 2 with {ran['err'][-300:]!r}"
        stored = ran["files"]["out.xml"]
        if stored not in (OLD_FILE, reference["files"]["out.xml"]) and not any(code in stored for code in OUT_OF_MEMORY):
            return "an error, and another file"
        if ran["new"] - reference["new"]:
            return f"files left: {ran['new']}"
        return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--shim", required=True, type=lambda path: pathlib.Path(path).resolve())
    parser.add_argument("--stride", type=int, default=1)
    parser.add_argument("--first", type=int, default=1)
    parser.add_argument("--for-good", action="store_true")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--tests", default="")
    options = parser.parse_args()
    chosen = set(filter(None, options.tests.split(",")))
    mistakes = walked = 0
    for turn, (name, words) in enumerate(commands().items()):
        if chosen and name not in chosen:
            continue
        walk = Walk(options, name, words)
        if walk.reference["status"] != 0:
            print(f"{name}: {walk.reference['status']} with all memory: {walk.reference['err'].decode()}")
            mistakes += 1
            continue
        # Each walk begins at another place, so that with a stride they don't all meet the same allocations of the start.
        failing = range(options.first + turn % options.stride, walk.allocations + 1, options.stride)
        with ThreadPoolExecutor(options.jobs) as pool:
            found = list(zip(failing, pool.map(walk.mistake, failing)))
        walked += len(found)
        wrong = [(number, text) for number, text in found if text]
        mistakes += len(wrong)
        print(f"{name}: {len(found)} of {walk.allocations} allocations failed, {len(wrong)} bad ends", flush=True)
        for number, text in wrong[:8]:
            print(f"    {number}: {text}")
    print(f"{walked} runs, {mistakes} bad ends")
    return 1 if mistakes else 0


if __name__ == "__main__":
    sys.exit(main())
