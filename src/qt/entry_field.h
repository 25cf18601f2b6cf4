// A line of text of the settings' panel, which is taken as a whole.
#pragma once

#include <QLineEdit>

namespace skarnel {

/// While nothing typed waits in it, undo and redo are the window's. What is dropped on it belongs
/// to whoever stands behind it: a file's path is no entry.
class EntryField : public QLineEdit {
    Q_OBJECT
  public:
    explicit EntryField(QWidget* parent = nullptr);

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    bool leavesToWindow(QKeyEvent& event) const;
};

}  // namespace skarnel
