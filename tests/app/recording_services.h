// Fakes of the shared objects: defaults, notifications, run loop, resources, pasteboard.
#pragma once

#include <functional>

#include "call_log.h"
#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "platform/services.h"
#include "platform/user_defaults.h"

namespace skarnel::testing_app {

class RecordingDefaults final : public NSUserDefaults {
  public:
    ~RecordingDefaults() override;
    explicit RecordingDefaults(CallLog& log) : log_(log) {}

    std::optional<DefaultsValue> objectForKey(std::string_view key) const override {
        log_.add("defaults.objectForKey", key);
        const auto found = values.find(key);
        if (found == values.end()) return std::nullopt;
        return found->second;
    }
    float floatForKey(std::string_view key) const override {
        log_.add("defaults.floatForKey", key);
        const auto found = values.find(key);
        const float* number = found == values.end() ? nullptr : std::get_if<float>(&found->second);
        return number == nullptr ? 0 : *number;
    }
    bool boolForKey(std::string_view key) const override {
        log_.add("defaults.boolForKey", key);
        const auto found = values.find(key);
        const bool* flag = found == values.end() ? nullptr : std::get_if<bool>(&found->second);
        return flag != nullptr && *flag;
    }
    void setFloat(float value, std::string_view key) override {
        log_.add("defaults.setFloat", shown(value) + " " + std::string(key));
        values[std::string(key)] = value;
    }
    void setBool(bool value, std::string_view key) override {
        log_.add("defaults.setBool", yesNo(value) + " " + std::string(key));
        values[std::string(key)] = value;
    }
    void removeObjectForKey(std::string_view key) override {
        log_.add("defaults.removeObjectForKey", key);
        values.erase(std::string(key));
        if (keysChangeOnRemoval) handedOut_.remove(key);
    }
    DefaultsDictionary dictionaryRepresentation() const override {
        log_.add("defaults.dictionaryRepresentation");
        std::vector<std::string> keys;
        for (const auto& [key, value] : values) keys.push_back(key);
        handedOut_ = DefaultsKeys(std::move(keys));
        return {handedOut_};
    }
    void resetStandardUserDefaults() override { log_.add("defaults.resetStandardUserDefaults"); }
    bool synchronize() override {
        log_.add("defaults.synchronize");
        return true;
    }

    std::map<std::string, DefaultsValue, std::less<>> values;
    /// A store that hands out its own collection of keys in place of a copy.
    bool keysChangeOnRemoval = false;

  private:
    CallLog& log_;
    mutable DefaultsKeys handedOut_{{}};
};

class RecordingNotificationCenter final : public NSNotificationCenter {
  public:
    ~RecordingNotificationCenter() override;
    explicit RecordingNotificationCenter(CallLog& log) : log_(log) {}
    void addObserver(const NSObject& observer, Handler handler, std::string_view name,
                     const NSObject* object) override {
        log_.add("notifications.addObserver",
                 log_.nameOf(&observer) + " " + std::string(name) + " from " + log_.nameOf(object));
        registrations_.push_back({&observer, std::move(handler), name, object});
    }
    void removeObserver(const NSObject& observer, std::string_view name,
                        const NSObject* object) override {
        log_.add("notifications.removeObserver",
                 log_.nameOf(&observer) + " " + std::string(name) + " from " + log_.nameOf(object));
        std::erase_if(registrations_, [&](const Registration& registration) {
            return registration.observer == &observer && registration.name == name &&
                   (object == nullptr || registration.object == object);
        });
    }
    void postNotification(const NSNotification& notification) override {
        const std::vector<Registration> now = registrations_;
        for (const Registration& registration : now) {
            const bool matches =
                registration.name == notification.name &&
                (registration.object == nullptr || registration.object == notification.object);
            if (matches) registration.handler(notification);
        }
    }

  private:
    struct Registration {
        const NSObject* observer;
        Handler handler;
        std::string_view name;
        const NSObject* object;
    };
    CallLog& log_;
    std::vector<Registration> registrations_;
};

class RecordingTimer final : public NSTimer {
  public:
    ~RecordingTimer() override;
    RecordingTimer(CallLog& log, NSRunLoop::TimerAction action)
        : log_(log), action_(std::move(action)) {}
    void invalidate() override {
        log_.add("timer.invalidate");
        action_ = nullptr;
    }
    /// What the run loop does when the time has come.
    void fire() {
        if (const auto action = std::exchange(action_, nullptr)) action(*this);
    }
    bool isScheduled() const { return static_cast<bool>(action_); }

  private:
    CallLog& log_;
    NSRunLoop::TimerAction action_;
};

class RecordingRunLoop final : public NSRunLoop {
  public:
    ~RecordingRunLoop() override;
    explicit RecordingRunLoop(CallLog& log) : log_(log) {}
    NSTimer* scheduledTimerWithTimeInterval(double seconds, TimerAction action,
                                            bool repeats) override {
        log_.add("runLoop.scheduledTimerWithTimeInterval",
                 shown(seconds) + " repeats " + yesNo(repeats));
        timers.push_back(std::make_unique<RecordingTimer>(log_, std::move(action)));
        return timers.back().get();
    }
    bool runMode(std::string_view mode, double beforeDate) override {
        log_.add("runLoop.runMode", std::string(mode) + " " + shown(beforeDate));
        return !log_.fails("runLoop.runMode") && (onRun ? onRun() : false);
    }

    std::vector<std::unique_ptr<RecordingTimer>> timers;
    std::function<bool()> onRun;  // one round of events

  private:
    CallLog& log_;
};

class RecordingBundle final : public NSBundle {
  public:
    ~RecordingBundle() override;
    explicit RecordingBundle(CallLog& log) : log_(log) {}
    std::optional<std::string> pathForSoundResource(std::string_view name) override {
        log_.add("bundle.pathForSoundResource", name);
        if (log_.fails("bundle.pathForSoundResource")) return std::nullopt;
        return "/resources/" + std::string(name);
    }

  private:
    CallLog& log_;
};

class RecordingWorkspace final : public NSWorkspace {
  public:
    ~RecordingWorkspace() override;
    explicit RecordingWorkspace(CallLog& log) : log_(log) {}
    bool openURL(std::string_view url) override {
        log_.add("workspace.openURL", url);
        return !log_.fails("workspace.openURL");
    }

  private:
    CallLog& log_;
};

class RecordingPasteboard final : public NSPasteboard {
  public:
    ~RecordingPasteboard() override;
    explicit RecordingPasteboard(CallLog& log) : log_(log) {}
    void declareTypes(const std::vector<std::string_view>& types, const NSObject* owner) override {
        std::string details;
        for (const std::string_view type : types) details.append(type).append(" ");
        log_.add("pasteboard.declareTypes", details + "owner " + log_.nameOf(owner));
        contents.clear();
    }
    bool setData(const Bytes& data, std::string_view type) override {
        log_.add("pasteboard.setData", type);
        contents[std::string(type)] = data;
        return true;
    }
    std::map<std::string, Bytes> contents;

  private:
    CallLog& log_;
};

class RecordingSound final : public NSSound {
  public:
    ~RecordingSound() override;
    explicit RecordingSound(CallLog& log) : log_(log) {}
    void play() override { log_.add("sound.play"); }

  private:
    CallLog& log_;
};

}  // namespace skarnel::testing_app
