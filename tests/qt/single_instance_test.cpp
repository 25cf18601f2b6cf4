// One window for all starts of the program.
#include "qt/single_instance.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDataStream>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <barrier>
#include <memory>
#include <vector>

#include "storage/run_as_nobody.h"

namespace skarnel {
namespace {

/// Starts of the program, each on a thread of its own in place of a process. The doors stay open
/// until every start knows how it came out.
class Starts {
  public:
    Starts(QString door, int count) : door_(std::move(door)), gate_(count), running_(count) {
        for (int i = 0; i < count; ++i)
            threads_.emplace_back(QThread::create([this] {
                gate_.arrive_and_wait();
                SingleInstance instance;
                if (instance.claim(door_, {QStringLiteral("/p/a.png")})) ++winners_;
                --running_;
                gate_.arrive_and_wait();
            }));
        for (const auto& thread : threads_) thread->start();
    }
    int running() const { return running_; }
    /// How many got the window, once all are through.
    int winners() {
        for (const auto& thread : threads_) thread->wait();
        return winners_;
    }

  private:
    QString door_;
    std::barrier<> gate_;
    std::atomic<int> running_;
    std::atomic<int> winners_ = 0;
    std::vector<std::unique_ptr<QThread>> threads_;
};

TEST(SingleInstance, ASecondStartHandsItsPicturesToTheFirst) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    EXPECT_FALSE(SingleInstance::handOver(door, {}));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    QStringList received;
    ActivationToken shown;
    int calls = 0;
    QObject::connect(&first, &SingleInstance::called,
                     [&](const QStringList& pictures, const ActivationToken& token) {
                         received = pictures;
                         shown = token;
                         ++calls;
                     });
    // The second start is another process; here another thread stands for it.
    bool handed = false;
    const ActivationToken token{"gnome-shell/42", "launcher-7_TIME815"};
    const std::unique_ptr<QThread> second(QThread::create(
        [&] { handed = SingleInstance::handOver(door, {QStringLiteral("/p/a b.png")}, token); }));
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_TRUE(handed);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(received, QStringList{QStringLiteral("/p/a b.png")});
    EXPECT_TRUE(shown == token);
}

/// What a program of before the tokens says and understands: its word, then the pictures.
QByteArray messageWithoutToken(const QStringList& pictures) {
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << quint32{0x534B4C31} << pictures;
    return message;
}

TEST(SingleInstance, AnOlderProgramsStartIsUnderstoodWithoutAToken) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    const QStringList pictures{QStringLiteral("/p/a.png"), QStringLiteral("/p/b.png")};
    // Behind the pictures nothing, what is cut off, and what nobody knows.
    for (const QByteArray& more : {QByteArray(), QByteArray("SKLT\0\0\0\7gnom", 12),
                                   QByteArray("SKLX\0\0\0\1a\0\0\0\1b", 14)}) {
        SCOPED_TRACE(more.toHex().toStdString());
        QStringList received;
        ActivationToken shown{"before", "before"};
        const auto connection =
            QObject::connect(&first, &SingleInstance::called,
                             [&](const QStringList& called, const ActivationToken& token) {
                                 received = called;
                                 shown = token;
                             });
        QLocalSocket second;
        second.connectToServer(door);
        ASSERT_TRUE(second.waitForConnected());
        second.write(messageWithoutToken(pictures) + more);
        EXPECT_TRUE(QTest::qWaitFor([&] { return second.bytesAvailable() == 1; }, 10'000));
        EXPECT_TRUE(QTest::qWaitFor([&] { return !received.isEmpty(); }, 10'000));
        EXPECT_EQ(received, pictures);
        EXPECT_TRUE(shown == ActivationToken());
        QObject::disconnect(connection);
    }
}

TEST(SingleInstance, AnOlderProgramFindsThePicturesBeforeTheToken) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QLocalServer older;
    ASSERT_TRUE(older.listen(door));
    const QStringList pictures{QStringLiteral("/p/a.png")};
    const QByteArray wanted = messageWithoutToken(pictures);
    QByteArray message;
    QObject::connect(&older, &QLocalServer::newConnection, [&] {
        QLocalSocket* caller = older.nextPendingConnection();
        QObject::connect(caller, &QLocalSocket::readyRead, [&, caller] {
            // The rest stays where it is.
            message += caller->read(wanted.size() - message.size());
            if (message.size() < wanted.size()) return;
            caller->write("1");
            caller->flush();
            caller->disconnectFromServer();
        });
    });
    bool handed = false;
    const std::unique_ptr<QThread> second(QThread::create([&] {
        handed = SingleInstance::handOver(door, pictures, {"gnome-shell/42", "launcher-7"});
    }));
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_TRUE(handed);
    EXPECT_EQ(message, wanted);
}

TEST(SingleInstance, AProgramAtWorkIsHandedThePicturesAndKeepsItsDoor) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    std::vector<QStringList> calls;
    QObject::connect(&first, &SingleInstance::called,
                     [&](const QStringList& pictures) { calls.push_back(pictures); });
    // No event is handled meanwhile, as by a program that renders.
    EXPECT_TRUE(SingleInstance::handOver(door, {QStringLiteral("/p/a.png")}));
    SingleInstance second;
    EXPECT_FALSE(second.listen(door));
    EXPECT_TRUE(calls.empty());
    EXPECT_TRUE(SingleInstance::handOver(door, {QStringLiteral("/p/b.png")}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls.size() == 2; }, 10'000));
    EXPECT_EQ(calls, (std::vector<QStringList>{{QStringLiteral("/p/a.png")},
                                               {QStringLiteral("/p/b.png")}}));
}

TEST(SingleInstance, OfStartsAtTheSameTimeOneGetsTheWindow) {
    const int rounds = qEnvironmentVariableIsSet("SKARNEL_LONG") ? 100 : 2;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        const QTemporaryDir folder;
        Starts starts(folder.filePath(QStringLiteral("door")), 8);
        EXPECT_EQ(starts.winners(), 1);
    }
}

TEST(SingleInstance, AStartWaitsForOneThatIsAboutToOpenTheDoor) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QLockFile turn(door + QStringLiteral(".lock"));
    ASSERT_TRUE(turn.tryLock());
    Starts second(door, 1);
    // Without waiting it would be done by now, on any but the busiest machine.
    EXPECT_FALSE(QTest::qWaitFor([&] { return second.running() == 0; }, 300));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    turn.unlock();
    std::vector<QStringList> calls;
    QObject::connect(&first, &SingleInstance::called,
                     [&](const QStringList& pictures) { calls.push_back(pictures); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return second.running() == 0 && !calls.empty(); }, 10'000));
    EXPECT_EQ(second.winners(), 0);
    EXPECT_EQ(calls, (std::vector<QStringList>{{QStringLiteral("/p/a.png")}}));
}

TEST(SingleInstance, APictureThatIsRefusedIsNotHandedOver) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QLocalServer stranger;
    ASSERT_TRUE(stranger.listen(door));
    bool handed = true;
    const std::unique_ptr<QThread> second(QThread::create(
        [&] { handed = SingleInstance::handOver(door, {QStringLiteral("/p/a.png")}); }));
    QObject::connect(&stranger, &QLocalServer::newConnection,
                     [&] { stranger.nextPendingConnection()->abort(); });
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_FALSE(handed);
}

TEST(SingleInstance, ADoorOfAnotherUserIsToldNothing) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can be two users";
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QLocalServer stranger;
    ASSERT_TRUE(stranger.listen(door));
    // Whom the door belongs to is seen from the other side here: root laid it, open to everybody,
    // and somebody else starts the program.
    for (const QString& path : {folder.path(), door})
        ASSERT_EQ(::chmod(path.toLocal8Bit().constData(), 0777), 0);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser(
        [&] { return !SingleInstance::handOver(door, {QStringLiteral("/p/a.png")}); }));
    QLocalSocket* caller =
        stranger.waitForNewConnection(0) ? stranger.nextPendingConnection() : nullptr;
    EXPECT_TRUE(caller == nullptr || !caller->waitForReadyRead(100));
}

TEST(SingleInstance, TheDoorIsTheUsersAlone) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    const mode_t before = ::umask(0);
    SingleInstance instance;
    ASSERT_TRUE(instance.listen(door));
    EXPECT_EQ(::umask(before), 0U);
    struct stat status {};
    ASSERT_EQ(::stat(door.toLocal8Bit().constData(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 077, 0U);
}

TEST(SingleInstance, ADoorLeftByAProgramThatDiedIsReplaced) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QFile left(door);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.close();
    SingleInstance next;
    EXPECT_TRUE(next.listen(door));
}

}  // namespace
}  // namespace skarnel
