#include "util/walls/seccomp_support.h"

#include <linux/seccomp.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace skarnel {

bool kernelHasSeccomp() {
    std::uint32_t action = SECCOMP_RET_KILL_PROCESS;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

}  // namespace skarnel
