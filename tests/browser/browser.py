"""A headless browser that a test controls through two pipes, without port and network."""

import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

PROGRAMS = ("chromium", "chromium-browser", "google-chrome")
PAGE_CHANGED = "Inspected target navigated or closed"  # the browser's text for a call that is lost


class PageChanged(RuntimeError):
    """The page was replaced by another one during a call."""


class Browser:
    """A running browser, for a with block. At the end of the block it ends, its files are removed."""

    def __init__(self, patience=120):
        self.patience = patience  # seconds to wait for one message of the browser
        self.last_id = 0
        self.buffer = b""
        self.events = []

    def __enter__(self):
        program = next((found for found in map(shutil.which, PROGRAMS) if found), None)
        if not program:
            raise RuntimeError("no browser is installed: " + ", ".join(PROGRAMS))
        self.folder = tempfile.mkdtemp(prefix="dm_browser_")
        to_browser, self.to_browser = os.pipe()
        self.from_browser, from_browser = os.pipe()

        def pipes():  # the browser reads commands from descriptor 3 and writes to descriptor 4
            reading, writing = os.dup(to_browser), os.dup(from_browser)
            os.dup2(reading, 3)
            os.dup2(writing, 4)

        self.process = subprocess.Popen(
            [program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-default-apps", "--disable-extensions",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--proxy-server=127.0.0.1:9",
             "--user-data-dir=" + self.folder, "--remote-debugging-pipe", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=pipes, close_fds=False, start_new_session=True)
        os.close(to_browser)
        os.close(from_browser)
        target = self.call("Target.createTarget", {"url": "about:blank"}, None)["targetId"]
        self.session = self.call("Target.attachToTarget",
                                 {"targetId": target, "flatten": True}, None)["sessionId"]
        self.call("Page.enable")
        self.call("Network.enable")
        return self

    def __exit__(self, *_):
        os.close(self.to_browser)  # the browser ends when this pipe is closed
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.from_browser)
        shutil.rmtree(self.folder, ignore_errors=True)

    def _message(self):
        deadline = time.monotonic() + self.patience
        while b"\0" not in self.buffer:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.from_browser], [], [], left)[0]:
                raise TimeoutError("the browser sent no message for %d s" % self.patience)
            data = os.read(self.from_browser, 1 << 20)
            if not data:
                raise RuntimeError("the browser has ended")
            self.buffer += data
        message, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, parameters=None, session=""):
        """Calls a method of the browser's debugging protocol and returns its result.

        session None calls the browser itself, any other value the page. Raises RuntimeError if the
        browser reports an error, PageChanged if the page was replaced during the call.
        """
        self.last_id += 1
        message = {"id": self.last_id, "method": method, "params": parameters or {}}
        if session is not None:
            message["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._message()
            if answer.get("id") == self.last_id:
                if answer.get("error", {}).get("message") == PAGE_CHANGED:
                    raise PageChanged(method)
                if "error" in answer:
                    raise RuntimeError(method + ": " + str(answer["error"]))
                return answer["result"]
            self.events.append(answer)

    def show(self, path, width, height, scheme):
        """Loads a local file and waits until the page is complete.

        width and height are in CSS pixels; scheme is "light" or "dark".
        """
        self.call("Emulation.setDeviceMetricsOverride",
                  {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.call("Emulation.setEmulatedMedia",
                  {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.events = []
        self.call("Page.navigate", {"url": "file://" + os.path.abspath(path)})
        self._await_load(self.events)

    def _await_load(self, seen):
        """Waits until one of the events is the end of loading: those seen, then those that come."""
        while not any(event.get("method") == "Page.loadEventFired" for event in seen):
            seen = [self._message()]
            self.events += seen

    def requests(self):
        """Returns the addresses that the page has requested since the last show."""
        return [event["params"]["request"]["url"] for event in self.events
                if event.get("method") == "Network.requestWillBeSent"]

    def evaluate(self, expression):
        """Returns the value of a JavaScript expression in the page, once the page is complete.

        A page that reloads itself has no body for a moment. If it reloads itself during the call, the
        expression is for the page that comes.
        """
        promise = """new Promise(done => document.readyState === "complete"
                ? done() : window.addEventListener("load", done)).then(() => (%s))""" % expression
        answer = None
        while answer is None:
            try:
                answer = self.call("Runtime.evaluate", {"expression": promise, "returnByValue": True,
                                                        "awaitPromise": True})
            except PageChanged:
                pass
        if "exceptionDetails" in answer:
            raise RuntimeError(str(answer["exceptionDetails"]))
        return answer["result"].get("value")

    def picture(self, path, whole=False):
        """Saves a PNG picture of the window, or of the whole page."""
        shot = self.call("Page.captureScreenshot",
                         {"format": "png", "captureBeyondViewport": whole})
        with open(path, "wb") as file:
            file.write(base64.b64decode(shot["data"]))
