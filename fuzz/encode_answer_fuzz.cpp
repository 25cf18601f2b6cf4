// What a helper that encodes may answer, taken over or not: it is a file, an error, or no answer.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_wall.h"
#include "imaging/io/read_file.h"
#include "input.h"

using namespace skarnel;

namespace {

constexpr std::uint64_t kMostBytes = 4096;
constexpr std::size_t kPipeBytes = 65536;  // what a pipe takes before anybody reads

/// A file is all that follows its record, byte for byte.
bool isRestOf(const Bytes& file, const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kRecord = sizeof(io::AnswerRecord);
    return file.size() <= kMostBytes && size == kRecord + file.size() &&
           std::equal(file.begin(), file.end(), data + kRecord);
}

}  // namespace

/// The bytes are a whole answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kPipeBytes) return 0;
    std::array<int, 2> ends{};
    fuzz::demand(::pipe2(ends.data(), O_CLOEXEC) == 0);
    const io::FileDescriptor pipe(ends[0]);
    {
        const io::FileDescriptor helper(ends[1]);
        fuzz::demand(::write(helper.number(), data, size) == static_cast<ssize_t>(size));
    }
    const auto answer = io::readEncoded(pipe.number(), kMostBytes, std::chrono::seconds(10));
    if (!answer) return 0;
    if (*answer) {
        fuzz::demand(isRestOf(**answer, data, size));
    } else {
        // A message that may stand on a terminal.
        for (const char c : answer->error().message) {
            fuzz::demand(c != '\x1b' && c != '\n' && c != '\0');
        }
        fuzz::demand(answer->error().code <= ErrorCode::Failed);
    }
    return 0;
}
