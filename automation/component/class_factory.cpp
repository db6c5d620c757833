#include "automation/component/class_factory.h"

#include "automation/component/automation_object.h"
#include "automation/component/boundary.h"

namespace opane::component {

HRESULT ClassFactory::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = riid == IID_IUnknown || riid == IID_IClassFactory ? static_cast<IClassFactory*>(this) : nullptr;
    if (*object == nullptr)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG ClassFactory::AddRef() {
    return references_.add();
}

ULONG ClassFactory::Release() {
    const ULONG left = references_.release();
    if (left == 0)
        delete this;
    return left;
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
