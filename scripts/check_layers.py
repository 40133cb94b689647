#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails if an include crosses a layer the wrong way or closes a cycle.

usage: check_layers.py      from any folder; prints every violation

A folder may include only itself and the folders named here; what is not listed is not allowed. NAME.h and
NAME.cpp count as one module, and no module may depend on itself by way of others.
"""
import pathlib
import re
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent / "src"
INCLUDE = re.compile(r'^#include "(.+?)"', re.MULTILINE)

# What cards, midi and input are built on.
INSTRUMENT = ["core/pattern", "core/graphics", "core/panel", "core/audio", "core/sequencer", "platform"]
SHELL = ["win32", "win32/audio", "win32/graphics", "win32/midi"]

ALLOWED = {
    "core/pattern": [],
    "core/graphics": [],
    "core/assets": [],
    "core/files": ["platform"],
    "core/panel": ["core/pattern", "core/graphics"],
    "core/audio": ["core/pattern"],
    "core/sequencer": ["core/pattern", "core/panel", "core/audio", "core/assets", "platform"],
    "core/cards": [*INSTRUMENT, "core/files"],
    "core/midi": INSTRUMENT,
    "core/input": [*INSTRUMENT, "core/cards", "core/midi"],
    "platform": [],
    "posix": ["platform"],
    # The Windows layer may also use all of the core and of platform.
    "win32": [],  # messages.h
    "win32/audio": [],
    "win32/graphics": [],
    "win32/midi": ["win32"],
    "win32/view": ["win32/graphics", "win32/midi"],
    "win32/windows": SHELL,
    "win32/platform": ["win32", "win32/view", "win32/windows"],
    "win32/app": [*SHELL, "win32/view", "win32/windows", "win32/platform"],
}


def folder_of(path):
    return str(path.parent)


def resolve(path, spelling):
    """The included file below src/; None for a header that the build generates."""
    for root in (path.parent, "core", "platform", ""):
        if (SOURCE / root / spelling).is_file():
            return pathlib.Path(root) / spelling
    return None


def violations(files):
    depends = {}  # module: modules that it includes
    for path in files:
        folder, module = folder_of(path), str(path.with_suffix(""))
        for spelling in INCLUDE.findall((SOURCE / path).read_text(encoding="utf-8")):
            target = resolve(path, spelling)
            if target is None:
                continue
            other = folder_of(target)
            open_to_windows = folder.startswith("win32") and not other.startswith("win32")
            if other != folder and other not in ALLOWED[folder] and not open_to_windows:
                yield f"src/{path}: {folder} may not include {other} ({spelling})"
            if str(target.with_suffix("")) != module:
                depends.setdefault(module, set()).add(str(target.with_suffix("")))
    yield from cycles(depends)


def cycles(depends):
    done, path = set(), []

    def visit(module):
        if module in path:
            yield "cycle: " + " -> ".join([*path[path.index(module) :], module])
        elif module not in done:
            path.append(module)
            for other in sorted(depends.get(module, ())):
                yield from visit(other)
            path.pop()
            done.add(module)

    for module in sorted(depends):
        yield from visit(module)


def main():
    files = [path.relative_to(SOURCE) for path in sorted(SOURCE.rglob("*")) if path.suffix in (".h", ".cpp")]
    unknown = {folder_of(path) for path in files} - ALLOWED.keys()
    found = [f"src/{folder}: not in the table of layers" for folder in sorted(unknown)]
    found = found or list(violations(files))
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
