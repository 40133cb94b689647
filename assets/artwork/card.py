"""The punched card, its hole, and the plate of the reader it goes through."""
from drawing import circle, group, linear, path, rect, svg
from lettering import letter
from materials import SCREW, brushed, screws
from palette import (ALU, ALU_DARK, ALU_INK, ALU_LIGHT, CARD, CARD_DARK, CARD_INK, CARD_LIGHT,
                     INK_QUIET)
from table import (CARD_H, CARD_REST, CARD_W, HOLE_DX, HOLE_DY, HOLE_X0, HOLE_Y0, NAMES, PICTURES,
                   READER, TITLE_BOTTOM, TITLE_TOP)


def bevel(x, y, w, h):
    """The plate's mitred rims, bright above and to the left."""
    return (path(f"M{x} {y + h}V{y}H{x + w}L{x + w - 14} {y + 14}H{x + 14}V{y + h - 14}Z",
                 fill="#fff", opacity=0.55)
            + path(f"M{x + w} {y}V{y + h}H{x}L{x + 14} {y + h - 14}H{x + w - 14}V{y + 14}Z",
                   fill="#000", opacity=0.38))


def mouths():
    """The slots in the plate's upper and lower edge: the card passes behind the plate."""
    _, y, _, h = READER
    left, wide = CARD_REST[0] - 26, CARD_REST[2] + 52
    return (rect(left, y, wide, 46, "#0d0b09") + rect(left, y + h - 40, wide, 40, "#0d0b09")
            + path(f"M{left} {y + 46}H{left + wide}", "#fff", 7, opacity=0.5)
            + path(f"M{left} {y + h - 43}H{left + wide}", "#000", 7, opacity=0.35))


def reading_head(top):
    """Six cells behind glass, each above its column of the card."""
    x, _, w, _ = CARD_REST
    out = rect(x - 12, top - 12, w + 24, 214, "url(#lip)", 34) + rect(x, top, w, 190, "url(#glass)", 26)
    out += letter("LINE", x + 150, top + 121, 52, INK_QUIET, tracking=6)
    for line in range(6):
        cell = x + (HOLE_X0 + HOLE_DX * line) * w / CARD_W
        out += circle(f"{cell:.1f}", top + 95, 27, "#000") + circle(f"{cell:.1f}", top + 95, 20, "#4a1710")
        out += circle(f"{cell - 6:.1f}", top + 88, 7, "#d98a76")
        out += letter(str(line + 1), round(cell, 1), top + 300, 56, ALU_INK)
    return out


def groove(x, y, w, h):
    """A rounded frame engraved in the plate: its far edge catches the light."""
    return (rect(x + 6, y + 6, w, h, "none", 40, stroke="#fff", stroke_width=7, opacity=0.5)
            + rect(x, y, w, h, "none", 40, stroke=ALU_INK, stroke_width=8, opacity=0.6))


def reader_plate():
    x, y, w, h = READER
    defs = (linear("alu", 0, 0, 1, 1, (0, ALU_LIGHT), (0.45, ALU), (1, ALU_DARK)) + SCREW
            + linear("glass", 0, 0, 1, 1, (0, "#3a3c40"), (0.35, "#15161a"), (1, "#0a0b0d"))
            + linear("lip", 0, 0, 1, 1, (0, "#5a564e"), (1, "#f4f1ea")))
    out = rect(x, y, w, h, "url(#alu)") + brushed(x, y, w, h, 3, 1500, "#fff", "#3a362e", 0.045)
    out += bevel(*READER) + screws(READER, 80, (35, 120, 80, 10)) + mouths()
    middle = CARD_REST[0] + CARD_REST[2] / 2
    out += path(f"M{middle} 740V960M{middle - 62} 898L{middle} 960L{middle + 62} 898", ALU_INK, 17,
                stroke_linecap="round", stroke_linejoin="round")
    out += letter("CARD READER", middle, 1150, 84, ALU_INK, tracking=16)
    out += letter("INSERT FROM ABOVE", middle, 1262, 52, ALU_INK, tracking=6)
    out += groove(6480, 1440, 904, 540) + reading_head(1560)
    return svg((w, h), defs, out, (x, y))


def card_paper():
    """The card itself, its upper right corner cut, with a pale field for the title."""
    cut = 84                                                        # this way up
    outline = f"M8 8H{CARD_W - cut}L{CARD_W - 8} {cut}V{CARD_H - 8}H8Z"
    return (path(outline, fill="url(#paper)") + path(outline, "#8d7a52", 10, opacity=0.7)
            + path(f"M18 {CARD_H - 20}V18H{CARD_W - cut}", "#fff", 9, opacity=0.55)
            + rect(80, TITLE_TOP, 989, TITLE_BOTTOM - TITLE_TOP, "#fbf3de", 12, stroke=CARD_INK,
                   stroke_width=7))


def card_grid():
    """Rules and tints of the beats, step numbers, a ring where each hole may be punched."""
    left, right = HOLE_X0 - 212, HOLE_X0 + 5 * HOLE_DX + 62
    out = ""
    for beat in range(4):
        top = HOLE_Y0 - HOLE_DY * (4 * beat + 3) - HOLE_DY / 2
        if beat % 2 == 0:
            out += rect(left, top, right - left, 4 * HOLE_DY, CARD_INK, opacity=0.10)
        out += path(f"M{left} {top}H{right}", CARD_INK, 7)
    out += path(f"M{left} {HOLE_Y0 + HOLE_DY / 2}H{right}", CARD_INK, 7)
    for step in range(16):
        y = HOLE_Y0 - HOLE_DY * step
        out += letter(str(step + 1), left + 80, y + 36, 72, CARD_INK)
        for line in range(6):
            out += circle(HOLE_X0 + HOLE_DX * line, y, 31, "none", stroke=CARD_INK, stroke_width=6,
                          opacity=0.55)
    return out


def card():
    w, h = size = PICTURES["pounch.PNG"]
    defs = linear("paper", 0, 0, 1, 1, (0, CARD_LIGHT), (0.5, CARD), (1, CARD_DARK))
    out = card_paper() + card_grid()
    for line, names in enumerate(NAMES):
        x = HOLE_X0 + HOLE_DX * line
        out += letter(str(line + 1), x, 672, 66, CARD_INK)
        for name, offset in zip(names, (2, 48)):                    # turned upwards, side by side
            out += letter(name, x + offset, 584, 34, CARD_INK, "start", turn=-90, weight=6)
    out += letter("PERCUSSOMATIC", 190, HOLE_Y0 + 60, 96, CARD_INK, "start", turn=-90, tracking=34)
    out += path(f"M120 {CARD_H - 130}H260L190 {CARD_H - 50}Z", fill=CARD_INK)
    out += letter("THIS END FIRST", HOLE_X0 + 5 * HOLE_DX + 62, CARD_H - 70, 50, CARD_INK, "end",
                  tracking=4)
    return svg(size, defs, group(out, transform=f"scale({w / CARD_W:.6f} {h / CARD_H:.6f})"))


def hole():
    defs = linear("edge", 0, 0, 1, 1, (0, "#6b5a38"), (0.5, "#b9a678"), (1, "#fff6dc"))
    out = circle(28, 28, 28, "url(#edge)") + circle(28, 28, 24, "#0c0a08")
    out += path("M10 34A20 20 0 0 1 34 9", "#000", 7, opacity=0.9)
    return svg(PICTURES["hole.PNG"], defs, out)
