# SPDX-License-Identifier: MIT
"""The colours, by material."""

WALNUT, WALNUT_DARK, WALNUT_LIGHT, PORE = "#573822", "#382114", "#845935", "#23140a"
PANEL_LIGHT, PANEL, PANEL_DARK = "#36373a", "#2a2b2e", "#202124"
RECESS, EDGE_LIGHT = "#0d0d0e", "#77767a"

# Lettering: names, scales, remarks and rules, CLEAR.
INK, INK_SOFT, INK_QUIET, INK_RED = "#f1e9d6", "#cdc4b1", "#b8b2a4", "#ff8268"

ALU_LIGHT, ALU, ALU_DARK, ALU_INK = "#c6c1b5", "#aca69a", "#868076", "#171512"
CARD_LIGHT, CARD, CARD_DARK, CARD_INK = "#f1e4c4", "#e8d8b2", "#cdb98c", "#344042"
FELT = "#241c15"

# Keys as (light, middle, dark); lit ones as (core, body, rim).
AMBER, SMOKE = ("#fff3cf", "#ffbd4a", "#e58a1c"), ("#6a5540", "#4c3b2a", "#30241a")
MILK, HORN = ("#fffdf6", "#fff1d2", "#e9c583"), ("#857c6d", "#625a4e", "#443e36")
RUBY_CORE, RUBY, RUBY_DARK = "#ffd9c4", "#ff4b32", "#5a120d"
