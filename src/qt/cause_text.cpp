#include "qt/cause_text.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace skarnel {
namespace {

constexpr const char* kContext = "Cause";

/// The causes that the window passes on, as the folders below word them; %1 to %3 stand for what
/// differs from case to case.
constexpr const char* kCauses[] = {
    QT_TRANSLATE_NOOP("Cause", "The file carries no recipe"),
    QT_TRANSLATE_NOOP("Cause", "This is not a recipe"),
    QT_TRANSLATE_NOOP("Cause", "This is not a recipe, or only the beginning of one"),
    QT_TRANSLATE_NOOP("Cause", "The file is empty"),
    QT_TRANSLATE_NOOP("Cause", "The recipe is cut off"),
    QT_TRANSLATE_NOOP("Cause", "The recipe is damaged at byte %1"),
    QT_TRANSLATE_NOOP("Cause", "The recipe is larger than 64 MB"),
    QT_TRANSLATE_NOOP("Cause", "The recipe does not say its version"),
    QT_TRANSLATE_NOOP("Cause", "The recipe has version %1 and this program reads up to version %2"),
    QT_TRANSLATE_NOOP("Cause", "The recipe has \"%1\" twice"),
    QT_TRANSLATE_NOOP("Cause", "The recipe's setting \"%1\" is missing or damaged"),
    QT_TRANSLATE_NOOP("Cause", "The recipe has a setting that this program does not know"),
    QT_TRANSLATE_NOOP("Cause", "The recipe's settings are damaged"),
    QT_TRANSLATE_NOOP("Cause", "The recipe's background is no colour"),
    QT_TRANSLATE_NOOP("Cause", "The recipe has no \"%1\""),
    QT_TRANSLATE_NOOP("Cause", "The recipe has an unknown member \"%1\""),
    QT_TRANSLATE_NOOP("Cause", "The text cannot be kept in a recipe"),
    QT_TRANSLATE_NOOP("Cause", "The recipe's text is damaged: %1"),
    QT_TRANSLATE_NOOP("Cause", "The recipe's text is damaged"),
    QT_TRANSLATE_NOOP("Cause",
                      "The recipe is too large for a JPEG file, which has room for 65,504 bytes"),
    QT_TRANSLATE_NOOP("Cause", "The picture's structure cannot be followed"),
    QT_TRANSLATE_NOOP("Cause", "The file already exists"),
    QT_TRANSLATE_NOOP("Cause", "The folder does not exist"),
    QT_TRANSLATE_NOOP("Cause", "It is a folder"),
    QT_TRANSLATE_NOOP("Cause", "It is not an ordinary file"),
    QT_TRANSLATE_NOOP("Cause", "The file is too large"),
    QT_TRANSLATE_NOOP("Cause", "The file is larger than 8 GB"),
    QT_TRANSLATE_NOOP("Cause", "The picture says it has %1 x %2 pixels, above the limit of %3"),
    QT_TRANSLATE_NOOP("Cause",
                      "The picture says it has %1 x %2 pixels, too many for a file of %3 bytes "
                      "(skarnel-render --max-pixels allows them)"),
    QT_TRANSLATE_NOOP("Cause", "The JPEG has more than 100 scans"),
    QT_TRANSLATE_NOOP("Cause", "Not enough memory for the picture"),
    QT_TRANSLATE_NOOP(
        "Cause", "A page of %1 by %2 pixels is too large to capture; at most 16384 by 16384 are"),
    QT_TRANSLATE_NOOP("Cause", "The page renderer ended"),
    QT_TRANSLATE_NOOP("Cause", "The page renderer is not installed"),
    QT_TRANSLATE_NOOP("Cause", "The page was not painted in time"),
    QT_TRANSLATE_NOOP("Cause", "Nothing more could be written"),
    QT_TRANSLATE_NOOP("Cause", "Out of memory"),
};

/// What stands in the places of %1 to %3, in their order; none when the cause is another one.
std::optional<QStringList> placesIn(const QString& message, const char* cause) {
    QString pattern = QRegularExpression::escape(QString::fromLatin1(cause));
    pattern.replace(QRegularExpression(QStringLiteral("\\\\%[123]")), QStringLiteral("(.*)"));
    const QRegularExpressionMatch match =
        QRegularExpression(QRegularExpression::anchoredPattern(pattern),
                           QRegularExpression::DotMatchesEverythingOption)
            .match(message);
    if (!match.hasMatch()) return std::nullopt;
    return match.capturedTexts().mid(1);
}

}  // namespace

QString causeText(const Error& error) {
    QString message = QString::fromStdString(error.message);
    for (const char* cause : kCauses) {
        const auto places = placesIn(message, cause);
        if (!places) continue;
        QString text = QCoreApplication::translate(kContext, cause);
        switch (places->size()) {
            case 0:
                return text;
            case 1:
                return text.arg(places->at(0));
            case 2:
                return text.arg(places->at(0), places->at(1));
            default:
                return text.arg(places->at(0), places->at(1), places->at(2));
        }
    }
    return message;
}

}  // namespace skarnel
