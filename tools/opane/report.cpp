#include "report.h"

#include <cstdio>
#include <iostream>

#include "platform/console.h"
#include "shared/utf8.h"

namespace opane::tool {

using Json = nlohmann::ordered_json;

OutputLost::OutputLost(bool isClosedPipe)
    : std::runtime_error("standard output cannot be written: what was printed is lost"), isClosedPipe_(isClosedPipe) {}

void Report::fail(const std::string& text) {
    std::cerr << "opane: " << text << '\n';
    error_ += (error_.empty() ? "" : "; ") + text;
}

void Report::note(const std::string& text) {
    std::cerr << "opane: " << text << '\n';
}

void Report::end(ExitStatus status) {
    if (json_) {
        Json object{{"command", command_.empty() ? Json() : Json(command_)},
                    {"exit", static_cast<int>(status)},
                    {"error", error_.empty() ? Json() : Json(error_)}};
        if (!values_.contains("status"))  // info has its flags there
            object["status"] = static_cast<int>(status);
        object.update(values_);
        // A name of a file or a device may be no UTF-8.
        std::cout << object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
    }
    values_ = Json::object();
    error_.clear();
    hasBegun_ = false;
    if (!std::cout.flush())
        throw OutputLost(isBrokenPipe(StandardStream::output));
    done_.clear();
}

std::string hexText(std::size_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*zX", digits, value);
    return text;
}

std::string printableText(const std::string& text) {
    std::string shown;
    for (const char32_t character : decodeUtf8(text)) {
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        if (!isControl && character != kInvalidCharacter)
            appendUtf8(shown, character);
    }
    return shown;
}

}  // namespace opane::tool
