#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Controls the unmodified program through MIDI inputs that the fake winmm.dll provides.

usage: midi_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import time
import unittest

from e2e_test_case import ProgramTestCase
from midi_ports import START, STOP, MidiPorts, clock_pulses
from panel_table import MASTER_DIAL, SLIDERS, START_STOP, STEP_COUNT, SWITCHES, TEMPO_DIAL, UNUSED_SWITCH
from player import wait_until
from small_windows import PORTS

LIST, CONNECT, DISCONNECT, CLOSE, LEARN, CLEAR, INTERNAL, MIDI_CLOCK, RESCAN = range(1001, 1010)
CONNECTION_LINE, LEARN_LINE, SYNC_LINE = 6, 9, 13  # index of the text among the window's controls
TIMBAL_2 = SWITCHES["Timbal 2"]


class Midi(ProgramTestCase):
    window = PORTS

    def setUp(self):
        super().setUp()
        self.midi = MidiPorts(self.folder)

    def start_with(self, ports, **variables):
        self.midi.set_ports(ports)
        return self.start(fake_winmm=True, **variables, **self.midi.variables())

    def close_window_and_program(self, player):
        self.window.push(CLOSE)
        self.assertEqual(player.close(), 0)

    def line(self, index):
        return self.window.texts()[index]

    def wait_for_line(self, index, text):
        wait_until(lambda: self.line(index) == text, text)

    def connect(self, entry, shown):
        self.window.select_entry(LIST, entry)
        wait_until(lambda: self.window.state(LIST) == entry, "the selection")
        self.window.push(CONNECT)
        self.wait_for_line(CONNECTION_LINE, f"Connected to: {shown}")

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

    def test_ports_can_be_listed_connected_and_removed(self):
        mappings = "LUMIVARDA_MIDI_MAP_V1\nsw_001,0,20\nsw_002,16,20\nsw_003,0,21\n"
        (self.folder / "MidiMappings.ini").write_text(mappings)
        name = "A name of thirty-one characters"
        player = self.start_with(["Keys [A]", "!caps Ghost", "!open Busy", "!start Stuck", name])
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.window.control(LIST).text.split("\t"), ["Keys [A]", "Busy", "Stuck", name])
        self.connect(3, name)
        self.wait_for_line(LEARN_LINE, "Profile loaded: 2 mapping(s)")
        raw = (self.folder / "Percussomatic.ini").read_bytes()
        self.assertFalse(raw.startswith(b"\xff\xfe"), "UTF-16 although the name fits the code page")
        self.assertIn(f"LastMidiDevice={name}\n", self.settings())
        for entry in (1, 2):  # a failed open leaves no port open
            self.connect(entry, "no devices")
        self.window.select_entry(LIST, 0, clicks=2)
        self.wait_for_line(CONNECTION_LINE, "Connected to: Keys [A]")
        self.midi.set_ports(["Other"])
        self.window.push(RESCAN)
        wait_until(lambda: self.window.control(LIST).text == "Other", "the new list")
        self.assertEqual(self.line(CONNECTION_LINE), "Connected to: Keys [A]")
        self.window.push(DISCONNECT)
        self.wait_for_line(LEARN_LINE, "No MIDI device connected")
        self.close_window_and_program(player)

    def test_learned_controls_move_and_survive_a_restart(self):
        name = "Pads \u4e2d with thirty-one in [1]"  # one letter is not in the 8-bit code page
        hand_written = b"[DEVICE:Fl\xfcgel]\r\nrotary_001=1,9\r\nby hand=kept\r\n"
        (self.folder / "Percussomatic.ini").write_bytes(hand_written)
        section = "DEVICE:" + name.replace("[", "_").replace("]", "_")
        player = self.start_with([name])
        self.window.open_by(player, "MIDI")
        self.connect(0, name)
        self.midi.send(0x93, 60, 0)
        self.wait_for_line(LEARN_LINE, "Received: NOTE OFF 60 Value 0 CH 4")
        self.midi.send(0xE1, 1, 64)
        self.wait_for_line(LEARN_LINE, "Received: PITCH BEND 8193 CH 2")
        self.learn(player, TEMPO_DIAL, 0, 21)
        self.learn(player, SLIDERS[4], 0, 7)
        self.learn(player, START_STOP, 9, 64)
        learned = f"[{section}]\n{TEMPO_DIAL}=0,21\n{SLIDERS[4]}=0,7\n{START_STOP}=9,64\n"
        self.assertIn(learned, self.settings())
        self.assertIn(f"[DEVICE:Fl\u00fcgel]\n{MASTER_DIAL}=1,9\nby hand=kept\n", self.settings())
        self.close_window_and_program(player)

        player = self.start_with([name])  # connects automatically
        dark = player.brightness(START_STOP)
        for controller in (21, 7):
            self.midi.send_many([(2000, bytes([0xB0, controller, value])) for value in range(128)])
        self.midi.send(0xB9, 64, 127)
        self.wait_until_lit(player, START_STOP, dark)
        time.sleep(1.0)  # until all glides have ended
        player.choose("CARDS", "SAVE")
        card = self.saved_card(1)
        self.assertIn("\nTEMPO_NORMALIZED=1.000000\n", card)
        volumes = ",".join(f"{volume:.6f}" for volume in (0, 0, 0, 0, 1, 0))
        self.assertIn(f"\nLINE_VOLUMES={volumes}\n", card)
        player.choose("CANCEL")
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.line(CONNECTION_LINE), f"Connected to: {name}")
        self.window.push(CLEAR)
        self.wait_for_line(LEARN_LINE, "All MIDI mappings cleared")
        self.assertNotIn(section, self.settings())
        self.close_window_and_program(player)

        player = self.start_with([])
        self.window.open_by(player, "MIDI")
        self.assertEqual(self.window.control(LIST).text, "No MIDI IN device detected")
        self.assertEqual(self.line(LEARN_LINE), f"Saved MIDI device not connected: {name}")
        self.close_window_and_program(player)

    def test_learning_works_without_a_writable_settings_file(self):
        (self.folder / "Percussomatic.ini").mkdir()  # a folder, so that it cannot be written
        player = self.start_with(["Keys"])
        dark = player.brightness(TIMBAL_2)
        self.window.open_by(player, "MIDI")
        self.connect(0, "Keys")
        self.learn(player, TIMBAL_2, 2, 30)
        self.midi.send(0xB2, 30, 0)
        self.midi.send(0xB2, 30, 100)
        self.window.push(CLOSE)
        self.wait_until_lit(player, TIMBAL_2, dark)
        self.assertEqual(player.close(), 0)

    def shown_tempo(self):
        """The tempo on the sync line, or 0. On a busy machine it varies for a moment."""
        words = self.line(SYNC_LINE).split("BPM: ")
        return float(words[1]) if len(words) == 2 else 0.0

    def connected(self, *profile, **variables):
        """Starts the program connected to the port "Clock" with the given profile lines."""
        lines = ["[GENERAL]", "LastMidiDevice=clock ", "[DEVICE:Clock]", *profile]
        (self.folder / "Percussomatic.ini").write_text("\r\n".join(lines) + "\r\n")
        return self.start_with(["Clock"], **variables)

    def test_external_clock_drives_the_audible_rhythm(self):
        player = self.connected()
        rhythm = self.set_rhythm(player)
        self.window.open_by(player, "MIDI")
        self.assertGreater(player.green_excess("MIDI"), player.green_excess("CARDS") + 2)
        yellow = player.green_excess("BPM")
        self.window.push(MIDI_CLOCK)
        self.wait_for_line(SYNC_LINE, "SYNC: MIDI CLOCK Waiting for clock...")
        wait_until(lambda: player.green_excess("BPM") > yellow + 8, "the green tempo")
        # Pulses without a Start message are measured but start nothing.
        self.midi.send_many(clock_pulses(120, 240, jitter_ms=2.0))
        wait_until(lambda: abs(self.shown_tempo() - 120) < 6, "the measured tempo", 5)
        wait_until(self.midi.all_sent, "the last pulse")
        self.midi.send_many([(0, START), *clock_pulses(140, 6 * 64 + 3), (0, STOP)])
        wait_until(lambda: abs(self.shown_tempo() - 140) < 6, "the measured tempo", 6)
        wait_until(self.midi.all_sent, "the last pulse", 60)
        self.window.push(INTERNAL)
        self.wait_for_line(SYNC_LINE, "SYNC: INTERNAL BPM: 120.00")
        self.window.push(CLOSE)
        time.sleep(0.3)
        self.assertEqual(player.close(), 0)
        heard = self.heard_steps(rhythm)
        self.assertEqual(len(heard), 65, "one step at Start, then one for every six pulses")
        self.check_grid(heard, 140, 64, tolerance=0.002)

    def test_control_change_flood_drops_no_step(self):
        player = self.connected(f"{UNUSED_SWITCH}=0,20")
        rhythm = self.set_rhythm(player)
        player.click(START_STOP)
        self.midi.send_many([(500, bytes([0xB0, 20, 127 * (i % 2)])) for i in range(2000)])
        wait_until(self.midi.all_sent, "the last message", 60)
        time.sleep(1.0)
        player.click(START_STOP)
        time.sleep(0.2)
        self.assertEqual(player.close(), 0)
        heard = self.heard_steps(rhythm)
        self.assertGreaterEqual(len(heard), STEP_COUNT)
        gaps = [b - a for a, b in zip(heard, heard[1:])]
        self.assertLess(max(gaps), 1.9 * 0.125, "a step was dropped")
        delivered = self.midi.delivered()
        self.assertEqual(len(delivered), 2000)
        self.assertLess(delivered[-1] - delivered[0], 1.2e9)

    def test_program_stays_responsive_and_closes_while_messages_flood_in(self):
        player = self.connected(f"{SLIDERS[0]}=0,20")
        dark = player.brightness(START_STOP)
        self.midi.send_many([(100, bytes([0xB0, 20, i % 128])) for i in range(200000)])
        wait_until(self.midi.delivered, "the first message")
        player.click(START_STOP)
        self.wait_until_lit(player, START_STOP, dark, 5)
        self.window.open_by(player, "MIDI")
        self.window.push(LEARN)
        self.window.push(DISCONNECT)  # while learning
        self.wait_for_line(LEARN_LINE, "No MIDI device connected")
        self.window.push(CONNECT)
        self.wait_for_line(CONNECTION_LINE, "Connected to: Clock")
        self.midi.set_ports([])  # disconnected without a notification
        self.window.push(CLOSE)
        self.close_within_two_seconds(player)
        self.assertFalse(self.midi.all_sent(), "all messages arrived before the program ended")

    def test_program_closes_although_the_driver_hangs(self):
        self.close_within_two_seconds(self.connected(PERCUSSOMATIC_TEST_HANGS="midiInReset"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
