"""Plays the real program like a musician: mouse, pictures and sound, on the display that DISPLAY names.

Runs inside scripts/wine-env. Positions come from the program's own control table.
"""
import os
import pathlib
import re
import struct
import subprocess
import time
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "src/ui/control_layout_table.cpp"
PANEL_WIDTH, PANEL_HEIGHT = 8019, 5153      # layout units
POLL = 0.05                                 # seconds between two looks at a state we wait for
HAND = 0.12                                 # seconds a hand rests between two moves


def read_controls():
    """name: (x, y, width, height) in layout units, from the table in the source."""
    sizes = {"STEP": ("bottone_", 178, 184), "SWITCH": ("sw_", 142, 142), "SLIDER": ("slider_", 61, 159)}
    controls = {}
    for line in TABLE.read_text().splitlines():
        if m := re.match(r'\s+(STEP|SWITCH|SLIDER)\("(\d+)", "\w+", (-?\d+), (-?\d+)\)', line):
            prefix, width, height = sizes[m[1]]
            controls[prefix + m[2]] = (int(m[3]), int(m[4]), width, height)
        elif m := re.match(r'\s+(?:PICTURE\(|\{)"\w+", "(\w+)",.*?(-?\d+), (-?\d+), (\d+), (\d+)[,)]', line):
            controls[m[1]] = tuple(int(v) for v in m.groups()[1:])
    assert len(controls) == 139, len(controls)
    return controls


def wait_until(question, what, seconds=30):
    """Polls until the question has a true answer, and returns it."""
    end = time.monotonic() + seconds
    while not (answer := question()):
        if time.monotonic() > end:
            raise TimeoutError(f"waited {seconds} s for {what}")
        time.sleep(POLL)
    return answer


def xdotool(*words):
    done = subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else ""


class Picture:
    """RGB pixels of the display."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    def brightness(self, x, y, w, h):
        """Mean grey 0..255 of a rectangle."""
        total = 0
        for row in range(y, y + h):
            start = 3 * (row * self.width + x)
            total += sum(self.pixels[start:start + 3 * w])
        return total / (3 * w * h)


    def save(self, file, x, y, w, h):
        """A rectangle as a PNG file."""
        rows = b"".join(b"\0" + self.pixels[3 * (row * self.width + x):3 * (row * self.width + x + w)] for row in range(y, y + h))
        chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        pathlib.Path(file).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", w, h, 8, 2, 0, 0, 0))
                                       + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))

    def greener(self, x, y, w, h):
        """How much more green than red there is in a rectangle, in grey steps of its mean."""
        rows = [self.pixels[3 * (row * self.width + x):3 * (row * self.width + x + w)] for row in range(y, y + h)]
        return sum(sum(row[1::3]) - sum(row[0::3]) for row in rows) / (w * h)


class Player:
    """One run of the program in a folder of its own."""

    def __init__(self, program, folder, overrides=None, variables=None):
        environment = dict(os.environ, **(variables or {}))
        if overrides:
            environment["WINEDLLOVERRIDES"] = overrides + ";" + environment["WINEDLLOVERRIDES"]
        self.dpi = 96                           # of the display; whoever plays on a finer one says so
        self.controls = read_controls()
        self.turned = {name: 0 for name in self.controls if name.startswith("slider_")}
        self.process = subprocess.Popen(["wine64", str(program)], cwd=folder, env=environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            self.window = wait_until(self._find, "the panel", 60)
            self.place()
            wait_until(lambda: self.screenshot().brightness(*self._middle("pannello_frontale_001")) > 16, "the panel's picture")
        except BaseException:
            self.process.kill()
            self.process.wait()
            raise

    def _find(self):
        assert self.process.poll() is None, f"the program ended with {self.process.returncode}"
        found = xdotool("search", "--onlyvisible", "--name", "^Percussomatic$").split()
        return found[0] if found else None

    @staticmethod
    def geometry(window):
        """Left, top, width and height of a window of the display."""
        lines = dict(line.split("=") for line in xdotool("getwindowgeometry", "--shell", window).splitlines())
        return tuple(int(lines[k]) for k in ("X", "Y", "WIDTH", "HEIGHT"))

    def place(self):
        """Looks up where the window lies now."""
        self.x, self.y, self.width, self.height = self.geometry(self.window)
        self.scale = min(self.width / PANEL_WIDTH, self.height / PANEL_HEIGHT)

    def point(self, name):
        """Where the hand goes for a control: its middle, in pixels of the display."""
        x, y, w, h = self.controls[name]
        x += self.turned.get(name, 0)
        return self.x + round((x + w / 2) * self.scale), self.y + round((y + h / 2) * self.scale)

    def _middle(self, name, part=0.3):
        """A rectangle about the middle of a control, in pixels of the display."""
        x, y, w, h = self.controls[name]
        scaled = lambda v: round(v * self.scale)
        return (self.x + scaled(x + w * (1 - part) / 2), self.y + scaled(y + h * (1 - part) / 2),
                max(1, scaled(w * part)), max(1, scaled(h * part)))

    def on_screen(self, pixels):
        """So many written pixels on a display of this fineness."""
        return (pixels * self.dpi + 48) // 96

    def regions(self):
        """name: (left, top, right, bottom) of the strip's boxes and the card dialog, in pixels of the window."""
        w, h, px = self.width, self.height, self.on_screen
        dw, dh = int(w * 0.72), int(h * 0.86)
        left, top = (w - dw) // 2, (h - dh) // 2
        right, bottom, middle = left + dw, top + dh, top + dh // 2
        from_left = lambda x0, x1: (px(x0), px(12), px(x1), px(40))
        from_right = lambda x0, x1: (w - px(x0), px(12), w - px(x1), px(40))
        turner = lambda x0, x1: (x0, middle - px(27), x1, middle + px(27))
        buttons = left + (dw - px(296)) // 2
        button = lambda x0, x1: (buttons + px(x0), bottom - px(42), buttons + px(x1), bottom - px(12))
        return {"INFO": from_left(64, 142), "BPM": from_left(442, 542),
                "CARDS": from_right(142, 64), "MIDI": from_right(232, 154), "EFFECTS": from_right(322, 244),
                "dialog": (left, top, right, bottom),
                "previous": turner(left + px(22), left + px(76)), "next": turner(right - px(76), right - px(22)),
                "TITLE": button(0, 92), "SAVE": button(102, 194), "LOAD": button(204, 296),
                "CANCEL": (right - px(104), top + px(10), right - px(16), top + px(38))}

    def click_at(self, x, y):
        """A click on a pixel of the window."""
        xdotool("mousemove", self.x + x, self.y + y, "click", "1")
        time.sleep(HAND)

    def choose(self, *regions):
        """Clicks boxes of the strip and the card dialog."""
        for region in regions:
            left, top, right, bottom = self.regions()[region]
            self.click_at((left + right) // 2, (top + bottom) // 2)

    def click(self, *names):
        for name in names:
            x, y = self.point(name)
            self.click_at(x - self.x, y - self.y)

    def drag(self, name, dx, dy):
        x, y = self.point(name)
        xdotool("mousemove", x, y, "mousedown", "1")
        steps = max(4, (abs(dx) + abs(dy)) // 40)
        for i in range(1, steps + 1):
            xdotool("mousemove", x + dx * i // steps, y + dy * i // steps)
            time.sleep(0.01)
        time.sleep(HAND)
        xdotool("mouseup", "1")
        time.sleep(HAND)

    def slide(self, name, position):
        """Drags a slider to about a position 0..650; returns the one that the program has then."""
        x, _ = self.point(name)
        dx = round((position - self.turned[name]) * self.scale)
        self.drag(name, dx, 0)
        units = lambda pixel: int((pixel - self.x) / self.scale)
        self.turned[name] = min(650, max(0, self.turned[name] + units(x + dx) - units(x)))
        return self.turned[name]

    def wheel(self, name, notches, *held):
        xdotool("mousemove", *self.point(name))
        for key in held:
            xdotool("keydown", key)
        for _ in range(abs(notches)):
            xdotool("click", "4" if notches > 0 else "5")
            time.sleep(0.05)
        for key in held:
            xdotool("keyup", key)
        time.sleep(HAND)

    def press(self, key):
        """A key for the panel, once the window manager has given it the keyboard."""
        wait_until(lambda: xdotool("getwindowfocus") == self.window, "the keyboard")
        xdotool("key", key)
        time.sleep(HAND)

    def set_steps(self, line, steps):
        """Sets steps 0..15 of line 0..5."""
        self.click(*(f"bottone_{16 * line + step + 1:03}" for step in steps))

    def screenshot(self):
        """The whole display."""
        raw = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"], check=True, capture_output=True).stdout
        width = int(xdotool("getdisplaygeometry").split()[0])
        return Picture(width, len(raw) // (3 * width), raw)

    def save(self, picture, file):
        """The panel's part of a picture as a PNG file."""
        picture.save(file, self.x, self.y, self.width, self.height)

    def brightness(self, name, picture=None):
        return (picture or self.screenshot()).brightness(*self._middle(name))

    def greener(self, region):
        """How much more green than red a box of the strip shows."""
        left, top, right, bottom = self.regions()[region]
        return self.screenshot().greener(self.x + left, self.y + top, right - left, bottom - top)

    def wait_for_end(self, seconds=30):
        return self.process.wait(timeout=seconds)

    def close(self):
        """Ends the program if it still runs; the code it ended with."""
        if self.process.poll() is None:
            xdotool("windowfocus", self.window, "key", "Escape")
            try:
                self.process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        return self.process.returncode


class Recorder:
    """What the sound sink hears: raw 16-bit stereo at 48 kHz, from now on."""

    def __init__(self, file):
        self.output = open(file, "wb")
        self.process = subprocess.Popen(["parec", "-d", "out.monitor", "--raw", "--format=s16le", "--rate=48000", "--channels=2",
                                         "--latency-msec=20"], stdout=self.output, stderr=subprocess.DEVNULL)

    def stop(self):
        self.process.terminate()
        self.process.wait()
        self.output.close()
