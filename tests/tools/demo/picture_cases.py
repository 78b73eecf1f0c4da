"""The pictures of the page, and what the page asks for."""

import pathlib
import urllib.parse

from PIL import Image, ImageChops, ImageStat

from page_case import PageCase
from run_demo import ARCHITECTURE

LOAD_PICTURES = """Promise.all([...document.images].map(image => {
    image.closest('details').open = true;
    image.loading = 'eager';
    return image.decode();
})).then(() => true)"""


class Pictures(PageCase):
    def test_pictures_are_loaded_in_their_sizes(self):
        self.browser.evaluate(LOAD_PICTURES)
        pictures = self.browser.evaluate("""[...document.images].map(image => [
            image.getAttribute('src'), image.complete, image.naturalWidth, image.naturalHeight
        ])""")
        self.assertEqual(4 * len(self.rows()), len(pictures))
        for name, complete, width, height in pictures:
            with Image.open(self.results / name) as picture:
                self.assertEqual((True, *picture.size), (complete, width, height), name)

    def test_pictures_are_drawn(self):
        for place, kind in enumerate(("source", "decoded", "difference", "heatmap"), 1):
            selector = f"details[open] figure:nth-of-type({place}) img"
            self.browser.evaluate(f"document.querySelector({selector!r}).decode()")
            name = self.browser.evaluate(
                f"document.querySelector({selector!r}).getAttribute('src')")
            box = self.boxes(selector)[0]
            drawn = self.browser.screenshot(box)
            # Means of areas, since the browser scales in its own way.
            areas = (drawn.width // 16, drawn.height // 16)
            with Image.open(self.results / name) as picture:
                expected = picture.convert("RGB").resize(areas, Image.Resampling.BOX)
            drawn = drawn.resize(areas, Image.Resampling.BOX)
            apart = max(ImageStat.Stat(ImageChops.difference(drawn, expected)).mean)
            spread = max(ImageStat.Stat(expected).stddev)
            self.assertLess(apart, 0.15 * spread, kind)

    def test_source_decoded_picture_and_difference_are_side_by_side(self):
        boxes = self.boxes("details[open] img")[:3]
        self.assertEqual(1, len({(box["y"], box["width"]) for box in boxes}))
        self.assertLess(boxes[0]["x"], boxes[1]["x"])
        self.assertLess(boxes[1]["x"], boxes[2]["x"])

    def test_links_open_the_pictures_of_their_runs(self):
        run = self.browser.evaluate("""(() => {
            const details = document.querySelector('details:last-of-type');
            details.open = false;
            return details.id;
        })()""")
        self.browser.evaluate(f"""new Promise(resolve => {{
            window.addEventListener('hashchange', () => resolve(true), {{once: true}});
            document.querySelector('tbody a[href="#{run}"]').click();
        }})""")
        self.assertTrue(self.browser.evaluate(f"document.getElementById({run!r}).open"))
        top = self.boxes(f"#{run}")[0]["y"] - self.browser.evaluate("scrollY")
        self.assertAlmostEqual(0, top, delta=2)

    def test_nothing_is_asked_from_elsewhere_and_nothing_fails(self):
        self.browser.evaluate(LOAD_PICTURES)
        for event in self.browser.events:
            if event["method"] == "Network.requestWillBeSent":
                url = urllib.parse.urlsplit(event["params"]["request"]["url"])
                path = pathlib.Path(urllib.parse.unquote(url.path))
                self.assertEqual(("file", self.results), (url.scheme, path.parent))
            self.assertNotIn(event["method"], ("Runtime.exceptionThrown", "Log.entryAdded"), event)

    def test_values_are_no_markup(self):
        text = self.browser.evaluate("document.querySelector('header').textContent")
        self.assertIn(ARCHITECTURE, text)
