// What the window remembers, and the care that its file is given.
#include "qt/window_state.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>

#include "qt/user_presets.h"
#include "storage/left_overs.h"
#include "storage/scoped_variable.h"

namespace skarnel {
namespace {

using test::ScopedVariable;

constexpr SettingNumbers kSome{1, 2, 3, 4, 5, 6, 7};

class WindowStateFile : public ::testing::Test {
  protected:
    void put(const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QByteArray bytesOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }
    /// The looks that the next start finds.
    QStringList looks() const {
        WindowState state(path);
        const UserPresets presets(state);
        QStringList names;
        for (const UserPreset& preset : presets.all()) names << preset.name;
        return names;
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("window.json"));
    QString kept = path + QStringLiteral(".damaged");
};

TEST(WindowState, ComesBackAsItWasAndDamageCountsAsNothing) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("deep/window.json"));
    {
        WindowState state(path);
        EXPECT_FALSE(state.cueMuted());
        EXPECT_TRUE(state.textShown());
        state.setCueMuted(true);
        state.setGeometry("bytes");
        state.addRecentFile(QStringLiteral("/a/b.png"));
        EXPECT_TRUE(state.save());
    }
    WindowState again(path);
    EXPECT_TRUE(again.cueMuted());
    EXPECT_EQ(again.geometry(), QByteArray("bytes"));
    EXPECT_EQ(again.recentFiles(), QStringList{QStringLiteral("/a/b.png")});
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"cueMuted\": tr");
    file.close();
    EXPECT_FALSE(WindowState(path).cueMuted());
}

TEST(WindowState, TheFileLiesAmongTheUsersStates) {
    const ScopedVariable states("XDG_STATE_HOME", "/states");
    const ScopedVariable home("HOME", "/home/user");
    EXPECT_EQ(WindowState::defaultPath(), QStringLiteral("/states/skarnel/window.json"));
    // A relative path counts as none.
    for (const char* none : {"states", ""}) {
        const ScopedVariable noStates("XDG_STATE_HOME", none);
        EXPECT_EQ(WindowState::defaultPath(),
                  QStringLiteral("/home/user/.local/state/skarnel/window.json"));
        for (const char* noHome : {"user", ""}) {
            const ScopedVariable nowhere("HOME", noHome);
            EXPECT_EQ(WindowState::defaultPath(), QString());
        }
    }
}

TEST(WindowState, WithoutAHomeItLastsAsLongAsTheWindow) {
    WindowState state{QString()};
    state.removeLeftOvers();
    state.setCheckerboard(true);
    EXPECT_TRUE(state.save());
    UserPresets looks(state);
    looks.add(QStringLiteral("Mine"), kSome);
    EXPECT_EQ(looks.all(), (QList<UserPreset>{{QStringLiteral("Mine"), kSome}}));
    EXPECT_TRUE(state.checkerboard());
}

TEST(WindowState, RecentFilesAreTheLatestFirstOnceAndTen) {
    WindowState state{QString()};
    for (int i = 0; i < 14; ++i) state.addRecentFile(QStringLiteral("/p/%1.png").arg(i));
    state.addRecentFile(QStringLiteral("/p/9.png"));
    const QStringList files = state.recentFiles();
    EXPECT_EQ(files.size(), 10);
    EXPECT_EQ(files.front(), QStringLiteral("/p/9.png"));
    EXPECT_EQ(files.count(QStringLiteral("/p/9.png")), 1);
    state.clearRecentFiles();
    EXPECT_TRUE(state.recentFiles().isEmpty());
}

TEST_F(WindowStateFile, EveryPlaceAndSwitchComesBack) {
    {
        WindowState state(path);
        EXPECT_FALSE(state.checkerboard());
        EXPECT_EQ(state.appearance(), QString());
        state.setSplitter(QByteArray("\0\xFFsizes", 7));
        state.setOpenFolder(QStringLiteral("/from here"));
        state.setSaveFolder(QStringLiteral("/to there"));
        state.setCheckerboard(true);
        state.setTextShown(false);
        state.setAppearance(QStringLiteral("dark"));
        EXPECT_TRUE(state.save());
    }
    const WindowState next(path);
    EXPECT_EQ(next.splitter(), QByteArray("\0\xFFsizes", 7));
    EXPECT_EQ(next.openFolder(), QStringLiteral("/from here"));
    EXPECT_EQ(next.saveFolder(), QStringLiteral("/to there"));
    EXPECT_TRUE(next.checkerboard());
    EXPECT_FALSE(next.textShown());
    EXPECT_EQ(next.appearance(), QStringLiteral("dark"));
}

TEST_F(WindowStateFile, AChangeIsToldOnceAndOnlyChangesAreWritten) {
    WindowState state(path);
    int told = 0;
    state.onChange([&] { ++told; });
    EXPECT_TRUE(state.save());
    EXPECT_FALSE(QFile::exists(path)) << "nothing was changed";
    state.setCueMuted(true);
    state.setCueMuted(true);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(state.save());
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(state.save());
    EXPECT_FALSE(QFile::exists(path)) << "nothing was changed since";
}

TEST_F(WindowStateFile, WhatAKilledWriteLeftIsRemoved) {
    const QString left = QString::fromStdString(temporaryFilePath(folder.path().toStdString()));
    const QString users = folder.filePath(QStringLiteral("notes.txt"));
    for (const QString& name : {left, users}) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    WindowState(path).removeLeftOvers();
    EXPECT_FALSE(QFile::exists(left));
    EXPECT_TRUE(QFile::exists(users));
}

TEST_F(WindowStateFile, WhatCannotBeReadIsKeptBesideBeforeAnythingIsWritten) {
    const std::pair<const char*, QByteArray> damages[] = {
        {"cut", "{\"presets\":[{\"name\":\"Mine\""},
        {"no object", "[1, 2]"},
        {"empty", ""},
        {"random", QByteArray("\0\xFF\x80{", 4)},
        {"a list of the wrong type", "{\"presets\": {\"name\": \"Mine\"}}"},
        {"too large", "{\"presets\": []" + QByteArray(2 << 20, ' ') + "}"},
    };
    for (const auto& [name, bytes] : damages) {
        SCOPED_TRACE(name);
        put(bytes);
        WindowState state(path);
        EXPECT_TRUE(state.recentFiles().isEmpty());
        EXPECT_FALSE(QFile::exists(kept)) << "reading alone writes nothing";
        state.setCueMuted(true);
        EXPECT_TRUE(state.save());
        EXPECT_EQ(bytesOf(kept), bytes);
        EXPECT_TRUE(WindowState(path).cueMuted());
        state.setCueMuted(false);
        EXPECT_TRUE(state.save());
        EXPECT_FALSE(QFile::exists(kept + QStringLiteral("-2"))) << "once is enough";
        ASSERT_TRUE(QFile::remove(kept));
    }
}

TEST_F(WindowStateFile, APipeDoesNotHoldTheStartUpAndAFolderMakesRoom) {
    ASSERT_EQ(::mkfifo(path.toLocal8Bit().constData(), 0600), 0);
    {
        WindowState state(path);
        state.setCueMuted(true);
        EXPECT_TRUE(state.save());
    }
    EXPECT_TRUE(WindowState(path).cueMuted());
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("window.json")));
    {
        WindowState state(path);
        state.setCueMuted(true);
        EXPECT_TRUE(state.save());
    }
    EXPECT_TRUE(WindowState(path).cueMuted());
}

TEST_F(WindowStateFile, WindowsThatRunAtOnceWriteOnlyWhatTheyChanged) {
    WindowState one(path);
    WindowState two(path);
    UserPresets looksOfOne(one);
    UserPresets looksOfTwo(two);
    EXPECT_EQ(looksOfOne.add(QStringLiteral("One"), kSome), 0);
    EXPECT_EQ(looksOfTwo.add(QStringLiteral("Two"), kSome), 1);
    EXPECT_EQ(looksOfOne.add(QStringLiteral("Two"), kSome), 2) << "the other's is taken";
    one.setCueMuted(true);
    two.setTextShown(false);
    EXPECT_TRUE(one.save());
    EXPECT_TRUE(two.save());
    const WindowState next(path);
    EXPECT_TRUE(next.cueMuted());
    EXPECT_FALSE(next.textShown());
    EXPECT_EQ(looks(),
              (QStringList{QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Two 2")}));
    looksOfTwo.remove(0);
    EXPECT_FALSE(looksOfOne.all().isEmpty());
    EXPECT_TRUE(looksOfOne.rename(1, QStringLiteral("Zwei")));
    EXPECT_EQ(looks(), (QStringList{QStringLiteral("Zwei"), QStringLiteral("Two 2")}));
}

TEST_F(WindowStateFile, WindowsThatRunAtOnceKeepTheRecentFilesOfAll) {
    const auto file = [](const char* name) { return QStringLiteral("/p/") + QLatin1String(name); };
    WindowState one(path);
    WindowState two(path);
    one.addRecentFile(file("a"));
    two.addRecentFile(file("b"));
    EXPECT_TRUE(one.save());
    EXPECT_TRUE(two.save());
    EXPECT_EQ(WindowState(path).recentFiles(), (QStringList{file("b"), file("a")}));
    EXPECT_EQ(two.recentFiles(), (QStringList{file("b"), file("a")}));
    one.addRecentFile(file("c"));
    one.addRecentFile(file("a"));
    EXPECT_EQ(one.recentFiles(), (QStringList{file("a"), file("c")}));
    EXPECT_TRUE(one.save());
    EXPECT_EQ(one.recentFiles(), (QStringList{file("a"), file("c"), file("b")}));
    two.clearRecentFiles();
    two.addRecentFile(file("d"));
    EXPECT_TRUE(two.save());
    EXPECT_EQ(WindowState(path).recentFiles(), QStringList{file("d")});
}

TEST_F(WindowStateFile, RecentFilesAreThoseOfTheFileSystem) {
    put("{\"recentFiles\": [\"relative\", \":/icons/open.svg\", \":a\", 7, \"/a.png\"]}");
    EXPECT_EQ(WindowState(path).recentFiles(), QStringList{QStringLiteral("/a.png")});
}

TEST_F(WindowStateFile, ALookThatCannotBeReadHereStays) {
    put("{\"presets\": [{\"name\": \"Of a later version\", \"shape\": 4}], \"unknown\": 7}");
    {
        WindowState state(path);
        UserPresets presets(state);
        EXPECT_TRUE(presets.all().isEmpty());
        presets.add(QStringLiteral("Mine"), kSome);
    }
    EXPECT_EQ(looks(), QStringList{QStringLiteral("Mine")});
    const WindowState state(path);
    EXPECT_EQ(state.value(QStringLiteral("presets")).toArray().size(), 2);
    EXPECT_EQ(state.value(QStringLiteral("unknown")).toInt(), 7);
    EXPECT_FALSE(QFile::exists(kept));
}

}  // namespace
}  // namespace skarnel
