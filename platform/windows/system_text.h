#pragma once

#include <string>
#include <string_view>

#include "platform/windows/system_headers.h"

namespace opane {

/// UTF-8 to the system's UTF-16 and back. What is not valid becomes U+FFFD.
std::wstring wideText(std::string_view utf8);
std::string utf8Text(std::wstring_view wide);

/// What the system says about an error of its own, such as 5; UTF-8.
std::string systemErrorText(DWORD error);

}  // namespace opane
