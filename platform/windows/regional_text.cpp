#include "platform/regional_text.h"

#include "platform/windows/system_text.h"

namespace opane {
namespace {

SYSTEMTIME systemTime(const std::tm& moment) {
    const auto word = [](int value) { return static_cast<WORD>(value); };
    SYSTEMTIME time{};
    time.wYear = word(moment.tm_year + 1900);
    time.wMonth = word(moment.tm_mon + 1);
    time.wDay = word(moment.tm_mday);
    time.wHour = word(moment.tm_hour);
    time.wMinute = word(moment.tm_min);
    time.wSecond = word(moment.tm_sec);
    return time;
}

/// @param length  what the system has written, with the zero at its end; 0 when it refused
std::string textOf(const wchar_t* text, int length) {
    return length > 0 ? utf8Text({text, static_cast<std::size_t>(length - 1)}) : std::string();
}

constexpr int kLongest = 128;  // UTF-16 units

}  // namespace

std::tm systemLocalTime() {
    const std::time_t moment = std::time(nullptr);
    std::tm local{};
    localtime_s(&local, &moment);
    return local;
}

std::string shortDateText(const std::tm& moment) {
    const SYSTEMTIME time = systemTime(moment);
    wchar_t text[kLongest];
    return textOf(text,
                  GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, text, kLongest, nullptr));
}

std::string timeText(const std::tm& moment) {
    const SYSTEMTIME time = systemTime(moment);
    wchar_t text[kLongest];
    return textOf(text, GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &time, nullptr, text, kLongest));
}

std::string decimalSeparator() {
    wchar_t text[kLongest];
    return textOf(text, GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, text, kLongest));
}

}  // namespace opane
