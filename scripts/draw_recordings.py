#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the twelve recordings into docs/recordings and prints their table for docs/recordings.md.

usage: draw_recordings.py [RECORDINGS [OUT]]

Needs python3-numpy, python3-matplotlib, and ffmpeg for the loudness. It is used for the documents only,
not for building or testing.
"""
import pathlib
import sys

import matplotlib
import numpy

matplotlib.use("Agg")
from matplotlib import pyplot  # after the choice of a backend without a display

from sound_measures import PLAYED_RATE, decibels, loudness, read_wave, spectrum

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 96000
# By picture: recordings with the duration in ms and the maximum frequency in kHz to show.
SHEETS = {
    "skins": {"bass_drum": (350, 4), "timbal_1": (350, 8), "timbal_2": (600, 8)},
    "snares": {"snare": (350, 24), "rolling_snare": (1100, 24)},
    "wood": {"block_1": (150, 12), "block_2": (150, 12), "clave": (150, 12)},
    "metal": {
        "charleston": (350, 24),
        "cymbal_2": (1500, 24),
        "cymbal_1": (3000, 24),
        "triangle": (3000, 24),
    },
}
OCTAVES = (63, 125, 250, 500, 1000, 2000, 4000, 8000, 16000)
MIN_ENERGY_SHARE = 1e-3  # octaves with less energy are left out of the table


def filtered(signal, gain):
    """Scales the spectrum by a function of the frequency in Hz; gentle slopes avoid ringing."""
    bins = numpy.fft.rfft(signal, 2**20)
    return numpy.fft.irfft(bins * gain(numpy.fft.rfftfreq(2**20, 1 / RATE)))[: signal.size]


def octave_of(signal, centre):
    return filtered(signal, lambda hz: 2 ** -((3 * numpy.log2(numpy.maximum(hz, 1) / centre)) ** 2))


def t60(signal):
    """Decay time in ms: twice the time from -5 to -35 dB of the remaining energy."""
    remaining = decibels(numpy.cumsum(signal[::-1] ** 2)[::-1] / (signal**2).sum())
    return 2 * (numpy.argmax(remaining < -35) - numpy.argmax(remaining < -5)) * 1000 / RATE


def centroid(signal, ms):
    hz, energy = spectrum(signal[int(ms * 96) :][:5760, None] * numpy.hanning(5760)[:, None], RATE)
    return (hz * energy).sum() / energy.sum()


def repeated_four_times_per_second(recording):
    """Ten seconds as the instrument plays them: decimated to its sample rate, hits overlapping."""
    played = recording[::2]
    loop = numpy.zeros((10 * PLAYED_RATE, 2))
    for start in range(0, len(loop), PLAYED_RATE // 4):
        end = min(start + len(played), len(loop))
        loop[start:end] += played[: end - start]
    return loop


def pitch(signal, hz):
    """(ms, Hz) of each cycle between upward zero crossings."""
    low = filtered(signal, lambda at: 1 / (1 + (at / (1.3 * hz)) ** 8))
    at = numpy.flatnonzero((low[:-1] < 0) & (low[1:] >= 0))
    exact = at - low[at] / (low[at + 1] - low[at])
    return list(zip(exact * 1000 / RATE, RATE / numpy.diff(exact)))


def print_rows(name, recording):
    """A row of the table, and one of decays by octave."""
    level = numpy.abs(recording).max(axis=1)
    sounding = recording[: numpy.flatnonzero(level > 1e-5)[-1] + 1]
    mid = sounding.mean(axis=1)
    hz, energy = spectrum(sounding, RATE)
    folding = max(numpy.abs(filtered(channel, lambda at: at >= 24000)).max() for channel in recording.T)
    moments = [ms for ms in (0, 100, 400, 1600) if ms * 96 + 5760 < mid.size]
    row = (
        name,
        f"{decibels(level.max()**2):.1f}",
        f"{loudness(repeated_four_times_per_second(recording)):.1f}",
        f"{hz[energy.argmax()]:.0f}",
        " ".join(f"{centroid(mid, ms):.0f}" for ms in moments),
        f"{t60(mid):.0f}",
        f"{mid.size / 96:.0f}",
        f"{decibels(energy[hz < 30].sum() / energy.sum()):.0f}",
        f"{decibels(folding**2):.0f}",
    )
    bands = [octave_of(mid, octave) for octave in OCTAVES]
    decays = [
        f"{t60(band):.0f}" if (band**2).sum() > MIN_ENERGY_SHARE * (mid**2).sum() else ""
        for band in bands
    ]
    return f"| {' | '.join(row)} |", f"| {name} | {' | '.join(decays)} |"


def draw(name, recording, axes, ms, highest_khz):
    shown = recording[: ms * 96].mean(axis=1)
    wave_axis, axis = axes
    wave_axis.plot(numpy.arange(shown.size) / 96, shown, color="#8a3b12", linewidth=0.5)
    wave_axis.set(title=name, xlim=(0, ms), ylim=(-0.36, 0.36), xticks=[], yticks=[0])
    size = 4096 if highest_khz < 10 else 2048
    hop = max(ms * 96 // 500, 32)
    padded = numpy.concatenate([numpy.zeros(size // 2), recording[: ms * 96 + size, :].mean(axis=1)])
    starts = range(0, ms * 96, hop)
    windows = numpy.stack([padded[start : start + size] for start in starts]) * numpy.hanning(size)
    rows = int(highest_khz * 1000 / RATE * size)
    picture = decibels(numpy.abs(numpy.fft.rfft(windows)[:, :rows]) ** 2 * 16 / size**2)
    axis.imshow(
        picture.T,
        origin="lower",
        aspect="auto",
        cmap="magma",
        vmin=-110,
        vmax=-20,
        extent=(0, ms, 0, highest_khz),
        interpolation="nearest",
    )
    axis.set(xlabel="ms", ylabel="kHz")


def main(arguments):
    folder = pathlib.Path(arguments[0]) if arguments else ROOT / "build/recordings"
    out = pathlib.Path(arguments[1]) if arguments[1:] else ROOT / "docs/recordings"
    out.mkdir(parents=True, exist_ok=True)
    rows = []
    for sheet, voices in SHEETS.items():
        figure, axes = pyplot.subplots(
            2,
            len(voices),
            figsize=(3.2 * len(voices), 3.6),
            dpi=80,
            squeeze=False,
            height_ratios=(1, 2.6),
            layout="constrained",
        )
        for (name, (ms, highest_khz)), column in zip(voices.items(), axes.T):
            recording = read_wave(folder / f"{name}.wav")
            draw(name, recording, column, ms, highest_khz)
            rows.append(print_rows(name, recording))
            if name == "bass_drum":
                crossings = pitch(recording.mean(axis=1), 57)[:12]
        figure.savefig(out / f"{sheet}.png", metadata={"Software": None})
        pyplot.close(figure)
    print(
        "| recording | peak dBFS | LUFS | strongest Hz | centroid Hz at 0 100 400 1600 ms | T60 ms"
        " | silent after ms | below 30 Hz dB | above 24 kHz dBFS |\n" + "|---" * 9 + "|"
    )
    print("\n".join(row for row, _ in rows))
    print("\n| T60 ms in the octave of | " + " | ".join(map(str, OCTAVES)) + " |\n" + "|---" * 10 + "|")
    print("\n".join(row for _, row in rows))
    print("\nPitch of bass_drum: " + ", ".join(f"{ms:.0f} ms {hz:.0f} Hz" for ms, hz in crossings))


if __name__ == "__main__":
    main(sys.argv[1:])
