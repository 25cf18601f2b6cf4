"""png.py: PNG files whose texts, profiles, chunks or frames are more than the picture."""
import struct
import zlib

from bits import packed_zeros
from bomb import Bomb

SIGNATURE = b"\x89PNG\r\n\x1a\n"
MUCH = 90 << 20  # bytes that pack to fewer than 100,000
GREY, COLOURS, COLOURS_AND_ALPHA = 0, 2, 6
ADAM7 = 1
BELIEVED = "states so many pixels, which are believed of a short file"


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def header(width, height, bits=8, colours=COLOURS, interlace=0):
    return chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, colours, 0, 0, interlace))


def picture(head, data, before=b"", after=b""):
    return SIGNATURE + head + before + chunk(b"IDAT", data) + after + chunk(b"IEND", b"")


def small(before=b"", after=b""):
    """5 x 3 black pixels between other chunks."""
    return picture(header(5, 3), zlib.compress(bytes(3 * (1 + 3 * 5)), 9), before, after)


def frame_control(index, width=5, height=3):
    """Of an animation: tenths of a second at the upper left corner."""
    return chunk(b"fcTL", struct.pack(">IIIIIHHBB", index, width, height, 0, 0, 1, 10, 0, 0))


def animation_control(frames):
    return chunk(b"acTL", struct.pack(">II", frames, 0))


def texts():
    much = {"profile": (b"iCCP", b"p\0\0"), "text": (b"zTXt", b"p\0\0"),
            "packet": (b"iTXt", b"XML:com.adobe.xmp\0\1\0\0\0")}
    for name, (kind, start) in much.items():
        yield Bomb(f"png-{name}-of-90MB.png",
                   lambda kind=kind, start=start: small(chunk(kind, start + packed_zeros(MUCH))))
    yield Bomb("png-80-texts-of-1MB.png",
               lambda: small(chunk(b"zTXt", b"p\0\0" + packed_zeros(1 << 20)) * 80), is_dear=True)
    yield Bomb("png-90MB-of-rows.png", lambda: picture(header(5, 3), packed_zeros(MUCH)))


def chunks():
    yield Bomb("png-7000-empty-data.png", lambda: small(chunk(b"IDAT", b"") * 7000))
    yield Bomb("png-6000-texts.png", lambda: small(chunk(b"tEXt", b"a\0b") * 6000))
    yield Bomb("png-6000-unknown.png", lambda: small(chunk(b"abCd", b"") * 6000))
    palette = b"a\0\x08" + bytes(6 * 10)
    yield Bomb("png-1000-palettes.png", lambda: small(chunk(b"sPLT", palette) * 1000))


def frames():
    controls = b"".join(frame_control(index) for index in range(1, 2500))
    yield Bomb("png-animation-of-2500.png",
               lambda: small(animation_control(1_000_000) + frame_control(0), controls))
    yield Bomb("png-frame-of-30000.png",
               lambda: small(animation_control(2) + frame_control(0, 30000, 30000)))


def large():
    # A row: its filter, then its samples. The sizes of Adam7's seven passes come to little more.
    yield Bomb("png-3000-sixteen-bits.png",
               lambda: picture(header(3000, 3000, 16, COLOURS_AND_ALPHA), packed_zeros(3000 * 24001)))
    yield Bomb("png-7900-one-bit.png",
               lambda: picture(header(7900, 7900, 1, GREY), packed_zeros(7900 * 989)))
    yield Bomb("png-8000-interlaced.png",
               lambda: picture(header(8000, 8000, 1, GREY, ADAM7), packed_zeros(8000 * 1010)),
               seconds=4, why=BELIEVED)
    yield Bomb("png-60-million-rows.png",
               lambda: picture(header(1, 60_000_000, 1, GREY), packed_zeros(120_000_000)[:90_000]),
               seconds=6, why=BELIEVED)


def bombs():
    yield Bomb("png-honest.png", small, has_to_open=True)
    for each in (texts, chunks, frames, large):
        yield from each()
