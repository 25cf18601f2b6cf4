#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "imaging/io/decoder_protocol.h"

using namespace skarnel;

namespace {

class FuzzSource : public io::AnswerSource {
  public:
    explicit FuzzSource(ByteView bytes) : left_(bytes) {}
    bool read(void* target, std::size_t size) override {
        if (size > left_.size()) return false;
        if (size > 0) std::memcpy(target, left_.data(), size);
        left_ = left_.subspan(size);
        return true;
    }
    /// What the ring holds stands behind its record.
    bool readFromRing(void* target, std::size_t size) override { return read(target, size); }
    bool isAtEnd() override { return left_.empty(); }

  private:
    ByteView left_;
};

}  // namespace

/// The bytes are a whole answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DecodeLimits limits{4096};
    FuzzSource source(ByteView(data, size));
    const auto received = io::receiveAnswer(source, limits);
    if (!received) return 0;
    const std::size_t pixels = static_cast<std::size_t>(received->image.width()) *
                               static_cast<std::size_t>(received->image.height());
    // Every pixel of a picture that was taken has been sent.
    if (pixels == 0 || pixels > 4096 || pixels * 4 > size || !source.isAtEnd()) std::abort();
    // What was understood is written down and understood alike.
    const auto again =
        io::unpackProperties(io::packProperties(received->type, received->properties));
    if (!again || again->type != received->type ||
        again->properties.size() != received->properties.size()) {
        std::abort();
    }
    return 0;
}
