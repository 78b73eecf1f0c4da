"""Holds the shared object's object files to the processors that it has to run on.

An object named for a generation of AVX, ...Avx2.cpp.o, is entered only after the processor was
asked. All others must hold no AVX instruction. And an AVX object must define no weak function: the
linker keeps one of all equal weak definitions, which could put AVX into the path of every processor.

Usage: instruction_sets.py --objdump PROGRAM --nm PROGRAM OBJECT...
"""

import argparse
import re
import subprocess
import sys

# Segment and address-size overrides, the only bytes that may precede a VEX or EVEX prefix.
OVERRIDES = {"26", "2e", "36", "3e", "64", "65", "67"}
# In 64-bit code these bytes start nothing but instructions of AVX and its kin.
VECTOR_PREFIXES = {"c4", "c5", "62"}
AVX_OBJECT = re.compile(r"Avx\d+\.cpp\.o$")
INSTRUCTION = re.compile(r"^\s*[0-9a-f]+:\t((?:[0-9a-f]{2} )+)\s*\t(.*)$")


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def instructions(objdump, path):
    """Yields the bytes and the text of every instruction."""
    for line in output_of(objdump, "--disassemble", "--wide", "--insn-width=15", path).splitlines():
        match = INSTRUCTION.match(line)
        if match:
            yield match[1].split(), match[2]


def is_avx(encoding):
    first = next((byte for byte in encoding if byte not in OVERRIDES), None)
    return first in VECTOR_PREFIXES


def weak_functions(nm, path):
    symbols = (line.split(maxsplit=2) for line in
               output_of(nm, "--defined-only", "--demangle", path).splitlines())
    return [symbol[2] for symbol in symbols if len(symbol) == 3 and symbol[1] == "W"]


def objections_to(path, objdump, nm):
    avx = [text for encoding, text in instructions(objdump, path) if is_avx(encoding)]
    if not AVX_OBJECT.search(path):
        return [f"AVX instruction: {text}" for text in avx]
    weak = [f"weak function: {name}" for name in weak_functions(nm, path)]
    return weak if avx else weak + ["no AVX instruction found"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--objdump", required=True)
    parser.add_argument("--nm", required=True)
    parser.add_argument("objects", nargs="+")
    arguments = parser.parse_args()
    failed = not any(AVX_OBJECT.search(path) for path in arguments.objects)
    if failed:
        print("no AVX object among the arguments")
    for path in arguments.objects:
        for text in objections_to(path, arguments.objdump, arguments.nm):
            print(f"{path}: {text}")
            failed = True
    return failed


if __name__ == "__main__":
    sys.exit(main())
