# SPDX-License-Identifier: MIT
"""Base class of the end-to-end tests: the program in a folder of its own, a rhythm, and listen.exe.

Test files take the build folder as their first argument and run inside scripts/wine-env --virtual.
"""
import array
import itertools
import math
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from panel_table import INSTRUMENTS, STEP_COUNT  # noqa: E402
from player import Player, wait_until  # noqa: E402

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PROGRAM = BUILD / "Percussomatic.exe"
LISTEN = BUILD / "tests/listen.exe"
FAKE_WINMM = BUILD / "tests/winmm.dll"
HEADER = struct.Struct("<qqq")  # listen_recording.h: written and started in ns, frames

# By line: instruments (A before B), slider position 0..650, steps. Every step is audible.
RHYTHM = [
    (("Cymbal 1",), 300, (0,)),
    (("Cymbal 2", "Snare"), 520, (4, 12)),
    (("Charleston",), 650, (2, 6, 10, 14)),
    (("Clave",), 455, (0, 3, 6, 10, 12)),
    (("Block 2", "Timbal 1"), 390, (7, 15)),
    (("Block 1",), 650, range(STEP_COUNT)),
]


def listen(*arguments):
    """The lines that listen.exe prints, split into words."""
    done = subprocess.run(["wine64", str(LISTEN), *map(str, arguments)], capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"listen {arguments}: {done.stdout}{done.stderr}")
    return [line.split() for line in done.stdout.splitlines()]


def fit_line(values):
    """Intercept and slope of the least-squares line through (0, v0), (1, v1), ..."""
    n = len(values)
    mean_x, mean_y = (n - 1) / 2, sum(values) / n
    covariance = sum((i - mean_x) * (v - mean_y) for i, v in enumerate(values))
    slope = covariance / sum((i - mean_x) ** 2 for i in range(n))
    return mean_y - slope * mean_x, slope


def common_interval(stretches):
    """Slope of the least-squares lines through stretches that each have an intercept of their own."""
    spread = along = 0.0
    for values in stretches:
        mean_x = (len(values) - 1) / 2
        spread += sum((i - mean_x) ** 2 for i in range(len(values)))
        along += sum((i - mean_x) * value for i, value in enumerate(values))
    return along / spread


class ProgramTestCase(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="percussomatic-"))
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(PROGRAM, self.folder)
        self.recording = self.folder / "recording.bin"

    def start(self, fake_winmm=False, **variables):
        if fake_winmm:
            shutil.copy(FAKE_WINMM, self.folder)
            variables["PERCUSSOMATIC_TEST_RECORD"] = str(self.recording)
        overrides = "winmm=n,b" if fake_winmm else None
        player = Player(self.folder / PROGRAM.name, self.folder, overrides, variables)
        self.addCleanup(player.close)
        return player

    def saved_card(self, slot):
        """The text of a card, once it has been saved."""
        file = self.folder / f"PunchCards/card_{slot}.vopcard"
        return wait_until(lambda: file.exists() and file.read_text(encoding="utf-8"), file.name)

    def blocks(self):
        """Recorded blocks: written and started in ns, samples. Samples are empty where the device opened."""
        with open(self.recording, "rb") as recording:
            while len(header := recording.read(HEADER.size)) == HEADER.size:
                written, starts, frames = HEADER.unpack(header)
                yield written, starts, array.array("h", recording.read(4 * frames))

    def wait_until_lit(self, player, control, dark, seconds=30):
        wait_until(lambda: player.brightness(control) > dark + 40, f"{control} to light up", seconds)

    def close_within_two_seconds(self, player):
        begin = time.monotonic()
        self.assertEqual(player.close(), 0)
        self.assertLess(time.monotonic() - begin, 2.0)

    def set_rhythm(self, player):
        """Sets RHYTHM; returns it as scenario lines for listen.exe, with the sliders' actual positions."""
        voices = []
        for line, (instruments, position, steps) in enumerate(RHYTHM):
            reached = player.set_line(line, instruments, position, steps)
            samples = [INSTRUMENTS.index(name) for name in instruments]
            voices += [(step, f"{step} {sample} {reached}\n") for step in steps for sample in samples]
        return "".join(words for _, words in sorted(voices, key=lambda voice: voice[0]))

    def replay(self, rhythm):
        """Compares the recording with the engine; returns (block, frame, ns of the write) by step."""
        scenario = self.folder / "scenario.txt"
        scenario.write_text("master 1\n" + rhythm)
        hits = [[int(word) for word in line[1:]] for line in listen("replay", self.recording, scenario)]
        steps = [step for step, *_ in hits]
        expected = [i % STEP_COUNT for i in range(len(hits))]
        self.assertEqual(steps, expected, "a step is missing or duplicated")
        return [tuple(hit[1:]) for hit in hits]

    def heard_steps(self, rhythm):
        """When each step is first heard, in seconds. Block numbers stand still while the device is dry."""
        starts = [starts / 1e9 for _, starts, _ in self.blocks()]
        return [starts[block] + frame / 48000 for block, frame, _ in self.replay(rhythm)]

    def heard_frames(self, rhythm):
        """Where each step begins, in frames of the stream."""
        ends = list(itertools.accumulate(len(samples) // 2 for _, _, samples in self.blocks()))
        return [(ends[block - 1] if block else 0) + frame for block, frame, _ in self.replay(rhythm)]

    def check_grid(self, heard, bpm, steps, tolerance=0.001):
        """Allows for the new grid that the clock begins when a step is late by more than an interval."""
        self.assertGreaterEqual(len(heard), steps)
        stretches, last = [], -math.inf
        for at in heard[:steps]:
            if at - last > 1.75 * 15 / bpm:
                stretches.append([])
            stretches[-1].append(at)
            last = at
        self.assertAlmostEqual(common_interval(stretches) / (15 / bpm), 1, delta=tolerance)
