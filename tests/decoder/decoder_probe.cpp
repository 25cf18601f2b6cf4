// decoder_probe ACT: locks itself into the decoder's cell and then tries one forbidden act. Exits
// with 0 when the act succeeded, 10 when it was refused; a cell that kills ends it by a signal.
// The act "nothing" does only what a decoder may. `FREE ACT` tries the act without the cell, to
// show that it could succeed at all; `MANY ACT` tries it in the cell of a codec with threads;
// `BRIEF ACT` in one that has 300 milliseconds instead of a second; `OUTER ACT` within the walls
// that stand where the kernel has no seccomp.
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <string>

#include "decoder/cell.h"

namespace {

constexpr int kPicture = 3;
constexpr int kAnswer = 4;

bool nothing() {
    char byte = 0;
    const bool canRead = ::read(kPicture, &byte, 1) >= 0;
    const bool canWrite = ::write(kAnswer, &byte, 1) == 1;
    void* memory =
        ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return canRead && canWrite && memory != MAP_FAILED;
}

/// Says that it is there and sleeps until it is killed.
bool waitForEver() {
    std::uint32_t word = 0;
    if (::write(kAnswer, "w", 1) != 1) return false;
    for (;;) ::syscall(SYS_futex, &word, FUTEX_WAIT, 0, nullptr, nullptr, 0);
}

bool openFile() {
    return ::open("/etc/passwd", O_RDONLY) >= 0;
}
bool openForWriting() {
    return ::open("/dev/null", O_WRONLY) >= 0;
}
bool listFolder() {
    return ::open("/", O_RDONLY | O_DIRECTORY) >= 0;
}
bool statFile() {
    struct stat status {};
    return ::stat("/etc/passwd", &status) == 0;
}
bool makeFolder() {
    const std::string path = "/tmp/probe" + std::to_string(::getpid());
    return ::mkdir(path.c_str(), 0700) == 0 && ::rmdir(path.c_str()) == 0;
}
bool removeFile() {
    return ::unlink("/tmp/no-such-file-of-the-probe") == 0 || errno == ENOENT;
}
bool openSocket() {
    return ::socket(AF_INET, SOCK_STREAM, 0) >= 0;
}
bool openLocalSocket() {
    return ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0;
}
bool execute() {
    char name[] = "/bin/true";
    char* arguments[] = {name, nullptr};
    ::execv(name, arguments);
    return false;
}
bool forkProcess() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    return child > 0;
}
bool startThread() {
    // With a stack of its own, unlike a bare clone, so that only the cell can end it badly.
    pthread_t thread{};
    const auto nothing = [](void*) -> void* { return nullptr; };
    return ::pthread_create(&thread, nullptr, nothing, nullptr) == 0 &&
           ::pthread_join(thread, nullptr) == 0;
}
// The C library may look how many processors and how much memory there are for it.
bool freeTheMemoryOfThreads() {
    constexpr std::size_t kThreads = 20;
    static pthread_barrier_t all{};
    if (::pthread_barrier_init(&all, nullptr, kThreads) != 0) return false;
    const auto takeAndFree = [](void*) -> void* {
        std::array<void*, 20> blocks{};
        for (void*& block : blocks) block = ::calloc(1, 60'000);
        ::pthread_barrier_wait(&all);
        for (std::size_t i = blocks.size(); i > 0; --i) ::free(blocks[i - 1]);
        return nullptr;
    };
    std::array<pthread_t, kThreads> threads{};
    for (pthread_t& thread : threads) {
        if (::pthread_create(&thread, nullptr, takeAndFree, nullptr) != 0) return false;
    }
    bool ended = true;
    for (const pthread_t thread : threads) ended = ::pthread_join(thread, nullptr) == 0 && ended;
    return ended;
}
bool killParent() {
    return ::kill(::getppid(), 0) == 0;
}
bool traceParent() {
    return ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
}
bool readParentMemory() {
    char target = 0;
    char source = 1;
    iovec local{&target, 1};
    iovec remote{&source, 1};
    return ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0) == 1;
}
bool writeToStandardOutput() {
    return ::write(1, "", 0) == 0;
}
bool writeToPicture() {
    return ::pwrite(kPicture, "x", 1, 0) == 1;
}
bool readAnswer() {
    char byte = 0;
    return ::read(kAnswer, &byte, 0) >= 0;  // nothing, so that it need not wait
}
bool mapPicture() {
    return ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE, kPicture, 0) != MAP_FAILED;
}
bool takeTwoGigabytes() {
    return ::mmap(nullptr, std::size_t{2} << 30U, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) != MAP_FAILED;
}
bool spin() {
    timespec used{};
    do {
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    } while (used.tv_sec < 4);
    return true;
}
bool spinInEightThreads() {
    for (int i = 1; i < 8; ++i) {
        pthread_t thread{};
        const auto spinOn = [](void*) -> void* {
            spin();
            return nullptr;
        };
        if (::pthread_create(&thread, nullptr, spinOn, nullptr) != 0) return false;
    }
    return spin();
}
bool setATimer() {
    timer_t timer{};
    return ::timer_create(CLOCK_PROCESS_CPUTIME_ID, nullptr, &timer) == 0;
}
// The kernel numbers a process's timers from 0.
bool putOffATimer() {
    const itimerspec never{};
    return ::syscall(SYS_timer_settime, 0, 0, &never, nullptr) == 0 || errno == EINVAL;
}
bool removeATimer() {
    return ::syscall(SYS_timer_delete, 0) == 0 || errno == EINVAL;
}
bool openInAFreePlace() {
    ::close(2);  // no bound on descriptors stands in the way
    return ::open("/etc/passwd", O_RDONLY) >= 0;
}
bool gainPrivileges() {
    return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0;
}
bool beTraced() {
    return ::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) != 0;
}
bool outliveItsParent() {
    int signal = 0;
    return ::prctl(PR_GET_PDEATHSIG, &signal, 0, 0, 0) == 0 && signal != SIGKILL;
}
bool handOverPages() {
    // Pages in a pipe could still be written to by who put them there.
    static char page[4096];
    iovec pages{page, sizeof page};
    return ::vmsplice(kAnswer, &pages, 1, 0) > 0;
}
bool executableMemory() {
    return ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS,
                  -1, 0) != MAP_FAILED;
}
bool makeExecutable() {
    void* memory =
        ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return ::mprotect(memory, 4096, PROT_READ | PROT_EXEC) == 0;
}
bool duplicateDescriptor() {
    return ::dup(kPicture) >= 0;
}
bool raiseLimits() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_AS, &limit) == 0;
}
bool makeMemoryFile() {
    return ::memfd_create("probe", 0) >= 0;
}
bool changeRoot() {
    return ::chdir("/") == 0;
}
bool askForNames() {
    return ::syscall(SYS_io_uring_setup, 1, nullptr) != -1 || errno == EFAULT;
}
bool useInheritedDescriptor() {
    // Stands in a third descriptor that the parent forgot to close.
    char byte = 0;
    return ::read(9, &byte, 1) >= 0;
}

const std::map<std::string, bool (*)()>& acts() {
    static const std::map<std::string, bool (*)()> all = {
        {"nothing", nothing},
        {"wait for ever", waitForEver},
        {"open a file", openFile},
        {"open a file for writing", openForWriting},
        {"list a folder", listFolder},
        {"ask for a file's status", statFile},
        {"make a folder", makeFolder},
        {"remove a file", removeFile},
        {"open a network socket", openSocket},
        {"open a local socket", openLocalSocket},
        {"execute a program", execute},
        {"fork", forkProcess},
        {"signal its parent", killParent},
        {"trace", traceParent},
        {"read a process's memory", readParentMemory},
        {"write to standard output", writeToStandardOutput},
        {"write to the picture", writeToPicture},
        {"read the answer's descriptor", readAnswer},
        {"hand over pages", handOverPages},
        {"map the picture", mapPicture},
        {"take two gigabytes", takeTwoGigabytes},
        {"spin for four seconds", spin},
        {"open a file in a free place", openInAFreePlace},
        {"gain privileges", gainPrivileges},
        {"be traced", beTraced},
        {"outlive its parent", outliveItsParent},
        {"have executable memory", executableMemory},
        {"make memory executable", makeExecutable},
        {"duplicate a descriptor", duplicateDescriptor},
        {"ask for limits", raiseLimits},
        {"set a timer", setATimer},
        {"put off a timer", putOffATimer},
        {"remove a timer", removeATimer},
        {"make a memory file", makeMemoryFile},
        {"change the folder", changeRoot},
        {"set up kernel queues", askForNames},
        {"use an inherited descriptor", useInheritedDescriptor},
        {"spin in eight threads", spinInEightThreads},
        {"free the memory of threads", freeTheMemoryOfThreads},
        {"start a thread", startThread}};
    return all;
}

}  // namespace

int main(int count, char** arguments) {
    const bool free = count == 3 && std::strcmp(arguments[1], "FREE") == 0;
    const bool many = count == 3 && std::strcmp(arguments[1], "MANY") == 0;
    const bool brief = count == 3 && std::strcmp(arguments[1], "BRIEF") == 0;
    const bool outer = count == 3 && std::strcmp(arguments[1], "OUTER") == 0;
    if (count != 2 && !free && !many && !brief && !outer) return 2;
    const auto act = acts().find(arguments[count - 1]);
    if (act == acts().end()) return 2;
    if (!free) {
        using Threads = skarnel::CellLimits::Threads;
        const skarnel::CellLimits limits{1U << 30U, std::chrono::milliseconds(brief ? 300 : 1000),
                                         many || brief ? Threads::Many : Threads::One};
        const auto raise = outer ? skarnel::raiseOuterWalls : skarnel::lockIn;
        if (!raise(kPicture, kAnswer, limits)) return 3;
    }
    return act->second() ? 0 : 10;
}
