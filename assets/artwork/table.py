# SPDX-License-Identifier: MIT
"""Sizes and positions of everything drawn. Positions come from the program's panel table.

Positions are in layout units, one unit being one pixel of the artwork; a rectangle is
(x, y, width, height).
"""
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import panel_table as panel  # noqa: E402

PICTURES = {  # file: (width, height) in pixels
    "mobile.PNG": (7995, 5183),
    "pannello_frontale.png": (5904, 3472),
    "pannello sotto.PNG": (7325, 827),
    "c_scheda.PNG": (1246, 1580),
    "bottone_off.PNG": (178, 184),
    "bottone_on.PNG": (178, 184),
    "SW_off.PNG": (142, 142),
    "SW_on.PNG": (142, 142),
    "PW_off.PNG": (158, 366),
    "PW_on.PNG": (158, 366),
    "BIN_off.PNG": (166, 166),
    "BIN_onPNG.PNG": (166, 166),
    "rotary.PNG": (284, 284),
    "slider.PNG": (61, 159),
    "pounch.PNG": (883, 2540),
    "hole.PNG": (56, 56),
}
STATIC_PICTURES = tuple(PICTURES)[:4]  # drawn once, back to front; no transparency
ICON = "AppIcon.ico"
ICON_SIZES = (16, 20, 24, 32, 48, 64, 256)  # pixels

CABINET, FRONT, LOWER, READER = (
    next(rect for name, rect in panel.CONTROLS.items() if panel.IMAGES[name] == picture)
    for picture in STATIC_PICTURES
)


def corner(name):
    """Upper left corner of a control."""
    return panel.CONTROLS[name][:2]


# The rhythm lines: corners of the first step key, the slider at 0, switches A, B and CLEAR.
STEP_W, STEP_H = PICTURES["bottone_off.PNG"]
STEP_CORNERS = [corner(panel.step_button(line, 0)) for line in range(panel.LINE_COUNT)]
SLIDER_X, SLIDER_Y = corner(panel.SLIDERS[0])[0], [corner(name)[1] for name in panel.SLIDERS]
SLIDER_W, SLIDER_H = PICTURES["slider.PNG"]
SWITCH_SIDE = PICTURES["SW_off.PNG"][0]
CORNERS_A, CORNERS_B = list(map(corner, panel.SWITCHES_A)), list(map(corner, panel.SWITCHES_B))
CLEAR_CORNERS = [corner(name) for name in panel.CLEAR_SWITCHES]
LINE_INSTRUMENTS = [(a.upper(), b.upper()) for a, b in zip(panel.INSTRUMENTS[::2], panel.INSTRUMENTS[1::2])]

LENGTH_CORNERS = {length: corner(name) for length, name in panel.LENGTH_SWITCHES.items()}
DIAL_SIDE = PICTURES["rotary.PNG"][0]
DIAL_ZERO, DIAL_SPAN = 210, 300  # degrees clockwise from 12 o'clock

# The card has units of its own. CARD_REST is where a loaded card stops, in layout units.
CARD_REST = (6560, 2195, 743, 2137)
CARD_W, CARD_H = panel.CARD["width"], panel.CARD["height"]
HOLE_X0, HOLE_DX = panel.CARD["firstHoleX"], panel.CARD["holePitchX"]  # centre of a hole: + line
HOLE_Y0, HOLE_DY = panel.CARD["firstHoleY"], panel.CARD["holePitchY"]  # - step
TITLE_TOP, TITLE_BOTTOM = panel.CARD["titleTop"], panel.CARD["titleBottom"]
