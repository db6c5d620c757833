#include "platform/console.h"

#include "platform/windows/system_text.h"
// After windows.h, which it needs.
#include <shellapi.h>

namespace opane {

std::vector<std::string> programArguments(int /*argc*/, char** /*argv*/) {
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(utf8Text(wide[i]));
    LocalFree(wide);
    return arguments;
}

bool standardErrorIsTerminal() {
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(error, &mode) != 0 && SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool isBrokenPipe(StandardStream stream) {
    const HANDLE end = GetStdHandle(stream == StandardStream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD put = 0;
    return GetFileType(end) == FILE_TYPE_PIPE && WriteFile(end, "", 0, &put, nullptr) == 0;
}

Utf8Console::Utf8Console() : earlierCodePage_(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Console::~Utf8Console() {
    SetConsoleOutputCP(earlierCodePage_);
}

}  // namespace opane
