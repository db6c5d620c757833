// What only Windows shows, with a module behind COM1: a host that binds early to the registered component, and the
// services of platform/. Prints every check; exits with the number of those that failed.
// usage: windows_checks GENERATOR BITMAP FOLDER    an empty folder that may be written

#include <windows.h>

#include <cstdio>
#include <functional>
#include <string>

#include "opane/OPaneCommDLL.h"
#include "platform/code_page.h"
#include "platform/console.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "platform/regional_text.h"
#include "platform/serial_control.h"
#include "platform/services.h"
#include "platform/utf8_path.h"
#include "platform/whole_file.h"
#include "tests/support/raised_number.h"

namespace opane {
namespace {

int failures = 0;

/// Printed as it is made: nothing is lost when a check ends the program.
void check(bool holds, const std::string& what) {
    std::printf("%s: %s\n", holds ? "ok" : "FAILED", what.c_str());
    std::fflush(stdout);
    failures += holds ? 0 : 1;
}

// What calls take or give is left to the end of the process.
BSTR fileName(const std::string& path) {
    return SysAllocString(utf8Path(path).c_str());
}

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
    }
}

/// The status, or -1 when the call failed.
SHORT synchronize(_clsOPaneCommDLL* object, SHORT node) {
    SHORT port = 1, status = 7;
    LONG baudRate = 9600;
    return object->Synchronize(&port, &baudRate, &node, &status) == S_OK ? status : SHORT{-1};
}

void checkDisplay(_clsOPaneCommDLL* object, const std::string& generator, const std::string& bitmap) {
    // The module has 100 ms to answer, which a busy machine may take for itself: a host tries again.
    int tries = 1;
    while (tries <= 5 && synchronize(object, 3) != 0)
        ++tries;
    check(tries <= 5, "Synchronize");
    SHORT status = 7;
    check(object->DisplayBMP(fileName(bitmap), &status) == S_OK && status == 0, "DisplayBMP");
    struct {
        const wchar_t* text;
        SHORT line, column, gap, inverted;
    } rows[]{{L"Late bound", 4, 1, 3, 0}, {L"from a script", 6, 2, 1, 1}};
    for (auto& row : rows) {
        const HRESULT result = object->DisplayString(SysAllocString(row.text), &row.line, &row.column, &row.gap,
                                                     &row.inverted, fileName(generator), &status);
        check(result == S_OK && status == 0, "DisplayString");
    }
}

int ticks = 0;
void CALLBACK countTick(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*now*/) {
    ++ticks;
}

/// While a call waits for a module that does not answer, the messages of this thread are served.
void checkMessages(_clsOPaneCommDLL* object) {
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, countTick);
    check(synchronize(object, 1) == 1, "a module that there is not gives the status 1");
    check(ticks > 0, "a timer ran while the call waited");
    KillTimer(nullptr, timer);

    PostQuitMessage(3);
    synchronize(object, 1);
    MSG message{};
    check(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0 && message.message == WM_QUIT && message.wParam == 3,
          "the request to quit is left to the host");
}

void checkComponent(const std::string& generator, const std::string& bitmap) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    checkTypeLibrary();
    void* made = nullptr;
    CoCreateInstance(CLSID_clsOPaneCommDLL, nullptr, CLSCTX_INPROC_SERVER, IID__clsOPaneCommDLL, &made);
    check(made != nullptr, "an object is made");
    if (auto* const object = static_cast<_clsOPaneCommDLL*>(made); object != nullptr) {
        checkDisplay(object, generator, bitmap);
        checkMessages(object);
        const auto isLoaded = [] { return GetModuleHandleW(L"OPaneCommDLL.dll") != nullptr; };
        check(isLoaded(), "the library is loaded while an object lives");
        object->Release();
        CoFreeUnusedLibrariesEx(0, 0);
        check(!isLoaded(), "it is unloaded after that");
    }
    CoUninitialize();
}

struct Refusal {
    const char* what;
    int number;
    std::function<void()> operation;
};

void checkRefusals(std::initializer_list<Refusal> rows) {
    for (const Refusal& row : rows) {
        const int raised = test::raisedNumber(row.operation);
        check(raised == row.number, row.what + (": error " + std::to_string(raised)));
    }
}

/// @param file  one of that folder, which is made
void checkFiles(const std::string& folder, const std::string& file) {
    const auto contentOf = [](const std::string& path) {
        const ByteArray bytes = readFile(path, 1000);
        return std::string(bytes.begin(), bytes.end());
    };
    appendToFile(file, "one\r\n");
    appendToFile(file, "été\r\n");
    check(contentOf(file) == "one\r\n\xE9t\xE9\r\n", "lines are appended in the code page");
    appendToFile(file + ".0123456789abcdef.part", "half");
    writeWholeFile(file, {'n', 'e', 'w', '\n'});
    check(contentOf(file) == "new\n", "a whole file replaces what was there");
    check(GetFileAttributesW(utf8Path(file + ".0123456789abcdef.part").c_str()) == INVALID_FILE_ATTRIBUTES,
          "what a killed writer left goes");
    check(readFile(file, 2).size() == 2, "no more is read than asked for");

    const HANDLE held = CreateFileW(utf8Path(file).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    checkRefusals({
        {"a missing file", 53, [&] { readFile(folder + "\\missing", 1); }},
        {"a file without a name", 53, [] { readFile("", 1); }},
        {"a missing folder", 76, [&] { readFile(folder + "\\missing\\file", 1); }},
        {"a missing folder to append in", 76, [&] { appendToFile(folder + "/no/file", "x"); }},
        {"a whole file in a missing folder", 76, [&] { writeWholeFile(folder + "\\no\\f", {}); }},
        {"a folder in place of a file", 75, [&] { readFile(folder, 1); }},
        {"a device in place of a file", 75, [] { readFile("NUL", 1); }},
        {"a zero in a name", 75, [] { readFile(std::string("a\0b", 3), 1); }},
        {"a file that another program keeps for itself", 70, [&] { appendToFile(file, "x"); }},
        {"such a file to replace", 70, [&] { writeWholeFile(file, {}); }},
    });
    CloseHandle(held);
    check(contentOf(file) == "new\n", "a refused write leaves the file alone");
    check(libraryFolder() + "\\windows_checks.exe" == libraryFile(), "the program's own file and folder");
}

void checkCodePage() {
    int code = 0;
    while (code < 256 && codePageByte(codePageCharacter(static_cast<std::uint8_t>(code))) == code)
        ++code;
    check(code == 256, "every code of the code page leads to its character and back");
    for (const char32_t character : {U'\u0100', U'\u2215', U'\uFF21', U'\U0001F600', char32_t{0xFFFFFFFF}})
        check(!codePageByte(character), "no likeness stands for character " + std::to_string(character));
}

void checkRegionalTexts() {
    std::tm moment{};
    moment.tm_year = 101, moment.tm_mon = 2, moment.tm_mday = 22;
    moment.tm_hour = 14, moment.tm_min = 5, moment.tm_sec = 9;
    check(shortDateText(moment) == "3/22/2001", "a short date");
    check(timeText(moment) == "2:05:09 PM", "a time");
    check(decimalSeparator() == ".", "the decimal separator");
}

/// @param file  an ordinary one
void checkSerialControl(const std::string& file) {
    const auto control = makeSystemSerialControl();
    control->Settings("9600,N,8,1");
    const auto onDevice = [&](const std::string& device) {
        ServicesScope scope;
        scope->portMap = [&](std::int16_t) { return device; };
        control->PortOpen(true);
    };
    checkRefusals({
        {"a rate of 0", 380, [&] { control->Settings("0,N,8,1"); }},
        {"a rate that is no standard one", 380, [&] { control->Settings("12345,N,8,1"); }},
        {"even parity", 380, [&] { control->Settings("9600,E,8,1"); }},
        {"a read while the port is closed", 8018, [&] { control->Input(); }},
        {"a port that there is not", 8002, [&] { control->CommPort(9), control->PortOpen(true); }},
        {"port 0", 8002, [&] { control->CommPort(0), control->PortOpen(true); }},
        {"a device that is no port", 8002, [&] { control->CommPort(1), onDevice("NUL"); }},
        {"a file that is no port", 8002, [&] { onDevice(file); }},
        {"the number of an open port", 8000, [&] { control->PortOpen(true), control->CommPort(2); }},
        {"opening it again", 8005, [&] { control->PortOpen(true); }},
    });
    control->Settings("19200,N,8,1");
    check(control->PortOpen() && control->Settings() == "19200,N,8,1", "an open port takes another rate");
    control->PortOpen(false);
    onDevice("COM1");
    check(control->PortOpen(), "a port is found by its short name");
    const DWORD start = GetTickCount();
    check(!control->WaitForInput(50) && GetTickCount() - start >= 30, "a wait for a silent device lasts its time");
    check(control->Input().empty(), "nothing came");
}

}  // namespace
}  // namespace opane

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = opane::programArguments(argc, argv);
    if (arguments.size() != 3)
        return 2;
    opane::checkComponent(arguments[0], arguments[1]);
    const std::string file = arguments[2] + "\\größe €.txt";
    opane::checkFiles(arguments[2], file);
    opane::checkCodePage();
    opane::checkRegionalTexts();
    opane::checkSerialControl(file);
    return opane::failures;
}
