# SPDX-License-Identifier: MIT
"""Measurements of WAVE files, for the scripts that create documents and previews.

Needs python3-numpy. Loudness is measured by ffmpeg if it is installed.
"""
import pathlib
import re
import shutil
import subprocess
import tempfile
import wave

import numpy

PLAYED_RATE = 48000


def read_wave(file):
    """Frames x channels, full scale 1."""
    with wave.open(str(file)) as source:
        width, channels = source.getsampwidth(), source.getnchannels()
        raw = numpy.frombuffer(source.readframes(source.getnframes()), numpy.uint8)
    raw = raw.reshape(-1, width).astype(numpy.int32)
    value = sum(raw[:, byte] << (32 - 8 * (width - byte)) for byte in range(width))
    return (value / 2.0**31).reshape(-1, channels)


def write_wave(file, frames):
    with wave.open(str(file), "wb") as out:
        out.setnchannels(frames.shape[1])
        out.setsampwidth(2)
        out.setframerate(PLAYED_RATE)
        out.writeframes((numpy.clip(frames, -1, 1) * 32767).astype("<i2").tobytes())


def decibels(power):
    return 10 * numpy.log10(numpy.maximum(power, 1e-30))


def spectrum(frames, rate):
    """Frequencies and the energy at each, summed over all channels."""
    energy = (numpy.abs(numpy.fft.rfft(frames, axis=0)) ** 2).sum(axis=1) * 2 / len(frames)
    return numpy.fft.rfftfreq(len(frames), 1 / rate), energy


def k_weight(hz):
    """Power response of the two filters of ITU-R BS.1770, from its coefficients for 48 kHz."""
    turn = numpy.exp(-2j * numpy.pi * hz / PLAYED_RATE)
    shelf = numpy.polyval((1.19839281085285, -2.69169618940638, 1.53512485958697), turn)
    shelf /= numpy.polyval((0.73248077421585, -1.69065929318241, 1), turn)
    high_pass = numpy.polyval((1, -2, 1), turn)
    high_pass /= numpy.polyval((0.99007225036621, -1.99004745483398, 1), turn)
    return numpy.abs(shelf * high_pass) ** 2


def loudness(frames):
    """Integrated loudness in LUFS of frames at 48 kHz; ungated if ffmpeg is not installed."""
    if not shutil.which("ffmpeg"):
        hz, energy = spectrum(frames, PLAYED_RATE)
        return -0.691 + decibels((energy * k_weight(hz)).sum() / len(frames))
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "heard.wav"
        write_wave(file, frames)
        command = ["ffmpeg", "-hide_banner", "-nostats", "-i", file, "-af", "ebur128", "-f", "null", "-"]
        report = subprocess.run(command, capture_output=True, text=True, check=True).stderr
    return float(re.findall(r"I:\s+(-?[\d.]+) LUFS", report)[-1])
