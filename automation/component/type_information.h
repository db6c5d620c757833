#pragma once

#include "opane/component_runtime.h"

namespace opane::component {

/// How many descriptions of the dual interface there are: 1 where the type library is part of this file, else 0.
UINT typeInformationCount();

/// The description of the dual interface, with a reference for the caller.
/// @throws ComponentError DISP_E_BADINDEX where there is none, or the system's code
ITypeInfo* typeInformation(LCID lcid);

}  // namespace opane::component
