#include "qt/motion.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>
#include <QProxyStyle>

namespace skarnel {
namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kReducedMotion = "reduced-motion";
constexpr const char* kDesktop = "org.gnome.desktop.interface";
constexpr const char* kAnimations = "enable-animations";
constexpr uint kReduce = 1;

/// The style that the application would have anyway, which can be kept from animating.
class CalmStyle final : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        const bool animates = hint == SH_Widget_Animation_Duration || hint == SH_Widget_Animate;
        return calm && animates ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
    bool calm = false;
};

/// Gone with the application object.
QPointer<CalmStyle> installedStyle;

CalmStyle& calmStyle() {
    if (installedStyle.isNull()) {
        installedStyle = new CalmStyle;
        QApplication::setStyle(installedStyle);  // which takes it over
    }
    return *installedStyle;
}

QVariant inner(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

Motion::Motion(QObject* parent) : QObject(parent) {}

void Motion::follow(QDBusConnection bus) {
    if (!bus.isConnected()) return;
    // The bus finds the slot's types by their names.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(QLatin1String(kService), QLatin1String(kPath), QLatin1String(kInterface),
                QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(bus, QLatin1String(kAppearance), QLatin1String(kReducedMotion));
    ask(bus, QLatin1String(kDesktop), QLatin1String(kAnimations));
}

void Motion::ask(QDBusConnection& bus, const QString& group, const QString& key) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(QLatin1String(kService), QLatin1String(kPath),
                                       QLatin1String(kInterface), QStringLiteral("Read"));
    question << group << key;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, group, key] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid()) settingChanged(group, key, reply.value());
        answer->deleteLater();
    });
}

void Motion::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    const QVariant plain = inner(value.variant());
    if (group == QLatin1String(kAppearance) && key == QLatin1String(kReducedMotion))
        fewer_ = plain.toUInt() == kReduce;
    else if (group == QLatin1String(kDesktop) && key == QLatin1String(kAnimations))
        none_ = !plain.toBool();
    else
        return;
    apply();
}

void Motion::apply() {
    // Nobody who wants motion pays for the way to do without.
    if (!isReduced() && installedStyle.isNull()) return;
    CalmStyle& style = calmStyle();
    if (style.calm == isReduced()) return;
    style.calm = isReduced();
    if (style.calm) effects_ = QApplication::isEffectEnabled(Qt::UI_General);
    QApplication::setEffectEnabled(Qt::UI_General, !style.calm && effects_);
}

}  // namespace skarnel
