# SPDX-License-Identifier: MIT
"""The materials: walnut veneer, brushed metal, wells, screws, rails.

Every random choice has a fixed seed, so that pictures are reproducible. The light always comes from
the upper left.
"""
import math
import random

from drawing import blur, circle, clip, ellipse, group, linear, path, radial, rect
from palette import (
    EDGE_LIGHT,
    FELT,
    PANEL,
    PANEL_DARK,
    PANEL_LIGHT,
    PORE,
    RECESS,
    WALNUT,
    WALNUT_DARK,
    WALNUT_LIGHT,
)
from table import CARD_REST

LIP = linear("lip", 0, 0, 1, 1, (0, "#0b0b0c"), (0.5, "#2b2b2d"), (1, "#7c7b7e"))
SCREW = linear("screw", 0, 0, 1, 1, (0, "#c9c6bf"), (0.5, "#8b8881"), (1, "#4c4a46"))
SATIN = (0, "#e6e2d8"), (0.35, "#aaa59a"), (1, "#4f4b44")  # rails of satin aluminium
TRAY = (
    linear("tray_shade", 0, 0, 1, 0, (0, "#000", 0.75), (1, "#000", 0))
    + linear("rib", 0, 0, 1, 0, (0, "#4a3d31"), (0.45, "#32281f"), (1, "#0a0806"))
    + linear("rail", 0, 0, 1, 0, *SATIN)
    + linear("shoe", 0, 0, 1, 1, (0, "#d8d3c8"), (0.5, "#99948a"), (1, "#57534c"))
    + linear("joint", 0, 0, 0, 1, (0, "#000", 0.85), (0.35, "#000", 0.5), (1, "#000", 0))
)
WALNUT_TONES = WALNUT_DARK, WALNUT_DARK, WALNUT_LIGHT, "#6d3f20", "#7d5130", "#422717"
CURL = radial("curl_light", 0.5, 0.5, 0.5, (0, "#ffd9a0", 0.05), (1, "#ffd9a0", 0)) + radial(
    "curl_dark", 0.5, 0.5, 0.5, (0, "#1a0c04", 0.08), (1, "#1a0c04", 0)
)
# Fibres: colour, thickness, opacity, area of wood per fibre in square units.
FIBRES = (
    (PORE, 4, 0.10, 9000),
    (WALNUT_LIGHT, 4, 0.13, 9000),
    (PORE, 2, 0.16, 5000),
    ("#a9784a", 2, 0.13, 5000),
)
PORE_AREA = 3600  # of wood per pore, in square units


def veneer(name, x, y, w, h, seed, upright=False, tone=0.0):
    """A board of lacquered walnut. Every layer follows the same slowly varying field.

    t runs along the board, s across it. A line of constant s, displaced by across(), is one growth
    line, so that neighbouring lines have similar waves. Returns definitions and the clipped drawing.
    """
    rnd = random.Random(seed)
    length, breadth = (h, w) if upright else (w, h)
    waves = [
        (rnd.uniform(0.0006, 0.0035), rnd.uniform(0, 6.3), rnd.uniform(0.0008, 0.005), rnd.uniform(6, 22))
        for _ in range(5)
    ]
    crown_t, crown_width, crown_s = (
        rnd.uniform(0.25, 0.75) * length,
        rnd.uniform(500, 1100),
        rnd.uniform(0.3, 0.7) * breadth,
    )

    def across(t, s):
        drift = sum(a * math.sin(t * f + p + s * k) for f, p, k, a in waves)
        crown = math.exp(-(((t - crown_t) / crown_width) ** 2))  # arches of a plain-sawn board
        return s + drift * min(1, breadth / 400) + 0.34 * crown * (s - crown_s)

    def point(t, s, digits=1):
        a, b = (across(t, s), t) if upright else (t, across(t, s))
        return f"{x + a:.{digits}f} {y + b:.{digits}f}"

    steps = [-60 + 120 * i for i in range(int(length / 120) + 2)]

    def between(s0, s1):
        """The strip of wood between the growth lines s0 and s1."""
        return (
            "M"
            + "L".join(point(t, s0, 0) for t in steps)
            + "L"
            + "L".join(point(t, s1, 0) for t in reversed(steps))
            + "Z"
        )

    def streak(t, s, run):
        half = run / 2
        return f"M{point(t, s)}L{point(t + half, s)} {point(t + run, s)}"

    def spindle(t, s, run, thick):
        """A vessel cut lengthwise: pointed at both ends, widest a third of the way along."""
        full = t + run * 0.35
        return f"M{point(t, s)}L{point(full, s - thick)} {point(t + run, s)} " f"{point(full, s + thick)}Z"

    clouds, defs = "", clip(name, x, y, w, h)
    s = -breadth * 0.3
    while s < breadth * 1.3:  # colour varies from red to brown
        wide = rnd.uniform(60, 190)
        clouds += path(
            between(s, s + wide), fill=rnd.choice(WALNUT_TONES), opacity=f"{rnd.uniform(0.10, 0.42):.2f}"
        )
        s += wide * rnd.uniform(0.55, 1.1)
    softness = "9 40" if upright else "40 9"
    defs += blur(name + "_soft", softness, x, y, w, h)

    early, late, edges, rings = "", "", "", []
    s, swing = -breadth * 0.5, rnd.uniform(0, 6.3)
    while s < breadth * 1.5:  # growth rings of varying width
        year = rnd.uniform(16, 34) * (1.5 + math.sin(s * 0.011 + swing))
        early += between(s + 0.45 * year, s + year)
        late += between(s + 0.78 * year, s + year)
        edges += f"M{'L'.join(point(t, s + year, 0) for t in steps)}"
        rings.append((s, year))
        s += year
    defs += blur(name + "_late", 2.2, x, y, w, h)
    growth = (
        path(early, fill=WALNUT_DARK, opacity=0.24)
        + path(late, fill=PORE, opacity=0.26)
        + path(edges, PORE, 4, opacity=0.34)
    )

    fibres = ""
    for colour, thick, strength, area in FIBRES:
        d = "".join(
            streak(rnd.uniform(-200, length), rnd.uniform(-0.3, 1.3) * breadth, rnd.uniform(160, 620))
            for _ in range(int(length * breadth / area))
        )
        fibres += path(d, colour, thick, opacity=strength)

    deep, faint = "", ""  # most vessels are in the early wood
    for s, year in rings:
        for _ in range(int(length * year / PORE_AREA)):
            at = s + year * min(1, rnd.expovariate(2.6))
            deep += spindle(rnd.uniform(-40, length), at, rnd.uniform(40, 170), rnd.uniform(0.9, 1.8))
        for _ in range(int(length * year / PORE_AREA)):
            faint += spindle(
                rnd.uniform(-40, length), s + year * rnd.random(), rnd.uniform(24, 90), rnd.uniform(0.7, 1.3)
            )
    lit = "translate(1.5 0)" if upright else "translate(0 1.5)"  # the lit far side of each groove
    pores = (
        path(deep, fill=WALNUT_LIGHT, opacity=0.30, transform=lit)
        + path(deep, fill="#160b05", opacity=0.62)
        + path(faint, fill=PORE, opacity=0.42)
    )

    figure = ""  # curl: slow variation of the lacquer
    for i in range(int(length / 520)):
        t = rnd.uniform(0, length)
        cx, cy = (x + breadth * rnd.random(), y + t) if upright else (x + t, y + breadth * rnd.random())
        rx, ry = (breadth, rnd.uniform(200, 500)) if upright else (rnd.uniform(200, 500), breadth)
        figure += ellipse(
            f"{cx:.0f}", f"{cy:.0f}", f"{rx:.0f}", f"{ry:.0f}", f"url(#curl_{'light' if i % 2 else 'dark'})"
        )
    out = (
        rect(x, y, w, h, WALNUT)
        + group(clouds, filter=f"url(#{name}_soft)")
        + group(growth, filter=f"url(#{name}_late)")
        + fibres
        + pores
        + figure
    )
    if tone:
        out += rect(x, y, w, h, "#000" if tone < 0 else "#ffd9a0", opacity=abs(tone))
    return defs, group(out, clip_path=f"url(#{name})")


def brushed(x, y, w, h, seed, count, light, dark, opacity):
    """Horizontal scratches of brushed metal, count of each kind.

    Fine lines are visible at full size, broad ones also at a fifth of it. Horizontal lines on whole
    pixels compress well in a PNG.
    """
    rnd = random.Random(seed)
    out = ""
    for colour, strength in ((light, opacity), (dark, opacity * 1.4)):
        for thick, share in ((1, 3), (2, 2), (4, 1), (9, 0.5)):
            d = ""
            for _ in range(int(count * share)):
                run = min(w, rnd.uniform(0.08, 0.75) * w)
                d += f"M{x + rnd.uniform(0, w - run):.0f} {y + rnd.randint(4, h - 4)}h{run:.0f}"
            out += path(d, colour, thick, opacity=f"{strength:.3f}", shape_rendering="crispEdges")
    return out


def screws(plate, inset, turns):
    """Slotted countersunk screws in the plate's corners; turns are the angles of the slots in degrees."""
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
    """A recess in the panel: dark floor, shadow from the upper left, lit lower right lip."""
    return (
        rect(x - 7, y - 7, w + 14, h + 14, "url(#lip)", r + 7)
        + rect(x, y, w, h, RECESS, r)
        + rect(x + depth, y + depth, w - depth, h - depth, "#161617", max(2, r - 4))
    )


def graphite_plate(plate, seed):
    """A faceplate: satin gradient, brushing, lit rim, shadow of the cabinet's opening.

    Its definitions include those of wells and screws.
    """
    x, y, w, h = plate
    defs = (
        linear("face", 0, 0, 1, 1, (0, PANEL_LIGHT), (0.45, PANEL), (1, PANEL_DARK))
        + linear("overhang", 0, 0, 0, 1, (0, "#000", 0.55), (1, "#000", 0))
        + linear("overhang_left", 0, 0, 1, 0, (0, "#000", 0.45), (1, "#000", 0))
        + radial("satin", 0.24, 0.05, 0.75, (0, "#fff", 0.075), (0.6, "#fff", 0.02), (1, "#fff", 0))
        + SCREW
        + LIP
    )
    out = rect(x, y, w, h, "url(#face)") + rect(x, y, w, h, "url(#satin)")
    out += brushed(x, y, w, h, seed, h // 7, "#fff", "#000", 0.021)
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
    for rib in (0.22, 0.5, 0.78):  # they keep the card off the felt
        middle = left + (right - left) * rib
        out += rect(middle - 15, y0, 30, y1 - y0, "url(#rib)", opacity=0.8)
    out += rect(left, y0, 70, y1 - y0, "url(#tray_shade)")
    for rail in (left - 26, right):
        out += rect(rail, y0, 26, y1 - y0, "url(#rail)")
    return out


def tray_shoe(y0, foot):
    """The tray's end: a shoe of the same metal, open towards the rails, that stops the card.

    The rails belong to the cabinet and the shoe to the panel, and each picture is rounded to whole
    pixels separately. The shoe is therefore wider than the rails, without ribs, and starts in shadow,
    so that an offset of one pixel is not visible.
    """
    x, _, w, _ = CARD_REST
    inside, wall = x - 14, 70
    wide = w + 28
    outside, width = inside - wall, wide + 2 * wall
    out = rect(outside, y0, width, foot - y0 + 54, "url(#shoe)", 12)
    out += rect(outside, y0, width, 24, "url(#shoe)")  # square where the rails enter
    out += path(f"M{outside + 5} {y0}V{foot + 42}", "#fff", 6, opacity=0.45)
    out += path(f"M{outside + 10} {foot + 50}H{outside + width - 10}", "#000", 8, opacity=0.45)
    out += rect(inside, y0, wide, foot - y0, "#120d0a")
    out += rect(inside, y0, 60, foot - y0, "url(#tray_shade)")
    out += path(f"M{inside + wide + 4} {y0}V{foot + 4}H{inside}", "#fff", 7, opacity=0.55)
    return out + rect(outside - 4, y0, width + 8, 30, "url(#joint)")
