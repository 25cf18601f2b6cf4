// Words for a screen reader alone: nothing of them is seen.
#pragma once

#include <QObject>
#include <QString>
#include <QWidget>

namespace skarnel {

/// To assistive programs it is a notification in its window, which comes up anew with each message.
class Announcer final : public QObject {
    Q_OBJECT
  public:
    /// The window owns it.
    explicit Announcer(QWidget& window);

    /// Says the message, also when it is the one that was said last.
    void tell(const QString& message);
    /// What was said last; empty before the first.
    const QString& message() const { return message_; }

  private:
    QString message_;
};

}  // namespace skarnel
