// A host that binds early to the registered component: the type library as the system finds it, then calls through the
// virtual table, on a module behind COM1. Prints every check; exits with the number of those that failed.
// usage: early_bound_client GENERATOR BITMAP

#include <string>
#include <thread>

#include "checks.h"
#include "opane/OPaneCommDLL.h"

namespace {

Checks check;

/// The interface's virtual table as a compiler reads it: the methods behind the seven slots of the base interfaces.
void checkTypeLibrary() {
    ITypeLib* library = nullptr;
    ITypeInfo *dispatch = nullptr, *info = nullptr;
    HREFTYPE virtualTable = 0;
    const bool described = LoadRegTypeLib(LIBID_OPaneCommDLL, 11, 0, 0x0409, &library) == S_OK &&
                           library->GetTypeInfoOfGuid(IID__clsOPaneCommDLL, &dispatch) == S_OK &&
                           dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &virtualTable) == S_OK &&
                           dispatch->GetRefTypeInfo(virtualTable, &info) == S_OK;
    check(described, "a type library is registered and describes the dual interface");
    for (int slot = 7; described && slot < 7 + 8; ++slot) {
        FUNCDESC* method = nullptr;
        const MEMBERID identifier = 0x60030000 + (slot == 7 ? 0 : slot - 7 + 2);
        check(info->GetFuncDesc(static_cast<UINT>(slot - 7), &method) == S_OK && method->memid == identifier &&
                  method->oVft == slot * static_cast<int>(sizeof(void*)),
              "the method in slot " + std::to_string(slot) + " has its identifier");
        if (method != nullptr)
            info->ReleaseFuncDesc(method);
    }
    for (IUnknown* const held : std::initializer_list<IUnknown*>{info, dispatch, library})
        if (held != nullptr)
            held->Release();
}

/// The status, or -1 when the call failed.
SHORT synchronize(_clsOPaneCommDLL* object, SHORT node) {
    SHORT port = 1, status = 7;
    LONG baudRate = 9600;
    return object->Synchronize(&port, &baudRate, &node, &status) == S_OK ? status : SHORT{-1};
}

void checkDisplay(_clsOPaneCommDLL* object, const wchar_t* generator, const wchar_t* bitmap) {
    // The module has 100 ms to answer, which a busy machine may take for itself: a host tries again.
    int tries = 1;
    while (tries <= 5 && synchronize(object, 3) != 0)
        ++tries;
    check(tries <= 5, "Synchronize");
    SHORT status = 7;
    check(object->DisplayBMP(SysAllocString(bitmap), &status) == S_OK && status == 0, "DisplayBMP");
    struct {
        const wchar_t* text;
        SHORT line, column, gap, inverted;
    } rows[]{{L"Late bound", 4, 1, 3, 0}, {L"from a script", 6, 2, 1, 1}};
    for (auto& row : rows) {
        const HRESULT result = object->DisplayString(SysAllocString(row.text), &row.line, &row.column, &row.gap,
                                                     &row.inverted, SysAllocString(generator), &status);
        check(result == S_OK && status == 0, "DisplayString");
    }
}

void checkThreads(_clsOPaneCommDLL* object) {
    HRESULT elsewhere = S_OK;
    BSTR version = nullptr;
    std::thread([&] { elsewhere = object->Version(&version); }).join();
    check(elsewhere == RPC_E_WRONG_THREAD, "another thread is refused");
}

LRESULT CALLBACK countTimer(HWND window, UINT message, WPARAM wide, LPARAM narrow) {
    if (message == WM_TIMER)
        SetWindowLongPtrW(window, GWLP_USERDATA, GetWindowLongPtrW(window, GWLP_USERDATA) + 1);
    return DefWindowProcW(window, message, wide, narrow);
}

/// While a call waits for a module that does not answer, the messages of this thread are served.
void checkMessages(_clsOPaneCommDLL* object) {
    WNDCLASSW type{};
    type.lpfnWndProc = countTimer;
    type.lpszClassName = L"OPaneTest";
    RegisterClassW(&type);
    const HWND window =
        CreateWindowExW(0, type.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetTimer(window, 1, 10, nullptr);
    check(synchronize(object, 1) == 1, "a module that there is not gives the status 1");
    check(GetWindowLongPtrW(window, GWLP_USERDATA) > 0, "a timer ran while the call waited");
    DestroyWindow(window);

    PostQuitMessage(3);
    synchronize(object, 1);
    MSG message{};
    check(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0 && message.message == WM_QUIT && message.wParam == 3,
          "the request to quit is left to the host");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 3)
        return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    checkTypeLibrary();
    void* made = nullptr;
    CoCreateInstance(CLSID_clsOPaneCommDLL, nullptr, CLSCTX_INPROC_SERVER, IID__clsOPaneCommDLL, &made);
    check(made != nullptr, "an object is made");
    if (auto* const object = static_cast<_clsOPaneCommDLL*>(made); object != nullptr) {
        checkDisplay(object, arguments[1], arguments[2]);
        checkThreads(object);
        checkMessages(object);
        const auto isLoaded = [] { return GetModuleHandleW(L"OPaneCommDLL.dll") != nullptr; };
        check(isLoaded(), "the library is loaded while an object lives");
        object->Release();
        CoFreeUnusedLibrariesEx(0, 0);
        check(!isLoaded(), "it is unloaded after that");
    }
    CoUninitialize();
    return check.failures();
}
