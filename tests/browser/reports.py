#!/usr/bin/env python3
"""Opens reports of the program in a headless browser.

usage: reports.py VESK

A report has to show without a message on the console, ask the network for nothing, and hold the
figures that the program prints. Ends with 77 where there is no browser.
"""

import html
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BROWSERS = ("chromium", "chromium-browser", "google-chrome")
CONSOLE = re.compile(r":CONSOLE[:(]")


class Opened:
    """A page as the browser has it: its elements, what it complained of, what it asked for."""

    def __init__(self, browser, page, folder):
        log = folder / "net.json"
        done = subprocess.run(
            [browser, "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--disable-default-apps", "--disable-extensions",
             "--host-resolver-rules=MAP * ~NOTFOUND",
             f"--user-data-dir={folder / 'profile'}", f"--log-net-log={log}",
             "--enable-logging=stderr", "--virtual-time-budget=3000", "--dump-dom",
             page.as_uri()],
            text=True, capture_output=True, timeout=120)
        if done.returncode != 0:
            sys.exit(f"{browser} ended with {done.returncode}\n{done.stderr}")
        self.dom = done.stdout
        self.messages = [line for line in done.stderr.splitlines() if CONSOLE.search(line)]
        self.requests = requests_in(log.read_text(encoding="utf-8", errors="replace"))

    def cell(self, row, column):
        """The cell of a table by its row's name and its column, from 0."""
        found = re.search(rf'<tr><th scope="row"[^>]*>{re.escape(row)}</th>(.*?)</tr>', self.dom)
        if not found:
            sys.exit(f"no row {row} in the page")
        cells = re.findall(r"<td[^>]*>(.*?)</td>", found.group(1))
        return html.unescape(cells[column])


def requests_in(log):
    """What the page asked the network for; what the browser does of itself has no origin."""
    asked = re.findall(r'"initiator":"([^"]*)"[^\n]*?"url":"([^"]*)"', log)
    return sorted({url for origin, url in asked if origin != "not an origin"
                   and url.startswith(("http:", "https:", "ws:", "wss:"))})


def expect(condition, text):
    if not condition:
        sys.exit(f"failed: {text}")
    print(f"ok: {text}")


def evaluated(vesk, browser, folder):
    page = folder / "evaluation.html"
    result = json.loads(vesk("evaluate", "traces.jsonl", "--examples", "2,3", "--json",
                             "--report", page.name))
    opened = Opened(browser, page, folder)
    expect(not opened.messages, f"nothing on the console {opened.messages}")
    expect(not opened.requests, f"nothing asked of the network {opened.requests}")
    for row, key in (("arg-max", "argMax"), ("correct", "correct"),
                     ("unknown accepted", "unknownAccepted")):
        share = 100 * result["models"][key]["share"]
        expect(opened.cell(row, 0).startswith(f"{share:.2f} %"), f"{row} is {share:.2f} %")
    titles = re.findall(r"<svg [^>]*><title>([^<]*)</title>", opened.dom)
    expect(sum(title.startswith("Stroke of ") for title in titles) >= 3, "strokes are there")
    expect(any(title.startswith("Confusion matrix") for title in titles), "so is the matrix")


def inspected(vesk, browser, folder):
    vesk("train", "traces.jsonl", "-o", "gestures.model")
    summary = json.loads(vesk("inspect", "gestures.model", "--json", "--report", "model.html",
                              "--traces", "traces.jsonl"))
    opened = Opened(browser, folder / "model.html", folder)
    expect(not opened.messages, f"nothing on the console {opened.messages}")
    expect(not opened.requests, f"nothing asked of the network {opened.requests}")
    symbols = str(len(summary["codebook"]))
    expect(opened.cell("symbols", 0) == symbols, f"symbols are {symbols}")


def examined(vesk, browser, folder):
    text = (folder / "traces.jsonl").read_text(encoding="utf-8")
    (folder / "twice.jsonl").write_text(text + text.splitlines(keepends=True)[0])
    found = vesk("doctor", "twice.jsonl", "--no-cross-validation", "--report", "doctor.html")
    opened = Opened(browser, folder / "doctor.html", folder)
    expect(not opened.messages, f"nothing on the console {opened.messages}")
    expect(not opened.requests, f"nothing asked of the network {opened.requests}")
    warning, advice = found.splitlines()[:2]
    row = opened.cell(html.escape(warning.removeprefix("warning: "), quote=False), 0)
    expect(row == advice.strip(), "the finding stands beside what to do about it")


def noticed(browser, folder):
    """That a bad page would not pass."""
    page = folder / "bad.html"
    text = (folder / "model.html").read_text(encoding="utf-8")
    bad = text.replace("<h1>", '<img src="https://network.invalid/x.png"/><h1>', 1)
    page.write_text(bad, encoding="utf-8")
    opened = Opened(browser, page, folder)
    expect(opened.messages, "the page's policy is in force, and a breach of it is noticed")
    expect(not opened.requests, "nor does it get to the network")
    free = re.sub(r"<meta http-equiv[^>]*/>", "", bad)
    page.write_text(free, encoding="utf-8")
    expect(Opened(browser, page, folder).requests, "without the policy the request is noticed")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    browser = next(filter(None, map(shutil.which, BROWSERS)), None)
    if browser is None:
        print(f"skipped: none of {', '.join(BROWSERS)} is installed (scripts/setup --test does it)")
        sys.exit(77)
    program = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)

        def vesk(*arguments):
            done = subprocess.run([program, *arguments], cwd=folder, text=True,
                                  capture_output=True)
            if done.returncode != 0:
                sys.exit(f"vesk {' '.join(arguments)}: {done.stderr}")
            return done.stdout

        vesk("generate", "-o", "traces.jsonl", "--users", "3", "--repetitions", "3",
             "--gesture", "check", "--gesture", "circle", "--gesture", "zigzag")
        evaluated(vesk, browser, folder)
        inspected(vesk, browser, folder)
        examined(vesk, browser, folder)
        noticed(browser, folder)


if __name__ == "__main__":
    main()
