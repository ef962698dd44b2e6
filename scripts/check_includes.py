#!/usr/bin/env python3
"""Checks that includes go down the floors of the house (docs/architecture.md), never up.

usage: check_includes.py [ROOT]

Walks every C++ source of the project, tests and benchmarks too. Prints a line for each arrow that goes up and exits 1 if
there is any.
"""
import os
import re
import sys

# From the top floor to the lowest one. Folders on one line are neighbours, which don't include one another.
FLOORS = [
    ["apps/tarn", "python"],
    ["host/verify"],
    ["host/analysis"],
    ["host/plan"],
    ["host/beyond", "host/words"],
    ["host/report", "host/engine"],
    ["host/table"],
    ["host"],
    ["src/component"],
    ["src/catalogue"],
    ["src/planning", "src/onesample", "src/related", "src/independent", "src/selection"],
    ["src/contract"],
    ["src/support"],
    ["src/records"],
    ["src/vocabulary", "src/machine"],
    ["platform"],
]
TOPS = ("apps", "host", "src", "platform", "runtime", "tests", "bench", "fuzz", "python")
# The bottom of the house: no file of it includes any other, but one of the machine another of it.
WORDS = "src/vocabulary/"
MACHINE = "src/machine/"  # memory and threads, open to all floors
# What the host may include of what is below it: the words, and what a host in C sees of the engine.
HOST_MAY_USE = (WORDS, "platform/hx/", "runtime/common/DecimalNumber.h", "runtime/common/PlainDecimal.h",
                "runtime/common/XmlCharacters.h", "runtime/common/XmlNodes.h")
# The room of the host for plans goes to the engine's C++ factory, as a program that links the library would.
PLAN_MAY_USE = ("platform/common/", "src/catalogue/TARNFactory.h", "src/planning/TARNReporter.h",
                "src/support/QKVecValue.h")
# The figures beside the document are made from sorted columns.
BEYOND_MAY_USE = ("platform/common/QKSort.h",)
# The distribution functions are checked one by one.
VERIFY_MAY_USE = ("platform/common/QKDistFun.h",)
# The runtime implements the declarations of the platform.
RUNTIME_MAY_USE = ("runtime/", "platform/")
# Declarations that few may see: the base of a component, and the interface to a host.
GUARDED = {
    "platform/peer/": ("src/component/", "platform/peer/", "runtime/", "tests/component/", "tests/runtime/", "fuzz/"),
    "platform/hx/": ("src/component/", "platform/", "runtime/", "host/engine/", "tests/component/",
                         "tests/runtime/", "fuzz/"),
}
# Programs that may use everything below them; of one another, tests use the harness alone.
PROGRAMS = ("tests/", "bench/", "fuzz/")

INCLUDE = re.compile(r'^\s*#include\s+"([^"]+)"')


def floor_of(path):
    folder = os.path.dirname(path)
    best = None
    for level, folders in enumerate(FLOORS):
        for name in folders:
            if (folder == name or folder.startswith(name + "/")) and (best is None or len(name) > len(best[1])):
                best = (level, name)
    return best


def resolve(root, include):
    """The path of an included file of the project, None for any other."""
    for base in ("", "src"):
        path = os.path.normpath(os.path.join(base, include))
        if os.path.exists(os.path.join(root, path)):
            return path
    return None


def complaint_of_program(path, target):
    if not target.startswith(PROGRAMS):
        return None
    if target.startswith("tests/harness/") or os.path.dirname(target) == os.path.dirname(path):
        return None
    room = "/".join(path.split("/")[:2])
    if path.startswith("tests/") and target.startswith(room + "/") and not path.startswith("tests/harness/"):
        return None
    return "a test shares with another folder what stands in tests/harness alone"


def complaint(path, target):
    for guarded, allowed in GUARDED.items():
        if target.startswith(guarded) and not path.startswith(allowed):
            return "only %s may see it" % ", ".join(allowed)
    if path.startswith(PROGRAMS):
        return complaint_of_program(path, target)
    if target.startswith(PROGRAMS):
        return "what users get doesn't include what tests it"
    if target.startswith(MACHINE) and not path.startswith(WORDS):
        return None
    if path.startswith((WORDS, MACHINE)):
        return "the bottom of the house includes nothing that stands on it"
    if path.startswith("runtime/"):
        return None if target.startswith(RUNTIME_MAY_USE) else "the runtime includes the platform's declarations alone"
    if path.startswith("host/plan/") and target.startswith(PLAN_MAY_USE):
        return None
    if path.startswith("host/beyond/") and target in BEYOND_MAY_USE:
        return None
    if path.startswith("host/verify/") and target in VERIFY_MAY_USE:
        return None
    if path.startswith("host/") and not target.startswith("host/"):
        return None if target.startswith(HOST_MAY_USE) else "the host knows the engine by its C functions and its words alone"
    if path.startswith("python/") and not target.startswith(("python/", "host/")):
        return "the package stands on the host alone"
    if target.startswith("runtime/"):
        return "only declarations are included, never the runtime"
    source, destination = floor_of(path), floor_of(target)
    if source is None or destination is None:
        return "a folder that stands on no floor"
    if destination[0] < source[0]:
        return "goes up from %s to %s" % (source[1], destination[1])
    if destination[0] == source[0] and destination[1] != source[1]:
        return "goes from %s to its neighbour %s" % (source[1], destination[1])
    return None


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
    found, files = [], 0
    for top in TOPS:
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if not name.endswith((".h", ".cpp", ".c")):
                    continue
                files += 1
                path = os.path.relpath(os.path.join(folder, name), root)
                with open(os.path.join(folder, name), encoding="utf-8") as lines:
                    for number, line in enumerate(lines, 1):
                        match = INCLUDE.match(line)
                        target = match and resolve(root, match.group(1))
                        reason = target and complaint(path, target)
                        if reason:
                            found.append("%s:%d: %s: %s" % (path, number, match.group(1), reason))
    print("\n".join(found) if found else "%d files, every include goes down" % files)
    return 1 if found or not files else 0


if __name__ == "__main__":
    sys.exit(main())
