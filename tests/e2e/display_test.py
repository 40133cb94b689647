#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the unmodified program at several DPI settings of the system.

usage: display_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual=WIDTHxHEIGHT
"""
import subprocess
import unittest

from e2e_test_case import ProgramTestCase
from panel_table import LAYOUT_SIZE
from player import xdotool
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO

WINDOWS = {"INFO": ABOUT, "BPM": TEMPO, "MIDI": PORTS, "EFFECTS": EFFECTS}  # by box of the strip


class Display(ProgramTestCase):
    def set_dpi(self, dpi):
        """Takes effect when Wine starts anew, as after signing in. Its services must not inherit a pipe."""
        add = ["wine64", "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/t", "REG_DWORD"]
        for command in ([*add, "/d", str(dpi), "/f"], ["wineserver", "-k"], ["wineserver", "-w"]):
            subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def check_window(self, box, window, screen):
        window.open_by(self.player, box)
        x, y, width, height = window.geometry(self.player)
        self.assertTrue(0 <= x < x + width <= screen[0] and 0 <= y < y + height <= screen[1], window.title)
        for control in window.controls():  # under the system's own frame
            self.assertTrue(control.right <= x + width and control.bottom <= y + height, control)
        window.close(self.player, "alt+F4")

    def check_at(self, dpi):
        self.addCleanup(self.set_dpi, 96)
        self.set_dpi(dpi)
        self.player = player = self.start()
        player.dpi = dpi
        screen = tuple(map(int, xdotool("getdisplaygeometry").split()))
        scale = min((pixels - 40) / layout for pixels, layout in zip(screen, LAYOUT_SIZE))
        self.assertEqual((player.width, player.height), tuple(int(v * scale + 0.5) for v in LAYOUT_SIZE))
        for box, window in WINDOWS.items():
            self.check_window(box, window, screen)
        self.assertEqual(player.close(), 0)

    def test_every_window_fits_at_every_display_setting(self):
        for dpi in (96, 144, 192):
            with self.subTest(dpi):
                self.check_at(dpi)


if __name__ == "__main__":
    unittest.main(verbosity=2)
