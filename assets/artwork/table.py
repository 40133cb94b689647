"""Pictures and positions: the one place where the artwork keeps its measures.

Positions are layout units, one unit being one pixel of the artwork; a rectangle is
(x, y, width, height). The program's control table holds the same numbers.
"""

PICTURES = {                                # file: (width, height) in pixels
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
STATIC_PICTURES = tuple(PICTURES)[:4]       # drawn once, back to front; no transparency
ICON = "AppIcon.ico"
ICON_SIZES = (16, 20, 24, 32, 48, 64, 256)  # pixels

LAYOUT_SIZE = (8019, 5153)                  # what the window shows
CABINET = (24, -30, *PICTURES["mobile.PNG"])
FRONT = (366, 676, *PICTURES["pannello_frontale.png"])
LOWER = (369, 4212, *PICTURES["pannello sotto.PNG"])
READER = (6346, 602, *PICTURES["c_scheda.PNG"])

# The six rhythm lines: corners of the first step key, the slider at 0, switches A, B and CLEAR.
STEP_W, STEP_H = PICTURES["bottone_off.PNG"]
STEPS = [(2553, 1130), (2550, 1599), (2547, 2070), (2550, 2547), (2545, 3020), (2550, 3492)]
SLIDER_X, SLIDER_Y = 727, [1148, 1621, 2094, 2562, 3034, 3508]
SLIDER_W, SLIDER_H = PICTURES["slider.PNG"]
SLIDER_TRAVEL = 650
SW = 142                                    # side of every switch
SWITCH_Y = [1154, 1627, 2098, 2570, 3044, 3510]
SW_A = [(1745, y) for y in SWITCH_Y]
SW_B = [(2040, y) for y in SWITCH_Y]
SW_CLEAR = [(5787, y) for y in (1156, 1628, 2092, 2571, 3045, 3517)]
SW_CLEAR_ALL = (5787, 845)
NAMES = [("ROLLING SNARE", "CYMBAL 1"), ("CYMBAL 2", "SNARE"), ("TIMBAL 2", "CHARLESTON"),
         ("TRIANGLE", "CLAVE"), ("BLOCK 2", "TIMBAL 1"), ("BLOCK 1", "BASS DRUM")]

SW_START, SW_EDIT = (3429, 4555), (3842, 4555)
LENGTHS = {5: (4373, 4557), 6: (4538, 4557), 9: (4715, 4557), 10: (4897, 4557),
           12: (5074, 4557), 15: (5258, 4557), 16: (5437, 4557)}
LENGTH_COVERED = (5260, 4563)               # a switch without function lies under the 15
POWER = (1480, 4439, *PICTURES["PW_off.PNG"])
BEAT = (3012, 4535, *PICTURES["BIN_off.PNG"])
ROTARY = 284                                # side of a rotary's square
MASTER, TEMPO = (1944, 4484), (2475, 4484)
ROTARY_ZERO, ROTARY_SPAN = 210, 300         # degrees clockwise from 12 o'clock

# What the program calls the controls, line by line or length by length.
A_NAMES = [f"sw_{n:03}" for n in range(1, 7)]
B_NAMES = [f"sw_{n:03}" for n in (28, 26, 24, 22, 20, 17)]
CLEAR_NAMES = [f"sw_{n:03}" for n in (29, 27, 25, 23, 21, 19)]
LENGTH_NAMES = dict(zip(LENGTHS, (f"sw_{n:03}" for n in (9, 10, 11, 12, 13, 15, 16))))


def slider_name(line):
    return f"slider_{line + 1:03}"


def step_name(line, step):
    return f"bottone_{16 * line + step + 1:03}"


# The card has units of its own. REST is where a read card stops, in layout units.
CARD_REST = (6560, 2195, 743, 2137)
CARD_W, CARD_H = 1149, 3304
HOLE_X0, HOLE_DX = 456, 107                 # centre of a hole: + line 0..5
HOLE_Y0, HOLE_DY = 3078, 154                # - step 0..15
TITLE_TOP, TITLE_BOTTOM = 38, 205
