# SPDX-License-Identifier: Apache-2.0
"""A headless Chromium that pages are opened, used and measured in. It is spoken to through pipes and needs no port."""

import base64
import json
import os
import select
import subprocess
import tempfile
import time

PATIENCE = 300  # seconds, on a busy machine
WIDE, NARROW = (1280, 900), (390, 844)


class Browser:
    def __init__(self):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        command = ["chromium", "--headless", "--disable-gpu", "--hide-scrollbars", "--no-first-run",
                   "--remote-debugging-pipe", f"--user-data-dir={self.profile.name}"]
        if os.geteuid() == 0:
            command.append("--no-sandbox")
        theirs_in, ours_out = os.pipe()
        self.answers, theirs_out = os.pipe()

        def place_pipes():  # where Chromium looks for them
            os.dup2(theirs_in, 30)
            os.dup2(theirs_out, 31)
            os.dup2(30, 3)
            os.dup2(31, 4)

        self.process = subprocess.Popen(command, preexec_fn=place_pipes, close_fds=False, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(theirs_in)
        os.close(theirs_out)
        self.requests = os.fdopen(ours_out, "wb")
        self.read, self.count, self.events = b"", 0, []
        self.ask("Target.getTargets")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.ask("Browser.close")
            self.process.wait(60)
        except (OSError, EOFError, TimeoutError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        self.requests.close()
        os.close(self.answers)
        self.profile.cleanup()

    def message(self, deadline):
        while b"\0" not in self.read:
            if not select.select([self.answers], [], [], max(0, deadline - time.monotonic()))[0]:
                raise TimeoutError("Chromium does not answer")
            part = os.read(self.answers, 1 << 20)
            if not part:
                raise EOFError("Chromium has ended")
            self.read += part
        text, self.read = self.read.split(b"\0", 1)
        return json.loads(text)

    def ask(self, method, session=None, **parameters):
        self.count += 1
        request = {"id": self.count, "method": method, "params": parameters}
        if session:
            request["sessionId"] = session
        self.requests.write(json.dumps(request).encode() + b"\0")
        self.requests.flush()
        deadline = time.monotonic() + PATIENCE
        while (answer := self.message(deadline)).get("id") != self.count:
            self.events.append(answer)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']['message']}")
        return answer["result"]

    def wait_for(self, session, method):
        deadline = time.monotonic() + PATIENCE
        while not (found := self.take(session, method)):
            self.events.append(self.message(deadline))
        return found[0]

    def take(self, session, *methods):
        """What has happened to a page of that kind, once."""
        found = [event for event in self.events if event.get("sessionId") == session and event["method"] in methods]
        self.events = [event for event in self.events if event not in found]
        return [event["params"] for event in found]


class Tab:
    """A page as a reader with that screen sees it. `opened` says how long it took, in milliseconds."""

    def __init__(self, browser, address, size=WIDE, dark=False, scripts=True):
        self.browser = browser
        self.target = browser.ask("Target.createTarget", url="about:blank")["targetId"]
        self.session = browser.ask("Target.attachToTarget", targetId=self.target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.ask(domain + ".enable")
        self.ask("Performance.enable", timeDomain="threadTicks")
        self.ask("Emulation.setDeviceMetricsOverride", width=size[0], height=size[1], deviceScaleFactor=1,
                 mobile=size[0] < 600)
        scheme = {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}
        self.ask("Emulation.setEmulatedMedia", features=[scheme])
        if not scripts:
            self.ask("Emulation.setScriptExecutionDisabled", value=True)
        before = self.measures()
        self.ask("Page.navigate", url=address)
        browser.wait_for(self.session, "Page.loadEventFired")
        if scripts:
            self.settle()
            self.opened = self.times(before)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.browser.ask("Target.closeTarget", targetId=self.target)

    def ask(self, method, **parameters):
        return self.browser.ask(method, self.session, **parameters)

    def run(self, script):
        answer = self.ask("Runtime.evaluate", expression=script, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(json.dumps(answer["exceptionDetails"])[:1000])
        return answer["result"].get("value")

    def settle(self):
        """What was asked for before has been drawn."""
        self.run("new Promise(done => requestAnimationFrame(() => setTimeout(done)))")

    def measures(self):
        return {entry["name"]: entry["value"] for entry in self.ask("Performance.getMetrics")["metrics"]}

    def times(self, before):
        parts = {"work": "ThreadTime", "layout": "LayoutDuration", "styles": "RecalcStyleDuration",
                 "script": "ScriptDuration"}
        after = self.measures()
        times = {part: 1000 * (after[name] - before.get(name, 0)) for part, name in parts.items()}
        times |= self.run("""({loaded: performance.getEntriesByType('navigation')[0].loadEventEnd,
            interactive: performance.getEntriesByType('navigation')[0].domContentLoadedEventEnd,
            painted: (performance.getEntriesByType('paint')[0] || {startTime: NaN}).startTime})""")
        return times

    def work_of(self, script):
        """Milliseconds of processor time that the page's thread needs for it, and what it answers."""
        before = self.measures()["ThreadTime"]
        answer = self.run(script)
        return 1000 * (self.measures()["ThreadTime"] - before), answer

    def press(self, key):
        text = {"Enter": "\r", " ": " "}.get(key)
        code = {"Enter": 13, " ": 32, "Tab": 9}[key]
        self.ask("Input.dispatchKeyEvent", type="keyDown", key=key, windowsVirtualKeyCode=code,
                 **({"text": text} if text else {}))
        self.ask("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)

    def faults(self):
        """Errors of scripts, and what the page's own policy or the browser complains of."""
        thrown = self.browser.take(self.session, "Runtime.exceptionThrown")
        logged = [event["entry"] for event in self.browser.take(self.session, "Log.entryAdded")]
        details = [event["exceptionDetails"] for event in thrown]
        return ([detail["text"] + str(detail.get("exception")) for detail in details]
                + [entry["text"] for entry in logged if entry["level"] in ("error", "warning")])

    def picture(self, file):
        file.write_bytes(base64.b64decode(self.ask("Page.captureScreenshot")["data"]))

    def paper(self, file):
        file.write_bytes(base64.b64decode(self.ask("Page.printToPDF", paperWidth=8.27, paperHeight=11.69)["data"]))
