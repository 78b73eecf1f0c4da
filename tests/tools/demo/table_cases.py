"""The table of figures: its order and its place."""

from page_case import WIDTHS, PageCase

COLUMNS = 11
QUALITY_COLUMN = 5
PSNR_COLUMN = 9

SORTED = "[...document.querySelectorAll('thead th')].map(cell => cell.getAttribute('aria-sort'))"


class Table(PageCase):
    def heading(self, number):
        """Brings a heading's button into the window and returns its middle there."""
        return self.browser.evaluate(f"""(() => {{
            const button = document.querySelectorAll('thead button')[{number}];
            button.scrollIntoView({{block: 'center'}});
            const box = button.getBoundingClientRect();
            return [box.x + box.width / 2, box.y + box.height / 2];
        }})()""")

    def assert_sorted_by(self, number, order):
        expected = [None] * COLUMNS
        expected[number] = order
        self.assertEqual(expected, self.browser.evaluate(SORTED))

    def test_clicks_sort_by_numbers(self):
        self.browser.click(*self.heading(PSNR_COLUMN))
        self.assert_sorted_by(PSNR_COLUMN, "ascending")
        ascending = self.column(PSNR_COLUMN)
        self.assertEqual(sorted(ascending, key=float), ascending)
        self.assertLess(float(ascending[0]), float(ascending[-1]))

        self.browser.click(*self.heading(PSNR_COLUMN))
        self.assert_sorted_by(PSNR_COLUMN, "descending")
        self.assertEqual(ascending[::-1], self.column(PSNR_COLUMN))

    def test_numbers_are_not_sorted_as_texts(self):
        self.browser.click(*self.heading(QUALITY_COLUMN))
        qualities = self.column(QUALITY_COLUMN)
        self.assertEqual(sorted(qualities, key=float), qualities)
        self.assertNotEqual(sorted(qualities), qualities)

    def test_keys_sort_by_texts(self):
        for key, code, text in (("Enter", 13, "\r"), (" ", 32, " ")):
            self.browser.click(*self.heading(PSNR_COLUMN))
            self.browser.evaluate("document.querySelector('#figures .scrolled').focus()")
            self.browser.press("Tab", 9)
            self.browser.press(key, code, text)
            self.assert_sorted_by(0, "ascending")
            screens = self.column(0)
            self.assertEqual(sorted(screens), screens)
            self.assertGreater(len(set(screens)), 1)

    def test_the_table_fits_a_desktop_and_scrolls_on_a_phone(self):
        for width, fits in zip(WIDTHS, (True, False)):
            self.show(width, "light")
            table, frame = self.boxes("table, .scrolled")[::-1]
            self.assertEqual(fits, table["width"] <= frame["width"] + 0.5)

    def test_numbers_are_aligned_to_the_right(self):
        self.assertEqual(["right"], self.browser.evaluate(
            """[...new Set([...document.querySelectorAll('td.number')].map(cell =>
                getComputedStyle(cell).textAlign))]"""))
