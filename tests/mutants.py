"""Makes single bugs for tests/mutate: all changes of one line that are likely to compile and to matter,
and a choice of them."""

import hashlib
import re

SWAPS = [
    ("arithmetic", {" + ": " - ", " - ": " + ", " * ": " + ", " / ": " * ", " % ": " / ",
                    " += ": " -= ", " -= ": " += ", "++": "--", "--": "++"}),
    ("bits", {" << ": " >> ", " >> ": " << ", " & ": " | ", " | ": " & ", " ^ ": " & ",
              " |= ": " &= ", " &= ": " |= ", " <<= ": " >>= ", " >>= ": " <<= "}),
    ("comparison", {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ",
                    " != ": " == "}),
    ("logic", {" && ": " || ", " || ": " && ", "true": "false", "false": "true",
               "break;": "continue;", "continue;": "break;"}),
    ("minimum", {"std::min": "std::max", "std::max": "std::min"}),
]
NOT_CODE = re.compile(
    r"^\s*(#|//|/?\*|using |namespace |template|static_assert|class |struct |enum |friend |public:|"
    r"private:|protected:|\[\[)")
STATEMENT = re.compile(r"^\s+((\*?[\w.\->\[\]+:]+(\(.*\))?) ?([-+|&^]|<<|>>)?= .*|"
                       r"[\w.\->:]+\(.*\)|[\w.\->]+(\+\+|--)|(\+\+|--)[\w.\->]+);$")
NUMBER = re.compile(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|\d+)(?=[uUlL]*\b)(?!\.)")
# Of what these call it does not matter which argument comes first.
SYMMETRIC = re.compile(r"(::min|::max|_mm\d*_(add|adds|or|and|xor|max|min|mullo|mulhi|madd)_\w+)\($")
TWO_ARGUMENTS = re.compile(r"(?<=\()([\w.\->\[\]]+), ([\w.\->\[\]]+)(?=\))")
CONDITION = re.compile(r"^(\s*(?:\} else )?if \()(.*)(\)(?: \{|\s*)?)$")
NEGATION = re.compile(r"!(?=[\w(])")

# Logging, and an interface that holds declarations alone.
LEFT_OUT = ("ILogger.cpp", "CpuArch.h")


class Mutant:
    """One line of one file, changed."""

    def __init__(self, file, lines, number, kind, text):
        self.file = file
        self.line = number + 1
        self.kind = kind
        self.text = text
        self.old = lines[number].strip()
        self.new = text.strip()
        # The lines around it tell it from the same change elsewhere in the file, and do not move
        # when something is added far above.
        around = "\n".join(lines[max(number - 1, 0):number + 2])
        self.key = digest(f"{file}\0{around}\0{self.new}")

    def is_in_header(self):
        return self.file.endswith(".h")


def digest(text):
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def words_of(line):
    """The line with texts and the comment behind it blanked."""
    line = re.sub(r'"(\\.|[^"\\])*"', lambda match: '"' + " " * (len(match[0]) - 2) + '"', line)
    return re.sub(r"//.*", lambda match: " " * len(match[0]), line)


def changed_lines(line):
    """All single changes of a line, as (kind, new line)."""
    code = words_of(line).rstrip()
    for kind, swaps in SWAPS:
        for old, new in swaps.items():
            word = rf"\b{old}\b" if old in ("true", "false") else re.escape(old)
            for match in re.finditer(word, code):
                yield kind, line[:match.start()] + new + line[match.end():]
    for match in NUMBER.finditer(code):
        value = int(match[0], 0)
        for other in (value + 1, value - 1):
            if other >= 0:
                yield "constant", line[:match.start()] + str(other) + line[match.end():]
    for match in TWO_ARGUMENTS.finditer(code):
        if match[1] != match[2] and not SYMMETRIC.search(code[:match.start()]):
            swapped = f"{match[2]}, {match[1]}"
            yield "arguments", line[:match.start()] + swapped + line[match.end():]
    for match in NEGATION.finditer(code):
        yield "logic", line[:match.start()] + line[match.end():]
    if match := CONDITION.match(code):
        yield "condition", f"{match[1]}!({match[2]}){match[3]}"
    if STATEMENT.match(code) and code.count("(") == code.count(")"):
        yield "statement", re.match(r"\s*", line)[0] + ";"


def mutants_of(path, file):
    lines = path.read_text().split("\n")
    for number, line in enumerate(lines):
        if NOT_CODE.match(line) or (path.suffix == ".h" and "(" not in line and "=" not in line):
            continue
        whole = number == 0 or re.search(r"[;{}:]\s*$", words_of(lines[number - 1]))
        for kind, new in changed_lines(line):
            # The rest of a statement that began further up is none of its own.
            if kind != "statement" or whole:
                yield Mutant(file, lines, number, kind, new)


def all_mutants(tree):
    for path in (tree / "libimagedecoder").rglob("*"):
        if path.suffix in (".cpp", ".h") and path.name not in LEFT_OUT:
            yield from mutants_of(path, str(path.relative_to(tree)))


def evenly(mutants):
    """Kind after kind, so that the many numbers of tables do not crowd out the rest."""
    kinds = {}
    for mutant in mutants:
        kinds.setdefault(mutant.kind, []).append(mutant)
    while kinds:
        for kind in sorted(kinds):
            yield kinds[kind].pop()
            if not kinds[kind]:
                del kinds[kind]


def chosen_mutants(tree, count, seed):
    """A sample of all kinds, at most a fifth of it in headers, and these last: they rebuild most.
    A change of the sources changes little of it."""
    mutants = {mutant.key: mutant for mutant in all_mutants(tree)}.values()
    mixed = sorted(mutants, key=lambda mutant: digest(f"{seed} {mutant.key}"))
    headers = list(evenly(mutant for mutant in mixed if mutant.is_in_header()))[:count // 5]
    code = list(evenly(mutant for mutant in mixed if not mutant.is_in_header()))
    chosen = code[:count - len(headers)] + headers
    return sorted(chosen, key=lambda mutant: (mutant.is_in_header(), mutant.file, mutant.line))
