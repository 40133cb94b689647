#!/usr/bin/env python3
"""How exact the rhythm is: against its grid, the times at which the clock posts the steps, at which the panel has served
them, and at which they are heard.

usage: scripts/wine-env --virtual bench/step_times.py BUILD_FOLDER OUT.json BPM [STEPS]

BUILD_FOLDER is one for Windows with benchmarks and end-to-end tests. Plays bench/step_logger.exe, which is the instrument
with a log, through the stand-in for winmm.dll, while the mouse drags a slider and the panel repaints. What is heard is
counted in frames of the recorded stream: a hit begins with a block of 512 frames, 10.67 ms.
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
import played  # noqa: E402
from player import xdotool  # noqa: E402
from small_windows import SmallWindow  # noqa: E402

TEMPO_OK = 3102
played.RHYTHM[0] = (), 300, ()      # silent: its slider is dragged all the time


class StepTimes(played.Played):
    def setUp(self):
        super().setUp()
        shutil.copy(played.BUILD / "bench/step_logger.exe", self.folder / played.PROGRAM.name)

    def runTest(self):
        player = self.start(stand_in=True)
        time.sleep(1)
        rhythm = self.set_rhythm(player)
        tempo = SmallWindow("PercussomaticBpmEditDialog", "Set Tempo")
        tempo.open_by(player, "BPM")
        xdotool("type", f"{BPM:g}")
        tempo.push(TEMPO_OK)
        time.sleep(1)
        player.click("sw_007")
        end = time.monotonic() + STEPS * 15 / BPM + 1
        x, y = player.point("slider_001")
        while time.monotonic() < end:                       # a hand that never rests
            xdotool("mousemove", x, y, "mousedown", "1")
            for i in range(40):
                xdotool("mousemove", x + (i if i < 20 else 40 - i), y)
                time.sleep(0.015)
            xdotool("mouseup", "1")
        player.click("sw_007")
        player.close()
        interval = 15e9 / BPM
        posted, served = zip(*(map(int, line.split()) for line in (self.folder / "steps.txt").read_text().splitlines()[:STEPS]))
        # The clock counts from where the first deadline lay; the earliest post is the nearest to its own.
        grid = min(at - interval * i for i, at in enumerate(posted))
        late = {"posted": [(at - grid - interval * i) / 1e6 for i, at in enumerate(posted)],
                "served": [(at - grid - interval * i) / 1e6 for i, at in enumerate(served)]}
        heard = [block * played.BLOCK_SECONDS * 1000 for block in self.replayed(rhythm)[1:STEPS + 1]]
        start = min(at - interval / 1e6 * i for i, at in enumerate(heard))
        late["heard"] = [at - start - interval / 1e6 * i for i, at in enumerate(heard)]
        gaps = [b - a for a, b in zip(heard, heard[1:])]
        print(f"{BPM:g} BPM, {len(posted)} steps; lateness in ms: p50, p99, max")
        for what, values in late.items():
            values = sorted(values)
            print(f"  {what:7} {values[len(values) // 2]:7.2f} {values[int(0.99 * len(values))]:7.2f} {values[-1]:7.2f}")
        fit = played.fitted(heard)[1]
        print(f"  heard: interval {fit:.4f} ms, written {interval / 1e6:.4f} ms; between two steps: "
              f"standard deviation {statistics.pstdev(gaps):.2f} ms, largest error {max(abs(gap - interval / 1e6) for gap in gaps):.2f} ms")
        OUT.write_text(json.dumps({"bpm": BPM, **late}))


if __name__ == "__main__":
    result = played.unittest.TextTestRunner().run(StepTimes())
    sys.exit(not result.wasSuccessful())
