// The desktop's file dialogs, by which a program in a sandbox gets at the files that the user
// picks.
#pragma once

#include <QDBusConnection>
#include <QDialog>
#include <QString>
#include <QStringList>
#include <optional>

namespace skarnel {

/// A dialog that the desktop shows in our place (org.freedesktop.portal.FileChooser): to the rest
/// of the window it is modal like any other, but nothing of it is drawn here. It asks when it is
/// opened, and ends once: accepted with the paths that the user picked, or rejected, also when the
/// desktop does not answer (logged). Rejecting it takes the desktop's dialog away.
class PortalFileDialog final : public QDialog {
    Q_OBJECT
  public:
    enum class Purpose { Open, OpenSeveral, OpenFolder, Save };

    /// The bus to ask on where the program runs in a sandbox that has such dialogs; none elsewhere.
    static std::optional<QDBusConnection> busOfSandbox();

    PortalFileDialog(const QDBusConnection& bus, Purpose purpose, const QString& title,
                     QWidget* parent);
    ~PortalFileDialog() override;

    /// The name that is proposed for saving.
    void setFileName(const QString& name) { fileName_ = name; }
    /// "TIFF (*.tiff *.tif)": what the list is limited to.
    void setNameFilter(const QString& filter) { nameFilter_ = filter; }
    void setAcceptLabel(const QString& label) { acceptLabel_ = label; }

    /// Asks for one file and waits for the answer; empty when the user picked none.
    static QString pick(const QDBusConnection& bus, Purpose purpose, const QString& title,
                        const QString& nameFilter, const QString& fileName, QWidget* parent);

    /// Absolute paths; empty until the dialog is accepted. Access is granted to exactly these.
    QStringList paths() const { return paths_; }

    void done(int result) override;

  protected:
    void showEvent(QShowEvent* event) override;

  private slots:
    void responded(uint response, const QVariantMap& results);

  private:
    void ask();
    QVariantMap options() const;
    void listen(const QString& request);
    void fail(const QString& cause);

    QDBusConnection bus_;
    Purpose purpose_;
    QString fileName_;
    QString nameFilter_;
    QString acceptLabel_;
    QString token_;
    QString request_;  // the object of the question while it is open
    QStringList paths_;
};

}  // namespace skarnel
