#include "forms/qt/grid.h"

#include <algorithm>

namespace opane::qt {
namespace {

/// The share of the spare height that a control takes, 0 for none: by its lines of text.
int growth(const window::Control& control) {
    if (const auto* const box = dynamic_cast<const window::TextBox*>(&control))
        return box->multiLine() ? box->style().lines : 0;
    int most = dynamic_cast<const window::TabControl*>(&control) != nullptr ? 1 : 0;
    if (const auto* const container = dynamic_cast<const window::Container*>(&control))
        for (const window::Control* const inner : container->controls())
            most = std::max(most, growth(*inner));
    return most;
}

}  // namespace

Grid::Grid(const window::Container& container) : layout_(new QGridLayout) {
    for (const window::Control* const control : container.controls()) {
        const window::Place place = control->place();
        columns_ = std::max(columns_, place.column + place.columnSpan);
        rows_ = std::max(rows_, place.row + place.rowSpan);
    }
    bool grows = false;
    for (const window::Control* const control : container.controls()) {
        const int share = growth(*control);
        if (share == 0)
            continue;
        const window::Place place = control->place();
        grows = true;
        layout_->setRowStretch(place.row + place.rowSpan - 1, share);
        if (place.column + place.columnSpan < columns_) {
            spareColumn_ = false;
            layout_->setColumnStretch(place.column + place.columnSpan - 1, 1);
        }
    }
    if (spareColumn_)
        layout_->setColumnStretch(columns_, 1);
    if (!grows)
        layout_->setRowStretch(rows_, 1);
}

void Grid::add(const window::Control& control, QWidget* widget) {
    const window::Place place = control.place();
    const bool grows = growth(control) > 0;
    const bool isWide = grows || dynamic_cast<const window::Line*>(&control) != nullptr;
    const bool intoSpareRoom = isWide && spareColumn_ && place.column + place.columnSpan == columns_;
    // Beside something tall it stays at the top, where its row begins.
    const bool besideTall = !grows && layout_->rowStretch(place.row) > 0;
    layout_->addWidget(widget, place.row, place.column, place.rowSpan, place.columnSpan + (intoSpareRoom ? 1 : 0),
                       besideTall ? Qt::AlignTop : Qt::Alignment());
}

void keepPlace(QWidget& widget) {
    QSizePolicy policy = widget.sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(policy);
}

}  // namespace opane::qt
