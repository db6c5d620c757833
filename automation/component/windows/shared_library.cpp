#include "automation/component/shared_library.h"

#include <utility>

#include "platform/windows/system_text.h"
#include "shared/runtime_error.h"

namespace opane {

SharedLibrary::SharedLibrary(const std::string& file) : handle_(nullptr) {
    const std::wstring name = wideText(file);  // named: its end would change the last error
    handle_ = LoadLibraryW(name.c_str());
    if (handle_ != nullptr)
        return;
    const DWORD error = GetLastError();
    const bool missing = GetFileAttributesW(name.c_str()) == INVALID_FILE_ATTRIBUTES;
    throw RuntimeError(missing ? ErrorNumber::fileNotFound : ErrorNumber::pathFileAccess,
                       "the library \"" + file + "\" cannot be loaded: " + systemErrorText(error));
}

SharedLibrary::~SharedLibrary() {
    if (handle_ != nullptr)
        FreeLibrary(static_cast<HMODULE>(handle_));
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

SharedLibrary::Symbol* SharedLibrary::symbol(const char* name) const {
    return reinterpret_cast<Symbol*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace opane
