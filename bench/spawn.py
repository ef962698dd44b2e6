"""Runs a command and prints its wall seconds, CPU seconds and peak memory in MB, for timing.py.

usage: spawn.py OUTPUT COMMAND [ARGUMENT ...]        standard output of the command goes to OUTPUT

A process of its own: the peak of a new process begins with that of the one that started it, and a script that holds
tables and documents would show as the memory of a small command.
"""
import os
import sys
import time

start = time.perf_counter()
process = os.posix_spawnp(sys.argv[2], sys.argv[2:], os.environ, file_actions=[
    (os.POSIX_SPAWN_OPEN, 1, sys.argv[1], os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)])
_, status, usage = os.wait4(process, 0)
print(time.perf_counter() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024)
sys.exit(os.waitstatus_to_exitcode(status) % 256)
