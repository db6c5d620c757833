#pragma once

#include <cstdint>
#include <string>

namespace opane {

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
