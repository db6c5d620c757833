// A host that knows only the component's name: creates it, shows a text on the module at COM 1 and reads its status.
// usage: component_host TEXT GENERATOR, both in UTF-8

#include <opane/OPaneCommDLL.h>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <cuchar>
#include <string>

namespace {

/// A new automation string of a text in UTF-8; null when it is not.
BSTR automationString(const char* text) {
    std::u16string units;
    std::mbstate_t state{};
    const char* const end = text + std::strlen(text);
    while (text < end || std::mbsinit(&state) == 0) {  // the second unit of a character takes no bytes
        char16_t unit = 0;
        const std::size_t bytes = std::mbrtoc16(&unit, text, static_cast<std::size_t>(end - text), &state);
        if (bytes == static_cast<std::size_t>(-1) || bytes == static_cast<std::size_t>(-2))
            return nullptr;  // no character, or half of one
        units += unit;
        if (bytes != static_cast<std::size_t>(-3))
            text += bytes;
    }
    return SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
}

/// Prints an automation string in UTF-8.
void print(BSTR text) {
    std::mbstate_t state{};
    for (UINT i = 0; i < SysStringLen(text); ++i) {
        char bytes[MB_LEN_MAX];
        const std::size_t count = std::c16rtomb(bytes, text[i], &state);
        if (count != static_cast<std::size_t>(-1))
            std::fwrite(bytes, 1, count, stdout);
    }
}

/// Prints what a failed call explains. @return the exit status
int explain(const char* call, HRESULT result) {
    std::printf("%s: result %08x", call, static_cast<unsigned>(result));
    IErrorInfo* info = nullptr;
    BSTR description = nullptr;
    if (GetErrorInfo(0, &info) == S_OK) {
        info->GetDescription(&description);
        info->Release();
    }
    if (description != nullptr) {
        std::printf(", ");
        print(description);
    }
    std::putchar('\n');
    SysFreeString(description);
    return 3;
}

int drive(_clsOPaneCommDLL& module, BSTR text, BSTR generator) {
    SHORT status = 1;
    SHORT port = 1;
    SHORT node = 3;
    LONG baudRate = 9600;
    HRESULT result = module.Synchronize(&port, &baudRate, &node, &status);
    if (FAILED(result))
        return explain("Synchronize", result);
    if (status != 0) {
        std::puts("the module did not answer");
        return 1;
    }
    SHORT line = 2;
    SHORT column = 3;
    SHORT gap = 0;
    SHORT inverted = 0;
    result = module.DisplayString(text, &line, &column, &gap, &inverted, generator, &status);
    if (FAILED(result))
        return explain("DisplayString", result);
    if (status != 0) {
        std::puts(
            "not shown: the text does not fit, a character is not in the generator, or the module refused or fell "
            "silent");
        return 1;
    }
    SHORT flags[5] = {};
    SHORT read = 1;
    result = module.ReadStatus(&flags[0], &flags[1], &flags[2], &flags[3], &flags[4], &read);
    if (FAILED(result))
        return explain("ReadStatus", result);
    std::printf("shown, LCD %s\n", read != 0 ? "unknown" : flags[3] == 1 ? "on" : "off");
    return read;
}

int createAndDrive(BSTR text, BSTR generator) {
    CLSID identifier;
    HRESULT result = CLSIDFromProgID(OLESTR("OPaneCommDLL.clsOPaneCommDLL"), &identifier);
    void* object = nullptr;
    if (SUCCEEDED(result))
        result = CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID__clsOPaneCommDLL, &object);
    if (FAILED(result))
        return explain("creating the component", result);
    _clsOPaneCommDLL* const module = static_cast<_clsOPaneCommDLL*>(object);
    const int status = drive(*module, text, generator);
    module->Release();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: component_host TEXT GENERATOR\n", stderr);
        return 2;
    }
    std::setlocale(LC_CTYPE, "C.UTF-8");  // for the conversions of text
    const BSTR text = automationString(argv[1]);
    const BSTR generator = automationString(argv[2]);
    int status = 2;
    if (text != nullptr && generator != nullptr) {
        CoInitialize(nullptr);
        status = createAndDrive(text, generator);
        CoFreeUnusedLibraries();
        CoUninitialize();
    } else {
        std::fputs("component_host: TEXT and GENERATOR have to be UTF-8\n", stderr);
    }
    SysFreeString(generator);
    SysFreeString(text);
    return status;
}
