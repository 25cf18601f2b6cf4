#!/usr/bin/env python3
"""Holds the desktop file and the metainfo against what the program reads, and against each other.

usage: check_desktop_files.py PROGRAM PACKAGING-FOLDER METAINFO

The validators of the two formats know their grammar, but not this program.
"""
import configparser
import json
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ID = "example.skarnel.Skarnel"
RECIPE = "application/vnd.skarnel.recipe+json"
TYPE_OF_FORMAT = {
    "TIFF": "image/tiff", "PNG": "image/png", "JPEG": "image/jpeg", "JPEG 2000": "image/jp2",
    "BMP": "image/bmp", "WebP": "image/webp", "Photoshop": "image/vnd.adobe.photoshop",
    "GIF": "image/gif", "JPEG XL": "image/jxl", "HEIF": "image/heif", "AVIF": "image/avif"}
LANGUAGES = ["de", "es", "fr", "ja", "zh_CN"]


def desktop_complaints(path, types):
    parser = configparser.ConfigParser(interpolation=None, strict=True)
    parser.optionxform = str  # keys differ by letter case
    parser.read_string(path.read_text())
    entry = parser["Desktop Entry"]
    wanted = {"Type": "Application", "Name": "Skarnel", "Exec": "skarnel %F",
              "TryExec": "skarnel", "Icon": ID, "Terminal": "false"}
    complaints = [f"{key} is {entry.get(key)}, not {value}" for key, value in wanted.items()
                  if entry.get(key) != value]
    complaints += [f"{key} is not in {language}" for key in ("GenericName", "Comment")
                   for language in LANGUAGES if f"{key}[{language}]" not in entry]
    for key in ("MimeType", "Categories", "Keywords"):
        if not entry[key].endswith(";"):
            complaints.append(f"{key} does not end with a semicolon")
    offered = set(entry["MimeType"].split(";"))
    return complaints + [f"{each} is not offered" for each in sorted(types - offered)]


def metainfo_complaints(path, types):
    root = ElementTree.parse(path).getroot()
    complaints = [f"{tag} is not {text}" for tag, text in [
        ("id", ID), ("launchable", ID + ".desktop"), ("project_license", "LicenseRef-proprietary")]
        if root.findtext(tag) != text]
    offered = {each.text for each in root.iter("mediatype")}
    complaints += [f"{each} is not offered" for each in sorted(types ^ offered)]
    language = "{http://www.w3.org/XML/1998/namespace}lang"
    told = {each.get(language) for each in root.findall("summary")}
    return complaints + [f"the summary is not in {each}" for each in LANGUAGES if each not in told]


def main():
    program, folder, metainfo = sys.argv[1:]
    version = subprocess.run([program, "--version", "--json"], capture_output=True, text=True,
                             check=True)
    # A library that is not installed is no reason to tell the desktop less.
    unknown = set(json.loads(version.stdout)["reads"]) - set(TYPE_OF_FORMAT)
    complaints = [f"the type of {each} is not known here" for each in sorted(unknown)]
    types = set(TYPE_OF_FORMAT.values()) | {RECIPE}
    complaints += desktop_complaints(Path(folder) / (ID + ".desktop"), types)
    complaints += metainfo_complaints(metainfo, types)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
