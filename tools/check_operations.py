#!/usr/bin/env python3
"""Compares docs/operations.md with the public headers.

usage: check_operations.py [--root FOLDER]

Each public header that declares operations has a row there; the row names each of them, the files
that implement them and the tests that would catch a fault, and these files exist. What an operation
is, is told by the shape of its declaration: a function of a namespace, or a public one of a class,
that does not begin with a word of the language.
"""

import argparse
import os
import re
import sys

PAGE = "docs/operations.md"
PUBLIC_FOLDERS = ["core/public", "core/_gen", "lummetrics/public", "lumsys/public"]
NOT_A_TYPE = {"return", "throw", "else", "case", "using", "friend", "typedef", "requires", "new",
              "delete"}
NOT_A_NAME = {"operator", "decltype", "noexcept", "sizeof", "alignas", "explicit", "if", "for",
              "while", "switch", "char", "short", "unsigned", "int"}
DECLARATION = re.compile(r" {0,4}(?! )(?:template <.*?> )?([\w:<>,&*\[\]. ]+?)[ *&](\w+)\(")
ROW = re.compile(r"\| `(?P<header>[\w/]+\.h)` \| (?P<operations>.*?) \| (?P<files>.*?) \|"
                 r" (?P<tests>.*?) \|")


def operations_of(text):
    """The names of the operations that a header declares, in order."""
    text = re.sub(r"//(?! namespace).*", "", text)
    types = set(re.findall(r"^(?:class|struct)\b[^;{]*?(\w+)(?: final)?(?: :[^{;]*)? \{", text,
                           flags=re.M))
    names, is_private, is_detail = {}, False, False
    for line in text.splitlines():
        if re.match(r"namespace .*\bdetail\b|namespace internal\b", line):
            is_detail = True
        elif line.startswith("}  // namespace"):
            is_detail = False
        elif re.match(r" *(private|protected):", line):
            is_private = True
        elif re.match(r" *public:", line) or re.match(r"(\};|class|struct|template)", line):
            is_private = False
        match = DECLARATION.match(line)
        if is_private or is_detail or not match:
            continue
        before, name = match.groups()
        words = before.split()
        if (not words or words[0] in NOT_A_TYPE or "=" in before or name in NOT_A_NAME or
                name in types or name.startswith("LUM_")):
            continue
        names[name] = None
    return list(names)


def public_headers(root):
    """The path of each public header as it is included, with its text."""
    for folder in PUBLIC_FOLDERS:
        top = os.path.join(root, folder)
        for path, _, files in sorted(os.walk(top)):
            for name in sorted(files):
                with open(os.path.join(path, name), encoding="utf-8") as file:
                    yield os.path.relpath(os.path.join(path, name), top), file.read()


def complaints(root):
    with open(os.path.join(root, PAGE), encoding="utf-8") as file:
        rows = {match["header"]: match for match in map(ROW.match, file) if match}
    for header, text in public_headers(root):
        expected = operations_of(text)
        row = rows.pop(header, None)
        if row is None:
            if expected:
                yield f"{header} has no row; it declares {', '.join(expected)}"
            continue
        named = set(re.findall(r"\w+", row["operations"]))
        missing = [name for name in expected if name not in named]
        if missing:
            yield f"{header}: the row does not name {', '.join(missing)}"
        for path in re.findall(r"`([\w/.]+\.\w+)`", row["files"] + row["tests"]):
            if not os.path.exists(os.path.join(root, path)):
                yield f"{header}: there is no {path}"
    for header in rows:
        yield f"{header}: there is no such public header"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root",
                        default=os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    found = list(complaints(parser.parse_args().root))
    for complaint in found:
        print(f"{PAGE}: {complaint}")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
