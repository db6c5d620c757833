#include "print.h"

#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

namespace opane::tool {

void printValue(const Arguments& arguments, const std::string& key, const std::string& value) {
    if (arguments.json)
        std::cout << nlohmann::json{{key, value}} << '\n';
    else
        std::cout << value << '\n';
}

void reportFailure(const Arguments& arguments, ExitStatus status, const std::string& text) {
    std::cerr << "opane: " << text << '\n';
    if (arguments.json) {
        const nlohmann::json object{{"error", text}, {"status", static_cast<int>(status)}};
        // A name of a file or a device may be no UTF-8.
        std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    }
}

ExitStatus reportCommand(const Arguments& arguments, const std::string& command, bool succeeded) {
    if (!succeeded)
        std::cerr << "opane: the module refused \"" << command << "\" or did not answer\n";
    if (arguments.json)
        std::cout << nlohmann::json{{"command", command}, {"status", succeeded ? 0 : 1}} << '\n';
    return succeeded ? kSuccess : kModuleFailed;
}

std::string hexText(std::size_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*zX", digits, value);
    return text;
}

}  // namespace opane::tool
