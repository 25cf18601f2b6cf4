"""webp.py: WebP files of many frames or chunks, and of pictures larger than their canvas."""
import struct

from bits import LowBits
from bomb import Bomb

ANIMATED, DESCRIBED = 2, 12  # EXIF and XMP
BELIEVED = "states 62 million pixels, which are believed of a short file"


def flat(width, height):
    """A lossless picture whose five codes have one symbol each, so that no pixel takes a bit."""
    out = LowBits().put(8, 0x2F).put(14, width - 1).put(14, height - 1)
    out.put(1, 0).put(3, 0).put(3, 0)
    for _ in range(5):
        out.put(4, 1)
    return chunk(b"VP8L", out.content())


def chunk(kind, content):
    return kind + struct.pack("<I", len(content)) + content + bytes(len(content) % 2)


def file(*chunks):
    content = b"WEBP" + b"".join(chunks)
    return b"RIFF" + struct.pack("<I", len(content)) + content


def three_bytes(value):
    return struct.pack("<I", value)[:3]


def canvas(width, height, flags=0):
    return chunk(b"VP8X", struct.pack("<I", flags) + three_bytes(width - 1) + three_bytes(height - 1))


def frame(width, height):
    """At the upper left corner, for a tenth of a second."""
    places = b"".join(map(three_bytes, (0, 0, width - 1, height - 1, 100)))
    return chunk(b"ANMF", places + b"\0" + flat(width, height))


def animation(width, height, *frames):
    return file(canvas(width, height, ANIMATED), chunk(b"ANIM", bytes(6)), *frames)


def bombs():
    yield Bomb("webp-honest.webp", lambda: file(flat(60, 40)), has_to_open=True)
    yield Bomb("webp-animation-of-1900.webp", lambda: animation(6, 4, frame(6, 4) * 1900))
    yield Bomb("webp-animation-of-1900-large.webp",
               lambda: animation(4000, 3000, frame(4000, 3000) * 1900), is_dear=True)
    yield Bomb("webp-canvas-of-7900.webp", lambda: animation(7900, 7900, frame(6, 4)))
    yield Bomb("webp-largest-canvas.webp", lambda: animation(1 << 24, 1 << 24, frame(6, 4)))
    yield Bomb("webp-larger-frame.webp", lambda: animation(6, 4, frame(16000, 16000)))
    yield Bomb("webp-7900.webp", lambda: file(flat(7900, 7900)), seconds=3, megabytes=600,
               why=BELIEVED)
    yield Bomb("webp-larger-picture.webp", lambda: file(canvas(6, 4), flat(7900, 7900)))
    yield Bomb("webp-12000-chunks.webp",
               lambda: file(canvas(6, 4), chunk(b"ABCD", b"") * 12000, flat(6, 4)))
    yield Bomb("webp-9000-chunks-after.webp",
               lambda: file(canvas(6, 4, DESCRIBED), flat(6, 4), chunk(b"EXIF", b"II") * 9000))
