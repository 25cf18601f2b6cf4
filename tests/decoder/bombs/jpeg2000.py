"""jpeg2000.py: JPEG 2000 streams (ISO/IEC 15444-1) of many layers, levels, components, blocks or tiles."""
import struct

from bomb import Bomb

START, SIZE, CODING, STEPS, TILE, DATA, END = 0xFF4F, 0xFF51, 0xFF52, 0xFF5C, 0xFF90, 0xFF93, 0xFFD9
BLOCK_OF_64 = 4  # the logarithm of a block's side, less two
BELIEVED = "states 62 million pixels, and has a byte for 2,000 of them"
LONG = 90_000  # bytes of empty packets


def stream(width, height, body, components=3, tile_side=None, layers=1, levels=5, progression=0,
           block=BLOCK_OF_64, bits=8, tiles=1):
    """The first `tiles` tiles, each of `body`; a packet of zeros is empty."""
    side = tile_side or max(width, height)
    depth = bytes([bits - 1, 1, 1])
    steps = 3 * levels + 1
    parts = [struct.pack(">HHHH", START, SIZE, 38 + 3 * components, 0),
             struct.pack(">8IH", width, height, 0, 0, side, side, 0, 0, components), depth * components,
             struct.pack(">HHBBHBBBBBB", CODING, 12, 0, progression, layers, 0, levels, block, block, 0, 1),
             struct.pack(">HHB", STEPS, 3 + steps, 0x40), bytes([9 << 3]) * steps]
    for index in range(tiles):
        parts += [struct.pack(">HHHIBBH", TILE, 10, index, 14 + len(body), 0, 1, DATA), body]
    return b"".join(parts) + struct.pack(">H", END)


WAYS = {  # what each size is tried with: bytes of the packets, and the rest
    "short": (100, {}),
    "empty-packets": (LONG, {}),
    "65535-layers": (LONG, {"layers": 65535}),
    "32-levels": (LONG, {"levels": 32}),
    "blocks-of-16": (LONG, {"block": 0}),
    "100-components": (40_000, {"components": 100}),
    "16384-components": (40_000, {"components": 16384}),
    "38-bits": (40_000, {"bits": 38}),
}
# Of those that state 7900 x 7900 pixels and have the bytes for them: twice what they took.
COSTS_OF_LARGE = {"empty-packets": (5, 1000), "65535-layers": (6, 1000), "32-levels": (6, 1000),
                  "blocks-of-16": (14, 3500)}


def sizes():
    for width, height in ((5, 3), (2000, 2000), (7900, 7900)):
        for name, (count, ways) in WAYS.items():
            costs = {}
            if width == 7900 and name in COSTS_OF_LARGE:
                seconds, megabytes = COSTS_OF_LARGE[name]
                costs = {"seconds": seconds, "megabytes": megabytes, "why": BELIEVED}
            yield Bomb(f"j2k-{width}x{height}-{name}.j2k",
                       lambda width=width, height=height, count=count, ways=ways:
                       stream(width, height, bytes(count), **ways),
                       is_dear=width == 2000 and name in ("blocks-of-16", "65535-layers"), **costs)


def components():
    """1000 x 1000 pixels open, and 2048 x 2048 are the most that are believed."""
    for count in (1, 3, 4, 5):
        for side in (1000, 2048, 3000):
            yield Bomb(f"j2k-{side}-of-{count}.j2k",
                       lambda side=side, count=count: stream(side, side, bytes(100), components=count),
                       has_to_open=side == 1000)
        yield Bomb(f"j2k-2048-of-{count}-sixteen-bits.j2k",
                   lambda count=count: stream(2048, 2048, bytes(100), components=count, bits=16))
        for block in range(1, BLOCK_OF_64):
            yield Bomb(f"j2k-2048-of-{count}-blocks-of-{4 << block}.j2k",
                       lambda count=count, block=block:
                       stream(2048, 2048, bytes(100), components=count, block=block))


def tiles():
    yield Bomb("j2k-6000-tiles.j2k", lambda: stream(1550, 1000, b"", tile_side=16, tiles=6000))
    yield Bomb("j2k-62500-tiles-of-one-pixel.j2k",
               lambda: stream(250, 250, b"", tile_side=1, tiles=6000))
    yield Bomb("j2k-62500-tiles.j2k", lambda: stream(2000, 2000, bytes(1000), tile_side=8), is_dear=True)
    yield Bomb("j2k-1000-layers-by-component.j2k",
               lambda: stream(2000, 2000, bytes(LONG), layers=1000, progression=4))


def bombs():
    for each in (sizes, components, tiles):
        yield from each()
