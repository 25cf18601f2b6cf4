// Stands in the helper's place, without its cell: ORDER COUNTFILE encode,PIXELS,TYPE. Encodes
// while one request for memory is refused: none for order 0, which writes the number of requests
// to the file, else order = 1 + 2 * request, one more where all later ones are refused too.
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "decoder/encode_job.h"
#include "imaging/io/late_codec.h"
#include "memory/failing_memory.h"

using namespace skarnel;

int main(int count, char** arguments) {
    if (count != 4) return 2;
    const long order = std::atol(arguments[1]);
    const std::string_view job = arguments[3];
    io::prepareToEncode(job.substr(job.rfind(',') + 1));
    const auto refusal =
        (order - 1) % 2 == 0 ? testing::Refusal::Once : testing::Refusal::FromThenOn;
    testing::refuseMemory(order == 0 ? -1 : (order - 1) / 2, refusal);
    const bool sent = encodeIntoAnswer();
    const long requests = testing::allowMemory();
    if (order == 0) std::ofstream(arguments[2]) << requests;
    return sent ? 0 : 1;
}
