#include "qt/single_instance.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>

namespace skarnel {
namespace {

constexpr int kPatience = 1000;  // milliseconds for a program that has hung
constexpr qint64 kLongestMessage = 1 << 20;
constexpr quint32 kGreeting = 0x534B4C31;  // the message's first word
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

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::doorName() {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_CONFIG_HOME", "HOME"})
        hash.addData(qgetenv(name) + '\n');
    const QString name = QStringLiteral("skarnel-%1-%2")
                             .arg(getuid())
                             .arg(QString::fromLatin1(hash.result().toHex().left(12)));
    // Without a folder of the session's own the door stands in the temporary one, where its rights
    // keep others out.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? name : folder + QLatin1Char('/') + name;
}

bool SingleInstance::handOver(const QString& door, const QStringList& pictures) {
    QLocalSocket socket;
    socket.connectToServer(door);
    if (!socket.waitForConnected(kPatience)) return false;
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream.setVersion(kStream);
    stream << kGreeting << pictures;
    socket.write(message);
    socket.flush();
    // The answer says that the window has been raised.
    return socket.waitForReadyRead(kPatience);
}

bool SingleInstance::listen(const QString& door) {
    server_ = std::make_unique<QLocalServer>();
    connect(server_.get(), &QLocalServer::newConnection, this, &SingleInstance::accept);
    const OwnerOnly rights;
    if (server_->listen(door)) return true;
    // Nobody answered at this door a moment ago: its owner is gone.
    QLocalServer::removeServer(door);
    return server_->listen(door);
}

void SingleInstance::accept() {
    QLocalSocket* caller = server_->nextPendingConnection();
    if (caller == nullptr) return;
    connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
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
        caller->write("1");
        caller->flush();
        caller->disconnectFromServer();
        emit called(pictures);
    });
}

}  // namespace skarnel
