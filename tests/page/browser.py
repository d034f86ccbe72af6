"""Headless Chromium, driven over its debugging pipe by what Python itself has."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
import time

OPTIONS = """--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync
    --disable-background-networking --disable-component-update --disable-dev-shm-usage
    --hide-scrollbars --remote-debugging-pipe""".split()


class Browser:
    """One window. What goes wrong in its page, and what it loads, is kept in `errors` and `loaded`."""

    def __init__(self, width=1280, height=800):
        self._profile = tempfile.mkdtemp(prefix="page-")
        to_read, self._out = os.pipe()
        self._in, to_write = os.pipe()
        command = ["sh", "-c", f'exec "${{CHROMIUM:-chromium}}" "$@" 3<&{to_read} 4>&{to_write}', "sh", *OPTIONS,
                   f"--user-data-dir={self._profile}", "about:blank"]
        self._process = subprocess.Popen(command, pass_fds=(to_read, to_write),
                                         stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        os.close(to_read)
        os.close(to_write)
        self._rest = b""
        self._count = 0
        self._session = None
        self.errors, self.loaded, self._events = [], [], []
        targets = self.call("Target.getTargets")["targetInfos"]
        target = next(target["targetId"] for target in targets if target["type"] == "page")
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in "Page", "Runtime", "Log", "Network":
            self.call(domain + ".enable")
        self.resize(width, height)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(20)
        os.close(self._out)
        os.close(self._in)
        shutil.rmtree(self._profile, ignore_errors=True)

    def _receive(self):
        while b"\0" not in self._rest:
            data = os.read(self._in, 1 << 20)
            if not data:
                raise RuntimeError("the browser has ended")
            self._rest += data
        message, self._rest = self._rest.split(b"\0", 1)
        return json.loads(message)

    def _take(self, message):
        method, params = message.get("method"), message.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.errors.append(json.dumps(params["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled" and params["type"] in ("error", "warning", "assert"):
            self.errors.append(json.dumps(params["args"]))
        elif method == "Log.entryAdded" and params["entry"]["level"] in ("error", "warning"):
            self.errors.append(params["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.errors.append("a dialog: " + params["message"])
        elif method == "Network.requestWillBeSent":
            self.loaded.append(params["request"]["url"])
        elif method == "Page.loadEventFired":
            self._events.append(method)

    def call(self, method, **params):
        self._count += 1
        message = {"id": self._count, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._out, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._receive()
            if answer.get("id") == self._count:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self._take(answer)

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)

    def media(self, kind="", scheme="light"):
        self.call("Emulation.setEmulatedMedia", media=kind,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, path):
        """Returns the seconds until the page was read and drawn."""
        self._load("about:blank")
        self.errors.clear()
        self.loaded.clear()
        start = time.monotonic()
        self._load("file://" + path)
        self.frame()
        return time.monotonic() - start

    def _load(self, url):
        self._events.clear()
        self.call("Page.navigate", url=url)
        while "Page.loadEventFired" not in self._events:
            self._take(self._receive())

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(json.dumps(result["exceptionDetails"]))
        return result["result"].get("value")

    def press(self, key, shift=False):
        """A named key as ArrowDown, or a character."""
        params = {"key": key, "modifiers": 8 if shift else 0}
        if len(key) == 1 or key == "Enter":
            params["text"] = "\r" if key == "Enter" else key
        self.call("Input.dispatchKeyEvent", type="keyDown", **params)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key)
        self.frame()

    def type(self, text):
        self.call("Input.insertText", text=text)
        self.frame()

    def click(self, selector):
        """With the mouse, at the middle of the element."""
        found = f"document.querySelector({json.dumps(selector)})"
        self.evaluate(found + ".scrollIntoView({block: 'nearest'})")
        self.frame()
        box = self.evaluate("((box) => [box.x + box.width / 2, box.y + box.height / 2])"
                            f"({found}.getBoundingClientRect())")
        for action in "mousePressed", "mouseReleased":
            self.call("Input.dispatchMouseEvent", type=action, x=box[0], y=box[1], button="left",
                      clickCount=1)
        self.frame()

    def frame(self):
        self.evaluate("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def picture(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

    def print(self, path):
        data = self.call("Page.printToPDF", preferCSSPageSize=True, printBackground=False)["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))
