// The services of platform/ on Windows, where the component and opane alone do not show them: refusals of files and of
// the serial control, code page, regional texts. With a serial device behind COM1.
// usage: platform_checks FOLDER    an empty folder that may be written

#include <windows.h>

#include <functional>

#include "checks.h"
#include "platform/code_page.h"
#include "platform/console.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "platform/regional_text.h"
#include "platform/services.h"
#include "platform/utf8_path.h"
#include "platform/whole_file.h"
#include "tests/support/raised_number.h"

namespace {

using namespace opane;

Checks check;

struct Refusal {
    const char* what;
    int number;
    std::function<void()> operation;
};

void checkRefusals(std::initializer_list<Refusal> rows) {
    for (const Refusal& row : rows) {
        const int raised = test::raisedNumber(row.operation);
        check(raised == row.number,
              row.what + (" is error " + std::to_string(row.number)) + ": " + std::to_string(raised));
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
    check(libraryFolder() + "\\platform_checks.exe" == libraryFile(), "the program's own file and folder");
}

void checkCodePage() {
    bool everyCode = true;
    for (int code = 0; code < 256; ++code)
        everyCode = everyCode && codePageByte(codePageCharacter(static_cast<std::uint8_t>(code))) == code;
    check(everyCode, "every code of the code page leads to its character and back");
    check(codePageByte(U'é') == 0xE9, "the code of a character");
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

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = opane::programArguments(argc, argv);
    if (arguments.size() != 1)
        return 2;
    const std::string file = arguments[0] + "\\größe €.txt";
    checkFiles(arguments[0], file);
    checkCodePage();
    checkRegionalTexts();
    checkSerialControl(file);
    return check.failures();
}
