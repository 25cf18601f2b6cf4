// Notifications, timers, the run loop, resources, the browser and the clipboard on Qt.
#pragma once

#include <QByteArray>
#include <QHash>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "platform/services.h"

namespace skarnel {

class QtNotificationCenter final : public NSNotificationCenter {
  public:
    void addObserver(const NSObject& observer, Handler handler, std::string_view name,
                     const NSObject* object) override;
    void removeObserver(const NSObject& observer, std::string_view name,
                        const NSObject* object) override;
    void postNotification(const NSNotification& notification) override;

  private:
    struct Registration {
        const NSObject* observer;
        Handler handler;
        std::string_view name;
        const NSObject* object;
        bool removed = false;
    };
    std::vector<std::shared_ptr<Registration>> registrations_;
};

class QtRunLoop final : public NSRunLoop {
  public:
    QtRunLoop();
    ~QtRunLoop() override;
    NSTimer* scheduledTimerWithTimeInterval(double seconds, TimerAction action,
                                            bool repeats) override;
    bool runMode(std::string_view mode, double beforeDate) override;

  private:
    class Timer;
    void forget(Timer& timer);
    std::vector<std::unique_ptr<Timer>> timers_;
};

class QtBundle final : public NSBundle {
  public:
    std::optional<std::string> pathForSoundResource(std::string_view name) override;
};

class QtWorkspace final : public NSWorkspace {
  public:
    bool openURL(std::string_view url) override;
};

class QtPasteboard final : public NSPasteboard {
  public:
    void declareTypes(const std::vector<std::string_view>& types, const NSObject* owner) override;
    bool setData(const Bytes& data, std::string_view type) override;

    /// Told of each data that it has taken.
    void setFilled(std::function<void()> filled) { filled_ = std::move(filled); }

    /// Puts one item of one kind on the clipboard, in place of what was there.
    static void putOnly(const QString& mimeType, const QByteArray& bytes);

  private:
    std::function<void()> filled_;
    std::vector<std::string> declared_;
    QHash<QString, QByteArray> given_;  // by kind, since the last declaration
};

/// Whether such a directory is there, the user's own and closed to all others.
bool isOwnPrivateDirectory(const std::string& path);

/// A directory of the user's own (0700) for temporary files below `parent`, made where it is
/// missing; none when there can be none. The same at each call while nobody else holds its name.
std::optional<std::string> privateTemporaryDirectory(const std::string& parent);

/// A path that nothing stands at, with a name that cannot be guessed.
std::string freshTemporaryName();

}  // namespace skarnel
