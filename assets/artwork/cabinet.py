# SPDX-License-Identifier: MIT
"""The cabinet: walnut boards around the openings of the panels, and the card's tray."""
from drawing import blur, linear, path, rect, svg
from materials import CURL, TRAY, tray, veneer
from table import CABINET, CARD_REST, FRONT, LOWER, READER

STILE = 342  # width of the two upright side boards


def opening(x, y, w, h):
    """The chamfer of an opening: upper and left faces in shade, lower and right ones lit."""
    c = 26
    shade, light = "#120a05", "#c98d58"
    return (
        path(f"M{x - c} {y - c}H{x + w + c}L{x + w} {y}H{x}Z", fill=shade, opacity=0.80)
        + path(f"M{x - c} {y - c}L{x} {y}V{y + h}L{x - c} {y + h + c}Z", fill=shade, opacity=0.62)
        + path(f"M{x - c} {y + h + c}H{x + w + c}L{x + w} {y + h}H{x}Z", fill=light, opacity=0.48)
        + path(f"M{x + w + c} {y - c}V{y + h + c}L{x + w} {y + h}V{y}Z", fill=light, opacity=0.34)
        + rect(x, y, w, h, "#100c09")
    )


def shading():
    """Sheen over all boards, and the rounded outer edges."""
    x, y, w, h = CABINET
    glow = "#ffc98a"
    defs = (
        linear("sheen", 0, 0, 1, 1, (0, "#ffc98f", 0.16), (0.4, "#ffc98f", 0), (1, "#000", 0.26))
        + linear("round_top", 0, 0, 0, 1, (0, glow, 0.26), (0.35, glow, 0.04), (1, "#000", 0))
        + linear("round_bottom", 0, 0, 0, 1, (0, "#000", 0), (1, "#000", 0.6))
        + linear("round_left", 0, 0, 1, 0, (0, glow, 0.16), (0.35, glow, 0.03), (1, "#000", 0))
        + linear("round_right", 0, 0, 1, 0, (0, "#000", 0), (1, "#000", 0.6))
    )
    out = rect(x, y, w, h, "url(#sheen)")
    for joint in (x + STILE, x + w - STILE):  # a fine line where boards meet
        out += rect(joint - 4, y, 8, h, "#1c0f06", opacity=0.55)
        out += rect(joint + 4, y, 5, h, "#e0a870", opacity=0.16)
    out += rect(x, y, w, 90, "url(#round_top)") + rect(x, y + h - 80, w, 80, "url(#round_bottom)")
    out += rect(x, y, 90, h, "url(#round_left)") + rect(x + w - 90, y, 90, h, "url(#round_right)")
    return defs, out


def cabinet():
    x, y, w, h = CABINET
    boards = [
        veneer("top", x + STILE, y, w - 2 * STILE, 732, 11),
        veneer("bottom", x + STILE, 4122, w - 2 * STILE, h - 4152, 23, tone=-0.10),
        veneer("bay", 6270, 640, 1400, 3530, 37, upright=True, tone=-0.05),
        veneer("left", x, y, STILE, h, 41, upright=True, tone=0.03),
        veneer("right", x + w - STILE, y, STILE, h, 53, upright=True, tone=-0.04),
    ]
    shade_defs, shade = shading()
    defs = "".join(outline for outline, _ in boards) + CURL + TRAY + shade_defs
    defs += linear("plate_shade", 0, 0, 0, 1, (0, "#000", 0.8), (1, "#000", 0))
    defs += blur("soft", 22, 6200, 500, 1600, 3800)
    out = rect(x, y, w, h, "#1a110a") + "".join(board for _, board in boards) + shade

    plate_x, plate_y, plate_w, plate_h = READER
    plate_foot = plate_y + plate_h
    card_x, _, card_w, _ = CARD_REST
    out += rect(plate_x + 26, plate_y + 34, plate_w, plate_h, "#000", opacity=0.55, filter="url(#soft)")
    out += rect(
        card_x - 44, plate_foot, card_w + 118, LOWER[1] - plate_foot, "#000", opacity=0.4, filter="url(#soft)"
    )
    out += opening(*FRONT) + opening(*LOWER)
    out += tray(plate_foot - 40, LOWER[1])
    out += rect(card_x - 30, plate_foot - 20, card_w + 60, 170, "url(#plate_shade)")
    out += rect(*READER, "#100c09")
    return svg((w, h), defs, out, (x, y))
