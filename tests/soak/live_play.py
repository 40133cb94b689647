#!/usr/bin/env python3
"""Plays the program for a long time: every window opened and closed, cards read, the tempo swept, over and over.

usage: live_play.py BUILD_FOLDER MINUTES      inside scripts/wine-env --virtual

Fails when the sound device ran out of buffers, when memory grows, or when the program does not end well. A gap is excused
when the machine itself stood still then: when processes that only sleep, one on each processor, woke late by half of what
the queue holds.
"""
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "e2e"))
from played import STEPS, Played  # noqa: E402
from player import wait_until, xdotool  # noqa: E402
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO, TITLE  # noqa: E402

MINUTES = float(sys.argv.pop(1))
MEMORY = pathlib.Path("/dev/shm")       # a busy disk would hold up whoever records the sound
ENABLE, FIRST_PRESET, FIRST_SEND, TEMPO_OK = 2100, 2120, 2000, 3102
GROWTH_KB = 4096
QUEUE_NS = 4 * 512 * 1_000_000_000 // 48000


def working_in(name):
    """The processes whose working directory has that name."""
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            if pathlib.Path(os.readlink(f"/proc/{process}/cwd")).name == name:
                yield process
        except OSError:                 # ended, or not ours to look at
            pass


class LivePlay(Played):
    def setUp(self):
        tempfile.tempdir = str(MEMORY) if MEMORY.is_dir() else None
        super().setUp()
        self.chance = random.Random(1965)

    def turn_effects(self):
        EFFECTS.open_by(self.player, "EFFECTS")
        EFFECTS.push(ENABLE)
        EFFECTS.push(FIRST_PRESET + self.chance.randrange(4))
        EFFECTS.push(FIRST_SEND + self.chance.randrange(12), self.chance.uniform(0.2, 0.9))
        EFFECTS.close(self.player)

    def type_tempo(self):
        TEMPO.open_by(self.player, "BPM")
        xdotool("type", str(self.chance.randint(40, 240)))
        TEMPO.push(TEMPO_OK)
        TEMPO.wait_for_end()

    def sweep_tempo(self):
        for way in (-300, 600, -300):
            self.player.drag("rotary_002", 0, way)
        self.player.wheel("rotary_002", self.chance.choice((-8, 8)))

    def keep_card(self):
        self.player.choose("CARDS", *["next"] * self.chance.randrange(10), "SAVE", "TITLE")
        wait_until(TITLE.controls, "the title dialog")
        xdotool("type", f"ROUND {self.rounds}")
        xdotool("key", "Return")
        TITLE.wait_for_end()

    def read_card(self):
        self.player.choose("LOAD")
        time.sleep(2.0)                                        # on its way
        self.player.click("sw_008")                            # it leaves the machine in edit mode

    def look_at_windows(self):
        PORTS.open_by(self.player, "MIDI")
        PORTS.close(self.player)
        ABOUT.open_by(self.player, "INFO")
        ABOUT.close(self.player, "Escape")

    def change_size(self):
        width = self.player.width
        for key, changed in (("ctrl+minus", lambda: self.player.width < width), ("ctrl+plus", lambda: self.player.width == width)):
            self.player.press(key)
            wait_until(lambda: self.player.place() or changed(), "the other size")

    def let_sound_go_first(self):
        """Windows obeys a program that asks for its clock and its sound to go before all others, and helps the one whose
        window is in front. Wine does not, and its server has to pass on every wake-up."""
        prefix = os.stat(os.environ["WINEPREFIX"])
        program = str(self.player.process.pid)
        others = (thread for thread in os.listdir(f"/proc/{program}/task") if thread != program)    # than the GUI's
        try:
            for thread in (*others, *working_in(f"server-{prefix.st_dev:x}-{prefix.st_ino:x}")):
                os.sched_setscheduler(int(thread), os.SCHED_RR, os.sched_param(1))
            os.setpriority(os.PRIO_PROCESS, int(program), -10)
        except PermissionError:
            print("The sound shares the processors with all other programs: let nothing else run.", file=sys.stderr)

    def start_witnesses(self):
        self.witnessed = []
        for processor in os.sched_getaffinity(0):
            file = self.folder / f"witness_{processor}"
            with open(file, "w") as output:
                witness = subprocess.Popen([sys.executable, str(HERE / "witness.py"), str(processor)], stdout=output,
                                           stderr=subprocess.DEVNULL)
            self.addCleanup(witness.wait)
            self.addCleanup(witness.kill)
            self.witnessed.append(file)

    def standstills(self):
        """When a witness woke and how many ms late."""
        lines = [line.split() for file in self.witnessed for line in file.read_text().splitlines()]
        return sorted((int(at), float(late)) for at, late in lines)

    def resident_kb(self):
        status = pathlib.Path(f"/proc/{self.player.process.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+)", status)[1])

    def gaps(self):
        """Blocks, every gap between two as (when it ended, milliseconds), and the least milliseconds of sound left in the
        queue when a block was handed in; since the first act."""
        count, gaps, least, ends = 0, [], 1e9, None
        for handed, starts, samples in self.blocks():
            if ends and starts > self.acts[0][0]:
                least = min(least, ends - handed)
                if starts > ends:
                    gaps.append((starts, (starts - ends) / 1e6))
            ends = starts + len(samples) // 2 * 1_000_000_000 // 48000 if samples else None     # None: the device was opened
            count += 1
        return count, gaps, least / 1e6

    def judged(self, gaps):
        """The gaps in words, and those for which the machine has no excuse."""
        standstills, words, ours = self.standstills(), [], []
        for at, missing in gaps:
            begin = at - missing * 1e6 - 1.5 * QUEUE_NS         # what was late then has eaten up the queue
            late = sum(late for woken, late in standstills if begin < woken < at + QUEUE_NS / 2)
            act = max(act for act in self.acts if act[0] < at)[1]
            words.append(f"  {(at - self.acts[0][0]) / 1e9:.1f} s: {missing:.1f} ms, {act}, witnesses late by {late:.0f} ms")
            if late < QUEUE_NS / 2e6:
                ours.append(words[-1])
        return words, ours

    def test_hours_of_play_leave_no_gap_and_no_growth(self):
        self.player = self.start(stand_in=True)
        self.set_rhythm(self.player)
        self.player.click("sw_007")
        self.let_sound_go_first()                              # the clock's thread is there now
        self.start_witnesses()
        self.rounds, self.acts, memory, end = 0, [], [], time.monotonic() + 60 * MINUTES
        while time.monotonic() < end:
            for act in (self.turn_effects, self.type_tempo, self.sweep_tempo, self.keep_card, self.read_card,
                        self.look_at_windows, self.change_size):
                self.acts.append((time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW), act.__name__))   # the device's clock
                act()
            self.player.set_steps(self.chance.randrange(6), self.chance.sample(range(STEPS), 4))
            self.rounds += 1
            memory.append(self.resident_kb())
        self.assertEqual(self.player.close(), 0)
        blocks, gaps, least = self.gaps()
        words, ours = self.judged(gaps)
        late = [late for _, late in self.standstills()]
        print(f"\n{self.rounds} rounds in {MINUTES:g} minutes, {blocks} blocks",
              f"{len(gaps)} gaps, {len(ours)} without excuse; least sound in the queue {least:.1f} ms", *words,
              f"witnesses: late {len(late)} times, at most by {max(late, default=0):.0f} ms",
              f"resident KB: first {memory[0]}, middle {memory[len(memory) // 2]}, last {memory[-1]}", sep="\n", file=sys.stderr)
        self.assertEqual(ours, [])
        self.assertLess(memory[-1], memory[0] + GROWTH_KB)


if __name__ == "__main__":
    unittest.main(verbosity=2)
