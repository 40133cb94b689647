# SPDX-License-Identifier: MIT
"""The controls and lamps: keys, power rocker, beat lamp, knob and slider thumb.

Shadows cast on a panel are part of the panel's picture, except for controls that do not move.
"""
import math

from drawing import circle, ellipse, linear, path, radial, rect, svg
from palette import AMBER, HORN, INK, MILK, RUBY, RUBY_CORE, RUBY_DARK, SMOKE
from table import PICTURES, DIAL_SIDE, DIAL_ZERO


def key(size, inset, r, colours, lit):
    """A translucent key seen from above: skirt, bevel, lens. Lit, it also lights its surroundings."""
    (w, h), (core, body, rim) = size, colours
    x, y, key_w, key_h = inset, inset, w - 2 * inset, h - 2 * inset
    defs = linear(
        "bevel",
        0,
        0,
        1,
        1,
        (0, "#fff", 0.75 if lit else 0.40),
        (0.42, "#fff", 0.05),
        (0.58, "#000", 0.04 if lit else 0.05),
        (1, "#000", 0.22 if lit else 0.62),
    )
    dip = (rim, 0.8, 0.55) if lit else ("#000", 0.3, 0.2)
    defs += linear("edge", 0, 0, 1, 1, (0, *dip[:2]), (0.5, dip[0], 0.06), (1, "#fff", dip[2]))
    if lit:
        defs += radial("face", 0.5, 0.46, 0.70, (0, core), (0.10, core), (0.68, body), (1, rim))
        defs += radial(
            "spill", 0.5, 0.5, 0.72, (0, body, 1), (0.58, body, 0.8), (0.74, rim, 0.35), (0.92, rim, 0)
        )
        out = rect(0, 0, w, h, "url(#spill)", r + inset)
        out += rect(x - 1, y - 1, key_w + 2, key_h + 2, rim, r)
    else:
        defs += linear("face", 0, 0, 0.35, 1, (0, core), (0.55, body), (1, rim))
        defs += linear("gloss", 0, 0, 0.25, 1, (0, "#fff", 0.24), (0.30, "#fff", 0.07), (0.62, "#fff", 0))
        defs += radial("inner", 0.66, 0.86, 0.55, (0, core, 0.55), (1, core, 0))
        out = rect(x + 3, y + 5, key_w, key_h, "#000", r, opacity=0.7)
    out += rect(x, y, key_w, key_h, "url(#face)", r) + rect(x, y, key_w, key_h, "url(#bevel)", r)
    e = 13  # the lens lies inside the bevel
    lens = x + e, y + e, key_w - 2 * e, key_h - 2 * e
    out += rect(*lens, "url(#face)", max(4, r - 5))
    if not lit:  # gloss where the light enters, a glow where it leaves the lens
        out += rect(*lens, "url(#inner)", max(4, r - 5)) + rect(*lens, "url(#gloss)", max(4, r - 5))
    out += rect(*lens, "none", max(4, r - 5), stroke="url(#edge)", stroke_width=4)
    return svg(size, defs, out)


def step_key(lit):
    return key(PICTURES["bottone_on.PNG"], 11, 15, AMBER if lit else SMOKE, lit)


def switch(lit):
    return key(PICTURES["SW_on.PNG"], 10, 18, MILK if lit else HORN, lit)


def power_rocker(lit):
    """A rocker seen from the front: on, its upper half is pressed into the frame.

    The raised half is nearer: wider, brighter, and its end face is visible, lit when it faces up and
    dark when it faces down. The pressed half is narrower and in the frame's shadow.
    """
    w, h = PICTURES["PW_on.PNG"]
    pivot, c = h / 2, w / 2

    def half(end, wide, fill):
        """From the pivot to end, where half its width is wide."""
        return path(f"M{c - 64} {pivot}H{c + 64}L{c + wide} {end}H{c - wide}Z", fill=fill)

    glass = (
        ((0, "#fff3ea"), (0.22, RUBY_CORE), (0.62, RUBY), (1, "#d42a1d"))
        if lit
        else ((0, "#6d2019"), (0.6, RUBY_DARK), (1, "#38090a"))
    )
    defs = (
        linear("raised", 0, 0, 0, 1, (0, "#4c4c50"), (1, "#76757b"))
        if lit
        else linear("raised", 0, 0, 0, 1, (0, "#7d7c82"), (1, "#4d4d51"))
    )
    defs += (
        linear("pressed", 0, 0, 0, 1, (0, "#020202"), (0.45, "#121213"), (1, "#2b2b2e"))
        if lit
        else linear("pressed", 0, 0, 0, 1, (0, "#2b2b2e"), (0.6, "#1a1a1c"), (1, "#0c0c0d"))
    )
    defs += (
        linear("end_up", 0, 0, 0, 1, (0, "#f2f1f4"), (1, "#b1b0b6"))
        + linear("end_down", 0, 0, 0, 1, (0, "#2a2a2d"), (1, "#050506"))
        + linear(
            "side", 0, 0, 1, 0, (0, "#fff", 0.30), (0.08, "#fff", 0), (0.90, "#000", 0), (1, "#000", 0.5)
        )
        + radial("window", 0.5, 0.45, 0.75, *glass)
        + radial("spill", 0.5, 0.5, 0.5, (0, RUBY, 0.75), (1, RUBY, 0))
    )
    out = rect(4, 4, w - 8, h - 8, "#060607", 14)
    if lit:
        out += half(46, 56, "url(#pressed)") + half(324, 70, "url(#raised)") + half(324, 70, "url(#side)")
        out += path(f"M{c - 70} 324H{c + 70}L{c + 64} 356H{c - 64}Z", fill="url(#end_down)")
        out += path(f"M{c - 66} 321H{c + 66}", "#fff", 6, opacity=0.55, stroke_linecap="round")
    else:
        out += half(326, 56, "url(#pressed)") + half(44, 70, "url(#raised)") + half(44, 70, "url(#side)")
        out += path(f"M{c - 70} 44H{c + 70}L{c + 64} 10H{c - 64}Z", fill="url(#end_up)")
    out += path(f"M{c - 64} {pivot}H{c + 64}", "#000", 6, opacity=0.5)
    if lit:
        out += ellipse(c, 126, 66, 74, "url(#spill)")
    out += rect(44, 92, 70, 78, "#000", 12) + rect(51, 99, 56, 64, "url(#window)", 8)
    out += rect(58, 105, 42, 10, "#fff", 5, opacity=0.55 if lit else 0.22)
    out += path("M79 58V80" if lit else "M79 57V81", INK, 9, stroke_linecap="round")
    out += (
        ellipse(c, 262, 24, 26, "none", stroke=INK, stroke_width=9)
        if lit
        else ellipse(c, 256, 21, 20, "none", stroke=INK, stroke_width=8, opacity=0.8)
    )
    return svg((w, h), defs, out)


def beat_lamp(lit):
    """A faceted jewel in a chromed bezel."""
    size = PICTURES["BIN_off.PNG"]
    c = size[0] // 2
    if lit:
        glass = (0, "#fff8f0"), (0.34, "#ffe3cf"), (0.70, RUBY), (1, "#c81a10")
    else:
        glass = (0, "#8a2a22"), (0.5, RUBY_DARK), (1, "#260505")
    defs = (
        linear("bezel", 0, 0, 1, 1, (0, "#f6f3ec"), (0.45, "#98948b"), (0.55, "#6b675f"), (1, "#2f2d2a"))
        + linear("bezel_in", 0, 0, 1, 1, (0, "#2a2825"), (1, "#c9c5bb"))
        + radial("jewel", 0.44, 0.42, 0.62, *glass)
        + radial("halo", 0.5, 0.5, 0.5, (0, RUBY, 0.8), (0.66, RUBY, 0.45), (0.78, RUBY, 0.12), (1, RUBY, 0))
    )
    out = circle(c, c, 74, "url(#bezel)") + circle(c, c, 60, "url(#bezel_in)")
    if lit:
        out += circle(c, c, 83, "url(#halo)")
    out += circle(c, c, 53, "#1a0403") + circle(c, c, 51, "url(#jewel)")
    for facet in range(0, 360, 45):  # brighter towards the light
        (ax, ay), (bx, by) = (
            (math.cos(math.radians(facet + side)), math.sin(math.radians(facet + side)))
            for side in (-22.5, 22.5)
        )
        shine = 0.5 + 0.5 * math.cos(math.radians(facet - 225))
        d = (
            f"M{c + 26 * ax:.1f} {c + 26 * ay:.1f}L{c + 50 * ax:.1f} {c + 50 * ay:.1f}"
            f"A50 50 0 0 1 {c + 50 * bx:.1f} {c + 50 * by:.1f}L{c + 26 * bx:.1f} {c + 26 * by:.1f}Z"
        )
        out += path(
            d,
            fill="#fff" if shine > 0.5 else "#000",
            opacity=f"{abs(shine - 0.5) * (0.5 if lit else 0.55):.2f}",
        )
    out += ellipse(68, 62, 15, 9, "#fff", opacity=0.85 if lit else 0.5, transform="rotate(-40 68 62)")
    return svg(size, defs, out)


def rotary():
    """A knob without light or shadow, because the picture is rotated."""
    c = DIAL_SIDE // 2
    defs = radial(
        "skirt", 0.5, 0.5, 0.5, (0, "#3c3c3f"), (0.80, "#2c2c2e"), (0.93, "#3f3f42"), (1, "#161617")
    ) + radial(
        "disc",
        0.5,
        0.5,
        0.5,
        (0, "#a5a198"),
        (0.55, "#c9c5bb"),
        (0.86, "#b3aea3"),
        (0.93, "#efece4"),
        (1, "#77736b"),
    )
    knurl = []  # thirty flutes around the skirt
    for i in range(360):
        a = math.tau * i / 360
        r = 133.5 + 4.5 * abs(math.cos(15 * a)) ** 0.6
        knurl.append(f"{c + r * math.sin(a):.1f} {c - r * math.cos(a):.1f}")
    rim = "M" + "L".join(knurl) + "Z"
    out = path(rim, fill="#141415")
    out += path(rim, fill="url(#skirt)", transform=f"translate({c} {c}) scale(.97) translate({-c} {-c})")
    flutes = "".join(
        f"M{c + 108 * math.sin(a):.1f} {c - 108 * math.cos(a):.1f}"
        f"L{c + 132 * math.sin(a):.1f} {c - 132 * math.cos(a):.1f}"
        for a in (math.tau * (i + 0.5) / 30 for i in range(30))
    )
    out += path(flutes, "#0c0c0d", 7, opacity=0.75, stroke_linecap="round")
    out += circle(c, c, 100, "none", stroke="#58585c", stroke_width=4, opacity=0.7)
    out += circle(c, c, 92, "#0e0e0f") + circle(c, c, 86, "url(#disc)")
    for i, r in enumerate(range(8, 82, 3)):  # marks of the lathe
        out += circle(
            c,
            c,
            r,
            "none",
            stroke="#fff" if i * 7 % 5 < 2 else "#4f4b44",
            stroke_width=2,
            opacity=0.10 + 0.05 * (i * 5 % 4),
        )
    a = math.radians(DIAL_ZERO)
    inner, outer = (f"{c + r * math.sin(a):.1f} {c - r * math.cos(a):.1f}" for r in (52, 124))
    pointer = f"M{inner}L{outer}"
    out += path(pointer, "#0e0e0f", 30, stroke_linecap="round")
    out += path(pointer, INK, 17, stroke_linecap="round")
    return svg((DIAL_SIDE, DIAL_SIDE), defs, out)


def slider_thumb():
    """A ribbed thumb; the dark line in its middle marks the value."""
    defs = (
        linear(
            "body",
            0,
            0,
            1,
            0,
            (0, "#f4f1ea"),
            (0.10, "#d5d0c5"),
            (0.30, "#a8a297"),
            (0.44, "#827d73"),
            (0.56, "#dcd8ce"),
            (0.80, "#a8a298"),
            (1, "#55514a"),
        )
        + linear(
            "shade",
            0,
            0,
            0,
            1,
            (0, "#fff", 0.6),
            (0.05, "#fff", 0.1),
            (0.12, "#fff", 0),
            (0.84, "#000", 0),
            (1, "#000", 0.5),
        )
        + linear("fall", 0, 0, 1, 0, (0, "#000", 0.75), (0.85, "#000", 0.6), (1, "#000", 0))
    )
    out = rect(6, 10, 55, 149, "url(#fall)", 10) + rect(1, 1, 55, 151, "#0e0e0f", 9)
    out += rect(4, 4, 49, 145, "url(#body)", 7)
    for x in (12, 42):  # grooves for the fingertip
        out += rect(x, 4, 3, 145, "#3a362f", opacity=0.6) + rect(x + 3, 4, 3, 145, "#fff", opacity=0.35)
    out += rect(4, 4, 49, 145, "url(#shade)", 7) + rect(23, 4, 11, 145, "#16120e")
    return svg(PICTURES["slider.PNG"], defs, out)
