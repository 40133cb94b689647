# SPDX-License-Identifier: MIT
"""Checks the headers of the Windows programs: security features, dependencies and reproducibility.

usage: program_headers_test.py BUILD_FOLDER [unittest arguments]
"""
import os
import pathlib
import re
import subprocess
import sys
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(__file__).resolve().parents[2]
INSTRUMENT = "Percussomatic.exe"
SYSTEM_LIBRARIES = {"advapi32.dll", "comctl32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll"}
SYSTEM_LIBRARIES |= {"ole32.dll", "shell32.dll", "user32.dll", "winmm.dll"}
ICON_RESOURCE, VERSION_RESOURCE, MANIFEST_RESOURCE = 14, 16, 24


def headers(name):
    """As objdump prints them."""
    command = ["x86_64-w64-mingw32-objdump", "-p", "-h", BUILD / name]
    options = dict(env=dict(os.environ, TZ="UTC", LC_ALL="C"), capture_output=True, text=True)
    return subprocess.run(command, check=True, **options).stdout


class Programs(unittest.TestCase):
    def programs(self):
        for name in (INSTRUMENT, "percussomatic-card.exe"):
            with self.subTest(name):
                yield headers(name), (BUILD / name).read_bytes()

    def test_security_features_are_enabled(self):
        for head, program in self.programs():
            self.assertIn("file format pei-x86-64", head)
            for feature in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
                self.assertIn(f"\t{feature}\n", head)
            base = int(re.search(r"ImageBase\s+(\w+)", head)[1], 16)
            self.assertGreater(base, 2**32, "high entropy needs a base above 4 GB")
            self.assertNotRegex(head, r" 0+ Base Relocation Directory", "cannot be moved")
            for flags in re.findall(r"^ +(?:CONTENTS|ALLOC),.*CODE.*", head, re.MULTILINE):
                self.assertIn("READONLY", flags, "writable and executable")
            self.assertIn(b"stack smashing detected", program)

    def test_only_system_libraries_are_needed(self):
        for head, _ in self.programs():
            names = {name.lower() for name in re.findall(r"DLL Name: (\S+)", head)}
            self.assertLessEqual(names, SYSTEM_LIBRARIES)

    def test_sections_are_page_aligned_so_that_the_file_can_be_mapped(self):
        for head, _ in self.programs():
            offsets = re.findall(r"^ +\d+ \.\w+ +\w+ +\w+ +\w+ +(\w+)", head, re.MULTILINE)
            self.assertGreater(len(offsets), 5)
            self.assertEqual([offset for offset in offsets if int(offset, 16) % 4096], [])

    def test_no_build_date_and_no_build_path_is_embedded(self):
        for head, program in self.programs():
            self.assertRegex(head, r"Time/Date\s+Thu Jan  1 00:00:00 1970")
            for directory in ("Debug", "Export"):
                self.assertRegex(head, rf" 0+ {directory} Directory")
            for path in (str(ROOT), str(ROOT).replace("/", "\\")):  # also that of the build folder
                self.assertNotIn(path.encode(), program)
                self.assertNotIn(path.encode("utf-16-le"), program)

    def test_instrument_has_icon_version_and_manifest(self):
        head, program = headers(INSTRUMENT), (BUILD / INSTRUMENT).read_bytes()
        self.assertIn("Type Table: Char: 0, Time: 00000000", head)
        kinds = re.findall(r"^\w+   Entry: ID: 0x(\w+)", head, re.MULTILINE)
        expected = {ICON_RESOURCE, VERSION_RESOURCE, MANIFEST_RESOURCE}
        self.assertLessEqual(expected, {int(kind, 16) for kind in kinds})
        self.assertIn(b">true</dpiAware>", program)
        version = (ROOT / "CMakeLists.txt").read_text().split("project(Percussomatic VERSION ")[1].split()[0]
        for key in ("FileVersion", "ProductVersion"):
            begin = program.index((key + "\0").encode("utf-16-le"))
            self.assertIn(version.encode("utf-16-le"), program[begin : begin + 80])


if __name__ == "__main__":
    unittest.main()
