#include "imaging/io/decoder_wall.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/helper_process.h"
#include "imaging/io/read_file.h"
#include "imaging/io/row_ring.h"
#include "util/log/message.h"
#include "util/log/system_log.h"
#include "util/walls/helper_program.h"
#include "util/walls/landlock.h"
#include "util/walls/seccomp_support.h"

namespace skarnel {
namespace io {
namespace {

const Error& died() {
    static const Error error{ErrorCode::Damaged, "The picture cannot be decoded"};
    return error;
}

constexpr int kPipeBytes = 1 << 20;

/// The reading end of the helper's pipe, and the ring where there is one.
class PipeSource : public AnswerSource {
  public:
    PipeSource(int descriptor, std::optional<RowRing> ring, std::chrono::milliseconds patience)
        : descriptor_(descriptor),
          ring_(std::move(ring)),
          end_(std::chrono::steady_clock::now() + patience) {}

    bool read(void* target, std::size_t size) override {
        auto* bytes = static_cast<std::uint8_t*>(target);
        while (size > 0) {
            const ssize_t count = readSome(bytes, size);
            if (count <= 0) return false;
            bytes += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    }

    bool readFromRing(void* target, std::size_t size) override {
        if (!ring_ || size > kRingSlotBytes) return false;
        ring_->take(target, size);
        return true;
    }

    bool isAtEnd() override {
        std::uint8_t byte = 0;
        return readSome(&byte, 1) == 0;
    }

  private:
    /// 0 at the end, below 0 when the time is over or the system failed.
    ssize_t readSome(std::uint8_t* target, std::size_t size) {
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end_ - std::chrono::steady_clock::now());
            if (left.count() <= 0) return -1;
            pollfd wait{descriptor_, POLLIN, 0};
            const int ready = ::poll(&wait, 1, static_cast<int>(left.count()));
            if (ready < 0 && errno != EINTR) return -1;
            if (ready <= 0) continue;
            const ssize_t count = ::read(descriptor_, target, size);
            if (count >= 0 || errno != EINTR) return count;
        }
    }

    int descriptor_;
    std::optional<RowRing> ring_;
    std::chrono::steady_clock::time_point end_;
};

std::optional<std::string> findDecoderProgram() {
#ifdef SKARNEL_WITHOUT_CELL
    return std::nullopt;
#else
    return findHelperProgram("skarnel-decode");
#endif
}

/// Said once: a wall that is missing stays missing.
void logMissingWalls() {
#ifdef SKARNEL_WITHOUT_CELL
    return;
#endif
    static std::once_flag once;
    std::call_once(once, [] {
        for (const DecoderWall& wall : decoderWalls()) {
            if (!wall.stands) {
                systemLogFormat("Pictures are decoded without this wall: %s", wall.name.c_str());
            }
        }
    });
}

}  // namespace

const std::optional<std::string>& decoderProgram() {
    static const std::optional<std::string> program = findDecoderProgram();
    return program;
}

Result<DecodedImage> decodeBehindWall(const std::string& program, int descriptor,
                                      const DecodeLimits& limits,
                                      std::chrono::milliseconds patience) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return systemError(marked("The decoder: %1"));
    const FileDescriptor answer(ends[0]);
    FileDescriptor helperEnd(ends[1]);
    // Fewer changes between the two processes where the system allows it.
    ::fcntl(answer.number(), F_SETPIPE_SZ, kPipeBytes);
    const std::optional<FileDescriptor> ring = makeRingFile();
    std::string numbers = std::to_string(limits.maxPixels);
    if (limits.maxUnprovenPixels) numbers += "," + std::to_string(*limits.maxUnprovenPixels);
    auto helper = HelperProcess::start(program, descriptor, helperEnd.number(), numbers,
                                       ring ? ring->number() : -1);
    // As long as this process holds it too, the pipe has no end.
    helperEnd = FileDescriptor();
    if (!helper) return helper.error();
    PipeSource source(answer.number(), ring ? RowRing::map(ring->number()) : std::nullopt,
                      patience);
    auto received = receiveAnswer(source, limits);
    // Without memory here the helper is still in the middle of its answer.
    const bool here = !received && received.error().code == ErrorCode::OutOfMemory;
    if (here) return received;
    const int status = source.isAtEnd() ? helper->statusAtEnd() : -1;
    if (status == kNoWallsStatus) {
        return {ErrorCode::Failed, "The walls around the decoder cannot be raised"};
    }
    return status == 0 ? std::move(received) : died();
}

}  // namespace io

std::vector<DecoderWall> decoderWalls() {
    const bool helper = io::decoderProgram().has_value();
    return {{"helper program", helper},
            {"no new privileges", helper},
            {"resource limits", helper},
            {"seccomp", helper && kernelHasSeccomp()},
            {"landlock", helper && landlockVersion() > 0}};
}

Result<DecodedImage> decodeImageFile(const std::string& path, const DecodeLimits& limits) try {
    const auto file = io::openPicture(path);
    if (!file) return file.error();
    io::logMissingWalls();
    if (const auto& program = io::decoderProgram()) {
        return io::decodeBehindWall(*program, file->number(), limits);
    }
    const auto bytes = io::readAll(file->number());
    if (!bytes) return bytes.error();
    return decodeImage(*bytes, limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

Result<DecodedImage> decodeForeignImage(ByteView bytes, const DecodeLimits& limits) try {
    io::logMissingWalls();
    const auto& program = io::decoderProgram();
    if (!program) return decodeImage(bytes, limits);
    const io::FileDescriptor file(::memfd_create("skarnel-input", MFD_CLOEXEC));
    if (file.number() < 0) return io::systemError(marked("The decoder: %1"));
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(file.number(), bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0)
            return io::systemError(marked("The picture cannot be handed to the decoder: %1"));
        written += static_cast<std::size_t>(count);
    }
    if (::lseek(file.number(), 0, SEEK_SET) != 0) return io::systemError(marked("The decoder: %1"));
    return io::decodeBehindWall(*program, file.number(), limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

Result<DecodedImage> decodeOwnImageFile(const std::string& path, const DecodeLimits& limits) try {
    const auto file = io::openPicture(path);
    if (!file) return file.error();
    const auto bytes = io::readAll(file->number());
    if (!bytes) return bytes.error();
    return decodeImage(*bytes, limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

}  // namespace skarnel
