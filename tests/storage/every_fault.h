// Whatever writes a file, tried with each of its system calls failing in each way that it may meet,
// once and from then on.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>

#include "storage/fake_file_systems.h"
#include "util/log/system_error.h"

namespace skarnel::test {

/// What befalls the system calls of one try.
struct Fault {
    int call;  // from 0
    int error;
    Repeat repeat;
};

inline std::string nameOf(const Fault& fault) {
    std::string error = describeError(fault.error);
    if (fault.error == kShortWrite) error = "short write";
    if (fault.error == kShortWriteThenNoSpace) error = "short write, then no space";
    return "call " + std::to_string(fault.call) + ", " + error +
           (fault.repeat == Repeat::Once ? ", once" : ", from then on");
}

/// How many system calls `write(fileSystem)` makes on a system where nothing fails but what it
/// lacks.
template <typename Write>
int callsOf(Write write, const std::map<std::string, int>& lacking = {}) {
    FaultyFileSystem healthy(-1, 0, Repeat::Once, lacking);
    write(healthy);
    return static_cast<int>(healthy.calls().size());
}

/// Calls `check(fault)` for each way in which one of so many calls may fail.
template <typename Check>
void forEachFault(int calls, Check check) {
    for (const int error :
         {ENOSPC, EIO, EDQUOT, EACCES, EINTR, EROFS, kShortWrite, kShortWriteThenNoSpace}) {
        for (const Repeat repeat : {Repeat::Once, Repeat::FromThenOn}) {
            for (int call = 0; call < calls; ++call) {
                const Fault fault{call, error, repeat};
                SCOPED_TRACE(nameOf(fault));
                check(fault);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace skarnel::test
