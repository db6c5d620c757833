#pragma once

#include <atomic>

#include "opane/component_runtime.h"

namespace opane::component {

/// What every object that is held by reference has in common. It begins with one reference, its
/// maker's, and deletes itself with the last one. References may be taken and released on any thread.
/// @tparam Object  has interfaceFor(REFIID): where that interface of it is, null when it has none such
template <class Object, class... Interfaces>
class Referenced : public Interfaces... {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) final {
        if (object == nullptr)
            return E_POINTER;
        *object = static_cast<Object*>(this)->interfaceFor(riid);
        if (*object == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() final { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() final {
        const ULONG left = --references_;
        if (left == 0)
            delete static_cast<Object*>(this);
        return left;
    }

protected:
    Referenced() = default;
    ~Referenced() = default;

private:
    std::atomic<ULONG> references_{1};
};

}  // namespace opane::component
