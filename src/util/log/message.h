// Phrases that the catalogues translate. They are made in English, since programs and logs read
// them too, and are translated where a person reads them (util/messages).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace skarnel {

/// Marks a phrase for tools/update-messages where nothing else shows that it is one. The first
/// phrase of an Error written with its code, and that of `filled`, need no mark.
constexpr const char* marked(const char* phrase) {
    return phrase;
}

/// The phrase with the first of `places` for each "%1", the second for each "%2", up to "%9". What
/// stands in a place is not looked at again. A place that is not given stays as it is.
std::string filled(std::string_view phrase, std::initializer_list<std::string_view> places);

}  // namespace skarnel
