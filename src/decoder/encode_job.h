// The helper's other work: encoding with the libraries that may end their process.
#pragma once

#include <string_view>

namespace skarnel {

/// Does what `job` ("PIXELS,TYPE") says with the request on descriptor 3 and answers through the
/// pipe on descriptor 4, locked into a cell; the exit status of the helper.
int runEncodeJob(std::string_view job);

/// The part of it inside the cell: reads the request and answers it. False when the answer cannot
/// be sent.
bool encodeIntoAnswer();

}  // namespace skarnel
