#pragma once

#include <QGridLayout>
#include <QWidget>

#include "forms/window_controls.h"

namespace opane::qt {

/// Lays the widgets of a container out by the places of their controls. Spare room goes to what grows: multi-line text
/// boxes, tabs, and what holds one; without any, to the right and below.
class Grid {
public:
    explicit Grid(const window::Container& container);

    void add(const window::Control& control, QWidget* widget);

    /// The layout, for the widget that shows the container.
    QGridLayout* layout() const { return layout_; }

private:
    QGridLayout* layout_;
    int columns_ = 0;
    int rows_ = 0;
    bool spareColumn_ = true;  // the spare room at the right is a column of its own, which growing widgets reach into
};

/// The widget keeps its room in a layout while it is hidden.
void keepPlace(QWidget& widget);

}  // namespace opane::qt
