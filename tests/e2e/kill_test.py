#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Kills the program repeatedly while it saves a card: the file must be the old card or the new one.

usage: kill_test.py BUILD_FOLDER [SAVES]      inside scripts/wine-env --virtual
"""
import os
import random
import subprocess
import sys
import time
import unittest

from e2e_test_case import ProgramTestCase
from panel_table import LINE_COUNT, STEP_COUNT
from player import wait_until

SAVES = int(sys.argv.pop(1)) if len(sys.argv) > 1 and sys.argv[1].isdigit() else 20
MAX_SAVE_SECONDS = 0.004  # from the appearance of the new file to the end of the save


class Kill(ProgramTestCase):
    def start_clean(self):
        """The program removes old temporary files at start. Without a sound device it starts faster."""
        for file in self.temporary_files():
            os.utime(file, (time.time() - 120,) * 2)
        player = self.start(fake_winmm=True, PERCUSSOMATIC_TEST_OPEN_RESULT="4")
        self.assertEqual(self.temporary_files(), [])
        return player

    def temporary_files(self):
        return sorted(self.cards.glob("*.saving"))

    def test_every_killed_save_leaves_a_complete_card(self):
        self.cards = self.folder / "PunchCards"
        card = self.cards / "card_1.vopcard"
        player = self.start_clean()
        player.choose("CARDS", "SAVE")
        old = wait_until(lambda: card.exists() and card.read_text(), "the first card")
        settings = old.splitlines()[:-LINE_COUNT]
        player.press("Escape")  # closes the dialog
        self.assertEqual(player.close(), 0)

        rng = random.Random(1965)
        replaced = leftovers = 0
        for number in range(SAVES):
            place = number % (LINE_COUNT * STEP_COUNT)
            line, step = divmod(place, STEP_COUNT)
            steps = "".join("1" if i == place else "0" for i in range(LINE_COUNT * STEP_COUNT))
            rows = (steps[i : i + STEP_COUNT] for i in range(0, len(steps), STEP_COUNT))
            new = "\n".join([*settings, *rows, ""])
            player = self.start_clean()
            player.set_steps(line, [step])
            player.choose("CARDS")
            x, y, w, h = player.region_on_display("SAVE")
            old_inode, end = card.stat().st_ino, time.monotonic() + 20
            with subprocess.Popen(["xdotool", "mousemove", str(x + w // 2), str(y + h // 2), "click", "1"]):
                # On a busy machine the temporary file may come and go between two checks.
                while not self.temporary_files() and card.stat().st_ino == old_inode:
                    self.assertLess(time.monotonic(), end, "nothing was saved")
                time.sleep(rng.uniform(0, MAX_SAVE_SECONDS))
                player.process.kill()
                player.process.wait()
            now = card.read_text()
            self.assertIn(now, (old, new), f"save {number}")
            replaced += now == new
            leftovers += len(self.temporary_files())
            self.assertEqual(set(self.cards.iterdir()), {card, *self.temporary_files()})
            old = now
        self.start_clean()
        self.assertEqual(card.read_text(), old)
        counts = f"{replaced} new cards, {leftovers} temporary files removed"
        print(f"{SAVES} killed saves: {counts}", file=sys.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
