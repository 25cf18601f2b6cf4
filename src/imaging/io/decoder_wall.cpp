#include "imaging/io/decoder_wall.h"

#include <fcntl.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/read_file.h"
#include "util/log/system_log.h"
#include "util/walls/landlock.h"

namespace skarnel {
namespace io {
namespace {

Error systemError(const char* what) {
    return {errno == ENOMEM ? ErrorCode::OutOfMemory : ErrorCode::Failed,
            std::string(what) + ": " + std::strerror(errno)};
}

const Error& died() {
    static const Error error{ErrorCode::Damaged, "The picture cannot be decoded"};
    return error;
}

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

/// Starts the helper with nothing but its two descriptors and an empty environment.
Result<pid_t> startHelper(const std::string& program, int picture, int answer,
                          const DecodeLimits& limits) {
    const FileDescriptor highPicture = duplicateHigh(picture);
    const FileDescriptor highAnswer = duplicateHigh(answer);
    if (highPicture.number() < 0 || highAnswer.number() < 0) return systemError("The decoder");
    SpawnActions actions;
    for (const int standard : {0, 1, 2}) {
        posix_spawn_file_actions_addopen(actions.get(), standard, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(actions.get(), highPicture.number(), kPictureDescriptor);
    posix_spawn_file_actions_adddup2(actions.get(), highAnswer.number(), kAnswerDescriptor);
    std::string name = program;
    std::string maxPixels = std::to_string(limits.maxPixels);
    std::array<char*, 3> arguments = {name.data(), maxPixels.data(), nullptr};
    std::array<char*, 1> environment = {nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, program.c_str(), actions.get(), nullptr, arguments.data(),
                                  environment.data());
    if (error != 0) {
        errno = error;
        return systemError("The decoder cannot be started");
    }
    return child;
}

/// The helper bounds its processor time itself; this bounds a helper that sleeps.
constexpr int kMaxWaitMilliseconds = 180'000;

/// True when the helper ended by itself with status 0.
bool waitForHelper(pid_t child) {
    const FileDescriptor handle(
        static_cast<int>(::syscall(SYS_pidfd_open, static_cast<long>(child), 0L)));
    if (handle.number() >= 0) {
        pollfd wait{handle.number(), POLLIN, 0};
        int ready = 0;
        do {
            ready = ::poll(&wait, 1, kMaxWaitMilliseconds);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0) ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Result<Bytes> readText(int answer, const AnswerHeader& header) {
    Bytes text(static_cast<std::size_t>(header.textBytes));
    const ssize_t count =
        ::pread(answer, text.data(), text.size(), static_cast<off_t>(header.textOffset));
    if (count < 0 || static_cast<std::uint64_t>(count) != header.textBytes) return died();
    return text;
}

/// A private view of the pixels that lives as long as any copy of the picture. The pages are
/// mapped at once: one fault for each of them would cost more than decoding a small picture.
Result<CGImage> mapPixels(int answer, const AnswerHeader& header) {
    const std::size_t size = std::size_t{4} * header.width * header.height;
    void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, answer,
                           static_cast<off_t>(header.pixelOffset));
    if (address == MAP_FAILED) return systemError("The decoded picture cannot be mapped");
    const std::shared_ptr<const std::uint8_t> bytes(
        static_cast<const std::uint8_t*>(address),
        [size](const std::uint8_t* mapped) { ::munmap(const_cast<std::uint8_t*>(mapped), size); });
    auto image = CGImage::share(bytes, static_cast<int>(header.width),
                                static_cast<int>(header.height), std::size_t{4} * header.width);
    if (!image) return died();
    return *std::move(image);
}

Result<DecodedImage> takeAnswer(int answer, const DecodeLimits& limits) {
    // From here on nobody can change the file, whatever became of the helper.
    if (::fcntl(answer, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) !=
        0) {
        return died();
    }
    struct stat status {};
    AnswerHeader header;
    if (::fstat(answer, &status) != 0 ||
        ::pread(answer, &header, sizeof header, 0) != static_cast<ssize_t>(sizeof header)) {
        return died();
    }
    if (auto checked = checkAnswer(header, static_cast<std::uint64_t>(status.st_size), limits);
        !checked) {
        return checked.error();
    }
    const auto text = readText(answer, header);
    if (!text) return text.error();
    if (header.isPicture == 0) {
        const auto code = header.errorCode <= static_cast<std::uint32_t>(ErrorCode::Failed)
                              ? static_cast<ErrorCode>(header.errorCode)
                              : ErrorCode::Failed;
        return {code, std::string(text->begin(), text->end())};
    }
    auto packed = unpackProperties(*text);
    if (!packed) return packed.error();
    auto image = mapPixels(answer, header);
    if (!image) return image.error();
    return DecodedImage{*std::move(image), std::move(packed->properties), std::move(packed->type)};
}

std::optional<std::string> findDecoderProgram() {
#ifdef SKARNEL_WITHOUT_CELL
    return std::nullopt;
#endif
    std::array<char, 4096> self{};
    const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (length <= 0) return std::nullopt;
    const std::string path(self.data(), static_cast<std::size_t>(length));
    const std::string folder = path.substr(0, path.find_last_of('/'));
    for (const std::string& candidate :
         {folder + "/skarnel-decode", folder + "/../libexec/skarnel/skarnel-decode",
          folder + "/../lib/skarnel/skarnel-decode"}) {
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return std::nullopt;
}

bool kernelHasSeccomp() {
    std::uint32_t action = SECCOMP_RET_KILL_PROCESS;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

/// Said once: a wall that is missing stays missing.
void logMissingWalls() {
#ifdef SKARNEL_WITHOUT_CELL
    return;
#endif
    static std::once_flag once;
    std::call_once(once, [] {
        for (const DecoderWall& wall : decoderWalls()) {
            if (!wall.stands) {
                systemLogFormat("Pictures are decoded without this wall: %s", wall.name.c_str());
            }
        }
    });
}

}  // namespace

const std::optional<std::string>& decoderProgram() {
    static const std::optional<std::string> program = findDecoderProgram();
    return program;
}

Result<DecodedImage> decodeBehindWall(const std::string& program, int descriptor,
                                      const DecodeLimits& limits) {
    const FileDescriptor answer(::memfd_create("skarnel-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (answer.number() < 0) return systemError("The decoder");
    const auto child = startHelper(program, descriptor, answer.number(), limits);
    if (!child) return child.error();
    if (!waitForHelper(*child)) return died();
    return takeAnswer(answer.number(), limits);
}

}  // namespace io

std::vector<DecoderWall> decoderWalls() {
    const bool helper = io::decoderProgram().has_value();
    return {{"helper program", helper},
            {"no new privileges", helper},
            {"resource limits", helper},
            {"seccomp", helper && io::kernelHasSeccomp()},
            {"landlock", helper && landlockVersion() > 0}};
}

Result<DecodedImage> decodeImageFile(const std::string& path, const DecodeLimits& limits) try {
    const auto file = io::openPicture(path);
    if (!file) return file.error();
    io::logMissingWalls();
    if (const auto& program = io::decoderProgram()) {
        return io::decodeBehindWall(*program, file->number(), limits);
    }
    const auto bytes = io::readAll(file->number());
    if (!bytes) return bytes.error();
    return decodeImage(*bytes, limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

Result<DecodedImage> decodeForeignImage(ByteView bytes, const DecodeLimits& limits) try {
    io::logMissingWalls();
    const auto& program = io::decoderProgram();
    if (!program) return decodeImage(bytes, limits);
    const io::FileDescriptor file(::memfd_create("skarnel-input", MFD_CLOEXEC));
    if (file.number() < 0) return io::systemError("The decoder");
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(file.number(), bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return io::systemError("The picture cannot be handed to the decoder");
        written += static_cast<std::size_t>(count);
    }
    if (::lseek(file.number(), 0, SEEK_SET) != 0) return io::systemError("The decoder");
    return io::decodeBehindWall(*program, file.number(), limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

Result<DecodedImage> decodeOwnImageFile(const std::string& path, const DecodeLimits& limits) try {
    const auto file = io::openPicture(path);
    if (!file) return file.error();
    const auto bytes = io::readAll(file->number());
    if (!bytes) return bytes.error();
    return decodeImage(*bytes, limits);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

}  // namespace skarnel
