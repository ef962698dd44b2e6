#!/usr/bin/env python3
"""Times a run whose readable output has the figures beside the document (host/beyond) beside the same run that makes
the document alone, one thread each: the whole command with --format text and with --format xml, from the same CSV.

What a reader gets by default is to take a third more at most. Values have three decimals, or all their digits.
"""
import json
import re
import subprocess

import timing

# Title, what analyze is asked for.
JOBS = [
    ("Wilcoxon test of one sample", ["--one-sample", "x", "--tests", "wilcoxon", "--test-value", "50"]),
    ("sign test", ["--related", "x,y", "--tests", "sign"]),
    ("Wilcoxon test of a pair", ["--related", "x,y", "--tests", "wilcoxon"]),
    ("Friedman test of a pair", ["--related", "x,y", "--tests", "friedman"]),
    ("Mann-Whitney test", ["--independent", "x", "--group", "two", "--tests", "mann-whitney"]),
    ("Kolmogorov-Smirnov test", ["--independent", "x", "--group", "two", "--tests", "kolmogorov-smirnov"]),
    ("Kruskal-Wallis test", ["--independent", "x", "--group", "five", "--tests", "kruskal-wallis"]),
    ("chi-square test", ["--one-sample", "five", "--nominal", "five", "--tests", "chi-square"]),
]


def pairs_table(name, digits, rows):
    """Two fields that go together, a field of two groups and one of five."""
    def draw(rng):
        x = rng.gauss(50, 10)
        y = x + rng.gauss(0.1, 5)
        return [round(x, digits), round(y, digits), rng.randint(1, 2), rng.randint(1, 5)]
    return timing.table(name, ["x", "y", "two", "five"], draw, rows)


def checker(title, command):
    """Both come from one run: the document has the significance that decides, and the text has figures beside it."""
    def check(text, xml):
        both = subprocess.run(command + ["--format", "json"], capture_output=True, text=True, check=True).stdout
        deciding = [p["value"] for p in json.loads(both)["tests"][0]["statistics"][0]["p_values"] if p["decides"]]
        written = [float(value) for value in re.findall(r'value="(-?[0-9.e-]+)"', xml)]
        if not deciding or deciding[0] not in written:
            raise SystemExit("the document of the %s doesn't have p = %r" % (title, deciding))
        if "Method:" not in text:
            raise SystemExit("the text of the %s has no figures" % title)
    return check


def main():
    options = timing.parser(__doc__, runs=21, rows=timing.ROWS).parse_args()
    timing.print_machine()
    for what, digits in (("three decimals", 3), ("all digits", 17)):
        data = pairs_table("pairs_%d" % digits, digits, options.rows)
        for title, words in JOBS:
            if options.only not in title:
                continue
            command = [timing.TARN, "analyze", data, *words, "--threads", "1"]
            text, xml = (timing.command_side(form, command + ["--format", form]) for form in ("text", "xml"))
            timing.compare("%s, %s" % (title, what), [text, xml], options.runs, checker(title, command), baseline=True)


if __name__ == "__main__":
    main()
