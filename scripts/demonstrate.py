#!/usr/bin/env python3
"""Plays a short rhythm on the installed program with real mouse clicks.

usage: demonstrate.py FOLDER OUT      leaves OUT/panel.png and OUT/heard.wav
"""
import pathlib
import sys
import time
import wave

from player import Player, Recorder, wait_until

# Line 0..5: switches on, slider position 0..650, steps.
RHYTHM = [(("sw_028",), 260, (0,)),
          (("sw_026",), 520, (4, 12)),
          (("sw_024",), 420, range(0, 16, 2)),
          (("sw_022",), 455, (0, 3, 6, 10, 12)),
          (("sw_005",), 390, (7, 15)),
          (("sw_017",), 650, (0, 6, 8, 14))]
SECONDS = 8


def write_wave(raw, file):
    with wave.open(str(file), "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(48000)
        out.writeframes(raw)


def first_step(player):
    """A picture in which the first step is lit."""
    picture = player.screenshot()
    return picture if player.brightness("bottone_001", picture) > 120 else None


def main(folder, out):
    out.mkdir(parents=True, exist_ok=True)
    player = Player(folder / "Percussomatic.exe", folder)
    try:
        for line, (switches, position, steps) in enumerate(RHYTHM):
            player.click(*switches)
            player.slide(f"slider_{line + 1:03}", position)
            player.set_steps(line, steps)
        heard = out / "heard.raw"
        recorder = Recorder(heard)
        player.click("sw_007")
        time.sleep(SECONDS)
        picture = wait_until(lambda: first_step(player), "a look at the first step")
        player.save(picture, out / "panel.png")
        player.click("sw_007")
        recorder.stop()
        write_wave(heard.read_bytes(), out / "heard.wav")
        heard.unlink()
        player.click("pw_001")
        code = player.wait_for_end()
    finally:
        player.close()
    print(f"The instrument played and ended with code {code}.")
    for name in ("panel.png", "heard.wav"):
        print((out / name).resolve())
    return code


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
