#!/usr/bin/env python3
"""Installs what is built into a fresh folder, component by component, and tries it there.

usage: check_installation.py CMAKE BUILD SOURCE LIBRARY-FOLDER COMPONENT...

Each component's files are those of installed-files.txt; the command line renders with nothing but
its own component there; every link and picture of the installed help leads to an installed file.
"""
import fnmatch
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path


def patterns_of(component, library_folder):
    found, section = [], None
    for line in Path(__file__).with_name("installed-files.txt").read_text().splitlines():
        if line.startswith("["):
            section = line.strip("[]")
        elif line and not line.startswith("#") and section == component:
            found.append(line.replace("{lib}", library_folder))
    return found


def files_below(prefix):
    return {str(path.relative_to(prefix)) for path in prefix.rglob("*") if not path.is_dir()}


def list_complaints(component, files, patterns):
    found = [f"{component} installs {file}, which is not in the list" for file in sorted(files)
             if not any(fnmatch.fnmatchcase(file, pattern) for pattern in patterns)]
    return found + [f"{component} does not install {pattern}" for pattern in patterns
                    if not fnmatch.filter(files, pattern)]


def built_complaints(prefix, source):
    """Of what the patterns leave open: nothing that the sources have is missing."""
    found, guide = [], source / "docs/guide"
    for kind, wanted in [("icons", [path.name for path in source.glob("resources/icons/*.svg")]),
                         ("translations", [path.stem + ".qm" for path in
                                           source.glob("resources/translations/*.ts")]),
                         ("help/pictures", [path.name for path in
                                            guide.glob("pictures/*.webp")]),
                         ("help", [str(path.relative_to(guide).with_suffix(".html"))
                                   for path in guide.rglob("*.md")])]:
        folder = prefix / "share/skarnel" / kind
        there = {str(path.relative_to(folder)) for path in folder.rglob("*")}
        found += [f"{kind} lacks {name}" for name in sorted(set(wanted) - there)]
        if not wanted:
            found.append(f"the sources have no {kind}")
    return found


def help_complaints(folder):
    found = []
    for page in sorted(folder.rglob("*.html")):
        for target in re.findall(r'(?:href|src)="([^"#?]+)', page.read_text(encoding="utf-8")):
            if not re.match(r"\w+:", target) and not (page.parent / target).is_file():
                found.append(f"{page.name} leads to {target}, which is not installed")
    return found


def run(prefix, *arguments, language="en"):
    # No other place than the prefix may help out.
    environment = {"PATH": "/usr/bin:/bin", "HOME": str(prefix), "LC_ALL": "C.UTF-8",
                   "LANGUAGE": language}
    environment |= {name: text for name, text in os.environ.items() if name.endswith("SAN_OPTIONS")}
    return subprocess.run([prefix / "bin" / arguments[0], *arguments[1:]], env=environment,
                          cwd=prefix, capture_output=True, text=True, check=True, timeout=60).stdout


def command_line_complaints(prefix, source):
    version = json.loads(run(prefix, "skarnel-render", "--version", "--json"))
    photo = prefix / "share/skarnel/sample-photo.jpg"
    out = run(prefix, "skarnel-render", photo, "--preview", "64x64", "-o", "small.png", "--json")
    report = json.loads(out.splitlines()[0])
    found = [] if version["walls"]["helper program"] is True else ["the decoder is not found"]
    if report["error"] is not None or not (prefix / "small.png").read_bytes().startswith(b"\x89PNG"):
        found.append(f"the command line does not render: {out}")
    (prefix / "small.png").unlink()
    languages = [path.stem for path in source.glob("resources/messages/*.po")]
    helps = [run(prefix, "skarnel-render", "--help", language=each) for each in ["en", *languages]]
    if len(languages) < 2 or len(set(helps)) != len(helps):
        found.append(f"the command line does not speak each of {languages}")
    return found


def main():
    cmake, build, source, library_folder, *components = sys.argv[1:]
    found = []
    with tempfile.TemporaryDirectory() as name:
        prefix, before = Path(name), set()
        for component in components:
            subprocess.run([cmake, "--install", build, "--prefix", name, "--component", component],
                           check=True, stdout=subprocess.DEVNULL)
            files = files_below(prefix)
            patterns = patterns_of(component, library_folder)
            found += list_complaints(component, files - before, patterns)
            before = files
            if component == "cli":
                found += command_line_complaints(prefix, Path(source))
            if component == "window":
                found += built_complaints(prefix, Path(source))
                found += help_complaints(prefix / "share/skarnel/help")
                if not run(prefix, "skarnel", "--version"):
                    found.append("the application does not start")
    for complaint in found:
        print(complaint, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
