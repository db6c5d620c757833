// A host that binds early to the registered component: the type library as the system finds it, then calls through the
// virtual table, on a module behind COM1. Prints every check; exits with the number of those that failed.
// usage: early_bound_client GENERATOR BITMAP

#include <string>
#include <thread>

#include "checks.h"
#include "opane/OPaneCommDLL.h"

namespace {

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x800A0035);
constexpr HRESULT kObjectNotSet = static_cast<HRESULT>(0x800A005B);
constexpr const wchar_t* kLibraryFile = L"OPaneCommDLL.dll";

Checks check;

std::wstring taken(BSTR text) {
    const std::wstring result(text != nullptr ? text : L"");
    SysFreeString(text);
    return result;
}

/// A string argument for the length of a call.
class Text {
public:
    explicit Text(const wchar_t* characters) : text_(SysAllocString(characters)) {}
    ~Text() { SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    operator BSTR() const { return text_; }

private:
    BSTR text_;
};

struct ExpectedMethod {
    const wchar_t* name;
    MEMBERID identifier;
};

constexpr ExpectedMethod kMethods[]{
    {L"DisplayString", 0x60030000},  {L"Synchronize", 0x60030003},   {L"Version", 0x60030004},
    {L"ChangeBaudrate", 0x60030005}, {L"ReadStatus", 0x60030006},    {L"WriteStatus", 0x60030007},
    {L"DisplayBMP", 0x60030008},     {L"ReadIRLastKey", 0x60030009},
};

/// The description of the interface by its virtual table, as a compiler reads it: the methods behind the seven slots of
/// the base interfaces.
void checkTypeLibrary() {
    ITypeLib* library = nullptr;
    check(LoadRegTypeLib(LIBID_OPaneCommDLL, 11, 0, 0x0409, &library) == S_OK, "the type library is registered");
    if (library == nullptr)
        return;
    BSTR libraryName = nullptr;
    library->GetDocumentation(-1, &libraryName, nullptr, nullptr, nullptr);
    check(taken(libraryName) == L"OPaneCommDLL", "it is named OPaneCommDLL");

    ITypeInfo* dispatch = nullptr;
    ITypeInfo* info = nullptr;
    HREFTYPE virtualTable = 0;
    check(library->GetTypeInfoOfGuid(IID__clsOPaneCommDLL, &dispatch) == S_OK &&
              dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &virtualTable) == S_OK &&
              dispatch->GetRefTypeInfo(virtualTable, &info) == S_OK,
          "it describes the dual interface");
    short slot = 7;
    for (const ExpectedMethod& method : kMethods) {
        FUNCDESC* description = nullptr;
        BSTR name = nullptr;
        const bool found = info != nullptr && info->GetFuncDesc(static_cast<UINT>(slot - 7), &description) == S_OK;
        if (found)
            info->GetDocumentation(description->memid, &name, nullptr, nullptr, nullptr);
        check(found && taken(name) == method.name && description->memid == method.identifier &&
                  description->oVft == slot * static_cast<int>(sizeof(void*)),
              "method " + std::to_string(slot - 6) + " has its name, its identifier and its slot");
        if (found)
            info->ReleaseFuncDesc(description);
        ++slot;
    }
    if (info != nullptr)
        info->Release();
    if (dispatch != nullptr)
        dispatch->Release();
    library->Release();
}

_clsOPaneCommDLL* create() {
    void* object = nullptr;
    const HRESULT result =
        CoCreateInstance(CLSID_clsOPaneCommDLL, nullptr, CLSCTX_INPROC_SERVER, IID__clsOPaneCommDLL, &object);
    check(result == S_OK, "an object is made");
    return static_cast<_clsOPaneCommDLL*>(object);
}

/// The status, or -1 when the call failed.
SHORT synchronize(_clsOPaneCommDLL* object, SHORT node) {
    SHORT port = 1;
    LONG baudRate = 9600;
    SHORT status = 7;
    return object->Synchronize(&port, &baudRate, &node, &status) == S_OK ? status : SHORT{-1};
}

/// The module has 100 ms to answer, which a busy machine may take for itself: a host tries again.
bool isSynchronized(_clsOPaneCommDLL* object) {
    for (int tries = 1; tries <= 5; ++tries) {
        if (synchronize(object, 3) == 0)
            return true;
    }
    return false;
}

void checkDisplay(_clsOPaneCommDLL* object, const wchar_t* generator, const wchar_t* bitmap) {
    BSTR version = nullptr;
    check(object->Version(&version) == S_OK && taken(version) == L"OpaneCommDLL V1.0.0", "Version");
    check(isSynchronized(object), "Synchronize");

    SHORT status = 7;
    check(object->DisplayBMP(Text(bitmap), &status) == S_OK && status == 0, "DisplayBMP");
    SHORT line = 4, column = 1, gap = 3, inverted = 0;
    check(
        object->DisplayString(Text(L"Late bound"), &line, &column, &gap, &inverted, Text(generator), &status) == S_OK &&
            status == 0,
        "DisplayString");
    line = 6, column = 2, gap = 1, inverted = 1;
    check(object->DisplayString(Text(L"from a script"), &line, &column, &gap, &inverted, Text(generator), &status) ==
                  S_OK &&
              status == 0,
          "DisplayString, inverted");

    SHORT key = 0, toggle = 7;
    check(object->ReadIRLastKey(&key, &toggle, &status) == S_OK && key == 5 && toggle == 0, "ReadIRLastKey");
}

void checkErrors(_clsOPaneCommDLL* object) {
    SHORT status = 7;
    check(object->DisplayBMP(Text(L"no such file.bmp"), &status) == kFileNotFound && status == 7,
          "a missing file is error 53");
    IErrorInfo* error = nullptr;
    if (GetErrorInfo(0, &error) == S_OK) {
        BSTR source = nullptr;
        BSTR description = nullptr;
        error->GetSource(&source);
        error->GetDescription(&description);
        check(taken(source) == L"OPaneCommDLL" && taken(description).find(L"no such file.bmp") != std::wstring::npos,
              "its text names the file");
        error->Release();
    } else {
        check(false, "it leaves error information");
    }
    check(object->DisplayBMP(nullptr, nullptr) == E_POINTER, "a null pointer is refused");
}

void checkThreads(_clsOPaneCommDLL* object) {
    HRESULT elsewhere = S_OK;
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        BSTR version = nullptr;
        elsewhere = object->Version(&version);
        CoUninitialize();
    }).join();
    check(elsewhere == RPC_E_WRONG_THREAD, "another thread is refused");
}

LRESULT CALLBACK countTimer(HWND window, UINT message, WPARAM wide, LPARAM narrow) {
    if (message == WM_TIMER)
        SetWindowLongPtrW(window, GWLP_USERDATA, GetWindowLongPtrW(window, GWLP_USERDATA) + 1);
    return DefWindowProcW(window, message, wide, narrow);
}

/// While a call waits for a module that does not answer, the messages of this thread are served.
void checkMessages(_clsOPaneCommDLL* object) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = countTimer;
    windowClass.lpszClassName = L"OPaneTest";
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
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

/// One link per thread: the second object takes it over, and its end leaves the first one without.
void checkTwoObjects(_clsOPaneCommDLL* first) {
    _clsOPaneCommDLL* const second = create();
    if (second == nullptr)
        return;
    check(isSynchronized(second), "a second object works");
    second->Release();
    SHORT key = 0, toggle = 0, status = 7;
    check(first->ReadIRLastKey(&key, &toggle, &status) == kObjectNotSet && status == 7,
          "the first one is without its link then");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: early_bound_client GENERATOR BITMAP\n");
        return 2;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    checkTypeLibrary();
    if (_clsOPaneCommDLL* const object = create(); object != nullptr) {
        checkDisplay(object, arguments[1], arguments[2]);
        checkErrors(object);
        checkThreads(object);
        checkMessages(object);
        checkTwoObjects(object);
        check(GetModuleHandleW(kLibraryFile) != nullptr, "the library is loaded while an object lives");
        object->Release();
        CoFreeUnusedLibrariesEx(0, 0);
        check(GetModuleHandleW(kLibraryFile) == nullptr, "it is unloaded after that");
    }
    CoUninitialize();
    return check.failures();
}
