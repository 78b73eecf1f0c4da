"""Builds the sources again from a copy in another folder and compares what is distributed.
The first build must be up to date.

Usage: reproducible.py --source ROOT --build FOLDER --work FOLDER --cmake PROGRAM
                       --target NAME... --file BUILT... -- OPTION...
"""

import argparse
import pathlib
import shutil
import subprocess
import sys

SOURCES = ["CMakeLists.txt", "cmake", "libthread", "libjni", "libimagedecoder", "jni", "java"]


def copy_sources(root, copy):
    for name in SOURCES:
        if (root / name).is_dir():
            shutil.copytree(root / name, copy / name)
        else:
            shutil.copy2(root / name, copy / name)


def run(*command):
    """Runs a build step; what it prints is of interest only when it fails."""
    step = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if step.returncode:
        sys.exit(f"{' '.join(map(str, command))}\n{step.stdout}")


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
    copy = arguments.work / "a copy of the sources"
    build = arguments.work / "second-build"
    copy.mkdir(parents=True)
    copy_sources(arguments.source, copy)
    run(arguments.cmake, "-S", copy, "-B", build, *arguments.options)
    run(arguments.cmake, "--build", build, "--target", *arguments.target)

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
