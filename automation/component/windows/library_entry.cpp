#include "opane/component_runtime.h"

/// The library entry point. Everything that the library needs is made when a host first asks for an object.
BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD /*reason*/, void* /*reserved*/) {
    return TRUE;
}
