"""Builds the sources again, from a copy in another folder and in the C locale, and compares what is
distributed. The names of the folders have letters that the C locale has not. The first build must be
up to date.

Usage: reproducible.py --source ROOT --build FOLDER --work FOLDER --cmake PROGRAM
                       --target NAME... --file BUILT... -- OPTION...
"""

import argparse
import os
import pathlib
import shutil
import sys

from steps import output_of

SOURCES = ["CMakeLists.txt", "cmake", "libthread", "libjni", "libimagedecoder", "jni", "java"]


def copy_sources(root, copy):
    for name in SOURCES:
        if (root / name).is_dir():
            shutil.copytree(root / name, copy / name)
        else:
            shutil.copy2(root / name, copy / name)


def first_difference(one, other):
    return next((i for i, (a, b) in enumerate(zip(one, other)) if a != b), min(len(one), len(other)))


def objections(built, again):
    for first, second in zip(built, again):
        one, other = first.read_bytes(), second.read_bytes()
        if one != other:
            yield f"{first} and {second} differ from byte {first_difference(one, other)} on"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--target", action="append", required=True)
    parser.add_argument("--file", type=pathlib.Path, action="append", required=True)
    parser.add_argument("options", nargs="*", help="for CMake, after --")
    arguments = parser.parse_args()

    shutil.rmtree(arguments.work, ignore_errors=True)
    copy = arguments.work / "a c\u00f6py of the sources"
    build = arguments.work / "second b\u00fcild"
    environment = os.environ | {"LC_ALL": "C"}
    copy.mkdir(parents=True)
    copy_sources(arguments.source, copy)
    output_of(arguments.cmake, "-S", copy, "-B", build, *arguments.options, env=environment)
    output_of(arguments.cmake, "--build", build, "--target", *arguments.target, env=environment)

    again = [build / file.relative_to(arguments.build) for file in arguments.file]
    failed = False
    for text in objections(arguments.file, again):
        print(text)
        failed = True
    if not failed:
        shutil.rmtree(arguments.work)
    return failed


if __name__ == "__main__":
    sys.exit(main())
