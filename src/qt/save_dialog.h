// The save panel's dialog: the name that is typed is the file's name, letter for letter.
#pragma once

#include <QFileDialog>
#include <functional>

namespace skarnel {

/// The toolkit's dialog takes quotation marks for a list of names and adds its extension only to
/// names without a full stop. This one decides itself what was chosen, whichever way it is
/// accepted.
class SaveDialog final : public QFileDialog {
  public:
    /// Gives a path the extension it is to have.
    using Complete = std::function<QString(const QString& path)>;

    SaveDialog(QWidget* parent, const QString& title);

    void setComplete(Complete complete) { complete_ = std::move(complete); }

    /// The absolute path of the file that was chosen; empty until the dialog is accepted.
    QString chosen() const { return chosen_; }

  protected:
    /// Goes into a folder that was typed; asks before a file that is there is replaced.
    void accept() override;

  private:
    QString absolute(const QString& typed) const;
    bool mayReplace(const QString& path);

    Complete complete_;
    QString chosen_;
};

}  // namespace skarnel
