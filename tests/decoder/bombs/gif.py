"""gif.py: GIF files of many or large frames and extensions."""
import struct

from bits import LowBits
from bomb import Bomb

COLOURS = b"\0\0\0\xff\xff\xff"
CODE_BITS = 2  # of the colours; codes begin with one bit more
MOST_CODES = 4096
LARGEST_BLOCK = 255


def file(width, height, content):
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + COLOURS + content + b";")


def codes_of_zeros(count):
    """Codes each of which is the one before and another zero, until the table is full."""
    clear = 1 << CODE_BITS
    out = LowBits()
    left = count
    while left > 0:
        free, bits, length = clear + 2, CODE_BITS + 1, 1
        out.put(bits, clear).put(bits, 0)
        left -= 1
        while left > 0 and free < MOST_CODES:
            bits += free == 1 << bits and bits < 12
            out.put(bits, free)
            free, length = free + 1, length + 1
            left -= length
    bits += free == 1 << bits and bits < 12
    out.put(bits, clear + 1)
    return out.content()


def frame(width, height):
    packed = codes_of_zeros(width * height)
    blocks = [packed[place:place + LARGEST_BLOCK] for place in range(0, len(packed), LARGEST_BLOCK)]
    return (b"," + struct.pack("<HHHHB", 0, 0, width, height, 0) + bytes([CODE_BITS])
            + b"".join(bytes([len(block)]) + block for block in blocks) + b"\0")


def comment(block, count=1):
    return b"!\xfe" + (bytes([len(block)]) + block) * count + b"\0"


def bombs():
    small = frame(5, 3)
    yield Bomb("gif-honest.gif", lambda: file(500, 300, frame(500, 300)), has_to_open=True)
    yield Bomb("gif-5000-frames.gif", lambda: file(5, 3, small * 5000))
    yield Bomb("gif-18000-extensions.gif", lambda: file(5, 3, comment(b"a") * 18000 + small))
    yield Bomb("gif-long-extension.gif", lambda: file(5, 3, comment(b"a" * LARGEST_BLOCK, 300) + small))
    yield Bomb("gif-2000.gif", lambda: file(2000, 2000, frame(2000, 2000)))
    yield Bomb("gif-ten-of-2000.gif", lambda: file(2000, 2000, frame(2000, 2000) * 10), is_dear=True)
    yield Bomb("gif-larger-frame.gif", lambda: file(5, 3, frame(3000, 3000)))
    yield Bomb("gif-largest-frame.gif", lambda: file(5, 3, frame(5, 3).replace(
        struct.pack("<HH", 5, 3), struct.pack("<HH", 65535, 65535))))
    yield Bomb("gif-8000-of-few-pixels.gif", lambda: file(8000, 8000, small), seconds=4,
               why="states 64 million pixels, which are believed of a short file")
