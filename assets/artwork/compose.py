#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Composes the panel from the pictures in png/ as the program shows it, to review the artwork.

usage: compose.py OUT.png [--width 1618 --height 1040] [--edit] [--no-card] [--crop X,Y,W,H]

The scene is a running rhythm at its first step; with --edit every set step is lit. --crop composes a
rectangle, given in layout units, at native size. Pictures are scaled down by averaging.
Needs ImageMagick and the DejaVu fonts.
"""
import argparse
import pathlib
import subprocess

from table import CABINET, CARD_H, CARD_W, CLEAR_CORNERS, CORNERS_A, CORNERS_B, DIAL_SIDE, DIAL_SPAN, FRONT
from table import HOLE_DX, HOLE_DY, HOLE_X0, HOLE_Y0, LENGTH_CORNERS, LOWER, PICTURES, READER, SLIDER_H
from table import SLIDER_W, SLIDER_X, SLIDER_Y, STATIC_PICTURES, STEP_CORNERS, STEP_H, STEP_W, SWITCH_SIDE
from table import TITLE_BOTTOM, TITLE_TOP, corner, panel

PNG = pathlib.Path(__file__).resolve().parent / "png"
SANS, MONO = "DejaVu-Sans", "DejaVu-Sans-Mono-Bold"

# The scene: for each line its set steps, slider offset (0..650), switches A and B.
PATTERN = [
    "1.....1.1.....1.",
    "....1.......1..1",
    "1.1.1.1.1.1.1.1.",
    "1..1..1...1.1...",
    ".......1......11",
    "1..1....1.1.....",
]
SLIDER_OFFSET = [455, 540, 300, 390, 220, 600]
SWITCHES = [(0, 1), (0, 1), (0, 1), (0, 1), (1, 1), (0, 1)]
STEP, LENGTH, MASTER_VALUE, TEMPO_VALUE = 0, 16, 0.75, 0.4
CARD_TITLE = "BOSSA 2"


class Scene:
    """Collects one ImageMagick command line and runs it."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.command = ["convert", "-size", f"{width}x{height}", "xc:#0F0F0F"]
        self.reduced = {}  # (file, width, height): name of the scaled picture in memory

    def picture(self, file, x, y, w, h, degrees=0.0):
        key = (file, w, h)
        if key not in self.reduced:
            self.reduced[key] = f"mpr:picture{len(self.reduced)}"
            scale = ["-scale", f"{w}x{h}!", "-write", self.reduced[key], "+delete"]
            self.command += ["(", str(PNG / file), *scale, ")"]
        turn = ["-virtual-pixel", "none", "-filter", "Triangle", "-distort", "SRT", f"{degrees}"]
        self.command += ["(", self.reduced[key], *(turn if degrees else []), "+repage", ")"]
        self.command += ["-geometry", f"{x:+d}{y:+d}", "-composite"]

    def text(self, text, x, y, font, size, colour):
        """Text centred at x, y."""
        offset = f"{x - self.width // 2:+d}{y - self.height // 2:+d}"
        self.command += ["-fill", colour, "-font", font, "-pointsize", f"{size:.1f}", "-gravity", "center"]
        self.command += ["-annotate", offset, text, "-gravity", "NorthWest"]

    def box(self, left, right, text, size, colour):
        """A box of the strip along the window's upper edge."""
        self.command += ["-fill", "#0F12149B", "-stroke", "#B4B4B4AF"]
        self.command += ["-draw", f"rectangle {left},12 {right},40", "-stroke", "none"]
        self.text(text, (left + right) // 2, 26, SANS, size, colour)

    def write(self, out):
        subprocess.run([*self.command, "-depth", "8", out], check=True)


def controls(edit):
    """File, rectangle and rotation of every control, in drawing order."""

    def switch(place, on=False):
        return "SW_on.PNG" if on else "SW_off.PNG", *place, SWITCH_SIDE, SWITCH_SIDE, 0

    for line, (x, y) in enumerate(STEP_CORNERS):
        for step in range(panel.STEP_COUNT):
            lit = PATTERN[line][step] == "1" and (edit or step == STEP)
            yield f"bottone_{'on' if lit else 'off'}.PNG", x + STEP_W * step, y, STEP_W, STEP_H, 0
    for line, (on_a, on_b) in enumerate(SWITCHES):
        yield switch(CORNERS_A[line], on_a)
        yield switch(CORNERS_B[line], on_b)
        yield switch(CLEAR_CORNERS[line])
    yield switch(corner(panel.CLEAR_ALL))
    yield switch(corner(panel.START_STOP), True)
    yield switch(corner(panel.EDIT), edit)
    yield switch(corner(panel.UNUSED_SWITCH))
    for length, place in LENGTH_CORNERS.items():
        yield switch(place, length == LENGTH)
    for offset, y in zip(SLIDER_OFFSET, SLIDER_Y):
        yield "slider.PNG", SLIDER_X + offset, y, SLIDER_W, SLIDER_H, 0
    yield "PW_on.PNG", *panel.CONTROLS[panel.POWER], 0
    yield "BIN_onPNG.PNG" if edit or STEP == 0 else "BIN_off.PNG", *panel.CONTROLS[panel.BEAT_LAMP], 0
    yield "rotary.PNG", *corner(panel.MASTER_DIAL), DIAL_SIDE, DIAL_SIDE, MASTER_VALUE * DIAL_SPAN
    yield "rotary.PNG", *corner(panel.TEMPO_DIAL), DIAL_SIDE, DIAL_SIDE, TEMPO_VALUE * DIAL_SPAN


def draw_panel(scene, scale, origin, edit):
    for file, place in zip(STATIC_PICTURES, (CABINET, FRONT, LOWER, READER), strict=True):
        x, y, w, h = (int(v * scale + 0.5) for v in place)
        scene.picture(file, x - origin[0], y - origin[1], w, h)
    slack = 1 if scale < 1 else 0  # the program's rectangles end a pixel later
    for file, x, y, w, h, degrees in controls(edit):
        left, top = int(x * scale), int(y * scale)
        scene.picture(
            file,
            left - origin[0],
            top - origin[1],
            int((x + w) * scale + slack) - left,
            int((y + h) * scale + slack) - top,
            degrees,
        )


def draw_strip(scene):
    pale, right = "#EBEBEBDC", scene.width
    scene.box(64, 142, "INFO", 13, pale)
    scene.box(442, 542, "BPM 120.0", 14, "#FFFF00")
    scene.box(right - 322, right - 244, "EFFECTS", 13, pale)
    scene.box(right - 232, right - 154, "MIDI", 13, "#87EB9BE6")
    scene.box(right - 142, right - 64, "CARDS", 13, pale)


def draw_card(scene, scale):
    """A loaded card at rest below the reader's plate."""
    area_left, area_right = int(scene.width * 0.785), int(scene.width * 0.945)
    w = int((area_right - area_left) * 0.58)
    h = w * PICTURES["pounch.PNG"][1] // PICTURES["pounch.PNG"][0]
    left = area_left + (area_right - area_left - w) // 2
    top = int((READER[1] + READER[3]) * scale) + 3
    scene.picture("pounch.PNG", left, top, w, h)
    title = top + (TITLE_TOP + TITLE_BOTTOM) // 2 * h // CARD_H
    scene.text(CARD_TITLE, left + w // 2, title, MONO, w * 0.075 + 2, "#D21212")
    hole = round(PICTURES["hole.PNG"][0] * w / CARD_W)
    for line, steps in enumerate(PATTERN):
        for step in (i for i in range(panel.STEP_COUNT) if steps[i] == "1"):
            scene.picture(
                "hole.PNG",
                left + round((HOLE_X0 + HOLE_DX * line) * w / CARD_W) - hole // 2,
                top + round((HOLE_Y0 - HOLE_DY * step) * h / CARD_H) - hole // 2,
                hole,
                hole,
            )


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out", metavar="OUT.png")
    parser.add_argument("--width", type=int, default=1618)
    parser.add_argument("--height", type=int, default=1040)
    parser.add_argument("--edit", action="store_true")
    parser.add_argument("--no-card", dest="card", action="store_false")
    parser.add_argument("--crop", type=lambda text: [int(v) for v in text.split(",")], metavar="X,Y,W,H")
    arguments = parser.parse_args()

    if arguments.crop:
        x, y, w, h = arguments.crop
        scene = Scene(w, h)
        draw_panel(scene, 1.0, (x, y), arguments.edit)
    else:
        scene = Scene(arguments.width, arguments.height)
        scale = min(scene.width / panel.PANEL_WIDTH, scene.height / panel.PANEL_HEIGHT)
        draw_panel(scene, scale, (0, 0), arguments.edit)
        draw_strip(scene)
        if arguments.card:
            draw_card(scene, scale)
    scene.write(arguments.out)


if __name__ == "__main__":
    main()
