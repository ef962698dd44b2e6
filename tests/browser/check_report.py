#!/usr/bin/env python3
"""Looks at reports in a real browser.

usage: check_report.py --tarn PATH [--browser PATH] [--pictures FOLDER]

Makes reports with the command and opens each at three widths, on light and dark pages. Of each it checks that
  - nothing is fetched and nothing is said on the console, so that the page keeps to its own security policy,
  - axe-core finds nothing that keeps anybody from reading it (WCAG 2.1 A and AA, and its best practices),
  - no text leaves its box, covers another one, or widens the page,
  - on paper of A4 no table is cut, and explanations that are folded on the screen are open.
Ends with a line of how many checks passed and failed, and with status 1 where any failed. --pictures keeps a picture of
each page.
"""
import argparse
import csv
import os
import random
import subprocess
import sys
import tempfile

from axe_playwright_python.sync_playwright import Axe
from playwright.sync_api import sync_playwright

SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
WIDTHS = [360, 800, 1600]
SCHEMES = ["light", "dark"]
# A4 less the margins of the page's style, 210 - 2 * 16 mm, at 96 pixels an inch.
PAPER_WIDTH = 673

HOSTILE = ["</script><script>alert(1)</script>", "A & B \"quoted\" 'single'",
           "\u0642\u064a\u0627\u0633 \u0627\u0644\u0646\u0648\u0645 \u0628\u0639\u062f", "x" * 300, "\U0001F600 emoji",
           "| pipe _ under $ # %", "<b>bold</b>"]

# Texts as the browser has laid them out: each line of each text with its box, the box that it should keep to, and whether
# it may be scrolled.
LAYOUT = """() => {
  const found = [];
  const name = element => element.tagName.toLowerCase() + (element.id ? '#' + element.id : '');
  const texts = [];
  const walker = document.createTreeWalker(document.querySelector('.tarn'), NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const node = walker.currentNode;
    const parent = node.parentElement;
    if (!node.data.trim() || parent.closest('title, desc, style, script')) continue;
    const range = document.createRange();
    range.selectNodeContents(node);
    const svg = parent.closest('svg');
    const scroll = parent.closest('.wide');
    const block = parent.closest('td, th, p, li, dd, dt, h1, h2, h3, h4, caption, figcaption, pre, summary, svg');
    const rects = svg ? [parent.getBoundingClientRect()] : range.getClientRects();
    for (const rect of rects) {
      if (rect.width < 0.5) continue;
      texts.push({text: node.data.trim().slice(0, 40), rect, block, scroll, svg});
    }
  }
  const slack = 1.5;
  for (const {text, rect, block, scroll} of texts) {
    const box = (block || document.body).getBoundingClientRect();
    const outside = rect.left < box.left - slack || rect.right > box.right + slack || rect.top < box.top - 6 ||
      rect.bottom > box.bottom + 6;
    if (outside) found.push('leaves its box: ' + text + ' in ' + name(block || document.body));
    if (!scroll && rect.right > document.documentElement.clientWidth + slack) found.push('leaves the page: ' + text);
  }
  // Lines of a text are as high as its font, which reaches a little beyond its letters.
  const inner = rect => ({left: rect.left + 0.5, right: rect.right - 0.5, top: rect.top + rect.height * 0.22,
    bottom: rect.bottom - rect.height * 0.22});
  const ordered = texts.map(each => ({...each, box: inner(each.rect)})).sort((a, b) => a.box.top - b.box.top);
  for (let i = 0; i < ordered.length; ++i) {
    for (let k = i + 1; k < ordered.length && ordered[k].box.top < ordered[i].box.bottom; ++k) {
      const a = ordered[i], b = ordered[k];
      // What is scrolled away under the edge of its table isn't seen.
      if (a.scroll !== b.scroll) continue;
      if (a.box.left < b.box.right && b.box.left < a.box.right) found.push('cover one another: ' + a.text + ' | ' + b.text);
    }
  }
  if (document.documentElement.scrollWidth > document.documentElement.clientWidth + 1) found.push('the page is wider');
  return found.slice(0, 20);
}"""

# Explanations that have no height: on paper nobody can open them.
FOLDED = """() => [...document.querySelectorAll('details')]
  .filter(element => element.getBoundingClientRect().height < 2 * element.firstElementChild.getBoundingClientRect().height)
  .map(element => 'folded: ' + element.innerText.slice(0, 40))"""

OPEN = "() => document.querySelectorAll('details').forEach(element => { element.open = true; })"
FOLD = "() => document.querySelectorAll('details').forEach(element => { element.open = false; })"

CUT_TABLES = """(width) => [...document.querySelectorAll('table, pre, figure')]
  .filter(element => element.getBoundingClientRect().right > width + 1)
  .map(element => 'wider than the paper: ' + (element.getAttribute('aria-label') || element.innerText.slice(0, 60)))"""


class Tally:
    """Counts checks, and tells the ones that fail."""

    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, where, mistakes):
        if mistakes:
            self.failed += 1
            for mistake in mistakes:
                print("%s: %s" % (where, mistake), file=sys.stderr)
        else:
            self.passed += 1


def hostile_table(path):
    """400 records with names as nobody should choose them, and 30 groups with long ones."""
    numbers = random.Random(3)
    with open(path, "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file)
        table.writerow(["value", "<img src=x onerror=alert(1)>", "group name", "many", "count", "rising"])
        for i in range(400):
            value, other, group = round(numbers.gauss(50, 10), 1), round(numbers.expovariate(0.1), 2), numbers.choice(HOSTILE)
            table.writerow([value, other, group, "Department of long names number %d of the hospital" % (i % 30),
                            numbers.randint(1, 9), 5 * HOSTILE.index(group) + i % 7])


def requests(folder):
    """The reports that are looked at, by their names."""
    hostile = os.path.join(folder, "hostile.csv")
    hostile_table(hostile)

    def example(name, *words):
        base = os.path.join(SOURCES, "examples", name)
        return [base + ".csv", "--fields", base + ".fields.json", *words]

    return {
        "one-sample": example("sleep_clinic", "--one-sample", "age,sex,quality", "--tests",
                              "kolmogorov-smirnov,binomial,chi-square,runs,wilcoxon", "--test-value", "40",
                              "--distribution", "normal,uniform,poisson,exponential"),
        "pair": example("tasting", "--related", "first,second", "--tests", "sign,wilcoxon,hodges-lehmann"),
        "related": example("sleep_clinic", "--related", "hours_before,hours_after,hours_followup", "--tests",
                           "friedman,kendall", "--compare", "pairwise"),
        "mcnemar": example("headache", "--related", "relief_a,relief_c", "--tests", "mcnemar", "--success", "yes"),
        "cochran": example("headache", "--related", "relief_a,relief_b,relief_c", "--compare", "pairwise"),
        "margins": example("headache", "--related", "severity_before,severity_after", "--tests",
                           "marginal-homogeneity"),
        "two-groups": example("tasting", "--independent", "bitter", "--group", "panel", "--tests",
                              "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,hodges-lehmann,median"),
        "groups": example("sleep_clinic", "--independent", "hours_after,latency", "--group", "arm", "--tests",
                          "kruskal-wallis,jonckheere,median", "--compare", "stepwise"),
        "parts": example("sleep_clinic", "--independent", "hours_after", "--group", "arm", "--split", "sex"),
        "hostile": [hostile, "--independent", "value,<img src=x onerror=alert(1)>", "--group", "group name", "--compare",
                    "pairwise"],
        "many-groups": [hostile, "--independent", "value", "--group", "many", "--weight", "count"],
        "explained": example("sleep_clinic", "--independent", "hours_after", "--group", "arm", "--tests",
                             "kruskal-wallis,jonckheere,median", "--compare", "pairwise", "--explain"),
        "explained-subsets": example("sleep_clinic", "--related", "hours_before,hours_after,hours_followup", "--tests",
                                     "friedman,kendall", "--compare", "stepwise", "--explain"),
        # So far apart that their pairs are compared.
        "explained-hostile": [hostile, "--independent", "rising", "--group", "group name", "--compare", "pairwise",
                              "--explain"],
    }


def check_screen(page, name, width, scheme, tally):
    """One report on a screen of a width."""
    where = "%s, %d pixels, %s" % (name, width, scheme)
    page.set_viewport_size({"width": width, "height": 900})
    page.emulate_media(media="screen", color_scheme=scheme)
    tally.check(where, page.evaluate(LAYOUT))


def check_reading(page, where, tally):
    """What axe-core finds, each with the elements that it is about."""
    found = Axe().run(page).response["violations"]
    tally.check(where + ", axe-core", ["%s: %s" % (each["id"], [node["html"][:150] for node in each["nodes"]][:3])
                                       for each in found])


def check_paper(page, name, folder, tally):
    """The report as it is printed, with nothing opened on the screen before."""
    page.evaluate(FOLD)
    page.set_viewport_size({"width": PAPER_WIDTH, "height": 1000})
    page.emulate_media(media="print", color_scheme="light")
    tally.check(name + ", paper, explanations", page.evaluate(FOLDED))
    tally.check(name + ", paper", page.evaluate(CUT_TABLES, PAPER_WIDTH))
    path = os.path.join(folder, name + ".pdf")
    page.pdf(path=path, prefer_css_page_size=True)
    with open(path, "rb") as file:
        tally.check(name + ", PDF", [] if file.read(5) == b"%PDF-" else ["is none"])


def check_report(browser, name, path, folder, pictures, tally):
    context = browser.new_context()
    page = context.new_page()
    fetched, said = [], []
    page.on("request", lambda request: fetched.append(request.url))
    page.on("console", lambda message: said.append(message.text))
    page.on("pageerror", lambda mistake: said.append(str(mistake)))
    page.goto("file://" + path)
    tally.check(name + ", explanations", [] if page.query_selector_all("details") or not name.startswith("explained")
                else ["there are none"])
    # What is folded has no layout that could be checked.
    page.evaluate(OPEN)
    for scheme in SCHEMES:
        for width in WIDTHS:
            check_screen(page, name, width, scheme, tally)
            if pictures:
                page.screenshot(path=os.path.join(pictures, "%s-%d-%s.png" % (name, width, scheme)), full_page=True)
        check_reading(page, "%s, %s" % (name, scheme), tally)
    check_paper(page, name, folder, tally)
    tally.check(name + ", requests", [url for url in fetched if url != "file://" + path])
    tally.check(name + ", console", said)
    context.close()


# A page with one mistake of each kind, which the checks have to find.
BROKEN = """<!DOCTYPE html><html><body><div class="tarn" style="position:relative">
<details><summary>more</summary><p>a text that nobody sees</p></details>
<p style="position:absolute;top:0;left:0">one text</p><p style="position:absolute;top:2px;left:5px">another text</p>
<table style="margin-top:60px;width:2000px"><tr><td style="max-width:20px;overflow:visible;white-space:nowrap;display:block">
a text that leaves its cell by far</td></tr></table><img src="http://127.0.0.1:9/none.png"></div></body></html>"""


def check_the_checks(browser, tally):
    """Checks that can't fail would tell nothing."""
    page = browser.new_page(viewport={"width": 800, "height": 600})
    fetched = []
    page.on("request", lambda request: fetched.append(request.url))
    page.set_content(BROKEN)
    found = page.evaluate(LAYOUT)
    for kind in ("cover one another: one text | another text", "leaves its box: a text that leaves", "the page is wider"):
        tally.check("the checks", [] if any(kind in each for each in found) else ["don't find: " + kind])
    tally.check("the checks", [] if page.evaluate(FOLDED) else ["don't find what is folded"])
    tally.check("the checks", [] if page.evaluate(CUT_TABLES, PAPER_WIDTH) else ["don't find a table that is cut"])
    rules = [each["id"] for each in Axe().run(page).response["violations"]]
    tally.check("the checks", [] if "image-alt" in rules else ["axe-core doesn't find a picture without a text"])
    tally.check("the checks", [] if any("none.png" in url for url in fetched) else ["don't see what is fetched"])
    page.close()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tarn", required=True)
    parser.add_argument("--browser", default="/usr/bin/chromium")
    parser.add_argument("--pictures")
    options = parser.parse_args()
    if options.pictures:
        os.makedirs(options.pictures, exist_ok=True)
    tally = Tally()
    with tempfile.TemporaryDirectory() as folder, sync_playwright() as playwright:
        browser = playwright.chromium.launch(executable_path=options.browser, args=["--no-sandbox"])
        check_the_checks(browser, tally)
        for name, words in requests(folder).items():
            path = os.path.join(folder, name + ".html")
            subprocess.run([options.tarn, "analyze", *words, "--quiet", "--report", path], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            check_report(browser, name, path, folder, options.pictures, tally)
        browser.close()
    print("%d passed, %d failed" % (tally.passed, tally.failed))
    return 1 if tally.failed else 0


if __name__ == "__main__":
    sys.exit(main())
