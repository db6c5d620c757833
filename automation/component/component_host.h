#pragma once

#include "platform/services.h"

namespace opane::component {

/// Puts what the host of a component gives its thread (event hook, message boxes, file dialogs, devices of the ports)
/// in place of the thread's services, for as long as it lives: one call. On Windows a host has the system's own.
class ComponentHostScope {
public:
    ComponentHostScope();

private:
    ServicesScope services_;
};

}  // namespace opane::component
