#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plays the unmodified program by mouse and checks what it displays and what it sounds like.

usage: play_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import array
import os
import subprocess
import time
import unittest

from e2e_test_case import RHYTHM, ProgramTestCase, fit_line
from panel_table import BEAT_LAMP, CARD, EDIT, LENGTH_SWITCHES, LINE_COUNT, POWER, SLIDER_TRAVEL, SLIDERS
from panel_table import START_STOP, STEP_COUNT, SWITCHES, SWITCHES_A, SWITCHES_B, TEMPO_DIAL, step_button
from player import CAPTURE_RATE_HZ, Recorder, find_panels, start_capture, wait_until, xdotool
from small_windows import ABOUT, TITLE


class Lamps(ProgramTestCase):
    def test_one_column_is_lit_and_the_beat_lamp_marks_the_first(self):
        player = self.start()
        player.drag(TEMPO_DIAL, 0, 430)  # 40 BPM: a step lasts 375 ms
        player.click(LENGTH_SWITCHES[5])
        lines = (0, 3, 5)
        for line in lines:
            player.set_steps(line, range(6))
        screenshot = player.screenshot()
        columns = {step_button(line, step): step for line in lines for step in range(6)}
        dark = {name: player.brightness(name, screenshot) for name in [*columns, BEAT_LAMP, START_STOP]}
        player.click(START_STOP)
        self.wait_until_lit(player, START_STOP, dark[START_STOP])

        seen = set()
        for _ in range(24):
            screenshot = player.screenshot()
            lit = {name for name in dark if player.brightness(name, screenshot) > dark[name] + 40}
            lit_columns = {columns[name] for name in lit & columns.keys()}
            self.assertLessEqual(len(lit_columns), 1, "two columns at once")
            self.assertEqual(BEAT_LAMP in lit, lit_columns == {0}, f"beat lamp at column {lit_columns}")
            self.assertIn(START_STOP, lit)
            for column in lit_columns:
                self.assertLessEqual({step_button(line, column) for line in lines}, lit)
            seen |= lit_columns
            time.sleep(0.1)
        self.assertEqual(seen, {0, 1, 2, 3, 4})


class Sound(ProgramTestCase):
    def test_every_step_is_bit_exact_and_on_time(self):
        player = self.start(fake_winmm=True)
        rhythm = self.set_rhythm(player)
        player.drag(TEMPO_DIAL, 0, -210)  # 240 BPM
        player.wheel(TEMPO_DIAL, 4)
        player.click(START_STOP)
        time.sleep(132 * 15 / 240 + 0.5)
        player.click(START_STOP)
        time.sleep(0.2)
        ABOUT.open_by(player, "INFO")
        texts = ABOUT.texts()
        late = int(texts[texts.index("Late steps") + 1].split()[0])
        ABOUT.close(player, "Escape")
        self.assertEqual(player.close(), 0)
        frames = self.heard_frames(rhythm)
        self.assertGreater(len(frames), 128)
        inexact = [b - a for a, b in zip(frames, frames[1:]) if b - a != 3000]
        self.assertLessEqual(len(inexact), 2 * late, inexact)
        self.assertLess(late, 32)

    def test_power_switch_silences_at_once_and_ends_the_program(self):
        player = self.start(fake_winmm=True)
        self.set_rhythm(player)
        player.click(START_STOP)
        time.sleep(1.5)
        xdotool("mousemove", *player.centre(POWER), "click", "1")
        clicked = time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)  # Wine's performance counter
        self.assertEqual(player.wait_for_end(), 0)
        duration_ns = time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW) - clicked
        self.assertTrue(0.9e9 < duration_ns < 4e9, duration_ns)
        blocks = list(self.blocks())
        last_loud = max(starts for _, starts, samples in blocks if any(samples))
        self.assertLess(last_loud - clicked, 0.150e9)
        self.assertGreater(blocks[-1][0] - clicked, 0.7e9, "the device stopped before the program ended")


class Cards(ProgramTestCase):
    def lit_steps(self, player):
        screenshot = player.screenshot()
        places = ((line, step) for line in range(LINE_COUNT) for step in range(STEP_COUNT))
        return {place for place in places if player.brightness(step_button(*place), screenshot) > 120}

    def expected_card(self, title, sliders):
        on = {SWITCHES[instrument] for instruments, _, _ in RHYTHM for instrument in instruments}
        switches = ",".join("1" if switch in on else "0" for switch in SWITCHES_A + SWITCHES_B)
        text = f"_PERCUSSOMATIC_CARD_V4\nTITLE={title}\nMASTER_VOLUME=1.000000\nTEMPO_NORMALIZED=0.400000\n"
        volumes = ",".join(f"{slider / SLIDER_TRAVEL:.6f}" for slider in sliders)
        text += f"SEQUENCE_LENGTH=9\nLINE_VOLUMES={volumes}\nINSTRUMENTS={switches}\nEFFECT_ENABLED=0\n"
        text += "EFFECT_PRESET=0\nEFFECT_RETURN=0.200000\nEFFECT_ROOM_SIZE=0.420000\n"
        text += "EFFECT_DAMPING=0.580000\nEFFECT_WIDTH=0.920000\nEFFECT_PREDELAY_MS=5.000000\n"
        text += "EFFECT_SENDS=" + ",".join(["0.000000"] * len(SWITCHES)) + "\n"
        for _, _, steps in RHYTHM:
            text += "".join("1" if step in steps else "0" for step in range(STEP_COUNT)) + "\n"
        return text

    def test_saved_rhythm_loads_after_a_restart(self):
        player = self.start(fake_winmm=True)
        self.set_rhythm(player)
        player.click(LENGTH_SWITCHES[9])
        sliders = [player.slider_positions[name] for name in SLIDERS]
        player.choose("CARDS", "next", "next")
        empty = player.screenshot()
        player.choose("SAVE")
        self.assertEqual(self.saved_card(3), self.expected_card("PUNCH CARD 03", sliders))
        self.check_holes(player, empty)

        player.choose("TITLE")
        wait_until(TITLE.controls, "the title dialog")
        xdotool("type", "NINE STEPS 9 8")
        xdotool("key", "Return")
        wait_until(lambda: "TITLE=NINE STEPS" in self.saved_card(3), "the new title")
        self.assertEqual(self.saved_card(3), self.expected_card("NINE STEPS 9 8", sliders))
        player.press("Escape")
        player.press("Escape")
        self.assertEqual(player.wait_for_end(), 0)

        player = self.start(fake_winmm=True)
        player.choose("CARDS", "next", "next", "LOAD")
        pattern = {(line, step) for line, (_, _, steps) in enumerate(RHYTHM) for step in steps}
        wait_until(lambda: self.lit_steps(player) == pattern, "the whole pattern")
        wait_until(lambda: player.brightness(SWITCHES["Cymbal 1"]) > 150, "the settings of the card")
        self.assertGreater(player.brightness(EDIT), 150, "edit mode")
        player.choose("CARDS", "next", "SAVE")
        self.assertEqual(self.saved_card(4), self.expected_card("PUNCH CARD 04", sliders))
        files = sorted(path.name for path in (self.folder / "PunchCards").iterdir())
        self.assertEqual(files, ["card_3.vopcard", "card_4.vopcard"])

    def test_only_the_send_of_the_instrument_that_plays_is_heard(self):
        """The clave, a fifth of a second long, plays at least every 375 ms: only its tail fills the gaps."""
        card = self.expected_card("CLAVE", [0, 0, 0, SLIDER_TRAVEL, 0, 0])
        no_sends = ",".join(["0.000000"] * len(SWITCHES))
        silent_blocks = []
        for name in ("Clave", "Snare"):
            is_on = (switch == SWITCHES[name] for switch in SWITCHES_A + SWITCHES_B)
            sends = ",".join(f"{on:.6f}" for on in is_on)
            text = card.replace("EFFECT_ENABLED=0", "EFFECT_ENABLED=1").replace(no_sends, sends)
            (self.folder / "PunchCards").mkdir(exist_ok=True)
            (self.folder / "PunchCards/card_1.vopcard").write_text(text)
            player = self.start(fake_winmm=True)
            player.choose("CARDS", "LOAD")
            wait_until(lambda: player.brightness(SWITCHES["Clave"]) > 150, "the settings of the card")
            player.click(EDIT, START_STOP)
            time.sleep(2)
            self.assertEqual(player.close(), 0)
            loud = [any(samples) for _, _, samples in self.blocks()]
            self.assertIn(True, loud)
            last = len(loud) - loud[::-1].index(True)
            silent_blocks.append(loud[loud.index(True) : last].count(False))
        self.assertEqual(silent_blocks[0], 0)
        self.assertGreater(silent_blocks[1], 10)

    def check_holes(self, player, empty):
        """The first step of line 1 is punched at the bottom of the card, the second is not."""
        left, top, dialog_width, dialog_height = player.region_on_display("dialog")
        height = dialog_height - 112
        width = int(height * CARD["width"] / CARD["height"])
        x = left + (dialog_width - width) // 2 + int(CARD["firstHoleX"] * width / CARD["width"])
        units = lambda step: CARD["firstHoleY"] - CARD["holePitchY"] * step
        hole = lambda step: (x - 2, top + 46 + int(units(step) * height / CARD["height"]), 4, 4)
        self.assertGreater(empty.brightness(*hole(0)), 150)
        wait_until(lambda: player.screenshot().brightness(*hole(0)) < 60, "the hole")
        self.assertGreater(player.screenshot().brightness(*hole(1)), 150)

    def test_damaged_cards_never_stop_the_program(self):
        cards = self.folder / "PunchCards"
        cards.mkdir()
        (cards / "card_1.vopcard").write_text("_PERCUSSOMATIC_CARD_V3\nTITLE=X\nMASTER_VOLUME=loud\n")
        (cards / "card_2.vopcard").mkdir()
        player = self.start(fake_winmm=True)
        player.choose("CARDS", "next", "SAVE")  # a folder has the card's name
        wait_until(lambda: len(find_panels()) == 2, "the message box")
        xdotool("key", "Return")
        wait_until(lambda: len(find_panels()) == 1, "the message box to close")
        player.choose("LOAD")  # the slot has kept the rhythm in memory
        wait_until(lambda: player.brightness(EDIT) > 150, "the card to be inserted")
        player.click(POWER)  # power off while loading, then open a dialog
        player.choose("CARDS", "TITLE")
        self.assertEqual(player.wait_for_end(), 0)
        self.assertEqual(list(cards.glob("*.saving*")), [])


class Device(ProgramTestCase):
    def start_server(self):
        """Starts a sound server of this test with a null sink that can be recorded."""
        command = ["pulseaudio", "--daemonize=no", "--exit-idle-time=-1", "-n"]
        command += [f"--load=module-native-protocol-unix socket={self.folder}/native"]
        command += ["--load=module-null-sink sink_name=out rate=48000 format=s16le channels=2"]
        quiet = dict(env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        server = subprocess.Popen(command, **quiet)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        wait_until(lambda: subprocess.run(["pactl", "info"], **quiet).returncode == 0, "the sound server")
        return server

    def is_audible(self):
        """Whether any sound arrives within half a second."""
        recorder = start_capture(subprocess.PIPE, 20, self.environment)
        try:
            return any(recorder.stdout.read(2 * CAPTURE_RATE_HZ))
        finally:
            recorder.kill()
            recorder.communicate()

    def test_sound_returns_with_the_server_while_the_rhythm_continues(self):
        address = f"unix:{self.folder}/native"
        self.environment = dict(os.environ, PULSE_SERVER=address, XDG_RUNTIME_DIR=str(self.folder))
        server = self.start_server()
        player = self.start(PULSE_SERVER=address)
        self.set_rhythm(player)
        player.click(START_STOP)
        wait_until(self.is_audible, "the rhythm")
        ABOUT.open_by(player, "INFO")
        self.assertIn("open", ABOUT.texts())
        server.kill()
        server.wait()
        wait_until(lambda: "no device, looking for one" in ABOUT.texts(), "the loss of the device", 5)
        self.start_server()
        wait_until(self.is_audible, "the rhythm to return", 15)
        wait_until(lambda: "open" in ABOUT.texts(), "the new state in the window")
        ABOUT.close(player, "Escape")
        self.assertEqual(player.close(), 0)

    def test_hanging_driver_blocks_neither_the_panel_nor_the_end(self):
        hang = dict(PERCUSSOMATIC_TEST_FAIL_AFTER_MS="500", PERCUSSOMATIC_TEST_HANGS="waveOutReset")
        player = self.start(fake_winmm=True, **hang)
        dark = player.brightness(START_STOP)
        time.sleep(1.0)  # while the program closes the device
        player.click(START_STOP)
        self.wait_until_lit(player, START_STOP, dark)
        self.close_within_two_seconds(player)


class RealSound(ProgramTestCase):
    def test_clave_on_every_step_is_recorded_on_the_grid(self):
        player = self.start()
        player.set_line(3, ["Clave"], SLIDER_TRAVEL, range(STEP_COUNT))
        heard = self.folder / "heard.raw"
        recorder = Recorder(heard)
        self.addCleanup(recorder.stop)
        player.click(START_STOP)
        time.sleep(4)  # the sound server needs some seconds to settle
        for attempts_left in (3, 2, 1, 0):  # another process may disturb the timing for a while
            begin = heard.stat().st_size // 4 * 4
            time.sleep(10)
            try:
                self.check_hits(heard.read_bytes()[begin:])
                break
            except AssertionError:
                if attempts_left == 0:
                    raise
        self.assertEqual(player.close(), 0)

    def check_hits(self, capture):
        """Hits begin above half the peak, at least 60 ms after the previous one."""
        samples = array.array("h", capture[: len(capture) // 4 * 4])[::2]
        loud, hits = max(samples) / 2, []
        for frame, value in enumerate(samples):
            seconds = frame / CAPTURE_RATE_HZ
            if value > loud and (not hits or seconds - hits[-1] > 0.060):
                hits.append(seconds)
        hits = hits[1:]  # the capture may begin within it
        self.assertGreater(len(hits), 60)
        gaps = [b - a for a, b in zip(hits, hits[1:])]
        self.assertLess(max(gaps), 0.125 * 1.5, "a hit is missing")
        self.assertGreater(min(gaps), 0.125 * 0.5, "a hit is duplicated")
        start, interval = fit_line(hits)
        self.assertAlmostEqual(interval / 0.125, 1, delta=0.005)
        near = sum(abs(hit - start - interval * i) <= 0.020 for i, hit in enumerate(hits))
        self.assertGreaterEqual(near / len(hits), 0.95)


if __name__ == "__main__":
    unittest.main(verbosity=2)
