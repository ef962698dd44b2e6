#!/usr/bin/env python3
"""Looks into programs and libraries for what cmake/TarnHardening.cmake asks of the compiler and the linker.

usage: check_hardening.py PROGRAM_OR_LIBRARY ..
"""

import re
import subprocess
import sys

# Functions of a library of this size have arrays on their stacks and begin where something jumps to.
FEWEST_ENTRIES = 100
PAGE = "0x1000"


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def mistakes_in(file):
    headers = output_of("readelf", "-lW", file)
    dynamic = output_of("readelf", "-dW", file)
    kind = output_of("readelf", "-hW", file)
    asked_for = set(re.findall(r"UND (\S+?)(?:@|\s|$)", output_of("readelf", "--dyn-syms", "-W", file), re.MULTILINE))
    code = output_of("objdump", "-d", "--no-show-raw-insn", file)
    stack = re.search(r"GNU_STACK.*", headers)
    is_program = "INTERP" in headers
    wanted = {
        "GNU_RELRO: what is relocated is read-only afterwards": "GNU_RELRO" in headers,
        "NOW: all symbols are bound when it is loaded": re.search(r"FLAGS(_1)?\).*\bNOW\b", dynamic) is not None,
        "a stack that is no code": stack is not None and "RWE" not in stack[0],
        "a place in memory of the loader's choice": "DYN" in kind and (not is_program or "PIE" in dynamic),
        "__stack_chk_fail: stacks are guarded": "__stack_chk_fail" in asked_for,
        "a function whose name ends in _chk: sizes are checked": any(name.endswith("_chk") for name in asked_for),
    }
    if "X86-64" in kind:
        wanted["endbr64: places to jump to are marked"] = code.count("endbr64") >= FEWEST_ENTRIES
        wanted["a page of the stack at a time is touched"] = re.search(rf"sub\s+\${PAGE},%rsp\n.*or[ql]\s+\$0x0,", code)
    return [f"{file}: lacks {what}" for what, is_there in wanted.items() if not is_there]


def main():
    mistakes = [mistake for file in sys.argv[1:] for mistake in mistakes_in(file)]
    print("\n".join(mistakes) or f"{len(sys.argv) - 1} files are as they should be")
    return 1 if mistakes or len(sys.argv) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
