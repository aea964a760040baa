"""A headless Chromium, driven over WebDriver's HTTP with nothing but Python's own library."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
import urllib.error
import urllib.request

# Nothing of the machine's is used, and nothing is asked of a network.
ARGUMENTS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--hide-scrollbars", "--force-device-scale-factor=1"]
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
KEYS = {"ArrowLeft": "\ue012", "ArrowUp": "\ue013", "ArrowRight": "\ue014", "ArrowDown": "\ue015",
        "Enter": "\ue007", "Escape": "\ue00c", "Home": "\ue011", "Shift": "\ue008",
        "Control": "\ue009"}


class Browser:
    def __init__(self, width=1280, height=900):
        self.profile = tempfile.mkdtemp(prefix="page-test-")
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
        try:
            for line in self.driver.stdout:
                if "started successfully on port" in line:
                    self.root = "http://127.0.0.1:" + line.rsplit(" ", 1)[1].strip(". \n")
                    break
            self.session = ""
            made = self.ask("POST", "/session", {"capabilities": {"alwaysMatch": {
                "browserName": "chrome", "goog:loggingPrefs": {"browser": "ALL"},
                "goog:chromeOptions": {"binary": shutil.which("chromium"), "args": [
                    *ARGUMENTS, f"--user-data-dir={self.profile}",
                    f"--window-size={width},{height}"]}}}})
            self.session = "/session/" + made["sessionId"]
        except BaseException:
            self.close()
            raise

    def close(self):
        try:
            if self.session:
                self.ask("DELETE", "")
        finally:
            self.driver.terminate()
            self.driver.wait()
            self.driver.stdout.close()
            shutil.rmtree(self.profile, ignore_errors=True)

    def ask(self, method, path, body=None):
        request = urllib.request.Request(
            self.root + self.session + path, method=method,
            data=None if body is None else json.dumps(body).encode(),
            headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(json.load(error)["value"]["message"]) from None

    def open(self, file):
        self.ask("POST", "/url", {"url": file.resolve().as_uri()})

    def run(self, script, *arguments):
        """What `script`, the body of a function, returns."""
        return self.ask("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def frame(self):
        """Waits until what was asked for is drawn."""
        self.ask("POST", "/execute/async", {"script": """
            const done = arguments[0];
            requestAnimationFrame(() => requestAnimationFrame(() => done()));""", "args": []})

    def devtools(self, command, **parameters):
        return self.ask("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def logged(self):
        """What the browser complained of since the last time."""
        return [entry["message"] for entry in self.ask("POST", "/se/log", {"type": "browser"})]

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).innerText", selector)

    def count(self, selector):
        return self.run("return document.querySelectorAll(arguments[0]).length", selector)

    def click(self, x, y, modifier=None):
        """A click at a place of the window."""
        self.pointer([{"type": "pointerMove", "x": round(x), "y": round(y)},
                      {"type": "pointerDown", "button": 0}, {"type": "pointerUp", "button": 0}], modifier)

    def drag(self, start, end, modifier=None):
        self.pointer([{"type": "pointerMove", "x": round(start[0]), "y": round(start[1])},
                      {"type": "pointerDown", "button": 0},
                      {"type": "pointerMove", "x": round((start[0] + end[0]) / 2), "y": round(end[1])},
                      {"type": "pointerMove", "x": round(end[0]), "y": round(end[1])},
                      {"type": "pointerUp", "button": 0}], modifier)

    def pointer(self, actions, modifier=None):
        held = [] if modifier is None else [{"type": "key", "id": "keys", "actions": [
            {"type": "keyDown", "value": KEYS[modifier]}]}]
        if held:
            self.ask("POST", "/actions", {"actions": held})
        self.ask("POST", "/actions", {"actions": [{
            "type": "pointer", "id": "mouse", "parameters": {"pointerType": "mouse"}, "actions": actions}]})
        self.ask("DELETE", "/actions")
        self.frame()

    def wheel(self, x, y, delta, modifier="Control"):
        self.ask("POST", "/actions", {"actions": [{"type": "key", "id": "keys", "actions": [
            {"type": "keyDown", "value": KEYS[modifier]}]}]})
        self.ask("POST", "/actions", {"actions": [{"type": "wheel", "id": "wheel", "actions": [
            {"type": "scroll", "x": round(x), "y": round(y), "deltaX": 0, "deltaY": delta,
             "duration": 0, "origin": "viewport"}]}]})
        self.ask("DELETE", "/actions")
        self.frame()

    def press(self, *keys):
        """Presses keys in the chart."""
        self.run("document.getElementById('chart').focus({preventScroll: true})")
        for key in keys:
            value = KEYS.get(key, key)
            self.ask("POST", "/actions", {"actions": [{"type": "key", "id": "keys", "actions": [
                {"type": "keyDown", "value": value}, {"type": "keyUp", "value": value}]}]})
        self.frame()

    def media(self, scheme="light", kind=""):
        self.devtools("Emulation.setEmulatedMedia", media=kind,
                      features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.frame()

    def screenshot(self, file):
        file.write_bytes(base64.b64decode(self.ask("GET", "/screenshot")))
