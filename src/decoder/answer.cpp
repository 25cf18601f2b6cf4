#include "decoder/answer.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/read_file.h"
#include "imaging/io/upright_picture.h"

namespace skarnel {
namespace {

using io::RecordKind;

bool sendBytes(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t count = ::write(io::kAnswerDescriptor, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool send(RecordKind kind, std::size_t first, std::size_t second, const void* data = nullptr,
          std::size_t size = 0) {
    const io::AnswerRecord record{kind, static_cast<std::uint32_t>(first),
                                  static_cast<std::uint32_t>(second)};
    return sendBytes(&record, sizeof record) && sendBytes(data, size);
}

/// Sends the next rows of a picture, decoded straight into the ring where they fit there. The
/// number of rows, or 0 when sending failed.
Result<int> sendNextRows(io::UprightPicture& picture, io::RowRing* ring) {
    std::uint8_t* slot = ring != nullptr ? ring->freeSlot() : nullptr;
    const auto rows = picture.next({slot, slot != nullptr ? io::kRingSlotBytes : 0});
    if (!rows) return rows.error();
    const auto count = static_cast<std::size_t>(rows->height);
    const std::size_t size = static_cast<std::size_t>(rows->strideBytes) * count;
    if (slot == nullptr || size > io::kRingSlotBytes) {
        return send(RecordKind::Rows, count, 0, rows->bytes, size) ? rows->height : 0;
    }
    if (rows->bytes != slot) std::memcpy(slot, rows->bytes, size);
    ring->filled();
    return send(RecordKind::RingRows, count, 0) ? rows->height : 0;
}

/// What ends the answer well; an Error to be sent instead, or false inside when sending failed.
Result<bool> sendPicture(io::UprightPicture& picture, io::RowRing* ring,
                         WasRefusedMemory wasRefused) {
    const int height = picture.height();
    if (!send(RecordKind::Picture, static_cast<std::size_t>(picture.width()),
              static_cast<std::size_t>(height))) {
        return false;
    }
    for (int sent = 0; sent < height;) {
        const auto rows = sendNextRows(picture, ring);
        if (!rows) return rows.error();
        if (*rows == 0) return false;
        sent += *rows;
    }
    const auto properties = picture.finish();
    if (!properties) return properties.error();
    const Bytes text = io::packProperties(picture.type(), *properties);
    if (wasRefused != nullptr && wasRefused()) return {ErrorCode::OutOfMemory, io::kNoMemory};
    return send(RecordKind::Done, text.size(), 0, text.data(), text.size());
}

Result<bool> decodeAndSend(ByteView bytes, const DecodeLimits& limits, io::RowRing* ring,
                           WasRefusedMemory wasRefused) try {
    auto picture = io::openUpright(bytes, limits);
    if (!picture) return picture.error();
    return sendPicture(*picture, ring, wasRefused);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
} catch (const std::length_error&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

}  // namespace

bool sendError(const Error& error) {
    return send(RecordKind::Failed, error.message.size(), static_cast<std::size_t>(error.code),
                error.message.data(), error.message.size());
}

bool sendEncoded(ByteView file) {
    return send(RecordKind::Encoded, file.size() & UINT32_MAX, file.size() >> 32U, file.data(),
                file.size());
}

bool decodeIntoAnswer(ByteView bytes, const DecodeLimits& limits, io::RowRing* ring,
                      WasRefusedMemory wasRefused) {
    const auto sent = decodeAndSend(bytes, limits, ring, wasRefused);
    return sent ? *sent : sendError(sent.error());
}

}  // namespace skarnel
