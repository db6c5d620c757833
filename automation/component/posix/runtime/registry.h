#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "opane/component_runtime.h"

namespace opane::component_runtime {

/// One class in the registry; texts in UTF-8.
struct RegisteredClass {
    CLSID clsid;
    std::string progId;
    std::string library;  ///< absolute path
};

/// The file of the registry: a line for each class, its identifier, its programmatic identifier and its library with tabs
/// between them. Lines that are none of a class stay as they are.
/// @throws RuntimeError 76 when the environment names no place for it
std::string registryFile();

/// @throws RuntimeError when the file is there but cannot be read; none at all is an empty registry
std::optional<RegisteredClass> findClass(const std::function<bool(const RegisteredClass&)>& matches);

/// Puts a class in place of those with the same identifier or name, or only takes those out (entered: nothing). Waits
/// at most 5 s for another program that is changing the registry.
/// @throws RuntimeError when the registry cannot be read or written; it stays as it was then
void enterClass(REFCLSID clsid, const std::optional<RegisteredClass>& entered);

}  // namespace opane::component_runtime
