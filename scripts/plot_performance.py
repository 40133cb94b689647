#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the pictures of docs/performance.md from the results of the benchmarks.

usage: scripts/plot_performance.py engine.json others.json
       scripts/plot_performance.py --steps FILE.json...

The first two files are written by engine_bench and other_engines with --benchmark_out, the others by
bench/step_times.py. Needs python3-matplotlib.
"""
import json
import pathlib
import re
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

FOLDER = pathlib.Path(__file__).resolve().parents[1] / "docs/performance"
OURS, OTHER, GRID = "#b5482a", "#7d8a8f", "#d8d8d8"


def medians_us(path):
    """Processor time per block in microseconds, by benchmark."""
    runs = json.loads(pathlib.Path(path).read_text())["benchmarks"]
    return {run["run_name"]: run["cpu_time"] / 1000 for run in runs if run.get("aggregate_name") == "median"}


def finish(figure, axes, name):
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)
    axes.set_axisbelow(True)
    figure.tight_layout()
    figure.savefig(FOLDER / name, dpi=120, metadata={"Software": None})


def plot_line(engine):
    figure, axes = plt.subplots(figsize=(7, 4))
    for effect, style in (("off", "o-"), ("on", "s--")):
        found = (re.fullmatch(rf"(\d+) voices, effect {effect}", name) for name in engine)
        points = sorted((int(match[1]), engine[match[0]]) for match in found if match)
        axes.plot(*zip(*points), style, color=OURS, label=f"effect {effect}")
    axes.set(xlabel="voices", ylabel="µs for a block of 512 frames", xlim=0, ylim=0, xticks=range(0, 65, 8))
    axes.grid(color=GRID)
    axes.legend(frameon=False)
    finish(figure, axes, "voices.png")


def plot_bars(engine, others):
    """Other engines are scaled by their ratio to this engine in the same interleaved rounds."""
    bars = []
    for effect in ("off", "on"):
        ours = f"64 voices, effect {effect}"
        bars.append((f"this engine, effect {effect}", engine[ours]))
        bars.append((f"reference, effect {effect}", engine[f"{ours}, against reference"]))
        for name, label in (("FluidSynth", f"FluidSynth, reverb {effect}"), ("OpenAL Soft", "OpenAL Soft")):
            if f"{ours}, against {name}" in others:
                bars.append((label, engine[ours] * others[f"{ours}, against {name}"] / others[ours]))
    figure, axes = plt.subplots(figsize=(7, 3.6))
    names, times = zip(*reversed(bars))
    drawn = axes.barh(names, times, color=[OURS if name.startswith("this") else OTHER for name in names])
    axes.bar_label(drawn, fmt="%.0f", padding=3)
    axes.set(xlabel="µs for a block of 512 frames, 64 stereo voices")
    axes.grid(axis="x", color=GRID)
    finish(figure, axes, "engines.png")


def plot_steps(paths):
    """Errors of the intervals between recorded steps, over time and as a histogram."""
    layout = dict(figsize=(8, 1.9 * len(paths)), width_ratios=(3, 1), sharey=True, squeeze=False)
    figure, all_axes = plt.subplots(len(paths), 2, **layout)
    for (steps, spread), path in zip(all_axes, paths):
        data = json.loads(pathlib.Path(path).read_text())
        steps.plot(data["between"], ".", markersize=1.5, color=OURS)
        steps.set(ylabel=f"{data['bpm']:g} BPM\nms", xlim=(0, len(data["between"])))
        spread.hist(data["between"], bins=24, orientation="horizontal", color=OURS)
        spread.set(xticks=[])
        for axes in (steps, spread):
            for edge in (-512 / 48, 512 / 48):
                axes.axhline(edge, color=OTHER, linewidth=1, linestyle="--")
            for side in ("top", "right"):
                axes.spines[side].set_visible(False)
    title = "error of the interval between recorded steps; dashed: one buffer"
    all_axes[0][0].set_title(title, fontsize=9)
    all_axes[-1][0].set_xlabel("step")
    finish(figure, all_axes[-1][0], "steps.png")


def main():
    FOLDER.mkdir(exist_ok=True)
    if len(sys.argv) > 2 and sys.argv[1] == "--steps":
        plot_steps(sys.argv[2:])
        return
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    engine, others = map(medians_us, sys.argv[1:])
    plot_line(engine)
    plot_bars(engine, others)


main()
