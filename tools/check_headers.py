#!/usr/bin/env python3
"""Compiles each header of the project alone, with warnings as errors.

usage: check_headers.py [--compiler NAME] [--root FOLDER] [HEADER...]

Without names it takes every header below the folders of FOLDERS.
"""

import argparse
import concurrent.futures
import os
import subprocess
import sys

FOLDERS = ["lumsys", "lummetrics", "core", "examples", "tests", "fuzz", "bench"]
INCLUDE_FOLDERS = [
    "core/public", "core/_gen", "lumsys/public", "lummetrics/public", "core/_gen_private", ".",
    "examples/host", "examples/engine",
]
FLAGS = [
    "-std=c++20", "-fsyntax-only", "-fno-strict-aliasing", "-Wall", "-Wextra", "-Wpedantic",
    "-Wshadow", "-Wconversion", "-Werror",
]


# Headers of libraries that do not stand where every compiler looks.
LIBRARIES = ["jsoncpp"]


def library_flags():
    run = subprocess.run(["pkg-config", "--cflags", *LIBRARIES], text=True, check=True,
                         stdout=subprocess.PIPE)
    return run.stdout.split()


def headers_of(root):
    for top in FOLDERS:
        for folder, _, names in sorted(os.walk(os.path.join(root, top))):
            for name in sorted(names):
                if name.endswith(".h"):
                    yield os.path.relpath(os.path.join(folder, name), root)


def compile_alone(compiler, root, header, flags):
    """The first complaint of the compiler, or None."""
    # A header that were the main file would be warned of for its #pragma once.
    includes = [option for folder in INCLUDE_FOLDERS for option in ("-I", folder)]
    run = subprocess.run(
        [compiler, *flags, *includes, "-x", "c++", "-"], cwd=root, text=True,
        input=f'#include "{header}"\n', stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if run.returncode == 0:
        return None
    lines = run.stdout.splitlines()
    return next((line for line in lines if "error" in line), f"{header}: {compiler} failed")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--compiler", default="g++")
    parser.add_argument("--root",
                        default=os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    parser.add_argument("headers", nargs="*")
    arguments = parser.parse_args()
    headers = arguments.headers or list(headers_of(arguments.root))
    flags = FLAGS + library_flags()
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(
            lambda header: compile_alone(arguments.compiler, arguments.root, header, flags),
            headers)
        for complaint in results:
            if complaint:
                failed = True
                print(complaint)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
