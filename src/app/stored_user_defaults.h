// The user's defaults, kept in the settings file.
#pragma once

#include "platform/user_defaults.h"
#include "storage/settings_store.h"

namespace skarnel {

/// Every call goes to the store, which is borrowed; only `synchronize` and
/// `resetStandardUserDefaults` touch the file. A failed write keeps the values in memory and goes
/// to the system log.
class StoredUserDefaults final : public NSUserDefaults {
  public:
    explicit StoredUserDefaults(SettingsStore& store) : store_(store) {}

    std::optional<DefaultsValue> objectForKey(std::string_view key) const override;
    float floatForKey(std::string_view key) const override;
    bool boolForKey(std::string_view key) const override;
    void setFloat(float value, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;
    DefaultsDictionary dictionaryRepresentation() const override;
    void resetStandardUserDefaults() override;
    bool synchronize() override;

  private:
    SettingsStore& store_;
};

}  // namespace skarnel
