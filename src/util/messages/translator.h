// What a program says to people, in their language.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "util/messages/catalogue.h"

namespace skarnel {

/// Translates for as long as it lives. The catalogue is read at the first word that is asked for,
/// so that a run that says nothing pays nothing. For one thread.
class Translator {
  public:
    /// English.
    Translator() = default;
    /// The language of a catalogue ("de"); empty is English, and so is one that is not installed.
    explicit Translator(std::string language) : language_(std::move(language)) {}
    /// The language that the environment asks for.
    static Translator ofEnvironment();

    /// A phrase of --help.
    std::string help(std::string_view phrase) const;
    /// A cause, as Catalogue::translated has it.
    std::string cause(std::string_view message) const;
    /// Whether there is a catalogue; false for English.
    bool hasCatalogue() const { return catalogue() != nullptr; }

  private:
    const Catalogue* catalogue() const;

    std::string language_;
    mutable std::unique_ptr<const Catalogue> catalogue_;
    mutable bool looked_ = false;
};

/// Where the catalogue of a language lies: in ../share/locale as seen from the program's folder,
/// which finds it in the build tree and in an installation, or in the folder that was configured.
/// None for what is no plain name.
std::vector<std::string> catalogueFiles(std::string_view language);

}  // namespace skarnel
