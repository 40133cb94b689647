#!/usr/bin/env python3
"""Looks at the unmodified program on a fine screen, with a picture of every window in BUILD_FOLDER/display.

usage: display_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual=3840x2160
"""
import subprocess
import unittest

from played import BUILD, PROGRAM, Played
from player import PANEL_HEIGHT, PANEL_WIDTH, wait_until, xdotool
from small_windows import SmallWindow

SCREEN = 3840, 2160
DIALOG_GREY = (0x5C + 0x6C + 0x6E) / 3
# By box of the strip: the window, and its outer size where one is given.
WINDOWS = {"INFO": (SmallWindow("PercussomaticAboutWindow", "PERCUSSOMATIC - INFO"), None),
           "BPM": (SmallWindow("PercussomaticBpmEditDialog", "Set Tempo"), (324, 210)),
           "MIDI": (SmallWindow("LumivardaMidiDeviceSelectorWindow", "Percussomatic MIDI"), (470, 515)),
           "EFFECTS": (SmallWindow("PercussomaticEffectsWindow", "PERCUSOMATIC - EFFECTS"), (720, 735))}


class Display(Played):
    def set_dpi(self, dpi):
        subprocess.run(["wine64", "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/t", "REG_DWORD",
                        "/d", str(dpi), "/f"], check=True, capture_output=True)

    def keep(self, name, *place):
        self.player.screenshot().save(BUILD / f"display/{self.player.dpi}_{name.lower()}.png", *place)

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
        number = wait_until(lambda: xdotool("search", "--onlyvisible", "--name", f"^{window.title}$"), window.title)
        x, y, width, height = self.player.geometry(number)
        if size:
            self.assertEqual((width, height), tuple(map(self.player.on_screen, size)), window.title)
        self.keep(box, x, y, width, height)
        for control in window.controls():
            self.assertTrue(x <= control.left < control.right <= x + width and y <= control.top < control.bottom <= y + height, control)
        xdotool("windowfocus", "--sync", number)
        xdotool("key", "alt+F4")
        wait_until(lambda: not window.controls(), f"the end of {window.title}")

    def check_cards(self):
        player = self.player
        player.choose("CARDS")
        left, top, _, _ = player.regions()["dialog"]
        grey = lambda: abs(player.screenshot().brightness(player.x + left + 4, player.y + top + 4, 8, 8) - DIALOG_GREY) < 2
        wait_until(grey, "the card dialog")
        self.keep("cards", player.x, player.y, player.width, player.height)
        player.choose("CANCEL")
        wait_until(lambda: not grey(), "the end of the card dialog")

    def check_at(self, dpi):
        (BUILD / "display").mkdir(exist_ok=True)
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
        self.check_cards()
        self.assertEqual(player.close(), 0)

    def test_100_percent(self):
        self.check_at(96)

    def test_150_percent(self):
        self.check_at(144)

    def test_200_percent(self):
        self.check_at(192)

    def test_program_carries_icon_version_and_manifest(self):
        listed = subprocess.run(["x86_64-w64-mingw32-windres", PROGRAM, "-O", "rc"], check=True, capture_output=True).stdout
        version = next(line for line in (BUILD / "CMakeCache.txt").read_text().splitlines()
                       if line.startswith("CMAKE_PROJECT_VERSION:")).split("=")[1]
        for words in ("RT_GROUP_ICON", f'"ProductVersion", "{version}"', "RT_MANIFEST", ">true</dpiAware>"):
            self.assertIn(words.encode(), listed)


if __name__ == "__main__":
    unittest.main(verbosity=2)
