#include "log/clsLog.h"

#include <array>
#include <cstddef>
#include <utility>

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "platform/services.h"
#include "shared/utf8.h"
#include "shared/whole_number.h"

namespace opane {
namespace {

constexpr std::size_t kProcedureWidth = 20;  // characters
constexpr std::size_t kMessageWidth = 70;    // characters

bool isSameSecond(const std::tm& one, const std::tm& other) {
    const auto fields = [](const std::tm& moment) {
        return std::array{moment.tm_sec,  moment.tm_min,  moment.tm_hour, moment.tm_mday, moment.tm_mon,
                          moment.tm_year, moment.tm_wday, moment.tm_yday, moment.tm_isdst};
    };
    return fields(one) == fields(other);
}

}  // namespace

clsLog::clsLog() : writer_(std::make_unique<FileLineWriter>()) {
    if (std::string tester = environmentText("OPANE_LOG_TESTER"); isTesterName(tester))
        testeurName_ = std::move(tester);
    const std::string folder = environmentText("OPANE_LOG_FOLDER");
    LogFolder(folder.empty() ? libraryFolder() + kPathSeparator + "log" : folder);
    if (const std::string level = environmentText("OPANE_LOG_LEVEL"); isLogLevel(level))
        logLevel_ = static_cast<std::int16_t>(*wholeNumber(level));
}

void clsLog::LogEvent(std::string& strProcName, std::string& strdata, std::int16_t intLogLevelOfData) {
    const std::tm moment = services().calendar();
    logFileName_ = logFileName(logFolder_, testeurName_, moment);
    if (intLogLevelOfData > logLevel_)
        return;
    if (stamp_.empty() || !isSameSecond(moment, stampMoment_)) {
        stamp_ = logStamp(moment);
        stampMoment_ = moment;
    }
    padRight(strProcName, kProcedureWidth);
    padRight(strdata, kMessageWidth);
    writer_->write(logFileName_, logLine(stamp_, intLogLevelOfData, strdata, strProcName), intLogLevelOfData);
}

void clsLog::LogFolder(const std::string& folder) {
    logFolder_ = folder;
    if (!logFolder_.empty() && logFolder_.back() != kPathSeparator)
        logFolder_ += kPathSeparator;
}

}  // namespace opane
