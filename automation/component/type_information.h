#pragma once

#include "opane/component_runtime.h"

namespace opane::component {

/// How many descriptions of the dual interface there are: 1 where the type library is part of this file, else 0.
UINT typeInformationCount();

/// The description of the dual interface, in every language, with a reference for the caller; null where there is none.
/// @throws ComponentError with the system's code
ITypeInfo* typeInformation();

}  // namespace opane::component
