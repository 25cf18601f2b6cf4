// Files of varieties that our own writers never make, put together byte by byte.
#pragma once

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"

namespace skarnel::testing {

/// Appends numbers in one byte order.
class ByteSink {
  public:
    explicit ByteSink(bool bigEndian) : big_(bigEndian) {}
    Bytes bytes;

    ByteSink& u8(std::uint64_t value) { return put(value, 1); }
    ByteSink& u16(std::uint64_t value) { return put(value, 2); }
    ByteSink& u32(std::uint64_t value) { return put(value, 4); }
    ByteSink& u64(std::uint64_t value) { return put(value, 8); }
    ByteSink& text(std::string_view value) {
        bytes.insert(bytes.end(), value.begin(), value.end());
        return *this;
    }
    ByteSink& raw(const Bytes& value) {
        bytes.insert(bytes.end(), value.begin(), value.end());
        return *this;
    }
    ByteSink& zeros(std::size_t count) {
        bytes.insert(bytes.end(), count, 0);
        return *this;
    }

  private:
    ByteSink& put(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) {
            const int shift = 8 * (big_ ? size - 1 - i : i);
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
        }
        return *this;
    }
    bool big_;
};

inline Bytes zlibBytes(const Bytes& plain) {
    uLongf size = compressBound(static_cast<uLong>(plain.size()));
    Bytes packed(size);
    compress(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size()));
    packed.resize(size);
    return packed;
}

/// A classic TIFF with one directory; values of SHORT or LONG, data of several blocks.
struct TiffBuilder {
    bool bigEndian = false;
    bool bigTiff = false;
    std::map<std::uint16_t, std::vector<std::uint32_t>> tags;  // written as SHORT where they fit
    std::vector<Bytes> blocks;  // strips, or tiles where tag 322 is set
    Bytes profile;

    TiffBuilder(std::uint32_t width, std::uint32_t height, std::uint32_t photometric,
                std::vector<std::uint32_t> bits) {
        tags[256] = {width};
        tags[257] = {height};
        tags[258] = bits;
        tags[259] = {1};
        tags[262] = {photometric};
        tags[277] = {static_cast<std::uint32_t>(bits.size())};
        tags[278] = {height};
    }

    Bytes build() const {
        ByteSink out(bigEndian);
        out.text(bigEndian ? "MM" : "II");
        if (bigTiff) {
            out.u16(43).u16(8).u16(0).u64(0);
        } else {
            out.u16(42).u32(0);
        }
        auto all = tags;
        const bool tiled = all.count(322) != 0;
        for (const Bytes& block : blocks) {
            all[tiled ? 324 : 273].push_back(static_cast<std::uint32_t>(out.bytes.size()));
            all[tiled ? 325 : 279].push_back(static_cast<std::uint32_t>(block.size()));
            out.raw(block).zeros(block.size() % 2);
        }
        if (tiled) all.erase(278);
        // Values too long for an entry come first, then the directory.
        const std::size_t inlineBytes = bigTiff ? 8 : 4;
        std::map<std::uint16_t, std::uint64_t> places;
        for (const auto& [tag, values] : all) {
            if (values.size() * sizeOf(tag) <= inlineBytes) continue;
            places[tag] = out.bytes.size();
            for (const auto value : values) putValue(out, tag, value);
        }
        std::uint64_t profilePlace = out.bytes.size();
        out.raw(profile).zeros(profile.size() % 2);
        const std::uint64_t directory = out.bytes.size();
        const std::size_t count = all.size() + (profile.empty() ? 0 : 1);
        if (bigTiff) {
            out.u64(count);
        } else {
            out.u16(count);
        }
        for (const auto& [tag, values] : all) {
            entryHead(out, tag, sizeOf(tag) == 2 ? 3 : 4, values.size());
            const std::size_t before = out.bytes.size();
            if (places.count(tag) != 0) {
                offset(out, places[tag]);
            } else {
                for (const auto value : values) putValue(out, tag, value);
                out.zeros(before + inlineBytes - out.bytes.size());
            }
        }
        if (!profile.empty()) {
            entryHead(out, 34675, 7, profile.size());
            offset(out, profilePlace);
        }
        offset(out, 0);
        ByteSink place(bigEndian);
        offset(place, directory);
        std::copy(place.bytes.begin(), place.bytes.end(), out.bytes.begin() + (bigTiff ? 8 : 4));
        return out.bytes;
    }

  private:
    static std::size_t sizeOf(std::uint16_t tag) {
        return tag == 273 || tag == 279 || tag == 324 || tag == 325 ? 4 : 2;
    }
    static void putValue(ByteSink& out, std::uint16_t tag, std::uint32_t value) {
        if (sizeOf(tag) == 2) {
            out.u16(value);
        } else {
            out.u32(value);
        }
    }
    void entryHead(ByteSink& out, std::uint16_t tag, std::uint16_t type, std::size_t count) const {
        out.u16(tag).u16(type);
        offset(out, count);
    }
    void offset(ByteSink& out, std::uint64_t value) const {
        if (bigTiff) {
            out.u64(value);
        } else {
            out.u32(value);
        }
    }
};

/// A Photoshop file: channels one after the other, packed in one of the four ways.
struct PsdBuilder {
    bool big = false;
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    std::uint16_t depth = 8;
    std::uint16_t mode = 3;
    std::uint16_t packing = 0;
    Bytes palette;
    Bytes resources;
    Bytes layers;
    std::vector<Bytes> rows;  // of channel 0, then of channel 1, ...

    Bytes build() const {
        ByteSink out(true);
        out.text("8BPS").u16(big ? 2 : 1).zeros(6).u16(rows.size() / height);
        out.u32(height).u32(width).u16(depth).u16(mode);
        out.u32(palette.size()).raw(palette).u32(resources.size()).raw(resources);
        if (big) {
            out.u64(layers.size());
        } else {
            out.u32(layers.size());
        }
        out.raw(layers).u16(packing);
        if (packing == 1) {
            for (const Bytes& row : rows) {
                const std::size_t size = row.size() + (row.size() + 127) / 128;
                if (big) {
                    out.u32(size);
                } else {
                    out.u16(size);
                }
            }
            for (const Bytes& row : rows) {
                for (std::size_t at = 0; at < row.size(); at += 128) {
                    const std::size_t part = std::min<std::size_t>(128, row.size() - at);
                    out.u8(part - 1);
                    for (std::size_t i = 0; i < part; ++i) out.u8(row[at + i]);
                }
            }
        } else {
            Bytes all;
            for (const Bytes& row : rows) all.insert(all.end(), row.begin(), row.end());
            out.raw(packing == 0 ? all : zlibBytes(all));
        }
        return out.bytes;
    }
};

/// A PNG of any colour type, its rows unfiltered.
inline Bytes buildPng(std::uint32_t width, std::uint32_t height, int depth, int colorType,
                      const Bytes& rows,
                      const std::vector<std::pair<std::string, Bytes>>& chunks = {}) {
    ByteSink out(true);
    out.raw({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'});
    auto chunk = [&out](const std::string& type, const Bytes& data) {
        ByteSink body(true);
        body.text(type).raw(data);
        out.u32(data.size()).raw(body.bytes);
        out.u32(crc32(0, body.bytes.data(), static_cast<uInt>(body.bytes.size())));
    };
    ByteSink header(true);
    header.u32(width)
        .u32(height)
        .u8(static_cast<unsigned>(depth))
        .u8(static_cast<unsigned>(colorType))
        .zeros(3);
    chunk("IHDR", header.bytes);
    for (const auto& [type, data] : chunks) chunk(type, data);
    Bytes filtered;
    const std::size_t rowBytes = rows.size() / std::max<std::size_t>(height, 1);
    for (std::size_t y = 0; rowBytes > 0 && y < height; ++y) {
        filtered.push_back(0);
        filtered.insert(filtered.end(), rows.begin() + static_cast<long>(y * rowBytes),
                        rows.begin() + static_cast<long>((y + 1) * rowBytes));
    }
    chunk("IDAT", zlibBytes(filtered));
    chunk("IEND", {});
    return out.bytes;
}

/// A grey PNG whose rows, each behind its filter, are in the order of the seven passes.
inline Bytes interlacedPng(std::uint32_t width, std::uint32_t height, const Bytes& filtered) {
    Bytes file = buildPng(width, height, 8, 0, {});
    constexpr std::size_t kHeader = 16;  // the data of IHDR, behind the signature, length and type
    constexpr std::size_t kHeaderBytes = 13;
    file[kHeader + kHeaderBytes - 1] = 1;
    file.resize(kHeader + kHeaderBytes);
    const auto chunkCheck = [](const std::uint8_t* from, std::size_t size) {
        return crc32(0, from, static_cast<uInt>(size));
    };
    ByteSink rest(true);
    rest.u32(chunkCheck(file.data() + kHeader - 4, kHeaderBytes + 4));
    const Bytes packed = zlibBytes(filtered);
    const Bytes data = ByteSink(true).text("IDAT").raw(packed).bytes;
    rest.u32(packed.size()).raw(data).u32(chunkCheck(data.data(), data.size()));
    const Bytes end = ByteSink(true).text("IEND").bytes;
    rest.u32(0).raw(end).u32(chunkCheck(end.data(), end.size()));
    file.insert(file.end(), rest.bytes.begin(), rest.bytes.end());
    return file;
}

/// A BMP with a header of 40 bytes (or the 12 of old) and what follows it.
struct BmpBuilder {
    std::uint32_t headerBytes = 40;
    std::int32_t width = 1;
    std::int32_t height = 1;
    std::uint16_t bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t colors = 0;
    std::vector<std::uint32_t> masks;
    Bytes palette;
    Bytes pixels;
    Bytes profile;

    Bytes build() const {
        ByteSink header(false);
        header.u32(headerBytes);
        if (headerBytes == 12) {
            header.u16(static_cast<std::uint32_t>(width)).u16(static_cast<std::uint32_t>(height));
            header.u16(1).u16(bits);
        } else {
            header.u32(static_cast<std::uint32_t>(width)).u32(static_cast<std::uint32_t>(height));
            header.u16(1).u16(bits).u32(compression).u32(pixels.size()).zeros(8).u32(colors).u32(0);
            for (const std::uint32_t mask : masks) header.u32(mask);
            if (headerBytes > 40) header.zeros(headerBytes - header.bytes.size());
        }
        header.raw(palette);
        const std::size_t offset = 14 + header.bytes.size();
        if (!profile.empty()) {
            ByteSink place(false);
            place.u32(0x4D424544);
            std::copy(place.bytes.begin(), place.bytes.end(), header.bytes.begin() + 56);
            ByteSink where(false);
            where.u32(offset - 14 + pixels.size()).u32(profile.size());
            std::copy(where.bytes.begin(), where.bytes.end(), header.bytes.begin() + 112);
        }
        ByteSink out(false);
        out.text("BM").u32(offset + pixels.size()).u32(0).u32(offset);
        out.raw(header.bytes).raw(pixels).raw(profile);
        return out.bytes;
    }
};

/// A GIF of one frame whose indices are all written as literals of nine bits.
inline Bytes buildGif(int width, int height, const Bytes& palette, const Bytes& indices,
                      int transparent = -1) {
    ByteSink out(false);
    out.text("GIF89a").u16(static_cast<unsigned>(width)).u16(static_cast<unsigned>(height));
    out.u8(0xF7).u8(0).u8(0).raw(palette).zeros(768 - palette.size());
    if (transparent >= 0) {
        out.u8(0x21).u8(0xF9).u8(4).u8(1).u16(0).u8(static_cast<unsigned>(transparent)).u8(0);
    }
    out.u8(0x2C).u16(0).u16(0).u16(static_cast<unsigned>(width)).u16(static_cast<unsigned>(height));
    out.u8(0).u8(8);
    std::vector<unsigned> codes = {256};
    for (std::size_t i = 0; i < indices.size(); ++i) {
        codes.push_back(indices[i]);
        if (i % 200 == 199) codes.push_back(256);  // before the codes grow to ten bits
    }
    codes.push_back(257);
    Bytes packed((codes.size() * 9 + 7) / 8);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        for (std::size_t bit = 0; bit < 9; ++bit) {
            const std::size_t at = i * 9 + bit;
            if ((codes[i] >> bit & 1U) != 0)
                packed[at / 8] |= static_cast<std::uint8_t>(1U << at % 8);
        }
    }
    for (std::size_t at = 0; at < packed.size(); at += 255) {
        const std::size_t part = std::min<std::size_t>(255, packed.size() - at);
        out.u8(part);
        for (std::size_t i = 0; i < part; ++i) out.u8(packed[at + i]);
    }
    return out.u8(0).u8(0x3B).bytes;
}

}  // namespace skarnel::testing
