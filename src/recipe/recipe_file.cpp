#include "recipe/recipe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>

#include "imaging/io/encoded_file.h"
#include "recipe/xmp_packet.h"
#include "storage/whole_file.h"
#include "util/log/system_error.h"

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

constexpr std::size_t kHead = 4096;  // bytes; blanks before the brace included
constexpr std::uint64_t kLargestPicture = std::uint64_t{4} << 30;

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

std::string packetOf(std::string_view recipeText) {
    std::string packet(kPacketStart);
    packet.append(kOpen).append(escaped(recipeText)).append(kClose).append(kPacketEnd);
    return packet;
}

ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // of UTF-8

/// A recipe's text begins with its brace, perhaps after a mark and blanks; no picture does.
bool looksLikeText(ByteView file) {
    std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '{';
}

/// A file of the disk, open for reading.
class OpenFile {
  public:
    explicit OpenFile(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    int descriptor() const { return descriptor_; }

    /// Its first bytes, or all of a shorter one; without moving on.
    Bytes head(std::size_t count) const {
        Bytes bytes(count);
        const ssize_t got = ::pread(descriptor_, bytes.data(), count, 0);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        return bytes;
    }

  private:
    int descriptor_;
};

Error cannotRead(int error) {
    return {error == ENOENT ? ErrorCode::NotFound : ErrorCode::CannotRead, describeError(error)};
}

/// How much of a file with these first bytes is worth reading; 0 when it cannot carry a recipe.
std::uint64_t mostBytesBehind(ByteView head) {
    if (looksLikeText(head)) return kLargestRecipe;
    const ImageType* type = imageTypeOfContent(head);
    return type != nullptr && canCarryRecipe(type->identifier) ? kLargestPicture : 0;
}

Error recipeTooLarge() {
    return {ErrorCode::TooLarge, "The recipe is larger than 64 MB"};
}

Error noMemory() {
    return {ErrorCode::OutOfMemory, "No memory left"};
}

}  // namespace

bool canCarryRecipe(std::string_view typeIdentifier) {
    return typeIdentifier == kUTTypeTIFF || typeIdentifier == kUTTypePNG ||
           typeIdentifier == kUTTypeJPEG;
}

Result<void> roomForRecipe(std::string_view typeIdentifier, std::string_view recipeText) try {
    if (!canCarryRecipe(typeIdentifier))
        return {ErrorCode::Unsupported, "Only TIFF, PNG and JPEG files can carry a recipe"};
    return typeIdentifier == kUTTypeJPEG ? roomInJpeg(packetOf(recipeText).size()) : Result<void>();
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<Bytes> embedRecipe(ByteView picture, std::string_view recipeText) try {
    return checkedAddition(withXmpPacket(picture, packetOf(recipeText)), picture);
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<Recipe> readRecipe(ByteView file) try {
    if (file.empty()) return {ErrorCode::NotFound, "The file is empty"};
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

Result<Recipe> readRecipeFile(const std::string& path) try {
    struct stat status = {};
    // Looked at before it is opened: a pipe would wait for its writer, and a device might act.
    if (::stat(path.c_str(), &status) != 0) return cannotRead(errno);
    if (S_ISDIR(status.st_mode)) return {ErrorCode::CannotRead, "It is a folder"};
    if (!S_ISREG(status.st_mode)) return {ErrorCode::CannotRead, "It is not an ordinary file"};
    const OpenFile file(path);
    if (file.descriptor() < 0) return cannotRead(errno);
    const Bytes head = file.head(kHead);
    const std::uint64_t most = mostBytesBehind(head);
    if (most == 0) return readRecipe(head);
    const auto bytes = readDescriptor(file.descriptor(), most);
    if (!bytes && bytes.error().code == ErrorCode::TooLarge && most == kLargestRecipe)
        return recipeTooLarge();
    if (!bytes) return bytes.error();
    return readRecipe(*bytes);
} catch (const std::bad_alloc&) {
    return noMemory();
}

}  // namespace skarnel
