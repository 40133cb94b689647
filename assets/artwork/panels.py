"""The two graphite panels with everything printed on them or cut into them."""
import math

from drawing import blur, circle, ellipse, linear, path, radial, rect, svg
from lettering import letter, width
from materials import SATIN, TRAY, graphite_plate, screws, tray, well
from palette import INK, INK_QUIET, INK_RED, INK_SOFT
from table import (BEAT, CARD_REST, FRONT, LENGTHS, LOWER, MASTER, NAMES, POWER, ROTARY,
                   ROTARY_SPAN, ROTARY_ZERO, SLIDER_H, SLIDER_TRAVEL, SLIDER_W, SLIDER_X, SLIDER_Y,
                   STEP_H, STEP_W, STEPS, SW, SW_A, SW_B, SW_CLEAR, SW_CLEAR_ALL, SW_EDIT,
                   SW_START, TEMPO)

HEADING_Y = 776                     # middle of the column headings and top of the CLEAR frame
STEPS_LEFT, STEPS_RIGHT = STEPS[0][0], STEPS[0][0] + 16 * STEP_W
LABEL_Y = 4952                      # one baseline for all labels of the lower panel


def heading(text, x1, x2, y, cap=58, end=34):
    """A heading in the middle of a rule whose ends point down (up when end is negative)."""
    middle, room = (x1 + x2) / 2, width(text, cap, 8) / 2 + 44
    rule = f"M{x1} {y + end}V{y}H{middle - room:.0f}M{middle + room:.0f} {y}H{x2}V{y + end}"
    return (path(rule, INK_QUIET, 7, stroke_linecap="round", stroke_linejoin="round")
            + letter(text, middle, y + cap / 2, cap, INK, tracking=8))


def switch_well(x, y):
    return well(x - 12, y - 12, SW + 24, SW + 24, 24, 12)


# ---- front panel

def instrument_name(text, corner, flush_right):
    """A name above its switch, flush with the switch's edge that faces the other switch."""
    x, baseline = corner[0] + (SW if flush_right else 0), corner[1] - 42
    anchor, cap = "end" if flush_right else "start", 56
    if width(text, cap) > 500:                                      # only one name is that long
        first, second = text.split()
        return (letter(first, x, baseline - 78, cap, INK, anchor)
                + letter(second, x, baseline, cap, INK, anchor))
    return letter(text, x, baseline, cap, INK, anchor, stretch=0.9 if len(text) > 9 else 1)


def slider_scale(y):
    middle, x0 = y + SLIDER_H / 2, SLIDER_X + SLIDER_W / 2
    mark = SLIDER_TRAVEL // 10
    ticks = "".join(f"M{x0 + mark * i:.0f} {middle + 44:.0f}v{40 if i % 5 == 0 else 24}"
                    for i in range(11))
    out = well(x0 - 16, middle - 15, SLIDER_TRAVEL + 32, 30, 15, 9)
    out += path(ticks, INK_SOFT, 8, stroke_linecap="round", opacity=0.9)
    for value in (0, 5, 10):
        out += letter(str(value), x0 + mark * value, y + SLIDER_H + 68, 50, INK_SOFT)
    return out


def rhythm_line(line):
    x, y = STEPS[line]
    out = ""
    if line:                                                        # a quiet rule between the lines
        rule = (STEPS[line - 1][1] + STEP_H + y) / 2 - 30
        out += path(f"M520 {rule:.0f}H{STEPS_RIGHT + 20}", "#000", 7, opacity=0.45)
        out += path(f"M520 {rule + 7:.0f}H{STEPS_RIGHT + 20}", "#fff", 6, opacity=0.09)
    out += letter(str(line + 1), 585, y + STEP_H / 2 + 60, 120, INK, weight=15)
    out += slider_scale(SLIDER_Y[line])
    name_a, name_b = NAMES[line]
    out += switch_well(*SW_A[line]) + instrument_name(name_a, SW_A[line], flush_right=True)
    out += switch_well(*SW_B[line]) + instrument_name(name_b, SW_B[line], flush_right=False)
    out += well(x - 20, y - 18, 16 * STEP_W + 40, STEP_H + 36, 26, 14)
    for beat in range(4):                                           # every fourth step begins a beat
        left = x + beat * 4 * STEP_W
        out += path(f"M{left + 16} {y - 46}H{left + 4 * STEP_W - 16}", INK_QUIET, 8,
                    stroke_linecap="round", opacity=0.8)
    return out


def clear_frame():
    """The CLEAR keys stand in a red frame, its heading set into the upper edge."""
    left, right, top, bottom = 5715, 6110, HEADING_Y, SW_CLEAR[5][1] + SW + 60
    middle, room = (left + right) / 2, width("CLEAR", 58, 8) / 2 + 36
    out = path(f"M{middle - room:.0f} {top}H{left + 30}A30 30 0 0 0 {left} {top + 30}V{bottom - 30}"
               f"A30 30 0 0 0 {left + 30} {bottom}H{right - 30}A30 30 0 0 0 {right} {bottom - 30}"
               f"V{top + 30}A30 30 0 0 0 {right - 30} {top}H{middle + room:.0f}",
               INK_RED, 8, stroke_linecap="round")
    out += letter("CLEAR", middle, top + 29, 58, INK_RED, tracking=8)
    out += switch_well(*SW_CLEAR_ALL)
    out += letter("ALL", 6025, SW_CLEAR_ALL[1] + SW / 2 + 26, 52, INK_RED)
    for line, (x, y) in enumerate(SW_CLEAR):
        out += switch_well(x, y) + letter(str(line + 1), 6024, y + SW / 2 + 34, 68, INK_RED)
    return out


def front_panel():
    x, y, w, h = FRONT
    defs, out = graphite_plate(FRONT, seed=5)
    out += screws(FRONT, 66, (20, 75, 140, 100))
    out += heading("VOLUME", SLIDER_X, 1438, HEADING_Y)
    out += heading("INSTRUMENTS", 1500, 2440, HEADING_Y)
    out += heading("STEPS", STEPS_LEFT, STEPS_RIGHT, HEADING_Y)
    for line in range(6):
        out += rhythm_line(line)
    for step in range(16):
        out += letter(str(step + 1), STEPS_LEFT + (step + 0.5) * STEP_W, STEPS[0][1] - 74, 60, INK)
    out += clear_frame()
    out += letter("PERCUSSOMATIC", SLIDER_X, 3990, 150, INK, "start", tracking=44, stretch=1.12)
    for text, baseline in (("ELECTRONIC RHYTHM WITH", 3906), ("PUNCHED-CARD MEMORY", 3990)):
        out += letter(text, STEPS_RIGHT, baseline, 54, INK_QUIET, "end", tracking=9)
    return svg((w, h), defs, out, (x, y))


# ---- lower panel

def label(text, x):
    return letter(text, x, LABEL_Y, 56, INK, tracking=5)


def dial(corner, marks, name):
    """Shadow and printed scale of a rotary; the knob itself turns and carries neither.

    marks are the scale's ticks from lowest to highest; a lettered one is long.
    """
    cx, cy = corner[0] + ROTARY / 2, corner[1] + ROTARY / 2
    out = ellipse(cx + 20, cy + 26, 146, 146, "url(#knob_shadow)") + circle(cx, cy, 138, "#0b0b0c")
    ticks, numerals = {8: "", 12: ""}, ""
    for i, text in enumerate(marks):
        a = math.radians(ROTARY_ZERO + ROTARY_SPAN * i / (len(marks) - 1))
        sin, cos = math.sin(a), math.cos(a)
        end = 188 if text else 178
        ticks[12 if text else 8] += (f"M{cx + 158 * sin:.1f} {cy - 158 * cos:.1f}"
                                     f"L{cx + end * sin:.1f} {cy - end * cos:.1f}")
        if text:
            r = 226 + 0.36 * width(text, 48) * abs(sin)             # wide numerals stand further out
            numerals += letter(text, cx + r * sin, cy - r * cos + 24, 48, INK_SOFT)
    for thick, d in ticks.items():
        out += path(d, INK_SOFT, thick, stroke_linecap="round")
    return out + numerals + label(name, cx)


def louvres(x0, x1):
    out = ""
    for y in range(4476, 4476 + 6 * 62, 62):
        out += rect(x0, y, x1 - x0, 30, "url(#lip)", 15)
        out += rect(x0 + 5, y + 4, x1 - x0 - 10, 20, "#0a0a0b", 10)
    return out


def length_switches():
    first, last = LENGTHS[5][0] - 12, LENGTHS[16][0] + SW + 12
    out = well(first - 6, LENGTHS[5][1] - 18, last - first + 12, SW + 36, 24, 12)
    for steps, (x, _) in LENGTHS.items():
        out += letter(str(steps), x + SW / 2, 4495, 60, INK)
    return out + heading("SEQUENCE LENGTH", first, last, LABEL_Y - 28, cap=56, end=-34)


def tray_foot():
    """The end of the card tray, which reaches over the panel's upper edge."""
    x, y, w, h = CARD_REST
    top, foot = LOWER[1], y + h + 14
    return (rect(x - 44, top, w + 118, foot - top + 50, "#000", opacity=0.5, filter="url(#soft)")
            + tray(top, foot) + rect(x - 56, foot, w + 112, 40, "url(#rail_flat)", 8))


def lower_panel():
    x, y, w, h = LOWER
    defs, out = graphite_plate(LOWER, seed=9)
    defs += TRAY + linear("rail_flat", 0, 0, 0, 1, *SATIN) + blur("soft", 18, 6400, 4150, 1100, 420)
    defs += radial("knob_shadow", 0.5, 0.5, 0.5, (0, "#000", 0.9), (0.86, "#000", 0.75), (1, "#000", 0))
    out += screws(LOWER, 66, (60, 15, 110, 160))
    out += louvres(620, 1240) + louvres(5800, 6360)

    px, py, pw, ph = POWER
    out += well(px - 12, py - 12, pw + 24, ph + 24, 22, 12) + label("POWER", px + pw / 2)
    out += dial(MASTER, ["0", "", "", "", "", "5", "", "", "", "", "10"], "MASTER")
    out += dial(TEMPO, ["40", "", "80", "", "120", "", "160", "", "200", "", "240"], "TEMPO BPM")
    bx, by, bw, bh = BEAT
    out += ellipse(bx + bw / 2 + 12, by + bh / 2 + 16, 90, 90, "url(#knob_shadow)")
    out += label("BEAT", bx + bw / 2)
    for corner, text in ((SW_START, "START/STOP"), (SW_EDIT, "EDIT")):
        out += switch_well(*corner) + label(text, corner[0] + SW / 2)
    out += length_switches() + tray_foot()
    return svg((w, h), defs, out, (x, y))
