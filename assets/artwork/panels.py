# SPDX-License-Identifier: MIT
"""The two graphite panels with their lettering, wells and openings."""
import math

from drawing import blur, circle, ellipse, path, radial, rect, svg
from lettering import letter, print_for, width
from materials import TRAY, graphite_plate, screws, tray_shoe, well
from palette import INK, INK_QUIET, INK_RED, INK_SOFT
from table import CARD_REST, CLEAR_CORNERS, CORNERS_A, CORNERS_B, DIAL_SIDE, DIAL_SPAN, DIAL_ZERO, FRONT
from table import LENGTH_CORNERS, LINE_INSTRUMENTS, LOWER, SLIDER_H, SLIDER_W, SLIDER_X, SLIDER_Y
from table import STEP_CORNERS, STEP_H, STEP_W, SWITCH_SIDE, corner, panel

HEADING_Y = 776  # middle of the column headings and top of the CLEAR frame
STEPS_LEFT, STEPS_RIGHT = STEP_CORNERS[0][0], STEP_CORNERS[0][0] + panel.STEP_COUNT * STEP_W
GROUPS = (3, 856), (4, 915), (5, 974)  # steps per group, y of the middle of its register
ROW_LABEL = 44  # from a row of step keys up to the baseline above it
KEY_LABEL_Y = 4814  # baseline under the keys of the lower panel
DIAL_LABEL_Y = 4932  # baseline under the rocker and the dials


def heading(text, x1, x2, y, of, cap=58, end=34, flush=True, **how):
    """A heading in the middle of a rule whose ends point down (up when end is negative).

    A flush rule runs from the first control's left edge to the last one's right edge.
    """
    if flush:
        print_for("rule", of, "start", x1, y)
        print_for("rule", of, "end", x2, y)
    middle, room = (x1 + x2) / 2, width(text, cap, 8) / 2 + 44
    rule = f"M{x1} {y + end}V{y}H{middle - room:.0f}M{middle + room:.0f} {y}H{x2}V{y + end}"
    return path(rule, INK_QUIET, 7, stroke_linecap="round", stroke_linejoin="round") + letter(
        text, middle, y + cap / 2, cap, INK, tracking=8, of=of, **how
    )


def switch_well(x, y):
    return well(x - 12, y - 12, SWITCH_SIDE + 24, SWITCH_SIDE + 24, 24, 12)


def instrument_name(text, baseline, of, flush_right):
    """A name above its switch, flush with the switch's edge that faces the other switch."""
    x = corner(of)[0] + (SWITCH_SIDE if flush_right else 0)
    anchor, cap = "end" if flush_right else "start", 56
    if width(text, cap) > 500:  # only one name is that long
        first, second = text.split()
        return letter(first, x, baseline - 78, cap, INK, anchor, of=of) + letter(
            second, x, baseline, cap, INK, anchor, of=of
        )
    return letter(text, x, baseline, cap, INK, anchor, stretch=0.9 if len(text) > 9 else 1, of=of)


def slider_scale(line):
    y, of = SLIDER_Y[line], panel.SLIDERS[line]
    middle, x0 = y + SLIDER_H / 2, SLIDER_X + SLIDER_W / 2
    mark, ticks = panel.SLIDER_TRAVEL // 10, ""
    for i in range(11):
        x = x0 + mark * i
        ticks += f"M{x} {middle + 44}v{40 if i % 5 == 0 else 24}"
        print_for("tick", of, "slide", x, middle + 44, value=i / 10)
    out = well(x0 - 16, middle - 15, panel.SLIDER_TRAVEL + 32, 30, 15, 9)
    out += path(ticks, INK_SOFT, 8, stroke_linecap="round", opacity=0.9)
    for value in (0, 5, 10):
        out += letter(
            str(value),
            x0 + mark * value,
            y + SLIDER_H + 68,
            50,
            INK_SOFT,
            of=of,
            align="slide",
            value=value / 10,
        )
    return out


def group_registers():
    """Where groups of three, four and five steps begin and end.

    Every sequence length ends a group: 6, 9, 12, 15 by threes, 12 and 16 by fours, 5, 10 and 15 by
    fives.
    """
    out = ""
    for size, y in GROUPS:
        out += letter(f"BY {size}", STEPS_LEFT - 26, y + 23, 46, INK_QUIET, "end", tracking=2)
        for first in range(0, panel.STEP_COUNT + 1 - size, size):
            left, right = STEPS_LEFT + first * STEP_W + 16, STEPS_LEFT + (first + size) * STEP_W - 16
            out += path(
                f"M{left} {y + 14}V{y - 8}H{right}",
                INK_QUIET,
                8,
                stroke_linecap="round",
                stroke_linejoin="round",
            )
            print_for(
                "bar",
                (panel.step_button(0, first), panel.step_button(0, first + size - 1)),
                "middle",
                (left + right) / 2,
                y,
            )
    return out


def rhythm_line(line):
    x, y = STEP_CORNERS[line]
    baseline = y - ROW_LABEL
    out = ""
    if line:  # a faint rule between the lines
        rule = (STEP_CORNERS[line - 1][1] + STEP_H + y) / 2 - 34
        out += path(f"M520 {rule:.0f}H{STEPS_RIGHT + 20}", "#000", 7, opacity=0.45)
        out += path(f"M520 {rule + 7:.0f}H{STEPS_RIGHT + 20}", "#fff", 6, opacity=0.09)
    out += letter(
        str(line + 1),
        585,
        y + STEP_H / 2 + 60,
        120,
        INK,
        weight=15,
        of=panel.step_button(line, 0),
        align="beside",
    )
    out += slider_scale(line)
    name_a, name_b = LINE_INSTRUMENTS[line]
    out += switch_well(*CORNERS_A[line]) + switch_well(*CORNERS_B[line])
    out += instrument_name(name_a, baseline, panel.SWITCHES_A[line], flush_right=True)
    out += instrument_name(name_b, baseline, panel.SWITCHES_B[line], flush_right=False)
    out += well(x - 20, y - 18, panel.STEP_COUNT * STEP_W + 40, STEP_H + 36, 26, 14)
    for step in range(panel.STEP_COUNT):  # bright in line 1, dimmer where repeated
        out += letter(
            str(step + 1),
            x + (step + 0.5) * STEP_W,
            baseline,
            48 if line else 60,
            INK_QUIET if line else INK,
            of=panel.step_button(line, step),
        )
    return out


def clear_frame():
    """The red frame around the CLEAR keys, with its heading in the upper edge."""
    left, right, top, bottom = 5715, 6110, HEADING_Y, CLEAR_CORNERS[-1][1] + SWITCH_SIDE + 60
    middle, room = (left + right) / 2, width("CLEAR", 58, 8) / 2 + 36
    out = path(
        f"M{middle - room:.0f} {top}H{left + 30}A30 30 0 0 0 {left} {top + 30}V{bottom - 30}"
        f"A30 30 0 0 0 {left + 30} {bottom}H{right - 30}A30 30 0 0 0 {right} {bottom - 30}"
        f"V{top + 30}A30 30 0 0 0 {right - 30} {top}H{middle + room:.0f}",
        INK_RED,
        8,
        stroke_linecap="round",
    )
    out += letter("CLEAR", middle, top + 29, 58, INK_RED, tracking=8)
    out += switch_well(*corner(panel.CLEAR_ALL))
    out += letter(
        "ALL",
        6025,
        corner(panel.CLEAR_ALL)[1] + SWITCH_SIDE / 2 + 26,
        52,
        INK_RED,
        of=panel.CLEAR_ALL,
        align="beside",
    )
    for line, (x, y) in enumerate(CLEAR_CORNERS):
        out += switch_well(x, y) + letter(
            str(line + 1),
            6025,
            y + SWITCH_SIDE / 2 + 34,
            68,
            INK_RED,
            of=panel.CLEAR_SWITCHES[line],
            align="beside",
        )
    return out


def front_panel():
    x, y, w, h = FRONT
    defs, out = graphite_plate(FRONT, seed=5)
    out += screws(FRONT, 66, (20, 75, 140, 100))
    out += heading(
        "VOLUME",
        SLIDER_X,
        SLIDER_X + panel.SLIDER_TRAVEL + SLIDER_W,
        HEADING_Y,
        panel.SLIDERS[0],
        flush=False,
        align="slide",
        value=0.5,
    )
    switches = (CORNERS_A[0][0] + CORNERS_B[0][0] + SWITCH_SIDE) / 2
    out += heading(
        "INSTRUMENTS",
        switches - 420,
        switches + 420,
        HEADING_Y,
        (panel.SWITCHES_A[0], panel.SWITCHES_B[0]),
        flush=False,
    )
    out += heading(
        "STEPS",
        STEPS_LEFT,
        STEPS_RIGHT,
        HEADING_Y,
        (panel.step_button(0, 0), panel.step_button(0, panel.STEP_COUNT - 1)),
    )
    out += group_registers()
    for line in range(panel.LINE_COUNT):
        out += rhythm_line(line)
    out += clear_frame()
    out += letter(
        "PERCUSSOMATIC", SLIDER_X, 3990, 150, INK, "start", tracking=44, stretch=1.12, of=panel.SLIDERS[0]
    )
    for text, baseline in (("ELECTRONIC RHYTHM WITH", 3906), ("PUNCHED-CARD MEMORY", 3990)):
        out += letter(
            text,
            STEPS_RIGHT,
            baseline,
            54,
            INK_QUIET,
            "end",
            tracking=9,
            of=panel.step_button(0, panel.STEP_COUNT - 1),
        )
    return svg((w, h), defs, out, (x, y))


def label(text, of, baseline=KEY_LABEL_Y):
    x, _, w, _ = panel.CONTROLS[of]
    return letter(text, x + w / 2, baseline, 56, INK, tracking=5, of=of)


def dial(marks, name, of):
    """Shadow and printed scale of a dial; the knob is a separate picture that rotates.

    marks are the texts of the ticks from lowest to highest; ticks with text are longer.
    """
    x, y = corner(of)
    cx, cy = x + DIAL_SIDE / 2, y + DIAL_SIDE / 2
    out = ellipse(cx + 20, cy + 26, 146, 146, "url(#knob_shadow)") + circle(cx, cy, 138, "#0b0b0c")
    ticks, numerals, cap = {8: "", 12: ""}, "", 46
    for i, text in enumerate(marks):
        value = i / (len(marks) - 1)
        a = math.radians(DIAL_ZERO + DIAL_SPAN * value)
        sin, cos = math.sin(a), math.cos(a)
        end = 170 if text else 166
        ticks[12 if text else 8] += (
            f"M{cx + 153 * sin:.1f} {cy - 153 * cos:.1f}" f"L{cx + end * sin:.1f} {cy - end * cos:.1f}"
        )
        print_for("tick", of, "turn", cx + end * sin, cy - end * cos, value=value)
        if text:  # wide numerals are placed further out
            r = 184 + abs(sin) * (width(text, cap) / 2 + 4) + abs(cos) * cap / 2
            numerals += letter(
                text,
                round(cx + r * sin, 1),
                round(cy - r * cos + cap / 2, 1),
                cap,
                INK_SOFT,
                of=of,
                align="turn",
                value=value,
            )
    for thick, d in ticks.items():
        out += path(d, INK_SOFT, thick, stroke_linecap="round")
    return out + numerals + label(name, of, DIAL_LABEL_Y)


def loudspeaker(cx, cy):
    """Countersunk holes in a honeycomb pattern with dark cloth behind them.

    At a distance of 70 they are still three pixels apart at the smallest scale, which avoids moiré.
    """
    honeycomb = [(70 * (i + j / 2), 70 * j * math.sqrt(0.75)) for j in range(-4, 5) for i in range(-6, 7)]
    holes = [(cx + x, cy + y) for x, y in honeycomb if math.hypot(x, y) < 285]
    return "".join(
        circle(f"{x:.1f}", f"{y:.1f}", 23, "url(#lip)")
        + circle(f"{x:.1f}", f"{y:.1f}", 18, "#070708")
        + circle(f"{x + 2:.1f}", f"{y + 3:.1f}", 14, "#141312")
        for x, y in holes
    )


def length_switches():
    first, last = (
        LENGTH_CORNERS[min(LENGTH_CORNERS)][0] - 12,
        LENGTH_CORNERS[max(LENGTH_CORNERS)][0] + SWITCH_SIDE + 12,
    )
    out = well(
        first - 6, LENGTH_CORNERS[min(LENGTH_CORNERS)][1] - 18, last - first + 12, SWITCH_SIDE + 36, 24, 12
    )
    for steps, (x, _) in LENGTH_CORNERS.items():
        out += letter(str(steps), x + SWITCH_SIDE / 2, 4498, 60, INK, of=panel.LENGTH_SWITCHES[steps])
    return out + heading(
        "SEQUENCE LENGTH",
        first + 12,
        last - 12,
        KEY_LABEL_Y - 28,
        (panel.LENGTH_SWITCHES[min(LENGTH_CORNERS)], panel.LENGTH_SWITCHES[max(LENGTH_CORNERS)]),
        cap=56,
        end=-34,
    )


def tray_foot():
    """The end of the card tray, which overlaps the panel's upper edge."""
    x, y, w, h = CARD_REST
    top, foot = LOWER[1], y + h + 14
    return rect(x - 62, top, w + 144, foot - top + 62, "#000", opacity=0.6, filter="url(#soft)") + tray_shoe(
        top, foot
    )


def lower_panel():
    x, y, w, h = LOWER
    defs, out = graphite_plate(LOWER, seed=9)
    defs += TRAY + blur("soft", 18, 6400, 4150, 1100, 420)
    defs += radial("knob_shadow", 0.5, 0.5, 0.5, (0, "#000", 0.9), (0.86, "#000", 0.75), (1, "#000", 0))
    out += screws(LOWER, 66, (60, 15, 110, 160))
    out += loudspeaker((LOWER[0] + panel.CONTROLS[panel.POWER][0]) / 2, y + h / 2)

    px, py, pw, ph = panel.CONTROLS[panel.POWER]
    out += well(px - 12, py - 12, pw + 24, ph + 24, 22, 12)
    out += label("POWER", panel.POWER, DIAL_LABEL_Y)
    out += dial([str(n) for n in range(11)], "MASTER", panel.MASTER_DIAL)
    out += dial(["40", "", "80", "", "120", "", "160", "", "200", "", "240"], "TEMPO BPM", panel.TEMPO_DIAL)
    bx, by, bw, bh = panel.CONTROLS[panel.BEAT_LAMP]
    out += ellipse(bx + bw / 2 + 12, by + bh / 2 + 16, 90, 90, "url(#knob_shadow)")
    out += label("BEAT", panel.BEAT_LAMP)
    for text, of in (("START/STOP", panel.START_STOP), ("EDIT", panel.EDIT)):
        out += switch_well(*corner(of)) + label(text, of)
    out += length_switches() + tray_foot()
    return svg((w, h), defs, out, (x, y))
