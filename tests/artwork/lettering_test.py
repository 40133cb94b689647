"""What is printed on the panel against the controls it is printed for.

The drawing functions note each text, tick and bar with the control it belongs to; where that control
is comes from the program's own table.
"""

import math
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "assets/artwork"), str(ROOT / "scripts")]

import lettering  # noqa: E402
import panels  # noqa: E402
import player  # noqa: E402
import table  # noqa: E402

SLACK = 2                       # layout units
SLIDER_TRAVEL = 650
POINTER_AT_0, POINTER_TURN = 210, 300       # degrees clockwise from 12 o'clock


def deviation(mark, controls):
    """How far a mark is from where its control wants it, in layout units."""
    (x, y, w, h), (x2, _, w2, _) = (controls[name] for name in mark.of)
    if mark.align == "start":
        return mark.x - x
    if mark.align == "end":
        return mark.x - (x2 + w2)
    if mark.align == "middle":
        return mark.x - (x + x2 + w2) / 2
    if mark.align == "beside":
        return mark.y - (y + h / 2)
    if mark.align == "slide":
        return mark.x - (x + w / 2 + SLIDER_TRAVEL * mark.value)
    assert mark.align == "turn", mark
    angle = math.radians(POINTER_AT_0 + POINTER_TURN * mark.value)
    right, up = mark.x - (x + w / 2), (y + h / 2) - mark.y
    along = right * math.sin(angle) + up * math.cos(angle)
    return right * math.cos(angle) - up * math.sin(angle) if along > 0 else math.inf


def printed():
    lettering.PRINTED.clear()
    panels.front_panel()
    panels.lower_panel()
    return [mark for mark in lettering.PRINTED if mark.of]


class Lettering(unittest.TestCase):
    controls = player.read_controls()
    marks = printed()

    def test_every_mark_agrees_with_its_control(self):
        for mark in self.marks:
            with self.subTest(mark=mark):
                self.assertLessEqual(abs(deviation(mark, self.controls)), SLACK)

    # Sideways they agree; up and down they keep one distance: numbers from the keys under them, ticks
    # from the slot above them, labels from the keys over them (the lamp is a little larger).
    def test_rows_of_marks_keep_their_distance(self):
        for mark in self.marks:
            _, y, _, h = self.controls[mark.of[0]]
            if mark.what.isdigit() and mark.align == "middle" and mark.of[0].startswith("bottone_"):
                self.assertAlmostEqual(y - mark.y, panels.ROW_LABEL, delta=SLACK, msg=mark)
            elif mark.what == "tick" and mark.align == "slide":
                self.assertAlmostEqual(mark.y - (y + h / 2), 44, delta=SLACK, msg=mark)
            elif mark.of[0] in ("sw_007", "sw_008", "bin_001"):
                self.assertAlmostEqual(mark.y - mark.cap - (y + h), 59, delta=SLACK, msg=mark)

    # A control without a mark would pass the test above. sw_014 lies hidden under sw_015.
    def test_every_control_is_lettered(self):
        named = {name for mark in self.marks if mark.cap for name in mark.of}
        pictures = {"mobile_001", "pannello_frontale_001", "pannello_sotto_001", "c_scheda_001"}
        self.assertEqual(self.controls.keys() - named, pictures | {"sw_014"})

    def test_texts_name_the_right_controls(self):
        texts = {(mark.what, mark.of[0]) for mark in self.marks}
        for text, name in (("START/STOP", "sw_007"), ("EDIT", "sw_008"), ("ALL", "sw_018"), ("1", "sw_029"),
                           ("6", "sw_019"), ("5", "sw_009"), ("15", "sw_015"), ("SNARE", "sw_026"),
                           ("BASS DRUM", "sw_017"), ("BLOCK 1", "sw_006"), ("MASTER", "rotary_001"),
                           ("16", "bottone_096"), ("1", "bottone_081"), ("BEAT", "bin_001")):
            self.assertIn((text, name), texts)

    # Every sequence length must end a group in one of the registers.
    def test_registers_serve_every_length(self):
        bars = {(int(first[8:]), int(last[8:])) for what, (first, last), *_ in self.marks if what == "bar"}
        for length in table.LENGTHS:
            serving = [size for size, _ in panels.GROUPS if (length - size + 1, length) in bars]
            self.assertTrue(serving, length)

    # The program punches where the card is printed.
    def test_printed_rings_are_where_the_program_punches(self):
        source = (ROOT / "src/ui/card_rendering.cpp").read_text()
        numbers = dict(re.findall(r"\b(k\w+) = (\d+)(?:\.0)?[,;]", source))
        self.assertEqual([int(numbers[name]) for name in
                          ("kFirstX", "kLinePitch", "kFirstY", "kStepPitch", "kTop", "kBottom")],
                         [table.HOLE_X0, table.HOLE_DX, table.HOLE_Y0, table.HOLE_DY, table.TITLE_TOP,
                          table.TITLE_BOTTOM])


if __name__ == "__main__":
    unittest.main()
