#pragma once

#include <opane/OPaneCommDLL.h>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "platform/shared_library.h"
#include "simulator/served_module.h"
#include "support/temporary_folder.h"

namespace opane::test {

/// A reference that is released at the end.
template <typename Interface>
class Reference {
public:
    explicit Reference(Interface* object = nullptr) : object_(object) {}
    ~Reference() { reset(); }
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Reference& operator=(Reference&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    Interface* operator->() const { return object_; }
    Interface* get() const { return object_; }
    void reset() {
        if (object_ != nullptr)
            std::exchange(object_, nullptr)->Release();
    }

private:
    Interface* object_;
};

inline std::string plainText(BSTR text) {
    return {text, text + SysStringLen(text)};
}

/// Owns an automation string.
class AutomationString {
public:
    explicit AutomationString(const std::string& text)
        : text_(SysAllocString(std::u16string(text.begin(), text.end()).c_str())) {}
    ~AutomationString() { SysFreeString(text_); }
    AutomationString(const AutomationString&) = delete;
    AutomationString& operator=(const AutomationString&) = delete;

    operator BSTR() const { return text_; }

private:
    BSTR text_;
};

/// Takes the text of the thread's error information, empty when there is none.
inline std::string takeDescription() {
    IErrorInfo* taken = nullptr;
    if (GetErrorInfo(0, &taken) != S_OK)
        return {};
    const Reference<IErrorInfo> info(taken);
    BSTR description = nullptr;
    info->GetDescription(&description);
    std::string text = plainText(description);
    SysFreeString(description);
    return text;
}

/// The component, registered in a registry of its own for as long as this lives.
class RegisteredComponent {
public:
    RegisteredComponent() {
        setenv("OPANE_COMPONENT_REGISTRY", registry().c_str(), 1);
        callEntry("DllRegisterServer");
    }
    ~RegisteredComponent() { CoFreeUnusedLibraries(); }
    RegisteredComponent(const RegisteredComponent&) = delete;
    RegisteredComponent& operator=(const RegisteredComponent&) = delete;

    std::string registry() const { return folder_ / "data/opane/components"; }

    static HRESULT callEntry(const char* entry) {
        return SharedLibrary(OPANECOMMDLL_PROGRAM).function<HRESULT()>(entry)();
    }

    /// What CoCreateInstance gives for the programmatic identifier.
    static HRESULT create(REFIID riid, void** object, IUnknown* outer = nullptr) {
        CLSID clsid{};
        const HRESULT result = CLSIDFromProgID(OLESTR("opanecommdll.CLSOPANECOMMDLL"), &clsid);
        return FAILED(result) ? result : CoCreateInstance(clsid, outer, CLSCTX_INPROC_SERVER, riid, object);
    }
    static Reference<_clsOPaneCommDLL> create() {
        void* object = nullptr;
        create(IID__clsOPaneCommDLL, &object);
        return Reference(static_cast<_clsOPaneCommDLL*>(object));
    }

private:
    TemporaryFolder folder_;
};

/// The calling thread's host, which has one device behind all its ports.
class ThreadHost {
public:
    explicit ThreadHost(std::string device = "") : device_(std::move(device)), before_(OpaneSetHost(&host_)) {}
    ~ThreadHost() { OpaneSetHost(before_); }
    ThreadHost(const ThreadHost&) = delete;
    ThreadHost& operator=(const ThreadHost&) = delete;

    std::function<void()> events;  ///< what a pending event does
    std::string shown;             ///< the text of the last message box

private:
    static ThreadHost& from(void* context) { return *static_cast<ThreadHost*>(context); }

    std::string device_;
    OpaneHost host_{this,
                    [](void* context) {
                        if (from(context).events)
                            from(context).events();
                    },
                    [](void* context, const char* text, const char* /*title*/, BOOL /*withCancel*/) -> BOOL {
                        from(context).shown = text;
                        return 1;
                    },
                    nullptr, [](void* context, SHORT /*comPort*/) { return from(context).device_.c_str(); }};
    const OpaneHost* before_;
};

}  // namespace opane::test
