#!/usr/bin/env python3
"""Holds the table of docs/licences.md against the libraries that are named in what is built.

usage: check_licences.py TABLE NAME=FILE...     NAME: as the table's last column calls it

A name in a program stands for a library that it is linked with or loads by its soname. The table's
rows are then taken away one by one, and each must be missed.
"""
import re
import sys
from pathlib import Path

ALL_BUT = re.compile(r"all(?: but the (\w+),.*)?$")
SONAME = re.compile(rb"(lib[A-Za-z0-9_+-]+)\.so\.\d")
OWN = "libskarnel"


def libraries_in(path):
    names = {name.decode() for name in SONAME.findall(Path(path).read_bytes())}
    return {name for name in names if not name.startswith(OWN)}


def rows_of(table):
    """(the libraries' files, who uses them) of each row that names files."""
    found = []
    for line in table.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        files = re.findall(r"`(lib[^`]+)`", cells[1]) if len(cells) == 5 else []
        if files:
            found.append((files, cells[4]))
    return found


def is_used_by(name, users):
    general = ALL_BUT.match(users)
    return name != general[1] if general else name in users.split(", ")


def complaints(rows, programs):
    found = []
    for name, used in programs.items():
        listed = [files for files, users in rows if is_used_by(name, users)]
        found += [f"{name} uses {file}, which has no row"
                  for file in sorted(used - {file for files in listed for file in files})]
        found += [f"{name} does not use {files[0]}" for files in listed if used.isdisjoint(files)]
    return found


def main():
    rows = rows_of(Path(sys.argv[1]).read_text())
    programs = {}
    for argument in sys.argv[2:]:
        name, path = argument.split("=", 1)
        programs[name] = libraries_in(path)
    found = complaints(rows, programs)
    for i, (files, users) in enumerate(rows):
        if any(is_used_by(name, users) for name in programs):
            if not complaints(rows[:i] + rows[i + 1:], programs):
                found.append(f"nobody would miss the row of {files[0]}")
    for complaint in found:
        print(complaint, file=sys.stderr)
    return 1 if found or not programs else 0


if __name__ == "__main__":
    sys.exit(main())
