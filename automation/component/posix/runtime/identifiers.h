#pragma once

#include <string>

#include "opane/component_runtime.h"

namespace opane::component_runtime {

/// The identifier of a text "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}". @return whether it is one
bool parseIdentifier(LPCOLESTR text, GUID& identifier);

/// Its text, with capital letters.
std::string identifierText(REFGUID identifier);

}  // namespace opane::component_runtime
