#pragma once

#include <memory>

#include "opane/component_runtime.h"

namespace opane::component {

struct ReleaseReference {
    void operator()(IUnknown* object) const { object->Release(); }
};
using TypeLibrary = std::unique_ptr<ITypeLib, ReleaseReference>;

/// The type library that is part of this file.
/// @throws ComponentError with the system's code
TypeLibrary ownTypeLibrary();

}  // namespace opane::component
