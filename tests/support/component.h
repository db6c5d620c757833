#pragma once

#include <gtest/gtest.h>
#include <opane/OPaneCommDLL.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "automation/component/shared_library.h"
#include "simulator/served_module.h"
#include "support/temporary_folder.h"

namespace opane::test {

struct Release {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Reference = std::unique_ptr<Interface, Release>;

inline std::string plainText(BSTR text) {
    return {text, text + SysStringLen(text)};
}

/// Owns an automation string.
struct AutomationString : std::unique_ptr<OLECHAR, void (*)(BSTR)> {
    explicit AutomationString(const std::string& text)
        : unique_ptr(SysAllocString(std::u16string(text.begin(), text.end()).c_str()), &SysFreeString) {}
    operator BSTR() const { return get(); }
};

/// A variant that holds a number, a string or a pointer, which stays the caller's.
template <typename Content = void*>
VARIANT variant(int type, Content content = {}) {
    VARIANT made{};
    made.vt = static_cast<VARTYPE>(type);
    std::memcpy(&made.byref, &content, sizeof content);
    return made;
}
inline VARIANT number(SHORT value) {
    return variant(VT_I2, value);
}
inline VARIANT variable(VARIANT& held) {
    return variant(VT_BYREF | VT_VARIANT, &held);
}

/// Takes the text of the thread's error information, empty when there is none.
inline std::string takeDescription() {
    IErrorInfo* taken = nullptr;
    if (GetErrorInfo(0, &taken) != S_OK)
        return {};
    BSTR description = nullptr;
    taken->GetDescription(&description);
    taken->Release();
    std::string text = plainText(description);
    SysFreeString(description);
    return text;
}

/// The calling thread's host, which has one device behind all its ports.
class ThreadHost {
public:
    explicit ThreadHost(std::string device) : device_(std::move(device)), before_(OpaneSetHost(&host_)) {}
    ~ThreadHost() { OpaneSetHost(before_); }
    ThreadHost(const ThreadHost&) = delete;

    std::function<void()> events = [] {};  ///< what a pending event does

private:
    static ThreadHost& from(void* context) { return *static_cast<ThreadHost*>(context); }

    const std::string device_;
    OpaneHost host_{this, [](void* context) { from(context).events(); }, nullptr, nullptr,
                    [](void* context, SHORT /*comPort*/) { return from(context).device_.c_str(); }};
    const OpaneHost* before_;
};

/// The component in a registry of its own, and a host that has a served module behind all its ports.
class Component : public testing::Test {
protected:
    Component() {
        setenv("OPANE_COMPONENT_REGISTRY", registry.c_str(), 1);
        callEntry("DllRegisterServer");
    }
    ~Component() override { CoFreeUnusedLibraries(); }

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
        return Reference<_clsOPaneCommDLL>(static_cast<_clsOPaneCommDLL*>(object));
    }

    /// Connects with the module, and gives the status; 7 when the call leaves it. The module has 100 ms to answer, which
    /// a busy machine may take for itself: a host tries again.
    static SHORT synchronize(_clsOPaneCommDLL& object, HRESULT expected = S_OK) {
        SHORT port = 1, node = 3, status = 1;
        LONG baudRate = 9600;
        for (int tries = 1; tries <= 5 && status == 1; ++tries) {
            status = 7;
            EXPECT_EQ(object.Synchronize(&port, &baudRate, &node, &status), expected);
        }
        return status;
    }

    TemporaryFolder folder;
    const std::string registry = folder / "data/opane/components";
    simulator::ServedModule module;
    ThreadHost host{module.devicePath()};
};

}  // namespace opane::test
