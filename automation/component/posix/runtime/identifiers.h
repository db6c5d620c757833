#pragma once

#include "opane/component_runtime.h"

namespace opane::component_runtime {

/// The identifier of a text "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}". @return whether it is one
bool parseIdentifier(LPCOLESTR text, GUID& identifier);

}  // namespace opane::component_runtime
