#!/usr/bin/env python3
"""Plays the unmodified program from MIDI inputs that the stand-in for winmm.dll offers.

usage: midi_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import time
import unittest

from midi_ports import START, STOP, MidiPorts, clock_pulses
from played import BLOCK_SECONDS, STEPS, Played
from player import wait_until, xdotool
from small_windows import PORTS

LIST, CONNECT, DISCONNECT, CLOSE, LEARN, CLEAR, INTERNAL, MIDI_CLOCK, RESCAN = 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009
CONNECTION, LEARN_LINE, SYNC_LINE = 6, 9, 13          # places of the lines among the window's controls


class Midi(Played):
    def setUp(self):
        super().setUp()
        self.midi = MidiPorts(self.folder)
        self.window = PORTS

    def start_with(self, ports, **variables):
        self.midi.set_ports(ports)
        return self.start(stand_in=True, **variables, **self.midi.variables())

    def line(self, place):
        return self.window.texts()[place]

    def wait_for_line(self, place, text):
        wait_until(lambda: self.line(place) == text, text)

    def select(self, entry, clicks=1):
        devices = self.window.control(LIST)
        for _ in range(clicks):
            xdotool("mousemove", devices.left + 40, devices.top + 9 + 13 * entry, "click", "1")
        wait_until(lambda: self.window.control(LIST).state == entry, "the selection")

    def connect(self, entry, shown):
        self.select(entry)
        self.window.push(CONNECT)
        self.wait_for_line(CONNECTION, f"Connected to: {shown}")

    def settings(self):
        file = self.folder / "Percussomatic.ini"
        raw = file.read_bytes() if file.exists() else b""
        return raw.decode("utf-16" if raw.startswith(b"\xff\xfe") else "latin-1").replace("\r", "")

    def learn(self, player, control, channel, controller):
        self.window.push(LEARN)
        self.wait_for_line(LEARN_LINE, "Learn: click a control on the instrument")
        player.click(control)
        self.wait_for_line(LEARN_LINE, f"Move a MIDI control for: {control}")
        self.midi.send(0xB0 + channel, controller, 5)
        self.wait_for_line(LEARN_LINE, f"Mapped {control} to CC {controller} / CH {channel + 1}")

    def test_ports_are_listed_connected_and_lost_again(self):
        (self.folder / "MidiMappings.ini").write_text("LUMIVARDA_MIDI_MAP_V1\nsw_001,0,20\nsw_002,16,20\nsw_003,0,21\n")
        player = self.start_with(["Keys [A]", "!caps Ghost", "!open Busy", "!start Stuck", "A name of thirty-one characters"])
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.window.control(LIST).text.split("\t"), ["Keys [A]", "Busy", "Stuck", "A name of thirty-one characters"])
        self.connect(3, "A name of thirty-one characters")
        self.wait_for_line(LEARN_LINE, "Profile loaded: 2 mapping(s)")
        self.assertFalse((self.folder / "Percussomatic.ini").read_bytes().startswith(b"\xff\xfe"), "a name that fits keeps it 8-bit")
        self.assertIn("LastMidiDevice=A name of thirty-one characters\n", self.settings())
        for entry in (1, 2):                                   # a failed open leaves nothing open
            self.connect(entry, "no devices")
        self.select(0, clicks=2)
        self.wait_for_line(CONNECTION, "Connected to: Keys [A]")
        self.midi.set_ports(["Other"])
        self.window.push(RESCAN)
        wait_until(lambda: self.window.control(LIST).text == "Other", "the new list")
        self.assertEqual(self.line(CONNECTION), "Connected to: Keys [A]")
        self.window.push(DISCONNECT)
        self.wait_for_line(LEARN_LINE, "No MIDI device connected")
        self.window.push(CLOSE)
        self.assertEqual(player.close(), 0)

    def test_learned_controls_move_and_come_back_after_a_restart(self):
        name = "Pads \u4e2d with thirty-one in [1]"             # one letter is not in the 8-bit code page
        by_hand = b"[DEVICE:Fl\xfcgel]\r\nrotary_001=1,9\r\nby hand=kept\r\n"
        (self.folder / "Percussomatic.ini").write_bytes(by_hand)
        section = "DEVICE:" + name.replace("[", "_").replace("]", "_")
        player = self.start_with([name])
        self.window.open_by(player, "MIDI")
        self.connect(0, name)
        self.midi.send(0x93, 60, 0)
        self.wait_for_line(LEARN_LINE, "Received: NOTE OFF 60 Value 0 CH 4")
        self.midi.send(0xE1, 1, 64)
        self.wait_for_line(LEARN_LINE, "Received: PITCH BEND 8193 CH 2")
        self.learn(player, "rotary_002", 0, 21)
        self.learn(player, "slider_005", 0, 7)
        self.learn(player, "sw_007", 9, 64)
        self.assertIn(f"[{section}]\nrotary_002=0,21\nslider_005=0,7\nsw_007=9,64\n", self.settings())
        self.assertIn("[DEVICE:Fl\u00fcgel]\nrotary_001=1,9\nby hand=kept\n", self.settings())
        self.window.push(CLOSE)
        self.assertEqual(player.close(), 0)

        player = self.start_with([name])                       # connects by itself
        dark = player.brightness("sw_007")
        self.midi.send_many([(2000, bytes([0xB0, 21, value])) for value in range(0, 128, 3)] + [(0, b"\xb0\x15\x7f")])
        self.midi.send_many([(2000, bytes([0xB0, 7, value])) for value in range(128)])
        self.midi.send(0xB9, 64, 127)
        wait_until(lambda: player.brightness("sw_007") > dark + 40, "the start lamp")
        time.sleep(1.0)                                        # glides land
        player.choose("CARDS", "SAVE")
        card = self.card(1)
        self.assertIn("\nTEMPO_NORMALIZED=1.000000\n", card)
        self.assertIn("\nLINE_VOLUMES=0.000000,0.000000,0.000000,0.000000,1.000000,0.000000\n", card)
        player.choose("CANCEL")
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.line(CONNECTION), f"Connected to: {name}")
        self.window.push(CLEAR)
        self.wait_for_line(LEARN_LINE, "All MIDI mappings cleared")
        self.assertNotIn(section, self.settings())
        self.window.push(CLOSE)
        self.assertEqual(player.close(), 0)

        player = self.start_with([])
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.window.control(LIST).text, "No MIDI IN device detected")
        self.assertEqual(self.line(LEARN_LINE), f"Saved MIDI device not connected: {name}")
        self.window.push(CLOSE)
        self.assertEqual(player.close(), 0)

    def test_without_a_settings_file_everything_works_from_memory(self):
        (self.folder / "Percussomatic.ini").mkdir()            # nothing can be written there
        player = self.start_with(["Keys"])
        dark = player.brightness("sw_003")
        self.window.open_by(player, "MIDI")
        self.connect(0, "Keys")
        self.learn(player, "sw_003", 2, 30)
        self.midi.send(0xB2, 30, 0)
        self.midi.send(0xB2, 30, 100)
        self.window.push(CLOSE)
        wait_until(lambda: player.brightness("sw_003") > dark + 40, "the switch")
        self.assertEqual(player.close(), 0)

    def shown_tempo(self):
        """The tempo on the sync line; 0 while there is none. A busy machine lets it wander for a moment."""
        words = self.line(SYNC_LINE).split("BPM: ")
        return float(words[1]) if len(words) == 2 else 0.0

    def connected(self, *profile, **variables):
        """A program that has connected to the port "Clock", with that profile."""
        lines = ["[GENERAL]", "LastMidiDevice=clock ", "[DEVICE:Clock]", *profile]
        (self.folder / "Percussomatic.ini").write_text("\r\n".join(lines) + "\r\n")
        return self.start_with(["Clock"], **variables)

    def test_external_clock_drives_the_audible_rhythm(self):
        player = self.connected()
        rhythm = self.set_rhythm(player)
        self.window.open_by(player, "MIDI")
        self.assertGreater(player.greener("MIDI"), player.greener("CARDS") + 2, "the open port shows in the strip")
        yellow = player.greener("BPM")
        self.window.push(MIDI_CLOCK)
        self.wait_for_line(SYNC_LINE, "SYNC: MIDI CLOCK Waiting for clock...")
        wait_until(lambda: player.greener("BPM") > yellow + 8, "the green tempo")
        for jitter_ms in (0.0, 2.0):                           # pulses only are measured, too, and start nothing
            self.midi.send_many(clock_pulses(120, 240, jitter_ms))
            wait_until(lambda: abs(self.shown_tempo() - 120) < 6, "the measured tempo", 5)
            wait_until(self.midi.played_out, "the last pulse")
        self.midi.send_many([(0, START), *clock_pulses(140, 6 * 64 + 3), (0, STOP)])
        wait_until(lambda: abs(self.shown_tempo() - 140) < 6, "the measured tempo", 6)
        wait_until(self.midi.played_out, "the last pulse", 60)
        self.window.push(INTERNAL)
        self.wait_for_line(SYNC_LINE, "SYNC: INTERNAL BPM: 120.00")
        self.window.push(CLOSE)
        time.sleep(0.3)
        self.assertEqual(player.close(), 0)
        blocks = self.replayed(rhythm)
        self.assertEqual(len(blocks), 65, "the first sounds at Start, then one for every six pulses")
        self.check_grid(blocks, 140, 64, within=0.002)

    def test_a_flood_of_controllers_loses_no_step(self):
        player = self.connected("sw_014=0,20")                  # a control without a function
        rhythm = self.set_rhythm(player)
        player.click("sw_007")
        self.midi.send_many([(500, bytes([0xB0, 20, 127 * (i % 2)])) for i in range(2000)])
        wait_until(self.midi.played_out, "the flood's end", 60)
        time.sleep(1.0)
        player.click("sw_007")
        time.sleep(0.2)
        self.assertEqual(player.close(), 0)
        blocks = self.replayed(rhythm)
        self.assertGreaterEqual(len(blocks), STEPS)
        gaps = [(b - a) * BLOCK_SECONDS for a, b in zip(blocks, blocks[1:])]
        self.assertLess(max(gaps), 1.5 * 0.125, "a step was dropped")
        delivered = self.midi.delivered()
        self.assertEqual(len(delivered), 2000)
        self.assertLess(delivered[-1] - delivered[0], 1.2e9)

    def test_a_storm_leaves_time_for_the_player_and_for_the_end(self):
        player = self.connected("slider_001=0,20")
        dark = player.brightness("sw_007")
        self.midi.send_many([(100, bytes([0xB0, 20, i % 128])) for i in range(200000)])
        wait_until(self.midi.delivered, "the storm")
        player.click("sw_007")
        wait_until(lambda: player.brightness("sw_007") > dark + 40, "the start lamp", 5)
        self.window.open_by(player, "MIDI")
        self.window.push(LEARN)
        self.window.push(DISCONNECT)                           # while it learns
        self.wait_for_line(LEARN_LINE, "No MIDI device connected")
        self.window.push(CONNECT)
        self.wait_for_line(CONNECTION, "Connected to: Clock")
        self.midi.set_ports([])                                # unplugged; the driver does not tell
        self.window.push(CLOSE)
        self.end_soon(player)
        self.assertFalse(self.midi.played_out(), "the end came after the storm")

    def test_a_driver_that_hangs_does_not_keep_the_program(self):
        self.end_soon(self.connected(PERCUSSOMATIC_TEST_HANGS="midiInReset"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
