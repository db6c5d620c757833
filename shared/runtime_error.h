#pragma once

#include <stdexcept>
#include <string>

namespace opane {

/// Numbers of the raised errors, as hosts of the automation component know them. At the component boundary number n
/// becomes the call result 0x800A0000 + n.
enum class ErrorNumber : int {
    invalidCall = 5,          ///< an argument that no other number fits
    overflow = 6,             ///< a value that does not fit a byte or a 16-bit number
    outOfMemory = 7,          ///< allocation failed
    subscript = 9,            ///< a position outside the screen, an array without its indices
    typeMismatch = 13,        ///< a glyph column that is no number
    fileNotFound = 53,        ///< a missing file
    deviceIo = 57,            ///< the port's device vanished or failed
    permissionDenied = 70,    ///< may not be opened
    pathFileAccess = 75,      ///< a directory, or otherwise unreadable
    pathNotFound = 76,        ///< a missing folder
    objectNotSet = 91,        ///< the thread has no link or no log
    invalidNull = 94,         ///< a glyph column that is null
    invalidFileFormat = 321,  ///< a generator file with an unknown tag
    invalidProperty = 380,    ///< settings or baud rate refused by the serial control
    portIsOpen = 8000,        ///< not allowed while the port is open
    invalidPort = 8002,       ///< no such port
    portAlreadyOpen = 8005,   ///< the port is open here or in use elsewhere
    portNotOpen = 8018,       ///< a read or a write while the port is closed
};

/// The one exception of the library, for what is not expected in normal use. Expected failures (silence, a refusal,
/// an array of the wrong size) are results and are never thrown.
/// what() names the input, its value and what was expected, in English and UTF-8.
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(ErrorNumber number, const std::string& text);

    ErrorNumber number() const noexcept { return number_; }

private:
    ErrorNumber number_;
};

}  // namespace opane
