#include "qt/languages.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <algorithm>

#include "util/resources/resource_path.h"

namespace skarnel {
namespace {

bool speaksEnglish(const QString& language) {
    return language == QLatin1String("en") || language == QLatin1String("c") ||
           language == QLatin1String("posix");
}

/// Those who read one of the two ways of writing Chinese do not always read the other.
QString catalogueOf(QString tag) {
    const QString language = tag.replace(QLatin1Char('_'), QLatin1Char('-'))
                                 .section(QLatin1Char('-'), 0, 0)
                                 .section(QLatin1Char('.'), 0, 0)
                                 .toLower();
    if (language == QLatin1String("zh")) {
        const bool simplified = QLocale(tag).script() == QLocale::SimplifiedHanScript;
        return simplified ? QStringLiteral("zh_CN") : QString();
    }
    const bool known = std::any_of(kCatalogues.begin(), kCatalogues.end(), [&](const char* each) {
        return language == QLatin1String(each);
    });
    return known ? language : speaksEnglish(language) ? QStringLiteral("en") : QString();
}

/// As the toolkit's translators, the application's own: whoever tells a cause has no other way to
/// it. Null without a language.
const Translator*& chosenCauses() {
    static const Translator* causes = nullptr;
    return causes;
}

bool install(QTranslator& translator, bool loaded) {
    return loaded && QCoreApplication::installTranslator(&translator);
}

}  // namespace

QString catalogueFor(const QStringList& userLanguages) {
    for (const QString& tag : userLanguages) {
        const QString catalogue = catalogueOf(tag);
        if (!catalogue.isEmpty()) return catalogue == QLatin1String("en") ? QString() : catalogue;
    }
    return {};
}

Language::Language(const QString& catalogue) : causes_(catalogue.toStdString()) {
    chosenCauses() = &causes_;
    if (catalogue.isEmpty()) return;
    spokenByToolkit_ =
        install(toolkit_, toolkit_.load(QStringLiteral("qtbase_") + catalogue,
                                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)));
    const auto path = findResource("translations/skarnel_" + catalogue.toStdString() + ".qm");
    spoken_ = install(own_, path && own_.load(QString::fromStdString(*path)));
}

Language::~Language() {
    chosenCauses() = nullptr;
    for (QTranslator* translator : {&own_, &toolkit_}) {
        if (!translator->isEmpty()) QCoreApplication::removeTranslator(translator);
    }
}

const Translator& spokenCauses() {
    static const Translator english;
    return chosenCauses() != nullptr ? *chosenCauses() : english;
}

}  // namespace skarnel
