// The user's defaults: a persistent store of the application's own values under text keys.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/object.h"

namespace skarnel {

/// Raised when a collection changes while it is enumerated.
class EnumerationMutationError : public std::logic_error {
  public:
    EnumerationMutationError()
        : std::logic_error("the collection of keys was mutated while being enumerated") {}
};

/// The keys of a dictionary. Copies share one collection; a range-for over it raises
/// EnumerationMutationError at the first step after the collection changed.
class DefaultsKeys {
  public:
    explicit DefaultsKeys(std::vector<std::string> keys)
        : collection_(std::make_shared<Collection>(Collection{std::move(keys), 0})) {}

    std::size_t count() const { return collection_->keys.size(); }

    /// Changes the collection that every copy shares.
    void add(std::string key) {
        collection_->keys.push_back(std::move(key));
        ++collection_->mutations;
    }
    void remove(std::string_view key) {
        if (std::erase(collection_->keys, key) > 0) ++collection_->mutations;
    }

    class Iterator;
    Iterator begin() const;
    std::default_sentinel_t end() const { return {}; }

  private:
    struct Collection {
        std::vector<std::string> keys;
        unsigned long mutations;
    };
    std::shared_ptr<Collection> collection_;
};

class DefaultsKeys::Iterator {
  public:
    explicit Iterator(std::shared_ptr<const Collection> collection)
        : collection_(std::move(collection)), mutationsAtStart_(collection_->mutations) {}

    const std::string& operator*() const { return collection_->keys[index_]; }
    Iterator& operator++() {
        ++index_;
        return *this;
    }
    bool operator==(std::default_sentinel_t /*end*/) const {
        if (collection_->mutations != mutationsAtStart_) throw EnumerationMutationError();
        return index_ >= collection_->keys.size();
    }

  private:
    std::shared_ptr<const Collection> collection_;
    unsigned long mutationsAtStart_;
    std::size_t index_ = 0;
};

inline DefaultsKeys::Iterator DefaultsKeys::begin() const {
    return Iterator(collection_);
}

/// A stored value.
using DefaultsValue = std::variant<float, bool>;

/// A dictionary of the store's values at the time it was asked for.
struct DefaultsDictionary {
    DefaultsKeys keys;
    DefaultsKeys allKeys() const { return keys; }
};

/// Main thread only. Nothing here fails visibly: what cannot be stored is lost, and the system log
/// says why.
class NSUserDefaults : public NSObject {
  public:
    /// None when the key is absent.
    virtual std::optional<DefaultsValue> objectForKey(std::string_view key) const = 0;

    /// 0 when the key is absent or its value is not a number.
    virtual float floatForKey(std::string_view key) const = 0;

    /// False when the key is absent; a number counts as true when it is not 0.
    virtual bool boolForKey(std::string_view key) const = 0;

    virtual void setFloat(float value, std::string_view key) = 0;
    virtual void setBool(bool value, std::string_view key) = 0;
    virtual void removeObjectForKey(std::string_view key) = 0;

    /// Every value of the application's own domain.
    virtual DefaultsDictionary dictionaryRepresentation() const = 0;

    /// Writes pending changes out and forgets what was read, so that the next access sees the
    /// stored state.
    virtual void resetStandardUserDefaults() = 0;

    /// Brings the persistent store up to date; false when that failed.
    virtual bool synchronize() = 0;
};

}  // namespace skarnel
