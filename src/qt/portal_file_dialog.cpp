#include "qt/portal_file_dialog.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QFile>
#include <QGuiApplication>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>

#include "util/log/system_log.h"

namespace skarnel {

/// A pattern of names, and a list of them under a name for the user: (us) and (sa(us)).
struct PortalPattern {
    uint kind = 0;  // 0: a pattern, 1: a media type
    QString pattern;
};
struct PortalFilter {
    QString name;
    QList<PortalPattern> patterns;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const PortalPattern& pattern) {
    argument.beginStructure();
    argument << pattern.kind << pattern.pattern;
    argument.endStructure();
    return argument;
}
static const QDBusArgument& operator>>(const QDBusArgument& argument, PortalPattern& pattern) {
    argument.beginStructure();
    argument >> pattern.kind >> pattern.pattern;
    argument.endStructure();
    return argument;
}
static QDBusArgument& operator<<(QDBusArgument& argument, const PortalFilter& filter) {
    argument.beginStructure();
    argument << filter.name << filter.patterns;
    argument.endStructure();
    return argument;
}
static const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFilter& filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.patterns;
    argument.endStructure();
    return argument;
}

}  // namespace skarnel

Q_DECLARE_METATYPE(skarnel::PortalPattern)
Q_DECLARE_METATYPE(skarnel::PortalFilter)

namespace skarnel {
namespace {

constexpr const char* kSandboxMark = "/.flatpak-info";
constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr uint kChosen = 0;  // 1 is the user's cancelling, 2 any other end

/// Patterns there tell capitals apart, as file systems do: "*.[pP][nN][gG]".
QString inBothCases(const QString& pattern) {
    QString both;
    for (const QChar letter : pattern) {
        if (letter.isLetter())
            both += QStringLiteral("[%1%2]").arg(letter.toLower(), letter.toUpper());
        else
            both += letter;
    }
    return both;
}

/// From "TIFF (*.tiff *.tif)"; without patterns when there are none.
PortalFilter filterOf(const QString& nameFilter) {
    static const QRegularExpression kParts(QStringLiteral("^(.*)\\((.*)\\)\\s*$"));
    const QRegularExpressionMatch parts = kParts.match(nameFilter);
    PortalFilter filter{parts.captured(1).trimmed(), {}};
    for (const QString& each : parts.captured(2).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        filter.patterns.append({0, inBothCases(each)});
    return filter;
}

/// So that the desktop can put its dialog before our window. Wayland's names for windows are not in
/// the toolkit's reach.
QString handleOf(const QWidget* window) {
    if (window == nullptr || QGuiApplication::platformName() != QLatin1String("xcb")) return {};
    return QStringLiteral("x11:%1").arg(window->window()->winId(), 0, 16);
}

}  // namespace

std::optional<QDBusConnection> PortalFileDialog::busOfSandbox() {
    if (!QFile::exists(QLatin1String(kSandboxMark))) return std::nullopt;
    return QDBusConnection::sessionBus();
}

QString PortalFileDialog::pick(const QDBusConnection& bus, Purpose purpose, const QString& title,
                               const QString& nameFilter, const QString& fileName,
                               QWidget* parent) {
    PortalFileDialog dialog(bus, purpose, title, parent);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setNameFilter(nameFilter);
    dialog.setFileName(fileName);
    return dialog.exec() == Accepted ? dialog.paths().value(0) : QString();
}

PortalFileDialog::PortalFileDialog(const QDBusConnection& bus, Purpose purpose,
                                   const QString& title, QWidget* parent)
    : QDialog(parent), bus_(bus), purpose_(purpose) {
    setAttribute(Qt::WA_DontShowOnScreen);
    setWindowTitle(title);
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
    auto* watcher = new QDBusServiceWatcher(QLatin1String(kService), bus_,
                                            QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { fail(QStringLiteral("it has gone")); });
}

PortalFileDialog::~PortalFileDialog() = default;

void PortalFileDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    ask();
}

QVariantMap PortalFileDialog::options() const {
    QVariantMap options{{QStringLiteral("handle_token"), token_}, {QStringLiteral("modal"), true}};
    if (!acceptLabel_.isEmpty()) options.insert(QStringLiteral("accept_label"), acceptLabel_);
    if (purpose_ == Purpose::Save) options.insert(QStringLiteral("current_name"), fileName_);
    if (purpose_ == Purpose::OpenSeveral) options.insert(QStringLiteral("multiple"), true);
    if (purpose_ == Purpose::OpenFolder) options.insert(QStringLiteral("directory"), true);
    const PortalFilter filter = filterOf(nameFilter_);
    if (!filter.patterns.isEmpty()) {
        options.insert(QStringLiteral("filters"), QVariant::fromValue(QList{filter}));
        options.insert(QStringLiteral("current_filter"), QVariant::fromValue(filter));
    }
    return options;
}

void PortalFileDialog::ask() {
    token_ = QStringLiteral("skarnel%1").arg(QRandomGenerator::system()->generate64());
    // The answer's place is known beforehand, so that it cannot come before we listen.
    QString sender = bus_.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    listen(QStringLiteral("%1/request/%2/%3").arg(QLatin1String(kPath), sender, token_));
    QDBusMessage question = QDBusMessage::createMethodCall(
        QLatin1String(kService), QLatin1String(kPath), QLatin1String(kChooser),
        purpose_ == Purpose::Save ? QStringLiteral("SaveFile") : QStringLiteral("OpenFile"));
    question << handleOf(parentWidget()) << windowTitle() << options();
    auto* call = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusObjectPath> reply = *call;
        call->deleteLater();
        if (reply.isError()) return fail(reply.error().message());
        // Old desktops choose a place of their own.
        if (reply.value().path() != request_ && !request_.isEmpty()) listen(reply.value().path());
    });
}

void PortalFileDialog::listen(const QString& request) {
    const auto slot = SLOT(responded(uint, QVariantMap));
    const QString answer = QStringLiteral("Response");
    if (!request_.isEmpty())
        bus_.disconnect(QLatin1String(kService), request_, QLatin1String(kRequest), answer, this,
                        slot);
    request_ = request;
    if (!request_.isEmpty())
        bus_.connect(QLatin1String(kService), request_, QLatin1String(kRequest), answer, this,
                     slot);
}

void PortalFileDialog::responded(uint response, const QVariantMap& results) {
    listen({});
    const QStringList addresses = results.value(QStringLiteral("uris")).toStringList();
    for (const QString& address : addresses) {
        const QUrl url(address);
        if (response == kChosen && url.isLocalFile()) paths_ << url.toLocalFile();
    }
    QDialog::done(paths_.isEmpty() ? Rejected : Accepted);
}

void PortalFileDialog::fail(const QString& cause) {
    if (request_.isEmpty()) return;
    listen({});
    systemLog("The desktop's file dialog cannot be used: " + cause.toStdString());
    QDialog::done(Rejected);
}

void PortalFileDialog::done(int result) {
    if (!request_.isEmpty())
        bus_.send(QDBusMessage::createMethodCall(QLatin1String(kService), request_,
                                                 QLatin1String(kRequest), QStringLiteral("Close")));
    listen({});
    QDialog::done(result);
}

}  // namespace skarnel
