// The text that becomes a picture: an editor on the viewer's background colour.
#pragma once

#include <QTextEdit>
#include <functional>

#include "platform/styled_text.h"
#include "platform/text_view.h"

namespace skarnel {

class TextEditor final : public QTextEdit {
    Q_OBJECT
  public:
    /// Asked before an edit by the user; the answer false prevents it.
    using MayEdit = std::function<bool(const std::vector<NSRange>& ranges,
                                       const std::vector<std::u16string>& replacements)>;

    explicit TextEditor(QWidget* parent = nullptr);

    void setMayEdit(MayEdit mayEdit) { mayEdit_ = std::move(mayEdit); }
    /// What is seen behind the text is what the text is imaged on.
    void setGround(const QColor& color);

    StyledText text() const;

    // Changes by the program, which nobody is asked about.
    void setWholeFont(const QString& family, double size);
    void replaceSelection(std::u16string_view text);
    void colorRange(const QColor& color, NSRange range);
    void replaceAll(std::u16string_view text);
    void setText(const StyledText& text);

    /// Styles the selection, or what is typed next, on behalf of the user.
    void mergeStyle(const QTextCharFormat& format);
    void alignParagraphs(Qt::Alignment alignment);

  signals:
    /// The widget's frame or the size of what it shows of the text changed.
    void frameChanged();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    /// Rich text keeps the styles that styled text knows; Ctrl+Shift+V takes its characters alone.
    void insertFromMimeData(const QMimeData* source) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void insertPlain(const QString& text);
    bool askBeforeEdit(const QString& replacement);
    void askedLate(int position, int removed, int added);
    template <typename Change>
    void byProgram(Change change);

    MayEdit mayEdit_;
    bool asked_ = false;      // for the edit that is going on
    bool byProgram_ = false;  // the edit that is going on is not the user's
};

}  // namespace skarnel
