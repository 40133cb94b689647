# SPDX-License-Identifier: MIT
"""Reads the files that `percussomatic-card midi` writes with an independent library.

usage: midi_file_test.py TOOL CARD...
"""
import pathlib
import subprocess
import sys
import tempfile

import mido

# General MIDI keys of the instruments: A of lines 1 to 6, then B.
KEYS = [40, 51, 66, 81, 77, 76, 49, 38, 42, 75, 65, 36]
RHYTHM_ONLY = "_PERCUSSOMATIC_CARD_V1\n" + "1000000000000000\n" * 6
QUIET = "_PERCUSSOMATIC_CARD_V3\nTITLE=T\u00cdTULO \U0001f941\nMASTER_VOLUME=1\nTEMPO_NORMALIZED=0\n"
QUIET += "SEQUENCE_LENGTH=5\nLINE_VOLUMES=0.002,0.5,1,0,1,1\nINSTRUMENTS=1,1,1,1,1,0,1,1,0,1,1,1\n"
QUIET += "1111111111111111\n" * 6


def check(tool, text, bars):
    lines = text.splitlines()
    values = dict(line.split("=", 1) for line in lines if "=" in line)
    length = int(values.get("SEQUENCE_LENGTH", 16))
    volumes = [float(volume) for volume in values.get("LINE_VOLUMES", "1,1,1,1,1,1").split(",")]
    switches = values.get("INSTRUMENTS", ",".join("1" * 12)).split(",")
    microseconds = 60e6 / (float(values.get("TEMPO_NORMALIZED", "0.4")) * 200 + 40)
    expected = []  # tick, key, velocity
    for step in range(bars * length):
        for line, (pattern, volume) in enumerate(zip(lines[-6:], volumes)):
            velocity = max(1, int(127 * int(volume * 650 + 0.5) / 650 + 0.5))
            for position in (line, line + 6):
                if pattern[step % length] == "1" and volume > 0 and switches[position] == "1":
                    expected.append((step * 120, KEYS[position], velocity))

    with tempfile.TemporaryDirectory() as folder:
        card, output = pathlib.Path(folder, "card.vopcard"), pathlib.Path(folder, "out.mid")
        card.write_text(text, encoding="utf-8")
        options = ["--bars", str(bars)] if bars != 4 else []
        subprocess.run([tool, "midi", card, output, *options], check=True)
        file = mido.MidiFile(output, charset="utf-8")
    assert (file.type, file.ticks_per_beat, len(file.tracks)) == (0, 480, 1)
    (name,) = (message.name for message in file.tracks[0] if message.type == "track_name")
    (tempo,) = (message.tempo for message in file.tracks[0] if message.type == "set_tempo")
    assert name == (values.get("TITLE") or "PUNCH CARD 01")
    assert abs(tempo - microseconds) <= 0.51, tempo
    found, sounding, tick = [], {}, 0
    for message in file.tracks[0]:
        tick += message.time
        if message.type == "note_on" and message.velocity > 0:
            assert message.channel == 9 and message.note not in sounding
            sounding[message.note] = tick
            found.append((tick, message.note, message.velocity))
        elif message.type in ("note_on", "note_off"):
            assert 0 < tick - sounding.pop(message.note) < 120
    assert found == expected and not sounding
    assert tick == bars * length * 120


tool, *cards = sys.argv[1:]
assert cards
for text in [*(pathlib.Path(card).read_text(encoding="utf-8") for card in cards), RHYTHM_ONLY, QUIET]:
    check(tool, text, 4)
check(tool, QUIET, 300)
check(tool, RHYTHM_ONLY.replace("1000", "0000"), 1200)  # the first delta time has four bytes
