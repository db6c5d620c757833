#pragma once

namespace opane::component {

/// Enters the class with its programmatic identifier, the file of this library and, where the system has one, the type
/// library into the system's registry; or takes them out again. What is entered already, or not there, is no failure.
/// @throws ComponentError with the system's code and an explanation; what was done is undone
void registerComponent();
void unregisterComponent();

}  // namespace opane::component
