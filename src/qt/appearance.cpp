#include "qt/appearance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPalette>
#include <QStyle>

#include "qt/contrast.h"

namespace skarnel {
namespace {

constexpr int kPortalPatience = 150;  // milliseconds; start-up does not wait longer
constexpr uint kPreferDark = 1;
constexpr float kQuietText = 0.7F;  // opacity of units and hints

struct Tones {
    QColor window, base, alternate, text, button, disabled, highlight, link, mid, toolTip;
};

const Tones kLight{QColor(0xF4, 0xF4, 0xF5), QColor(0xFF, 0xFF, 0xFF), QColor(0xF7, 0xF7, 0xF8),
                   QColor(0x1D, 0x1D, 0x20), QColor(0xF9, 0xF9, 0xFA), QColor(0x96, 0x96, 0x9B),
                   QColor(0x2F, 0x6F, 0xDE), QColor(0x1F, 0x5C, 0xC4), QColor(0xC9, 0xC9, 0xCE),
                   QColor(0xFF, 0xFF, 0xFF)};
const Tones kDark{QColor(0x31, 0x32, 0x36), QColor(0x1B, 0x1C, 0x1F), QColor(0x24, 0x25, 0x28),
                  QColor(0xEA, 0xEA, 0xEC), QColor(0x45, 0x46, 0x4C), QColor(0x86, 0x87, 0x8E),
                  QColor(0x33, 0x6F, 0xDC), QColor(0x7F, 0xAE, 0xF7), QColor(0x1A, 0x1B, 0x1D),
                  QColor(0x3A, 0x3B, 0x40)};

const QColor kDarkEdge(0x9A, 0x9B, 0xA1);

QPalette paletteOf(const Tones& tones) {
    QPalette palette(tones.button, tones.window);
    palette.setColor(QPalette::WindowText, tones.text);
    palette.setColor(QPalette::Base, tones.base);
    palette.setColor(QPalette::AlternateBase, tones.alternate);
    palette.setColor(QPalette::Text, tones.text);
    palette.setColor(QPalette::ButtonText, tones.text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Mid, tones.mid);
    // The frames of bars are drawn with it; lighter than the buttons it would be a bright line.
    if (tones.window.lightness() < 128) palette.setColor(QPalette::Light, tones.button);
    palette.setColor(QPalette::ToolTipBase, tones.toolTip);
    palette.setColor(QPalette::ToolTipText, tones.text);
    palette.setColor(QPalette::Highlight, tones.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, tones.link);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, tones.disabled);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, tones.mid);
    return palette;
}

bool desktopAsksForDark() {
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return false;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(call, QDBus::Block, kPortalPatience);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return false;
    QVariant value = answer.arguments().front();
    // The answer is a variant in a variant.
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value.toUInt() == kPreferDark;
}

/// The platform's palettes are not all made for weak eyes.
void makeReadable(QPalette& palette) {
    QColor quiet = palette.color(QPalette::WindowText);
    quiet.setAlphaF(kQuietText);
    palette.setColor(QPalette::PlaceholderText, quiet);
    for (const auto group : {QPalette::Active, QPalette::Inactive})
        palette.setColor(group, QPalette::Highlight,
                         groundFor(palette.color(group, QPalette::HighlightedText),
                                   palette.color(group, QPalette::Highlight)));
}

/// In the dark, window and base are nearly alike, and the style draws the edge of a box somewhat
/// darker than the window: the boxes of fields and checks, which do not paint the window's colour,
/// are given a lighter one to darken.
void apply(QPalette palette, bool raiseEdges) {
    makeReadable(palette);
    QApplication::setPalette(palette);
    if (raiseEdges) palette.setColor(QPalette::Window, kDarkEdge);
    for (const char* boxed : {"QCheckBox", "QLineEdit"}) QApplication::setPalette(palette, boxed);
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

const QPalette& platformPalette() {
    static const QPalette first = QApplication::palette();
    return first;
}

}  // namespace

Appearance appearanceNamed(const QString& name) {
    if (name == QLatin1String("light")) return Appearance::Light;
    return name == QLatin1String("dark") ? Appearance::Dark : Appearance::System;
}

QString appearanceName(Appearance appearance) {
    return appearance == Appearance::Light  ? QStringLiteral("light")
           : appearance == Appearance::Dark ? QStringLiteral("dark")
                                            : QString();
}

void applyAppearance(Appearance appearance) {
    const QPalette& platform = platformPalette();
    switch (appearance) {
        case Appearance::Light:
            apply(paletteOf(kLight), false);
            return;
        case Appearance::Dark:
            apply(paletteOf(kDark), true);
            return;
        case Appearance::System:
            break;
    }
    const bool dark = !isDark(platform) && desktopAsksForDark();
    apply(dark ? paletteOf(kDark) : platform, dark);
}

bool isDarkPalette() {
    return isDark(QApplication::palette());
}

}  // namespace skarnel
