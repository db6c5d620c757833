#pragma once

#include "opane/component_runtime.h"

namespace opane::component_runtime {

/// Leaves a text (UTF-8), from "opane-component", as the thread's error information; without memory the code alone has
/// to do. @return code
HRESULT explain(HRESULT code, const char* text) noexcept;

}  // namespace opane::component_runtime
