#!/usr/bin/env python3
"""Plays the unmodified program on a real display with a real mouse, looks at it and listens to it.

usage: play_test.py BUILD_FOLDER [unittest arguments]      inside scripts/wine-env --virtual
"""
import array
import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

from played import RHYTHM, STEPS, Played, fitted
from player import Recorder, wait_until, xdotool
from small_windows import ABOUT, TITLE


class Lamps(Played):
    def test_one_column_moves_and_the_beat_lamp_marks_the_first(self):
        player = self.start()
        player.drag("rotary_002", 0, 430)                      # 40 BPM: a step lasts 375 ms
        player.click("sw_009")
        for line in (0, 3, 5):
            player.set_steps(line, range(6))
        dark = player.screenshot()
        names = [f"bottone_{n:03}" for line in (0, 3, 5) for n in range(16 * line + 1, 16 * line + 7)]
        unlit = {name: player.brightness(name, dark) for name in [*names, "bin_001", "sw_007"]}
        player.click("sw_007")
        wait_until(lambda: player.brightness("sw_007") > unlit["sw_007"] + 40, "the start lamp")

        seen = set()
        for _ in range(24):
            picture = player.screenshot()
            lit = lambda name: player.brightness(name, picture) > unlit[name] + 40
            columns = {(int(name[-3:]) - 1) % STEPS for name in names if lit(name)}
            self.assertLessEqual(len(columns), 1, "two columns at once")
            self.assertEqual(lit("bin_001"), columns == {0}, f"beat lamp at column {columns}")
            self.assertTrue(lit("sw_007"))
            for column in columns:
                self.assertTrue(all(lit(f"bottone_{16 * line + column + 1:03}") for line in (0, 3, 5)))
            seen |= columns
            time.sleep(0.1)
        self.assertEqual(seen, {0, 1, 2, 3, 4})


class Sound(Played):
    def test_every_step_sounds_to_the_bit_and_on_time(self):
        player = self.start(stand_in=True)
        rhythm = self.set_rhythm(player)
        player.drag("rotary_002", 0, -210)                     # 240 BPM
        player.wheel("rotary_002", 4)
        player.click("sw_007")
        time.sleep(132 * 15 / 240 + 0.5)
        player.click("sw_007")
        time.sleep(0.2)
        self.assertEqual(player.close(), 0)
        self.check_grid(self.replayed(rhythm), 240, 128)

    def test_power_switch_silences_at_once_and_ends_the_program(self):
        player = self.start(stand_in=True)
        self.set_rhythm(player)
        player.click("sw_007")
        time.sleep(1.5)
        xdotool("mousemove", *player.point("pw_001"), "click", "1")
        clicked = time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)      # Wine's performance counter
        self.assertEqual(player.wait_for_end(), 0)
        ended = time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)
        self.assertGreater(ended - clicked, 0.9e9)
        self.assertLess(ended - clicked, 4e9)
        blocks = list(self.blocks())
        last_loud = max(starts for _, starts, samples in blocks if any(samples))
        self.assertLess(last_loud - clicked, 0.150e9)
        self.assertGreater(blocks[-1][0] - clicked, 0.7e9, "the device went on with silence")


class Cards(Played):
    def lit_steps(self, player):
        picture = player.screenshot()
        return {(line, step) for line in range(6) for step in range(STEPS)
                if player.brightness(f"bottone_{16 * line + step + 1:03}", picture) > 120}

    def expected_card(self, title, places):
        on = {switch for switches, _, _ in RHYTHM for switch in switches}
        order = [f"sw_00{n}" for n in range(1, 7)] + ["sw_028", "sw_026", "sw_024", "sw_022", "sw_020", "sw_017"]
        sends = ",".join(["0.000000"] * 12)
        lines = ["_PERCUSSOMATIC_CARD_V4", f"TITLE={title}", "MASTER_VOLUME=1.000000", "TEMPO_NORMALIZED=0.400000",
                 "SEQUENCE_LENGTH=9", "LINE_VOLUMES=" + ",".join(f"{place / 650:.6f}" for place in places),
                 "INSTRUMENTS=" + ",".join("1" if switch in on else "0" for switch in order),
                 "EFFECT_ENABLED=0", "EFFECT_PRESET=0", "EFFECT_RETURN=0.200000", "EFFECT_ROOM_SIZE=0.420000",
                 "EFFECT_DAMPING=0.580000", "EFFECT_WIDTH=0.920000", "EFFECT_PREDELAY_MS=5.000000", "EFFECT_SENDS=" + sends]
        lines += ["".join("1" if step in steps else "0" for step in range(STEPS)) for _, _, steps in RHYTHM]
        return "\n".join(lines) + "\n"

    def test_a_rhythm_saved_by_mouse_comes_back_after_a_restart(self):
        player = self.start(stand_in=True)
        self.set_rhythm(player)
        player.click("sw_011")
        places = [player.turned[f"slider_{n:03}"] for n in range(1, 7)]
        player.choose("CARDS", "next", "next")
        empty = player.screenshot()
        player.choose("SAVE")
        self.assertEqual(self.card(3), self.expected_card("PUNCH CARD 03", places))
        self.check_holes(player, empty)

        player.choose("TITLE")
        wait_until(TITLE.controls, "the title dialog")
        xdotool("type", "NINE STEPS 9 8")
        xdotool("key", "Return")
        wait_until(lambda: "TITLE=NINE STEPS" in self.card(3), "the new title")
        self.assertEqual(self.card(3), self.expected_card("NINE STEPS 9 8", places))
        player.press("Escape")
        player.press("Escape")
        self.assertEqual(player.wait_for_end(), 0)

        player = self.start(stand_in=True)
        player.choose("CARDS", "next", "next", "LOAD")
        wait_until(lambda: self.lit_steps(player) == {(line, step) for line, (_, _, steps) in enumerate(RHYTHM) for step in steps},
                   "the whole pattern")
        wait_until(lambda: player.brightness("sw_028") > 150, "the settings of the card")
        self.assertGreater(player.brightness("sw_008"), 150, "edit mode")
        player.choose("CARDS", "next", "SAVE")
        self.assertEqual(self.card(4), self.expected_card("PUNCH CARD 04", places))
        self.assertEqual(sorted(p.name for p in (self.folder / "PunchCards").iterdir()), ["card_3.vopcard", "card_4.vopcard"])

    def check_holes(self, player, empty):
        """The first step of line 1 is punched at the foot of the card, the second is not."""
        left, top, right, bottom = player.regions()["dialog"]
        height = bottom - top - 112
        width = int(height * 1149 / 3304)
        x0, y0 = player.x + left + (right - left - width) // 2, player.y + top + 48
        hole = lambda step: (x0 + int(456 * width / 1149) - 2, y0 + int((3078 - 154 * step) * height / 3304) - 2, 4, 4)
        self.assertGreater(empty.brightness(*hole(0)), 150)
        wait_until(lambda: player.screenshot().brightness(*hole(0)) < 60, "the hole")
        self.assertGreater(player.screenshot().brightness(*hole(1)), 150)

    def test_faults_of_cards_never_stop_the_program(self):
        cards = self.folder / "PunchCards"
        cards.mkdir()
        (cards / "card_1.vopcard").write_text("_PERCUSSOMATIC_CARD_V3\nTITLE=X\nMASTER_VOLUME=loud\n")
        (cards / "card_2.vopcard").mkdir()
        player = self.start(stand_in=True)
        player.choose("CARDS", "next", "SAVE")                 # a folder has the card's name
        windows = lambda: len(xdotool("search", "--onlyvisible", "--name", "^Percussomatic$").split())
        wait_until(lambda: windows() == 2, "the message")
        xdotool("key", "Return")
        wait_until(lambda: windows() == 1, "the message's end")
        player.choose("LOAD")                                  # the slot kept the rhythm in memory
        wait_until(lambda: player.brightness("sw_008") > 150, "the insertion")
        player.click("pw_001")                                 # power-off in the middle of it, then a dialog
        player.choose("CARDS", "TITLE")
        self.assertEqual(player.wait_for_end(), 0)
        self.assertEqual([p.name for p in cards.iterdir() if "saving" in p.name], [])


class SoundServer:
    """One of the test's own, which comes and goes. Its only sink swallows the sound; what is played can be heard."""

    def __init__(self, test):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="percussomatic-"))
        test.addCleanup(shutil.rmtree, self.folder)
        self.address = f"unix:{self.folder}/native"
        self.environment = dict(os.environ, PULSE_SERVER=self.address, XDG_RUNTIME_DIR=str(self.folder))
        self.process = None
        test.addCleanup(self.stop)

    def start(self):
        self.process = subprocess.Popen(
            ["pulseaudio", "--daemonize=no", "--exit-idle-time=-1", "-n", f"--load=module-native-protocol-unix socket={self.folder}/native",
             "--load=module-null-sink sink_name=out rate=48000 format=s16le channels=2"],
            env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: subprocess.run(["pactl", "info"], env=self.environment, capture_output=True).returncode == 0, "the sound server")

    def stop(self):
        if self.process:
            self.process.kill()
            self.process.wait()
            self.process = None

    def sounds(self):
        """Whether anything is to be heard within half a second."""
        recorder = subprocess.Popen(["parec", "-d", "out.monitor", "--raw"], env=self.environment, stdout=subprocess.PIPE)
        try:
            return any(recorder.stdout.read(96000))
        finally:
            recorder.kill()
            recorder.communicate()


class Device(Played):
    def test_sound_comes_back_after_the_server_while_the_rhythm_goes_on(self):
        server = SoundServer(self)
        server.start()
        player = self.start(PULSE_SERVER=server.address)
        ABOUT.open_by(player, "INFO")
        self.assertIn("device open", ABOUT.texts())
        ABOUT.close(player, "Escape")
        self.set_rhythm(player)
        player.click("sw_007")
        wait_until(server.sounds, "the rhythm")
        server.stop()
        ABOUT.open_by(player, "INFO")
        wait_until(lambda: "no device, looking for one" in ABOUT.texts(), "the loss", 5)
        server.start()
        wait_until(server.sounds, "the rhythm's return", 15)
        wait_until(lambda: "device open" in ABOUT.texts(), "the news")
        ABOUT.close(player, "Escape")
        self.assertEqual(player.close(), 0)

    def test_a_driver_that_hangs_neither_stops_the_panel_nor_keeps_the_program(self):
        player = self.start(stand_in=True, PERCUSSOMATIC_TEST_STOP_AFTER_MS="500", PERCUSSOMATIC_TEST_HANGS="waveOutReset")
        dark = player.brightness("sw_007")
        time.sleep(3.0)                             # in the middle of closing the device
        player.click("sw_007")
        wait_until(lambda: player.brightness("sw_007") > dark + 40, "the start lamp")
        self.end_soon(player)


class RealSound(Played):
    def test_clave_on_every_step_is_heard_on_the_grid(self):
        failure = None
        for _ in range(3):                          # the machine may be busy with something else
            player = self.start()
            player.click("sw_022")
            player.slide("slider_004", 650)
            player.set_steps(3, range(STEPS))
            heard = self.folder / "heard.raw"
            recorder = Recorder(heard)
            player.click("sw_007")
            time.sleep(14)
            recorder.stop()
            self.assertEqual(player.close(), 0)
            try:
                return self.check_hits(self.hits(heard.read_bytes()))
            except AssertionError as error:
                failure = error
        raise failure

    def hits(self, capture):
        """When a stroke was heard, in seconds: half as loud as the loudest, and 60 ms after the one before."""
        left = array.array("h", capture[:len(capture) // 4 * 4])[::2]
        loud, hits = max(left) / 2, []
        for frame, value in enumerate(left):
            if value > loud and (not hits or frame / 48000 - hits[-1] > 0.060):
                hits.append(frame / 48000)
        return [hit for hit in hits if hit > 4.0]   # a sound server settles in the first seconds

    def check_hits(self, hits):
        self.assertGreater(len(hits), 60)
        gaps = [b - a for a, b in zip(hits, hits[1:])]
        self.assertLess(max(gaps), 0.125 * 1.5, "a hit is missing")
        self.assertGreater(min(gaps), 0.125 * 0.5, "a hit is double")
        start, interval = fitted(hits)
        self.assertAlmostEqual(interval / 0.125, 1, delta=0.005)
        near = sum(abs(hit - start - interval * i) <= 0.020 for i, hit in enumerate(hits))
        self.assertGreaterEqual(near / len(hits), 0.95)


if __name__ == "__main__":
    unittest.main(verbosity=2)
