#include "decoder/encode_job.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <new>
#include <stdexcept>

#include "decoder/answer.h"
#include "decoder/cell.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/read_file.h"
#include "imaging/io/writers.h"

namespace skarnel {
namespace {

bool readExactly(void* target, std::size_t size) {
    auto* bytes = static_cast<std::uint8_t*>(target);
    while (size > 0) {
        const ssize_t count = ::read(io::kPictureDescriptor, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// The rows of the request, some at a time.
class RequestRows final : public io::PictureRows {
  public:
    explicit RequestRows(const Shape& shape)
        : PictureRows(shape),
          rowBytes_(static_cast<std::size_t>(shape.width) *
                    static_cast<std::size_t>(shape.samples)),
          left_(static_cast<std::size_t>(shape.height)) {
        constexpr std::size_t kReadBytes = std::size_t{256} << 10;
        buffer_.resize(rowBytes_ * std::max<std::size_t>(1, kReadBytes / rowBytes_));
        at_ = buffer_.size();
    }

    const std::uint8_t* next() override {
        if (at_ == buffer_.size()) {
            buffer_.resize(std::min(buffer_.size(), left_ * rowBytes_));
            if (!readExactly(buffer_.data(), buffer_.size())) return nullptr;
            at_ = 0;
        }
        const std::uint8_t* row = buffer_.data() + at_;
        at_ += rowBytes_;
        --left_;
        return row;
    }

  private:
    std::size_t rowBytes_;
    std::size_t left_;  // rows not given yet
    Bytes buffer_;
    std::size_t at_;
};

Result<Bytes> encodeRequest() try {
    const Error broken{ErrorCode::Failed, "The request to the encoder is broken"};
    io::EncodeRequest request{};
    if (!readExactly(&request, sizeof request)) return broken;
    const bool sound =
        request.width > 0 && request.height > 0 && (request.samples == 3 || request.samples == 4);
    if (!sound) return broken;
    Bytes packed(request.propertiesSize);
    if (!readExactly(packed.data(), packed.size())) return broken;
    const auto unpacked = io::unpackProperties(packed);
    if (!unpacked) return unpacked.error();
    RequestRows rows({request.width, request.height, request.samples, request.opaque != 0});
    return io::writeWithLibrary(rows, unpacked->type, unpacked->properties);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
} catch (const std::length_error&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

/// The library's picture and what it works with, 64 bytes a pixel at most, beside the program.
CellLimits limitsFor(std::uint64_t pixels) {
    constexpr std::uint64_t kPrograms = std::uint64_t{1} << 30U;
    return {kPrograms + pixels * 64, std::chrono::hours{1}};
}

}  // namespace

bool encodeIntoAnswer() {
    const auto file = encodeRequest();
    return file ? sendEncoded(*file) : sendError(file.error());
}

int runEncodeJob(std::string_view job) {
    std::uint64_t pixels = 0;
    const auto [end, error] = std::from_chars(job.data(), job.data() + job.size(), pixels);
    constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 40U;
    if (error != std::errc() || pixels > kMostPixels || end == job.data() + job.size()) return 2;
    const std::string_view type(end + 1,
                                static_cast<std::size_t>(job.data() + job.size() - end - 1));
    io::prepareToEncode(type);
    if (!lockIn(io::kPictureDescriptor, io::kAnswerDescriptor, limitsFor(pixels))) {
        return io::kNoWallsStatus;
    }
    return encodeIntoAnswer() ? 0 : 1;
}

}  // namespace skarnel
