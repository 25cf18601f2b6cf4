#include "imaging/io/upright_picture.h"

#include <algorithm>
#include <utility>

#include "imaging/io/orientation.h"
#include "imaging/io/pixel_rows.h"

namespace skarnel::io {
namespace {

/// What the nearest caches hold beside a decoder's own tables.
constexpr std::size_t kRowsBytes = std::size_t{256} << 10;

int rowsAtATime(int width) {
    const std::size_t rows = kRowsBytes / (std::size_t{4} * static_cast<std::size_t>(width));
    return std::max(1, static_cast<int>(rows));
}

MutablePixelView rowsOf(MutablePixelView picture, int first, int count) {
    return {picture.row(first), picture.width, count, picture.strideBytes};
}

}  // namespace

Result<UprightPicture> UprightPicture::make(SourcePicture picture, std::string_view type) {
    if (!picture.profile.empty()) {
        if (std::string name = profileName(picture.profile); !name.empty()) {
            picture.properties.insert_or_assign(std::string(kPropertyProfileName), std::move(name));
        }
    }
    auto conversion = ColorConversion::prepare(picture);
    if (!conversion) return conversion.error();
    UprightPicture upright(std::move(picture), *std::move(conversion), type);
    if (upright.source_.orientation != 1 || !upright.source_.rows) {
        if (auto decoded = upright.decodeWhole(); !decoded) return decoded.error();
    }
    return upright;
}

UprightPicture::UprightPicture(SourcePicture picture, ColorConversion conversion,
                               std::string_view type)
    : source_(std::move(picture)),
      conversion_(std::move(conversion)),
      type_(type),
      width_(source_.pixels.width()),
      height_(source_.pixels.height()) {}

void UprightPicture::settleRows(MutablePixelView rows) const {
    conversion_.apply(rows, nextRow_);
    const Alpha alpha = conversion_.alphaAfterwards();
    const auto count = static_cast<std::size_t>(rows.width);
    for (int y = 0; y < rows.height; ++y) {
        if (alpha == Alpha::Straight) premultiplyRow(rows.row(y), count);
        if (alpha == Alpha::OverWhite) removeWhiteRow(rows.row(y), count);
        if (alpha == Alpha::Premultiplied) clearTransparentRow(rows.row(y), count);
    }
}

Result<void> UprightPicture::decodeRows(MutablePixelView rows) {
    if (source_.rows) {
        if (auto decoded = source_.rows->decode(rows); !decoded) return decoded;
    }
    settleRows(rows);
    nextRow_ += rows.height;
    return {};
}

Result<void> UprightPicture::decodeWhole() {
    if (source_.rows) {
        auto buffer = PixelBuffer::uninitialized(width_, height_);
        if (!buffer) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
        source_.pixels = *std::move(buffer);
    }
    const MutablePixelView all = source_.pixels.view();
    const int step = rowsAtATime(width_);
    for (int y = 0; y < height_; y += step) {
        if (auto decoded = decodeRows(rowsOf(all, y, std::min(step, height_ - y))); !decoded) {
            return decoded;
        }
    }
    if (source_.rows) {
        if (auto ended = source_.rows->finish(); !ended) return ended;
        source_.rows = nullptr;
    }
    auto upright = turnUpright(std::move(source_.pixels), source_.orientation);
    if (!upright) return {ErrorCode::OutOfMemory, "Not enough memory to turn the picture"};
    source_.pixels = *std::move(upright);
    width_ = source_.pixels.width();
    height_ = source_.pixels.height();
    nextRow_ = 0;
    return {};
}

Result<PixelView> UprightPicture::next(std::span<std::uint8_t> room) {
    const int count = std::min(rowsAtATime(width_), height_ - nextRow_);
    if (!source_.rows) {
        const MutablePixelView rows = rowsOf(source_.pixels.view(), nextRow_, count);
        nextRow_ += count;
        return PixelView(rows);
    }
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{4} * width_;
    const std::size_t size = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(count);
    if (room.size() < size) {
        scratch_.resize(size);
        room = scratch_;
    }
    const MutablePixelView rows{room.data(), width_, count, rowBytes};
    if (auto decoded = decodeRows(rows); !decoded) return decoded.error();
    return PixelView(rows);
}

Result<ImageProperties> UprightPicture::finish() {
    if (source_.rows) {
        if (auto ended = source_.rows->finish(); !ended) return ended.error();
    }
    return std::move(source_.properties);
}

Result<DecodedImage> UprightPicture::whole() && {
    if (source_.rows) {
        if (auto decoded = decodeWhole(); !decoded) return decoded.error();
    }
    return DecodedImage{CGImage(std::move(source_.pixels)), std::move(source_.properties),
                        std::move(type_)};
}

Result<DecodedImage> finishPicture(SourcePicture picture, std::string_view type) {
    auto upright = UprightPicture::make(std::move(picture), type);
    if (!upright) return upright.error();
    return (*std::move(upright)).whole();
}

}  // namespace skarnel::io
