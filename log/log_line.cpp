#include "log/log_line.h"

#include <algorithm>
#include <cstdio>

#include "platform/file.h"
#include "platform/regional_text.h"
#include "shared/runtime_error.h"
#include "shared/whole_number.h"

namespace opane {

bool isTesterName(std::string_view name) {
    return std::none_of(name.begin(), name.end(), [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return character == '/' || character == '\\' || code < ' ' || code == 0x7F;
    });
}

std::string logFileName(const std::string& folder, const std::string& testeurName, const std::tm& moment) {
    char date[sizeof "_mm-dd-yy.LOG"];
    std::strftime(date, sizeof date, "_%m-%d-%y.LOG", &moment);
    return folder + testeurName + date;
}

std::string logStamp(const std::tm& moment) {
    return shortDateText(moment) + ' ' + timeText(moment);
}

std::string logLine(const std::string& stamp, std::int16_t level, const std::string& message,
                    const std::string& procedureName) {
    const char* const indentation = level == 2 ? "  " : level == 3 ? "    " : "";
    return stamp + " Level" + std::to_string(level) + ' ' + indentation + message + procedureName + "\r\n";
}

bool isLogLevel(std::string_view text) {
    const auto level = wholeNumber(text);
    return level && *level >= 0 && *level <= 3;
}

void FileLineWriter::write(const std::string& fileName, const std::string& line, std::int16_t /*level*/) {
    try {
        appendToFile(fileName, line);
    } catch (const RuntimeError& error) {
        throw RuntimeError(error.number(), "log " + std::string(error.what()));
    }
}

}  // namespace opane
