#include "qt/text_bar.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QFontComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QTextCharFormat>
#include <QToolButton>
#include <algorithm>
#include <iterator>

#include "qt/icons.h"
#include "qt/number_text.h"
#include "qt/styled_document.h"
#include "qt/text_editor.h"
#include "qt/wheel_guard.h"

namespace skarnel {
namespace {

constexpr int kSizes[] = {9, 12, 14, 18, 24, 36, 48, 64, 72, 96, 144, 288};
constexpr float kLargestSize = 999;
constexpr Qt::Alignment kAlignments[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};

/// The toolkit aligns a text beside an icon for the direction of writing, and then turns that once
/// more where the whole program is written from right to left: the text ends at the border.
class TurnedOnceStyle final : public QProxyStyle {
  public:
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                      bool enabled, const QString& text, QPalette::ColorRole role) const override {
        QProxyStyle::drawItemText(painter, rect, flags | Qt::AlignAbsolute, palette, enabled, text,
                                  role);
    }
};

/// Of the largest one on the list that is not above `size`; -1 if all of them are.
int indexOfSize(double size) {
    return static_cast<int>(std::upper_bound(std::begin(kSizes), std::end(kSizes), size) -
                            std::begin(kSizes)) -
           1;
}

/// Of the family on the list; where it is not there, of the last one before it; -1 if there is
/// none.
int indexOfFamily(const QComboBox& list, const QString& family) {
    const int index = list.findText(family, Qt::MatchFixedString);
    if (index >= 0) return index;
    int before = list.count() - 1;
    while (before >= 0 && family.compare(list.itemText(before), Qt::CaseInsensitive) < 0) --before;
    return before;
}

}  // namespace

TextBar::TextBar(TextEditor& editor, QWidget* parent) : QWidget(parent), editor_(editor) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(4);
    addFont(*row);
    row->addSpacing(6);
    addStyle(*row);
    row->addSpacing(6);
    addAlignment(*row);
    row->addStretch(1);
    image_ = new QPushButton(themedIcon("image-text"), tr("&Image Text"));
    image_->setToolTip(tr("Make the text the picture"));
    row->addWidget(image_);
    if (QGuiApplication::isRightToLeft()) {
        auto* style = new TurnedOnceStyle;
        style->setParent(image_);
        image_->setStyle(style);
    }
    connect(&editor_, &QTextEdit::currentCharFormatChanged, this, &TextBar::showStyle);
    connect(&editor_, &QTextEdit::cursorPositionChanged, this, &TextBar::showStyle);
    showStyle();
}

void TextBar::addFont(QHBoxLayout& row) {
    family_ = new QFontComboBox;
    family_->setAccessibleName(tr("Typeface"));
    family_->setToolTip(tr("Typeface"));
    family_->setMinimumContentsLength(5);
    family_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    family_->setMaximumWidth(190);
    size_ = new QComboBox;
    size_->setEditable(true);
    size_->setInsertPolicy(QComboBox::NoInsert);
    size_->setCompleter(nullptr);  // would make 36 of a typed 3
    size_->setAccessibleName(tr("Text size"));
    size_->setToolTip(tr("Text size"));
    const QRegularExpression number(QStringLiteral("\\d{0,3}([.,]\\d{0,3})?"));
    size_->setValidator(new QRegularExpressionValidator(number, size_));
    for (const int size : kSizes) size_->addItem(QString::number(size));
    size_->setMinimumContentsLength(3);
    size_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    // The focus is in the fields inside, so they have the names too.
    for (QComboBox* box : {static_cast<QComboBox*>(family_), size_}) {
        box->lineEdit()->setAccessibleName(box->accessibleName());
        guardFromWheel(*box);
        row.addWidget(box);
    }
    connect(family_, &QComboBox::textActivated, this, [this](const QString& family) {
        QTextCharFormat format;
        format.setFontFamilies({family});
        editor_.mergeStyle(format);
    });
    connect(size_, &QComboBox::textActivated, this, &TextBar::applySize);
    connect(size_->lineEdit(), &QLineEdit::editingFinished, this, [this] {
        const bool typed = size_->lineEdit()->isModified();
        size_->lineEdit()->setModified(false);
        if (typed) applySize(size_->currentText());
    });
}

void TextBar::applySize(const QString& text) {
    const auto size = numberFromText(text, locale());
    if (!size || *size < 1 || *size > kLargestSize) return showStyle();
    editor_.mergeStyle(sizeFormat(static_cast<double>(*size)));
}

QToolButton* TextBar::buttonOf(const QIcon& icon, const QString& name) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setIcon(icon);
    button->setIconSize({18, 18});
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(name);
    button->setToolTip(name);
    return button;
}

QAction* TextBar::toggle(const QString& icon, const QString& text, const QString& name,
                         const QKeySequence& key) {
    auto* action = new QAction(themedIcon(icon), text, this);
    action->setCheckable(true);
    action->setIconVisibleInMenu(false);
    action->setToolTip(name);
    if (!key.isEmpty()) {
        action->setShortcut(key);
        // Elsewhere the key would change a text that nobody looks at.
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setToolTip(
            QStringLiteral("%1 (%2)").arg(name, key.toString(QKeySequence::NativeText)));
    }
    return action;
}

void TextBar::addStyle(QHBoxLayout& row) {
    const struct {
        const char* icon;
        QString text;
        QString name;
        QKeySequence::StandardKey key;
        void (*set)(QTextCharFormat& format, bool on);
    } styles[] = {
        {"bold", tr("Bo&ld"), tr("Bold"), QKeySequence::Bold,
         [](QTextCharFormat& format, bool on) {
             format.setFontWeight(on ? QFont::Bold : QFont::Normal);
         }},
        {"italic", tr("I&talic"), tr("Italic"), QKeySequence::Italic,
         [](QTextCharFormat& format, bool on) { format.setFontItalic(on); }},
        {"underline", tr("&Underline"), tr("Underline"), QKeySequence::Underline,
         [](QTextCharFormat& format, bool on) { format.setFontUnderline(on); }},
    };
    for (std::size_t i = 0; i < styles_.size(); ++i) {
        const auto& style = styles[i];
        styles_[i] = toggle(QString::fromLatin1(style.icon), style.text, style.name, style.key);
        QToolButton* button = buttonOf({}, style.name);
        button->setDefaultAction(styles_[i]);
        row.addWidget(button);
        connect(styles_[i], &QAction::triggered, this, [this, set = style.set](bool on) {
            QTextCharFormat format;
            set(format, on);
            editor_.mergeStyle(format);
        });
    }
    QToolButton* color = buttonOf(themedIcon("text-color"), tr("Text colour"));
    row.addWidget(color);
    connect(color, &QToolButton::clicked, this, [this] {
        // The colour panel colours the text that has the focus.
        editor_.setFocus();
        emit colorAsked();
    });
}

void TextBar::addAlignment(QHBoxLayout& row) {
    const struct {
        const char* icon;
        QString text;
        QString name;
    } alignments[] = {{"align-left", tr("Align L&eft"), tr("Align left")},
                      {"align-center", tr("Ce&ntre"), tr("Centre")},
                      {"align-right", tr("Align &Right"), tr("Align right")}};
    auto* group = new QActionGroup(this);
    for (std::size_t i = 0; i < alignments_.size(); ++i) {
        const auto& each = alignments[i];
        alignments_[i] = toggle(QString::fromLatin1(each.icon), each.text, each.name, {});
        group->addAction(alignments_[i]);
        QToolButton* button = buttonOf({}, each.name);
        button->setDefaultAction(alignments_[i]);
        row.addWidget(button);
        connect(alignments_[i], &QAction::triggered, this,
                [this, i] { editor_.alignParagraphs(kAlignments[i] | Qt::AlignAbsolute); });
    }
}

void TextBar::showStyle() {
    const TextStyle style = textStyle(editor_.currentCharFormat());
    const QSignalBlocker quietFamily(family_);
    const QSignalBlocker quietSize(size_);
    // The next family or size by key or wheel is the next on the list.
    const QString family = QString::fromStdString(style.family);
    family_->setCurrentIndex(indexOfFamily(*family_, family));
    family_->setEditText(family);
    if (!size_->lineEdit()->hasFocus() || !size_->lineEdit()->isModified()) {
        size_->setCurrentIndex(indexOfSize(style.size));
        size_->setEditText(QString::number(style.size));
    }
    styles_[0]->setChecked(style.weight >= kTextWeightBold);
    styles_[1]->setChecked(style.slant != TextSlant::Upright);
    styles_[2]->setChecked(style.underline == TextUnderline::Single);
    const Qt::Alignment now = editor_.alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute;
    for (std::size_t i = 0; i < alignments_.size(); ++i)
        alignments_[i]->setChecked(now == kAlignments[i]);
}

}  // namespace skarnel
