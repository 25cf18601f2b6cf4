#include "imaging/io/encoder_wall.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/helper_process.h"
#include "imaging/io/picture_rows.h"
#include "imaging/io/read_file.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

const Error& died() {
    static const Error error{ErrorCode::Failed,
                             "The picture cannot be encoded: the encoder ended early"};
    return error;
}

/// False when the helper is gone, or reads nothing for as long as the socket waits.
bool sendAll(int socket, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t count = ::send(socket, bytes, size, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool sendPicture(int socket, const CGImage& image, std::string_view type,
                 const ImageProperties& properties) {
    ImageRows rows(image);
    const PictureRows::Shape& shape = rows.shape();
    const Bytes packed = packProperties(type, properties);
    const EncodeRequest request{shape.width, shape.height, shape.samples, shape.opaque ? 1 : 0,
                                packed.size()};
    Bytes head(sizeof request + packed.size());
    std::memcpy(head.data(), &request, sizeof request);
    std::copy(packed.begin(), packed.end(), head.begin() + sizeof request);
    if (!sendAll(socket, head.data(), head.size())) return false;
    const std::size_t rowBytes =
        static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.samples);
    for (int y = 0; y < shape.height; ++y) {
        if (!sendAll(socket, rows.next(), rowBytes)) return false;
    }
    return true;
}

/// The number of bytes read, fewer than `size` at the end of the pipe or of the patience.
std::size_t readUpTo(int pipe, void* target, std::size_t size, std::chrono::milliseconds patience) {
    auto* bytes = static_cast<std::uint8_t*>(target);
    std::size_t done = 0;
    while (done < size) {
        pollfd wait{pipe, POLLIN, 0};
        const int ready = ::poll(&wait, 1, static_cast<int>(patience.count()));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) break;
        const ssize_t count = ::read(pipe, bytes + done, size - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

/// Whether the helper has let go of its answer, as at its end.
bool hasEnded(int pipe) {
    pollfd wait{pipe, POLLIN, 0};
    return ::poll(&wait, 1, 0) > 0 && (wait.revents & POLLHUP) != 0;
}

/// No encoder makes a picture of noise much larger than its samples; what the properties say comes
/// on top.
std::uint64_t mostBytesFor(const CGImage& image, const ImageProperties& properties) {
    constexpr std::uint64_t kRest = std::uint64_t{1} << 20U;
    const auto pixels =
        static_cast<std::uint64_t>(image.width()) * static_cast<std::uint64_t>(image.height());
    const auto block = properties.find(kPropertyExifBlock);
    const auto* bytes = block == properties.end() ? nullptr : std::get_if<Bytes>(&block->second);
    return 8 * pixels + kRest + (bytes == nullptr ? 0 : bytes->size());
}

}  // namespace

std::optional<Result<Bytes>> readEncoded(int pipe, std::uint64_t mostBytes,
                                         std::chrono::milliseconds patience) {
    AnswerRecord record{};
    if (readUpTo(pipe, &record, sizeof record, patience) != sizeof record) return std::nullopt;
    std::uint64_t size = record.first;
    if (record.kind == RecordKind::Encoded) {
        size |= std::uint64_t{record.second} << 32U;
    } else if (record.kind != RecordKind::Failed) {
        return std::nullopt;
    }
    if (size > mostBytes) return std::nullopt;
    Bytes bytes(size);
    std::uint8_t more = 0;
    if (readUpTo(pipe, bytes.data(), size, patience) != size ||
        readUpTo(pipe, &more, 1, patience) != 0) {
        return std::nullopt;
    }
    if (record.kind == RecordKind::Failed) return answeredError(record, bytes);
    return bytes;
}

Result<Bytes> encodeBehindWall(const std::string& program, const CGImage& image,
                               std::string_view type, const ImageProperties& properties,
                               std::chrono::seconds patience) {
    std::array<int, 2> sockets{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
        return systemError(marked("The encoder: %1"));
    }
    FileDescriptor request(sockets[0]);
    FileDescriptor helperInput(sockets[1]);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return systemError(marked("The encoder: %1"));
    const FileDescriptor answer(ends[0]);
    FileDescriptor helperAnswer(ends[1]);
    const timeval wait{static_cast<time_t>(patience.count()), 0};
    ::setsockopt(request.number(), SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);

    const auto pixels = std::int64_t{image.width()} * image.height();
    std::string argument(kEncodeArgument);
    argument.append(std::to_string(pixels)).append(",").append(type);
    auto helper = HelperProcess::start(program, helperInput.number(), helperAnswer.number(),
                                       std::move(argument));
    helperInput = FileDescriptor();
    helperAnswer = FileDescriptor();
    if (!helper) return helper.error();
    // One that reads no further may have answered why.
    (void)sendPicture(request.number(), image, type, properties);
    request = FileDescriptor();
    auto received = readEncoded(answer.number(), mostBytesFor(image, properties), patience);
    const int status = received || hasEnded(answer.number()) ? helper->statusAtEnd() : -1;
    if (status == kNoWallsStatus) {
        return {ErrorCode::Failed, "The walls around the encoder cannot be raised"};
    }
    if (!received || status != 0) return died();
    return std::move(*received);
}

}  // namespace skarnel::io
