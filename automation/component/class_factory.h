#pragma once

#include "automation/component/lifetime.h"
#include "automation/component/referenced.h"

namespace opane::component {

/// Makes objects of clsOPaneCommDLL.
class ClassFactory final : public Referenced<ClassFactory, IClassFactory> {
public:
    /// @return CLASS_E_NOAGGREGATION with an outer object, E_NOINTERFACE for an unknown interface, E_POINTER; nothing
    ///         has been made then
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    friend Referenced;

    void* interfaceFor(REFIID riid);

    const Holding holding_;
};

}  // namespace opane::component
