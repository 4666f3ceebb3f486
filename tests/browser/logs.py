"""Log files for the pages that a test opens in a browser."""

import random
import time


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
