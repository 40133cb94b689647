# SPDX-License-Identifier: MIT
"""Uses the packages as a new user would: unpacks, installs, plays, updates and removes them.

usage: packages_test.py FOLDER [unittest arguments]      inside scripts/wine-env --virtual

Screenshots are saved in FOLDER/screenshots.
"""
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import time
import unittest
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from panel_table import SWITCHES  # noqa: E402
from player import Player, find_panels, wait_until, xdotool  # noqa: E402

PACKAGES = pathlib.Path(sys.argv.pop(1)).resolve()
SCREENSHOTS = PACKAGES / "screenshots"
(SETUP,) = PACKAGES.glob("Percussomatic-*-setup.exe")
(PORTABLE,) = PACKAGES.glob("Percussomatic-*-win64.zip")
(TOOL,) = PACKAGES.glob("percussomatic-card-*.tar.gz")
VERSION = SETUP.name.split("-")[1]
UNINSTALL_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Percussomatic"
USER_CARD = "PunchCards/card_1.vopcard"


def run(*arguments):
    options = dict(stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=120)
    return subprocess.run(list(map(str, arguments)), **options)


def wine(*arguments):
    return run("wine64", *arguments)


def launch(*arguments):
    """For commands that leave programs running, which would keep an output pipe open."""
    quiet = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)
    subprocess.run(["wine64", *map(str, arguments)], timeout=120, **quiet)


def registered(value):
    found = re.search(r"REG_\w+\s+(.*)", wine("reg", "query", UNINSTALL_KEY, "/v", value).stdout)
    return found and found[1].strip()


def setUpModule():
    """Creates a new user's home folder and Wine prefix."""
    global home
    home = pathlib.Path(tempfile.mkdtemp(prefix="percussomatic-"))
    (home / "Documents").mkdir()
    os.environ.update(HOME=str(home), WINEPREFIX=str(home / "wine"), LC_ALL="C.UTF-8")
    launch("wineboot", "-i")
    for font, replacement in (("Segoe UI", "DejaVu Sans"), ("Consolas", "DejaVu Sans Mono")):
        wine("reg", "add", r"HKCU\Software\Wine\Fonts\Replacements", "/v", font, "/d", replacement, "/f")
    SCREENSHOTS.mkdir(exist_ok=True)


def tearDownModule():
    run("wineserver", "-k")
    run("wineserver", "-w")
    shutil.rmtree(home)


def play_and_save(test, program, folder, picture):
    """Starts the program, sets a step, saves the first card and ends the program."""
    player = Player(program, folder)
    test.addCleanup(player.close)
    player.click(SWITCHES["Cymbal 1"])
    player.set_steps(0, (0, 5))
    player.save(player.screenshot(), SCREENSHOTS / picture)
    player.choose("CARDS", "SAVE")
    player.press("Escape")
    test.assertEqual(player.close(), 0)


class Archives(unittest.TestCase):
    def test_checksums_are_those_of_the_files(self):
        sums = dict(reversed(line.split()) for line in (PACKAGES / "SHA256SUMS").read_text().splitlines())
        self.assertEqual(set(sums), {SETUP.name, PORTABLE.name, TOOL.name})
        for name, expected in sums.items():
            self.assertEqual(hashlib.sha256((PACKAGES / name).read_bytes()).hexdigest(), expected)

    def test_native_tool_reads_the_included_cards(self):
        with tarfile.open(TOOL) as archive:
            archive.extractall(home)
        folder = home / TOOL.name.removesuffix(".tar.gz")
        tool, cards = folder / "percussomatic-card", sorted(folder.glob("FactoryCards/*"))
        self.assertEqual(run(tool, "--version").stdout, f"percussomatic-card {VERSION}\n")
        self.assertEqual(len(cards), 10)
        self.assertEqual(run(tool, "check", *cards).returncode, 0)

    def test_portable_program_works_in_a_folder_with_space_and_accent(self):
        parent = home / "Tambour mécanique"
        with zipfile.ZipFile(PORTABLE) as archive:
            archive.extractall(parent)
        folder = parent / PORTABLE.stem
        expected = {"FactoryCards", "LICENSE.txt", "LICENSE-libraries.txt", "Manual.html", "PunchCards"}
        expected |= {"Percussomatic.exe", "percussomatic-card.exe"}
        self.assertEqual({path.name for path in folder.iterdir()}, expected)
        before = (folder / USER_CARD).read_bytes()
        play_and_save(self, folder / "Percussomatic.exe", folder, "portable.png")
        self.assertNotEqual((folder / USER_CARD).read_bytes(), before)
        tool = wine(folder / "percussomatic-card.exe", "check", folder / USER_CARD)
        self.assertEqual((tool.returncode, tool.stderr), (0, ""))

    def test_manual_is_self_contained(self):
        with zipfile.ZipFile(PORTABLE) as archive:
            manual = archive.read(f"{PORTABLE.stem}/Manual.html").decode()
        targets = re.findall(r'(?:src|href)="(data:image/|#|.{0,40})', manual)
        self.assertGreater(len(targets), 30)
        self.assertEqual(set(targets), {"data:image/", "#"})
        self.assertIn(f"Percussomatic {VERSION}", manual)


class Installed(unittest.TestCase):
    def setUp(self):
        user = next(home.glob("wine/drive_c/users/*/AppData/Local")).parents[1]
        self.program = user / "AppData/Local/Programs/Percussomatic"
        start_menu = user / "AppData/Roaming/Microsoft/Windows/Start Menu/Programs"
        self.shortcut = start_menu / "Percussomatic/Percussomatic.lnk"
        self.cards = home / "Documents/Percussomatic"

    def user_files(self):
        files = [*self.cards.rglob("*.*"), *self.program.glob("*.ini")]
        return {path: path.read_bytes() for path in files if path.is_file()}

    def start_from_the_menu(self):
        """Starts the program, makes the panel smaller, which is saved in the working folder, and ends it."""
        launch("start", "/unix", self.shortcut)
        (window,) = wait_until(find_panels, "the panel")
        wait_until(lambda: xdotool("getwindowfocus") == window, "the keyboard focus")
        xdotool("key", "ctrl+minus")
        wait_until((self.cards / "LumivardaLayoutScale.txt").exists, "the layout scale")
        xdotool("key", "Escape")
        wait_until(lambda: not xdotool("search", "--name", "^Percussomatic$"), "the end of the program")

    def update_while_it_runs(self):
        player = Player(self.program / "Percussomatic.exe", self.cards)
        self.addCleanup(player.close)
        (self.program / "Manual.html").unlink()
        self.assertEqual(wine(SETUP, "/S").returncode, 2)
        self.assertFalse((self.program / "Manual.html").exists(), "files of the running program are replaced")
        self.assertEqual(player.close(), 0)

    def answer(self, key, picture, after=""):
        """Presses a key in the uninstaller's next window; returns that window."""

        def next_window():
            window = xdotool("getwindowfocus")
            title = xdotool("getwindowname", window)
            return window if window != after and "Uninstall" in title else None

        window = wait_until(next_window, picture)
        time.sleep(0.5)  # until it is painted
        run("import", "-window", "root", SCREENSHOTS / picture)
        xdotool("key", key)
        return window

    def test_cards_and_settings_survive_update_and_removal(self):
        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertEqual(registered("DisplayVersion"), VERSION)
        self.assertEqual(len(self.user_files()), 7)
        self.start_from_the_menu()
        play_and_save(self, self.program / "Percussomatic.exe", self.cards, "installed.png")
        (self.cards / "PunchCards/card_2.vopcard").unlink()  # a free slot must stay free
        (self.program / "Percussomatic.ini").write_text("[GENERAL]\nLastMidiDevice=mine\n")
        kept = self.user_files()
        self.assertEqual(len(kept), 8)

        self.update_while_it_runs()
        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertTrue((self.program / "Manual.html").exists())
        self.assertEqual(self.user_files(), kept)

        launch(self.program / "uninstall.exe", "/S")
        wait_until(lambda: not registered("DisplayName"), "the end of the removal")
        names = lambda: [path.name for path in self.program.iterdir()]
        wait_until(lambda: names() == ["Percussomatic.ini"], "the removal of all other files")
        self.assertFalse(self.shortcut.exists())
        self.assertEqual(self.user_files(), kept)

        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertEqual(self.user_files(), kept, "a new installation after the removal")
        launch(self.program / "uninstall.exe")
        window = self.answer("Return", "uninstaller.png")
        self.answer("alt+y", "question.png", after=window)
        user_paths = self.cards, self.program / "Percussomatic.ini"
        wait_until(lambda: not any(path.exists() for path in user_paths), "the removal of the cards")


if __name__ == "__main__":
    unittest.main()
