#!/usr/bin/env python3
"""Prints the build targets of the tests that carry a label, so that only those need building.

usage: test_programs.py BUILD_FOLDER LABEL
"""

import json
import os
import subprocess
import sys


def main():
    build, label = sys.argv[1:]
    listing = subprocess.run(
        ["ctest", "--test-dir", build, "--show-only=json-v1"],
        check=True, stdout=subprocess.PIPE, text=True).stdout
    programs = set()
    for test in json.loads(listing)["tests"]:
        labels = [property["value"] for property in test["properties"]
                  if property["name"] == "LABELS"]
        if labels and label in labels[0]:
            programs.add(os.path.relpath(test["command"][0], build))
    if not programs:
        sys.exit(f"no test in {build} carries the label '{label}'")
    print("\n".join(sorted(programs)))


if __name__ == "__main__":
    main()
