// Finding, loading and unloading components.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "automation/component/boundary.h"
#include "automation/component/posix/runtime/error_information.h"
#include "automation/component/posix/runtime/identifiers.h"
#include "automation/component/posix/runtime/registry.h"
#include "automation/component/shared_library.h"
#include "opane/component_runtime.h"
#include "shared/letter_case.h"
#include "shared/runtime_error.h"
#include "shared/utf16.h"

namespace opane::component_runtime {
namespace {

using component::ComponentError;
using GetClassObject = HRESULT(REFCLSID clsid, REFIID riid, void** object);
using CanUnloadNow = HRESULT();
constexpr const char* kClassObjectEntry = "DllGetClassObject";

struct LoadedLibrary {
    std::string file;
    std::shared_ptr<const SharedLibrary> library;
};

std::mutex librariesMutex;
std::vector<LoadedLibrary>& libraries() {
    // Kept to the end, as hosts may create until then, and without memory of its own, which could be missing.
    alignas(std::vector<LoadedLibrary>) static std::byte place[sizeof(std::vector<LoadedLibrary>)];
    static auto* const loaded = new (place) std::vector<LoadedLibrary>;
    return *loaded;
}

/// Runs part of the runtime; what it raises becomes a code with its explanation, and nothing leaves.
template <typename Call>
HRESULT guarded(Call&& call) noexcept {
    SetErrorInfo(0, nullptr);
    try {
        return call();
    } catch (const ComponentError& error) {
        return explain(error.code(), error.what());
    } catch (const RuntimeError& error) {
        const bool denied = error.number() == ErrorNumber::permissionDenied;
        return explain(denied ? E_ACCESSDENIED : SELFREG_E_CLASS, error.what());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& error) {
        return explain(E_UNEXPECTED, error.what());
    }
}

/// A component, which stays loaded while it is held here and until it may be unloaded.
/// @throws ComponentError when the file is no component
std::shared_ptr<const SharedLibrary> loadComponent(const std::string& file) {
    const std::lock_guard lock(librariesMutex);
    auto& loaded = libraries();
    const auto found =
        std::find_if(loaded.begin(), loaded.end(), [&file](const LoadedLibrary& row) { return row.file == file; });
    if (found != loaded.end())
        return found->library;
    try {
        auto library = std::make_shared<const SharedLibrary>(file);
        if (library->function<GetClassObject>(kClassObjectEntry) == nullptr)
            throw ComponentError(CO_E_ERRORINDLL,
                                 "\"" + file + "\" is no component: it exports no " + kClassObjectEntry);
        loaded.push_back({file, library});
        return library;
    } catch (const RuntimeError& error) {
        throw ComponentError(CO_E_DLLNOTFOUND, error.what());
    }
}

/// The class as it is registered; nothing when it is not.
std::optional<RegisteredClass> lookUp(const std::function<bool(const RegisteredClass&)>& matches) {
    try {
        return findClass(matches);
    } catch (const RuntimeError& error) {
        throw ComponentError(REGDB_E_READREGDB, error.what());
    }
}

bool isLineFree(const std::string& text) {
    return text.find_first_of("\t\r\n") == std::string::npos;
}

}  // namespace
}  // namespace opane::component_runtime

using namespace opane::component_runtime;

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid) {
    if (progId == nullptr || clsid == nullptr)
        return E_INVALIDARG;
    *clsid = CLSID{};
    return guarded([&] {
        const std::string name = opane::utf8Text(progId);
        const auto row = lookUp([&](const RegisteredClass& entry) { return opane::isSameName(entry.progId, name); });
        if (!row)
            throw ComponentError(CO_E_CLASSSTRING,
                                 "no class \"" + name + "\" is registered in \"" + registryFile() + "\"");
        *clsid = row->clsid;
        return S_OK;
    });
}

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* /*reserved*/, REFIID riid, void** object) {
    if (object == nullptr)
        return E_INVALIDARG;
    *object = nullptr;
    return guarded([&] {
        const auto row = lookUp([&](const RegisteredClass& entry) { return entry.clsid == clsid; });
        if ((context & CLSCTX_INPROC_SERVER) == 0)
            throw ComponentError(REGDB_E_CLASSNOTREG,
                                 "components run in the host's process: CLSCTX_INPROC_SERVER is not asked for");
        if (!row)
            throw ComponentError(REGDB_E_CLASSNOTREG,
                                 "no class " + identifierText(clsid) + " is registered in \"" + registryFile() + "\"");
        const auto component = loadComponent(row->library);
        const HRESULT result = component->function<GetClassObject>(kClassObjectEntry)(clsid, riid, object);
        if (SUCCEEDED(result) && *object == nullptr)
            throw ComponentError(CO_E_ERRORINDLL, "\"" + row->library + "\" gives no class object");
        return result;
    });
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** object) {
    if (object == nullptr)
        return E_INVALIDARG;
    *object = nullptr;
    void* factory = nullptr;
    if (const HRESULT result = CoGetClassObject(clsid, context, nullptr, IID_IClassFactory, &factory); FAILED(result))
        return result;
    const HRESULT result = static_cast<IClassFactory*>(factory)->CreateInstance(outer, riid, object);
    static_cast<IClassFactory*>(factory)->Release();
    return result;
}

void CoFreeUnusedLibraries() {
    const std::lock_guard lock(librariesMutex);
    std::erase_if(libraries(), [](const LoadedLibrary& loaded) {
        if (loaded.library.use_count() > 1)
            return false;  // another thread is asking it for a class object
        auto* const canUnloadNow = loaded.library->function<CanUnloadNow>("DllCanUnloadNow");
        return canUnloadNow != nullptr && canUnloadNow() == S_OK;
    });
}

HRESULT OpaneRegisterClass(REFCLSID clsid, const char* progId, const char* library) {
    if (progId == nullptr || library == nullptr)
        return E_INVALIDARG;
    return guarded([&] {
        const RegisteredClass row{clsid, progId, library};
        if (!row.library.starts_with('/') || !isLineFree(row.library) || !isLineFree(row.progId))
            throw ComponentError(E_INVALIDARG,
                                 "\"" + row.library + "\" for \"" + row.progId +
                                     "\": expected an absolute path and a name, without tabs and line breaks");
        enterClass(clsid, row);
        return S_OK;
    });
}

HRESULT OpaneUnregisterClass(REFCLSID clsid) {
    return guarded([&] {
        enterClass(clsid, std::nullopt);
        return S_OK;
    });
}
