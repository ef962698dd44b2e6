#!/usr/bin/env python3
"""Times the whole command: from a CSV of 1,000,000 rows and 6 fields to the document of a sign test.

usage: whole_command.py [RUNS]
"""
import os
import sys

import timing


def main():
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    command = [timing.TARN, "run", "--data", timing.normal_table(), "--plan", timing.sign_plan(), "--quiet"]
    timing.timed(command, os.devnull)  # warms the file cache
    results = [timing.timed(command, os.devnull) for _ in range(runs)]
    print(timing.row("tarn run, sign test, 1e6 x 6", [seconds for seconds, _ in results], "s"))
    print(timing.row("peak memory", [memory for _, memory in results], "MB"))


if __name__ == "__main__":
    main()
