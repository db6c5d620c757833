#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace opane {

// The layout of lines and names is described in docs/log.md.

/// Whether a name that comes from outside, from the environment or a command line, can be taken as the tester's: it
/// holds no separator of paths (/ or \, whatever the system), which would lead out of the log's folder, and no control
/// character.
bool isTesterName(std::string_view name);

/// The name of the file of a day: folder, tester name, "_", the date as mm-dd-yy, ".LOG".
std::string logFileName(const std::string& folder, const std::string& testeurName, const std::tm& moment);

/// The date and the time that a line begins with, as the user's locale has them.
std::string logStamp(const std::tm& moment);

/// One line with its line end. The message and the procedure name come padded.
std::string logLine(const std::string& stamp, std::int16_t level, const std::string& message,
                    const std::string& procedureName);

/// Whether a text from outside is a level: 0 to 3, as wholeNumber reads it.
bool isLogLevel(std::string_view text);

/// Where the lines of a log go.
class LineWriter {
public:
    LineWriter() = default;
    virtual ~LineWriter() = default;
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// @param fileName  the file of the day, full path
    /// @param line      a whole line with its line end
    virtual void write(const std::string& fileName, const std::string& line, std::int16_t level) = 0;
};

/// Opens the file, appends the line and closes it: the file can be read or moved while the library runs.
/// Errors are those of appendToFile; their texts say that it is the log.
class FileLineWriter final : public LineWriter {
public:
    void write(const std::string& fileName, const std::string& line, std::int16_t level) override;
};

}  // namespace opane
