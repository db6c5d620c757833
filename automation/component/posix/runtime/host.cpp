// What a host gives the components on its thread.

#include "opane/component_runtime.h"

namespace {

thread_local const OpaneHost* threadHost = nullptr;

}  // namespace

const OpaneHost* OpaneSetHost(const OpaneHost* host) {
    const OpaneHost* const before = threadHost;
    threadHost = host;
    return before;
}

const OpaneHost* OpaneGetHost() {
    return threadHost;
}

HRESULT CoInitialize(void* /*reserved*/) {
    return S_OK;
}

HRESULT CoInitializeEx(void* /*reserved*/, DWORD /*model*/) {
    return S_OK;
}

void CoUninitialize() {}
