// The small bar over the text: its style, and the button that makes it the picture.
#pragma once

#include <QWidget>
#include <array>

class QAction;
class QComboBox;
class QFontComboBox;
class QHBoxLayout;
class QKeySequence;
class QPushButton;
class QToolButton;

namespace skarnel {

class TextEditor;

class TextBar final : public QWidget {
    Q_OBJECT
  public:
    explicit TextBar(TextEditor& editor, QWidget* parent = nullptr);

    QPushButton& imageButton() const { return *image_; }

    /// Bold, italic, underline; checkable, for a menu. Their keys are heard where the action is
    /// also given to a widget that holds the focus.
    const std::array<QAction*, 3>& styleActions() const { return styles_; }
    /// Left, centre, right; one of them is checked.
    const std::array<QAction*, 3>& alignmentActions() const { return alignments_; }

  signals:
    /// The colour of the text is to be chosen.
    void colorAsked();

  private:
    QAction* toggle(const QString& icon, const QString& text, const QString& name,
                    const QKeySequence& key);
    QToolButton* buttonOf(const QIcon& icon, const QString& name);
    void addFont(QHBoxLayout& row);
    void addStyle(QHBoxLayout& row);
    void addAlignment(QHBoxLayout& row);
    void showStyle();
    void applySize(const QString& text);

    TextEditor& editor_;
    QFontComboBox* family_ = nullptr;
    QComboBox* size_ = nullptr;
    std::array<QAction*, 3> styles_{};
    std::array<QAction*, 3> alignments_{};
    QPushButton* image_ = nullptr;
};

}  // namespace skarnel
