#!/usr/bin/env python3
"""Holds the guide of each language against the English one, and its names against the window's.

usage: check_languages.py GUIDE-FOLDER CATALOGUE-FOLDER [LANGUAGE...]

In every language a page has the same headings, paragraphs, lists and tables in the same order, the
same pictures, code, links and numbers, and calls menus, buttons, settings, looks and tools what the
window calls them in that language. Without a LANGUAGE all are held that the window has. Says for each fault where it is, and fails if there is one.
"""
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

from markdown_page import anchor_of, blocks_of

# What the keyboards of a language's countries say, where that is not the English word.
KEYS = {
    "de": {"Ctrl": "Strg", "Shift": "Umschalt", "Return": "Eingabe", "Backspace": "Rücktaste"},
    "es": {"Shift": "Mayús", "Return": "Intro", "Backspace": "Retroceso"},
    "fr": {"Shift": "Maj", "Return": "Entrée", "Backspace": "Retour arrière"},
    "ja": {"Return": "Enter"},
    "zh_CN": {"Return": "回车", "Backspace": "退格"}}
COMBINATION = re.compile(r"(?:(?:Ctrl|Shift|Alt)\+)+(?:[A-Za-z0-9]+|[+-])|\bF[0-9]+\b")


def plain(label):
    """A label as it is read: without its key and its dots."""
    label = re.sub(r"\(&.\)", "", label.split("\t")[0])
    return re.sub(r"[&…]", "", label).strip(" :：")


def labels_of(catalogue):
    """What the window says in the catalogue's language for each of its English texts."""
    labels = {}
    for message in ElementTree.parse(catalogue).iter("message"):
        said = labels.setdefault(plain(message.findtext("source")), set())
        said.add(plain(message.findtext("translation")))
    return labels


class Comparison:
    """A page of one language beside the English one."""

    def __init__(self, guide, language, page, labels):
        self.language, self.page, self.labels = language, page, labels
        self.english = guide / page
        self.translated = guide / language / page
        self.guide = guide
        self.complaints = []

    def complain(self, block, what):
        self.complaints.append(f"{self.language}/{self.page}:{block.line}: {what}")

    def run(self):
        ours, theirs = blocks_of(self.translated), blocks_of(self.english)
        for own, other in zip(ours, theirs):
            if own.kind != other.kind:
                self.complain(own, f"{own.kind}, where {self.page}:{other.line} has {other.kind}")
                return self.complaints  # from here on everything would be compared askew
            self.compare(own, other)
        if len(ours) != len(theirs):
            longer, shorter = (ours, theirs) if len(ours) > len(theirs) else (theirs, ours)
            which = "more" if ours is longer else "fewer"
            block = longer[len(shorter)] if ours is longer else ours[-1]
            self.complain(block, f"{abs(len(ours) - len(theirs))} blocks {which} than {self.page}")
        return self.complaints

    def compare(self, own, other):
        if other.kind.endswith("code_block") and own.text != other.text:
            self.complain(own, f"other code than in {self.page}:{other.line}")
        self.same(own, other, "code", own.codes, other.codes)
        self.same(own, other, "a link", own.links, [self.link(each) for each in other.links])
        self.same(own, other, "a picture", [address for address, _ in own.pictures],
                  ["../" + address for address, _ in other.pictures])
        lost = Counter(re.findall("[0-9]+", other.text)) - Counter(re.findall("[0-9]+", own.text))
        for number in lost:
            self.complain(own, f"{number} is missing, which {self.page}:{other.line} has")
        for own_picture, other_picture in zip(own.pictures, other.pictures):
            self.name(own, own_picture[1], other_picture[1])
        self.bold(own, other)
        if other.kind.endswith(("heading3", "table_cell")) or other.text in self.labels:
            self.name(own, own.text, other.text)
        if "table" in other.kind:
            self.keys(own, other)

    def same(self, own, other, what, ours, theirs):
        for missing in (Counter(theirs) - Counter(ours)).elements():
            self.complain(own, f"{what} is missing that {self.page}:{other.line} has: {missing}")
        for additional in (Counter(ours) - Counter(theirs)).elements():
            self.complain(own, f"{what} that {self.page}:{other.line} has not: {additional}")

    def link(self, address):
        """Where this language's page must lead where the English one leads to an address."""
        page, hash_sign, anchor = address.partition("#")
        if not hash_sign:
            return address
        headings = [[each.text for each in blocks_of(folder / (page or self.page))
                     if "heading" in each.kind]
                    for folder in (self.guide, self.guide / self.language)]
        own = [own for own, other in zip(headings[1], headings[0]) if anchor_of(other) == anchor]
        return f"{page}#{anchor_of(own[0])}" if own else f"{address} (no such heading)"

    def name(self, block, own, other):
        """A name of a setting, a look or a tool, perhaps with a value behind it."""
        value = re.search(r" −?[0-9]+$", other)
        end = value.group() if value else ""
        wanted = self.labels.get(other.removesuffix(end))
        if wanted and own not in {each + end for each in wanted}:
            self.complain(block, f"“{own}”, but the window says " +
                          " or ".join(f"“{each}{end}”" for each in sorted(wanted)))

    def bold(self, own, other):
        """Labels are bold, and so are parts of the window, which are written small in English."""
        left = list(own.names)
        if len(own.names) != len(other.names):
            self.complain(own, f"{len(own.names)} bold names, but {self.page}:{other.line} has "
                               f"{len(other.names)}")
        for name in other.names:
            if name[0].islower():
                continue
            steps = [self.labels.get(step, {step}) for step in name.split(" > ")]
            met = next((each for each in left if self.leads(each, steps)), None)
            if met is None:
                said = " > ".join(" or ".join(sorted(step)) for step in steps)
                self.complain(own, f"“{name}” is not called “{said}”, as the window calls it")
            else:
                left.remove(met)

    @staticmethod
    def leads(name, steps):
        parts = name.split(" > ")
        return len(parts) == len(steps) and all(a in b for a, b in zip(parts, steps))

    def keys(self, own, other):
        words = KEYS[self.language]
        for combination in COMBINATION.findall(other.text):
            wanted = re.sub("[A-Za-z]{2,}", lambda word: words.get(word[0], word[0]), combination)
            if wanted not in own.text:
                self.complain(own, f"the key {wanted} of {self.page}:{other.line} is missing")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    guide, catalogues = map(Path, sys.argv[1:3])
    languages = sys.argv[3:]
    pages = sorted(each.name for each in guide.glob("*.md"))
    complaints = [] if pages else [f"no page in {guide}"]
    for catalogue in sorted(catalogues.glob("skarnel_*.ts")):
        language = catalogue.stem.removeprefix("skarnel_")
        if languages and language not in languages:
            continue
        labels = labels_of(catalogue)
        there = sorted(each.name for each in (guide / language).glob("*.md"))
        complaints += [f"{language}/{page} is not there" for page in pages if page not in there]
        complaints += [f"{language}/{page} has no English page" for page in there
                       if page not in pages]
        for page in set(pages) & set(there):
            complaints += Comparison(guide, language, page, labels).run()
    sys.exit("\n".join(sorted(complaints)) or 0)


if __name__ == "__main__":
    main()
