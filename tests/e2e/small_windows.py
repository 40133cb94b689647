"""The windows beside the panel, as a test sees and handles them: through peek.exe and the mouse."""
import collections
import subprocess
import time

from played import BUILD
from player import wait_until, xdotool

PEEK = BUILD / "tests/peek.exe"
Control = collections.namedtuple("Control", "id left top right bottom state text")


class SmallWindow:
    def __init__(self, window_class, title):
        self.window_class, self.title = window_class, title

    def controls(self):
        """In the order of their creation; empty while the window cannot be seen."""
        done = subprocess.run(["wine64", str(PEEK), self.window_class], capture_output=True, text=True)
        words = [line.split(" ", 6) for line in done.stdout.splitlines()]
        return [Control(*map(int, line[:6]), line[6]) for line in words]

    def control(self, control_id):
        return next(control for control in self.controls() if control.id == control_id)

    def state(self, control_id):
        return self.control(control_id).state

    def texts(self):
        return [control.text for control in self.controls()]

    def open_by(self, player, box):
        player.choose(box)
        wait_until(self.controls, self.title)

    def wait_for_end(self):
        wait_until(lambda: not self.controls(), f"the end of {self.title}")

    def push(self, control_id, part=0.5):
        """Clicks a control, at that part of its width."""
        control = self.control(control_id)
        xdotool("mousemove", round(control.left + part * (control.right - control.left)), (control.top + control.bottom) // 2,
                "click", "1")
        time.sleep(0.15)

    def _window(self):
        return xdotool("search", "--onlyvisible", "--name", f"^{self.title}$").split()[-1]

    def place(self, player):
        """Left, top, width and height on the display."""
        return player.geometry(self._window())

    def close(self, player, key=None):
        """By its close box, or by a key."""
        window = self._window()
        if key:
            xdotool("windowfocus", "--sync", window)
            xdotool("key", key)
        else:
            x, y, width, _ = player.geometry(window)
            xdotool("mousemove", x + width - 12, y + 11, "click", "1")
        self.wait_for_end()


ABOUT = SmallWindow("PercussomaticAboutWindow", "PERCUSSOMATIC - INFO")
EFFECTS = SmallWindow("PercussomaticEffectsWindow", "PERCUSOMATIC - EFFECTS")
PORTS = SmallWindow("LumivardaMidiDeviceSelectorWindow", "Percussomatic MIDI")
TEMPO = SmallWindow("PercussomaticBpmEditDialog", "Set Tempo")
TITLE = SmallWindow("PunchCardTitleDialog", "Punch Card Title")


def answer(title):
    """Waits for a message box and presses its button."""
    shown = lambda: xdotool("search", "--onlyvisible", "--name", f"^{title}$")
    box = wait_until(shown, title).split()[-1]
    xdotool("key", "Return")
    wait_until(lambda: box not in shown().split(), f"the end of {title}")
