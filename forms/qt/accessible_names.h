#pragma once

#include <string>

#include "forms/window_controls.h"

namespace opane::qt {

/// What a screen reader calls a control: its caption, or, without one, that of the label or button right before it in
/// its row, of a list also of the button right after it, else that of what is around it. Where several rows have the
/// same one, the caption that the row begins with comes first: "Affiche Bloc1 Pattern".
std::string accessibleName(const window::Control& control);

}  // namespace opane::qt
