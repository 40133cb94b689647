# SPDX-License-Identifier: MIT
"""The punched card, its hole, and the plate of the card reader."""
from drawing import circle, group, linear, path, radial, rect, svg
from lettering import letter
from materials import SCREW, brushed, screws
from palette import ALU, ALU_DARK, ALU_INK, ALU_LIGHT, CARD, CARD_DARK, CARD_INK, CARD_LIGHT
from table import CARD_H, CARD_REST, CARD_W, HOLE_DX, HOLE_DY, HOLE_X0, HOLE_Y0, LINE_INSTRUMENTS
from table import PICTURES, READER, TITLE_BOTTOM, TITLE_TOP, panel

GRID_RIGHT = HOLE_X0 + (panel.LINE_COUNT - 1) * HOLE_DX + 44  # card units


def bevel(x, y, w, h):
    """The plate's mitred rims, bright above and to the left."""
    return path(
        f"M{x} {y + h}V{y}H{x + w}L{x + w - 14} {y + 14}H{x + 14}V{y + h - 14}Z", fill="#fff", opacity=0.55
    ) + path(
        f"M{x + w} {y}V{y + h}H{x}L{x + 14} {y + h - 14}H{x + w - 14}V{y + 14}Z", fill="#000", opacity=0.38
    )


def slots():
    """The slots in the plate's upper and lower edge: the card passes behind the plate."""
    _, y, _, h = READER
    left, wide = CARD_REST[0] - 26, CARD_REST[2] + 52
    lead = f"M{left} {y + 46}H{left + wide}L{left + wide - 34} {y + 84}H{left + 34}Z"
    return (
        rect(left, y, wide, 46, "#0d0b09")
        + rect(left, y + h - 40, wide, 40, "#0d0b09")
        + path(lead, fill="url(#lead)")
        + path(f"M{left + 34} {y + 84}H{left + wide - 34}", "#fff", 6, opacity=0.55)
        + path(f"M{left} {y + h - 43}H{left + wide}", "#000", 7, opacity=0.35)
    )


def window(top):
    """The reading head behind smoked glass: the roller that draws the card, and six cells below it.

    Each cell stands above its column of the card.
    """
    x, _, w, _ = CARD_REST
    left, wide, high = x - 44, w + 88, 560
    out = rect(left - 16, top - 16, wide + 32, high + 32, "url(#lip)", 44)
    out += rect(left, top, wide, high, "url(#depth)", 30)
    axle = top + 176
    out += rect(left, axle - 26, wide, 52, "url(#steel)")  # axle, roller, two rubber tyres
    out += rect(x + 6, axle - 70, w - 12, 140, "url(#steel)", 8)
    for tyre in (x + 60, x + w - 60 - 200):
        out += rect(tyre + 10, axle - 78, 200, 172, "#000", 20, opacity=0.5)
        out += rect(tyre, axle - 86, 200, 172, "url(#rubber)", 18)
    for collar in (x + 24, x + w / 2 - 46, x + w / 2 + 20, x + w - 50):
        out += rect(collar, axle - 74, 26, 148, "url(#brass)", 4)
    bar = top + 358
    out += rect(x - 14, bar, w + 28, 128, "url(#bar)", 16)
    out += path(f"M{x} {bar + 5}H{x + w}", "#fff", 6, opacity=0.28, stroke_linecap="round")
    for line in range(panel.LINE_COUNT):
        cell = round(x + (HOLE_X0 + HOLE_DX * line) * w / CARD_W, 1)
        out += circle(cell, bar + 64, 28, "#000") + circle(cell, bar + 64, 22, "url(#cell)")
        out += circle(cell - 7, bar + 57, 6, "#f0b8a6", opacity=0.8)
        out += letter(str(line + 1), cell, top + high + 104, 56, ALU_INK)
    out += letter("LINE", x + 30, top + high + 104, 56, ALU_INK, "start", tracking=6)
    out += rect(left, top, wide, 90, "url(#glass_shade)", 30)
    glare = f"M{left + 60} {top}H{left + 430}L{left + 130} {top + high}H{left}V{top + 110}Z"
    return out + path(glare, fill="url(#glare)")


def reader_plate():
    x, y, w, h = READER
    defs = (
        linear("alu", 0, 0, 1, 1, (0, ALU_LIGHT), (0.45, ALU), (1, ALU_DARK))
        + SCREW
        + linear("lip", 0, 0, 1, 1, (0, "#4a463f"), (0.5, "#8f897e"), (1, "#fbf8f1"))
        + linear("lead", 0, 0, 0, 1, (0, "#4d4942"), (1, "#d6d1c6"))
        + linear("depth", 0, 0, 0, 1, (0, "#050506"), (0.6, "#141417"), (1, "#1c1c20"))
        + linear(
            "steel",
            0,
            0,
            0,
            1,
            (0, "#1b1c1e"),
            (0.16, "#5d5f63"),
            (0.30, "#c3c4c6"),
            (0.44, "#77797d"),
            (0.75, "#2b2c2f"),
            (1, "#0a0a0b"),
        )
        + linear(
            "rubber",
            0,
            0,
            0,
            1,
            (0, "#151413"),
            (0.24, "#4b4845"),
            (0.36, "#55524e"),
            (0.7, "#1d1c1b"),
            (1, "#060606"),
        )
        + linear("brass", 0, 0, 0, 1, (0, "#2c2110"), (0.30, "#e6c888"), (0.5, "#96743a"), (1, "#1d150a"))
        + linear("bar", 0, 0, 0, 1, (0, "#3b3c40"), (0.2, "#2a2b2e"), (1, "#141416"))
        + radial("cell", 0.5, 0.5, 0.5, (0, "#7c2a1d"), (0.7, "#4a1710"), (1, "#210806"))
        + linear("glass_shade", 0, 0, 0, 1, (0, "#000", 0.7), (1, "#000", 0))
        + linear("glare", 0, 0, 0.3, 1, (0, "#fff", 0.17), (0.55, "#fff", 0.05), (1, "#fff", 0.01))
    )
    out = rect(x, y, w, h, "url(#alu)") + brushed(x, y, w, h, 3, 420, "#fff", "#3a362e", 0.045)
    out += bevel(*READER) + screws(READER, 80, (35, 120, 80, 10)) + slots()
    middle = CARD_REST[0] + CARD_REST[2] / 2
    for tip in (800, 860):
        out += path(
            f"M{middle - 62} {tip - 50}L{middle} {tip}L{middle + 62} {tip - 50}",
            ALU_INK,
            17,
            stroke_linecap="round",
            stroke_linejoin="round",
        )
    out += letter("CARD READER", middle, 1040, 92, ALU_INK, tracking=18)
    out += letter("INSERT FROM ABOVE", middle, 1146, 52, ALU_INK, tracking=6)
    out += window(1260)
    return svg((w, h), defs, out, (x, y))


def card_paper():
    """The blank card with its upper right corner cut off and a pale field for the title."""
    cut = 84  # shows which way up the card goes in
    outline = f"M8 8H{CARD_W - cut}L{CARD_W - 8} {cut}V{CARD_H - 8}H8Z"
    return (
        path(outline, fill="url(#paper)")
        + path(outline, "#8d7a52", 10, opacity=0.7)
        + path(f"M18 {CARD_H - 20}V18H{CARD_W - cut}", "#fff", 9, opacity=0.55)
        + rect(80, TITLE_TOP, 989, TITLE_BOTTOM - TITLE_TOP, "#fbf3de", 12, stroke=CARD_INK, stroke_width=7)
    )


def card_grid():
    """Tints of every other step, step numbers, a ring at each possible hole."""
    left, right = HOLE_X0 - 212, GRID_RIGHT
    out = ""
    for step in range(panel.STEP_COUNT):
        y = HOLE_Y0 - HOLE_DY * step
        if step % 2 == 0:
            out += rect(left, y - HOLE_DY / 2, right - left, HOLE_DY, CARD_INK, opacity=0.09)
        out += letter(str(step + 1), left + 80, y + 36, 72, CARD_INK)
        for line in range(panel.LINE_COUNT):
            out += circle(
                HOLE_X0 + HOLE_DX * line, y, 31, "none", stroke=CARD_INK, stroke_width=6, opacity=0.55
            )
    for y in (HOLE_Y0 + HOLE_DY / 2, HOLE_Y0 - (panel.STEP_COUNT - 0.5) * HOLE_DY):
        out += path(f"M{left} {y}H{right}", CARD_INK, 7)
    return out


def card():
    w, h = size = PICTURES["pounch.PNG"]
    defs = linear("paper", 0, 0, 1, 1, (0, CARD_LIGHT), (0.5, CARD), (1, CARD_DARK))
    out = card_paper() + card_grid()
    for line, names in enumerate(LINE_INSTRUMENTS):
        x = HOLE_X0 + HOLE_DX * line
        out += letter(str(line + 1), x, 672, 66, CARD_INK)
        for name, offset in zip(names, (2, 48)):  # vertical, side by side
            out += letter(name, x + offset, 584, 34, CARD_INK, "start", turn=-90, weight=6)
    out += letter("PERCUSSOMATIC", 190, HOLE_Y0 + 60, 96, CARD_INK, "start", turn=-90, tracking=34)
    out += path(f"M120 {CARD_H - 130}H260L190 {CARD_H - 50}Z", fill=CARD_INK)
    out += letter("THIS END FIRST", GRID_RIGHT, CARD_H - 70, 50, CARD_INK, "end", tracking=4)
    return svg(size, defs, group(out, transform=f"scale({w / CARD_W:.6f} {h / CARD_H:.6f})"))


def hole():
    """A clean cut: the edge of the paper is lit at the lower right and casts a shadow inside."""
    defs = linear("edge", 0, 0, 1, 1, (0, "#5d4c2c"), (0.5, "#a8946a"), (1, "#fffbe8")) + radial(
        "floor", 0.66, 0.68, 0.62, (0, "#2b211a"), (0.6, "#17110d"), (1, "#050403")
    )
    out = circle(28, 28, 28, "url(#edge)") + circle(27.3, 27.3, 24.5, "url(#floor)")
    out += path("M8 32A20.5 20.5 0 0 1 33 7.5", "#000", 8, opacity=0.9, stroke_linecap="round")
    return svg(PICTURES["hole.PNG"], defs, out)
