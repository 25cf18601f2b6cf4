// What the decoder's helper sends: the rows of a picture, or an error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// The descriptors that the helper is started with.
inline constexpr int kPictureDescriptor = 3;  // the file to decode, read only
inline constexpr int kAnswerDescriptor = 4;   // the pipe for the answer, write only
inline constexpr int kRingDescriptor = 5;     // the ring's file, or none (see row_ring.h)

/// The helper's exit status where it has not even looked at the picture, for want of walls.
inline constexpr int kNoWallsStatus = 3;

/// The answer is a sequence of records, in the machine's own byte order, since both programs run
/// on it. Each is followed by the bytes that it announces:
///
///     Picture   width, height                    nothing
///     Rows      count, 0                         4 * width * count bytes, the next rows
///     RingRows  count, 0                         nothing: the next rows lie in the ring's next
///                                                slot, at most kRingSlotBytes
///     Done      size, 0                          type and properties; nothing may follow
///     Failed    size, ErrorCode                  message; nothing may follow
///
/// Picture comes first, then all rows from the top, then Done; Failed may come at any place.
/// Rows are copied to where the sender cannot reach them, so that nothing that has been looked at
/// can change.
enum class RecordKind : std::uint32_t {
    Picture = 0x534B4401,
    Rows = 0x534B4402,
    Done = 0x534B4403,
    Failed = 0x534B4404,
    Encoded = 0x534B4405,  // of encoder_protocol.h alone
    RingRows = 0x534B4406,
};
struct AnswerRecord {
    RecordKind kind{};
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

/// Type and properties as bytes, and back. Reading takes nothing on trust: lengths are checked
/// against what is there, and anything left over is an error (Damaged).
Bytes packProperties(std::string_view type, const ImageProperties& properties);
struct PackedProperties {
    std::string type;
    ImageProperties properties;
};
Result<PackedProperties> unpackProperties(ByteView bytes);

/// Follows the records of an answer and refuses each that does not belong where it stands, or that
/// announces more than it may.
class AnswerOrder {
  public:
    explicit AnswerOrder(const DecodeLimits& limits) : limits_(limits) {}

    /// The number of bytes that follow the record, or lie in the ring; Damaged, or TooLarge for a
    /// size above the limits. Never more bytes than the rows that are left, or 64 MB of text.
    Result<std::size_t> take(const AnswerRecord& record);

    int width() const { return width_; }         // 0 before the picture's record
    int height() const { return height_; }       // likewise
    int rowsTaken() const { return rows_; }      // those of the latest record included
    bool hasEnded() const { return hasEnded_; }  // by Done or by Failed

  private:
    DecodeLimits limits_;
    int width_ = 0;
    int height_ = 0;
    int rows_ = 0;
    bool hasEnded_ = false;
};

/// Where the bytes of an answer come from.
class AnswerSource {
  public:
    AnswerSource() = default;
    AnswerSource(const AnswerSource&) = delete;
    AnswerSource& operator=(const AnswerSource&) = delete;
    virtual ~AnswerSource() = default;

    /// Exactly `size` bytes; false when there are fewer.
    virtual bool read(void* target, std::size_t size) = 0;
    /// The first `size` bytes of the ring's next slot; false where there is no ring.
    virtual bool readFromRing(void* target, std::size_t size) = 0;
    /// Whether nothing is left, which may have to be waited for.
    virtual bool isAtEnd() = 0;
};

/// The error of a Failed record with its message, of which no more is kept than may stand on a
/// terminal.
Error answeredError(const AnswerRecord& record, ByteView message);

/// The picture or the error that a whole answer holds. Damaged when it ends early, goes on after
/// its end, breaks the order, or has a key of properties that no reader gives. Texts are as
/// plainText makes them, at most 1024 bytes each. Throws std::bad_alloc.
Result<DecodedImage> receiveAnswer(AnswerSource& source, const DecodeLimits& limits);

}  // namespace skarnel::io
