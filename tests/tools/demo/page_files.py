#!/usr/bin/python3 -B
"""Holds the demo's page against the files beside it, without a browser.

Needs the Debian package python3-pil. Usage: page_files.py RESULTS SCREENS
"""

import html.parser
import math
import pathlib
import re
import sys
import unittest

SKIP_STATUS = 77
try:
    from PIL import Image, ImageChops
except ImportError:
    print("Skipped: the Debian package python3-pil is not installed")
    sys.exit(SKIP_STATUS)

# Elements without an end tag.
VOID = {"meta", "img", "link", "br"}


class Page(html.parser.HTMLParser):
    """What the page refers to, its runs with their pictures, and the rows of its table."""

    def __init__(self, text):
        super().__init__()
        self.references = []
        self.ids = []
        self.runs = {}
        self.rows = {}
        self.open = []
        self._run = None
        self._row = None
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag not in VOID:
            self.open.append(tag)
        self.references += [attributes[name] for name in ("src", "href") if name in attributes]
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag == "details":
            self._run = self.runs[attributes["id"]] = []
        if tag == "img":
            self._run.append(attributes)
        if tag == "tr":
            self._row = []
        if tag in ("td", "th") and "tbody" in self.open:
            self._row.append("")
        if tag == "a" and "tbody" in self.open:
            self.rows[attributes["href"].removeprefix("#")] = self._row

    def handle_endtag(self, tag):
        if self.open.pop() != tag:
            raise ValueError(f"</{tag}> at line {self.getpos()[0]} ends another element")

    def handle_data(self, data):
        if "tbody" in self.open and self._row and data.strip():
            self._row[-1] += data.strip()


def picture(name):
    return Image.open(RESULTS / name).convert("RGB")


def psnr(one, other):
    samples = 3 * one.width * one.height
    histogram = ImageChops.difference(one, other).histogram()
    squares = sum(count * (i % 256) ** 2 for i, count in enumerate(histogram))
    return math.inf if squares == 0 else 10 * math.log10(255 ** 2 * samples / squares)


class PageFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.text = (RESULTS / "index.html").read_text(encoding="utf-8")
        cls.page = Page(cls.text)

    def test_every_element_is_closed(self):
        self.assertEqual([], self.page.open)

    def test_nothing_comes_from_elsewhere(self):
        for reference in self.page.references:
            if reference.startswith("#"):
                self.assertIn(reference[1:], self.page.ids)
            else:
                self.assertRegex(reference, r"^[\w-]+\.(png|rcrec)$")
                self.assertTrue((RESULTS / reference).is_file(), reference)
        self.assertIsNone(re.search(r"@import|url\(|<link|<script [^>]*src", self.text))

    def test_every_id_is_unique(self):
        self.assertEqual(len(set(self.page.ids)), len(self.page.ids))

    def test_every_run_has_four_pictures_with_a_text_and_a_row(self):
        self.assertEqual(set(self.page.runs), set(self.page.rows))
        for run, pictures in self.page.runs.items():
            self.assertEqual(4, len(pictures), run)
            for attributes in pictures:
                self.assertGreater(len(attributes["alt"]), 20, run)
                size = (int(attributes["width"]), int(attributes["height"]))
                self.assertEqual(picture(attributes["src"]).size, size, attributes["src"])

    def test_the_source_is_the_last_frame(self):
        for pictures in self.page.runs.values():
            source = pictures[0]["src"]
            last = max(SCREENS.glob(source.replace("-source.png", "-[0-9]*.png")))
            self.assertEqual(last.read_bytes(), (RESULTS / source).read_bytes())

    def test_the_difference_is_16_times_that_of_source_and_decoded_picture(self):
        for run, pictures in self.page.runs.items():
            source, decoded, difference, _ = (picture(p["src"]) for p in pictures)
            expected = ImageChops.difference(source, decoded).point(lambda v: min(255, 16 * v))
            self.assertIsNone(ImageChops.difference(expected, difference).getbbox(), run)
            self.assertIn("times 16", pictures[2]["alt"])

    def test_the_table_has_the_figures_of_the_pictures(self):
        for run, row in self.page.rows.items():
            source, decoded, _, _ = (picture(p["src"]) for p in self.page.runs[run])
            frames, kilobytes, rate, shown_psnr = map(float, row[6:10])
            self.assertAlmostEqual(psnr(source, decoded), shown_psnr, delta=0.006, msg=run)
            pixels = frames * source.width * source.height
            self.assertAlmostEqual(8000 * kilobytes / pixels, rate, delta=0.002, msg=run)


if __name__ == "__main__":
    RESULTS, SCREENS = map(pathlib.Path, sys.argv[1:3])
    unittest.main(argv=sys.argv[:1])
