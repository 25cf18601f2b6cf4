#include "qt/toolkit_services.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <cmath>
#include <random>

#include "util/resources/resource_path.h"

namespace skarnel {
namespace {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

// Notifications ------------------------------------------------------------------------------

void QtNotificationCenter::addObserver(const NSObject& observer, Handler handler,
                                       std::string_view name, const NSObject* object) {
    registrations_.push_back(std::make_shared<Registration>(
        Registration{&observer, std::move(handler), name, object, false}));
}

void QtNotificationCenter::removeObserver(const NSObject& observer, std::string_view name,
                                          const NSObject* object) {
    std::erase_if(registrations_, [&](const std::shared_ptr<Registration>& registration) {
        const bool match = registration->observer == &observer && registration->name == name &&
                           (object == nullptr || registration->object == object);
        registration->removed = registration->removed || match;
        return match;
    });
}

void QtNotificationCenter::postNotification(const NSNotification& notification) {
    // Over a copy: a handler may register and take back.
    for (const auto registrations = registrations_; const auto& registration : registrations) {
        if (registration->removed || registration->name != notification.name) continue;
        if (registration->object != nullptr && registration->object != notification.object)
            continue;
        registration->handler(notification);
    }
}

// Run loop -----------------------------------------------------------------------------------

class QtRunLoop::Timer final : public NSTimer {
  public:
    Timer(QtRunLoop& loop, double seconds, TimerAction action, bool repeats)
        : loop_(loop), action_(std::move(action)), repeats_(repeats) {
        timer_.setSingleShot(!repeats);
        timer_.setInterval(static_cast<int>(std::lround(std::clamp(seconds, 0.0, 1e6) * 1000)));
        QObject::connect(&timer_, &QTimer::timeout, [this] { fire(); });
        timer_.start();
    }
    void invalidate() override { loop_.forget(*this); }
    void stop() { timer_.stop(); }

  private:
    void fire() {
        action_(*this);
        if (!repeats_) loop_.forget(*this);
    }
    QtRunLoop& loop_;
    QTimer timer_;
    TimerAction action_;
    bool repeats_;
};

QtRunLoop::QtRunLoop() = default;
QtRunLoop::~QtRunLoop() = default;

NSTimer* QtRunLoop::scheduledTimerWithTimeInterval(double seconds, TimerAction action,
                                                   bool repeats) {
    timers_.push_back(std::make_unique<Timer>(*this, seconds, std::move(action), repeats));
    return timers_.back().get();
}

void QtRunLoop::forget(Timer& timer) {
    const auto found = std::find_if(timers_.begin(), timers_.end(),
                                    [&](const auto& held) { return held.get() == &timer; });
    if (found == timers_.end()) return;
    timer.stop();
    // The timer may be on the stack below: it goes when the event loop is reached again.
    auto* dead = found->release();
    timers_.erase(found);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [dead] { delete dead; }, Qt::QueuedConnection);
}

bool QtRunLoop::runMode(std::string_view /*mode*/, double beforeDate) {
    if (std::isinf(beforeDate)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        return true;
    }
    const int milliseconds = static_cast<int>(std::clamp(beforeDate, 0.0, 1e6) * 1000);
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(milliseconds);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return true;
}

// Small services -----------------------------------------------------------------------------

std::optional<std::string> QtBundle::pathForSoundResource(std::string_view name) {
    return findResource(name);
}

bool QtWorkspace::openURL(std::string_view url) {
    return QDesktopServices::openUrl(QUrl(toQt(url)));
}

void QtPasteboard::putOnly(const QString& mimeType, const QByteArray& bytes) {
    auto* item = new QMimeData;
    item->setData(mimeType, bytes);
    QGuiApplication::clipboard()->setMimeData(item);
}

void QtPasteboard::declareTypes(const std::vector<std::string_view>& types,
                                const NSObject* /*owner*/) {
    declared_.assign(types.begin(), types.end());
    given_.clear();
    QGuiApplication::clipboard()->clear();
}

bool QtPasteboard::setData(const Bytes& data, std::string_view type) {
    if (std::find(declared_.begin(), declared_.end(), type) == declared_.end()) return false;
    const QString kind = type == NSTIFFPboardType ? QStringLiteral("image/tiff") : toQt(type);
    given_[kind] =
        QByteArray(reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(data.size()));
    auto* item = new QMimeData;
    for (auto it = given_.cbegin(); it != given_.cend(); ++it) item->setData(it.key(), it.value());
    QGuiApplication::clipboard()->setMimeData(item);
    if (filled_) filled_();
    return true;
}

// Temporary files ----------------------------------------------------------------------------

bool isOwnPrivateDirectory(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & 0077) == 0;
}

std::optional<std::string> privateTemporaryDirectory(const std::string& parent) {
    const std::string fixed = parent + "/skarnel-" + std::to_string(geteuid());
    if (mkdir(fixed.c_str(), 0700) == 0 || isOwnPrivateDirectory(fixed)) return fixed;
    // Somebody else holds that name.
    std::string fresh = fixed + "-XXXXXX";
    if (mkdtemp(fresh.data()) == nullptr) return std::nullopt;
    return fresh;
}

std::string freshTemporaryName() {
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz234567";
    std::random_device source;
    std::string name = "/tmp/skarnel-";
    for (int i = 0; i < 16; ++i) name += kLetters[source() % 32];
    return name;
}

}  // namespace skarnel
