#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Opens reports in a headless Chromium and says what is wrong with them.

usage: tools/report_check.py BIN AXE OUT

BIN is the folder of the built programs, AXE the file axe.min.js, OUT a folder for the reports, their pictures and the
figures. Checked are: no script error and nothing refused by the page's own policy; no serious or critical finding of
axe-core, folded and unfolded, light and dark, wide and narrow, in both forms; that the page is complete without scripts
and on paper; and how fast a site of 1,000 views opens and answers a search. The exit status is 1 when anything is wrong.
"""

import contextlib
import html
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

OPENS_WITHIN, ANSWERS_WITHIN = 2000, 300  # milliseconds
WIDE, NARROW = (1280, 900), (390, 844)
SAMPLE = pathlib.Path(__file__).parent.parent / "data" / "site.json"

# What goes wrong stands in the page afterwards.
WATCH = """<script>
const wrong = [];
const tell = what => { wrong.push(String(what)); document.documentElement.dataset.wrong = JSON.stringify(wrong); };
addEventListener('error', event => tell(event.message));
addEventListener('unhandledrejection', event => tell(event.reason));
</script>"""
UNFOLD = "<script>document.getElementById('unfold').click(); for (const d of document.querySelectorAll('details')) d.open = true;</script>"
# A few views, opened, near the top of the screen.
SOME = """<script>
const field = document.getElementById('search');
field.value = 'Platform 1 edge';
field.dispatchEvent(new Event('input'));
document.getElementById('unfold').click();
document.querySelector('nav > details').open = false;
</script>"""
AXE = """<script>AXE_SOURCE</script><script>
axe.run(document, {resultTypes: ['violations']}).then(result => {
  document.documentElement.dataset.axe = JSON.stringify(result.violations.map(
    v => ({rule: v.id, impact: v.impact, help: v.help, at: v.nodes.slice(0, 3).map(n => n.html.slice(0, 200))})));
}, tell);
</script>"""
TIMES = """<script>
addEventListener('load', () => {
  document.body.offsetHeight;
  const times = {opened: performance.now(), searches: {}};
  const field = document.getElementById('search');
  for (const text of ['camera 2001', 'forecourt uberfuhrung', 'x', 'nothing-has-this', '']) {
    const begin = performance.now();
    field.value = text;
    field.dispatchEvent(new Event('input'));
    document.body.offsetHeight;
    times.searches[text] = [performance.now() - begin, document.getElementById('found').textContent];
  }
  document.documentElement.dataset.times = JSON.stringify(times);
});
</script>"""


class Check:
    def __init__(self, out):
        self.out, self.faults, self.figures = out, [], []

    def fault(self, text):
        self.faults.append(text)
        print(f"WRONG: {text}")

    def figure(self, text):
        self.figures.append(text)
        print(text, flush=True)


def chromium(address, size, *options, dark=False):
    """What it prints and what it says on the console."""
    with tempfile.TemporaryDirectory() as profile:
        command = ["chromium", "--headless", "--disable-gpu", "--hide-scrollbars", f"--user-data-dir={profile}",
                   f"--window-size={size[0]},{size[1]}", "--enable-logging=stderr", "--log-level=0", "--no-first-run",
                   f"--blink-settings=preferredColorScheme={0 if dark else 1}", *options, address]
        if os.geteuid() == 0:
            command.insert(1, "--no-sandbox")
        run = subprocess.run(command, capture_output=True, text=True, timeout=300)
    return run.stdout, [line for line in run.stderr.splitlines() if "CONSOLE" in line]


def with_parts(page, name, head="", end=""):
    """A copy of a page beside it that more scripts may run in."""
    text = page.read_text(encoding="utf-8")
    text = re.sub(r'<meta http-equiv="Content-Security-Policy"[^>]*>', "", text)
    text = text.replace("<head>", "<head>" + head, 1)
    at = text.rindex("</body>")
    copy = page.with_name(name)
    copy.write_text(text[:at] + end + text[at:], encoding="utf-8")
    return copy


def said(dom, key):
    found = re.search(rf'<html[^>]* data-{key}="([^"]*)"', dom)
    return json.loads(html.unescape(found[1])) if found else None


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


def check_page(check, page, axe, what):
    dom, console = chromium(page.as_uri(), WIDE, "--dump-dom", "--virtual-time-budget=5000")
    for line in console:
        check.fault(f"{what}: {line}")
    if re.search(r'<div class="tools"[^>]* hidden', dom):
        check.fault(f"{what}: its script does not run")
    source = AXE.replace("AXE_SOURCE", axe.read_text(encoding="utf-8").replace("</script", "<\\/script"))
    for size, is_dark, is_open in ((WIDE, False, False), (WIDE, False, True), (NARROW, True, True), (NARROW, False, False)):
        state = f"{what}, {size[0]} wide, {'dark' if is_dark else 'light'}, {'unfolded' if is_open else 'folded'}"
        copy = with_parts(page, "copy.html", WATCH, (UNFOLD if is_open else "") + source)
        dom, _ = chromium(copy.as_uri(), size, "--dump-dom", "--virtual-time-budget=120000", dark=is_dark)
        for text in said(dom, "wrong") or []:
            check.fault(f"{state}: {text}")
        findings = said(dom, "axe")
        if findings is None:
            check.fault(f"{state}: axe-core did not end")
            continue
        for finding in findings:
            text = f"{state}: {finding['impact']}: {finding['rule']}: {finding['help']}: {finding['at']}"
            check.fault(text) if finding["impact"] in ("serious", "critical") else check.figure(text)
        check.figure(f"{state}: axe-core has {len(findings)} findings")
        copy.unlink()


def take_pictures(check, page, name):
    shots = [(f"{name}-desktop", WIDE, False, ""), (f"{name}-desktop-dark", (1280, 2400), True, UNFOLD),
             (f"{name}-desktop-open", (1280, 2400), False, UNFOLD), (f"{name}-phone", NARROW, False, ""),
             (f"{name}-phone-open", (390, 1600), False, SOME)]
    for shot, size, is_dark, end in shots:
        copy = with_parts(page, "copy.html", "", end)
        chromium(copy.as_uri(), size, f"--screenshot={check.out / shot}.png", "--virtual-time-budget=3000", dark=is_dark)
        copy.unlink()


def check_paper(check, page, name):
    """Everything is on paper, drawings too, though the page was folded."""
    pdf = check.out / f"{name}.pdf"
    # Of a reader who likes the screen dark.
    chromium(page.as_uri(), WIDE, f"--print-to-pdf={pdf}", "--no-pdf-header-footer", "--virtual-time-budget=10000", dark=True)
    text = subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True, check=True).stdout
    for part in ("zoom window 1 at 0.6,0.15 to 0.85,0.4", "12 cameras, 10 s each:", "Shown, but gone", "Page 1 in words"):
        if part not in text:
            check.fault(f"{name} on paper lacks “{part}”")
    subprocess.run(["pdftoppm", "-r", "50", "-png", pdf, check.out / f"{name}-paper"], check=True)
    pages = len(list(check.out.glob(f"{name}-paper-*.png")))
    check.figure(f"{name} on paper: {pages} pages")


def check_without_script(check, page):
    copy = with_parts(page, "copy.html")
    text = re.sub(r"<script>.*?</script>", "", copy.read_text(encoding="utf-8"), flags=re.S)
    # What a browser without scripts makes of these.
    copy.write_text(text.replace("<noscript>", "").replace("</noscript>", ""), encoding="utf-8")
    chromium(copy.as_uri(), (1280, 2400), f"--screenshot={check.out}/without-script.png")
    copy.unlink()


def check_large(check, binaries):
    seed = check.out / "large.json"
    seed.write_text(json.dumps(large_site(1000)), encoding="utf-8")
    with server(binaries, seed) as url:
        took = report(binaries, url, "-o", check.out / "large.html", "--into-folder", check.out / "large")
    check.figure(f"1,000 views: written in {took:.1f} s, {(check.out / 'large.html').stat().st_size / 1e6:.1f} MB")
    for page in (check.out / "large.html", check.out / "large" / "index.html"):
        copy = with_parts(page, "copy.html", WATCH, TIMES)
        dom, _ = chromium(copy.as_uri(), WIDE, "--dump-dom")
        copy.unlink()
        times = said(dom, "times")
        if not times or said(dom, "wrong"):
            check.fault(f"{page}: {said(dom, 'wrong') or 'does not open'}")
            continue
        check.figure(f"1,000 views, {page.name}: opens in {times['opened']:.0f} ms")
        if times["opened"] > OPENS_WITHIN:
            check.fault(f"{page}: opens in {times['opened']:.0f} ms")
        for text, (took, found) in times["searches"].items():
            check.figure(f"  search “{text}”: {took:.0f} ms {found}")
            if took > ANSWERS_WITHIN:
                check.fault(f"{page}: a search for “{text}” takes {took:.0f} ms")


def main(arguments):
    if len(arguments) != 3:
        sys.exit(__doc__)
    binaries, axe, out = (pathlib.Path(argument).absolute() for argument in arguments)
    out.mkdir(parents=True, exist_ok=True)
    check = Check(out)
    with server(binaries, SAMPLE) as url:
        report(binaries, url, "-o", out / "site.html", "--into-folder", out / "site")
    for page, what in ((out / "site.html", "site"), (out / "site" / "index.html", "folder")):
        check_page(check, page, axe, what)
        take_pictures(check, page, what)
        check_paper(check, page, what)
    check_without_script(check, out / "site.html")
    check_large(check, binaries)
    (out / "figures.txt").write_text("\n".join(check.figures + check.faults) + "\n", encoding="utf-8")
    sys.exit(1 if check.faults else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
