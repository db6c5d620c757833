// A host that knows only the component's name: creates it, shows a text on the module at COM 1 and reads its status.
// usage: component_host TEXT GENERATOR

#include <opane/OPaneCommDLL.h>
#include <cstdio>
#include <string>

namespace {

BSTR automationString(const char* text) {
    const std::string plain = text;
    return SysAllocString(std::basic_string<OLECHAR>(plain.begin(), plain.end()).c_str());  // ASCII
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
        for (UINT i = 0; i < SysStringLen(description); ++i)
            std::putchar(description[i] < 0x80 ? static_cast<char>(description[i]) : '?');
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
        std::puts("no module answers");
        return 1;
    }
    SHORT line = 2;
    SHORT column = 3;
    SHORT gap = 0;
    SHORT inverted = 0;
    result = module.DisplayString(text, &line, &column, &gap, &inverted, generator, &status);
    if (FAILED(result))
        return explain("DisplayString", result);
    SHORT flags[5] = {};
    SHORT read = 1;
    result = module.ReadStatus(&flags[0], &flags[1], &flags[2], &flags[3], &flags[4], &read);
    if (FAILED(result))
        return explain("ReadStatus", result);
    std::printf("shown %d, LCD %s\n", status == 0, flags[3] == 1 ? "on" : "off");
    return status == 0 && read == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: component_host TEXT GENERATOR\n", stderr);
        return 2;
    }
    CoInitialize(nullptr);
    CLSID identifier;
    HRESULT result = CLSIDFromProgID(OLESTR("OPaneCommDLL.clsOPaneCommDLL"), &identifier);
    void* object = nullptr;
    if (SUCCEEDED(result))
        result = CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID__clsOPaneCommDLL, &object);
    if (FAILED(result))
        return explain("creating the component", result);
    _clsOPaneCommDLL* const module = static_cast<_clsOPaneCommDLL*>(object);
    const BSTR text = automationString(argv[1]);
    const BSTR generator = automationString(argv[2]);
    const int status = drive(*module, text, generator);
    SysFreeString(generator);
    SysFreeString(text);
    module->Release();
    CoFreeUnusedLibraries();
    CoUninitialize();
    return status;
}
