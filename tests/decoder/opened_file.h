// Files for the decoder's wall, and what opening one behind it costs.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/read_file.h"

namespace skarnel::testing {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// A file without a name that holds these bytes.
inline io::FileDescriptor memoryFile(ByteView bytes) {
    io::FileDescriptor file(::memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(::pwrite(file.number(), bytes.data(), bytes.size(), 0),
              static_cast<ssize_t>(bytes.size()));
    return file;
}

struct Outcome {
    bool opened = false;
    double processorSeconds = 0;  // of the opening process and its helper
    long peakMegabytes = 0;       // of the larger of the two
};

/// Opens these bytes, followed by holes up to that size.
inline Outcome openWithHoles(ByteView head, std::uint64_t size) {
    const io::FileDescriptor file = memoryFile(head);
    EXPECT_EQ(::ftruncate(file.number(), static_cast<off_t>(size)), 0);
    const pid_t child = ::fork();
    if (child == 0) ::_exit(io::decodeBehindWall(DECODER_PROGRAM, file.number(), {}) ? 0 : 1);
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {status == 0, seconds(used.ru_utime) + seconds(used.ru_stime), used.ru_maxrss / 1024};
}

/// A bomb's bounds hold for whatever is small.
inline void expectLittleWork(const Outcome& outcome) {
    EXPECT_LT(outcome.processorSeconds, 2);
    EXPECT_LT(outcome.peakMegabytes, 300);
}

}  // namespace skarnel::testing
