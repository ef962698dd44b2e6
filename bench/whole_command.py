#!/usr/bin/env python3
"""Times the whole command: from a CSV of 1,000,000 rows and 6 fields to the document of a sign test."""
import timing


def main():
    options = timing.parser(__doc__, rows=timing.ROWS).parse_args()
    timing.print_machine()
    command = timing.tarn("sign", timing.normal_table(options.rows), [{"RSign": {"variableName": ["x0", "x1"]}}])
    sides = [timing.command_side("all cores", command), timing.command_side("one core", command + ["--threads", "1"])]

    def check(all_cores, one_core):
        if all_cores != one_core:
            raise SystemExit("the number of threads changes the document")

    timing.compare("tarn run, sign test", sides, options.runs, check)


if __name__ == "__main__":
    main()
