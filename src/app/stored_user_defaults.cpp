#include "app/stored_user_defaults.h"

#include "util/log/system_log.h"

namespace skarnel {

namespace {

bool logged(const SettingsStore& store, const Result<void>& result) {
    if (!result) {
        systemLog("Couldn't save the settings in " + store.path() + ": " + result.error().message);
    }
    return result.hasValue();
}

}  // namespace

std::optional<DefaultsValue> StoredUserDefaults::objectForKey(std::string_view key) const {
    return store_.valueForKey(key);
}

float StoredUserDefaults::floatForKey(std::string_view key) const {
    return store_.floatForKey(key);
}

bool StoredUserDefaults::boolForKey(std::string_view key) const {
    return store_.boolForKey(key);
}

void StoredUserDefaults::setFloat(float value, std::string_view key) {
    store_.setFloat(key, value);
}

void StoredUserDefaults::setBool(bool value, std::string_view key) {
    store_.setBool(key, value);
}

void StoredUserDefaults::removeObjectForKey(std::string_view key) {
    store_.removeObject(key);
}

DefaultsDictionary StoredUserDefaults::dictionaryRepresentation() const {
    return {DefaultsKeys(store_.keys())};
}

void StoredUserDefaults::resetStandardUserDefaults() {
    logged(store_, store_.reload());
}

bool StoredUserDefaults::synchronize() {
    return logged(store_, store_.synchronize());
}

}  // namespace skarnel
