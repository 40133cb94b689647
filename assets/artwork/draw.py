# SPDX-License-Identifier: MIT
"""All pictures by file name; each entry is a function that returns SVG text at native size."""
from cabinet import cabinet
from card import card, hole, reader_plate
from controls import beat_lamp, power_rocker, rotary, slider_thumb, step_key, switch
from panels import front_panel, lower_panel

DRAWINGS = {
    "mobile.PNG": cabinet,
    "pannello_frontale.png": front_panel,
    "pannello sotto.PNG": lower_panel,
    "c_scheda.PNG": reader_plate,
    "bottone_off.PNG": lambda: step_key(lit=False),
    "bottone_on.PNG": lambda: step_key(lit=True),
    "SW_off.PNG": lambda: switch(lit=False),
    "SW_on.PNG": lambda: switch(lit=True),
    "PW_off.PNG": lambda: power_rocker(lit=False),
    "PW_on.PNG": lambda: power_rocker(lit=True),
    "BIN_off.PNG": lambda: beat_lamp(lit=False),
    "BIN_onPNG.PNG": lambda: beat_lamp(lit=True),
    "rotary.PNG": rotary,
    "slider.PNG": slider_thumb,
    "pounch.PNG": card,
    "hole.PNG": hole,
}
