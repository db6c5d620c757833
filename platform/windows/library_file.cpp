#include "platform/folders.h"
#include "platform/windows/system_text.h"

namespace opane {

std::string libraryFile() {
    static const char anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&anchor), &module);
    std::wstring name(MAX_PATH, L'\0');
    DWORD length = 0;
    while ((length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()))) == name.size())
        name.resize(2 * name.size());
    name.resize(length);
    return utf8Text(name);
}

}  // namespace opane
