// The page renderer's side of the line: does what it is told with one page at a time.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include "qt/page/page_engine.h"
#include "qt/page/page_messages.h"

class QWebEngineProfile;

namespace skarnel {

class PageServer final : public QObject {
    Q_OBJECT
  public:
    /// `profile` is borrowed. The process ends with the line, with the engine's renderer, and when
    /// nothing at all happens in a load for that many milliseconds.
    PageServer(QWebEngineProfile& profile, int loadPatience);

  private:
    void hear();
    void take(const PageMessage& message);
    void say(std::string_view line);
    void send(const PageMessage& message);
    void answerWith(const QImage& picture);
    void goOn() const;

    int loadPatience_;  // milliseconds
    QSocketNotifier ear_;
    PageEngine engine_;
    bool isLoading_ = false;
};

}  // namespace skarnel
