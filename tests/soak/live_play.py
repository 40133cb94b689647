#!/usr/bin/env python3
"""Plays the program for a long time: every window opened and closed, cards read, the tempo swept, over and over.

usage: live_play.py BUILD_FOLDER MINUTES      inside scripts/wine-env --virtual

Fails when the sound device ever ran out of buffers, when memory grows, or when the program does not end well.
"""
import os
import pathlib
import random
import re
import struct
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))
from played import STEPS, Played  # noqa: E402
from player import wait_until, xdotool  # noqa: E402
from small_windows import SmallWindow  # noqa: E402

MINUTES = float(sys.argv.pop(1))
MEMORY = pathlib.Path("/dev/shm")       # a busy disk would hold up whoever records the sound
ENABLE, FIRST_PRESET, FIRST_SEND, TEMPO_OK = 2100, 2120, 2000, 3102
HEAD = struct.Struct("<qqq")            # listen_recording.h: handed and started in ns, frames
GROWTH_KB = 4096


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
        self.effects = SmallWindow("PercussomaticEffectsWindow", "PERCUSOMATIC - EFFECTS")
        self.tempo = SmallWindow("PercussomaticBpmEditDialog", "Set Tempo")
        self.ports = SmallWindow("LumivardaMidiDeviceSelectorWindow", "Percussomatic MIDI")
        self.about = SmallWindow("PercussomaticAboutWindow", "PERCUSSOMATIC - INFO")

    def turn_effects(self):
        self.effects.open_by(self.player, "EFFECTS")
        self.effects.push(ENABLE)
        self.effects.push(FIRST_PRESET + self.chance.randrange(4))
        self.effects.push(FIRST_SEND + self.chance.randrange(12), self.chance.uniform(0.2, 0.9))
        self.effects.close(self.player)

    def type_tempo(self):
        self.tempo.open_by(self.player, "BPM")
        xdotool("type", str(self.chance.randint(40, 240)))
        self.tempo.push(TEMPO_OK)
        wait_until(lambda: not self.tempo.controls(), "the end of the dialog")

    def sweep_tempo(self):
        for way in (-300, 600, -300):
            self.player.drag("rotary_002", 0, way)
        self.player.wheel("rotary_002", self.chance.choice((-8, 8)))

    def keep_card(self):
        self.player.choose("CARDS", *["next"] * self.chance.randrange(10), "SAVE", "TITLE")
        title = lambda: xdotool("search", "--onlyvisible", "--name", "^Punch Card Title$")
        wait_until(title, "the title dialog")
        xdotool("type", f"ROUND {self.rounds}")
        xdotool("key", "Return")
        wait_until(lambda: not title(), "the end of the title dialog")

    def read_card(self):
        self.player.choose("LOAD")
        time.sleep(2.0)                                        # on its way
        self.player.click("sw_008")                            # it leaves the machine in edit mode

    def look_at_windows(self):
        self.ports.open_by(self.player, "MIDI")
        self.ports.close(self.player)
        self.about.open_by(self.player, "INFO")
        self.about.close(self.player, "Escape")

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

    def resident_kb(self):
        status = pathlib.Path(f"/proc/{self.player.process.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+)", status)[1])

    def gaps(self):
        """Blocks; every gap between two, as seconds from the first act, milliseconds and what was done then; and the least
        milliseconds of sound left in the queue when a block was handed in."""
        blocks, gaps, least, begin, ends = 0, [], 1e9, self.acts[0][0], None
        with open(self.record, "rb") as record:
            while len(head := record.read(HEAD.size)) == HEAD.size:
                handed, starts, frames = HEAD.unpack(head)
                if frames == 0:                                # the device was opened
                    ends = None
                    continue
                record.seek(4 * frames, 1)
                if ends is not None and starts > begin:
                    least = min(least, ends - handed)
                    if starts > ends:
                        act = max(act for act in self.acts if act[0] < starts)[1]
                        gaps.append((round((starts - begin) / 1e9, 1), round((starts - ends) / 1e6, 1), act))
                ends = starts + frames * 1_000_000_000 // 48000
                blocks += 1
        return blocks, gaps, least / 1e6

    def test_hours_of_play_leave_no_gap_and_no_growth(self):
        self.player = self.start(stand_in=True)
        self.set_rhythm(self.player)
        self.player.click("sw_007")
        self.let_sound_go_first()                              # the clock's thread is there now
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
        print(f"\n{self.rounds} rounds in {MINUTES:g} minutes, {blocks} blocks, {len(gaps)} gaps (at s, ms, during): {gaps}\n"
              f"least sound in the queue: {least:.1f} ms\n"
              f"resident KB: first {memory[0]}, middle {memory[len(memory) // 2]}, last {memory[-1]}", file=sys.stderr)
        self.assertEqual(gaps, [])
        self.assertLess(memory[-1], memory[0] + GROWTH_KB)


if __name__ == "__main__":
    unittest.main(verbosity=2)
