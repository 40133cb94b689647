# SPDX-License-Identifier: MIT
"""The JSON file that describes the panel: where it is and how it is built.

The environment variable PERCUSSOMATIC_PANEL_JSON overrides its path.
"""
import json
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
PATH = pathlib.Path(os.environ.get("PERCUSSOMATIC_PANEL_JSON") or ROOT / "build/shared/panel.json")
CONFIGURE = "cmake --preset native"
BUILD = "cmake --build --preset native --target panel_table"


def build_if_missing():
    if not PATH.exists():
        for command in (CONFIGURE, BUILD):
            subprocess.run(command.split(), cwd=ROOT, check=True)


def load():
    try:
        return json.loads(PATH.read_text(encoding="utf-8"))
    except FileNotFoundError:
        raise SystemExit(f"{PATH} is missing. Build it with: {CONFIGURE} && {BUILD}") from None
