// One window a user and display: a second start hands its pictures to the first and ends.
#pragma once

#include <QObject>
#include <QStringList>
#include <memory>

class QLocalServer;

namespace skarnel {

class SingleInstance final : public QObject {
    Q_OBJECT
  public:
    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// The name of the running program's door; one for each user, display and settings home.
    static QString doorName();

    /// Gives the pictures (absolute paths) to a program that already runs and asks it to come to
    /// the front. One that is busy does so later. False when none runs.
    static bool handOver(const QString& door, const QStringList& pictures);

    /// Opens the door; true when it is ours. A door left behind by a program that died is replaced,
    /// never one that somebody listens at.
    bool listen(const QString& door);

  signals:
    /// Another start asks the window to come to the front with these pictures, maybe none.
    void called(const QStringList& pictures);

  private:
    void accept();
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace skarnel
