#!/usr/bin/python3 -B
"""Looks at the demo's page in a headless browser: what is drawn, and what clicks and keys do.

Needs the Debian packages chromium and python3-pil. Usage: page_in_browser.py RESULTS
"""

import pathlib
import sys
import unittest

SKIP_STATUS = 77
try:
    import browser
    from page_case import HEIGHT, WIDTHS, PageCase
    from chart_cases import Charts
    from layout_cases import Layout
    from picture_cases import Pictures
    from table_cases import Table
except ModuleNotFoundError as missing:
    if missing.name != "PIL":
        raise
    print("Skipped: the Debian package python3-pil is not installed")
    sys.exit(SKIP_STATUS)
if not browser.is_installed():
    print("Skipped: the Debian package chromium is not installed")
    sys.exit(SKIP_STATUS)


def main():
    PageCase.results = pathlib.Path(sys.argv[1]).resolve()
    load = unittest.defaultTestLoader.loadTestsFromTestCase
    suite = unittest.TestSuite(map(load, (Charts, Layout, Pictures, Table)))
    with browser.started() as PageCase.browser:
        PageCase.browser.show(WIDTHS[0], HEIGHT, "light")
        PageCase.browser.open((PageCase.results / "index.html").as_uri())
        result = unittest.TextTestRunner().run(suite)
    return 0 if result.wasSuccessful() and result.testsRun else 1


if __name__ == "__main__":
    sys.exit(main())
