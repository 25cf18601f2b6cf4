#!/usr/bin/env python3
"""Follows every link and picture of the help as it was built.

usage: check_pages.py HELP-FOLDER LANGUAGE...

LANGUAGE is a folder of the help; English lies in the help's folder itself. Says for each fault
where it is, and fails if there is one: a link or an anchor that leads nowhere, a page that does not
say its language, a page that does not lead to its own in each other language, a picture that no
page shows.
"""
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote


class Page(HTMLParser):
    """What a page leads to, shows, and can be led to at."""

    def __init__(self, path):
        super().__init__()
        self.targets, self.anchors, self.html, self.translations = [], set(), {}, {}
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if tag == "html":
            self.html = attributes
        if "id" in attributes:
            self.anchors.add(attributes["id"])
        self.targets += [attributes[each] for each in ("href", "src") if each in attributes]
        if "hreflang" in attributes:
            self.translations[attributes["hreflang"]] = attributes["href"]


def complaints_of(folder, languages):
    pages = {path.resolve(): Page(path) for path in sorted(folder.rglob("*.html"))}
    complaints, shown = [], set()
    for path, page in pages.items():
        where = path.relative_to(folder)
        language = where.parts[0] if len(where.parts) > 1 else "en"
        wanted = {"lang": language.replace("_", "-"), "dir": "ltr"}
        if page.html != wanted:
            complaints.append(f"{where} says {page.html} of itself, not {wanted}")
        for target in page.targets:
            address, _, anchor = unquote(target).partition("#")
            file = (path.parent / address).resolve() if address else path
            shown.add(file)
            if not file.is_file():
                complaints.append(f"{where} leads to {target}, which is not there")
            elif anchor and anchor not in pages[file].anchors:
                complaints.append(f"{where} leads to {target}, where no heading is called so")
        for other in {"en", *languages} - {language}:
            address = page.translations.get(other.replace("_", "-"), "")
            twin = folder / ("" if other == "en" else other) / path.name
            if (path.parent / address).resolve() != twin:
                complaints.append(f"{where} does not lead to its twin in {other}")
    unseen = {each.resolve() for each in folder.glob("pictures/*")} - shown
    return complaints + [f"no page shows {each.relative_to(folder)}" for each in sorted(unseen)]


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    folder, languages = Path(sys.argv[1]).resolve(), sys.argv[2:]
    missing = [f"no page in {each}" for each in ("", *languages)
               if not any((folder / each).glob("*.html"))]
    sys.exit("\n".join(missing + complaints_of(folder, languages)) or 0)


if __name__ == "__main__":
    main()
