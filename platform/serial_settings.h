#pragma once

#include <cstdint>
#include <string>

namespace opane {

/// The baud rate of a settings string such as "9600,N,8,1".
/// @throws RuntimeError 380 (invalid property value) when the text is not a baud rate above 0 followed by ",N,8,1"
///         (the N in either letter case)
std::int32_t settingsBaudRate(const std::string& strSettings);

}  // namespace opane
