#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the lateness of steps under a flood of MIDI messages, compared to the same rhythm undisturbed.

usage: scripts/wine-env --virtual bench/step_lateness.py BUILD_FOLDER      (the folder of the windows preset)

Plays the real program with the fake winmm.dll: 60 steps at 120 BPM, then again with 2,000 Control Change
messages per second. A step's time is when the block with its first frame is written to the device, so the
resolution is one block, 10.7 ms.
"""
import pathlib
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/e2e"))
from e2e_test_case import fit_line  # noqa: E402
from midi_test import Midi  # noqa: E402
from panel_table import START_STOP, UNUSED_SWITCH  # noqa: E402

STEPS = 60


class StepLateness(Midi):
    def lateness_ms(self, flood):
        """Delay of each step against the fitted grid, relative to the earliest step."""
        player = self.connected(f"{UNUSED_SWITCH}=0,20")
        rhythm = self.set_rhythm(player)
        player.click(START_STOP)
        if flood:
            messages = [(500, bytes([0xB0, 20, 127 * (i % 2)])) for i in range(2000 * STEPS // 8)]
            self.midi.send_many(messages)
        time.sleep(STEPS * 0.125 + 0.5)
        player.click(START_STOP)
        player.close()
        written_ms = [ns / 1e6 for *_, ns in self.replay(rhythm)[:STEPS]]
        start, interval = fit_line(written_ms)
        residues = [ms - start - interval * i for i, ms in enumerate(written_ms)]
        return sorted(residue - min(residues) for residue in residues)

    def test_lateness(self):
        undisturbed, flooded = self.lateness_ms(False), self.lateness_ms(True)
        print(f"{'':8} {'undisturbed':>12} {'flooded':>12} {'ratio':>7}")
        for name, part in (("p50", 0.5), ("p95", 0.95), ("max", 1.0)):
            a, b = (times[min(len(times) - 1, int(part * len(times)))] for times in (undisturbed, flooded))
            print(f"{name:8} {a:9.1f} ms {b:9.1f} ms {b / a:7.2f}")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "StepLateness.test_lateness"])
