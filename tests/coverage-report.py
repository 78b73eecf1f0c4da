#!/usr/bin/env python3
"""coverage-report.py SUMMARY LCOV: prints the table and the uncovered places of tests/coverage."""

import json
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WANTED = {"lines": 98, "branches": 95}


def percent(part):
    return 100 * part["covered"] / part["count"] if part["count"] else 100


def name_of(path):
    return str(Path(path).relative_to(ROOT))


def uncovered(lcov):
    """Lines, and branches that were taken one way only, per file."""
    file = None
    for entry in Path(lcov).read_text().splitlines():
        kind, _, value = entry.partition(":")
        if kind == "SF":
            file = name_of(value)
        elif kind == "DA" and value.endswith(",0"):
            yield f"{file}:{value.split(',')[0]}: line"
        elif kind == "BRDA" and value.split(",")[3] in ("0", "-"):
            yield f"{file}:{value.split(',')[0]}: branch"


def main():
    data = json.loads(Path(sys.argv[1]).read_text())["data"][0]
    print("| file | lines | covered | branches | covered |\n|---|---:|---:|---:|---:|")
    rows = [(f'`{name_of(file["filename"])}`', file["summary"]) for file in data["files"]]
    for name, summary in [*sorted(rows), ("all", data["totals"])]:
        print(f'| {name} ' + "".join(
            f'| {summary[kind]["count"]} | {percent(summary[kind]):.1f} % ' for kind in WANTED) + "|")
    print()
    for place in sorted(set(uncovered(sys.argv[2]))):
        print(place)
    short = [kind for kind, wanted in WANTED.items() if percent(data["totals"][kind]) < wanted]
    if short:
        sys.exit(f"coverage: too few {' and '.join(short)}")


if __name__ == "__main__":
    main()
