// The window with a listener in place of a screen reader.
#pragma once

#include <QAccessible>
#include <algorithm>
#include <string>
#include <vector>

#ifdef SKARNEL_QT_INNER_HEADERS
#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>
#endif

#include "application_fixture.h"
#include "qt/companions.h"
#include "qt/preset_strip.h"

namespace skarnel {

struct Heard {
    QAccessible::Event kind;
    const QObject* object;
    QVariant value;
};
inline std::vector<Heard> heard;

inline void hear(QAccessibleEvent* event) {
    QVariant value;
    if (event->type() == QAccessible::ValueChanged)
        value = static_cast<QAccessibleValueChangeEvent*>(event)->value();
    heard.push_back({event->type(), event->object(), value});
}

inline bool wasHeard(QAccessible::Event kind, const QObject& object) {
    return std::any_of(heard.begin(), heard.end(), [&](const Heard& each) {
        return each.kind == kind && each.object == &object;
    });
}

class AccessTest : public ApplicationTest {
  protected:
    AccessTest() : before_(QAccessible::installUpdateHandler(hear)) { setReader(true); }
    ~AccessTest() override {
        setReader(false);
        QAccessible::installUpdateHandler(before_);
    }

    /// As if a screen reader came or went.
    static void setReader([[maybe_unused]] bool there) {
#ifdef SKARNEL_QT_INNER_HEADERS
        QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(there);
#endif
    }
    /// Whether what happens can be heard here.
    static bool listens() {
        return QAccessible::isActive();
    }

    static QAccessibleInterface& viewOf(QWidget& widget) {
        QAccessibleInterface* view = QAccessible::queryAccessibleInterface(&widget);
        EXPECT_NE(view, nullptr);
        return *view;
    }

    PresetStrip& strip() {
        return app->companions().presets();
    }

    /// What the keyboard can reach, in the window as it stands.
    QList<QWidget*> stops() {
        QList<QWidget*> found;
        for (auto* widget : window().findChildren<QWidget*>())
            if (widget->isVisible() && widget->isEnabled() && !widget->isWindow() &&
                (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr)
                found << widget;
        return found;
    }

  private:
    QAccessible::UpdateHandler before_;
};

inline std::string named(const QWidget& widget) {
    return widget.metaObject()->className() + std::string(" \"") +
           widget.accessibleName().toStdString() + "\" " + widget.objectName().toStdString();
}

}  // namespace skarnel
