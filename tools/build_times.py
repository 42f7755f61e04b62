#!/usr/bin/env python3
"""Lists the sources that take too long to compile.

usage: build_times.py [--limit SECONDS] [BUILD_FOLDER]

The last build's log is the sieve: what took longer there than the limit is compiled again, alone,
and judged by the processor time, since a busy machine stretches the logged times. It stretches
processor time as well, though less, so that the best of a few compilations counts.
"""

import argparse
import json
import os
import resource
import shlex
import subprocess
import sys


def logged_seconds(build):
    """The seconds that each output of the last build took."""
    seconds = {}
    with open(os.path.join(build, ".ninja_log"), encoding="utf-8") as log:
        next(log)  # The version of the format.
        for line in log:
            start, end, _, output, _ = line.rstrip("\n").split("\t")
            seconds[output] = (int(end) - int(start)) / 1000
    return seconds


COMPILATIONS = 3


def measure(words, folder):
    """Processor seconds of one compilation whose output is thrown away."""
    if os.path.basename(words[0]) == "ccache":
        words = words[1:]
    words = list(words)
    words[words.index("-o") + 1] = os.devnull
    if "-MF" in words:
        words[words.index("-MF") + 1] = os.devnull
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(words, cwd=folder, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--limit", type=float, default=10)
    parser.add_argument("build", nargs="?", default="build/release")
    arguments = parser.parse_args()
    seconds = logged_seconds(arguments.build)
    with open(os.path.join(arguments.build, "compile_commands.json"), encoding="utf-8") as file:
        commands = json.load(file)
    slow = []
    for entry in commands:
        words = shlex.split(entry["command"])
        if seconds.get(words[words.index("-o") + 1], 0) > arguments.limit:
            spent = float("inf")
            for _ in range(COMPILATIONS):
                if spent > arguments.limit:
                    spent = min(spent, measure(words, entry["directory"]))
            if spent > arguments.limit:
                slow.append((spent, os.path.relpath(entry["file"])))
    for spent, name in sorted(slow, reverse=True):
        print(f"{name}: {spent:.1f} s to compile; at most {arguments.limit:g} s")
    sys.exit(1 if slow else 0)


if __name__ == "__main__":
    main()
