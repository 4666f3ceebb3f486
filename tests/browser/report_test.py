#!/usr/bin/env python3
"""Checks the report of daemonctl in a real browser.

    report_test.py DAEMONCTL_LOG [FOLDER_FOR_PICTURES]

Makes reports of no daemon, of one and of 200 daemons, and opens each in a narrow and in a wide
window, in the light and in the dark colour scheme. Fails if something leaves the page, is cut off,
overlaps or has too little contrast, if a text of the log becomes HTML, or if the page requests
another file.
"""

import os
import random
import subprocess
import sys
import tempfile
import time

from browser import Browser

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
  return {problems: problems.slice(0, 20), lanes: document.querySelectorAll("div.lane").length,
          rows: document.querySelectorAll("tbody tr").length,
          ground: getComputedStyle(document.body).backgroundColor,
          bold: document.querySelectorAll("b img, .command img, .command script").length,
          text: document.body.innerText};
})()
"""


class Log:
    """Makes a log file of a supervisor whose local time is one hour ahead of UTC."""

    def __init__(self):
        self.lines = []
        self.time_ms = 1763265156123

    def add(self, text, level=1, after_ms=1000):
        """Adds a record, after_ms milliseconds after the one before."""
        self.time_ms += after_ms
        clock = time.gmtime(self.time_ms // 1000 + 3600)
        date = time.strftime("%a %b ", clock) + "%2d" % clock.tm_mday + time.strftime(
            " %H:%M:%S", clock) + ".%03d" % (self.time_ms % 1000)
        self.lines.append("%d;%s;%d;%d;%s\r\n" % (len(self.lines), date, self.time_ms, level, text))

    def start_up(self):
        """Adds the messages of a start-up."""
        self.add("Detected Windows Firewall with Advanced Security", 2)
        self.add("Connecting to WMI resource ...", 2)
        self.add("Connected to WMI resource", 2)
        self.add("Deamon Thread started", 2)

    def save(self, path):
        """Writes the log file with its header."""
        body = "".join(self.lines).encode("cp1252")
        with open(path, "wb") as file:
            file.write(b"0x%08X\r\n" % (12 + len(body)) + body)


def few():
    """Returns the log of one daemon with ends, failed starts and two runs of the supervisor."""
    log = Log()
    log.start_up()
    command = r"C:\FW\App\video.exe --title <img src=x onerror=alert(1)> & 'two' "
    log.add("Start DaemonId(0) PId(100) : " + command, 2)
    log.add("Exception caught in : Access violation", 0, 3600000)
    log.add("Start DaemonId(0) PId(104) : " + command, 1, 20)
    log.add("Exception caught in : Unknown (0x1)", 0, 600000)
    log.add("Unable to start DaemonId(0) PId(104) : " + command, 1, 20)
    log.add("Unable to start DaemonId(0) PId(104) : " + command, 1, 60000)
    log.add("Start DaemonId(0) PId(108) : " + command, 1, 60000)
    log.add("Deamon Thread is exiting...", 2, 5400000)
    log.time_ms += 1800000
    log.start_up()
    log.add("Start DaemonId(0) PId(200) : " + command, 2)
    log.add("Stop (1) DaemonId(0) PId(200) : " + command, 1, 7200000)
    return log


def many(count=200):
    """Returns the log of many daemons.

    Daemon 3 ends again and again, every 50th never starts, and some commands are very long.
    """
    dice = random.Random(17)
    log = Log()
    log.start_up()
    commands = []
    for index in range(count):
        long = " --" + "option" * 12 + " C:\\very\\long\\path\\without\\any\\blank" * 3
        commands.append("C:\\FW\\App\\worker%03d.exe -n %d%s " % (
            index, index, long if index % 17 == 5 else ""))
    processes = 1000
    for index, command in enumerate(commands):
        if index % 50 == 49:
            log.add("Unable to start " + command, 1, 20)
            continue
        processes += 4
        log.add("Start DaemonId(%d) PId(%d) : %s" % (index, processes, command), 2, 20)
    for step in range(1200):
        index = 3 if step % 2 else dice.randrange(count)
        if index % 50 == 49:
            log.add("Unable to start " + commands[index], 1, dice.randrange(1, 60000))
            continue
        reason = dice.choice(("Access violation", "Stack overflow", "Unknown (0x1)",
                              "Unknown (0x0)", "Int divide by zero"))
        log.add("Exception caught in : " + reason, 0, dice.randrange(1, 120000))
        processes += 4
        log.add("Start DaemonId(%d) PId(%d) : %s" % (index, processes, commands[index]), 1, 15)
    return log


def nothing():
    """Returns a log without records."""
    return Log()


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
    print("\n".join(problems) or "12 pages checked, no problems found")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
