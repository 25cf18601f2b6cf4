#include "textimaging/serialized_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

namespace skarnel {
namespace {

constexpr std::array<std::uint8_t, 8> kMagic{'S', 'k', 'T', 'e', 'x', 't', '\r', '\n'};
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kSmallestRunBytes = 4 + 4 + 8 + 2 + 1 + 1 + 4;
constexpr int kHeaviest = 1000;

bool isStorable(const TextStyle& style) {
    return std::isfinite(style.size) && style.size > 0 && style.weight >= 1 &&
           style.weight <= kHeaviest &&
           style.family.size() <= std::numeric_limits<std::uint32_t>::max();
}

class Writer {
  public:
    explicit Writer(Bytes& out) : out_(out) {}

    template <typename Number>
    void number(Number value) {
        for (std::size_t i = 0; i < sizeof(Number); ++i)
            out_.push_back(static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * i)));
    }
    void count(std::size_t value) { number(static_cast<std::uint32_t>(value)); }

  private:
    Bytes& out_;
};

class Reader {
  public:
    explicit Reader(ByteView data) : data_(data) {}

    std::size_t left() const { return data_.size(); }

    // False, and the value untouched, when the bytes end before it.
    template <typename Number>
    bool number(Number& value) {
        if (left() < sizeof(Number)) return false;
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i) bits |= std::uint64_t{data_[i]} << (8 * i);
        value = static_cast<Number>(bits);
        data_ = data_.subspan(sizeof(Number));
        return true;
    }

    // A count of items of which each takes at least `itemBytes` of what is left.
    bool count(std::uint32_t& value, std::size_t itemBytes) {
        return number(value) && value <= left() / itemBytes;
    }

    // As many bytes as a count has found to be there.
    ByteView take(std::size_t size) {
        const ByteView taken = data_.first(size);
        data_ = data_.subspan(size);
        return taken;
    }

  private:
    ByteView data_;
};

void writeStyle(Writer& writer, Bytes& out, const TextStyle& style) {
    writer.count(style.family.size());
    out.insert(out.end(), style.family.begin(), style.family.end());
    writer.number(std::bit_cast<std::uint64_t>(style.size));
    writer.number(static_cast<std::uint16_t>(style.weight));
    writer.number(static_cast<std::uint8_t>(style.slant));
    writer.number(static_cast<std::uint8_t>(style.underline));
    for (const std::uint8_t part :
         {style.color.red, style.color.green, style.color.blue, style.color.alpha})
        writer.number(part);
}

bool readStyle(Reader& reader, TextStyle& style) {
    std::uint32_t familyBytes = 0;
    std::uint64_t size = 0;
    std::uint16_t weight = 0;
    std::uint8_t slant = 0;
    std::uint8_t underline = 0;
    TextColor& color = style.color;
    if (!reader.count(familyBytes, 1)) return false;
    const ByteView family = reader.take(familyBytes);
    style.family.assign(family.begin(), family.end());
    if (!reader.number(size) || !reader.number(weight) || !reader.number(slant) ||
        !reader.number(underline) || !reader.number(color.red) || !reader.number(color.green) ||
        !reader.number(color.blue) || !reader.number(color.alpha))
        return false;
    if (slant > static_cast<std::uint8_t>(TextSlant::Oblique)) return false;
    if (underline > static_cast<std::uint8_t>(TextUnderline::Single)) return false;
    style.size = std::bit_cast<double>(size);
    style.weight = weight;
    style.slant = static_cast<TextSlant>(slant);
    style.underline = static_cast<TextUnderline>(underline);
    return isStorable(style);
}

bool readCharacters(Reader& reader, std::u16string& characters) {
    std::uint32_t count = 0;
    if (!reader.count(count, 2)) return false;
    characters.resize(count);
    return std::all_of(characters.begin(), characters.end(),
                       [&](char16_t& unit) { return reader.number(unit); });
}

// Runs that are empty, equal to their neighbour or beyond the characters are not the form that
// was written.
bool readRuns(Reader& reader, StyledText& text, const std::u16string& characters) {
    std::uint32_t count = 0;
    if (!reader.count(count, kSmallestRunBytes)) return false;
    std::vector<TextRun> runs;
    std::size_t total = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t length = 0;
        TextStyle style;
        if (!reader.number(length) || !readStyle(reader, style)) return false;
        if (length == 0 || length > characters.size() - total) return false;
        if (!runs.empty() && runs.back().style == style) return false;
        runs.push_back({length, std::move(style)});
        total += length;
    }
    if (total != characters.size()) return false;
    text = StyledText::fromRuns(characters, std::move(runs));
    return true;
}

bool readAlignments(Reader& reader, StyledText& text) {
    std::uint32_t count = 0;
    if (!reader.count(count, 1) || count != text.alignments().size()) return false;
    std::size_t paragraph = 0;
    for (const std::uint8_t alignment : reader.take(count)) {
        if (alignment > static_cast<std::uint8_t>(TextAlignment::Justified)) return false;
        text.setAlignment(paragraph++, static_cast<TextAlignment>(alignment));
    }
    return true;
}

}  // namespace

std::optional<Bytes> serializeText(const StyledText& text) {
    if (text.length() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    for (const TextRun& run : text.runs())
        if (!isStorable(run.style)) return std::nullopt;
    Bytes out(kMagic.begin(), kMagic.end());
    out.reserve(64 + 2 * text.length() + 64 * text.runs().size() + text.alignments().size());
    Writer writer(out);
    writer.number(kVersion);
    writer.count(text.length());
    for (const char16_t unit : text.characters()) writer.number(unit);
    writer.count(text.runs().size());
    for (const TextRun& run : text.runs()) {
        writer.count(run.length);
        writeStyle(writer, out, run.style);
    }
    writer.count(text.alignments().size());
    for (const TextAlignment alignment : text.alignments())
        writer.number(static_cast<std::uint8_t>(alignment));
    return out;
}

bool isSerializedText(ByteView data) {
    return data.size() >= kMagic.size() && std::equal(kMagic.begin(), kMagic.end(), data.begin());
}

Result<StyledText> deserializeText(ByteView data) {
    if (!isSerializedText(data)) return {ErrorCode::UnknownFormat, "Not styled text"};
    Reader reader(data.subspan(kMagic.size()));
    std::uint32_t version = 0;
    if (!reader.number(version)) return {ErrorCode::Damaged, "The styled text is damaged"};
    if (version != kVersion)
        return {ErrorCode::Unsupported, "The styled text is of a newer version"};
    std::u16string characters;
    StyledText text;
    if (!readCharacters(reader, characters) || !readRuns(reader, text, characters) ||
        !readAlignments(reader, text) || reader.left() != 0)
        return {ErrorCode::Damaged, "The styled text is damaged"};
    return text;
}

}  // namespace skarnel
