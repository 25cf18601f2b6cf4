#include "qt/preset_strip.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QToolButton>
#include <algorithm>
#include <memory>

#include "qt/preset_strip_parts.h"
#include "qt/preset_thumbnail.h"
#include "qt/settings_model.h"
#include "qt/user_presets.h"
#include "render/settings.h"

namespace skarnel {
namespace {

constexpr QSize kThumbnail{84, 60};  // logical pixels
constexpr int kMargin = 4;           // of the picture within its tile
constexpr int kCalm = 500;           // milliseconds without a change before work begins
constexpr int kRest = 300;           // milliseconds after a change of a setting, for the next one
constexpr int kPause = 8;            // milliseconds between two thumbnails

/// The catalogues are made from the sources of this folder, which do not name the looks otherwise.
[[maybe_unused]] constexpr const char* kNames[] = {
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Mirror"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Subtle Floor"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Glossy Table"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Tall Mirror"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Still Water"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Stage"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Floating"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Shop Window"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Card to the Left"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Card to the Right"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Cover"),
    QT_TRANSLATE_NOOP("skarnel::PresetStrip", "Twin"),
};

QString translated(const Preset& preset) {
    return PresetStrip::tr(preset.name.data());  // all names are whole literals
}

}  // namespace

PresetStrip::PresetStrip(SettingsModel& model, UserPresets& user, Source source, QWidget* parent)
    : QWidget(parent),
      model_(model),
      user_(user),
      source_(std::move(source)),
      list_(new QListWidget),
      add_(new QToolButton) {
    build();
    list_->setItemDelegate(new PresetTile(list_));
    new MoreLooks(*list_, MoreLooks::Side::Left);
    new MoreLooks(*list_, MoreLooks::Side::Right);
    work_.setSingleShot(true);
    connect(&work_, &QTimer::timeout, this, &PresetStrip::workOnce);
    connect(list_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { apply(*item); });
    connect(list_, &QListWidget::itemChanged, this,
            [this](QListWidgetItem* item) { renamed(*item); });
    connect(list_, &QWidget::customContextMenuRequested, this, &PresetStrip::showMenu);
    connect(add_, &QToolButton::clicked, this, &PresetStrip::saveCurrent);
    connect(list_->itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
            [this] { unnamed_.reset(); });
    connect(&user_, &UserPresets::changed, this, &PresetStrip::fill);
    connect(&model_, &SettingsModel::historyChanged, this, &PresetStrip::markCurrent);
    connect(&model_, &SettingsModel::refreshed, this, &PresetStrip::markCurrent);
    connect(&model_, &SettingsModel::historyChanged, this, &PresetStrip::giveWay);
    connect(&model_, &SettingsModel::refreshed, this, &PresetStrip::giveWay);
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        auto* choose = new QShortcut(key, list_);
        choose->setContext(Qt::WidgetShortcut);
        connect(choose, &QShortcut::activated, this, [this] {
            if (QListWidgetItem* item = list_->currentItem()) apply(*item);
        });
    }
    auto* remove = new QShortcut(Qt::Key_Delete, list_);
    remove->setContext(Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, [this] {
        if (QListWidgetItem* item = list_->currentItem()) removeItem(*item);
    });
    fill();
}

void PresetStrip::build() {
    setObjectName(QStringLiteral("presetStrip"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 2);
    row->setSpacing(4);
    list_->setAccessibleName(tr("Looks"));
    list_->setAccessibleDescription(
        tr("Return uses a look; F2 renames and Delete removes one of your own"));
    list_->setViewMode(QListView::IconMode);
    list_->setFlow(QListView::LeftToRight);
    list_->setWrapping(false);
    list_->setMovement(QListView::Static);
    list_->setResizeMode(QListView::Adjust);
    list_->setIconSize(kThumbnail);
    list_->setSpacing(2);
    list_->setUniformItemSizes(false);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setTextElideMode(Qt::ElideRight);
    list_->setEditTriggers(QAbstractItemView::EditKeyPressed);
    list_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->viewport()->setAutoFillBackground(false);
    const int height = kThumbnail.height() + fontMetrics().height() + 16;
    list_->setFixedHeight(height);
    add_->setText(QStringLiteral("+"));
    add_->setToolTip(tr("Save the settings as a look"));
    add_->setAccessibleName(tr("Save as Look"));
    add_->setAutoRaise(true);
    add_->setFixedSize(32, height - 12);
    row->addWidget(list_, 1);
    row->addWidget(add_);
}

void PresetStrip::fill() {
    // The keyboard stays where it was: on that look, or on the one that has taken its place.
    const QListWidgetItem* current = list_->currentItem();
    const int row = list_->currentRow();
    const QString name = current != nullptr ? current->text() : QString();
    const bool user = current != nullptr && current->data(kIsUserRole).toBool();
    filling_ = true;
    work_.stop();
    waiting_.clear();
    list_->clear();
    qsizetype index = 0;
    for (const Preset& preset : builtInPresets()) addItem(translated(preset), false, index++);
    index = 0;
    for (const UserPreset& preset : user_.all()) addItem(preset.name, true, index++);
    filling_ = false;
    int place = std::min(row, list_->count() - 1);
    for (const QListWidgetItem* item : list_->findItems(name, Qt::MatchExactly)) {
        if (item->data(kIsUserRole).toBool() == user) place = list_->row(item);
    }
    if (row >= 0) list_->setCurrentRow(place, QItemSelectionModel::NoUpdate);
    markCurrent();
    if (row >= 0) list_->setCurrentRow(place, QItemSelectionModel::NoUpdate);
    sourceChanged();
}

void PresetStrip::addItem(const QString& name, bool user, qsizetype index) {
    auto* item = new QListWidgetItem(name, list_);
    item->setData(kIsUserRole, user);
    item->setData(kIndexRole, index);
    item->setTextAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    item->setToolTip(name);
    const int width = std::max(kThumbnail.width(), fontMetrics().horizontalAdvance(name));
    item->setSizeHint({width + 14, kThumbnail.height() + fontMetrics().height() + 10});
    if (user) item->setFlags(item->flags() | Qt::ItemIsEditable);
    setIcon(*item, {});
}

SettingNumbers PresetStrip::settingsOf(const QListWidgetItem& item) const {
    const qsizetype index = item.data(kIndexRole).toLongLong();
    if (item.data(kIsUserRole).toBool()) return user_.all().at(index).settings;
    return builtInPresets()[static_cast<std::size_t>(index)].settings;
}

SettingNumbers PresetStrip::currentSettings() const {
    SettingNumbers numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = model_.number(kReflectionSettings[i].key);
    }
    return numbers;
}

void PresetStrip::apply(QListWidgetItem& item) {
    model_.changeAll(item.text(), {settingsOf(item), model_.applyBackground()});
}

void PresetStrip::renamed(QListWidgetItem& item) {
    if (filling_ || !item.data(kIsUserRole).toBool()) return;
    const qsizetype index = item.data(kIndexRole).toLongLong();
    const QString old = user_.all().at(index).name;
    if (item.text() == old) return;
    if (unnamed_ && *unnamed_ != old) unnamed_.reset();
    // The list is filled anew by the change, so the item must not be used afterwards; and the
    // view is still closing the editor of this very item.
    QMetaObject::invokeMethod(
        this,
        [this, index, name = item.text(), saved = unnamed_] {
            if (saved)
                nameSaved(*saved, name);
            else
                rename(index, name);
        },
        Qt::QueuedConnection);
}

/// The first name belongs to the entry of undo that saving made.
void PresetStrip::nameSaved(QString& called, const QString& name) {
    unnamed_.reset();
    const qsizetype index = user_.placeOf(called);
    if (!user_.rename(index, name)) return fill();
    called = user_.all().value(index).name;
}

void PresetStrip::rename(qsizetype index, const QString& name) {
    const QString old = user_.all().value(index).name;
    if (!user_.rename(index, name)) return fill();
    const QString now = user_.all().value(index).name;
    if (now == old) return;
    const auto called = std::make_shared<QString>(now);
    user_.follow(called);
    const auto renamed = [=, this](const QString& to) {
        if (user_.rename(user_.placeOf(*called), to)) *called = to;
    };
    model_.recordAction(
        tr("Rename “%1”").arg(old), [=] { renamed(old); }, [=] { renamed(now); });
}

void PresetStrip::removeItem(QListWidgetItem& item) {
    if (!item.data(kIsUserRole).toBool()) return;
    const QString name = user_.all().value(item.data(kIndexRole).toLongLong()).name;
    const auto kept = std::make_shared<std::optional<RemovedPreset>>();
    const auto called = std::make_shared<QString>(name);
    user_.follow(called);
    model_.recordAction(
        tr("Remove “%1”").arg(name),
        [=, this] {
            if (*kept) *called = user_.restore(**kept);
        },
        [=, this] { *kept = user_.remove(user_.placeOf(*called)); });
}

void PresetStrip::finishTyping() {
    auto* editor = list_->viewport()->findChild<QLineEdit*>();
    if (editor == nullptr) return;
    QKeyEvent done(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(editor, &done);
    // The delegate takes the text, and the strip the name, when they come to it.
    QCoreApplication::sendPostedEvents(list_->itemDelegate(), QEvent::MetaCall);
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void PresetStrip::saveCurrent() {
    const auto kept = std::make_shared<std::optional<RemovedPreset>>();
    const auto called = std::make_shared<QString>();
    user_.follow(called);
    const SettingNumbers now = currentSettings();
    model_.recordAction(
        tr("Save as Look"),
        [=, this] {
            // Another window may have removed it and have another look of its name.
            const qsizetype place = user_.placeOf(*called);
            if (user_.all().value(place).settings == now) *kept = user_.remove(place);
        },
        [=, this] {
            if (*kept)
                *called = user_.restore(**kept);
            else if (called->isEmpty())
                *called = user_.all().value(user_.add({}, now)).name;
        });
    const auto index = static_cast<int>(user_.placeOf(*called));
    QListWidgetItem* item = list_->item(static_cast<int>(builtInPresets().size()) + index);
    list_->setCurrentItem(item);
    list_->scrollToItem(item);
    list_->setFocus();
    unnamed_ = called;
    list_->editItem(item);
}

void PresetStrip::showMenu(QPoint place) {
    QListWidgetItem* item = list_->itemAt(place);
    QMenu menu(this);
    menu.addAction(tr("&Save Settings as Look"), this, &PresetStrip::saveCurrent);
    if (item != nullptr && item->data(kIsUserRole).toBool()) {
        menu.addAction(tr("&Rename"), this, [this, item] { list_->editItem(item); });
        menu.addAction(tr("Re&move"), this, [this, item] { removeItem(*item); });
    }
    menu.exec(list_->viewport()->mapToGlobal(place));
}

void PresetStrip::markCurrent() {
    const SettingNumbers now = currentSettings();
    QListWidgetItem* found = nullptr;
    for (int i = 0; i < list_->count() && found == nullptr; ++i) {
        if (settingsOf(*list_->item(i)) == now) found = list_->item(i);
    }
    if (found == nullptr) {
        list_->clearSelection();
        return;
    }
    // Of two looks with the same numbers the one that the user chose stays marked.
    QListWidgetItem* current = list_->currentItem();
    if (current == nullptr || settingsOf(*current) != now) list_->setCurrentItem(found);
    list_->currentItem()->setSelected(true);
}

void PresetStrip::setGround(const QColor& color) {
    if (color == ground_) return;
    ground_ = color;
    for (int i = 0; i < list_->count(); ++i) {
        QListWidgetItem& item = *list_->item(i);
        setIcon(item, item.data(kThumbnailRole).value<QImage>());
    }
}

void PresetStrip::sourceChanged() {
    small_.reset();
    waiting_.clear();
    for (int i = list_->count() - 1; i >= 0; --i) waiting_.push_back(list_->item(i));
    work_.start(kCalm);
}

/// A preview that follows the hand goes before the thumbnails.
void PresetStrip::giveWay() {
    if (work_.isActive()) work_.start(kRest);
}

void PresetStrip::workOnce() {
    if (waiting_.empty() || !isVisible()) return;
    if (!small_) small_ = source_();
    if (!small_) {
        waiting_.clear();
        return;
    }
    QListWidgetItem* item = waiting_.back();
    waiting_.pop_back();
    setIcon(*item, presetThumbnail(*small_, settingsOf(*item)));
    if (!waiting_.empty()) work_.start(kPause);
}

void PresetStrip::setIcon(QListWidgetItem& item, const QImage& thumbnail) {
    const bool before = std::exchange(filling_, true);
    item.setData(kThumbnailRole, thumbnail);
    const qreal ratio = devicePixelRatioF();
    QPixmap tile(kThumbnail * ratio);
    tile.setDevicePixelRatio(ratio);
    tile.fill(Qt::transparent);
    QPainter painter(&tile);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground_);
    painter.drawRoundedRect(QRectF({}, QSizeF(kThumbnail)), 5, 5);
    if (!thumbnail.isNull()) {
        const QSizeF room(kThumbnail.width() - 2 * kMargin, kThumbnail.height() - 2 * kMargin);
        const QSizeF size = QSizeF(thumbnail.size()).scaled(room, Qt::KeepAspectRatio);
        const QImage shrunk = thumbnail.scaled((size * ratio).toSize().expandedTo({1, 1}),
                                               Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        painter.drawImage(
            QRectF((kThumbnail.width() - size.width()) / 2,
                   (kThumbnail.height() - size.height()) / 2, size.width(), size.height()),
            shrunk);
    }
    painter.end();
    item.setIcon(QIcon(tile));
    filling_ = before;
}

void PresetStrip::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) fill();
}

void PresetStrip::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Nothing is rendered for a hidden window, so this may have come due meanwhile.
    if (!waiting_.empty()) work_.start(kCalm);
}

}  // namespace skarnel
