# SPDX-License-Identifier: MIT
"""The program's icon: walnut, a dark panel, nine keys of which four are lit.

Every size has its own measures, so that all edges are on whole pixels.
"""
import struct

from drawing import circle, clip, group, linear, path, radial, rect, svg
from materials import CURL, veneer
from palette import AMBER, RECESS, SMOKE, WALNUT_DARK

# size: wood, panel around the keys, key, gap between keys (pixels); twice the first two,
# three keys and two gaps make the size.
MEASURES = {
    16: (1, 0, 4, 1),
    20: (2, 1, 4, 1),
    24: (2, 0, 6, 1),
    32: (3, 2, 6, 2),
    48: (5, 2, 10, 2),
    64: (6, 4, 12, 4),
    256: (30, 14, 48, 12),
}
LIT = {(0, 0), (2, 0), (1, 1), (0, 2)}  # column, row


def keys(size):
    """Corner of each key and whether it is lit."""
    wood, margin, key, gap = MEASURES[size]
    for row in range(3):
        for column in range(3):
            yield (
                wood + margin + column * (key + gap),
                wood + margin + row * (key + gap),
                (column, row) in LIT,
            )


def small_icon(size):
    """Flat colours and single pixels, without gradients."""
    wood, _, key, _ = MEASURES[size]
    panel = size - 2 * wood
    out = path(f"M1 0H{size - 1}V1H{size}V{size - 1}H{size - 1}V{size}H1V{size - 1}H0V1H1Z", fill="#7a4c2a")
    out += rect(1, 0, size - 2, 1, "#a9713f") + rect(1, size - 1, size - 2, 1, "#4a2c17")
    out += rect(wood, wood, panel, panel, "#17181a")
    core, body, rim = AMBER
    for x, y, lit in keys(size):
        if lit:
            inset = key // 3
            out += rect(x, y, key, key, body)
            out += rect(x + inset, y + inset, key - 2 * inset, key - 2 * inset, core)
            out += rect(x, y + key - 1, key, 1, rim)
        else:
            out += rect(x, y, key, key, SMOKE[1]) + rect(x, y, key, 1, SMOKE[0])
    return svg((size, size), "", out)


def large_icon(size):
    """Shaded like the panel: veneer, an inset panel, keys in wells."""
    wood, _, key, _ = MEASURES[size]
    line, panel = max(1, size / 64), size - 2 * wood
    round_wood, round_panel, round_key = size / 7, size / 16, key / 6
    core, body, rim = AMBER
    board, grain = veneer("board", 0, 0, 1024, 1024, seed=11)
    defs = (
        CURL
        + board
        + clip("outline", line, line, size - 2 * line, size - 2 * line, round_wood - line)
        + linear("sheen", 0, 0, 1, 1, (0, "#ffc98a", 0.5), (0.5, "#ffc98a", 0.1), (1, "#000", 0.3))
        + linear("panel", 0, 0, 1, 1, (0, "#414246"), (1, "#1c1d1f"))
        + linear("edge", 0, 0, 1, 1, (0, "#120a05"), (0.5, WALNUT_DARK), (1, "#c98d58"))
        + linear(
            "bevel", 0, 0, 1, 1, (0, "#fff", 0.4), (0.45, "#fff", 0), (0.6, "#000", 0), (1, "#000", 0.35)
        )
        + radial("spill", 0.5, 0.5, 0.5, (0, body, 0.9), (0.6, rim, 0.5), (1, rim, 0))
        + radial("lit", 0.5, 0.46, 0.7, (0, core), (0.25, core), (0.65, body), (1, rim))
        + linear("unlit", 0, 0, 0.35, 1, (0, "#8a7053"), (1, SMOKE[2]))
    )
    out = rect(0, 0, size, size, WALNUT_DARK, round_wood)
    out += group(
        group(grain, transform=f"scale({size / 1024})") + rect(0, 0, size, size, "url(#sheen)"),
        clip_path="url(#outline)",
    )
    out += rect(
        wood - line, wood - line, panel + 2 * line, panel + 2 * line, "url(#edge)", round_panel + line
    )
    out += rect(wood, wood, panel, panel, "url(#panel)", round_panel)
    for x, y, lit in keys(size):
        out += rect(x - line, y - line, key + 2 * line, key + 2 * line, RECESS, round_key + line)
        if lit:
            out += circle(x + key / 2, y + key / 2, 0.85 * key, "url(#spill)")
        out += rect(x, y, key, key, "url(#lit)" if lit else "url(#unlit)", round_key)
        out += rect(x, y, key, key, "url(#bevel)", round_key)
        inset = key // 8
        out += rect(
            x + inset,
            y + inset,
            key - 2 * inset,
            key - 2 * inset,
            "url(#lit)" if lit else "url(#unlit)",
            round_key / 2,
        )
    return svg((size, size), defs, out)


def icon(size):
    return small_icon(size) if size <= 24 else large_icon(size)


def icon_file(images):
    """The bytes of an ICO file, given (size, RGBA pixels, PNG file) in ascending order.

    The largest image is stored as PNG, the others as bitmaps, which every reader supports.
    """
    entries, bodies = b"", b""
    offset = 6 + 16 * len(images)
    for size, rgba, png in images:
        body = png if size == 256 else _bitmap(size, rgba)
        entries += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(body), offset)
        bodies += body
        offset += len(body)
    return struct.pack("<HHH", 0, 1, len(images)) + entries + bodies


def _bitmap(size, rgba):
    """A bitmap without file header: BGRA rows from the bottom up, then a 1-bit mask."""
    mask_row = (size + 31) // 32 * 4
    pixels, mask = b"", b""
    for y in reversed(range(size)):
        row = rgba[y * size * 4 : (y + 1) * size * 4]
        pixels += b"".join(bytes((b, g, r, a)) for r, g, b, a in struct.iter_unpack("4B", row))
        bits = sum(1 << (mask_row * 8 - 1 - x) for x in range(size) if row[4 * x + 3] < 128)
        mask += bits.to_bytes(mask_row, "big")
    # The height counts pixels and mask.
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(pixels) + len(mask), 0, 0, 0, 0)
    return header + pixels + mask
