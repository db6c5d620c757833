#pragma once

namespace opane::qt {

enum class Theme { system, light, dark };

/// Sets the colours of every window of the program. Qt 6.4 does not follow a desktop's dark setting by itself unless
/// the desktop's own Qt plugin is there, so a person may ask for it. The system's theme changes nothing.
void applyTheme(Theme theme);

}  // namespace opane::qt
