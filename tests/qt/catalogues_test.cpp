// The catalogues of the window's texts: complete, and true to the form of what they translate.
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <array>
#include <cstddef>
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

/// A word of the window and what each language, in the order of kCatalogues, calls it.
struct Term {
    const char* word;
    std::array<const char*, kCatalogues.size()> called;
};

constexpr Term kTerms[] = {
    {"recipe", {"rezept", "receta", "recette", "レシピ", "配方"}},
    {"look", {"stil", "estilo", "style", "スタイル", "样式"}},
    {"setting", {"einstellung", "ajuste", "réglage", "設定", "设置"}},
    {"reflection", {"spiegelbild", "reflejo", "reflet", "反射", "倒影"}},
    {"background", {"hintergrund", "fondo", "arrière-plan", "背景", "背景"}},
    {"fade", {"ausblend", "desvanec", "fondu", "フェード", "渐隐"}},
    {"opacity", {"deckkraft", "opacidad", "opacité", "不透明", "不透明"}},
    {"pixel", {"pixel", "píxel", "pixel", "ピクセル", "像素"}},
    {"clipboard", {"zwischenablage", "portapapeles", "presse-papiers", "クリップボード", "剪贴板"}},
    {"folder", {"ordner", "carpeta", "dossier", "フォルダー", "文件夹"}},
    {"memory", {"speicher", "memoria", "mémoire", "メモリー", "内存"}},
};

TEST(Catalogues, CallOneThingByOneName) {
    for (std::size_t i = 0; i < kCatalogues.size(); ++i) {
        const auto messages =
            messagesOf(catalogueFile(QStringLiteral(SKARNEL_CATALOGUE_SOURCES), kCatalogues[i]));
        for (const Term& term : kTerms) {
            const QRegularExpression word(
                QStringLiteral("\\b%1s?\\b").arg(QLatin1String(term.word)),
                QRegularExpression::CaseInsensitiveOption);
            for (const Message& message : messages) {
                if (!QString(message.source).remove(QLatin1Char('&')).contains(word)) continue;
                EXPECT_TRUE(QString(message.translation)
                                .remove(QLatin1Char('&'))
                                .contains(QString::fromUtf8(term.called[i]), Qt::CaseInsensitive))
                    << kCatalogues[i] << ": “" << message.translation.toStdString() << "” for “"
                    << message.source.toStdString() << "” without " << term.called[i];
            }
        }
    }
}

/// French sets a space before a double sign and inside quotation marks; a line never breaks there.
TEST(Catalogues, FrenchSignsStayWithTheirWords) {
    const QRegularExpression breakable(QStringLiteral(" [;:?!»]|« "));
    const QString path = catalogueFile(QStringLiteral(SKARNEL_CATALOGUE_SOURCES), "fr");
    for (const Message& message : messagesOf(path))
        EXPECT_FALSE(message.translation.contains(breakable)) << message.translation.toStdString();
}

TEST(Catalogues, HaveEveryTextOfTheSourcesAndNoOther) {
    ASSERT_FALSE(QStandardPaths::findExecutable(QStringLiteral("lupdate"),
                                                {QStringLiteral("/usr/lib/qt6/bin")})
                     .isEmpty())
        << "lupdate is not installed; tools/install-packages window";
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
