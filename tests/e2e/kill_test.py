#!/usr/bin/env python3
"""Kills the program while it saves a card, over and over: the file is always the old card or the new one.

usage: kill_test.py BUILD_FOLDER [SAVES]      inside scripts/wine-env --virtual
"""
import os
import random
import subprocess
import sys
import time
import unittest

from played import STEPS, Played
from player import wait_until

SAVES = int(sys.argv.pop(1)) if len(sys.argv) > 1 and sys.argv[1].isdigit() else 20
SAVE_SECONDS = 0.004                    # from the first look at the new file to the last


class Kill(Played):
    def start_clean(self):
        """Old leftovers go while the program starts. No sound device: this starts faster."""
        for left in self.left_behind():
            os.utime(left, (time.time() - 120,) * 2)
        player = self.start(stand_in=True, PERCUSSOMATIC_TEST_OPEN_RESULT="4")
        self.assertEqual(self.left_behind(), [])
        return player

    def left_behind(self):
        return sorted(self.cards.glob("*.saving"))

    def with_step(self, step):
        """The first card with one step set."""
        lines = self.empty.split("\n")
        line = len(lines) - 7 + step // STEPS
        lines[line] = "".join("1" if i == step % STEPS else "0" for i in range(STEPS))
        return "\n".join(lines)

    def test_every_killed_save_leaves_a_whole_card(self):
        self.cards = self.folder / "PunchCards"
        card = self.cards / "card_1.vopcard"
        player = self.start_clean()
        player.choose("CARDS", "SAVE")
        old = self.empty = wait_until(lambda: card.exists() and card.read_text(), "the first card")
        player.press("Escape")                                 # the dialog
        self.assertEqual(player.close(), 0)

        chance = random.Random(1965)
        kept = replaced = left = 0
        for number in range(SAVES):
            step = number % 96
            new = self.with_step(step)
            player = self.start_clean()
            player.click(f"bottone_{step + 1:03}")
            player.choose("CARDS")
            x0, y0, x1, y1 = player.regions()["SAVE"]
            unsaved, end = card.stat().st_ino, time.monotonic() + 20
            with subprocess.Popen(["xdotool", "mousemove", str(player.x + (x0 + x1) // 2),
                                   str(player.y + (y0 + y1) // 2), "click", "1"]):
                while not self.left_behind() and card.stat().st_ino == unsaved:     # a busy machine may look too late
                    self.assertLess(time.monotonic(), end, "nothing was saved")
                time.sleep(chance.uniform(0, SAVE_SECONDS))
                player.process.kill()
                player.process.wait()
            now = card.read_text()
            self.assertIn(now, (old, new), f"save {number}")
            kept, replaced, left = kept + (now == old), replaced + (now == new), left + len(self.left_behind())
            self.assertEqual(set(self.cards.iterdir()), {card, *self.left_behind()})
            old = now
        self.start_clean()
        self.assertEqual(card.read_text(), old)
        print(f"{SAVES} killed saves: {kept} old cards, {replaced} new ones, {left} files swept", file=sys.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
