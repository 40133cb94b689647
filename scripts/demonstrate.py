#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plays a short rhythm on the installed program with real mouse clicks.

usage: demonstrate FOLDER OUT      writes OUT/panel.png and OUT/heard.wav
"""
import pathlib
import sys
import time
import wave

from panel_table import POWER, START_STOP, step_button
from player import CAPTURE_RATE_HZ, Player, Recorder, wait_until

# By line: instruments, slider position 0..650, steps.
RHYTHM = [
    (("Cymbal 1",), 260, (0,)),
    (("Snare",), 520, (4, 12)),
    (("Charleston",), 420, range(0, 16, 2)),
    (("Clave",), 455, (0, 3, 6, 10, 12)),
    (("Block 2",), 390, (7, 15)),
    (("Bass Drum",), 650, (0, 6, 8, 14)),
]
SECONDS = 8


def write_wave(raw, file):
    with wave.open(str(file), "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(CAPTURE_RATE_HZ)
        out.writeframes(raw)


def first_step(player):
    """A screenshot in which the first step is lit, or None."""
    screenshot = player.screenshot()
    return screenshot if player.brightness(step_button(0, 0), screenshot) > 120 else None


def main(folder, out):
    out.mkdir(parents=True, exist_ok=True)
    player = Player(folder / "Percussomatic.exe", folder)
    try:
        for line, settings in enumerate(RHYTHM):
            player.set_line(line, *settings)
        raw = out / "heard.raw"
        recorder = Recorder(raw)
        player.click(START_STOP)
        time.sleep(SECONDS)
        screenshot = wait_until(lambda: first_step(player), "the first step to light up")
        player.save(screenshot, out / "panel.png")
        player.click(START_STOP)
        recorder.stop()
        write_wave(raw.read_bytes(), out / "heard.wav")
        raw.unlink()
        player.click(POWER)
        code = player.wait_for_end()
    finally:
        player.close()
    print(f"The instrument played and ended with code {code}.")
    for name in ("panel.png", "heard.wav"):
        print((out / name).resolve())
    return code


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
