// The entry points of the library. They only hand over.

#include "automation/component/boundary.h"
#include "automation/component/class_factory.h"
#include "automation/component/lifetime.h"
#include "automation/component/registration.h"
#include "opane/OPaneCommDLL.h"

using namespace opane::component;

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    return atBoundary([&] {
        if (ppv == nullptr)
            throw ComponentError(E_POINTER, "the place for the class object is a null pointer");
        *ppv = nullptr;
        if (rclsid != CLSID_clsOPaneCommDLL)
            throw ComponentError(CLASS_E_CLASSNOTAVAILABLE, "OPaneCommDLL has no class but clsOPaneCommDLL");
        auto* const factory = new ClassFactory;
        const HRESULT result = factory->QueryInterface(riid, ppv);
        factory->Release();
        if (FAILED(result))
            throw ComponentError(result, "a class factory has no such interface");
    });
}

STDAPI DllCanUnloadNow() {
    return isHeld() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
    return atBoundary(registerComponent);
}

STDAPI DllUnregisterServer() {
    return atBoundary(unregisterComponent);
}
