#include "automation/component/shared_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <utility>

#include "shared/runtime_error.h"

namespace opane {

SharedLibrary::SharedLibrary(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ != nullptr)
        return;
    const std::string reason = dlerror();
    const bool missing = access(file.c_str(), F_OK) != 0;
    throw RuntimeError(missing ? ErrorNumber::fileNotFound : ErrorNumber::pathFileAccess,
                       "the library \"" + file + "\" cannot be loaded: " + reason);
}

SharedLibrary::~SharedLibrary() {
    if (handle_ != nullptr)
        dlclose(handle_);
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

SharedLibrary::Symbol* SharedLibrary::symbol(const char* name) const {
    return reinterpret_cast<Symbol*>(dlsym(handle_, name));
}

}  // namespace opane
