# SPDX-License-Identifier: MIT
"""The lettering of the panel: a single-stroke alphabet like pantograph engraving.

A glyph has a width and an SVG path of absolute commands, capitals 100 high (0 = top, 100 = baseline).
A line of text becomes one stroked path with round ends; weight is the stroke width.
"""
import re
from typing import NamedTuple

GLYPHS = {
    " ": (26, ""),
    "A": (64, "M0 100L32 0L64 100M12 66H52"),
    "B": (58, "M0 48H33A24 24 0 0 0 33 0H0V100H32A26 26 0 0 0 32 48"),
    "C": (58, "M57 23A29 30 0 0 0 0 30V70A29 30 0 0 0 57 77"),
    "D": (60, "M0 0H28A32 34 0 0 1 60 34V66A32 34 0 0 1 28 100H0V0"),
    "E": (50, "M50 0H0V100H50M0 48H42"),
    "F": (50, "M50 0H0V100M0 48H40"),
    "G": (60, "M58 22A30 30 0 0 0 0 30V70A30 30 0 0 0 60 70V54H36"),
    "H": (58, "M0 0V100M58 0V100M0 48H58"),
    "I": (0, "M0 0V100"),
    "J": (42, "M42 0V74A21 26 0 0 1 0 74"),
    "K": (58, "M0 0V100M55 0L0 60M21 38L58 100"),
    "L": (48, "M0 0V100H48"),
    "M": (70, "M0 100V0L35 64L70 0V100"),
    "N": (60, "M0 100V0L60 100V0"),
    "O": (60, "M0 30A30 30 0 0 1 60 30V70A30 30 0 0 1 0 70V30"),
    "P": (57, "M0 100V0H31A26 27 0 0 1 31 54H0"),
    "Q": (62, "M0 30A30 30 0 0 1 60 30V70A30 30 0 0 1 0 70V30M36 74L62 104"),
    "R": (58, "M0 100V0H31A26 27 0 0 1 31 54H0M29 54L58 100"),
    "S": (56, "M54 22C51 8 41 0 28 0C12 0 2 10 2 24C2 58 56 40 56 74C56 90 45 100 28 100C13 100 3 92 0 77"),
    "T": (58, "M0 0H58M29 0V100"),
    "U": (58, "M0 0V71A29 29 0 0 0 58 71V0"),
    "V": (62, "M0 0L31 100L62 0"),
    "W": (88, "M0 0L22 100L44 12L66 100L88 0"),
    "X": (58, "M0 0L58 100M58 0L0 100"),
    "Y": (60, "M0 0L30 50L60 0M30 50V100"),
    "Z": (56, "M2 0H56L0 100H56"),
    "0": (54, "M0 28A27 28 0 0 1 54 28V72A27 28 0 0 1 0 72V28"),
    "1": (24, "M0 22L24 0V100"),
    "2": (53, "M1 26A26 26 0 0 1 53 27C53 52 0 66 0 100H53"),
    "3": (54, "M2 0H50L24 39A29 31 0 1 1 0 80"),
    "4": (56, "M42 100V0L0 70H56"),
    "5": (54, "M48 0H8L4 44C10 39 17 36 25 36A29 32 0 1 1 0 84"),
    "6": (56, "M42 0C20 16 0 42 0 69A28 31 0 0 0 56 69A28 31 0 0 0 0 69"),
    "7": (52, "M0 0H52L17 100"),
    "8": (56, "M5 24A23 24 0 0 1 51 24A23 24 0 0 1 5 24M0 73A28 26 0 0 1 56 73A28 26 0 0 1 0 73"),
    "9": (56, "M14 100C36 84 56 58 56 31A28 31 0 0 0 0 31A28 31 0 0 0 56 31"),
    "-": (34, "M0 54H34"),
    "/": (36, "M0 106L36 -6"),
    ".": (0, "M0 100H0.1"),
}


class Mark(NamedTuple):
    """Something printed for a control, recorded so that tests can compare it with the panel table."""

    what: str  # the text, or "tick", "bar", "rule"
    of: tuple  # names of the first and the last control it belongs to
    align: str  # see print_for
    x: float  # layout units
    y: float
    cap: float = 0.0  # height of capitals
    colour: str = ""
    value: float = 0.0  # on a scale, 0..1


PRINTED = []


def print_for(what, of, align, x, y, **more):
    """Records a mark. align says what must match the controls:

    middle, start, end: x with their middle, left or right edge; beside: y with their middle;
    slide: x with a slider's index at value; turn: the direction of (x, y) with a pointer at value.
    """
    PRINTED.append(Mark(what, (of, of) if isinstance(of, str) else of, align, x, y, **more))


GAP = 30  # between the strokes of two letters, before tracking
KERN = {
    "AT": -12,
    "TA": -12,
    "LT": -14,
    "LV": -14,
    "LE": -2,
    "RT": -4,
    "AV": -14,
    "VA": -14,
    "CT": -4,
    "TO": -6,
    "OT": -6,
    "PA": -14,
    "LO": -4,
    "CL": -2,
    "AR": -2,
    "MA": -4,
    "7 ": -4,
}


def width(text, cap, tracking=0, stretch=1.0):
    """Distance from the first to the last centre line of a text with capitals cap high."""
    return _edges(text, cap, tracking, stretch)[-1]


def _edges(text, cap, tracking, stretch):
    """Left edge of every letter, then the right edge of the last."""
    k = cap / 100
    x, edges = 0.0, []
    for i, character in enumerate(text):
        edges.append(x)
        x += GLYPHS[character][0] * k * stretch
        if i + 1 < len(text):
            x += (GAP + KERN.get(text[i : i + 2], 0)) * k * stretch + tracking
    return edges + [x]


def _place(glyph, dx, dy, sx, sy):
    """The glyph's path, moved and scaled; the flags of arcs stay."""
    out = []
    for command, numbers in re.findall(r"([MLHVAC])([^MLHVAC]*)", glyph):
        n = [float(v) for v in numbers.split()]
        if command == "H":
            n = [dx + n[0] * sx]
        elif command == "V":
            n = [dy + n[0] * sy]
        elif command == "A":
            n = [n[0] * sx, n[1] * sy, 0, int(n[3]), int(n[4]), dx + n[5] * sx, dy + n[6] * sy]
        else:
            n = [v * sx + dx if i % 2 == 0 else v * sy + dy for i, v in enumerate(n)]
        out.append(command + " ".join(f"{v:.1f}".removesuffix(".0") for v in n))
    return "".join(out)


def letter(
    text,
    x,
    y,
    cap,
    colour,
    anchor="middle",
    weight=None,
    tracking=0,
    stretch=1.0,
    turn=0,
    of=None,
    align=None,
    value=0.0,
):
    """One line of lettering with its baseline at y, turned about (x, y) by turn degrees.

    cap is the height of capitals including their strokes. of names the control, or the first and the
    last control, that the lettering belongs to; see print_for for align.
    """
    print_for(
        text,
        of or (),
        align or anchor,
        x,
        y - cap / 2 if align in ("beside", "turn") else y,
        cap=cap,
        colour=colour,
        value=value,
    )
    weight = weight or max(8.5, cap * 0.155)
    inner = cap - weight  # the centre lines are half a stroke inside
    edges = _edges(text, inner, tracking, stretch)
    left = {"start": x + weight / 2, "middle": x - edges[-1] / 2, "end": x - edges[-1] - weight / 2}[anchor]
    top = y - weight / 2 - inner
    d = "".join(
        _place(GLYPHS[c][1], left + e, top, inner / 100 * stretch, inner / 100) for c, e in zip(text, edges)
    )
    rotation = f' transform="rotate({turn} {x} {y})"' if turn else ""
    return (
        f'<path d="{d}" fill="none" stroke="{colour}" stroke-width="{weight:.1f}" '
        f'stroke-linecap="round" stroke-linejoin="round"{rotation}/>\n'
    )
