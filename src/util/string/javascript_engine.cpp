#include "util/string/javascript_engine.h"

#include <duktape.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

namespace skarnel {
namespace {

// A value is its type (4 bytes), then for a list the count (8 bytes) and the items, else a flag
// for "has text" (1 byte) and, with text, the count of units (8 bytes) and the units. Both ends
// are the same program on the same machine, so numbers are in the machine's order.
using ByteVector = std::vector<std::uint8_t>;

/// Counts what the engine holds and refuses what would pass the limit.
struct Budget {
    std::size_t left;
};

/// Every block starts with its size; the padding keeps the engine's part aligned for any type.
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* allocate(void* user, duk_size_t size) {
    auto& budget = *static_cast<Budget*>(user);
    if (size == 0 || size > budget.left) return nullptr;
    auto* block = static_cast<std::uint8_t*>(std::malloc(size + kHeader));
    if (block == nullptr) return nullptr;
    std::memcpy(block, &size, sizeof size);
    budget.left -= size;
    return block + kHeader;
}

std::size_t sizeOf(const void* pointer) {
    std::size_t size = 0;
    std::memcpy(&size, static_cast<const std::uint8_t*>(pointer) - kHeader, sizeof size);
    return size;
}

void release(void* user, void* pointer) {
    if (pointer == nullptr) return;
    static_cast<Budget*>(user)->left += sizeOf(pointer);
    std::free(static_cast<std::uint8_t*>(pointer) - kHeader);
}

void* reallocate(void* user, void* pointer, duk_size_t size) {
    if (pointer == nullptr) return allocate(user, size);
    if (size == 0) {
        release(user, pointer);
        return nullptr;
    }
    void* moved = allocate(user, size);
    if (moved == nullptr) return nullptr;
    std::memcpy(moved, pointer, std::min(size, sizeOf(pointer)));
    release(user, pointer);
    return moved;
}

[[noreturn]] void endProcess(void* /*user*/, const char* /*message*/) {
    _exit(1);
}

/// The engine's strings: UTF-8 in which each surrogate stands alone as three bytes, so that every
/// sequence of UTF-16 units has a form.
std::string engineForm(std::u16string_view units) {
    std::string bytes;
    for (const char16_t unit : units) {
        if (unit < 0x80) {
            bytes.push_back(static_cast<char>(unit));
            continue;
        }
        if (unit < 0x800) {
            bytes.push_back(static_cast<char>(0xC0 | unit >> 6));
        } else {
            bytes.push_back(static_cast<char>(0xE0 | unit >> 12));
            bytes.push_back(static_cast<char>(0x80 | (unit >> 6 & 0x3F)));
        }
        bytes.push_back(static_cast<char>(0x80 | (unit & 0x3F)));
    }
    return bytes;
}

/// Back to units. The engine's own symbols and buffers may hold other bytes; they become U+FFFD.
std::u16string unitsOf(std::string_view bytes) {
    std::u16string units;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto byteAt = [bytes](std::size_t index) {
            return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U;
        };
        const unsigned first = byteAt(at);
        const unsigned second = byteAt(at + 1) & 0x3F;
        const unsigned third = byteAt(at + 2) & 0x3F;
        const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 1;
        const bool wrong = (first >= 0x80 && first < 0xC0) || first >= 0xF0;
        if (wrong)
            units.push_back(u'\uFFFD');
        else if (length == 1)
            units.push_back(static_cast<char16_t>(first));
        else if (length == 2)
            units.push_back(static_cast<char16_t>((first & 0x1F) << 6 | second));
        else
            units.push_back(static_cast<char16_t>((first & 0x0F) << 12 | second << 6 | third));
        at += length;
    }
    return units;
}

template <typename T>
void put(ByteVector& out, T value) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
    out.insert(out.end(), bytes, bytes + sizeof value);
}

void putText(ByteVector& out, std::uint32_t type, const std::optional<std::u16string>& text) {
    put(out, type);
    put(out, static_cast<std::uint8_t>(text.has_value()));
    if (!text) return;
    put(out, static_cast<std::uint64_t>(text->size()));
    for (const char16_t unit : *text) put(out, unit);
}

std::uint32_t typeOfValue(duk_context* engine, duk_idx_t index) {
    switch (duk_get_type(engine, index)) {
        case DUK_TYPE_STRING:
            return kDescriptorText;
        case DUK_TYPE_NUMBER:
            return kDescriptorNumber;
        case DUK_TYPE_BOOLEAN:
            return kDescriptorBoolean;
        case DUK_TYPE_UNDEFINED:
        case DUK_TYPE_NULL:
            return kDescriptorNull;
        default:
            return duk_is_array(engine, index) != 0 ? kDescriptorList : kDescriptorRecord;
    }
}

/// What has been written of a result, and how much it may be. The engine's own limit does not bound
/// it: a sparse list or one text many times over is small in the engine and large when written.
struct Output {
    ByteVector bytes;
    std::size_t limit;
};

/// Raises an error in the script unless `more` bytes still fit. No object with a destructor may be
/// alive between here and the protected call.
void reserve(const Output& out, duk_context* engine, std::size_t more) {
    if (out.bytes.size() > out.limit || more > out.limit - out.bytes.size())
        (void)duk_error(engine, DUK_ERR_RANGE_ERROR, "the result is too large");
}

/// Writes the value at the top of the engine's stack. Lists inside lists are written as records:
/// an item of an item cannot be asked for.
void putValue(Output& out, duk_context* engine, bool isItem) {
    const std::uint32_t type = typeOfValue(engine, -1);
    if (type == kDescriptorList && !isItem) {
        const auto count = static_cast<std::uint32_t>(duk_get_length(engine, -1));
        // Each item will be a descriptor on the other side.
        reserve(out, engine, count * sizeof(ScriptDescriptor));
        put(out.bytes, type);
        put(out.bytes, static_cast<std::uint64_t>(count));
        for (std::uint32_t index = 0; index < count; ++index) {
            duk_get_prop_index(engine, -1, index);
            putValue(out, engine, true);
            duk_pop(engine);
        }
        return;
    }
    const bool hasText =
        type == kDescriptorText || type == kDescriptorNumber || type == kDescriptorBoolean;
    if (!hasText)
        return putText(out.bytes, type == kDescriptorList ? kDescriptorRecord : type, std::nullopt);
    duk_size_t length = 0;
    const char* bytes = duk_to_lstring(engine, -1, &length);
    reserve(out, engine, length * sizeof(char16_t));
    putText(out.bytes, type, unitsOf({bytes, length}));
}

/// Takes numbers and units off the front of the bytes; fails for good once they run out.
class Reader {
  public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    template <typename T>
    std::optional<T> take() {
        if (bytes_.size() < sizeof(T)) return std::nullopt;
        T value;
        std::memcpy(&value, bytes_.data(), sizeof value);
        bytes_ = bytes_.subspan(sizeof value);
        return value;
    }

    std::optional<NSString> takeText() {
        const auto count = take<std::uint64_t>();
        if (!count || *count > bytes_.size() / sizeof(char16_t)) return std::nullopt;
        std::u16string units(*count, u'\0');
        std::memcpy(units.data(), bytes_.data(), *count * sizeof(char16_t));
        bytes_ = bytes_.subspan(*count * sizeof(char16_t));
        return NSString(units);
    }

    std::optional<ScriptDescriptor> takeValue() {
        const auto type = take<std::uint32_t>();
        if (!type) return std::nullopt;
        if (*type == kDescriptorList) return takeList();
        const auto hasText = take<std::uint8_t>();
        if (!hasText) return std::nullopt;
        if (*hasText == 0) return ScriptDescriptor(*type);
        std::optional<NSString> text = takeText();
        if (!text) return std::nullopt;
        return ScriptDescriptor(*type, std::move(text));
    }

  private:
    std::optional<ScriptDescriptor> takeList() {
        const auto count = take<std::uint64_t>();
        if (!count) return std::nullopt;
        std::vector<ScriptDescriptor> items;
        for (std::uint64_t index = 0; index < *count; ++index) {
            std::optional<ScriptDescriptor> item = takeValue();
            if (!item) return std::nullopt;
            items.push_back(*std::move(item));
        }
        return ScriptDescriptor::list(std::move(items));
    }

    std::span<const std::uint8_t> bytes_;
};

}  // namespace

std::vector<std::uint8_t> evaluateJavaScript(const NSString& source, std::size_t memoryBytes) {
    Budget budget{memoryBytes};
    const std::unique_ptr<duk_context, decltype(&duk_destroy_heap)> heap(
        duk_create_heap(allocate, reallocate, release, &budget, endProcess), &duk_destroy_heap);
    if (!heap) return {};
    duk_context* engine = heap.get();
    const std::string program = engineForm(source.units());
    if (duk_peval_lstring(engine, program.data(), program.size()) != 0) return {};
    // A proxy or a getter of an array may throw while the result is read: that is an error, too.
    Output out{{}, kResultFactor * memoryBytes};
    const auto read = [](duk_context* context, void* user) -> duk_ret_t {
        putValue(*static_cast<Output*>(user), context, false);
        return 0;
    };
    if (duk_safe_call(engine, read, &out, 1, 1) != 0) return {};
    return std::move(out.bytes);
}

std::optional<ScriptDescriptor> readScriptResult(const std::vector<std::uint8_t>& bytes) {
    return Reader(bytes).takeValue();
}

}  // namespace skarnel
