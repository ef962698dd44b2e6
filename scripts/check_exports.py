#!/usr/bin/env python3
"""Checks that the shared library shows its interface and nothing else.

usage: check_exports.py NM LIBRARY

Prints a line for each symbol that is missing or too many and exits 1 if there is any.
"""
import subprocess
import sys

FUNCTIONS = {
    "hx_initialise",
    "hx_cleanup",
    "hx_create_component",
    "hx_destroy_component",
    "hx_component_configure",
    "hx_component_getDataModel",
    "hx_component_getExecutionRequirements",
    "hx_component_getIteratorRequirements",
    "hx_component_getMessages",
    "hx_component_beginExecution",
    "hx_component_endExecution",
    "hx_component_cancelExecution",
    "hx_component_nextRecord",
    "hx_component_getRecordValue",
    # The one with C++ linkage.
    "hx_getModuleInformation(char*, unsigned long, unsigned long*, int*)",
}
CLASSES = ("TARNFactory", "TARNReporter")


def belongs_to_class(symbol):
    for name in CLASSES:
        if symbol.startswith(name + "::"):
            return True
        if symbol in ("vtable for " + name, "typeinfo for " + name, "typeinfo name for " + name):
            return True
    return False


def shown_symbols(nm, library):
    output = subprocess.run([nm, "-DC", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split(" ", 2)[2] for line in output.splitlines()}


def main():
    shown = shown_symbols(sys.argv[1], sys.argv[2])
    complaints = ["missing: " + name for name in sorted(FUNCTIONS - shown)]
    complaints += ["missing: " + name + "'s members" for name in CLASSES if "vtable for " + name not in shown]
    complaints += ["too many: " + name for name in sorted(shown - FUNCTIONS) if not belongs_to_class(name)]
    print("\n".join(complaints) if complaints else "%d symbols, all of the interface" % len(shown))
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
