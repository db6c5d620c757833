#include "platform/regional_text.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>
#include <time.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>

namespace opane {
namespace {

struct FreeLocale {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

/// What LC_ALL, the category's own variable and LANG ask for; the C locale where the system does not have it.
Locale userLocale(int categoryMask) {
    const int mask = categoryMask | LC_CTYPE_MASK;
    Locale locale(newlocale(mask, "", nullptr));
    return locale ? std::move(locale) : Locale(newlocale(mask, "C", nullptr));
}

std::string toUtf8(const std::string& text, const char* codeSet) {
    using namespace std::string_view_literals;
    if (codeSet == "UTF-8"sv || codeSet == "ANSI_X3.4-1968"sv)
        return text;
    const iconv_t converter = iconv_open("UTF-8", codeSet);
    if (reinterpret_cast<std::intptr_t>(converter) == -1)
        return text;
    std::string result(text.size() * 4, '\0');
    std::string source = text;
    char* in = source.data();
    char* out = result.data();
    std::size_t inLeft = source.size();
    std::size_t outLeft = result.size();
    const bool converted = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    result.resize(result.size() - outLeft);
    return converted ? result : text;
}

std::string formatted(const std::tm& moment, const char* format) {
    const Locale locale = userLocale(LC_TIME_MASK);
    char buffer[256];
    const std::size_t length = strftime_l(buffer, sizeof buffer, format, &moment, locale.get());
    return toUtf8(std::string(buffer, length), nl_langinfo_l(CODESET, locale.get()));
}

}  // namespace

std::tm systemLocalTime() {
    const std::time_t moment = std::time(nullptr);
    std::tm local{};
    localtime_r(&moment, &local);
    return local;
}

std::string shortDateText(const std::tm& moment) {
    return formatted(moment, "%x");
}

std::string timeText(const std::tm& moment) {
    return formatted(moment, "%X");
}

std::string decimalSeparator() {
    const Locale locale = userLocale(LC_NUMERIC_MASK);
    return toUtf8(nl_langinfo_l(RADIXCHAR, locale.get()), nl_langinfo_l(CODESET, locale.get()));
}

}  // namespace opane
