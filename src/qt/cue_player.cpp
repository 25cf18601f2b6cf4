#include "qt/cue_player.h"

#include <dlfcn.h>

#include <QCoreApplication>
#include <QFileInfo>

#include "qt/cue/cue_module.h"
#include "storage/whole_file.h"

namespace skarnel {
namespace {

constexpr std::uint64_t kLargestSound = 64 << 20;

struct CueModule {
    SkarnelCueStart* start = nullptr;
    SkarnelCueStop* stop = nullptr;
};

/// Loaded once, at the first play: start-up never pays for it.
const CueModule& cueModule() {
    static const CueModule module = [] {
        CueModule loaded;
        const std::string path = modulePath(kCueModuleName);
        void* library = path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return loaded;
        loaded.start = reinterpret_cast<SkarnelCueStart*>(dlsym(library, kCueStartName));
        loaded.stop = reinterpret_cast<SkarnelCueStop*>(dlsym(library, kCueStopName));
        return loaded;
    }();
    return module;
}

}  // namespace

std::string modulePath(const std::string& fileName) {
    const QString program = QCoreApplication::applicationDirPath();
    const QString name = QString::fromStdString(fileName);
    for (const QString& folder : {program + QStringLiteral("/../lib/skarnel/"),
                                  QStringLiteral(SKARNEL_MODULE_DIRECTORY "/")}) {
        const QFileInfo file(folder + name);
        if (file.isFile()) return file.absoluteFilePath().toStdString();
    }
    return {};
}

std::shared_ptr<QtSound> QtSound::read(const std::string& path, Muted muted) {
    auto bytes = readWholeFile(path, kLargestSound);
    if (!bytes) return nullptr;
    return std::make_shared<QtSound>(*std::move(bytes), std::move(muted));
}

QtSound::~QtSound() {
    if (playing_ == nullptr) return;
    const CueModule& module = cueModule();
    if (module.stop != nullptr) module.stop(playing_, true);
}

void QtSound::play() {
    if (muted_ && muted_()) return;
    const CueModule& module = cueModule();
    if (module.start == nullptr || module.stop == nullptr) return;
    if (playing_ != nullptr) module.stop(std::exchange(playing_, nullptr), false);
    playing_ = module.start(bytes_.data(), bytes_.size());
}

}  // namespace skarnel
