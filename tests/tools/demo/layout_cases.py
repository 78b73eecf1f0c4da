"""Whether the page can be read: in light and dark, on a desktop and on a phone."""

from colours import contrast, luminance, rgb
from page_case import SCHEMES, WIDTHS, PageCase


def overlap(one, other):
    """Whether two rectangles have more than a line in common."""
    return (min(one["x"] + one["width"], other["x"] + other["width"])
            - max(one["x"], other["x"]) > 1
            and min(one["y"] + one["height"], other["y"] + other["height"])
            - max(one["y"], other["y"]) > 1)


class Layout(PageCase):
    def test_text_is_readable_in_light_and_dark(self):
        for scheme, darkest in zip(SCHEMES, (0.9, 0)):
            self.show(WIDTHS[0], scheme)
            ground = self.browser.screenshot().getpixel((2, 2))
            self.assertGreaterEqual(luminance(ground), darkest)
            self.assertLessEqual(luminance(ground), darkest + 0.1)
            # None of these has a ground of its own.
            for selector in ("p", ".muted", "a", "figcaption", "td", "svg text"):
                property_name = "fill" if "svg" in selector else "color"
                colour = rgb(self.browser.evaluate(
                    f"getComputedStyle(document.querySelector({selector!r})).{property_name}"))
                self.assertGreater(contrast(colour, ground), 4.5, f"{selector}, {scheme}")

    def test_nothing_overlaps_or_is_cut_off(self):
        for width in WIDTHS:
            self.show(width, "light")
            self.assertLessEqual(
                *self.browser.evaluate("""[document.documentElement.scrollWidth,
                                           document.documentElement.clientWidth]"""))
            for selector in ("h1, h2, h3, body p, svg, nav li, .legend li",
                             "details[open] figure, details[open] dl",
                             "details[open] dt, details[open] dd",
                             "svg:first-of-type text", "thead button"):
                boxes = [box for box in self.boxes(selector) if box["width"]]
                for i, box in enumerate(boxes):
                    self.assertFalse(any(overlap(box, other) for other in boxes[i + 1:]),
                                     f"{selector}, width {width}: {box}")
