#include "automation/component/posix/runtime/error_information.h"

#include <new>
#include <string>
#include <utility>

#include "automation/component/referenced.h"
#include "shared/utf16.h"

namespace opane::component_runtime {
namespace {

/// One set of error information; filled by its maker, then read.
class ErrorInformation final : public component::Referenced<ErrorInformation, IErrorInfo, ICreateErrorInfo> {
public:
    HRESULT GetGUID(GUID* guid) override { return give(guid_, guid); }
    HRESULT GetSource(BSTR* source) override { return give(source_, source); }
    HRESULT GetDescription(BSTR* description) override { return give(description_, description); }
    HRESULT GetHelpFile(BSTR* helpFile) override { return give(helpFile_, helpFile); }
    HRESULT GetHelpContext(DWORD* helpContext) override { return give(helpContext_, helpContext); }

    HRESULT SetGUID(REFGUID guid) override {
        guid_ = guid;
        return S_OK;
    }
    HRESULT SetSource(LPOLESTR source) override { return take(source_, source); }
    HRESULT SetDescription(LPOLESTR description) override { return take(description_, description); }
    HRESULT SetHelpFile(LPOLESTR helpFile) override { return take(helpFile_, helpFile); }
    HRESULT SetHelpContext(DWORD helpContext) override {
        helpContext_ = helpContext;
        return S_OK;
    }

private:
    friend Referenced;

    ~ErrorInformation() = default;

    void* interfaceFor(REFIID riid) {
        if (riid == IID_IUnknown || riid == IID_IErrorInfo)
            return static_cast<IErrorInfo*>(this);
        return riid == IID_ICreateErrorInfo ? static_cast<ICreateErrorInfo*>(this) : nullptr;
    }

    template <typename Value>
    static HRESULT give(const Value& value, Value* target) {
        if (target == nullptr)
            return E_POINTER;
        *target = value;
        return S_OK;
    }
    static HRESULT give(const std::u16string& text, BSTR* target) {
        if (target == nullptr)
            return E_POINTER;
        *target = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        return *target == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    static HRESULT take(std::u16string& text, LPOLESTR source) try {
        text = source != nullptr ? source : u"";
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }

    GUID guid_{};
    std::u16string source_;
    std::u16string description_;
    std::u16string helpFile_;
    DWORD helpContext_ = 0;
};

// A plain pointer: calls may still come when the thread's other objects, or the process's, are being destroyed.
thread_local IErrorInfo* threadInformation = nullptr;

/// Releases what is left at the thread's end.
struct AtThreadEnd {
    ~AtThreadEnd() { SetErrorInfo(0, nullptr); }
};

}  // namespace

HRESULT explain(HRESULT code, const char* text) noexcept {
    ICreateErrorInfo* creation = nullptr;
    if (FAILED(CreateErrorInfo(&creation)))
        return code;
    OLECHAR source[] = u"opane-component";
    try {
        if (SUCCEEDED(creation->SetSource(source)) && SUCCEEDED(creation->SetDescription(utf16Text(text).data())))
            SetErrorInfo(0, static_cast<ErrorInformation*>(creation));
    } catch (const std::bad_alloc&) {
    }
    creation->Release();
    return code;
}

}  // namespace opane::component_runtime

using opane::component_runtime::AtThreadEnd;
using opane::component_runtime::ErrorInformation;
using opane::component_runtime::threadInformation;

HRESULT CreateErrorInfo(ICreateErrorInfo** info) {
    if (info == nullptr)
        return E_POINTER;
    *info = new (std::nothrow) ErrorInformation;
    return *info == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT SetErrorInfo(ULONG /*reserved*/, IErrorInfo* info) {
    thread_local const AtThreadEnd atThreadEnd;
    if (info != nullptr)
        info->AddRef();
    if (IErrorInfo* const before = std::exchange(threadInformation, info); before != nullptr)
        before->Release();
    return S_OK;
}

HRESULT GetErrorInfo(ULONG /*reserved*/, IErrorInfo** info) {
    if (info == nullptr)
        return E_POINTER;
    *info = std::exchange(threadInformation, nullptr);
    return *info == nullptr ? S_FALSE : S_OK;
}
