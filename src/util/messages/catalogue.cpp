#include "util/messages/catalogue.h"

#include <cstdint>
#include <utility>

#include "util/log/message.h"

namespace skarnel {
namespace {

constexpr char kContextEnd = '\4';
constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::uint32_t kMagicSwapped = 0xDE120495;
constexpr std::size_t kMaxPlaces = 3;  // %1, %2, %3: no phrase has more

/// The numbers and texts of a MO file: the magic, a revision, the count of texts, the offsets of
/// the tables of the English texts and of the translations; in a table a length and an offset each.
class MoFile {
  public:
    explicit MoFile(std::string_view bytes) : bytes_(bytes) {
        const std::uint32_t magic = number(0);
        swapped_ = magic == kMagicSwapped;
        sound_ = sound_ && (magic == kMagic || swapped_);
    }

    bool isSound() const { return sound_; }
    std::uint32_t count() { return number(8); }
    std::string_view phrase(std::uint32_t index) { return text(number(12), index); }
    std::string_view translation(std::uint32_t index) { return text(number(16), index); }

  private:
    std::uint32_t number(std::uint64_t at) {
        sound_ = sound_ && at + 4 <= bytes_.size();
        if (!sound_) return 0;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes_[at + (swapped_ ? i : 3 - i)]);
            value = value << 8 | byte;
        }
        return value;
    }
    std::string_view text(std::uint64_t table, std::uint64_t index) {
        const std::uint64_t size = number(table + 8 * index);
        const std::uint64_t at = number(table + 8 * index + 4);
        sound_ = sound_ && at + size <= bytes_.size();
        return sound_ ? bytes_.substr(at, size) : std::string_view();
    }

    std::string_view bytes_;
    bool swapped_ = false;  // most significant byte first
    bool sound_ = true;
};

}  // namespace

std::optional<Catalogue> Catalogue::parse(std::string_view bytes) {
    MoFile file(bytes);
    Catalogue catalogue;
    const std::uint32_t count = file.count();
    for (std::uint32_t i = 0; i < count && file.isSound(); ++i) {
        catalogue.add(file.phrase(i), file.translation(i));
    }
    if (!file.isSound()) return std::nullopt;
    return catalogue;
}

void Catalogue::add(std::string_view key, std::string_view translation) {
    // Under the empty phrase stands what the translators say of the file.
    if (key.empty() || translation.empty()) return;
    phrases_.emplace(key, translation);
    if (key.find(kContextEnd) != std::string_view::npos) return;
    if (auto pattern = patternOf(key, std::string(translation))) {
        patterns_.push_back(*std::move(pattern));
    }
}

const std::string* Catalogue::find(std::string_view phrase, std::string_view context) const {
    std::string key(context);
    if (!context.empty()) key += kContextEnd;
    key += phrase;
    const auto found = phrases_.find(key);
    return found == phrases_.end() ? nullptr : &found->second;
}

std::optional<Catalogue::Pattern> Catalogue::patternOf(std::string_view phrase,
                                                       std::string translation) {
    Pattern pattern;
    pattern.translation = std::move(translation);
    std::string text;
    for (std::size_t i = 0; i < phrase.size(); ++i) {
        const char digit = phrase[i] == '%' && i + 1 < phrase.size() ? phrase[i + 1] : '\0';
        const auto place = static_cast<std::size_t>(digit - '1');
        if (digit < '1' || place >= kMaxPlaces) {
            text += phrase[i];
            ++pattern.letters;
            continue;
        }
        pattern.texts.push_back(std::exchange(text, {}));
        pattern.places.push_back(place);
        ++i;
    }
    pattern.texts.push_back(std::move(text));
    if (pattern.places.empty()) return std::nullopt;
    return pattern;
}

std::optional<std::vector<std::string_view>> Catalogue::placesIn(const Pattern& pattern,
                                                                 std::string_view message) {
    const std::string& first = pattern.texts.front();
    const std::string& last = pattern.texts.back();
    if (message.size() < first.size() + last.size() || !message.starts_with(first) ||
        !message.ends_with(last)) {
        return std::nullopt;
    }
    message = message.substr(first.size(), message.size() - first.size() - last.size());
    std::vector<std::string_view> places(kMaxPlaces);
    for (std::size_t i = 0; i < pattern.places.size(); ++i) {
        const bool isLast = i + 1 == pattern.places.size();
        const std::size_t end = isLast ? message.size() : message.find(pattern.texts[i + 1]);
        if (end == std::string_view::npos) return std::nullopt;
        places[pattern.places[i]] = message.substr(0, end);
        if (!isLast) message.remove_prefix(end + pattern.texts[i + 1].size());
    }
    return places;
}

std::optional<std::string> Catalogue::cause(std::string_view message) const {
    if (const std::string* whole = find(message)) return *whole;
    const Pattern* best = nullptr;
    std::vector<std::string_view> places;
    for (const Pattern& pattern : patterns_) {
        if (best != nullptr && pattern.letters <= best->letters) continue;
        auto found = placesIn(pattern, message);
        if (!found) continue;
        best = &pattern;
        places = *std::move(found);
    }
    if (best == nullptr) return std::nullopt;
    const std::size_t lastText = best->texts.size() - 2;  // what stands before the last place
    const bool nested = best->texts.back().empty() && best->texts[lastText].ends_with(": ");
    std::string inner;
    if (nested) {
        std::string_view& last = places[best->places.back()];
        inner = translated(last);
        last = inner;
    }
    return filled(best->translation, {places[0], places[1], places[2]});
}

std::string Catalogue::translated(std::string_view message) const {
    for (std::size_t at = 0; at != std::string_view::npos;) {
        if (const auto known = cause(message.substr(at)))
            return std::string(message.substr(0, at)) + *known;
        const std::size_t colon = message.find(": ", at);
        at = colon == std::string_view::npos ? colon : colon + 2;
    }
    return std::string(message);
}

}  // namespace skarnel
