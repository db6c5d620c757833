#pragma once

#include "automation/component/lifetime.h"

namespace opane::component {

/// Makes objects of clsOPaneCommDLL.
class ClassFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    /// @return CLASS_E_NOAGGREGATION with an outer object, E_NOINTERFACE for an unknown interface, E_POINTER; nothing
    ///         has been made then
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    Holding holding_;
    ReferenceCount references_;
};

}  // namespace opane::component
