#include "automation/component/registration.h"

#include <string>
#include <vector>

#include "automation/component/boundary.h"
#include "automation/component/wide_text.h"
#include "automation/component/windows/type_information.h"
#include "opane/OPaneCommDLL.h"
#include "platform/folders.h"
#include "platform/windows/system_text.h"

// The import libraries have them; the compiler's headers do not declare them.
extern "C" HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* file, OLECHAR* helpFolder);
extern "C" HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID library, WORD major, WORD minor, LCID lcid, SYSKIND system);

namespace opane::component {
namespace {

constexpr WORD kMajorVersion = 11;
constexpr WORD kMinorVersion = 0;
constexpr LCID kLocale = 0x0409;
constexpr bool kIs64Bit = sizeof(void*) == 8;
constexpr SYSKIND kSystemKind = kIs64Bit ? SYS_WIN64 : SYS_WIN32;
/// The part of the registry that programs of the other width see.
constexpr REGSAM kOtherWidth = kIs64Bit ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

/// Where classes are registered: for everybody on the machine, or for the user alone.
struct Place {
    HKEY root;
    HRESULT(WINAPI* registerLibrary)(ITypeLib*, OLECHAR*, OLECHAR*);
    HRESULT(WINAPI* unregisterLibrary)(REFGUID, WORD, WORD, LCID, SYSKIND);
};

Place machine() {
    return {HKEY_LOCAL_MACHINE, RegisterTypeLib, UnRegisterTypeLib};
}

Place user() {
    return {HKEY_CURRENT_USER, RegisterTypeLibForUser, UnRegisterTypeLibForUser};
}

std::wstring text(const GUID& identifier) {
    wchar_t characters[39];
    StringFromGUID2(identifier, characters, 39);
    return characters;
}

std::wstring programKey() {
    return L"Software\\Classes\\" + wideText(PROGID_clsOPaneCommDLL);
}

std::wstring classKey() {
    return L"Software\\Classes\\CLSID\\" + text(CLSID_clsOPaneCommDLL);
}

/// With the version in hexadecimal, as the system writes it.
std::wstring libraryKey() {
    return L"Software\\Classes\\TypeLib\\" + text(LIBID_OPaneCommDLL) + L"\\b.0";
}

struct Value {
    std::wstring key;
    const wchar_t* name;  // null: the key's own
    std::wstring text;
};

std::vector<Value> values() {
    const std::wstring program = wideText(PROGID_clsOPaneCommDLL);
    return {
        {programKey(), nullptr, program},
        {programKey() + L"\\Clsid", nullptr, text(CLSID_clsOPaneCommDLL)},
        {classKey(), nullptr, program},
        {classKey() + L"\\InprocServer32", nullptr, wideText(libraryFile())},
        {classKey() + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {classKey() + L"\\ProgID", nullptr, program},
        {classKey() + L"\\Programmable", nullptr, L""},
        {classKey() + L"\\TypeLib", nullptr, text(LIBID_OPaneCommDLL)},
        {classKey() + L"\\VERSION", nullptr, std::to_wstring(kMajorVersion) + L"." + std::to_wstring(kMinorVersion)},
    };
}

LSTATUS write(HKEY root, const Value& value) {
    HKEY key = nullptr;
    LSTATUS status = RegCreateKeyExW(root, value.key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    const auto bytes = static_cast<DWORD>((value.text.size() + 1) * sizeof(wchar_t));
    status = RegSetValueExW(key, value.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.text.c_str()), bytes);
    RegCloseKey(key);
    return status;
}

bool exists(HKEY root, const std::wstring& name, REGSAM width = 0) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, name.c_str(), 0, KEY_READ | width, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

HRESULT removeKey(HKEY root, const std::wstring& name) {
    const LSTATUS status = RegDeleteTreeW(root, name.c_str());
    return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

bool isAccessDenied(HRESULT result) {
    return result == E_ACCESSDENIED || result == TYPE_E_REGISTRYACCESS;
}

/// Takes everything out that is there; goes on after a failure.
/// @return the first failure
HRESULT leave(const Place& place) {
    HRESULT result = removeKey(place.root, classKey());
    // The two widths share the program's key.
    if (!exists(place.root, classKey(), kOtherWidth)) {
        const HRESULT removed = removeKey(place.root, programKey());
        result = FAILED(result) ? result : removed;
    }
    const HRESULT removed =
        place.unregisterLibrary(LIBID_OPaneCommDLL, kMajorVersion, kMinorVersion, kLocale, kSystemKind);
    // Any other failure of this one: it is not there.
    return isAccessDenied(removed) && SUCCEEDED(result) && exists(place.root, libraryKey()) ? removed : result;
}

/// Enters everything, or nothing.
HRESULT enter(const Place& place) {
    HRESULT result = S_OK;
    for (const Value& value : values()) {
        if (SUCCEEDED(result))
            result = HRESULT_FROM_WIN32(static_cast<DWORD>(write(place.root, value)));
    }
    if (SUCCEEDED(result)) {
        std::wstring file = wideText(libraryFile());
        result = place.registerLibrary(ownTypeLibrary().get(), file.data(), nullptr);
    }
    if (FAILED(result))
        leave(place);
    return result;
}

void check(HRESULT result, const char* what) {
    if (FAILED(result))
        throw ComponentError(result,
                             std::string(what) + " the registry: " + systemErrorText(static_cast<DWORD>(result)));
}

}  // namespace

void registerComponent() {
    HRESULT result = enter(machine());
    if (isAccessDenied(result))
        result = enter(user());
    check(result, "OPaneCommDLL cannot be entered into");
}

void unregisterComponent() {
    const HRESULT ofUser = leave(user());
    const HRESULT ofMachine = leave(machine());
    check(FAILED(ofMachine) ? ofMachine : ofUser, "OPaneCommDLL cannot be taken out of");
}

}  // namespace opane::component
