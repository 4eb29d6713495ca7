#!/usr/bin/python3
"""Drives Chromium over the reports in a folder; see check_report."""

import base64
import json
import pathlib
import subprocess
import sys
import tempfile
import time
import urllib.request

ENTER, ESCAPE, RIGHT, DOWN = "\ue007", "\ue00c", "\ue014", "\ue015"


class Browser:
    def __init__(self, folder, flags=()):
        self.driver = subprocess.Popen(
            ["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        for line in self.driver.stdout:
            if "started successfully on port" in line:
                port = line.split("port")[1].strip(" .\n")
                break
        self.url = f"http://127.0.0.1:{port}/session"
        options = {"binary": "/usr/bin/chromium", "args": [
            "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--hide-scrollbars", "--user-data-dir=" + folder, *flags]}
        answer = self.call("", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "goog:chromeOptions": options,
            "goog:loggingPrefs": {"browser": "ALL"}}}})
        self.url += "/" + answer["sessionId"]

    def call(self, path, body=None, method=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.url + path, data, {"Content-Type": "application/json"},
                                         method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def open(self, page):
        start = time.monotonic()
        self.call("/url", {"url": page.resolve().as_uri()})
        return time.monotonic() - start

    def run(self, script, *arguments):
        return self.call("/execute/sync", {"script": "return " + script, "args": list(arguments)})

    def find(self, selector):
        return list(self.call("/element", {"using": "css selector", "value": selector}).values())[0]

    def point(self, selector):
        element = {"element-6066-11e4-a52e-4f735466cecf": self.find(selector)}
        self.call("/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": [
            {"type": "pointerMove", "origin": element, "x": 0, "y": 0, "duration": 0}]}]})

    def keys(self, *keys):
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self.call("/actions", {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def picture(self, name, width, height):
        self.call("/window/rect", {"width": width, "height": height})
        time.sleep(0.3)
        name.write_bytes(base64.b64decode(self.call("/screenshot")))

    def close(self):
        self.call("", method="DELETE")
        self.driver.terminate()
        self.driver.wait()


def expect(what, got, wanted):
    if got != wanted:
        sys.exit(f"{what}: {got!r}, not {wanted!r}")


def check_sentences(browser, folder):
    browser.open(folder / "lighthouse.html")
    expect("sentences", browser.run("document.querySelectorAll('li').length"), 32)
    expect("brackets", browser.run("document.querySelector('#p1s1 p.s').textContent.trim()"),
           "A night in the ⟨emoldem⟩ lighthouse")
    marked = "[...document.querySelectorAll('w.on')].map(w => w.textContent).join(' ')"
    browser.point("#p1s0 p.s w:nth-of-type(2)")
    expect("partners on pointing", browser.run(marked), "night Nacht")
    browser.run("document.getElementById('p1s0').focus()")
    browser.keys(RIGHT, RIGHT, RIGHT)
    expect("partners by keyboard", browser.run(marked), "in im")
    browser.keys(DOWN)
    expect("from the result", browser.run(marked).split()[-1], "im")
    browser.keys(ENTER)
    expect("matrix", browser.run("[document.querySelectorAll('.m td').length, "
                                 "document.querySelectorAll('.m td.x').length > 0]"), [5 * 4, True])
    browser.picture(folder / "wide.png", 1280, 900)
    browser.keys(ENTER)
    expect("no matrix", browser.run("document.querySelectorAll('.m').length"), 0)
    visible = "[...document.querySelectorAll('li')].filter(li => !li.hidden).length"
    noted = browser.run("document.querySelectorAll('li.n').length")
    browser.run("document.getElementById('only').click()")
    expect("with notes", browser.run(visible), noted)
    browser.run("document.getElementById('only').click()")
    browser.run("(find.value = 'PHAROLOGY', find.dispatchEvent(new Event('input')))")
    expect("found", browser.run(visible), 1)
    browser.run("(find.value = '', find.dispatchEvent(new Event('input')))")
    browser.run("document.querySelector('details.v summary').click()")
    time.sleep(1)
    browser.picture(folder / "side_by_side.png", 1280, 900)
    browser.run("document.querySelector('details.v summary').click()")
    browser.picture(folder / "narrow.png", 500, 900)
    expect("nothing wider than the window",
           browser.run("document.documentElement.scrollWidth <= innerWidth"), True)


def check_tokens(browser, folder):
    browser.open(folder / "house.html")
    browser.run("document.querySelector('#p1s0 button.x').click()")
    linked = "[...document.querySelectorAll('.m td.x')].map(cell => cell.title)"
    expect("matrix without blanks", "家 – house." in browser.run(linked), True)
    expect("rows", browser.run("document.querySelectorAll('.m tbody tr').length > 3"), True)
    expect("notes", browser.run("[...document.querySelectorAll('li em')].map(em => em.dataset.b)"),
           ["untranslated"])
    browser.picture(folder / "tokens.png", 1280, 500)


def check_hostile(browser, folder):
    browser.open(folder / "hostile.html")
    title = browser.run("document.title")
    browser.run("document.querySelector('details.v summary').click()")
    browser.point("#p1s1 p.t w:nth-of-type(1)")
    time.sleep(1)
    expect("title", browser.run("document.title"), title)
    expect("scripts", browser.run("document.querySelectorAll('script').length"), 1)
    expect("handlers", browser.run("document.querySelectorAll('[onerror], [onmouseover]').length"), 0)
    fetched = browser.run("performance.getEntriesByType('resource').map(r => r.name)"
                          ".filter(n => !n.startsWith('about:'))")
    expect("fetched", fetched, [])


def check_long(browser, folder):
    seconds = browser.open(folder / "long.html")
    expect("sentences", browser.run("document.querySelectorAll('li').length"), 5000)
    expect("opens within five seconds", seconds < 5, True)
    print(f"5,000 sentences open in {seconds:.1f} s")


def main():
    folder = pathlib.Path(sys.argv[1])
    for flags, checks in (((), (check_sentences, check_tokens, check_hostile, check_long)),
                          (("--force-dark-mode",), ())):
        with tempfile.TemporaryDirectory() as profile:
            browser = Browser(profile, flags)
            for check in checks:
                check(browser, folder)
            if not checks:
                browser.open(folder / "lighthouse.html")
                browser.picture(folder / "dark.png", 1280, 900)
            browser.close()


main()
