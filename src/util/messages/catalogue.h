// One language's catalogue, as msgfmt compiles it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skarnel {

/// The phrases of one language in UTF-8, by their English words.
class Catalogue {
  public:
    /// The words of --help, which have a context of their own: there "Text" is a heading.
    static constexpr std::string_view kHelp = "help";

    /// Reads a MO file of either byte order; none when it is none or is cut off.
    static std::optional<Catalogue> parse(std::string_view bytes);

    /// The translation of exactly this phrase; null when there is none.
    const std::string* find(std::string_view phrase, std::string_view context = {}) const;

    /// The translation of a cause whose places ("%1") are filled; none when no phrase fits. Of
    /// several the one with the most letters of its own is taken. What stands in a place stays as
    /// it is, but for a cause at the end of another one ("...: %1").
    std::optional<std::string> cause(std::string_view message) const;

    /// `cause`, also where names stand before it ("photo.png: It is a folder"); what is not known
    /// stays as it is.
    std::string translated(std::string_view message) const;

  private:
    /// A phrase with places, taken apart: text, place, text, ..., place, text.
    struct Pattern {
        std::vector<std::string> texts;
        std::vector<std::size_t> places;  // indices from 0; one less than there are texts
        std::size_t letters = 0;          // bytes of all texts
        std::string translation;
    };
    static std::optional<Pattern> patternOf(std::string_view phrase, std::string translation);
    static std::optional<std::vector<std::string_view>> placesIn(const Pattern& pattern,
                                                                 std::string_view message);
    void add(std::string_view key, std::string_view translation);

    std::map<std::string, std::string, std::less<>> phrases_;  // by context, 0x04 and phrase
    std::vector<Pattern> patterns_;
};

}  // namespace skarnel
