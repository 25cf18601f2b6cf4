// What the strip of looks is drawn with: its tiles, and the marks at its ends.
#pragma once

#include <QAbstractButton>
#include <QStyledItemDelegate>

class QListView;

namespace skarnel {

/// A look as picture and name. The marked one has a frame, so that its picture keeps its colours.
class PresetTile final : public QStyledItemDelegate {
    Q_OBJECT
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// As long as a look's name may be, pasted ones too.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    /// Once for each editor: a thumbnail that is ready while a name is typed changes its look, too.
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
};

/// An arrow over one end of the list, there while more follows on that side; a click goes on by
/// most of what is seen. The keyboard has the list's own arrows.
class MoreLooks final : public QAbstractButton {
    Q_OBJECT
  public:
    enum class Side { Left, Right };
    MoreLooks(QListView& list, Side side);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();
    void follow();
    void goOn();
    /// Whether greater values of the list's bar are on this side.
    bool isTowardsEnd() const;

    QListView& list_;
    Side side_;
};

}  // namespace skarnel
