#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Uses every part of the instrument once and saves a screenshot of each in BUILD_FOLDER/tour.

usage: tour_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import unittest

from e2e_test_case import BUILD, ProgramTestCase
from midi_ports import START, MidiPorts, clock_pulses
from panel_table import EDIT, MASTER_DIAL, POWER, READER_PLATE, START_STOP
from player import wait_until, xdotool
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO, TITLE, confirm_message_box

ENABLE, CONCERT_HALL, DRUM_ROOM, BASS_DRUM_SEND, RETURN = 2100, 2122, 2120, 2011, 2110
TEMPO_FIELD, TEMPO_OK = 3101, 3102
DEVICES, CONNECT, LEARN, MIDI_CLOCK = 1001, 1002, 1005, 1008


PICTURES = BUILD / "tour"


class Tour(ProgramTestCase):
    def wait_for_effect(self, on):
        """The EFFECTS box is greener than its neighbour while the effect is on."""
        lit = lambda: self.player.green_excess("EFFECTS") > self.player.green_excess("MIDI") + 2
        wait_until(lambda: lit() == on, f"the EFFECTS box to be {'lit' if on else 'dark'}")

    def save_picture(self, name, window=None):
        """Saves the panel's part of the display, or that of another window."""
        rect = window.geometry(self.player) if window else self.player.geometry(self.player.window)
        PICTURES.mkdir(exist_ok=True)
        self.player.screenshot().save(PICTURES / f"{name}.png", *rect)

    def test_every_part_of_the_instrument(self):
        midi = MidiPorts(self.folder)
        midi.set_ports(["Keys"])
        self.player = player = self.start(fake_winmm=True, **midi.variables())
        self.set_rhythm(player)
        player.click(START_STOP)
        self.save_picture("panel")

        EFFECTS.open_by(player, "EFFECTS")
        EFFECTS.push(ENABLE)
        self.wait_for_effect(True)
        EFFECTS.push(CONCERT_HALL)
        self.assertEqual(EFFECTS.state(RETURN), 34)
        EFFECTS.push(BASS_DRUM_SEND, 0.9)
        self.assertGreater(EFFECTS.state(BASS_DRUM_SEND), 0)
        self.save_picture("effects", EFFECTS)
        EFFECTS.close(player)

        x, y, width = player.x, player.y, player.width
        player.drag(READER_PLATE, 60, 10)  # dragging the panel's surface moves the window
        player.locate_window()
        self.assertEqual((player.x, player.y), (x + 60, y + 10))
        player.press("ctrl+minus")  # the panel has the keyboard focus again
        wait_until(lambda: player.locate_window() or player.width < width, "the smaller panel")
        self.assertEqual((self.folder / "LumivardaLayoutScale.txt").read_text(), "0.950")
        self.save_picture("smaller")
        player.press("ctrl+plus")
        wait_until(lambda: player.locate_window() or player.width == width, "the former size")

        TEMPO.open_by(player, "BPM")
        xdotool("type", "133")
        wait_until(lambda: TEMPO.control(TEMPO_FIELD).text == "133", "the typed tempo")
        self.save_picture("tempo", TEMPO)
        TEMPO.push(TEMPO_OK)
        TEMPO.wait_until_closed()

        player.choose("CARDS", "SAVE")
        card = self.saved_card(1)
        for line in ("TEMPO_NORMALIZED=0.465000", "EFFECT_ENABLED=1", "EFFECT_PRESET=2"):
            self.assertIn(f"\n{line}\n", card)
        self.save_picture("cards")
        player.choose("TITLE")
        wait_until(TITLE.controls, "the title dialog")
        self.save_picture("title")
        xdotool("key", "Escape")
        TITLE.wait_until_closed()
        player.choose("CANCEL")

        EFFECTS.open_by(player, "EFFECTS")
        EFFECTS.push(DRUM_ROOM)
        EFFECTS.push(ENABLE)
        self.wait_for_effect(False)
        player.choose("CARDS", "LOAD")
        below_plate = player.x + int(player.width * 0.865), player.y + int(3200 * player.scale), 20, 6
        wait_until(lambda: player.screenshot().brightness(*below_plate) > 120, "the card below the plate")
        self.save_picture("reader")
        restored = lambda: EFFECTS.state(RETURN) == 34 and EFFECTS.state(ENABLE) == 1
        wait_until(restored, "the effect settings of the card")
        self.wait_for_effect(True)
        EFFECTS.close(player)

        PORTS.open_by(player, "MIDI")
        PORTS.select_entry(DEVICES)
        PORTS.push(CONNECT)
        wait_until(lambda: "Connected to: Keys" in PORTS.texts(), "the port")
        PORTS.push(LEARN)
        player.click(MASTER_DIAL)
        midi.send(0xB0, 7, 100)
        wait_until(lambda: f"Mapped {MASTER_DIAL} to CC 7 / CH 1" in PORTS.texts(), "the binding")
        PORTS.push(MIDI_CLOCK)
        self.save_picture("midi", PORTS)
        player.choose("BPM")
        confirm_message_box("Set Tempo")  # says that the MIDI clock sets the tempo
        self.assertFalse(TEMPO.controls())
        PORTS.close(player)

        ABOUT.open_by(player, "INFO")
        for words in ("Keys", "48000 Hz", "Percussomatic.ini", "PunchCards"):
            self.assertIn(words, " ".join(ABOUT.texts()))
        self.save_picture("info", ABOUT)
        ABOUT.close(player, "Escape")

        player.click(EDIT)  # loading the card turned edit mode on
        midi.send_many([(0, START), *clock_pulses(140, 24 * 4)])
        wait_until(midi.all_sent, "the last clock pulse")
        wait_until(lambda: player.green_excess("BPM") > 10, "the BPM box to turn green")
        self.save_picture("clock")

        player.click(POWER)
        self.save_picture("power_off")
        self.assertEqual(player.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
