// What the helper does with a request to encode, from its first byte to the last of its answer:
// one record, and behind it a picture of the size that was asked for, or an error.
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "decoder/encode_job.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/image_io.h"
#include "input.h"

using namespace skarnel;

namespace {

/// What a row, the picture and its properties may ask for here: more costs memory alone.
constexpr std::int64_t kMostPixels = 20'000;
constexpr std::uint64_t kMostProperties = 65536;

/// The helper's descriptors, files in place of its socket and its pipe. Taken before anything else
/// opens a file.
const bool kClaimed = [] {
    for (const int number : {io::kPictureDescriptor, io::kAnswerDescriptor}) {
        const int file = ::memfd_create("fuzz", 0);
        if (file != number) {
            ::dup2(file, number);
            ::close(file);
        }
    }
    return true;
}();

void fill(int file, const std::uint8_t* data, std::size_t size) {
    fuzz::demand(::ftruncate(file, 0) == 0 && ::lseek(file, 0, SEEK_SET) == 0 &&
                 ::write(file, data, size) == static_cast<ssize_t>(size) &&
                 ::lseek(file, 0, SEEK_SET) == 0);
}

bool isSmall(const io::EncodeRequest& request) {
    const bool hasSides = request.width > 0 && request.height > 0;
    return (!hasSides || std::int64_t{request.width} * request.height <= kMostPixels) &&
           request.propertiesSize <= kMostProperties;
}

Bytes contentOf(int file) {
    Bytes bytes(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)));
    fuzz::demand(::pread(file, bytes.data(), bytes.size(), 0) ==
                 static_cast<ssize_t>(bytes.size()));
    return bytes;
}

}  // namespace

/// The bytes are a whole request.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    io::EncodeRequest request{};
    const bool whole = size >= sizeof request;
    if (whole) std::memcpy(&request, data, sizeof request);
    if (!kClaimed || !isSmall(request)) return 0;
    fill(io::kPictureDescriptor, data, size);
    fill(io::kAnswerDescriptor, nullptr, 0);
    fuzz::demand(encodeIntoAnswer());

    const Bytes answer = contentOf(io::kAnswerDescriptor);
    io::AnswerRecord record{};
    fuzz::demand(answer.size() > sizeof record);
    std::memcpy(&record, answer.data(), sizeof record);
    const ByteView rest = ByteView(answer).subspan(sizeof record);
    fuzz::demand(record.first == rest.size());
    if (record.kind == io::RecordKind::Failed) return 0;
    fuzz::demand(whole && record.kind == io::RecordKind::Encoded && record.second == 0);
    const auto back = decodeImage(rest);
    fuzz::demand(back && back->image.width() == request.width &&
                 back->image.height() == request.height);
    return 0;
}
