# SPDX-License-Identifier: MIT
"""Writes SVG text: documents, shapes, gradients and the blur filter."""


def svg(size, defs, body, origin=(0, 0)):
    """A document of size pixels; with the picture's corner as origin, the body is in layout units."""
    w, h = size
    shift = f' transform="translate({-origin[0]} {-origin[1]})"' if origin != (0, 0) else ""
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{w}" height="{h}" '
        f'viewBox="0 0 {w} {h}">\n<defs>\n{defs}</defs>\n<g{shift}>\n{body}</g>\n</svg>\n'
    )


def linear(name, x1, y1, x2, y2, *stops):
    """Gradient over the filled shape; a stop is (offset, colour) or (offset, colour, opacity)."""
    return (
        f'<linearGradient id="{name}" x1="{x1}" y1="{y1}" x2="{x2}" y2="{y2}">'
        f"{_stops(stops)}</linearGradient>\n"
    )


def radial(name, cx, cy, r, *stops):
    return f'<radialGradient id="{name}" cx="{cx}" cy="{cy}" r="{r}">' f"{_stops(stops)}</radialGradient>\n"


def _stops(stops):
    return "".join(
        f'<stop offset="{offset}" stop-color="{colour}"'
        + "".join(f' stop-opacity="{o}"' for o in opacity)
        + "/>"
        for offset, colour, *opacity in stops
    )


def blur(name, deviation, x, y, w, h):
    """A blur limited to a box in user space, which limits its cost."""
    return (
        f'<filter id="{name}" filterUnits="userSpaceOnUse" x="{x}" y="{y}" width="{w}" '
        f'height="{h}"><feGaussianBlur stdDeviation="{deviation}"/></filter>\n'
    )


def clip(name, x, y, w, h, r=0):
    return f'<clipPath id="{name}">{rect(x, y, w, h, "#000", r)}</clipPath>\n'


def _attributes(more):
    return "".join(f' {key.replace("_", "-")}="{value}"' for key, value in more.items())


def rect(x, y, w, h, fill, r=0, **more):
    corners = f' rx="{r}"' if r else ""
    return f'<rect x="{x}" y="{y}" width="{w}" height="{h}"{corners} fill="{fill}"' f"{_attributes(more)}/>\n"


def circle(cx, cy, r, fill, **more):
    return f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{fill}"{_attributes(more)}/>\n'


def ellipse(cx, cy, rx, ry, fill, **more):
    return f'<ellipse cx="{cx}" cy="{cy}" rx="{rx}" ry="{ry}" fill="{fill}"' f"{_attributes(more)}/>\n"


def path(d, stroke="none", w=0, fill="none", **more):
    pen = f' stroke="{stroke}" stroke-width="{w}"' if stroke != "none" else ""
    return f'<path d="{d}" fill="{fill}"{pen}{_attributes(more)}/>\n'


def group(body, **more):
    return f"<g{_attributes(more)}>\n{body}</g>\n"
