// Text that can be replaced, as a shared object.
#pragma once

#include <memory>
#include <utility>

#include "util/string/nsstring.h"

namespace skarnel {

/// A handle of a mutable text: copies of the handle are the same object (`isSame`) and see each
/// other's changes. Not safe to change from two threads.
class NSMutableString {
  public:
    NSMutableString() : NSMutableString(NSString()) {}
    explicit NSMutableString(NSString contents)
        : contents_(std::make_shared<NSString>(std::move(contents))) {}

    /// The text as it is now; later changes do not reach it.
    const NSString& string() const { return *contents_; }
    void setString(const NSString& contents) { *contents_ = contents; }

    bool isSame(const NSMutableString& other) const { return contents_ == other.contents_; }
    /// Same text.
    friend bool operator==(const NSMutableString& a, const NSMutableString& b) {
        return *a.contents_ == *b.contents_;
    }

  private:
    std::shared_ptr<NSString> contents_;
};

}  // namespace skarnel
