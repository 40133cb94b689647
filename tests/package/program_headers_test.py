"""Reads the headers of the Windows programs: what the system's guards need, and what would differ from build to build.

usage: program_headers_test.py BUILD_FOLDER [unittest arguments]
"""
import pathlib
import struct
import sys
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
SYSTEM_LIBRARIES = {"advapi32.dll", "comctl32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                    "shell32.dll", "user32.dll", "winmm.dll"}
HIGH_ENTROPY_VA, DYNAMIC_BASE, NX_COMPAT = 0x20, 0x40, 0x100
EXPORTS, IMPORTS, RESOURCES, RELOCATIONS, DEBUG = 0, 1, 2, 5, 6
VERSION_RESOURCE, MANIFEST_RESOURCE = 16, 24


class Headers:
    def __init__(self, file):
        self.bytes = file.read_bytes()
        pe, = struct.unpack_from("<I", self.bytes, 0x3C)
        assert self.bytes[pe:pe + 4] == b"PE\0\0"
        _, sections, self.date, _, _, optional, _ = struct.unpack_from("<HHIIIHH", self.bytes, pe + 4)
        header = pe + 24
        self.is_64_bit = struct.unpack_from("<H", self.bytes, header)[0] == 0x20B
        self.image_base, = struct.unpack_from("<Q", self.bytes, header + 24)
        self.guards, = struct.unpack_from("<H", self.bytes, header + 70)
        self.directories = [struct.unpack_from("<II", self.bytes, header + 112 + 8 * i) for i in range(16)]
        self.sections = [struct.unpack_from("<8sIIII12xI", self.bytes, header + optional + 40 * i) for i in range(sections)]

    def place(self, address):
        """Where in the file an address of the loaded program lies."""
        return next(address - start + raw for _, size, start, _, raw, _ in self.sections if start <= address < start + size)

    def imports(self):
        at = self.place(self.directories[IMPORTS][0])
        while name := struct.unpack_from("<I", self.bytes, at + 12)[0]:
            begin = self.place(name)
            yield self.bytes[begin:self.bytes.index(b"\0", begin)].decode().lower()
            at += 20

    def resources(self):
        """The kinds of resources, and the date of their folder."""
        at = self.place(self.directories[RESOURCES][0])
        date, named, numbered = struct.unpack_from("<4xI4xHH", self.bytes, at)
        return {struct.unpack_from("<I", self.bytes, at + 16 + 8 * i)[0] for i in range(named + numbered)}, date


class Programs(unittest.TestCase):
    def headers(self):
        for name in ("Percussomatic.exe", "percussomatic-card.exe"):
            with self.subTest(name):
                yield Headers(BUILD / name)

    def test_the_system_may_guard_them(self):
        for program in self.headers():
            self.assertTrue(program.is_64_bit)
            for guard in (HIGH_ENTROPY_VA, DYNAMIC_BASE, NX_COMPAT):
                self.assertTrue(program.guards & guard, hex(guard))
            self.assertGreater(program.image_base, 2**32, "high entropy needs a base above 4 GB")
            self.assertGreater(program.directories[RELOCATIONS][1], 0, "without relocations it stays where it is")
            for name, *_, flags in program.sections:
                self.assertFalse(flags & 0x20000000 and flags & 0x80000000, f"{name} can be written and executed")
            self.assertIn(b"stack smashing detected", program.bytes)

    def test_nothing_but_the_system_is_needed(self):
        for program in self.headers():
            self.assertLessEqual(set(program.imports()), SYSTEM_LIBRARIES)

    def test_no_date_and_no_folder_of_the_build_are_inside(self):
        for program in self.headers():
            self.assertEqual(program.date, 0)
            self.assertEqual(program.directories[DEBUG][1], 0)
            self.assertEqual(program.directories[EXPORTS][1], 0)
            for folder in (BUILD, pathlib.Path(__file__).resolve().parents[2]):
                for path in (str(folder), str(folder).replace("/", "\\")):
                    self.assertNotIn(path.encode(), program.bytes)
                    self.assertNotIn(path.encode("utf-16-le"), program.bytes)

    def test_the_instrument_has_version_and_manifest(self):
        program = Headers(BUILD / "Percussomatic.exe")
        kinds, date = program.resources()
        self.assertLessEqual({VERSION_RESOURCE, MANIFEST_RESOURCE}, kinds)
        self.assertEqual(date, 0)
        cmake = (pathlib.Path(__file__).resolve().parents[2] / "CMakeLists.txt").read_text()
        version = cmake.split("project(Percussomatic VERSION ")[1].split()[0]
        for key, value in (("FileVersion", version), ("ProductVersion", version)):
            self.assertIn((key + "\0").encode("utf-16-le"), program.bytes)
            begin = program.bytes.index((key + "\0").encode("utf-16-le"))
            self.assertIn(value.encode("utf-16-le"), program.bytes[begin:begin + 80])


if __name__ == "__main__":
    unittest.main()
