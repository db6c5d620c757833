#pragma once

#include <QWidget>

#include "forms/window_controls.h"

namespace opane::qt {

/// Makes a widget of every control of a container, lays them out in the widget, and ties both together: what a person
/// does goes to the control, what changes there is shown. A widget's object name is its control's name.
/// The controls outlive the widgets, but for untie().
void showControls(const window::Container& container, QWidget& in);

/// Ends what showControls has set on the controls.
void untie(const window::Container& container);

/// A box that cannot be typed into looks like a part of the window, by the colours that the window has now.
void showReadOnlyColours(QWidget& in);

}  // namespace opane::qt
