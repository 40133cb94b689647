"""What the player touches and what lights up: keys, rocker, jewel, knob and slider thumb.

Shadows that fall on a panel belong to the panel, except those of pictures that stay in place.
"""
import math

from drawing import circle, ellipse, linear, path, radial, rect, svg
from palette import AMBER, HORN, INK, MILK, RUBY, RUBY_CORE, RUBY_DARK, SMOKE
from table import PICTURES, ROTARY, ROTARY_ZERO


def key(size, inset, r, colours, lit):
    """A translucent key seen from above: skirt, bevel, lens. Lit, it also lights its surroundings."""
    (w, h), (core, body, rim) = size, colours
    x, y, key_w, key_h = inset, inset, w - 2 * inset, h - 2 * inset
    defs = linear("bevel", 0, 0, 1, 1, (0, "#fff", 0.75 if lit else 0.34), (0.42, "#fff", 0.05),
                  (0.58, "#000", 0.04 if lit else 0.05), (1, "#000", 0.22 if lit else 0.62))
    if lit:
        defs += radial("face", 0.5, 0.46, 0.70, (0, core), (0.22, core), (0.62, body), (1, rim))
        defs += radial("spill", 0.5, 0.5, 0.72, (0, body, 1), (0.58, body, 0.8), (0.74, rim, 0.35),
                       (0.92, rim, 0))
        out = rect(0, 0, w, h, "url(#spill)", r + inset)
        out += rect(x - 1, y - 1, key_w + 2, key_h + 2, rim, r)
    else:
        defs += linear("face", 0, 0, 0.35, 1, (0, core), (0.55, body), (1, rim))
        out = rect(x + 3, y + 5, key_w, key_h, "#000", r, opacity=0.7)
    out += rect(x, y, key_w, key_h, "url(#face)", r) + rect(x, y, key_w, key_h, "url(#bevel)", r)
    e = 13                                                          # the lens lies inside the bevel
    out += rect(x + e, y + e, key_w - 2 * e, key_h - 2 * e, "url(#face)", max(4, r - 5))
    if not lit:                                                     # reflection near the top
        out += path(f"M{x + e + 8} {y + e + 5}H{x + key_w - e - 8}", "#fff", 7, opacity=0.20,
                    stroke_linecap="round")
    return svg(size, defs, out)


def step_key(lit):
    return key(PICTURES["bottone_on.PNG"], 11, 15, AMBER if lit else SMOKE, lit)


def switch(lit):
    return key(PICTURES["SW_on.PNG"], 10, 18, MILK if lit else HORN, lit)


def power_rocker(lit):
    """A rocker: on, the upper half is pressed in and dark, the lower one stands out, the window glows."""
    w, h = PICTURES["PW_on.PNG"]
    raised, pressed = ("#737277", "#37373a"), ("#060607", "#232325")    # from the end to the pivot
    if lit:
        upper, lower, edge = pressed, raised, h - 17
        glass = (0, "#fff3ea"), (0.22, RUBY_CORE), (0.62, RUBY), (1, "#d42a1d")
    else:
        upper, lower, edge = raised, pressed, 17
        glass = (0, "#6d2019"), (0.6, RUBY_DARK), (1, "#38090a")
    defs = (linear("upper", 0, 0, 0, 1, (0, upper[0]), (1, upper[1]))
            + linear("lower", 0, 1, 0, 0, (0, lower[0]), (1, lower[1]))
            + linear("side", 0, 0, 1, 0, (0, "#fff", 0.28), (0.10, "#fff", 0), (0.90, "#000", 0),
                     (1, "#000", 0.5))
            + radial("window", 0.5, 0.45, 0.75, *glass)
            + radial("spill", 0.5, 0.5, 0.5, (0, RUBY, 0.75), (1, RUBY, 0)))
    out = rect(4, 4, w - 8, h - 8, "#0a0a0b", 14)
    out += rect(11, 11, w - 22, 173, "url(#upper)", 8) + rect(11, 182, w - 22, 173, "url(#lower)", 8)
    out += rect(11, 11, w - 22, h - 22, "url(#side)", 8)
    out += path(f"M18 {edge}H140", "#fff", 8, opacity=0.35, stroke_linecap="round")
    out += path("M14 183H144", "#000", 6, opacity=0.5)
    if lit:
        out += ellipse(79, 98, 72, 90, "url(#spill)")
    out += rect(36, 34, 86, 126, "#000", 14) + rect(43, 41, 72, 112, "url(#window)", 9)
    out += rect(52, 49, 54, 12, "#fff", 6, opacity=0.55 if lit else 0.22)
    out += circle(79, 268, 25, "none", stroke=INK, stroke_width=9)
    return svg((w, h), defs, out)


def beat_lamp(lit):
    """A faceted jewel in a chromed bezel."""
    size = PICTURES["BIN_off.PNG"]
    c = size[0] // 2
    if lit:
        glass = (0, "#fff8f0"), (0.34, "#ffe3cf"), (0.70, RUBY), (1, "#c81a10")
    else:
        glass = (0, "#8a2a22"), (0.5, RUBY_DARK), (1, "#260505")
    defs = (linear("bezel", 0, 0, 1, 1, (0, "#f6f3ec"), (0.45, "#98948b"), (0.55, "#6b675f"),
                   (1, "#2f2d2a"))
            + linear("bezel_in", 0, 0, 1, 1, (0, "#2a2825"), (1, "#c9c5bb"))
            + radial("jewel", 0.44, 0.42, 0.62, *glass)
            + radial("halo", 0.5, 0.5, 0.5, (0, RUBY, 0.8), (0.66, RUBY, 0.45), (0.78, RUBY, 0.12),
                     (1, RUBY, 0)))
    out = circle(c, c, 74, "url(#bezel)") + circle(c, c, 60, "url(#bezel_in)")
    if lit:
        out += circle(c, c, 83, "url(#halo)")
    out += circle(c, c, 53, "#1a0403") + circle(c, c, 51, "url(#jewel)")
    for facet in range(0, 360, 45):                                 # brighter towards the light
        (ax, ay), (bx, by) = ((math.cos(math.radians(facet + side)), math.sin(math.radians(facet + side)))
                              for side in (-22.5, 22.5))
        shine = 0.5 + 0.5 * math.cos(math.radians(facet - 225))
        d = (f"M{c + 26 * ax:.1f} {c + 26 * ay:.1f}L{c + 50 * ax:.1f} {c + 50 * ay:.1f}"
             f"A50 50 0 0 1 {c + 50 * bx:.1f} {c + 50 * by:.1f}L{c + 26 * bx:.1f} {c + 26 * by:.1f}Z")
        out += path(d, fill="#fff" if shine > 0.5 else "#000",
                    opacity=f"{abs(shine - 0.5) * (0.5 if lit else 0.55):.2f}")
    out += ellipse(68, 62, 15, 9, "#fff", opacity=0.85 if lit else 0.5, transform="rotate(-40 68 62)")
    return svg(size, defs, out)


def rotary():
    """A knob without light or shadow of its own: it turns, so it looks the same from everywhere."""
    c = ROTARY // 2
    defs = (radial("skirt", 0.5, 0.5, 0.5, (0, "#3c3c3f"), (0.80, "#2c2c2e"), (0.93, "#3f3f42"),
                   (1, "#161617"))
            + radial("disc", 0.5, 0.5, 0.5, (0, "#a5a198"), (0.55, "#c9c5bb"), (0.86, "#b3aea3"),
                     (0.93, "#efece4"), (1, "#77736b")))
    knurl = []                                                      # twenty waves around the skirt
    for i in range(240):
        a = math.tau * i / 240
        r = 132 + 5 * math.cos(20 * a)
        knurl.append(f"{c + r * math.sin(a):.1f} {c - r * math.cos(a):.1f}")
    rim = "M" + "L".join(knurl) + "Z"
    out = path(rim, fill="#141415")
    out += path(rim, fill="url(#skirt)", transform=f"translate({c} {c}) scale(.97) translate({-c} {-c})")
    out += circle(c, c, 92, "#0e0e0f") + circle(c, c, 86, "url(#disc)")
    for r in (30, 48, 66):
        out += circle(c, c, r, "none", stroke="#6f6b63", stroke_width=5, opacity=0.28)
    a = math.radians(ROTARY_ZERO)
    inner, outer = (f"{c + r * math.sin(a):.1f} {c - r * math.cos(a):.1f}" for r in (52, 124))
    pointer = f"M{inner}L{outer}"
    out += path(pointer, "#0e0e0f", 30, stroke_linecap="round")
    out += path(pointer, INK, 17, stroke_linecap="round")
    return svg((ROTARY, ROTARY), defs, out)


def slider_thumb():
    """A ribbed thumb; its dark middle line is the index."""
    defs = (linear("body", 0, 0, 1, 0, (0, "#f1eee6"), (0.18, "#c4bfb4"), (0.42, "#8d887e"),
                   (0.58, "#d7d3c9"), (0.82, "#a39e93"), (1, "#55514a"))
            + linear("shade", 0, 0, 0, 1, (0, "#fff", 0.35), (0.1, "#fff", 0), (0.88, "#000", 0),
                     (1, "#000", 0.45)))
    out = rect(5, 7, 56, 152, "#000", 10, opacity=0.55) + rect(1, 1, 55, 151, "#0e0e0f", 9)
    out += rect(4, 4, 49, 145, "url(#body)", 7) + rect(4, 4, 49, 145, "url(#shade)", 7)
    out += rect(23, 4, 11, 145, "#16120e")
    return svg(PICTURES["slider.PNG"], defs, out)
