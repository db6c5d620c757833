#include "automation/component/class_factory.h"

#include "automation/component/automation_object.h"
#include "automation/component/boundary.h"

namespace opane::component {

void* ClassFactory::interfaceFor(REFIID riid) {
    return riid == IID_IUnknown || riid == IID_IClassFactory ? static_cast<IClassFactory*>(this) : nullptr;
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID riid, void** object) {
    if (object != nullptr)
        *object = nullptr;
    if (outer != nullptr)
        return atBoundary(
            [] { throw ComponentError(CLASS_E_NOAGGREGATION, "clsOPaneCommDLL cannot be part of another object"); });
    return AutomationObject::create(riid, object);
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    lockServer(lock != 0);
    return S_OK;
}

}  // namespace opane::component
