#include "qt/page/page_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "qt/page/page_messages.h"
#include "util/log/message.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

// Above the descriptor that the process gets, which must not be its own source.
constexpr int kLeastDescriptor = 16;

Error cannotStart(int error) {
    return {error == ENOMEM ? ErrorCode::OutOfMemory : ErrorCode::Failed,
            filled("The page renderer cannot be started: %1", {describeError(error)})};
}

/// The error's number, or 0. A group of its own ends as one, and the terminal's keys, which are our
/// own to handle, do not reach it.
int spawn(const std::string& program, RendererPatience patience, int itsEnd, pid_t& process) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO})
        posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, itsEnd, kPageLineDescriptor);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    std::string name = program;
    std::string start = std::to_string(patience.start);
    std::string load = std::to_string(patience.load);
    std::array<char*, 4> arguments = {name.data(), start.data(), load.data(), nullptr};
    const int error =
        posix_spawn(&process, program.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

}  // namespace

Result<std::unique_ptr<PageProcess>> PageProcess::start(const std::string& program,
                                                        RendererPatience patience) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return cannotStart(errno);
    const int itsEnd = ::fcntl(ends[1], F_DUPFD_CLOEXEC, kLeastDescriptor);
    int error = errno;
    pid_t process = -1;
    if (itsEnd >= 0) {
        error = spawn(program, patience, itsEnd, process);
        ::close(itsEnd);
    }
    ::close(ends[1]);
    if (process <= 0 || error != 0) {
        ::close(ends[0]);
        return cannotStart(error);
    }
    return std::unique_ptr<PageProcess>(new PageProcess(process, ends[0]));
}

PageProcess::~PageProcess() {
    ::kill(-process_, SIGKILL);
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    ::close(line_);
}

}  // namespace skarnel
