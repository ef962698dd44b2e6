#!/usr/bin/env python3
"""Ends the command in the middle of writing a file, and checks that the file is the old one or the new one, whole, and
that no other file is left.

usage: disturb_files.py --program build/release/tarn [--shim build/release/libtarn_hard_times.so] [--signals N]
                        [--kills N]

- N signals of the kinds that end a process and can be caught, each at a random time of a run;
- N times SIGKILL in the same way;
- limits on the size of files, from 0 bytes to more than the document has, in place of a full disk;
- the same where the file is new, and where it is reached through a symbolic link;
- with the shim, the same but for SIGKILL where the file system has no files without a name.

Ends with status 1 if anything is otherwise.
"""

import argparse
import os
import pathlib
import random
import resource
import signal
import subprocess
import sys
import tempfile
import time

SOURCES = pathlib.Path(__file__).resolve().parents[2]
WORDS = ["analyze", str(SOURCES / "examples" / "sleep_clinic.csv"), "--independent", "hours_before", "--group", "arm",
         "--tests", "kruskal-wallis", "--compare", "pairwise", "--quiet", "--threads", "1"]
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGUSR1, signal.SIGALRM, signal.SIGXCPU]
OLD = b"what was there before\n"
SECONDS = 60


class Folder:
    """A folder with the file that is written: an old one, none, or an old one behind a link."""

    def __init__(self, kind):
        self.kind = kind
        self.place = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.place.name)
        self.out = self.path / "out.xml"
        self.file = self.path / "behind.xml" if kind == "link" else self.out
        if kind != "new":
            self.file.write_bytes(OLD)
        if kind == "link":
            self.out.symlink_to("behind.xml")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.place.cleanup()

    def mistake(self, document):
        """What is wrong with what is there now, None if nothing is."""
        files = {path.name for path in self.path.iterdir()}
        known = {self.file.name, self.out.name}
        if files - known:
            return f"{sorted(files - known)} left"
        if self.kind == "link" and not self.out.is_symlink():
            return "the link is none any more"
        if not self.file.exists():
            return None if self.kind == "new" else "the file is gone"
        content = self.file.read_bytes()
        return None if content in (OLD, document) else f"neither the old file nor the new one, {len(content)} bytes"


SHIMMED = {}  # what the environment has besides


def begin(program, out, **more):
    return subprocess.Popen([str(program), *WORDS, "--out", str(out)], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            env=dict(os.environ, **SHIMMED), **more)


def whole_run(program):
    """The document, and how long a run takes at least."""
    seconds = SECONDS
    for _ in range(5):
        with Folder("new") as folder:
            began = time.monotonic()
            if begin(program, folder.out).wait(SECONDS) != 0:
                sys.exit("the run doesn't come to its end by itself")
            seconds = min(seconds, time.monotonic() - began)
            document = folder.out.read_bytes()
    return document, seconds


def disturb(program, document, seconds, kinds, count):
    mistakes, ended = [], 0
    for turn in range(count):
        kind = ("old", "new", "link")[turn % 3]
        with Folder(kind) as folder:
            process = begin(program, folder.out)
            # Most of them towards the end, where the file is written.
            time.sleep(seconds * random.choice((random.random(), random.uniform(0.7, 1.1))))
            sent = kinds[turn % len(kinds)]
            process.send_signal(sent)
            process.communicate(timeout=SECONDS)
            ended += process.returncode != 0
            mistake = folder.mistake(document)
            if mistake:
                mistakes.append(f"{sent.name}, {kind}: {mistake}")
    return mistakes, ended


def fill_disk(program, document):
    mistakes, count = [], 0
    sizes = [0, 1, 4095, 4096, 4097, len(document) // 2, len(document) - 1, len(document), len(document) + 1]
    for size in sizes:
        for kind in ("old", "new", "link"):
            limit = lambda size=size: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
            with Folder(kind) as folder:
                process = begin(program, folder.out, preexec_fn=limit)
                told = process.communicate(timeout=SECONDS)[1].decode()
                count += 1
                fits = size >= len(document)
                mistake = folder.mistake(document)
                if fits and (process.returncode != 0 or folder.file.read_bytes() != document):
                    mistake = f"status {process.returncode} although the document fits: {told}"
                expected = f"tarn: {folder.file}: can't be written: File too large\n"
                if not fits and (process.returncode != 2 or told != expected):
                    mistake = f"status {process.returncode}: {told!r}"
                if mistake:
                    mistakes.append(f"room for {size} bytes, {kind}: {mistake}")
    return mistakes, count


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--signals", type=int, default=500)
    parser.add_argument("--kills", type=int, default=50)
    parser.add_argument("--shim", type=pathlib.Path)
    options = parser.parse_args()
    random.seed(1)
    document, seconds = whole_run(options.program)
    everything = []
    rounds = [("signals", SIGNALS, options.signals), ("kills", [signal.SIGKILL], options.kills)]
    for is_named in (False, True) if options.shim else (False,):
        if is_named:
            SHIMMED.update(LD_PRELOAD=str(options.shim.resolve()), TARN_NAMED_FILES="1")
            rounds = rounds[:1]
            print("files with names:")
        for name, kinds, count in rounds:
            mistakes, ended = disturb(options.program, document, seconds, kinds, count)
            print(f"{count} {name}, {ended} in time: {len(mistakes)} bad ends", flush=True)
            everything += mistakes
        mistakes, count = fill_disk(options.program, document)
        print(f"{count} disks: {len(mistakes)} bad ends")
        everything += mistakes
    print("\n".join(everything[:20]))
    return 1 if everything else 0


if __name__ == "__main__":
    sys.exit(main())
