#include "qt/text_bar.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFontComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QTextCharFormat>
#include <QToolButton>

#include "qt/icons.h"
#include "qt/number_text.h"
#include "qt/styled_document.h"
#include "qt/text_editor.h"

namespace skarnel {
namespace {

constexpr int kSizes[] = {9, 12, 14, 18, 24, 36, 48, 64, 72, 96, 144, 288};
constexpr float kLargestSize = 999;
constexpr Qt::Alignment kAlignments[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};

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

QToolButton* TextBar::toggle(const QString& icon, const QString& name, const QKeySequence& key) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setCheckable(true);
    button->setIcon(themedIcon(icon));
    button->setIconSize({18, 18});
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(name);
    button->setToolTip(key.isEmpty() ? name
                                     : QStringLiteral("%1 (%2)").arg(
                                           name, key.toString(QKeySequence::NativeText)));
    return button;
}

void TextBar::addStyle(QHBoxLayout& row) {
    bold_ = toggle("bold", tr("Bold"), QKeySequence::Bold);
    italic_ = toggle("italic", tr("Italic"), QKeySequence::Italic);
    underline_ = toggle("underline", tr("Underline"), QKeySequence::Underline);
    auto* color = toggle("text-color", tr("Text colour"), {});
    color->setCheckable(false);
    for (QToolButton* button : {bold_, italic_, underline_, color}) row.addWidget(button);
    connect(bold_, &QToolButton::clicked, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontWeight(on ? QFont::Bold : QFont::Normal);
        editor_.mergeStyle(format);
    });
    connect(italic_, &QToolButton::clicked, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontItalic(on);
        editor_.mergeStyle(format);
    });
    connect(underline_, &QToolButton::clicked, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontUnderline(on);
        editor_.mergeStyle(format);
    });
    connect(color, &QToolButton::clicked, this, [this] {
        // The colour panel colours the text that has the focus.
        editor_.setFocus();
        emit colorAsked();
    });
}

void TextBar::addAlignment(QHBoxLayout& row) {
    const QString names[] = {tr("Align left"), tr("Centre"), tr("Align right")};
    const char* icons[] = {"align-left", "align-center", "align-right"};
    auto* group = new QButtonGroup(this);
    for (int i = 0; i < 3; ++i) {
        alignments_[i] = toggle(QString::fromLatin1(icons[i]), names[i], {});
        group->addButton(alignments_[i]);
        row.addWidget(alignments_[i]);
        connect(alignments_[i], &QToolButton::clicked, this,
                [this, i] { editor_.alignParagraphs(kAlignments[i] | Qt::AlignAbsolute); });
    }
}

void TextBar::showStyle() {
    const TextStyle style = textStyle(editor_.currentCharFormat());
    const QSignalBlocker quietFamily(family_);
    const QSignalBlocker quietSize(size_);
    family_->setEditText(QString::fromStdString(style.family));
    if (!size_->lineEdit()->hasFocus() || !size_->lineEdit()->isModified())
        size_->setEditText(QString::number(style.size));
    bold_->setChecked(style.weight >= kTextWeightBold);
    italic_->setChecked(style.slant != TextSlant::Upright);
    underline_->setChecked(style.underline == TextUnderline::Single);
    const Qt::Alignment now = editor_.alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute;
    for (int i = 0; i < 3; ++i) alignments_[i]->setChecked(now == kAlignments[i]);
}

}  // namespace skarnel
