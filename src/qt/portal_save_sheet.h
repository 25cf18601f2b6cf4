// The save panel of a program in a sandbox: the format here, then the place in the desktop's
// dialog.
#pragma once

#include <QDBusConnection>
#include <QDialog>
#include <QPointer>
#include <QString>

namespace skarnel {

class PortalFileDialog;
class SaveOptionsView;

/// One dialog to whoever waits for its end. Cancelling either half rejects it.
class PortalSaveSheet final : public QDialog {
    Q_OBJECT
  public:
    /// Takes the view over; it may be null. `fileName` is the name that is proposed.
    PortalSaveSheet(const QDBusConnection& bus, SaveOptionsView* view, QString fileName,
                    QWidget* parent);
    ~PortalSaveSheet() override;

    /// The absolute path that was chosen; empty until the sheet is accepted. Exactly this path can
    /// be written, so the format follows its extension and never the other way round.
    QString chosen() const { return chosen_; }

    /// Goes on to the desktop's dialog.
    void accept() override;

  private:
    void placed(int result);

    QDBusConnection bus_;
    QPointer<SaveOptionsView> view_;
    QString fileName_;
    QPointer<PortalFileDialog> place_;
    QString chosen_;
};

}  // namespace skarnel
