"""The engine and the kernels in this process, on NumPy's arrays where they stand (bench/EngineShim.cpp)."""
import collections
import ctypes
import json
import os

import numpy

import timing

LIBRARY = os.path.join(timing.ROOT, "build", "release", "libtarn_bench_engine.so")

# A field of categories: indices from 0, as doubles, and how many there are.
Groups = collections.namedtuple("Groups", "values count")

SEVEN = 7


# ---- Data ----

def normal(rows, seed=20262):
    return numpy.random.default_rng(seed).normal(0.1, 1.0, rows)


def seven_steps(rows, seed=20262):
    return numpy.random.default_rng(seed).integers(1, SEVEN + 1, rows).astype(float)


def groups(rows, count, seed=20264):
    return Groups(numpy.random.default_rng(seed).integers(0, count, rows).astype(float), count)


def parted(values, group):
    """The values of each group, apart: what the other side is handed, so that it need not look for them."""
    return [values[group.values == place].copy() for place in range(group.count)]


# ---- The engine ----

def load():
    library = ctypes.CDLL(LIBRARY)
    pointer, size = ctypes.c_void_p, ctypes.c_size_t
    for name, result, arguments in (
            ("make", pointer, [ctypes.c_char_p, pointer, pointer, pointer, size, size]),
            ("run", ctypes.c_int, [pointer]),
            ("document", pointer, [pointer, ctypes.POINTER(size)]),
            ("free", None, [pointer]),
            ("has_vqsort", ctypes.c_int, []),
            ("kernels_make", pointer, [ctypes.c_int]),
            ("kernels_free", None, [pointer]),
            ("mann_whitney", ctypes.c_double, [pointer, pointer, pointer, size]),
            ("kruskal_wallis", ctypes.c_double, [pointer, pointer, pointer, size, ctypes.c_uint]),
            ("kolmogorov_smirnov", ctypes.c_double, [pointer, pointer, pointer, size]),
            ("wilcoxon", ctypes.c_double, [pointer, pointer, pointer, size]),
            ("sign", ctypes.c_double, [pointer, pointer, size]),
            ("friedman", ctypes.c_double, [pointer, size, size]),
            ("screening", None, [pointer, pointer, size, pointer, size, pointer])):
        function = getattr(library, "tarn_bench_" + name)
        function.restype, function.argtypes = result, arguments
    return library


library = load()


def address(array):
    assert array.dtype == numpy.float64 and array.flags.c_contiguous
    return array.ctypes.data


def addresses(arrays):
    return (ctypes.c_void_p * len(arrays))(*map(address, arrays))


class Run:
    """A plan and fields, by name: an array, or Groups. A call runs it once, from columns to the document in memory."""

    def __init__(self, tests, fields, **settings):
        self.arrays = [field.values if isinstance(field, Groups) else field for field in fields.values()]
        self.names = (ctypes.c_char_p * len(fields))(*(name.encode() for name in fields))
        self.columns = addresses(self.arrays)
        self.categories = (ctypes.c_int32 * len(fields))(
            *(field.count if isinstance(field, Groups) else 0 for field in fields.values()))
        plan = json.dumps({**settings, "tests": tests}).encode()
        self.handle = library.tarn_bench_make(plan, self.names, self.columns, self.categories, len(fields),
                                              len(self.arrays[0]))
        if not self.handle:
            raise SystemExit("the plan can't be read: %s" % plan[:200])

    def __del__(self):
        library.tarn_bench_free(self.handle)

    def __call__(self):
        status = library.tarn_bench_run(self.handle)
        if status != 0:
            raise SystemExit("the run failed with status %d" % status)
        return self

    def document(self):
        size = ctypes.c_size_t()
        text = library.tarn_bench_document(self.handle, ctypes.byref(size))
        return ctypes.string_at(text, size.value).decode()


def our_sides(tests, fields, brief=False):
    """Our side on all cores and with a budget of one."""
    settings = {"brief": True} if brief else {}
    kind = ", brief" if brief else ""
    return [timing.call_side("tarn%s, all cores" % kind, Run(tests, fields, **settings)),
            timing.call_side("tarn%s, one core" % kind, Run(tests, fields, threads=1, **settings))]


def engine_has_brief():
    """Whether this engine makes documents without descriptives."""
    fields = {"x0": normal(100), "x1": normal(100, 1)}
    tests = [{"RSign": {"variableName": ["x0", "x1"]}}]
    full, brief = (Run(tests, fields, **settings)().document() for settings in ({}, {"brief": True}))
    return len(brief) < len(full)


NO_BRIEF = "this engine passes over the key \"brief\": what stands below as brief is the full document"


# ---- The kernels ----

class Kernels:
    """The least that makes each statistic, one thread."""

    def __init__(self, vectorised):
        self.handle = library.tarn_bench_kernels_make(1 if vectorised else 0)

    def __del__(self):
        library.tarn_bench_kernels_free(self.handle)

    def mann_whitney(self, values, group):
        return library.tarn_bench_mann_whitney(self.handle, address(values), address(group.values), len(values))

    def kruskal_wallis(self, values, group):
        return library.tarn_bench_kruskal_wallis(self.handle, address(values), address(group.values), len(values),
                                                 group.count)

    def kolmogorov_smirnov(self, values, group):
        return library.tarn_bench_kolmogorov_smirnov(self.handle, address(values), address(group.values), len(values))

    def wilcoxon(self, first, second):
        return library.tarn_bench_wilcoxon(self.handle, address(first), address(second), len(first))

    @staticmethod
    def sign(first, second):
        return library.tarn_bench_sign(address(first), address(second), len(first))

    @staticmethod
    def friedman(fields):
        return library.tarn_bench_friedman(addresses(fields), len(fields), len(fields[0]))

    def screening(self, fields, group):
        statistics = numpy.empty(len(fields))
        library.tarn_bench_screening(self.handle, addresses(fields), len(fields), address(group.values),
                                     len(group.values), address(statistics))
        return statistics


def vqsort():
    """The kernels' sorter with its name: VQSort where it was built in."""
    has = bool(library.tarn_bench_has_vqsort())
    return Kernels(has), "VQSort" if has else "std::sort"
