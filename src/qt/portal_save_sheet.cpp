#include "qt/portal_save_sheet.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>
#include <utility>

#include "qt/portal_file_dialog.h"
#include "qt/save_options_view.h"

namespace skarnel {

PortalSaveSheet::PortalSaveSheet(const QDBusConnection& bus, SaveOptionsView* view,
                                 QString fileName, QWidget* parent)
    : QDialog(parent), bus_(bus), view_(view), fileName_(std::move(fileName)) {
    auto* column = new QVBoxLayout(this);
    if (view != nullptr) column->addWidget(view);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &PortalSaveSheet::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PortalSaveSheet::reject);
}

PortalSaveSheet::~PortalSaveSheet() = default;

void PortalSaveSheet::accept() {
    if (place_ != nullptr) return;
    place_ =
        new PortalFileDialog(bus_, PortalFileDialog::Purpose::Save, windowTitle(), parentWidget());
    place_->setAttribute(Qt::WA_DeleteOnClose);
    place_->setWindowModality(windowModality());
    place_->setFileName(view_ != nullptr ? view_->renamed(fileName_) : fileName_);
    if (view_ != nullptr) place_->setNameFilter(view_->nameFilter());
    connect(place_, &QDialog::finished, this, &PortalSaveSheet::placed);
    // The window stays blocked in between.
    place_->open();
    hide();
}

void PortalSaveSheet::placed(int result) {
    chosen_ = result == Accepted ? place_->paths().value(0) : QString();
    if (view_ != nullptr && !chosen_.isEmpty()) view_->followName(chosen_);
    done(chosen_.isEmpty() ? Rejected : Accepted);
}

}  // namespace skarnel
