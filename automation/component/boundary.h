#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "opane/component_runtime.h"
#include "shared/runtime_error.h"

namespace opane::component {

/// A failure with a standard code of the component runtime. what() explains it, in UTF-8.
class ComponentError : public std::runtime_error {
public:
    ComponentError(HRESULT code, const std::string& text) : std::runtime_error(text), code_(code) {}

    HRESULT code() const noexcept { return code_; }

private:
    HRESULT code_;
};

/// The call result of an error number, as hosts know it.
constexpr HRESULT resultOf(ErrorNumber number) {
    return static_cast<HRESULT>(0x800A0000U + static_cast<unsigned>(number));
}

/// Turns the exception that is being handled into a call result and leaves its text, from "OPaneCommDLL", as the
/// thread's error information.
HRESULT reportException() noexcept;

/// Takes the text of the thread's error information; otherwise when there is none.
std::string takeErrorText(const std::string& otherwise);

/// Leaves no error information behind from an earlier call.
void forgetErrorInformation() noexcept;

/// The boundary between the library and its hosts: runs a call, and no exception leaves it.
/// @return S_OK; 0x800A0000 + n for the error with number n; the code of a ComponentError; E_OUTOFMEMORY; E_UNEXPECTED
///         for everything else
template <typename Call>
HRESULT atBoundary(Call&& call) noexcept {
    forgetErrorInformation();
    try {
        call();
        return S_OK;
    } catch (...) {
        return reportException();
    }
}

}  // namespace opane::component
