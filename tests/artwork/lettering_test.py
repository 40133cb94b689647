# SPDX-License-Identifier: MIT
"""Checks that the lettering on the panel matches the controls it belongs to.

The drawing functions record each text, tick and bar with its control; the controls come from the panel table.
"""
import math
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "assets/artwork"), str(ROOT / "scripts")]

import lettering  # noqa: E402
import panels  # noqa: E402
import table  # noqa: E402
from table import panel  # noqa: E402

TOLERANCE = 2  # layout units
POINTER_AT_0, POINTER_TURN = 210, 300  # degrees clockwise from 12 o'clock


def deviation(mark):
    """The distance of a mark from its expected place, in layout units."""
    (x, y, w, h), (x2, _, w2, _) = (panel.CONTROLS[name] for name in mark.of)
    if mark.align == "start":
        return mark.x - x
    if mark.align == "end":
        return mark.x - (x2 + w2)
    if mark.align == "middle":
        return mark.x - (x + x2 + w2) / 2
    if mark.align == "beside":
        return mark.y - (y + h / 2)
    if mark.align == "slide":
        return mark.x - (x + w / 2 + panel.SLIDER_TRAVEL * mark.value)
    assert mark.align == "turn", mark
    angle = math.radians(POINTER_AT_0 + POINTER_TURN * mark.value)
    right, up = mark.x - (x + w / 2), (y + h / 2) - mark.y
    along = right * math.sin(angle) + up * math.cos(angle)
    return right * math.cos(angle) - up * math.sin(angle) if along > 0 else math.inf


def printed_marks():
    lettering.PRINTED.clear()
    panels.front_panel()
    panels.lower_panel()
    return [mark for mark in lettering.PRINTED if mark.of]


class Lettering(unittest.TestCase):
    marks = printed_marks()

    def test_every_mark_is_aligned_with_its_control(self):
        for mark in self.marks:
            with self.subTest(mark=mark):
                self.assertLessEqual(abs(deviation(mark)), TOLERANCE)

    # Vertically, marks keep one distance: numbers from the keys below them, ticks from the slot above them,
    # labels from the keys above them (the lamp is a little larger).
    def test_rows_of_marks_keep_their_distance(self):
        for mark in self.marks:
            name = mark.of[0]
            _, y, _, h = panel.CONTROLS[name]
            if mark.what.isdigit() and mark.align == "middle" and name.startswith("bottone_"):
                self.assertAlmostEqual(y - mark.y, panels.ROW_LABEL, delta=TOLERANCE, msg=mark)
            elif mark.what == "tick" and mark.align == "slide":
                self.assertAlmostEqual(mark.y - (y + h / 2), 44, delta=TOLERANCE, msg=mark)
            elif name in (panel.START_STOP, panel.EDIT, panel.BEAT_LAMP):
                self.assertAlmostEqual(mark.y - mark.cap - (y + h), 59, delta=TOLERANCE, msg=mark)

    # A control without a mark would pass the tests above.
    def test_every_control_is_lettered(self):
        lettered = {name for mark in self.marks if mark.cap for name in mark.of}
        large = {name for name, picture in panel.IMAGES.items() if picture in table.STATIC_PICTURES}
        self.assertEqual(panel.CONTROLS.keys() - lettered, large | {panel.UNUSED_SWITCH})

    def test_texts_belong_to_the_right_controls(self):
        expected = {("START/STOP", panel.START_STOP), ("EDIT", panel.EDIT), ("ALL", panel.CLEAR_ALL)}
        expected |= {("BEAT", panel.BEAT_LAMP), ("MASTER", panel.MASTER_DIAL)}
        expected |= {(name.upper(), switch) for name, switch in panel.SWITCHES.items()}
        expected.remove(("ROLLING SNARE", panel.SWITCHES["Rolling Snare"]))  # on two lines
        expected |= {(str(length), switch) for length, switch in panel.LENGTH_SWITCHES.items()}
        expected |= {(str(line + 1), switch) for line, switch in enumerate(panel.CLEAR_SWITCHES)}
        expected |= {(str(step + 1), panel.step_button(5, step)) for step in range(panel.STEP_COUNT)}
        self.assertLessEqual(expected, {(mark.what, mark.of[0]) for mark in self.marks})

    def test_every_sequence_length_ends_a_bar_of_a_register(self):
        ends = {panel.CONTROLS[mark.of[1]] for mark in self.marks if mark.what == "bar"}
        for length in panel.LENGTH_SWITCHES:
            self.assertIn(panel.CONTROLS[panel.step_button(0, length - 1)], ends, length)

    def test_pictures_have_the_size_of_their_controls(self):
        for name, picture in panel.IMAGES.items():
            self.assertEqual(table.PICTURES[picture], panel.CONTROLS[name][2:], name)


if __name__ == "__main__":
    unittest.main()
