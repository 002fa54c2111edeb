# SPDX-License-Identifier: Apache-2.0
"""Chromium without a window, spoken to by the DevTools protocol over two pipes (its file descriptors
3 and 4; a message ends with a zero byte), so nothing but Python and the browser is needed."""
import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

PROGRAMS = ("chromium-headless-shell", "chromium", "chromium-browser", "google-chrome")
# As root, as in a container, there is no sandbox; shared memory may be small there.
OPTIONS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
           "--disable-background-networking", "--hide-scrollbars", "--remote-debugging-pipe")


def program():
    """The browser's path; None where there is none."""
    return next(filter(None, map(shutil.which, PROGRAMS)), None)


class Browser:
    """One page at a time. `requests` has the address of everything that the page fetched."""

    def __init__(self, patience=60):
        self._patience = patience
        self._folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self._last = 0
        self._buffer = b""
        self.requests = []
        self.said = []  # what scripts and refused ones wrote to the console
        self._loaded = False
        self._start()
        target = self.call("Target.createTarget", session=None, url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", session=None, targetId=target,
                                  flatten=True)["sessionId"]
        for domain in ("Page", "Network", "Runtime", "Log"):
            self.call(domain + ".enable")

    _session = None

    def _start(self):
        read_ours, write_theirs = os.pipe()
        read_theirs, write_ours = os.pipe()

        def wire():
            # Moved out of the way first: one of them may be 3 or 4 itself.
            ends = [os.dup2(end, 100 + i) for i, end in enumerate((read_theirs, write_theirs))]
            for number, end in zip((3, 4), ends):
                os.dup2(end, number)

        self._process = subprocess.Popen(
            [program(), *OPTIONS, "--user-data-dir=" + self._folder.name],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            close_fds=False, preexec_fn=wire,
            env={**os.environ, "HOME": self._folder.name})
        os.close(read_theirs)
        os.close(write_theirs)
        self._in, self._out = read_ours, write_ours

    def _message(self):
        deadline = time.monotonic() + self._patience
        while b"\0" not in self._buffer:
            if not select.select([self._in], [], [], max(0, deadline - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            piece = os.read(self._in, 1 << 20)
            if not piece:
                raise EOFError("the browser has ended")
            self._buffer += piece
        message, _, self._buffer = self._buffer.partition(b"\0")
        return json.loads(message)

    def _note(self, event):
        method, values = event.get("method"), event.get("params", {})
        if method == "Network.requestWillBeSent":
            self.requests.append(values["request"]["url"])
        elif method == "Runtime.consoleAPICalled":
            self.said.append(json.dumps(values["args"]))
        elif method == "Log.entryAdded":
            self.said.append(values["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.said.append(values["message"])
        elif method == "Page.loadEventFired":
            self._loaded = True

    def call(self, method, session="own", **parameters):
        self._last += 1
        request = {"id": self._last, "method": method, "params": parameters}
        if session is not None:
            request["sessionId"] = self._session
        os.write(self._out, json.dumps(request).encode() + b"\0")
        while True:
            message = self._message()
            if message.get("id") == self._last:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            self._note(message)

    def show(self, width=1280, height=900, dark=False, media="screen"):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", media=media, features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def open(self, path):
        self.requests, self.said, self._loaded = [], [], False
        self.call("Page.navigate", url=path.as_uri())
        while not self._loaded:
            self._note(self._message())

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"].get("exception", {}).get("description"))
        return result["result"].get("value")

    def press(self, key, code, text=""):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key,
                      windowsVirtualKeyCode=code, text=text if kind == "keyDown" else "")

    def pdf(self):
        self.call("Emulation.setEmulatedMedia", media="")
        return base64.b64decode(self.call("Page.printToPDF")["data"])

    def picture(self):
        return base64.b64decode(
            self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"])

    def close(self):
        try:
            self.call("Browser.close", session=None)
            self._process.wait(10)
        except (OSError, EOFError, TimeoutError, subprocess.TimeoutExpired):
            self._process.kill()
            self._process.wait()
        os.close(self._in)
        os.close(self._out)
        self._folder.cleanup()
