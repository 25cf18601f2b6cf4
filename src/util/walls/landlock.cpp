#include "util/walls/landlock.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "util/log/system_error.h"

namespace skarnel {
namespace {

// Rights that came after the header of the oldest system that we build on.
constexpr std::uint64_t kRefer = 1ULL << 13;     // version 2: rename and link between folders
constexpr std::uint64_t kTruncate = 1ULL << 14;  // version 3

constexpr std::uint64_t kExecuteRights = LANDLOCK_ACCESS_FS_EXECUTE;
constexpr std::uint64_t kReadRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kChangeRights =
    LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
    LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
    LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
    LANDLOCK_ACCESS_FS_MAKE_SYM | kRefer | kTruncate;
// The rights that mean something for a file that is no folder.
constexpr std::uint64_t kFileRights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                      LANDLOCK_ACCESS_FS_READ_FILE | kTruncate;

std::uint64_t rightsOf(FileAccess access, int version) {
    std::uint64_t rights = 0;
    if (includes(access, FileAccess::Execute)) rights |= kExecuteRights;
    if (includes(access, FileAccess::Read)) rights |= kReadRights;
    if (includes(access, FileAccess::Change)) rights |= kChangeRights;
    if (version < 2) rights &= ~kRefer;
    if (version < 3) rights &= ~kTruncate;
    return rights;
}

Error systemError(const char* act) {
    return {ErrorCode::Failed, std::string(act) + ": " + describeError(errno)};
}

class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return value_; }

  private:
    int value_;
};

Result<void> addGrant(int rules, const FileGrant& grant, std::uint64_t handled, int version) {
    const Descriptor place(::open(grant.path.c_str(), O_PATH | O_CLOEXEC));
    if (place.get() < 0) return {};
    struct stat status {};
    if (::fstat(place.get(), &status) != 0) return {};
    std::uint64_t rights = rightsOf(grant.access, version) & handled;
    if (!S_ISDIR(status.st_mode)) rights &= kFileRights;
    if (rights == 0) return {};
    landlock_path_beneath_attr beneath{};
    beneath.allowed_access = rights;
    beneath.parent_fd = place.get();
    if (::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) != 0) {
        return systemError("landlock_add_rule");
    }
    return {};
}

}  // namespace

int landlockVersion() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? static_cast<int>(version) : 0;
}

Result<void> restrictFileAccess(FileAccess removed, const std::vector<FileGrant>& grants) {
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return systemError("prctl");
    const int version = landlockVersion();
    if (version == 0) return {ErrorCode::Unsupported, "the kernel has no Landlock"};

    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = rightsOf(removed, version);
    const Descriptor rules(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes,
                                                      sizeof attributes.handled_access_fs, 0)));
    if (rules.get() < 0) return systemError("landlock_create_ruleset");
    for (const FileGrant& grant : grants) {
        if (auto added = addGrant(rules.get(), grant, attributes.handled_access_fs, version);
            !added) {
            return added;
        }
    }
    if (::syscall(SYS_landlock_restrict_self, rules.get(), 0) != 0) {
        return systemError("landlock_restrict_self");
    }
    return {};
}

}  // namespace skarnel
