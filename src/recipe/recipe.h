// A recipe: everything that makes a result out of a picture, as one small file.
//
//   {
//     "skarnel": "recipe",
//     "version": 1,
//     "settings": { "alpha": 200, "applyBackgroundColor": false, ... all eight },
//     "background": "#000000",          or "#RRGGBBAA" where it is not opaque
//     "text": "U2tUZXh0DQo..."          the styled text's serialised form in base64; may be absent
//   }
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"
#include "platform/styled_text.h"
#include "render/settings.h"
#include "util/log/result.h"

namespace skarnel {

inline constexpr int kRecipeVersion = 1;
inline constexpr std::string_view kRecipeExtension = "skarnel";       // without the full stop
inline constexpr std::size_t kLargestRecipe = std::size_t{64} << 20;  // bytes
inline constexpr std::string_view kRecipeMimeType = "application/vnd.skarnel.recipe+json";

struct Recipe {
    std::array<float, kReflectionSettings.size()> settings{};  // in the order of the table
    bool applyBackgroundColor = false;
    TextColor background;            // opaque black
    std::optional<StyledText> text;  // what was typed, where the picture was made of text

    /// The settings' defaults over opaque black, without text.
    static Recipe defaults();
    friend bool operator==(const Recipe&, const Recipe&) = default;
};

/// The file's text, ended by a line end. Numbers read back to their very bits, those that are not
/// finite too. InvalidArgument for a text that has no serialised form.
Result<std::string> serializeRecipe(const Recipe& recipe);

/// Reads the file's text. The bytes are hostile and nothing is guessed: a recipe of a newer
/// version is Unsupported, and anything that version 1 does not have (a missing, doubled or
/// unknown member, a wrong type, a damaged text) is Damaged with the member's name. Bytes that are
/// no JSON object with the mark "skarnel": "recipe" are UnknownFormat, and one that is cut off or
/// broken behind its mark is Damaged. At most 64 MB: TooLarge. A byte order mark is passed over.
Result<Recipe> parseRecipe(ByteView bytes);

}  // namespace skarnel
