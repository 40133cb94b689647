"""Tries the packages as a new player would: unpacks, installs, plays, updates and removes them.

usage: packages_test.py FOLDER [unittest arguments]      inside scripts/wine-env --virtual; pictures are left in FOLDER/seen
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
from player import Player, wait_until, xdotool  # noqa: E402

PACKAGES = pathlib.Path(sys.argv.pop(1)).resolve()
SEEN = PACKAGES / "seen"
SETUP, = PACKAGES.glob("Percussomatic-*-setup.exe")
PORTABLE, = PACKAGES.glob("Percussomatic-*-win64.zip")
TOOL, = PACKAGES.glob("percussomatic-card-*.tar.gz")
VERSION = SETUP.name.split("-")[1]
UNINSTALL_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Percussomatic"
PLAYERS_OWN = "PunchCards/card_1.vopcard"


def run(*words, **more):
    return subprocess.run(list(map(str, words)), stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=120, **more)


def wine(*words, **more):
    return run("wine64", *words, **more)


def launch(*words):
    """For what leaves programs running, which would hold an output pipe open."""
    return subprocess.Popen(["wine64", *map(str, words)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def registered(value):
    found = re.search(r"REG_\w+\s+(.*)", wine("reg", "query", UNINSTALL_KEY, "/v", value).stdout)
    return found and found[1].strip()


def setUpModule():
    """A new user's account: a home and a prefix of its own."""
    global home
    home = pathlib.Path(tempfile.mkdtemp(prefix="percussomatic-"))
    (home / "Documents").mkdir()
    os.environ.update(HOME=str(home), WINEPREFIX=str(home / "wine"), LC_ALL="C.UTF-8")
    launch("wineboot", "-i").wait(timeout=120)
    for font, stand_in in (("Segoe UI", "DejaVu Sans"), ("Consolas", "DejaVu Sans Mono")):
        wine("reg", "add", r"HKCU\Software\Wine\Fonts\Replacements", "/v", font, "/d", stand_in, "/f")
    SEEN.mkdir(exist_ok=True)


def tearDownModule():
    run("wineserver", "-k")
    run("wineserver", "-w")
    shutil.rmtree(home)


def play_and_save(test, program, folder, picture):
    """Starts the program, sets a step, saves the first card and ends the program."""
    player = Player(program, folder)
    test.addCleanup(player.close)
    player.click("sw_028")
    player.set_steps(0, (0, 5))
    player.save(player.screenshot(), SEEN / picture)
    player.choose("CARDS", "SAVE")
    player.press("Escape")
    test.assertEqual(player.close(), 0)


class Archives(unittest.TestCase):
    def test_checksums_are_those_of_the_files(self):
        sums = dict(reversed(line.split()) for line in (PACKAGES / "SHA256SUMS").read_text().splitlines())
        self.assertEqual(set(sums), {SETUP.name, PORTABLE.name, TOOL.name})
        for name, expected in sums.items():
            self.assertEqual(hashlib.sha256((PACKAGES / name).read_bytes()).hexdigest(), expected)

    def test_tool_for_this_machine_reads_the_cards_beside_it(self):
        with tarfile.open(TOOL) as archive:
            archive.extractall(home)
        folder = home / TOOL.name.removesuffix(".tar.gz")
        self.assertEqual(run(folder / "percussomatic-card", "--version").stdout, f"percussomatic-card {VERSION}\n")
        cards = sorted(folder.glob("FactoryCards/*"))
        self.assertEqual(len(cards), 10)
        self.assertEqual(run(folder / "percussomatic-card", "check", *cards).returncode, 0)

    def test_portable_program_plays_in_a_folder_with_blank_and_accent(self):
        place = home / "Tambour mécanique"
        with zipfile.ZipFile(PORTABLE) as archive:
            archive.extractall(place)
        folder = place / PORTABLE.stem
        self.assertEqual({path.name for path in folder.iterdir()},
                         {"FactoryCards", "LICENSE.txt", "LICENSE-libraries.txt", "Manual.html", "Percussomatic.exe",
                          "PunchCards", "percussomatic-card.exe"})
        before = (folder / PLAYERS_OWN).read_bytes()
        play_and_save(self, folder / "Percussomatic.exe", folder, "portable.png")
        self.assertNotEqual((folder / PLAYERS_OWN).read_bytes(), before)
        tool = wine(folder / "percussomatic-card.exe", "check", folder / PLAYERS_OWN)
        self.assertEqual((tool.returncode, tool.stderr), (0, ""))

    def test_manual_needs_nothing_but_itself(self):
        with zipfile.ZipFile(PORTABLE) as archive:
            manual = archive.read(f"{PORTABLE.stem}/Manual.html").decode()
        targets = re.findall(r'(?:src|href)="(.{0,40})', manual)
        self.assertGreater(len(targets), 30)
        self.assertEqual([target for target in targets if not target.startswith(("data:image/", "#"))], [])
        self.assertIn(f"Percussomatic {VERSION}", manual)


class Installed(unittest.TestCase):
    def setUp(self):
        user = next(home.glob("wine/drive_c/users/*/AppData/Local")).parents[1]
        self.program = user / "AppData/Local/Programs/Percussomatic"
        self.entry = user / "AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Percussomatic/Percussomatic.lnk"
        self.cards = home / "Documents/Percussomatic"

    def files_of_the_player(self):
        return {path: path.read_bytes() for path in [*self.cards.rglob("*.*"), *self.program.glob("*.ini")] if path.is_file()}

    def start_from_the_menu(self):
        """Makes the panel smaller, which is kept in the working folder, and ends the program."""
        launch("start", "/unix", self.entry).wait(timeout=60)
        window = wait_until(lambda: xdotool("search", "--onlyvisible", "--name", "^Percussomatic$"), "the panel")
        wait_until(lambda: xdotool("getwindowfocus") == window, "the keyboard")
        xdotool("key", "ctrl+minus")
        wait_until((self.cards / "LumivardaLayoutScale.txt").exists, "the layout scale")
        xdotool("key", "Escape")
        wait_until(lambda: not xdotool("search", "--name", "^Percussomatic$"), "the end of the program")

    def update_while_it_plays(self):
        player = Player(self.program / "Percussomatic.exe", self.cards)
        self.addCleanup(player.close)
        (self.program / "Manual.html").unlink()
        self.assertEqual(wine(SETUP, "/S").returncode, 2)
        self.assertFalse((self.program / "Manual.html").exists(), "it has begun to replace files")
        self.assertEqual(player.close(), 0)

    def answer(self, key, picture, after=""):
        """Presses a key in the uninstaller's next window; the window."""
        def asked():
            window = xdotool("getwindowfocus")
            return window if window != after and "Uninstall" in xdotool("getwindowname", window) else None

        window = wait_until(asked, picture)
        time.sleep(0.5)                                         # until it is drawn
        run("import", "-window", "root", SEEN / picture)
        xdotool("key", key)
        return window

    def test_cards_and_settings_outlive_update_and_removal(self):
        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertEqual(registered("DisplayVersion"), VERSION)
        self.assertEqual(len(self.files_of_the_player()), 7)
        self.start_from_the_menu()
        play_and_save(self, self.program / "Percussomatic.exe", self.cards, "installed.png")
        (self.cards / "PunchCards/card_2.vopcard").unlink()     # a free slot stays free
        (self.program / "Percussomatic.ini").write_text("[GENERAL]\nLastMidiDevice=mine\n")
        kept = self.files_of_the_player()
        self.assertEqual(len(kept), 8)

        self.update_while_it_plays()
        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertTrue((self.program / "Manual.html").exists())
        self.assertEqual(self.files_of_the_player(), kept)

        launch(self.program / "uninstall.exe", "/S").wait(timeout=60)
        wait_until(lambda: not registered("DisplayName"), "the end of the removal")
        wait_until(lambda: [path.name for path in self.program.iterdir()] == ["Percussomatic.ini"], "an empty folder")
        self.assertFalse(self.entry.exists())
        self.assertEqual(self.files_of_the_player(), kept)

        self.assertEqual(wine(SETUP, "/S").returncode, 0)
        self.assertEqual(self.files_of_the_player(), kept, "an installation after a removal")
        launch(self.program / "uninstall.exe").wait(timeout=60)
        window = self.answer("Return", "uninstaller.png")
        self.answer("alt+y", "question.png", after=window)
        wait_until(lambda: not self.cards.exists() and not (self.program / "Percussomatic.ini").exists(), "the removal of the cards")


if __name__ == "__main__":
    unittest.main()
