#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Opens reports in a headless Chromium and says what is wrong with them.

usage: tools/report_check.py BIN AXE OUT

BIN is the folder of the built programs, AXE the file axe.min.js, OUT a folder for the reports, their pictures and the
figures. Checked are: no script error and nothing refused by the page's own policy; no serious or critical finding of
axe-core, folded and unfolded, light and dark, wide and narrow, in both forms, and nothing to be moved sideways on a
telephone; that a keyboard will do; that the page is complete without scripts and on paper; and how fast a site of 1,000
views opens and answers a search. The exit status is 1 when anything is wrong.
"""

import contextlib
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from browser import NARROW, WIDE, Browser, Tab

# Milliseconds of processor time, the page's own thread's and the least of several runs, so that other work of the
# machine does not matter.
OPENS_WITHIN, ANSWERS_WITHIN = 2000, 300
RUNS = 5
SAMPLE = pathlib.Path(__file__).parent.parent / "data" / "site.json"

UNFOLD = """document.getElementById('unfold').click();
for (const part of document.querySelectorAll('details')) part.open = true;"""
# A few views, opened, near the top of the screen.
SOME = """const field = document.getElementById('search');
field.value = 'Platform 1 edge';
field.dispatchEvent(new Event('input'));
document.getElementById('unfold').click();
document.querySelector('nav > details').open = false;"""
AXE = """axe.run(document, {resultTypes: ['violations']}).then(result => result.violations.map(
  found => ({rule: found.id, impact: found.impact, help: found.help,
             at: found.nodes.slice(0, 3).map(node => node.html.slice(0, 200))})))"""
SEARCH = """{
  const field = document.getElementById('search');
  field.value = TEXT;
  field.dispatchEvent(new Event('input'));
  document.body.offsetHeight;
  document.getElementById('found').textContent;
}"""
# Once those that a reader sees are there.
ODD_IMAGES = """Promise.all([...document.querySelectorAll('.sheet img')].map(async image => {
  if (image.getBoundingClientRect().top > innerHeight || !image.checkVisibility()) return '';
  try { await image.decode(); } catch (error) { return image.src + ': ' + error; }
  const said = ['width', 'height'].map(side => image.getAttribute(side)).join();
  return said === [image.naturalWidth, image.naturalHeight].join() ? '' : image.src;
})).then(odd => odd.filter(Boolean))"""
OPEN_PARTS = "document.querySelectorAll('details[open]').length"


class Check:
    def __init__(self, out):
        self.out, self.faults, self.figures = out, [], []

    def fault(self, text):
        self.faults.append("WRONG: " + text)
        print(self.faults[-1], flush=True)

    def figure(self, text):
        self.figures.append(text)
        print(text, flush=True)

    def expect(self, is_right, text):
        if not is_right:
            self.fault(text)


@contextlib.contextmanager
def server(binaries, seed):
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.Popen([binaries / "viewserver", "--data", f"{folder}/views.db", "--seed", seed, "--listen",
                                "127.0.0.1:0"], stdout=subprocess.PIPE, text=True)
        try:
            yield run.stdout.readline().removeprefix("Listening on ").strip()
        finally:
            run.terminate()
            run.wait(60)


def report(binaries, url, *arguments):
    begin = time.monotonic()
    subprocess.run([binaries / "viewctl", "--server", url, "report", *arguments], check=True, timeout=600,
                   env={**os.environ, "VIEWCTL_PASSWORD": "sample-admin"})
    return time.monotonic() - begin


def large_site(count):
    """The sample with copies of its public views, in folders of 25."""
    site = json.loads(SAMPLE.read_text(encoding="utf-8"))
    public = [view for view in site["Views"] if view["UserID"] == -1]
    site["ViewGroups"] = [{"ID": 1000 + n, "Name": f"Folder {n}", "ParentViewGroupID": 1000 + n // 5 if n else -1,
                           "UserID": -1, "IsSharedView": -1, "SequenceIndex": n} for n in range(count // 25)]
    site["Views"] = [{**public[n % len(public)], "ID": 10000 + n, "GUID": f"{n:032x}", "ViewGroupID": 1000 + n // 25,
                      "Name": f"{public[n % len(public)]['Name']} {n}", "SequenceIndex": n} for n in range(count)]
    return site


def check_access(check, browser, page, axe, what):
    source = axe.read_text(encoding="utf-8")
    states = (WIDE, False, False), (WIDE, False, True), (NARROW, True, True), (NARROW, False, False)
    for size, dark, is_open in states:
        state = f"{what}, {size[0]} wide, {'dark' if dark else 'light'}, {'unfolded' if is_open else 'folded'}"
        with Tab(browser, page.as_uri(), size, dark) as tab:
            if is_open:
                tab.run(UNFOLD)
            wide = tab.run("document.documentElement.scrollWidth")
            check.expect(wide <= size[0], f"{state}: the page is {wide} wide")
            tab.run(source + "; 0")
            findings = tab.run(AXE)
            for found in findings:
                text = f"{state}: {found['impact']}: {found['rule']}: {found['help']}: {found['at']}"
                check.fault(text) if found["impact"] in ("serious", "critical") else check.figure(text)
            check.figure(f"{state}: axe-core has {len(findings)} findings")
            for fault in tab.faults():
                check.fault(f"{state}: {fault}")


def check_keyboard(check, browser, page, what):
    """The first key leads past the folders; a view opens, and is drawn then."""
    with Tab(browser, page.as_uri()) as tab:
        tab.press("Tab")
        check.expect(tab.run("document.activeElement.className") == "skip", f"{what}: no link past the folders")
        tab.press("Enter")
        check.expect(tab.run("location.hash") == "#views", f"{what}: the link past the folders does not lead there")
        tab.run("document.querySelectorAll('.view > details > summary')[1].focus()")
        tab.press(" ")
        tab.settle()
        state = tab.run("""(view => [view.firstElementChild.open,
            view.querySelectorAll('.sheet svg, .sheet img').length])(document.activeElement.closest('.view'))""")
        check.expect(state == [True, 1], f"{what}: a view does not open by a key: {state}")


def take_pictures(check, browser, page, what):
    shots = (("desktop", WIDE, False, ""), ("desktop-open", (1280, 2400), False, UNFOLD),
             ("desktop-open-dark", (1280, 2400), True, UNFOLD), ("desktop-dark", WIDE, True, ""),
             ("phone", NARROW, False, ""), ("phone-open", (390, 1600), False, SOME),
             ("phone-open-dark", (390, 1600), True, SOME),
             ("resources", (1280, 1600), False, "document.getElementById('shown').scrollIntoView()"),
             ("pages", (1280, 3000), False, "location.hash = 'v125'"))
    for shot, size, dark, script in shots:
        with Tab(browser, page.as_uri(), size, dark) as tab:
            tab.run(f"{{ {script} }}")
            odd = tab.run(ODD_IMAGES)
            check.expect(not odd, f"{what}, {shot}: images of another size than is said: {odd}")
            tab.picture(check.out / f"{what}-{shot}.png")


def check_paper(check, browser, page, what):
    """Everything is on paper, drawings too, though the page was folded; afterwards it is as it was."""
    pdf = check.out / f"{what}.pdf"
    with Tab(browser, page.as_uri(), dark=True) as tab:
        before = tab.run(OPEN_PARTS)
        tab.paper(pdf)
        after = tab.run(OPEN_PARTS)
    check.expect(before == after, f"{what}: {before} parts are open before printing, {after} afterwards")
    text = subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True, check=True).stdout
    words = re.sub(r"\s+", " ", text)
    for part in ("zoom window 1 at 0.6,0.15 to 0.85,0.4", "12 cameras, 10 s each:", "Shown, but gone",
                 "Page 1 in words"):
        check.expect(part in words, f"{what} on paper lacks “{part}”")
    for old in check.out.glob(f"{what}-paper-*.png"):
        old.unlink()
    subprocess.run(["pdftoppm", "-r", "60", "-png", pdf, check.out / f"{what}-paper"], check=True)
    check.figure(f"{what} on paper: {len(list(check.out.glob(f'{what}-paper-*.png')))} pages")


def check_without_scripts(check, browser, page, what):
    with Tab(browser, page.as_uri(), (1280, 2400), scripts=False) as tab:
        tab.picture(check.out / f"{what}-without-scripts.png")
        parts = {}
        for part in ("details:not(.words):not([open])", "figure",
                     ".sheet > svg, .sheet > noscript > svg, .sheet > img"):
            root = tab.ask("DOM.getDocument", depth=0)["root"]["nodeId"]
            parts[part] = len(tab.ask("DOM.querySelectorAll", nodeId=root, selector=part)["nodeIds"])
    folded, figures, drawings = parts.values()
    check.expect(folded == 0 and figures == drawings > 0,
                 f"{what} without scripts: {folded} parts folded, {drawings} drawings of {figures} pages")


def check_speed(check, browser, page):
    runs, searches = [], {text: [] for text in ("camera 2001", "forecourt uberfuhrung", "x", "nothing-has-this", "")}
    for _ in range(RUNS):
        with Tab(browser, page.as_uri()) as tab:
            runs.append(tab.opened)
            for text, answers in searches.items():
                answers.append(tab.work_of(SEARCH.replace("TEXT", json.dumps(text))))
            for fault in tab.faults():
                check.fault(f"{page.name} of 1,000 views: {fault}")
    median = {part: statistics.median(run[part] for run in runs) for part in runs[0]}
    figures = {part: f"{value:.0f}" for part, value in median.items()}
    check.figure("1,000 views, {page}, medians of {runs}: {work} ms of processor time (styles {styles}, layout {layout}, "
                 "script {script}); by the clock: painted at {painted}, read at {interactive}, loaded at {loaded} ms"
                 .format(page=f"{page.parent.name}/{page.name}", runs=RUNS, **figures))
    least = min(run["work"] for run in runs)
    check.expect(least <= OPENS_WITHIN, f"{page.name} of 1,000 views takes {least:.0f} ms of processor time to open")
    for text, answers in searches.items():
        works, found = [work for work, _ in answers], answers[0][1] or "everything again"
        check.figure(f"  search “{text}”: {statistics.median(works):.0f} ms of processor time: {found}")
        check.expect(min(works) <= ANSWERS_WITHIN, f"{page.name}: a search for “{text}” takes {min(works):.0f} ms")


def check_large(check, browser, binaries):
    seed = check.out / "large.json"
    seed.write_text(json.dumps(large_site(1000)), encoding="utf-8")
    with server(binaries, seed) as url:
        took = report(binaries, url, "-o", check.out / "large.html", "--into-folder", check.out / "large")
    check.figure(f"1,000 views: written in {took:.1f} s, {(check.out / 'large.html').stat().st_size / 1e6:.1f} MB")
    for page in (check.out / "large.html", check.out / "large" / "index.html"):
        check_speed(check, browser, page)


def main(arguments):
    if len(arguments) != 3:
        sys.exit(__doc__)
    binaries, axe, out = (pathlib.Path(argument).absolute() for argument in arguments)
    out.mkdir(parents=True, exist_ok=True)
    check = Check(out)
    for old in ("site", "large"):
        shutil.rmtree(out / old, ignore_errors=True)
    with server(binaries, SAMPLE) as url:
        report(binaries, url, "-o", out / "site.html", "--into-folder", out / "site")
    with Browser() as browser:
        for page, what in ((out / "site.html", "site"), (out / "site" / "index.html", "folder")):
            check_access(check, browser, page, axe, what)
            check_keyboard(check, browser, page, what)
            take_pictures(check, browser, page, what)
            check_paper(check, browser, page, what)
            check_without_scripts(check, browser, page, what)
        check_large(check, browser, binaries)
    (out / "figures.txt").write_text("\n".join(check.figures + check.faults) + "\n", encoding="utf-8")
    sys.exit(1 if check.faults else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
