"""tiff.py: TIFF files whose strips and tiles are one, or larger than the picture."""
import dataclasses
import lzma
import struct
import typing
import zlib

from bits import packed_zeros
from bomb import Bomb

SHORT, LONG = 3, 4  # types of entries
FORMS = {SHORT: "H", LONG: "I"}
NONE, DEFLATE, LZMA, JBIG = 1, 8, 34925, 34661
BLACK_IS_ZERO, COLOURS, INKS, LAB = 1, 2, 5, 8
ALPHA, FLOATS, APART = 2, 3, 2
DATA_PLACE = 8  # behind the head
SIDE = 7900  # 62 million pixels


@dataclasses.dataclass(frozen=True)
class Layout:
    """Sizes in pixels; every strip or tile is the same bytes. `tile` and `strips` where the picture
    has tiles of that size, or another number of parts than its size asks for."""
    width: int
    height: int
    packing: int = NONE
    samples: int = 1
    bits: int = 8
    rows: int = 1  # of a strip
    photometric: int = BLACK_IS_ZERO
    tile: typing.Optional[tuple] = None
    parts: typing.Optional[int] = None
    planes: int = 1
    predictor: int = 1
    sample_format: int = 1
    extra: tuple = ()
    bits_once: bool = False  # stated for one sample where there are too many to state it for each


def file(layout, data):
    count = layout.parts or -(-layout.height // layout.rows)
    bits = [layout.bits] * (1 if layout.bits_once else layout.samples)
    entries = {256: (LONG, [layout.width]), 257: (LONG, [layout.height]), 258: (SHORT, bits),
               259: (SHORT, [layout.packing]), 262: (SHORT, [layout.photometric]),
               277: (SHORT, [layout.samples]), 284: (SHORT, [layout.planes]),
               317: (SHORT, [layout.predictor]), 339: (SHORT, [layout.sample_format])}
    if layout.tile:
        width, height = layout.tile
        entries |= {322: (LONG, [width]), 323: (LONG, [height]),
                    324: (LONG, [DATA_PLACE] * count), 325: (LONG, [len(data)] * count)}
    else:
        entries |= {273: (LONG, [DATA_PLACE] * count), 278: (LONG, [layout.rows]),
                    279: (LONG, [len(data)] * count)}
    if layout.extra:
        entries[338] = (SHORT, layout.extra)
    return with_directory(data + bytes(len(data) % 2), entries)


def with_directory(data, entries):
    """The head, the data, the directory, and what does not fit into its entries."""
    place = DATA_PLACE + len(data)
    beyond_place = place + 2 + 12 * len(entries) + 4
    directory, beyond = struct.pack("<H", len(entries)), b""
    for tag, (kind, values) in sorted(entries.items()):
        content = struct.pack(f"<{len(values)}{FORMS[kind]}", *values)
        if len(content) > 4:
            beyond += content
            content = struct.pack("<I", beyond_place + len(beyond) - len(content))
            beyond += bytes(len(beyond) % 2)
        directory += struct.pack("<HHI", tag, kind, len(values)) + content.ljust(4, b"\0")
    return b"II*\0" + struct.pack("<I", place) + data + directory + bytes(4) + beyond


def lzma_zeros(count):
    filters = [{"id": lzma.FILTER_LZMA2, "preset": 0}]
    return lzma.compress(bytes(count), format=lzma.FORMAT_XZ, check=lzma.CHECK_NONE, filters=filters)


def jbig(width, height, options=0):
    """An empty picture of that size, with the lowest bit first."""
    image = (bytes([0, 0, 1, 0]) + struct.pack(">III", width, height, height)
             + bytes([0, 0, 0, options]) + b"\xff\x02")
    return bytes(int(f"{byte:08b}"[::-1], 2) for byte in image)


def grey(width, height, rows=1, **others):
    return Layout(width, height, DEFLATE, rows=rows, **others)


def strips():
    yield Bomb("tiff-7900-strips-that-are-one.tif",
               lambda: file(grey(SIDE, SIDE), zlib.compress(bytes(SIDE), 9)))
    yield Bomb("tiff-7900.tif", lambda: file(grey(SIDE, SIDE, SIDE), packed_zeros(SIDE * SIDE)))
    yield Bomb("tiff-60MB-for-15-pixels.tif", lambda: file(grey(5, 3, 3), packed_zeros(60 << 20)))
    yield Bomb("tiff-60MB-for-each-row.tif", lambda: file(grey(5, 4000), packed_zeros(60 << 20)),
               is_dear=True)
    many = Layout(1000, 1000, DEFLATE, samples=200, rows=1000, photometric=COLOURS, extra=(0,) * 197)
    data = SIDE * SIDE
    yield Bomb("tiff-200-samples.tif", lambda: file(many, packed_zeros(data)))
    yield Bomb("tiff-200-planes.tif",
               lambda: file(dataclasses.replace(many, planes=APART, parts=200), packed_zeros(data)))


def tiles():
    def tiled(width, height, tile, parts=1):
        return grey(width, height, tile=(tile, tile), parts=parts)
    yield Bomb("tiff-961-tiles-that-are-one.tif",
               lambda: file(tiled(SIDE, SIDE, 256, 31 * 31), zlib.compress(bytes(256 * 256), 9)))
    yield Bomb("tiff-8836-tiles-of-16.tif",
               lambda: file(tiled(1500, 1500, 16, 94 * 94), zlib.compress(bytes(16 * 16), 9)))
    yield Bomb("tiff-tile-of-135-million.tif", lambda: file(tiled(3000, 3000, 11616), packed_zeros(11616 ** 2)))
    yield Bomb("tiff-tile-of-135-million-not-there.tif", lambda: file(tiled(SIDE, SIDE, 11616), packed_zeros(9)))
    yield Bomb("tiff-tile-of-67-million.tif", lambda: file(tiled(5, 3, 8192), packed_zeros(8192 * 8192)))
    yield Bomb("tiff-tile-of-68-billion.tif",
               lambda: file(tiled(5, 3, 1 << 18), packed_zeros(8192 * 8192)))


def samples():
    """65,535 samples a pixel, so that a row of few pixels has megabytes."""
    def many(width, height, rows=1, bits=8, packing=DEFLATE, **others):
        return Layout(width, height, packing, 65535, bits, rows, bits_once=True, **others)
    row = 60 * 65535
    rows = {
        "row-of-4GB": (many(16000, 1, bits=32, packing=NONE), lambda: bytes(100)),
        "row-of-4GB-packed": (many(16000, 1, bits=32), lambda: packed_zeros(1000)),
        "1000-rows": (many(60, 1000), lambda: packed_zeros(row)),
        "5000-rows": (many(60, 5000), lambda: packed_zeros(row)),
        "8000-rows-of-floats": (many(15, 8000, bits=32), lambda: packed_zeros(row)),
        "differences": (many(60, 5000, predictor=2), lambda: packed_zeros(row)),
        "differences-of-floats": (many(15, 5000, bits=32, predictor=3, sample_format=FLOATS),
                                  lambda: packed_zeros(row)),
        "lzma": (many(60, 3000, packing=LZMA), lambda: lzma_zeros(row)),
        "one-strip": (many(70, 20, 20), lambda: packed_zeros(70 * 65535 * 20)),
        "one-strip-cut": (many(70, 200, 200), lambda: packed_zeros(70 * 65535 * 200)[:90_000]),
    }
    for name, (layout, data) in rows.items():
        yield Bomb(f"tiff-65535-samples-{name}.tif", lambda layout=layout, data=data: file(layout, data()),
                   is_dear=name == "lzma")


def planes():
    """Five planes of tiles that share their bytes, 16 x 16 pixels of which are the picture."""
    def inks(packing, width, height, **others):
        return Layout(16, 16, packing, 5, photometric=INKS, tile=(width, height), parts=5, planes=APART,
                      extra=(ALPHA,), **others)
    tiles = {
        "cut": (inks(DEFLATE, 8192, 8192), lambda: packed_zeros(1000)),
        "whole": (inks(DEFLATE, 8192, 8192), lambda: packed_zeros(8192 * 8192)),
        "floats": (inks(DEFLATE, 8192, 4096, bits=32, predictor=3, sample_format=FLOATS),
                   lambda: packed_zeros(8192 * 4096 * 4)),
        "lzma": (inks(LZMA, 8192, 8192), lambda: lzma_zeros(8192 * 8192)),
    }
    for name, (layout, data) in tiles.items():
        yield Bomb(f"tiff-planes-{name}.tif", lambda layout=layout, data=data: file(layout, data()))
    lab = Layout(16, 16, LZMA, 3, photometric=LAB, tile=(8192, 8192), parts=1)
    yield Bomb("tiff-tile-of-lab.tif", lambda: file(lab, lzma_zeros(8192 * 8192 * 3)))


def other_sizes():
    """JBIG says its size once more."""
    last_lines = 8  # of an option that lets the height be told later
    layout = Layout(16, 16, JBIG, bits=1, rows=16)
    for name, image in (("of-its-size", (16, 16)), ("of-10000", (10000, 10000)),
                        ("of-100000", (100_000, 200_000)), ("of-any-height", (100_000, 200_000, last_lines))):
        yield Bomb(f"tiff-jbig-{name}.tif", lambda image=image: file(layout, jbig(*image)))


def bombs():
    yield Bomb("tiff-honest-strips.tif", lambda: file(grey(50, 30), zlib.compress(bytes(50))),
               has_to_open=True)
    yield Bomb("tiff-honest-lzma.tif", lambda: file(Layout(50, 30, LZMA, rows=30), lzma_zeros(1500)),
               has_to_open=True)
    large = Layout(3360, 3360, DEFLATE, 3, 32, photometric=COLOURS, tile=(3360, 3360), parts=1)
    yield Bomb("tiff-honest-tile-of-135-million.tif", lambda: file(large, packed_zeros(3360 * 3360 * 12)),
               has_to_open=True)
    planar = Layout(16, 16, DEFLATE, 5, photometric=INKS, tile=(16, 16), parts=5, planes=APART, extra=(ALPHA,))
    yield Bomb("tiff-honest-planes.tif", lambda: file(planar, packed_zeros(256)), has_to_open=True)
    for each in (strips, tiles, samples, planes, other_sizes):
        yield from each()
