#include "imaging/io/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/read_file.h"
#include "util/log/message.h"
#include "util/log/system_error.h"

namespace skarnel::io {
namespace {

constexpr int kMostMillisecondsAfterAnswer = 10'000;

/// Descriptors that are put in the helper's places must not stand in those places already.
FileDescriptor duplicateHigh(int descriptor) {
    return FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, 16));
}

class SpawnActions {
  public:
    SpawnActions() { posix_spawn_file_actions_init(&actions_); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    posix_spawn_file_actions_t* get() { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

Error systemError(const char* what) {
    return {errno == ENOMEM ? ErrorCode::OutOfMemory : ErrorCode::Failed,
            filled(what, {describeError(errno)})};
}

Result<HelperProcess> HelperProcess::start(const std::string& program, int input, int answer,
                                           std::string argument, int ring) {
    const FileDescriptor highInput = duplicateHigh(input);
    const FileDescriptor highAnswer = duplicateHigh(answer);
    const FileDescriptor highRing = duplicateHigh(ring);
    if (highInput.number() < 0 || highAnswer.number() < 0)
        return systemError(marked("The helper program: %1"));
    SpawnActions actions;
    for (const int standard : {0, 1, 2}) {
        posix_spawn_file_actions_addopen(actions.get(), standard, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(actions.get(), highInput.number(), kPictureDescriptor);
    posix_spawn_file_actions_adddup2(actions.get(), highAnswer.number(), kAnswerDescriptor);
    if (highRing.number() >= 0) {
        posix_spawn_file_actions_adddup2(actions.get(), highRing.number(), kRingDescriptor);
    } else {
        posix_spawn_file_actions_addclose(actions.get(), kRingDescriptor);
    }
    std::string name = program;
    std::array<char*, 3> arguments = {name.data(), argument.data(), nullptr};
    std::array<char*, 1> environment = {nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, program.c_str(), actions.get(), nullptr, arguments.data(),
                                  environment.data());
    if (error != 0) {
        errno = error;
        return systemError(marked("The helper program cannot be started: %1"));
    }
    return HelperProcess(child);
}

HelperProcess::~HelperProcess() {
    if (child_ < 0) return;
    ::kill(child_, SIGKILL);
    (void)wait();
}

int HelperProcess::statusAtEnd() {
    const FileDescriptor handle(
        static_cast<int>(::syscall(SYS_pidfd_open, static_cast<long>(child_), 0L)));
    if (handle.number() >= 0) {
        pollfd ended{handle.number(), POLLIN, 0};
        int ready = 0;
        do {
            ready = ::poll(&ended, 1, kMostMillisecondsAfterAnswer);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0) ::kill(child_, SIGKILL);
    }
    return wait();
}

int HelperProcess::wait() {
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0) {
        if (errno != EINTR) break;
    }
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace skarnel::io
