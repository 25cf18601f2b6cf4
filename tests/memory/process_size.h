// What this process holds.
#pragma once

#include <malloc.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

namespace skarnel::testing {

/// Bytes of memory; what is free but not given back is given back first, since it is no growth.
inline std::size_t residentBytes() {
    ::malloc_trim(0);
    std::ifstream statistics("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statistics >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

/// The most bytes of memory that the process has held, "self" or another one's number; 0 where the
/// system does not count that.
inline std::size_t mostBytesOf(const std::string& process) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024;
    }
    return 0;
}

/// The same of this process while `work` ran.
template <typename Work>
std::size_t mostBytesDuring(Work work) {
    ::malloc_trim(0);
    constexpr char kForgetTheMost = '5';
    std::ofstream("/proc/self/clear_refs") << kForgetTheMost;
    work();
    return mostBytesOf("self");
}

inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

/// Under a sanitizer freed memory is kept aside on purpose, and growth says nothing.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kMemoryIsMeasurable = false;
#else
inline constexpr bool kMemoryIsMeasurable = true;
#endif

}  // namespace skarnel::testing
