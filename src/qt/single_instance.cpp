#include "qt/single_instance.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QThread>

namespace skarnel {
namespace {

constexpr int kPatience = 1000;       // milliseconds to reach the other and to hear from it
constexpr int kWritePatience = 5000;  // milliseconds until one that takes nothing has hung
constexpr int kTurnPatience = 5000;   // milliseconds to wait for others that start just now
constexpr int kTurnPause = 10;        // milliseconds between two looks whether it is our turn
constexpr int kAttempts = 2;          // the second is for an owner that went away under the first
constexpr qint64 kLongestMessage = 1 << 20;
constexpr quint32 kGreeting = 0x534B4C31;  // the message's first word
// What may follow the pictures. A program of before it leaves it unread, or ends without it.
constexpr quint32 kTokenFollows = 0x534B4C54;
constexpr QDataStream::Version kStream = QDataStream::Qt_6_0;

/// What is made meanwhile is the user's alone. The toolkit's own option for that moves the door
/// from one folder to another, which the window's walls forbid.
class OwnerOnly {
  public:
    OwnerOnly() : before_(::umask(S_IRWXG | S_IRWXO)) {}
    OwnerOnly(const OwnerOnly&) = delete;
    OwnerOnly& operator=(const OwnerOnly&) = delete;
    ~OwnerOnly() { ::umask(before_); }

  private:
    mode_t before_;
};

/// Whether somebody listens there, however busy. A door whose owner is gone refuses at once.
bool livesAt(const QString& door) {
    QLocalSocket socket;
    socket.connectToServer(door);
    return socket.waitForConnected(kPatience) ||
           (socket.error() != QLocalSocket::ConnectionRefusedError &&
            socket.error() != QLocalSocket::ServerNotFoundError);
}

/// Whether the other end is this user's program. Nobody else is told what is opened here, nor
/// tells it.
bool isOwn(const QLocalSocket& socket) {
    ucred other{};
    socklen_t size = sizeof other;
    const auto descriptor = static_cast<int>(socket.socketDescriptor());
    return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 &&
           other.uid == ::geteuid();
}

/// Reaches the program behind a door; false when nobody of ours is there.
bool reach(QLocalSocket& socket, const QString& door) {
    socket.connectToServer(door);
    return socket.waitForConnected(kPatience) && isOwn(socket);
}

/// The token behind a message's pictures; empty when there is none.
ActivationToken tokenIn(QDataStream& stream) {
    ActivationToken token;
    quint32 word = 0;
    stream.startTransaction();
    stream >> word >> token.activation >> token.startup;
    return stream.commitTransaction() && word == kTokenFollows ? token : ActivationToken();
}

/// Whether the other end has taken the pictures.
bool send(QLocalSocket& socket, const QStringList& pictures, const ActivationToken& token) {
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream.setVersion(kStream);
    stream << kGreeting << pictures << kTokenFollows << token.activation << token.startup;
    socket.write(message);
    while (socket.bytesToWrite() > 0)
        if (!socket.waitForBytesWritten(kWritePatience)) return false;
    // The answer says that the window has been raised. One that is at work reads the message when
    // it is done with that; only one that hangs up did not take it.
    return socket.waitForReadyRead(kPatience) || socket.state() == QLocalSocket::ConnectedState;
}

/// Takes the lock as soon as it is free; goes without it after too long a wait. The toolkit's own
/// wait doubles its pauses: of eight programs that start at the same time one at a pause gets its
/// turn, and the last after five seconds.
void awaitTurn(QLockFile& turn) {
    const QDeadlineTimer end(kTurnPatience);
    const OwnerOnly rights;
    while (!turn.tryLock(0) && turn.error() == QLockFile::LockFailedError && !end.hasExpired())
        QThread::msleep(kTurnPause);
}

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::doorName(const QString& folder) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_CONFIG_HOME", "HOME"})
        hash.addData(qgetenv(name) + '\n');
    return QStringLiteral("%1/skarnel-%2-%3")
        .arg(folder, QString::number(getuid()),
             QString::fromLatin1(hash.result().toHex().left(12)));
}

bool SingleInstance::handOver(const QString& door, const QStringList& pictures,
                              const ActivationToken& token) {
    QLocalSocket socket;
    return reach(socket, door) && send(socket, pictures, token);
}

bool SingleInstance::claim(const QString& door, const QStringList& pictures,
                           const ActivationToken& token) {
    QLockFile turn(door + QStringLiteral(".lock"));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        // Between the look at the door and the opening of it another start must not do the same:
        // both would find nobody, and one would tear down the door of the other.
        awaitTurn(turn);
        QLocalSocket socket;
        if (!reach(socket, door)) {
            listen(door);
            return true;
        }
        turn.unlock();
        if (send(socket, pictures, token)) return false;
    }
    return true;
}

bool SingleInstance::listen(const QString& door) {
    server_ = std::make_unique<QLocalServer>();
    connect(server_.get(), &QLocalServer::newConnection, this, &SingleInstance::accept);
    const OwnerOnly rights;
    if (server_->listen(door)) return true;
    if (livesAt(door)) return false;
    QLocalServer::removeServer(door);
    return server_->listen(door);
}

void SingleInstance::accept() {
    QLocalSocket* caller = server_->nextPendingConnection();
    if (caller == nullptr) return;
    connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
    if (!isOwn(*caller)) return caller->abort();
    connect(caller, &QLocalSocket::readyRead, this, [this, caller] {
        if (caller->bytesAvailable() > kLongestMessage) return caller->abort();
        QDataStream stream(caller);
        stream.setVersion(kStream);
        stream.startTransaction();
        quint32 greeting = 0;
        QStringList pictures;
        stream >> greeting >> pictures;
        if (!stream.commitTransaction()) return;
        if (greeting != kGreeting) return caller->abort();
        const ActivationToken token = tokenIn(stream);
        caller->write("1");
        caller->flush();
        caller->disconnectFromServer();
        emit called(pictures, token);
    });
}

}  // namespace skarnel
