"""What the tests that play the program share: the program in a folder of its own, a rhythm, and the listener.

A test file is called with the build folder first, inside scripts/wine-env --virtual.
"""
import array
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from player import Player, wait_until  # noqa: E402

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PROGRAM = BUILD / "Percussomatic.exe"
LISTEN = BUILD / "tests/listen.exe"
STAND_IN = BUILD / "tests/winmm.dll"
BLOCK_SECONDS = 512 / 48000
HEAD = struct.Struct("<qqq")            # listen_recording.h: handed and started in ns, frames
STEPS = 16
SAMPLE_INDEX = {"sw_001": 0, "sw_028": 1, "sw_002": 2, "sw_026": 3, "sw_003": 4, "sw_024": 5,
                "sw_004": 6, "sw_022": 7, "sw_005": 8, "sw_020": 9, "sw_006": 10, "sw_017": 11}

# Line 0..5: switches on (A before B), slider position 0..650 and steps. Every step sounds.
RHYTHM = [(("sw_028",), 300, (0,)),
          (("sw_002", "sw_026"), 520, (4, 12)),
          (("sw_024",), 650, (2, 6, 10, 14)),
          (("sw_022",), 455, (0, 3, 6, 10, 12)),
          (("sw_005", "sw_020"), 390, (7, 15)),
          (("sw_006",), 650, range(STEPS))]


def listen(*words):
    """The lines that the listener prints, split into words."""
    done = subprocess.run(["wine64", str(LISTEN), *map(str, words)], capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"listen {words}: {done.stdout}{done.stderr}")
    return [line.split() for line in done.stdout.splitlines()]


def fitted(values):
    """Start and interval of the straight line through (0, v0), (1, v1), ..."""
    n = len(values)
    mean_x, mean_y = (n - 1) / 2, sum(values) / n
    slope = (sum((i - mean_x) * (v - mean_y) for i, v in enumerate(values))
             / sum((i - mean_x) ** 2 for i in range(n)))
    return mean_y - slope * mean_x, slope


class Played(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="percussomatic-"))
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(PROGRAM, self.folder)
        self.record = self.folder / "record.bin"

    def start(self, stand_in=False, **variables):
        if stand_in:
            shutil.copy(STAND_IN, self.folder)
            variables["PERCUSSOMATIC_TEST_RECORD"] = str(self.record)
        player = Player(self.folder / PROGRAM.name, self.folder, "winmm=n,b" if stand_in else None, variables)
        self.addCleanup(player.close)
        return player

    def card(self, slot):
        """The text of a saved card, once it is there."""
        file = self.folder / f"PunchCards/card_{slot}.vopcard"
        return wait_until(lambda: file.exists() and file.read_text(encoding="utf-8"), file.name)

    def blocks(self):
        """What was written down: when a block was handed in, when it starts, in ns, and its samples. None at an opening."""
        with open(self.record, "rb") as record:
            while len(head := record.read(HEAD.size)) == HEAD.size:
                handed, starts, frames = HEAD.unpack(head)
                yield handed, starts, array.array("h", record.read(4 * frames))

    def end_soon(self, player):
        """Whatever the program is busy with, it ends within two seconds."""
        begun = time.monotonic()
        self.assertEqual(player.close(), 0)
        self.assertLess(time.monotonic() - begun, 2.0)

    def set_rhythm(self, player):
        """Sets the panel; returns the steps as the listener reads them, with the sliders' true places."""
        voices = []
        for line, (switches, position, steps) in enumerate(RHYTHM):
            player.click(*switches)
            place = player.slide(f"slider_{line + 1:03}", position)
            player.set_steps(line, steps)
            voices += [(step, f"{step} {SAMPLE_INDEX[switch]} {place}\n") for step in steps for switch in switches]
        return "".join(words for _, words in sorted(voices, key=lambda voice: voice[0]))

    def replayed(self, rhythm):
        """Block numbers of the steps' first voices, in order, after holding every recorded block against the engine."""
        scenario = self.folder / "scenario.txt"
        scenario.write_text("master 1\n" + rhythm)
        hits = [[int(word) for word in line[1:]] for line in listen("replay", self.record, scenario)]
        self.assertEqual([hit[0] for hit in hits], [i % STEPS for i in range(len(hits))], "a step is missing or double")
        return [hit[1] for hit in hits]

    def check_grid(self, blocks, bpm, steps, within=0.001):
        self.assertGreaterEqual(len(blocks), steps)
        _, interval = fitted([block * BLOCK_SECONDS for block in blocks[:steps]])
        self.assertAlmostEqual(interval / (15 / bpm), 1, delta=within)
