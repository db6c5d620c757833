#include "arguments.h"

#include <CLI/CLI.hpp>
#include <cctype>
#include <charconv>
#include <set>

namespace opane::tool {

void addCommonOptions(CLI::App& app, Arguments& arguments) {
    const std::set<std::int32_t> rates{1200, 2400, 4800, 9600, 19200, 38400, 57600};
    constexpr auto kConnection = "Connection";
    app.add_option("--port", arguments.port, "COM port number; its device is $OPANE_COM<N>, else /dev/ttyS<N-1>")
        ->check(CLI::Range(1, 256))
        ->capture_default_str()
        ->group(kConnection);
    app.add_option("--device", arguments.device, "device of the port, such as /dev/ttyUSB0")->group(kConnection);
    app.add_option("--baud", arguments.baudRate, "baud rate")
        ->check(CLI::IsMember(rates))
        ->capture_default_str()
        ->group(kConnection);
    app.add_option("--node", arguments.node, "node number of the module")
        ->check(CLI::Range(0, 3))
        ->capture_default_str()
        ->group(kConnection);
    app.add_option("--bus", arguments.bus, "bus type")
        ->check(CLI::IsMember({"RS232", "RS485"}))
        ->capture_default_str()
        ->group(kConnection);

    constexpr auto kReport = "Log and output";
    app.add_option("--log-level", arguments.logLevel, "2 logs commands, 3 frames too")
        ->check(CLI::Range(0, 3))
        ->capture_default_str()
        ->group(kReport);
    app.add_option("--log-folder", arguments.logFolder, "folder of the log files")
        ->check(CLI::ExistingDirectory)
        ->group(kReport);
    app.add_option("--tester", arguments.tester, "tester's name, the first part of the log file's name")
        ->check([](const std::string& name) {
            return name.find('/') == std::string::npos ? std::string() : "\"" + name + "\" holds a /";
        })
        ->group(kReport);
    app.add_flag("--trace", arguments.trace, "show the log's lines on standard error as they come")->group(kReport);
    app.add_flag("--json", arguments.json, "print one JSON object instead of text")->group(kReport);
    app.add_option("--repeat", arguments.repeat, "run the command that many times on one link")
        ->check(CLI::Range(1, 1'000'000'000))
        ->capture_default_str()
        ->group(kReport);
}

std::uint8_t parseByte(const std::string& text, const std::string& name) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (hexadecimal ? 2 : 0);
    const char* const end = text.data() + text.size();
    int value = -1;
    const auto [rest, error] = std::from_chars(begin, end, value, hexadecimal ? 16 : 10);
    if (error != std::errc{} || rest != end || value < 0 || value > 255)
        throw InputError(name + " is \"" + text + "\"; expected a byte: 0 to 255, or 0x00 to 0xFF");
    return static_cast<std::uint8_t>(value);
}

ByteArray parseRowBytes(const std::string& text, std::size_t count) {
    std::string digits;
    for (const char character : text) {
        if (character == ' ')
            continue;
        if (std::isxdigit(static_cast<unsigned char>(character)) == 0)
            throw InputError("the row bytes hold \"" + std::string(1, character) + "\"; expected hexadecimal digits");
        digits += character;
    }
    if (digits.empty() || digits.size() % 2 != 0)
        throw InputError("the row bytes have " + std::to_string(digits.size()) +
                         " hexadecimal digits; expected two for each byte");
    ByteArray bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        bytes.push_back(byte);
    }
    if (bytes.size() == 1)
        bytes.assign(count, bytes.front());
    if (bytes.size() != count)
        throw InputError(std::to_string(bytes.size()) + " row bytes are given; expected " + std::to_string(count) +
                         ", or one that is repeated");
    return bytes;
}

}  // namespace opane::tool
