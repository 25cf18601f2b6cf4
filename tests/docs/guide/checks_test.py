#!/usr/bin/env python3
"""Breaks copies of the guide and expects its checks to say what is broken, and where.

usage: checks_test.py GUIDE-FOLDER CATALOGUE-FOLDER HELP-FOLDER
"""
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).parent
GUIDE, CATALOGUES, HELP = map(Path, sys.argv[1:4])


class Broken(unittest.TestCase):
    """A copy to break."""
    original = GUIDE

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.copy = Path(folder.name) / "copy"
        shutil.copytree(self.original, self.copy)

    def change(self, page, before, after):
        path = self.copy / page
        text = path.read_text(encoding="utf-8")
        self.assertIn(before, text)
        path.write_text(text.replace(before, after, 1), encoding="utf-8")

    def expect_said(self, script, folder_and_more, said):
        run = subprocess.run([sys.executable, HERE / script, *folder_and_more],
                             capture_output=True, encoding="utf-8")
        self.assertEqual(run.returncode, 1)
        self.assertIn(said, run.stderr)


class Languages(Broken):
    def expect(self, language, said):
        self.expect_said("check_languages.py", [self.copy, CATALOGUES, language], said)

    def test_a_page_that_is_missing(self):
        (self.copy / "ja/text.md").unlink()
        self.expect("ja", "ja/text.md is not there")

    def test_a_page_without_an_english_one(self):
        (self.copy / "ja/more.md").write_text("# More\n")
        self.expect("ja", "ja/more.md has no English page")

    def test_a_paragraph_in_english_alone(self):
        self.change("text.md", "# Pictures of text\n", "# Pictures of text\n\n## More\n")
        for language in ("de", "es", "fr", "ja", "zh_CN"):
            self.expect(language, f"{language}/text.md:3: paragraph, where text.md:3 has heading2")

    def test_a_list_with_an_item_more(self):
        path = self.copy / "text.md"
        path.write_text(path.read_text(encoding="utf-8") + "- One more\n", encoding="utf-8")
        self.expect("de", "1 blocks fewer than text.md")

    def test_other_code(self):
        self.change("fr/scripting.md", "--watch incoming", "--watch arrivées")
        self.expect("fr", "other code than in scripting.md")

    def test_another_option_in_the_text(self):
        self.change("es/scripting.md", "`--jobs`", "`--job`")
        self.expect("es", "code is missing that scripting.md")

    def test_a_picture_left_out(self):
        self.change("de/text.md", "![Eine Zeile Text und ihr Spiegelbild](../pictures/text.webp)",
                    "Eine Zeile Text und ihr Spiegelbild")
        self.expect("de", "a picture is missing that text.md:8 has: ../pictures/text.webp")

    def test_a_link_to_another_heading(self):
        self.change("de/index.md", "settings.md#stile", "settings.md#hintergrund")
        self.expect("de", "a link is missing that index.md")

    def test_another_number(self):
        self.change("saving.md", "65,504", "65,505")
        self.expect("de", "505 is missing, which saving.md")

    def test_a_command_that_the_window_calls_otherwise(self):
        self.change("de/index.md", "**Datei > Öffnen**", "**Datei > Aufmachen**")
        self.expect("de", "“File > Open” is not called “Datei > Öffnen”")

    def test_a_setting_that_the_window_calls_otherwise(self):
        self.change("fr/settings.md", "### Hauteur", "### Taille")
        self.expect("fr", "“Taille”, but the window says “Hauteur”")

    def test_a_look_that_the_window_calls_otherwise(self):
        self.change("zh_CN/settings.md", "<br>静水", "<br>平静的水")
        self.expect("zh_CN", "“平静的水”, but the window says “静水”")

    def test_another_key(self):
        self.change("es/index.md", "| Ctrl+Mayús+R |", "| Ctrl+Mayús+E |")
        self.expect("es", "the key Ctrl+Mayús+R of index.md")


class Pages(Broken):
    original = HELP

    def expect(self, said):
        self.expect_said("check_pages.py", [self.copy, "de", "es", "fr", "ja", "zh_CN"], said)

    def test_a_link_to_nowhere(self):
        (self.copy / "ja/text.html").unlink()
        self.expect("ja/index.html leads to text.html, which is not there")

    def test_an_anchor_that_no_heading_has(self):
        self.change("de/settings.html", 'id="stile"', 'id="aussehen"')
        self.expect("de/index.html leads to settings.html#stile, where no heading is called so")

    def test_a_language_that_a_page_does_not_say(self):
        self.change("zh_CN/index.html", 'lang="zh-CN"', 'lang="zh"')
        self.expect("zh_CN/index.html says")

    def test_a_language_that_a_page_does_not_lead_to(self):
        self.change("fr/saving.html", 'hreflang="es"', 'hreflang="it"')
        self.expect("fr/saving.html does not lead to its twin in es")

    def test_a_picture_that_no_page_shows(self):
        (self.copy / "pictures/more.webp").write_bytes(b"")
        self.expect("no page shows pictures/more.webp")

    def test_a_language_without_pages(self):
        shutil.rmtree(self.copy / "es")
        self.expect("no page in es")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
