#!/usr/bin/env python3
"""Checks the report of daemonctl in a real browser.

    report_test.py DAEMONCTL_LOG [FOLDER_FOR_PICTURES]

Makes reports of no daemon, of one and of 200 daemons, and opens each in a narrow and in a wide
window, in the light and in the dark colour scheme. Fails if something leaves the page, is cut off,
overlaps or has too little contrast, if a text of the log becomes HTML, or if the page requests
another file. The ranges of the time axis, the page on paper, and a page that is written again and again
are looked at, too.
"""

import os
import subprocess
import sys
import tempfile
import time

from browser import Browser
from logs import few, many, nothing

CHECK = r"""
(() => {
  const problems = [];
  const page = document.documentElement;
  if (page.scrollWidth > window.innerWidth)
    problems.push(`the page is ${page.scrollWidth} wide in a window of ${window.innerWidth}`);
  const name = element => element.tagName + "." + (element.className.baseVal ?? element.className) +
      " '" + element.textContent.slice(0, 40) + "'";
  const channels = text => text.match(/[\d.]+/g).map(Number);
  const luminance = text => {
    const [r, g, b] = channels(text).slice(0, 3).map(value => {
      value /= 255;
      return value <= 0.03928 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const ground = element => {
    for (; element; element = element.parentElement) {
      const colour = getComputedStyle(element).backgroundColor;
      const parts = channels(colour);
      if (parts.length < 4 || parts[3] > 0) return colour;
    }
    return "rgb(255, 255, 255)";
  };
  const contrast = (one, other) => {
    const [light, dark] = [luminance(one), luminance(other)].sort((a, b) => b - a);
    return (light + 0.05) / (dark + 0.05);
  };
  const marks = [];
  for (const element of document.body.querySelectorAll("*")) {
    const style = getComputedStyle(element);
    const box = element.getBoundingClientRect();
    if (style.display === "none" || box.width === 0 || element.closest("svg")) continue;
    if (box.right > window.innerWidth + 1 || box.left < -1)
      problems.push(`${name(element)} reaches from ${box.left} to ${box.right}`);
    if (style.overflowX !== "visible" && element.scrollWidth > element.clientWidth + 1 ||
        style.overflowY !== "visible" && element.scrollHeight > element.clientHeight + 1)
      problems.push(`${name(element)} is cut off`);
    const own = [...element.childNodes].some(node => node.nodeType === 3 && node.data.trim());
    if (own && contrast(style.color, ground(element)) < 4.5)
      problems.push(`${name(element)} is hard to read: ${style.color} on ${ground(element)}`);
    if (own && parseFloat(style.fontSize) < 11)
      problems.push(`${name(element)} is too small: ${style.fontSize}`);
    if (element.parentElement.className === "marks") marks.push([element.parentElement, box]);
  }
  for (let index = 1; index < marks.length; ++index)
    if (marks[index][0] === marks[index - 1][0] && marks[index][1].left < marks[index - 1][1].right)
      problems.push("labels of the time axis overlap");
  // The words of neighbouring table cells must not overlap.
  for (const row of document.querySelectorAll("tbody tr")) {
    const cells = [...row.children].map(cell => {
      const range = document.createRange();
      range.selectNodeContents(cell);
      return range.getBoundingClientRect();
    });
    for (let index = 1; index < cells.length; ++index) {
      const [before, cell] = [cells[index - 1], cells[index]];
      if (cell.left < before.right - 1 && cell.top < before.bottom - 1 && before.top < cell.bottom - 1)
        problems.push("cells overlap in the row " + row.textContent.slice(0, 60));
    }
  }
  // Words are not broken, except in commands and reasons, which may have any length.
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const node = walker.currentNode;
    if (node.parentElement.closest(".command, ul.reasons, svg, title")) continue;
    for (const word of node.data.matchAll(/\S+/g)) {
      const range = document.createRange();
      range.setStart(node, word.index);
      range.setEnd(node, word.index + word[0].length);
      if (range.getClientRects().length > 1) problems.push(`'${word[0]}' is broken in two`);
    }
  }
  if (document.scripts.length) problems.push("there is a script");
  const shown = [...document.querySelectorAll(".range")].filter(
      range => getComputedStyle(range).display !== "none").map(range => range.id);
  return {problems: problems.slice(0, 20), lanes: document.querySelectorAll("#all div.lane").length,
          rows: document.querySelectorAll("#history tbody tr").length, shown: shown.join(),
          ground: getComputedStyle(document.body).backgroundColor,
          bold: document.querySelectorAll("b img, .command img, .command script").length,
          text: document.body.innerText};
})()
"""


def check_ranges(browser, page):
    """The links choose what the time axis covers, without a script; a link to a lane shows all of it."""
    problems = []
    browser.show(page, 1600, 900, "light")
    for fragment, expected in (("", "all"), ("#hour", "hour"), ("#all", "all"), ("#hour", "hour"),
                               ("#lane-0", "all")):
        browser.evaluate("location.hash = '%s'" % fragment)
        shown = browser.evaluate(CHECK)["shown"]
        if shown != expected:
            problems.append("%s shows the ranges '%s', not '%s'" % (fragment, shown, expected))
    return problems


def check_columns(browser, page):
    """A screen reader gets the headers of the tables at every width, and on paper."""
    counts = set()
    for width, media in ((1600, ""), (400, ""), (800, "print")):
        browser.show(page, width, 900, "light")
        browser.call("Emulation.setEmulatedMedia", {"media": media})
        nodes = browser.call("Accessibility.getFullAXTree", {})["nodes"]
        counts.add(sum(node.get("role", {}).get("value") == "columnheader" and not node["ignored"]
                       for node in nodes))
    browser.call("Emulation.setEmulatedMedia", {"media": ""})
    return [] if len(counts) == 1 and 0 not in counts else ["numbers of column headers: %s" % sorted(counts)]


def check_print(browser, page, pictures):
    """Returns the problems of the page on paper. Saves a picture of it if pictures names a folder."""
    browser.show(page, 800, 1100, "light")
    browser.call("Emulation.setEmulatedMedia", {"media": "print"})
    links = browser.evaluate(
        "getComputedStyle(document.querySelector('.ranges')).display")
    problems = [] if links == "none" else ["on paper there are links"]
    problems += ["on paper: " + problem for problem in browser.evaluate(CHECK)["problems"]]
    if pictures:
        browser.picture(os.path.join(pictures, "report_print.png"), True)
    browser.call("Emulation.setEmulatedMedia", {"media": ""})
    return problems


def wait_for(browser, expression, what):
    """Waits until an expression in the page is true, at most as long as the browser may take."""
    end = time.monotonic() + browser.patience
    while True:
        try:
            if browser.evaluate(expression):
                return
        except RuntimeError:  # between two loads the page has no place for an expression
            pass
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.05)


def check_live(browser, program, folder):
    """A page that is written again and again reloads itself, keeps its range and its place, and shows its age."""
    path = os.path.join(folder, "live.log")
    page = os.path.join(folder, "live.html")
    many().save(path)
    writer = subprocess.Popen([program, "report", "--every", "1", "--file", path, "--output", page])
    problems = []
    try:
        end = time.monotonic() + browser.patience
        while not os.path.exists(page):
            if time.monotonic() > end:
                raise TimeoutError("the page is not written")
            time.sleep(0.05)
        browser.show(page, 1600, 900, "light")
        wait_for(browser, "/^\\d+ s ago$/.test(document.getElementById('age').textContent)",
                 "the page shows its age")
        browser.evaluate("location.hash = '#hour'")
        wait_for(browser, "getComputedStyle(document.getElementById('hour')).display !== 'none'",
                 "the page shows the last hour")
        browser.evaluate("window.scrollTo(0, 2000), window.before = true")
        wait_for(browser, "!window.before && document.readyState === 'complete'",
                 "the page reloads itself")
        wait_for(browser, "window.scrollY === 2000", "the page keeps its place")
        shown = browser.evaluate("location.hash + ' ' + " + CHECK.strip() + ".shown")
        if shown != "#hour hour":
            problems.append("live: the page reloads itself as '%s', not as '#hour hour'" % shown)
    finally:
        writer.kill()
        writer.wait()
    wait_for(browser, "document.getElementById('age').textContent.includes('Nobody writes')",
             "the page says that nobody writes it")
    problems += ["live: " + problem for problem in browser.evaluate(CHECK)["problems"]
                 if problem != "there is a script"]
    return problems


def main():
    program = os.path.abspath(sys.argv[1])
    pictures = sys.argv[2] if len(sys.argv) > 2 else None
    problems = []
    with tempfile.TemporaryDirectory(prefix="dm_report_") as folder, Browser() as browser:
        for name, log, lanes in (("1", few(), 1), ("200", many(), 200), ("0", nothing(), 0)):
            path = os.path.join(folder, "DaemonManager %s.log" % name)
            page = os.path.join(folder, "report%s.html" % name)
            log.save(path)
            subprocess.run([program, "report", "--file", path, "--output", page], check=True,
                           stdout=subprocess.DEVNULL)
            grounds = {}
            for width in (400, 1600):
                for scheme in ("light", "dark"):
                    browser.show(page, width, 900, scheme)
                    found = browser.evaluate(CHECK)
                    here = "%s daemons, %d wide, %s: " % (name, width, scheme)
                    problems += [here + problem for problem in found["problems"]]
                    if (found["lanes"], found["rows"]) != (lanes, lanes):
                        problems.append(here + "%d lanes and %d rows" % (found["lanes"], found["rows"]))
                    if found["bold"]:
                        problems.append(here + "HTML in a command is not escaped")
                    if name == "1" and "<img src=x onerror=alert(1)> & 'two'" not in found["text"]:
                        problems.append(here + "the command is not shown letter for letter")
                    if name == "1" and "UTC+01:00" not in found["text"]:
                        problems.append(here + "the time zone is missing")
                    asked = browser.requests()
                    if len(asked) != 1 or not asked[0].startswith("file://"):
                        problems.append(here + "requested " + str(asked))
                    grounds[scheme] = found["ground"]
                    if pictures:
                        browser.picture(os.path.join(
                            pictures, "report_%s_%d_%s.png" % (name, width, scheme)), name == "1")
            if grounds["light"] == grounds["dark"]:
                problems.append(name + " daemons: the light and the dark scheme have the same background")
            if name == "1":
                problems += (check_ranges(browser, page) + check_columns(browser, page)
                             + check_print(browser, page, pictures))
        problems += check_live(browser, program, folder)
    print("\n".join(problems) or "12 pages checked, no problems found")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
