"""What the timings of the whole command beside Python share: the program on the other side, and both in turn.

Each program reads the whole table, makes the statistic and prints it as the first word of its last line. What SciPy
calls by another name or counts from the other end is turned there, so that both sides show one number.
"""
import importlib.metadata
import importlib.util
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

# The start of every program on the other side.
READ = """
import sys
import numpy
import pandas
from scipy import stats
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
"""

PEERS = ("pandas", "scipy", "numpy")


def python(program, data):
    return [sys.executable, "-W", "ignore", "-c", program, data]


def compare(title, options, ours, theirs, statistic="TestStatistic", tolerance=1e-9, their_name="pandas and SciPy"):
    """Times the command on all cores and with one, and the other program. `statistic` is the name of an attribute of
    the document, or takes the document and returns the number that the other side prints."""
    if options.only not in title:
        return
    read = statistic if callable(statistic) else lambda document: timing.value_of(document, statistic)

    def check(all_cores, one_core, other):
        if all_cores != one_core:
            raise SystemExit("the number of threads changes the document of " + title)
        timing.check_close(title, read(all_cores), float(other.strip().split("\n")[-1].split()[0]), tolerance)

    timing.compare(title, [timing.command_side("tarn, all cores", ours),
                           timing.command_side("tarn, one core", ours + ["--threads", "1"]),
                           timing.command_side(their_name, theirs)], options.runs, check)


def versions(names):
    return tuple("%s %s" % (name, importlib.metadata.version(name)) for name in names)


def main(doc, job, peers=PEERS, rows=timing.ROWS):
    """Calls `job` with the options, if the peers are installed."""
    options = timing.parser(doc, rows=rows).parse_args()
    absent = [name for name in peers if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    timing.print_machine(*versions(peers))
    job(options)
