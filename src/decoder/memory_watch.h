// Codecs' libraries may do without what they got no memory for, and say so nowhere.
#pragma once

namespace skarnel {

/// Whether any request for memory that the program or a library of it made from malloc and its like
/// since the start was refused. Always false under a sanitizer, which has a malloc of its own, and
/// with another C library than glibc.
bool wasRefusedMemory();

}  // namespace skarnel
