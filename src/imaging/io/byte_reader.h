// Reading numbers from hostile bytes: a read past the end gives 0 and is remembered.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "imaging/io/image_io.h"

namespace skarnel::io {

enum class ByteOrder { Little, Big };

/// A cursor over bytes. After any read or skip past the end `failed()` is true for good and every
/// further read gives 0, so a caller may read a whole header and check once.
class ByteReader {
  public:
    ByteReader(ByteView bytes, ByteOrder order) : bytes_(bytes), order_(order) {}

    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int16_t i16() { return static_cast<std::int16_t>(u16()); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    std::uint64_t u64() { return number(8); }

    /// The next `count` bytes; empty when there are fewer.
    ByteView take(std::uint64_t count) {
        if (failed_ || count > bytes_.size() - at_) {
            failed_ = true;
            return {};
        }
        const ByteView part = bytes_.subspan(at_, static_cast<std::size_t>(count));
        at_ += static_cast<std::size_t>(count);
        return part;
    }
    void skip(std::uint64_t count) { take(count); }
    void seek(std::uint64_t position) {
        if (position > bytes_.size()) {
            failed_ = true;
        } else {
            at_ = static_cast<std::size_t>(position);
        }
    }

    std::size_t position() const { return at_; }
    std::size_t left() const { return failed_ ? 0 : bytes_.size() - at_; }
    bool failed() const { return failed_; }

  private:
    std::uint64_t number(std::size_t size) {
        const ByteView part = take(size);
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < part.size(); ++i) {
            const std::size_t at = order_ == ByteOrder::Big ? i : part.size() - 1 - i;
            value = value << 8U | part[at];
        }
        return value;
    }

    ByteView bytes_;
    ByteOrder order_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

}  // namespace skarnel::io
