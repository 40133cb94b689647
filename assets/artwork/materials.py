"""What the machine is made of: walnut veneer, brushed metal, wells, screws, rails.

Every random choice has a fixed seed, so that a picture comes out the same each time. Light
falls from the upper left everywhere.
"""
import math
import random

from drawing import circle, clip, group, linear, path, radial, rect
from palette import (EDGE_LIGHT, FELT, PANEL, PANEL_DARK, PANEL_LIGHT, PORE, RECESS, WALNUT,
                     WALNUT_DARK, WALNUT_LIGHT)
from table import CARD_REST

LIP = linear("lip", 0, 0, 1, 1, (0, "#0b0b0c"), (0.5, "#2b2b2d"), (1, "#7c7b7e"))
SCREW = linear("screw", 0, 0, 1, 1, (0, "#c9c6bf"), (0.5, "#8b8881"), (1, "#4c4a46"))
SATIN = (0, "#e6e2d8"), (0.35, "#aaa59a"), (1, "#4f4b44")           # rails of satin aluminium
TRAY = (linear("tray_shade", 0, 0, 1, 0, (0, "#000", 0.75), (1, "#000", 0))
        + linear("rib", 0, 0, 1, 0, (0, "#4a3d31"), (0.45, "#32281f"), (1, "#0a0806"))
        + linear("rail", 0, 0, 1, 0, *SATIN))


def veneer(name, x, y, w, h, seed, upright=False, tone=0.0):
    """A board of walnut: bands, grain lines, fibres and pores that follow one slowly waving field.

    Along the board runs t, across it s. A line of constant s, moved by across(), is one year's
    growth, so neighbours wave alike. Returns the board's clipping path and its drawing.
    """
    rnd = random.Random(seed)
    length, breadth = (h, w) if upright else (w, h)
    waves = [(rnd.uniform(0.0006, 0.0035), rnd.uniform(0, 6.3), rnd.uniform(0.0008, 0.005),
              rnd.uniform(6, 22)) for _ in range(5)]
    crown_t, crown_width, crown_s = (rnd.uniform(0.25, 0.75) * length, rnd.uniform(500, 1100),
                                     rnd.uniform(0.3, 0.7) * breadth)

    def across(t, s):
        drift = sum(a * math.sin(t * f + p + s * k) for f, p, k, a in waves)
        crown = math.exp(-((t - crown_t) / crown_width) ** 2)       # cathedral of a plain-sawn board
        return s + drift * min(1, breadth / 400) + 0.34 * crown * (s - crown_s)

    def point(t, s):
        a, b = (across(t, s), t) if upright else (t, across(t, s))
        return f"{x + a:.0f} {y + b:.0f}"

    def line(s):
        start, end = -60, length + 60
        count = max(2, int((end - start) / 170))
        points = [point(start + (end - start) * i / count, s) for i in range(count + 1)]
        return "M" + points[0] + "L" + " ".join(points[1:])

    out = rect(x, y, w, h, WALNUT)
    s = -breadth * 0.5
    while s < breadth * 1.5:                                        # bands of early and late wood
        wide = rnd.uniform(26, 120)
        out += path(line(s), rnd.choice([WALNUT_DARK, WALNUT_DARK, WALNUT_LIGHT]), f"{wide:.0f}",
                    opacity=f"{rnd.uniform(0.05, 0.24):.2f}", stroke_linejoin="round")
        s += wide * rnd.uniform(0.5, 1.1)
    s = -breadth * 0.5
    while s < breadth * 1.5:                                        # grain, crowded and sparse by turns
        out += path(line(s), PORE if rnd.random() < 0.72 else WALNUT_LIGHT,
                    f"{rnd.uniform(5, 13):.0f}", opacity=f"{rnd.uniform(0.06, 0.30):.2f}",
                    stroke_linejoin="round")
        s += rnd.uniform(9, 44) * (1 + 0.6 * math.sin(s * 0.013 + seed))
    for colour, strength in ((PORE, 0.13), (WALNUT_LIGHT, 0.16)):
        fibres = ""
        for _ in range(int(length * breadth / 11000)):
            t, s = rnd.uniform(-200, length), rnd.uniform(-0.3, 1.3) * breadth
            run = rnd.uniform(250, 900)
            fibres += f"M{point(t, s)}L{point(t + run / 2, s)} {point(t + run, s)}"
        out += path(fibres, colour, 6, opacity=strength, stroke_linecap="round")
    pores = ""
    for _ in range(int(length * breadth / 9000)):
        t, s = rnd.uniform(0, length), rnd.uniform(-0.2, 1.2) * breadth
        pores += f"M{point(t, s)}L{point(t + rnd.uniform(30, 110), s)}"
    out += path(pores, PORE, 5, opacity=0.26, stroke_linecap="round")
    if tone:
        out += rect(x, y, w, h, "#000" if tone < 0 else "#ffd9a0", opacity=abs(tone))
    return clip(name, x, y, w, h), group(out, clip_path=f"url(#{name})")


def brushed(x, y, w, h, seed, count, light, dark, opacity):
    """Level scratches of brushed metal. Long level lines cost almost nothing in a PNG."""
    rnd = random.Random(seed)
    out = ""
    for colour, strength in ((light, opacity), (dark, opacity * 1.4)):
        for thick in (5, 7, 10):
            d = ""
            for _ in range(count // 6):
                run = min(w, rnd.uniform(0.12, 0.75) * w)
                d += f"M{x + rnd.uniform(0, w - run):.0f} {y + rnd.uniform(4, h - 4):.0f}h{run:.0f}"
            out += path(d, colour, thick, opacity=f"{strength:.3f}")
    return out


def screws(plate, inset, turns):
    """Slotted countersunk screws in the plate's corners, their slots turned by so many degrees."""
    x, y, w, h = plate
    corners = [(cx, cy) for cy in (y + inset, y + h - inset) for cx in (x + inset, x + w - inset)]
    out = ""
    for (cx, cy), turn in zip(corners, turns, strict=True):
        slot = f"rotate({turn} {cx} {cy})"
        out += circle(cx, cy, 44, "#000", opacity=0.45) + circle(cx, cy, 38, "url(#screw)")
        out += path(f"M{cx - 27} {cy}h54", "#17171a", 11, transform=slot)
        out += path(f"M{cx - 27} {cy + 8}h54", "#fff", 5, opacity=0.35, transform=slot)
    return out


def well(x, y, w, h, r, depth=16):
    """A recess cut into the panel: dark floor, shadow from above left, a lit lower right lip."""
    return (rect(x - 7, y - 7, w + 14, h + 14, "url(#lip)", r + 7)
            + rect(x, y, w, h, RECESS, r)
            + rect(x + depth, y + depth, w - depth, h - depth, "#161617", max(2, r - 4)))


def graphite_plate(plate, seed):
    """A faceplate: satin gradient, brushing, lit rim, shadow of the cabinet's opening.

    Its definitions include those of wells and screws.
    """
    x, y, w, h = plate
    defs = (linear("face", 0, 0, 1, 1, (0, PANEL_LIGHT), (0.45, PANEL), (1, PANEL_DARK))
            + linear("overhang", 0, 0, 0, 1, (0, "#000", 0.55), (1, "#000", 0))
            + linear("overhang_left", 0, 0, 1, 0, (0, "#000", 0.45), (1, "#000", 0))
            + radial("satin", 0.24, 0.05, 0.75, (0, "#fff", 0.075), (0.6, "#fff", 0.02),
                     (1, "#fff", 0))
            + SCREW + LIP)
    out = rect(x, y, w, h, "url(#face)") + rect(x, y, w, h, "url(#satin)")
    out += brushed(x, y, w, h, seed, int(h * 0.42), "#fff", "#000", 0.022)
    out += rect(x, y, w, 64, "url(#overhang)") + rect(x, y, 64, h, "url(#overhang_left)")
    out += rect(x, y + h - 9, w, 9, EDGE_LIGHT, opacity=0.55)
    out += rect(x + w - 9, y, 9, h, EDGE_LIGHT, opacity=0.45)
    return defs, out


def tray(y0, y1):
    """The channel in which a read card comes to rest, between two satin rails."""
    x, _, w, _ = CARD_REST
    left, right = x - 30, x + w + 30
    out = rect(left - 34, y0, right - left + 68, y1 - y0, "#000", opacity=0.35)
    out += rect(left, y0, right - left, y1 - y0, FELT)
    for rib in (0.22, 0.5, 0.78):                                   # they keep the card off the felt
        middle = left + (right - left) * rib
        out += rect(middle - 15, y0, 30, y1 - y0, "url(#rib)", opacity=0.8)
    out += rect(left, y0, 70, y1 - y0, "url(#tray_shade)")
    for rail in (left - 26, right):
        out += rect(rail, y0, 26, y1 - y0, "url(#rail)")
    return out
