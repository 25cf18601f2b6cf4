// The window's own walls, and the way in which pages are still opened behind them.
#pragma once

#include <QObject>
#include <QUrl>
#include <memory>

namespace skarnel {

class PageOpener;

/// Raised before the application object exists, since walls stand only for the thread that raised
/// them and those that it starts. Where the kernel lacks them the log says so, once.
class ProcessWalls final : public QObject {
    Q_OBJECT
  public:
    /// Starts the opener of the product's page and the guide, then takes away what the window
    /// never needs: starting programs but the decoder and the page renderer, and, for ordinary
    /// users, changing the system's folders.
    ProcessWalls();
    ~ProcessWalls() override;

    /// From now on addresses that the toolkit is asked to open go to the opener. Needs the
    /// application object.
    void routePages();

  signals:
    /// The page was asked for and nothing opens it; the log says so already.
    void pageRefused(const QUrl& page);

  private slots:
    void openPage(const QUrl& page);

  private:
    std::unique_ptr<PageOpener> opener_;
};

}  // namespace skarnel
