// The signals by which the system asks a program to end, as an event of the toolkit's loop.
#pragma once

#include <QObject>

class QSocketNotifier;

namespace skarnel {

/// Catches SIGTERM, SIGHUP and SIGINT while it lives, but for those that the process was started to
/// ignore. Each is caught once: a second one ends a program that hangs. One object a process, made
/// before the loop runs.
class EndSignals final : public QObject {
    Q_OBJECT
  public:
    explicit EndSignals(QObject* parent = nullptr);
    ~EndSignals() override;

  signals:
    /// From the loop, where everything may be done.
    void asked();

  private:
    void take();

    QSocketNotifier* notifier_ = nullptr;
};

}  // namespace skarnel
