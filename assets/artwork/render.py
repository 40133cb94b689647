#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Renders the pictures and the icon into png/, from where the build embeds them.

usage: render.py [NAME ...]      renders everything, or only the named files ("hole" or "hole.PNG")
       render.py --check         checks the files in png/ without rendering

The output is reproducible with the same versions of rsvg-convert (Debian: librsvg2-bin) and convert
(Debian: imagemagick). Builds the panel table first if it is missing.
"""
import argparse
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import panel_file  # noqa: E402

panel_file.build_if_missing()
import draw  # noqa: E402
import icon  # noqa: E402
import legibility  # noqa: E402
from table import ICON, ICON_SIZES, PICTURES, STATIC_PICTURES  # noqa: E402

PNG = pathlib.Path(__file__).resolve().parent / "png"
MAX_TOTAL_BYTES = 6_000_000
POSTERIZED = {"mobile.PNG"}  # colours in steps of four: not visible in wood, half the size


def rasterise(svg, png):
    """Renders SVG text to an 8-bit RGBA file.

    rsvg-convert writes opaque pictures without an alpha channel, so all are converted again. This also
    removes dates and colour profiles and makes the files smaller.
    """
    source = png.with_suffix(".svg")
    source.write_text(svg, encoding="utf-8")
    subprocess.run(["rsvg-convert", source, "-o", png], check=True)
    posterize = "-channel RGB -evaluate add 514 -evaluate and 64512 +channel".split()  # of 65535
    command = ["convert", png, "-strip", *(posterize if png.name in POSTERIZED else []), "-depth", "8"]
    command += ["-define", "png:compression-level=9", "-define", "png:compression-filter=5"]
    subprocess.run([*command, f"PNG32:{png}"], check=True)


def render_picture(name, folder):
    rasterise(draw.DRAWINGS[name](), folder / name)


def render_icon(folder):
    images = []
    for size in ICON_SIZES:
        png = folder / f"icon-{size}.png"
        rasterise(icon.icon(size), png)
        command = ["convert", png, "-depth", "8", "rgba:-"]
        pixels = subprocess.run(command, check=True, capture_output=True).stdout
        images.append((size, pixels, png.read_bytes()))
    (folder / ICON).write_bytes(icon.icon_file(images))


def render(names):
    PNG.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as scratch:
        for name in names:
            start = time.monotonic()
            output = pathlib.Path(scratch) / name
            render_icon(output.parent) if name == ICON else render_picture(name, output.parent)
            shutil.copyfile(output, PNG / name)
            print(f"{name:22} {output.stat().st_size:9} bytes {time.monotonic() - start:6.1f} s")


def problems(report):
    """Problems of the files in png/, one line each."""
    total = 0
    for name in (*PICTURES, ICON):
        if not (PNG / name).is_file():
            yield f"{name}: missing"
            continue
        head = (PNG / name).read_bytes()[:26]
        total += (PNG / name).stat().st_size
        if name == ICON:
            continue
        if head[:8] != b"\x89PNG\r\n\x1a\n" or head[24:] != b"\x08\x06":
            yield f"{name}: not an 8-bit RGBA PNG"
        elif struct.unpack(">II", head[16:24]) != PICTURES[name]:
            yield f"{name}: {struct.unpack('>II', head[16:24])} pixels instead of {PICTURES[name]}"
        elif name in STATIC_PICTURES:
            command = ["convert", PNG / name, "-format", "%[opaque]", "info:"]
            opaque = subprocess.run(command, check=True, capture_output=True, text=True).stdout
            if opaque.strip().lower() != "true":
                yield f"{name}: has transparent pixels"
    if total > MAX_TOTAL_BYTES:
        yield f"{total} bytes in all, more than {MAX_TOTAL_BYTES}"
    yield from legibility.problems(PNG, report)


def main():
    parser = argparse.ArgumentParser(usage="render.py [--check] [NAME ...]")
    parser.add_argument("names", nargs="*", metavar="NAME")
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()

    known = {pathlib.Path(name).stem.lower(): name for name in (*PICTURES, ICON)}
    names = []
    for name in arguments.names:
        stem = pathlib.Path(name).stem.lower()
        if stem not in known:
            parser.error(f"unknown picture {name}; known are {', '.join(known.values())}")
        names.append(known[stem])
    for tool in ("rsvg-convert", "convert"):
        if not shutil.which(tool):
            parser.error(f"{tool} is not installed")

    if not arguments.check:
        render(names or known.values())
    found = list(problems(print if arguments.check else lambda line: None))
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
