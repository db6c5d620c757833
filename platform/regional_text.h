#pragma once

#include <ctime>
#include <functional>
#include <string>

namespace opane {

/// Gives the current local date and time.
using Calendar = std::function<std::tm()>;

/// The system's local date and time.
std::tm systemLocalTime();

/// The date in the short format of the user's locale, and the time in its time format; UTF-8. On POSIX the locale is
/// what LC_ALL, LC_TIME and LANG say; the process's own locale is neither used nor changed.
std::string shortDateText(const std::tm& moment);
std::string timeText(const std::tm& moment);

/// The decimal separator of the user's numbers; UTF-8. On POSIX the locale is what LC_ALL, LC_NUMERIC and LANG say, on
/// Windows the user's own setting in the regional settings, which may differ from the locale's.
std::string decimalSeparator();

}  // namespace opane
