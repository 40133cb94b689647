#!/usr/bin/env python3
"""One walk through the whole instrument, with a picture of every stop in BUILD_FOLDER/tour.

usage: tour_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import unittest

from midi_ports import START, MidiPorts, clock_pulses
from played import BUILD, Played
from player import wait_until, xdotool
from small_windows import ABOUT, EFFECTS, PORTS, TEMPO, TITLE, answer

ENABLE, CONCERT_HALL, DRUM_ROOM, BASS_DRUM_SEND, RETURN = 2100, 2122, 2120, 2011, 2110
TEMPO_FIELD, TEMPO_OK = 3101, 3102
DEVICES, CONNECT, LEARN, MIDI_CLOCK = 1001, 1002, 1005, 1008


class Tour(Played):
    def setUp(self):
        super().setUp()
        self.pictures = BUILD / "tour"
        self.pictures.mkdir(exist_ok=True)

    def wait_for_effect(self, on):
        """The EFFECTS box is green beside its neighbour, or not."""
        lit = lambda: self.player.greener("EFFECTS") > self.player.greener("MIDI") + 2
        wait_until(lambda: lit() == on, f"the EFFECTS box to be {'lit' if on else 'dark'}")

    def look(self, name, window=None):
        """A picture of the panel with what lies over it, or of one window alone."""
        place = window.place(self.player) if window else (self.player.x, self.player.y, self.player.width, self.player.height)
        self.player.screenshot().save(self.pictures / f"{name}.png", *place)

    def glow(self, box):
        left, top, right, bottom = self.player.regions()[box]
        return self.player.screenshot().brightness(self.player.x + left, self.player.y + top, right - left, bottom - top)

    def test_everything_once(self):
        midi = MidiPorts(self.folder)
        midi.set_ports(["Keys"])
        self.player = player = self.start(stand_in=True, **midi.variables())
        self.set_rhythm(player)
        player.click("sw_007")
        self.look("panel")

        EFFECTS.open_by(player, "EFFECTS")
        EFFECTS.push(ENABLE)
        self.wait_for_effect(True)
        EFFECTS.push(CONCERT_HALL)
        self.assertEqual(EFFECTS.state(RETURN), 34)
        EFFECTS.push(BASS_DRUM_SEND, 0.9)
        send = EFFECTS.state(BASS_DRUM_SEND)
        self.assertGreater(send, 0)
        self.look("effects", EFFECTS)
        EFFECTS.close(player)

        x, y, width = player.x, player.y, player.width
        player.drag("c_scheda_001", 60, 10)                    # the bare panel moves the window, here within the screen
        player.place()
        self.assertEqual((player.x, player.y), (x + 60, y + 10))
        player.press("ctrl+minus")                             # the panel has the keyboard again
        wait_until(lambda: player.place() or player.width < width, "the smaller panel")
        self.assertEqual((self.folder / "LumivardaLayoutScale.txt").read_text(), "0.950")
        self.look("smaller")
        player.press("ctrl+plus")
        wait_until(lambda: player.place() or player.width == width, "the former size")

        TEMPO.open_by(player, "BPM")
        xdotool("type", "133")
        wait_until(lambda: TEMPO.control(TEMPO_FIELD).text == "133", "the typed tempo")
        self.look("tempo", TEMPO)
        TEMPO.push(TEMPO_OK)
        TEMPO.wait_for_end()

        player.choose("CARDS", "SAVE")
        card = dict(line.split("=") for line in self.card(1).splitlines() if "=" in line)
        expected = {"EFFECT_ENABLED": "1", "EFFECT_PRESET": "2", "EFFECT_RETURN": "0.340000", "TEMPO_NORMALIZED": "0.465000"}
        self.assertEqual({key: card[key] for key in expected}, expected)
        self.assertEqual(float(card["EFFECT_SENDS"].split(",")[11]), send / 100)    # the last is the bass drum
        wait_until(lambda: self.glow("LOAD") > 0.8 * self.glow("SAVE"), "the card in the dialog")
        self.look("cards")
        player.choose("TITLE")
        wait_until(TITLE.controls, "the title dialog")
        self.look("title")
        xdotool("key", "Escape")
        TITLE.wait_for_end()
        player.choose("CANCEL")

        EFFECTS.open_by(player, "EFFECTS")
        EFFECTS.push(DRUM_ROOM)
        EFFECTS.push(ENABLE)
        self.wait_for_effect(False)
        player.choose("CARDS", "LOAD")
        below_plate = player.x + int(player.width * 0.865), player.y + int(3200 * player.scale), 20, 6
        wait_until(lambda: player.screenshot().brightness(*below_plate) > 120, "the card below the plate")
        self.look("reader")
        wait_until(lambda: EFFECTS.state(RETURN) == 34 and EFFECTS.state(ENABLE) == 1, "the effect of the card")
        self.wait_for_effect(True)
        EFFECTS.close(player)

        PORTS.open_by(player, "MIDI")
        devices = PORTS.control(DEVICES)
        xdotool("mousemove", devices.left + 40, devices.top + 9, "click", "1")
        PORTS.push(CONNECT)
        wait_until(lambda: "Connected to: Keys" in PORTS.texts(), "the port")
        PORTS.push(LEARN)
        player.click("rotary_001")
        midi.send(0xB0, 7, 100)
        wait_until(lambda: "Mapped rotary_001 to CC 7 / CH 1" in PORTS.texts(), "the binding")
        PORTS.push(MIDI_CLOCK)
        self.look("midi", PORTS)
        player.choose("BPM")
        answer("Set Tempo")                                    # only says who leads
        self.assertFalse(TEMPO.controls())
        PORTS.close(player)

        ABOUT.open_by(player, "INFO")
        told = " ".join(ABOUT.texts())
        for words in ("Keys", "48000 Hz", "Percussomatic.ini", "PunchCards"):
            self.assertIn(words, told)
        self.look("info", ABOUT)
        ABOUT.close(player, "Escape")

        player.click("sw_008")                                 # out of edit mode, in which the card left it
        midi.send_many([(0, START), *clock_pulses(140, 24 * 4)])
        wait_until(midi.played_out, "the end of the clock")
        wait_until(lambda: player.greener("BPM") > 10, "the BPM box of a rhythm that follows")
        self.look("clock")

        player.click("pw_001")
        self.look("power_off")
        self.assertEqual(player.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
