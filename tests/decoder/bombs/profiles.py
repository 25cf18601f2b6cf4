"""profiles.py: colour profiles (ICC.1:2010) of many or large elements, in a PNG of one pixel."""
import struct
import zlib

import png
from bomb import Bomb

HEAD_BYTES = 128
VERSION = 0x04300000
WHITE = (0.9642, 1, 0.8249)  # D50
PRIMARIES = {b"rXYZ": (0.4360, 0.2225, 0.0139), b"gXYZ": (0.3851, 0.7169, 0.0971),
             b"bXYZ": (0.1431, 0.0606, 0.7141)}
TO_COLOURS, FROM_COLOURS, FLOATS_TO_COLOURS, FLOATS_FROM_COLOURS = b"A2B0", b"B2A0", b"D2B1", b"B2D1"
IDENTITY = (1, 0, 0, 0, 1, 0, 0, 0, 1)


def profile(tags, space=b"RGB "):
    """A monitor's; `tags` are pairs of a name and its data, of which those that are one lie there once."""
    places, data, entries = {}, [], b""
    end = HEAD_BYTES + 4 + 12 * len(tags)
    for name, content in tags:
        if id(content) not in places:
            places[id(content)] = end
            data.append(content + bytes(-len(content) % 4))
            end += len(data[-1])
        entries += name + struct.pack(">II", places[id(content)], len(content))
    head = struct.pack(">I4sI4s4s4s", end, b"none", VERSION, b"mntr", space, b"XYZ ") + bytes(12) + b"acsp"
    head += bytes(28) + xyz_numbers(WHITE)
    return head.ljust(HEAD_BYTES, b"\0") + struct.pack(">I", len(tags)) + entries + b"".join(data)


def xyz_numbers(values):
    return struct.pack(">3i", *(round(value * 65536) for value in values))


def xyz(values):
    return b"XYZ " + bytes(4) + xyz_numbers(values)


def gamma(power=2.2):
    return b"curv" + bytes(4) + struct.pack(">IH", 1, round(power * 256))


def monitor(*tags):
    """What every profile of three colours has, and `tags`."""
    curve = gamma()
    own = {name for name, _ in tags}
    usual = [(b"wtpt", xyz(WHITE))] + [(name, xyz(values)) for name, values in PRIMARIES.items()]
    usual += [(name, curve) for name in (b"rTRC", b"gTRC", b"bTRC")]
    return profile([pair for pair in usual if pair[0] not in own] + list(tags))


# --- Chains of elements.


def chain(element, count, channels=3):
    """One element, named `count` times."""
    place = 16 + 8 * count
    return (b"mpet" + bytes(4) + struct.pack(">HHI", channels, channels, count)
            + struct.pack(">II", place, len(element)) * count + element)


def table(side, inputs=3, outputs=3, points=None):
    """A table of zeros, `side` points for each input, or with fewer than it says it has."""
    points = side ** inputs if points is None else points
    sides = bytes([side] * inputs).ljust(16, b"\0")
    return b"clut" + bytes(4) + struct.pack(">HH", inputs, outputs) + sides + bytes(4 * points * outputs)


def matrix(channels, values=None):
    """Of zeros, unless `values` are given."""
    numbers = struct.pack(f">{len(values)}f", *values) if values else bytes(4 * channels * channels)
    return b"matf" + bytes(4) + struct.pack(">HH", channels, channels) + numbers + bytes(4 * channels)


def curves(segments, channels=3):
    """The same curve of so many segments, each a straight line, for each of the channels."""
    ends = b"".join(struct.pack(">f", index / segments) for index in range(1, segments))
    line = b"parf" + bytes(8) + struct.pack(">4f", 1, 1, 0, 0)
    curve = b"curf" + bytes(4) + struct.pack(">HH", segments, 0) + ends + line * segments
    start = 12 + 8 * channels
    return (b"cvst" + bytes(4) + struct.pack(">HH", channels, channels)
            + struct.pack(">II", start, len(curve)) * channels + curve)


def sampled_curves(samples, channels=3):
    """Each of three segments, the one in the middle sampled."""
    ends = struct.pack(">2f", 0, 1)
    line = b"parf" + bytes(8) + struct.pack(">4f", 1, 1, 0, 0)
    middle = b"samf" + bytes(4) + struct.pack(">I", samples) + bytes(4 * samples)
    curve = b"curf" + bytes(4) + struct.pack(">HH", 3, 0) + ends + line + middle + line
    start = 12 + 8 * channels
    return (b"cvst" + bytes(4) + struct.pack(">HH", channels, channels)
            + struct.pack(">II", start, len(curve)) * channels + curve)


# --- Other large tags.


def sixteen_bit_table(side, points=None):
    """With curves of two points; of zeros."""
    points = side ** 3 if points is None else points
    line = struct.pack(">2H", 0, 65535) * 3
    identity = b"".join(struct.pack(">i", value << 16) for value in IDENTITY)
    return (b"mft2" + bytes(4) + bytes([3, 3, side, 0]) + identity + struct.pack(">HH", 2, 2) + line
            + bytes(6 * points) + line)


def sampled_curve(points):
    """A step, which packs well."""
    half = points // 2
    return b"curv" + bytes(4) + struct.pack(">I", 2 * half) + bytes(2 * half) + b"\xff" * (2 * half)


def languages(stated, count):
    """A description that says in how many languages it is."""
    text_place = 16 + 12 * count
    return (b"mluc" + bytes(4) + struct.pack(">II", stated, 12)
            + (b"enUS" + struct.pack(">II", 2, text_place)) * count + b"\0x")


def named_colours(count):
    return (b"ncl2" + bytes(8) + struct.pack(">II", count, 3) + bytes(64)
            + (b"a".ljust(32, b"\0") + bytes(12)) * count)


def in_picture(content):
    pixel = png.picture(png.header(1, 1), zlib.compress(b"\0\x80\x80\x80", 9),
                        png.chunk(b"iCCP", b"p\0\0" + zlib.compress(content, 9)))
    return pixel


def elements():
    """All of them in what turns colours to numbers, and in what turns numbers to colours."""
    small = table(2)
    yield from ((f"table-{count}-times", lambda count=count: chain(table(40), count))
                for count in (1, 100, 500, 3000, 30000))
    yield from ((f"small-table-{count}-times", lambda count=count: chain(small, count))
                for count in (500, 2000, 20000))
    yield "2000-matrices", lambda: chain(matrix(3, IDENTITY), 2000)
    for channels in (9, 15):
        yield (f"table-of-{channels}-channels",
               lambda channels=channels: chain(table(2, channels, channels), 1, channels))
        yield (f"table-of-{channels}-channels-cut",
               lambda channels=channels: chain(table(255, channels, channels, 100), 1, channels))
    yield "curves-of-28000-segments", lambda: chain(curves(28000), 1)
    yield "curves-of-28000-segments-500-times", lambda: chain(curves(28000), 500)
    yield "sampled-curves-of-250000", lambda: chain(sampled_curves(250_000), 1)
    yield "sampled-curves-of-250000-32-times", lambda: chain(sampled_curves(250_000), 32)
    yield "matrix-of-200-channels", lambda: chain(matrix(200), 1, 200)
    yield "matrix-of-60000-channels", lambda: chain(matrix(60000, [0] * 100), 1, 60000)
    yield "table-of-255-cut", lambda: chain(table(255, points=1000), 1)
    yield "table-of-129", lambda: chain(table(129), 1)


def bombs():
    dear = ("table-30000-times", "table-of-129")
    yield Bomb("profile-honest.png", lambda: in_picture(monitor()), has_to_open=True)
    for name, make in elements():
        for way, tag in (("to", FLOATS_TO_COLOURS), ("from", FLOATS_FROM_COLOURS)):
            yield Bomb(f"profile-{way}-{name}.png",
                       lambda tag=tag, make=make: in_picture(monitor((tag, make()))),
                       is_dear=name in dear and tag == FLOATS_TO_COLOURS)
    for name, make in (("16-bit-table-of-150", lambda: sixteen_bit_table(150)),
                       ("16-bit-table-of-255-cut", lambda: sixteen_bit_table(255, 1000))):
        for way, tag in (("to", TO_COLOURS), ("from", FROM_COLOURS)):
            yield Bomb(f"profile-{way}-{name}.png",
                       lambda tag=tag, make=make: in_picture(monitor((tag, make()))))
    yield Bomb("profile-curves-of-250000.png", lambda: in_picture(monitor(
        *((name, sampled_curve(250_000)) for name in (b"rTRC", b"gTRC", b"bTRC")))))
    yield Bomb("profile-40-million-languages.png",
               lambda: in_picture(monitor((b"desc", languages(40_000_000, 1)))))
    yield Bomb("profile-300000-languages.png",
               lambda: in_picture(monitor((b"desc", languages(300_000, 300_000)))))
    yield Bomb("profile-90000-named-colours.png",
               lambda: in_picture(monitor((b"ncl2", named_colours(90_000)))))
