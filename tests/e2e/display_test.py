#!/usr/bin/env python3
"""Looks at the unmodified program on a fine screen.

usage: display_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual=3840x2160
"""
import subprocess
import unittest

from played import Played
from player import PANEL_HEIGHT, PANEL_WIDTH
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO

SCREEN = 3840, 2160
# By box of the strip: the window, and its outer size where one is given.
WINDOWS = {"INFO": (ABOUT, None), "BPM": (TEMPO, (324, 210)), "MIDI": (PORTS, (470, 515)), "EFFECTS": (EFFECTS, (720, 735))}


class Display(Played):
    def set_dpi(self, dpi):
        subprocess.run(["wine64", "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/t", "REG_DWORD",
                        "/d", str(dpi), "/f"], check=True, capture_output=True)

    def check_box(self, name):
        """It is drawn where the hand looks for it: its outline is lighter than what it encloses."""
        player, picture = self.player, self.player.screenshot()
        left, top, right, bottom = (a + b for a, b in zip(player.regions()[name], (player.x, player.y) * 2))
        upright = lambda x: picture.brightness(x, top + 2, 1, bottom - top - 4)
        level = lambda y: picture.brightness(left + 2, y, right - left - 4, 1)
        for line, inner, place in ((upright, 3, left), (upright, -3, right), (level, 3, top), (level, -3, bottom)):
            self.assertGreater(line(place), line(place + inner) + 40, f"{name}: no edge at {place}")

    def check_window(self, box, window, size):
        window.open_by(self.player, box)
        x, y, width, height = window.place(self.player)
        if size:
            self.assertEqual((width, height), tuple(map(self.player.on_screen, size)), window.title)
        for control in window.controls():
            self.assertTrue(x <= control.left < control.right <= x + width and y <= control.top < control.bottom <= y + height, control)
        window.close(self.player, "alt+F4")

    def check_at(self, dpi):
        self.addCleanup(self.set_dpi, 96)
        self.set_dpi(dpi)
        self.player = player = self.start()
        player.dpi = dpi
        fit = min((SCREEN[0] - 40) / PANEL_WIDTH, (SCREEN[1] - 40) / PANEL_HEIGHT)
        self.assertEqual((player.width, player.height), (int(PANEL_WIDTH * fit + 0.5), int(PANEL_HEIGHT * fit + 0.5)))
        for box in (*WINDOWS, "CARDS"):
            self.check_box(box)
        for box, (window, size) in WINDOWS.items():
            self.check_window(box, window, size)
        self.assertEqual(player.close(), 0)

    def test_every_window_fits_at_every_display_setting(self):
        for dpi in (96, 144, 192):
            with self.subTest(dpi):
                self.check_at(dpi)


if __name__ == "__main__":
    unittest.main(verbosity=2)
