#!/usr/bin/env python3
"""Breaks a catalogue in every way that tools/update-messages --check must find.

usage: check_the_check.py REPOSITORY
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(sys.argv[1])
CATALOGUES = ROOT / "resources" / "messages"
# What is broken, how, and what the check says of it.
MISTAKES = (
    ("a text is missing", 'msgid "It is a folder"', 'msgid "It is a file"', "de.po lacks 'It is a folder'"),
    ("a text is nobody's", 'msgid "It is a folder"', 'msgid "It is a file"', "which no source says"),
    ("a translation is empty", 'msgstr "Es ist ein Ordner"', 'msgstr ""', "is not translated"),
    ("a translation is uncertain", 'msgid "It is a folder"', '#, fuzzy\nmsgid "It is a folder"',
     "is not translated"),
    ("a place is lost", "bei Byte %1 beschädigt", "beschädigt", "has other places"),
    ("an option is lost", "(--force ersetzt sie)", "(-f ersetzt sie)", "has other options"),
    ("a value's name is translated", "der Form #RRGGBB", "der Form #RRGGBBAA", "has other values"),
    ("a line is lost", "dessen Spiegelbild.\\n", "dessen Spiegelbild. ", "has other lines"),
    ("a full stop is lost", "deren Spiegelbilder.", "deren Spiegelbilder", "ends otherwise"),
)


def check(folder):
    done = subprocess.run([ROOT / "tools" / "update-messages", "--check", folder], capture_output=True, text=True,
                          check=False)
    return done.returncode, done.stdout


def main():
    failures = []
    for what, found, put, said in MISTAKES:
        with tempfile.TemporaryDirectory() as copies:
            shutil.copy(CATALOGUES / "de.po", copies)
            path = pathlib.Path(copies) / "de.po"
            text = path.read_text(encoding="utf-8")
            if found not in text:
                failures.append(f"{what}: {found!r} is not in de.po")
                continue
            path.write_text(text.replace(found, put, 1), encoding="utf-8")
            code, output = check(copies)
            if code == 0 or said not in output:
                failures.append(f"{what}: exit {code}, {output!r}")
    with tempfile.TemporaryDirectory() as empty:
        if check(empty)[0] == 0:
            failures.append("a folder without catalogues is accepted")
    print("\n".join(failures) or f"{len(MISTAKES)} kinds of mistake are found")
    sys.exit(1 if failures else 0)


main()
