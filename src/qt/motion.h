// Less motion for those who ask their desktop for it.
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace skarnel {

/// Follows what the desktop says about animations, at the start and while the program runs. When it
/// asks for none, menus and tips do not fade and the style animates nothing. The program has no
/// animations of its own.
class Motion final : public QObject {
    Q_OBJECT
  public:
    explicit Motion(QObject* parent = nullptr);

    /// Asks the desktop, which may answer later or never.
    void follow(QDBusConnection bus);

    bool isReduced() const { return fewer_ || none_; }

  private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void ask(QDBusConnection& bus, const QString& group, const QString& key);
    void apply();

    bool fewer_ = false;    // the desktop asks for less motion
    bool none_ = false;     // the desktop has switched its animations off
    bool effects_ = false;  // whether menus and tips had any before
};

}  // namespace skarnel
