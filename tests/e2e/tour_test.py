#!/usr/bin/env python3
"""One walk through the whole instrument, with a picture of every stop in BUILD_FOLDER/tour.

usage: tour_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import unittest

from midi_ports import START, MidiPorts, clock_pulses
from played import BUILD, Played
from player import wait_until, xdotool
from small_windows import SmallWindow, answer

ENABLE, CONCERT_HALL, DRUM_ROOM, BASS_DRUM_SEND, RETURN = 2100, 2122, 2120, 2011, 2110
TEMPO_FIELD, TEMPO_OK = 3101, 3102
PORTS, CONNECT, LEARN, MIDI_CLOCK = 1001, 1002, 1005, 1008


class Tour(Played):
    def setUp(self):
        super().setUp()
        self.pictures = BUILD / "tour"
        self.pictures.mkdir(exist_ok=True)
        self.effects = SmallWindow("PercussomaticEffectsWindow", "PERCUSOMATIC - EFFECTS")
        self.tempo = SmallWindow("PercussomaticBpmEditDialog", "Set Tempo")
        self.ports = SmallWindow("LumivardaMidiDeviceSelectorWindow", "Percussomatic MIDI")
        self.about = SmallWindow("PercussomaticAboutWindow", "PERCUSSOMATIC - INFO")

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

    def card(self):
        file = self.folder / "PunchCards/card_1.vopcard"
        text = wait_until(lambda: file.exists() and file.read_text(), "the card")
        return dict(line.split("=") for line in text.splitlines() if "=" in line)

    def test_everything_once(self):
        midi = MidiPorts(self.folder)
        midi.set_ports(["Keys"])
        self.player = player = self.start(stand_in=True, **midi.variables())
        self.set_rhythm(player)
        player.click("sw_007")
        self.look("panel")

        self.effects.open_by(player, "EFFECTS")
        self.effects.push(ENABLE)
        self.wait_for_effect(True)
        self.effects.push(CONCERT_HALL)
        self.assertEqual(self.effects.state(RETURN), 34)
        self.effects.push(BASS_DRUM_SEND, 0.9)
        send = self.effects.state(BASS_DRUM_SEND)
        self.assertGreater(send, 0)
        self.look("effects", self.effects)
        self.effects.close(player)

        width = player.width
        player.press("ctrl+minus")                             # the panel has the keyboard again
        wait_until(lambda: player.place() or player.width < width, "the smaller panel")
        self.look("smaller")
        player.press("ctrl+plus")
        wait_until(lambda: player.place() or player.width == width, "the former size")

        self.tempo.open_by(player, "BPM")
        xdotool("type", "39")
        self.tempo.push(TEMPO_OK)
        answer("Invalid BPM")
        xdotool("type", "133")
        wait_until(lambda: self.tempo.control(TEMPO_FIELD).text == "133", "the typed tempo")
        self.look("tempo", self.tempo)
        self.tempo.push(TEMPO_OK)
        wait_until(lambda: not self.tempo.controls(), "the end of the dialog")

        player.choose("CARDS", "SAVE")
        card = self.card()
        expected = {"EFFECT_ENABLED": "1", "EFFECT_PRESET": "2", "EFFECT_RETURN": "0.340000", "TEMPO_NORMALIZED": "0.465000"}
        self.assertEqual({key: card[key] for key in expected}, expected)
        self.assertEqual(float(card["EFFECT_SENDS"].split(",")[11]), send / 100)    # the last is the bass drum
        wait_until(lambda: self.glow("LOAD") > 0.8 * self.glow("SAVE"), "the card in the dialog")
        self.look("cards")
        player.choose("TITLE")
        wait_until(lambda: xdotool("search", "--onlyvisible", "--name", "^Punch Card Title$"), "the title dialog")
        self.look("title")
        xdotool("key", "Escape")
        wait_until(lambda: not xdotool("search", "--onlyvisible", "--name", "^Punch Card Title$"), "the end of the title dialog")
        player.choose("CANCEL")

        self.effects.open_by(player, "EFFECTS")
        self.effects.push(DRUM_ROOM)
        self.effects.push(ENABLE)
        self.wait_for_effect(False)
        player.choose("CARDS", "LOAD")
        below_plate = player.x + int(player.width * 0.865), player.y + int(3200 * player.scale), 20, 6
        wait_until(lambda: player.screenshot().brightness(*below_plate) > 120, "the card below the plate")
        self.look("reader")
        wait_until(lambda: self.effects.state(RETURN) == 34 and self.effects.state(ENABLE) == 1, "the effect of the card")
        self.wait_for_effect(True)
        self.look("card")
        self.effects.close(player)

        self.ports.open_by(player, "MIDI")
        devices = self.ports.control(PORTS)
        xdotool("mousemove", devices.left + 40, devices.top + 9, "click", "1")
        self.ports.push(CONNECT)
        wait_until(lambda: "Connected to: Keys" in self.ports.texts(), "the port")
        self.ports.push(LEARN)
        player.click("rotary_001")
        midi.send(0xB0, 7, 100)
        wait_until(lambda: "Mapped rotary_001 to CC 7 / CH 1" in self.ports.texts(), "the binding")
        self.ports.push(MIDI_CLOCK)
        self.look("midi", self.ports)
        player.choose("BPM")
        answer("Set Tempo")                                    # only says who leads
        self.assertFalse(self.tempo.controls())
        self.ports.close(player)

        self.about.open_by(player, "INFO")
        told = " ".join(self.about.texts())
        for words in ("Keys", "48000 Hz", "Percussomatic.ini", "PunchCards"):
            self.assertIn(words, told)
        self.look("info", self.about)
        self.about.close(player, "Escape")

        player.click("sw_008")                                 # out of edit mode, in which the card left it
        midi.send_many([(0, START), *clock_pulses(140, 24 * 4)])
        wait_until(midi.played_out, "the end of the clock")
        wait_until(lambda: player.greener("BPM") > 10, "the BPM box of a rhythm that follows")
        self.look("clock")

        player.wheel("rotary_001", -2, "ctrl")
        wait_until(lambda: player.place() or player.width < width, "the smaller panel")
        player.click("pw_001")
        self.look("power_off")
        self.assertEqual(player.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
