#!/usr/bin/env python3
"""Checks that includes go down the floors of the house (docs/architecture.md), never up.

usage: check_includes.py [ROOT]

Prints a line for each arrow that goes up and exits 1 if there is any.
"""
import os
import re
import sys

# From the top floor to the lowest one. Folders on one line are neighbours, which don't include one another.
FLOORS = [
    ["apps/tarn"],
    ["host/report", "host/engine"],
    ["host/table"],
    ["host"],
    ["src/component"],
    ["src/selection"],
    ["src/planning"],
    ["src/onesample", "src/related", "src/independent"],
    ["src/planning/contract"],
    ["src/support"],
    ["src/planning/records"],
    ["src/platform"],
]
# Headers that include nothing of the project, open to all floors.
OPEN_HEADERS = {"src/planning/StatusCodes.h", "src/planning/records/LargeBlock.h"}
# What a folder may include beside its floors: the runtime implements the declarations of the platform.
HOST_MAY_USE = ("src/platform/hx", "runtime/common/DecimalNumber.h", "runtime/common/XmlCharacters.h")
RUNTIME_MAY_USE = ("runtime", "src/platform")

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


def complaint(path, target):
    if target in OPEN_HEADERS:
        return None
    if path.startswith("runtime/"):
        return None if target.startswith(RUNTIME_MAY_USE) else "the runtime includes the platform's declarations alone"
    if path.startswith("host/") and not target.startswith("host/"):
        return None if target.startswith(HOST_MAY_USE) else "the host knows the engine by its C functions alone"
    if target.startswith(("runtime/", "tests/")):
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
    for top in ("apps", "host", "src", "runtime"):
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
