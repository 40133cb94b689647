#!/usr/bin/env python3
"""How late steps are heard while a controller floods the instrument, against the same rhythm undisturbed.

usage: scripts/wine-env --virtual bench/step_lateness.py BUILD_FOLDER      (the folder of the windows preset)

Plays the real program with the stand-in for winmm.dll: 60 steps at 120 BPM, then again with 2,000 Control Change
messages in each second. Times are those at which the block with the step's first frame is handed to the device, so
they move in blocks of 10.7 ms.
"""
import pathlib
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/e2e"))
from midi_test import Midi  # noqa: E402
from played import fitted, listen  # noqa: E402

STEPS = 60


class StepLateness(Midi):
    def lateness_ms(self, flood):
        """How long after the fitted grid each step was handed over, the earliest counting as 0."""
        player = self.connected("sw_014=0,20")
        rhythm = self.set_rhythm(player)
        player.click("sw_007")
        if flood:
            self.midi.send_many([(500, bytes([0xB0, 20, 127 * (i % 2)])) for i in range(2000 * STEPS // 8)])
        time.sleep(STEPS * 0.125 + 0.5)
        player.click("sw_007")
        player.close()
        scenario = self.folder / "scenario.txt"
        scenario.write_text("master 1\n" + rhythm)
        handed = [int(line[3]) / 1e6 for line in listen("replay", self.record, scenario) if line[0] == "hit"][:STEPS]
        start, interval = fitted(handed)
        residues = [at - start - interval * i for i, at in enumerate(handed)]
        return sorted(residue - min(residues) for residue in residues)

    def test_lateness(self):
        undisturbed, flooded = self.lateness_ms(False), self.lateness_ms(True)
        print(f"{'':8} {'undisturbed':>12} {'flooded':>12} {'ratio':>7}")
        for name, part in (("p50", 0.5), ("p95", 0.95), ("max", 1.0)):
            a, b = (times[min(len(times) - 1, int(part * len(times)))] for times in (undisturbed, flooded))
            print(f"{name:8} {a:9.1f} ms {b:9.1f} ms {b / a:7.2f}")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "StepLateness.test_lateness"])
