"""Makes small manuals, whole and faulty ones.

usage: manual_test.py
"""
import pathlib
import subprocess
import tempfile
import unittest

MAKER = pathlib.Path(__file__).resolve().parents[2] / "packaging/make_manual.py"


class Manual(unittest.TestCase):
    def make(self, first):
        """What the maker says, and the page if there is one."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "first.md").write_text(first)
            (folder / "second.md").write_text("# Second\n\n## A *fine* part\n")
            (folder / "here.png").write_bytes(b"picture")
            done = subprocess.run(["/usr/bin/python3", MAKER, "1.2.3", folder / "page.html", folder / "first.md", folder / "second.md"],
                                  capture_output=True, text=True)
            page = folder / "page.html"
            self.assertEqual(page.exists(), done.returncode == 0, done.stderr)
            return done.stderr, page.read_text() if page.exists() else ""

    def test_pictures_and_chapters_are_in_the_page(self):
        said, page = self.make("# First\n\n![A](here.png)\n\n[on](second.md), [there](second.md#a-fine-part)\n\n| a |\n|---|\n| b |\n")
        self.assertEqual(said, "")
        for part in ("data:image/png;base64,cGljdHVyZQ==", 'href="#second"', 'href="#second-a-fine-part"', "<td>b</td>"):
            self.assertIn(part, page)

    def test_what_is_missing_is_named(self):
        for text, fault in (("![A](gone.png)", "gone.png"), ("[a](third.md)", "third.md"), ("[a](second.md#gone)", "second-gone")):
            with self.subTest(text):
                said, _ = self.make(f"# First\n\n{text}\n")
                self.assertIn(fault, said)


if __name__ == "__main__":
    unittest.main()
