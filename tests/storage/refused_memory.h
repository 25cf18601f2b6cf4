// Takes the place of the program's memory, so that a chosen request can be refused.
#pragma once

namespace skarnel::test {

/// From now on the request number k (from 0) throws std::bad_alloc, and with `onwards` all later
/// ones too.
void refuseMemory(long k, bool onwards);

/// Ends that; true when there were no more than k requests.
bool allowMemory();

}  // namespace skarnel::test
