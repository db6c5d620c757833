#pragma once

#include <string>

namespace opane {

/// A library of code in this process, for as long as this object lives.
class SharedLibrary {
public:
    /// @param file  UTF-8
    /// @throws RuntimeError 53 (missing), 75 (cannot be loaded); the text has the system's reason
    explicit SharedLibrary(const std::string& file);
    ~SharedLibrary();
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;

    /// What the library exports under that name; null when it does not.
    template <typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

private:
    using Symbol = void();
    Symbol* symbol(const char* name) const;

    void* handle_;
};

}  // namespace opane
