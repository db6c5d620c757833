#include "automation/component/boundary.h"

#include "automation/component/wide_text.h"

namespace opane::component {
namespace {

constexpr const char* kSource = "OPaneCommDLL";

/// Leaves the text for whoever asks; without memory the code alone has to do.
void leaveErrorInformation(const char* text) noexcept {
    ICreateErrorInfo* creation = nullptr;
    if (FAILED(CreateErrorInfo(&creation)))
        return;
    try {
        auto source = wideText(kSource);
        auto description = wideText(text);
        IErrorInfo* info = nullptr;
        if (SUCCEEDED(creation->SetSource(source.data())) && SUCCEEDED(creation->SetDescription(description.data())) &&
            SUCCEEDED(creation->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)))) {
            SetErrorInfo(0, info);
            info->Release();
        }
    } catch (...) {
    }
    creation->Release();
}

}  // namespace

HRESULT reportException() noexcept {
    try {
        throw;
    } catch (const ComponentError& error) {
        leaveErrorInformation(error.what());
        return error.code();
    } catch (const RuntimeError& error) {
        leaveErrorInformation(error.what());
        return error.number() == ErrorNumber::outOfMemory ? E_OUTOFMEMORY : resultOf(error.number());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& error) {
        leaveErrorInformation(error.what());
        return E_UNEXPECTED;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

std::string takeErrorText(const std::string& otherwise) {
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) != S_OK)
        return otherwise;
    BSTR description = nullptr;
    const HRESULT result = info->GetDescription(&description);
    info->Release();
    const OwnedString owned(description);
    return SUCCEEDED(result) ? textOf(owned.get()) : otherwise;
}

void forgetErrorInformation() noexcept {
    SetErrorInfo(0, nullptr);
}

}  // namespace opane::component
