#include "print.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace opane::tool {

void printValue(const Arguments& arguments, const std::string& key, const std::string& value) {
    if (arguments.json)
        std::cout << nlohmann::json{{key, value}} << '\n';
    else
        std::cout << value << '\n';
}

ExitStatus reportCommand(const Arguments& arguments, const std::string& command, bool succeeded) {
    if (!succeeded)
        std::cerr << "opane: the module refused \"" << command << "\" or did not answer\n";
    if (arguments.json)
        std::cout << nlohmann::json{{"command", command}, {"status", succeeded ? 0 : 1}} << '\n';
    return succeeded ? kSuccess : kModuleFailed;
}

}  // namespace opane::tool
