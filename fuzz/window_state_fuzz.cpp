// The window's own file, which may be damaged or from a later version: looks, recent files, places.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>

#include "input.h"
#include "qt/user_presets.h"
#include "qt/window_state.h"
#include "util/log/system_log.h"

using namespace skarnel;

namespace {

constexpr SettingNumbers kSome{1, 2, 3, 4, 5, 6, 7};

/// A file that has these bytes and can be opened by name.
class NamedMemory {
  public:
    NamedMemory(const std::uint8_t* bytes, std::size_t size)
        : descriptor_(::memfd_create("window", MFD_CLOEXEC)) {
        fuzz::demand(::write(descriptor_, bytes, size) == static_cast<ssize_t>(size));
    }
    NamedMemory(const NamedMemory&) = delete;
    NamedMemory& operator=(const NamedMemory&) = delete;
    ~NamedMemory() { ::close(descriptor_); }
    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(descriptor_); }

  private:
    int descriptor_;
};

void demandDistinct(const UserPresets& looks) {
    const auto& all = looks.all();
    for (qsizetype i = 0; i < all.size(); ++i) {
        fuzz::demand(!all[i].name.isEmpty() && all[i].name == all[i].name.trimmed());
        fuzz::demand(looks.placeOf(all[i].name) == i);
        for (const float number : all[i].settings) fuzz::demand(std::isfinite(number));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ScopedLogCapture log;  // nothing can be written beside such a file, and that is said
    const NamedMemory file(bytes, size);
    WindowState state(file.path());
    for (const QString& path : state.recentFiles()) fuzz::demand(path.startsWith(u'/'));
    (void)state.geometry();
    (void)state.splitter();
    (void)state.openFolder();
    (void)state.saveFolder();
    (void)state.appearance();
    state.addRecentFile(QStringLiteral("/new"));
    fuzz::demand(state.recentFiles().value(0) == QStringLiteral("/new"));
    fuzz::demand(state.recentFiles().size() <= WindowState::kMostRecent);
    UserPresets looks(state);
    demandDistinct(looks);
    const auto before = looks.all().size();
    const auto added = looks.add(QStringLiteral("New"), kSome);
    demandDistinct(looks);
    fuzz::demand(looks.all().size() == before + 1 && looks.all()[added].settings == kSome);
    const auto removed = looks.remove(0);
    fuzz::demand(removed.has_value() && looks.all().size() >= before);
    (void)looks.restore(*removed);
    demandDistinct(looks);
    return 0;
}
