#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the timing of steps: when the clock posts them and when the panel has processed them, against the
grid, and the error of the interval between consecutive steps in the recorded sound.

usage: scripts/wine-env --virtual bench/step_times.py BUILD_FOLDER OUT.json BPM [STEPS]

BUILD_FOLDER is one for Windows with benchmarks and end-to-end tests. Plays bench/step_logger.exe, the
instrument with a log, through the fake winmm.dll, while the mouse drags a slider and the panel repaints.
Recorded times are frames of the stream: a hit starts with a block of 512 frames, 10.67 ms.
"""
import json
import pathlib
import shutil
import statistics
import sys
import time

BPM, STEPS = float(sys.argv[3]), int(sys.argv[4]) if len(sys.argv) > 4 else 2000
OUT = pathlib.Path(sys.argv[2])
del sys.argv[2:]
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/e2e"))
import e2e_test_case as e2e  # noqa: E402
from panel_table import SLIDERS, START_STOP  # noqa: E402
from player import xdotool  # noqa: E402
from small_windows import TEMPO  # noqa: E402

TEMPO_OK = 3102
e2e.RHYTHM[0] = (), 300, ()  # silent: its slider is dragged all the time


def lateness_ms(times, interval):
    """Against the grid. After a step more than one interval late, clock and measurement start a new grid."""
    late, begin = [], 0
    for i in range(1, len(times) + 1):
        if i == len(times) or times[i] - times[i - 1] > 2 * interval:
            part = [at - interval * n for n, at in enumerate(times[begin:i])]
            late += [at - min(part) for at in part]
            begin = i
    return late


class StepTimes(e2e.ProgramTestCase):
    def setUp(self):
        super().setUp()
        shutil.copy(e2e.BUILD / "bench/step_logger.exe", self.folder / e2e.PROGRAM.name)

    def runTest(self):
        player = self.start(fake_winmm=True)
        time.sleep(1)
        rhythm = self.set_rhythm(player)
        TEMPO.open_by(player, "BPM")
        xdotool("type", f"{BPM:g}")
        TEMPO.push(TEMPO_OK)
        time.sleep(1)
        player.click(START_STOP)
        end = time.monotonic() + STEPS * 15 / BPM + 1
        x, y = player.centre(SLIDERS[0])
        while time.monotonic() < end:
            xdotool("mousemove", x, y, "mousedown", "1")
            for i in range(40):
                xdotool("mousemove", x + (i if i < 20 else 40 - i), y)
                time.sleep(0.015)
            xdotool("mouseup", "1")
        player.click(START_STOP)
        player.close()
        interval = 15e3 / BPM
        lines = (self.folder / "steps.txt").read_text().splitlines()[:STEPS]
        posted, processed = zip(*(map(int, line.split()) for line in lines))
        recorded = [at * 1000 for at in self.heard_steps(rhythm)[1 : STEPS + 1]]
        between = [b - a - interval for a, b in zip(recorded, recorded[1:])]
        late = {
            "posted": lateness_ms([ns / 1e6 for ns in posted], interval),
            "processed": lateness_ms([ns / 1e6 for ns in processed], interval),
            "recorded": [abs(error) for error in between],
        }
        print(f"{BPM:g} BPM, {len(posted)} steps, in ms: p50, p99, max")
        for what, values in late.items():
            values = sorted(values)
            p50, p99 = values[len(values) // 2], values[int(0.99 * len(values))]
            print(f"  {what:9} {p50:7.2f} {p99:7.2f} {values[-1]:7.2f}")
        mean, deviation = statistics.mean(between), statistics.pstdev(between)
        print(f"  recorded: mean error {mean:.4f} ms, standard deviation {deviation:.2f} ms")
        OUT.write_text(json.dumps({"bpm": BPM, **late, "between": between}))


if __name__ == "__main__":
    result = e2e.unittest.TextTestRunner().run(StepTimes())
    sys.exit(not result.wasSuccessful())
