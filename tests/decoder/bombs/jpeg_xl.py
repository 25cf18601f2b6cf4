"""jpeg_xl.py: JPEG XL files whose layers, patches, passes or boxes are more than the picture."""
import dataclasses
import struct

import bits
from bits import box
from bomb import Bomb
from jpeg_xl_stream import BLEND, LOW_FREQUENCY, REFERENCE, Frame, Picture, frame, head

SMALL = Picture(30, 20)
MEGAPIXEL = Picture(1000, 1000)
LARGE = Picture(2048, 2048)  # as many pixels as are believed of a short file
SIGNATURE = box(b"JXL ", b"\r\n\x87\n") + box(b"ftyp", b"jxl \0\0\0\0jxl ")
ADDED, MOST_TIMES = 1, 30
PADDING = box(b"free", bytes(35_000))
PADDED = "states 62 million pixels, and has a byte for 2,000 of them"
BELIEVED = "states 2048 x 2048 pixels, and each byte has time of its own"


def stream(picture, *parts):
    return head(picture) + b"".join(frame(picture, part) for part in parts)


def whole(picture, **properties):
    """A frame of the picture's size."""
    return Frame(picture.width, picture.height, **properties)


def covered(picture, part, count=1):
    """Under a whole frame, `count` times `part`."""
    return head(picture) + frame(picture, part) * count + frame(picture, whole(picture))


def layer(width, height, **properties):
    return Frame(width, height, is_last=False, is_kept_before_colours=False, **properties)


def hidden(width, height, **properties):
    return Frame(width, height, kind=REFERENCE, **properties)


def patched(picture, kinds, side, places):
    """`places` times `kinds` squares of `side` + 1 pixels, drawn where the picture begins."""
    tokens = (kinds, 0, side, 0, 0, ADDED, 0, places, 0, 0)
    kept = hidden(picture.width, picture.height)
    return stream(picture, kept, whole(picture, patches=tokens))


def honest():
    three = Picture(5, 3)
    turned = Picture(30, 20, orientation=6)
    alpha = Picture(300, 200, extra=1)
    tiles = Picture(1600, 1200)
    few = (1, 0, 9, 0, 0, ADDED, 0, 1, 0, 0)
    for name, make in (
            ("5x3", lambda: stream(three, whole(three))),
            ("tiles", lambda: stream(tiles, whole(tiles, has_filters=False))),
            ("alpha", lambda: stream(alpha, whole(alpha))),
            ("turned", lambda: stream(turned, whole(turned))),
            ("layer", lambda: stream(SMALL, layer(30, 20), Frame(20, 10, left=2, top=-3))),
            ("hidden-layer", lambda: covered(SMALL, hidden(30, 20))),
            ("patch", lambda: stream(SMALL, hidden(30, 20), whole(SMALL, patches=few))),
            ("mixed-layer", lambda: covered(alpha, layer(300, 200, blend=BLEND))),
            ("preview", lambda: with_preview(64)),
            ("box", lambda: boxed([]))):
        yield Bomb(f"jxl-honest-{name}.jxl", make, has_to_open=True)


def layers():
    animated = Picture(30, 20, is_animated=True)
    for side in (8000, 30000):
        yield Bomb(f"jxl-only-layer-of-{side}.jxl",
                   lambda side=side: stream(SMALL, Frame(side, side)))
    yield Bomb("jxl-1000-layers.jxl", lambda: covered(SMALL, layer(30, 20), 1000))
    for count in (100, 1000):
        yield Bomb(f"jxl-{count}-layers-of-a-million.jxl",
                   lambda count=count: covered(MEGAPIXEL, layer(1000, 1000), count))
    for count in (100, 5000):
        yield Bomb(f"jxl-{count}-layers-of-one-pixel.jxl",
                   lambda count=count: covered(MEGAPIXEL, layer(1, 1), count))
    yield Bomb("jxl-100-layers-unfiltered.jxl",
               lambda: covered(MEGAPIXEL, layer(1000, 1000, has_filters=False), 100))
    mixed = dataclasses.replace(MEGAPIXEL, extra=1)
    yield Bomb("jxl-100-layers-mixed.jxl",
               lambda: covered(mixed, layer(1000, 1000, blend=BLEND), 100))
    yield Bomb("jxl-two-layers-2048.jxl", lambda: covered(LARGE, layer(2048, 2048)))
    yield Bomb("jxl-animation-of-10000.jxl",
               lambda: covered(animated, layer(30, 20), 10000))
    yield Bomb("jxl-animation-of-30000-squared.jxl",
               lambda: covered(animated, layer(30000, 30000)))
    eight = dataclasses.replace(SMALL, extra=8)
    yield Bomb("jxl-layer-of-nine-channels.jxl", lambda: stream(eight, Frame(8000, 8000)))


def hidden_layers():
    """Only the library finds them, so that the wall has to end it."""
    for name, picture in (("30x20", SMALL), ("2048", LARGE)):
        is_small = picture is SMALL
        yield Bomb(f"jxl-{name}-hidden-8000.jxl",
                   lambda picture=picture: covered(picture, hidden(8000, 8000)))
        yield Bomb(f"jxl-{name}-hidden-30000.jxl",
                   lambda picture=picture: covered(picture, hidden(30000, 30000)))
        yield Bomb(f"jxl-{name}-100-hidden-millions.jxl",
                   lambda picture=picture: covered(picture, hidden(1000, 1000), 100), is_dear=is_small)
        yield Bomb(f"jxl-{name}-8000-hidden-millions.jxl",
                   lambda picture=picture: covered(picture, hidden(1000, 1000), 8000),
                   **({} if is_small else {"seconds": 3.5, "why": BELIEVED}))
        yield Bomb(f"jxl-{name}-four-kept.jxl",
                   lambda picture=picture: stream(picture, *four_kept(), whole(picture)), is_dear=is_small)
        for kinds, places in ((1, 1), (100, 1), (1000, 30)):
            yield Bomb(f"jxl-{name}-patches-{kinds * places}.jxl",
                       lambda picture=picture, kinds=kinds, places=places:
                       patched(picture, kinds, side_of(picture), places))
    yield Bomb("jxl-1000-hidden.jxl", lambda: covered(SMALL, hidden(30, 20), 1000))
    yield Bomb("jxl-2048-low-frequencies-500-times.jxl",
               lambda: covered(LARGE, whole(LARGE, kind=LOW_FREQUENCY), 500))


def side_of(picture):
    return min(picture.width, picture.height) - 1


def four_kept():
    """One for each place where frames are kept."""
    return [hidden(2048, 2048, slot=slot) for slot in range(4)]


def stated():
    """Costly ways to write a picture of the size that is stated."""
    eight = dataclasses.replace(LARGE, extra=8)
    ways = {
        "passes": (LARGE, whole(LARGE, passes=11)),
        "small-groups": (LARGE, whole(LARGE, group_shift=0)),
        "enlarged": (LARGE, whole(LARGE, upsampling=8)),
        "unfiltered": (LARGE, whole(LARGE, has_filters=False)),
        "edges": (LARGE, whole(LARGE, edge_rounds=3)),
        "eight-channels": (eight, whole(eight)),
        "sixteen-bits": (dataclasses.replace(LARGE, bits=16), whole(LARGE)),
        "xyb": (dataclasses.replace(LARGE, is_xyb=True), whole(LARGE)),
        "turned": (dataclasses.replace(LARGE, orientation=6), whole(LARGE)),
    }
    for name, (picture, part) in ways.items():
        yield Bomb(f"jxl-2048-{name}.jxl",
                   lambda picture=picture, part=part: stream(picture, part),
                   has_to_open=name == "passes", is_dear=name == "eight-channels")
    for side in (2828, 8000):
        square = Picture(side, side)
        yield Bomb(f"jxl-states-{side}.jxl", lambda square=square: stream(square, whole(square)))
    many = dataclasses.replace(SMALL, extra=200)
    yield Bomb("jxl-200-channels.jxl", lambda: stream(many, whole(many)))
    yield Bomb("jxl-preview-of-4096.jxl", lambda: with_preview(4096))
    for name, size in (("4MB", 4 << 20), ("100MB", 100 << 20), ("256MB", (1 << 28) - 1), ("4GB", 1 << 32)):
        coloured = dataclasses.replace(SMALL, profile_bytes=size)
        yield Bomb(f"jxl-profile-of-{name}.jxl",
                   lambda coloured=coloured: stream(coloured, whole(coloured)), is_dear=name == "4GB")


# --- Boxes around a picture that is as it should be.


def boxed(before, after=(), content=None):
    coded = box(b"jxlc", content or stream(SMALL, whole(SMALL)))
    return SIGNATURE + b"".join(before) + coded + b"".join(after)


def in_parts(count):
    """The stream behind so many parts without a byte of it."""
    last = 1 << 31
    empty = [box(b"jxlp", struct.pack(">I", index)) for index in range(count)]
    return (SIGNATURE + b"".join(empty)
            + box(b"jxlp", struct.pack(">I", count | last) + stream(SMALL, whole(SMALL))))


def padded():
    """Padding makes the file long enough for more pixels to be believed, one byte for 2,000."""
    picture = Picture(7900, 7900)
    eight = dataclasses.replace(picture, extra=8)
    for name, make, seconds, megabytes in (
            ("plain", lambda: stream(picture, whole(picture)), 8, 500),
            ("eight-channels", lambda: stream(eight, whole(eight)), 20, 700),
            ("100-hidden-millions", lambda: covered(picture, hidden(1000, 1000), 100), 16, 500),
            ("patches-30000", lambda: patched(picture, 1000, side_of(picture), 30), 65, 3500)):
        yield Bomb(f"jxl-7900-{name}.jxl", lambda make=make: boxed([], [PADDING], make()),
                   seconds=seconds, megabytes=megabytes, why=PADDED)


def with_preview(side):
    """The preview's frame is as large as the preview, and comes first."""
    picture = dataclasses.replace(SMALL, preview=(side, side))
    preview = dataclasses.replace(picture, width=side, height=side)
    return head(picture) + frame(preview, whole(preview)) + frame(picture, whole(picture))


def boxes():
    free = box(b"free", b"")
    exif = box(b"Exif", b"\0\0\0\0II")
    yield Bomb("jxl-7000-parts.jxl", lambda: in_parts(7000))
    yield Bomb("jxl-12000-boxes.jxl", lambda: boxed([free] * 11000, [free] * 1000))
    yield Bomb("jxl-6000-exif-boxes.jxl", lambda: boxed([exif] * 6000))
    if bits.brotli_zeros(1) is None:
        print("jpeg_xl: without libbrotlienc.so.1 the packed boxes are left out")
        return
    for name, kind, mega, count in (("exif-1GB", b"Exif", 1024, 1), ("exif-20GB", b"Exif", 1024, 20),
                                    ("xmp-20GB", b"xml ", 1024, 20), ("exif-2000", b"Exif", 1, 2000),
                                    ("in-itself", b"brob", 1, 1)):
        def packed(kind=kind, mega=mega, count=count):
            return [box(b"brob", kind + bits.brotli_zeros(mega << 20))] * count
        yield Bomb(f"jxl-packed-{name}.jxl", lambda packed=packed: boxed([], packed()))
    yield Bomb("jxl-packed-exif-before.jxl",
               lambda: boxed([box(b"brob", b"Exif" + bits.brotli_zeros(1 << 30))]))


def bombs():
    for each in (honest, layers, hidden_layers, stated, padded, boxes):
        yield from each()
