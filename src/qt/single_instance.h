// One window a user and display: a second start hands its pictures to the first and ends.
#pragma once

#include <QObject>
#include <QStringList>
#include <memory>

#include "qt/activation_token.h"

class QLocalServer;

namespace skarnel {

class SingleInstance final : public QObject {
    Q_OBJECT
  public:
    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// The path of the running program's door in a folder that is the user's alone; one for each
    /// user, display and settings home.
    static QString doorName(const QString& folder);

    /// Settles who has the window. False when another program has it: that one has been given the
    /// pictures (absolute paths) and the token that this start may raise a window with. Of several
    /// that start at the same time exactly one gets true. It is also true when no door can be
    /// opened, or nobody behind it takes the pictures: then the start has a window of its own.
    bool claim(const QString& door, const QStringList& pictures, const ActivationToken& token = {});

    /// Gives the pictures (absolute paths) to a program that already runs and asks it to come to
    /// the front. One that is busy does so later. False when none of this user runs.
    static bool handOver(const QString& door, const QStringList& pictures,
                         const ActivationToken& token = {});

    /// Opens the door; true when it is ours. A door left behind by a program that died is replaced,
    /// never one that somebody listens at.
    bool listen(const QString& door);

  signals:
    /// Another start asks the window to come to the front with these pictures, maybe none, and
    /// gives its token for that.
    void called(const QStringList& pictures, const ActivationToken& token);

  private:
    void accept();
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace skarnel
