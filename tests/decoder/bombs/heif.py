"""heif.py: the HEIF and AVIF files of tests/decoder/data, bombs and honest ones, and one too large."""
import pathlib
import struct

from bits import box
from bomb import Bomb

DATA = pathlib.Path(__file__).resolve().parent.parent / "data"
HONEST = {"grid", "grid-alpha", "grid-of-many", "grid-of-many-cropped", "overlay", "overlay-alpha",
          "two-slices"}


def full_box(kind, content):
    return box(kind, bytes(4) + content)


def lists_of_properties():
    """10 MB of lists of what the picture has, each without an end, and 900 sizes."""
    entry = struct.pack(">HB", 1, 255) + bytes(255)
    a_list = full_box(b"ipma", struct.pack(">I", 0xFFFFFFFF) + (entry * 1016)[:256 * 1024 - 16])
    size = full_box(b"ispe", struct.pack(">II", 30, 20))
    properties = box(b"iprp", box(b"ipco", size * 900) + a_list * 40)
    handler = full_box(b"hdlr", bytes(4) + b"pict" + bytes(13))
    primary = full_box(b"pitm", struct.pack(">H", 1))
    return (box(b"ftyp", b"heic" + bytes(4) + b"mif1heic")
            + full_box(b"meta", handler + primary + properties))


def bombs():
    yield Bomb("heif-10MB-of-lists-of-properties.heic", lists_of_properties)
    for path in sorted(DATA.glob("*.heic")) + sorted(DATA.glob("*.avif")):
        yield Bomb(path.name, path.read_bytes, has_to_open=path.stem in HONEST)
