"""bits.py: bits, boxes and packed zeros, of which the files are made."""
import struct
import zlib


class LowBits:
    """Bits that fill each byte from its lowest one."""

    def __init__(self):
        self.value = 0
        self.count = 0
        self.done = bytearray()

    def put(self, count, value):
        """The lowest `count` bits of `value`, the lowest first."""
        assert 0 <= value < 1 << count, (count, value)
        self.value |= value << self.count
        self.count += count
        while self.count >= 8:
            self.done.append(self.value & 0xFF)
            self.value >>= 8
            self.count -= 8
        return self

    def content(self):
        """All of them, the last byte filled with zeros."""
        return bytes(self.done) + (bytes([self.value]) if self.count else b"")


def box(kind, content):
    """A box of an ISO file: its size, its four letters, its content."""
    return struct.pack(">I", 8 + len(content)) + kind + content


def packed_zeros(count):
    """`count` zeros as a zlib stream, about a thousandth of their size."""
    packer = zlib.compressobj(9)
    mega = bytes(1 << 20)
    parts = [packer.compress(mega) for _ in range(count >> 20)]
    parts.append(packer.compress(bytes(count & ((1 << 20) - 1))))
    return b"".join(parts) + packer.flush()


def brotli_zeros(count):
    """`count` zeros as a brotli stream, a few bytes; None where there is no library that packs."""
    import ctypes
    try:
        library = ctypes.CDLL("libbrotlienc.so.1")
    except OSError:
        return None
    pack = library.BrotliEncoderCompress
    size_pointer = ctypes.POINTER(ctypes.c_size_t)
    pack.argtypes = [ctypes.c_int] * 3 + [ctypes.c_size_t, ctypes.c_char_p, size_pointer, ctypes.c_char_p]
    target = ctypes.create_string_buffer(count // 100 + 10000)
    size = ctypes.c_size_t(len(target))
    quality, window_bits, generic = 5, 24, 0
    if pack(quality, window_bits, generic, count, bytes(count), ctypes.byref(size), target) != 1:
        raise RuntimeError("brotli does not pack")
    return target.raw[:size.value]
