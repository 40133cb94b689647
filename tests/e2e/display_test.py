#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the unmodified program on a high-resolution screen at several DPI settings.

usage: display_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual=3840x2160
"""
import subprocess
import unittest

from e2e_test_case import ProgramTestCase
from panel_table import LAYOUT_SIZE
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO

SCREEN = 3840, 2160
# By box of the strip: the window and its outer size, if fixed.
WINDOWS = {"INFO": (ABOUT, None), "BPM": (TEMPO, (324, 210)), "MIDI": (PORTS, (470, 515))}
WINDOWS["EFFECTS"] = EFFECTS, (720, 735)


class Display(ProgramTestCase):
    def set_dpi(self, dpi):
        """Takes effect when Wine starts anew, as after signing in. Its services must not inherit a pipe."""
        add = ["wine64", "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/t", "REG_DWORD"]
        for command in ([*add, "/d", str(dpi), "/f"], ["wineserver", "-k"], ["wineserver", "-w"]):
            subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def check_window(self, box, window, size):
        window.open_by(self.player, box)
        x, y, width, height = window.geometry(self.player)
        if size:
            self.assertEqual((width, height), tuple(map(self.player.dpi_scaled, size)), window.title)
        for control in window.controls():
            self.assertTrue(x <= control.left < control.right <= x + width, control)
            self.assertTrue(y <= control.top < control.bottom <= y + height, control)
        window.close(self.player, "alt+F4")

    def check_at(self, dpi):
        self.addCleanup(self.set_dpi, 96)
        self.set_dpi(dpi)
        self.player = player = self.start()
        player.dpi = dpi
        scale = min((screen - 40) / layout for screen, layout in zip(SCREEN, LAYOUT_SIZE))
        self.assertEqual((player.width, player.height), tuple(int(v * scale + 0.5) for v in LAYOUT_SIZE))
        for box, (window, size) in WINDOWS.items():
            self.check_window(box, window, size)
        self.assertEqual(player.close(), 0)

    def test_every_window_fits_at_every_display_setting(self):
        for dpi in (96, 144, 192):
            with self.subTest(dpi):
                self.check_at(dpi)


if __name__ == "__main__":
    unittest.main(verbosity=2)
