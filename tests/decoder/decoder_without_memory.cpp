// Stands in the helper's place, without its cell: decodes descriptor 3 while one request for memory
// is refused. Which one stands in the place of the millions of the number of pixels: 0 for none,
// the answer then being an error whose message is the number of requests, else 1 + 2 * request, one
// more where all later requests are refused too.
#include <charconv>
#include <cstring>

#include "decoder/answer.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/read_file.h"
#include "memory/failing_memory.h"

using namespace skarnel;

namespace {

int decode(long order, const DecodeLimits& limits) {
    const auto bytes = io::readAll(io::kPictureDescriptor);
    if (!bytes) return 1;
    static_cast<void>(io::prepareToDecode(*bytes));
    const auto refusal =
        (order - 1) % 2 == 0 ? testing::Refusal::Once : testing::Refusal::FromThenOn;
    testing::refuseMemory(order == 0 ? -1 : (order - 1) / 2, refusal);
    if (order != 0)
        return decodeIntoAnswer(*bytes, limits, nullptr, testing::wasRefusedMemory) ? 0 : 1;
    static_cast<void>(decodeImage(*bytes, limits));
    const long requests = testing::allowMemory();
    return sendError({ErrorCode::Failed, std::to_string(requests)}) ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    constexpr long kPlace = 1'000'000;
    long number = 0;
    if (count != 2) return 2;
    std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), number);
    return decode(number / kPlace, {number % kPlace});
}
