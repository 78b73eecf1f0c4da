"""What binutils tell about an ELF file, as plain values."""

import bisect
import collections
import re
import subprocess

Symbol = collections.namedtuple("Symbol", "name version file binding")
Instruction = collections.namedtuple("Instruction", "address encoding text")
Function = collections.namedtuple("Function", "start end name source")

IMPORT = re.compile(r"^\s*\d+: \S+\s+\d+ \S+\s+(\S+)\s+\S+\s+UND (\S+?)(?:@(\S+) \((\d+)\))?$")
DEFINED = re.compile(r"^\s*\d+: ([0-9a-f]{16})\s+(\S+) (FILE|FUNC|IFUNC)\s+\S+\s+\S+\s+\S+ (.*)$")
DISASSEMBLED = re.compile(r"^\s*([0-9a-f]+):\t((?:[0-9a-f]{2} )+)\s*\t(.*)$")
NEEDED_FILE = re.compile(r" File: (\S+) ")
NEEDED_VERSION = re.compile(r" Name: (\S+) .* Version: (\d+)$")


class ElfFile:
    """One file, asked through the readelf and objdump given."""

    def __init__(self, path, readelf, objdump):
        self.path = path
        self.readelf = readelf
        self.objdump = objdump

    def dynamic(self):
        """The dynamic section as (tag, value) pairs, such as ("NEEDED", "libc.so.6")."""
        for line in self.read("--dynamic"):
            match = re.match(r" 0x[0-9a-f]+ \((\w+)\)\s+(.*)$", line)
            if match:
                yield match[1], re.sub(r"^.*\[(.*)\]$", r"\1", match[2])

    def segments(self):
        """The program headers as (type, flags) pairs, such as ("GNU_STACK", "RW")."""
        for line in self.read("--program-headers"):
            match = re.match(r"  (\w+)\s+(?:0x[0-9a-f]+ ){5}(.*?)\s+0x[0-9a-f]+$", line)
            if match:
                yield match[1], match[2].replace(" ", "")

    def sections(self):
        for line in self.read("--sections"):
            match = re.match(r"  \[ *\d+\] (\.\S+)", line)
            if match:
                yield match[1]

    def notes(self):
        return "\n".join(self.read("--notes"))

    def build_id(self):
        match = re.search(r"Build ID: ([0-9a-f]+)", self.notes())
        return match and match[1]

    def imports(self):
        """The symbols that other files have to supply."""
        files = self.files_of_versions()
        for line in self.read("--dyn-syms"):
            match = IMPORT.match(line)
            if match:
                yield Symbol(match[2], match[3], files.get(match[4]), match[1])

    def files_of_versions(self):
        """Index of a needed version -> the file that has it."""
        files = {}
        file = None
        for line in self.read("--version-info"):
            if match := NEEDED_FILE.search(line):
                file = match[1]
            elif match := NEEDED_VERSION.search(line):
                files[match[2]] = file
        return files

    def functions(self):
        """The functions of the symbol table by address. A local one knows its source file."""
        found = []
        source = ""
        for line in self.read("--symbols", "--demangle"):
            match = DEFINED.match(line)
            if match and match[3] == "FILE":
                source = match[4]
            elif match:
                start = int(match[1], 16)
                found.append(Function(start, start + int(match[2], 0), match[4], source))
        return FunctionTable(found)

    def instructions(self):
        command = [self.objdump, "--disassemble", "--wide", "--insn-width=15", self.path]
        for line in output_of(command):
            match = DISASSEMBLED.match(line)
            if match:
                yield Instruction(int(match[1], 16), match[2].split(), match[3])

    def read(self, *options):
        return output_of([self.readelf, "--wide", *options, self.path])


class FunctionTable:
    """Finds the function that holds an address."""

    def __init__(self, functions):
        self.functions = sorted(function for function in functions if function.end > function.start)
        self.starts = [function.start for function in self.functions]

    def __len__(self):
        return len(self.functions)

    def at(self, address):
        index = bisect.bisect_right(self.starts, address) - 1
        if index >= 0 and address < self.functions[index].end:
            return self.functions[index]
        return Function(address, address, "code without a name", "")

    def named(self, name):
        return [function for function in self.functions if function.name.startswith(name)]


def output_of(command):
    run = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                         text=True)
    return run.stdout.splitlines()
