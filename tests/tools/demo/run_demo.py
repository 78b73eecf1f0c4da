"""Runs the demo on some screens for the tests of its page.

Usage: run_demo.py RESULTS SCREEN... -- JAVA OPTION... nn.qv.demo.Demo RCTOOL SCREENS
"""

import pathlib
import shutil
import subprocess
import sys

# Must arrive as text in the page: see page_in_browser.py.
ARCHITECTURE = "amd64 <b class='markup'>&amp;</b> \"${runs}\""


def run(command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def require(condition, text):
    if not condition:
        sys.exit(text)


def main():
    separator = sys.argv.index("--")
    results = pathlib.Path(sys.argv[1])
    screens = sys.argv[2:separator]
    java, *rest = sys.argv[separator + 1:]
    demo = [java, f"-Dos.arch={ARCHITECTURE}", *rest, str(results)]
    page = results / "index.html"

    shutil.rmtree(results, ignore_errors=True)
    unknown = run([*demo, "no-such-screen"])
    require(unknown.returncode == 1 and "No screen is called no-such-screen" in unknown.stdout,
            f"status {unknown.returncode} for an unknown screen:\n{unknown.stdout}")
    require(not page.exists(), "an unknown screen leaves a page")

    shown = run([*demo, *screens])
    print(shown.stdout)
    require(shown.returncode == 0, f"status {shown.returncode}")
    require(shown.stdout.splitlines()[-1] == str(page.absolute()),
            "the last line is not the path of the page")
    require(page.exists(), "there is no page")


if __name__ == "__main__":
    main()
