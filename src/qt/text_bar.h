// The small bar over the text: its style, and the button that makes it the picture.
#pragma once

#include <QWidget>

class QComboBox;
class QFontComboBox;
class QHBoxLayout;
class QToolButton;
class QPushButton;

namespace skarnel {

class TextEditor;

class TextBar final : public QWidget {
    Q_OBJECT
  public:
    explicit TextBar(TextEditor& editor, QWidget* parent = nullptr);

    QPushButton& imageButton() const { return *image_; }

  signals:
    /// The colour of the text is to be chosen.
    void colorAsked();

  private:
    QToolButton* toggle(const QString& icon, const QString& name, const QKeySequence& key);
    void addFont(QHBoxLayout& row);
    void addStyle(QHBoxLayout& row);
    void addAlignment(QHBoxLayout& row);
    void showStyle();
    void applySize(const QString& text);

    TextEditor& editor_;
    QFontComboBox* family_ = nullptr;
    QComboBox* size_ = nullptr;
    QToolButton* bold_ = nullptr;
    QToolButton* italic_ = nullptr;
    QToolButton* underline_ = nullptr;
    QToolButton* alignments_[3] = {};
    QPushButton* image_ = nullptr;
};

}  // namespace skarnel
