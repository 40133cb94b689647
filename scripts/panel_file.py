# SPDX-License-Identifier: MIT
"""The JSON file that describes the panel: where it is and how it is made.

The environment variable PERCUSSOMATIC_PANEL_JSON overrides its path.
"""
import json
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
PATH = pathlib.Path(os.environ.get("PERCUSSOMATIC_PANEL_JSON") or ROOT / "build/shared/panel.json")
CONFIGURE = "cmake --preset native"


def build_if_missing():
    if not PATH.exists():
        subprocess.run(CONFIGURE.split(), cwd=ROOT, check=True)


def load():
    try:
        return json.loads(PATH.read_text(encoding="utf-8"))
    except FileNotFoundError:
        raise SystemExit(f"{PATH} is missing. Make it with: {CONFIGURE}") from None
