// Failing system calls under what the window remembers: the looks of the user's own stay, and so
// do the recent files.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <cerrno>
#include <new>
#include <string>
#include <utility>

#include "qt/user_presets.h"
#include "qt/window_state.h"
#include "storage/every_fault.h"
#include "storage/left_overs.h"
#include "storage/run_as_nobody.h"
#include "storage/temporary_folder.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::FaultyFileSystem;
using test::Repeat;

constexpr SettingNumbers kSome{1, 2, 3, 4, 5, 6, 7};

QStringList namesOf(const WindowState& state) {
    QStringList names;
    for (const QJsonValue& look : state.value(QStringLiteral("presets")).toArray())
        names << look.toObject().value(QStringLiteral("name")).toString();
    return names;
}

class WindowStateFaults : public ::testing::Test {
  protected:
    void SetUp() override {
        WindowState state(path);
        UserPresets(state).add(QStringLiteral("Old"), kSome);
        state.addRecentFile(QStringLiteral("/p/old"));
        ASSERT_TRUE(state.save());
    }
    /// What a window does in its time: a look, a recent file, and a switch.
    static bool changeThrough(const QString& path, FileSystem& fileSystem) {
        WindowState state(path, fileSystem);
        UserPresets(state).add(QStringLiteral("New"), kSome);
        state.addRecentFile(QStringLiteral("/p/new"));
        state.setCueMuted(true);
        return state.save();
    }
    QByteArray bytes() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }
    void put(const QByteArray& text) const {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("window.json"));
};

TEST_F(WindowStateFaults, WhicheverCallFailsTheFileIsWholeAndNothingIsLost) {
    const QByteArray before = bytes();
    const int calls =
        test::callsOf([&](FileSystem& healthy) { ASSERT_TRUE(changeThrough(path, healthy)); });
    ASSERT_GT(calls, 20);
    test::forEachFault(calls, [&](const test::Fault& fault) {
        put(before);
        const ScopedLogCapture log;
        FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
        const bool saved = changeThrough(path, faulty);
        const WindowState next(path);
        const QStringList looks = namesOf(next);
        EXPECT_TRUE(looks.startsWith(QStringLiteral("Old"))) << bytes().toStdString();
        EXPECT_LE(looks.count(QStringLiteral("New")), 1);
        EXPECT_TRUE(next.recentFiles().contains(QStringLiteral("/p/old")));
        if (saved) {
            EXPECT_EQ(looks.size(), 2);
            EXPECT_EQ(next.recentFiles().size(), 2);
            EXPECT_TRUE(next.cueMuted());
        } else {
            const std::string cause = describeError(fault.error > 0 ? fault.error : ENOSPC);
            EXPECT_NE(log.text().find("window.json: "), std::string::npos) << log.text();
            EXPECT_NE(log.text().find(cause), std::string::npos) << log.text();
            EXPECT_NE(fault.error, test::kShortWrite) << "the rest can be written";
        }
        removeLeftOvers(folder.path().toStdString());
        // It was whole, so there is a copy only where it might not be read.
        QFile copy(path + QStringLiteral(".damaged"));
        if (fault.error == EACCES && copy.open(QIODevice::ReadOnly)) {
            EXPECT_TRUE(copy.readAll().startsWith(before.first(before.indexOf("Old"))));
            EXPECT_TRUE(copy.remove());
        }
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                  (QStringList{QStringLiteral("window.json"), QStringLiteral("window.json.lock")}));
    });
}

TEST_F(WindowStateFaults, ADamagedFileIsKeptWhicheverCallFails) {
    const QByteArray damaged = bytes().chopped(9);
    const QString kept = path + QStringLiteral(".damaged");
    const auto putDamaged = [&] {
        QFile::remove(kept);
        QFile::remove(path);  // the copy may be a second name of it
        put(damaged);
    };
    const auto isKept = [&] {
        QFile copy(kept);
        return bytes() == damaged || (copy.open(QIODevice::ReadOnly) && copy.readAll() == damaged);
    };
    const ScopedLogCapture log;
    const int calls = test::callsOf([&](FileSystem& healthy) {
        putDamaged();
        ASSERT_TRUE(changeThrough(path, healthy));
    });
    test::forEachFault(calls, [&](const test::Fault& fault) {
        putDamaged();
        FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
        changeThrough(path, faulty);
        EXPECT_TRUE(isKept());
    });
}

TEST_F(WindowStateFaults, ShortWritesAreCompleted) {
    test::ShortWritingFileSystem slow(3);
    EXPECT_TRUE(changeThrough(path, slow));
    EXPECT_EQ(namesOf(WindowState(path)),
              (QStringList{QStringLiteral("Old"), QStringLiteral("New")}));
}

TEST_F(WindowStateFaults, AFileThatCannotBeReadIsNotReplaced) {
    const ScopedLogCapture log;
    const QByteArray before = bytes();
    test::RefusingFileSystem unreadable({{"read", EIO}});
    WindowState state(path, unreadable);
    UserPresets looks(state);
    looks.add(QStringLiteral("New"), kSome);
    state.setCueMuted(true);
    EXPECT_FALSE(state.save());
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(looks.all().size(), 1) << "it is there for this window";
    EXPECT_NE(log.text().find(describeError(EIO)), std::string::npos) << log.text();
}

TEST_F(WindowStateFaults, AFileThatMayNotBeReadIsKeptBesideTheNewOne) {
    const ScopedLogCapture log;
    const QByteArray before = bytes();
    /// The file itself, not what else lies there.
    class Locked final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string& path) override {
            return call == "open" && path.ends_with("window.json") ? -EACCES : 0;
        }
    } locked;
    WindowState state(path, locked);
    state.setCueMuted(true);
    EXPECT_TRUE(state.save());
    EXPECT_TRUE(namesOf(state).isEmpty());
    QFile kept(path + QStringLiteral(".damaged"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), before);
    EXPECT_TRUE(WindowState(path).cueMuted());
}

TEST_F(WindowStateFaults, DamageThatHappensWhileTheWindowIsUpLosesNothingThatItKnows) {
    const ScopedLogCapture log;
    WindowState state(path);
    put(R"({"presets": "gone", "recentFiles": ["/p/theirs"], "checkerboard": true})");
    state.setCueMuted(true);
    EXPECT_TRUE(state.save());
    const WindowState next(path);
    EXPECT_TRUE(next.cueMuted());
    EXPECT_TRUE(next.checkerboard());
    EXPECT_EQ(namesOf(next), QStringList{QStringLiteral("Old")});
    EXPECT_EQ(next.recentFiles(), QStringList{QStringLiteral("/p/theirs")});
}

TEST_F(WindowStateFaults, AFileThatRootMakesIsTheUsersOwn) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root makes files for others";
    test::giveToAnOrdinaryUser(folder.path().toUtf8().constData());
    const QString inHome = folder.filePath(QStringLiteral("state/skarnel/window.json"));
    WindowState state(inHome);
    state.setCueMuted(true);
    ASSERT_TRUE(state.save());
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        WindowState theirs(inHome);
        const bool seen = theirs.cueMuted();
        theirs.setCheckerboard(true);
        return seen && theirs.save();
    }));
    EXPECT_TRUE(WindowState(inHome).checkerboard());
}

TEST_F(WindowStateFaults, AFileThatCannotBeReadOnceIsReadAll) {
    class Once final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "read" && reads_++ == 0 ? -EIO : 0;
        }
        int reads_ = 0;
    } once;
    EXPECT_EQ(namesOf(WindowState(path, once)), QStringList{QStringLiteral("Old")});
}

/// There is no memory for what is read.
class WithoutMemory final : public test::InterceptedFileSystem {
    int before(const std::string& call, const std::string&) override {
        if (call == "read") throw std::bad_alloc();
        return 0;
    }
};

TEST_F(WindowStateFaults, AFileForWhichThereIsNoMemoryIsNotReplaced) {
    const ScopedLogCapture log;
    const QByteArray before = bytes();
    WithoutMemory empty;
    EXPECT_FALSE(changeThrough(path, empty));
    EXPECT_EQ(bytes(), before);
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".damaged")));
    EXPECT_NE(log.text().find("window.json: Out of memory"), std::string::npos) << log.text();
}

/// Reads fail, or the disk is full, for as long as it is told.
class Weather final : public test::InterceptedFileSystem {
  public:
    std::string bad;

  private:
    int before(const std::string& call, const std::string&) override {
        return call == bad ? -EIO : 0;
    }
};

TEST_F(WindowStateFaults, ALaterTryWritesBesideWhatOthersWroteMeanwhile) {
    for (const char* call : {"read", "write", "flock", "rename", "fsync"}) {
        SCOPED_TRACE(call);
        const ScopedLogCapture log;
        Weather weather;
        weather.bad = call;
        WindowState state(path, weather);
        UserPresets looks(state);
        const QString mine = QString::fromLatin1(call);
        looks.add(mine, kSome);
        looks.add(QStringLiteral("Soon gone"), kSome);
        ASSERT_TRUE(looks.remove(looks.placeOf(QStringLiteral("Soon gone"))));
        const QString theirs = QStringLiteral("Other ") + mine;
        {
            WindowState other(path);
            UserPresets(other).add(theirs, kSome);
        }
        weather.bad.clear();
        EXPECT_TRUE(state.save());
        const QStringList names = namesOf(WindowState(path));
        EXPECT_TRUE(names.startsWith(QStringLiteral("Old"))) << names.join(u',').toStdString();
        EXPECT_EQ(names.count(mine), 1);
        EXPECT_EQ(names.count(theirs), 1);
        EXPECT_FALSE(names.contains(QStringLiteral("Soon gone")));
    }
}

TEST_F(WindowStateFaults, OfTwoLooksOfOneNameTheLaterGetsAFreeOne) {
    const ScopedLogCapture log;
    Weather weather;
    weather.bad = "write";
    WindowState state(path, weather);
    UserPresets looks(state);
    constexpr SettingNumbers kOwn{7, 6, 5, 4, 3, 2, 1};
    for (const char* name : {"Fog", "Fog 2"}) looks.add(QLatin1String(name), kOwn);
    {
        WindowState other(path);
        UserPresets(other).add(QStringLiteral("fog"), kSome);
    }
    QSignalSpy changes(&looks, &UserPresets::changed);
    for (int i = 0; i < 2; ++i) EXPECT_FALSE(state.save());
    weather.bad.clear();
    EXPECT_TRUE(state.save());
    EXPECT_EQ(changes.size(), 1);
    WindowState next(path);
    const QList<UserPreset> all = UserPresets(next).all();
    EXPECT_EQ(looks.all(), all) << "this window shows what lies there";
    EXPECT_EQ(all, (QList<UserPreset>{{QStringLiteral("Old"), kSome},
                                      {QStringLiteral("fog"), kSome},
                                      {QStringLiteral("Fog 2"), kOwn},
                                      {QStringLiteral("Fog 2 2"), kOwn}}));
}

TEST_F(WindowStateFaults, ALookThatGetsAnotherNameIsFollowedByWhoHoldsItsName) {
    for (const bool isWritten : {true, false}) {
        SCOPED_TRACE(isWritten);
        const ScopedLogCapture log;
        Weather weather;
        weather.bad = "write";
        WindowState state(path, weather);
        UserPresets looks(state);
        const QString rain = QString::fromLatin1(isWritten ? "Rain" : "Snow");
        const auto first = std::make_shared<QString>(rain);
        const auto second = std::make_shared<QString>(rain + QStringLiteral(" 2"));
        for (const auto& name : {first, second}) {
            looks.add(*name, kSome);
            looks.follow(name);
        }
        {
            WindowState other(path);
            UserPresets(other).add(rain, {7, 6, 5, 4, 3, 2, 1});
        }
        weather.bad.clear();
        if (isWritten) {
            EXPECT_TRUE(state.save());
            EXPECT_EQ(*first, rain + QStringLiteral(" 2"));
            EXPECT_EQ(*second, rain + QStringLiteral(" 2 2"));
        }
        ASSERT_TRUE(looks.remove(looks.placeOf(*first)));
        EXPECT_EQ(*second, rain + QStringLiteral(" 2 2"));
        const QStringList names = namesOf(WindowState(path));
        EXPECT_TRUE(names.contains(rain)) << "the other window's";
        EXPECT_TRUE(names.contains(*second));
        EXPECT_FALSE(names.contains(rain + QStringLiteral(" 2")));
    }
}

TEST_F(WindowStateFaults, ALookGetsAFreeNameAlsoWhenTheListItWasAddedToIsGone) {
    const ScopedLogCapture log;
    Weather weather;
    weather.bad = "write";
    WindowState state(path, weather);
    UserPresets(state).add(QStringLiteral("Fog"), {7, 6, 5, 4, 3, 2, 1});
    {
        WindowState other(path);
        UserPresets(other).add(QStringLiteral("Fog"), kSome);
    }
    weather.bad.clear();
    EXPECT_TRUE(state.save());
    EXPECT_EQ(namesOf(WindowState(path)),
              (QStringList{QStringLiteral("Old"), QStringLiteral("Fog"), QStringLiteral("Fog 2")}));
}

TEST_F(WindowStateFaults, WhatWouldBeTooLargeToBeReadAgainIsNotWritten) {
    const ScopedLogCapture log;
    const QByteArray before = bytes();
    WindowState state(path);
    UserPresets looks(state);
    looks.add(QString(1 << 20, u'x'), kSome);
    state.setCueMuted(true);
    EXPECT_FALSE(state.save());
    EXPECT_EQ(bytes(), before);
    EXPECT_NE(log.text().find("window.json: It would be larger"), std::string::npos);
    ASSERT_TRUE(looks.remove(1));
    EXPECT_TRUE(WindowState(path).cueMuted());
    EXPECT_EQ(namesOf(WindowState(path)), QStringList{QStringLiteral("Old")});
}

TEST_F(WindowStateFaults, TheLargestFileIsReadAgain) {
    constexpr qsizetype kLargest = 1 << 20;
    const qsizetype rest = bytes().size();
    for (const qsizetype more : {0, 1}) {
        const ScopedLogCapture log;
        WindowState state(path);
        // The name, its quotes, and what else stands in a line of the file.
        constexpr qsizetype kLine = sizeof(R"(    "openFolder": "",)");
        state.setOpenFolder(QString(kLargest - rest - kLine + more, u'x'));
        EXPECT_EQ(state.save(), more == 0);
        EXPECT_EQ(bytes().size(), kLargest);
        EXPECT_EQ(namesOf(WindowState(path)), QStringList{QStringLiteral("Old")});
    }
}

TEST_F(WindowStateFaults, ADamagedFileStaysInItsPlaceWhenNothingIsWritten) {
    put("{");
    const ScopedLogCapture log;
    WindowState state(path);
    state.setOpenFolder(QString(1 << 20, u'x'));
    EXPECT_FALSE(state.save());
    EXPECT_EQ(bytes(), "{");
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".damaged")));
    state.setOpenFolder({});
    EXPECT_TRUE(state.save());
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".damaged")));
}

TEST_F(WindowStateFaults, WhatWasRemovedWhileTheDiskWasFullStaysAway) {
    {
        WindowState other(path);
        UserPresets(other).add(QStringLiteral("Second"), kSome);
    }
    const ScopedLogCapture log;
    Weather weather;
    WindowState state(path, weather);
    UserPresets looks(state);
    weather.bad = "write";
    ASSERT_TRUE(looks.remove(0));
    {
        WindowState other(path);
        UserPresets(other).add(QStringLiteral("Third"), kSome);
    }
    EXPECT_FALSE(state.save());
    {
        // Of what the second try has seen already.
        WindowState other(path);
        UserPresets theirs(other);
        ASSERT_TRUE(theirs.remove(theirs.placeOf(QStringLiteral("Third"))));
    }
    weather.bad.clear();
    EXPECT_TRUE(state.save());
    EXPECT_EQ(namesOf(WindowState(path)), QStringList{QStringLiteral("Second")});
    looks.add(QStringLiteral("Last"), kSome);
    EXPECT_EQ(namesOf(WindowState(path)),
              (QStringList{QStringLiteral("Second"), QStringLiteral("Last")}));
}

}  // namespace
}  // namespace skarnel
