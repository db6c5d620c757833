#pragma once

#include <atomic>

#include "opane/component_runtime.h"

namespace opane::component {

/// Whether a host holds anything of the library: objects, class factories and locks, counted together.
bool isHeld() noexcept;

/// Counts as long as it lives. The parts of the library that a host can hold have one.
class Holding {
public:
    Holding() noexcept;
    ~Holding();
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;
};

/// Adds or takes away a lock of a host's.
void lockServer(bool lock) noexcept;

/// What every object of the library that hosts hold by reference has in common. It begins with one reference, its
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
    Holding holding_;
    std::atomic<ULONG> references_{1};
};

}  // namespace opane::component
