#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Recreates every picture of README and manual from the running program.

usage: scripts/make_pictures.py

Builds the program for Windows, runs the tour test, plays a rhythm, and writes docs/pictures/*.jpg.
"""
import pathlib
import shutil
import subprocess
import tempfile

import panel_file

panel_file.build_if_missing()
import panel_table as panel  # noqa: E402

ROOT = panel_file.ROOT
BUILD, PICTURES = ROOT / "build/windows", ROOT / "docs/pictures"
JPEG_QUALITY = 88  # keeps lettering free of artefacts

# Parts of the panel on the default virtual display, in pixels.
READER, STRIP, TITLE = "300x820+1270+100", "1618x470+0+0", "620x400+499+320"

BOXES = {"INFO": (103, 26), "BPM": (492, 26), "EFFECTS": (1335, 26), "MIDI": (1425, 26), "CARDS": (1515, 26)}
# What the manual numbers, in order, and the offset of each number from the centre, in pixels of the picture.
NUMBERED = {
    "INFO": (62, 0),
    "BPM": (72, 0),
    "EFFECTS": (-62, 0),
    "MIDI": (0, 34),
    "CARDS": (62, 0),
    panel.SLIDERS[0]: (-60, 0),
    panel.SWITCHES_A[0]: (-42, 0),
    panel.step_button(0, 0): (-42, 0),
    panel.CLEAR_ALL: (-46, 0),
    panel.POWER: (-50, 0),
    panel.MASTER_DIAL: (-70, 0),
    panel.TEMPO_DIAL: (70, -46),
    panel.START_STOP: (0, -40),
    panel.EDIT: (0, -40),
    panel.LENGTH_SWITCHES[5]: (-42, 0),
    panel.READER_PLATE: (0, 0),
}


def run(*words):
    subprocess.run([str(word) for word in words], check=True, cwd=ROOT)


def virtual(*words):
    run("scripts/wine-env", "--virtual", "/usr/bin/python3", *words)


def save_picture(source, name, *changes):
    run("convert", source, *changes, "-quality", JPEG_QUALITY, "-strip", PICTURES / f"{name}.jpg")


def number_marks(width):
    """ImageMagick arguments that draw the numbers over a picture of the panel."""
    scale = width / panel.PANEL_WIDTH
    centres = dict(BOXES)
    for name, (x, y, w, h) in panel.CONTROLS.items():
        centres[name] = (x + w / 2) * scale, (y + h / 2) * scale
    drawing = []
    for number, (name, (dx, dy)) in enumerate(NUMBERED.items(), 1):
        x, y = round(centres[name][0] + dx), round(centres[name][1] + dy)
        text = f"text {x - (7 if number < 10 else 13)},{y + 8} '{number}'"
        drawing += ["-fill", "#ffd23c", "-stroke", "black", "-strokewidth", "2"]
        drawing += ["-draw", f"circle {x},{y} {x + 17},{y}", "-stroke", "none", "-fill", "black"]
        drawing += ["-gravity", "none", "-pointsize", "22", "-draw", text]
    return ["-font", "DejaVu-Sans-Bold", *drawing]


def main():
    run("cmake", "--preset", "windows")
    run("cmake", "--build", "--preset", "windows")
    PICTURES.mkdir(exist_ok=True)
    virtual("tests/e2e/tour_test.py", BUILD)
    tour = BUILD / "tour"
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(BUILD / "Percussomatic.exe", folder)
        virtual("scripts/demonstrate.py", folder, folder)
        screenshot = pathlib.Path(folder) / "panel.png"
        identify = ["identify", "-format", "%w", screenshot]
        width = int(subprocess.run(identify, check=True, capture_output=True, text=True).stdout)
        save_picture(screenshot, "panel")
        save_picture(screenshot, "controls", *number_marks(width))
    for name in ("effects", "tempo", "midi", "info"):
        save_picture(tour / f"{name}.png", name)
    save_picture(tour / "cards.png", "cards", "-resize", "75%")
    save_picture(tour / "title.png", "title", "-crop", TITLE, "+repage")
    save_picture(tour / "reader.png", "reader", "-crop", READER, "+repage")
    save_picture(tour / "clock.png", "clock", "-crop", STRIP, "+repage")


if __name__ == "__main__":
    main()
