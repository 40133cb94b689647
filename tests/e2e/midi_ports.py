# SPDX-License-Identifier: MIT
"""Connects MIDI ports to the program and sends messages to it, through the fake winmm.dll.

    midi = MidiPorts(folder)
    midi.set_ports(["Keys", "!open Busy"])
    player = self.start(fake_winmm=True, **midi.variables())

The fake sends the messages by its own clock, one after the other, so the timing of this script does not
matter. Messages sent while no port is open and started are lost.
"""
import random

CLOCK, START, STOP = b"\xf8", b"\xfa", b"\xfc"
PULSES_PER_BEAT = 24


def clock_pulses(bpm, pulses, jitter_ms=0.0):
    """Timing clocks for send_many, the first after one interval; each up to jitter_ms early or late."""
    rng = random.Random(1)
    interval_us = 60e6 / (bpm * PULSES_PER_BEAT)
    jitter_us = lambda: rng.uniform(-jitter_ms, jitter_ms) * 1000
    times = sorted(max(0, round(interval_us * (n + 1) + jitter_us())) for n in range(pulses))
    return [(time - previous, CLOCK) for previous, time in zip([0, *times], times)]


class MidiPorts:
    def __init__(self, folder):
        files = (folder / f"midi_{name}.txt" for name in ("ports", "script", "delivered"))
        self.ports, self.script, self.log = files
        self.set_ports([])

    def variables(self):
        """The environment for one start of the program; discards messages sent before."""
        self.script.write_text("")
        self.log.write_text("")
        self.sent = 0
        files = {"PORTS": self.ports, "SCRIPT": self.script, "DELIVERED": self.log}
        return {f"PERCUSSOMATIC_TEST_MIDI_{name}": str(file) for name, file in files.items()}

    def set_ports(self, names):
        """Replaces the connected ports. A prefix "!caps ", "!open " or "!start " makes that call fail."""
        new = self.ports.with_suffix(".new")
        new.write_text("".join(name + "\n" for name in names), encoding="utf-8")
        new.replace(self.ports)

    def send(self, status, *rest):
        """Sends one short message now."""
        self.send_many([(0, bytes([status, *rest]))])

    def send_many(self, messages):
        """Sends (delay, message) pairs; delays in whole microseconds after the previous message or now."""
        lines = (f"{delay_us} {int.from_bytes(message, 'little')}\n" for delay_us, message in messages)
        with open(self.script, "a") as script:
            script.write("".join(lines))
        self.sent += len(messages)

    def delivered(self):
        """When the program received each message, in nanoseconds."""
        words = self.log.read_text().split()
        return [int(ns) for what, ns in zip(words[::2], words[1::2]) if what == "played"]

    def all_sent(self):
        """True when every message has been delivered or lost."""
        return self.log.read_text().count("\n") == self.sent
