# SPDX-License-Identifier: MIT
"""Operates the real program with mouse and keyboard and observes its pixels and sound.

Uses the display that DISPLAY names; run it inside scripts/wine-env.
"""
import os
import pathlib
import struct
import subprocess
import time
import zlib

from panel_table import CONTROLS, FRONT_PANEL, PANEL_HEIGHT, PANEL_WIDTH, SLIDER_TRAVEL, SLIDERS
from panel_table import SWITCHES, step_button

POLL_SECONDS = 0.05
PAUSE_SECONDS = 0.12  # between two input events
STANDARD_DPI = 96
MIN_STRIP_DPI = 67  # at which the texts of the strip are 9 pixels high
CAPTURE_RATE_HZ = 48000


def wait_until(condition, description, seconds=30):
    """Polls until the condition returns a true value, and returns that value."""
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"waited {seconds} s for {description}")
        time.sleep(POLL_SECONDS)
    return value


def xdotool(*arguments):
    done = subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else ""


def find_panels():
    """The ids of all visible windows with the panel's title."""
    return xdotool("search", "--onlyvisible", "--name", "^Percussomatic$").split()


def start_capture(stdout, latency_ms, environment=None):
    """Records the sound sink as raw 16-bit stereo."""
    command = ["parec", "-d", "out.monitor", "--raw", "--format=s16le", f"--rate={CAPTURE_RATE_HZ}"]
    command += ["--channels=2", f"--latency-msec={latency_ms}"]
    return subprocess.Popen(command, env=environment, stdout=stdout, stderr=subprocess.DEVNULL)


def png_chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


class Screenshot:
    """RGB pixels of the display."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    def rows(self, x, y, w, h):
        for row in range(y, y + h):
            start = 3 * (row * self.width + x)
            yield self.pixels[start : start + 3 * w]

    def brightness(self, x, y, w, h):
        """Mean grey 0..255 of a rectangle."""
        return sum(map(sum, self.rows(x, y, w, h))) / (3 * w * h)

    def green_excess(self, x, y, w, h):
        """Mean green minus mean red of a rectangle, 0..255 each."""
        return sum(sum(row[1::3]) - sum(row[0::3]) for row in self.rows(x, y, w, h)) / (w * h)

    def save(self, file, x, y, w, h):
        """Writes a rectangle as a PNG file."""
        header = png_chunk(b"IHDR", struct.pack(">IIBBBBB", w, h, 8, 2, 0, 0, 0))
        body = zlib.compress(b"".join(b"\0" + row for row in self.rows(x, y, w, h)), 9)
        chunks = header + png_chunk(b"IDAT", body) + png_chunk(b"IEND", b"")
        pathlib.Path(file).write_bytes(b"\x89PNG\r\n\x1a\n" + chunks)


class Player:
    """One run of the program in a folder of its own."""

    def __init__(self, program, folder, overrides=None, variables=None):
        environment = dict(os.environ, **(variables or {}))
        if overrides:
            environment["WINEDLLOVERRIDES"] = overrides + ";" + environment["WINEDLLOVERRIDES"]
        self._attach(
            subprocess.Popen(
                ["wine64", str(program)],
                cwd=folder,
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
        )
        try:
            wait_until(self._find_window, "the panel", 60)
            self.locate_window()
            wait_until(lambda: self.brightness(FRONT_PANEL) > 16, "the first paint of the panel")
        except BaseException:
            self.process.kill()
            self.process.wait()
            raise

    @classmethod
    def attach(cls, process):
        """A player for a process whose panel is already painted."""
        player = object.__new__(cls)
        player._attach(process)
        wait_until(player._find_window, "the panel")
        player.locate_window()
        return player

    def _attach(self, process):
        self.process = process
        self.dpi = STANDARD_DPI  # of the display; tests with another setting overwrite it
        self.slider_positions = dict.fromkeys(SLIDERS, 0)

    def _find_window(self):
        assert self.process.poll() is None, f"the program ended with {self.process.returncode}"
        found = find_panels()
        self.window = found[0] if found else None
        return self.window

    @staticmethod
    def geometry(window):
        """Left, top, width and height of a window in display pixels."""
        lines = xdotool("getwindowgeometry", "--shell", window).splitlines()
        values = dict(line.split("=") for line in lines)
        return tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))

    def locate_window(self):
        """Updates position, size and scale of the panel."""
        self.x, self.y, self.width, self.height = self.geometry(self.window)
        self.scale = min(self.width / PANEL_WIDTH, self.height / PANEL_HEIGHT)

    def centre(self, name):
        """The centre of a control in display pixels."""
        x, y, w, h = CONTROLS[name]
        x += self.slider_positions.get(name, 0)
        return self.x + round((x + w / 2) * self.scale), self.y + round((y + h / 2) * self.scale)

    def _central_part(self, name, part=0.3):
        """A rectangle around the centre of a control, in display pixels."""
        x, y, w, h = CONTROLS[name]
        left, top = x + w * (1 - part) / 2, y + h * (1 - part) / 2
        left, top, w, h = (round(v * self.scale) for v in (left, top, w * part, h * part))
        return self.x + left, self.y + top, max(1, w), max(1, h)

    def dpi_scaled(self, pixels, dpi=None):
        """Converts pixels at 96 DPI to the display's DPI."""
        return (pixels * (dpi or self.dpi) + STANDARD_DPI // 2) // STANDARD_DPI

    def _strip(self):
        """The boxes of regions(): smaller, then closer to each other in a narrow window."""
        names, w = ("INFO", "BPM", "EFFECTS", "MIDI", "CARDS"), self.width
        dpi = max(MIN_STRIP_DPI, min(self.dpi, w // 9))
        px = lambda x: self.dpi_scaled(x, dpi)
        if px(542) <= w - px(322):
            left = ((px(64), px(142)), (px(442), px(542)))
            right = tuple((w - px(x), w - px(x - 78)) for x in (322, 232, 142))
            return {n: (x0, px(12), x1, px(40)) for n, (x0, x1) in zip(names, left + right)}
        box_scale = min(dpi / STANDARD_DPI, w / 412)
        gap_scale, x, strip = (w - 412 * box_scale) / 452, 0, {}
        for name, gap, box in zip(names, (64, 300, 0, 12, 12), (78, 100, 78, 78, 78)):
            left, x = x + gap * gap_scale, x + gap * gap_scale + box * box_scale
            strip[name] = (int(left), px(12), int(x), px(40))
        return strip

    def regions(self):
        """name: (left, top, right, bottom) of the strip's boxes and the card dialog, in window pixels."""
        w, h, px = self.width, self.height, self.dpi_scaled
        dialog_w, dialog_h = int(w * 0.72), int(h * 0.86)
        left, top = (w - dialog_w) // 2, (h - dialog_h) // 2
        right, bottom, middle = left + dialog_w, top + dialog_h, top + dialog_h // 2
        arrow = lambda x0, x1: (x0, middle - px(27), x1, middle + px(27))
        buttons = left + (dialog_w - px(296)) // 2
        button = lambda x0, x1: (buttons + px(x0), bottom - px(42), buttons + px(x1), bottom - px(12))
        return {
            **self._strip(),
            "dialog": (left, top, right, bottom),
            "previous": arrow(left + px(22), left + px(76)),
            "next": arrow(right - px(76), right - px(22)),
            "TITLE": button(0, 92),
            "SAVE": button(102, 194),
            "LOAD": button(204, 296),
            "CANCEL": (right - px(104), top + px(10), right - px(16), top + px(38)),
        }

    def region_on_display(self, region):
        """x, y, width and height of a region in display pixels."""
        left, top, right, bottom = self.regions()[region]
        return self.x + left, self.y + top, right - left, bottom - top

    @staticmethod
    def _click_at(x, y):
        xdotool("mousemove", x, y, "click", "1")
        time.sleep(PAUSE_SECONDS)

    def choose(self, *regions):
        """Clicks boxes of the strip and buttons of the card dialog."""
        for region in regions:
            x, y, w, h = self.region_on_display(region)
            self._click_at(x + w // 2, y + h // 2)

    def click(self, *names):
        """Clicks controls of the panel."""
        for name in names:
            self._click_at(*self.centre(name))

    def drag(self, name, dx, dy):
        x, y = self.centre(name)
        xdotool("mousemove", x, y, "mousedown", "1")
        moves = max(4, (abs(dx) + abs(dy)) // 40)
        for i in range(1, moves + 1):
            xdotool("mousemove", x + dx * i // moves, y + dy * i // moves)
            time.sleep(0.01)
        time.sleep(PAUSE_SECONDS)
        xdotool("mouseup", "1")
        time.sleep(PAUSE_SECONDS)

    def slide(self, name, position):
        """Drags a slider close to a position 0..650 and returns the position it has reached."""
        x, _ = self.centre(name)
        dx = round((position - self.slider_positions[name]) * self.scale)
        self.drag(name, dx, 0)
        units = lambda pixel: int((pixel - self.x) / self.scale)
        reached = self.slider_positions[name] + units(x + dx) - units(x)
        self.slider_positions[name] = min(SLIDER_TRAVEL, max(0, reached))
        return self.slider_positions[name]

    def wheel(self, name, notches):
        xdotool("mousemove", *self.centre(name))
        for _ in range(abs(notches)):
            xdotool("click", "4" if notches > 0 else "5")
            time.sleep(0.05)
        time.sleep(PAUSE_SECONDS)

    def press(self, key):
        """Presses a key once the panel has the keyboard focus."""
        wait_until(lambda: xdotool("getwindowfocus") == self.window, "the keyboard focus")
        xdotool("key", key)
        time.sleep(PAUSE_SECONDS)

    def set_steps(self, line, steps):
        """Sets steps 0..15 of line 0..5."""
        self.click(*(step_button(line, step) for step in steps))

    def set_line(self, line, instruments, position, steps):
        """Turns on instruments, moves the slider, sets steps; returns the slider's actual position."""
        self.click(*(SWITCHES[instrument] for instrument in instruments))
        reached = self.slide(SLIDERS[line], position)
        self.set_steps(line, steps)
        return reached

    def screenshot(self):
        """The whole display."""
        command = ["import", "-window", "root", "-depth", "8", "rgb:-"]
        raw = subprocess.run(command, check=True, capture_output=True).stdout
        width = int(xdotool("getdisplaygeometry").split()[0])
        return Screenshot(width, len(raw) // (3 * width), raw)

    def save(self, screenshot, file):
        """Writes the panel's part of a screenshot as a PNG file."""
        screenshot.save(file, self.x, self.y, self.width, self.height)

    def brightness(self, name, screenshot=None):
        return (screenshot or self.screenshot()).brightness(*self._central_part(name))

    def green_excess(self, region):
        return self.screenshot().green_excess(*self.region_on_display(region))

    def wait_for_end(self, seconds=30):
        return self.process.wait(timeout=seconds)

    def close(self):
        """Ends the program if it is still running; returns its exit code."""
        if self.process.poll() is None:
            xdotool("windowfocus", self.window, "key", "Escape")
            try:
                self.process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        return self.process.returncode


class Recorder:
    """Records the sound sink to a raw file until stop() is called."""

    def __init__(self, file):
        self.output = open(file, "wb")
        self.process = start_capture(self.output, latency_ms=20)

    def stop(self):
        self.process.terminate()
        self.process.wait()
        self.output.close()
