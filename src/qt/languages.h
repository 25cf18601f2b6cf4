// The window's language: which catalogue suits the user, and the texts from it.
#pragma once

#include <QString>
#include <QStringList>
#include <QTranslator>
#include <array>

#include "util/messages/translator.h"

namespace skarnel {

/// The languages that there are catalogues for, as in their files' names; English needs none.
inline constexpr std::array<const char*, 5> kCatalogues{"de", "es", "fr", "ja", "zh_CN"};

/// The catalogue of the first of the user's languages that the window speaks; empty for English,
/// and where it speaks none of them. The languages come most wanted first, as QLocale::uiLanguages
/// has them ("de-AT", "zh-Hant-TW"; underscores do as well).
QString catalogueFor(const QStringList& userLanguages);

/// For as long as it lives (one at a time), the application's texts are those of one catalogue, and
/// the toolkit's own those of its catalogue of the same language where that is installed. Widgets
/// read their texts when they are made: the language comes before the first of them.
class Language final {
  public:
    /// An empty name is English.
    explicit Language(const QString& catalogue);
    ~Language();
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;

    /// Whether our own catalogue was found; true for English.
    bool isSpoken() const { return spoken_; }
    /// Whether the toolkit speaks the language too; true for English.
    bool isSpokenByToolkit() const { return spokenByToolkit_; }

  private:
    QTranslator toolkit_;
    QTranslator own_;
    Translator causes_;
    bool spoken_ = true;
    bool spokenByToolkit_ = true;
};

/// The causes in the language of the Language that lives, from the command line's catalogues;
/// English while there is none.
const Translator& spokenCauses();

}  // namespace skarnel
