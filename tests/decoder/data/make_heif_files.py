#!/usr/bin/env python3
"""make_heif_files.py: writes the HEIF and AVIF files beside it, from two of tests/imaging/io/data.

Honest ones put the coded picture into a grid or an overlay. The others state the size of that
picture and are larger in another place: in a grid's or an overlay's own data, before a crop, or
in the header inside the coded picture; or they are made of themselves, of the same picture a
million times, or turned two hundred times; or they say two things of which only one can be true.
`-alpha` says that the picture's transparency is so. flat.avif, of one colour and 6000 pixels a side,
was written by libaom, the coded data of two-slices.heic, 2000 pixels a side in two slices, by x265.
"""
import pathlib
import struct

HERE = pathlib.Path(__file__).parent
SOURCES = HERE.parent.parent / "imaging/io/data"
SIDES = (26990, 26213)  # of what is larger than it states: 707 million pixels
DERIVED = (b"iovl", b"grid")
ALPHA_URN = b"urn:mpeg:mpegB:cicp:systems:auxiliary:alpha\0"


def box(kind, content):
    return struct.pack(">I", 8 + len(content)) + kind + content


def full_box(kind, version, content):
    return box(kind, bytes([version, 0, 0, 0]) + content)


def boxes(content):
    place = 0
    while place + 8 <= len(content):
        size = struct.unpack_from(">I", content, place)[0] or len(content) - place
        yield content[place + 4:place + 8], content[place + 8:place + size]
        place += size


def find(content, *path):
    for kind in path:
        content = next(inside for each, inside in boxes(content) if each == kind)
        if kind == b"meta":
            content = content[4:]
    return content


def coded_picture(path):
    """The coded bytes of the file's only picture and the property that configures the decoder."""
    file = path.read_bytes()
    meta = find(file, b"meta")
    kind = b"hvcC" if path.suffix == ".heic" else b"av1C"
    configuration = find(meta, b"iprp", b"ipco", kind)
    return find(file, b"mdat"), configuration


# --- Bits.


class Bits:
    def __init__(self, content):
        self.text = "".join(f"{byte:08b}" for byte in content)
        self.place = 0

    def take(self, count):
        self.place += count
        return int(self.text[self.place - count:self.place] or "0", 2)

    def golomb(self):
        zeros = 0
        while self.take(1) == 0:
            zeros += 1
        return (1 << zeros) - 1 + self.take(zeros)

    def rest(self):
        """What follows, the stop bit the last."""
        return self.text[self.place:].rstrip("0")


def golomb(value):
    digits = f"{value + 1:b}"
    return "0" * (len(digits) - 1) + digits


def packed(text):
    return bytes(int(text[i:i + 8].ljust(8, "0"), 2) for i in range(0, len(text), 8))


# --- HEVC: the sequence parameter set, ITU-T H.265 7.3.2.2.


def escaped(content):
    out = bytearray()
    zeros = 0
    for byte in content:
        if zeros >= 2 and byte <= 3:
            out.append(3)
            zeros = 0
        out.append(byte)
        zeros = zeros + 1 if byte == 0 else 0
    return bytes(out)


def larger_parameters(unit, width, height):
    content = unit.replace(b"\0\0\3", b"\0\0")
    bits = Bits(content)
    bits.take(16 + 4)
    assert bits.take(3) == 0, "no sub-layers"
    bits.take(1 + 96)
    bits.golomb()
    if bits.golomb() == 3:
        bits.take(1)
    before = bits.text[:bits.place]
    bits.golomb()
    bits.golomb()
    if bits.take(1):  # the crop goes
        for _ in range(4):
            bits.golomb()
    return escaped(packed(before + golomb(width) + golomb(height) + "0" + bits.rest()))


def larger_hevc(coded, configuration, width, height):
    out = configuration[:23]
    place = 23
    for _ in range(configuration[22]):
        kind, count = struct.unpack_from(">BH", configuration, place)
        out += configuration[place:place + 3]
        place += 3
        for _ in range(count):
            size = struct.unpack_from(">H", configuration, place)[0]
            unit = configuration[place + 2:place + 2 + size]
            place += 2 + size
            if kind & 63 == 33:
                # Whole coding blocks.
                unit = larger_parameters(unit, width // 8 * 8, height // 8 * 8)
            out += struct.pack(">H", len(unit)) + unit
    return coded, out


# --- AV1: the sequence header, AV1 bitstream 5.5.


def larger_sequence(content, width, height):
    bits = Bits(content)
    bits.take(4)
    assert bits.take(1) == 1, "a reduced header"
    bits.take(5)
    before = bits.text[:bits.place]
    sizes = [bits.take(4) + 1, bits.take(4) + 1]
    bits.take(sum(sizes))
    return packed(before + "1111" * 2 + f"{width - 1:016b}{height - 1:016b}" + bits.rest())


def parameters_inside(coded, configuration, larger):
    """The larger configuration's units before the coded ones."""
    out = b""
    place = 23
    for _ in range(larger[22]):
        count = struct.unpack_from(">H", larger, place + 1)[0]
        place += 3
        for _ in range(count):
            size = struct.unpack_from(">H", larger, place)[0]
            out += bytes(2) + larger[place:place + 2 + size]
            place += 2 + size
    return out + coded, configuration


def larger_av1(coded, configuration, width, height):
    out = b""
    place = 0
    while place < len(coded):
        head, size = coded[place], coded[place + 1]
        assert head & 2 and size < 128, "a unit with a size of one byte"
        content = coded[place + 2:place + 2 + size]
        place += 2 + size
        if head >> 3 & 15 == 1:
            content = larger_sequence(content, width, height)
        out += bytes([head, len(content)]) + content
    return out, configuration[:4]


# --- The container, ISO/IEC 23008-12.


def stated(width, height):
    return full_box(b"ispe", 0, struct.pack(">II", width, height))


def crop(width, height):
    return box(b"clap", struct.pack(">8I", width, 1, height, 1, 0, 1, 0, 1))


def overlay(width, height, count=1):
    return b"\0\1" + bytes(8) + struct.pack(">II", width, height) + bytes(8 * count)


def grid(width, height):
    return b"\0\1\0\0" + struct.pack(">II", width, height)


class Container:
    def __init__(self, brand):
        self.brand = brand
        self.items = []
        self.references = b""
        self.properties = []
        self.shares = False  # the place of what is coded alike

    def add(self, kind, content, properties):
        for each in properties:
            if each not in self.properties:
                self.properties.append(each)
        self.items.append((kind, content, [self.properties.index(p) + 1 for p in properties]))
        return len(self.items)

    def refer(self, kind, source, *targets):
        self.references += box(kind, struct.pack(f">HH{len(targets)}H", source, len(targets),
                                                 *targets))

    def locations(self, data_at):
        out = struct.pack(">BBH", 0x44, 0, len(self.items))
        places = {True: 0, False: data_at}
        known = {}
        for number, (kind, content, _) in enumerate(self.items, 1):
            inside = kind in DERIVED
            place = known.get(content, places[inside])
            out += struct.pack(">HHHHII", number, inside, 0, 1, place, len(content))
            if place == places[inside]:
                places[inside] += len(content)
                if self.shares and not inside:
                    known[content] = place
        return full_box(b"iloc", 1, out)

    def meta(self, primary, data_at):
        infos = b""
        uses = struct.pack(">I", len(self.items))
        for number, (kind, _, used) in enumerate(self.items, 1):
            infos += full_box(b"infe", 2, struct.pack(">HH", number, 0) + kind + b"\0")
            uses += struct.pack(">HB", number, len(used)) + bytes(0x80 | each for each in used)
        derived = b"".join(content for kind, content, _ in self.items if kind in DERIVED)
        out = full_box(b"hdlr", 0, bytes(4) + b"pict" + bytes(13))
        out += full_box(b"pitm", 0, struct.pack(">H", primary)) + self.locations(data_at)
        out += full_box(b"iinf", 0, struct.pack(">H", len(self.items)) + infos)
        if self.references:
            out += full_box(b"iref", 0, self.references)
        out += box(b"iprp", box(b"ipco", b"".join(self.properties)) + full_box(b"ipma", 0, uses))
        return full_box(b"meta", 0, out + (box(b"idat", derived) if derived else b""))

    def file(self, primary):
        start = box(b"ftyp", self.brand + bytes(4) + b"mif1" + self.brand)
        data_at = len(start) + len(self.meta(primary, 0)) + 8
        data = [content for kind, content, _ in self.items if kind not in DERIVED]
        if self.shares:
            data = dict.fromkeys(data)
        data = b"".join(data)
        return start + self.meta(primary, data_at) + box(b"mdat", data)


class Maker:
    def __init__(self, extension, brand, kind, configuration_kind, source, sides, larger):
        self.extension = extension
        self.brand = brand
        self.kind = kind
        self.configuration_kind = configuration_kind
        self.coded, self.configuration = coded_picture(SOURCES / source)
        self.sides = sides
        self.larger = larger

    def save(self, name, container, primary):
        (HERE / f"{name}.{self.extension}").write_bytes(container.file(primary))

    def container(self):
        out = Container(self.brand)
        configuration = box(self.configuration_kind, self.configuration)
        tile = out.add(self.kind, self.coded, [stated(*self.sides), configuration])
        return out, tile

    def derived(self, name, kind, content, *more):
        out, tile = self.container()
        item = out.add(kind, content, [stated(*self.sides), *more])
        out.refer(b"dimg", item, tile)
        self.save(name, out, item)

    def derived_alpha(self, name, kind, content):
        out, tile = self.container()
        picture = out.add(self.kind, self.coded, out.properties[:2])
        item = out.add(kind, content, [stated(*self.sides), full_box(b"auxC", 0, ALPHA_URN)])
        out.refer(b"dimg", item, tile)
        out.refer(b"auxl", item, picture)
        self.save(name, out, picture)

    def of_itself(self, name, kind, content):
        """Its transparency is made of the picture, and so has that transparency."""
        out, tile = self.container()
        item = out.add(kind, content, [stated(*self.sides), full_box(b"auxC", 0, ALPHA_URN)])
        out.refer(b"dimg", item, tile)
        out.refer(b"auxl", item, tile)
        self.save(name, out, tile)

    def nest(self, out, item, sides, levels):
        """So many times an overlay of ten of what is below it."""
        for _ in range(levels):
            below = item
            item = out.add(b"iovl", overlay(*sides, 10), [stated(*sides)])
            out.refer(b"dimg", item, *[below] * 10)
        return item

    def nested(self, name):
        out, item = self.container()
        self.save(name, out, self.nest(out, item, self.sides, 6))
        out, item = self.container()
        self.save(name + "-large", out, self.nest(out, item, (2000, 2000), 3))

    def turned(self, name):
        out, tile = self.container()
        item = out.add(b"iovl", overlay(2000, 2000), [stated(2000, 2000), box(b"irot", b"\1")])
        used = out.items[-1][2]
        used[1:] *= 200
        out.refer(b"dimg", item, tile)
        self.save(name, out, item)

    def of_two_sizes(self, name):
        coded, configuration = self.larger(self.coded, self.configuration, 9000, 9000)
        configuration = box(self.configuration_kind, configuration)
        sizes = [stated(*self.sides), stated(2800, 2800)]
        for order, suffix in ((1, ""), (-1, "-reversed")):
            out = Container(self.brand)
            item = out.add(self.kind, coded, sizes[::order] + [configuration])
            self.save(name + suffix, out, item)

    def of_two_heads(self, name):
        """The first box of its kind has the one coded picture, the second one the nest."""
        out, tile = self.container()
        first = out.meta(tile, 0)
        primary = self.nest(out, tile, self.sides, 6)
        start = box(b"ftyp", self.brand + bytes(4) + b"mif1" + self.brand) + first
        data_at = len(start) + len(out.meta(primary, 0)) + 8
        content = start + out.meta(primary, data_at) + box(b"mdat", self.coded)
        (HERE / f"{name}.{self.extension}").write_bytes(content)

    def of_hidden_references(self, name):
        """A box of type `uuid` has sixteen bytes more of head for who knows that."""
        out, tile = self.container()
        primary = self.nest(out, tile, self.sides, 6)
        body = bytes(16) + bytes(4) + out.references
        count = (len(body) - 4) // 2
        body = struct.pack(">HH", 0x7777, count) + body[4:]
        out.references = struct.pack(">I", 8 + len(body)) + b"uuid" + body
        self.save(name, out, primary)

    def tiles(self, name, columns, rows, *more):
        """A grid as cameras make them, each tile an item of its own."""
        out, tile = self.container()
        sides = (self.sides[0] * columns, self.sides[1] * rows)
        others = [out.add(self.kind, self.coded, out.properties[:2])
                  for _ in range(columns * rows - 1)]
        content = bytes([0, 1, rows - 1, columns - 1]) + struct.pack(">II", *sides)
        item = out.add(b"grid", content, [stated(*sides), *more])
        out.refer(b"dimg", item, tile, *others)
        self.save(name, out, item)

    def cropped(self, name):
        out, tile = self.container()
        item = out.add(b"iovl", overlay(*SIDES), [stated(*SIDES), crop(*self.sides)])
        out.refer(b"dimg", item, tile)
        self.save(name, out, item)

    def coded_larger(self, name):
        coded, configuration = self.larger(self.coded, self.configuration, *SIDES)
        configuration = box(self.configuration_kind, configuration)
        out = Container(self.brand)
        self.save(name, out, out.add(self.kind, coded, [stated(*self.sides), configuration]))
        out, tile = self.container()
        alpha = full_box(b"auxC", 0, ALPHA_URN)
        item = out.add(self.kind, coded, [stated(*self.sides), configuration, alpha])
        out.refer(b"auxl", item, tile)
        self.save(name + "-alpha", out, tile)

    def coded_larger_than_four_megapixels(self):
        """States 2,000 pixels a side, for which a decoder may take its time."""
        if self.extension == "heic":
            coded, configuration = self.larger(self.coded, self.configuration, 6000, 6000)
            inside = parameters_inside(coded, self.configuration, configuration)
            out = Container(self.brand)
            self.save("coded-larger-inside", out, out.add(self.kind, inside[0], [
                stated(*self.sides), box(self.configuration_kind, inside[1])]))
        else:
            coded, configuration = coded_picture(HERE / "flat.avif")
        configuration = box(self.configuration_kind, configuration)
        out = Container(self.brand)
        item = out.add(self.kind, coded, [stated(2000, 2000), configuration])
        self.save("coded-larger-large", out, item)
        self.overlay_of_many("tiles-larger", coded, [stated(*self.sides), configuration])
        # Of what states no size the larger ones are weighed.
        self.overlay_of_many("tiles-larger-of-no-size", coded, [configuration])

    def overlay_of_many(self, name, coded, properties):
        out = Container(self.brand)
        out.shares = True
        tiles = [out.add(self.kind, coded, properties) for _ in range(100)]
        item = out.add(b"iovl", overlay(2000, 2000, len(tiles)), [stated(2000, 2000)])
        out.refer(b"dimg", item, *tiles)
        self.save(name, out, item)

    def standing_for_canvases(self):
        """An overlay of two hundred overlays, which another item stands for each time."""
        out, tile = self.container()
        inner = out.add(b"iovl", overlay(2000, 2000), [stated(1, 1)])
        out.refer(b"dimg", inner, tile)
        other = out.add(b"iden", b"", [stated(1, 1)])
        out.refer(b"dimg", other, inner)
        item = out.add(b"iovl", overlay(2000, 2000, 200), [stated(2000, 2000)])
        out.refer(b"dimg", item, *[other] * 200)
        self.save("overlay-of-others", out, item)

    def turned_by_others(self):
        """Thirteen items that stand for each other, each of which turns the overlay eight times."""
        out, tile = self.container()
        item = out.add(b"iovl", overlay(2000, 2000), [stated(2000, 2000)])
        out.refer(b"dimg", item, tile)
        for _ in range(13):
            below = item
            item = out.add(b"iden", b"", [stated(1, 1), box(b"irot", b"\1")])
            out.items[-1][2][1:] *= 8
            out.refer(b"dimg", item, below)
        below = item
        item = out.add(b"iden", b"", [stated(2000, 2000)])
        out.refer(b"dimg", item, below)
        self.save("overlay-turned-by-others", out, item)

    def cut_configuration(self):
        """Its last unit swallows the first of the picture's, so that the sizes are read behind."""
        coded, configuration = coded_picture(HERE / "flat.avif")
        configuration = box(self.configuration_kind, configuration[:4] + b"\x7a\4")
        count = len(coded)  # of what nobody need look at, as it seems from there
        hidden = bytes([0x7A, count & 127 | 128, count >> 7 & 127 | 128, count >> 14]) + coded
        self.overlay_of_many("configuration-cut", hidden, [stated(*self.sides), configuration])

    def many_slices(self):
        """The second slice of a picture over and over."""
        coded, configuration = coded_picture(HERE / "two-slices.heic")
        first = 4 + struct.unpack_from(">I", coded)[0]
        out = Container(self.brand)
        item = out.add(self.kind, coded[:first] + coded[first:] * 200,
                       [stated(2000, 2000), box(self.configuration_kind, configuration)])
        self.save("many-slices", out, item)

    def many_pictures(self):
        """One behind the other in the data of a single one."""
        coded, configuration = self.larger(self.coded, self.configuration, 2000, 2000)
        out = Container(self.brand)
        item = out.add(self.kind, coded * 60,
                       [stated(2000, 2000), box(self.configuration_kind, configuration)])
        self.save("many-pictures", out, item)

    def make(self):
        for name, kind, content in (("grid", b"grid", grid), ("overlay", b"iovl", overlay)):
            self.derived(name, kind, content(*self.sides))
            self.derived_alpha(name + "-alpha", kind, content(*self.sides))
            self.derived(name + "-larger", kind, content(*SIDES))
            self.derived_alpha(name + "-larger-alpha", kind, content(*SIDES))
            self.of_itself(name + "-of-itself", kind, content(*self.sides))
        self.nested("overlay-nested")
        self.turned("overlay-turned")
        self.of_two_sizes("two-sizes")
        self.of_two_heads("two-heads")
        self.of_hidden_references("hidden-references")
        if min(self.sides) >= 64:  # no honest tile is smaller
            self.tiles("grid-of-many", 8, 9)
            self.tiles("grid-of-many-cropped", 8, 9, crop(*self.sides))
        self.cropped("overlay-cropped")
        self.coded_larger("coded-larger")
        self.coded_larger_than_four_megapixels()
        self.standing_for_canvases()
        self.turned_by_others()
        if self.extension == "avif":
            self.cut_configuration()
        if self.extension == "heic":  # the library looks at one of an AVIF
            self.many_pictures()
            self.many_slices()


Maker("heic", b"heic", b"hvc1", b"hvcC", "lossy.heic", (80, 64), larger_hevc).make()
Maker("avif", b"avif", b"av01", b"av1C", "plain.avif", (5, 3), larger_av1).make()
