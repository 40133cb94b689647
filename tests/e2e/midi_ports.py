"""MIDI inputs for the program that a test plays: plugs ports and plays on them, through the stand-in for winmm.dll.

    midi = MidiPorts(folder)
    midi.set_ports(["Keys", "!open Busy"])
    player = self.start(stand_in=True, **midi.variables())

The stand-in plays by its own clock what is handed over here, one thing after the other, so nothing depends on how
punctual this script is. What is played while no port is open and started is lost.
"""
import random

CLOCK, START, STOP = b"\xf8", b"\xfa", b"\xfc"
PULSES_PER_BEAT = 24


def clock_pulses(bpm, pulses, jitter_ms=0.0):
    """Timing clocks for send_many, the first after one interval. Each may come up to jitter_ms early or late."""
    chance = random.Random(1)
    interval_us = 60e6 / (bpm * PULSES_PER_BEAT)
    wander = lambda: chance.uniform(-jitter_ms, jitter_ms) * 1000
    times = sorted(max(0, round(interval_us * (n + 1) + wander())) for n in range(pulses))
    return [(time - before, CLOCK) for before, time in zip([0, *times], times)]


class MidiPorts:
    def __init__(self, folder):
        self.ports, self.script, self.journal = (folder / f"midi_{name}.txt" for name in ("ports", "script", "delivered"))
        self.set_ports([])

    def variables(self):
        """The program's environment. Call it for each start: what was played before is forgotten."""
        self.script.write_text("")
        self.journal.write_text("")
        self.sent = 0
        return {"PERCUSSOMATIC_TEST_MIDI_PORTS": str(self.ports), "PERCUSSOMATIC_TEST_MIDI_SCRIPT": str(self.script),
                "PERCUSSOMATIC_TEST_MIDI_DELIVERED": str(self.journal)}

    def set_ports(self, names):
        """What is plugged in. "!caps ", "!open " or "!start " before a name makes that call fail."""
        new = self.ports.with_suffix(".new")
        new.write_text("".join(name + "\n" for name in names), encoding="utf-8")
        new.replace(self.ports)

    def send(self, status, *rest):
        """One short message, now."""
        self.send_many([(0, bytes([status, *rest]))])

    def send_many(self, passage):
        """Short messages, each so many whole microseconds after the one before it, the first after now."""
        with open(self.script, "a") as script:
            script.write("".join(f"{delay_us} {int.from_bytes(message, 'little')}\n" for delay_us, message in passage))
        self.sent += len(passage)

    def delivered(self):
        """When the program was given a message, in nanoseconds."""
        words = self.journal.read_text().split()
        return [int(ns) for what, ns in zip(words[::2], words[1::2]) if what == "played"]

    def played_out(self):
        """True when everything sent has been played, heard by the program or lost."""
        return self.journal.read_text().count("\n") == self.sent
