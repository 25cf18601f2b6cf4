"""jpeg_xl_stream.py: JPEG XL codestreams (ISO/IEC 18181-1) of frames whose samples are all zero.

A frame costs a dozen bytes whatever its size, since each code has a single symbol and needs no bits.
"""
import dataclasses
import typing

from bits import LowBits

# Ways to write a number: two bits choose the row, whose offset the bits that follow are added to.
SIZE = ((1, 9), (1, 13), (1, 18), (1, 30))
PREVIEW_EIGHTHS = ((16, 0), (32, 0), (1, 5), (33, 9))
CROP = ((0, 8), (256, 11), (2304, 14), (18688, 30))
ENUM = ((0, 0), (1, 0), (2, 4), (18, 6))
BITS_PER_SAMPLE = ((8, 0), (10, 0), (12, 0), (1, 6))
EXTRA_CHANNELS = ((0, 0), (1, 0), (2, 4), (1, 12))
CHANNEL_SHIFT = ((0, 0), (3, 0), (4, 0), (1, 3))
NAME_LENGTH = ((0, 0), (0, 4), (16, 5), (48, 10))
UPSAMPLING = ((1, 0), (2, 0), (4, 0), (8, 0))
PASSES = ((1, 0), (2, 0), (3, 0), (4, 3))
DOWNSAMPLINGS = ((0, 0), (1, 0), (2, 0), (3, 1))
BLEND_MODE = ((0, 0), (1, 0), (2, 0), (3, 2))
BLEND_CHANNEL = ((0, 0), (1, 0), (2, 0), (3, 3))
DURATION = ((0, 0), (1, 0), (0, 8), (0, 32))
SECTION_BYTES = ((0, 10), (1024, 14), (17408, 22), (4211712, 30))
TICKS = ((100, 0), (1000, 0), (1, 10), (1, 30))
TICK_DIVISOR = ((1, 0), (1001, 0), (1, 8), (1, 10))
LOOPS = ((0, 0), (0, 3), (0, 16), (0, 32))

REGULAR, LOW_FREQUENCY, REFERENCE = 0, 1, 2  # kinds of frames
REPLACE, BLEND, MULTIPLY = 0, 2, 4  # how a frame is put over the others
PATCHES_FLAG = 2
LARGEST_CODE = 15  # of numbers with so many bits
PROFILE_CONTEXTS = 41


@dataclasses.dataclass(frozen=True)
class Picture:
    """What the head states; sizes in pixels."""
    width: int
    height: int
    extra: int = 0  # channels besides the colours, the first is transparency
    is_animated: bool = False
    is_xyb: bool = False
    orientation: int = 1
    bits: int = 8
    preview: typing.Optional[tuple] = None  # width and height, multiples of 8
    profile_bytes: typing.Optional[int] = None  # so many zeros


@dataclasses.dataclass(frozen=True)
class Frame:
    """A frame of one colour; width and height in pixels, `left` and `top` its place."""
    width: int
    height: int
    kind: int = REGULAR
    is_last: bool = True
    left: int = 0
    top: int = 0
    has_filters: bool = True
    edge_rounds: typing.Optional[int] = None  # of the edge-preserving filter, 0 to 3
    group_shift: int = 3  # groups have 128 << group_shift pixels a side
    passes: int = 1
    blend: int = REPLACE
    upsampling: int = 1
    slot: int = 0  # where it is kept for frames to come
    is_kept_before_colours: bool = True
    patches: typing.Optional[tuple] = None  # the tokens that say which (see put_constants)


class Stream(LowBits):
    """Bits with the format's ways to write numbers."""

    def number(self, ways, value):
        for index, (offset, bits) in enumerate(ways):
            if offset <= value < offset + (1 << bits):
                return self.put(2, index).put(bits, value - offset)
        raise ValueError(value)

    def long_number(self, value):
        """Up to 64 bits: none, 4, 8, or 12 and then eight at a time."""
        if value == 0:
            return self.put(2, 0)
        if value <= 16:
            return self.put(2, 1).put(4, value - 1)
        if value <= 272:
            return self.put(2, 2).put(8, value - 17)
        self.put(2, 3).put(12, value & 0xFFF)
        value >>= 12
        while value:
            self.put(1, 1).put(8, value & 0xFF)
            value >>= 8
        return self.put(1, 0)

    def constants(self, tokens):
        """A code for each context in which nothing but its token is ever read, for no bits."""
        symbols = sorted(set(tokens)) if len(tokens) > 1 else list(tokens)
        self.put(1, 0)
        if len(tokens) > 1:
            bits = (len(symbols) - 1).bit_length()
            self.put(1, 1).put(2, bits)
            for token in tokens:
                self.put(bits, symbols.index(token))
        self.put(1, 1)  # prefix codes
        for _ in symbols:
            self.put(4, LARGEST_CODE)
        for symbol in symbols:
            if symbol == 0:
                self.put(1, 0)
            else:
                bits = symbol.bit_length() - 1
                self.put(1, 1).put(4, bits).put(bits, symbol - (1 << bits))
        for symbol in symbols:
            if symbol:
                self.put(2, 1).put(2, 0).put(symbol.bit_length(), symbol)
        return self


# --- The picture's head.


def head(picture):
    """The signature and everything before the first frame."""
    out = Stream().put(8, 0xFF).put(8, 0x0A)
    out.put(1, 0).number(SIZE, picture.height).put(3, 0).number(SIZE, picture.width)
    out.put(1, 0)
    has_more = picture.is_animated or picture.orientation > 1 or picture.preview is not None
    out.put(1, int(has_more))
    if has_more:
        put_more(out, picture)
    out.put(1, 0).number(BITS_PER_SAMPLE, picture.bits).put(1, 1)
    out.number(EXTRA_CHANNELS, picture.extra)
    for index in range(picture.extra):
        put_channel(out, is_alpha=index == 0)
    out.put(1, int(picture.is_xyb))
    if picture.profile_bytes is None:
        out.put(1, 1)  # sRGB
    else:
        out.put(1, 0).put(1, 1).number(ENUM, 0)  # a profile, of red, green and blue
    if has_more:
        out.put(1, 1)  # tone mapping
    out.long_number(0).put(1, 1)  # no extensions, usual transforms
    if picture.profile_bytes is not None:
        out.long_number(picture.profile_bytes).constants([0] * PROFILE_CONTEXTS)
    return out.content()


def put_more(out, picture):
    """Turns, a preview, an animation."""
    out.put(3, picture.orientation - 1).put(1, 0)
    out.put(1, int(picture.preview is not None))
    if picture.preview is not None:
        width, height = picture.preview
        out.put(1, 1).number(PREVIEW_EIGHTHS, height // 8)
        out.put(3, 0).number(PREVIEW_EIGHTHS, width // 8)
    out.put(1, int(picture.is_animated))
    if picture.is_animated:
        out.number(TICKS, 100).number(TICK_DIVISOR, 1).number(LOOPS, 0).put(1, 0)


def put_channel(out, is_alpha):
    out.put(1, 0).number(ENUM, 0 if is_alpha else 1)
    out.put(1, 0).number(BITS_PER_SAMPLE, 8)
    out.number(CHANNEL_SHIFT, 0).number(NAME_LENGTH, 0)
    if is_alpha:
        out.put(1, 0)  # not multiplied


# --- A frame.


def frame(picture, part):
    """The frame's head, the lengths of its sections and the sections."""
    out = Stream().put(1, 0).put(2, part.kind).put(1, 1)
    out.long_number(PATCHES_FLAG if part.patches else 0)
    if not picture.is_xyb:
        out.put(1, 0)
    out.number(UPSAMPLING, part.upsampling)
    for _ in range(picture.extra):
        out.put(2, 0)
    out.put(2, part.group_shift)
    if part.kind != REFERENCE:
        put_passes(out, part.passes)
    if part.kind == LOW_FREQUENCY:
        out.put(2, 0)  # an eighth of the size
    covers = put_place(out, picture, part)
    put_order(out, picture, part, covers)
    out.number(NAME_LENGTH, 0)
    put_filters(out, part)
    out.long_number(0)
    out.put(1, 0)  # sections in their order
    return with_sections(out, sections(part))


def put_passes(out, passes):
    out.number(PASSES, passes)
    if passes > 1:
        out.number(DOWNSAMPLINGS, 0).put(2 * (passes - 1), 0)


def put_place(out, picture, part):
    """Returns whether the frame covers the picture."""
    is_whole = (part.width, part.height) == (picture.width, picture.height)
    is_cropped = not is_whole or part.left != 0 or part.top != 0
    if part.kind != LOW_FREQUENCY:
        out.put(1, int(is_cropped))
        if is_cropped:
            if part.kind != REFERENCE:
                for place in (part.left, part.top):
                    out.number(CROP, 2 * place if place >= 0 else -2 * place - 1)
            out.number(CROP, part.width).number(CROP, part.height)
    right, bottom = part.left + part.width, part.top + part.height
    return (part.left <= 0 and part.top <= 0 and right >= picture.width
            and bottom >= picture.height)


def put_order(out, picture, part, covers):
    """How the frame goes over the others, how long it is shown and where it is kept."""
    is_shown = part.kind == REGULAR
    duration = int(is_shown and picture.is_animated)
    if is_shown:
        for channel in range(1 + picture.extra):
            put_blending(out, picture, part.blend if channel == 0 else REPLACE, covers)
        if picture.is_animated:
            out.number(DURATION, duration)
        out.put(1, int(part.is_last))
    is_last = is_shown and part.is_last
    if part.kind != LOW_FREQUENCY and not is_last:
        out.put(2, part.slot)
    is_free = part.blend == REPLACE and covers and not is_last and (duration == 0 or part.slot)
    if part.kind == REFERENCE or (is_shown and is_free):
        out.put(1, int(part.is_kept_before_colours))


def put_blending(out, picture, blend, covers):
    out.number(BLEND_MODE, blend)
    has_alpha = picture.extra > 0 and blend == BLEND
    if has_alpha:
        out.number(BLEND_CHANNEL, 0)
    if has_alpha or blend == MULTIPLY:
        out.put(1, 0)
    if blend != REPLACE or not covers:
        out.put(2, 0)


def put_filters(out, part):
    if part.edge_rounds is not None:
        out.put(1, 0).put(1, 1).put(1, 0).put(2, part.edge_rounds)
        if part.edge_rounds:
            half_of_one = 0x3C00  # 1.0 in sixteen bits
            out.put(1, 0).put(1, 0).put(16, half_of_one)
        out.long_number(0)
    elif part.has_filters:
        out.put(1, 1)
    else:
        out.put(1, 0).put(1, 0).put(2, 0).long_number(0)


def sections(part):
    """The codes, then what each group adds, which is nothing but its short head."""
    codes = Stream()
    if part.patches:
        codes.constants(part.patches)
    codes.put(1, 1).put(1, 1)  # usual weights, one tree for all groups
    codes.constants([0] * 6).constants([0])  # the tree, then the samples
    put_group(codes)
    scale = 8 if part.kind == LOW_FREQUENCY else 1
    width, height = (-(-side // scale // part.upsampling) for side in (part.width, part.height))
    side = 128 << part.group_shift
    groups = -(-width // side) * -(-height // side)
    if groups == 1 and part.passes == 1:
        return [codes.content()]
    large_groups = -(-width // (8 * side)) * -(-height // (8 * side))
    group = put_group(Stream()).content()
    return [codes.content()] + [group] * large_groups + [b""] + [group] * (groups * part.passes)


def put_group(out):
    """The tree of all groups, usual predictions, no transform."""
    return out.put(1, 1).put(1, 1).put(2, 0)


def with_sections(out, contents):
    whole = Stream()
    for content in contents:
        whole.number(SECTION_BYTES, len(content))
    return out.content() + whole.content() + b"".join(contents)
