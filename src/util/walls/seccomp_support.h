// Whether the kernel can take system calls away from a process.
#pragma once

namespace skarnel {

/// True where a filter may end a process at a system call. False on kernels without such filters
/// and inside sandboxes that keep them for themselves.
bool kernelHasSeccomp();

}  // namespace skarnel
