#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "shared/frame_byte.h"

namespace opane::tool {

/// What the program ends with.
enum ExitStatus : int {
    kSuccess = 0,
    kModuleFailed = 1,  ///< the module refused or did not answer, or the command was interrupted
    kWrongInput = 2,    ///< wrong usage, or an input that was refused before anything was sent
    kErrorRaised = 3,   ///< an error with a number
};

/// An input that the program refuses before it sends anything. what() names it and what was expected.
class InputError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The options of every command.
struct Arguments {
    std::int16_t port = 1;
    std::string device;  ///< empty: the system's device of the port
    std::int32_t baudRate = 9600;
    std::int16_t node = 3;
    std::string bus = "RS232";
    std::optional<std::int16_t> logLevel;  ///< nothing: what the environment says
    std::string logFolder;                 ///< empty: the library's own
    std::string tester;
    bool trace = false;
    bool json = false;
    int repeat = 1;
    int connectRetries = 2;
    double waitSeconds = 0;                ///< for a module or a port
    std::optional<double> timeoutSeconds;  ///< of the whole run; nothing: none
};

/// Refuses what is none of the modules' baud rates. For CLI::Option::check.
std::string isBaudRate(const std::string& value);

/// Lets the numbers among the options be hexadecimal, after 0x, and a leading zero mean nothing; flags take no value.
void takeNumbers(CLI::App& app);

/// Has the options and words that the program or a command takes refuse an empty value, such as an unset variable of a
/// script gives: it would be taken for 0 or for the default.
void refuseEmptyValues(CLI::App& app);

/// Adds those options to the program.
void addCommonOptions(CLI::App& app, Arguments& arguments);

/// The baud rates of the modules.
inline const std::set<std::int32_t> kBaudRates{1200, 2400, 4800, 9600, 19200, 38400, 57600};

/// A number in decimal or, with 0x, in hexadecimal.
/// @param name      of the input, for the message
/// @param expected  what is allowed from first to last, for the message
int parseNumber(const std::string& text, const std::string& name, int first, int last, const std::string& expected);

/// The same for a byte.
std::uint8_t parseByte(const std::string& text, const std::string& name);

/// Bytes in hexadecimal, two digits each, with blanks between them as one likes; at least one.
/// @param name  of the input, for the message; a plural
ByteArray parseHexBytes(const std::string& text, const std::string& name);

/// Row bytes in hexadecimal. A single one is repeated.
/// @param count  how many are needed
ByteArray parseRowBytes(const std::string& text, std::size_t count);

}  // namespace opane::tool
