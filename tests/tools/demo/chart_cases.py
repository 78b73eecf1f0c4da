"""The charts: a mark for every run, in its place and its colour."""

from colours import contrast, rgb
from page_case import SCHEMES, WIDTHS, PageCase

RATE_COLUMN = 8
PSNR_COLUMN = 9
SPEED_COLUMN = 10

# For each chart its ticks, [place, value] along x and along y, and its marks: run, x, y, colour.
CHARTS = """[...document.querySelectorAll('svg')].map(chart => {
    const middle = element => {
        const box = element.getBoundingClientRect();
        return [box.x + box.width / 2 + scrollX, box.y + box.height / 2 + scrollY];
    };
    const ticks = axis => [...chart.querySelectorAll(`.${axis}.tick`)].map(tick =>
        [middle(tick)[axis === 'x' ? 0 : 1], Number(tick.textContent)]);
    const marks = [...chart.querySelectorAll('.mark')].map(mark =>
        [mark.closest('a').getAttribute('href').slice(1), ...middle(mark),
         getComputedStyle(mark).fill]);
    return {x: ticks('x'), y: ticks('y'), marks};
})"""


class Charts(PageCase):
    def test_charts_have_a_mark_for_every_figure_of_the_table(self):
        runs = self.browser.evaluate("""[...document.querySelectorAll('tbody a')].map(link =>
            link.getAttribute('href').slice(1))""")
        figures = dict(zip(runs, self.rows()))
        charts = self.browser.evaluate(CHARTS)
        self.assertEqual(2, len(charts))
        for chart, column in zip(charts, (PSNR_COLUMN, SPEED_COLUMN)):
            self.assertEqual(set(figures), {mark[0] for mark in chart["marks"]})
            self.assertEqual(len(figures), len(chart["marks"]))
            for run, x, y, _ in chart["marks"]:
                self.assert_between_ticks(chart["x"], x, float(figures[run][RATE_COLUMN]))
                self.assert_between_ticks(chart["y"], y, float(figures[run][column]))

    def assert_between_ticks(self, ticks, place, value):
        """Whether a mark lies between the two ticks whose values are about its own."""
        for (start, low), (end, high) in zip(ticks, ticks[1:]):
            if low <= value <= high:
                self.assertGreaterEqual(place, min(start, end) - 1.5)
                self.assertLessEqual(place, max(start, end) + 1.5)
                return
        self.fail(f"{value} is beyond the axis {ticks}")

    def test_marks_are_drawn_in_the_colours_of_their_screens(self):
        for scheme in SCHEMES:
            self.show(WIDTHS[0], scheme)
            shown = self.browser.screenshot({"x": 0, "y": 0, "width": WIDTHS[0], "height": 2000})
            ground = shown.getpixel((2, 2))
            for chart in self.browser.evaluate(CHARTS):
                # A later mark may cover an earlier one.
                colours = {rgb(mark[3]) for mark in chart["marks"]}
                screens = set(self.column(0))
                self.assertEqual(len(screens), len(colours))
                self.assertGreater(min(contrast(colour, ground) for colour in colours), 3)
                last = chart["marks"][-1]
                self.assertEqual(rgb(last[3]), shown.getpixel((round(last[1]), round(last[2]))))
