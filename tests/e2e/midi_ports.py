"""MIDI inputs for the program that a test plays: plugs ports and plays on them, through the stand-in for winmm.dll.

    midi = MidiPorts(folder)
    midi.set_ports(["Keys", "!open Busy"])
    player = self.start(stand_in=True, **midi.variables())

The stand-in plays by its own clock what is handed over here, so nothing depends on how punctual this script is.
Passages handed over one after the other overlap; what is played while no port is open and started is lost.
"""
import collections
import os
import random

CLOCK, START, CONTINUE, STOP = b"\xf8", b"\xfa", b"\xfb", b"\xfc"
PULSES_PER_BEAT = 24

# Times in nanoseconds of the program's performance counter, which is CLOCK_MONOTONIC_RAW here.
Delivered = collections.namedtuple("Delivered", "due_ns ns message")


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
        self.sent = 0
        self.set_ports([])
        self.variables()

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
        assert all(delay_us >= 0 and 1 <= len(message) <= 3 for delay_us, message in passage)
        lines = "".join(f"{delay_us} {bytes(message).hex()}\n" for delay_us, message in passage)
        with open(self.script, "ab") as script:
            script.write(lines.encode() + b"\n")
        self.sent += len(passage)

    def clock(self, bpm, pulses, jitter_ms=0.0):
        self.send_many(clock_pulses(bpm, pulses, jitter_ms))

    def start(self):
        self.send_many([(0, START)])

    def continue_(self):
        self.send_many([(0, CONTINUE)])

    def stop(self):
        self.send_many([(0, STOP)])

    def _journal(self):
        """The whole lines so far, as words: nanoseconds, what happened, and more."""
        return [line.split(" ", 2) for line in self.journal.read_text(encoding="utf-8").split("\n")[:-1]]

    def delivered(self):
        """What the program's callback was given."""
        return [Delivered(int(words[2].split()[0]), int(words[0]), bytes.fromhex(words[2].split()[1]))
                for words in self._journal() if words[1] == "played"]

    def calls(self):
        """What the program did to the port: "open Keys", "start", "stop", "reset", "close"."""
        return [" ".join(words[1:]) for words in self._journal() if words[1] not in ("played", "lost")]

    def played_out(self):
        """True when everything sent has been played, heard by the program or lost."""
        return sum(words[1] in ("played", "lost") for words in self._journal()) == self.sent
