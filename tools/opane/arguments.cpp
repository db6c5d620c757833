#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <system_error>

#include "log/log_line.h"
#include "platform/serial_device.h"
#include "platform/services.h"
#include "shared/whole_number.h"

namespace opane::tool {
namespace {

constexpr double kLongestSeconds = 1'000'000;

std::string isSeconds(const std::string& text) {
    double seconds = -1;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    const bool isNumber =
        error == std::errc{} && rest == end && !text.starts_with('-') && seconds >= 0 && seconds <= kLongestSeconds;
    return isNumber ? "" : "\"" + text + "\" is no number of seconds from 0 to 1000000";
}

/// As the parser reads it without mistaking a leading zero.
std::string toDecimal(std::string& text) {
    const auto value = wholeNumber(text);
    if (!value)
        return text.empty() ? "is empty" : "\"" + text + "\" is no whole number";
    text = std::to_string(*value);
    return {};
}

}  // namespace

std::string isBaudRate(const std::string& value) {
    std::string all;
    for (const std::int32_t rate : kBaudRates) {
        if (value == std::to_string(rate))
            return "";
        all += (all.empty() ? "" : ",") + std::to_string(rate);
    }
    return value + " not in {" + all + "}";
}

void takeNumbers(CLI::App& app) {
    for (CLI::Option* const option : app.get_options()) {
        if (option->get_type_name().starts_with("INT"))
            option->transform(CLI::Validator(toDecimal, ""));
        if (option->get_items_expected_max() == 0)
            option->disable_flag_override();  // --json=0 would say the opposite of what it seems to
    }
}

void refuseEmptyValues(CLI::App& app) {
    for (CLI::Option* const option : app.get_options()) {
        const bool takesValue = option->get_items_expected_max() > 0;
        if (!takesValue || option->get_name() == "TEXT")  // its command says what a text needs
            continue;
        const std::string refusal = option->get_required() ? "is empty" : "is empty; leave it out for the default";
        option->check([refusal](const std::string& value) { return value.empty() ? refusal : std::string(); });
    }
}

void addCommonOptions(CLI::App& app, Arguments& arguments) {
    constexpr auto kConnection = "Connection";
    app.add_option(
           "--port", arguments.port,
           "COM port number; its device is $OPANE_COM<N>, else the system's own: " + portDevicePath(1) + " for 1")
        ->check(CLI::Range(1, 256))
        ->capture_default_str()
        ->group(kConnection);
    app.add_option("--device", arguments.device, "device of the port, such as /dev/ttyUSB0 or COM3")
        ->group(kConnection);
    app.add_option("--baud", arguments.baudRate, "baud rate")
        ->check(isBaudRate)
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
    app.add_option("--log-level", arguments.logLevel,
                   "2 logs commands, 3 frames too; $OPANE_LOG_LEVEL, else 0, without it")
        ->check(CLI::Range(0, 3))
        ->group(kReport);
    app.add_option("--log-folder", arguments.logFolder, "folder of the log files; made when it is missing")
        ->group(kReport);
    app.add_option("--tester", arguments.tester, "tester's name, the first part of the log file's name")
        ->check([](const std::string& name) {
            return isTesterName(name) ? std::string() : "holds a path separator or a control character";
        })
        ->group(kReport);
    app.add_flag("--trace", arguments.trace, "show what is sent and received, and every step, on standard error")
        ->group(kReport);
    app.add_flag("--json", arguments.json, "print one JSON object instead of text")->group(kReport);
    app.add_option("--repeat", arguments.repeat, "run the command that many times on one link")
        ->check(CLI::Range(1, 1'000'000'000))
        ->capture_default_str()
        ->group(kReport);
    app.add_option("--connect-retries", arguments.connectRetries,
                   "further handshakes when the first one is not answered")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str()
        ->group(kConnection);
    app.add_option("--wait", arguments.waitSeconds,
                   "seconds to wait for a module that does not answer or a port in use")
        ->check(isSeconds)
        ->group(kConnection);
    app.add_option("--timeout", arguments.timeoutSeconds, "seconds after which the whole run is interrupted")
        ->check(isSeconds)
        ->group(kConnection);
    app.set_version_flag("--version", "1")->description("print the version of this program");
    takeNumbers(app);
    refuseEmptyValues(app);
}

int parseNumber(const std::string& text, const std::string& name, int first, int last, const std::string& expected) {
    const auto value = wholeNumber(text);
    if (!value || *value < first || *value > last)
        throw InputError(name + " is \"" + text + "\"; expected " + expected);
    return static_cast<int>(*value);
}

std::uint8_t parseByte(const std::string& text, const std::string& name) {
    return static_cast<std::uint8_t>(parseNumber(text, name, 0, 255, "a byte: 0 to 255, or 0x00 to 0xFF"));
}

ByteArray parseHexBytes(const std::string& text, const std::string& name) {
    std::string digits;
    for (const char character : text) {
        if (character == ' ')
            continue;
        if (std::isxdigit(static_cast<unsigned char>(character)) == 0)
            throw InputError(name + " hold \"" + std::string(1, character) + "\"; expected hexadecimal digits");
        digits += character;
    }
    if (digits.empty() || digits.size() % 2 != 0)
        throw InputError(name + " have " + std::to_string(digits.size()) +
                         " hexadecimal digits; expected two for each byte");
    ByteArray bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        bytes.push_back(byte);
    }
    return bytes;
}

ByteArray parseRowBytes(const std::string& text, std::size_t count) {
    ByteArray bytes = parseHexBytes(text, "the row bytes");
    if (bytes.size() == 1)
        bytes.assign(count, bytes.front());
    if (bytes.size() != count)
        throw InputError(std::to_string(bytes.size()) + " row bytes are given; expected " + std::to_string(count) +
                         ", or one that is repeated");
    return bytes;
}

}  // namespace opane::tool
