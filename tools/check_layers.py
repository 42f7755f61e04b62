#!/usr/bin/env python3
"""Refuses includes that break the order of components. The order is written here and only here.

usage: check_layers.py [--root FOLDER]

A file includes its own component and those listed above it in COMPONENTS, and never a file that
leads back to it. Public headers reach neither private headers nor third-party ones.
"""

import argparse
import fnmatch
import os
import re
import sys

# Lowest first. A path without wildcards outranks a pattern, so that single files of a folder can
# stand at another level than the folder.
COMPONENTS = [
    ("lumsys", ["lumsys/*"]),
    ("lummetrics", ["lummetrics/*"]),
    ("utility", [
        "core/public/lum/core/Check.h",
        "core/public/lum/core/Export.h",
        "core/public/lum/core/utility/*",
        "core/_gen/lum/core/utility/*",
        "core/_gen_private/lum/core/utility/*",
        "core/main/utility/*",
    ]),
    # Enumerations, and the handle of values, which every level above may name.
    ("names", [
        "core/public/lum/core/Fwd.h",
        "core/public/lum/core/store/SortSpecOrder.h",
        "core/public/lum/core/store/StoreValueFwd.h",
        "core/_gen/lum/core/store/SpecialKind.h",
        "core/_gen/lum/core/types/StoreType.h",
        "core/_gen/lum/core/vtl/OperatorType.h",
    ]),
    ("types", [
        "core/public/lum/core/types/*",
        "core/_gen/lum/core/types/*",
        "core/_gen_private/lum/core/types/*",
        "core/main/types/*",
    ]),
    ("store", [
        # Packed rows and views of storage are utilities of the store. The readers of typed keys are
        # declared here, where collections need them, and implemented over the scanner.
        "core/public/lum/core/utility/LumTuple.h",
        "core/public/lum/core/utility/LumTupleData.h",
        "core/public/lum/core/utility/TupleOperations.h",
        "core/main/utility/LumTupleData.cpp",
        "core/main/utility/PackagedArrayView.h",
        "core/main/utility/Parser.h",
        "core/main/utility/Parser.cpp",
        "core/_gen_private/lum/core/serialize/SpecialKindUtil.h",
        "core/public/lum/core/store/*",
        "core/_gen/lum/core/store/*",
        "core/_gen_private/lum/core/store/*",
        "core/main/store/*",
    ]),
    # Programs as data. They name keys and values and run nothing, so they stand below every text
    # form and all functions: the readers and writers of Vtl are part of serialize.
    ("vtl", [
        "core/_gen_private/lum/core/serialize/OperatorTypeSerializeUtils.h",
        "core/public/lum/core/vtl/*",
        "core/_gen/lum/core/vtl/*",
        "core/main/vtl/*",
    ]),
    ("serialize", [
        "core/public/lum/core/serialize/*",
        "core/_gen/lum/core/serialize/*",
        "core/_gen_private/lum/core/serialize/*",
        "core/main/serialize/*",
    ]),
    ("functions", [
        "core/public/lum/core/functions/*",
        "core/_gen/lum/core/functions/*",
        "core/_gen_private/lum/core/functions/*",
        "core/main/functions/*",
    ]),
    ("umbrella", ["core/_gen/lum/core/LumCore.h"]),
    ("programs", ["examples/*", "tests/*", "fuzz/*", "bench/*"]),
]

# Sources that implement a narrow header of their component with the means of a higher one: the
# component they may reach, and why.
IMPLEMENTERS = {
    "core/main/utility/Parser.cpp": (
        "serialize", "typed keys of collections have the grammar of every other literal"),
}

# Third-party headers by the start of their name, and who may include them.
THIRD_PARTY = {
    "tbb/": ["core/main/*", "bench/*"],
    "oneapi/": ["core/main/*"],
    "boost/": ["core/main/*"],
    "json/": ["core/main/serialize/JsonValueAdapter.*", "bench/*"],
    "gtest/": ["tests/*"],
    "gmock/": ["tests/*"],
    "benchmark/": ["bench/*"],
    "rapidjson/": ["bench/*"],
    "absl/": ["bench/*"],
    "Eigen/": ["bench/*"],
    "google/protobuf/": ["bench/*"],
    "msgpack": ["bench/*"],
    "capnp/": ["bench/*"],
    "flatbuffers/": ["bench/*"],
}

# Folders whose headers are installed, and folders that hold what they may never name.
PUBLIC = ["lumsys/public/*", "lummetrics/public/*", "core/public/*", "core/_gen/*"]
PRIVATE = ["lumsys/main/*", "lummetrics/main/*", "core/main/*", "core/_gen_private/*"]
# The example host is written as an embedder would write it, who only has the public headers.
HOSTS = ["examples/*", "tests/package/*"]

SEARCH_FOLDERS = [
    "", "lumsys/public", "lummetrics/public", "core/public", "core/_gen", "core/_gen_private",
    "examples/engine",
    "examples/host",
]
SOURCE_FOLDERS = ["lumsys", "lummetrics", "core", "examples", "tests", "fuzz", "bench"]

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"]', re.MULTILINE)
STANDARD = re.compile(r"[a-z_0-9]+")
# The C library and the operating system, which sources may use and public headers may not.
SYSTEM = re.compile(r"(sys/)?[a-z_0-9]+\.h")


def matches(name, patterns):
    return any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)


class Layers:
    def __init__(self, root, components, implementers):
        self.root = root
        self.ranks = {name: rank for rank, (name, _) in enumerate(components)}
        self.components = components
        self.implementers = implementers
        self.messages = []
        self.files = self.find_files()
        self.levels = {name: self.component_of(name) for name in self.files}
        self.edges = {name: [] for name in self.files}

    def find_files(self):
        found = set()
        for top in SOURCE_FOLDERS:
            for folder, _, names in os.walk(os.path.join(self.root, top)):
                relative = os.path.relpath(folder, self.root)
                found.update(os.path.join(relative, name)
                             for name in names if name.endswith((".h", ".cpp")))
        return found

    def component_of(self, name):
        named = [component for component, patterns in self.components if name in patterns]
        found = named or [component for component, patterns in self.components
                          if matches(name, patterns)]
        if len(found) == 1:
            return found[0]
        self.messages.append(f"{name}:1: belongs to no component; see tools/check_layers.py"
                             if not found else
                             f"{name}:1: belongs to several components: {', '.join(found)}")
        return None

    def resolve(self, name, included):
        folders = [os.path.dirname(name)] + SEARCH_FOLDERS
        for folder in folders:
            candidate = os.path.normpath(os.path.join(folder, included))
            if candidate in self.files:
                return candidate
        return None

    def check_file(self, name, used):
        with open(os.path.join(self.root, name), encoding="utf-8") as file:
            text = file.read()
        line = 1
        position = 0
        for match in INCLUDE.finditer(text):
            line += text.count("\n", position, match.start())
            position = match.start()
            quote, included = match.groups()
            place = f"{name}:{line}"
            target = self.resolve(name, included)
            if target:
                self.edges[name].append((target, line))
                self.check_own(place, name, target, used)
            elif quote == '"':
                self.messages.append(f'{place}: "{included}" is no file of the project')
            else:
                self.check_foreign(place, name, included)

    def check_own(self, place, name, target, used):
        if matches(target, PRIVATE) and matches(name, PUBLIC):
            self.messages.append(f"{place}: public header includes private {target}")
            return
        if matches(target, PRIVATE) and matches(name, HOSTS):
            self.messages.append(f"{place}: a host has no private headers, but includes {target}")
            return
        own, other = self.levels[name], self.levels[target]
        if own is None or other is None or self.ranks[other] <= self.ranks[own]:
            return
        allowed = self.implementers.get(name)
        if allowed and self.ranks[other] <= self.ranks[allowed[0]]:
            used.add(name)
            return
        self.messages.append(f"{place}: {own} includes {target} of the higher component {other}")

    def check_foreign(self, place, name, included):
        start = next((start for start in THIRD_PARTY if included.startswith(start)), None)
        if start:
            if not matches(name, THIRD_PARTY[start]):
                self.messages.append(f"{place}: third-party <{included}> has no place here")
        elif STANDARD.fullmatch(included):
            return
        elif not SYSTEM.fullmatch(included) or matches(name, PUBLIC):
            self.messages.append(f"{place}: <{included}> is no header of standard C++")

    def check_cycles(self):
        # Depth first with a stack of its own; a file on the current path that is met again closes
        # a cycle. Each cycle is told once, at the include that closes it.
        done = set()
        for start in sorted(self.edges):
            path, stack = [], [(start, iter(self.edges[start]))]
            on_path = set()
            if start in done:
                continue
            path.append(start)
            on_path.add(start)
            while stack:
                name, targets = stack[-1]
                for target, line in targets:
                    if target in on_path:
                        cycle = path[path.index(target):] + [target]
                        self.messages.append(f"{name}:{line}: include cycle: {' -> '.join(cycle)}")
                    elif target not in done:
                        stack.append((target, iter(self.edges[target])))
                        path.append(target)
                        on_path.add(target)
                        break
                else:
                    stack.pop()
                    path.pop()
                    on_path.discard(name)
                    done.add(name)

    def check(self):
        used = set()
        for name in sorted(self.files):
            self.check_file(name, used)
        for name in self.implementers:
            if name not in used:
                self.messages.append(f"{name}:1: is listed in IMPLEMENTERS, but needs no leave")
        self.check_cycles()
        return self.messages


def check(root, components=None, implementers=None):
    """The complaints about the tree below `root`, each 'file:line: text'."""
    return Layers(root, COMPONENTS if components is None else components,
                  IMPLEMENTERS if implementers is None else implementers).check()


def main():
    here = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", default=here)
    messages = check(parser.parse_args().root)
    for message in messages:
        print(message)
    sys.exit(1 if messages else 0)


if __name__ == "__main__":
    main()
