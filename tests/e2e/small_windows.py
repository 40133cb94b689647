# SPDX-License-Identifier: MIT
"""Reads and operates the windows other than the panel, through peek.exe and the mouse."""
import collections
import subprocess
import time

from e2e_test_case import BUILD
from player import wait_until, xdotool

PEEK = BUILD / "tests/peek.exe"
Control = collections.namedtuple("Control", "id left top right bottom state text")


class SmallWindow:
    def __init__(self, window_class, title):
        self.window_class, self.title = window_class, title

    def controls(self):
        """In order of creation; empty while the window is not visible."""
        done = subprocess.run(["wine64", str(PEEK), self.window_class], capture_output=True, text=True)
        words = [line.split(" ", 6) for line in done.stdout.splitlines()]
        return [Control(*map(int, line[:6]), line[6]) for line in words]

    def control(self, control_id):
        return {control.id: control for control in self.controls()}[control_id]

    def state(self, control_id):
        return self.control(control_id).state

    def texts(self):
        return [control.text for control in self.controls()]

    def open_by(self, player, box):
        player.choose(box)
        wait_until(self.controls, self.title)

    def wait_until_closed(self):
        wait_until(lambda: not self.controls(), f"{self.title} to close")

    def push(self, control_id, fraction=0.5):
        """Clicks a control at a fraction of its width."""
        control = self.control(control_id)
        x = round(control.left + fraction * (control.right - control.left))
        xdotool("mousemove", x, (control.top + control.bottom) // 2, "click", "1")
        time.sleep(0.15)

    def select_entry(self, list_id, entry=0, clicks=1):
        devices = self.control(list_id)
        for _ in range(clicks):
            xdotool("mousemove", devices.left + 40, devices.top + 9 + 13 * entry, "click", "1")

    def _window(self):
        return xdotool("search", "--onlyvisible", "--name", f"^{self.title}$").split()[-1]

    def geometry(self, player):
        """Left, top, width and height in display pixels."""
        return player.geometry(self._window())

    def close(self, player, key=None):
        """Closes the window by its close button or by a key."""
        window = self._window()
        if key:
            xdotool("windowfocus", "--sync", window)
            xdotool("key", key)
        else:
            x, y, width, _ = player.geometry(window)
            xdotool("mousemove", x + width - 12, y + 11, "click", "1")
        self.wait_until_closed()


ABOUT = SmallWindow("PercussomaticAboutWindow", "PERCUSSOMATIC - INFO")
EFFECTS = SmallWindow("PercussomaticEffectsWindow", "PERCUSOMATIC - EFFECTS")
PORTS = SmallWindow("LumivardaMidiDeviceSelectorWindow", "Percussomatic MIDI")
TEMPO = SmallWindow("PercussomaticBpmEditDialog", "Set Tempo")
TITLE = SmallWindow("PunchCardTitleDialog", "Punch Card Title")


def confirm_message_box(title):
    shown = lambda: xdotool("search", "--onlyvisible", "--name", f"^{title}$")
    box = wait_until(shown, title).split()[-1]
    xdotool("key", "Return")
    wait_until(lambda: box not in shown().split(), f"{title} to close")
