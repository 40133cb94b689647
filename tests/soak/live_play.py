#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plays the program for a long time while it repeatedly uses every window, cards and the tempo.

usage: live_play.py BUILD_FOLDER MINUTES      inside scripts/wine-env --virtual

Fails if the sound device runs out of buffers, if memory grows, or if the program ends with an error. Ignores
gaps during which the machine itself stalled: when processes that only sleep, one on each processor, woke up
late by half of the queue's length.
"""
import multiprocessing
import os
import pathlib
import random
import re
import sys
import tempfile
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "e2e"))
from e2e_test_case import ProgramTestCase  # noqa: E402
from panel_table import EDIT, INSTRUMENTS, LINE_COUNT, START_STOP, STEP_COUNT, TEMPO_DIAL  # noqa: E402
from player import wait_until, xdotool  # noqa: E402
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO, TITLE  # noqa: E402

MINUTES = float(sys.argv.pop(1))
RAM_DISK = pathlib.Path("/dev/shm")  # a busy disk would delay the recording
ENABLE, FIRST_PRESET, FIRST_SEND, TEMPO_OK = 2100, 2120, 2000, 3102
MAX_GROWTH_KB = 4096
QUEUE_NS = 4 * 512 * 1_000_000_000 // 48000


def clock_ns():
    """The clock that the device uses."""
    return time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)


def processes_in(name):
    """The processes whose working directory has that name."""
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            if pathlib.Path(os.readlink(f"/proc/{process}/cwd")).name == name:
                yield process
        except OSError:  # ended, or owned by another user
            pass


def report_stalls(processor, log):
    """Sleeps on one processor at real-time priority; logs late wake-ups: the clock in ns, the delay in ms."""
    os.sched_setaffinity(0, {processor})
    os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
    while True:
        due = clock_ns() + 2_000_000
        time.sleep(0.002)
        woken = clock_ns()
        if woken - due > 5_000_000:
            with open(log, "a") as file:
                file.write(f"{woken} {(woken - due) / 1e6}\n")


class LivePlay(ProgramTestCase):
    def setUp(self):
        tempfile.tempdir = str(RAM_DISK) if RAM_DISK.is_dir() else None
        super().setUp()
        self.rng = random.Random(1965)

    def change_effects(self):
        EFFECTS.open_by(self.player, "EFFECTS")
        EFFECTS.push(ENABLE)
        EFFECTS.push(FIRST_PRESET + self.rng.randrange(4))
        EFFECTS.push(FIRST_SEND + self.rng.randrange(len(INSTRUMENTS)), self.rng.uniform(0.2, 0.9))
        EFFECTS.close(self.player)

    def type_tempo(self):
        TEMPO.open_by(self.player, "BPM")
        xdotool("type", str(self.rng.randint(40, 240)))
        TEMPO.push(TEMPO_OK)
        TEMPO.wait_until_closed()

    def sweep_tempo(self):
        for distance in (-300, 600, -300):
            self.player.drag(TEMPO_DIAL, 0, distance)
        self.player.wheel(TEMPO_DIAL, self.rng.choice((-8, 8)))

    def save_card(self):
        self.player.choose("CARDS", *["next"] * self.rng.randrange(10), "SAVE", "TITLE")
        wait_until(TITLE.controls, "the title dialog")
        xdotool("type", f"ROUND {self.rounds}")
        xdotool("key", "Return")
        TITLE.wait_until_closed()

    def load_card(self):
        self.player.choose("LOAD")
        time.sleep(2.0)  # until the card is inserted
        self.player.click(EDIT)  # loading a card turns edit mode on

    def open_windows(self):
        PORTS.open_by(self.player, "MIDI")
        PORTS.close(self.player)
        ABOUT.open_by(self.player, "INFO")
        ABOUT.close(self.player, "Escape")

    def change_size(self):
        width = self.player.width
        self.player.press("ctrl+minus")
        wait_until(lambda: self.player.locate_window() or self.player.width < width, "the smaller panel")
        self.player.press("ctrl+plus")
        wait_until(lambda: self.player.locate_window() or self.player.width == width, "the former size")

    def prioritize_sound(self):
        """Raises the priority of sound threads and of the Wine server, which forwards every wake-up.

        Windows does so at the program's request; Wine does not."""
        prefix = os.stat(os.environ["WINEPREFIX"])
        program = str(self.player.process.pid)
        threads = set(os.listdir(f"/proc/{program}/task")) - {program}  # not the GUI
        threads.update(processes_in(f"server-{prefix.st_dev:x}-{prefix.st_ino:x}"))
        try:
            for thread in threads:
                os.sched_setscheduler(int(thread), os.SCHED_RR, os.sched_param(1))
            os.setpriority(os.PRIO_PROCESS, int(program), -10)
        except PermissionError:
            print("No permission to raise priorities: run no other programs meanwhile.", file=sys.stderr)

    def start_stall_detectors(self):
        self.stall_log = self.folder / "stalls"
        self.stall_log.touch()
        for processor in os.sched_getaffinity(0):
            detector = multiprocessing.Process(target=report_stalls, args=(processor, self.stall_log))
            detector.start()
            self.addCleanup(detector.join)
            self.addCleanup(detector.kill)

    def stalls(self):
        """When a detector woke up, in ns, and how late, in ms."""
        lines = map(str.split, self.stall_log.read_text().splitlines())
        return [(int(at), float(late)) for at, late in lines]

    def resident_kb(self):
        status = pathlib.Path(f"/proc/{self.player.process.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+)", status)[1])

    def gaps(self):
        """Gaps in the sound since the first action: (end in ns, length in ms)."""
        end = None
        for _, start, samples in self.blocks():
            if end and start > max(end, self.actions[0][0]):
                yield start, (start - end) / 1e6
            duration_ns = len(samples) // 2 * 1_000_000_000 // 48000
            end = start + duration_ns if samples else None  # None: the device was opened

    def classified_gaps(self):
        """Descriptions of all gaps, and of those that no stall of the machine explains."""
        stalls, descriptions, unexplained = self.stalls(), [], []
        for at, missing in self.gaps():
            begin = at - missing * 1e6 - 1.5 * QUEUE_NS  # a stall drains the queue before the gap
            late = sum(late for woken, late in stalls if begin < woken < at + QUEUE_NS / 2)
            _, action = max(action for action in self.actions if action[0] < at)
            descriptions.append(f"  {missing:.1f} ms during {action}, stalled for {late:.0f} ms")
            if late < QUEUE_NS / 2e6:
                unexplained.append(descriptions[-1])
        return descriptions, unexplained

    def test_long_play_leaves_no_gap_and_no_memory_growth(self):
        self.player = self.start(fake_winmm=True)
        self.set_rhythm(self.player)
        self.player.click(START_STOP)
        self.prioritize_sound()  # the clock's thread exists now
        self.start_stall_detectors()
        self.rounds, self.actions, memory, end = 0, [], [], time.monotonic() + 60 * MINUTES
        actions = [self.change_effects, self.type_tempo, self.sweep_tempo, self.save_card, self.load_card]
        actions += [self.open_windows, self.change_size]
        while time.monotonic() < end:
            for action in actions:
                self.actions.append((clock_ns(), action.__name__))
                action()
            steps = self.rng.sample(range(STEP_COUNT), 4)
            self.player.set_steps(self.rng.randrange(LINE_COUNT), steps)
            self.rounds += 1
            memory.append(self.resident_kb())
        self.assertEqual(self.player.close(), 0)
        gaps, unexplained = self.classified_gaps()
        report = [f"{self.rounds} rounds in {MINUTES:g} minutes", *gaps]
        report += [f"{len(gaps)} gaps, {len(unexplained)} unexplained; {len(self.stalls())} stalls"]
        report += [f"resident KB: first {memory[0]}, last {memory[-1]}"]
        print(*report, sep="\n", file=sys.stderr)
        self.assertEqual(unexplained, [])
        self.assertLess(memory[-1], memory[0] + MAX_GROWTH_KB)


if __name__ == "__main__":
    unittest.main(verbosity=2)
