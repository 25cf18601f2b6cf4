"""A page of the guide as a list of its blocks, read by the program that also makes the help."""
import functools
import re
import subprocess
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field

NAMESPACE = "{http://commonmark.org/xml/1.0}"
LEAVES = {"heading", "paragraph", "code_block", "table_cell", "html_block", "thematic_break"}


@dataclass
class Block:
    """A heading, a paragraph, a table's cell or a block of code."""
    kind: str  # with all that it stands in: "list > item > paragraph"
    line: int
    text: str = ""  # for code the code, else the words without their markup
    codes: list = field(default_factory=list)
    links: list = field(default_factory=list)
    pictures: list = field(default_factory=list)  # (address, the text that stands for it)
    names: list = field(default_factory=list)  # what is bold


def anchor_of(heading):
    """The address of a heading within its page."""
    return re.sub(r"[.,:?!()']", "", heading.lower()).replace(" ", "-")


def words_of(node):
    """The node's words, a line's end counted as a space, pictures left out."""
    tag = node.tag.removeprefix(NAMESPACE)
    if tag == "image":
        return ""
    if tag in ("softbreak", "linebreak"):
        return " "
    own = node.text or "" if tag in ("text", "code", "code_block") else ""
    return own + "".join(words_of(child) for child in node)


def block_of(node, kind):
    line = int(node.get("sourcepos", "0:0").split(":")[0])
    block = Block(kind, line, words_of(node).strip())
    for inner in node.iter():
        tag = inner.tag.removeprefix(NAMESPACE)
        if tag == "code":
            block.codes.append(inner.text)
        elif tag == "link":
            block.links.append(inner.get("destination"))
        elif tag == "image":
            stands_for = "".join(words_of(child) for child in inner)
            block.pictures.append((inner.get("destination"), stands_for))
        elif tag == "strong":
            block.names.append(words_of(inner))
    if node.tag == NAMESPACE + "code_block":
        block.text = node.text
    return block


@functools.cache
def blocks_of(page):
    """All blocks of a page (a path), from its first to its last."""
    made = subprocess.run(["cmark-gfm", "-e", "table", "--sourcepos", "-t", "xml", str(page)],
                          check=True, capture_output=True, encoding="utf-8").stdout
    blocks = []

    def walk(node, above):
        tag = node.tag.removeprefix(NAMESPACE)
        kind = " > ".join((*above, tag + node.get("level", "")))
        if tag in LEAVES:
            blocks.append(block_of(node, kind))
            return
        for child in node:
            walk(child, (*above, tag) if tag != "document" else ())

    # The name of the grammar stands between the declaration and the tree, and nobody needs it.
    walk(ElementTree.fromstring(re.sub(r"<!DOCTYPE[^>]*>", "", made)), ())
    return blocks
