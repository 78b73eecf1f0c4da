"""Holds one property of the built shared object that a distributor relies on.

Usage: shared_object.py --readelf PROGRAM --objdump PROGRAM PROPERTY FILE
Its debug symbols are expected beside it, in FILE.debug. Without arguments: lists the properties.
"""

import argparse
import itertools
import pathlib
import re
import struct
import sys
import zlib

from elf_file import ElfFile
from instruction_sets import is_avx

# Enterprise systems that are still in service have glibc 2.17 and the libgcc_s of GCC 4.8.
FLOORS = {"GLIBC": (2, 17), "GCC": (4, 8)}
# The start files refer to these when nobody supplies them.
OPTIONAL = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__"}

PAGE = 4096
# A negative number, 16 digits long, gives stack back.
FRAME = re.compile(r"^sub\s+\$0x([0-9a-f]{1,15}),%rsp$")
VARIABLE_FRAME = re.compile(r"^sub\s+%r\w+,%rsp$")
PROBE = re.compile(r"\(%rsp\)$")

# Legacy and REX prefixes, which precede an opcode.
PREFIXES = {"26", "2e", "36", "3e", "64", "65", "66", "67", "f0", "f2", "f3",
            *(f"4{digit:x}" for digit in range(16))}

# Takes the address of a local structure but has no array: protected only by "strong".
STRONGLY_PROTECTED = ("Vostrel::libthread::Condition::timedwait("
                      "Vostrel::libthread::ErrorCheckingMutex&, unsigned long, unsigned long)")


def NeedsLibcLibgccAndTheLoaderAlone(file, debug):
    needed = {value for tag, value in file.dynamic() if tag == "NEEDED"}
    allowed = {"libc.so.6", "libgcc_s.so.1", "ld-linux-x86-64.so.2"}
    yield from (f"needs {name}" for name in needed - allowed)
    yield from (f"does not need {name}" for name in allowed - needed)


def LoadsOnOldEnterpriseSystems(file, debug):
    imports = list(file.imports())
    if not imports:
        yield "no imports found"
    for symbol in imports:
        if symbol.version is None:
            if symbol.name not in OPTIONAL or symbol.binding != "WEAK":
                yield f"{symbol.name} is found nowhere for certain"
            continue
        base, _, number = symbol.version.partition("_")
        floor = FLOORS.get(base)
        if floor is None or tuple(map(int, number.split("."))) > floor:
            yield f"{symbol.name} wants {symbol.version} of {symbol.file}"


def IsReadOnlyAfterRelocation(file, debug):
    if "GNU_RELRO" not in dict(file.segments()):
        yield "no RELRO segment"
    if not binds_now(file):
        yield "procedure linkage stays writable"
    if ".got.plt" in file.sections():
        yield ".got.plt is left out of RELRO"


def BindsNow(file, debug):
    if not binds_now(file):
        yield "binds lazily"


def binds_now(file):
    dynamic = dict(file.dynamic())
    return "BIND_NOW" in dynamic.get("FLAGS", "") and "NOW" in dynamic.get("FLAGS_1", "")


def MapsNothingWritableAndExecutable(file, debug):
    segments = list(file.segments())
    if ("GNU_STACK", "RW") not in segments:
        yield "asks for an executable stack, or says nothing about it"
    yield from (f"{kind} segment is {flags}" for kind, flags in segments
                if "W" in flags and "E" in flags)


def HasNoTextRelocations(file, debug):
    for tag, value in file.dynamic():
        if tag == "TEXTREL" or (tag == "FLAGS" and "TEXTREL" in value):
            yield "has text relocations"


def ClaimsShadowStacksAlone(file, debug):
    features = re.search(r"x86 feature: (.*)", file.notes())
    claimed = features[1].split(", ") if features else []
    if claimed != ["SHSTK"]:
        yield f"claims {claimed}"


def ProtectsStacksStrongly(file, debug):
    if "__stack_chk_fail" not in {symbol.name for symbol in file.imports()}:
        yield "no stack protector"
    witnesses = debug.functions().named(STRONGLY_PROTECTED)
    if not witnesses:
        yield f"no function {STRONGLY_PROTECTED}"
    canaries = [i.address for i in file.instructions() if "%fs:0x28" in i.text]
    for witness in witnesses:
        if not any(witness.start <= address < witness.end for address in canaries):
            yield f"{witness.name} is not protected"


def ChecksBufferSizes(file, debug):
    checked = [symbol.name for symbol in file.imports() if symbol.name.endswith("_chk")]
    if "__vsnprintf_chk" not in checked:
        yield f"not fortified; checked functions: {checked}"


def ProbesEveryPageOfAFrame(file, debug):
    functions = debug.functions()
    instructions = list(file.instructions())
    for allocation, following in zip(instructions, instructions[1:]):
        frame = FRAME.match(allocation.text)
        size = int(frame[1], 16) if frame else 0
        at_once = size > PAGE or (size == PAGE and not PROBE.search(following.text))
        if at_once or VARIABLE_FRAME.match(allocation.text):
            function = functions.at(allocation.address)
            if not comes_compiled(function):
                yield f"{function.name}: {allocation.text}"


def comes_compiled(function):
    """Whether it is of the system's static C++ library, whose flags are not ours to choose."""
    return function.source.endswith(".o")


def HasABuildId(file, debug):
    if not re.fullmatch("[0-9a-f]{40}", file.build_id() or ""):
        yield f"build-id is {file.build_id()}"


def KeepsAvxInItsVariants(file, debug):
    return strays(file, debug, is_avx, r"Avx\d+")


def KeepsWhatIsNewerThanSse2InItsVariants(file, debug):
    return strays(file, debug, is_newer_than_sse2, r"(Avx|Ssse)\d+")


def strays(file, debug, is_special, variant):
    """Objects to special instructions outside the functions that are named, or whose source is
    named, for a variant: a regular expression. Only there was the processor asked."""
    functions = debug.functions()
    special = {functions.at(i.address) for i in file.instructions() if is_special(i.encoding)}
    if not special:
        yield "no such instruction found"
    for function in sorted(special):
        if not (re.search(variant, function.name) or
                re.search(variant + r"\.cpp$", function.source)):
            yield f"{function.name}, {function.source}"


def is_newer_than_sse2(encoding):
    """SSSE3, SSE4 and most of what came later are in two maps of opcodes; AVX has its prefixes."""
    opcode = list(itertools.dropwhile(lambda byte: byte in PREFIXES, encoding))
    popcnt = "f3" in encoding and opcode[:2] == ["0f", "b8"]
    return is_avx(encoding) or popcnt or opcode[:2] in (["0f", "38"], ["0f", "3a"])


def LeavesItsDebugSymbolsBeside(file, debug):
    yield from (f"has a section {name}" for name in file.sections()
                if name.startswith(".debug") or name == ".symtab")
    if ".debug_info" not in debug.sections() or not len(debug.functions()):
        yield f"{debug.path} has no debug symbols"
    if file.build_id() != debug.build_id():
        yield f"{debug.path} is of another build"
    # The name, zeroes up to a multiple of four, and the checksum of the whole file.
    name = pathlib.Path(debug.path).name.encode()
    link = name + bytes(4 - len(name) % 4)
    link += struct.pack("<I", zlib.crc32(pathlib.Path(debug.path).read_bytes()))
    if link not in pathlib.Path(file.path).read_bytes():
        yield f"no debug link to {debug.path}"


PROPERTIES = {function.__name__: function for function in (
    NeedsLibcLibgccAndTheLoaderAlone,
    LoadsOnOldEnterpriseSystems,
    IsReadOnlyAfterRelocation,
    BindsNow,
    MapsNothingWritableAndExecutable,
    HasNoTextRelocations,
    ClaimsShadowStacksAlone,
    ProtectsStacksStrongly,
    ChecksBufferSizes,
    ProbesEveryPageOfAFrame,
    HasABuildId,
    KeepsAvxInItsVariants,
    KeepsWhatIsNewerThanSse2InItsVariants,
    LeavesItsDebugSymbolsBeside,
)}


def main():
    if len(sys.argv) == 1:
        print("\n".join(PROPERTIES))
        return False
    parser = argparse.ArgumentParser()
    parser.add_argument("--readelf", required=True)
    parser.add_argument("--objdump", required=True)
    parser.add_argument("property", choices=PROPERTIES)
    parser.add_argument("file")
    arguments = parser.parse_args()
    tools = (arguments.readelf, arguments.objdump)
    file = ElfFile(arguments.file, *tools)
    debug = ElfFile(arguments.file + ".debug", *tools)
    objections = list(PROPERTIES[arguments.property](file, debug))
    for text in objections:
        print(f"{arguments.file}: {text}")
    return bool(objections)


if __name__ == "__main__":
    sys.exit(main())
