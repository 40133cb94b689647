#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Renders the ten factory rhythms into build/previews and prints measurements of them.

usage: render_previews.py [--full] [COMPANION_TOOL [RECORDINGS]]

--full sets all line sliders and the master volume to maximum. COMPANION_TOOL defaults to
build/native/percussomatic-card; RECORDINGS is a folder with replacements for its recordings.
Needs python3-numpy, and ffmpeg for the loudness.
"""
import pathlib
import re
import subprocess
import sys

import numpy

from sound_measures import PLAYED_RATE, decibels, k_weight, loudness, read_wave, spectrum

ROOT = pathlib.Path(__file__).resolve().parent.parent
BARS = 4
BANDS = ((20, 200), (200, 4000), (4000, 20000))
HOP = 240  # frames, 5 ms
LEAD = 20 * HOP  # silence before the first step
ONSET_TOLERANCE = 0.012  # s


def read_card(text):
    """Title, seconds per step, and whether each step is audible."""
    value = dict(line.split("=", 1) for line in text.splitlines() if "=" in line)
    length = int(value["SEQUENCE_LENGTH"])
    gains = [float(gain) for gain in value["LINE_VOLUMES"].split(",")]
    switches = value["INSTRUMENTS"].split(",")
    rows = re.findall(r"^[01]{16}$", text, re.MULTILINE)
    audible = [
        row
        for line, row in enumerate(rows)
        if gains[line] > 0 and "1" in (switches[line], switches[line + 6])
    ]
    tempo = 40 + 200 * float(value["TEMPO_NORMALIZED"])
    return value["TITLE"], 15 / tempo, [any(row[step] == "1" for row in audible) for step in range(length)]


def onsets(frames):
    """Times in seconds at which the level of some octave jumps."""
    mono = numpy.concatenate([numpy.zeros(LEAD), frames.sum(axis=1)])
    blocks = mono[: mono.size // HOP * HOP].reshape(-1, HOP)
    windows = numpy.hstack([blocks[:-1], blocks[1:]]) * numpy.hanning(2 * HOP)
    power = numpy.abs(numpy.fft.rfft(windows)) ** 2
    edges = [1, 3, 6, 12, 24, 48, 96, 200]
    octaves = numpy.stack([power[:, low:high].sum(axis=1) for low, high in zip(edges, edges[1:])])
    level = decibels(octaves + 1e-3 * octaves.max())
    rise = numpy.maximum(level[:, 2:] - level[:, :-2], 0).sum(axis=0)
    peaks = [
        at for at in range(rise.size) if rise[at] > 5 and rise[at] == rise[max(at - 8, 0) : at + 9].max()
    ]
    return ((numpy.array(peaks) + 2) * HOP - LEAD) / PLAYED_RATE


def main(arguments):
    full = "--full" in arguments
    rest = [argument for argument in arguments if argument != "--full"]
    tool = rest[0] if rest else ROOT / "build/native/percussomatic-card"
    recordings = ["--recordings", rest[1]] if rest[1:] else []
    out = ROOT / "build/previews"
    out.mkdir(parents=True, exist_ok=True)
    print("| card | rhythm | steps found | extra onsets | LUFS | peak dBFS | low / mid / high % |")
    print("|---|---|---|---|---|---|---|")
    for number in range(1, 11):
        text = (ROOT / f"assets/cards/card_{number}.vopcard").read_text(encoding="utf-8")
        name = f"card_{number}"
        if full:
            name += "_full"
            text = re.sub(r"(?<=LINE_VOLUMES=).*", ",".join(["1"] * 6), text)
            text = re.sub(r"(?<=MASTER_VOLUME=).*", "1", text)
        card = out / f"{name}.vopcard"
        card.write_text(text, encoding="utf-8")
        subprocess.run(
            [tool, "render", card, card.with_suffix(".wav"), "--bars", str(BARS), *recordings],
            check=True,
            stdout=subprocess.DEVNULL,
        )
        card.unlink()

        title, step_seconds, audible = read_card(text)
        frames = read_wave(card.with_suffix(".wav"))
        steps = numpy.flatnonzero(audible * BARS) * step_seconds
        found = onsets(frames)
        apart = numpy.abs(found[:, None] - steps[None, :])
        played = frames[: int(BARS * len(audible) * step_seconds * PLAYED_RATE)]
        hz, energy = spectrum(played, PLAYED_RATE)
        energy *= k_weight(hz)
        shares = [100 * energy[(hz >= low) & (hz < high)].sum() / energy.sum() for low, high in BANDS]
        print(
            f"| {number} | {title} | {(apart.min(axis=0) < ONSET_TOLERANCE).sum()} of {steps.size}"
            f" | {(apart.min(axis=1) >= ONSET_TOLERANCE).sum()} | {loudness(played):.1f}"
            f" | {decibels(numpy.abs(frames).max()**2):.1f}"
            f" | {' / '.join(f'{share:.0f}' for share in shares)} |"
        )


if __name__ == "__main__":
    main(sys.argv[1:])
