"""Follows the relative links of Markdown pages: each leads to a file or folder below the same root, and
an anchor to a heading of its page.

Usage: links.py ROOT PAGE...
"""

import pathlib
import re
import sys

CODE = re.compile(r"^```.*?^```|`[^`\n]+`", re.DOTALL | re.MULTILINE)
LINK = re.compile(r"\]\(([^)\s]+)\)")
ABSOLUTE = re.compile(r"^[a-z]+:")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)


def anchors_of(page):
    """The names that a browser of the sources gives to the headings."""
    headings = HEADING.findall(page.read_text(encoding="utf-8"))
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def objection(root, page, link):
    target, _, anchor = link.partition("#")
    file = (page.parent / target).resolve() if target else page
    if not file.is_relative_to(root.resolve()) or not file.exists():
        return "leads to nothing"
    if anchor and anchor not in anchors_of(file):
        return "leads to no heading"
    return None


def broken_links(root, pages=None):
    for page in sorted(root.rglob("*.md")) if pages is None else pages:
        page = page.resolve()
        for link in LINK.findall(CODE.sub("", page.read_text(encoding="utf-8"))):
            why = None if ABSOLUTE.match(link) else objection(root, page, link)
            if why:
                yield f"{page.relative_to(root.resolve())}: {link} {why}"


def main():
    root = pathlib.Path(sys.argv[1])
    broken = list(broken_links(root, [root / page for page in sys.argv[2:]]))
    print("\n".join(broken))
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
