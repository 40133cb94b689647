"""Reads the headers of the Windows programs: what the system's guards need, and what would differ from build to build.

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
SYSTEM_LIBRARIES = {"advapi32.dll", "comctl32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                    "shell32.dll", "user32.dll", "winmm.dll"}
ICON_RESOURCE, VERSION_RESOURCE, MANIFEST_RESOURCE = 14, 16, 24


def headers(name):
    """As objdump prints them."""
    return subprocess.run(["x86_64-w64-mingw32-objdump", "-p", "-h", BUILD / name], env=dict(os.environ, TZ="UTC", LC_ALL="C"),
                          check=True, capture_output=True, text=True).stdout


class Programs(unittest.TestCase):
    def programs(self):
        for name in (INSTRUMENT, "percussomatic-card.exe"):
            with self.subTest(name):
                yield headers(name), (BUILD / name).read_bytes()

    def directory_size(self, head, name):
        return int(re.search(rf"(\w+) {name} Directory", head)[1], 16)

    def test_the_system_may_guard_them(self):
        for head, program in self.programs():
            self.assertIn("file format pei-x86-64", head)
            for guard in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
                self.assertIn(f"\t{guard}\n", head)
            self.assertGreater(int(re.search(r"ImageBase\s+(\w+)", head)[1], 16), 2**32, "high entropy needs a base above 4 GB")
            self.assertGreater(self.directory_size(head, "Base Relocation"), 0, "without relocations it stays where it is")
            for flags in re.findall(r"^ +(?:CONTENTS|ALLOC),.*CODE.*", head, re.MULTILINE):
                self.assertIn("READONLY", flags, "it can be written and executed")
            self.assertIn(b"stack smashing detected", program)

    def test_nothing_but_the_system_is_needed(self):
        for head, _ in self.programs():
            self.assertLessEqual({name.lower() for name in re.findall(r"DLL Name: (\S+)", head)}, SYSTEM_LIBRARIES)

    def test_the_system_maps_them_instead_of_reading_them(self):
        for head, _ in self.programs():
            offsets = re.findall(r"^ +\d+ \.\w+ +\w+ +\w+ +\w+ +(\w+)", head, re.MULTILINE)
            self.assertGreater(len(offsets), 5)
            self.assertEqual([offset for offset in offsets if int(offset, 16) % 4096], [])

    def test_no_date_and_no_folder_of_the_build_are_inside(self):
        for head, program in self.programs():
            self.assertRegex(head, r"Time/Date\s+Thu Jan  1 00:00:00 1970")
            for directory in ("Debug", "Export"):
                self.assertEqual(self.directory_size(head, directory), 0, directory)
            for folder in (str(BUILD), str(ROOT)):
                for path in (folder, folder.replace("/", "\\")):
                    self.assertNotIn(path.encode(), program)
                    self.assertNotIn(path.encode("utf-16-le"), program)

    def test_the_instrument_has_icon_version_and_manifest(self):
        head, program = headers(INSTRUMENT), (BUILD / INSTRUMENT).read_bytes()
        self.assertIn("Type Table: Char: 0, Time: 00000000", head)
        kinds = re.findall(r"^\w+   Entry: ID: 0x(\w+)", head, re.MULTILINE)
        self.assertLessEqual({ICON_RESOURCE, VERSION_RESOURCE, MANIFEST_RESOURCE}, {int(kind, 16) for kind in kinds})
        self.assertIn(b">true</dpiAware>", program)
        version = (ROOT / "CMakeLists.txt").read_text().split("project(Percussomatic VERSION ")[1].split()[0]
        for key in ("FileVersion", "ProductVersion"):
            begin = program.index((key + "\0").encode("utf-16-le"))
            self.assertIn(version.encode("utf-16-le"), program[begin:begin + 80])


if __name__ == "__main__":
    unittest.main()
