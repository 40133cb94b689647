#!/usr/bin/env python3
"""How exact the rhythm is: how late against its grid the clock posts the steps and the panel has served them, and by how
much the way from one heard step to the next is too long or too short.

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


def late_ms(times, interval):
    """Against the grid. Where a step came more than a whole one late, the clock began a new grid, and so does this."""
    late, begin = [], 0
    for i in range(1, len(times) + 1):
        if i == len(times) or times[i] - times[i - 1] > 2 * interval:
            part = [at - interval * n for n, at in enumerate(times[begin:i])]
            late += [at - min(part) for at in part]
            begin = i
    return late


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
        interval = 15e3 / BPM
        posted, served = zip(*(map(int, line.split()) for line in (self.folder / "steps.txt").read_text().splitlines()[:STEPS]))
        heard = [block * played.BLOCK_SECONDS * 1000 for block in self.replayed(rhythm)[1:STEPS + 1]]
        # The stream's own time runs on only while the device has buffers, so what counts is the way from step to step.
        between = [b - a - interval for a, b in zip(heard, heard[1:])]
        late = {"posted": late_ms([at / 1e6 for at in posted], interval),
                "served": late_ms([at / 1e6 for at in served], interval),
                "heard": [abs(error) for error in between]}
        print(f"{BPM:g} BPM, {len(posted)} steps, in ms: p50, p99, max")
        for what, values in late.items():
            values = sorted(values)
            print(f"  {what:7} {values[len(values) // 2]:7.2f} {values[int(0.99 * len(values))]:7.2f} {values[-1]:7.2f}")
        print(f"  heard: mean error {statistics.mean(between):.4f} ms, standard deviation {statistics.pstdev(between):.2f} ms")
        OUT.write_text(json.dumps({"bpm": BPM, **late, "between": between}))


if __name__ == "__main__":
    result = played.unittest.TextTestRunner().run(StepTimes())
    sys.exit(not result.wasSuccessful())
