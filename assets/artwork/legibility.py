# SPDX-License-Identifier: MIT
"""Checks the legibility: contrast of the lettering, lamps in grey and for colour-blind viewers.

Measured on the rendered pictures, with the lettering colour of the drawing and the background around it.
"""
import functools
import subprocess

import draw
import lettering
from table import CARD_W, FRONT, LOWER, PICTURES, READER

MIN_CAP, MIN_CONTRAST = 45, 4.5  # units (nine pixels at 1618 x 1040), luminance ratio
MIN_LIGHTNESS_STEP = 20  # between a lamp off and on, in CIE lightness 0..100
FINE_PRINT_CAP = 34  # the card's instrument names, which are only read in the dialog
UNIT = 4  # one measured pixel is the mean of 4 x 4

# Dichromats after Machado, Oliveira and Fernandes (2009), severity 1, on linear light.
VISION = {
    "normal": ((1, 0, 0), (0, 1, 0), (0, 0, 1)),
    "protanopia": (
        (0.152286, 1.052583, -0.204868),
        (0.114503, 0.786281, 0.099216),
        (-0.003882, -0.048116, 1.051998),
    ),
    "deuteranopia": (
        (0.367322, 0.860646, -0.227968),
        (0.280085, 0.672501, 0.047413),
        (-0.011820, 0.042940, 0.968881),
    ),
    "tritanopia": (
        (1.255528, -0.076749, -0.178779),
        (-0.078411, 0.930809, 0.147602),
        (0.004733, 0.691367, 0.303900),
    ),
}
LAMPS = {  # name: off, on, measured part (x, y, width, height)
    "step key": ("bottone_off.PNG", "bottone_on.PNG", (36, 38, 106, 108)),
    "switch": ("SW_off.PNG", "SW_on.PNG", (28, 28, 86, 86)),
    "beat": ("BIN_off.PNG", "BIN_onPNG.PNG", (47, 47, 72, 72)),
    "power window": ("PW_off.PNG", "PW_on.PNG", (51, 99, 56, 64)),
}
ROCKER_HALVES = (30, 40, 98, 50), (30, 280, 98, 40)


@functools.cache
def linear(v):
    v /= 255
    return v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4


def luminance(rgb):
    return 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2]


def lightness(y):
    return 116 * y ** (1 / 3) - 16 if y > 0.008856 else 903.3 * y


def contrast(a, b):
    return (max(a, b) + 0.05) / (min(a, b) + 0.05)


def part(png, x, y, w, h):
    """Mean linear colour of a part of a picture, on the colour of a well's floor."""
    command = ["convert", png, "-background", "#161617", "-flatten"]
    command += ["-crop", f"{w}x{h}+{x}+{y}", "+repage", "-depth", "8", "rgb:-"]
    raw = subprocess.run(command, check=True, capture_output=True).stdout
    return [sum(map(linear, raw[c::3])) / (len(raw) // 3) for c in range(3)]


def contrasts(folder):
    """(contrast, mark) of all lettering on the pictures, the lowest contrast first."""
    found = []
    for name, (x0, y0), scale in (
        ("pannello_frontale.png", FRONT[:2], 1),
        ("pannello sotto.PNG", LOWER[:2], 1),
        ("c_scheda.PNG", READER[:2], 1),
        ("pounch.PNG", (0, 0), PICTURES["pounch.PNG"][0] / CARD_W),
    ):
        w, h = (v // UNIT for v in PICTURES[name])
        command = ["convert", folder / name, "-scale", f"{w}x{h}!"]
        command += ["-colorspace", "Gray", "-depth", "8", "gray:-"]
        grey = subprocess.run(command, check=True, capture_output=True).stdout
        lettering.PRINTED.clear()
        draw.DRAWINGS[name]()
        for mark in lettering.PRINTED:
            if not mark.colour:
                continue
            k = scale / UNIT
            middle = mark.y if mark.align in ("beside", "turn") else mark.y - mark.cap / 2
            rows = range(int((middle - mark.cap / 2 - y0) * k), int((middle + mark.cap / 2 - y0) * k) + 1)
            left, right = (int((mark.x + side * 1.2 * mark.cap - x0) * k) for side in (-1, 1))
            near = sorted(v for row in rows for v in grey[row * w + max(0, left) : row * w + right])
            ink = luminance([linear(int(mark.colour[i : i + 2], 16)) for i in (1, 3, 5)])
            # Lettering covers less than half of the area, so this quantile is background.
            ground = linear(near[len(near) * (2 if ink > 0.18 else 3) // 5])
            found.append((contrast(ink, ground), mark))
    return sorted(found, key=lambda item: item[0])


def lamp_steps(folder):
    """Lightness of every lamp off and on for each kind of colour vision."""
    for lamp, (off, on, where) in LAMPS.items():
        colours = [part(folder / name, *where) for name in (off, on)]
        for vision, matrix in VISION.items():
            seen = [[max(0, sum(m * v for m, v in zip(row, colour))) for row in matrix] for colour in colours]
            yield lamp, vision, *(lightness(luminance(rgb)) for rgb in seen)


def rocker_differences(folder):
    """How much lighter the rocker's upper half is than its lower one, off and on, in grey."""
    for name in ("PW_off.PNG", "PW_on.PNG"):
        upper, lower = (lightness(luminance(part(folder / name, *half))) for half in ROCKER_HALVES)
        yield upper - lower


def problems(folder, report):
    weakest = {}
    for ratio, mark in contrasts(folder):
        weakest.setdefault((mark.colour, mark.cap), (ratio, mark.what))
        if ratio < MIN_CONTRAST:
            yield f"{mark.what!r}: contrast {ratio:.1f}"
        if mark.cap < MIN_CAP and mark.cap != FINE_PRINT_CAP:
            yield f"{mark.what!r}: capitals {mark.cap} units high"
    for (colour, cap), (ratio, text) in sorted(weakest.items()):
        report(f"ink {colour}, capitals {cap:3}: contrast {ratio:4.1f} at least ({text})")
    for lamp, vision, off, on in lamp_steps(folder):
        report(f"{lamp:13} {vision:13} lightness {off:3.0f} off, {on:3.0f} on")
        if on - off < MIN_LIGHTNESS_STEP:
            yield f"{lamp} off and on look alike ({vision})"
    off, on = rocker_differences(folder)
    report(f"rocker        upper half lighter than the lower by {off:.0f} off, {on:.0f} on")
    if off < MIN_LIGHTNESS_STEP or on > -MIN_LIGHTNESS_STEP:
        yield "the rocker does not show its position"
