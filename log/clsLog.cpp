#include "log/clsLog.h"

#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "log/log_line.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "platform/services.h"
#include "shared/utf8.h"

namespace opane {
namespace {

constexpr std::size_t kProcedureWidth = 20;  // characters
constexpr std::size_t kMessageWidth = 70;    // characters

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : std::string_view();
}

}  // namespace

clsLog::clsLog() : testeurName_(environment("OPANE_LOG_TESTER")), writer_(std::make_unique<FileLineWriter>()) {
    const std::string_view folder = environment("OPANE_LOG_FOLDER");
    LogFolder(folder.empty() ? libraryFolder() + kPathSeparator + "log" : std::string(folder));
    const std::string_view level = environment("OPANE_LOG_LEVEL");
    if (level.size() == 1 && level.front() >= '0' && level.front() <= '3')
        logLevel_ = static_cast<std::int16_t>(level.front() - '0');
}

void clsLog::LogEvent(std::string& strProcName, std::string& strdata, std::int16_t intLogLevelOfData) {
    const std::tm moment = services().calendar();
    logFileName_ = logFileName(logFolder_, testeurName_, moment);
    if (intLogLevelOfData > logLevel_)
        return;
    padRight(strProcName, kProcedureWidth);
    padRight(strdata, kMessageWidth);
    writer_->write(logFileName_, logLine(moment, intLogLevelOfData, strdata, strProcName), intLogLevelOfData);
}

void clsLog::LogFolder(const std::string& folder) {
    logFolder_ = folder;
    if (!logFolder_.empty() && logFolder_.back() != kPathSeparator)
        logFolder_ += kPathSeparator;
}

}  // namespace opane
