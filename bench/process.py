#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the resources of the whole program: start-up time, memory, processor.

usage: scripts/wine-env --virtual bench/process.py start PROGRAM.exe [OLDER.exe] [--rounds N] [--cold]
       scripts/wine-env --virtual bench/process.py memory PROGRAM.exe [--minutes N]
       scripts/wine-env --virtual bench/process.py cpu PROGRAM.exe

start: from the start of the process to the painted panel, and to the first hit in the sound server's output
       when one step is set as fast as possible; alternates with an older program, if given. --cold drops the
       system's file caches before each start (root only).
memory: private and file-backed pages after the start, at the peak of the start, and after N minutes of play.
cpu: share of one core while stopped, playing, playing with the effect, and while a card is being loaded.
"""
import argparse
import array
import ctypes
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "scripts"))
from panel_table import INSTRUMENTS, SLIDERS, START_STOP, STEP_COUNT, SWITCHES, step_button  # noqa: E402
from player import Player, start_capture, xdotool  # noqa: E402

PANEL_PIXEL = 500, 330  # a pixel of the front panel on the default virtual display
AUDIBLE_LEVEL = 300  # of 32767


class Display:
    """Reads single pixels without the cost of a screenshot."""

    def __init__(self):
        self.x = ctypes.CDLL("libX11.so.6")
        self.x.XOpenDisplay.restype = self.x.XGetImage.restype = ctypes.c_void_p
        self.x.XDefaultRootWindow.restype = self.x.XGetPixel.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(None))
        self.root = self.x.XDefaultRootWindow(self.display)

    def pixel(self, x, y):
        root, all_planes = ctypes.c_ulong(self.root), ctypes.c_ulong(0xFFFFFF)
        image = self.x.XGetImage(self.display, root, x, y, 1, 1, all_planes, 2)
        image = ctypes.c_void_p(image)
        value = self.x.XGetPixel(image, 0, 0)
        self.x.XFree(image)  # leaks the few bytes of the pixel
        return value


def pages(process):
    """Private and file-backed resident memory in MB."""
    lines = pathlib.Path(f"/proc/{process}/status").read_text().splitlines()
    fields = dict(line.split(":") for line in lines)
    return int(fields["RssAnon"].split()[0]) / 1024, int(fields["RssFile"].split()[0]) / 1024


def wine_process(folder):
    """The process id of the program in that folder, not of its loader; None before it exists."""
    for entry in pathlib.Path("/proc").iterdir():
        try:
            matches = entry.name.isdigit() and pathlib.Path(folder).name in (entry / "cmdline").read_text()
            if matches and pages(entry.name)[0] > 1:
                return int(entry.name)
        except (OSError, KeyError):
            pass
    return None


def folder_with(program):
    folder = tempfile.TemporaryDirectory()
    copy = pathlib.Path(folder.name) / "Percussomatic.exe"
    copy.write_bytes(pathlib.Path(program).read_bytes())
    return folder, copy


class SoundDetector:
    """Detects when the sound server first plays something."""

    def __init__(self):
        self.detected = threading.Event()
        self.process = start_capture(subprocess.PIPE, latency_ms=5)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        while raw := self.process.stdout.read(960):
            if max(map(abs, array.array("h", raw))) > AUDIBLE_LEVEL:
                self.when = time.monotonic()
                self.detected.set()
                return

    def close(self):
        self.process.terminate()
        self.process.wait()


def one_start(program, display, cold):
    """Seconds to the panel and to the first hit, and the peak of private memory until then."""
    folder, copy = folder_with(program)
    with folder:
        if cold:
            os.sync()
            pathlib.Path("/proc/sys/vm/drop_caches").write_text("3")
        sound = SoundDetector()
        time.sleep(3)  # after idling, the sound server may take blocks only every two seconds
        before = display.pixel(*PANEL_PIXEL)
        peak = 0
        start = time.monotonic()
        quiet = dict(stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        process = subprocess.Popen(["wine64", str(copy)], cwd=folder.name, **quiet)
        program_id = None
        while display.pixel(*PANEL_PIXEL) == before:
            program_id = program_id or wine_process(folder.name)
            peak = max(peak, pages(program_id)[0] if program_id else 0)
            time.sleep(0.002)
        panel = time.monotonic() - start
        player = Player.attach(process)
        pause = ["sleep", 0.03]
        words = []
        for name in (SWITCHES["Bass Drum"], step_button(5, 0)):
            words += ["mousemove", *player.centre(name), *pause, "click", 1, *pause]
        x, y = player.centre(SLIDERS[5])
        words += ["mousemove", x, y, *pause, "mousedown", 1, *pause]
        words += ["mousemove", x + 200, y, *pause, "mouseup", 1]
        xdotool(*words, "mousemove", *player.centre(START_STOP), *pause, "click", 1)
        sound.detected.wait(20)
        hit = sound.when - start
        sound.close()
        player.close()
        return panel, hit, peak


def start(arguments):
    display = Display()
    results = {program: [] for program in arguments.programs}
    for _ in range(arguments.rounds):
        for program in arguments.programs:
            results[program].append(one_start(program, display, arguments.cold))
    print(f"{'':40} {'panel':>9} {'first hit':>10} {'peak, private':>14}")
    for program, rounds in results.items():
        panel, hit, peak = (statistics.median(values) for values in zip(*rounds))
        print(f"{program[-40:]:40} {panel:7.2f} s {hit:8.2f} s {peak:11.0f} MB")


def set_full_rhythm(player):
    for line, instrument in enumerate(INSTRUMENTS[1::2]):
        player.set_line(line, [instrument], 500, range(0, STEP_COUNT, 1 + line % 3))


def memory(arguments):
    folder, copy = folder_with(arguments.programs[0])
    with folder:
        player = Player(copy, folder.name)
        program_id = wine_process(folder.name)
        print(f"{'':24} {'private':>10} {'files':>10}")

        def show(what):
            private, files = pages(program_id)
            print(f"{what:24} {private:7.0f} MB {files:7.0f} MB", flush=True)

        time.sleep(2)
        show("after the start")
        set_full_rhythm(player)
        player.click(START_STOP)
        for minute in range(int(arguments.minutes)):
            time.sleep(60)
            if minute in (0, int(arguments.minutes) - 1):
                show(f"after {minute + 1} min of play")
        player.close()


def cpu(arguments):
    folder, copy = folder_with(arguments.programs[0])
    with folder:
        player = Player(copy, folder.name)
        program_id = wine_process(folder.name)
        stat = pathlib.Path(f"/proc/{program_id}/stat")
        ticks = lambda: sum(map(int, stat.read_text().rsplit(")", 1)[1].split()[11:13]))

        def show(what, seconds):
            before, since = ticks(), time.monotonic()
            time.sleep(seconds)
            share = (ticks() - before) / os.sysconf("SC_CLK_TCK") / (time.monotonic() - since)
            print(f"{what:24} {100 * share:5.1f} % of a core", flush=True)

        time.sleep(2)
        show("stopped", 20)
        set_full_rhythm(player)
        player.choose("CARDS", "SAVE", "CANCEL")
        player.click(START_STOP)
        show("playing, 120 BPM", 20)
        player.choose("EFFECTS")
        time.sleep(1)
        effects = xdotool("search", "--onlyvisible", "--name", "PERCUSOMATIC - EFFECTS").split()[-1]
        x, y, *_ = player.geometry(effects)
        xdotool("mousemove", x + 545, y + 45, "click", 1)
        show("playing with the effect", 20)
        player.choose("CARDS", "LOAD")
        show("loading a card", 1.2)
        player.close()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("what", choices=("start", "memory", "cpu"))
    parser.add_argument("programs", nargs="+")
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--cold", action="store_true")
    arguments = parser.parse_args()
    {"start": start, "memory": memory, "cpu": cpu}[arguments.what](arguments)


if __name__ == "__main__":
    main()
