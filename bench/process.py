#!/usr/bin/env python3
"""What the whole program takes of the machine: time to start, memory, processor.

usage: scripts/wine-env --virtual bench/process.py start PROGRAM.exe [OLDER.exe] [--rounds N] [--cold]
       scripts/wine-env --virtual bench/process.py memory PROGRAM.exe [--minutes N]
       scripts/wine-env --virtual bench/process.py cpu PROGRAM.exe

start: from the start of the process to the painted panel, and to the first hit that the sound server hears from a hand
       that sets one step as fast as it can; with an older program beside it in turns. --cold drops the system's file
       caches before each start (as root only).
memory: private and shared pages after the start, at the peak of the start, and after N minutes of play.
cpu: share of one core while stopped, playing, playing with the effect, and while a card is on its way.
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
from player import Player, read_controls, xdotool  # noqa: E402

PANEL = 500, 330          # a pixel of the front panel on the usual display
HEARD = 300               # of 32767
PAGE_KB = os.sysconf("SC_PAGESIZE") // 1024


class Display:
    """Single pixels, without the price of a screenshot."""

    def __init__(self):
        self.x = ctypes.CDLL("libX11.so.6")
        self.x.XOpenDisplay.restype = self.x.XGetImage.restype = ctypes.c_void_p
        self.x.XDefaultRootWindow.restype = self.x.XGetPixel.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(None))
        self.root = self.x.XDefaultRootWindow(self.display)

    def pixel(self, x, y):
        image = ctypes.c_void_p(self.x.XGetImage(self.display, ctypes.c_ulong(self.root), x, y, 1, 1, ctypes.c_ulong(0xFFFFFF), 2))
        value = self.x.XGetPixel(image, 0, 0)
        self.x.XFree(image)     # leaves the few bytes of the pixel behind
        return value


def pages(process):
    """Private and file-backed resident memory in MB."""
    fields = dict(line.split(":") for line in pathlib.Path(f"/proc/{process}/status").read_text().splitlines())
    return int(fields["RssAnon"].split()[0]) / 1024, int(fields["RssFile"].split()[0]) / 1024


def wine_process(folder):
    """The program of that folder itself, not its loader; nothing before it is there."""
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and pathlib.Path(folder).name in (entry / "cmdline").read_text() and pages(entry.name)[0] > 1:
                return int(entry.name)
        except (OSError, KeyError):
            pass
    return None


def folder_with(program):
    folder = tempfile.TemporaryDirectory()
    copy = pathlib.Path(folder.name) / "Percussomatic.exe"
    copy.write_bytes(pathlib.Path(program).read_bytes())
    return folder, copy


class Ear:
    """Notes when the sound server plays something."""

    def __init__(self):
        self.heard = threading.Event()
        self.process = subprocess.Popen(["parec", "-d", "out.monitor", "--raw", "--format=s16le", "--rate=48000", "--channels=2",
                                         "--latency-msec=5"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        while raw := self.process.stdout.read(960):
            if max(map(abs, array.array("h", raw))) > HEARD:
                self.when = time.monotonic()
                self.heard.set()
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
        ear = Ear()
        time.sleep(3)           # or the sound server, idle until now, would take its blocks as rarely as every two seconds
        before = display.pixel(*PANEL)
        peak = 0
        start = time.monotonic()
        process = subprocess.Popen(["wine64", str(copy)], cwd=folder.name, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        program_id = None
        while display.pixel(*PANEL) == before:
            program_id = program_id or wine_process(folder.name)
            peak = max(peak, pages(program_id)[0] if program_id else 0)
            time.sleep(0.002)
        panel = time.monotonic() - start
        player = object.__new__(Player)
        player.dpi, player.controls = 96, read_controls()
        player.turned = dict.fromkeys(player.controls, 0)
        player.process, player.window = process, xdotool("search", "--onlyvisible", "--name", "^Percussomatic$").split()[0]
        player.place()
        words = []
        for name in ("sw_017", "bottone_081"):
            x, y = player.point(name)
            words += ["mousemove", x, y, "sleep", 0.03, "click", 1, "sleep", 0.03]
        x, y = player.point("slider_006")
        words += ["mousemove", x, y, "sleep", 0.03, "mousedown", 1, "sleep", 0.03, "mousemove", x + 200, y, "sleep", 0.03, "mouseup", 1]
        x, y = player.point("sw_007")
        xdotool(*words, "mousemove", x, y, "sleep", 0.03, "click", 1)
        ear.heard.wait(20)
        hit = ear.when - start
        ear.close()
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


def play(player):
    """A full rhythm."""
    for line, switch in enumerate(("sw_028", "sw_026", "sw_024", "sw_022", "sw_020", "sw_017")):
        player.click(switch)
        player.slide(f"slider_{line + 1:03}", 500)
        player.set_steps(line, range(0, 16, 1 + line % 3))


def memory(arguments):
    folder, copy = folder_with(arguments.programs[0])
    with folder:
        player = Player(copy, folder.name)
        program_id = wine_process(folder.name)
        print(f"{'':24} {'private':>10} {'files':>10}")
        show = lambda what: print(f"{what:24} {pages(program_id)[0]:7.0f} MB {pages(program_id)[1]:7.0f} MB", flush=True)
        time.sleep(2)
        show("after the start")
        play(player)
        player.click("sw_007")
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
        ticks = lambda: sum(map(int, pathlib.Path(f"/proc/{program_id}/stat").read_text().rsplit(")", 1)[1].split()[11:13]))

        def show(what, seconds):
            before, since = ticks(), time.monotonic()
            time.sleep(seconds)
            share = (ticks() - before) / os.sysconf("SC_CLK_TCK") / (time.monotonic() - since)
            print(f"{what:24} {100 * share:5.1f} % of a core", flush=True)

        time.sleep(2)
        show("stopped", 20)
        play(player)
        player.choose("CARDS", "SAVE", "CANCEL")
        player.click("sw_007")
        show("playing, 120 BPM", 20)
        player.choose("EFFECTS")
        time.sleep(1)
        effects = xdotool("search", "--onlyvisible", "--name", "PERCUSOMATIC - EFFECTS").split()[-1]
        x, y, *_ = player.geometry(effects)
        xdotool("mousemove", x + 545, y + 45, "click", 1)
        show("playing with the effect", 20)
        player.choose("CARDS", "LOAD")
        show("a card on its way", 1.2)
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
