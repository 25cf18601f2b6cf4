"""heif.py: the HEIF and AVIF files of tests/decoder/data, bombs and honest ones."""
import pathlib

from bomb import Bomb

DATA = pathlib.Path(__file__).resolve().parent.parent / "data"
HONEST = {"grid", "grid-alpha", "grid-of-many", "grid-of-many-cropped", "overlay", "overlay-alpha",
          "two-slices"}


def bombs():
    for path in sorted(DATA.glob("*.heic")) + sorted(DATA.glob("*.avif")):
        yield Bomb(path.name, path.read_bytes, has_to_open=path.stem in HONEST)
