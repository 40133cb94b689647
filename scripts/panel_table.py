# SPDX-License-Identifier: MIT
"""The program's controls, instruments and card layout, read from the JSON file that the build writes.

Positions and sizes are in layout units; lines and steps count from 0.
"""
import panel_file

_PANEL = panel_file.load()

PANEL_WIDTH, PANEL_HEIGHT = LAYOUT_SIZE = tuple(_PANEL["layoutSize"])
SLIDER_TRAVEL = _PANEL["sliderTravel"]
LINE_COUNT, STEP_COUNT = _PANEL["lineCount"], _PANEL["stepCount"]
CARD = _PANEL["card"]  # in card units

CONTROLS = {row["name"]: (row["x"], row["y"], row["width"], row["height"]) for row in _PANEL["controls"]}
IMAGES = {row["name"]: row["image"] for row in _PANEL["controls"]}  # of unlit controls

_NAMES = _PANEL["controlNames"]
START_STOP, EDIT, CLEAR_ALL, POWER = (_NAMES[key] for key in ("startStop", "edit", "clearAll", "power"))
MASTER_DIAL, TEMPO_DIAL = _NAMES["masterDial"], _NAMES["tempoDial"]
BEAT_LAMP, READER_PLATE = _NAMES["beatLamp"], _NAMES["readerPlate"]
FRONT_PANEL = "pannello_frontale_001"
UNUSED_SWITCH = "sw_014"  # lies under the switch for 15 steps and has no function

SLIDERS = [line["slider"] for line in _PANEL["lines"]]
CLEAR_SWITCHES = [line["clear"] for line in _PANEL["lines"]]
SWITCHES_A = [line["switchA"] for line in _PANEL["lines"]]
SWITCHES_B = [line["switchB"] for line in _PANEL["lines"]]
LENGTH_SWITCHES = {length: name for name, length in _PANEL["sequenceLengths"].items()}

INSTRUMENTS = [row["name"] for row in _PANEL["instruments"]]  # A and B of each line, in sample order
SWITCHES = {row["name"]: row["switch"] for row in _PANEL["instruments"]}  # by instrument

_STEP_BUTTONS = [name for name, image in IMAGES.items() if image.startswith("bottone_")]


def step_button(line, step):
    return _STEP_BUTTONS[line * STEP_COUNT + step]
