#include "recipe/recipe_file.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "recipe/xmp_packet.h"
#include "storage/safe_file.h"

namespace skarnel {
namespace {

constexpr std::string_view kOpen = "<skarnel:recipe>";
constexpr std::string_view kClose = "</skarnel:recipe>";
constexpr std::string_view kPacketStart =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
    "<rdf:Description rdf:about=\"\" xmlns:skarnel=\"https://skarnel.example/ns/recipe/\">";
constexpr std::string_view kPacketEnd =
    "</rdf:Description></rdf:RDF></x:xmpmeta>\n<?xpacket end=\"r\"?>";

constexpr std::array<std::pair<char, std::string_view>, 4> kEntities{
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}}};

std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        std::string_view part(&c, 1);
        for (const auto& [character, entity] : kEntities) {
            if (c == character) part = entity;
        }
        out += part;
    }
    return out;
}

/// Undoes `escaped`; an unknown entity stays as it is, and the recipe's reader refuses it.
std::string unescaped(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = 1;
        char c = text[at];
        for (const auto& [character, entity] : kEntities) {
            if (text.substr(at).starts_with(entity)) {
                c = character;
                length = entity.size();
            }
        }
        out += c;
        at += length;
    }
    return out;
}

ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A recipe's text begins with its brace, perhaps after blanks; no picture does.
bool looksLikeText(ByteView file) {
    const auto first = std::find_if(file.begin(), file.end(), [](std::uint8_t byte) {
        return byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n';
    });
    return first != file.end() && *first == '{';
}

Error noMemory() {
    return {ErrorCode::OutOfMemory, "No memory left"};
}

}  // namespace

bool canCarryRecipe(std::string_view typeIdentifier) {
    return typeIdentifier == kUTTypeTIFF || typeIdentifier == kUTTypePNG ||
           typeIdentifier == kUTTypeJPEG;
}

Result<Bytes> embedRecipe(ByteView picture, std::string_view recipeText) try {
    std::string packet(kPacketStart);
    packet.append(kOpen).append(escaped(recipeText)).append(kClose).append(kPacketEnd);
    return withXmpPacket(picture, packet);
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<Recipe> readRecipe(ByteView file) try {
    if (looksLikeText(file)) return parseRecipe(file);
    const Error none{ErrorCode::NotFound, "The file carries no recipe"};
    const auto packet = xmpPacketOf(file);
    if (!packet) return none;
    const std::size_t open = packet->find(kOpen);
    const std::size_t close = packet->find(kClose);
    if (open == std::string::npos || close == std::string::npos || close < open + kOpen.size())
        return none;
    const std::size_t begin = open + kOpen.size();
    return parseRecipe(bytesOf(unescaped(std::string_view(*packet).substr(begin, close - begin))));
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<Recipe> readRecipeFile(const std::string& path) {
    constexpr std::uint64_t kLargest = std::uint64_t{4} << 30;
    const auto bytes = readWholeFile(path, kLargest);
    if (!bytes) return bytes.error();
    return readRecipe(*bytes);
}

}  // namespace skarnel
