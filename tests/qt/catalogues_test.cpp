// The catalogues of the window's texts: complete, and true to the form of what they translate.
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <vector>

#include <gtest/gtest.h>

#include "qt/languages.h"

namespace skarnel {
namespace {

struct Message {
    QString context;
    QString source;
    QString translation;
    bool finished = false;
};

QString catalogueFile(const QString& folder, const char* language) {
    return folder + QStringLiteral("/skarnel_") + QLatin1String(language) + QStringLiteral(".ts");
}

std::vector<Message> messagesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    std::vector<Message> messages;
    Message message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) continue;
        if (xml.name() == QLatin1String("name")) message.context = xml.readElementText();
        if (xml.name() == QLatin1String("source")) message.source = xml.readElementText();
        if (xml.name() != QLatin1String("translation")) continue;
        message.finished = !xml.attributes().hasAttribute(QLatin1String("type"));
        message.translation = xml.readElementText();
        messages.push_back(message);
    }
    EXPECT_FALSE(xml.hasError()) << path.toStdString();
    EXPECT_GT(messages.size(), 200U) << path.toStdString();
    return messages;
}

QStringList matches(const QString& text, const char* pattern) {
    QStringList found;
    auto each = QRegularExpression(QString::fromLatin1(pattern)).globalMatch(text);
    while (each.hasNext()) found << each.next().captured();
    found.sort();
    return found;
}

/// What a text and its translation must have in common; empty when they do.
QString difference(const Message& message) {
    const QString& from = message.source;
    const QString& to = message.translation;
    if (matches(from, "%\\d") != matches(to, "%\\d")) return QStringLiteral("placeholders");
    if (matches(from, "\\*\\.\\w+") != matches(to, "\\*\\.\\w+")) return QStringLiteral("patterns");
    if (from.count(QLatin1Char('&')) != to.count(QLatin1Char('&'))) return QStringLiteral("key");
    if (from.endsWith(QChar(0x2026)) != to.endsWith(QChar(0x2026)))
        return QStringLiteral("ellipsis");
    const bool colon = to.endsWith(QLatin1Char(':')) || to.endsWith(QChar(0xFF1A));
    if (from.endsWith(QLatin1Char(':')) != colon) return QStringLiteral("colon");
    const bool stop = to.endsWith(QLatin1Char('.')) || to.endsWith(QChar(0x3002));
    if (from.endsWith(QLatin1Char('.')) != stop) return QStringLiteral("full stop");
    return to != to.trimmed() ? QStringLiteral("spaces") : QString();
}

TEST(Catalogues, TheCheckFindsEveryKindOfMistake) {
    const struct {
        const char* from;
        const char* to;
        const char* found;
    } rows[] = {
        {"&Open…", "&Öffnen…", ""},          {"%1 and %2", "%2, %1", ""},
        {"%1 and %2", "%1", "placeholders"}, {"Recipes (*.skarnel)", "Rezepte", "patterns"},
        {"&Open", "Öffnen", "key"},          {"Open…", "Öffnen", "ellipsis"},
        {"Format:", "Format", "colon"},      {"It is.", "Es ist", "full stop"},
        {"Text", "Text ", "spaces"},         {"Save in:", "保存位置：", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(difference({{}, QString::fromUtf8(row.from), QString::fromUtf8(row.to), true}),
                  QLatin1String(row.found))
            << row.from;
}

TEST(Catalogues, EveryTextIsTranslatedAndKeepsItsParts) {
    for (const char* language : kCatalogues) {
        const QString path = catalogueFile(QStringLiteral(SKARNEL_CATALOGUE_SOURCES), language);
        for (const Message& message : messagesOf(path)) {
            EXPECT_TRUE(message.finished && !message.translation.isEmpty())
                << language << ": " << message.source.toStdString();
            EXPECT_EQ(difference(message), QString())
                << language << ": " << message.translation.toStdString();
        }
    }
}

TEST(Catalogues, HaveEveryTextOfTheSourcesAndNoOther) {
    if (QStandardPaths::findExecutable(QStringLiteral("lupdate"),
                                       {QStringLiteral("/usr/lib/qt6/bin")})
            .isEmpty())
        GTEST_SKIP() << "lupdate is not installed";
    const QTemporaryDir copies;
    const QString sources = QStringLiteral(SKARNEL_CATALOGUE_SOURCES);
    for (const char* language : kCatalogues)
        ASSERT_TRUE(
            QFile::copy(catalogueFile(sources, language), catalogueFile(copies.path(), language)));
    ASSERT_EQ(QProcess::execute(sources + QStringLiteral("/../../tools/update-translations"),
                                {copies.path()}),
              0);
    for (const char* language : kCatalogues) {
        const auto before = messagesOf(catalogueFile(sources, language));
        const auto after = messagesOf(catalogueFile(copies.path(), language));
        EXPECT_EQ(before.size(), after.size()) << language;
        for (const Message& message : after)
            EXPECT_TRUE(message.finished)
                << language << " lacks " << message.context.toStdString() << ": "
                << message.source.toStdString() << "; run tools/update-translations";
    }
}

}  // namespace
}  // namespace skarnel
