"""What the tests of the drawn page have in common."""

import unittest

# Pixels: a desktop and a phone.
WIDTHS = (1280, 400)
HEIGHT = 900
SCHEMES = ("light", "dark")

# The rectangles of elements, in pixels from the upper left corner of the page.
BOXES = """[...document.querySelectorAll(%r)].map(element => {
    const box = element.getBoundingClientRect();
    return {x: box.x + scrollX, y: box.y + scrollY, width: box.width, height: box.height};
})"""
ROWS = """[...document.querySelector('tbody').rows].map(row =>
    [...row.cells].map(cell => cell.textContent))"""


class PageCase(unittest.TestCase):
    """Each test begins with the window of a desktop in light colours."""

    browser = None
    results = None

    def setUp(self):
        self.show(WIDTHS[0], "light")

    def show(self, width, scheme):
        self.browser.show(width, HEIGHT, scheme)

    def boxes(self, selector):
        return self.browser.evaluate(BOXES % selector)

    def rows(self):
        """The texts of the table, as it is sorted."""
        return self.browser.evaluate(ROWS)

    def column(self, number):
        return [row[number] for row in self.rows()]
