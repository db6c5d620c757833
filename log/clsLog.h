#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

#include "log/log_line.h"

namespace opane {

/// The daily event log of the library's traffic with the module (docs/log.md).
/// A new log takes its level, tester name and folder from the environment variables OPANE_LOG_LEVEL (0 to 3),
/// OPANE_LOG_TESTER and OPANE_LOG_FOLDER. Unset, or with a level that is no such number, nothing is ever written; a
/// tester name that would lead out of the folder is not taken.
class clsLog {
public:
    clsLog();

    /// Writes one line when intLogLevelOfData is at most LogLevel, and does nothing else otherwise but bring
    /// LogFileName up to date.
    /// @param strProcName  the procedure's name; padded to 20 characters when the line is written, and stays so
    /// @param strdata      the message; padded to 70 characters when the line is written, and stays so
    /// @param intLogLevelOfData  2 for commands, 3 for frames
    /// @throws RuntimeError 76 (the folder is missing; it is never created), 70, 75, 57 as appendToFile
    void LogEvent(std::string& strProcName, std::string& strdata, std::int16_t intLogLevelOfData);

    /// The highest level that is written; 0 writes nothing of the library's own lines, which are 2 and 3.
    std::int16_t LogLevel() const { return logLevel_; }
    void LogLevel(std::int16_t intNewLogLevel) { logLevel_ = intNewLogLevel; }

    /// Name of the tester or test station: the first part of the file's name, as it is given.
    const std::string& TesteurName() const { return testeurName_; }
    void TesteurName(const std::string& strNewTesteurName) { testeurName_ = strNewTesteurName; }

    /// Folder of the files with a separator at its end; "log" under the library's folder on a new log.
    const std::string& LogFolder() const { return logFolder_; }
    /// @param folder  with or without a separator at its end; empty for the current folder
    void LogFolder(const std::string& folder);

    /// Full path of the file of the day, as of the last LogEvent; empty before the first.
    const std::string& LogFileName() const { return logFileName_; }

    /// Sends the lines elsewhere, as a tool's live trace does. Not null.
    void writer(std::unique_ptr<LineWriter> newWriter) { writer_ = std::move(newWriter); }

private:
    std::string logFileName_;
    std::string logFolder_;
    std::string testeurName_;
    std::int16_t logLevel_ = 0;
    std::tm stampMoment_{};  // of stamp_: the locale is read from its files, which costs more than a line
    std::string stamp_;
    std::unique_ptr<LineWriter> writer_;
};

}  // namespace opane
