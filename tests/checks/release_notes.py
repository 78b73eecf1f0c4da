"""Holds CHANGELOG.md and debian/changelog to the version of the project: the newest heading is that
version and a date, and debian/changelog is what debian/make-changelog prints.

Usage: release_notes.py ROOT VERSION
"""

import datetime
import pathlib
import re
import sys

from steps import output_of, require

HEADING = re.compile(r"^## (.*)$", re.MULTILINE)


def main():
    root, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    headings = HEADING.findall((root / "CHANGELOG.md").read_text(encoding="utf-8"))
    require(headings, "CHANGELOG.md has no version")
    require(headings[0].split(" - ")[0] == version,
            f"CHANGELOG.md begins with {headings[0]}, the project is {version}")
    for heading in headings:
        _, _, date = heading.partition(" - ")
        try:
            datetime.date.fromisoformat(date)
        except ValueError:
            sys.exit(f"CHANGELOG.md: '{heading}' ends in no date")
    require(output_of(root / "debian/make-changelog") == (root / "debian/changelog").read_text(),
            "debian/changelog is out of date: debian/make-changelog > debian/changelog")


if __name__ == "__main__":
    main()
