"""Holds the tests that documents name against the tests that exist.

A document names a test as `Suite.Test`, or as `Suite.*` for all of a suite.

Usage: documented_tests.py ROOT DOCUMENT...
"""

import pathlib
import re
import sys

DEFINED = re.compile(r"\b(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)")
NAMED = re.compile(r"`([A-Z]\w+)\.([A-Z]\w+|\*)`")
EXAMPLE = ("Suite", "Test")


def main():
    root = pathlib.Path(sys.argv[1])
    defined = set()
    for path in (root / "tests").rglob("*Test.cpp"):
        defined.update(DEFINED.findall(path.read_text()))
    defined.update((suite, "*") for suite, _ in list(defined))

    missing = 0
    for document in sys.argv[2:]:
        named = set(NAMED.findall((root / document).read_text())) - {EXAMPLE}
        for suite, test in sorted(named - defined):
            print(f"{document}: there is no test {suite}.{test}")
            missing += 1
        if not named:
            print(f"{document}: names no test")
            missing += 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
