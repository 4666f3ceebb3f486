"""What a person sees while tests run: on a terminal one line that moves, elsewhere one line a phase."""
import sys
import threading
import time


class Screen:
    """Any thread may call it."""

    def __init__(self, out=sys.stdout):
        self.out = out
        self.started = time.monotonic()
        self.terminal = out.isatty()
        self.lock = threading.Lock()
        self.phases = {}
        self.shown = 0

    def seconds(self):
        return time.monotonic() - self.started

    def say(self, text):
        """Prints lines that stay."""
        with self.lock:
            self._wipe()
            self.out.write(text + "\n")
            self.out.flush()
            self._show()

    def phase(self, name, text):
        """Shows what a phase does at the moment; an empty text ends it."""
        with self.lock:
            if text:
                self.phases[name] = text
            else:
                self.phases.pop(name, None)
            self._wipe()
            self._show()

    def _wipe(self):
        if self.shown:
            self.out.write("\r" + " " * self.shown + "\r")
            self.shown = 0

    def _show(self):
        if not self.terminal or not self.phases:
            return
        minutes, seconds = divmod(int(self.seconds()), 60)
        line = f"[{minutes}:{seconds:02}] " + " | ".join(self.phases.values())
        line = line[: width() - 1]
        self.out.write(line)
        self.out.flush()
        self.shown = len(line)


def width():
    import shutil

    return shutil.get_terminal_size((100, 24)).columns
