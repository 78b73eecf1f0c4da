"""A headless Chromium with one page, driven through the pipe of its debugging protocol: JSON
messages, each followed by a zero byte.
"""

import base64
import contextlib
import io
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

from PIL import Image

PROGRAM = "chromium"
TIMEOUT_SECONDS = 60
OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--remote-debugging-pipe",
           # The buses of a desktop, which are missing on a server, are no errors here.
           "--log-level=3"]


def is_installed():
    return shutil.which(PROGRAM) is not None


@contextlib.contextmanager
def started():
    """A browser with a new profile, which is removed with it."""
    with tempfile.TemporaryDirectory(prefix="demo-browser-", ignore_cleanup_errors=True) as folder:
        to_browser, commands = os.pipe()
        answers, from_browser = os.pipe()

        def use_pipes():
            # The browser reads from descriptor 3 and writes to 4. Either may be one of ours.
            reading, writing = os.dup(to_browser), os.dup(from_browser)
            os.dup2(reading, 3)
            os.dup2(writing, 4)

        process = subprocess.Popen(
            [PROGRAM, *OPTIONS, f"--user-data-dir={folder}", "about:blank"],
            stdin=subprocess.DEVNULL, close_fds=False, preexec_fn=use_pipes)
        os.close(to_browser)
        os.close(from_browser)
        try:
            yield Browser(commands, answers)
        finally:
            process.terminate()
            process.wait()
            os.close(commands)
            os.close(answers)


class Browser:
    def __init__(self, commands, answers):
        self._commands = commands
        self._answers = answers
        self._unread = b""
        self._last_id = 0
        self._session = None
        self.events = []
        page = next(target for target in self.call("Target.getTargets")["targetInfos"]
                    if target["type"] == "page")
        self._session = self.call("Target.attachToTarget", targetId=page["targetId"],
                                  flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")
        # They disappear while a screenshot is taken, which would move what it shows.
        self.call("Emulation.setScrollbarsHidden", hidden=True)

    def call(self, method, **parameters):
        """Sends a command and returns its result. Events in between are kept in `events`."""
        self._last_id += 1
        message = {"id": self._last_id, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._receive()
            if answer.get("id") == self._last_id:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self.events.append(answer)

    def _receive(self):
        deadline = time.monotonic() + TIMEOUT_SECONDS
        while b"\0" not in self._unread:
            ready, _, _ = select.select([self._answers], [], [], deadline - time.monotonic())
            data = os.read(self._answers, 1 << 20) if ready else b""
            if not data:
                raise RuntimeError("the browser does not answer")
            self._unread += data
        message, _, self._unread = self._unread.partition(b"\0")
        return json.loads(message)

    def open(self, url):
        self.call("Page.navigate", url=url)
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self.events.append(self._receive())

    def evaluate(self, expression):
        """The value of a script's expression; of a promise, what it resolves to."""
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def show(self, width, height, scheme):
        """Sets the size of the window in pixels, and whether the user prefers "light" or "dark"."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def screenshot(self, box=None):
        """What is drawn within a box of the page, or in the window, as an RGB picture."""
        parameters = {}
        if box:
            parameters = {"clip": {**box, "scale": 1}, "captureBeyondViewport": True}
        data = self.call("Page.captureScreenshot", format="png", **parameters)["data"]
        return Image.open(io.BytesIO(base64.b64decode(data))).convert("RGB")

    def click(self, x, y):
        """At a place in the window."""
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left",
                      clickCount=1)

    def press(self, key, code, text=""):
        self.call("Input.dispatchKeyEvent", type="keyDown", key=key, code=key,
                  windowsVirtualKeyCode=code, text=text)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, code=key,
                  windowsVirtualKeyCode=code)
