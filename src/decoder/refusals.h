// What the helper was refused. Codecs' libraries may do without what they got no memory for, and
// say so nowhere, or wait for ever for a thread that could not be made. Nothing of it works under a
// sanitizer, which has a malloc and threads of its own, nor with another C library than glibc.
#pragma once

namespace skarnel {

/// Whether any request for memory that the program or a library of it made from malloc and its like
/// since the start was refused.
bool wasRefusedMemory();

/// From now on a thread that cannot be made ends the process with 0, after `lastWords`.
void endWithoutThreads(void (*lastWords)());

}  // namespace skarnel
