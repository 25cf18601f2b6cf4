// The one log that every fake of the recording toolkit writes to, and the plan of what fails.
#pragma once

#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/nscolor.h"
#include "platform/object.h"
#include "util/geometry/geometry.h"

namespace skarnel::testing_app {

/// Lines in the order of the calls. Getting hold of a shared object and giving a reference up
/// leave no line; every call on an object and every value set on one does.
class CallLog {
  public:
    using Lines = std::vector<std::string>;

    /// Logs "<call>" or "<call> <details>". The call's name is what `failOn` plans for.
    void add(std::string_view call, std::string_view details = {}) {
        std::string line(call);
        if (!details.empty()) line.append(" ").append(details);
        lines_.push_back(std::move(line));
    }

    /// Hands out what was logged since the last time.
    Lines take() { return std::exchange(lines_, {}); }

    /// Lets the `occurrence`-th call of that name from now on fail, counted from 1.
    void failOn(std::string_view call, int occurrence = 1) {
        plan_[std::string(call)] = occurrence;
    }

    /// For the fakes, once a call: whether it is to fail.
    bool fails(std::string_view call) {
        const auto planned = plan_.find(call);
        return planned != plan_.end() && --planned->second == 0;
    }

    /// What an object is called in the log.
    void name(const NSObject& object, std::string name) { names_[&object] = std::move(name); }
    std::string nameOf(const NSObject* object) const {
        if (object == nullptr) return "none";
        const auto named = names_.find(object);
        return named == names_.end() ? "unnamed" : named->second;
    }

  private:
    Lines lines_;
    std::map<std::string, int, std::less<>> plan_;
    std::map<const NSObject*, std::string> names_;
};

/// The shortest text that reads back to the value: 15, 48.5, 0.7071068.
template <typename Number>
std::string shownNumber(Number value) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}
inline std::string shown(double value) {
    return shownNumber(value);
}
inline std::string shown(float value) {
    return shownNumber(value);
}
inline std::string shown(CGSize size) {
    return shown(size.width) + "x" + shown(size.height);
}
inline std::string shown(const CGImage& image) {
    return std::to_string(image.width()) + "x" + std::to_string(image.height());
}
inline std::string shown(const NSColor& color) {
    const DeviceColor rgb = color.deviceColor();
    return "rgba(" + shown(rgb.red) + "," + shown(rgb.green) + "," + shown(rgb.blue) + "," +
           shown(rgb.alpha) + ")";
}
inline std::string yesNo(bool value) {
    return value ? "yes" : "no";
}

/// Text in quotes, with line breaks as in C and a question mark for what is not ASCII.
inline std::string shown(std::u16string_view text) {
    std::string out = "\"";
    for (const char16_t unit : text) {
        if (unit == u'\r') {
            out += "\\r";
        } else if (unit == u'\n') {
            out += "\\n";
        } else {
            out += unit < 0x80 ? static_cast<char>(unit) : '?';
        }
    }
    return out + "\"";
}

/// Joins stretches of log into one.
inline CallLog::Lines lines(std::initializer_list<CallLog::Lines> parts) {
    CallLog::Lines all;
    for (const CallLog::Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

}  // namespace skarnel::testing_app
