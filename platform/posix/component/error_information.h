#pragma once

#include <string>

#include "platform/component_runtime.h"

namespace opane::component_runtime {

/// Leaves a text (UTF-8), from "opane-component", as the thread's error information. @return code
HRESULT explain(HRESULT code, const std::string& text) noexcept;

}  // namespace opane::component_runtime
