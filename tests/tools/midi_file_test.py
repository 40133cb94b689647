# SPDX-License-Identifier: MIT
"""Reads the files that `percussomatic-card midi` writes with an independent library.

usage: midi_file_test.py TOOL CARD...
"""
import pathlib
import subprocess
import sys
import tempfile

import mido

# General MIDI keys of instruments A and B of lines 1 to 6.
KEYS = [(40, 49), (51, 38), (66, 42), (81, 75), (77, 65), (76, 36)]

RHYTHM_ONLY = "_PERCUSSOMATIC_CARD_V1\n" + "1000000000000000\n" * 6


def expected_notes(text, bars):
    """(tick, key, velocity) of every note, the beats per minute and the length in steps."""
    lines = text.splitlines()
    pattern = [line[:16] for line in lines[-6:]]
    values = dict(line.split("=", 1) for line in lines if "=" in line)
    length = int(values.get("SEQUENCE_LENGTH", 16))
    volumes = [float(v) for v in values.get("LINE_VOLUMES", "1,1,1,1,1,1").split(",")]
    switches = values.get("INSTRUMENTS", ",".join("1" * 12)).split(",")
    bpm = float(values.get("TEMPO_NORMALIZED", "0.4")) * 200 + 40
    notes = []
    for step in range(bars * length):
        for line in range(6):
            if pattern[line][step % length] != "1" or volumes[line] == 0:
                continue
            gain = int(volumes[line] * 650 + 0.5) / 650
            velocity = max(1, int(127 * gain + 0.5))
            for b in range(2):
                if switches[6 * b + line] == "1":
                    notes.append((step * 120, KEYS[line][b], velocity))
    return notes, bpm, length


def check(tool, card, bars):
    text = pathlib.Path(card).read_text(encoding="utf-8")
    notes, bpm, length = expected_notes(text, bars)
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "out.mid"
        options = ["--bars", str(bars)] if bars != 4 else []
        subprocess.run([tool, "midi", card, path, *options], check=True)
        file = mido.MidiFile(path, charset="utf-8")
    assert (file.type, file.ticks_per_beat, len(file.tracks)) == (0, 480, 1)
    title = next((line[6:] for line in text.splitlines() if line.startswith("TITLE=")), "")
    first = lambda kind: next(message for message in file.tracks[0] if message.type == kind)
    name, tempo = first("track_name"), first("set_tempo")
    found, sounding, tick = [], {}, 0
    for message in file.tracks[0]:
        tick += message.time
        if message.type == "note_on" and message.velocity > 0:
            assert message.channel == 9 and message.note not in sounding
            sounding[message.note] = tick
            found.append((tick, message.note, message.velocity))
        elif message.type in ("note_on", "note_off"):
            assert 0 < tick - sounding.pop(message.note) < 120
    assert name.name == (title or "PUNCH CARD 01")
    assert abs(tempo.tempo - 60e6 / bpm) <= 0.51, (tempo, bpm)
    assert found == notes and not sounding
    assert tick == bars * length * 120


def main():
    tool, *cards = sys.argv[1:]
    assert cards
    with tempfile.TemporaryDirectory() as folder:
        old = pathlib.Path(folder) / "old.vopcard"
        old.write_text(RHYTHM_ONLY)
        quiet = pathlib.Path(folder) / "quiet.vopcard"
        text = "_PERCUSSOMATIC_CARD_V3\nTITLE=T\u00cdTULO \U0001f941\nMASTER_VOLUME=1\nTEMPO_NORMALIZED=0\n"
        text += "SEQUENCE_LENGTH=5\nLINE_VOLUMES=0.002,0.5,1,0,1,1\nINSTRUMENTS=1,1,1,1,1,0,1,1,0,1,1,1\n"
        quiet.write_text(text + "1111111111111111\n" * 6, encoding="utf-8")
        for card in [*cards, str(old), str(quiet)]:
            check(tool, card, 4)
        check(tool, str(quiet), 300)


if __name__ == "__main__":
    main()
